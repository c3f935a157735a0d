// Pairs of pixels in single precision: what Gaussians add to the vocabulary. gauss.cpp has the
// portable twin.
#ifndef PICTAVO_CPU_FILTERS_GAUSS_SIMD_H_
#define PICTAVO_CPU_FILTERS_GAUSS_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {

/// As many words as V holds of bytes.
inline V WidenBytes(const u8* p) {
  return {_mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)))};
}
/// a * b / 2^15 of signed lanes, to the nearest.
inline V MulRounded16(V a, V b) { return {_mm_mulhrs_epi16(a.v, b.v)}; }
inline F LoadF(const f32* p) { return {_mm_loadu_ps(p)}; }

/// The channels of two pixels.
struct Pair {
  __m128 a, b;

  static Pair All(f32 x) { return {_mm_set1_ps(x), _mm_set1_ps(x)}; }
  /// One number for each of the pixels.
  static Pair Each(const f32* two) { return {_mm_set1_ps(two[0]), _mm_set1_ps(two[1])}; }
  static Pair Load(const f32* p) { return {_mm_loadu_ps(p), _mm_loadu_ps(p + 4)}; }
  void Store(f32* p) const {
    _mm_storeu_ps(p, a);
    _mm_storeu_ps(p + 4, b);
  }
  static Pair OfBytes(const u8* p) {
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    return {_mm_cvtepi32_ps(_mm_cvtepu8_epi32(bytes)),
            _mm_cvtepi32_ps(_mm_cvtepu8_epi32(_mm_srli_si128(bytes, 4)))};
  }
  /// Towards zero, within a byte.
  void StoreBytes(u8* p) const {
    const __m128i words = _mm_packus_epi32(_mm_cvttps_epi32(a), _mm_cvttps_epi32(b));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(words, words));
  }
  /// The sum of the two pixels.
  void StoreSum(f32* p) const { _mm_storeu_ps(p, _mm_add_ps(a, b)); }
};
inline Pair operator+(Pair x, Pair y) { return {_mm_add_ps(x.a, y.a), _mm_add_ps(x.b, y.b)}; }
inline Pair operator-(Pair x, Pair y) { return {_mm_sub_ps(x.a, y.a), _mm_sub_ps(x.b, y.b)}; }
inline Pair operator*(Pair x, Pair y) { return {_mm_mul_ps(x.a, y.a), _mm_mul_ps(x.b, y.b)}; }
inline Pair operator/(Pair x, Pair y) { return {_mm_div_ps(x.a, y.a), _mm_div_ps(x.b, y.b)}; }
inline Pair Min(Pair x, Pair y) { return {_mm_min_ps(x.a, y.a), _mm_min_ps(x.b, y.b)}; }
inline Pair Max(Pair x, Pair y) { return {_mm_max_ps(x.a, y.a), _mm_max_ps(x.b, y.b)}; }
/// x < y ? yes : no, in each channel.
inline Pair SelectLess(Pair x, Pair y, Pair yes, Pair no) {
  return {_mm_blendv_ps(no.a, yes.a, _mm_cmplt_ps(x.a, y.a)),
          _mm_blendv_ps(no.b, yes.b, _mm_cmplt_ps(x.b, y.b))};
}
/// The alphas of y beside the colours of x.
inline Pair JoinAlphas(Pair x, Pair y) {
  return {_mm_blend_ps(x.a, y.a, 8), _mm_blend_ps(x.b, y.b, 8)};
}
/// Each pixel's alpha in all its channels.
inline Pair SpreadAlphas(Pair x) {
  return {_mm_shuffle_ps(x.a, x.a, 0xFF), _mm_shuffle_ps(x.b, x.b, 0xFF)};
}

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline V WidenBytes(const u8* p) {
  return {_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))};
}
inline V MulRounded16(V a, V b) { return {_mm256_mulhrs_epi16(a.v, b.v)}; }
inline F LoadF(const f32* p) { return {_mm256_loadu_ps(p)}; }

struct Pair {
  __m256 v;

  static Pair All(f32 x) { return {_mm256_set1_ps(x)}; }
  static Pair Each(const f32* two) {
    const __m256d both = _mm256_broadcastsd_pd(_mm_load_sd(reinterpret_cast<const double*>(two)));
    return {
        _mm256_permutevar_ps(_mm256_castpd_ps(both), _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1))};
  }
  static Pair Load(const f32* p) { return {_mm256_loadu_ps(p)}; }
  void Store(f32* p) const { _mm256_storeu_ps(p, v); }
  static Pair OfBytes(const u8* p) {
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    return {_mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(bytes))};
  }
  void StoreBytes(u8* p) const {
    const __m256i whole = _mm256_cvttps_epi32(v);
    const __m128i words =
        _mm_packus_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(words, words));
  }
  void StoreSum(f32* p) const {
    _mm_storeu_ps(p, _mm_add_ps(_mm256_castps256_ps128(v), _mm256_extractf128_ps(v, 1)));
  }
};
inline Pair operator+(Pair x, Pair y) { return {_mm256_add_ps(x.v, y.v)}; }
inline Pair operator-(Pair x, Pair y) { return {_mm256_sub_ps(x.v, y.v)}; }
inline Pair operator*(Pair x, Pair y) { return {_mm256_mul_ps(x.v, y.v)}; }
inline Pair operator/(Pair x, Pair y) { return {_mm256_div_ps(x.v, y.v)}; }
inline Pair Min(Pair x, Pair y) { return {_mm256_min_ps(x.v, y.v)}; }
inline Pair Max(Pair x, Pair y) { return {_mm256_max_ps(x.v, y.v)}; }
inline Pair SelectLess(Pair x, Pair y, Pair yes, Pair no) {
  return {_mm256_blendv_ps(no.v, yes.v, _mm256_cmp_ps(x.v, y.v, _CMP_LT_OQ))};
}
inline Pair JoinAlphas(Pair x, Pair y) { return {_mm256_blend_ps(x.v, y.v, 0x88)}; }
inline Pair SpreadAlphas(Pair x) { return {_mm256_permute_ps(x.v, 0xFF)}; }

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_FILTERS_GAUSS_SIMD_H_
