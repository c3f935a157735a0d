// Layers scaled into a rectangle: slot 96. The function is the operation behind the method of the
// same name, which states its rule; `level` chooses the build.
#ifndef PICTAVO_CPU_BLENDING_LAYER_SCALED_H_
#define PICTAVO_CPU_BLENDING_LAYER_SCALED_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 BlendLayerScaled(i32 level, ImageDesc* dst, const ImageDesc* src, const BlendParam* param,
                     const f32* rect) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BLENDING_LAYER_SCALED_H_
