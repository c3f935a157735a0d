// Resizing: the vector builds against the portable ones, the box against its sibling, and the
// rules' corner cases.
#include "cpu/resize.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <tuple>
#include <utility>

#include "guarded_memory.h"
#include "pixels.h"
#include "platform/pages.h"
#include "short_memory.h"

namespace pictavo::test {
namespace {

/// The arguments of a resize; each operation takes the ones it has.
struct Call {
  i32 dstWidth = 1, dstHeight = 1, dstPitch = 4;
  i32 srcWidth = 1, srcHeight = 1, srcPitch = 4;
  i32 forceOpaque = 0, fullSize = 1;
};

struct Operation {
  const char* name;
  std::function<u32(i32 level, u8* dst, const u8* src, const Call&)> run;
};

const Operation kBoxWeighted = {
    "29 ResizeBox16AlphaWeighted", [](i32 level, u8* d, const u8* s, const Call& c) {
      return cpu::ResizeBox16AlphaWeighted(level, d, c.dstWidth, c.dstHeight, c.dstPitch, s,
                                           c.srcWidth, c.srcHeight, c.srcPitch, c.forceOpaque);
    }};
const Operation kBilinear16 = {
    "30 ResizeBilinear16", [](i32 level, u8* d, const u8* s, const Call& c) {
      return cpu::ResizeBilinear16(level, d, c.dstWidth, c.dstHeight, c.dstPitch, s, c.srcWidth,
                                   c.srcHeight, c.srcPitch, c.forceOpaque, c.fullSize);
    }};
const Operation kBilinear7 = {
    "31 ResizeBilinear7", [](i32 level, u8* d, const u8* s, const Call& c) {
      return cpu::ResizeBilinear7(level, d, c.dstWidth, c.dstHeight, c.dstPitch, s, c.srcWidth,
                                  c.srcHeight, c.srcPitch);
    }};
const Operation kNearest = {"55 ResizeNearest32", [](i32, u8* d, const u8* s, const Call& c) {
                              return cpu::ResizeNearest32(reinterpret_cast<u32*>(d), c.dstWidth,
                                                          c.dstHeight, c.dstPitch,
                                                          reinterpret_cast<const u32*>(s),
                                                          c.srcWidth, c.srcHeight, c.srcPitch);
                            }};
const Operation kBox = {"57 ResizeBox16", [](i32, u8* d, const u8* s, const Call& c) {
                          return cpu::ResizeBox16(d, c.dstWidth, c.dstHeight, c.dstPitch, s,
                                                  c.srcWidth, c.srcHeight, c.srcPitch);
                        }};
const Operation kKeepAlpha = {
    "58 ResizeBilinear16KeepAlpha", [](i32 level, u8* d, const u8* s, const Call& c) {
      return cpu::ResizeBilinear16KeepAlpha(level, d, c.dstWidth, c.dstHeight, c.dstPitch, s,
                                            c.srcWidth, c.srcHeight, c.srcPitch, c.fullSize);
    }};
const Operation* const kOperations[] = {&kBoxWeighted, &kBilinear16, &kBilinear7,
                                        &kNearest,     &kBox,        &kKeepAlpha};

std::ostream& operator<<(std::ostream& out, const Call& c) {
  return out << c.srcWidth << " x " << c.srcHeight << " pitch " << c.srcPitch << " to "
             << c.dstWidth << " x " << c.dstHeight << " pitch " << c.dstPitch << ", forceOpaque "
             << c.forceOpaque << ", fullSize " << c.fullSize;
}

/// The levels at which builds change, as far as this processor can run them.
std::vector<i32> Levels() {
  std::vector<i32> levels = {4};
  if (__builtin_cpu_supports("ssse3")) levels.push_back(5);
  if (__builtin_cpu_supports("sse4.1")) levels.push_back(6);
  if (__builtin_cpu_supports("avx2")) levels.push_back(8);
  return levels;
}

size_t Span(i32 width, i32 height, i32 pitch) {
  return static_cast<size_t>(i64{height - 1} * std::abs(pitch) + 4 * i64{width});
}

/// First byte of the top row of a picture that spans `memory` exactly.
u8* Top(u8* memory, i32 height, i32 pitch) {
  return pitch < 0 ? memory - i64{height - 1} * pitch : memory;
}

/// Resizes guarded copies and returns the destination's bytes.
Bytes Resize(const Operation& operation, i32 level, const Call& c, const Bytes& dst,
             const Bytes& src, GuardedMemory::Side side = GuardedMemory::Side::kAfter) {
  GuardedMemory d(dst.size(), side), s(src.size(), side);
  std::memcpy(d.data(), dst.data(), dst.size());
  std::memcpy(s.data(), src.data(), src.size());
  EXPECT_EQ(operation.run(level, Top(d.data(), c.dstHeight, c.dstPitch),
                          Top(s.data(), c.srcHeight, c.srcPitch), c),
            PICTAVO_S_OK)
      << operation.name << ", " << c;
  return Bytes(d.data(), d.data() + dst.size());
}

void ExpectSame(const Bytes& actual, const Bytes& expected, const std::string& what,
                const Call& c) {
  const auto at = std::mismatch(actual.begin(), actual.end(), expected.begin()).first;
  if (at == actual.end()) return;
  const auto i = static_cast<size_t>(at - actual.begin());
  FAIL() << what << ", " << c << ": byte " << i << " is " << int{actual[i]} << ", not "
         << int{expected[i]};
}

/// Sizes of one axis, source and destination: from one pixel to several strips, enlarged, alike or
/// reduced; doubles and halves often, also but for a pixel.
std::pair<i32, i32> RandomSizes(Random& random, u32 most) {
  const auto size = [&](u32 largest) { return static_cast<i32>(1 + random() % largest); };
  const i32 src = size(random() % 4 == 0 ? 4 : most);
  const i32 near = static_cast<i32>(random() % 2);
  switch (random() % 8) {
    case 0:
      return {src, src};
    case 1:
      return {src, 2 * src + near};
    case 2:
      return {2 * src + near, src};
    case 3:
      return {size(50 * most), size(9)};
    case 4:
      return {src, size(8 * most)};
    default:
      return {src, size(most)};
  }
}

/// Pitches are tight, padded, negative, or so small that rows overlap.
Call RandomCall(Random& random) {
  const auto pitch = [&](i32 width) {
    const i32 pitches[] = {4 * width, 4 * width + 4, 4 * width + 12, -4 * width, -4 * width - 8, 4,
                           0};
    return pitches[random() % 7];
  };
  Call c;
  std::tie(c.srcWidth, c.dstWidth) = RandomSizes(random, 80);
  std::tie(c.srcHeight, c.dstHeight) = RandomSizes(random, 9);
  c.dstPitch = pitch(c.dstWidth);
  c.srcPitch = pitch(c.srcWidth);
  c.forceOpaque = static_cast<i32>(random() % 2);
  c.fullSize = static_cast<i32>(random() % 4);
  return c;
}

TEST(Resize, LevelsAgreeInsideGuardedPictures) {
  Random random(11);
  for (int round = 0; round < 700 && !testing::Test::HasFailure(); ++round) {
    const Call c = RandomCall(random);
    Bytes src(Span(c.srcWidth, c.srcHeight, c.srcPitch)),
        dst(Span(c.dstWidth, c.dstHeight, c.dstPitch));
    FillPixels(src.data(), src.size(), static_cast<int>(random() % kKinds), random);
    FillPixels(dst.data(), dst.size(), kRandom, random);
    const auto side = random() % 2 ? GuardedMemory::Side::kBefore : GuardedMemory::Side::kAfter;
    for (const Operation* operation : kOperations) {
      const Bytes expected = Resize(*operation, 0, c, dst, src, side);
      for (const i32 level : Levels()) {
        ExpectSame(Resize(*operation, level, c, dst, src, side), expected,
                   operation->name + std::string(" at level ") + std::to_string(level), c);
      }
    }
  }
}

/// Every pair of neighbours under weights of all sizes.
TEST(Resize, EveryPairIsInterpolatedAlike) {
  Call c;
  c.srcWidth = 2;
  c.dstWidth = 515;
  Bytes expected(size_t{4} * 515), actual(expected.size());
  for (u32 pair = 0; pair < 65536 && !HasFatalFailure(); pair += 4) {
    u8 src[8];
    for (u32 channel = 0; channel < 4; ++channel) {
      src[channel] = static_cast<u8>(pair >> 8);
      src[4 + channel] = static_cast<u8>(pair + channel);
    }
    kKeepAlpha.run(0, expected.data(), src, c);
    for (const i32 level : Levels()) {
      kKeepAlpha.run(level, actual.data(), src, c);
      ExpectSame(actual, expected, "level " + std::to_string(level), c);
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
    c.dstWidth = corner.dstWidth;
    c.dstHeight = static_cast<i32>(corner.expected.size()) / c.dstWidth;
    c.srcPitch = 4 * c.srcWidth;
    c.dstPitch = 4 * c.dstWidth;
    c.forceOpaque = corner.forceOpaque;
    c.fullSize = corner.fullSize;
    const Bytes dst = PixelBytes(Pixels(corner.expected.size(), untouched));
    EXPECT_EQ(Resize(corner.operation, 0, c, dst, PixelBytes(corner.src)),
              PixelBytes(corner.expected))
        << corner.operation.name << ": " << corner.what;
  }
}

/// The fast box has no slower build; its sibling's portable one is the rule. Where all is opaque
/// the two agree.
TEST(Resize, BoxesAgreeOnOpaquePictures) {
  Random random(12);
  for (int round = 0; round < 400 && !HasFailure(); ++round) {
    const Call c = RandomCall(random);
    Bytes src(Span(c.srcWidth, c.srcHeight, c.srcPitch)),
        dst(Span(c.dstWidth, c.dstHeight, c.dstPitch));
    FillPixels(src.data(), src.size(), kOpaque, random);
    ExpectSame(Resize(kBox, 0, c, dst, src), Resize(kBoxWeighted, 0, c, dst, src), kBox.name, c);
  }
}

TEST(Resize, NearestTakesTheUpperLeftPixel) {
  Random random(13);
  for (int round = 0; round < 400 && !HasFailure(); ++round) {
    Call c = RandomCall(random);
    if (round < 2) {  // steps of a half, or all but, that are no doubles
      c.srcWidth = round == 0 ? 20000 : 32767;
      c.dstWidth = round == 0 ? 39999 : 65535;
      c.srcPitch = 4 * c.srcWidth;
    }
    c.srcPitch += static_cast<i32>(random() % 4);  // less than a pixel is not counted
    c.dstPitch = 4 * c.dstWidth + static_cast<i32>(random() % 4);
    const i32 pitch = c.srcPitch / 4 * 4;
    Bytes src(Span(c.srcWidth, c.srcHeight, pitch)),
        dst(size_t{4} * Pixels(static_cast<size_t>(c.dstWidth * c.dstHeight)).size());
    FillPixels(src.data(), src.size(), kRandom, random);
    u8* const top = Top(src.data(), c.srcHeight, pitch);
    EXPECT_EQ(kNearest.run(0, dst.data(), top, c), PICTAVO_S_OK);
    for (i32 y = 0; y < c.dstHeight; ++y) {
      for (i32 x = 0; x < c.dstWidth; ++x) {
        const i64 column = i64{x} * (c.srcWidth * 65536 / c.dstWidth) / 65536;
        const i64 row = i64{y} * (c.srcHeight * 65536 / c.dstHeight) / 65536;
        ASSERT_EQ(std::memcmp(&dst[static_cast<size_t>(4 * (y * c.dstWidth + x))],
                              top + row * pitch + 4 * column, 4),
                  0)
            << c;
      }
    }
  }
}

TEST(Resize, RefusesWhatItCannotUse) {
  Bytes src(64, 7), dst(64, 3);
  for (const Operation* operation : kOperations) {
    const bool is7 = operation == &kBilinear7;
    const i32 least = is7 ? (1 << 23) + 1 : 32768;
    struct Refused {
      i32 Call::*size;
      i32 value;
      u32 code;
    } const refused[] = {
        {&Call::dstWidth, 0, PICTAVO_S_FALSE},
        {&Call::dstHeight, -1, PICTAVO_S_FALSE},
        {&Call::srcWidth, INT32_MIN, PICTAVO_S_FALSE},
        {&Call::srcHeight, 0, PICTAVO_S_FALSE},
        {is7 ? &Call::dstWidth : &Call::srcWidth, least, PICTAVO_E_INVALIDARG},
        {is7 ? &Call::dstHeight : &Call::srcHeight, least, PICTAVO_E_INVALIDARG},
        {is7 ? &Call::dstHeight : &Call::srcHeight, INT32_MAX, PICTAVO_E_INVALIDARG},
    };
    for (const i32 level : {0, 8}) {
      for (const auto& [size, value, code] : refused) {
        Call c;
        c.*size = value;
        EXPECT_EQ(operation->run(level, dst.data(), src.data(), c), code) << operation->name << c;
        EXPECT_EQ(operation->run(level, nullptr, src.data(), c), PICTAVO_E_POINTER);
        EXPECT_EQ(operation->run(level, dst.data(), nullptr, c), PICTAVO_E_POINTER);
      }
    }
  }
  EXPECT_EQ(dst, Bytes(64, 3));
}

TEST(Resize, SaysWhenMemoryIsShort) {
  Call c;
  c.srcWidth = c.dstWidth = 5000;  // a small picture needs none
  const Bytes src(20000, 7), untouched(20000, 3);
  std::vector<i32> levels = Levels();
  levels.push_back(0);
  for (const Operation* operation : {&kBilinear16, &kBilinear7, &kKeepAlpha}) {
    for (const i32 level : levels) {
      u32 code = PICTAVO_E_OUTOFMEMORY;
      for (int allocations = 0; code != PICTAVO_S_OK; ++allocations) {
        const ShortMemory memory(allocations);
        Bytes dst = untouched;
        code = operation->run(level, dst.data(), src.data(), c);
        if (code == PICTAVO_S_OK) {
          EXPECT_GT(allocations, 0);
          break;
        }
        ASSERT_EQ(code, PICTAVO_E_OUTOFMEMORY) << operation->name << " level " << level;
        EXPECT_EQ(dst, untouched);
      }
    }
  }
}

}  // namespace
}  // namespace pictavo::test
