// The vocabulary in SSSE3.
#ifndef PICTAVO_CPU_SIMD_SSSE3_H_
#define PICTAVO_CPU_SIMD_SSSE3_H_

#include <immintrin.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "cpu/simd/target_region.h"
#include "pictavo/pictavo.h"

TARGET_REGION("ssse3")
namespace pictavo::cpu::ssse3 {
#include "cpu/simd/v128.inl"

#include "cpu/simd/v128_sse2.inl"

#include "cpu/simd/v128_ssse3.inl"

#include "cpu/simd/pixels.inl"
}  // namespace pictavo::cpu::ssse3
TARGET_REGION_END

#endif  // PICTAVO_CPU_SIMD_SSSE3_H_
