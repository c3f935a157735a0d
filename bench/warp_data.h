// Turns, tilts and swirls that are timed and compared, and what other libraries call them.
#ifndef PICTAVO_BENCH_WARP_DATA_H_
#define PICTAVO_BENCH_WARP_DATA_H_

#include <array>
#include <cmath>

#include "bench.h"

#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {

inline RotateParam Rotation(f32 angle, const Size& size, u32 filter = PICTAVO_SAMPLE_BILINEAR) {
  const f32 x = static_cast<f32>(size.width) / 2, y = static_cast<f32>(size.height) / 2;
  return {angle, 1, x, y, x, y, filter};
}

inline TiltParam Yaw(f32 angle, const Size& size) {
  const f32 x = static_cast<f32>(size.width) / 2, y = static_cast<f32>(size.height) / 2;
  return {x, y, angle, 0, 0, 60, PICTAVO_SAMPLE_BILINEAR};
}

inline SwirlParam SwirlOf(const Size& size) {
  const f32 x = static_cast<f32>(size.width) / 2, y = static_cast<f32>(size.height) / 2;
  return {x, y, y, 120, PICTAVO_SAMPLE_BILINEAR};
}

constexpr double kRadian = 0.017453292519943295;

#ifdef PICTAVO_BENCH_OPENCV
inline cv::Mat Mat(const u8* pixels, const Size& size) {
  return cv::Mat(size.height, size.width, CV_8UC4, const_cast<u8*>(pixels));
}

inline void OpenCvRotate(u8* dst, const u8* src, const Size& size, double angle) {
  const double s = std::sin(angle * kRadian), c = std::cos(angle * kRadian);
  const double x = (size.width - 1) / 2., y = (size.height - 1) / 2.;
  const double places[] = {c, s, x - c * x - s * y, -s, c, y + s * x - c * y};
  cv::Mat to = Mat(dst, size);
  cv::warpAffine(Mat(src, size), to, cv::Mat(2, 3, CV_64F, const_cast<double*>(places)), to.size(),
                 cv::INTER_LINEAR | cv::WARP_INVERSE_MAP);
}

/// A place is (u / cos, v) / (1 - u * tan / distance) from the middle.
inline void OpenCvYaw(u8* dst, const u8* src, const Size& size, double angle) {
  const double distance = size.width / 2. / std::tan(30 * kRadian);
  const double x = (size.width - 1) / 2., y = (size.height - 1) / 2.;
  const cv::Matx33d turned(1 / std::cos(angle * kRadian), 0, 0, 0, 1, 0,
                           -std::tan(angle * kRadian) / distance, 0, 1);
  const cv::Matx33d there(1, 0, x, 0, 1, y, 0, 0, 1), back(1, 0, -x, 0, 1, -y, 0, 0, 1);
  cv::Mat to = Mat(dst, size);
  cv::warpPerspective(Mat(src, size), to, there * turned * back, to.size(),
                      cv::INTER_LINEAR | cv::WARP_INVERSE_MAP);
}
#endif

}  // namespace pictavo::bench

#endif  // PICTAVO_BENCH_WARP_DATA_H_
