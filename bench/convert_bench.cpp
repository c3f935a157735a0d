// Conversions, fills and histograms, beside another library where it is installed. Its work is the
// same kind, not the same arithmetic: its YUV is three planes without alpha.
#include <array>

#include "av_filter.h"
#include "bench.h"
#include "convert_utility/colour.h"
#include "cpu/colour/channels.h"
#include "cpu/colour/convert.h"
#include "cpu/drawing/draw.h"
#include "cpu/geometry/border.h"
#include "cpu/measuring/histogram.h"

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace pictavo::bench {
namespace {

struct Conversion {
  const char* name;
  bool readsSrc, readsDst;
  std::vector<const char*> alphas;
  void (*run)(i32 level, u8* dst, const u8* src, i32 width, i32 height);
  void (*peer)(u8* dst, const u8* src, i32 width, i32 height);
  u32 builds = 0b111;
  i32 srcBytes = 4;  // a pixel
};

#ifdef PICTAVO_BENCH_LIBYUV
void Attenuate(u8* d, const u8*, i32 w, i32 h) { libyuv::ARGBAttenuate(d, w * 4, d, w * 4, w, h); }
void Unattenuate(u8* d, const u8*, i32 w, i32 h) {
  libyuv::ARGBUnattenuate(d, w * 4, d, w * 4, w, h);
}
void ToPlanes(u8* d, const u8* s, i32 w, i32 h) {
  libyuv::ARGBToI444(s, w * 4, d, w, d + w * h, w, d + 2 * w * h, w, w, h);
}
void ToGray(u8* d, const u8* s, i32 w, i32 h) { libyuv::ARGBGrayTo(s, w * 4, d, w * 4, w, h); }
void FillRect(u8* d, const u8*, i32 w, i32 h) {
  libyuv::ARGBRect(d, w * 4, 0, 0, w, h, 0x80FF4020);
}
void ExpandJ400(u8* d, const u8* s, i32 w, i32 h) { libyuv::J400ToARGB(s, w, d, w * 4, w, h); }
#else
constexpr decltype(Conversion::peer) ExpandJ400 = nullptr;
constexpr decltype(Conversion::peer) Attenuate = nullptr, Unattenuate = nullptr, ToPlanes = nullptr,
                                     ToGray = nullptr, FillRect = nullptr;
#endif

using ConvertPictureFn = decltype(colour::ConvertPictureFromRGB);

/// A conversion to or from a colour space, by 256ths of a turn where there is a hue.
template <ConvertPictureFn convert, u32 model>
void ConvertSpace(i32 level, u8* d, const u8* s, i32 w, i32 h) {
  const bool yuv = model == PICTAVO_COLOR_YUV;
  convert(level, s, w, h, w * 4, d, w * 4, model, yuv ? PICTAVO_MATRIX_BT709 : 0,
          yuv ? PICTAVO_RANGE_LIMITED : PICTAVO_RANGE_FULL);
}
template <u32 model>
constexpr auto ToSpace = ConvertSpace<colour::ConvertPictureFromRGB, model>;
template <u32 model>
constexpr auto FromSpace = ConvertSpace<colour::ConvertPictureToRGB, model>;

void Mean(i32 level, u8* d, const u8* s, i32 w, i32 h) {
  cpu::ComputeMean(level, s, 4 * w, h, reinterpret_cast<f32*>(d));
}

const Conversion kConversions[] = {
    {"16 unpremultiply",
     false,
     true,
     {"opaque", "clear", "mixed", "soft"},
     [](i32 level, u8* d, const u8*, i32 w, i32 h) {
       cpu::UnpremultiplyPitched(level, d, w, h, w * 4);
     },
     Unattenuate},
    {"18 premultiply",
     false,
     true,
     {"opaque", "clear", "mixed", "soft"},
     [](i32 level, u8* d, const u8*, i32 w, i32 h) {
       cpu::PremultiplyPitched(level, d, w, h, w * 4);
     },
     Attenuate},
    {"20 BGRA to YUVA",
     true,
     false,
     {"soft"},
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::ConvertBGRAToYUVA(level, s, static_cast<u32>(w), h, w * 4, d, w * 4);
     },
     ToPlanes},
    {"46 grey",
     true,
     true,
     {"soft"},
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::ConvertBGRAToGray(level, s, w, h, w * 4, reinterpret_cast<u32*>(d), w * 4);
     },
     ToGray},
    {"77 fill",
     false,
     false,
     {"soft"},
     [](i32 level, u8* d, const u8*, i32 w, i32 h) {
       cpu::FillSolidColor(level, d, w, h, w * 4, 0x80FF4020);
     },
     FillRect},
    {"82 mean", true, false, {"soft"}, Mean, nullptr},
    {"88 RGB to YUV", true, false, {"soft"}, ToSpace<PICTAVO_COLOR_YUV>, ToPlanes},
    {"88 RGB to HSV", true, false, {"soft"}, ToSpace<PICTAVO_COLOR_HSV>, nullptr},
    {"88 RGB to HSL", true, false, {"soft"}, ToSpace<PICTAVO_COLOR_HSL>, nullptr},
    {"89 YUV to RGB", true, false, {"soft"}, FromSpace<PICTAVO_COLOR_YUV>, nullptr},
    {"89 HSV to RGB", true, false, {"soft"}, FromSpace<PICTAVO_COLOR_HSV>, nullptr},
    {"89 HSL to RGB", true, false, {"soft"}, FromSpace<PICTAVO_COLOR_HSL>, nullptr},
    {"110 expand a plane",
     true,
     false,
     {"soft"},
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::ExpandPlane(level, s, w, h, w, d, w * 4);
     },
     ExpandJ400,
     0b111,
     1},
};

