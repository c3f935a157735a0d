// What frames add to the vocabulary. What is said of 128 bits holds for each half of a longer
// vector.
#ifndef PICTAVO_CPU_COLOUR_FRAMES_SIMD_H_
#define PICTAVO_CPU_COLOUR_FRAMES_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"
#include "cpu/simd/ssse3.h"

namespace pictavo::cpu::sse2 {

/// Lanes of a and b in turn: those of the first, or the second, 64 bits.
inline V FirstLanes8(V a, V b) { return {_mm_unpacklo_epi8(a.v, b.v)}; }
inline V LastLanes8(V a, V b) { return {_mm_unpackhi_epi8(a.v, b.v)}; }
inline V FirstLanes16(V a, V b) { return {_mm_unpacklo_epi16(a.v, b.v)}; }
inline V LastLanes16(V a, V b) { return {_mm_unpackhi_epi16(a.v, b.v)}; }
inline V FirstLanes32(V a, V b) { return {_mm_unpacklo_epi32(a.v, b.v)}; }
inline V LastLanes32(V a, V b) { return {_mm_unpackhi_epi32(a.v, b.v)}; }
/// The first 64 bits and the last ones, their bytes in turn.
inline V ZipHalves8(V a) { return {_mm_unpacklo_epi8(a.v, _mm_srli_si128(a.v, 8))}; }

/// A row's bytes, so that four vectors unpacked of each 128 bits of them follow each other.
inline V ForUnpacking(V a) { return a; }
/// What four vectors in a row were packed into, in the order of the row; what two were, which is
/// its own inverse.
inline V JoinFours(V a) { return a; }
inline V JoinPairs(V a) { return a; }

/// Lanes 0 and 2, or 1 and 3, of a and then of b.
inline V EvenLanes32(V a, V b) {
  return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.v), _mm_castsi128_ps(b.v), 0x88))};
}
inline V OddLanes32(V a, V b) {
  return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.v), _mm_castsi128_ps(b.v), 0xDD))};
}

/// The lanes of a, then those of b, in half their width; what does not fit is limited.
inline V PackI16(V a, V b) { return {_mm_packs_epi32(a.v, b.v)}; }
inline V PackU8(V a, V b) { return {_mm_packus_epi16(a.v, b.v)}; }

inline V AddSaturatedI16(V a, V b) { return {_mm_adds_epi16(a.v, b.v)}; }
inline V ShiftRightI16(V a, int bits) { return {_mm_srai_epi16(a.v, bits)}; }

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

inline V FirstLanes8(V a, V b) { return {_mm256_unpacklo_epi8(a.v, b.v)}; }
inline V LastLanes8(V a, V b) { return {_mm256_unpackhi_epi8(a.v, b.v)}; }
inline V FirstLanes16(V a, V b) { return {_mm256_unpacklo_epi16(a.v, b.v)}; }
inline V LastLanes16(V a, V b) { return {_mm256_unpackhi_epi16(a.v, b.v)}; }
inline V FirstLanes32(V a, V b) { return {_mm256_unpacklo_epi32(a.v, b.v)}; }
inline V LastLanes32(V a, V b) { return {_mm256_unpackhi_epi32(a.v, b.v)}; }
inline V ZipHalves8(V a) { return {_mm256_unpacklo_epi8(a.v, _mm256_srli_si256(a.v, 8))}; }

inline V ForUnpacking(V a) {
  return {_mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7))};
}
inline V JoinFours(V a) {
  return {_mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};
}
inline V JoinPairs(V a) { return {_mm256_permute4x64_epi64(a.v, 0b11'01'10'00)}; }

inline V EvenLanes32(V a, V b) {
  return {_mm256_castps_si256(
      _mm256_shuffle_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v), 0x88))};
}
inline V OddLanes32(V a, V b) {
  return {_mm256_castps_si256(
      _mm256_shuffle_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v), 0xDD))};
}

inline V PackI16(V a, V b) { return {_mm256_packs_epi32(a.v, b.v)}; }
inline V PackU8(V a, V b) { return {_mm256_packus_epi16(a.v, b.v)}; }

inline V AddSaturatedI16(V a, V b) { return {_mm256_adds_epi16(a.v, b.v)}; }
inline V ShiftRightI16(V a, int bits) { return {_mm256_srai_epi16(a.v, bits)}; }

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
