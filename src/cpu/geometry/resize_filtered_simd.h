// What filtered resizing adds to the vocabulary.
#ifndef PICTAVO_CPU_GEOMETRY_RESIZE_FILTERED_SIMD_H_
#define PICTAVO_CPU_GEOMETRY_RESIZE_FILTERED_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/ssse3.h"

TARGET_REGION("ssse3")
namespace pictavo::cpu::ssse3 {

/// The bits of a vector as singles.
inline F Singles(V a) { return {_mm_castsi128_ps(a.v)}; }
/// The last of each four singles in all four.
inline F RepeatLast(F a) { return {_mm_shuffle_ps(a.v, a.v, 0xFF)}; }
/// The sum of the products of the two bytes of each lane, of a unsigned, of b signed, limited.
inline V DotProduct16(V a, V b) { return {_mm_maddubs_epi16(a.v, b.v)}; }
/// The lanes of two vectors of 16 bits, in their order, limited to bytes.
inline V PackPixels(const V (&a)[2]) { return {_mm_packus_epi16(a[0].v, a[1].v)}; }

}  // namespace pictavo::cpu::ssse3
TARGET_REGION_END

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline F Singles(V a) { return {_mm256_castsi256_ps(a.v)}; }
inline F RepeatLast(F a) { return {_mm256_shuffle_ps(a.v, a.v, 0xFF)}; }
inline V DotProduct16(V a, V b) { return {_mm256_maddubs_epi16(a.v, b.v)}; }
inline V PackPixels(const V (&a)[2]) {
  return {_mm256_permute4x64_epi64(_mm256_packus_epi16(a[0].v, a[1].v), 0b11'01'10'00)};
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_GEOMETRY_RESIZE_FILTERED_SIMD_H_
