// Every operation on pictures in the processor's memory.
#ifndef PICTAVO_CPU_OPERATIONS_H_
#define PICTAVO_CPU_OPERATIONS_H_

#include "cpu/blending/blend.h"
#include "cpu/blending/layer.h"
#include "cpu/blending/layer_scaled.h"
#include "cpu/blending/transition.h"
#include "cpu/colour/channels.h"
#include "cpu/colour/convert.h"
#include "cpu/colour/frames.h"
#include "cpu/colour/grading.h"
#include "cpu/drawing/draw.h"
#include "cpu/filters/blur.h"
#include "cpu/filters/convolve.h"
#include "cpu/filters/gauss.h"
#include "cpu/filters/matte.h"
#include "cpu/filters/motion_blur.h"
#include "cpu/filters/pixelate.h"
#include "cpu/geometry/border.h"
#include "cpu/geometry/copy.h"
#include "cpu/geometry/flip.h"
#include "cpu/geometry/resize.h"
#include "cpu/geometry/warp.h"
#include "cpu/measuring/histogram.h"
#include "cpu/measuring/measure.h"

#endif  // PICTAVO_CPU_OPERATIONS_H_
