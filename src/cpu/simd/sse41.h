// What SSE4.1 adds to simd_sse2.h.
#ifndef PICTAVO_CPU_SIMD_SSE41_H_
#define PICTAVO_CPU_SIMD_SSE41_H_

#include <immintrin.h>

#include <cstring>

#include "cpu/simd/sse2.h"
#include "cpu/simd/target_region.h"

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {

using sse2::V;

inline V Min32(V a, V b) { return {_mm_min_epi32(a.v, b.v)}; }
inline V Max32(V a, V b) { return {_mm_max_epi32(a.v, b.v)}; }
/// All ones where a > b, as signed numbers, 0 elsewhere.
inline V Greater32(V a, V b) { return {_mm_cmpgt_epi32(a.v, b.v)}; }

inline V Greater16(V a, V b) { return {_mm_cmpgt_epi16(a.v, b.v)}; }
inline V Abs16(V a) { return {_mm_abs_epi16(a.v)}; }
/// a where the other is above 0, -a where it is below, 0 where it is 0.
inline V WithSign16(V a, V other) { return {_mm_sign_epi16(a.v, other.v)}; }

/// The low half of the product of 32-bit lanes.
inline V Mul32(V a, V b) { return {_mm_mullo_epi32(a.v, b.v)}; }
inline V Index32() { return {_mm_setr_epi32(0, 1, 2, 3)}; }
/// Whether every bit is 0.
inline bool IsZero(V a) { return _mm_testz_si128(a.v, a.v) != 0; }

/// Each pixel's alpha in both its 16-bit halves.
inline V RepeatAlpha(V pixels) {
  return {_mm_shuffle_epi8(
      pixels.v, _mm_setr_epi8(3, -1, 3, -1, 7, -1, 7, -1, 11, -1, 11, -1, 15, -1, 15, -1))};
}

/// Four pixels from each of the places, which are bytes from p.
inline V LoadFours(const u8* p, const i32* places) { return V::Load(p + places[0]); }
/// Moves bytes within fours of pixels: each takes the one that `from` numbers, or 0 for 128.
inline V ShuffleFours(V a, V from) { return {_mm_shuffle_epi8(a.v, from.v)}; }

/// Four pixels of each of rows[0], rows[4], …, at so many bytes from their starts.
inline V LoadRows(const u8* const* rows, i64 at) { return V::Load(rows[0] + at); }
inline void StoreRows(u8* const* rows, i64 at, V a) { a.Store(rows[0] + at); }

/// Swaps rows and columns in each square of pixels that fours of the four vectors make.
inline void Transpose(V (&rows)[4]) {
  const __m128i low01 = _mm_unpacklo_epi32(rows[0].v, rows[1].v);
  const __m128i low23 = _mm_unpacklo_epi32(rows[2].v, rows[3].v);
  const __m128i high01 = _mm_unpackhi_epi32(rows[0].v, rows[1].v);
  const __m128i high23 = _mm_unpackhi_epi32(rows[2].v, rows[3].v);
  rows[0] = {_mm_unpacklo_epi64(low01, low23)};
  rows[1] = {_mm_unpackhi_epi64(low01, low23)};
  rows[2] = {_mm_unpacklo_epi64(high01, high23)};
  rows[3] = {_mm_unpackhi_epi64(high01, high23)};
}

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

/// Pixels of channels that are given one a lane; what does not fit a byte is limited to it.
inline V Pixels(V b, V g, V r, V a) {
  const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(b.v, g.v), _mm_packs_epi32(r.v, a.v));
  return {
      _mm_shuffle_epi8(bytes, _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15))};
}

/// As many singles as pixels in a V.
struct F {
  __m128 v;

  static F All(f32 x) { return {_mm_set1_ps(x)}; }
};
inline F operator+(F a, F b) { return {_mm_add_ps(a.v, b.v)}; }
inline F operator-(F a, F b) { return {_mm_sub_ps(a.v, b.v)}; }
inline F operator*(F a, F b) { return {_mm_mul_ps(a.v, b.v)}; }
inline F operator/(F a, F b) { return {_mm_div_ps(a.v, b.v)}; }
inline F Abs(F a) { return {_mm_andnot_ps(_mm_set1_ps(-0.0f), a.v)}; }
inline F Least(F a, F b) { return {_mm_min_ps(a.v, b.v)}; }
inline F Most(F a, F b) { return {_mm_max_ps(a.v, b.v)}; }
inline F Sqrt(F a) { return {_mm_sqrt_ps(a.v)}; }
/// A mask, as are the first arguments of Select and those of IsEverywhere and Bits.
inline F operator<(F a, F b) { return {_mm_cmplt_ps(a.v, b.v)}; }
inline F operator&(F a, F b) { return {_mm_and_ps(a.v, b.v)}; }
inline F Select(F mask, F a, F b) { return {_mm_blendv_ps(a.v, b.v, mask.v)}; }
inline bool IsEverywhere(F mask) { return _mm_movemask_ps(mask.v) == 0xF; }
inline V Bits(F mask) { return {_mm_castps_si128(mask.v)}; }
inline F Real(V a) { return {_mm_cvtepi32_ps(a.v)}; }
/// Towards zero; the most negative integer for what does not fit.
inline V Truncate(F a) { return {_mm_cvttps_epi32(a.v)}; }

