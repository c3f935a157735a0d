// Tone and colour: corner cases worked out by hand.
#include "cpu/colour/grading.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "operations.h"

namespace pictavo::test {
namespace {

TEST(Grading, LevelsFollowTheCurveInTheChosenChannels) {
  struct Level {
    LevelsParam param;
    u8 from, to;
  };
  const Level cases[] = {{{0, 1, 1, 0, 1}, 93, 93},          {{0, 1, 1, 1, 0}, 93, 162},
                         {{0, 1, 1, 0, 0.5f}, 93, 47},        // 46.5
                         {{0.25f, 0.75f, 1, 0, 1}, 100, 73},  // 72.5
                         {{0.25f, 0.75f, 1, 0, 1}, 63, 0},   {{0.25f, 0.75f, 1, 0, 1}, 192, 255},
                         {{0, 1, 2, 0, 1}, 64, 128},          // 127.7: a square root
                         {{0, 1, 0.5f, 0, 1}, 128, 64},       // 64.3: a square
                         {{0, 1, 0.01f, 0.5f, 1}, 200, 128},  // 127.5
                         {{0, 1, 100, 0, 1}, 1, 241},         // 255 * 255^-0.01 = 241.2
                         {{0, 1, 100, 0, 1}, 0, 0}};
  for (const i32 level : Levels()) {
    for (const auto& [param, from, to] : cases) {
      for (u32 channels = 0; channels < 16; ++channels) {
        Bytes pixels(4 * 70, from), expected = pixels;
        for (size_t i = 0; i < pixels.size(); ++i)
          if (channels >> i % 4 & 1) expected[i] = to;
        EXPECT_EQ(cpu::AdjustLevels(level, pixels.data(), 35, 2, 140, channels, &param),
                  PICTAVO_S_OK);
        EXPECT_EQ(pixels, expected) << param.gamma << ' ' << int{from} << ' ' << channels;
      }
    }
  }
}

TEST(Grading, ColourGoesThroughTheMatrix) {
  struct Colour {
    ColorParam param;
    u32 from, to;
  };
  const Colour cases[] = {{{0, 1, 1, 0, 0, 0}, 0x12345678, 0x12345678},
                          {{0, 1, 1, -720, 0, 0}, 0x12345678, 0x12345678},
                          {{0, 1, 0, 0, 0, 0}, 0x80FF0000, 0x80363636},     // 54.2
                          {{0.5f, 1, 1, 0, 0, 0}, 0x00645A00, 0x00E4DA80},  // 127.5 more
                          {{0, 2, 1, 0, 0, 0}, 0xFF808000, 0xFF818100},     // 128.5, -127.5
                          {{0, 0, 1, 77, 1, 1}, 0xFF123456, 0xFF808080},
                          {{0, 1, 1, 180, 0, 0}, 0xFF7F7F7F, 0xFF7F7F7F},
                          {{0, 1, 1, 180, 0, 0}, 0xFF806480, 0xFF587458},  // luma 107.974
                          {{-1, 4, 4, 120, -1, 1}, 0xFFFFFFFF, 0xFFFF0000},
                          // White times 1.5, 1 and 0.5 over their luma 1.0702.
                          {{0, 1, 1, 0, 1, 0}, 0xFF646464, 0xFF8C5D2F}};
  for (const i32 level : Levels()) {
    for (const auto& [param, from, to] : cases) {
      u32 pixels[9];
      std::fill(std::begin(pixels), std::end(pixels), from);
      EXPECT_EQ(cpu::AdjustColor(level, reinterpret_cast<u8*>(pixels), 9, 1, 36, &param),
                PICTAVO_S_OK);
      for (const u32 pixel : pixels) EXPECT_EQ(pixel, to) << std::hex << from << ' ' << pixel;
    }
  }
}

/// A table that makes of a place along the three sides, 0 … 1 each, a colour of such.
template <typename Colour>
std::vector<u16> MakeTable(u32 size, Colour colour) {
  std::vector<u16> entries;
  for (u32 i = 0; i < size * size * size; ++i) {
    const double side = size - 1, r = i % size / side, g = i / size % size / side,
                 b = i / size / size / side;
    for (const double c : colour(b, g, r))
      entries.push_back(static_cast<u16>(std::lround(65535 * c)));
    entries.push_back(0xABCD);
  }
  return entries;
}

Bytes Mapped(i32 level, const Bytes& pixels, const ColorLutParam& param) {
  Bytes to(pixels.size());
  const i32 width = static_cast<i32>(pixels.size() / 4);
  const ImageDesc src = {{}, 0, 0, 0, const_cast<u8*>(pixels.data()), width, 1, 4 * width, 4};
  ImageDesc dst = src;
  dst.data = to.data();
  EXPECT_EQ(cpu::ApplyColorLut(level, &src, &dst, &param), PICTAVO_S_OK);
  return to;
}

TEST(Grading, TablesInterpolateInTetrahedra) {
  Random random(5);
  Bytes pixels(4 * 4099), exact = pixels;
  FillPixels(pixels.data(), pixels.size(), kSoft, random);
  for (size_t i = 0; i < 8; ++i) pixels[i] = i < 4 ? 255 : 0;
  // In the cube of 2, the far corner alone weighs the least of the three; the corner of red and
  // green alone what both have more than blue.
  for (size_t i = 0; i < pixels.size(); i += 4) {
    const u8 b = pixels[i], g = pixels[i + 1], r = pixels[i + 2], less = std::min(r, g);
    exact[i] = std::min(b, less);
    exact[i + 1] = less > b ? less - b : 0;
    exact[i + 2] = 255 - r;
    exact[i + 3] = pixels[i + 3];
  }
  const auto corners = MakeTable(2, [](double b, double g, double r) {
    return std::array<double, 3>{b * g * r, (1 - b) * g * r, 1 - r};
  });
  for (const i32 level : Levels()) {
    EXPECT_EQ(Mapped(level, pixels, {2, 256, corners.data()}), exact);
    EXPECT_EQ(Mapped(level, pixels, {2, 0, corners.data()}), pixels);
    const Bytes half = Mapped(level, pixels, {2, 128, corners.data()});
    for (size_t i = 0; i < half.size(); ++i) EXPECT_EQ(half[i], (pixels[i] + exact[i] + 1) / 2);
    for (u32 size = 2; size <= 65; size += 7) {
      const auto same = MakeTable(size, [](double b, double g, double r) {
        return std::array<double, 3>{b, g, r};
      });
      EXPECT_EQ(Mapped(level, pixels, {size, 256, same.data()}), pixels) << size;
    }
  }
}

}  // namespace
}  // namespace pictavo::test
