// Conversions and sizes of values that a host may make arbitrary.
#ifndef PICTAVO_CPU_BASE_NUMBERS_H_
#define PICTAVO_CPU_BASE_NUMBERS_H_

#include <cstdint>

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

/// Truncates towards zero. What does not fit, and not-a-number, gives the most negative integer, as
/// the processor's own conversions do.
inline i32 TruncateToI32(f32 x) {
  return x >= -2147483648.0f && x < 2147483648.0f ? static_cast<i32>(x) : INT32_MIN;
}

inline i32 TruncateToI32(double x) {
  return x > -2147483649.0 && x < 2147483648.0 ? static_cast<i32>(x) : INT32_MIN;
}

// Signed 32-bit arithmetic that wraps.
inline i32 WrappedProduct(i32 a, i32 b) {
  return static_cast<i32>(static_cast<u32>(a) * static_cast<u32>(b));
}
inline i32 WrappedSum(i32 a, i32 b) {
  return static_cast<i32>(static_cast<u32>(a) + static_cast<u32>(b));
}
inline i32 WrappedDifference(i32 a, i32 b) {
  return static_cast<i32>(static_cast<u32>(a) - static_cast<u32>(b));
}
inline i32 Quotient(i32 a, i32 b) { return static_cast<i32>(i64{a} / b); }

/// The least multiple of `step` that is not below n. Neither may be negative.
constexpr i64 RoundUp(i64 n, i64 step) { return (n + step - 1) / step * step; }

/// Whether width * height packed pixels of 4 bytes can lie in memory at all. Sizes must not be
/// negative.
inline bool FitsInMemory(i32 width, i32 height) { return i64{width} * height <= PTRDIFF_MAX / 4; }

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BASE_NUMBERS_H_
