// Colour conversion: slots 88 to 92. Each function is the operation behind the method of the same
// name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_MODULES_COLOUR_H_
#define PICTAVO_MODULES_COLOUR_H_

#include "pictavo/pictavo.h"

namespace pictavo::colour {

u32 ConvertPictureFromRGB(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                          i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept;
u32 ConvertPictureToRGB(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                        i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept;
u32 ConvertColorFromRGB(i32 r, i32 g, i32 b, u32* first, u32* second, u32* third, u32 model,
                        u32 matrix, u32 range) noexcept;
u32 ConvertColorToRGB(i32 first, i32 second, i32 third, u32* r, u32* g, u32* b, u32 model,
                      u32 matrix, u32 range) noexcept;
u32 ConvertPixelFromRGB(const u8* pixel, u32* first, u32* second, u32* third, u32 model, u32 matrix,
                        u32 range) noexcept;

}  // namespace pictavo::colour

#endif  // PICTAVO_MODULES_COLOUR_H_
