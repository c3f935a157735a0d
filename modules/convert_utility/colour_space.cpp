#include "convert_utility/colour_space.h"

#include <algorithm>

namespace pictavo::colour {
namespace {

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
      if (matrix >= std::size(kLumaWeights) || range > PICTAVO_RANGE_FULL) return false;
      *space = {model, &kSpaces<MakeYuv8>[matrix][range], 0};
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
  return space.yuv != nullptr ? space.yuv->FromRgb(rgb) : HueFromRgb(space, rgb);
}

Colour ToRgb(const Space& space, const Colour& colour) {
  return space.yuv != nullptr ? space.yuv->ToRgb(colour) : RgbFromHue(space, colour);
}

}  // namespace pictavo::colour
