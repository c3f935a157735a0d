// The vocabulary in AVX2; v128.inl and its siblings say what the names mean.
#ifndef PICTAVO_CPU_SIMD_AVX2_H_
#define PICTAVO_CPU_SIMD_AVX2_H_

#include <immintrin.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "cpu/simd/target_region.h"
#include "pictavo/pictavo.h"

TARGET_REGION("avx2")
namespace pictavo::cpu::avx2 {
#include "cpu/simd/v256.inl"

#include "cpu/base/elementary.inl"

#include "cpu/simd/pixels.inl"
}  // namespace pictavo::cpu::avx2
TARGET_REGION_END

#endif  // PICTAVO_CPU_SIMD_AVX2_H_
