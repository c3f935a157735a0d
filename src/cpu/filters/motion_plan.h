// Direction and zoom of motion blur: a sample's column depends on the destination's column alone,
// its row on the row alone. Rows are packed; the records' pitches do not count.
#ifndef PICTAVO_CPU_FILTERS_MOTION_PLAN_H_
#define PICTAVO_CPU_FILTERS_MOTION_PLAN_H_

#include "cpu/filters/motion.h"

namespace pictavo::cpu {

/// A motion's way, in columns and rows.
struct Direction {
  explicit Direction(const MotionBlurParam& param);

  f32 cos, sin;
};

/// Blurs along a direction of so many places.
u32 BlurDirection(i32 level, const Source& src, const Picture& dst, const Samples& samples,
                  i32 places, const Direction& direction);

/// Blurs towards the centre; the source lies inside a border of so many pixels.
u32 BlurZoom(i32 level, const Source& src, const Picture& dst, const Samples& samples, i32 border);

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_MOTION_PLAN_H_
