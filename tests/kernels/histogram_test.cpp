// Histograms and means, against plain counting.
#include "cpu/measuring/histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>

#include "guarded_memory.h"
#include "pixels.h"

namespace pictavo::test {
namespace {

using Bins = std::vector<u32>;
using Fn = u32(const u8*, u32, u32, u32, u32*, i32, u32) noexcept;

/// What a pixel counts in, for each operation and selector.
std::vector<u8> Values(bool luma, u32 selector, const u8* p) {
  if (!luma && selector == 4) return {p[0], p[1], p[2], p[3]};
  if (!luma && selector == 5) return {p[0], p[1], p[2]};
  if (!luma) return {p[selector <= 3 ? selector : 0]};
  if (selector == 0) return {p[0]};
  if (selector == 1) return {static_cast<u8>((p[0] + p[1] + p[2]) / 3)};
  if (selector == 2) return {p[2]};
  return {};
}

TEST(Histogram, CountsInsideGuardedMemory) {
  Random random(3);
  for (int round = 0; round < 400; ++round) {
    const auto below = [&](u32 end) { return static_cast<u32>(random() % end); };
    const bool luma = round % 2 == 0;
    const u32 selector = below(8) == 7 ? ~0u : below(7);
    const u32 pixelBytes = luma && selector == 0 ? 1 : 4;
    const u32 width = below(40), height = below(5), pitch = width * pixelBytes + below(3) * 5;
    const i32 binCounts[] = {1, 7, 255, 256, 300};
    const i32 binCount = binCounts[below(5)];
    const size_t size = height == 0 ? 0 : (height - 1) * size_t{pitch} + width * pixelBytes;
    const auto side = below(2) ? GuardedMemory::Side::kBefore : GuardedMemory::Side::kAfter;
    GuardedMemory pixels(std::max<size_t>(size, 1), side);
    FillPixels(pixels.data(), size, below(2) ? kRandom : kEdges, random);
    GuardedMemory bins(static_cast<size_t>(binCount) * 4, side);
    std::memset(bins.data(), 0xA5, bins.size());
    Fn* const compute = luma ? cpu::ComputeLumaHistogram : cpu::ComputeHistogram;
    EXPECT_EQ(compute(pixels.data(), width, height, pitch, reinterpret_cast<u32*>(bins.data()),
                      binCount, selector),
              PICTAVO_S_OK);

    Bins expected(static_cast<size_t>(binCount));
    for (u32 y = 0; y < height; ++y) {
      for (u32 x = 0; x < width; ++x) {
        for (const u8 value :
             Values(luma, selector, pixels.data() + y * size_t{pitch} + x * pixelBytes)) {
          if (value < binCount) ++expected[value];
        }
      }
    }
    ASSERT_EQ(std::memcmp(bins.data(), expected.data(), bins.size()), 0)
        << "luma " << luma << ", selector " << selector << ", " << width << " x " << height << ", "
        << binCount << " bins";
  }
}

TEST(Histogram, RefusesWithoutWriting) {
  const u8 pixels[4] = {};
  for (Fn* compute : {cpu::ComputeHistogram, cpu::ComputeLumaHistogram}) {
    u32 bin = 7;
    EXPECT_EQ(compute(nullptr, 1, 1, 4, &bin, 1, 0), PICTAVO_E_FAIL);
    EXPECT_EQ(compute(pixels, 1, 1, 4, nullptr, 1, 0), PICTAVO_E_FAIL);
    EXPECT_EQ(compute(pixels, 1, 1, 4, &bin, 0, 0), PICTAVO_E_FAIL);
    EXPECT_EQ(compute(pixels, 1, 1, 4, &bin, -1, 0), PICTAVO_E_FAIL);
    EXPECT_EQ(bin, 7u);
    EXPECT_EQ(compute(pixels, 0, ~0u, 4, &bin, 1, 0), PICTAVO_S_OK);
    EXPECT_EQ(bin, 0u);
  }
}

TEST(Mean, IsExact) {
  GuardedMemory bytes(7 * 3, GuardedMemory::Side::kAfter);
  std::iota(bytes.data(), bytes.data() + bytes.size(), u8{230});
  f32 mean = 0;
  EXPECT_EQ(cpu::ComputeMean(bytes.data(), 7, 3, &mean), PICTAVO_S_OK);
  EXPECT_EQ(mean, 240.0f);
  const Bytes white(5000 * 5000, 255);  // beyond what single precision can add up
  EXPECT_EQ(cpu::ComputeMean(white.data(), 5000, 5000, &mean), PICTAVO_S_OK);
  EXPECT_EQ(mean, 255.0f);
  EXPECT_EQ(cpu::ComputeMean(nullptr, 0, 3, &mean), PICTAVO_E_POINTER);
  EXPECT_EQ(cpu::ComputeMean(bytes.data(), 7, 3, nullptr), PICTAVO_E_POINTER);
  EXPECT_EQ(cpu::ComputeMean(bytes.data(), 0, 3, &mean), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(cpu::ComputeMean(bytes.data(), -1, -1, &mean), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(mean, 255.0f);
}

}  // namespace
}  // namespace pictavo::test
