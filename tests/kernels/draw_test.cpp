// Drawing in one colour.
#include "cpu/drawing/draw.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "guarded_memory.h"
#include "pixels.h"

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
  const i32 rect[4] = {};
  EXPECT_EQ(cpu::DrawRectOutline(nullptr, 4, rect, kColour), PICTAVO_E_FAIL);
  EXPECT_EQ(cpu::DrawRectOutline(&pixel, 4, nullptr, kColour), PICTAVO_E_FAIL);
  EXPECT_EQ(pixel, 7u);
}

TEST(Fill, FillsRowsAndNothingElse) {
  Random random(4);
  for (const i32 level : {0, 3, 8}) {
    for (i32 width = 1; width < 20; ++width) {
      const i32 pitch = width * 4 + static_cast<i32>(random() % 3 * 3), height = 3;
      GuardedMemory memory(static_cast<size_t>(pitch * (height - 1) + width * 4),
                           width % 2 ? GuardedMemory::Side::kBefore : GuardedMemory::Side::kAfter);
      std::memset(memory.data(), 0xA5, memory.size());
      Bytes expected(memory.size(), 0xA5);
      for (i32 i = 0; i < width * height; ++i) {
        std::memcpy(&expected[static_cast<size_t>(i / width * pitch + i % width * 4)], &kColour, 4);
      }
      const bool upwards = width % 3 == 0;
      u8* top = memory.data() + (upwards ? (height - 1) * pitch : 0);
      EXPECT_EQ(cpu::FillSolidColor(level, top, width, height, upwards ? -pitch : pitch, kColour),
                PICTAVO_S_OK);
      ASSERT_EQ(Bytes(memory.data(), memory.data() + memory.size()), expected)
          << width << ", level " << level;
    }
    u32 pixel = 7;
    u8* bytes = reinterpret_cast<u8*>(&pixel);
    EXPECT_EQ(cpu::FillSolidColor(level, nullptr, 1, 1, 4, kColour), PICTAVO_E_POINTER);
    EXPECT_EQ(cpu::FillSolidColor(level, bytes, 0, 1, 4, kColour), PICTAVO_S_FALSE);
    EXPECT_EQ(cpu::FillSolidColor(level, bytes, 1, -1, 4, kColour), PICTAVO_S_FALSE);
    EXPECT_EQ(pixel, 7u);
  }
}

}  // namespace
}  // namespace pictavo::test
