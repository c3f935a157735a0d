// The vocabulary that vector kernels are built from: each primitive at each width.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "cpu/base/numbers.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"
#include "cpu/simd/sse41.h"
#include "cpu/simd/ssse3.h"
#include "operations.h"

namespace pictavo::test {
namespace {

using i8 = std::int8_t;
using i16 = std::int16_t;
using u16 = std::uint16_t;
using u64 = std::uint64_t;

/// Operands that stand side by side: all pairs of bytes; of longer numbers corners and random ones.
template <typename Lane>
struct Operands {
  std::vector<Lane> a, b, c;

  static const Operands& All() {
    static const Operands all;
    return all;
  }

 private:
  Operands() {
    std::mt19937 generator(5);
    const auto random = [&generator] { return static_cast<u32>(generator()); };
    const auto add = [&](u32 x, u32 y) {
      a.push_back(static_cast<Lane>(x));
      b.push_back(static_cast<Lane>(y));
      c.push_back(static_cast<Lane>(random()));
    };
    if constexpr (sizeof(Lane) == 1) {
      for (u32 x = 0; x < 256; ++x)
        for (u32 y = 0; y < 256; ++y) add(x, y);
    } else {
      constexpr u32 kCorners[] = {0,          1,          2,          0x7F,       0xFF,
                                  0x100,      0x7FFF,     0x8000,     0xFFFF,     0x10000,
                                  0x7FFFFF,   0x3F800000, 0x4F000000, 0xCF000000, 0x7F800000,
                                  0x7FC00000, 0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFF};
      for (const u32 x : kCorners)
        for (const u32 y : kCorners) add(x, y), add(x, random()), add(random(), y);
      for (u32 x = 0; x < 0x10000; ++x) add(sizeof(Lane) == 2 ? x : random(), random());
    }
    while (a.size() % 32 != 0) add(0, 0);
  }
};

i32 Low(u32 x) { return static_cast<i16>(x); }
i32 High(u32 x) { return static_cast<i16>(x >> 16); }
/// A number that packing saturates twice.
u32 Limited(i32 x) { return static_cast<u32>(std::clamp(x, 0, 255)); }

using VectorFn = std::function<void(const u8* a, const u8* b, const u8* c, u8* result)>;
template <typename Lane>
using ScalarFn = std::function<Lane(Lane a, Lane b, Lane c)>;

/// Compares every lane of what a function of vectors makes of the operands.
template <typename Lane>
void Check(const char* name, size_t vectorBytes, const VectorFn& vector,
           const ScalarFn<Lane>& scalar) {
  const Operands<Lane>& in = Operands<Lane>::All();
  const size_t lanes = vectorBytes / sizeof(Lane);
  std::vector<Lane> result(lanes);
  const auto bytes = [](const std::vector<Lane>& from, size_t at) {
    return reinterpret_cast<const u8*>(from.data() + at);
  };
  for (size_t at = 0; at + lanes <= in.a.size(); at += lanes) {
    vector(bytes(in.a, at), bytes(in.b, at), bytes(in.c, at), reinterpret_cast<u8*>(result.data()));
    for (size_t i = 0; i < lanes; ++i) {
      const Lane a = in.a[at + i], b = in.b[at + i], c = in.c[at + i];
      if (result[i] == scalar(a, b, c)) continue;
      FAIL() << name << " of " << +a << ", " << +b << ", " << +c << " is " << +result[i] << ", not "
             << +scalar(a, b, c);
    }
  }
}

}  // namespace

#define KERNELS "simd_test.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#include "cpu/simd/for_sse41.inl"
#include "cpu/simd/for_ssse3.inl"
#undef KERNELS

namespace {

TEST(Vocabulary, MeansTheSameAtEveryWidth) {
  const i32 level = Levels().back();
  sse2::CheckVocabulary();
  if (level >= PICTAVO_LEVEL_SSSE3) ssse3::CheckVocabulary();
  if (level >= PICTAVO_LEVEL_SSE4_1) sse41::CheckVocabulary();
  if (level >= PICTAVO_LEVEL_AVX2) avx2::CheckVocabulary();
}

}  // namespace
}  // namespace pictavo::test
