// Turning, tilting, swirling and scaled layers, beside other libraries where they are installed.
// Theirs is the same kind of work with other edges.
#include "av_filter.h"
#include "cpu/blending/layer_scaled.h"
#include "cpu/geometry/warp.h"
#include "warp_data.h"

namespace pictavo::bench {
namespace {

template <typename Param>
using Warp = u32(i32 level, const ImageDesc* src, ImageDesc* dst, const Param* param) noexcept;

template <typename Param>
std::vector<Run> Runs(Warp<Param>* warp, const Param& param, const Size& size) {
  return AtEachBuild([=](i32 level, u8* dst, const u8* src) {
    const ImageDesc from = RecordOf(size, src);
    ImageDesc to = RecordOf(size, dst);
    warp(level, &from, &to, &param);
  });
}

constexpr f32 kAngle = 15, kYaw = 30;

#ifdef PICTAVO_BENCH_OPENCV
template <auto kWarp>
Run OpenCv(const Size& size, double angle) {
  cv::setNumThreads(1);
  return [=](u8* dst, const u8* src) { kWarp(dst, src, size, angle); };
}
#endif

std::vector<Run> Rotations(const Size& size) {
  std::vector<Run> runs = Runs(cpu::RotatePicture, Rotation(kAngle, size), size);
  Run openCv;
#ifdef PICTAVO_BENCH_OPENCV
  openCv = OpenCv<OpenCvRotate>(size, double{kAngle});
#endif
  runs.insert(runs.end(), {openCv, RunOf("rotate=15*PI/180:c=none", "bgra", size)});
  return runs;
}

std::vector<Run> Tilts(const Size& size) {
  std::vector<Run> runs = Runs(cpu::TiltPicture, Yaw(kYaw, size), size);
  Run openCv;
#ifdef PICTAVO_BENCH_OPENCV
  openCv = OpenCv<OpenCvYaw>(size, double{kYaw});
#endif
  const char* const chain =
      "perspective=x0=0:y0=0:x1=W:y1=H/8:x2=0:y2=H:x3=W:y3=H*7/8:interpolation=linear";
  runs.insert(runs.end(), {openCv, RunOf(chain, "yuva444p", size)});
  return runs;
}

/// A layer of a quarter of the picture into nearly all of it.
std::vector<Run> ScaledLayers(const Size& size, const Size& layer) {
  std::vector<Run> runs = AtEachBuild([=](i32 level, u8* dst, const u8* src) {
    const ImageDesc from = RecordOf(layer, src);
    ImageDesc to = RecordOf(size, dst);
    const BlendParam param = {0, 255, 0, 0, 0};
    const f32 rect[] = {0.5f, 0.5f, static_cast<f32>(size.width) - 0.5f,
                        static_cast<f32>(size.height) - 0.5f};
    cpu::BlendLayerScaled(level, &to, &from, &param, rect);
  });
  Run openCv;
#ifdef PICTAVO_BENCH_OPENCV
  openCv = [=](u8* dst, const u8* src) {
    cv::Mat to = Mat(dst, size), scaled;
    cv::resize(Mat(src, layer), scaled, to.size());
    scaled.copyTo(to);
  };
#endif
  runs.insert(runs.end(), {openCv, Run()});
  return runs;
}

}  // namespace

Table Warps() {
  Table table = {"Turning, tilting, scaled layers", BuildColumns(), BuildColumns().size(), {}};
  table.columns.insert(table.columns.end(), {"OpenCV", "libavfilter"});
  const auto add = [&](const char* name, const Size& size, const char* alpha,
                       const std::vector<Run>& runs) {
    table.lines.push_back({name, size.name() + " " + alpha, size.pixels(), &Pixels(size, alpha),
                           &Pixels(size, "opaque"), false, runs});
    table.lines.back().runs.resize(table.columns.size());
  };
  for (const Size& size : {kHd, kCached}) {
    add("67 rotate by 15", size, "opaque", Rotations(size));
    add("67 rotate by 15", size, "mixed", Rotations(size));
    add("67 rotate by 15, nearest", size, "opaque",
        Runs(cpu::RotatePicture, Rotation(kAngle, size, PICTAVO_SAMPLE_NEAREST), size));
    add("67 rotate by 90", size, "opaque", Runs(cpu::RotatePicture, Rotation(90, size), size));
    add("79 swirl", size, "opaque", Runs(cpu::SwirlPicture, SwirlOf(size), size));
    add("81 tilt", size, "opaque", Tilts(size));
    add("81 tilt", size, "mixed", Tilts(size));
    const Size layer = {size.width / 2, size.height / 2};
    for (const char* alpha : {"opaque", "mixed"}) {
      table.lines.push_back({"96 layer scaled", size.name() + " " + alpha, size.pixels(),
                             &Pixels(layer, alpha), &Pixels(size, "soft"), true,
                             ScaledLayers(size, layer)});
    }
  }
  for (const char* name : {"67 rotate by 15", "79 swirl", "81 tilt"}) AddOnAllThreads(&table, name);
  return table;
}

}  // namespace pictavo::bench
