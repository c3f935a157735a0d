// What the two passes of the box blur share: windows that slide along a stretch of a row or column
// and end with the picture.
#include "common.hlsli"

cbuffer CSParam : register(b0) {
  uint uBlurRadius;
  uint uWidth;
  uint uHeight;
  uint uDummy;
};

// How many pixels one thread slides along: so many that filling its first window costs no more.
uint Stretch() { return max(uBlurRadius, 128u); }

// The first pixel of the window around a place.
uint WindowBegin(uint place) { return place - min(place, uBlurRadius); }

// How many pixels of a line that long lie in the window around a place.
uint WindowSize(uint place, uint length) {
  return min(place + uBlurRadius, length - 1) - WindowBegin(place) + 1;
}
