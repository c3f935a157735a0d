// Four 32-bit pixels, or eight 16-bit numbers, in SSE2. simd_avx2.h is the 256-bit twin: the same
// names with the same meaning, so that a kernel is written once over `V`.
#ifndef PICTAVO_CPU_SIMD_SSE2_H_
#define PICTAVO_CPU_SIMD_SSE2_H_

#include <immintrin.h>

#include "pictavo/pictavo.h"

namespace pictavo::cpu::sse2 {

struct V {
  static constexpr i64 kPixels = 4;

  __m128i v;

  static V Load(const u8* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
  void Store(u8* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static V Zero() { return {_mm_setzero_si128()}; }
  static V All16(u32 x) { return {_mm_set1_epi16(static_cast<short>(x))}; }
  static V All32(u32 x) { return {_mm_set1_epi32(static_cast<int>(x))}; }
};

inline V operator&(V a, V b) { return {_mm_and_si128(a.v, b.v)}; }
inline V operator|(V a, V b) { return {_mm_or_si128(a.v, b.v)}; }
inline V operator^(V a, V b) { return {_mm_xor_si128(a.v, b.v)}; }
/// a where mask is 0, 0 where it is all ones.
inline V AndNot(V mask, V a) { return {_mm_andnot_si128(mask.v, a.v)}; }

inline V Add16(V a, V b) { return {_mm_add_epi16(a.v, b.v)}; }
inline V Sub16(V a, V b) { return {_mm_sub_epi16(a.v, b.v)}; }
/// The low and the high half of the unsigned 32-bit product.
inline V Mul16(V a, V b) { return {_mm_mullo_epi16(a.v, b.v)}; }
inline V MulHigh16(V a, V b) { return {_mm_mulhi_epu16(a.v, b.v)}; }
/// The high half of the signed one.
inline V MulHighSigned16(V a, V b) { return {_mm_mulhi_epi16(a.v, b.v)}; }
inline V Add8(V a, V b) { return {_mm_add_epi8(a.v, b.v)}; }
inline V AddSaturated8(V a, V b) { return {_mm_adds_epu8(a.v, b.v)}; }
inline V SubSaturated8(V a, V b) { return {_mm_subs_epu8(a.v, b.v)}; }
inline V SubSaturated16(V a, V b) { return {_mm_subs_epu16(a.v, b.v)}; }
inline V Min8(V a, V b) { return {_mm_min_epu8(a.v, b.v)}; }
inline V Max8(V a, V b) { return {_mm_max_epu8(a.v, b.v)}; }
/// As signed numbers.
inline V Min16(V a, V b) { return {_mm_min_epi16(a.v, b.v)}; }
inline V Max16(V a, V b) { return {_mm_max_epi16(a.v, b.v)}; }
/// The sum of the signed products of the two 16-bit halves of each lane.
inline V DotProduct32(V a, V b) { return {_mm_madd_epi16(a.v, b.v)}; }
inline V Add32(V a, V b) { return {_mm_add_epi32(a.v, b.v)}; }
inline V Sub32(V a, V b) { return {_mm_sub_epi32(a.v, b.v)}; }
/// All ones where the byte is 128 or more, 0 elsewhere.
inline V IsHigh8(V a) { return {_mm_cmpgt_epi8(_mm_setzero_si128(), a.v)}; }
/// All ones where equal, 0 elsewhere.
inline V Equal8(V a, V b) { return {_mm_cmpeq_epi8(a.v, b.v)}; }
inline V Equal16(V a, V b) { return {_mm_cmpeq_epi16(a.v, b.v)}; }
inline V Equal32(V a, V b) { return {_mm_cmpeq_epi32(a.v, b.v)}; }

inline V ShiftLeft16(V a, int bits) { return {_mm_slli_epi16(a.v, bits)}; }
inline V ShiftRight16(V a, int bits) { return {_mm_srli_epi16(a.v, bits)}; }
inline V ShiftLeft32(V a, int bits) { return {_mm_slli_epi32(a.v, bits)}; }
inline V ShiftRight32(V a, int bits) { return {_mm_srli_epi32(a.v, bits)}; }
/// Keeps the sign.
inline V ShiftRightSigned32(V a, int bits) { return {_mm_srai_epi32(a.v, bits)}; }

/// trunc(a * gain * factor) per 32-bit lane, in single precision and in this order.
inline V TruncatedProduct32(V a, f32 gain, f32 factor) {
  const auto scaled = _mm_mul_ps(_mm_cvtepi32_ps(a.v), _mm_set1_ps(gain));
  return {_mm_cvttps_epi32(_mm_mul_ps(scaled, _mm_set1_ps(factor)))};
}

/// a / b per 32-bit lane, rounded towards zero; exact for a below 2^24 and b from 1 to 2^16.
inline V Quotient32(V a, V b) {
  return {_mm_cvttps_epi32(_mm_div_ps(_mm_cvtepi32_ps(a.v), _mm_cvtepi32_ps(b.v)))};
}

/// Swaps pixels 0 and 1, 2 and 3, …
inline V SwapPairs(V a) { return {_mm_shuffle_epi32(a.v, 0xB1)}; }

/// The low 16 bits of each pixel into its high 16 bits too; those must be 0.
inline V Repeat16(V a) { return a | ShiftLeft32(a, 16); }

/// The low, or the high, 16 bits of each pixel in both its halves.
inline V LowHalves(V a) {
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0b10'10'00'00), 0b10'10'00'00)};
}
inline V HighHalves(V a) {
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0b11'11'01'01), 0b11'11'01'01)};
}

