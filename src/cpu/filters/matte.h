// Mattes: slots 78 and 80. The methods of the same names in pictavo.h say what they do; `level`
// chooses the build.
#ifndef PICTAVO_CPU_FILTERS_MATTE_H_
#define PICTAVO_CPU_FILTERS_MATTE_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 AdjustMatte(i32 level, ImageDesc* picture, const MatteParam* param) noexcept;
u32 ApplyMatte(i32 level, ImageDesc* picture, const ImageDesc* matte, u32 mode) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_MATTE_H_
