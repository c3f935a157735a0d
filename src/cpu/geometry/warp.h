// Turning, tilting and swirling pictures: slots 67, 79 and 81. Each function is the operation
// behind the method of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_GEOMETRY_WARP_H_
#define PICTAVO_CPU_GEOMETRY_WARP_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 RotatePicture(i32 level, const ImageDesc* src, ImageDesc* dst,
                  const RotateParam* param) noexcept;
u32 SwirlPicture(i32 level, const ImageDesc* src, ImageDesc* dst, const SwirlParam* param) noexcept;
u32 TiltPicture(i32 level, const ImageDesc* src, ImageDesc* dst, const TiltParam* param) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_WARP_H_
