// Border extension: slots 71 and 107. Each function is the operation behind the method of the same
// name, which states its rule.
#ifndef PICTAVO_CPU_GEOMETRY_BORDER_H_
#define PICTAVO_CPU_GEOMETRY_BORDER_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 ExtendBoundary(const ImageDesc* image, u32 border) noexcept;
u32 ExtendBoundaryTransparent(const ImageDesc* image, u32 border) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_BORDER_H_
