// Elementary functions with the same digits on every system, unlike the C library's: over doubles
// here, over vectors of them in the headers of cpu/simd. elementary.inl holds the functions.
#ifndef PICTAVO_CPU_BASE_ELEMENTARY_H_
#define PICTAVO_CPU_BASE_ELEMENTARY_H_

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "pictavo/pictavo.h"

namespace pictavo::cpu::elementary {

/// A double as a vector of one lane: the names of v128.inl.
struct D {
  double v;

  D(double x) : v(x) {}
  operator double() const { return v; }
  static D All(double x) { return x; }
};
inline D Abs(D x) { return std::abs(x.v); }
inline D Min(D a, D b) { return std::min(a.v, b.v); }
inline D Max(D a, D b) { return std::max(a.v, b.v); }
inline D Sqrt(D x) { return std::sqrt(x.v); }
inline D Select(bool mask, D yes, D no) { return mask ? yes : no; }
inline D RoundToSingle(D x) { return static_cast<f32>(x.v); }
inline D WithSign(D a, D sign) { return std::copysign(a.v, sign.v); }
inline D PowerOfTwo(D n) {
  return std::bit_cast<double>(static_cast<uint64_t>(static_cast<int64_t>(n.v) + 1023) << 52);
}
inline D Exponent(D x) { return static_cast<double>(std::bit_cast<uint64_t>(x.v) >> 52) - 1023; }

#include "cpu/base/elementary.inl"

/// What an angle in degrees has beyond its whole turns, exactly and with its sign. Some systems'
/// std::fmod goes through the x87 unit, which is the host's.
inline double WithoutTurns(f32 degrees) {
  const double angle = std::abs(double{degrees});
  double rest = 0;
  if (angle < 0x1p40) {
    rest = angle - 360 * static_cast<double>(static_cast<i64>(angle / 360));
  } else {
    const u32 bits = std::bit_cast<u32>(degrees);
    u32 whole = ((bits & 0x7FFFFF) | 0x800000) % 360;  // times a power of two
    for (u32 doublings = (bits >> 23 & 0xFF) - 150; doublings > 0; --doublings)
      whole = 2 * whole % 360;
    rest = whole;
  }
  return degrees < 0 ? -rest : rest;
}

}  // namespace pictavo::cpu::elementary

#endif  // PICTAVO_CPU_BASE_ELEMENTARY_H_
