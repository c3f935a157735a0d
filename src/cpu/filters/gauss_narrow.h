// Narrow Gaussians of opaque pictures, in whole numbers.
#ifndef PICTAVO_CPU_FILTERS_GAUSS_NARROW_H_
#define PICTAVO_CPU_FILTERS_GAUSS_NARROW_H_

#include "cpu/base/picture.h"

namespace pictavo::cpu::gauss {

/// The widest Gaussian, and the pixels that it reaches on each side at most.
inline constexpr f32 kWidestNarrow = 4;
inline constexpr i64 kNarrowReach = 14;

/// Weights of a pixel and of its neighbours on each side: 2^14 together.
struct Taps {
  i64 reach;
  i32 weights[kNarrowReach + 2];  // and a 0 or two

  explicit Taps(double sigma);
};

/// What becomes of the sum: it is the pixel's colour, or sharpens it.
struct NarrowFinish {
  bool sharpens;
  f32 amount, threshold;
};

/// Blurs an opaque picture in place. Its edges are not clear.
u32 BlurNarrow(i32 level, const Picture& picture, f32 sigmaX, f32 sigmaY, u32 edges,
               const NarrowFinish& finish);

}  // namespace pictavo::cpu::gauss

#endif  // PICTAVO_CPU_FILTERS_GAUSS_NARROW_H_
