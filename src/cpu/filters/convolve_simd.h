// What convolution adds to the vocabulary.
#ifndef PICTAVO_CPU_FILTERS_CONVOLVE_SIMD_H_
#define PICTAVO_CPU_FILTERS_CONVOLVE_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {

/// The sum of the products of the two bytes of each lane, of a unsigned, of b signed, limited.
inline V DotProduct16(V a, V b) { return {_mm_maddubs_epi16(a.v, b.v)}; }
inline V ShiftRightI16(V a, int bits) { return {_mm_srai_epi16(a.v, bits)}; }
/// The lanes of two vectors of 16 bits, or four of 32, in their order, limited to bytes.
inline V PackPixels(const V (&a)[2]) { return {_mm_packus_epi16(a[0].v, a[1].v)}; }
inline V PackPixels(const V (&a)[4]) { return PackU8(a); }

}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline V DotProduct16(V a, V b) { return {_mm256_maddubs_epi16(a.v, b.v)}; }
inline V ShiftRightI16(V a, int bits) { return {_mm256_srai_epi16(a.v, bits)}; }
inline V PackPixels(const V (&a)[2]) {
  return {_mm256_permute4x64_epi64(_mm256_packus_epi16(a[0].v, a[1].v), 0b11'01'10'00)};
}
inline V PackPixels(const V (&a)[4]) {
  return {_mm256_permutevar8x32_epi32(PackU8(a).v, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_FILTERS_CONVOLVE_SIMD_H_
