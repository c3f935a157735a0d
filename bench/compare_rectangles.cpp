// Rectangles copied and pixelated, and what pictures measure.
#include <cmath>
#include <cstring>

#include "av_filter.h"
#include "compare.h"
#include "cpu/drawing/draw.h"
#include "cpu/filters/pixelate.h"
#include "cpu/geometry/copy.h"
#include "cpu/measuring/histogram.h"
#include "cpu/measuring/measure.h"

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {
namespace {

constexpr i32 kWidth = kCached.width, kHeight = kCached.height, kPitch = 4 * kWidth;
constexpr i32 kRect[] = {13, 7, 200, 191}, kAll[] = {0, 0, kWidth, kHeight};

#if defined(PICTAVO_BENCH_AVFILTER) || defined(PICTAVO_BENCH_OPENCV)
Bytes Pixelated(i32 side) {
  Bytes pixels = HardPicture(kCached);
  cpu::PixelateRegion(8, pixels.data(), kWidth, kHeight, kPitch, kAll, static_cast<u32>(side));
  return pixels;
}
#endif

#ifdef PICTAVO_BENCH_AVFILTER
/// Green, blue, red and alpha, one after the other.
Bytes Planes(const Bytes& pixels) {
  Bytes planes;
  for (const size_t channel : {1, 0, 2, 3})
    for (size_t i = channel; i < pixels.size(); i += 4) planes.push_back(pixels[i]);
  return planes;
}
#endif

#ifdef PICTAVO_BENCH_OPENCV
cv::Mat PictureOf(const Bytes& pixels) {
  return cv::Mat(kHeight, kWidth, CV_8UC4, const_cast<u8*>(pixels.data()));
}

/// Numbers as bytes, to 1/100, so that a difference of 1 is one of that.
void Append(double number, Bytes* bytes) {
  const i64 hundredths = std::llround(number * 100);
  for (int i = 0; i < 4; ++i) bytes->push_back(static_cast<u8>(hundredths >> 8 * i));
}

void CompareCopies(Comparisons* all) {
  Bytes ours(static_cast<size_t>(4 * kCached.pixels())), theirs = ours;
  const ImageDesc src = RecordOf(kCached, HardPicture(kCached).data());
  ImageDesc dst = RecordOf(kCached, ours.data());
  cpu::CopyRectangle(8, &src, &dst, kRect);
  const cv::Rect part(kRect[0], kRect[1], kRect[2] - kRect[0], kRect[3] - kRect[1]);
  PictureOf(HardPicture(kCached))(part).copyTo(PictureOf(theirs)({0, 0, part.width, part.height}));
  all->push_back({"75 copy a rectangle", "OpenCV copyTo", "hard edges", ours, theirs, 0});
}

void CompareBlocks(Comparisons* all) {
  Bytes theirs = HardPicture(kCached);
  cv::Mat small, picture = PictureOf(theirs);
  cv::resize(picture, small, {kWidth / 8, kHeight / 8}, 0, 0, cv::INTER_AREA);
  cv::resize(small, picture, {kWidth, kHeight}, 0, 0, cv::INTER_NEAREST);
  all->push_back(
      {"69 pixelate by 8", "OpenCV resize, area and back", "hard edges", Pixelated(8), theirs, 1});
}

void CompareMeasures(Comparisons* all) {
  Bytes ours, theirs;
  for (i32 channel = 0; channel < 3; ++channel) {
    cv::Mat plane, edges, mean, deviation;
    cv::extractChannel(PictureOf(HardPicture(kCached)), plane, channel);
    cv::meanStdDev(plane, mean, deviation);
    Append(mean.at<double>(0), &theirs);
    Append(deviation.at<double>(0), &theirs);
    cv::Laplacian(plane, edges, CV_16S, 1, 1, 0, cv::BORDER_REPLICATE);
    cv::meanStdDev(edges, mean, deviation);
    Append(deviation.at<double>(0), &theirs);
    f32 number = 0;
    for (const u32 measure : {0u, 1u, 2u}) {
      cpu::MeasurePicture(8, HardPicture(kCached).data(), kWidth, kHeight, kPitch, channel, measure,
                          &number);
      Append(measure == 2 ? std::sqrt(number) : number, &ours);
    }
  }
  all->push_back({"84 mean, deviation, sharpness", "OpenCV meanStdDev, Laplacian", "in 1/100", ours,
                  theirs, 0});
}

void CompareBounds(Comparisons* all) {
  Bytes ours, theirs;
  for (const u32 threshold : {0u, 100u, 200u, 254u}) {
    cv::Mat plane, above;
    cv::extractChannel(PictureOf(HardPicture(kCached)), plane, 2);
    cv::threshold(plane, above, threshold, 255, cv::THRESH_BINARY);
    const cv::Rect box = cv::boundingRect(above);
    const std::vector<i32> found = {cv::countNonZero(above), box.x, box.y, box.x + box.width,
                                    box.y + box.height};
    u32 count = 0;
    PixelBounds b = {};
    cpu::FindBounds(8, HardPicture(kCached).data(), kWidth, kHeight, kPitch, 2, threshold, &count,
                    &b);
    for (const i32 number : found) Append(number, &theirs);
    for (const i32 number : {static_cast<i32>(count), b.left, b.top, b.right, b.bottom})
      Append(number, &ours);
  }
  all->push_back(
      {"85 bounds", "OpenCV threshold, boundingRect", "four thresholds", ours, theirs, 0});
}

void CompareThresholds(Comparisons* all) {
  Bytes ours, theirs;
  for (i32 channel = 0; channel < 3; ++channel) {
    cv::Mat plane, above;
    cv::extractChannel(PictureOf(HardPicture(kCached)), plane, channel);
    Append(cv::threshold(plane, above, 0, 255, cv::THRESH_OTSU), &theirs);
    u32 bins[256], index = 0;
    cpu::ComputeHistogram(HardPicture(kCached).data(), kWidth, kHeight, kPitch, bins, 256,
                          static_cast<u32>(channel));
    const std::vector<f32> values(bins, bins + 256);
    cpu::FindThreshold(values.data(), 256, &index);
    Append(index, &ours);
  }
  all->push_back({"83 threshold", "OpenCV THRESH_OTSU", "hard edges", ours, theirs, 0});
}
#endif

}  // namespace

Comparisons CompareRectangles() {
  Comparisons all;
#ifdef PICTAVO_BENCH_LIBYUV
  Bytes ours = HardPicture(kCached), theirs = ours;
  cpu::FillRectangle(8, ours.data(), kWidth, kHeight, kPitch, kRect, 0x80102030);
  libyuv::ARGBRect(theirs.data(), kPitch, kRect[0], kRect[1], kRect[2] - kRect[0],
                   kRect[3] - kRect[1], 0x80102030);
  all.push_back({"51 fill a rectangle", "libyuv ARGBRect", "hard edges", ours, theirs, 0});
#endif
#ifdef PICTAVO_BENCH_AVFILTER
  AvFilter filter("pixelize=w=8:h=8", "gbrap", kCached);
  filter.Load(Planes(HardPicture(kCached)).data());
  filter.Run();
  // Theirs truncates.
  all.push_back({"69 pixelate by 8", "libavfilter pixelize", "hard edges", Planes(Pixelated(8)),
                 filter.Result(), 1});
#endif
#ifdef PICTAVO_BENCH_OPENCV
  CompareBlocks(&all);
  CompareCopies(&all);
  CompareThresholds(&all);
  CompareMeasures(&all);
  CompareBounds(&all);
#endif
  return all;
}

}  // namespace pictavo::bench
