// Drawing in one colour: slots 48, 51, 52 and 77. Each function is the operation behind the method
// of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_DRAWING_DRAW_H_
#define PICTAVO_CPU_DRAWING_DRAW_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 DrawRectOutline(u32* buffer, u32 pitch, const i32* rect, u32 colour) noexcept;
u32 FillRectangle(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, const i32* rect,
                  u32 colour) noexcept;
u32 FillRectangleSmooth(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, f32 left, f32 top,
                        f32 right, f32 bottom, u32 colour) noexcept;
u32 FillSolidColor(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, u32 colour) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_DRAWING_DRAW_H_
