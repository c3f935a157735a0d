#include "resize_peers.h"

#include <memory>

#ifdef PICTAVO_BENCH_ZIMG
#include <zimg.h>
#endif
#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef PICTAVO_BENCH_SWSCALE
extern "C" {
#include <libswscale/swscale.h>
}
#endif

namespace pictavo::bench {
namespace {

#ifdef PICTAVO_BENCH_ZIMG
/// Four planes of a picture, resized one by one.
class Zimg {
 public:
  Zimg(u32 filter, Size src, Size dst) : from_(src), to_(dst) {
    zimg_image_format formats[2];
    for (zimg_image_format& format : formats) {
      const Size& size = &format == formats ? src : dst;
      zimg_image_format_default(&format, ZIMG_API_VERSION);
      format.width = static_cast<unsigned>(size.width);
      format.height = static_cast<unsigned>(size.height);
      format.pixel_type = ZIMG_PIXEL_BYTE;
      format.pixel_range = ZIMG_RANGE_FULL;
    }
    constexpr zimg_resample_filter_e kFilters[] = {ZIMG_RESIZE_BILINEAR, ZIMG_RESIZE_BICUBIC,
                                                   ZIMG_RESIZE_BICUBIC, ZIMG_RESIZE_LANCZOS};
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    params.resample_filter = kFilters[filter];
    params.filter_param_a = filter == PICTAVO_FILTER_CATMULL_ROM ? 0 : 1 / 3.0;
    params.filter_param_b = filter == PICTAVO_FILTER_CATMULL_ROM ? 0.5 : 1 / 3.0;
    if (filter == PICTAVO_FILTER_LANCZOS) params.filter_param_a = 3;
    params.cpu_type = ZIMG_CPU_AUTO_64B;
    graph_.reset(zimg_filter_graph_build(&formats[0], &formats[1], &params));
    size_t bytes = 0;
    zimg_filter_graph_get_tmp_size(graph_.get(), &bytes);
    scratch_.resize(bytes + 64);
  }

  void Pack(u8* dst) const { to_.Pack(dst); }
  void Unpack(const u8* src) { from_.Unpack(src); }

  void Resize() {
    for (int plane = 0; plane < 4; ++plane) {
      zimg_image_buffer_const from = {ZIMG_API_VERSION, {}};
      zimg_image_buffer to = {ZIMG_API_VERSION, {}};
      from.plane[0] = {from_.Plane(plane), from_.pitch, ZIMG_BUFFER_MAX};
      to.plane[0] = {to_.Plane(plane), to_.pitch, ZIMG_BUFFER_MAX};
      zimg_filter_graph_process(graph_.get(), &from, &to, Aligned(scratch_), nullptr, nullptr,
                                nullptr, nullptr);
    }
  }

 private:
  static u8* Aligned(Bytes& bytes) {
    return reinterpret_cast<u8*>((reinterpret_cast<uintptr_t>(bytes.data()) + 63) / 64 * 64);
  }

  struct Planes {
    Size size;
    ptrdiff_t pitch;
    mutable Bytes bytes;

    explicit Planes(const Size& s)
        : size(s),
          pitch((s.width + 63) / 64 * 64),
          bytes(static_cast<size_t>(4 * pitch * s.height + 64), 99) {}
    u8* Plane(int i) const { return Aligned(bytes) + i * pitch * size.height; }
    u8* At(i64 pixel, int plane) const {
      return Plane(plane) + pixel / size.width * pitch + pixel % size.width;
    }
    void Pack(u8* to) const {
      for (i64 i = 0; i < 4 * size.pixels(); ++i) to[i] = *At(i / 4, static_cast<int>(i % 4));
    }
    void Unpack(const u8* from) {
      for (i64 i = 0; i < 4 * size.pixels(); ++i) *At(i / 4, static_cast<int>(i % 4)) = from[i];
    }
  };

  struct Free {
    void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
  };
  std::unique_ptr<zimg_filter_graph, Free> graph_;
  Planes from_, to_;
  Bytes scratch_;
};

Run ByZimg(u32 filter, Size src, Size dst, bool packs) {
  const auto zimg = std::make_shared<Zimg>(filter, src, dst);
  return [=](u8* to, const u8* from) {
    if (packs) zimg->Unpack(from);
    zimg->Resize();
    if (packs) zimg->Pack(to);
  };
}
#endif

#ifdef PICTAVO_BENCH_OPENCV
/// A box, and filters that do not widen.
Run ByOpenCv(u32 filter, Size src, Size dst, bool) {
  constexpr int kMethods[] = {cv::INTER_AREA, cv::INTER_CUBIC, cv::INTER_CUBIC, cv::INTER_LANCZOS4};
  cv::setNumThreads(1);
  return [=](u8* to, const u8* from) {
    const cv::Mat source(src.height, src.width, CV_8UC4, const_cast<u8*>(from));
    cv::Mat result(dst.height, dst.width, CV_8UC4, to);
    cv::resize(source, result, result.size(), 0, 0, kMethods[filter]);
  };
}
#endif

#ifdef PICTAVO_BENCH_SWSCALE
Run BySwScale(u32 filter, Size src, Size dst, bool) {
  constexpr int kFlags[] = {SWS_BILINEAR, SWS_BICUBIC, SWS_BICUBIC, SWS_LANCZOS};
  const bool isMitchell = filter == PICTAVO_FILTER_MITCHELL;
  const double cubic[] = {isMitchell ? 1 / 3.0 : 0, isMitchell ? 1 / 3.0 : 0.5};
  const std::shared_ptr<SwsContext> context(
      sws_getContext(src.width, src.height, AV_PIX_FMT_BGRA, dst.width, dst.height, AV_PIX_FMT_BGRA,
                     kFlags[filter] | SWS_ACCURATE_RND, nullptr, nullptr,
                     filter == PICTAVO_FILTER_LANCZOS ? nullptr : cubic),
      sws_freeContext);
  return [=](u8* to, const u8* from) {
    const int fromPitch = src.width * 4, toPitch = dst.width * 4;
    sws_scale(context.get(), &from, &fromPitch, 0, src.height, &to, &toPitch);
  };
}
#endif

}  // namespace

const std::vector<ResizePeer>& ResizePeers() {
  static const std::vector<ResizePeer> peers = {
#ifdef PICTAVO_BENCH_ZIMG
      {"zimg, planes", ByZimg},
#endif
#ifdef PICTAVO_BENCH_OPENCV
      {"OpenCV", ByOpenCv},
#endif
#ifdef PICTAVO_BENCH_SWSCALE
      {"swscale", BySwScale},
#endif
  };
  return peers;
}

}  // namespace pictavo::bench