/// Each pixel's alpha in its three colours' bytes, and 0 in its own.
inline V AlphasOnColours(V pixels) {
  const V halves = Repeat16(ShiftRight32(pixels, 24));
  return halves | (ShiftLeft16(halves, 8) & V::All32(0xFFFF));
}

/// Pixels whose bytes, from blue to alpha, are the high halves of four. Those must be below 256.
inline V PackHighHalves(V blue, V green, V red, V alpha) {
  const V high = V::All32(0xFFFF0000);
  const V low = ShiftRight32(blue, 16) | (green & high);
  const __m128i halves = _mm_packus_epi16(low.v, (ShiftRight32(red, 16) | (alpha & high)).v);
  return {_mm_unpacklo_epi16(halves, _mm_srli_si128(halves, 8))};
}

/// Stores four pixels, each a sixteenth of the sum of four columns times counts. A column is four
/// words, one a channel; the counts are those of the first pixel's columns, the second's, …
inline void StoreMeansOfColumns(const u8* const (&columns)[4], const u8* counts, u8* p) {
  const auto mean = [=](int i) {
    const auto half = [=](int at) {
      return Mul16(V::Load(columns[i] + at), V::Load(counts + 32 * i + at));
    };
    return Add16(half(0), half(16)).v;
  };
  const auto pair = [](__m128i a, __m128i b) {
    return ShiftRight16(Add16({_mm_unpacklo_epi64(a, b)}, {_mm_unpackhi_epi64(a, b)}), 4).v;
  };
  V{_mm_packus_epi16(pair(mean(0), mean(1)), pair(mean(2), mean(3)))}.Store(p);
}

/// b where mask is all ones, a where it is 0.
inline V Select(V mask, V a, V b) { return AndNot(mask, a) | (mask & b); }

/// Per 32-bit lane, the low 16 bits of one and the high ones of the other.
inline V JoinHalves(V low, V high) { return Select(V::All32(0xFFFF0000), low, high); }

/// Whether every pixel's alpha is 0, or 255.
inline bool AlphasClear(V a) {
  return (_mm_movemask_epi8(_mm_cmpeq_epi8(a.v, _mm_setzero_si128())) & 0x8888) == 0x8888;
}
inline bool AlphasOpaque(V a) {
  return (_mm_movemask_epi8(_mm_cmpeq_epi8(a.v, _mm_set1_epi8(-1))) & 0x8888) == 0x8888;
}

}  // namespace pictavo::cpu::sse2

#endif  // PICTAVO_CPU_SIMD_SSE2_H_
