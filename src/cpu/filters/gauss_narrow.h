// Narrow Gaussians that weigh nothing by alpha, in whole numbers.
#ifndef PICTAVO_CPU_FILTERS_GAUSS_NARROW_H_
#define PICTAVO_CPU_FILTERS_GAUSS_NARROW_H_

#include "cpu/base/picture.h"
#include "cpu/filters/gauss_finish.h"

namespace pictavo::cpu::gauss {

/// The widest Gaussian, and the pixels that it reaches on each side at most.
inline constexpr f32 kWidestNarrow = 4;
inline constexpr i64 kNarrowReach = 14;

/// Blurs a picture in place, of pixels of 4 bytes or of 1. Its edges are not clear.
u32 BlurNarrow(i32 level, const Picture& picture, f32 sigmaX, f32 sigmaY, u32 edges,
               const Finish& finish);

}  // namespace pictavo::cpu::gauss

#endif  // PICTAVO_CPU_FILTERS_GAUSS_NARROW_H_