/// A border of 16 pixels within the picture, beside a filter that extends one over the edges of
/// four planes.
Line Border(const Size& size) {
  std::vector<Run> runs = AtEachBuild(
      [size](i32, u8* d, const u8*) {
        const i32 w = size.width, h = size.height;
        ImageDesc image = {{}, w, h, 0, d + 4 * (16 * w + 16), w - 32, h - 32, 4 * w, 4};
        cpu::ExtendBoundary(&image, 16);
      },
      0b001);
  const Bytes& pixels = Pixels(size, "soft");
#ifdef PICTAVO_BENCH_AVFILTER
  AvFilter filter("fillborders=16:16:16:16:smear", "gbrap", size);
  filter.Load(pixels.data());
  runs.push_back({});
  runs.push_back([filter](u8*, const u8*) mutable { filter.RunInPlace(); });
#endif
  return {"71 border of 16", size.name() + " soft", size.pixels(), nullptr, &pixels, true, runs};
}

struct Histogram {
  const char* name;
  i32 pixelBytes;
  void (*plainly)(const u8* src, i64 pixels, u32* bins);  // as anybody would write it first
  void (*run)(const u8* src, u32 width, u32 height, u32* bins);
};

template <i32 step>
void CountPlainly(const u8* src, i64 pixels, u32* bins) {
  for (i64 i = 0; i < pixels; ++i) ++bins[src[i * step]];
}

const Histogram kHistograms[] = {
    {"43 one channel", 4, CountPlainly<4>,
     [](const u8* s, u32 w, u32 h, u32* bins) {
       cpu::ComputeHistogram(s, w, h, w * 4, bins, 256, 2);
     }},
    {"43 all channels", 4,
     [](const u8* s, i64 pixels, u32* bins) { CountPlainly<1>(s, 4 * pixels, bins); },
     [](const u8* s, u32 w, u32 h, u32* bins) {
       cpu::ComputeHistogram(s, w, h, w * 4, bins, 256, 4);
     }},
    {"44 plane", 1, CountPlainly<1>,
     [](const u8* s, u32 w, u32 h, u32* bins) {
       cpu::ComputeLumaHistogram(s, w, h, w, bins, 256, 0);
     }},
    {"44 mean of colours", 4,
     [](const u8* s, i64 pixels, u32* bins) {
       for (i64 i = 0; i < pixels; ++i) ++bins[(s[4 * i] + s[4 * i + 1] + s[4 * i + 2]) / 3];
     },
     [](const u8* s, u32 w, u32 h, u32* bins) {
       cpu::ComputeLumaHistogram(s, w, h, w * 4, bins, 256, 1);
     }},
};

}  // namespace

Table Conversions() {
  std::vector<std::string> columns = BuildColumns();
  const size_t builds = columns.size();
  columns.insert(columns.end(), {"libyuv", "libavfilter"});
  Table table = {"Conversions", columns, builds, {}};
  for (const Conversion& c : kConversions) {
    for (const Size& size : {kHd, kCached}) {
      for (const char* alpha : c.alphas) {
        std::vector<Run> runs =
            AtEachBuild([=](i32 level, u8* dst,
                            const u8* src) { c.run(level, dst, src, size.width, size.height); },
                        c.builds);
        const Bytes& source = c.srcBytes == 4 ? Pixels(size, "opaque") : Samples(size, c.srcBytes);
        if (c.peer != nullptr) {
          runs.push_back(
              [=](u8* dst, const u8* src) { c.peer(dst, src, size.width, size.height); });
        }
        table.lines.push_back({c.name, size.name() + " " + alpha, size.pixels(),
                               c.readsSrc ? &source : nullptr, &Pixels(size, alpha), c.readsDst,
                               runs});
      }
    }
  }
  for (const Size& size : {kHd, kCached}) table.lines.push_back(Border(size));
  return table;
}

Table Histograms() {
  static Bytes flat(static_cast<size_t>(kHd.pixels()) * 4, 0x80);
  static std::array<u32, 256> bins;
  Table table = {"Histograms", {"one table, plainly", "ours"}, 2, {}};
  for (const Histogram& h : kHistograms) {
    for (const char* data : {"random", "flat"}) {
      const Size size = {kHd.width, kHd.height * (h.pixelBytes == 1 ? 4 : 1)};
      table.lines.push_back(
          {h.name,
           size.name() + " " + data,
           size.pixels(),
           data == std::string("flat") ? &flat : &Pixels(kHd, "soft"),
           nullptr,
           false,
           {[=](u8*, const u8* src) { h.plainly(src, size.pixels(), bins.data()); },
            [=](u8*, const u8* src) {
              h.run(src, static_cast<u32>(size.width), static_cast<u32>(size.height), bins.data());
            }}});
    }
  }
  return table;
}

}  // namespace pictavo::bench
