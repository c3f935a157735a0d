// Eight 32-bit pixels, or sixteen 16-bit numbers, in AVX2: the twin of simd_sse2.h.
#ifndef PICTAVO_CPU_SIMD_AVX2_H_
#define PICTAVO_CPU_SIMD_AVX2_H_

#include <immintrin.h>

#include "cpu/target_region.h"
#include "pictavo/pictavo.h"

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

struct V {
  static constexpr i64 kPixels = 8;

  __m256i v;

  static V Load(const u8* p) { return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))}; }
  void Store(u8* p) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
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
inline V Min8(V a, V b) { return {_mm256_min_epu8(a.v, b.v)}; }
inline V Max8(V a, V b) { return {_mm256_max_epu8(a.v, b.v)}; }
inline V Add32(V a, V b) { return {_mm256_add_epi32(a.v, b.v)}; }
inline V Sub32(V a, V b) { return {_mm256_sub_epi32(a.v, b.v)}; }
inline V IsHigh8(V a) { return {_mm256_cmpgt_epi8(_mm256_setzero_si256(), a.v)}; }
inline V IsNegative16(V a) { return {_mm256_srai_epi16(a.v, 15)}; }
inline V Equal8(V a, V b) { return {_mm256_cmpeq_epi8(a.v, b.v)}; }
inline V Equal32(V a, V b) { return {_mm256_cmpeq_epi32(a.v, b.v)}; }

inline V ShiftLeft16(V a, int bits) { return {_mm256_slli_epi16(a.v, bits)}; }
inline V ShiftRight16(V a, int bits) { return {_mm256_srli_epi16(a.v, bits)}; }
inline V ShiftLeft32(V a, int bits) { return {_mm256_slli_epi32(a.v, bits)}; }
inline V ShiftRight32(V a, int bits) { return {_mm256_srli_epi32(a.v, bits)}; }

inline V TruncatedProduct32(V a, f32 gain, f32 factor) {
  const auto scaled = _mm256_mul_ps(_mm256_cvtepi32_ps(a.v), _mm256_set1_ps(gain));
  return {_mm256_cvttps_epi32(_mm256_mul_ps(scaled, _mm256_set1_ps(factor)))};
}

inline V ByteQuotient32(V a, V b) {
  const auto quotient = _mm256_div_ps(_mm256_cvtepi32_ps(a.v), _mm256_cvtepi32_ps(b.v));
  return {_mm256_cvttps_epi32(_mm256_min_ps(quotient, _mm256_set1_ps(255.0f)))};
}

inline V SwapPairs(V a) { return {_mm256_shuffle_epi32(a.v, 0xB1)}; }

inline V Repeat16(V a) {
  const __m128i bytes = _mm_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13);
  return {_mm256_shuffle_epi8(a.v, _mm256_broadcastsi128_si256(bytes))};
}

inline V Select(V mask, V a, V b) { return {_mm256_blendv_epi8(a.v, b.v, mask.v)}; }

inline u32 PickOf(u32 pick) { return pick; }
inline V Permute(V a, V picks) { return {_mm256_permutevar8x32_epi32(a.v, picks.v)}; }
inline V FirstHalves(V a, V b) { return {_mm256_permute2x128_si256(a.v, b.v, 0x20)}; }
inline V SecondHalves(V a, V b) { return {_mm256_permute2x128_si256(a.v, b.v, 0x31)}; }

/// Eight byte pairs of loads are faster than a gather, on processors old and patched.
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

inline bool AlphasClear(V a) { return _mm256_testz_si256(a.v, V::All32(0xFF000000).v) != 0; }
inline bool AlphasOpaque(V a) { return _mm256_testc_si256(a.v, V::All32(0xFF000000).v) != 0; }

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_SIMD_AVX2_H_
