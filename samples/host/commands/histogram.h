#ifndef PICTAVO_SAMPLES_HOST_COMMANDS_HISTOGRAM_H_
#define PICTAVO_SAMPLES_HOST_COMMANDS_HISTOGRAM_H_

#include <array>

#include "base/picture.h"

namespace host {

using Bins = std::array<u32, 256>;

/// How often each value occurs in a picture.
struct Histogram {
  /// Counted by the library. Throws Failure when it refuses.
  Histogram(pictavo::IPictavo6* object, const Picture& picture);

  std::array<Bins, 3> colours;  // blue, green, red
  Bins brightness;              // the mean of the three
  f32 meanBrightness;
};

/// Draws the colours' curves in their colours and the brightness in white. The few highest
/// counts may leave the scale.
Picture Plot(const Histogram& histogram, i32 width, i32 height);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_COMMANDS_HISTOGRAM_H_
