// Elementary functions: as good as the C library's, and the same digits from every build.
#include "cpu/base/elementary.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>

#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "operations.h"

namespace pictavo::test {
namespace {

namespace exact = cpu::elementary;

/// The functions by number, of one or two arguments.
#define FUNCTIONS                                                                     \
  inline void Apply(int function, const double* x, const double* y, double* result) { \
    const D a = Load(x), b = Load(y);                                                 \
    const D results[] = {SineCosineOf(a).sin, SineCosineOf(a).cos, Arctangent(a, b),  \
                         Exponential(a), Power(a, b)};                                \
    std::memcpy(result, &results[function], sizeof(D));                               \
  }

namespace scalar {
using namespace cpu::elementary;
inline D Load(const double* x) { return *x; }
FUNCTIONS
}  // namespace scalar

TARGET_REGION("sse4.1")
namespace sse41 {
using namespace cpu::sse41;
inline D Load(const double* x) { return {_mm_loadu_pd(x)}; }
FUNCTIONS
}  // namespace sse41
TARGET_REGION_END

TARGET_REGION("avx2")
namespace avx2 {
using namespace cpu::avx2;
inline D Load(const double* x) { return {_mm256_loadu_pd(x)}; }
FUNCTIONS
}  // namespace avx2
TARGET_REGION_END

struct Range {
  const char* name;
  double firstLow, firstHigh, secondLow, secondHigh;
  long double (*reference)(long double, long double);
} const kRanges[] = {
    {"sine", -3.6e7, 3.6e7, 0, 0, [](long double x, long double) { return std::sin(x); }},
    {"cosine", -20, 20, 0, 0, [](long double x, long double) { return std::cos(x); }},
    {"arc tangent", -9, 9, -3, 3, [](long double u, long double v) { return std::atan2(u, v); }},
    {"exponential", -750, 700, 0, 0, [](long double x, long double) { return std::exp(x); }},
    {"power", 0, 1, 0.01, 100, [](long double x, long double y) { return std::pow(x, y); }},
};

double Draw(Random& random, double low, double high) {
  return low + (high - low) * (static_cast<double>(random()) / 4294967296.0);
}

TEST(Elementary, IsExactAndTheSameFromEveryBuild) {
  Random random(6);
  uint64_t digits = 0;
  for (int function = 0; function < 5; ++function) {
    const Range& range = kRanges[function];
    for (int round = 0; round < 20000; ++round) {
      double x[4], y[4], portable[4], vector[4];
      for (int i = 0; i < 4; ++i) {
        x[i] = Draw(random, range.firstLow, range.firstHigh);
        y[i] = Draw(random, range.secondLow, range.secondHigh);
        // Close to where sines vanish, and where powers have their steepest base.
        if (function < 2 && i == 1)
          x[i] = std::round(x[i] / 1.5707963267948966) * 1.5707963267948966;
        for (int k = 0; k < 5 && function == 4 && i == 1; ++k) x[i] *= x[i];
        scalar::Apply(function, &x[i], &y[i], &portable[i]);
        digits = (digits ^ std::bit_cast<uint64_t>(portable[i])) * 0x9E3779B97F4A7C15;
#ifndef _WIN32                                                   // whose library errs more
        const double vanishing = function < 2 ? 1e-25 : 1e-320;  // where large angles' sines do
        const long double expected = range.reference(x[i], y[i]);
        ASSERT_NEAR(portable[i], static_cast<double>(expected),
                    static_cast<double>(std::abs(expected)) * 2e-15 + vanishing)
            << range.name << " of " << x[i] << ", " << y[i];
#endif
      }
      for (const i32 level : Levels()) {
        const int lanes = level < 6 ? 1 : level < 8 ? 2 : 4;
        const auto apply = lanes == 1 ? scalar::Apply : lanes == 2 ? sse41::Apply : avx2::Apply;
        for (int i = 0; i < 4; i += lanes) apply(function, x + i, y + i, vector + i);
        ASSERT_EQ(std::memcmp(portable, vector, sizeof portable), 0)
            << range.name << ", level " << level << ", of " << x[0];
      }
    }
  }
  EXPECT_EQ(digits, 996213780505591803u) << "other digits than on other systems";
  EXPECT_EQ(exact::Power(0.0, 0.01), 0);
  EXPECT_EQ(exact::Power(1.0, 100.0), 1);
  EXPECT_EQ(exact::Exponential(-1e9), 0);
}

/// A direction's angle has the sign of u even of a zero, as the mirrored directions differ.
TEST(Elementary, ArctangentKnowsTheSignOfZero) {
  for (const double u : {0.0, -0.0}) {
    EXPECT_EQ(exact::Arctangent(u, -2.0), std::copysign(3.14159265358979324, u));
    EXPECT_EQ(std::signbit(exact::Arctangent(u, 2.0)), std::signbit(u));
  }
}

TEST(Elementary, LosesWholeTurnsExactly) {
  Random random(8);
  for (int i = 0; i < 100000; ++i) {
    const f32 degrees = std::bit_cast<f32>(static_cast<u32>(random()));
    if (!std::isfinite(degrees)) continue;
    ASSERT_EQ(cpu::elementary::WithoutTurns(degrees), std::fmod(double{degrees}, 360.0)) << degrees;
  }
}

}  // namespace
}  // namespace pictavo::test
