// Resizing: slots 29 to 31, 55, 57, 58 and 60 to 62. Each function is the operation behind the
// method of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_GEOMETRY_RESIZE_H_
#define PICTAVO_CPU_GEOMETRY_RESIZE_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 ResizeBox16AlphaWeighted(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                             const u8* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                             i32 forceOpaque) noexcept;
u32 ResizeBox16(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept;

u32 ResizeBilinear16(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                     i32 srcWidth, i32 srcHeight, i32 srcPitch, i32 forceOpaque,
                     i32 fullSize) noexcept;
u32 ResizeBilinear16KeepAlpha(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                              const u8* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                              i32 fullSize) noexcept;
u32 ResizeBilinear7(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                    i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept;

u32 ResizeNearest32(i32 level, u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u32* src,
                    i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept;
u32 ResizeNearestInRect(i32 level, u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                        const u32* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                        const i32 rect[4]) noexcept;

u32 ResizeFiltered(i32 level, const ImageDesc* src, ImageDesc* dst,
                   const ResizeParam* param) noexcept;
u32 ResizeFilteredRegion(i32 level, const ImageDesc* src, ImageDesc* dst, const f32 rect[4],
                         const ResizeParam* param) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_RESIZE_H_
