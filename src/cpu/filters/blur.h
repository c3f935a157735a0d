// Three box blurs: slot 87, behind the method of the same name, which states its rule; `level`
// chooses the build.
#ifndef PICTAVO_CPU_FILTERS_BLUR_H_
#define PICTAVO_CPU_FILTERS_BLUR_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 GaussianBlurBox3(i32 level, u8* image, i32 width, i32 height, i32 pitch, f32 radius) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_BLUR_H_
