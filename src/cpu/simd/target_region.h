// TARGET_REGION("avx2") … TARGET_REGION_END compiles what stands between them, templates included,
// for an instruction set that the rest of the library must not use. Standard headers are included
// before any region: their inline functions would otherwise be compiled for it too, and the linker
// may pick that copy for everybody.
#ifndef PICTAVO_CPU_SIMD_TARGET_REGION_H_
#define PICTAVO_CPU_SIMD_TARGET_REGION_H_

#define PICTAVO_PRAGMA(text) _Pragma(#text)

#if defined(__clang__)
#define TARGET_REGION(isa) \
  PICTAVO_PRAGMA(clang attribute push(__attribute__((target(isa))), apply_to = function))
#define TARGET_REGION_END PICTAVO_PRAGMA(clang attribute pop)
#elif defined(__GNUC__)
#define TARGET_REGION(isa) PICTAVO_PRAGMA(GCC push_options) PICTAVO_PRAGMA(GCC target(isa))
#define TARGET_REGION_END PICTAVO_PRAGMA(GCC pop_options)
#else  // compilers that take any intrinsic anywhere
#define TARGET_REGION(isa)
#define TARGET_REGION_END
#endif

#endif  // PICTAVO_CPU_SIMD_TARGET_REGION_H_
