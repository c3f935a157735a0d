// Channels of pixels and planes of bytes: corner cases worked out by hand.
#include "cpu/colour/channels.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "operations.h"

namespace pictavo::test {
namespace {

constexpr u32 kUntouched = 0x55667788;

TEST(Channels, ExpandsBytesIntoOpaqueGrey) {
  const u8 plane[] = {0, 1, 9, 128, 255};  // the third lies between rows of two
  for (const i32 level : Levels()) {
    u32 pixels[] = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};
    u8* const dst = reinterpret_cast<u8*>(pixels);
    EXPECT_EQ(cpu::ExpandPlane(level, plane, 2, 2, 3, dst, 12), PICTAVO_S_OK);
    EXPECT_TRUE(std::ranges::equal(
        pixels,
        std::initializer_list<u32>{0xFF000000, 0xFF010101, kUntouched, 0xFF808080, 0xFFFFFFFF}));
  }
}

TEST(Channels, RefusesPicturesThatShareBytes) {
  Bytes bytes(64, 7);
  u8* const p = bytes.data();
  const i32 level = Levels().back();
  EXPECT_EQ(cpu::ExpandPlane(level, p, 2, 2, 2, p + 3, 8), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(cpu::ExpandPlane(level, p + 20, 2, 2, 10, p + 14, 9), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(bytes, Bytes(64, 7));
  // Side by side in rows of ten bytes they share none.
  EXPECT_EQ(cpu::ExpandPlane(level, p, 2, 3, 10, p + 2, 10), PICTAVO_S_OK);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 255), 6);
}

}  // namespace
}  // namespace pictavo::test
