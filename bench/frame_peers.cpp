#include "frame_peers.h"

#include <memory>

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef PICTAVO_BENCH_SWSCALE
extern "C" {
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}
#endif

namespace pictavo::bench {

#ifdef PICTAVO_BENCH_LIBYUV

Run FromFrameByLibyuv(const FrameKind& kind) {
  static const libyuv::YuvConstants* const kConstants[][2] = {
      {&libyuv::kYuvI601Constants, &libyuv::kYuvJPEGConstants},
      {&libyuv::kYuvH709Constants, &libyuv::kYuvF709Constants},
      {&libyuv::kYuv2020Constants, &libyuv::kYuvV2020Constants}};
  const libyuv::YuvConstants* const constants = kConstants[kind.matrix][kind.range];
  const auto [w, h] = kind.size;
  const i32 half = w / 2, plane = w * h, quarter = half * (h / 2);
  const bool standard = kind.matrix == PICTAVO_MATRIX_BT601 && kind.range == PICTAVO_RANGE_LIMITED;
  switch (kind.layout) {
    case PICTAVO_FRAME_NV12:
      return [=, w = w, h = h](u8* d, const u8* s) {
        libyuv::NV12ToARGBMatrix(s, w, s + plane, w, d, 4 * w, constants, w, h);
      };
    case PICTAVO_FRAME_I420:
    case PICTAVO_FRAME_YV12: {
      const i32 u = kind.layout == PICTAVO_FRAME_I420 ? 0 : quarter, v = quarter - u;
      return [=, w = w, h = h](u8* d, const u8* s) {
        libyuv::I420ToARGBMatrix(s, w, s + plane + u, half, s + plane + v, half, d, 4 * w,
                                 constants, w, h);
      };
    }
    case PICTAVO_FRAME_YUY2:
      if (!standard) return {};
      return [w = w, h = h](u8* d, const u8* s) { libyuv::YUY2ToARGB(s, 2 * w, d, 4 * w, w, h); };
    case PICTAVO_FRAME_UYVY:
      if (!standard) return {};
      return [w = w, h = h](u8* d, const u8* s) { libyuv::UYVYToARGB(s, 2 * w, d, 4 * w, w, h); };
    case PICTAVO_FRAME_P010:
      return [=, w = w, h = h](u8* d, const u8* s) {
        const auto* const words = reinterpret_cast<const uint16_t*>(s);
        libyuv::P010ToARGBMatrix(words, w, words + plane, w, d, 4 * w, constants, w, h);
      };
    case PICTAVO_FRAME_BGR24:
      return [w = w, h = h](u8* d, const u8* s) { libyuv::RGB24ToARGB(s, 3 * w, d, 4 * w, w, h); };
    case PICTAVO_FRAME_RGB24:
      return [w = w, h = h](u8* d, const u8* s) { libyuv::RAWToARGB(s, 3 * w, d, 4 * w, w, h); };
    default:
      return [w = w, h = h](u8* d, const u8* s) { libyuv::ABGRToARGB(s, 4 * w, d, 4 * w, w, h); };
  }
}

Run ToFrameByLibyuv(const FrameKind& kind) {
  const auto [w, h] = kind.size;
  const i32 half = w / 2, plane = w * h, quarter = half * (h / 2);
  const bool standard = kind.matrix == PICTAVO_MATRIX_BT601 && kind.range == PICTAVO_RANGE_LIMITED;
  if (!standard && kind.layout <= PICTAVO_FRAME_P010) return {};
  switch (kind.layout) {
    case PICTAVO_FRAME_NV12:
      return [=, w = w, h = h](u8* d, const u8* s) {
        libyuv::ARGBToNV12(s, 4 * w, d, w, d + plane, w, w, h);
      };
    case PICTAVO_FRAME_I420:
    case PICTAVO_FRAME_YV12: {
      const i32 u = kind.layout == PICTAVO_FRAME_I420 ? 0 : quarter, v = quarter - u;
      return [=, w = w, h = h](u8* d, const u8* s) {
        libyuv::ARGBToI420(s, 4 * w, d, w, d + plane + u, half, d + plane + v, half, w, h);
      };
    }
    case PICTAVO_FRAME_YUY2:
      return [w = w, h = h](u8* d, const u8* s) { libyuv::ARGBToYUY2(s, 4 * w, d, 2 * w, w, h); };
    case PICTAVO_FRAME_UYVY:
      return [w = w, h = h](u8* d, const u8* s) { libyuv::ARGBToUYVY(s, 4 * w, d, 2 * w, w, h); };
    case PICTAVO_FRAME_P010:
      return {};
    case PICTAVO_FRAME_BGR24:
      return [w = w, h = h](u8* d, const u8* s) { libyuv::ARGBToRGB24(s, 4 * w, d, 3 * w, w, h); };
    case PICTAVO_FRAME_RGB24:
      return [w = w, h = h](u8* d, const u8* s) { libyuv::ARGBToRAW(s, 4 * w, d, 3 * w, w, h); };
    default:
      return [w = w, h = h](u8* d, const u8* s) { libyuv::ARGBToABGR(s, 4 * w, d, 4 * w, w, h); };
  }
}

#else
Run FromFrameByLibyuv(const FrameKind&) { return {}; }
Run ToFrameByLibyuv(const FrameKind&) { return {}; }
#endif

#ifdef PICTAVO_BENCH_SWSCALE

namespace {

struct Image {
  uint8_t* planes[4];
  int pitches[4];

