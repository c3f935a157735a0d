// Alpha blending: every build against the portable one, or against the difference that the public
// header states, and the portable build against the rule's corner cases.
#include "cpu/blend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "guarded_memory.h"
#include "pixels.h"

namespace pictavo::test {
namespace {

/// The arguments of a blend; each operation takes the ones it has.
struct Call {
  i32 width = 1, height = 1;
  i32 dstPitch = 4, srcPitch = 4;
  i32 flip = 0;
  f32 start = 1, end = 1;
  u8 opacity = 255;
  u32 backdrop = 0;
};

enum class Pairs { kNone, kKeepAlpha, kSourceAlpha };  // what level 3 does to slots 2, 4 and 3

struct Operation {
  const char* name;
  bool packed, ramp, opacity, onePitch;
  Pairs pairs;
  std::function<u32(i32 level, u8* dst, const u8* src, const Call&)> run;
};

const Operation kOperations[] = {
    {"2 BlendOverWithOpacityRamp", false, true, false, false, Pairs::kKeepAlpha,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendOverWithOpacityRamp(level, d, s, c.width, c.height, c.dstPitch, c.srcPitch,
                                            c.flip, c.start, c.end);
     }},
    {"3 BlendOverPacked", true, false, false, true, Pairs::kSourceAlpha,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendOverPacked(level, d, s, c.width, c.height);
     }},
    {"4 BlendOverPitched", false, false, false, true, Pairs::kKeepAlpha,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendOverPitched(level, d, s, c.width, c.height, c.dstPitch);
     }},
    {"5 BlendPremultipliedWithOpacityRamp", false, true, false, false, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendPremultipliedWithOpacityRamp(level, d, s, c.width, c.height, c.dstPitch,
                                                     c.srcPitch, c.flip, c.start, c.end);
     }},
    {"6 BlendPremultipliedPacked", true, false, false, true, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendPremultipliedPacked(level, d, s, c.width, c.height);
     }},
    {"7 BlendPremultipliedPitched", false, false, false, true, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendPremultipliedPitched(level, d, s, c.width, c.height, c.dstPitch);
     }},
    {"8 CompositePremultipliedWithOpacityRamp", false, true, false, false, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::CompositePremultipliedWithOpacityRamp(level, d, s, c.width, c.height, c.dstPitch,
                                                         c.srcPitch, c.flip, c.start, c.end);
     }},
    {"9 CompositePremultipliedPitched", false, false, false, true, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::CompositePremultipliedPitched(level, d, s, c.width, c.height, c.dstPitch);
     }},
    {"10 CompositePremultipliedPacked", true, false, false, true, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::CompositePremultipliedPacked(level, d, s, c.width, c.height);
     }},
    {"11 BlendOverWithOpacity", false, false, true, false, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendOverWithOpacity(level, d, s, c.width, c.height, c.dstPitch, c.srcPitch,
                                        c.opacity, c.backdrop);
     }},
    {"36 BlendOverWithOpacityRampAndAlpha", false, true, true, false, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendOverWithOpacityRampAndAlpha(level, d, s, c.width, c.height, c.dstPitch,
                                                    c.srcPitch, c.opacity, c.backdrop, c.flip,
                                                    c.start, c.end);
     }},
    {"37 BlendOverWithOpacityRampKeepAlpha", false, true, true, false, Pairs::kNone,
     [](i32 level, u8* d, const u8* s, const Call& c) {
       return cpu::BlendOverWithOpacityRampKeepAlpha(level, d, s, c.width, c.height, c.dstPitch,
                                                     c.srcPitch, c.opacity, c.backdrop, c.flip,
                                                     c.start, c.end);
     }},
};

const Operation& Slot(int slot) {
  return *std::find_if(std::begin(kOperations), std::end(kOperations),
                       [slot](const Operation& op) { return std::atoi(op.name) == slot; });
}

// --- The stated difference of slots 2, 3 and 4 from level 3 ------------------------------------

/// Blends one row, or a packed picture, by pairs as the header says.
void ExpectPairs(u8* dst, const u8* src, i64 width, f32 factor, Pairs pairs) {
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
      if (pairs == Pairs::kSourceAlpha) d[3] = s[3];
    }
  }
}

void ExpectPairs(u8* dst, const u8* src, const Call& c, const Operation& op) {
  if (op.packed) return ExpectPairs(dst, src, i64{c.width} * c.height, 1, op.pairs);
  for (i32 r = 0; r < c.height; ++r) {
    const f32 factor =
        op.ramp ? static_cast<f32>(r) / static_cast<f32>(c.height) * (c.end - c.start) + c.start
                : 1;
    const i32 from = c.flip ? c.height - 1 - r : r;
    ExpectPairs(dst + i64{r} * c.dstPitch, src + i64{from} * c.srcPitch, c.width, factor, op.pairs);
  }
}

