// Drawing in one colour.
#include "cpu/drawing/draw.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace pictavo::test
