// Channels of pixels and planes of bytes: slots 59, 94, 106, 109 and 110. Each function is the
// operation behind the method of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_COLOUR_CHANNELS_H_
#define PICTAVO_CPU_COLOUR_CHANNELS_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 SetAlphaPlane(i32 level, u8* pixels, const u8* plane, u32 width, u32 height) noexcept;

u32 ExtractPlane(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                 i32 dstPitch, u32 channel) noexcept;

u32 ShuffleChannels(i32 level, u8* dst, const u8* src, i64 count, u32 b, u32 g, u32 r,
                    u32 a) noexcept;

u32 ExpandPlaneScaled(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                      i32 dstPitch, f32 gain) noexcept;

u32 ExpandPlane(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                i32 dstPitch) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_COLOUR_CHANNELS_H_
