// Numbers about pictures and histograms: corner cases worked out by hand.
#include "cpu/measuring/measure.h"

#include <gtest/gtest.h>

#include <cmath>

#include "operations.h"

namespace pictavo::test {
namespace {

TEST(Threshold, SplitsHistogramsWhereTheyFallApart) {
  struct Case {
    std::vector<f32> values;
    u32 index;
  } const cases[] = {
      {{0, 4, 1, 0, 0, 2, 3}, 2},        // before a gap, its first index
      {{5, 0, 0, 5}, 0},                 //
      {{0, 0, 7, 0}, 2},                 // a single value
      {{1, 1, 1, 1}, 1},                 // in the middle
      {{0, 1e38f, 3e38f, 0, 3e38f}, 2},  // large ones
      {{0, 1e-42f, 0, 1e-42f}, 1},       // and small ones
  };
  for (const auto& [values, index] : cases) {
    u32 found = 99;
    EXPECT_EQ(cpu::FindThreshold(values.data(), static_cast<u32>(values.size()), &found),
              PICTAVO_S_OK);
    EXPECT_EQ(found, index);
  }
  const f32 nothing[] = {0, -0.0f};
  u32 untouched = 99;
  EXPECT_EQ(cpu::FindThreshold(nothing, 2, &untouched), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(untouched, 99u);
}

f32 Measured(i32 level, const std::vector<u32>& pixels, i32 width, i32 channel, u32 measure) {
  f32 result = -1;
  const i32 height = static_cast<i32>(pixels.size()) / width;
  EXPECT_EQ(cpu::MeasurePicture(level, reinterpret_cast<const u8*>(pixels.data()), width, height,
                                4 * width, channel, measure, &result),
            PICTAVO_S_OK);
  return result;
}

TEST(Measure, TellsWhatPicturesHold) {
  // Greens 0, 10, 0, 30 over 0, 0, 20, 0.
  const std::vector<u32> pixels = {0, 10 << 8, 0, 30 << 8, 0, 0, 20 << 8, 0};
  for (const i32 level : Levels()) {
    EXPECT_EQ(Measured(level, pixels, 4, 1, PICTAVO_MEASURE_MEAN), 7.5f);
    EXPECT_EQ(Measured(level, pixels, 4, 0, PICTAVO_MEASURE_MEAN), 0);
    EXPECT_EQ(Measured(level, pixels, 4, 1, PICTAVO_MEASURE_DEVIATION), std::sqrt(118.75f));
    // -10, 30, -60, 60 over 0, -30, 60, -50: the squares of eight, whose sum is 0.
    EXPECT_EQ(Measured(level, pixels, 4, 1, PICTAVO_MEASURE_SHARPNESS), 15200 / 8.f);
    // Steps 10, 10, 30 and 0, 20, 20: 10 and 20 in the middle.
    EXPECT_FLOAT_EQ(Measured(level, pixels, 4, 1, PICTAVO_MEASURE_NOISE),
                    15 * 1.4826f / 1.41421356f);
    EXPECT_EQ(Measured(level, pixels, 1, 1, PICTAVO_MEASURE_NOISE), 0);
    // (19 * 255 + 128) >> 8, (183 * 255 + 128) >> 8, (54 * 255 + 128) >> 8, 255.
    EXPECT_EQ(Measured(level, {0xFF, 0xFF00, 0xFF0000, 0xFFFFFF}, 4, -1, PICTAVO_MEASURE_MEAN),
              (19 + 182 + 54 + 255) / 4.f);
    // Lanes must bear the greatest numbers: black and white by turns.
    std::vector<u32> board(2 * 20000);
    for (size_t i = 0; i < board.size(); ++i) board[i] = (i + i / 20000) % 2 ? ~0u : 0;
    EXPECT_EQ(Measured(level, board, 20000, 3, PICTAVO_MEASURE_DEVIATION), 127.5f);
    EXPECT_NEAR(Measured(level, board, 20000, 3, PICTAVO_MEASURE_SHARPNESS), 765.0 * 765, 100);
  }
}

TEST(Bounds, HoldEveryPixelAboveTheThreshold) {
  constexpr i32 kWidth = 150, kHeight = 5;
  for (const i32 level : Levels()) {
    for (const auto& [x, y] : {std::pair{0, 0}, {149, 4}, {31, 2}, {32, 2}, {127, 3}, {128, 1}}) {
      Bytes pixels(4 * kWidth * kHeight, 100);
      pixels[static_cast<size_t>(4 * (y * kWidth + x) + 2)] = 101;
      pixels[4 * (2 * kWidth + 70) + 2] = 255;
      pixels[4 * kWidth * kHeight - 1] = 255;  // of another channel
      u32 count = 0;
      PixelBounds b = {};
      const auto find = [&](u32 threshold) {
        EXPECT_EQ(cpu::FindBounds(level, pixels.data(), kWidth, kHeight, 4 * kWidth, 2, threshold,
                                  &count, &b),
                  PICTAVO_S_OK);
        return std::vector<i32>{b.left, b.top, b.right, b.bottom, static_cast<i32>(count)};
      };
      EXPECT_EQ(find(100), (std::vector<i32>{std::min(x, 70), std::min(y, 2), std::max(x, 70) + 1,
                                             std::max(y, 2) + 1, 2}));
      EXPECT_EQ(find(99), (std::vector<i32>{0, 0, kWidth, kHeight, kWidth * kHeight}));
      for (const u32 most : {255u, 256u, ~0u}) EXPECT_EQ(find(most), std::vector<i32>(5));
    }
  }
}

}  // namespace
}  // namespace pictavo::test
