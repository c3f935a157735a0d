// Alpha blending: the builds of all bytes, the difference from level 3 that the public header
// states, and the portable build against the rules' corner cases.
#include "cpu/blending/blend.h"

#include <gtest/gtest.h>

#include <algorithm>
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

struct Corner {
  int slot;
  i32 level;
  Call call;
  std::vector<u32> src, dst, expected;  // 0xAARRGGBB
};

TEST(Blend, Corners) {
  const Call one, two{.width = 2, .dstPitch = 8, .srcPitch = 8},
      three{.width = 3, .dstPitch = 12, .srcPitch = 12};
  const auto faded = [](f32 start, f32 end) { return Call{.start = start, .end = end}; };
  const auto opacity = [](u8 o, u32 backdrop) { return Call{.opacity = o, .colour = backdrop}; };
  const Call column{.width = 1, .height = 2, .flip = 1, .start = 0.5f, .end = 0.0f};
  Corner corners[] = {
      // An opaque source is copied whole; a half clear one over white is mixed with 128 and 128.
      {2, 0, one, {0xFF030201}, {0x09090909}, {0xFF030201}},
      {4, 0, one, {0x801E140A}, {0x07FFFFFF}, {0xFF8E8984}},
      {4, 3, one, {0x801E140A}, {0x07FFFFFF}, {0x078E8984}},
      {3, 0, one, {0x801E140A}, {0x07FFFFFF}, {0x808E8984}},
      // A weight of 255 beside a soft neighbour is mixed from level 3; a third pixel stands alone.
      {2,
       0,
       three,
       {0xFF0900C8, 0x64000000, 0xFF030201},
       {0x01FA3264, 0x02404040, 0x03070707},
       {0xFF0900C8, 0xFF272727, 0xFF030201}},
      {2,
       3,
       three,
       {0xFF0900C8, 0x64000000, 0xFF030201},
       {0x01FA3264, 0x02404040, 0x03070707},
       {0x010900C7, 0x02272727, 0xFF030201}},
      // A clear pixel: left alone, but in a mixed pair of slot 3 it takes the source's alpha.
      {3, 0, two, {0x00050505, 0x80000000}, {0x09030201, 0x09000000}, {0x09030201, 0x80000000}},
      {3, 3, two, {0x00050505, 0x80000000}, {0x09030201, 0x09000000}, {0x00030201, 0x80000000}},
      // Flipped: row 0 is made from the source's last row, at the ramp's start.
      {2, 0, column, {0x00000000, 0xFE646464}, {0x000000C8, 0x08080808}, {0xFF313196, 0x08080808}},
      // Ramps that leave 0 … 1, unclamped below level 3 and saturated from it.
      {2, 0, faded(2, 2), {0xC8FF0064}, {0x0A0A0A0A}, {0xFF88FA96}},
      {2, 3, faded(2, 2), {0xC8FF0064}, {0x0A0A0A0A}, {0x0AFF009C}},
      {2, 0, faded(-1, -1), {0x80FF0064}, {0x0A0A0A0A}, {0xFF8F0FDD}},
      {2, 3, faded(-1, -1), {0x80FF0064}, {0x0A0A0A0A}, {0x0A0A0A0A}},
      // Premultiplied: 256 - a in the blend, 255 - a in the composite.
      {7, 0, one, {0x80C86464}, {0x03C865FF}, {0xFFFF96E3}},
      {9, 0, one, {0x80C86464}, {0x64C865FF}, {0xB3FF96E2}},
      {6, 3, two, {0x00090909, 0x01090909}, {0x04030201, 0x040100FF}, {0x04030201, 0xFF0909FF}},
      {5, 0, faded(0.5f, 0.5f), {0xFF6403FF}, {0x0900FF64}, {0xFF3281B1}},
      // Far outside 0 … 1: 13200000 + ((255 * (256 - 16830000)) >> 8) is below 0.
      {5, 0, faded(66000, 66000), {0xFF0000C8}, {0xC80000FF}, {0xFF00001D}},
      {8, 3, faded(66000, 66000), {0xFF0000C8}, {0xC80000FF}, {0x1500001C}},
      // A clear destination takes the source whole, with the faded weight for its alpha.
      {8, 0, one, {0x28030201}, {0x00636363}, {0x28030201}},
      {8, 0, faded(0.5f, 0.5f), {0x29030201}, {0x00636363}, {0x14030201}},
      // An opacity byte o weighs o + 1; a backdrop's blue stands in for the destination …
      {11, 0, opacity(127, 0), {0xFF0064C8}, {0x03646464}, {0x03326495}},
      {11, 0, opacity(255, 0xFF0000FF), {0x80006400}, {0x4D090909}, {0x4D00327F}},
      // … but is not painted where the weight is 0.
      {11, 0, opacity(0, 0xFF0000FF), {0xFF006400}, {0x4D090909}, {0x4D090909}},
      {36, 0, opacity(127, 0), {0xFF0064C8}, {0x03646464}, {0x7F326495}},
      {36, 0, opacity(255, 0), {0x000064C8}, {0x03646464}, {0x03646464}},
      {37, 0, opacity(255, 0), {0xFF0064C8}, {0x03646464}, {0xFF0064C8}},
  };
  for (Corner& corner : corners) {
    Slot(corner.slot)(corner.level, reinterpret_cast<u8*>(corner.dst.data()),
                      reinterpret_cast<const u8*>(corner.src.data()), corner.call);
    EXPECT_EQ(corner.dst, corner.expected)
        << "slot " << corner.slot << " level " << corner.level << " case " << &corner - corners;
  }
}

TEST(Blend, RefusesWithTheStatedCodeAndWritesNothing) {
  struct Refusal {
    const char* what;
    Call call;
    bool nullDst, nullSrc;
    u32 results[12];  // by slot: 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 36, 37; R: runs
  };
  constexpr u32 F = PICTAVO_E_FAIL, R = 99;
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
      {"least",
       with(INT32_MIN, INT32_MIN, 8, 8),
       false,
       false,
       {1, 1, 1, 1, 0, 1, 0, 0, 0, F, 1, 1}},
      {"pitch 0", with(2, 2, 0, 8), false, false, {R, R, R, R, R, 1, 0, 0, R, R, R, R}},
      {"source pitch", with(2, 2, 8, -8), false, false, {R, R, R, R, R, R, 0, R, R, R, R, R}},
      {"no such memory",
       with(INT32_MAX, INT32_MAX, 8, 8),
       false,
       false,
       {R, 0, R, R, 0, R, R, R, 0, R, R, R}},
  };
  for (const Refusal& refusal : refusals) {
    for (size_t i = 0; i < std::size(kSlots); ++i) {
      const Operation& operation = Slot(kSlots[i]);
      for (const i32 level : Levels()) {
        if (refusal.results[i] == R) continue;
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
