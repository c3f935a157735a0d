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

TEST(Channels, MovesBytesBetweenPixelsAndPlanes) {
  const u8 pixels[] = {10, 20, 30, 40, 255, 255, 255, 0, 255, 0, 0, 9, 0, 255, 0, 9, 0, 0, 255, 9};
  const Bytes planes[] = {
      {10, 255, 255, 0, 0},
      {20, 255, 0, 255, 0},
      {30, 255, 0, 0, 255},
      {40, 0, 9, 9, 9},
      {21, 255, 19, 182, 54}};  // (190 + 3660 + 1620 + 128) >> 8; 18.9, 182.3, 53.8
  for (const i32 level : Levels()) {
    for (u32 channel = 0; channel < 5; ++channel) {
      Bytes plane(5);
      EXPECT_EQ(cpu::ExtractPlane(level, pixels, 5, 1, 20, plane.data(), 5, channel), PICTAVO_S_OK);
      EXPECT_EQ(plane, planes[channel]) << channel;
    }
    Bytes shuffled(20), masked(pixels, pixels + 20);
    EXPECT_EQ(cpu::ShuffleChannels(level, shuffled.data(), pixels, 5, 2, 5, 3, 4), PICTAVO_S_OK);
    EXPECT_EQ(shuffled,
              (Bytes{30, 255, 40, 0, 255, 255, 0, 0, 0, 255, 9, 0, 0, 255, 9, 0, 255, 255, 9, 0}));
    EXPECT_EQ(cpu::SetAlphaPlane(level, masked.data(), planes[4].data(), 5, 1), PICTAVO_S_OK);
    for (size_t i = 0; i < 20; ++i) EXPECT_EQ(masked[i], i % 4 < 3 ? pixels[i] : planes[4][i / 4]);
  }
}

TEST(Channels, ScalesToTheNearestByte) {
  struct Scaled {
    f32 gain;
    u8 from, to;
  };
  const f32 below = 0x1.fffffep-1f;  // next to 1, so that products lie next to whole numbers
  const Scaled cases[] = {{0, 255, 0},           {1, 77, 77},      {0.5f, 1, 1},
                          {0.5f, 254, 127},      {255, 1, 255},    {255, 2, 255},
                          {1e-45f, 255, 0},      {1.5f, 170, 255}, {below / 2, 1, 0},
                          {below / 2, 255, 127}, {2.5f, 51, 128}};
  for (const i32 level : Levels()) {
    for (const auto& [gain, from, to] : cases) {
      u32 pixel = kUntouched;
      EXPECT_EQ(
          cpu::ExpandPlaneScaled(level, &from, 1, 1, 1, reinterpret_cast<u8*>(&pixel), 4, gain),
          PICTAVO_S_OK);
      EXPECT_EQ(pixel, 0xFF000000 | to * 0x010101u) << gain << ' ' << int{from};
    }
  }
}

TEST(Channels, RefusesPicturesThatShareBytes) {
  Bytes bytes(64, 7);
  u8* const p = bytes.data();
  const i32 level = Levels().back();
  EXPECT_EQ(cpu::ExpandPlane(level, p, 2, 2, 2, p + 3, 8), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(cpu::ExpandPlane(level, p + 20, 2, 2, 10, p + 14, 9), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(cpu::ExtractPlane(level, p, 2, 2, 8, p + 15, 2, 0), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(cpu::SetAlphaPlane(level, p, p + 15, 2, 2), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(cpu::SetAlphaPlane(level, p, p + 32, ~0u, ~0u), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(bytes, Bytes(64, 7));
  // Side by side in rows of ten bytes they share none.
  EXPECT_EQ(cpu::ExpandPlane(level, p, 2, 3, 10, p + 2, 10), PICTAVO_S_OK);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 255), 6);
}

}  // namespace
}  // namespace pictavo::test
