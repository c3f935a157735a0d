// Rectangles filled, copied and pixelated, and what pictures measure, beside other libraries where
// they are installed.
#include "av_filter.h"
#include "bench.h"
#include "cpu/drawing/draw.h"
#include "cpu/filters/pixelate.h"
#include "cpu/geometry/copy.h"
#include "cpu/measuring/measure.h"

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {
namespace {

using PeerFn = void(u8* dst, const u8* src, i32 width, i32 height);

#ifdef PICTAVO_BENCH_LIBYUV
void YuvFill(u8* d, const u8*, i32 w, i32 h) { libyuv::ARGBRect(d, w * 4, 0, 0, w, h, 0xFF402010); }
#else
constexpr PeerFn* YuvFill = nullptr;
#endif

#ifdef PICTAVO_BENCH_OPENCV
cv::Mat PictureOf(const u8* pixels, i32 width, i32 height) {
  return cv::Mat(height, width, CV_8UC4, const_cast<u8*>(pixels));
}
cv::Mat GreenOf(const u8* pixels, i32 width, i32 height) {
  static cv::Mat plane;  // kept: its memory is not what is timed
  cv::extractChannel(PictureOf(pixels, width, height), plane, 1);
  return plane;
}
void CvFill(u8* d, const u8*, i32 w, i32 h) {
  PictureOf(d, w, h).setTo(cv::Scalar(16, 32, 64, 255));
}
void CvCopy(u8* d, const u8* s, i32 w, i32 h) {
  cv::Mat to = PictureOf(d, w, h);
  PictureOf(s, w, h).copyTo(to);
}
void CvPixelate(u8* d, const u8*, i32 w, i32 h) {
  cv::Mat small, picture = PictureOf(d, w, h);
  cv::resize(picture, small, {w / 8, h / 8}, 0, 0, cv::INTER_AREA);
  cv::resize(small, picture, {w, h}, 0, 0, cv::INTER_NEAREST);
}
void CvDeviation(u8* d, const u8* s, i32 w, i32 h) {
  cv::Mat mean, deviation;
  cv::meanStdDev(GreenOf(s, w, h), mean, deviation);
  d[0] = static_cast<u8>(deviation.at<double>(0));
}
void CvSharpness(u8* d, const u8* s, i32 w, i32 h) {
  static cv::Mat edges;
  cv::Laplacian(GreenOf(s, w, h), edges, CV_16S, 1, 1, 0, cv::BORDER_REPLICATE);
  cv::Mat mean, deviation;
  cv::meanStdDev(edges, mean, deviation);
  d[0] = static_cast<u8>(deviation.at<double>(0));
}
void CvBounds(u8* d, const u8* s, i32 w, i32 h) {
  static cv::Mat above;
  cv::threshold(GreenOf(s, w, h), above, 200, 255, cv::THRESH_BINARY);
  d[0] = static_cast<u8>(cv::countNonZero(above) + cv::boundingRect(above).x);
}
#else
constexpr PeerFn *CvFill = nullptr, *CvCopy = nullptr, *CvPixelate = nullptr,
                 *CvDeviation = nullptr, *CvSharpness = nullptr, *CvBounds = nullptr;
#endif

Run AvPixelize(const Size& size) { return RunOf("pixelize=w=8:h=8", "gbrap", size); }

template <i32 channel, u32 measure>
void Measure(i32 level, u8* d, const u8* s, i32 w, i32 h) {
  cpu::MeasurePicture(level, s, w, h, 4 * w, channel, measure, reinterpret_cast<f32*>(d));
}

struct Operation {
  const char* name;
  bool readsSrc, readsDst;
  const char* alpha;
  void (*run)(i32 level, u8* dst, const u8* src, i32 width, i32 height);
  u32 builds = 0b111;
  PeerFn *libYuv = nullptr, *openCv = nullptr;
  Run (*avFilter)(const Size& size) = nullptr;
};

template <i32 block>
void Pixelate(i32 level, u8* d, const u8*, i32 w, i32 h) {
  const i32 rect[] = {0, 0, w, h};
  cpu::PixelateRegion(level, d, w, h, 4 * w, rect, block);
}

const Operation kOperations[] = {
    {"51 fill a rectangle", false, false, "opaque",
     [](i32 level, u8* d, const u8*, i32 w, i32 h) {
       const i32 rect[] = {0, 0, w, h};
       cpu::FillRectangle(level, d, w, h, 4 * w, rect, 0xFF402010);
     },
     0b011, YuvFill, CvFill},
    {"52 fill between pixels", false, true, "opaque",
     [](i32 level, u8* d, const u8*, i32 w, i32 h) {
       cpu::FillRectangleSmooth(level, d, w, h, 4 * w, 0.5f, 0.5f, static_cast<f32>(w) - 0.5f,
                                static_cast<f32>(h) - 0.5f, 0x80402010);
     }},
    {"69 pixelate by 8", false, true, "opaque", Pixelate<8>, 0b101, nullptr, CvPixelate,
     AvPixelize},
    {"69 pixelate by 8", false, true, "soft", Pixelate<8>, 0b101},
    {"69 pixelate by 50", false, true, "opaque", Pixelate<50>, 0b101},
    {"75 copy a rectangle", true, false, "opaque",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       const ImageDesc from = RecordOf({w, h}, s);
       ImageDesc to = RecordOf({w, h}, d);
       const i32 rect[] = {0, 0, w, h};
       cpu::CopyRectangle(level, &from, &to, rect);
     },
     0b101, nullptr, CvCopy},
    {"83 threshold, a value a pixel", true, false, "opaque",
     [](i32, u8* d, const u8*, i32 w, i32 h) {
       static const std::vector<f32> values(static_cast<size_t>(kHd.pixels()), 1);
       cpu::FindThreshold(values.data(), static_cast<u32>(w * h), reinterpret_cast<u32*>(d));
     },
     0b001},
    {"84 mean of green", true, false, "opaque", Measure<1, PICTAVO_MEASURE_MEAN>},
    {"84 deviation of green", true, false, "opaque", Measure<1, PICTAVO_MEASURE_DEVIATION>, 0b111,
     nullptr, CvDeviation},
    {"84 sharpness of green", true, false, "opaque", Measure<1, PICTAVO_MEASURE_SHARPNESS>, 0b111,
     nullptr, CvSharpness},
    {"84 noise of luma", true, false, "opaque", Measure<-1, PICTAVO_MEASURE_NOISE>, 0b001},
    {"85 bounds", true, false, "opaque",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       PixelBounds bounds;
       cpu::FindBounds(level, s, w, h, static_cast<u32>(4 * w), 1, 200, reinterpret_cast<u32*>(d),
                       &bounds);
     },
     0b111, nullptr, CvBounds},
};

