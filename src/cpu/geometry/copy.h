// Copying a part of a picture: slot 75, behind the method of the same name, which states its rule;
// `level` chooses the build.
#ifndef PICTAVO_CPU_GEOMETRY_COPY_H_
#define PICTAVO_CPU_GEOMETRY_COPY_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 CopyRectangle(i32 level, const ImageDesc* src, ImageDesc* dst, const i32* rect) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_COPY_H_
