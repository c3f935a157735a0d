// The colour spaces of slots 88 to 92, and the conversion of one colour: the rule that pictures
// follow too.
//
// A colour is three numbers in the order of its space's name: red, green, blue; Y, U, V; hue,
// saturation, value. Results are the exact ones, rounded to the nearest integer; a tie, half-way
// between two, takes the lower one.
#ifndef PICTAVO_MODULES_COLOUR_SPACE_H_
#define PICTAVO_MODULES_COLOUR_SPACE_H_

#include "cpu/colour/yuv.h"

namespace pictavo::colour {

struct Space {
  u32 model;
  const Yuv8* yuv;  // of PICTAVO_COLOR_YUV
  i32 turn;         // of the models with a hue: the units of a full turn
};

/// The space that the options of a call name; false when there is none.
bool FindSpace(u32 model, u32 matrix, u32 range, Space* space);

/// Every number of the colour is 0 … 255; a hue may be any.
Colour FromRgb(const Space& space, const Colour& rgb);
Colour ToRgb(const Space& space, const Colour& colour);

}  // namespace pictavo::colour

#endif  // PICTAVO_MODULES_COLOUR_SPACE_H_
