// Alpha blending: the builds of all bytes, the difference from level 3 that the public header
// states, and the portable build against the rules' corner cases.
#include "cpu/blend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "operations.h"

namespace pictavo::test {
namespace {

constexpr int kSlots[] = {2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 36, 37};

// --- The stated difference of slots 2, 3 and 4 from level 3 ------------------------------------

/// Blends one row, or a packed picture, by pairs as the header says.
void ExpectPairs(u8* dst, const u8* src, i64 width, f32 factor, bool sourceAlpha) {
  for (i64 x = 0; x < width; x += 2) {
    const i64 count = std::min<i64>(2, width - x);
    double w[2];
    for (i64 i = 0; i < count; ++i) w[i] = std::trunc(src[4 * (x + i) + 3] * factor);
    if (count == 1) w[1] = w[0];
    if (w[0] < 1 && w[1] < 1) continue;
    for (i64 i = 0; i < count; ++i) {
      u8* d = dst + 4 * (x + i);
      const u8* s = src + 4 * (x + i);
      if (w[0] == 255 && w[1] == 255) {
        std::memcpy(d, s, 4);
        continue;
      }
      const double weight = std::max(w[i], 0.0), rest = std::max(256 - weight, 0.0);
      for (int c = 0; c < 3; ++c) {
        d[c] = static_cast<u8>(std::floor(std::min(s[c] * weight + d[c] * rest, 65535.0) / 256));
      }
      if (sourceAlpha) d[3] = s[3];
    }
  }
}

Bytes ExpectPairs(const Case& blend) {
  Bytes dst = blend.dst, src = blend.src;
  const Call& c = blend.call;
  const bool packed = blend.operation->traits & kPacked;
  u8 *top = Top(dst.data(), c.height, c.dstPitch), *from = Top(src.data(), c.height, c.srcPitch);
  for (i32 r = 0; r < (packed ? 1 : c.height); ++r) {
    const bool ramp = !(blend.operation->traits & (kPacked | kOnePitch));
    const f32 factor =
        ramp ? static_cast<f32>(r) / static_cast<f32>(c.height) * (c.end - c.start) + c.start : 1;
    const i32 row = ramp && c.flip ? c.height - 1 - r : r;
    ExpectPairs(top + i64{r} * c.dstPitch, from + i64{row} * c.srcPitch,
                packed ? i64{c.width} * c.height : c.width, factor, packed);
  }
  return dst;
}

/// The vector builds against the portable one, or against the pairs.
void ExpectBuildsAgree(const Case& c) {
  const Bytes expected = c.operation->sameFrom == 3 ? ExpectPairs(c) : RunCase(c, 2).dst;
  for (const i32 level : {3, Levels().back()}) {
    ASSERT_TRUE(RunCase(c, level).dst == expected) << Describe(c, level);
  }
}

TEST(Blend, PairsAreMixedTogetherFromLevel3) {
  Random random(7);
  for (int round = 0; round < 1200 && !HasFatalFailure(); ++round) {
    Bytes bytes(128);
    for (u8& byte : bytes) byte = static_cast<u8>(random());
    Input input(bytes);
    const Case c = DrawCase(Slot(2 + round % 3), &input);
    const Call& n = c.call;
    const bool tame = std::abs(n.start) < 1000 && std::abs(n.end) < 1000;
    const bool plain = n.width > 0 && n.height > 0 && std::abs(n.dstPitch) >= 4 * n.width;
    if (tame && plain) ExpectBuildsAgree(c);
  }
}

/// All pairs of source and destination bytes under every source alpha, and, for the fading
/// operations, under every opacity or many row factors.
TEST(Blend, EveryByteTriple) {
  Bytes dst(256 * 256 * 4), src(dst.size());
  for (const int slot : kSlots) {
    for (u32 a = 0; a < 256 && !HasFatalFailure(); ++a) {
      for (u32 i = 0; i < 65536; ++i) {
        const u8 s = static_cast<u8>(i), d = static_cast<u8>(i >> 8);
        const u8 sourcePixel[4] = {s, static_cast<u8>(255 - s), s, static_cast<u8>(a)};
        const u8 destPixel[4] = {d, d, static_cast<u8>(255 - d), static_cast<u8>(i * 7 / 3)};
        std::memcpy(&src[4 * i], sourcePixel, 4);
        std::memcpy(&dst[4 * i], destPixel, 4);
      }
      ExpectBuildsAgree(MakeCase(
          Slot(slot), {.width = 256, .height = 256, .dstPitch = 1024, .srcPitch = 1024}, dst, src));
    }
  }
}

TEST(Blend, EveryAlphaUnderManyFactors) {
  Random random(11);
  for (const int slot : {2, 5, 8, 36, 37}) {
    for (const i32 height : {97, 720, 1080, 4001}) {
      Call c{.width = 256, .height = height, .dstPitch = 1024, .srcPitch = 1024};
      Bytes dst(static_cast<size_t>(1024 * height)), src(dst.size());
      FillPixels(dst.data(), dst.size(), kRandom, random);
      for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<u8>(i / 4);
      for (const auto& [start, end] :
           {std::pair{0.0f, 1.0f}, {1.0f, 0.0f}, {0.9f, 0.1f}, {1e-30f, 1e-3f}}) {
        c.start = start;
        c.end = end;
        c.opacity = static_cast<u8>(random() % 2 ? 255 : random());
        ExpectBuildsAgree(MakeCase(Slot(slot), c, dst, src));
      }
    }
  }
}

// --- The rules' corner cases -------------------------------------------------------------------

using Pixel = std::array<int, 4>;  // blue, green, red, alpha

struct Corner {
  int slot;
  i32 level;
  Call call;
  std::vector<Pixel> src, dst, expected;
};

TEST(Blend, Corners) {
  const Call one, two{.width = 2, .dstPitch = 8, .srcPitch = 8},
      three{.width = 3, .dstPitch = 12, .srcPitch = 12};
  const auto faded = [](Call c, f32 start, f32 end) {
    c.start = start, c.end = end;
    return c;
  };
  const auto opacity = [](u8 o, u32 backdrop) { return Call{.opacity = o, .colour = backdrop}; };
  const Call column{.width = 1, .height = 2, .flip = 1, .start = 0.5f, .end = 0.0f};
  const Corner corners[] = {
      // An opaque source is copied whole; a half clear one over white is mixed with 128 and 128.
      {2, 0, one, {{1, 2, 3, 255}}, {{9, 9, 9, 9}}, {{1, 2, 3, 255}}},
      {4, 0, one, {{10, 20, 30, 128}}, {{255, 255, 255, 7}}, {{132, 137, 142, 255}}},
      {4, 3, one, {{10, 20, 30, 128}}, {{255, 255, 255, 7}}, {{132, 137, 142, 7}}},
      {3, 0, one, {{10, 20, 30, 128}}, {{255, 255, 255, 7}}, {{132, 137, 142, 128}}},
      // A weight of 255 beside a soft neighbour is mixed from level 3; a third pixel stands alone.
      {2,
       0,
       three,
       {{200, 0, 9, 255}, {0, 0, 0, 100}, {1, 2, 3, 255}},
       {{100, 50, 250, 1}, {64, 64, 64, 2}, {7, 7, 7, 3}},
       {{200, 0, 9, 255}, {39, 39, 39, 255}, {1, 2, 3, 255}}},
      {2,
       3,
       three,
       {{200, 0, 9, 255}, {0, 0, 0, 100}, {1, 2, 3, 255}},
       {{100, 50, 250, 1}, {64, 64, 64, 2}, {7, 7, 7, 3}},
       {{199, 0, 9, 1}, {39, 39, 39, 2}, {1, 2, 3, 255}}},
      // A clear pixel: left alone, but in a mixed pair of slot 3 it takes the source's alpha.
      {3,
       0,
       two,
       {{5, 5, 5, 0}, {0, 0, 0, 128}},
       {{1, 2, 3, 9}, {0, 0, 0, 9}},
       {{1, 2, 3, 9}, {0, 0, 0, 128}}},
      {3,
       3,
       two,
       {{5, 5, 5, 0}, {0, 0, 0, 128}},
       {{1, 2, 3, 9}, {0, 0, 0, 9}},
       {{1, 2, 3, 0}, {0, 0, 0, 128}}},
      // Flipped: row 0 is made from the source's last row, at the ramp's start.
      {2,
       0,
       column,
       {{0, 0, 0, 0}, {100, 100, 100, 254}},
       {{200, 0, 0, 0}, {8, 8, 8, 8}},
       {{150, 49, 49, 255}, {8, 8, 8, 8}}},
      // Ramps that leave 0 … 1, unclamped below level 3 and saturated from it.
      {2, 0, faded(one, 2, 2), {{100, 0, 255, 200}}, {{10, 10, 10, 10}}, {{150, 250, 136, 255}}},
      {2, 3, faded(one, 2, 2), {{100, 0, 255, 200}}, {{10, 10, 10, 10}}, {{156, 0, 255, 10}}},
      {2, 0, faded(one, -1, -1), {{100, 0, 255, 128}}, {{10, 10, 10, 10}}, {{221, 15, 143, 255}}},
      {2, 3, faded(one, -1, -1), {{100, 0, 255, 128}}, {{10, 10, 10, 10}}, {{10, 10, 10, 10}}},
      // Premultiplied: 256 - a in the blend, 255 - a in the composite.
      {7, 0, one, {{100, 100, 200, 128}}, {{255, 101, 200, 3}}, {{227, 150, 255, 255}}},
      {9, 0, one, {{100, 100, 200, 128}}, {{255, 101, 200, 100}}, {{226, 150, 255, 179}}},
      {6,
       3,
       two,
       {{9, 9, 9, 0}, {9, 9, 9, 1}},
       {{1, 2, 3, 4}, {255, 0, 1, 4}},
       {{1, 2, 3, 4}, {255, 9, 9, 255}}},
      {5,
       0,
       faded(one, 0.5f, 0.5f),
       {{255, 3, 100, 255}},
       {{100, 255, 0, 9}},
       {{177, 129, 50, 255}}},
      // Far outside 0 … 1: 13200000 + ((255 * (256 - 16830000)) >> 8) is below 0.
      {5, 0, faded(one, 66000, 66000), {{200, 0, 0, 255}}, {{255, 0, 0, 200}}, {{29, 0, 0, 255}}},
      {8, 3, faded(one, 66000, 66000), {{200, 0, 0, 255}}, {{255, 0, 0, 200}}, {{28, 0, 0, 21}}},
      // A clear destination takes the source whole, with the faded weight for its alpha.
      {8, 0, one, {{1, 2, 3, 40}}, {{99, 99, 99, 0}}, {{1, 2, 3, 40}}},
      {8, 0, faded(one, 0.5f, 0.5f), {{1, 2, 3, 41}}, {{99, 99, 99, 0}}, {{1, 2, 3, 20}}},
      // An opacity byte o weighs o + 1; a backdrop's blue stands in for the destination …
      {11, 0, opacity(127, 0), {{200, 100, 0, 255}}, {{100, 100, 100, 3}}, {{149, 100, 50, 3}}},
      {11, 0, opacity(255, 0xFF0000FF), {{0, 100, 0, 128}}, {{9, 9, 9, 77}}, {{127, 50, 0, 77}}},
      // … but is not painted where the weight is 0.
      {11, 0, opacity(0, 0xFF0000FF), {{0, 100, 0, 255}}, {{9, 9, 9, 77}}, {{9, 9, 9, 77}}},
      {36, 0, opacity(127, 0), {{200, 100, 0, 255}}, {{100, 100, 100, 3}}, {{149, 100, 50, 127}}},
      {36, 0, opacity(255, 0), {{200, 100, 0, 0}}, {{100, 100, 100, 3}}, {{100, 100, 100, 3}}},
      {37, 0, opacity(255, 0), {{200, 100, 0, 255}}, {{100, 100, 100, 3}}, {{200, 100, 0, 255}}},
  };
  const auto bytes = [](const std::vector<Pixel>& pixels) {
    Bytes result;
    for (const Pixel& p : pixels)
      for (const int b : p) result.push_back(static_cast<u8>(b));
    return result;
  };
  for (const Corner& corner : corners) {
    Bytes dst = bytes(corner.dst);
    const Bytes src = bytes(corner.src);
    Slot(corner.slot)(corner.level, dst.data(), src.data(), corner.call);
    EXPECT_EQ(dst, bytes(corner.expected))
        << "slot " << corner.slot << " level " << corner.level << " case " << &corner - corners;
  }
}

TEST(Blend, RefusesWithTheStatedCodeAndWritesNothing) {
  struct Refusal {
    const char* what;
    Call call;
    bool nullDst, nullSrc;
    u32 results[12];  // by slot: 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 36, 37; kRuns: not refused
  };
  constexpr u32 F = PICTAVO_E_FAIL, kRuns = 99;
  const Call fine{.width = 2, .height = 2, .dstPitch = 8, .srcPitch = 8};
  const auto with = [fine](i32 width, i32 height, i32 dstPitch, i32 srcPitch) {
    Call c = fine;
    c.width = width, c.height = height, c.dstPitch = dstPitch, c.srcPitch = srcPitch;
    return c;
  };
  const Refusal refusals[] = {
      {"null destination", fine, true, false, {0, 0, 0, 0, 0, 0, 0, 0, 0, F, 0, 0}},
      {"null source", fine, false, true, {0, 0, 0, 0, 0, 0, 0, 0, 0, F, 0, 0}},
      {"width 0", with(0, 2, 8, 8), false, false, {1, 1, 1, 1, 0, 1, 0, 0, 0, F, 1, 1}},
      {"height 0", with(2, 0, 8, 8), false, false, {1, 1, 1, 1, 0, 1, 0, 0, 0, F, 1, 1}},
      {"both negative", with(-2, -2, 8, 8), false, false, {1, 1, 1, 1, 0, 1, 0, 0, 0, F, 1, 1}},
      {"smallest integers",
       with(INT32_MIN, INT32_MIN, 8, 8),
       false,
       false,
       {1, 1, 1, 1, 0, 1, 0, 0, 0, F, 1, 1}},
      {"pitch 0",
       with(2, 2, 0, 8),
       false,
       false,
       {kRuns, kRuns, kRuns, kRuns, kRuns, 1, 0, 0, kRuns, kRuns, kRuns, kRuns}},
      {"negative source pitch",
       with(2, 2, 8, -8),
       false,
       false,
       {kRuns, kRuns, kRuns, kRuns, kRuns, kRuns, 0, kRuns, kRuns, kRuns, kRuns, kRuns}},
      {"more pixels than memory",
       with(INT32_MAX, INT32_MAX, 8, 8),
       false,
       false,
       {kRuns, 0, kRuns, kRuns, 0, kRuns, kRuns, kRuns, 0, kRuns, kRuns, kRuns}},
  };
  for (const Refusal& refusal : refusals) {
    for (size_t i = 0; i < std::size(kSlots); ++i) {
      const Operation& operation = Slot(kSlots[i]);
      for (const i32 level : Levels()) {
        if (refusal.results[i] == kRuns) continue;
        Bytes dst(16, 0x11), src(16, 0xFF);
        const u32 result = operation(level, refusal.nullDst ? nullptr : dst.data(),
                                     refusal.nullSrc ? nullptr : src.data(), refusal.call);
        EXPECT_EQ(result, refusal.results[i]) << operation.name << ": " << refusal.what;
        EXPECT_EQ(dst, Bytes(16, 0x11)) << operation.name << ": " << refusal.what;
      }
    }
  }
}

}  // namespace
}  // namespace pictavo::test
