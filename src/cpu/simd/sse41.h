// The vocabulary in SSE4.1.
#ifndef PICTAVO_CPU_SIMD_SSE41_H_
#define PICTAVO_CPU_SIMD_SSE41_H_

#include <immintrin.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "cpu/simd/target_region.h"
#include "pictavo/pictavo.h"

TARGET_REGION("sse4.1")
namespace pictavo::cpu::sse41 {
#include "cpu/simd/v128.inl"

#include "cpu/simd/v128_ssse3.inl"

#include "cpu/simd/v128_sse41.inl"

#include "cpu/base/elementary.inl"

#include "cpu/simd/pixels.inl"
}  // namespace pictavo::cpu::sse41
TARGET_REGION_END

#endif  // PICTAVO_CPU_SIMD_SSE41_H_
