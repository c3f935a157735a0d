// Blocks of one colour, and copied rectangles: corner cases worked out by hand.
#include "cpu/filters/pixelate.h"

#include <gtest/gtest.h>

#include "cpu/geometry/copy.h"
#include "operations.h"

namespace pictavo::test {
namespace {

std::vector<u32> Pixelated(i32 level, std::vector<u32> pixels, std::array<i32, 4> rect, u32 block) {
  EXPECT_EQ(cpu::PixelateRegion(level, reinterpret_cast<u8*>(pixels.data()), 3,
                                static_cast<i32>(pixels.size()) / 3, 12, rect.data(), block),
            PICTAVO_S_OK);
  return pixels;
}

TEST(Pixelate, GivesBlocksTheirMeans) {
  const std::vector<u32> pixels = {0xFF000001, 0xFF000002, 0xFFFFFFFF,   //
                                   0x01000005, 0x00FFFFFF, 0x00123456};  //
  const u32 a = 0xFF000002;  // (1 + 2 + 1) / 2 of two opaque pixels
  for (const i32 level : Levels()) {
    EXPECT_EQ(Pixelated(level, pixels, {0, 0, 2, 1}, 2),
              (std::vector<u32>{a, a, pixels[2], pixels[3], pixels[4], pixels[5]}));
    // (1 + 255 * 2 + 2 * 64) / 256 for the alpha; clear pixels have no colour; blue 2 * 255 / 511.
    EXPECT_EQ(Pixelated(level, pixels, {-5, 0, 2, 99}, 9),
              (std::vector<u32>{0x80000002, 0x80000002, ~0u, 0x80000002, 0x80000002, 0x00123456}));
    // What is left of the rectangle begins the blocks; a mean alpha of a half counts, less does
    // not.
    EXPECT_EQ(Pixelated(level, pixels, {INT32_MIN, 1, INT32_MAX, INT32_MAX}, 2),
              (std::vector<u32>{pixels[0], pixels[1], pixels[2], 0x01000005, 0x01000005, 0}));
    EXPECT_EQ(Pixelated(level, pixels, {0, 1, 3, 2}, ~0u),
              (std::vector<u32>{pixels[0], pixels[1], pixels[2], 0, 0, 0}));
  }
}

/// More than lanes of 32 bits hold.
TEST(Pixelate, SumsLongBlocks) {
  for (const i32 level : Levels()) {
    std::vector<u32> pixels(3 * 70000, ~0u);
    EXPECT_EQ(Pixelated(level, pixels, {0, 0, 3, 70000}, 70000), pixels);
  }
}

TEST(CopyRectangle, RefusesPicturesThatShareBytes) {
  Bytes bytes(4 * 16);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<u8>(i);
  const Bytes before = bytes;
  ImageDesc src = {{}, 4, 4, 0, bytes.data(), 2, 4, 16, 4}, dst = src;
  const i32 rect[] = {1, 1, 2, 4};
  dst.data = bytes.data() + 4;
  EXPECT_EQ(cpu::CopyRectangle(Levels().back(), &src, &dst, rect), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(bytes, before);
  dst.data = bytes.data() + 8;  // side by side
  EXPECT_EQ(cpu::CopyRectangle(Levels().back(), &src, &dst, rect), PICTAVO_S_OK);
  for (size_t y = 0; y < 4; ++y)
    EXPECT_EQ(bytes[16 * y + 8], y < 3 ? 16 * (y + 1) + 4 : 16 * y + 8);
}

}  // namespace
}  // namespace pictavo::test
