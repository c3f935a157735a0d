// Flipping: slot 65. The function is the operation behind the method of the same name, which states
// its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_GEOMETRY_FLIP_H_
#define PICTAVO_CPU_GEOMETRY_FLIP_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 FlipPicture(i32 level, const ImageDesc* src, ImageDesc* dst, u32 mode) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_FLIP_H_
