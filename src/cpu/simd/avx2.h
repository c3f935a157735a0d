// Eight 32-bit pixels, or sixteen 16-bit numbers, in AVX2: the twin of simd_sse2.h.
#ifndef PICTAVO_CPU_SIMD_AVX2_H_
#define PICTAVO_CPU_SIMD_AVX2_H_

#include <immintrin.h>

#include "cpu/simd/target_region.h"
#include "pictavo/pictavo.h"

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

struct V {
  static constexpr i64 kPixels = 8;

  __m256i v;

  static V Load(const u8* p) { return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))}; }
  void Store(u8* p) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static V Zero() { return {_mm256_setzero_si256()}; }
  static V All16(u32 x) { return {_mm256_set1_epi16(static_cast<short>(x))}; }
  static V All32(u32 x) { return {_mm256_set1_epi32(static_cast<int>(x))}; }
};

inline V operator&(V a, V b) { return {_mm256_and_si256(a.v, b.v)}; }
inline V operator|(V a, V b) { return {_mm256_or_si256(a.v, b.v)}; }
inline V operator^(V a, V b) { return {_mm256_xor_si256(a.v, b.v)}; }
inline V AndNot(V mask, V a) { return {_mm256_andnot_si256(mask.v, a.v)}; }

inline V Add16(V a, V b) { return {_mm256_add_epi16(a.v, b.v)}; }
inline V Sub16(V a, V b) { return {_mm256_sub_epi16(a.v, b.v)}; }
inline V Mul16(V a, V b) { return {_mm256_mullo_epi16(a.v, b.v)}; }
inline V MulHigh16(V a, V b) { return {_mm256_mulhi_epu16(a.v, b.v)}; }
inline V MulHighSigned16(V a, V b) { return {_mm256_mulhi_epi16(a.v, b.v)}; }
inline V Add8(V a, V b) { return {_mm256_add_epi8(a.v, b.v)}; }
inline V AddSaturated8(V a, V b) { return {_mm256_adds_epu8(a.v, b.v)}; }
inline V SubSaturated8(V a, V b) { return {_mm256_subs_epu8(a.v, b.v)}; }
inline V SubSaturated16(V a, V b) { return {_mm256_subs_epu16(a.v, b.v)}; }
inline V Min8(V a, V b) { return {_mm256_min_epu8(a.v, b.v)}; }
inline V Max8(V a, V b) { return {_mm256_max_epu8(a.v, b.v)}; }
inline V Min16(V a, V b) { return {_mm256_min_epi16(a.v, b.v)}; }
inline V Max16(V a, V b) { return {_mm256_max_epi16(a.v, b.v)}; }
inline V DotProduct32(V a, V b) { return {_mm256_madd_epi16(a.v, b.v)}; }
inline V Add32(V a, V b) { return {_mm256_add_epi32(a.v, b.v)}; }
inline V Sub32(V a, V b) { return {_mm256_sub_epi32(a.v, b.v)}; }
inline V IsHigh8(V a) { return {_mm256_cmpgt_epi8(_mm256_setzero_si256(), a.v)}; }
inline V Equal8(V a, V b) { return {_mm256_cmpeq_epi8(a.v, b.v)}; }
inline V Equal16(V a, V b) { return {_mm256_cmpeq_epi16(a.v, b.v)}; }
inline V Equal32(V a, V b) { return {_mm256_cmpeq_epi32(a.v, b.v)}; }

inline V ShiftLeft16(V a, int bits) { return {_mm256_slli_epi16(a.v, bits)}; }
inline V ShiftRight16(V a, int bits) { return {_mm256_srli_epi16(a.v, bits)}; }
inline V ShiftLeft32(V a, int bits) { return {_mm256_slli_epi32(a.v, bits)}; }
inline V ShiftRight32(V a, int bits) { return {_mm256_srli_epi32(a.v, bits)}; }
inline V ShiftRightSigned32(V a, int bits) { return {_mm256_srai_epi32(a.v, bits)}; }

inline V TruncatedProduct32(V a, f32 gain, f32 factor) {
  const auto scaled = _mm256_mul_ps(_mm256_cvtepi32_ps(a.v), _mm256_set1_ps(gain));
  return {_mm256_cvttps_epi32(_mm256_mul_ps(scaled, _mm256_set1_ps(factor)))};
}

inline V Quotient32(V a, V b) {
  return {_mm256_cvttps_epi32(_mm256_div_ps(_mm256_cvtepi32_ps(a.v), _mm256_cvtepi32_ps(b.v)))};
}

