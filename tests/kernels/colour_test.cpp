// Colour spaces: known colours, and how far colours come back from there.
#include "convert_utility/colour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "pixels.h"

namespace pictavo::test {
namespace {

struct Options {
  u32 model, matrix, range;
};
constexpr u32 kYuv = PICTAVO_COLOR_YUV, kHsv = PICTAVO_COLOR_HSV, kHsl = PICTAVO_COLOR_HSL;
constexpr u32 kLimited = PICTAVO_RANGE_LIMITED, kFull = PICTAVO_RANGE_FULL,
              kDegrees = PICTAVO_RANGE_DEGREES;

using Triple = std::array<i32, 3>;

TEST(Colour, MeetsKnownColours) {
  struct Case {
    Options options;
    Triple colour, expected;
  };
  const Case fromRgb[] = {
      {{kYuv, 0, kLimited}, {255, 255, 255}, {235, 128, 128}},
      {{kYuv, 0, kLimited}, {255, 0, 0}, {81, 90, 240}},  // 16 + 219 * 0.299; 128 - 37.8
      {{kYuv, 1, kFull}, {0, 0, 255}, {18, 255, 116}},    // 255.5 is rounded down
      {{kYuv, 2, kFull}, {0, 255, 0}, {173, 36, 11}},     // 255 * 0.678; 128 - 91.9, - 117.2
      {{kHsv, 0, kFull}, {77, 77, 77}, {0, 0, 77}},
      {{kHsv, 0, kFull}, {0, 0, 255}, {171, 255, 255}},  // of 170.7
      {{kHsv, 0, kFull}, {255, 0, 1}, {0, 255, 255}},    // of 255.8, which is 256
      {{kHsv, 0, kDegrees}, {0, 0, 255}, {240, 255, 255}},
      {{kHsl, 0, kFull}, {255, 0, 0}, {0, 255, 127}},  // of 127.5
      {{kHsl, 0, kFull}, {3, 1, 1}, {0, 127, 2}},      // of 2 * 255 / 4, too
  };
  const Case toRgb[] = {
      {{kYuv, 0, kFull}, {0, 128, 0}, {0, 91, 0}},  // 0.714 * 128; red is below 0
      {{kYuv, 0, kLimited}, {235, 128, 128}, {255, 255, 255}},
      {{kHsv, 0, kFull}, {64, 255, 200}, {100, 200, 0}},  // a quarter of a turn
      {{kHsv, 0, kDegrees}, {-120, 255, 255}, {0, 0, 255}},
      {{kHsv, 0, kDegrees}, {360 * 1000 + 60, 255, 90}, {90, 90, 0}},
      {{kHsl, 0, kFull}, {0, 255, 127}, {254, 0, 0}},
  };
  const auto expect = [](auto convert, const Case& c) {
    const auto& [x, y, z] = c.colour;
    u32 out[3] = {777, 777, 777};
    EXPECT_EQ(
        convert(x, y, z, out, out + 1, out + 2, c.options.model, c.options.matrix, c.options.range),
        PICTAVO_S_OK);
    EXPECT_TRUE(std::equal(out, out + 3, c.expected.begin(), c.expected.end()))
        << x << " " << y << " " << z << " gives " << out[0] << " " << out[1] << " " << out[2];
  };
  for (const Case& c : fromRgb) expect(colour::ConvertColorFromRGB, c);
  for (const Case& c : toRgb) expect(colour::ConvertColorToRGB, c);
}

/// All colours with so much red, on every fifth plane.
TEST(Colour, EveryFifthColourComesBackAsFarAsStated) {
  struct Case {
    u32 model, range;
    int most;  // that a channel moves
  } const cases[] = {{kYuv, kLimited, 2}, {kYuv, kFull, 1}, {kHsv, kFull, 3}, {kHsl, kFull, 4}};
  constexpr i32 kSide = 256, kPitch = 4 * kSide;
  Bytes src(kSide * kPitch), there(src.size()), back(src.size());
  for (const Case& c : cases) {
    for (u32 matrix = 0; matrix < (c.model == kYuv ? 3u : 1u); ++matrix) {
      int most = 0;
      for (size_t red = 0; red < 256; red += 5) {
        for (size_t i = 0; i < src.size(); ++i) {
          const size_t bytes[] = {i / 4, i >> 10, red, i};
          src[i] = static_cast<u8>(bytes[i % 4]);
        }
        const auto convert = [&](auto way, const Bytes& from, Bytes& to) {
          way(8, from.data(), kSide, kSide, kPitch, to.data(), kPitch, c.model, matrix, c.range);
        };
        convert(colour::ConvertPictureFromRGB, src, there);
        convert(colour::ConvertPictureToRGB, there, back);
        for (size_t i = 0; i < src.size(); ++i) most = std::max(most, std::abs(src[i] - back[i]));
        const size_t grey = red * 257 * 4;
        EXPECT_TRUE(c.range != kFull || std::memcmp(&src[grey], &back[grey], 4) == 0) << red;
      }
      EXPECT_EQ(most, c.most) << c.model << matrix;
    }
  }
}

TEST(Colour, SingleColoursNeedAllOutputs) {
  for (size_t null = 0; null < 3; ++null) {
    u32 out[3] = {777, 777, 777};
    u32* outs[] = {out, out, out};
    outs[null] = nullptr;
    const u8 pixel[4] = {};
    EXPECT_EQ(colour::ConvertColorFromRGB(0, 0, 0, outs[0], outs[1], outs[2], 0, 0, 0),
              PICTAVO_E_POINTER);
    EXPECT_EQ(colour::ConvertColorToRGB(0, 0, 0, outs[0], outs[1], outs[2], 0, 0, 0),
              PICTAVO_E_POINTER);
    EXPECT_EQ(colour::ConvertPixelFromRGB(pixel, outs[0], outs[1], outs[2], 0, 0, 0),
              PICTAVO_E_POINTER);
    EXPECT_EQ(colour::ConvertPixelFromRGB(nullptr, out, out, out, 0, 0, 0), PICTAVO_E_POINTER);
    for (const u32 number : out) EXPECT_EQ(number, 777u);
  }
}

}  // namespace
}  // namespace pictavo::test
