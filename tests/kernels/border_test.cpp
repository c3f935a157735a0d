// Border extension.
#include "cpu/geometry/border.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "guarded_memory.h"
#include "pixels.h"

namespace pictavo::test {
namespace {

using Fn = u32(const ImageDesc*, u32) noexcept;

ImageDesc Describe(void* data, i32 width, i32 height, i32 border, i32 pitch, i32 bytesPerPixel) {
  return {{},    width + 2 * border, height + 2 * border, 0, data, width, height,
          pitch, bytesPerPixel};
}

TEST(Border, RepeatsTheNearestPixel) {
  Random random(2);
  for (int round = 0; round < 300; ++round) {
    const i32 width = static_cast<i32>(1 + random() % 9),
              height = static_cast<i32>(1 + random() % 9), border = static_cast<i32>(random() % 5);
    const bool transparent = round % 3 == 0;
    const i32 bytes = round % 3 == 1 ? 1 : 4;
    const i32 columns = width + 2 * border, rows = height + 2 * border;
    // Rows of bytes are tight; a pitch of pixels counts in whole pixels.
    const i32 step = bytes == 1 ? columns : 4 * columns + static_cast<i32>(random() % 2 * 8);
    const i32 pitch = bytes == 1 ? step : step + static_cast<i32>(random() % 4);
    GuardedMemory memory(static_cast<size_t>((rows - 1) * step + bytes * columns),
                         round % 2 ? GuardedMemory::Side::kBefore : GuardedMemory::Side::kAfter);
    FillPixels(memory.data(), memory.size(), kRandom, random);
    Bytes expected(memory.data(), memory.data() + memory.size());
    const auto at = [&](i32 x, i32 y) {
      return static_cast<size_t>((y + border) * step + (x + border) * bytes);
    };
    for (i32 y = -border; y < height + border; ++y) {
      for (i32 x = -border; x < width + border; ++x) {
        const i32 nearX = std::clamp(x, 0, width - 1), nearY = std::clamp(y, 0, height - 1);
        if (nearX == x && nearY == y) continue;
        std::memcpy(&expected[at(x, y)], &expected[at(nearX, nearY)], static_cast<size_t>(bytes));
        if (transparent) expected[at(x, y) + 3] = 0;
      }
    }
    const ImageDesc image = Describe(memory.data() + at(0, 0), width, height, border, pitch, bytes);
    const auto extend = transparent ? cpu::ExtendBoundaryTransparent : cpu::ExtendBoundary;
    EXPECT_EQ(extend(&image, static_cast<u32>(border)), PICTAVO_S_OK);
    ASSERT_EQ(Bytes(memory.data(), memory.data() + memory.size()), expected)
        << width << " x " << height << ", border " << border << ", bytes " << bytes;
  }
}

/// One byte, 9, with a border of one in rows five bytes apart: the border comes in rows of three.
TEST(Border, TakesRowsOfBytesAsTight) {
  Bytes buffer(15, 1);
  buffer[6] = 9;
  const ImageDesc image = Describe(&buffer[6], 1, 1, 1, 5, 1);
  EXPECT_EQ(cpu::ExtendBoundary(&image, 1), PICTAVO_S_OK);
  EXPECT_EQ(buffer, (Bytes{9, 9, 9, 9, 1, 9, 9, 9, 9, 1, 1, 1, 1, 1, 1}));
}

TEST(Border, RefusesWhatItCannotExtend) {
  u32 pixels[9];
  const auto with = [&](auto change) {
    ImageDesc image = Describe(&pixels[4], 1, 1, 1, 12, 4);
    change(image);
    return image;
  };
  struct Case {
    ImageDesc image;
    u32 border;
  } const cases[] = {
      {with([](ImageDesc& i) { i.data = nullptr; }), 1},
      {with([](ImageDesc& i) { i.width = 0; }), 1},
      {with([](ImageDesc& i) { i.height = -1; }), 1},
      {with([](ImageDesc& i) { i.bufferWidth = 2; }), 1},
      {with([](ImageDesc& i) { i.bufferHeight = 2; }), 1},
      {with([](ImageDesc& i) { i.bytesPerPixel = 3; }), 1},
      {with([](ImageDesc& i) { i.bytesPerPixel = 1, i.pitch = 2; }), 1},
      {with([](ImageDesc& i) { i.bytesPerPixel = 1, i.pitch = -12; }), 1},
      {with([](ImageDesc& i) { i.memoryKind = PICTAVO_MEMORY_D3D11_TEXTURE; }), 1},
      {with([](ImageDesc&) {}), 2},
      {with([](ImageDesc&) {}), ~0u},
      {with([](ImageDesc&) {}), 0x80000000u},
  };
  for (Fn* extend : {cpu::ExtendBoundary, cpu::ExtendBoundaryTransparent}) {
    std::fill_n(pixels, 9, 7);
    EXPECT_EQ(extend(nullptr, 1), PICTAVO_E_INVALIDARG);
    for (const Case& c : cases) {
      EXPECT_EQ(extend(&c.image, c.border), PICTAVO_E_INVALIDARG) << "case " << &c - cases;
    }
    EXPECT_EQ(std::count(pixels, pixels + 9, 7u), 9);
    const ImageDesc fine = with([](ImageDesc&) {});
    EXPECT_EQ(extend(&fine, 1), PICTAVO_S_OK);
  }
  const ImageDesc bytes = with([](ImageDesc& i) { i.bytesPerPixel = 1; });
  EXPECT_EQ(cpu::ExtendBoundaryTransparent(&bytes, 1), PICTAVO_E_INVALIDARG);
  // The pitch of bytes only places their border.
  const ImageDesc pitchless = with([](ImageDesc& i) { i.bytesPerPixel = 1, i.pitch = 0; });
  EXPECT_EQ(cpu::ExtendBoundary(&pitchless, 0), PICTAVO_S_OK);
}

}  // namespace
}  // namespace pictavo::test