inline V SwapPairs(V a) { return {_mm256_shuffle_epi32(a.v, 0xB1)}; }

/// Moves bytes within each pixel: `from` numbers, for each, the one that it takes; 128 gives 0.
inline V ShuffleBytes(V a, u32 from) {
  const __m256i first =
      _mm256_broadcastsi128_si256(_mm_setr_epi32(0, 0x04040404, 0x08080808, 0x0C0C0C0C));
  return {_mm256_shuffle_epi8(a.v, _mm256_add_epi8(first, V::All32(from).v))};
}

inline V Repeat16(V a) { return ShuffleBytes(a, 0x01000100); }
inline V LowHalves(V a) { return ShuffleBytes(a, 0x01000100); }
inline V HighHalves(V a) { return ShuffleBytes(a, 0x03020302); }
inline V AlphasOnColours(V pixels) { return ShuffleBytes(pixels, 0x80030303); }

inline V PackHighHalves(V blue, V green, V red, V alpha) {
  const __m256i low = _mm256_blend_epi16(_mm256_srli_epi32(blue.v, 16), green.v, 0xAA);
  const __m256i high = _mm256_blend_epi16(_mm256_srli_epi32(red.v, 16), alpha.v, 0xAA);
  const __m128i bytes = _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
  return {_mm256_shuffle_epi8(_mm256_packus_epi16(low, high), _mm256_broadcastsi128_si256(bytes))};
}

inline void StoreMeansOfColumns(const u8* const (&columns)[4], const u8* counts, u8* p) {
  const auto column = [=](int i) { return Mul16(V::Load(columns[i]), V::Load(counts + 32 * i)).v; };
  const auto pair = [](__m256i a, __m256i b) {
    return Add16({_mm256_permute2x128_si256(a, b, 0x20)}, {_mm256_permute2x128_si256(a, b, 0x31)})
        .v;
  };
  const __m256i a = pair(column(0), column(1)), b = pair(column(2), column(3));
  const __m256i means =  // of pixels 0 and 2, 1 and 3
      ShiftRight16(Add16({_mm256_unpacklo_epi64(a, b)}, {_mm256_unpackhi_epi64(a, b)}), 4).v;
  const __m128i pixels =
      _mm_packus_epi16(_mm256_castsi256_si128(means), _mm256_extracti128_si256(means, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_shuffle_epi32(pixels, 0b11'01'10'00));
}

inline V Select(V mask, V a, V b) { return {_mm256_blendv_epi8(a.v, b.v, mask.v)}; }
inline V JoinHalves(V low, V high) { return {_mm256_blend_epi16(low.v, high.v, 0xAA)}; }

inline u32 PickOf(u32 pick) { return pick; }
inline V Permute(V a, V picks) { return {_mm256_permutevar8x32_epi32(a.v, picks.v)}; }
inline V SelectNegative32(V sign, V a, V b) {
  return {_mm256_castps_si256(_mm256_blendv_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v),
                                               _mm256_castsi256_ps(sign.v)))};
}
inline V FirstHalves(V a, V b) { return {_mm256_permute2x128_si256(a.v, b.v, 0x20)}; }
inline V SecondHalves(V a, V b) { return {_mm256_permute2x128_si256(a.v, b.v, 0x31)}; }

/// A load for each pixel and its neighbour, where a gather would need two.
inline void LoadNeighbours(const u8* row, const i32* places, V* here, V* right) {
  const auto pairs = [=](int i, int j) {
    const auto pair = [=](int k) {
      return reinterpret_cast<const double*>(row + 4 * i64{places[k]});
    };
    return _mm_castpd_ps(_mm_loadh_pd(_mm_load_sd(pair(i)), pair(j)));
  };
  const __m256 a = _mm256_set_m128(pairs(4, 5), pairs(0, 1));
  const __m256 b = _mm256_set_m128(pairs(6, 7), pairs(2, 3));
  here->v = _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0x88));
  right->v = _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0xDD));
}

inline void SumBytes(V a, V b, V c, V d, V* low, V* high) {
  const auto sum = [](__m256i pairs) {
    return V{_mm256_maddubs_epi16(pairs, _mm256_set1_epi8(1))};
  };
  *low = Add16(sum(_mm256_unpacklo_epi8(a.v, b.v)), sum(_mm256_unpacklo_epi8(c.v, d.v)));
  *high = Add16(sum(_mm256_unpackhi_epi8(a.v, b.v)), sum(_mm256_unpackhi_epi8(c.v, d.v)));
}
inline void StoreWide(V low, V high, u8* p) {
  FirstHalves(low, high).Store(p);
  SecondHalves(low, high).Store(p + 32);
}

