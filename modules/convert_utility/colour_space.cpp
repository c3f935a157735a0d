#include "convert_utility/colour_space.h"

#include <algorithm>

namespace pictavo::colour {
namespace {

// ---------------------------------------------------------------------------------------------
// YUV.

constexpr i32 Weight(double x) {
  const double scaled = x * (1 << kWeightBits);
  return static_cast<i32>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

/// A colour difference is 0.5 where its colour, or the lack of it, is alone.
/// @param kr, kb what red and blue weigh in luma
/// @param luma, chroma what 255 becomes: the distance from black to white, and from the least to
/// the greatest U and V
constexpr YuvMatrices MakeYuv(double kr, double kb, double luma, double chroma) {
  const double kg = 1 - kr - kb, y = luma / 255, c = chroma / 255;
  const double u = 2 * (1 - kb), v = 2 * (1 - kr);
  return {{{{Weight(y * kr), Weight(y * kg), Weight(y * kb)},
            {Weight(-c * kr / u), Weight(-c * kg / u), Weight(c / 2)},
            {Weight(c / 2), Weight(-c * kg / v), Weight(-c * kb / v)}},
           256},
          {{{Weight(1 / y), 0, Weight(v / c)},
            {Weight(1 / y), Weight(-u * kb / kg / c), Weight(-v * kr / kg / c)},
            {Weight(1 / y), Weight(u / c), 0}},
           37},
          luma < 255 ? 16 : 0};
}

constexpr YuvMatrices kYuv[][2] = {
    {MakeYuv(0.299, 0.114, 219, 224), MakeYuv(0.299, 0.114, 255, 255)},      // BT.601
    {MakeYuv(0.2126, 0.0722, 219, 224), MakeYuv(0.2126, 0.0722, 255, 255)},  // BT.709
    {MakeYuv(0.2627, 0.0593, 219, 224), MakeYuv(0.2627, 0.0593, 255, 255)},  // BT.2020
};

Colour Product(const Matrix& matrix, const Colour& colour) {
  Colour product;
  for (size_t i = 0; i < 3; ++i) {
    const auto& row = matrix.rows[i];
    const i64 sum = i64{row[0]} * colour[0] + i64{row[1]} * colour[1] + i64{row[2]} * colour[2];
    product[i] = static_cast<i32>((sum + kHalf - matrix.tie) >> kWeightBits);
  }
  return product;
}

Colour YuvFromRgb(const YuvMatrices& yuv, const Colour& rgb) {
  const auto [y, u, v] = Product(yuv.fromRgb, rgb);
  return {y + yuv.black, u + kNeutral, v + kNeutral};
}

Colour RgbFromYuv(const YuvMatrices& yuv, const Colour& colour) {
  const auto [y, u, v] = colour;
  Colour rgb = Product(yuv.toRgb, {y - yuv.black, u - kNeutral, v - kNeutral});
  for (i32& channel : rgb) channel = std::clamp(channel, 0, 255);
  return rgb;
}

// ---------------------------------------------------------------------------------------------
// HSV and HSL.

/// The integer next to a / b, of which a is not negative; the lower one of two; 0 for 0 / 0.
i32 Rounded(i32 a, i32 b) { return b == 0 ? 0 : (2 * a + b - 1) / (2 * b); }

/// The hue in sixths of a turn, as a multiple of 1 / chroma: 0 … 6 * chroma.
i32 HueTimesChroma(const Colour& rgb, i32 most, i32 chroma) {
  const auto [r, g, b] = rgb;
  if (r == most) return g < b ? g - b + 6 * chroma : g - b;
  return g == most ? b - r + 2 * chroma : r - g + 4 * chroma;
}

Colour HueFromRgb(const Space& space, const Colour& rgb) {
  const auto [least, most] = std::minmax({rgb[0], rgb[1], rgb[2]});
  const i32 chroma = most - least, sum = most + least;
  const i32 hue = Rounded(space.turn * HueTimesChroma(rgb, most, chroma), 6 * chroma) % space.turn;
  if (space.model == PICTAVO_COLOR_HSV) return {hue, Rounded(255 * chroma, most), most};
  return {hue, Rounded(255 * chroma, std::min(sum, 510 - sum)), sum / 2};
}

/// How much of a colour of full saturation is red, green and blue: 0 … turn.
Colour Shares(i32 hue, i32 turn) {
  const i32 place = 6 * ((hue % turn + turn) % turn);
  const auto share = [&](i32 x) { return std::clamp(x, 0, turn); };
  return {share(std::abs(place - 3 * turn) - turn), share(2 * turn - std::abs(place - 2 * turn)),
          share(2 * turn - std::abs(place - 4 * turn))};
}

Colour RgbFromHue(const Space& space, const Colour& colour) {
  const auto [hue, saturation, last] = colour;
  const i32 turn = space.turn;
  Colour rgb = Shares(hue, turn);
  for (i32& channel : rgb) {
    const i32 scaled =
        space.model == PICTAVO_COLOR_HSV
            ? last * (255 * turn - saturation * (turn - channel))
            : last * 255 * turn + std::min(last, 255 - last) * saturation * (2 * channel - turn);
    channel = Rounded(scaled, 255 * turn);
  }
  return rgb;
}

}  // namespace

bool FindSpace(u32 model, u32 matrix, u32 range, Space* space) {
  switch (model) {
    case PICTAVO_COLOR_YUV:
      if (matrix >= std::size(kYuv) || range > PICTAVO_RANGE_FULL) return false;
      *space = {model, &kYuv[matrix][range], 0};
      return true;
    case PICTAVO_COLOR_HSV:
    case PICTAVO_COLOR_HSL:
      if (matrix != 0 || (range != PICTAVO_RANGE_FULL && range != PICTAVO_RANGE_DEGREES)) {
        return false;
      }
      *space = {model, nullptr, range == PICTAVO_RANGE_DEGREES ? 360 : 256};
      return true;
    default:
      return false;
  }
}

Colour FromRgb(const Space& space, const Colour& rgb) {
  return space.yuv != nullptr ? YuvFromRgb(*space.yuv, rgb) : HueFromRgb(space, rgb);
}

Colour ToRgb(const Space& space, const Colour& colour) {
  return space.yuv != nullptr ? RgbFromYuv(*space.yuv, colour) : RgbFromHue(space, colour);
}

}  // namespace pictavo::colour
