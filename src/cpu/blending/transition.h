// Ways from one picture to another: slot 70, behind the method of the same name, which states its
// rule; `level` chooses the build.
#ifndef PICTAVO_CPU_BLENDING_TRANSITION_H_
#define PICTAVO_CPU_BLENDING_TRANSITION_H_

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

u32 ApplyTransition(i32 level, ImageDesc* dst, const ImageDesc* from, const ImageDesc* to,
                    const TransitionParam* param) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BLENDING_TRANSITION_H_
