// Turning, tilting and swirling pictures: slots 67, 79 and 81. Each function is the operation
// behind the method of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_GEOMETRY_WARP_H_
#define PICTAVO_CPU_GEOMETRY_WARP_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 RotatePicture(i32 level, const ImageDesc* src, ImageDesc* dst,
                  const RotateParam* param) noexcept;

/// Where a rotation takes the first pixel from, and how much farther each column and row, in 1/2^32
/// of a pixel. What rounds a place to what the filter knows is added to the first already.
struct RotationSteps {
  i64 x, y;
  i64 xAcross, xDown, yAcross, yDown;
};

/// Those of a destination's size, for who samples elsewhere. @return false when RotatePicture would
/// refuse the parameters for it
bool FindRotationSteps(const RotateParam& param, i64 width, i64 height, RotationSteps* steps);

u32 SwirlPicture(i32 level, const ImageDesc* src, ImageDesc* dst, const SwirlParam* param) noexcept;
u32 TiltPicture(i32 level, const ImageDesc* src, ImageDesc* dst, const TiltParam* param) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_WARP_H_
