// What the demo's parts share. A part shows one family of operations: it runs each through
// Demo::Examine and returns columns of its sheet.
#ifndef PICTAVO_SAMPLES_HOST_DEMO_DEMO_H_
#define PICTAVO_SAMPLES_HOST_DEMO_DEMO_H_

#include <functional>
#include <string>
#include <vector>

#include "base/picture.h"
#include "base/text.h"
#include "demo/contact_sheet.h"
#include "pictavo/pictavo_host.h"

namespace host {

/// An operation as the demo runs it.
struct Examined {
  std::string name;
  int slot;
  Picture before;  // what the destination holds before each run
  /// Writes the destination.
  std::function<pictavo::Outcome(pictavo::IPictavo6* object, Picture* dst)> run;
  /// What a level must give. Without one, the bytes of the portable build.
  std::function<Picture(i32 level)> expected = {};
};

class Demo {
 public:
  /// Two photographs, opaque and of one size.
  Demo(pictavo::IPictavo6* object, Picture background, Picture layer);

  /// Runs an operation at each level that the processor has, times it, compares what the levels
  /// give, and prints all that as a line. Returns what the highest level gives. Throws Failure when
  /// the library refuses.
  Picture Examine(const Examined& operation);

  void PrintHeading() const;

  pictavo::IPictavo6* const object;
  const i32 highestLevel;
  const Picture background;
  const Picture layer;

  int examined = 0;
  int different = 0;  // operations that do not give what they must

 private:
  Progress progress_;
};

/// The median time of a call in nanoseconds. `prepare` runs before each, outside the time.
double MedianTime(const std::function<void()>& prepare, const std::function<void()>& run);

/// 0 below `from`, 1 above `to`, smooth between.
double SmoothStep(double from, double to, double value);

/// Makes a picture clearer by a function of the column and row, 0 … 1.
template <typename Alpha>
void FadeOut(Picture* picture, Alpha alpha) {
  for (i32 y = 0; y < picture->height; ++y) {
    for (i32 x = 0; x < picture->width; ++x) {
      u8* pixel = picture->At(x, y);
      pixel[3] = static_cast<u8>(alpha(x, y) * pixel[3] + 0.5);
    }
  }
}

/// A disc of the picture's middle with a soft edge.
Picture SoftDisc(Picture picture);

// The parts, each in its own file.

std::vector<SheetColumn> ShowBlending(Demo& demo);
std::vector<SheetColumn> ShowBlur(Demo& demo);
std::vector<SheetColumn> ShowConversions(Demo& demo);
std::vector<SheetColumn> ShowFrames(Demo& demo);
std::vector<SheetColumn> ShowGauss(Demo& demo);
std::vector<SheetColumn> ShowGrading(Demo& demo);
std::vector<SheetColumn> ShowFilters(Demo& demo);
std::vector<SheetColumn> ShowKeying(Demo& demo);
std::vector<SheetColumn> ShowLayers(Demo& demo);
std::vector<SheetColumn> ShowMotionBlur(Demo& demo);
std::vector<SheetColumn> ShowOpenCL(Demo& demo);  // nothing without a device
std::vector<SheetColumn> ShowChromaKey(Demo& demo);
/// Without columns where there is no device.
std::vector<SheetColumn> ShowGpu(Demo& demo);
std::vector<SheetColumn> ShowResizing(Demo& demo);
std::vector<SheetColumn> ShowWarps(Demo& demo);
std::vector<SheetColumn> ShowTransitions(Demo& demo);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_DEMO_DEMO_H_
