// The vocabulary in SSE2, which every 64-bit processor has.
#ifndef PICTAVO_CPU_SIMD_SSE2_H_
#define PICTAVO_CPU_SIMD_SSE2_H_

#include <immintrin.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "cpu/simd/target_region.h"
#include "pictavo/pictavo.h"

namespace pictavo::cpu::sse2 {
#include "cpu/simd/v128.inl"

#include "cpu/simd/v128_sse2.inl"

#include "cpu/simd/v128_bytes_sse2.inl"

#include "cpu/simd/pixels.inl"
}  // namespace pictavo::cpu::sse2

#endif  // PICTAVO_CPU_SIMD_SSE2_H_
