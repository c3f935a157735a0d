// What the conversions add to the vocabulary.
#ifndef PICTAVO_CPU_COLOUR_CONVERT_SIMD_H_
#define PICTAVO_CPU_COLOUR_CONVERT_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"

namespace pictavo::cpu::sse2 {

/// Pixels whose bytes, from blue to alpha, are the high halves of four. Those must be below 256.
inline V PackHigh16(V blue, V green, V red, V alpha) {
  const __m128i halves = _mm_packus_epi16(PairHigh16(blue, green).v, PairHigh16(red, alpha).v);
  return {_mm_unpacklo_epi16(halves, _mm_srli_si128(halves, 8))};
}

}  // namespace pictavo::cpu::sse2

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline V PackHigh16(V blue, V green, V red, V alpha) {
  const __m128i bytes = _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
  return {
      _mm256_shuffle_epi8(_mm256_packus_epi16(PairHigh16(blue, green).v, PairHigh16(red, alpha).v),
                          _mm256_broadcastsi128_si256(bytes))};
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_COLOUR_CONVERT_SIMD_H_
