// Numbers that tell about pictures and histograms: slots 83 to 85. Each function is the operation
// behind the method of the same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_MEASURING_MEASURE_H_
#define PICTAVO_CPU_MEASURING_MEASURE_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 FindThreshold(const f32* values, u32 count, u32* index) noexcept;
u32 MeasurePicture(i32 level, const u8* buffer, i32 width, i32 height, i32 pitch, i32 channel,
                   u32 measure, f32* result) noexcept;
u32 FindBounds(i32 level, const u8* buffer, i32 width, i32 height, u32 pitch, u32 channel,
               u32 threshold, u32* count, PixelBounds* bounds) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_MEASURING_MEASURE_H_
