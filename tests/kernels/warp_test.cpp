// Turning, tilting, swirling and scaled layers: corner cases worked out by hand, and places against
// the C library's.
#include "cpu/geometry/warp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

#include "cpu/blending/layer_scaled.h"
#include "operations.h"

namespace pictavo::test {
namespace {

using Pixels = std::vector<u32>;  // 0xAARRGGBB
constexpr u32 kUntouched = 0x55667788;

ImageDesc Describe(Pixels* pixels, i32 width) {
  ImageDesc image = {};
  image.data = pixels->data();
  image.width = width;
  image.height = static_cast<i32>(pixels->size()) / width;
  image.pitch = 4 * width;
  image.bytesPerPixel = 4;
  return image;
}

/// What an operation makes of a picture in a destination of so many pixels.
template <typename Operation, typename Param>
Pixels Warped(Operation operation, i32 level, Pixels src, i32 width, const Param& param,
              i32 dstWidth, size_t count) {
  Pixels dst(count, kUntouched);
  const ImageDesc from = Describe(&src, width);
  ImageDesc to = Describe(&dst, dstWidth);
  EXPECT_EQ(operation(level, &from, &to, &param), PICTAVO_S_OK);
  return dst;
}

Pixels Drawn(i32 width, i32 height, int kind) {
  Random random(3);
  Pixels pixels(static_cast<size_t>(width * height));
  FillPixels(reinterpret_cast<u8*>(pixels.data()), 4 * pixels.size(), kind, random);
  return pixels;
}

TEST(Warp, Corners) {
  const Pixels clear(4, 0), rows = {0xFF0000C8, 0xFF000064, 0x00112233, 0x80FF0000};
  struct Corner {
    const char* what;
    RotateParam param;
    Pixels src;
    i32 width;
    Pixels expected;
    i32 dstWidth;
  } const corners[] = {
      {"a copy, of what is clear too", {0, 1, 0, 0, 0, 0, 1}, rows, 2, rows, 2},
      {"a quarter", {90, 1, 1, 1, 1, 1, 1}, rows, 2, {rows[2], rows[0], rows[3], rows[1]}, 2},
      {"half a turn", {-180, 1, 0, 0, 4, 1, 1}, rows, 4, {rows[3], rows[2], rows[1], rows[0]}, 4},
      {"many turns", {3690, 1, 2, .5f, .5f, 2, 0}, rows, 4, rows, 1},
      {"half a pixel to the right",
       {0, 1, 0, 0, .5f, 0, 1},
       {0xFF0A141E},
       1,
       {0x800A141E, 0x800A141E, 0},
       3},
      {"a quarter of a pixel to the left: 100 and 200 by a quarter",
       {0, 1, .25f, 0, 0, 0, 1},
       {0xFF000064, 0xFF0000C8},
       2,
       {0xFF00007D, 0xBF0000C8},
       2},
      {"halves go up",
       {0, 1, .5f, 0, 0, 0, 1},
       {0xFF000001, 0xFF000002},
       2,
       {0xFF000002, 0x80000002},
       2},
      {"colours by alpha: 10 at 51 and 100 at 204",
       {0, 1, .5f, 0, 0, 0, 1},
       {0x3300000A, 0xCC000064},
       2,
       {0x80000052, 0x66000064},
       2},
      {"too little alpha for a colour",
       {0, 1, 1 - 1 / 256.f, 0, 0, 0, 1},
       {0x7F0000FF, 0},
       2,
       {0, 0},
       2},
      {"a 512th rounds up",
       {0, 1, 1 / 512.f, 0, 0, 0, 1},
       {0xFF000000, 0xFF0000FF},
       2,
       {0xFF000001, 0xFE0000FF},
       2},
      {"the nearest, halves up",
       {0, 1, .5f, 0, 0, 0, 0},
       rows,
       4,
       {rows[1], rows[2], rows[3], 0},
       4},
      {"twice the size", {0, 2, 0, 0, 0, 0, 0}, {1, 2}, 2, {1, 1, 2, 2}, 4},
      {"beside it", {30, 1, 0, 0, 1e6f, 0, 1}, rows, 2, clear, 2},
  };
  for (const Corner& c : corners) {
    for (const i32 level : Levels())
      EXPECT_EQ(
          Warped(cpu::RotatePicture, level, c.src, c.width, c.param, c.dstWidth, c.expected.size()),
          c.expected)
          << c.what << ", level " << level;
  }
}

struct Point {
  double x, y;
};

/// A colour of an opaque picture between pixels, with an alpha that its edges blur.
std::array<double, 4> Between(const Pixels& src, i32 width, Point at) {
  std::array<double, 4> sums = {};
  for (int k = 0; k < 4; ++k) {
    const double x = std::floor(at.x) + k % 2, y = std::floor(at.y) + k / 2;
    if (x < 0 || y < 0 || x >= width || y * width >= static_cast<double>(src.size())) continue;
    const double weight = (1 - std::abs(at.x - x)) * (1 - std::abs(at.y - y));
    const u32 pixel = src[static_cast<size_t>(y * width + x)];
    for (size_t c = 0; c < 3; ++c) sums[c] += weight * (pixel >> 8 * c & 255);
    sums[3] += weight;
  }
  for (size_t c = 0; c < 3; ++c) sums[c] /= std::max(sums[3], 1e-9);
  sums[3] *= 255;
  return sums;
}

constexpr double kDegree = 0.017453292519943295;
constexpr i32 kWidth = 83, kHeight = 61;

Point Turned(Point p, double degrees) {
  const double s = std::sin(degrees * kDegree), c = std::cos(degrees * kDegree);
  return {p.x * c + p.y * s, p.y * c - p.x * s};
}

struct Warping {
  const char* name;
  std::function<u32(i32, const ImageDesc*, ImageDesc*)> run;
  std::function<Point(Point)> place;  // both from the pictures' corners
};

template <typename Param>
Warping Make(const char* name,
             u32 (*operation)(i32, const ImageDesc*, ImageDesc*, const Param*) noexcept,
             const Param& param, std::function<Point(Point)> place) {
  return {name,
          [=](i32 level, const ImageDesc* src, ImageDesc* dst) {
            return operation(level, src, dst, &param);
          },
          std::move(place)};
}

const Warping kWarpings[] = {
    Make<RotateParam>("turned", cpu::RotatePicture, {15, 1.25f, 40, 30, 45, 31, 1},
                      [](Point p) {
                        const Point t = Turned({p.x - 45, p.y - 31}, 15);
                        return Point{t.x / 1.25 + 40, t.y / 1.25 + 30};
                      }),
    Make<SwirlParam>("swirled", cpu::SwirlPicture, {40, 30, 35, -200, 1},
                     [](Point p) {
                       const double r = std::hypot(p.x - 40, p.y - 30), t = 1 - r / 35;
                       const Point s = Turned({p.x - 40, p.y - 30}, t > 0 ? -200 * t * t : 0);
                       return Point{s.x + 40, s.y + 30};
                     }),
    // The right edge goes away: where a ray through (u, v) meets the plane x = p cos, z = p sin.
    Make<TiltParam>("yawed", cpu::TiltPicture, {40, 30, 50, 0, 0, 60, 1},
                    [](Point p) {
                      const double d = kWidth / 2. / std::tan(30 * kDegree), u = p.x - 40;
                      const double along =
                          u * d / (d * std::cos(50 * kDegree) - u * std::sin(50 * kDegree));
                      const double depth = d + along * std::sin(50 * kDegree);
                      return Point{along + 40, (p.y - 30) * depth / d + 30};
                    }),
    // The top edge goes away from a picture that was rolled before.
    Make<TiltParam>("pitched", cpu::TiltPicture, {40, 30, 0, 40, 25, 60, 1},
                    [](Point p) {
                      const double d = kWidth / 2. / std::tan(30 * kDegree), v = p.y - 30;
                      const double along =
                          v * d / (d * std::cos(40 * kDegree) + v * std::sin(40 * kDegree));
                      const double depth = d - along * std::sin(40 * kDegree);
                      const Point t = Turned({(p.x - 40) * depth / d, along}, 25);
                      return Point{t.x + 40, t.y + 30};
                    }),
};

/// 1/512 of a pixel each way and a rounding are at most 1.5; alpha is the sum of four weights.
TEST(Warp, LiesWithinTheRoundingOfRealPlaces) {
  Pixels src = Drawn(kWidth, kHeight, kOpaque);
  for (const Warping& warping : kWarpings) {
    Pixels dst(kWidth * kHeight);
    const ImageDesc from = Describe(&src, kWidth);
    ImageDesc to = Describe(&dst, kWidth);
    ASSERT_EQ(warping.run(Levels().back(), &from, &to), PICTAVO_S_OK);
    for (i32 i = 0; i < kWidth * kHeight; ++i) {
      const Point at = warping.place({i % kWidth + 0.5, i / kWidth + 0.5});
      const auto exact = Between(src, kWidth, {at.x - 0.5, at.y - 0.5});
      const u32 pixel = dst[static_cast<size_t>(i)];
      ASSERT_NEAR(pixel >> 24, exact[3], 1.5) << warping.name << ", pixel " << i;
      for (size_t c = 0; c < 3 && pixel >> 24 == 255; ++c)
        ASSERT_NEAR(pixel >> 8 * c & 255, exact[c], 1.5) << warping.name << ", pixel " << i;
    }
  }
}

/// Pictures wide enough for what is inside, with all kinds of alpha.
TEST(Warp, BuildsAgree) {
  for (const int kind : {kRandom, kOpaque, kSoft, kRuns, kEdges}) {
    Pixels src = Drawn(kWidth, kHeight, kind);
    const ImageDesc from = Describe(&src, kWidth);
    for (const Warping& warping : kWarpings) {
      Pixels expected(70 * 90), dst(expected.size());
      ImageDesc to = Describe(&expected, 90);
      warping.run(0, &from, &to);
      to.data = dst.data();
      for (const i32 level : Levels()) {
        warping.run(level, &from, &to);
        EXPECT_EQ(dst, expected) << warping.name << ", level " << level;
      }
    }
  }
}

TEST(Warp, EightTurnsComeBack) {
  constexpr i32 kSide = 101;
  const Pixels src = [] {
    Pixels pixels;
    for (int i = 0; i < kSide * kSide; ++i) {
      const double x = i % kSide - 50, y = i / kSide - 50;
      pixels.push_back(0xFF000000 | 0x010101 * static_cast<u32>(127 + 120 * std::sin(x / 15) *
                                                                          std::cos(y / 11)));
    }
    return pixels;
  }();
  Pixels turned = src;
  for (int i = 0; i < 8; ++i)
    turned = Warped(cpu::RotatePicture, Levels().back(), turned, kSide,
                    RotateParam{45, 1, 50.5f, 50.5f, 50.5f, 50.5f, 1}, kSide, turned.size());
  for (int y = 20; y <= 80; ++y) {
    for (int x = 20; x <= 80; ++x) {
      const size_t i = static_cast<size_t>(y * kSide + x);
      ASSERT_NEAR(turned[i] & 255, src[i] & 255, 4) << x << ", " << y;
    }
  }
}

TEST(Warp, TiltedByNothingIsTurned) {
  const Pixels src = Drawn(kWidth, kHeight, kRandom);
  for (const f32 roll : {0.f, 90.f, 33.f, -1000.5f}) {
    const TiltParam tilt = {30.1f, 20.7f, 0, 360, roll, 50, 1};
    const RotateParam turn = {roll, 1, 30.1f, 20.7f, 30.1f, 20.7f, 1};
    EXPECT_EQ(Warped(cpu::TiltPicture, Levels().back(), src, kWidth, tilt, kWidth, src.size()),
              Warped(cpu::RotatePicture, Levels().back(), src, kWidth, turn, kWidth, src.size()));
  }
  // From behind, from its edge, and beyond the horizon.
  const Pixels row = {1, 2, 3, 4}, clear(4, 0);
  EXPECT_EQ(
      Warped(cpu::TiltPicture, Levels().back(), row, 4, TiltParam{2, .5f, 180, 0, 0, 50, 1}, 4, 4),
      (Pixels{4, 3, 2, 1}));
  EXPECT_EQ(
      Warped(cpu::TiltPicture, Levels().back(), row, 4, TiltParam{2, .5f, 90, 0, 0, 50, 1}, 4, 4),
      clear);
  EXPECT_EQ(
      Warped(cpu::TiltPicture, Levels().back(), row, 4, TiltParam{-99, .5f, 80, 0, 0, 50, 0}, 4, 4),
      clear);
  EXPECT_EQ(cpu::RotatePicture(Levels().back(), nullptr, nullptr, nullptr), PICTAVO_E_POINTER);
  EXPECT_EQ(cpu::TiltPicture(Levels().back(), nullptr, nullptr, nullptr), PICTAVO_E_POINTER);
  EXPECT_EQ(cpu::SwirlPicture(Levels().back(), nullptr, nullptr, nullptr), PICTAVO_E_POINTER);
}

TEST(Warp, ASwirlOfNothingCopies) {
  const Pixels src = {1, 2, 3, 4}, larger = {1, 2, 0, 3, 4, 0, 0, 0, 0};
  EXPECT_EQ(Warped(cpu::SwirlPicture, Levels().back(), src, 2, SwirlParam{1, 1, 0, 90, 1}, 3, 9),
            larger);
  EXPECT_EQ(Warped(cpu::SwirlPicture, Levels().back(), src, 2, SwirlParam{1, 1, 2, 0, 1}, 3, 9),
            larger);
}

TEST(ScaledLayer, Corners) {
  const u32 black = 0xFF000000, white = 0xFFFFFFFF;
  struct Corner {
    const char* what;
    std::array<f32, 4> rect;
    Pixels src;
    i32 width;
    Pixels expected;  // of four black pixels in a row
  } const corners[] = {
      {"in its place", {1, 0, 3, 1}, {white, 0xFF0000FF}, 2, {black, white, 0xFF0000FF, black}},
      {"between pixels: half of the first, all, a quarter of the last",
       {.5f, 0, 2.25f, 1},
       {white},
       1,
       // 128 and 64 of 256, from alphas of 128 and 64.
       {0xFF7F7F7F, white, 0xFF3F3F3F, black}},
      {"half of a row", {0, -1, 1, .5f}, {white}, 1, {0xFF7F7F7F, black, black, black}},
      {"twice as wide: 0, 0, 1/4, 3/4, …",
       {0, 0, 4, 1},
       {0xFF000000, 0xFF0000C8},
       2,
       {black, 0xFF000032, 0xFF000096, 0xFF0000C8}},
      {"from outside", {-4, 0, 2, 1}, {0xFF0000FF, white}, 2, {white, white, black, black}},
  };
  for (const Corner& c : corners) {
    for (const i32 level : Levels()) {
      Pixels src = c.src, dst(4, black);
      const ImageDesc from = Describe(&src, c.width);
      ImageDesc to = Describe(&dst, 4);
      const BlendParam param = {0, 255, 0, 0, 0};
      EXPECT_EQ(cpu::BlendLayerScaled(level, &to, &from, &param, c.rect.data()), PICTAVO_S_OK);
      EXPECT_EQ(dst, c.expected) << c.what << ", level " << level;
    }
  }
  EXPECT_EQ(cpu::BlendLayerScaled(Levels().back(), nullptr, nullptr, nullptr, nullptr),
            PICTAVO_E_POINTER);
}

}  // namespace
}  // namespace pictavo::test
