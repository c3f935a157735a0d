// Histograms: pictavo-host histogram, and the plot that the demo shows too.
#include "commands/histogram.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "base/commands.h"
#include "base/text.h"

namespace host {
namespace {

using pictavo::PICTAVO_S_OK;

/// Where a curve of counts runs in a plot.
class Curve {
 public:
  Curve(const Bins& bins, u32 top, i32 width, i32 height)
      : bins_(bins), top_(top), width_(width), height_(height) {}

  /// Height in a column, in pixels from the bottom.
  double Height(i32 x) const {
    const double place = 255.0 * x / std::max(1, width_ - 1);
    const size_t left = static_cast<size_t>(place), right = std::min<size_t>(left + 1, 255);
    const double part = place - static_cast<double>(left);
    const double count = bins_[left] * (1 - part) + bins_[right] * part;
    return std::min(1.0, count / top_) * height_;
  }

  /// How much of a pixel lies under the curve, 0 … 1.
  double Under(i32 x, i32 y) const { return std::clamp(Height(x) - (height_ - 1 - y), 0.0, 1.0); }

  /// How much of a pixel a line along the curve covers.
  double Line(i32 x, i32 y) const {
    const double middle = height_ - Height(x), before = height_ - Height(std::max(0, x - 1));
    const double from = std::min(middle, before) - 0.75, to = std::max(middle, before) + 0.75;
    return std::clamp(std::min(to, y + 1.0) - std::max<double>(from, y), 0.0, 1.0);
  }

 private:
  const Bins& bins_;
  const double top_;
  const i32 width_, height_;
};

/// The count at the top of a plot. The highest few, where clipped pictures pile up, may leave it.
u32 TopOf(const Histogram& histogram) {
  std::vector<u32> counts;
  for (const Bins& bins : histogram.colours) counts.insert(counts.end(), bins.begin(), bins.end());
  const auto high = counts.end() - static_cast<i64>(counts.size() / 50);
  std::nth_element(counts.begin(), high, counts.end());
  return *high + *high / 4 + 1;
}

void PrintBins(const Histogram& histogram) {
  std::puts("value       blue      green        red brightness");
  for (size_t value = 0; value < 256; ++value) {
    std::printf("%5zu %10u %10u %10u %10u\n", value, histogram.colours[0][value],
                histogram.colours[1][value], histogram.colours[2][value],
                histogram.brightness[value]);
  }
}

int RunHistogram(pictavo::Library& library, const Arguments& arguments) {
  bool text = false;
  const Arguments files = TakeFiles(2, "histogram takes two files, PICTURE OUT", arguments,
                                    {{"--text", [&](Parser&) { text = true; }}});
  const Picture picture = ReadPicture(files[0]);
  const Histogram histogram(library.get(), picture);
  WritePicture(files[1], Plot(histogram, 1024, 512));
  if (text) PrintBins(histogram);
  std::printf("%s: histogram of %d x %d pixels, mean brightness %.2f\n", Utf8(files[1]).c_str(),
              picture.width, picture.height, static_cast<double>(histogram.meanBrightness));
  return 0;
}

}  // namespace

Histogram::Histogram(pictavo::IPictavo6* object, const Picture& picture) {
  const u32 width = static_cast<u32>(picture.width), height = static_cast<u32>(picture.height),
            pitch = static_cast<u32>(picture.pitch());
  const u8* pixels = picture.pixels.data();
  constexpr u32 kBlueGreenRed[] = {0, 1, 2}, kMeanOfColours = 1;
  bool done = true;
  for (size_t c = 0; c < 3; ++c) {
    done &= object->ComputeHistogram(pixels, width, height, pitch, colours[c].data(), 256,
                                     kBlueGreenRed[c]) == PICTAVO_S_OK;
  }
  done &= object->ComputeLumaHistogram(pixels, width, height, pitch, brightness.data(), 256,
                                       kMeanOfColours) == PICTAVO_S_OK;

  Picture grey(picture.width, picture.height);
  done &= object->ConvertBGRAToGray(pixels, picture.width, picture.height, picture.pitch(),
                                    reinterpret_cast<u32*>(grey.pixels.data()),
                                    grey.pitch()) == PICTAVO_S_OK;
  std::vector<u8> plane(grey.pixels.size() / 4);
  for (size_t i = 0; i < plane.size(); ++i) plane[i] = grey.pixels[4 * i];
  done &= object->ComputeMean(plane.data(), picture.width, picture.height, &meanBrightness) ==
          PICTAVO_S_OK;
  if (!done) throw Failure("the library refused to count the picture");
}

Picture Plot(const Histogram& histogram, i32 width, i32 height) {
  constexpr double kGround = 0x1D, kUnder = 0x78, kLine = 0x50;
  constexpr i32 kQuarters = 4;
  const u32 top = TopOf(histogram);
  Picture plot(width, height);
  for (i32 y = 0; y < height; ++y) {
    for (i32 x = 0; x < width; ++x) {
      const bool grid = x > 0 && x * kQuarters / width != (x - 1) * kQuarters / width;
      const double white = 150 * Curve(histogram.brightness, top, width, height).Line(x, y);
      u8* pixel = plot.At(x, y);
      for (size_t c = 0; c < 3; ++c) {
        const Curve curve(histogram.colours[c], top, width, height);
        const double light = kGround + (grid ? 24 : 0) + kUnder * curve.Under(x, y) +
                             kLine * curve.Line(x, y) + white;
        pixel[c] = static_cast<u8>(std::min(255.0, light));
      }
      pixel[3] = 255;
    }
  }
  return plot;
}

const Command kHistogramCommand = {
    L"histogram",
    "  pictavo-host histogram PICTURE OUT [--text]\n"
    "      Draws how often each value of blue, green, red and their mean occurs.\n"
    "      --text               prints the numbers too\n",
    RunHistogram};

}  // namespace host
