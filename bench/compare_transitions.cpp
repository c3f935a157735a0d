// Transitions and convolutions.
#include <algorithm>
#include <cmath>

#include "av_filter.h"
#include "compare.h"
#include "cpu/blending/transition.h"
#include "cpu/filters/convolve.h"

#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {
namespace {

#if defined(PICTAVO_BENCH_OPENCV) || defined(PICTAVO_BENCH_AVFILTER)
constexpr i32 kWidth = kCached.width, kHeight = kCached.height;

/// The picture turned by half, opaque too.
Bytes Other() {
  const Bytes& picture = HardPicture(kCached);
  Bytes other(picture.size());
  for (size_t i = 0; i < other.size(); i += 4)
    std::copy_n(&picture[picture.size() - 4 - i], 4, &other[i]);
  return other;
}

Bytes Mixed(const TransitionParam& param) {
  Bytes mixed(HardPicture(kCached).size());
  const Bytes second = Other();
  ImageDesc dst = RecordOf(kCached, mixed.data());
  const ImageDesc from = RecordOf(kCached, HardPicture(kCached).data()),
                  to = RecordOf(kCached, second.data());
  cpu::ApplyTransition(8, &dst, &from, &to, &param);
  return mixed;
}
#endif

#ifdef PICTAVO_BENCH_AVFILTER
/// 26 frames of 48 on its way.
Bytes AvMixed(const std::string& mode) {
  AvFilter filter(
      "[in0]format=gbrap[a];[in1]format=gbrap[b];[a][b]xfade=offset=0:duration=1.92:"
      "transition=" +
          mode,
      "bgra", kCached, 2);
  filter.Load(HardPicture(kCached).data(), 0);
  filter.Load(Other().data(), 1);
  for (int frame = 0; frame <= 26; ++frame) filter.Run();
  return filter.Result();
}
#endif

#ifdef PICTAVO_BENCH_OPENCV
Comparison CompareWeights(const char* name, const ConvolveParam& param) {
  Bytes ours(HardPicture(kCached).size()), theirs = ours;
  const ImageDesc src = RecordOf(kCached, HardPicture(kCached).data());
  ImageDesc dst = RecordOf(kCached, ours.data());
  cpu::ConvolvePicture(8, &src, &dst, &param);
  const int side = static_cast<int>(param.size);
  cv::Mat weights(side, side, CV_32F), sums;
  for (int i = 0; i < side * side; ++i)
    weights.at<float>(i / side, i % side) = static_cast<float>(param.weights[i]);
  const cv::Mat picture(kHeight, kWidth, CV_8UC4, const_cast<u8*>(HardPicture(kCached).data()));
  cv::filter2D(picture, sums, CV_32F, weights, {-1, -1}, 0, cv::BORDER_REPLICATE);
  const double half = param.shift > 0 ? 1 << (param.shift - 1) : 0;
  for (int i = 0; i < kWidth * kHeight * 4; ++i) {
    const double sum = (sums.ptr<float>()[i] + half) / (1 << param.shift);
    theirs[static_cast<size_t>(i)] =
        i % 4 == 3 ? 255 : cv::saturate_cast<u8>(std::floor(sum) + param.bias);
  }
  return {name, "OpenCV filter2D, sums", "hard edges", ours, theirs, 0};
}
#endif

}  // namespace

Comparisons CompareTransitions() {
  Comparisons all;
#ifdef PICTAVO_BENCH_AVFILTER
  // Theirs truncates.
  all.push_back({"70 fade", "libavfilter xfade", "hard edges", Mixed({0, 26 / 48.0f, 0, 0, 0}),
                 AvMixed("fade"), 1});
  all.push_back({"70 wipe", "libavfilter xfade wiperight", "hard edges",
                 Mixed({2, 26 / 48.0f, 0, 0, 0}), AvMixed("wiperight"), 0});
#endif
#ifdef PICTAVO_BENCH_OPENCV
  Bytes theirs(HardPicture(kCached).size());
  const Bytes second = Other();
  const auto picture = [](const Bytes& pixels) {
    return cv::Mat(kHeight, kWidth, CV_8UC4, const_cast<u8*>(pixels.data()));
  };
  cv::Mat to = picture(theirs);
  cv::addWeighted(picture(HardPicture(kCached)), 0.625, picture(second), 0.375, 0, to);
  // Halves go to the even number there.
  all.push_back(
      {"70 fade", "OpenCV addWeighted", "hard edges", Mixed({0, 0.375f, 0, 0, 0}), theirs, 1});
  all.push_back(
      CompareWeights("72 sharpen, 3 x 3", {3, 0, 0, 0, {-1, -1, -1, -1, 9, -1, -1, -1, -1}}));
  all.push_back(CompareWeights("72 large weights, 3 x 3",
                               {3, 8, 10, 0, {-99, 50, 99, 60, 70, 80, 99, -50, -53}}));
  all.push_back(
      CompareWeights("72 bell, 5 x 5", {5, 8, 0, 0, {1,  4, 6, 4,  1,  4,  16, 24, 16, 4, 6, 24, 36,
                                                     24, 6, 4, 16, 24, 16, 4,  1,  4,  6, 4, 1}}));
#endif
  return all;
}

}  // namespace pictavo::bench
