// Filtered resizing and flips, beside other libraries where they are installed. zimg has the same
// filters on planes; the others are named with what their filters are.
#include "bench.h"
#include "cpu/geometry/flip.h"
#include "cpu/geometry/resize.h"
#include "resize_peers.h"

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {
namespace {

struct Sizes {
  Size src, dst;
};
const Sizes kSizes[] = {{kHd, {1280, 720}}, {{1280, 720}, kHd},    {kHd, {960, 540}},
                        {kHd, {480, 270}},  {kCached, {170, 170}}, {{170, 170}, kCached}};

/// Slot 61 takes all but a little.
struct Operation {
  const char* name;
  u32 filter, alphaMode;
  const char* alpha;
  bool isPart = false;
};
const Operation kOperations[] = {{"60 triangle", PICTAVO_FILTER_TRIANGLE, 0, "opaque"},
                                 {"60 Catmull-Rom", PICTAVO_FILTER_CATMULL_ROM, 0, "opaque"},
                                 {"60 Lanczos", PICTAVO_FILTER_LANCZOS, 0, "opaque"},
                                 {"60 Lanczos, weighted", PICTAVO_FILTER_LANCZOS, 1, "opaque"},
                                 {"60 Lanczos, mixed alpha", PICTAVO_FILTER_LANCZOS, 1, "mixed"},
                                 {"61 Lanczos, a part", PICTAVO_FILTER_LANCZOS, 0, "opaque", true}};

const std::vector<std::string>& Columns() {
  static const std::vector<std::string> columns = [] {
    std::vector<std::string> all = BuildColumns();
    for (const ResizePeer& peer : ResizePeers()) all.push_back(peer.name);
    return all;
  }();
  return columns;
}

std::vector<Run> Runs(const Operation& operation, const Sizes& sizes) {
  std::vector<Run> runs = AtEachBuild([=](i32 level, u8* dst, const u8* src) {
    const ImageDesc from = RecordOf(sizes.src, src);
    ImageDesc to = RecordOf(sizes.dst, dst);
    const ResizeParam param = {operation.filter, operation.alphaMode, {0, 0}};
    const f32 part[] = {1.3f, 0.7f, static_cast<f32>(from.width), static_cast<f32>(from.height)};
    if (operation.isPart) {
      cpu::ResizeFilteredRegion(level, &from, &to, part, &param);
    } else {
      cpu::ResizeFiltered(level, &from, &to, &param);
    }
  });
  for (const ResizePeer& peer : ResizePeers())
    runs.push_back(operation.isPart ? Run()
                                    : peer.run(operation.filter, sizes.src, sizes.dst, false));
  return runs;
}

Run FlipOurs(i32 level, const Size& size, u32 mode, bool inPlace) {
  return [=](u8* dst, const u8* src) {
    const ImageDesc from = RecordOf(size, inPlace ? dst : src);
    ImageDesc to = RecordOf(size, dst);
    cpu::FlipPicture(level, &from, &to, mode);
  };
}

Run FlipOpenCv([[maybe_unused]] const Size& size, [[maybe_unused]] u32 mode) {
#ifdef PICTAVO_BENCH_OPENCV
  return [=](u8* dst, const u8* src) {
    const cv::Mat from(size.height, size.width, CV_8UC4, const_cast<u8*>(src));
    cv::Mat to(size.height, size.width, CV_8UC4, dst);
    cv::flip(from, to, mode == 1 ? 1 : 0);
  };
#else
  return {};
#endif
}

Run FlipLibYuv([[maybe_unused]] const Size& size, [[maybe_unused]] u32 mode) {
#ifdef PICTAVO_BENCH_LIBYUV
  return [=](u8* dst, const u8* src) {
    const int pitch = 4 * size.width;
    if (mode == 1) {
      libyuv::ARGBMirror(src, pitch, dst, pitch, size.width, size.height);
    } else {
      libyuv::ARGBCopy(src, pitch, dst, pitch, size.width, -size.height);
    }
  };
#else
  return {};
#endif
}

}  // namespace

Table FilteredResizing() {
  Table table = {"Filtered resizing, a destination pixel", Columns(), BuildColumns().size(), {}};
  for (const Operation& operation : kOperations) {
    for (const Sizes& sizes : kSizes) {
      table.lines.push_back({operation.name, sizes.src.name() + " to " + sizes.dst.name(),
                             sizes.dst.pixels(), &Pixels(sizes.src, operation.alpha),
                             &Pixels(sizes.dst, "opaque"), false, Runs(operation, sizes)});
    }
  }
  for (const char* name : {"60 triangle", "60 Lanczos"}) AddOnAllThreads(&table, name);
  return table;
}

Table Flips() {
  Table table = {"Flipping", BuildColumns(), BuildColumns().size(), {}};
  table.columns.insert(table.columns.end(), {"OpenCV", "libyuv"});
  for (const Size& size : {kHd, kCached}) {
    for (const u32 mode : {1u, 2u}) {
      for (const bool inPlace : {false, true}) {
        std::vector<Run> runs;
        for (const i32 level : kBuildLevels) runs.push_back(FlipOurs(level, size, mode, inPlace));
        runs.push_back(inPlace ? Run() : FlipOpenCv(size, mode));
        runs.push_back(inPlace ? Run() : FlipLibYuv(size, mode));
        table.lines.push_back(
            {std::string("65 flip, ") + (mode == 1 ? "left to right" : "top to bottom") +
                 (inPlace ? ", in place" : ""),
             size.name(), size.pixels(), inPlace ? nullptr : &Pixels(size, "opaque"),
             &Pixels(size, "opaque"), inPlace, runs});
      }
    }
  }
  return table;
}

}  // namespace pictavo::bench