  Image(const u8* bytes, AVPixelFormat format, const Size& size) {
    av_image_fill_arrays(planes, pitches, bytes, format, size.width, size.height, 1);
  }
};

Run Scale(const FrameKind& kind, AVPixelFormat from, AVPixelFormat to, int filter) {
  const Size size = kind.size;
  const std::shared_ptr<SwsContext> context(
      sws_getContext(size.width, size.height, from, size.width, size.height, to,
                     filter | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP, nullptr,
                     nullptr, nullptr),
      sws_freeContext);
  if (context == nullptr) return {};
  const int spaces[] = {SWS_CS_ITU601, SWS_CS_ITU709, SWS_CS_BT2020};
  const int* const table = sws_getCoefficients(spaces[kind.matrix]);
  const bool full = kind.range == PICTAVO_RANGE_FULL, back = from == AV_PIX_FMT_BGRA;
  sws_setColorspaceDetails(context.get(), table, back || full, table, !back || full, 0, 1 << 16,
                           1 << 16);
  return [=](u8* d, const u8* s) {
    const Image src(s, from, size), dst(d, to, size);
    sws_scale(context.get(), src.planes, src.pitches, 0, size.height, dst.planes, dst.pitches);
  };
}

/// YV12 is I420 to it, with its planes the other way round.
AVPixelFormat SwscaleFormat(u32 layout) {
  constexpr AVPixelFormat kFormats[] = {AV_PIX_FMT_NV12,    AV_PIX_FMT_YUV420P, AV_PIX_FMT_NONE,
                                        AV_PIX_FMT_YUYV422, AV_PIX_FMT_UYVY422, AV_PIX_FMT_P010LE,
                                        AV_PIX_FMT_BGR24,   AV_PIX_FMT_RGB24,   AV_PIX_FMT_RGBA};
  return kFormats[layout];
}

}  // namespace

Run FromFrameBySwscale(const FrameKind& kind) {
  const AVPixelFormat format = SwscaleFormat(kind.layout);
  return format == AV_PIX_FMT_NONE ? Run() : Scale(kind, format, AV_PIX_FMT_BGRA, SWS_POINT);
}
Run ToFrameBySwscale(const FrameKind& kind) {
  const AVPixelFormat format = SwscaleFormat(kind.layout);
  return format == AV_PIX_FMT_NONE ? Run() : Scale(kind, AV_PIX_FMT_BGRA, format, SWS_AREA);
}

#else
Run FromFrameBySwscale(const FrameKind&) { return {}; }
Run ToFrameBySwscale(const FrameKind&) { return {}; }
#endif

}  // namespace pictavo::bench
