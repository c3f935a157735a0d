// Histograms and means, where drawn calls do not come.
#include "cpu/measuring/histogram.h"

#include <gtest/gtest.h>

#include "operations.h"
#include "pixels.h"

namespace pictavo::test {
namespace {

TEST(Histogram, OfNoPixelsIsZero) {
  for (auto* compute : {cpu::ComputeHistogram, cpu::ComputeLumaHistogram}) {
    const u8 pixels[4] = {};
    u32 bins[2] = {7, 7};
    EXPECT_EQ(compute(pixels, 0, ~0u, 4, bins, 1, 0), PICTAVO_S_OK);
    EXPECT_EQ(bins[0], 0u);
    EXPECT_EQ(bins[1], 7u);
  }
}

TEST(Mean, AddsUpBeyondSinglePrecision) {
  f32 mean = 0;
  const Bytes white(5000 * 5000, 255);
  EXPECT_EQ(cpu::ComputeMean(Levels().back(), white.data(), 5000, 5000, &mean), PICTAVO_S_OK);
  EXPECT_EQ(mean, 255.0f);
}

}  // namespace
}  // namespace pictavo::test
