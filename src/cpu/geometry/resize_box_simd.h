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
    return ShiftRightU16(Add16(FirstHalves(a, b), SecondHalves(a, b)), 4);
  };
  PackU8(pair(mean(0), mean(1)), pair(mean(2), mean(3))).Store(p);
}

}  // namespace pictavo::cpu::sse2

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {

/// In each 128 bits, the sums of the four numbers that each vector has there.
inline V SumsAcross32(const V (&a)[4]) {
  return {_mm_hadd_epi32(_mm_hadd_epi32(a[0].v, a[1].v), _mm_hadd_epi32(a[2].v, a[3].v))};
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
  const V sums = Repeat32<3>(a);
  const F inverse = F::All(1) / ToF(sums);
  const __m128 factors = _mm_blend_ps(inverse.v, _mm_set1_ps(1.0f / 16), 8);
  const V means = Truncate((ToF(a) + F::All(0.5f)) * F{factors});
  return means & GreaterI32(sums, V::All32(15));
}

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline void StoreMeansOfColumns(const u8* const (&columns)[4], const u8* counts, u8* p) {
  const auto column = [=](int i) { return Mul16(V::Load(columns[i]), V::Load(counts + 32 * i)); };
  const auto pair = [](V a, V b) { return Add16(FirstHalves(a, b), SecondHalves(a, b)); };
  const V a = pair(column(0), column(1)), b = pair(column(2), column(3));
  const __m256i means =  // of pixels 0 and 2, 1 and 3
      ShiftRightU16(Add16(InterleaveFirst64(a, b), InterleaveSecond64(a, b)), 4).v;
  const __m128i pixels =
      _mm_packus_epi16(_mm256_castsi256_si128(means), _mm256_extracti128_si256(means, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_shuffle_epi32(pixels, 0b11'01'10'00));
}

inline V SumsAcross32(const V (&a)[4]) {
  return {_mm256_hadd_epi32(_mm256_hadd_epi32(a[0].v, a[1].v), _mm256_hadd_epi32(a[2].v, a[3].v))};
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
  const V sums = Repeat32<3>(a);
  const F inverse = F::All(1) / ToF(sums);
  const __m256 factors = _mm256_blend_ps(inverse.v, _mm256_set1_ps(1.0f / 16), 0x88);
  const V means = Truncate((ToF(a) + F::All(0.5f)) * F{factors});
  return means & GreaterI32(sums, V::All32(15));
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_GEOMETRY_RESIZE_BOX_SIMD_H_
