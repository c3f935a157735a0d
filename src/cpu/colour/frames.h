// Packed frames as decoders deliver them: slots 54 and 93. Each function is the operation behind
// the method of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_COLOUR_FRAMES_H_
#define PICTAVO_CPU_COLOUR_FRAMES_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 ConvertFrameToBGRA(i32 level, const u8* src, i32 width, i32 height, u8* dst, i32 dstPitch,
                       u32 format) noexcept;
u32 ConvertBGRAToFrame(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                       u32 format) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_COLOUR_FRAMES_H_