inline void Transpose(V (&rows)[4]) {
  const __m256i low01 = _mm256_unpacklo_epi32(rows[0].v, rows[1].v);
  const __m256i low23 = _mm256_unpacklo_epi32(rows[2].v, rows[3].v);
  const __m256i high01 = _mm256_unpackhi_epi32(rows[0].v, rows[1].v);
  const __m256i high23 = _mm256_unpackhi_epi32(rows[2].v, rows[3].v);
  rows[0] = {_mm256_unpacklo_epi64(low01, low23)};
  rows[1] = {_mm256_unpackhi_epi64(low01, low23)};
  rows[2] = {_mm256_unpacklo_epi64(high01, high23)};
  rows[3] = {_mm256_unpackhi_epi64(high01, high23)};
}

inline void StoreZipped32(const V (&a)[4], u8* p) {
  V pixels[4] = {a[0], a[1], a[2], a[3]};
  Transpose(pixels);  // 0 and 4, 1 and 5, …
  FirstHalves(pixels[0], pixels[1]).Store(p);
  FirstHalves(pixels[2], pixels[3]).Store(p + 32);
  SecondHalves(pixels[0], pixels[1]).Store(p + 64);
  SecondHalves(pixels[2], pixels[3]).Store(p + 96);
}

inline V LowWords(V a, V b) { return {_mm256_blend_epi16(a.v, _mm256_slli_epi32(b.v, 16), 0xAA)}; }
inline V HighWords(V a, V b) { return {_mm256_blend_epi16(_mm256_srli_epi32(a.v, 16), b.v, 0xAA)}; }

template <typename Address>
V LoadLanes(Address address) {
  const auto lane = [&](i64 i) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(address(i)));
  };
  return {_mm256_set_m128i(lane(1), lane(0))};
}

inline V MeansByLast32(V a) {
  const __m256i sums = _mm256_shuffle_epi32(a.v, 0xFF);
  const __m256 inverse = _mm256_div_ps(_mm256_set1_ps(1.0f), _mm256_cvtepi32_ps(sums));
  const __m256 factors = _mm256_blend_ps(inverse, _mm256_set1_ps(1.0f / 16), 0x88);
  const __m256 halves = _mm256_add_ps(_mm256_cvtepi32_ps(a.v), _mm256_set1_ps(0.5f));
  const __m256i means = _mm256_cvttps_epi32(_mm256_mul_ps(halves, factors));
  return {_mm256_and_si256(means, _mm256_cmpgt_epi32(sums, _mm256_set1_epi32(15)))};
}

inline V PackPixels(const V (&a)[4]) {
  return {
      _mm256_packus_epi16(_mm256_packs_epi32(a[0].v, a[1].v), _mm256_packs_epi32(a[2].v, a[3].v))};
}

inline bool AlphasClear(V a) { return _mm256_testz_si256(a.v, V::All32(0xFF000000).v) != 0; }
inline bool AlphasOpaque(V a) { return _mm256_testc_si256(a.v, V::All32(0xFF000000).v) != 0; }

// The twins of simd_sse41.h.

inline V Max32(V a, V b) { return {_mm256_max_epi32(a.v, b.v)}; }
inline V Greater32(V a, V b) { return {_mm256_cmpgt_epi32(a.v, b.v)}; }
inline V Mul32(V a, V b) { return {_mm256_mullo_epi32(a.v, b.v)}; }
inline V Index32() { return {_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)}; }
inline bool IsZero(V a) { return _mm256_testz_si256(a.v, a.v) != 0; }

inline V RepeatAlpha(V pixels) {
  const __m128i bytes = _mm_setr_epi8(3, -1, 3, -1, 7, -1, 7, -1, 11, -1, 11, -1, 15, -1, 15, -1);
  return {_mm256_shuffle_epi8(pixels.v, _mm256_broadcastsi128_si256(bytes))};
}

inline V LoadFours(const u8* p, const i32* places) {
  const auto* low = reinterpret_cast<const __m128i*>(p + places[0]);
  const auto* high = reinterpret_cast<const __m128i*>(p + places[1]);
  return {_mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(low)),
                                  _mm_loadu_si128(high), 1)};
}
inline V ShuffleFours(V a, V from) { return {_mm256_shuffle_epi8(a.v, from.v)}; }

