// Resizing, beside other libraries where they are installed. Theirs is the same kind of work, not
// the same arithmetic: filters are centred, and most boxes weigh by area.
#include <algorithm>
#include <memory>

#include "bench.h"
#include "cpu/geometry/resize.h"

#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv/scale_argb.h>
#endif
#ifdef PICTAVO_BENCH_PIXMAN
#include <pixman.h>
#endif
#ifdef PICTAVO_BENCH_SWSCALE
extern "C" {
#include <libswscale/swscale.h>
}
#endif

namespace pictavo::bench {
namespace {

enum class Filter { kBilinear, kBox, kNearest };

struct Sizes {
  Size src, dst;
};

const Sizes kSizes[] = {{kHd, {1280, 720}},   {kHd, {960, 540}},   {kHd, {480, 270}},
                        {{1280, 720}, kHd},   {kHd, {3840, 2160}}, {kCached, {170, 170}},
                        {{170, 170}, kCached}};

using Resize = u32(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                   i32 srcWidth, i32 srcHeight, i32 srcPitch);

struct Operation {
  const char* name;
  Filter filter;
  const char* alpha;
  Resize* resize;
};

const Operation kOperations[] = {
    {"29 box, weighted", Filter::kBox, "opaque",
     [](i32 level, u8* d, i32 dw, i32 dh, i32 dp, const u8* s, i32 sw, i32 sh, i32 sp) {
       return cpu::ResizeBox16AlphaWeighted(level, d, dw, dh, dp, s, sw, sh, sp, 0);
     }},
    {"29 box, weighted, mixed alpha", Filter::kBox, "mixed",
     [](i32 level, u8* d, i32 dw, i32 dh, i32 dp, const u8* s, i32 sw, i32 sh, i32 sp) {
       return cpu::ResizeBox16AlphaWeighted(level, d, dw, dh, dp, s, sw, sh, sp, 0);
     }},
    {"30 bilinear, 16 bits", Filter::kBilinear, "opaque",
     [](i32 level, u8* d, i32 dw, i32 dh, i32 dp, const u8* s, i32 sw, i32 sh, i32 sp) {
       return cpu::ResizeBilinear16(level, d, dw, dh, dp, s, sw, sh, sp, 0, 1);
     }},
    {"31 bilinear, 7 bits", Filter::kBilinear, "opaque",
     [](i32 level, u8* d, i32 dw, i32 dh, i32 dp, const u8* s, i32 sw, i32 sh, i32 sp) {
       return cpu::ResizeBilinear7(level, d, dw, dh, dp, s, sw, sh, sp);
     }},
    {"55 nearest", Filter::kNearest, "opaque",
     [](i32 level, u8* d, i32 dw, i32 dh, i32 dp, const u8* s, i32 sw, i32 sh, i32 sp) {
       return cpu::ResizeNearest32(level, reinterpret_cast<u32*>(d), dw, dh, dp,
                                   reinterpret_cast<const u32*>(s), sw, sh, sp);
     }},
    {"57 box", Filter::kBox, "opaque",
     [](i32 level, u8* d, i32 dw, i32 dh, i32 dp, const u8* s, i32 sw, i32 sh, i32 sp) {
       return cpu::ResizeBox16(level, d, dw, dh, dp, s, sw, sh, sp);
     }},
    {"58 bilinear, alpha kept", Filter::kBilinear, "mixed",
     [](i32 level, u8* d, i32 dw, i32 dh, i32 dp, const u8* s, i32 sw, i32 sh, i32 sp) {
       return cpu::ResizeBilinear16KeepAlpha(level, d, dw, dh, dp, s, sw, sh, sp, 1);
     }},
    {"62 nearest, in a rectangle", Filter::kNearest, "opaque",
     [](i32 level, u8* d, i32 dw, i32 dh, i32 dp, const u8* s, i32 sw, i32 sh, i32 sp) {
       const i32 rect[] = {1, 0, dw, dh};
       return cpu::ResizeNearestInRect(level, reinterpret_cast<u32*>(d), dw, dh, dp,
                                       reinterpret_cast<const u32*>(s), sw, sh, sp, rect);
     }},
};

#ifdef PICTAVO_BENCH_OPENCV
Run OpenCv(Filter filter, const Sizes& sizes) {
  const int method = filter == Filter::kBilinear ? cv::INTER_LINEAR
                     : filter == Filter::kBox    ? cv::INTER_AREA
                                                 : cv::INTER_NEAREST;
  cv::setNumThreads(1);
  return [=](u8* dst, const u8* src) {
    const cv::Mat from(sizes.src.height, sizes.src.width, CV_8UC4, const_cast<u8*>(src));
    cv::Mat to(sizes.dst.height, sizes.dst.width, CV_8UC4, dst);
    cv::resize(from, to, to.size(), 0, 0, method);
  };
}
#endif

#ifdef PICTAVO_BENCH_LIBYUV
Run LibYuv(Filter filter, const Sizes& sizes) {
  const libyuv::FilterMode mode = filter == Filter::kBilinear ? libyuv::kFilterBilinear
                                  : filter == Filter::kBox    ? libyuv::kFilterBox
                                                              : libyuv::kFilterNone;
  return [=](u8* dst, const u8* src) {
    libyuv::ARGBScale(src, sizes.src.width * 4, sizes.src.width, sizes.src.height, dst,
                      sizes.dst.width * 4, sizes.dst.width, sizes.dst.height, mode);
  };
}
#endif

#ifdef PICTAVO_BENCH_PIXMAN
Run Pixman(Filter filter, const Sizes& sizes) {
  if (filter == Filter::kBox) return {};
  const auto picture = [](const Size& size, const u8* pixels) {
    return pixman_image_create_bits(PIXMAN_a8r8g8b8, size.width, size.height,
                                    const_cast<u32*>(reinterpret_cast<const u32*>(pixels)),
                                    size.width * 4);
  };
  return [=](u8* dst, const u8* src) {
    pixman_image_t *from = picture(sizes.src, src), *to = picture(sizes.dst, dst);
    pixman_transform_t scale;
    pixman_transform_init_scale(&scale, pixman_int_to_fixed(sizes.src.width) / sizes.dst.width,
                                pixman_int_to_fixed(sizes.src.height) / sizes.dst.height);
    pixman_image_set_transform(from, &scale);
    pixman_image_set_repeat(from, PIXMAN_REPEAT_PAD);
    pixman_image_set_filter(
        from, filter == Filter::kBilinear ? PIXMAN_FILTER_BILINEAR : PIXMAN_FILTER_NEAREST, nullptr,
        0);
    pixman_image_composite32(PIXMAN_OP_SRC, from, nullptr, to, 0, 0, 0, 0, 0, 0, sizes.dst.width,
                             sizes.dst.height);
    pixman_image_unref(from);
    pixman_image_unref(to);
  };
}
#endif

#ifdef PICTAVO_BENCH_SWSCALE
Run SwScale(Filter filter, const Sizes& sizes) {
  const int flags = filter == Filter::kBilinear ? SWS_BILINEAR
                    : filter == Filter::kBox    ? SWS_AREA
                                                : SWS_POINT;
  const std::shared_ptr<SwsContext> context(
      sws_getContext(sizes.src.width, sizes.src.height, AV_PIX_FMT_BGRA, sizes.dst.width,
                     sizes.dst.height, AV_PIX_FMT_BGRA, flags, nullptr, nullptr, nullptr),
      sws_freeContext);
  return [=](u8* dst, const u8* src) {
    const int from = sizes.src.width * 4, to = sizes.dst.width * 4;
    sws_scale(context.get(), &src, &from, 0, sizes.src.height, &dst, &to);
  };
}
#endif

struct Peer {
  const char* name;
  Run (*run)(Filter filter, const Sizes& sizes);
};
const std::vector<Peer> kPeers = {
#ifdef PICTAVO_BENCH_OPENCV
    {"OpenCV", OpenCv},
#endif
#ifdef PICTAVO_BENCH_LIBYUV
    {"libyuv", LibYuv},
#endif
#ifdef PICTAVO_BENCH_PIXMAN
    {"pixman", Pixman},
#endif
#ifdef PICTAVO_BENCH_SWSCALE
    {"swscale", SwScale},
#endif
};

std::vector<Run> Runs(const Operation& operation, const Sizes& sizes) {
  std::vector<Run> runs = AtEachBuild([=](i32 level, u8* dst, const u8* src) {
    operation.resize(level, dst, sizes.dst.width, sizes.dst.height, sizes.dst.width * 4, src,
                     sizes.src.width, sizes.src.height, sizes.src.width * 4);
  });
  for (const Peer& peer : kPeers) runs.push_back(peer.run(operation.filter, sizes));
  return runs;
}

}  // namespace

Table Resizing() {
  Table table = {"Resizing, a destination pixel", BuildColumns(), BuildColumns().size(), {}};
  for (const Peer& peer : kPeers) table.columns.push_back(peer.name);
  for (const Operation& operation : kOperations) {
    for (const Sizes& sizes : kSizes) {
      table.lines.push_back({operation.name, sizes.src.name() + " to " + sizes.dst.name(),
                             sizes.dst.pixels(), &Pixels(sizes.src, operation.alpha),
                             &Pixels(sizes.dst, "opaque"), false, Runs(operation, sizes)});
    }
  }
  return table;
}

}  // namespace pictavo::bench
