// Colour conversion: the rules' corner cases, and single colours.
#include "cpu/colour/convert.h"

#include <gtest/gtest.h>

#include <array>

#include "pixels.h"

namespace pictavo::test {
namespace {

/// Those that it has beyond a row, or lacks, rounded towards zero.
TEST(Convert, GrayCountsItsPitchInWholePixels) {
  const u32 src[] = {0x030303, 0x060606};
  for (const i32 pitch : {11, 8, 7, 4, 3, 1}) {
    u32 dst[] = {7, 7, 7};
    EXPECT_EQ(cpu::ConvertBGRAToGray(0, reinterpret_cast<const u8*>(src), 1, 2, 4, dst, pitch),
              PICTAVO_S_OK);
    const size_t second = pitch < 8 ? 1 : 2;
    EXPECT_EQ(dst[0], 0x030303u) << pitch;
    EXPECT_EQ(dst[second], 0x060606u) << pitch;
    EXPECT_EQ(dst[3 - second], 7u) << pitch;
  }
}

// --- Single colours ----------------------------------------------------------------------------

using Triple = std::array<i64, 3>;

Triple ToYuv(i32 level, i32 r, i32 g, i32 b) {
  u32 y = 0, u = 0, v = 0;
  cpu::ConvertRGBToYUVPixel(level, r, g, b, &y, &u, &v);
  return {static_cast<i32>(y), static_cast<i32>(u), static_cast<i32>(v)};
}

Triple ToRgb(i32 level, i32 y, i32 u, i32 v) {
  u32 r = 9, g = 9, b = 9;
  cpu::ConvertYUVToRGBPixel(level, y, u, v, &r, &g, &b);
  return {r, g, b};
}

TEST(Convert, SingleColoursBeyondBytes) {
  struct Case {
    Triple colour, portable, vector;
  };
  const Case toYuv[] = {
      {{0, 0, 0}, {16, 128, 128}, {16, 128, 128}},
      {{255, 255, 255}, {235, 128, 128}, {235, 128, 128}},
      {{-100, 0, 0}, {-10, 143, 84}, {255, 143, 84}},  // a negative sum becomes 255, not 0
      {{1000, 0, 0}, {273, -20, 567}, {255, 255, 255}},
      {{0, INT32_MAX, 0}, {15, 128, -524160}, {15, 128, 255}},  // modulo 2^32
  };
  for (const Case& c : toYuv) {
    const auto run = [&](i32 level) {
      return ToYuv(level, static_cast<i32>(c.colour[0]), static_cast<i32>(c.colour[1]),
                   static_cast<i32>(c.colour[2]));
    };
    EXPECT_EQ(run(2), c.portable) << &c - toYuv;
    EXPECT_EQ(run(3), c.vector) << &c - toYuv;
  }
  const Case toRgb[] = {
      {{16, 128, 128}, {0, 0, 0}, {0, 0, 0}},
      {{235, 128, 128}, {255, 255, 255}, {255, 255, 255}},
      {{255, 255, 255}, {255, 125, 255}, {255, 125, 255}},
      {{-1000, 5000, 128}, {0, 0, 255}, {0, 0, 255}},
      // Green is far below 0, but not where luma, Cb and Cr stop at 16 bits.
      {{30000, 0, 100000}, {255, 0, 255}, {255, 255, 255}},
      {{INT32_MIN, INT32_MIN, INT32_MIN}, {0, 255, 0}, {0, 255, 0}},
  };
  for (const Case& c : toRgb) {
    const auto run = [&](i32 level) {
      return ToRgb(level, static_cast<i32>(c.colour[0]), static_cast<i32>(c.colour[1]),
                   static_cast<i32>(c.colour[2]));
    };
    EXPECT_EQ(run(2), c.portable) << &c - toRgb;
    EXPECT_EQ(run(8), c.vector) << &c - toRgb;
  }
}

TEST(Convert, SingleColoursNeedAllOutputs) {
  u32 a = 7, b = 7;
  i32 four[2][4] = {{7, 7, 7, 7}, {7, 7, 7, 7}};
  const u8 pixels[16] = {};
  for (const i32 level : {0, 8}) {
    cpu::ConvertRGBToYUVPixel(level, 1, 2, 3, &a, nullptr, &b);
    cpu::ConvertYUVToRGBPixel(level, 1, 2, 3, nullptr, &a, &b);
  }
  for (const auto convert : {cpu::ConvertRGBToYUV4Pixels, cpu::ConvertRGBToYUVPixelsPortable}) {
    convert(nullptr, four[0], four[1], four[1]);
    convert(pixels, four[0], four[1], nullptr);
    convert(pixels, nullptr, four[0], four[1]);
    convert(pixels, four[0], nullptr, four[1]);
  }
  EXPECT_EQ(a + b, 14u);
  for (const i32 value : four[0]) EXPECT_EQ(value, 7);
  for (const i32 value : four[1]) EXPECT_EQ(value, 7);
  u8 channel = 7;
  EXPECT_EQ(cpu::ConvertHSLToRGB(0, 255, 128, &channel, nullptr, &channel), PICTAVO_E_POINTER);
  EXPECT_EQ(channel, 7);
}

TEST(Convert, HslMeetsKnownColours) {
  struct Case {
    i32 hue;
    u8 saturation, lightness;
    std::array<int, 3> rgb;
  } const cases[] = {
      {0, 0, 77, {77, 77, 77}},
      {123, 255, 0, {0, 0, 0}},
      {123, 255, 255, {255, 255, 255}},
      {0, 255, 127, {254, 0, 0}},
      {0, 255, 128, {255, 1, 1}},
      {60, 255, 127, {254, 254, 0}},
      {120, 255, 127, {0, 254, 0}},
      {180, 255, 127, {0, 254, 254}},
      {240, 255, 127, {0, 0, 254}},
      {300, 255, 127, {254, 0, 254}},
      {15, 255, 127, {254, 64, 0}},  // of 63.5
      {30, 255, 127, {254, 127, 0}},
      {210, 128, 100, {50, 100, 150}},
      {359, 255, 127, {254, 0, 4}},
      {-1, 255, 127, {254, 0, 4}},
      {720 + 60, 255, 127, {254, 254, 0}},
      {INT32_MIN, 255, 127, {0, 34, 254}},
      {INT32_MAX, 255, 127, {0, 254, 30}},
  };
  for (const Case& c : cases) {
    u8 r = 9, g = 9, b = 9;
    EXPECT_EQ(cpu::ConvertHSLToRGB(c.hue, c.saturation, c.lightness, &r, &g, &b), PICTAVO_S_OK);
    EXPECT_EQ((std::array<int, 3>{r, g, b}), c.rgb) << "case " << &c - cases;
  }
}

}  // namespace
}  // namespace pictavo::test
