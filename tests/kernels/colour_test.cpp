// Colour conversion: the rules in real numbers.
#include "convert_utility/colour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "operations.h"

namespace pictavo::test {
namespace {

struct Options {
  u32 model, matrix, range;
};

constexpr u32 kYuv = PICTAVO_COLOR_YUV, kHsv = PICTAVO_COLOR_HSV, kHsl = PICTAVO_COLOR_HSL;
constexpr u32 kFull = PICTAVO_RANGE_FULL, kDegrees = PICTAVO_RANGE_DEGREES;
const Options kHues[] = {{kHsv, 0, kFull}, {kHsl, 0, kFull}};

std::vector<Options> Spaces() {
  std::vector<Options> spaces(std::begin(kHues), std::end(kHues));
  for (u32 matrix = 0; matrix < 3; ++matrix) {
    for (u32 range = 0; range < 2; ++range) spaces.push_back({kYuv, matrix, range});
  }
  return spaces;
}

std::string Name(const Options& o) {
  return "space " + std::to_string(o.model) + std::to_string(o.matrix) + std::to_string(o.range);
}

using PictureFn = decltype(colour::ConvertPictureFromRGB);
constexpr PictureFn* kDirections[] = {colour::ConvertPictureFromRGB, colour::ConvertPictureToRGB};

using Real = std::array<double, 3>;
using Triple = std::array<int, 3>;

int Nearest(double x) {
  // No result but a tie is as near to one; an offset keeps the conversion from negative numbers.
  constexpr double kTie = 1e-9;
  return static_cast<int>(x + 1024.5 - kTie) - 1024;
}

// --- The rules ---------------------------------------------------------------------------------

/// Each row gives a number, or a channel, as a sum of three and a constant.
struct RealMatrix {
  Real rows[3];
  Real constants;
};

RealMatrix YuvRule(const Options& o, bool toRgb) {
  const double weights[][2] = {{0.299, 0.114}, {0.2126, 0.0722}, {0.2627, 0.0593}};
  const auto [kr, kb] = weights[o.matrix];
  const double kg = 1 - kr - kb;
  const double luma = o.range == kFull ? 1 : 219 / 255.0,
               chroma = o.range == kFull ? 1 : 224 / 255.0;
  const double black = o.range == kFull ? 0 : 16, u = chroma / (2 - 2 * kb),
               v = chroma / (2 - 2 * kr);
  if (!toRgb) {
    return {{{luma * kr, luma * kg, luma * kb},
             {u * -kr, u * -kg, u * (1 - kb)},
             {v * (1 - kr), v * -kg, v * -kb}},
            {black, 128, 128}};
  }
  // r = Y + V, b = Y + U, and g is what is left of Y.
  RealMatrix m = {
      {{1 / luma, 0, 1 / v}, {1 / luma, -kb / kg / u, -kr / kg / v}, {1 / luma, 1 / u, 0}}, {}};
  for (size_t i = 0; i < 3; ++i) {
    m.constants[i] = -black * m.rows[i][0] - 128 * (m.rows[i][1] + m.rows[i][2]);
  }
  return m;
}

/// Hue in turns, saturation and value or lightness of 255.
Real FromRgbHue(u32 model, const Triple& rgb) {
  const double r = rgb[0], g = rgb[1], b = rgb[2];
  const double most = std::max({r, g, b}), least = std::min({r, g, b}), chroma = most - least;
  double hue = 0;
  if (chroma > 0) {
    hue = most == r ? (g - b) / chroma : most == g ? 2 + (b - r) / chroma : 4 + (r - g) / chroma;
  }
  if (hue < 0) hue += 6;
  const double sum = most + least, room = model == kHsv ? most : std::min(sum, 510 - sum);
  return {hue / 6, room > 0 ? 255 * chroma / room : 0, model == kHsv ? most : sum / 2};
}

Real ToRgbHue(u32 model, double turns, int saturation, int last) {
  const double value = last;
  const double chroma =
      (model == kHsv ? value : 255 - std::abs(2 * value - 255)) * saturation / 255;
  const double least = model == kHsv ? value - chroma : value - chroma / 2;
  const double hue = 6 * (turns - std::floor(turns));
  const double x = chroma * (1 - std::abs(std::fmod(hue, 2) - 1));
  const Real sextants[] = {{chroma, x, 0}, {x, chroma, 0}, {0, chroma, x},
                           {0, x, chroma}, {x, 0, chroma}, {chroma, 0, x}};
  Real rgb = sextants[static_cast<int>(hue)];
  for (double& channel : rgb) channel += least;
  return rgb;
}

// --- Planes of colours -------------------------------------------------------------------------

constexpr i32 kSide = 256, kPitch = 4 * kSide;
constexpr int kStep = 5;  // from one plane to the next: 0 and 255 are among them

/// All colours with one number at red's place.
void FillPlane(Bytes* pixels, int first) {
  for (size_t i = 0; i < pixels->size() / 4; ++i) {
    const u8 pixel[] = {static_cast<u8>(i), static_cast<u8>(i >> 8), static_cast<u8>(first),
                        static_cast<u8>(i * 7)};
    std::memcpy(&(*pixels)[4 * i], pixel, 4);
  }
}

/// Converts a plane by the portable build, and sees that the others give the same.
void ConvertPlane(PictureFn* convert, const Options& o, const Bytes& src, Bytes* dst) {
  convert(0, src.data(), kSide, kSide, kPitch, dst->data(), kPitch, o.model, o.matrix, o.range);
  for (const i32 level : {3, Levels().back()}) {
    Bytes same(dst->size());
    convert(level, src.data(), kSide, kSide, kPitch, same.data(), kPitch, o.model, o.matrix,
            o.range);
    ASSERT_EQ(same, *dst) << Name(o) << ", level " << level << ", first " << int{src[2]};
  }
}

/// `expected` gives what the number at red's place, the next and the last become.
template <typename Expected>
void CheckPlane(const Bytes& src, const Bytes& dst, const Options& o, const Expected& expected) {
  for (size_t i = 0; i < src.size(); i += 4) {
    const Triple t = expected(src[i + 1], src[i]);
    const u8 pixel[] = {static_cast<u8>(t[2]), static_cast<u8>(t[1]), static_cast<u8>(t[0]),
                        src[i + 3]};
    ASSERT_EQ(std::memcmp(&dst[i], pixel, 4), 0)
        << Name(o) << ": " << int{src[i + 2]} << " " << int{src[i + 1]} << " " << int{src[i]};
  }
}

TEST(Colour, EveryFifthColourInEveryYuv) {
  Bytes src(kSide * kPitch), dst(src.size());
  for (const Options& o : Spaces()) {
    if (o.model != kYuv) continue;
    for (const bool toRgb : {false, true}) {
      const RealMatrix m = YuvRule(o, toRgb);
      for (int first = 0; first < 256; first += kStep) {
        FillPlane(&src, first);
        ConvertPlane(kDirections[toRgb], o, src, &dst);
        if (testing::Test::HasFatalFailure()) return;
        CheckPlane(src, dst, o, [&](int second, int third) {
          Triple t;
          for (size_t i = 0; i < 3; ++i) {
            const auto& row = m.rows[i];
            const double exact = row[0] * first + row[1] * second + row[2] * third;
            t[i] = std::clamp(Nearest(exact + m.constants[i]), 0, 255);
          }
          return t;
        });
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

TEST(Colour, EveryFifthColourInHsvAndHsl) {
  Bytes src(kSide * kPitch), dst(src.size());
  for (const Options& o : kHues) {
    for (int first = 0; first < 256; first += kStep) {
      FillPlane(&src, first);
      ConvertPlane(kDirections[0], o, src, &dst);
      if (testing::Test::HasFatalFailure()) return;
      CheckPlane(src, dst, o, [&](int g, int b) {
        const Real t = FromRgbHue(o.model, {first, g, b});
        return Triple{Nearest(256 * t[0]) % 256, Nearest(t[1]), Nearest(t[2])};
      });
      if (testing::Test::HasFatalFailure()) return;
      ConvertPlane(kDirections[1], o, src, &dst);
      if (testing::Test::HasFatalFailure()) return;
      CheckPlane(src, dst, o, [&](int saturation, int last) {
        const Real t = ToRgbHue(o.model, first / 256.0, saturation, last);
        return Triple{Nearest(t[0]), Nearest(t[1]), Nearest(t[2])};
      });
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

TEST(Colour, EveryFifthColourComesBackAsFarAsStated) {
  struct Case {
    u32 model, range;
    int most;  // that a channel moves
  } const cases[] = {
      {kYuv, PICTAVO_RANGE_LIMITED, 2}, {kYuv, kFull, 1}, {kHsv, kFull, 3}, {kHsl, kFull, 4}};
  const i32 level = Levels().back();
  Bytes src(kSide * kPitch), there(src.size()), back(src.size());
  for (const Case& c : cases) {
    for (u32 matrix = 0; matrix < (c.model == kYuv ? 3u : 1u); ++matrix) {
      int most = 0;
      for (int red = 0; red < 256; red += kStep) {
        FillPlane(&src, red);
        kDirections[0](level, src.data(), kSide, kSide, kPitch, there.data(), kPitch, c.model,
                       matrix, c.range);
        kDirections[1](level, there.data(), kSide, kSide, kPitch, back.data(), kPitch, c.model,
                       matrix, c.range);
        for (size_t i = 0; i < src.size(); i += 4) {
          for (size_t j = i; j < i + 3; ++j) most = std::max(most, std::abs(src[j] - back[j]));
        }
        const size_t grey = static_cast<size_t>(red) * 257 * 4;
        EXPECT_TRUE(c.range != kFull || std::memcmp(&src[grey], &back[grey], 4) == 0) << red;
      }
      EXPECT_EQ(most, c.most) << c.model << matrix;
    }
  }
}

// --- Single colours ----------------------------------------------------------------------------

TEST(Colour, SingleColoursAreThoseOfPictures) {
  Random random(3);
  for (const Options& o : Spaces()) {
    for (int round = 0; round < 2000; ++round) {
      u8 pixel[4], there[4], back[4];
      FillPixels(pixel, 4, round % 2 ? kRandom : kEdges, random);
      kDirections[0](0, pixel, 1, 1, 4, there, 4, o.model, o.matrix, o.range);
      kDirections[1](0, pixel, 1, 1, 4, back, 4, o.model, o.matrix, o.range);
      u32 t[3];
      ASSERT_EQ(colour::ConvertColorFromRGB(pixel[2], pixel[1], pixel[0], t, t + 1, t + 2, o.model,
                                            o.matrix, o.range),
                PICTAVO_S_OK);
      EXPECT_TRUE(t[0] == there[2] && t[1] == there[1] && t[2] == there[0]) << Name(o);
      ASSERT_EQ(colour::ConvertPixelFromRGB(pixel, t, t + 1, t + 2, o.model, o.matrix, o.range),
                PICTAVO_S_OK);
      EXPECT_TRUE(t[0] == there[2] && t[1] == there[1] && t[2] == there[0]) << Name(o);
      ASSERT_EQ(colour::ConvertColorToRGB(pixel[2], pixel[1], pixel[0], t, t + 1, t + 2, o.model,
                                          o.matrix, o.range),
                PICTAVO_S_OK);
      EXPECT_TRUE(t[0] == back[2] && t[1] == back[1] && t[2] == back[0]) << Name(o);
    }
  }
}

TEST(Colour, HuesInDegreesGoRound) {
  Random random(4);
  for (const u32 model : {kHsv, kHsl}) {
    for (int round = 0; round < 100000; ++round) {
      const auto byte = [&] { return static_cast<int>(random() % 256); };
      const Triple rgb = {byte(), byte(), byte()};
      u32 t[3];
      colour::ConvertColorFromRGB(rgb[0], rgb[1], rgb[2], t, t + 1, t + 2, model, 0, kDegrees);
      ASSERT_EQ(t[0], static_cast<u32>(Nearest(360 * FromRgbHue(model, rgb)[0]) % 360));
      const i32 hue = static_cast<i32>(random());
      const Real exact = ToRgbHue(model, hue / 360.0, rgb[1], rgb[2]);
      colour::ConvertColorToRGB(hue, rgb[1], rgb[2], t, t + 1, t + 2, model, 0, kDegrees);
      // A hue of ten digits leaves the real rule a little less exact.
      for (size_t i = 0; i < 3; ++i) ASSERT_LE(std::abs(t[i] - exact[i]), 0.5001) << hue;
    }
  }
}

// --- Pictures and arguments --------------------------------------------------------------------

TEST(Colour, RefusesPicturesThatAreNone) {
  constexpr u32 P = PICTAVO_E_POINTER, I = PICTAVO_E_INVALIDARG, E = PICTAVO_S_FALSE;
  struct Case {
    i32 width, height, dstPitch, srcPitch;
    Options options;
    int null;  // 1 src, 2 dst
    u32 result;
  } const cases[] = {
      {1, 1, 4, 4, {9, 9, 9}, 1, P},
      {-1, 0, 0, 0, {kYuv, 0, 0}, 2, P},
      {-1, 1, 4, 4, {kYuv, 0, 0}, 0, I},
      {0, -1, 4, 4, {kYuv, 0, 0}, 0, I},
      {0, 1, 4, 4, {kYuv, 0, 0}, 0, E},
      {1, 0, 0, 0, {kHsv, 0, kFull}, 0, E},
      {0, 0, 4, 4, {kHsv, 0, 0}, 0, I},
      {1, 1, 3, 4, {kYuv, 0, 0}, 0, I},
      {1, 1, 4, -3, {kYuv, 0, 0}, 0, I},
      {2, 1, -4, 8, {kYuv, 0, 0}, 0, I},
      {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MAX, {kYuv, 0, 0}, 0, I},
      {1, 1, 4, 4, {kYuv, 3, 0}, 0, I},
      {1, 1, 4, 4, {kYuv, 0, 2}, 0, I},
      {1, 1, 4, 4, {kYuv, ~0u, ~0u}, 0, I},
      {1, 1, 4, 4, {kHsv, 1, kFull}, 0, I},
      {1, 1, 4, 4, {kHsl, 0, PICTAVO_RANGE_LIMITED}, 0, I},
      {1, 1, 4, 4, {kHsl, 0, kDegrees}, 0, I},
      {1, 1, 4, 4, {3, 0, kFull}, 0, I},
  };
  for (const Case& c : cases) {
    for (PictureFn* convert : kDirections) {
      for (const i32 level : {0, 3}) {
        const Bytes src(16, 0x80);
        Bytes dst(16, 0x11);
        EXPECT_EQ(convert(level, c.null == 1 ? nullptr : src.data(), c.width, c.height, c.srcPitch,
                          c.null == 2 ? nullptr : dst.data(), c.dstPitch, c.options.model,
                          c.options.matrix, c.options.range),
                  c.result)
            << "case " << &c - cases;
        EXPECT_EQ(dst, Bytes(16, 0x11)) << "case " << &c - cases;
      }
    }
  }
}

TEST(Colour, RefusesSingleColoursThatAreNone) {
  constexpr u32 I = PICTAVO_E_INVALIDARG, S = PICTAVO_S_OK;
  struct Case {
    std::array<i32, 3> colour;
    Options options;
    u32 from, to;
  } const cases[] = {
      {{0, 255, 0}, {kYuv, 2, kFull}, S, S},
      {{256, 0, 0}, {kYuv, 0, 0}, I, I},
      {{-1, 0, 0}, {kHsv, 0, kFull}, I, S},  // a hue goes round
      {{INT32_MIN, 0, 0}, {kHsl, 0, kDegrees}, I, S},
      {{0, 256, 0}, {kHsv, 0, kFull}, I, I},
      {{0, 0, -1}, {kHsl, 0, kDegrees}, I, I},
      {{0, 0, 0}, {kYuv, 0, kDegrees}, I, I},
      {{0, 0, 0}, {3, 0, kFull}, I, I},
  };
  for (const Case& c : cases) {
    const auto& [x, y, z] = c.colour;
    const auto& [model, matrix, range] = c.options;
    u32 out[3] = {777, 777, 777};
    const auto untouched = [&] { return out[0] == 777 && out[1] == 777 && out[2] == 777; };
    EXPECT_EQ(colour::ConvertColorFromRGB(x, y, z, out, out + 1, out + 2, model, matrix, range),
              c.from);
    EXPECT_EQ(untouched(), c.from != S) << "case " << &c - cases;
    std::fill(out, out + 3, 777);
    EXPECT_EQ(colour::ConvertColorToRGB(x, y, z, out, out + 1, out + 2, model, matrix, range),
              c.to);
    EXPECT_EQ(untouched(), c.to != S) << "case " << &c - cases;
    for (int null = 0; null < 3; ++null) {
      u32* outs[] = {out, out, out};
      outs[null] = nullptr;
      std::fill(out, out + 3, 777);
      const u8 pixel[4] = {};
      EXPECT_EQ(
          colour::ConvertColorFromRGB(x, y, z, outs[0], outs[1], outs[2], model, matrix, range),
          PICTAVO_E_POINTER);
      EXPECT_EQ(colour::ConvertColorToRGB(x, y, z, outs[0], outs[1], outs[2], model, matrix, range),
                PICTAVO_E_POINTER);
      EXPECT_EQ(colour::ConvertPixelFromRGB(pixel, outs[0], outs[1], outs[2], model, matrix, range),
                PICTAVO_E_POINTER);
      EXPECT_TRUE(untouched());
    }
    EXPECT_EQ(colour::ConvertPixelFromRGB(nullptr, out, out, out, model, matrix, range),
              PICTAVO_E_POINTER);
  }
}

}  // namespace
}  // namespace pictavo::test
