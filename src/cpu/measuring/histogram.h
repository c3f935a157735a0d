// Counts and means of bytes: slots 43, 44 and 82. Each function is the operation behind the method
// of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_MEASURING_HISTOGRAM_H_
#define PICTAVO_CPU_MEASURING_HISTOGRAM_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 ComputeHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins, i32 binCount,
                     u32 selector) noexcept;
u32 ComputeLumaHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
                         i32 binCount, u32 selector) noexcept;
u32 ComputeMean(i32 level, const u8* buffer, i32 width, i32 height, f32* mean) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_MEASURING_HISTOGRAM_H_