// --- Pictures ----------------------------------------------------------------------------------

i64 Span(i32 width, i32 height, i32 pitch) {
  return i64{height - 1} * std::abs(pitch) + 4 * i64{width};
}

/// First byte of the top row of a picture that spans `memory` exactly.
u8* Top(u8* memory, const Call& c, i32 pitch) {
  return pitch < 0 ? memory - i64{c.height - 1} * pitch : memory;
}

/// Runs the operation at a level on guarded copies and returns the destination's bytes.
Bytes RunGuarded(const Operation& op, i32 level, const Call& c, const Bytes& dst, const Bytes& src,
                 GuardedMemory::Side side) {
  GuardedMemory d(dst.size(), side), s(src.size(), side);
  std::memcpy(d.data(), dst.data(), dst.size());
  std::memcpy(s.data(), src.data(), src.size());
  const u32 result = op.run(level, Top(d.data(), c, c.dstPitch), Top(s.data(), c, c.srcPitch), c);
  EXPECT_EQ(result, std::atoi(op.name) == 11 ? PICTAVO_S_OK : 1u);
  EXPECT_EQ(std::memcmp(s.data(), src.data(), src.size()), 0) << "the source was written";
  return Bytes(d.data(), d.data() + dst.size());
}

/// Every vector level against what it must give; portable bytes unless the pairs differ.
void CheckLevels(const Operation& op, const Call& c, const Bytes& dst, const Bytes& src,
                 GuardedMemory::Side side, const std::vector<i32>& levels = VectorBuilds()) {
  const Bytes portable = RunGuarded(op, 2, c, dst, src, side);
  Bytes expected = portable;
  if (op.pairs != Pairs::kNone) {
    expected = dst;
    Bytes source = src;
    ExpectPairs(Top(expected.data(), c, c.dstPitch), Top(source.data(), c, c.srcPitch), c, op);
  }
  for (const i32 level : levels) {
    const Bytes actual = RunGuarded(op, level, c, dst, src, side);
    if (actual == expected) continue;
    const auto at =
        std::mismatch(actual.begin(), actual.end(), expected.begin()).first - actual.begin();
    FAIL() << op.name << " level " << level << ", " << c.width << " x " << c.height << ", pitches "
           << c.dstPitch << " " << c.srcPitch << ", flip " << c.flip << ", ramp " << c.start << " "
           << c.end << ", opacity " << int{c.opacity} << ", backdrop " << c.backdrop << ": byte "
           << at << " is " << int{actual[static_cast<size_t>(at)]} << ", not "
           << int{expected[static_cast<size_t>(at)]};
  }
}

/// Random but legal arguments: odd sizes, padded, tight and negative pitches.
Call RandomCall(const Operation& op, Random& random) {
  static constexpr f32 kOpacities[] = {0, 1, 0.5f, 0.25f, 1.0f / 3, 0.999999f, -0.5f, 1.5f, 3, 700};
  Call c;
  c.width = static_cast<i32>(1 + random() % 70);
  c.height = static_cast<i32>(1 + random() % 5);
  const auto pitch = [&] { return c.width * 4 + static_cast<i32>(random() % 3 * 7); };
  c.dstPitch = c.srcPitch = op.packed ? c.width * 4 : pitch();
  if (!op.onePitch) c.srcPitch = pitch();
  const bool positiveOnly =
      std::string(op.name).find("Composite") != std::string::npos || std::atoi(op.name) == 7;
  if (!op.packed && !positiveOnly && random() % 4 == 0) {
    c.dstPitch = -c.dstPitch;
    c.srcPitch = -c.srcPitch;
  }
  if (op.ramp) {
    c.flip = static_cast<i32>(random() % 2);
    const auto opacity = [&] {
      return random() % 2 ? kOpacities[random() % 10] : static_cast<f32>(random() % 1000) / 999.0f;
    };
    c.start = opacity();
    c.end = random() % 2 ? c.start : opacity();
  }
  if (op.opacity) {
    c.opacity = static_cast<u8>(random() % 3 ? random() : 255);
    c.backdrop = random() % 2 ? static_cast<u32>(random()) : random() & 0xFFFFFF;
  }
  return c;
}

TEST(Blend, LevelsAgreeInsideGuardedPictures) {
  for (const Operation& op : kOperations) {
    Random random(7);
    for (int round = 0; round < 300 && !HasFatalFailure(); ++round) {
      const Call c = RandomCall(op, random);
      Bytes dst(static_cast<size_t>(Span(c.width, c.height, c.dstPitch)));
      Bytes src(static_cast<size_t>(Span(c.width, c.height, c.srcPitch)));
      FillPixels(dst.data(), dst.size(), random() % 2 ? kRandom : kEdges, random);
      FillPixels(src.data(), src.size(), round % kKinds, random);
      CheckLevels(op, c, dst, src,
                  round % 2 ? GuardedMemory::Side::kBefore : GuardedMemory::Side::kAfter,
                  VectorLevels());
    }
  }
}

