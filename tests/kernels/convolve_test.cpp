// Filters of whole-number weights: corner cases worked out by hand.
#include "cpu/filters/convolve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "operations.h"

namespace pictavo::test {
namespace {

using Pixels = std::vector<u32>;

Pixels Convolved(i32 level, const Pixels& pixels, i32 width, const ConvolveParam& param) {
  const i32 height = static_cast<i32>(pixels.size()) / width;
  Pixels result(pixels.size());
  const ImageDesc src = {{}, 0, 0, 0, const_cast<u32*>(pixels.data()), width, height, 4 * width, 4};
  ImageDesc dst = src;
  dst.data = result.data();
  EXPECT_EQ(cpu::ConvolvePicture(level, &src, &dst, &param), PICTAVO_S_OK);
  return result;
}

TEST(Convolve, TakesWeightsAsTheyLie) {
  const Pixels pixels = {1, 2, 3, 4, 5, 6};
  for (const i32 level : Levels()) {
    EXPECT_EQ(Convolved(level, pixels, 3, {3, 0, 0, 0, {0, 0, 0, 0, 0, 1}}),
              (Pixels{2, 3, 3, 5, 6, 6}));
    EXPECT_EQ(Convolved(level, pixels, 3, {3, 0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}}),
              (Pixels{4, 5, 6, 4, 5, 6}));
    EXPECT_EQ(Convolved(level, pixels, 3, {5, 0, 0, 0, {0, 1, 0, 0, 0}}),
              (Pixels{1, 1, 2, 1, 1, 2}));
    EXPECT_EQ(Convolved(level, pixels, 3,
                        {5,
                         0,
                         0,
                         1,
                         {0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  //
                          0, 0, 0, 0, 1}}),
              (Pixels{3, 3, 3, 6, 6, 6}));
  }
}

TEST(Convolve, GivesTheSameFromEveryBuildAcrossStrips) {
  std::mt19937 random(1);
  Pixels pixels(600 * 3);
  for (u32& pixel : pixels) pixel = static_cast<u32>(random());
  for (const u32 size : {3u, 5u}) {
    for (const i32 weight : {2, 127}) {  // sums of 16 bits, and of more
      ConvolveParam param = {size, 5, 0, 1, {}};
      std::fill(param.weights, param.weights + size * size, weight);
      for (const i32 level : Levels())
        EXPECT_TRUE(Convolved(level, pixels, 600, param) == Convolved(0, pixels, 600, param))
            << "level " << level << ", size " << size << ", weights " << weight;
    }
  }
}

/// Of one pixel, which all weights count.
TEST(Convolve, RoundsShiftsAndLimits) {
  struct Case {
    ConvolveParam param;
    u32 pixel, result;
  };
  const auto all = [](u32 size, i32 shift, i32 bias, u32 withAlpha, i32 weight) {
    ConvolveParam param = {size, shift, bias, withAlpha, {}};
    std::fill(param.weights, param.weights + size * size, weight);
    return param;
  };
  const Case cases[] = {
      {{3, 1, 0, 0, {3}}, 0x50030201, 0x50050302},            // 4.5, 3 and 1.5
      {{3, 1, 9, 1, {-3}}, 0x50030201, 0x00050608},           // … downwards below 0
      {{3, 0, 0, 1, {2}}, 0x80FF7F01, 0xFFFFFE02},            //
      {all(5, 15, 0, 1, 127), ~0u, 0x19191919},               // (809625 + 16384) >> 15
      {all(5, 15, 30, 1, -128), ~0u, 0x05050505},             // (16384 - 816000) >> 15 = -25
      {all(5, 12, INT32_MAX, 1, -128), ~0u, ~0u},             //
      {all(5, 0, INT32_MIN, 1, 127), ~0u, 0},                 //
      {{3, 7, 0, 0, {64, 64}}, 0x12FF8001, 0x12FF8001},       // 32640 + 64 fit 16 bits
      {{3, 8, 0, 0, {64, 65, 127}}, 0x12FF8001, 0x12FF8001},  // 65280 do not
      {{3, 7, 300, 0, {-64, -64}}, 0x00FF8001, 0x002DACFF}};  // 300 - byte, limited
  for (const auto& [param, pixel, result] : cases) {
    for (const i32 level : Levels())
      EXPECT_EQ(Convolved(level, {pixel}, 1, param), Pixels{result}) << &param - &cases[0].param;
  }
}

TEST(Convolve, RefusesPicturesThatShareBytes) {
  Pixels pixels(8, 7);
  const ImageDesc src = {{}, 0, 0, 0, pixels.data(), 2, 2, 8, 4};
  ImageDesc dst = src;
  dst.data = pixels.data() + 3;
  const ConvolveParam param = {3, 0, 0, 1, {}};
  EXPECT_EQ(cpu::ConvolvePicture(Levels().back(), &src, &dst, &param), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(pixels, Pixels(8, 7));
  EXPECT_EQ(cpu::ConvolvePicture(Levels().back(), &src, &dst, nullptr), PICTAVO_E_POINTER);
}

}  // namespace
}  // namespace pictavo::test
