// Pixels of different kinds.
#ifndef PICTAVO_TESTS_PIXELS_H_
#define PICTAVO_TESTS_PIXELS_H_

#include <cstdint>
#include <random>
#include <vector>

#include "pictavo/pictavo.h"

namespace pictavo::test {

using Bytes = std::vector<u8>;
using Random = std::mt19937;

enum Kind { kRandom, kOpaque, kClear, kSoft, kRuns, kEdges, kKinds };

/// Fills with random colours and alphas of a kind; `kEdges` draws all bytes from the corner values.
inline void FillPixels(u8* bytes, size_t count, int kind, Random& random) {
  static constexpr u8 kCorners[] = {0, 1, 2, 127, 128, 129, 253, 254, 255};
  u8 run = 0;
  for (size_t i = 0; i < count; ++i) {
    bytes[i] = kind == kEdges ? kCorners[random() % 9] : static_cast<u8>(random());
    if (i % 4 != 3) continue;
    if (random() % 5 == 0) {
      run = static_cast<u8>(random() % 3 * 127);
      run = static_cast<u8>(run + random() % 2);
    }
    switch (kind) {
      case kOpaque:
        bytes[i] = 255;
        break;
      case kClear:
        bytes[i] = 0;
        break;
      case kSoft:
        bytes[i] = static_cast<u8>(1 + random() % 254);
        break;
      case kRuns:
        bytes[i] = run > 200 ? 255 : run;
        break;
      default:
        break;
    }
  }
}

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_PIXELS_H_
