// Resizing: every pair of pixels, and the rules' corner cases.
#include <gtest/gtest.h>

#include <cstring>
#include <numeric>

#include "operations.h"

namespace pictavo::test {
namespace {

const Operation &kBoxWeighted = Slot(29), &kBilinear16 = Slot(30), &kBilinear7 = Slot(31),
                &kNearest = Slot(55), &kBox = Slot(57), &kKeepAlpha = Slot(58);

/// Every pair of neighbours under weights of all sizes.
TEST(Resize, EveryPairIsInterpolatedAlike) {
  Call c;
  c.srcWidth = 2;
  c.width = 515;
  Bytes expected(size_t{4} * 515), actual(expected.size());
  for (u32 pair = 0; pair < 65536 && !HasFatalFailure(); pair += 4) {
    u8 src[8];
    for (u32 channel = 0; channel < 4; ++channel) {
      src[channel] = static_cast<u8>(pair >> 8);
      src[4 + channel] = static_cast<u8>(pair + channel);
    }
    kKeepAlpha(0, expected.data(), src, c);
    for (const i32 level : Levels()) {
      kKeepAlpha(level, actual.data(), src, c);
      ASSERT_EQ(actual, expected) << "level " << level << ", pair " << pair;
    }
  }
}

// --- Corner cases ------------------------------------------------------------------------------

using Pixels = std::vector<u32>;  // 0xAARRGGBB

Bytes PixelBytes(const Pixels& pixels) {
  Bytes bytes(4 * pixels.size());
  std::memcpy(bytes.data(), pixels.data(), bytes.size());
  return bytes;
}

/// Pixels whose four channels are alike.
Pixels Greys(const std::vector<int>& values) {
  Pixels pixels;
  for (const int value : values) pixels.push_back(static_cast<u32>(value) * 0x01010101);
  return pixels;
}

Pixels Ramp(int count) {
  std::vector<int> values;
  for (int i = 0; i < count; ++i) values.push_back(i & 255);
  return Greys(values);
}

TEST(Resize, Corners) {
  const u32 untouched = 0xCDCDCDCD;
  struct Corner {
    const char* what;
    const Operation& operation;
    i32 srcWidth, dstWidth;  // heights follow from the pixels
    Pixels src, expected;
    i32 forceOpaque = 0, fullSize = 1;
  } const corners[] = {
      {"an edge weight of 127", kBilinear7, 2, 4, Greys({0, 128}), Greys({0, 64, 127, 127})},
      {"rounding down below 0", kBilinear7, 2, 4, Greys({1, 0}), Greys({1, 0, 0, 0})},
      {"the same size", kBilinear7, 3, 3, Greys({10, 20, 30, 110, 120, 130, 210, 220, 230}),
       Greys({10, 20, 29, 110, 120, 129, 110, 120, 129})},
      {"between rows", kBilinear7, 1, 1, Greys({0, 100}), Greys({0, 50, 99, 0})},
      {"a last row, not blended", kBilinear7, 1, 1, Greys({0, 100, 200}), Greys({0, 100})},
      {"steps of at most 255", kBilinear7, 600, 2, Ramp(600), Greys({0, 255})},
      {"one column", kBilinear7, 1, 3, Greys({77, 99}), Greys({77, 77, 77, 77, 77, 77})},
      {"one row", kBilinear7, 2, 2, Greys({8, 99}), Greys({8, 98, 8, 98, 8, 98})},
      {"the same size", kBilinear16, 2, 2, Greys({0, 101, 100, 201}), Greys({0, 50, 50, 100})},
      {"rounding down below 0", kBilinear16, 2, 2, Greys({1, 0, 1, 0}), Greys({1, 0, 1, 0})},
      {"one column", kBilinear16, 1, 3, Greys({77, 99}), Greys({77, 77, 77, 88, 88, 88})},
      {"one row", kKeepAlpha, 2, 2, Greys({8, 99}), Greys({8, 53, 8, 53, 8, 53})},
      {"one pixel", kKeepAlpha, 1, 2, Greys({8}), Greys({8, 8, 8, 8})},
      {"forced opaque", kBilinear16, 2, 2, {0x00102030, 0x80304050}, {0xFF102030, 0xFF203040}, 1},
      {"the last column and row left to the host",
       kBilinear16,
       4,
       3,
       Ramp(16),
       {0, 0x01010101, untouched, untouched, untouched, untouched},
       0,
       0},
      {"no row left", kKeepAlpha, 4, 3, Ramp(4), {untouched, untouched, untouched}, 0, 0},
      {"no column left", kKeepAlpha, 4, 1, Ramp(8), {untouched, untouched}, 0, 0},
      {"halves", kBox, 4, 2, Greys({1, 2, 9, 9, 3, 4, 9, 9}), Greys({2, 9})},
      {"the same size", kBox, 3, 3, {1, 0x020000FF, 3}, {1, 0x020000FF, 3}},
      {"repeated samples", kBox, 2, 3, Greys({0, 160}), Greys({0, 40, 160})},
      {"clear samples do not darken",
       kBoxWeighted,
       4,
       2,
       {0xFFFF0000, 0x000000FF, 0, 0},
       {0x7FFF0000, 0}},
      {"a sum of alphas below 16", kBoxWeighted, 4, 1, {0x03FFFFFF, 0, 0, 0}, {0}},
      {"the sum of alphas divides",
       kBoxWeighted,
       4,
       1,
       {0x0500000A, 0x05000064, 0, 0},
       {0x02000037}},
      {"forced opaque", kBoxWeighted, 2, 1, {0x00102030, 0x00304050}, {0xFF203040}, 1},
      {"the first of each cell", kNearest, 4, 2, Ramp(16), Greys({0, 2, 8, 10})},
      {"no centring", kNearest, 2, 5, Greys({7, 9}), Greys({7, 7, 7, 9, 9})},
  };
  for (const Corner& corner : corners) {
    Call c;
    c.srcWidth = corner.srcWidth;
    c.srcHeight = static_cast<i32>(corner.src.size()) / c.srcWidth;
    c.width = corner.dstWidth;
    c.height = static_cast<i32>(corner.expected.size()) / c.width;
    c.srcPitch = 4 * c.srcWidth;
    c.dstPitch = 4 * c.width;
    c.forceOpaque = corner.forceOpaque;
    c.fullSize = corner.fullSize;
    const Bytes dst = PixelBytes(Pixels(corner.expected.size(), untouched));
    EXPECT_EQ(RunCase(MakeCase(corner.operation, c, dst, PixelBytes(corner.src)), 0),
              (Outcome{PICTAVO_S_OK, PixelBytes(corner.expected)}))
        << corner.operation.name << ": " << corner.what;
  }
}

/// Steps of a half, or all but, that are no doubles.
TEST(Resize, NearestStepsBy65536ths) {
  for (const auto& [srcWidth, width] : {std::pair{20000, 39999}, {32767, 65535}}) {
    const Call c{.width = width, .dstPitch = 4 * width, .srcWidth = srcWidth};
    Pixels src(static_cast<size_t>(srcWidth)), expected;
    std::iota(src.begin(), src.end(), 0u);
    for (i64 x = 0; x < width; ++x)
      expected.push_back(static_cast<u32>(x * (srcWidth * 65536 / width) / 65536));
    const Case drawn = MakeCase(kNearest, c, Bytes(4 * expected.size()), PixelBytes(src));
    for (const i32 level : Levels())
      EXPECT_EQ(RunCase(drawn, level).dst, PixelBytes(expected)) << Describe(drawn, level);
  }
}

/// Ratios that hosts use, of which several have rows of their own.
TEST(Resize, BuildsAgreeOnCommonRatios) {
  Random random(14);
  constexpr i32 kRatios[][2] = {{4, 1}, {2, 1}, {3, 1}, {3, 2}, {1, 1}, {2, 3}, {1, 2}};
  for (const int slot : {29, 30, 31, 55, 57, 58}) {
    for (const auto& [from, to] : kRatios) {
      for (const i32 size : {1, 3, 4, 7, 8, 41, 300}) {
        Call c;
        c.srcWidth = from * size, c.srcHeight = from * 3, c.srcPitch = 4 * c.srcWidth;
        c.width = to * size, c.height = to * 3, c.dstPitch = 4 * c.width;
        Bytes src(Span(c.srcWidth, c.srcHeight, c.srcPitch));
        FillPixels(src.data(), src.size(), kRuns, random);
        const Case drawn = MakeCase(Slot(slot), c, Bytes(Span(c.width, c.height, c.dstPitch)), src);
        const Outcome expected = RunCase(drawn, 0);
        for (const i32 level : Levels())
          ASSERT_EQ(RunCase(drawn, level), expected) << Describe(drawn, level);
      }
    }
  }
}

}  // namespace
}  // namespace pictavo::test
