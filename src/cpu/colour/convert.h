// Premultiplication and colour conversion: slots 14 to 21, 34, 35, 46, 50 and 95. Each function is
// the operation behind the method of the same name, which states its rule; `level` chooses the
// build.
#ifndef PICTAVO_CPU_COLOUR_CONVERT_H_
#define PICTAVO_CPU_COLOUR_CONVERT_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

void ConvertRGBToYUVPixel(i32 level, i32 r, i32 g, i32 b, u32* y, u32* u, u32* v) noexcept;
void ConvertYUVToRGBPixel(i32 level, i32 y, i32 u, i32 v, u32* r, u32* g, u32* b) noexcept;

u32 UnpremultiplyPitched(i32 level, u8* buffer, i32 width, i32 height, i32 pitch) noexcept;
u32 UnpremultiplyPacked(i32 level, u8* buffer, i32 width, i32 height) noexcept;
u32 PremultiplyPitched(i32 level, u8* buffer, i32 width, i32 height, i32 pitch) noexcept;
u32 PremultiplyPacked(i32 level, u8* buffer, i32 width, i32 height) noexcept;

u32 ConvertBGRAToYUVA(i32 level, const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                      i32 dstPitch) noexcept;

void ConvertRGBToYUV4Pixels(const u8* pixels, i32* y, i32* u, i32* v) noexcept;
/// Slot 35 below level 3.
void ConvertRGBToYUVPixelsPortable(const u8* pixels, i32* y, i32* u, i32* v) noexcept;

u32 ConvertBGRAToGray(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u32* dst,
                      i32 dstPitch) noexcept;

u32 ConvertYUVAToBGRA(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                      i32 dstPitch) noexcept;

u32 ConvertHSLToRGB(i32 hue, u8 saturation, u8 lightness, u8* r, u8* g, u8* b) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_COLOUR_CONVERT_H_
