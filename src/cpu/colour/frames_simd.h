// What frames add to the vocabulary. What is said of 128 bits holds for each half of a longer
// vector.
#ifndef PICTAVO_CPU_COLOUR_FRAMES_SIMD_H_
#define PICTAVO_CPU_COLOUR_FRAMES_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"
#include "cpu/simd/ssse3.h"

namespace pictavo::cpu::sse2 {

/// The first 64 bits and the last ones, their bytes in turn.
inline V ZipHalves8(V a) { return {_mm_unpacklo_epi8(a.v, _mm_srli_si128(a.v, 8))}; }

/// A row's bytes, so that four vectors unpacked of each 128 bits of them follow each other.
inline V ForUnpacking(V a) { return a; }

/// Halves up.
inline V Average16(V a, V b) { return {_mm_avg_epu16(a.v, b.v)}; }

/// Bytes of two rows in turn, half a vector of each.
inline V LoadInTurn8(const u8* a, const u8* b) {
  return {_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(a)),
                            _mm_loadl_epi64(reinterpret_cast<const __m128i*>(b)))};
}
/// The first 64 bits of each 128 to one row, the last ones to another.
inline void StoreHalves(V a, u8* first, u8* last) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(first), a.v);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(last), _mm_unpackhi_epi64(a.v, a.v));
}

}  // namespace pictavo::cpu::sse2

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline V ZipHalves8(V a) { return {_mm256_unpacklo_epi8(a.v, _mm256_srli_si256(a.v, 8))}; }

inline V ForUnpacking(V a) {
  return {_mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7))};
}

inline V Average16(V a, V b) { return {_mm256_avg_epu16(a.v, b.v)}; }

inline V LoadInTurn8(const u8* a, const u8* b) {
  const auto words = [](const u8* p) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  };
  return {_mm256_or_si256(words(a), _mm256_slli_epi16(words(b), 8))};
}
inline void StoreHalves(V a, u8* first, u8* last) {
  const __m256i rows = _mm256_permute4x64_epi64(a.v, 0b11'01'10'00);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(first), _mm256_castsi256_si128(rows));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(last), _mm256_extracti128_si256(rows, 1));
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_COLOUR_FRAMES_SIMD_H_
