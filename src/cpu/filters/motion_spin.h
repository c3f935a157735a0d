// The spin of motion blur.
#ifndef PICTAVO_CPU_FILTERS_MOTION_SPIN_H_
#define PICTAVO_CPU_FILTERS_MOTION_SPIN_H_

#include "cpu/filters/motion.h"

namespace pictavo::cpu {

/// Blurs about the centre of the destination, which holds the source in its middle.
u32 BlurSpin(i32 level, const Source& src, const Picture& dst, const Samples& samples);

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_MOTION_SPIN_H_
