// What SSSE3 adds to simd_sse2.h: moving pixels. simd_avx2.h has the 256-bit twins.
#ifndef PICTAVO_CPU_SIMD_SSSE3_H_
#define PICTAVO_CPU_SIMD_SSSE3_H_

#include <immintrin.h>

#include "cpu/simd/sse2.h"
#include "cpu/simd/target_region.h"

TARGET_REGION("ssse3")
namespace pictavo::cpu::ssse3 {

using sse2::V;

/// Pixel number `pick` of a vector, as Permute takes it.
inline u32 PickOf(u32 pick) { return pick * 0x04040404 + 0x03020100; }
/// The pixels of a that each lane of `picks` names.
inline V Permute(V a, V picks) { return {_mm_shuffle_epi8(a.v, picks.v)}; }

/// b where the 32-bit number in `sign` is negative, a elsewhere.
inline V SelectNegative32(V sign, V a, V b) { return Select({_mm_srai_epi32(sign.v, 31)}, a, b); }

/// The first halves of a and b, and their second halves.
inline V FirstHalves(V a, V b) { return {_mm_unpacklo_epi64(a.v, b.v)}; }
inline V SecondHalves(V a, V b) { return {_mm_unpackhi_epi64(a.v, b.v)}; }

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

#endif  // PICTAVO_CPU_SIMD_SSSE3_H_
