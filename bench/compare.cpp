// Prints how far our pictures lie from other libraries', and fails where a difference is larger
// than their rules explain.
#include "compare.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>

namespace pictavo::bench {
namespace {

/// A channel of the picture's pattern at a place: one of five, by squares of 64 pixels.
double Pattern(i32 x, i32 y, int channel, u8 noise) {
  const int square = (x / 64 + 3 * (y / 64)) % 5;
  const double angle = 0.4 * (x / 64 + y / 64) + channel;
  const double across = (x % 64 - 32) * std::cos(angle) + (y % 64 - 32) * std::sin(angle);
  switch (square) {
    case 0:
      return across < 0 ? 0 : 255;
    case 1:
      return std::fmod(std::abs(across), 6) < 1.5 ? 255 : 20 * channel;
    case 2:
      return x / 64 * 90 % 256;
    case 3:
      return noise;
    default:
      return 128 + 2.5 * across;
  }
}

struct Distance {
  int largest = 0;
  double mean = 0, squares = 0;
};

Distance Measure(const Bytes& a, const Bytes& b) {
  Distance distance;
  for (size_t i = 0; i < a.size(); ++i) {
    const int step = std::abs(a[i] - b[i]);
    distance.largest = std::max(distance.largest, step);
    distance.mean += step;
    distance.squares += step * step;
  }
  distance.mean /= static_cast<double>(a.size());
  distance.squares /= static_cast<double>(a.size());
  return distance;
}

/// Whether the difference is explained.
bool Print(const Comparison& c) {
  if (c.ours.empty() || c.ours.size() != c.theirs.size()) {
    std::printf("%-28s %-34s %-22s no pictures\n", c.operation.c_str(), c.peer.c_str(),
                c.data.c_str());
    return false;
  }
  const Distance distance = Measure(c.ours, c.theirs);
  const double psnr = 10 * std::log10(255 * 255 / std::max(distance.squares, 1e-9));
  std::printf("%-28s %-34s %-22s %8d %8.4f %8.1f%s\n", c.operation.c_str(), c.peer.c_str(),
              c.data.c_str(), distance.largest, distance.mean, psnr,
              distance.largest > c.most ? "  TOO FAR" : "");
  return distance.largest <= c.most;
}

}  // namespace

const Bytes& HardPicture(const Size& size) {
  static std::map<std::string, Bytes> made;
  Bytes& picture = made[size.name()];
  if (!picture.empty()) return picture;
  std::mt19937 random(7);
  for (i32 y = 0; y < size.height; ++y) {
    for (i32 x = 0; x < size.width; ++x) {
      for (int channel = 0; channel < 3; ++channel)
        picture.push_back(static_cast<u8>(
            std::clamp(Pattern(x, y, channel, static_cast<u8>(random())), 0., 255.)));
      picture.push_back(255);
    }
  }
  return picture;
}

}  // namespace pictavo::bench

int main() {
  using namespace pictavo::bench;
  std::printf("%-28s %-34s %-22s %8s %8s %8s\n", "", "", "", "largest", "mean", "PSNR");
  bool explained = true;
  for (const auto compare : {CompareChannels, CompareFrames, CompareGaussians, CompareGrading,
                             CompareRectangles, CompareResizing, CompareTransitions, CompareWarps})
    for (const Comparison& comparison : compare()) explained &= Print(comparison);
  return explained ? 0 : 1;
}
