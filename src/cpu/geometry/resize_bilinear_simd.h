// What bilinear resizing adds to the vocabulary.
#ifndef PICTAVO_CPU_GEOMETRY_RESIZE_BILINEAR_SIMD_H_
#define PICTAVO_CPU_GEOMETRY_RESIZE_BILINEAR_SIMD_H_

#include "cpu/simd/avx2.h"
#include "cpu/simd/ssse3.h"

TARGET_REGION("ssse3")
namespace pictavo::cpu::ssse3 {

/// Pixel number `pick` of a vector, as Permute takes it.
inline u32 PickOf(u32 pick) { return pick * 0x04040404 + 0x03020100; }
/// The pixels of a that each lane of `picks` names.
inline V Permute(V a, V picks) { return ShuffleBytes(a, picks); }

/// a where the 32-bit number in `sign` is negative, b elsewhere.
inline V SelectNegative32(V sign, V a, V b) { return Select(ShiftRightI32(sign, 31), a, b); }

/// One pixel at each of `places`, counted in pixels from `row`, and the pixels right of them.
inline void LoadNeighbours(const u8* row, const i32* places, V* here, V* right) {
  const auto pair = [=](int i) {
    return reinterpret_cast<const double*>(row + 4 * i64{places[i]});
  };
  const __m128 a = _mm_castpd_ps(_mm_loadh_pd(_mm_load_sd(pair(0)), pair(1)));
  const __m128 b = _mm_castpd_ps(_mm_loadh_pd(_mm_load_sd(pair(2)), pair(3)));
  here->v = _mm_castps_si128(_mm_shuffle_ps(a, b, 0x88));
  right->v = _mm_castps_si128(_mm_shuffle_ps(a, b, 0xDD));
}

}  // namespace pictavo::cpu::ssse3
TARGET_REGION_END

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {

inline u32 PickOf(u32 pick) { return pick; }
inline V Permute(V a, V picks) { return {_mm256_permutevar8x32_epi32(a.v, picks.v)}; }

inline V SelectNegative32(V sign, V a, V b) {
  return {_mm256_castps_si256(_mm256_blendv_ps(_mm256_castsi256_ps(b.v), _mm256_castsi256_ps(a.v),
                                               _mm256_castsi256_ps(sign.v)))};
}

/// A load for each pixel and its neighbour, where a gather would need two.
inline void LoadNeighbours(const u8* row, const i32* places, V* here, V* right) {
  const auto pairs = [=](int i, int j) {
    const auto pair = [=](int k) {
      return reinterpret_cast<const double*>(row + 4 * i64{places[k]});
    };
    return _mm_castpd_ps(_mm_loadh_pd(_mm_load_sd(pair(i)), pair(j)));
  };
  const __m256 a = _mm256_set_m128(pairs(4, 5), pairs(0, 1));
  const __m256 b = _mm256_set_m128(pairs(6, 7), pairs(2, 3));
  here->v = _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0x88));
  right->v = _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0xDD));
}

}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_GEOMETRY_RESIZE_BILINEAR_SIMD_H_
