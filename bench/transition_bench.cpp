// Transitions and convolutions, beside other libraries where they are installed. Theirs mix every
// channel alike; one filters planes.
#include <algorithm>
#include <map>

#include "av_filter.h"
#include "bench.h"
#include "cpu/blending/transition.h"
#include "cpu/filters/convolve.h"

#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {
namespace {

/// Two pictures, one after the other.
const Bytes& Pair(const Size& size, const std::string& alpha) {
  static std::map<std::string, Bytes> made;
  Bytes& both = made[size.name() + alpha];
  if (!both.empty()) return both;
  both = Pixels(size, alpha);
  both.insert(both.end(), Pixels(size, alpha).rbegin(), Pixels(size, alpha).rend());
  for (size_t i = both.size() / 2 + 3; i < both.size(); i += 4) both[i] = both[i - both.size() / 2];
  return both;
}

Run AvMix(const char* mode, const Size& size) {
  if (mode == nullptr) return {};
  return RunOf(std::string("[in0][in1]xfade=offset=0:duration=60:transition=") + mode, "gbrap",
               size, 2);
}

struct Moment {
  const char* name;
  const char* alpha;
  bool readsBoth;  // nearly everywhere
  TransitionParam param;
  const char* avMode = nullptr;
};

constexpr Moment kMoments[] = {
    {"70 fade", "opaque", true, {0, 0.4f, 0, 0, 0}, "fade"},
    {"70 fade", "soft", true, {0, 0.4f, 0, 0, 0}},
    {"70 dip to a colour", "opaque", false, {1, 0.2f, 0, 0, 0xFF102030}, "fadeblack"},
    {"70 wipe, hard", "opaque", false, {2, 0.5f, 0, 0, 0}, "wiperight"},
    {"70 wipe, soft by a tenth", "opaque", false, {2, 0.5f, 0.1f, 0, 0}, "smoothright"},
    {"70 wipe, soft by all", "opaque", true, {2, 0.5f, 1, 0, 0}, "smoothright"},
    {"70 wipe down, soft by all", "opaque", true, {2, 0.5f, 1, 90, 0}, "smoothdown"},
    {"70 wipe at an angle, hard", "opaque", false, {2, 0.5f, 0, 30, 0}, "diagtl"},
    {"70 wipe at an angle, soft by a tenth", "opaque", false, {2, 0.5f, 0.1f, 30, 0}, "diagtl"},
    {"70 wipe at an angle, soft by all", "opaque", true, {2, 0.5f, 1, 30, 0}, "diagtl"},
    {"70 iris, soft by a tenth", "opaque", false, {3, 0.5f, 0.1f, 0, 0}, "circleopen"},
    {"70 clock, soft by a tenth", "opaque", false, {4, 0.5f, 0.1f, 0, 0}, "radial"},
    {"70 blinds, soft by a tenth", "opaque", true, {5, 0.5f, 0.1f, 0, 0}},
    {"70 dissolve", "opaque", true, {6, 0.5f, 0, 0, 0}, "dissolve"},
    {"70 push", "opaque", false, {7, 0.5f, 0, 0, 0}, "slideright"},
};

#ifdef PICTAVO_BENCH_OPENCV
Run CvMix(const Moment& moment, const Size& size) {
  if (moment.param.mode != PICTAVO_TRANSITION_FADE) return {};
  return [=](u8* dst, const u8* src) {
    const auto picture = [&](const u8* pixels) {
      return cv::Mat(size.height, size.width, CV_8UC4, const_cast<u8*>(pixels));
    };
    cv::Mat to = picture(dst);
    cv::addWeighted(picture(src), 0.6, picture(src + 4 * size.pixels()), 0.4, 0, to);
  };
}
#endif

struct Weights {
  const char* name;
  ConvolveParam param;
  const char* avFilter = nullptr;
};

constexpr Weights kWeights[] = {
    {"72 sharpen, 3 x 3",
     {3, 0, 0, 0, {-1, -1, -1, -1, 9, -1, -1, -1, -1}},
     "convolution='-1 -1 -1 -1 9 -1 -1 -1 -1:-1 -1 -1 -1 9 -1 -1 -1 -1:-1 -1 -1 -1 9 -1 -1 -1 -1'"},
    {"72 large weights, 3 x 3",
     {3, 8, 0, 0, {-99, 50, 99, 60, 70, 80, 99, -50, -53}},
     "convolution='-99 50 99 60 70 80 99 -50 -53:-99 50 99 60 70 80 99 -50 -53:"
     "-99 50 99 60 70 80 99 -50 -53:0 0 0 0 1 0 0 0 0:1/256:1/256:1/256'"},
    {"72 bell, 5 x 5", {5, 8, 0, 0, {1,  4, 6, 4,  1,  4,  16, 24, 16, 4, 6, 24, 36,
                                     24, 6, 4, 16, 24, 16, 4,  1,  4,  6, 4, 1}}},
};

#ifdef PICTAVO_BENCH_OPENCV
Run CvConvolve(const ConvolveParam& param, const Size& size) {
  const int side = static_cast<int>(param.size);
  cv::Mat weights(side, side, CV_32F);
  for (int i = 0; i < side * side; ++i)
    weights.at<float>(i / side, i % side) =
        static_cast<float>(param.weights[i]) / static_cast<float>(1 << param.shift);
  return [=](u8* dst, const u8* src) {
    const cv::Mat from(size.height, size.width, CV_8UC4, const_cast<u8*>(src));
    cv::Mat to(size.height, size.width, CV_8UC4, dst);
    cv::filter2D(from, to, -1, weights, {-1, -1}, 0, cv::BORDER_REPLICATE);
  };
}
#endif

Line MomentLine(const Moment& moment, const Size& size) {
  const Bytes& both = Pair(size, moment.alpha);
  const u8* const second = both.data() + both.size() / 2;
  std::vector<Run> runs = AtEachBuild([=](i32 level, u8* dst, const u8* src) {
    ImageDesc to = RecordOf(size, dst);
    const ImageDesc from = RecordOf(size, src), other = RecordOf(size, second);
    cpu::ApplyTransition(level, &to, &from, &other, &moment.param);
  });
#ifdef PICTAVO_BENCH_OPENCV
  runs.push_back(CvMix(moment, size));
#else
  runs.emplace_back();
#endif
  runs.push_back(AvMix(moment.avMode, size));
  return {moment.name,
          size.name() + " " + moment.alpha,
          size.pixels(),
          moment.readsBoth ? &both : &Pixels(size, moment.alpha),
          &Pixels(size, moment.alpha),
          false,
          std::move(runs)};
}

Line WeightsLine(const Weights& weights, const Size& size) {
  std::vector<Run> runs = AtEachBuild([=](i32 level, u8* dst, const u8* src) {
    // As many rows a call as one thread takes.
    const i32 rows = std::min(size.height, 64);
    for (i32 y = 0; y < size.height; y += rows) {
      const Size band = {size.width, std::min(rows, size.height - y)};
      ImageDesc to = RecordOf(band, dst + 4 * y * size.width);
      const ImageDesc from = RecordOf(band, src + 4 * y * size.width);
      cpu::ConvolvePicture(level, &from, &to, &weights.param);
    }
  });
#ifdef PICTAVO_BENCH_OPENCV
  runs.push_back(CvConvolve(weights.param, size));
#else
  runs.emplace_back();
#endif
  runs.push_back(weights.avFilter == nullptr ? Run() : RunOf(weights.avFilter, "gbrap", size));
  const Bytes& pixels = Pixels(size, "opaque");
  return {weights.name, size.name() + " opaque", size.pixels(), &pixels, &pixels,
          false,        std::move(runs)};
}

}  // namespace

Table Transitions() {
  std::vector<std::string> columns = BuildColumns();
  const size_t builds = columns.size();
  columns.insert(columns.end(), {"OpenCV", "libavfilter"});
#ifdef PICTAVO_BENCH_OPENCV
  cv::setNumThreads(1);
#endif
  Table table = {"Transitions and convolutions, one thread", columns, builds, {}};
  for (const Moment& moment : kMoments) table.lines.push_back(MomentLine(moment, kHd));
  for (const Weights& weights : kWeights)
    for (const Size& size : {kHd, kCached}) table.lines.push_back(WeightsLine(weights, size));
  return table;
}

}  // namespace pictavo::bench
