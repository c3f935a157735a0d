// The colour spaces of slots 88 to 92, and the conversion of one colour: the rule that pictures
// follow too.
//
// A colour is three numbers in the order of its space's name: red, green, blue; Y, U, V; hue,
// saturation, value. Results are the exact ones, rounded to the nearest integer; a tie, half-way
// between two, takes the lower one.
#ifndef PICTAVO_MODULES_COLOUR_SPACE_H_
#define PICTAVO_MODULES_COLOUR_SPACE_H_

#include <array>

#include "pictavo/pictavo.h"

namespace pictavo::colour {

using Colour = std::array<i32, 3>;

/// A matrix with one row for each number that it makes.
///
/// A sum of weighted numbers is in units of 2^-kWeightBits and rounds to (sum + half - tie) >>
/// kWeightBits. The tie is more than what the weights' own roundings make of a sum half-way between
/// two integers, and less than what keeps any other sum from half-way. That this many bits leave
/// room for such a tie is luck, which trying all 2^24 colours of every space has shown.
struct Matrix {
  std::array<i32, 3> rows[3];
  i32 tie;
};
constexpr int kWeightBits = 29;
constexpr i32 kHalf = 1 << (kWeightBits - 1);

struct YuvMatrices {
  Matrix fromRgb;  // to Y above black, and U and V around 0
  Matrix toRgb;    // from these
  i32 black;       // Y of black
};
constexpr i32 kNeutral = 128;  // U and V of greys

struct Space {
  u32 model;
  const YuvMatrices* yuv;  // of PICTAVO_COLOR_YUV
  i32 turn;                // of the models with a hue: the units of a full turn
};

/// The space that the options of a call name; false when there is none.
bool FindSpace(u32 model, u32 matrix, u32 range, Space* space);

/// Every number of the colour is 0 … 255; a hue may be any.
Colour FromRgb(const Space& space, const Colour& rgb);
Colour ToRgb(const Space& space, const Colour& colour);

}  // namespace pictavo::colour

#endif  // PICTAVO_MODULES_COLOUR_SPACE_H_