inline V LoadRows(const u8* const* rows, i64 at) {
  return LoadLanes([&](i64 lane) { return rows[4 * lane] + at; });
}
inline void StoreRows(u8* const* rows, i64 at, V a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(rows[0] + at), _mm256_castsi256_si128(a.v));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(rows[4] + at), _mm256_extracti128_si256(a.v, 1));
}

inline V LoadEach(const u8* p, V places, V mask) {
  const auto* base = reinterpret_cast<const int*>(p);
  return {_mm256_mask_i32gather_epi32(_mm256_setzero_si256(), base, places.v, mask.v, 1)};
}
inline V LoadEach(const u8* p, V places) {
  return {_mm256_i32gather_epi32(reinterpret_cast<const int*>(p), places.v, 1)};
}

inline V Pixels(V b, V g, V r, V a) {
  const __m256i bytes =
      _mm256_packus_epi16(_mm256_packs_epi32(b.v, g.v), _mm256_packs_epi32(r.v, a.v));
  const __m128i order = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  return {_mm256_shuffle_epi8(bytes, _mm256_broadcastsi128_si256(order))};
}

struct F {
  __m256 v;

  static F All(f32 x) { return {_mm256_set1_ps(x)}; }
};
inline F operator+(F a, F b) { return {_mm256_add_ps(a.v, b.v)}; }
inline F operator-(F a, F b) { return {_mm256_sub_ps(a.v, b.v)}; }
inline F operator*(F a, F b) { return {_mm256_mul_ps(a.v, b.v)}; }
inline F operator/(F a, F b) { return {_mm256_div_ps(a.v, b.v)}; }
inline F Abs(F a) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0f), a.v)}; }
inline F Least(F a, F b) { return {_mm256_min_ps(a.v, b.v)}; }
inline F Most(F a, F b) { return {_mm256_max_ps(a.v, b.v)}; }
inline F Sqrt(F a) { return {_mm256_sqrt_ps(a.v)}; }
inline F operator<(F a, F b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }
inline F operator&(F a, F b) { return {_mm256_and_ps(a.v, b.v)}; }
inline F Select(F mask, F a, F b) { return {_mm256_blendv_ps(a.v, b.v, mask.v)}; }
inline bool IsEverywhere(F mask) { return _mm256_movemask_ps(mask.v) == 0xFF; }
inline V Bits(F mask) { return {_mm256_castps_si256(mask.v)}; }
inline F Real(V a) { return {_mm256_cvtepi32_ps(a.v)}; }
inline V Truncate(F a) { return {_mm256_cvttps_epi32(a.v)}; }
inline F Ratio32(V a, V b) { return F::All(1.0f + 0x1p-20f) * Real(a) / Real(b); }

struct D {
  __m256d v;
};
inline D All(double x) { return {_mm256_set1_pd(x)}; }
inline D operator+(D a, D b) { return {_mm256_add_pd(a.v, b.v)}; }
inline D operator-(D a, D b) { return {_mm256_sub_pd(a.v, b.v)}; }
inline D operator*(D a, D b) { return {_mm256_mul_pd(a.v, b.v)}; }
inline D operator/(D a, D b) { return {_mm256_div_pd(a.v, b.v)}; }
inline D Abs(D a) { return {_mm256_andnot_pd(_mm256_set1_pd(-0.0), a.v)}; }
inline D Least(D a, D b) { return {_mm256_min_pd(a.v, b.v)}; }
inline D Most(D a, D b) { return {_mm256_max_pd(a.v, b.v)}; }
inline D Sqrt(D a) { return {_mm256_sqrt_pd(a.v)}; }
inline D operator<(D a, D b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LT_OQ)}; }
inline D Select(D mask, D a, D b) { return {_mm256_blendv_pd(a.v, b.v, mask.v)}; }
inline D RoundToSingle(D a) { return {_mm256_cvtps_pd(_mm256_cvtpd_ps(a.v))}; }
inline D LowDoubles(F a) { return {_mm256_cvtps_pd(_mm256_castps256_ps128(a.v))}; }
inline D HighDoubles(F a) { return {_mm256_cvtps_pd(_mm256_extractf128_ps(a.v, 1))}; }
inline F Singles(D low, D high) {
  return {_mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(low.v)),
                               _mm256_cvtpd_ps(high.v), 1)};
}
inline F Product(F a, D b) { return Singles(LowDoubles(a) * b, HighDoubles(a) * b); }

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_SIMD_AVX2_H_
