// Channels of pixels and planes of bytes: slot 110. Each function is the operation behind the
// method of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_COLOUR_CHANNELS_H_
#define PICTAVO_CPU_COLOUR_CHANNELS_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 ExpandPlane(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                i32 dstPitch) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_COLOUR_CHANNELS_H_
