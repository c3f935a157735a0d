// How one direction of a Gaussian is taken: as sums of pixels with weights.
//
// A narrow Gaussian is one set of such sums. A wide one is two: a Gaussian of 1 / sqrt(2) of the
// width, of which only samples some pixels apart are kept, and sums of these with the weights of
// another one. Two Gaussians one after the other are one again, and each is smooth enough for the
// samples to say all, so the time does not grow with the width.
#ifndef PICTAVO_CPU_FILTERS_GAUSS_WINDOWS_H_
#define PICTAVO_CPU_FILTERS_GAUSS_WINDOWS_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu::gauss {

/// The pixel that stands at a place of a line, or beyond its ends; -1 for none.
i64 PixelAt(i64 place, i64 length, u32 edges);

/// A sum: so many neighbours from the first on, and their weights. An odd number of weights is
/// followed by a 0.
struct Window {
  i64 first, count;
  const f32* weights;
  const int16_t* whole = nullptr;  // 1 / `unit` times the weights, where these are fine enough
  f32 unit = 0;
};

/// How finely a wide Gaussian is sampled, and how far its parts reach, both in their sigmas.
struct Quality {
  double samplesPerSigma, reach;
};

/// One direction of a blur of lines of so many pixels.
class Direction {
 public:
  Direction(i64 length, double sigma, u32 edges, const Quality& quality);

  /// Whether it keeps samples only, which Spread() makes pixels of.
  bool Reduces() const { return reduces_; }
  /// How many sums there are in the first set.
  i64 Samples() const { return samples_; }

  /// Memory for the sets of sums, as Gather() and Spread() fill it.
  i64 GatherBytes() const;
  i64 SpreadBytes() const;
  const Window* Gather(u8* memory) const;
  const Window* Spread(u8* memory) const;

 private:
  struct Bell;  // the weights around a place

  Bell BellOf(i64 sample) const;
  Bell SpreadBellOf(i64 pixel) const;

  i64 length_;
  u32 edges_;
  double sigma_;  // of the sums of pixels
  double reach_;  // of these sums, in pixels
  bool reduces_;
  double spacing_ = 1;                   // of samples, in pixels
  double spread_ = 0, spreadReach_ = 0;  // the second Gaussian's sigma and reach, in samples
  i64 before_ = 0;                       // samples before the first pixel
  i64 samples_;
};

}  // namespace pictavo::cpu::gauss

#endif  // PICTAVO_CPU_FILTERS_GAUSS_WINDOWS_H_
