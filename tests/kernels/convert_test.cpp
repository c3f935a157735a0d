// Premultiplication and colour conversion: every build against the rules.
#include "cpu/colour/convert.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>

#include "operations.h"

namespace pictavo::test {
namespace {

const Operation &kUnpremultiply = Slot(16), &kPremultiply = Slot(18), &kYuva = Slot(20),
                &kGray = Slot(46);

TEST(Convert, EveryColourUnderEveryAlpha) {
  Bytes pixels;
  for (int a = 0; a < 256; ++a) {
    for (int c = 0; c < 256; ++c) {
      for (const int byte : {c, 255 - c, c ^ a, a}) pixels.push_back(static_cast<u8>(byte));
    }
  }
  const Call all{.width = 256, .height = 256, .dstPitch = 1024};
  for (const i32 level : Levels()) {
    Bytes straight = pixels, multiplied = pixels;
    kUnpremultiply(level, straight.data(), nullptr, all);
    kPremultiply(level, multiplied.data(), nullptr, all);
    for (size_t i = 0; i < pixels.size(); ++i) {
      const int c = pixels[i], a = pixels[i | 3];
      const bool alpha = i % 4 == 3;
      const double exact = std::floor(256.0 * c / a) - 1;
      ASSERT_EQ(straight[i], alpha || a == 0 ? c : std::clamp(exact, 0.0, 255.0))
          << c << " under " << a << ", level " << level;
      ASSERT_EQ(multiplied[i], alpha || a == 255 ? c : std::floor((c + 1) * a / 256.0))
          << c << " under " << a << ", level " << level;
    }
  }
}

int Studio(double r, double g, double b, double offset) {
  return static_cast<int>(std::floor((r + g + b) / 4096 + offset));
}

TEST(Convert, EveryColourToYuvaAndGray) {
  const Call plane{.width = 256, .height = 256, .dstPitch = 1024, .srcPitch = 1024};
  Bytes src(256 * 1024), yuva(src.size()), gray(src.size());
  for (int r = 0; r < 256; r += 5) {
    for (size_t i = 0; i < 65536; ++i) {
      const u8 pixel[4] = {static_cast<u8>(i), static_cast<u8>(i >> 8), static_cast<u8>(r),
                           static_cast<u8>(i * 7)};
      std::memcpy(&src[4 * i], pixel, 4);
      gray[4 * i + 3] = static_cast<u8>(i * 3);
    }
    for (const i32 level : Levels()) {
      kYuva(level, yuva.data(), src.data(), plane);
      kGray(level, gray.data(), src.data(), plane);
      for (size_t i = 0; i < 65536; ++i) {
        const int b = src[4 * i], g = src[4 * i + 1];
        const u8 expected[4] = {static_cast<u8>(Studio(1798 * r, -1507 * g, -291 * b, 128.5)),
                                static_cast<u8>(Studio(-606 * r, -1192 * g, 1798 * b, 128.5)),
                                static_cast<u8>(Studio(1053 * r, 2064 * g, 401 * b, 16.5)),
                                src[4 * i + 3]};
        ASSERT_EQ(std::memcmp(&yuva[4 * i], expected, 4), 0)
            << r << " " << g << " " << b << ", level " << level;
        const u8 mean = static_cast<u8>((r + g + b) / 3);
        const u8 grayPixel[4] = {mean, mean, mean, static_cast<u8>(i * 3)};
        ASSERT_EQ(std::memcmp(&gray[4 * i], grayPixel, 4), 0)
            << r << " " << g << " " << b << ", level " << level;
      }
    }
  }
}

TEST(Convert, GrayCountsItsPitchInWholePixels) {
  const u32 src[] = {0x030303, 0x060606};
  u32 dst[] = {7, 7, 7};
  EXPECT_EQ(cpu::ConvertBGRAToGray(0, reinterpret_cast<const u8*>(src), 1, 2, 4, dst, 11),
            PICTAVO_S_OK);
  EXPECT_EQ(dst[0], 0x030303u);
  EXPECT_EQ(dst[1], 7u);
  EXPECT_EQ(dst[2], 0x060606u);
}

TEST(Convert, AnswersEmptyAndMissingPicturesWithTheStatedCode) {
  constexpr u32 I = PICTAVO_E_INVALIDARG, F = PICTAVO_E_FAIL, E = PICTAVO_S_FALSE;
  struct Case {
    i32 width, height;
    bool nullDst, nullSrc;
    u32 results[6];  // of slots 16 to 20 and 46; 9: not tried
  } const cases[] = {
      {1, 1, true, false, {1, 1, 1, 1, I, F}},
      {1, 1, false, true, {9, 9, 9, 9, I, F}},
      {0, 1, false, false, {1, 1, 1, 1, E, 0}},
      {1, 0, false, false, {1, 1, 1, 1, E, 0}},
      {1, -1, false, false, {1, 1, 1, 1, 0, 0}},
      {-1, -1, false, false, {1, 1, 1, 1, 9, 0}},
      {0, -1, true, false, {1, 1, 1, 1, I, F}},
      {0, -1, false, false, {1, 1, 1, 1, E, 0}},
      {INT32_MAX, INT32_MAX, false, false, {9, 1, 9, 1, 9, 9}},
  };
  for (const Case& c : cases) {
    for (const i32 level : Levels()) {
      for (size_t i = 0; i < 6; ++i) {
        if (c.results[i] == 9) continue;
        const Operation& operation = Slot(i < 5 ? 16 + static_cast<int>(i) : 46);
        Bytes dst(16, 0x11), src(16, 0x80);
        EXPECT_EQ(
            operation(level, c.nullDst ? nullptr : dst.data(), c.nullSrc ? nullptr : src.data(),
                      {.width = c.width, .height = c.height}),
            c.results[i])
            << operation.name << ", case " << &c - cases;
        EXPECT_EQ(dst, Bytes(16, 0x11)) << operation.name << ", case " << &c - cases;
      }
    }
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

TEST(Convert, SingleColoursAgreeWithPictures) {
  Random random(9);
  for (int i = 0; i < 20000; ++i) {
    u8 pixels[16], yuva[16];
    FillPixels(pixels, 16, i % 2 ? kRandom : kEdges, random);
    cpu::ConvertBGRAToYUVA(0, pixels, 4, 1, 16, yuva, 16);
    i32 four[3][4], portable[3][4];
    cpu::ConvertRGBToYUV4Pixels(pixels, four[0], four[1], four[2]);
    cpu::ConvertRGBToYUVPixelsPortable(pixels, portable[0], portable[1], portable[2]);
    for (size_t p = 0; p < 4; ++p) {
      const Triple expected = {yuva[4 * p + 2], yuva[4 * p + 1], yuva[4 * p]};
      const u8* bgr = pixels + 4 * p;
      for (const i32 level : {2, 3}) ASSERT_EQ(ToYuv(level, bgr[2], bgr[1], bgr[0]), expected);
      ASSERT_EQ((Triple{four[0][p], four[1][p], four[2][p]}), expected);
      ASSERT_EQ((Triple{portable[0][p], portable[1][p], portable[2][p]}), expected);
      // Back: the exact inverse in real numbers, within the rounding.
      const Triple back = ToRgb(2, bgr[0], bgr[1], bgr[2]);
      const double luma = 4768 / 4096.0 * (bgr[0] - 16.0), cb = bgr[1] - 128.0, cr = bgr[2] - 128.0;
      const double exact[3] = {luma + 6537 / 4096.0 * cr,
                               luma - 1602 / 4096.0 * cb - 3330 / 4096.0 * cr,
                               luma + 8266 / 4096.0 * cb};
      for (size_t c = 0; c < 3; ++c) {
        ASSERT_EQ(back[c], std::clamp(std::floor(exact[c] + 0.5), 0.0, 255.0));
      }
      ASSERT_EQ(ToRgb(3, bgr[0], bgr[1], bgr[2]), back);
    }
  }
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
