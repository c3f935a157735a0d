// Which build of an operation serves at a level: the one place that decides.
#ifndef PICTAVO_CPU_BASE_BUILDS_H_
#define PICTAVO_CPU_BASE_BUILDS_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

/// The builds of an operation, pointers of one type, by the level from which each serves. Where one
/// is missing the one below serves.
template <typename Build>
struct Builds {
  Build portable = nullptr;
  Build sse2 = nullptr, ssse3 = nullptr, sse41 = nullptr, avx2 = nullptr;

  /// The highest build up to a level; null when there is none.
  constexpr Build For(i32 level) const {
    return For(level, [](Build) { return true; });
  }

  /// The same of those builds that `suits` accepts, and the portable one.
  template <typename Suits>
  constexpr Build For(i32 level, Suits suits) const {
    const auto serves = [&](i32 from, Build build) {
      return level >= from && build != nullptr && suits(build);
    };
    if (serves(PICTAVO_LEVEL_AVX2, avx2)) return avx2;
    if (serves(PICTAVO_LEVEL_SSE4_1, sse41)) return sse41;
    if (serves(PICTAVO_LEVEL_SSSE3, ssse3)) return ssse3;
    if (serves(PICTAVO_LEVEL_SSE2, sse2)) return sse2;
    return portable;
  }
};

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BASE_BUILDS_H_
