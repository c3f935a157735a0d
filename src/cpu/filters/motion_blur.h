// Motion blur: slots 63 and 64, which state the rule.
#ifndef PICTAVO_CPU_FILTERS_MOTION_BLUR_H_
#define PICTAVO_CPU_FILTERS_MOTION_BLUR_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 MotionBlur(i32 level, const ImageDesc* src, const ImageDesc* dst,
               const MotionBlurParam* param) noexcept;
u32 GetMotionBlurDstSize(const ImageDesc* src, ImageDesc* dst, const MotionBlurParam* param,
                         i32* offsetX, i32* offsetY) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_MOTION_BLUR_H_
