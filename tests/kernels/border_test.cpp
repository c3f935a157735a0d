// Border extension, where rows of bytes and the border's width make it odd.
#include "cpu/geometry/border.h"

#include <gtest/gtest.h>

#include "pixels.h"

namespace pictavo::test {
namespace {

/// A pixel with a border of one around it.
ImageDesc Describe(void* data, i32 pitch, i32 bytesPerPixel) {
  return {{}, 3, 3, 0, data, 1, 1, pitch, bytesPerPixel};
}

/// One byte, 9, in rows five bytes apart: the border comes in rows of three.
TEST(Border, TakesRowsOfBytesAsTight) {
  Bytes buffer(15, 1);
  buffer[6] = 9;
  const ImageDesc image = Describe(&buffer[6], 5, 1);
  EXPECT_EQ(cpu::ExtendBoundary(&image, 1), PICTAVO_S_OK);
  EXPECT_EQ(buffer, (Bytes{9, 9, 9, 9, 1, 9, 9, 9, 9, 1, 1, 1, 1, 1, 1}));
  // Their pitch only places the border.
  const ImageDesc pitchless = Describe(&buffer[6], 0, 1);
  EXPECT_EQ(cpu::ExtendBoundary(&pitchless, 0), PICTAVO_S_OK);
}

/// Two bytes, 9 and 5, in rows six bytes apart, where the border comes in rows of four: the lower
/// left corner falls on the 5, which the corner above and right of it has taken by then.
TEST(Border, FillsItsPartsInOrder) {
  Bytes buffer(12, 1);
  buffer[7] = 9;
  buffer[8] = 5;
  const ImageDesc image = {{}, 4, 3, 0, &buffer[7], 2, 1, 6, 1};
  EXPECT_EQ(cpu::ExtendBoundary(&image, 1), PICTAVO_S_OK);
  EXPECT_EQ(buffer, (Bytes{9, 9, 9, 5, 9, 1, 1, 9, 9, 9, 9, 9}));
}

TEST(Border, HasNoMoreThanTheBufferHasRoomFor) {
  std::vector<u32> pixels(9, 7);
  const ImageDesc image = Describe(&pixels[4], 12, 4);
  for (const u32 border : {2u, ~0u, 0x80000000u}) {
    EXPECT_EQ(cpu::ExtendBoundary(&image, border), PICTAVO_E_INVALIDARG);
    EXPECT_EQ(cpu::ExtendBoundaryTransparent(&image, border), PICTAVO_E_INVALIDARG);
  }
  EXPECT_EQ(pixels, std::vector<u32>(9, 7));
}

}  // namespace
}  // namespace pictavo::test
