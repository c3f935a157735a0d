// The box blur: large pictures, and the rule's corner cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "operations.h"

namespace pictavo::test {
namespace {

/// A packed picture, blurred in guarded memory.
Bytes Blur(i32 level, i32 width, i32 height, const Bytes& bytes, f32 radius) {
  const Call call = {.width = width, .height = height, .dstPitch = 4 * width, .radius = radius};
  const Outcome outcome = RunCase(MakeCase(Slot(87), call, bytes, {}), level);
  EXPECT_EQ(outcome.result, PICTAVO_S_OK);
  return outcome.dst;
}

/// Windows of up to 257 pixels have sums of 16 bits, and those above do not. Clear parts larger
/// than the windows are left out.
TEST(Blur, BuildsAgreeOnLargePictures) {
  Random random(4);
  constexpr i32 kWidth = 411, kHeight = 401, kPitch = 1648;
  for (const f32 radius : {1.5f, 11.0f, 40.0f, 150.0f, 194.0f, 383.0f, 386.0f, 401.0f}) {
    for (const int kind : {kOpaque, kRuns}) {
      Bytes bytes(Span(kWidth, kHeight, kPitch));
      FillPixels(bytes.data(), bytes.size(), kind, random);
      if (kind == kOpaque) std::fill(bytes.begin(), bytes.end() - 80 * kPitch, u8{255});
      for (i32 y = 100; kind == kRuns && y < 300; ++y) {
        for (i32 x = 50; x < 200; ++x) bytes[static_cast<size_t>(y * kPitch + 4 * x + 3)] = 0;
      }
      const Call call = {.width = kWidth, .height = kHeight, .dstPitch = kPitch, .radius = radius};
      EXPECT_EQ(Disagreement(MakeCase(Slot(87), call, bytes, {})), "");
    }
  }
}

using Pixel = std::array<int, 2>;  // every colour, alpha

/// Rows all alike, at radius 3: two boxes of three pixels.
TEST(Blur, AveragesWhatIsNotClear) {
  struct Case {
    std::vector<Pixel> row, expected;
  } const cases[] = {
      {{{0, 255}, {0, 255}, {90, 255}, {0, 255}, {0, 255}, {0, 255}},
       {{10, 255}, {20, 255}, {30, 255}, {20, 255}, {10, 255}, {0, 255}}},
      // The first and the last pixel go on beyond the edges.
      {{{90, 255}, {0, 255}, {0, 255}, {0, 255}, {0, 255}, {180, 255}},
       {{50, 255}, {30, 255}, {10, 255}, {20, 255}, {60, 255}, {100, 255}}},
      // Each mean is rounded down: 1 / 3 and 2 / 3 are 0, 3 * 254 + 1 is not 255.
      {{{2, 255}, {0, 255}, {0, 255}, {254, 255}, {255, 255}, {254, 255}},
       {{0, 255}, {28, 255}, {84, 255}, {169, 255}, {225, 255}, {254, 255}}},
      // Colours fade into what is clear unchanged, alpha alone fades; beyond, all stays.
      {{{100, 255}, {100, 255}, {100, 255}, {200, 0}, {200, 0}, {200, 0}},
       {{100, 255}, {100, 226}, {100, 170}, {100, 85}, {100, 28}, {200, 0}}},
      // Means have one weight for each pixel that is not clear, whatever its alpha.
      {{{30, 1}, {60, 200}, {9, 0}, {9, 0}, {9, 0}, {9, 0}},
       {{41, 67}, {48, 66}, {52, 44}, {60, 22}, {9, 0}, {9, 0}}},
      // What fades to nothing stays as it was.
      {{{7, 0}, {7, 0}, {50, 2}, {7, 0}, {7, 0}, {7, 0}},
       {{7, 0}, {7, 0}, {50, 2}, {7, 0}, {7, 0}, {7, 0}}},
  };
  for (const Case& c : cases) {
    const auto bytes = [](const std::vector<Pixel>& row, i32 rows) {
      Bytes result;
      for (i32 y = 0; y < rows; ++y) {
        for (const auto& [colour, alpha] : row) {
          result.insert(result.end(), 3, static_cast<u8>(colour));
          result.push_back(static_cast<u8>(alpha));
        }
      }
      return result;
    };
    for (const i32 level : Levels()) {
      EXPECT_EQ(Blur(level, 6, 4, bytes(c.row, 4), 3), bytes(c.expected, 4))
          << "level " << level << " case " << &c - cases;
    }
  }
}

/// The sum of the three radii, by how far an opaque half of a picture loses alpha to a clear one.
TEST(Blur, SizesItsBoxes) {
  constexpr struct {
    i32 side;
    f32 radius;
    i32 lost;
  } cases[] = {{41, 0.5f, 1}, {41, 2, 1},  {41, 3, 2},   {41, 4, 3}, {41, 4.5f, 4}, {41, 6, 5},
               {41, 7.5f, 7}, {41, 10, 9}, {41, 20, 19}, {19, 9, 8}, {8, 4, 3},     {2, 2, 0}};
  for (const auto& c : cases) {
    Bytes bytes(static_cast<size_t>(4 * c.side * c.side), 0);
    for (i32 y = 0; y < c.side; ++y) {
      for (i32 x = 0; x < (c.side + 1) / 2; ++x)
        bytes[static_cast<size_t>(4 * (y * c.side + x) + 3)] = 255;
    }
    const Bytes blurred = Blur(0, c.side, c.side, bytes, c.radius);
    i32 unfaded = 0;
    while (unfaded < c.side && blurred[static_cast<size_t>(4 * unfaded + 3)] == 255) ++unfaded;
    EXPECT_EQ((c.side + 1) / 2 - unfaded, c.lost) << c.side << ", radius " << c.radius;
  }
}

TEST(Blur, TakesOneRowOfAnyPitch) {
  const Call call = {.width = 16, .height = 1, .dstPitch = 0, .radius = 1};
  const Bytes row(64, 200);
  for (const i32 level : Levels())
    EXPECT_EQ(RunCase(MakeCase(Slot(87), call, row, {}), level), (Outcome{PICTAVO_S_OK, row}));
}

}  // namespace
}  // namespace pictavo::test
