// What grading adds to the vocabulary.
#ifndef PICTAVO_CPU_COLOUR_GRADING_SIMD_H_
#define PICTAVO_CPU_COLOUR_GRADING_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {

/// The numbers of 64 bits each at the places, counted in such: those of the first two lanes of each
/// 128 bits, and those of the other two.
inline void Gather64(const u8* p, V places, V (&numbers)[2]) {
  const auto two = [p](i32 first, i32 second) -> V {
    const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 8 * i64{first}));
    const __m128i high = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 8 * i64{second}));
    return {_mm_unpacklo_epi64(low, high)};
  };
  numbers[0] = two(_mm_extract_epi32(places.v, 0), _mm_extract_epi32(places.v, 1));
  numbers[1] = two(_mm_extract_epi32(places.v, 2), _mm_extract_epi32(places.v, 3));
}

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

/// By plain loads: gathers are slower than these where processors are mended against spying on
/// them.
inline void Gather64(const u8* p, V places, V (&numbers)[2]) {
  alignas(32) i32 at[8];
  _mm256_store_si256(reinterpret_cast<__m256i*>(at), places.v);
  const auto one = [&](int i) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + i64{8} * at[i]));
  };
  const auto two = [&](int i) { return _mm_unpacklo_epi64(one(i), one(i + 1)); };
  numbers[0] = {_mm256_inserti128_si256(_mm256_castsi128_si256(two(0)), two(4), 1)};
  numbers[1] = {_mm256_inserti128_si256(_mm256_castsi128_si256(two(2)), two(6), 1)};
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_COLOUR_GRADING_SIMD_H_
