// Resizing: every pair of pixels, the box against its sibling, and the rules' corner cases.
#include "cpu/geometry/resize.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

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

Case DrawCase(const Operation& operation, Random& random) {
  Bytes bytes(128);
  for (u8& byte : bytes) byte = static_cast<u8>(random());
  Input input(bytes);
  return test::DrawCase(operation, &input);
}

/// The fast box has no slower build; its sibling's portable one is the rule. Where all is opaque
/// the two agree.
TEST(Resize, BoxesAgreeOnOpaquePictures) {
  Random random(12);
  for (int round = 0; round < 400 && !HasFailure(); ++round) {
    Case fast = DrawCase(kBox, random);
    Call& c = fast.call;
    c.srcPitch = 4 * c.srcWidth;
    c.forceOpaque = 0;
    fast.src.resize(Span(c.srcWidth, c.srcHeight, c.srcPitch));
    FillPixels(fast.src.data(), fast.src.size(), kOpaque, random);
    Case weighted = fast;
    weighted.operation = &kBoxWeighted;
    EXPECT_EQ(RunCase(fast, 0), RunCase(weighted, 0)) << Describe(fast, 0);
  }
}

TEST(Resize, NearestTakesTheUpperLeftPixel) {
  Random random(13);
  for (int round = 0; round < 400 && !HasFailure(); ++round) {
    Case drawn = DrawCase(kNearest, random);
    Call& c = drawn.call;
    if (round < 2) {  // steps of a half, or all but, that are no doubles
      c.srcWidth = round == 0 ? 20000 : 32767;
      c.width = round == 0 ? 39999 : 65535;
      c.srcHeight = c.height = 1;
    }
    if (c.width < 1 || c.height < 1 || c.srcWidth < 1 || c.srcHeight < 1) continue;
    const i32 srcPitch = 4 * c.srcWidth + 8, dstPitch = 4 * c.width;
    c.srcPitch = srcPitch + static_cast<i32>(random() % 4);  // less than a pixel is not counted
    c.dstPitch = dstPitch + static_cast<i32>(random() % 4);
    Bytes src(Span(c.srcWidth, c.srcHeight, srcPitch)), dst(Span(c.width, c.height, dstPitch));
    FillPixels(src.data(), src.size(), kRandom, random);
    EXPECT_EQ(kNearest(0, dst.data(), src.data(), c), PICTAVO_S_OK);
    for (i32 y = 0; y < c.height; ++y) {
      for (i32 x = 0; x < c.width; ++x) {
        const i64 column = i64{x} * (c.srcWidth * 65536 / c.width) / 65536;
        const i64 row = i64{y} * (c.srcHeight * 65536 / c.height) / 65536;
        ASSERT_EQ(std::memcmp(&dst[static_cast<size_t>(y * dstPitch + 4 * x)],
                              &src[static_cast<size_t>(row * srcPitch + 4 * column)], 4),
                  0)
            << Describe(drawn, 0);
      }
    }
  }
}

TEST(Resize, RefusesWhatItCannotUse) {
  Bytes src(64, 7), dst(64, 3);
  for (const int slot : {29, 30, 31, 55, 57, 58}) {
    const Operation& operation = Slot(slot);
    const bool is7 = slot == 31;
    const i32 least = is7 ? (1 << 23) + 1 : 32768;
    struct Refused {
      i32 Call::*size;
      i32 value;
      u32 code;
    } const refused[] = {
        {&Call::width, 0, PICTAVO_S_FALSE},
        {&Call::height, -1, PICTAVO_S_FALSE},
        {&Call::srcWidth, INT32_MIN, PICTAVO_S_FALSE},
        {&Call::srcHeight, 0, PICTAVO_S_FALSE},
        {is7 ? &Call::width : &Call::srcWidth, least, PICTAVO_E_INVALIDARG},
        {is7 ? &Call::height : &Call::srcHeight, least, PICTAVO_E_INVALIDARG},
        {is7 ? &Call::height : &Call::srcHeight, INT32_MAX, PICTAVO_E_INVALIDARG},
    };
    for (const i32 level : {0, 8}) {
      for (const auto& [size, value, code] : refused) {
        Call c;
        c.*size = value;
        EXPECT_EQ(operation(level, dst.data(), src.data(), c), code) << operation.name;
        EXPECT_EQ(operation(level, nullptr, src.data(), c), PICTAVO_E_POINTER);
        EXPECT_EQ(operation(level, dst.data(), nullptr, c), PICTAVO_E_POINTER);
      }
    }
  }
  EXPECT_EQ(dst, Bytes(64, 3));
}

}  // namespace
}  // namespace pictavo::test
