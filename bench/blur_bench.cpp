// The three-pass box blur, beside another library's box filter of the same sizes where that is
// installed; theirs takes clear pixels for any others, and copies nothing first.
#include <array>
#include <cstring>
#include <memory>

#include "bench.h"
#include "cpu/filters/blur.h"

#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {
namespace {

struct Radius {
  f32 radius;
  std::array<i32, 3> boxes;
};

const Radius kRadii[] = {
    {3, {1, 3, 3}}, {10, {7, 7, 7}}, {50, {33, 33, 35}}, {200, {133, 133, 135}}};

#ifdef PICTAVO_BENCH_OPENCV
Run OpenCv(const Size& size, const Radius& radius) {
  cv::setNumThreads(1);
  const auto temporary = std::make_shared<Bytes>(static_cast<size_t>(4 * size.pixels()));
  return [=](u8* dst, const u8* src) {
    const auto picture = [&](const u8* pixels) {
      return cv::Mat(size.height, size.width, CV_8UC4, const_cast<u8*>(pixels));
    };
    const auto blur = [&](const u8* from, const u8* to, i32 box) {
      cv::blur(picture(from), picture(to), {box, box}, {-1, -1}, cv::BORDER_REPLICATE);
    };
    blur(src, dst, radius.boxes[0]);
    blur(dst, temporary->data(), radius.boxes[1]);
    blur(temporary->data(), dst, radius.boxes[2]);
  };
}
#endif

}  // namespace

Table Blurs() {
  Table table = {
      "Box blur, with a copy of the picture first", BuildColumns(), BuildColumns().size(), {}};
#ifdef PICTAVO_BENCH_OPENCV
  table.columns.push_back("OpenCV");
#endif
  for (const Size& size : {kHd, kCached}) {
    for (const char* alpha : {"opaque", "mixed", "soft"}) {
      for (const Radius& radius : kRadii) {
        std::vector<Run> runs = AtEachBuild([=](i32 level, u8* dst, const u8* src) {
          std::memcpy(dst, src, static_cast<size_t>(4 * size.pixels()));
          cpu::GaussianBlurBox3(level, dst, size.width, size.height, size.width * 4, radius.radius);
        });
#ifdef PICTAVO_BENCH_OPENCV
        runs.push_back(OpenCv(size, radius));
#endif
        table.lines.push_back({"87 blur, radius " + std::to_string(static_cast<int>(radius.radius)),
                               size.name() + " " + alpha, size.pixels(), &Pixels(size, alpha),
                               &Pixels(size, alpha), false, std::move(runs)});
      }
    }
  }
  return table;
}

}  // namespace pictavo::bench
