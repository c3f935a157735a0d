// What SSE4.1 adds to simd_sse2.h.
#ifndef PICTAVO_CPU_SIMD_SSE41_H_
#define PICTAVO_CPU_SIMD_SSE41_H_

#include <immintrin.h>

#include "cpu/simd_sse2.h"
#include "cpu/target_region.h"

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {

using sse2::V;

inline V Min32(V a, V b) { return {_mm_min_epi32(a.v, b.v)}; }
inline V Max32(V a, V b) { return {_mm_max_epi32(a.v, b.v)}; }
/// All ones where a > b, as signed numbers, 0 elsewhere.
inline V Greater32(V a, V b) { return {_mm_cmpgt_epi32(a.v, b.v)}; }
/// The sum of the products of the two 16-bit halves of each lane.
inline V DotProduct32(V a, V b) { return {_mm_madd_epi16(a.v, b.v)}; }

/// a * b / c per 32-bit lane, rounded towards zero; exact for products below 2^24, quotients below
/// 2^9 and c from 1 to 2^9.
inline V Proportion32(V a, V b, V c) {
  const __m128 product = _mm_mul_ps(_mm_cvtepi32_ps(a.v), _mm_cvtepi32_ps(b.v));
  return {_mm_cvttps_epi32(_mm_div_ps(product, _mm_cvtepi32_ps(c.v)))};
}

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

#endif  // PICTAVO_CPU_SIMD_SSE41_H_
