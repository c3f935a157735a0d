// Gaussians, sharpening and mattes.
#include "compare.h"
#include "cpu/filters/gauss.h"
#include "cpu/filters/matte.h"

#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {
namespace {

#ifdef PICTAVO_BENCH_OPENCV
constexpr i32 kWidth = kCached.width, kHeight = kCached.height;

cv::Mat Picture(const Bytes& bytes) {
  return {kHeight, kWidth, CV_8UC4, const_cast<u8*>(bytes.data())};
}

/// Theirs is given as many taps as ours has, but for weights of 1/256, and one rounding more.
cv::Mat Blurred(const Bytes& bytes, double sigma) {
  cv::Mat blurred;
  const int taps = 2 * static_cast<int>(5 * sigma) + 1;
  cv::GaussianBlur(Picture(bytes), blurred, {taps, taps}, sigma, sigma, cv::BORDER_REPLICATE);
  return blurred;
}

void CompareErosion(Comparisons* all, i32 choke) {
  Comparison& c = all->emplace_back("78 matte, choke " + std::to_string(choke),
                                    choke > 0 ? "OpenCV erode" : "OpenCV dilate", "blue as alpha",
                                    HardPicture(kCached), Bytes(), 0);
  for (size_t i = 3; i < c.ours.size(); i += 4) c.ours[i] = c.ours[i - 3];
  cv::Mat channels[4];
  cv::split(Picture(c.ours), channels);
  const int side = 2 * std::abs(choke) + 1;
  const cv::Mat square = cv::getStructuringElement(cv::MORPH_RECT, {side, side});
  if (choke > 0) {
    cv::erode(channels[3], channels[3], square);
  } else {
    cv::dilate(channels[3], channels[3], square);
  }
  c.theirs = c.ours;
  cv::Mat theirs = Picture(c.theirs);
  cv::merge(channels, 4, theirs);
  ImageDesc picture = RecordOf(kCached, c.ours.data());
  const MatteParam param = {0, 1, choke, 0};
  cpu::AdjustMatte(8, &picture, &param);
}
#endif

}  // namespace

Comparisons CompareGaussians() {
  Comparisons all;
#ifdef PICTAVO_BENCH_OPENCV
  const Bytes& hard = HardPicture(kCached);
  for (const double sigma : {0.6, 1.0, 2.0, 3.0, 5.0, 10.0, 30.0}) {
    const cv::Mat theirs = Blurred(hard, sigma);
    Comparison& c = all.emplace_back("56 Gaussian", "OpenCV GaussianBlur, to 5 sigma",
                                     "sigma " + std::to_string(sigma), hard,
                                     Bytes(theirs.datastart, theirs.dataend), sigma > 8 ? 4 : 3);
    const f32 both = static_cast<f32>(sigma);
    cpu::GaussianBlur(8, c.ours.data(), kWidth, kHeight, 4 * kWidth, both, both,
                      PICTAVO_EDGES_REPLICATE);
  }
  cv::Mat sharp;
  cv::addWeighted(Picture(hard), 2, Blurred(hard, 2), -1, 0, sharp);
  Comparison& c = all.emplace_back("49 sharpen", "OpenCV addWeighted of its blur", "radius 2", hard,
                                   Bytes(sharp.datastart, sharp.dataend), 3);
  cpu::SharpenPicture(8, c.ours.data(), kWidth, kHeight, 4 * kWidth, 1, 0, 2);
  for (const i32 choke : {5, -3, 40}) CompareErosion(&all, choke);
#endif
  return all;
}

}  // namespace pictavo::bench
