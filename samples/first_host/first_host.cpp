#include <cstdio>
#include <fstream>

#include "pictavo/pictavo_host.h"

int main() try {
  const pictavo::Host host;  // Pictavo.dll beside the program, at the processor's level
  pictavo::Picture frame(1280, 720), title(1280, 720);  // bytes are B, G, R, A
  frame.Read(std::ifstream("frame.bgra", std::ios::binary));
  title.Read(std::ifstream("title.bgra", std::ios::binary));
  host.Premultiply(title);
  host.BlendPremultiplied(frame, title);
  host.GaussianBlur(frame, 4);
  host.Resized(frame, 640, 360).Write(std::ofstream("small.bgra", std::ios::binary));
} catch (const std::exception& error) {
  return std::puts(error.what()), 1;
}
