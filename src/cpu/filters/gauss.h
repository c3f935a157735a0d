// Gaussians and what is made with them: slots 49 and 56. The methods of the same names in
// pictavo.h say what they do; `level` chooses the build.
#ifndef PICTAVO_CPU_FILTERS_GAUSS_H_
#define PICTAVO_CPU_FILTERS_GAUSS_H_

#include "cpu/base/picture.h"

namespace pictavo::cpu {

u32 GaussianBlur(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, f32 sigmaX, f32 sigmaY,
                 u32 edges) noexcept;
u32 SharpenPicture(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, f32 amount,
                   f32 threshold, f32 radius) noexcept;

namespace gauss {

inline constexpr f32 kMostSigma = 1000;

/// Blurs a plane of bytes, whose edges go on. Its rows have room for whole pixels of four bytes.
u32 BlurPlane(i32 level, const Picture& plane, f32 sigma) noexcept;

}  // namespace gauss
}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_GAUSS_H_
