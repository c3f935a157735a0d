// What channels and planes add to the vocabulary.
#ifndef PICTAVO_CPU_COLOUR_CHANNELS_SIMD_H_
#define PICTAVO_CPU_COLOUR_CHANNELS_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {

/// As many bytes as a V has pixels, in each 128 bits from their first byte on.
inline V SpreadBytes(const u8* p) {
  u32 four;
  std::memcpy(&four, p, sizeof(four));
  return V::All32(four);
}
/// The first four bytes of each 128 bits.
inline void StoreFours(V a, u8* p) {
  const int four = _mm_cvtsi128_si32(a.v);
  std::memcpy(p, &four, sizeof(four));
}

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline V SpreadBytes(const u8* p) {
  long long eight;
  std::memcpy(&eight, p, sizeof(eight));
  return {_mm256_set1_epi64x(eight)};
}
inline void StoreFours(V a, u8* p) {
  const __m128i eight =
      _mm_unpacklo_epi32(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), eight);
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_COLOUR_CHANNELS_SIMD_H_
