// Blocks of one colour: slot 69, behind the method of the same name, which states its rule; `level`
// chooses the build.
#ifndef PICTAVO_CPU_FILTERS_PIXELATE_H_
#define PICTAVO_CPU_FILTERS_PIXELATE_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 PixelateRegion(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, const i32* rect,
                   u32 block) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_PIXELATE_H_
