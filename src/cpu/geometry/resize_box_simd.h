// What the boxes add to the vocabulary.
#ifndef PICTAVO_CPU_GEOMETRY_RESIZE_BOX_SIMD_H_
#define PICTAVO_CPU_GEOMETRY_RESIZE_BOX_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"
#include "cpu/simd/sse41.h"

namespace pictavo::cpu::sse2 {

/// Stores four pixels, each a sixteenth of the sum of four columns times counts. A column is four
/// words, one a channel; the counts are those of the first pixel's columns, the second's, …
inline void StoreMeansOfColumns(const u8* const (&columns)[4], const u8* counts, u8* p) {
  const auto mean = [=](int i) {
    const auto half = [=](int at) {
      return Mul16(V::Load(columns[i] + at), V::Load(counts + 32 * i + at));
    };
    return Add16(half(0), half(16));
  };
  const auto pair = [](V a, V b) {
    return ShiftRightU16(Add16(FirstHalves(a, b), SecondHalves(a, b)), 4).v;
  };
  V{_mm_packus_epi16(pair(mean(0), mean(1)), pair(mean(2), mean(3)))}.Store(p);
}

}  // namespace pictavo::cpu::sse2

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {

/// The sums of four vectors' bytes, as words: of the first two pixels of each 128 bits, and of the
/// others.
inline void SumBytes(V a, V b, V c, V d, V* low, V* high) {
  const auto sum = [](__m128i pairs) { return V{_mm_maddubs_epi16(pairs, _mm_set1_epi8(1))}; };
  *low = Add16(sum(_mm_unpacklo_epi8(a.v, b.v)), sum(_mm_unpacklo_epi8(c.v, d.v)));
  *high = Add16(sum(_mm_unpackhi_epi8(a.v, b.v)), sum(_mm_unpackhi_epi8(c.v, d.v)));
}
/// Pixels of four vectors, each a sixteenth of the sum of the two quadruples of words in 128 bits.
inline V MeansOfPairs(const V (&a)[4]) {
  const auto means = [](V b, V c) {
    const V low = {_mm_unpacklo_epi64(b.v, c.v)}, high = {_mm_unpackhi_epi64(b.v, c.v)};
    return ShiftRightU16(Add16(low, high), 4).v;
  };
  return {_mm_packus_epi16(means(a[0], a[1]), means(a[2], a[3]))};
}
/// In each 128 bits, the sums of the four numbers that each vector has there.
inline V SumsAcross32(const V (&a)[4]) {
  return {_mm_hadd_epi32(_mm_hadd_epi32(a[0].v, a[1].v), _mm_hadd_epi32(a[2].v, a[3].v))};
}
/// Stores what SumBytes makes, in the order of the pixels.
inline void StoreWide(V low, V high, u8* p) {
  low.Store(p);
  high.Store(p + kVectorBytes);
}

/// Stores four numbers of each pixel, from four vectors that hold one number of all pixels.
inline void StoreZipped32(const V (&a)[4], u8* p) {
  V pixels[4] = {a[0], a[1], a[2], a[3]};
  Transpose32(pixels);
  for (i64 i = 0; i < 4; ++i) pixels[i].Store(p + i * kVectorBytes);
}

/// Per 128-bit lane, for four numbers b, g, r below 2^20 and s below 2^12: b / s, g / s, r / s and
/// s / 16, rounded towards zero; all 0 for s below 16.
///
/// The halves added keep every quotient further from the next integers than single precision errs.
inline V MeansByLast32(V a) {
  const __m128i sums = _mm_shuffle_epi32(a.v, 0xFF);
  const __m128 inverse = _mm_div_ps(_mm_set1_ps(1.0f), _mm_cvtepi32_ps(sums));
  const __m128 factors = _mm_blend_ps(inverse, _mm_set1_ps(1.0f / 16), 8);
  const V means = Truncate((ToF(a) + F::All(0.5f)) * F{factors});
  return means & GreaterI32({sums}, V::All32(15));
}

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline void StoreMeansOfColumns(const u8* const (&columns)[4], const u8* counts, u8* p) {
  const auto column = [=](int i) { return Mul16(V::Load(columns[i]), V::Load(counts + 32 * i)); };
  const auto pair = [](V a, V b) { return Add16(FirstHalves(a, b), SecondHalves(a, b)).v; };
  const __m256i a = pair(column(0), column(1)), b = pair(column(2), column(3));
  const __m256i means =  // of pixels 0 and 2, 1 and 3
      ShiftRightU16(Add16({_mm256_unpacklo_epi64(a, b)}, {_mm256_unpackhi_epi64(a, b)}), 4).v;
  const __m128i pixels =
      _mm_packus_epi16(_mm256_castsi256_si128(means), _mm256_extracti128_si256(means, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_shuffle_epi32(pixels, 0b11'01'10'00));
}

inline void SumBytes(V a, V b, V c, V d, V* low, V* high) {
  const auto sum = [](__m256i pairs) {
    return V{_mm256_maddubs_epi16(pairs, _mm256_set1_epi8(1))};
  };
  *low = Add16(sum(_mm256_unpacklo_epi8(a.v, b.v)), sum(_mm256_unpacklo_epi8(c.v, d.v)));
  *high = Add16(sum(_mm256_unpackhi_epi8(a.v, b.v)), sum(_mm256_unpackhi_epi8(c.v, d.v)));
}
inline V MeansOfPairs(const V (&a)[4]) {
  const auto means = [](V b, V c) {
    const V low = {_mm256_unpacklo_epi64(b.v, c.v)}, high = {_mm256_unpackhi_epi64(b.v, c.v)};
    return ShiftRightU16(Add16(low, high), 4).v;
  };
  return {_mm256_packus_epi16(means(a[0], a[1]), means(a[2], a[3]))};
}
inline V SumsAcross32(const V (&a)[4]) {
  return {_mm256_hadd_epi32(_mm256_hadd_epi32(a[0].v, a[1].v), _mm256_hadd_epi32(a[2].v, a[3].v))};
}
inline void StoreWide(V low, V high, u8* p) {
  FirstHalves(low, high).Store(p);
  SecondHalves(low, high).Store(p + kVectorBytes);
}

inline void StoreZipped32(const V (&a)[4], u8* p) {
  V pixels[4] = {a[0], a[1], a[2], a[3]};
  Transpose32(pixels);  // 0 and 4, 1 and 5, …
  FirstHalves(pixels[0], pixels[1]).Store(p);
  FirstHalves(pixels[2], pixels[3]).Store(p + kVectorBytes);
  SecondHalves(pixels[0], pixels[1]).Store(p + 2 * kVectorBytes);
  SecondHalves(pixels[2], pixels[3]).Store(p + 3 * kVectorBytes);
}

inline V MeansByLast32(V a) {
  const __m256i sums = _mm256_shuffle_epi32(a.v, 0xFF);
  const __m256 inverse = _mm256_div_ps(_mm256_set1_ps(1.0f), _mm256_cvtepi32_ps(sums));
  const __m256 factors = _mm256_blend_ps(inverse, _mm256_set1_ps(1.0f / 16), 0x88);
  const V means = Truncate((ToF(a) + F::All(0.5f)) * F{factors});
  return means & GreaterI32({sums}, V::All32(15));
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_GEOMETRY_RESIZE_BOX_SIMD_H_
