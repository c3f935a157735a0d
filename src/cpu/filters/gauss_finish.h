// What becomes of a plain sum of a Gaussian, which is a 16-bit number: so many bits more than the
// byte have fractions.
#ifndef PICTAVO_CPU_FILTERS_GAUSS_FINISH_H_
#define PICTAVO_CPU_FILTERS_GAUSS_FINISH_H_

#include <algorithm>

#include "pictavo/pictavo.h"

namespace pictavo::cpu::gauss {

/// It is the byte, or sharpens it.
struct Finish {
  bool sharpens = false;
  f32 amount = 0, threshold = 0;
  u32 kept = 0xFF000000;  // bytes of a pixel that stay
};

/// Weights in 1/2^15, to the nearest: what vectors' 16-bit multiplications give.
inline i32 Weighed(i32 number, u32 weight) {
  return (number * static_cast<i32>(weight & 0xFFFF) + (1 << 14)) >> 15;
}
/// A weight as vectors want it, in both halves of a lane.
inline u32 WeightOf(double weight) { return static_cast<u32>(weight * 0x1p15 + 0.5) * 0x10001; }

template <bool sharpens, int bits>
u8 FinishedByte(i32 sum, u8 before, const Finish& finish) {
  if (!sharpens) return static_cast<u8>(std::clamp((sum + (1 << (bits - 1))) >> bits, 0, 255));
  const f32 colour = before, detail = static_cast<f32>((before << bits) - sum) / (1 << bits);
  const f32 sharp = std::min(std::max(colour + finish.amount * detail, 0.0f), 255.0f);
  return (detail < 0 ? -detail : detail) < finish.threshold ? before
                                                            : static_cast<u8>(sharp + 0.5f);
}

}  // namespace pictavo::cpu::gauss

#endif  // PICTAVO_CPU_FILTERS_GAUSS_FINISH_H_
