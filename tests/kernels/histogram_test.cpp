// Histograms and means, where drawn calls do not come.
#include "cpu/measuring/histogram.h"

#include <gtest/gtest.h>

#include <algorithm>

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

TEST(Histogram, HasABinForEachByte) {
  const u8 white[4] = {255, 255, 255, 255};
  for (const i32 count : {255, 256, 257}) {
    u32 bins[257];
    std::fill_n(bins, 257, 7);
    EXPECT_EQ(cpu::ComputeHistogram(white, 1, 1, 4, bins, count, 0), PICTAVO_S_OK);
    EXPECT_EQ(bins[255], count < 256 ? 7u : 1u) << count;
    EXPECT_EQ(bins[256], count < 257 ? 7u : 0u) << count;
  }
}

TEST(Mean, AddsUpBeyondSinglePrecision) {
  const Bytes white(5000 * 5000, 255);
  for (const i32 level : Levels()) {
    f32 mean = 0;
    EXPECT_EQ(cpu::ComputeMean(level, white.data(), 5000, 5000, &mean), PICTAVO_S_OK);
    EXPECT_EQ(mean, 255.0f) << level;
  }
}

}  // namespace
}  // namespace pictavo::test
