// Drawing in one colour.
#include "cpu/drawing/draw.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace pictavo::test {
namespace {

constexpr u32 kColour = 0x80FF4020;

TEST(Outline, DrawsWhatTheRectangleSays) {
  struct Case {
    i32 rect[4];
    u32 pitch;
    u32 result;
    const char* rows;  // of four pixels
  } const cases[] = {
      {{0, 0, 3, 3}, 16, 0, "####|#..#|#..#|####"},
      {{1, 1, 2, 2}, 16, 0, "....|.##.|.##.|...."},
      {{2, 0, 2, 2}, 16, 0, "..#.|..#.|..#.|...."},
      {{1, 1, 3, 1}, 16, 0, "....|.###|.###|...."},
      {{1, 2, 1, 2}, 19, 0, "....|....|.#..|.#.."},  // both a row high and a pitch of four pixels
      {{-1, 0, 1, 1}, 16, PICTAVO_E_INVALIDARG, "....|....|....|...."},
      {{0, -1, 1, 1}, 16, PICTAVO_E_INVALIDARG, "....|....|....|...."},
      {{2, 0, 1, 1}, 16, PICTAVO_E_INVALIDARG, "....|....|....|...."},
      {{0, 2, 1, 1}, 16, PICTAVO_E_INVALIDARG, "....|....|....|...."},
  };
  for (const Case& c : cases) {
    u32 pixels[16] = {};
    EXPECT_EQ(cpu::DrawRectOutline(pixels, c.pitch, c.rect, kColour), c.result) << c.rows;
    std::string drawn;
    for (int i = 0; i < 16; ++i) {
      if (i != 0 && i % 4 == 0) drawn += '|';
      drawn += pixels[i] == 0 ? '.' : pixels[i] == kColour ? '#' : '?';
    }
    EXPECT_EQ(drawn, c.rows);
  }
  u32 pixel = 7;
  EXPECT_EQ(cpu::DrawRectOutline(&pixel, 4, nullptr, kColour), PICTAVO_E_FAIL);
  EXPECT_EQ(pixel, 7u);
}

std::string Alphas(const u32 (&pixels)[16]) {
  std::string text;
  for (const u32 pixel : pixels) text += std::to_string(pixel >> 24) + " ";
  return text;
}

/// Over clear pixels, where the alpha is the coverage.
TEST(SmoothRectangle, CoversPixelsByTheirParts) {
  const f32 kFar = std::numeric_limits<f32>::infinity();
  struct Case {
    f32 rect[4];
    const char* alphas;
  } const cases[] = {
      {{1, 1, 3, 2}, "0 0 0 0 0 255 255 0 0 0 0 0 0 0 0 0 "},
      {{-kFar, 3, kFar, 9}, "0 0 0 0 0 0 0 0 0 0 0 0 255 255 255 255 "},
      {{0.5f, 0, 2.25f, 0.5f}, "63 127 31 0 0 0 0 0 0 0 0 0 0 0 0 0 "},
      {{1.25f, 1.75f, 1.75f, 2.5f}, "0 0 0 0 0 31 0 0 0 63 0 0 0 0 0 0 "},
      {{3.5f, 3.998f, 3.502f, 5}, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 "},  // (1 * 1 + 128) >> 8
      {{2, 0, 1, 4}, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 "},
      {{-3, -2, -1, 4}, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 "},
  };
  for (const auto& [r, alphas] : cases) {
    u32 pixels[16] = {};
    EXPECT_EQ(cpu::FillRectangleSmooth(0, reinterpret_cast<u8*>(pixels), 4, 4, 16, r[0], r[1], r[2],
                                       r[3], 0xFF102030),
              PICTAVO_S_OK);
    EXPECT_EQ(Alphas(pixels), alphas);
  }
}

TEST(SmoothRectangle, LaysItsColourOver) {
  u32 pixels[16] = {0xFF646464, 0x80646464};
  cpu::FillRectangleSmooth(0, reinterpret_cast<u8*>(pixels), 4, 4, 16, -1, 0, 2, 0.5f, 0x80C8C8C8);
  // Weight 128 * 128 >> 8 = 64: (100 * 255 * 192 >> 8) + 200 * 64 over 255; alpha 128 - 32 + 64.
  EXPECT_EQ(pixels[0], 0xFF7D7D7Du);
  EXPECT_EQ(pixels[1], 0xA08C8C8Cu);
}

}  // namespace
}  // namespace pictavo::test
