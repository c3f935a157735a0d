// What SSE4.1 adds to simd_sse2.h.
#ifndef PICTAVO_CPU_SIMD_SSE41_H_
#define PICTAVO_CPU_SIMD_SSE41_H_

#include <immintrin.h>

#include <cstring>

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

/// a / b per 32-bit lane, rounded towards zero; exact for a below 2^24 and b from 1 to 2^16.
inline V Quotient32(V a, V b) {
  return {_mm_cvttps_epi32(_mm_div_ps(_mm_cvtepi32_ps(a.v), _mm_cvtepi32_ps(b.v)))};
}

/// The low half of the product of 32-bit lanes.
inline V Mul32(V a, V b) { return {_mm_mullo_epi32(a.v, b.v)}; }
inline V Index32() { return {_mm_setr_epi32(0, 1, 2, 3)}; }
/// Whether every bit is 0.
inline bool IsZero(V a) { return _mm_testz_si128(a.v, a.v) != 0; }

/// Four pixels from each of the places, which are bytes from p.
inline V LoadFours(const u8* p, const i32* places) { return V::Load(p + places[0]); }
/// Moves bytes within fours of pixels: each takes the one that `from` numbers, or 0 for 128.
inline V ShuffleFours(V a, V from) { return {_mm_shuffle_epi8(a.v, from.v)}; }

/// The pixels at the places, which are bytes from p. Places whose mask is 0 are not touched and
/// give 0.
inline V LoadEach(const u8* p, V places, V mask) {
  alignas(16) i32 at[4], wanted[4];
  alignas(16) u32 pixels[4] = {};
  places.Store(reinterpret_cast<u8*>(at));
  mask.Store(reinterpret_cast<u8*>(wanted));
  for (size_t i = 0; i < 4; ++i) {
    if (wanted[i] != 0) std::memcpy(&pixels[i], p + at[i], 4);
  }
  return V::Load(reinterpret_cast<const u8*>(pixels));
}
inline V LoadEach(const u8* p, V places) {
  const auto load = [p](i32 place) {
    i32 pixel;
    std::memcpy(&pixel, p + place, 4);
    return pixel;
  };
  return {_mm_setr_epi32(load(_mm_extract_epi32(places.v, 0)), load(_mm_extract_epi32(places.v, 1)),
                         load(_mm_extract_epi32(places.v, 2)),
                         load(_mm_extract_epi32(places.v, 3)))};
}

/// As many singles as pixels in a V.
struct F {
  __m128 v;

  static F All(f32 x) { return {_mm_set1_ps(x)}; }
};
inline F operator+(F a, F b) { return {_mm_add_ps(a.v, b.v)}; }
inline F operator*(F a, F b) { return {_mm_mul_ps(a.v, b.v)}; }
inline F operator/(F a, F b) { return {_mm_div_ps(a.v, b.v)}; }
inline F Sqrt(F a) { return {_mm_sqrt_ps(a.v)}; }
inline F Real(V a) { return {_mm_cvtepi32_ps(a.v)}; }
/// Towards zero; the most negative integer for what does not fit.
inline V Truncate(F a) { return {_mm_cvttps_epi32(a.v)}; }

/// Half as many doubles.
struct D {
  __m128d v;
};
inline D All(double x) { return {_mm_set1_pd(x)}; }
inline D operator+(D a, D b) { return {_mm_add_pd(a.v, b.v)}; }
inline D operator-(D a, D b) { return {_mm_sub_pd(a.v, b.v)}; }
inline D operator*(D a, D b) { return {_mm_mul_pd(a.v, b.v)}; }
inline D operator/(D a, D b) { return {_mm_div_pd(a.v, b.v)}; }
inline D Abs(D a) { return {_mm_andnot_pd(_mm_set1_pd(-0.0), a.v)}; }
inline D Least(D a, D b) { return {_mm_min_pd(a.v, b.v)}; }
inline D Most(D a, D b) { return {_mm_max_pd(a.v, b.v)}; }
inline D Sqrt(D a) { return {_mm_sqrt_pd(a.v)}; }
/// A mask, as are the first arguments of Select.
inline D operator<(D a, D b) { return {_mm_cmplt_pd(a.v, b.v)}; }
inline D Select(D mask, D a, D b) { return {_mm_blendv_pd(a.v, b.v, mask.v)}; }
inline D RoundToSingle(D a) { return {_mm_cvtps_pd(_mm_cvtpd_ps(a.v))}; }
inline D LowDoubles(F a) { return {_mm_cvtps_pd(a.v)}; }
inline D HighDoubles(F a) { return {_mm_cvtps_pd(_mm_movehl_ps(a.v, a.v))}; }
inline F Singles(D low, D high) {
  return {_mm_movelh_ps(_mm_cvtpd_ps(low.v), _mm_cvtpd_ps(high.v))};
}

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

#endif  // PICTAVO_CPU_SIMD_SSE41_H_
