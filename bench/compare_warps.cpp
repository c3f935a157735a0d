// Turned, tilted and scaled pictures.
#include "av_filter.h"
#include "compare.h"
#include "cpu/blending/layer_scaled.h"
#include "cpu/geometry/warp.h"
#include "warp_data.h"

namespace pictavo::bench {
namespace {

/// As if laid on black, which is how others blur edges.
Bytes OnBlack(Bytes pixels) {
  for (size_t i = 0; i < pixels.size(); ++i) {
    if (i % 4 != 3) pixels[i] = static_cast<u8>((pixels[i] * pixels[i | 3] + 127) / 255);
  }
  return pixels;
}

template <typename Param>
Bytes Warped(u32 (*warp)(i32, const ImageDesc*, ImageDesc*, const Param*) noexcept,
             const Param& param, const Size& size) {
  Bytes dst(static_cast<size_t>(4 * size.pixels()));
  const ImageDesc from = RecordOf(size, HardPicture(size).data());
  ImageDesc to = RecordOf(size, dst.data());
  warp(8, &from, &to, &param);
  return OnBlack(std::move(dst));
}

}  // namespace

Comparisons CompareWarps() {
  Comparisons all;
#ifdef PICTAVO_BENCH_OPENCV
  const Size size = {640, 480};
  const u8* const src = HardPicture(size).data();
  // Their places are rounded to 1/32: half of that each way, and as much of ours, of an edge of
  // 255.
  constexpr int kMost = 10;
  const auto add = [&](const char* operation, const char* peer, Bytes ours, auto theirs, int most) {
    Comparison& c = all.emplace_back(operation, peer, "hard edges", std::move(ours),
                                     Bytes(static_cast<size_t>(4 * size.pixels())), most);
    theirs(c.theirs.data());
  };
  for (const f32 angle : {15.f, 90.f, -161.5f}) {
    add(
        "67 rotate", "OpenCV warpAffine", Warped(cpu::RotatePicture, Rotation(angle, size), size),
        [&](u8* dst) { OpenCvRotate(dst, src, size, double{angle}); }, kMost);
  }
  for (const f32 angle : {30.f, -50.f}) {
    add(
        "81 tilt", "OpenCV warpPerspective", Warped(cpu::TiltPicture, Yaw(angle, size), size),
        [&](u8* dst) { OpenCvYaw(dst, src, size, double{angle}); }, kMost);
  }
  const Size layer = {400, 300};
  Bytes scaled(static_cast<size_t>(4 * size.pixels()));
  const ImageDesc from = RecordOf(layer, HardPicture(layer).data());
  ImageDesc to = RecordOf(size, scaled.data());
  const BlendParam param = {0, 255, 1, 0, 0};
  const f32 rect[] = {0, 0, 640, 480};
  cpu::BlendLayerScaled(8, &to, &from, &param, rect);
  // Our weights are rounded to 1/256.
  add(
      "96 layer scaled", "OpenCV resize", scaled,
      [&](u8* dst) {
        cv::Mat theirs = Mat(dst, size);
        cv::resize(Mat(HardPicture(layer).data(), layer), theirs, theirs.size());
      },
      2);
#endif
  return all;
}

}  // namespace pictavo::bench
