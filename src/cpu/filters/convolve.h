// Filters of whole-number weights: slot 72, behind the method of the same name, which states its
// rule; `level` chooses the build.
#ifndef PICTAVO_CPU_FILTERS_CONVOLVE_H_
#define PICTAVO_CPU_FILTERS_CONVOLVE_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 ConvolvePicture(i32 level, const ImageDesc* src, ImageDesc* dst,
                    const ConvolveParam* param) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_CONVOLVE_H_