TEST(Blend, BytesBetweenRowsStay) {
  for (const Operation& op : kOperations) {
    if (op.packed) continue;
    Call c{.width = 13, .height = 3, .dstPitch = 13 * 4 + 9, .srcPitch = 13 * 4 + 9};
    Bytes dst(static_cast<size_t>(c.dstPitch * c.height), 0xA5), src(dst.size(), 0xFF);
    for (const i32 level : {0, 3, VectorLevels().back()}) {
      op.run(level, dst.data(), src.data(), c);
      for (int r = 0; r < c.height; ++r) {
        for (int i = c.width * 4; i < c.dstPitch; ++i) {
          EXPECT_EQ(dst[static_cast<size_t>(r * c.dstPitch + i)], 0xA5)
              << op.name << " level " << level;
        }
      }
    }
  }
}

/// All pairs of source and destination bytes under every source alpha, and, for the fading
/// operations, under every opacity or many row factors.
TEST(Blend, EveryByteTriple) {
  Bytes dst(256 * 256 * 4), src(dst.size());
  for (const Operation& op : kOperations) {
    for (u32 a = 0; a < 256 && !HasFatalFailure(); ++a) {
      for (u32 i = 0; i < 65536; ++i) {
        const u8 s = static_cast<u8>(i), d = static_cast<u8>(i >> 8);
        const u8 sourcePixel[4] = {s, static_cast<u8>(255 - s), s, static_cast<u8>(a)};
        const u8 destPixel[4] = {d, d, static_cast<u8>(255 - d), static_cast<u8>(i * 7 / 3)};
        std::memcpy(&src[4 * i], sourcePixel, 4);
        std::memcpy(&dst[4 * i], destPixel, 4);
      }
      CheckLevels(op, {.width = 256, .height = 256, .dstPitch = 1024, .srcPitch = 1024}, dst, src,
                  GuardedMemory::Side::kAfter);
    }
  }
}

TEST(Blend, EveryAlphaUnderManyFactors) {
  Random random(11);
  for (const Operation& op : kOperations) {
    if (!op.ramp) continue;
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
        CheckLevels(op, c, dst, src, GuardedMemory::Side::kAfter);
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
  const auto opacity = [](u8 o, u32 backdrop) { return Call{.opacity = o, .backdrop = backdrop}; };
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
    Slot(corner.slot).run(corner.level, dst.data(), src.data(), corner.call);
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
    for (size_t i = 0; i < std::size(kOperations); ++i) {
      if (refusal.results[i] == kRuns) continue;
      for (const i32 level : {0, 3, VectorLevels().back()}) {
        Bytes dst(16, 0x11), src(16, 0xFF);
        const u32 result = kOperations[i].run(level, refusal.nullDst ? nullptr : dst.data(),
                                              refusal.nullSrc ? nullptr : src.data(), refusal.call);
        EXPECT_EQ(result, refusal.results[i]) << kOperations[i].name << ": " << refusal.what;
        EXPECT_EQ(dst, Bytes(16, 0x11)) << kOperations[i].name << ": " << refusal.what;
      }
    }
  }
}

TEST(Blend, WildFactorsGiveTheSameBytesEveryTime) {
  constexpr f32 kInfinity = std::numeric_limits<f32>::infinity();
  constexpr f32 kWild[] = {
      std::numeric_limits<f32>::quiet_NaN(), kInfinity, -kInfinity, 1e38f, -1e38f, 1e-45f};
  Random random(3);
  for (const Operation& op : kOperations) {
    if (!op.ramp) continue;
    for (const f32 start : kWild) {
      for (const f32 end : kWild) {
        Call c{.width = 9, .height = 3, .dstPitch = 36, .srcPitch = 36, .start = start, .end = end};
        Bytes dst(108), src(108);
        FillPixels(dst.data(), dst.size(), kRandom, random);
        FillPixels(src.data(), src.size(), kRandom, random);
        Bytes expected = RunGuarded(op, op.pairs == Pairs::kNone ? 0 : 3, c, dst, src,
                                    GuardedMemory::Side::kAfter);
        for (const i32 level : VectorLevels()) {
          EXPECT_EQ(RunGuarded(op, level, c, dst, src, GuardedMemory::Side::kAfter), expected)
              << op.name << " level " << level;
        }
      }
    }
  }
}

}  // namespace
}  // namespace pictavo::test
