// Channels and planes, levels, the colour matrix and tables of colours, beside other libraries
// where they are installed.
#include "av_filter.h"
#include "bench.h"
#include "cpu/colour/channels.h"
#include "cpu/colour/grading.h"
#include "grading_data.h"

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace pictavo::bench {
namespace {

struct Channels {
  const char* name;
  i32 srcBytes, dstBytes;  // a pixel; nothing is read for 0
  bool readsDst;
  u32 builds;
  void (*run)(i32 level, u8* dst, const u8* src, i32 width, i32 height);
  void (*libyuv)(u8* dst, const u8* src, i32 width, i32 height);
  void (*opencv)(u8* dst, const u8* src, i32 width, i32 height);
};

#ifdef PICTAVO_BENCH_LIBYUV
void CopyYToAlpha(u8* d, const u8* s, i32 w, i32 h) {
  libyuv::ARGBCopyYToAlpha(s, w, d, 4 * w, w, h);
}
void ExtractAlpha(u8* d, const u8* s, i32 w, i32 h) {
  libyuv::ARGBExtractAlpha(s, 4 * w, d, w, w, h);
}
void ShuffleToRgba(u8* d, const u8* s, i32 w, i32 h) {
  libyuv::ARGBToABGR(s, 4 * w, d, 4 * w, w, h);
}
void ColorTable(u8* d, const u8*, i32 w, i32 h) {
  static const std::vector<u8> table = TableOfLevels4(kMidLevels);
  libyuv::RGBColorTable(d, 4 * w, table.data(), 0, 0, w, h);
}
void ColorMatrix(u8* d, const u8*, i32 w, i32 h) {
  const int8_t sepia[] = {17, 68, 35, 0, 22, 88, 45, 0, 24, 98, 50, 0};
  libyuv::RGBColorMatrix(d, 4 * w, sepia, 0, 0, w, h);
}
#else
constexpr decltype(Channels::libyuv) CopyYToAlpha = nullptr, ExtractAlpha = nullptr,
                                     ShuffleToRgba = nullptr, ColorTable = nullptr,
                                     ColorMatrix = nullptr;
#endif

#ifdef PICTAVO_BENCH_OPENCV
template <int channel>
void ExtractChannel(u8* d, const u8* s, i32 w, i32 h) {
  cv::Mat to(h, w, CV_8U, d);
  cv::extractChannel(cv::Mat(h, w, CV_8UC4, const_cast<u8*>(s)), to, channel);
}
void LutOfLevels(u8* d, const u8*, i32 w, i32 h) {
  static std::vector<u8> table = TableOfLevels4(kMidLevels);
  cv::Mat picture(h, w, CV_8UC4, d);
  cv::LUT(picture, cv::Mat(1, 256, CV_8UC4, table.data()), picture);
}
#else
template <int channel>
constexpr decltype(Channels::opencv) ExtractChannel = nullptr;
constexpr decltype(Channels::opencv) LutOfLevels = nullptr;
#endif

template <u32 channel>
void Extract(i32 level, u8* d, const u8* s, i32 w, i32 h) {
  cpu::ExtractPlane(level, s, w, h, 4 * w, d, w, channel);
}
template <u32 channels>
void Levels(i32 level, u8* d, const u8*, i32 w, i32 h) {
  cpu::AdjustLevels(level, d, w, h, 4 * w, channels, &kMidLevels);
}
template <const ColorParam& param>
void Colour(i32 level, u8* d, const u8*, i32 w, i32 h) {
  cpu::AdjustColor(level, d, w, h, 4 * w, &param);
}

constexpr ColorParam kWarm = {0.05f, 1.2f, 1.3f, 15, 0.2f, 0.1f}, kGlaring = {0, 4, 4, 15, 0, 0};

const Channels kChannels[] = {
    {"59 set alpha", 1, 4, true, 0b111,
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::SetAlphaPlane(level, d, s, static_cast<u32>(w), static_cast<u32>(h));
     },
     CopyYToAlpha, nullptr},
    {"94 extract green", 4, 1, false, 0b111, Extract<1>, nullptr, ExtractChannel<1>},
    {"94 extract alpha", 4, 1, false, 0b111, Extract<3>, ExtractAlpha, ExtractChannel<3>},
    {"94 extract luma", 4, 1, false, 0b111, Extract<4>, nullptr, nullptr},
    {"106 shuffle", 4, 4, false, 0b111,
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::ShuffleChannels(level, d, s, i64{w} * h, 2, 1, 0, 3);
     },
     ShuffleToRgba, nullptr},
    {"109 expand a plane, scaled", 1, 4, false, 0b111,
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::ExpandPlaneScaled(level, s, w, h, w, d, 4 * w, 1.3f);
     },
     nullptr, nullptr},
    {"53 levels", 0, 4, true, 0b101, Levels<7>, ColorTable, LutOfLevels},
    {"53 levels, alpha too", 0, 4, true, 0b101, Levels<15>, nullptr, LutOfLevels},
    {"99 colour", 0, 4, true, 0b111, Colour<kWarm>, ColorMatrix, nullptr},
    {"99 colour, weights above 8", 0, 4, true, 0b111, Colour<kGlaring>, nullptr, nullptr},
};

const Bytes* Data(const Size& size, i32 pixelBytes) {
  if (pixelBytes == 0) return nullptr;
  return pixelBytes == 4 ? &Pixels(size, "soft") : &Samples(size, pixelBytes);
}

}  // namespace

Table Gradings() {
  std::vector<std::string> columns = BuildColumns();
  columns.insert(columns.end(), {"libyuv", "OpenCV"});
  Table table = {"Channels, tone and colour", columns, BuildColumns().size(), {}};
  for (const Channels& c : kChannels) {
    for (const Size& size : {kHd, kCached}) {
      std::vector<Run> runs =
          AtEachBuild([=](i32 level, u8* dst,
                          const u8* src) { c.run(level, dst, src, size.width, size.height); },
                      c.builds);
      for (const auto peer : {c.libyuv, c.opencv}) {
        runs.push_back(peer == nullptr ? Run() : [=](u8* dst, const u8* src) {
          peer(dst, src, size.width, size.height);
        });
      }
      table.lines.push_back({c.name, size.name(), size.pixels(), Data(size, c.srcBytes),
                             Data(size, c.dstBytes), c.readsDst, runs});
    }
  }
  return table;
}

/// A row at a time, so that one thread does all.
Table ColourTables() {
  std::vector<std::string> columns = BuildColumns();
  columns.push_back("libavfilter");
  Table table = {"Tables of colours, one thread", columns, BuildColumns().size(), {}};
  for (const Size& size : {kHd, kCached}) {
    for (const u32 side : {17u, 33u, 65u}) {
      const ColorLutParam param = {side, 256, FilmTable(side).data()};
      std::vector<Run> runs = AtEachBuild([=](i32 level, u8* dst, const u8* src) {
        for (i64 y = 0; y < size.height; ++y) MapRow(level, dst, src, size, y, param);
      });
      runs.push_back(RunOf("lut3d=interp=tetrahedral:file=" + FilmFile(side), "bgra", size));
      for (const char* pixels : {"random", "film"}) {
        table.lines.push_back(
            {"66 table of " + std::to_string(side), size.name() + " " + pixels, size.pixels(),
             pixels == std::string("film") ? &Film(size) : &Pixels(size, "opaque"),
             &Pixels(size, "opaque"), false, runs});
      }
    }
  }
  return table;
}

}  // namespace pictavo::bench
