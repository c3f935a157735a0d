#include <cstdio>
#include <vector>

#include "pictavo/pictavo_host.h"

int main() {
  pictavo::Library library;  // Pictavo.dll beside the program
  if (!library) return std::puts(library.errorText()), 1;

  std::vector<unsigned char> frame(640 * 480 * 4, 255);  // white; bytes are B, G, R, A
  std::vector<unsigned char> title(640 * 480 * 4, 128);  // half clear grey
  library->BlendOverPitched(frame.data(), title.data(), 640, 480, 640 * 4);
  std::printf("level %d, first byte %d\n", library->GetCPULevel(), frame[0]);
}
