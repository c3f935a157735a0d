// Blurs: slot 87. The method of the same name in pictavo.h says what each does.
#ifndef PICTAVO_CPU_FILTERS_BLUR_H_
#define PICTAVO_CPU_FILTERS_BLUR_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 GaussianBlurBox3(i32 level, u8* image, i32 width, i32 height, i32 pitch, f32 radius) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_BLUR_H_