Run Peer(PeerFn* peer, const Size& size) {
  if (peer == nullptr) return {};
  return [=](u8* dst, const u8* src) { peer(dst, src, size.width, size.height); };
}

}  // namespace

Table Rectangles() {
  std::vector<std::string> columns = BuildColumns();
  const size_t builds = columns.size();
  columns.insert(columns.end(), {"libyuv", "OpenCV", "libavfilter"});
#ifdef PICTAVO_BENCH_OPENCV
  cv::setNumThreads(1);
#endif
  Table table = {"Rectangles and measures", columns, builds, {}};
  for (const Operation& o : kOperations) {
    for (const Size& size : {kHd, kCached}) {
      std::vector<Run> runs = AtEachBuild(
          [=](i32 level, u8* d, const u8* s) { o.run(level, d, s, size.width, size.height); },
          o.builds);
      runs.push_back(Peer(o.libYuv, size));
      runs.push_back(Peer(o.openCv, size));
      if (o.avFilter != nullptr) runs.push_back(o.avFilter(size));
      const Bytes& pixels = Pixels(size, o.alpha);
      static Bytes few(64);  // of what only tells a number
      const bool tells = o.readsSrc && o.name[0] == '8';
      table.lines.push_back({o.name, size.name() + " " + o.alpha, size.pixels(),
                             o.readsSrc ? &pixels : nullptr, tells ? &few : &pixels, o.readsDst,
                             std::move(runs)});
    }
  }
  return table;
}

}  // namespace pictavo::bench
