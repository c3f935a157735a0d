// Packed frames: how they lie in memory, known colours, and that builds are exact for every number.
#include "cpu/colour/frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "cpu/colour/yuv.h"
#include "operations.h"

namespace pictavo::test {
namespace {

constexpr u32 kFull = PICTAVO_RANGE_FULL;

/// White, red and grey in full BT.601: the second sample of U and V is the last pixel's own.
TEST(Frames, LieInMemoryAsStated) {
  const u8 pixels[] = {255, 255, 255, 9, 0, 0, 255, 9, 128, 128, 128, 9};
  // Y 255, 76 (of 76.2) and 128; the mean of the first two is (128, 128, 255): Y 166, U 107 (of
  // 106.6), V 191 (of 191.5).
  struct Case {
    u32 layout;
    Bytes frame;
  };
  const Case cases[] = {{PICTAVO_FRAME_NV12, {255, 76, 128, 107, 191, 128, 128}},
                        {PICTAVO_FRAME_I420, {255, 76, 128, 107, 128, 191, 128}},
                        {PICTAVO_FRAME_YV12, {255, 76, 128, 191, 128, 107, 128}},
                        {PICTAVO_FRAME_YUY2, {255, 107, 76, 191, 128, 128, 128, 128}},
                        {PICTAVO_FRAME_UYVY, {107, 255, 191, 76, 128, 128, 128, 128}},
                        {PICTAVO_FRAME_BGR24, {255, 255, 255, 0, 0, 255, 128, 128, 128}},
                        {PICTAVO_FRAME_RGB24, {255, 255, 255, 255, 0, 0, 128, 128, 128}},
                        {PICTAVO_FRAME_RGBA32, {255, 255, 255, 9, 255, 0, 0, 9, 128, 128, 128, 9}}};
  for (const auto& [layout, frame] : cases) {
    const bool yuv = layout <= PICTAVO_FRAME_P010;
    const u32 format = FrameFormat(layout, 0, yuv ? kFull : 0);
    for (const i32 level : Levels()) {
      Bytes made(static_cast<size_t>(FrameBytes(layout, 3, 1)));
      EXPECT_EQ(cpu::ConvertBGRAToFrame(level, pixels, 3, 1, 12, made.data(), format), 0u);
      EXPECT_EQ(made, frame) << layout << " at " << level;
      u8 back[12];
      EXPECT_EQ(cpu::ConvertFrameToBGRA(level, frame.data(), 3, 1, back, 12, format), 0u);
      // Blue 255 - 1.772 * 21, green 255 + 0.3441 * 21 - 0.7141 * 63, red beyond; and of 76.
      const u8 shared[] = {218, 217, 255, 255, 39, 38, 164, 255, 128, 128, 128, 255};
      const u8 opaque[] = {255, 255, 255, 255, 0, 0, 255, 255, 128, 128, 128, 255};
      const bool asBefore = std::equal(back, back + 12,
                                       layout == PICTAVO_FRAME_RGBA32 ? pixels
                                       : yuv                          ? shared
                                                                      : opaque);
      EXPECT_TRUE(asBefore) << layout << " at " << level;
    }
  }
}

TEST(Frames, P010HasTenBits) {
  const u8 blue[] = {255, 0, 0, 255};
  // Full BT.709: Y 73.9; U 1023.5, a tie; V 512 - 46.9. Limited: 64 + 63.2; 960; 512 - 41.1.
  const u8 full[] = {74 << 6 & 255, 74 >> 2, 0xC0, 0xFF, 465 << 6 & 255, 465 >> 2};
  const u8 limited[] = {127 << 6 & 255, 127 >> 2, 0, 0xF0, 471 << 6 & 255, 471 >> 2};
  for (const i32 level : Levels()) {
    for (const u32 range : {PICTAVO_RANGE_LIMITED, kFull}) {
      const u32 format = FrameFormat(PICTAVO_FRAME_P010, PICTAVO_MATRIX_BT709, range);
      u8 frame[6], back[4];
      cpu::ConvertBGRAToFrame(level, blue, 1, 1, 4, frame, format);
      EXPECT_EQ(std::memcmp(frame, range == kFull ? full : limited, 6), 0) << range;
      for (size_t i = 0; i < 6; i += 2) frame[i] |= 63;  // not looked at
      cpu::ConvertFrameToBGRA(level, frame, 1, 1, back, 4, format);
      EXPECT_TRUE(std::equal(back, back + 4, blue)) << range;
    }
  }
}

TEST(Frames, FlatSquaresComeBack) {
  constexpr i32 kSide = 64, kPitch = 4 * kSide;
  for (const u32 layout : {PICTAVO_FRAME_NV12, PICTAVO_FRAME_P010}) {
    for (u32 space = 0; space < 6; ++space) {
      Random random(layout + space);
      Bytes pixels(kSide * kPitch, 255), back(pixels.size());
      for (size_t i = 0; i < kSide * kSide; ++i) {
        const size_t x = i % kSide, y = i / kSide,
                     square = (y & ~size_t{1}) * kSide + (x & ~size_t{1});
        const u32 colour = static_cast<u32>(random()) | 0xFF000000;
        if (square == i) std::memcpy(&pixels[4 * i], &colour, 4);
        std::memcpy(&pixels[4 * i], &pixels[4 * square], 4);
      }
      Bytes frame(static_cast<size_t>(FrameBytes(layout, kSide, kSide)));
      const u32 format = FrameFormat(layout, space / 2, space % 2);
      cpu::ConvertBGRAToFrame(0, pixels.data(), kSide, kSide, kPitch, frame.data(), format);
      cpu::ConvertFrameToBGRA(0, frame.data(), kSide, kSide, back.data(), kPitch, format);
      const int most = format == FrameFormat(PICTAVO_FRAME_NV12, space / 2, 0) ? 2 : 1;
      for (size_t i = 0; i < pixels.size(); ++i)
        ASSERT_LE(std::abs(pixels[i] - back[i]), most) << i;
    }
  }
}

/// Two pixels of YUY2 for each U and V, with each pair of Y.
TEST(Frames, EveryColourFromBytesIsTheRules) {
  constexpr i32 kWidth = 512, kHeight = 256;
  Bytes frame(4 * 256 * 256), pixels(4 * kWidth * kHeight);
  for (u32 matrix = 0; matrix < 3; ++matrix) {
    for (u32 range = 0; range < 2; ++range) {
      const colour::Yuv8 rule = colour::MakeYuv8(matrix, range);
      size_t wrong = 0;
      for (i32 y = 0; y < 256; y += 2) {
        for (size_t i = 0; i < 256 * 256; ++i) {
          const size_t numbers[] = {static_cast<size_t>(y), i % 256, static_cast<size_t>(y + 1),
                                    i / 256};
          for (size_t k = 0; k < 4; ++k) frame[4 * i + k] = static_cast<u8>(numbers[k]);
        }
        cpu::ConvertFrameToBGRA(Levels().back(), frame.data(), kWidth, kHeight, pixels.data(),
                                4 * kWidth, FrameFormat(PICTAVO_FRAME_YUY2, matrix, range));
        for (size_t i = 0; i < 2 * 256 * 256; ++i) {
          const i32 pair = static_cast<i32>(i / 2);
          const auto [r, g, b] = rule.ToRgb({y + static_cast<i32>(i % 2), pair % 256, pair / 256});
          wrong += pixels[4 * i] != b || pixels[4 * i + 1] != g || pixels[4 * i + 2] != r;
        }
      }
      EXPECT_EQ(wrong, 0u) << matrix << range;
    }
  }
}

/// Every U and V, each with four Y, and with lower bits that are not looked at.
TEST(Frames, EveryChromaOfTenBitsIsTheRules) {
  constexpr i32 kSide = 2048, kPitch = 4 * kSide;
  Random random(10);
  std::vector<std::uint16_t> frame(kSide * kSide * 3 / 2);
  for (auto& word : frame) word = static_cast<std::uint16_t>(random());
  for (size_t i = 0; i < 2 * 1024 * 1024; ++i) {
    const size_t number = i % 2 == 0 ? i / 2 % 1024 : i / 2048;
    std::uint16_t& word = frame[kSide * kSide + i];
    word = static_cast<std::uint16_t>(number << 6 | (word & 63));
  }
  const u8* const src = reinterpret_cast<const u8*>(frame.data());
  Bytes pixels(kSide * kPitch), rule = pixels;
  for (u32 space = 0; space < 6; ++space) {
    const u32 format = FrameFormat(PICTAVO_FRAME_P010, space / 2, space % 2);
    cpu::ConvertFrameToBGRA(Levels().back(), src, kSide, kSide, pixels.data(), kPitch, format);
    cpu::ConvertFrameToBGRA(0, src, kSide, kSide, rule.data(), kPitch, format);
    EXPECT_TRUE(pixels == rule) << space;
  }
}

/// Both ways against real numbers, for every 307th colour of bytes and of ten bits.
TEST(Frames, EveryManyColoursAreNearest) {
  const auto check = [](auto rule, const colour::LumaWeights& w, i32 numbers) {
    const double kr = w.red / 1e4, kg = w.green / 1e4, kb = w.blue / 1e4;
    const double luma = rule.range.luma / 255., chroma = rule.range.chroma / 255.;
    for (i32 i = 0; i < 1 << 24; i += 307) {
      const colour::Colour c = {i & 255, i >> 8 & 255, i >> 16};
      const auto [r, g, b] = c;
      const double grey = kr * r + kg * g + kb * b;
      const auto [y, u, v] = rule.FromRgb(c);
      ASSERT_NEAR(y, rule.range.black + luma * grey, 0.5 + 1e-9);
      ASSERT_NEAR(u, rule.range.neutral + chroma * (b - grey) / (2 - 2 * kb), 0.5 + 1e-9);
      ASSERT_NEAR(v, rule.range.neutral + chroma * (r - grey) / (2 - 2 * kr), 0.5 + 1e-9);

      const colour::Colour yuv = {r * numbers / 256, g * numbers / 256, b * numbers / 256};
      const double l = (yuv[0] - rule.range.black) / luma;
      const double red = l + (yuv[2] - rule.range.neutral) / chroma * (2 - 2 * kr);
      const double blue = l + (yuv[1] - rule.range.neutral) / chroma * (2 - 2 * kb);
      const double real[] = {red, (l - kr * red - kb * blue) / kg, blue};
      const colour::Colour back = rule.ToRgb(yuv);
      for (size_t k = 0; k < 3; ++k)
        ASSERT_NEAR(back[k], std::clamp(real[k], 0., 255.), 0.5 + 1e-9);
    }
  };
  for (u32 matrix = 0; matrix < 3; ++matrix) {
    for (u32 range = 0; range < 2; ++range) {
      check(colour::MakeYuv8(matrix, range), colour::kLumaWeights[matrix], 256);
      check(colour::MakeYuv10(matrix, range), colour::kLumaWeights[matrix], 1024);
    }
  }
}

}  // namespace
}  // namespace pictavo::test
