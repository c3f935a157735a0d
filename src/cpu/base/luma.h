// The nearest luma by the weights of BT.709.
#ifndef PICTAVO_CPU_BASE_LUMA_H_
#define PICTAVO_CPU_BASE_LUMA_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

constexpr u32 kLumaOfBlue = 19, kLumaOfGreen = 183, kLumaOfRed = 54;  // of 256

inline u32 LumaOf(const u8* pixel) {
  return (pixel[0] * kLumaOfBlue + pixel[1] * kLumaOfGreen + pixel[2] * kLumaOfRed + 128) >> 8;
}

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BASE_LUMA_H_
