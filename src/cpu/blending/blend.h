// Alpha blending and compositing: slots 2 to 11, 36 and 37. Each function is the operation behind
// the method of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_BLENDING_BLEND_H_
#define PICTAVO_CPU_BLENDING_BLEND_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 BlendOverWithOpacityRamp(i32 level, u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                             i32 srcPitch, i32 flip, f32 opacityStart, f32 opacityEnd) noexcept;
u32 BlendOverPacked(i32 level, u8* dst, const u8* src, i32 width, i32 height) noexcept;
u32 BlendOverPitched(i32 level, u8* dst, const u8* src, i32 width, i32 height, i32 pitch) noexcept;

u32 BlendPremultipliedWithOpacityRamp(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                      i32 dstPitch, i32 srcPitch, i32 flip, f32 opacityStart,
                                      f32 opacityEnd) noexcept;
u32 BlendPremultipliedPacked(i32 level, u8* dst, const u8* src, i32 width, i32 height) noexcept;
u32 BlendPremultipliedPitched(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                              i32 pitch) noexcept;

u32 CompositePremultipliedWithOpacityRamp(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                          i32 dstPitch, i32 srcPitch, i32 flip, f32 opacityStart,
                                          f32 opacityEnd) noexcept;
u32 CompositePremultipliedPitched(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                  i32 pitch) noexcept;
u32 CompositePremultipliedPacked(i32 level, u8* dst, const u8* src, i32 width, i32 height) noexcept;

u32 BlendOverWithOpacity(i32 level, u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                         i32 srcPitch, u8 opacity, u32 backdrop) noexcept;
u32 BlendOverWithOpacityRampAndAlpha(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                     i32 dstPitch, i32 srcPitch, u8 opacity, u32 backdrop, i32 flip,
                                     f32 opacityStart, f32 opacityEnd) noexcept;
u32 BlendOverWithOpacityRampKeepAlpha(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                      i32 dstPitch, i32 srcPitch, u8 opacity, u32 backdrop,
                                      i32 flip, f32 opacityStart, f32 opacityEnd) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BLENDING_BLEND_H_