/// a / b and a little more, so that a whole number times it, truncated, is the exact quotient
/// rounded towards zero: of products below 2^18 and quotients below 2^9.
inline F Ratio32(V a, V b) { return F::All(1.0f + 0x1p-20f) * Real(a) / Real(b); }

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
/// The product in double precision, rounded once more.
inline F Product(F a, D b) { return Singles(LowDoubles(a) * b, HighDoubles(a) * b); }

/// The sums of four vectors' bytes, as words: of the first two pixels of each 128 bits, and of the
/// others.
inline void SumBytes(V a, V b, V c, V d, V* low, V* high) {
  const auto sum = [](__m128i pairs) { return V{_mm_maddubs_epi16(pairs, _mm_set1_epi8(1))}; };
  *low = Add16(sum(_mm_unpacklo_epi8(a.v, b.v)), sum(_mm_unpacklo_epi8(c.v, d.v)));
  *high = Add16(sum(_mm_unpackhi_epi8(a.v, b.v)), sum(_mm_unpackhi_epi8(c.v, d.v)));
}
/// Stores what SumBytes makes, in the order of the pixels.
inline void StoreWide(V low, V high, u8* p) {
  low.Store(p);
  high.Store(p + 16);
}

/// Four numbers of each pixel, from four vectors that hold one number of all pixels.
inline void StoreZipped32(const V (&a)[4], u8* p) {
  const __m128i low01 = _mm_unpacklo_epi32(a[0].v, a[1].v);
  const __m128i low23 = _mm_unpacklo_epi32(a[2].v, a[3].v);
  const __m128i high01 = _mm_unpackhi_epi32(a[0].v, a[1].v);
  const __m128i high23 = _mm_unpackhi_epi32(a[2].v, a[3].v);
  V{_mm_unpacklo_epi64(low01, low23)}.Store(p);
  V{_mm_unpackhi_epi64(low01, low23)}.Store(p + 16);
  V{_mm_unpacklo_epi64(high01, high23)}.Store(p + 32);
  V{_mm_unpackhi_epi64(high01, high23)}.Store(p + 48);
}

/// The low 16 bits of each pixel of a, and those of b above them; the high ones likewise.
inline V LowWords(V a, V b) { return {_mm_blend_epi16(a.v, _mm_slli_epi32(b.v, 16), 0xAA)}; }
inline V HighWords(V a, V b) { return {_mm_blend_epi16(_mm_srli_epi32(a.v, 16), b.v, 0xAA)}; }

/// 128 bits from each of the addresses that `address` gives for lanes 0, 1, …
template <typename Address>
V LoadLanes(Address address) {
  return V::Load(address(0));
}

/// Per 128-bit lane, for four numbers b, g, r below 2^20 and s below 2^12: b / s, g / s, r / s and
/// s / 16, rounded towards zero; all 0 for s below 16.
///
/// The halves added keep every quotient further from the next integers than single precision errs.
inline V MeansByLast32(V a) {
  const __m128i sums = _mm_shuffle_epi32(a.v, 0xFF);
  const __m128 inverse = _mm_div_ps(_mm_set1_ps(1.0f), _mm_cvtepi32_ps(sums));
  const __m128 factors = _mm_blend_ps(inverse, _mm_set1_ps(1.0f / 16), 8);
  const __m128 halves = _mm_add_ps(_mm_cvtepi32_ps(a.v), _mm_set1_ps(0.5f));
  const __m128i means = _mm_cvttps_epi32(_mm_mul_ps(halves, factors));
  return {_mm_and_si128(means, _mm_cmpgt_epi32(sums, _mm_set1_epi32(15)))};
}

/// The numbers of four vectors, 0 to 255, as the pixels 0 to 3 of each of the four's lanes in turn.
inline V PackPixels(const V (&a)[4]) {
  return {_mm_packus_epi16(_mm_packs_epi32(a[0].v, a[1].v), _mm_packs_epi32(a[2].v, a[3].v))};
}

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

#endif  // PICTAVO_CPU_SIMD_SSE41_H_
