// Tone and colour: slots 53, 66 and 99. Each function is the operation behind the method of the
// same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_COLOUR_GRADING_H_
#define PICTAVO_CPU_COLOUR_GRADING_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 AdjustLevels(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, u32 channels,
                 const LevelsParam* param) noexcept;

u32 ApplyColorLut(i32 level, const ImageDesc* src, ImageDesc* dst,
                  const ColorLutParam* param) noexcept;

u32 AdjustColor(i32 level, u8* buffer, i32 width, i32 height, i32 pitch,
                const ColorParam* param) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_COLOUR_GRADING_H_
