// Luma and colour differences of RGB: the exact rule of slots 54, 88 to 93, in one place.
//
// Results are the exact ones, rounded to the nearest integer; a tie, half-way between two, takes
// the lower one.
#ifndef PICTAVO_CPU_COLOUR_YUV_H_
#define PICTAVO_CPU_COLOUR_YUV_H_

#include <algorithm>
#include <array>

#include "pictavo/pictavo.h"

namespace pictavo::colour {

/// Three numbers in the order of a space's name: red, green, blue; Y, U, V.
using Colour = std::array<i32, 3>;

/// What colours weigh in luma, in 1/10000.
struct LumaWeights {
  i32 red, green, blue;
};
constexpr i32 kLumaUnit = 10000;
constexpr LumaWeights kLumaWeights[] = {{2990, 5870, 1140}, {2126, 7152, 722}, {2627, 6780, 593}};

struct YuvRange {
  i32 luma;     // from black to white
  i32 chroma;   // from the least to the greatest U and V
  i32 black;    // Y of black
  i32 neutral;  // U and V of greys
};

constexpr YuvRange RangeOf(u32 range, int bits) {
  const i32 unit = 1 << (bits - 8), most = 256 * unit - 1;
  return range == PICTAVO_RANGE_FULL ? YuvRange{most, most, 0, 128 * unit}
                                     : YuvRange{219 * unit, 224 * unit, 16 * unit, 128 * unit};
}

/// One row for each number that they make.
using Weights = std::array<std::array<double, 3>, 3>;

/// Of red, green and blue in Y above black, and U and V around neutral. A colour difference is half
/// its range where its colour, or the lack of it, is alone.
constexpr Weights FromRgbWeights(const LumaWeights& of, const YuvRange& range) {
  const double unit = kLumaUnit, r = of.red / unit, g = of.green / unit, b = of.blue / unit;
  const double y = range.luma / 255., u = range.chroma / 255. / (2 * (1 - b)),
               v = range.chroma / 255. / (2 * (1 - r));
  return {{{y * r, y * g, y * b},
           {-u * r, -u * g, range.chroma / 255. / 2},
           {range.chroma / 255. / 2, -v * g, -v * b}}};
}

/// The way back.
constexpr Weights ToRgbWeights(const LumaWeights& of, const YuvRange& range) {
  const double unit = kLumaUnit, r = of.red / unit, g = of.green / unit, b = of.blue / unit;
  const double y = 255. / range.luma, u = 2 * (1 - b) * 255 / range.chroma,
               v = 2 * (1 - r) * 255 / range.chroma;
  return {{{y, 0, v}, {y, -u * b / g, -v * r / g}, {y, u, 0}}};
}

constexpr i64 Scaled(double weight, int bits) {
  const double scaled = weight * static_cast<double>(i64{1} << bits);
  return static_cast<i64>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

/// Weights in units of 2^-bits. A sum rounds to (sum + half - tie) >> bits: the tie is more than
/// what the weights' own roundings make of a sum half-way between two integers, and less than what
/// keeps any other sum from half-way. That so many bits leave room for such a tie is luck, which
/// trying all colours in exact fractions has shown.
template <typename Weight, int bits>
struct Matrix {
  static constexpr Weight kHalf = Weight{1} << (bits - 1);

  std::array<Weight, 3> rows[3];
  Weight tie;

  constexpr Matrix(const Weights& weights, Weight ofTie) : rows(), tie(ofTie) {
    for (size_t i = 0; i < 9; ++i)
      rows[i / 3][i % 3] = static_cast<Weight>(Scaled(weights[i / 3][i % 3], bits));
  }

  constexpr Colour operator()(const Colour& colour) const {
    Colour product = {};
    for (size_t i = 0; i < 3; ++i) {
      const auto& row = rows[i];
      const i64 sum = i64{row[0]} * colour[0] + i64{row[1]} * colour[1] + i64{row[2]} * colour[2];
      product[i] = static_cast<i32>((sum + (kHalf - tie)) >> bits);
    }
    return product;
  }
};

/// Weights of 32 bits, which vectors multiply by halves.
constexpr int kWeightBits = 29;
using NarrowMatrix = Matrix<i32, kWeightBits>;
using WideMatrix = Matrix<i64, 46>;

/// A space's rule.
template <typename BackMatrix>
struct Yuv {
  YuvRange range;
  NarrowMatrix fromRgb;  // to Y above black, and U and V around neutral
  BackMatrix toRgb;      // from these

  constexpr Colour FromRgb(const Colour& rgb) const {
    const auto [y, u, v] = fromRgb(rgb);
    return {y + range.black, u + range.neutral, v + range.neutral};
  }
  constexpr Colour ToRgb(const Colour& colour) const {
    const auto [y, u, v] = colour;
    Colour rgb = toRgb({y - range.black, u - range.neutral, v - range.neutral});
    for (i32& channel : rgb) channel = std::clamp(channel, 0, 255);
    return rgb;
  }
};

/// The space of numbers of 8 or 10 bits.
template <typename BackMatrix, int bits, i32 backTie>
constexpr Yuv<BackMatrix> MakeYuv(u32 matrix, u32 range) {
  const LumaWeights& of = kLumaWeights[matrix];
  const YuvRange in = RangeOf(range, bits);
  return {in, {FromRgbWeights(of, in), 256}, {ToRgbWeights(of, in), backTie}};
}
using Yuv8 = Yuv<NarrowMatrix>;
using Yuv10 = Yuv<WideMatrix>;
constexpr Yuv8 MakeYuv8(u32 matrix, u32 range) {
  return MakeYuv<NarrowMatrix, 8, 37>(matrix, range);
}
constexpr Yuv10 MakeYuv10(u32 matrix, u32 range) {
  return MakeYuv<WideMatrix, 10, 4096>(matrix, range);
}

/// What `make` makes of each matrix and range.
template <auto make>
constexpr std::array<decltype(make(0, 0)), 2> kSpaces[] = {
    {make(0, 0), make(0, 1)}, {make(1, 0), make(1, 1)}, {make(2, 0), make(2, 1)}};

}  // namespace pictavo::colour

#endif  // PICTAVO_CPU_COLOUR_YUV_H_
