// Pictures of ours beside those that other libraries make of the same source.
#ifndef PICTAVO_BENCH_COMPARE_H_
#define PICTAVO_BENCH_COMPARE_H_

#include "bench.h"

namespace pictavo::bench {

/// One picture, made twice.
struct Comparison {
  std::string operation;  // its name beginning with the slot
  std::string peer;       // who made the other one, and how
  std::string data;       // what it was made of
  Bytes ours, theirs;     // as many bytes each
  int most;               // the largest difference of two bytes that their rules explain
};
using Comparisons = std::vector<Comparison>;

/// Hard edges at every angle, thin lines, flat squares, noise and slopes, all opaque: what shows
/// differences that smooth pictures hide. Made once.
const Bytes& HardPicture(const Size& size);

// The families, each in its own file.
Comparisons CompareChannels();
Comparisons CompareFrames();
Comparisons CompareGaussians();
Comparisons CompareGrading();
Comparisons CompareRectangles();
Comparisons CompareResizing();
Comparisons CompareTransitions();
Comparisons CompareWarps();

}  // namespace pictavo::bench

#endif  // PICTAVO_BENCH_COMPARE_H_
