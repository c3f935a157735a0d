// Gaussians, sharpening and mattes, beside other libraries where they are installed. Theirs weigh
// no colour by alpha, stop at three sigma (OpenCV) or take one recursive pass (libavfilter), and
// are on one thread.
#include <memory>
#include <string>
#include <utility>

#include "av_filter.h"
#include "bench.h"
#include "cpu/filters/gauss.h"
#include "cpu/filters/matte.h"

#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace pictavo::bench {
namespace {

#ifdef PICTAVO_BENCH_OPENCV
cv::Mat Picture(const Size& size, const u8* pixels, int type = CV_8UC4) {
  cv::setNumThreads(1);
  return {size.height, size.width, type, const_cast<u8*>(pixels)};
}

Run OpenCvBlur(const Size& size, double sigma) {
  return [=](u8* dst, const u8* src) {
    cv::GaussianBlur(Picture(size, src), Picture(size, dst), {}, sigma, sigma,
                     cv::BORDER_REPLICATE);
  };
}

Run OpenCvSharpen(const Size& size, double sigma) {
  const auto blurred = std::make_shared<cv::Mat>();
  return [=](u8* dst, const u8* src) {
    const cv::Mat picture = Picture(size, src);
    cv::GaussianBlur(picture, *blurred, {}, sigma, sigma, cv::BORDER_REPLICATE);
    cv::addWeighted(picture, 2, *blurred, -1, 0, Picture(size, dst));
  };
}

/// Of a plane, of which there is a fourth of the bytes.
Run OpenCvErode(const Size& size, int radius) {
  const cv::Mat square =
      cv::getStructuringElement(cv::MORPH_RECT, {2 * radius + 1, 2 * radius + 1});
  return [=](u8* dst, const u8* src) {
    cv::erode(Picture(size, src, CV_8UC1), Picture(size, dst, CV_8UC1), square);
  };
}
#endif

using Ours = std::function<void(i32 level, u8* dst, const u8* src)>;

/// A table's line; peers that are not installed leave a gap.
void Add(Table* table, const std::string& name, const Size& size, const char* alpha, Ours ours,
         std::vector<Run> peers, u32 builds = 0b111) {
  std::vector<Run> runs = AtEachBuild(std::move(ours), builds);
  runs.insert(runs.end(), peers.begin(), peers.end());
  table->lines.push_back({name, size.name() + " " + alpha, size.pixels(), &Pixels(size, alpha),
                          &Pixels(size, alpha), true, std::move(runs)});
}

std::vector<Run> BlurPeers(const Size& size, f32 sigma) {
  std::vector<Run> peers(2);
#ifdef PICTAVO_BENCH_OPENCV
  if (sigma < 100) peers[0] = OpenCvBlur(size, static_cast<double>(sigma));
#endif
  peers[1] = RunOf("gblur=sigma=" + std::to_string(sigma) + ":planes=15", "gbrap", size);
  return peers;
}

std::vector<Run> SharpenPeers(const Size& size) {
  std::vector<Run> peers(2);
#ifdef PICTAVO_BENCH_OPENCV
  peers[0] = OpenCvSharpen(size, 2);
#endif
  peers[1] = RunOf("unsharp=13:13:1:13:13:1", "gbrap", size);
  return peers;
}

std::vector<Run> ChokePeers([[maybe_unused]] const Size& size) {
  std::vector<Run> peers(2);
#ifdef PICTAVO_BENCH_OPENCV
  peers[0] = OpenCvErode(size, 5);
#endif
  return peers;
}

}  // namespace

Table Gaussians() {
  Table table = {"Gaussians and mattes, in place (OpenCV's erosion is of a plane)",
                 BuildColumns(),
                 BuildColumns().size(),
                 {}};
  table.columns.push_back("OpenCV");
  table.columns.push_back("libavfilter");
  for (const Size& size : {kHd, kCached}) {
    const i32 width = size.width, height = size.height;
    for (const char* alpha : {"opaque", "mixed"}) {
      for (const f32 sigma : {1.f, 3.f, 10.f, 50.f, 1000.f}) {
        const auto blur = [=](i32 level, u8* dst, const u8*) {
          cpu::GaussianBlur(level, dst, width, height, 4 * width, sigma, sigma,
                            PICTAVO_EDGES_REPLICATE);
        };
        Add(&table, "56 Gaussian, sigma " + std::to_string(static_cast<int>(sigma)), size, alpha,
            blur, BlurPeers(size, sigma));
      }
      const auto sharpen = [=](i32 level, u8* dst, const u8*) {
        cpu::SharpenPicture(level, dst, width, height, 4 * width, 1, 0, 2);
      };
      Add(&table, "49 sharpen, radius 2", size, alpha, sharpen, SharpenPeers(size));
    }
    const auto adjust = [=](const MatteParam& param) {
      return [=](i32 level, u8* dst, const u8*) {
        ImageDesc picture = RecordOf(size, dst);
        cpu::AdjustMatte(level, &picture, &param);
      };
    };
    Add(&table, "78 matte, choke 5", size, "mixed", adjust({0, 1, 5, 0}), ChokePeers(size));
    Add(&table, "78 matte, levels, choke 2, feather 3", size, "mixed", adjust({.1f, .9f, 2, 3}),
        {{}, {}});
    for (u32 mode : {0u, 2u}) {
      const auto apply = [=](i32 level, u8* dst, const u8* src) {
        ImageDesc picture = RecordOf(size, dst);
        const ImageDesc matte = RecordOf(size, src);
        cpu::ApplyMatte(level, &picture, &matte, mode);
      };
      Add(&table, mode == 0 ? "80 apply a matte's alpha" : "80 apply a matte's luma", size, "mixed",
          apply, {{}, {}}, 0b011);
    }
  }
  AddOnAllThreads(&table, "56 Gaussian, sigma 10");
  return table;
}

}  // namespace pictavo::bench
