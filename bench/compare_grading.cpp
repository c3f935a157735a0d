// Levels, the colour matrix and tables of colours.
#include <algorithm>
#include <cmath>

#include "av_filter.h"
#include "compare.h"
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

constexpr Size kSize = kCached;

/// A change in place of the hard picture.
template <typename Change>
Bytes Changed(Change change) {
  Bytes picture = HardPicture(kSize);
  change(picture.data());
  return picture;
}

Bytes Graded(const ColorParam& param) {
  return Changed(
      [&](u8* p) { cpu::AdjustColor(8, p, kSize.width, kSize.height, 4 * kSize.width, &param); });
}

/// The grading by its formula, in doubles and rounded once.
Bytes GradedInDoubles(const ColorParam& p) {
  const double angle = double{p.hue} * 3.14159265358979324 / 180;
  const double wb = 1 - p.temperature / 2, wg = 1 - p.tint / 2, wr = 1 + p.temperature / 2;
  const auto luma = [](double b, double g, double r) { return .0722 * b + .7152 * g + .2126 * r; };
  return Changed([&](u8* pixels) {
    for (i64 i = 0; i < 4 * kSize.pixels(); i += 4) {
      u8* const c = pixels + i;
      const double gain = 1 / luma(wb, wg, wr);
      const double b = gain * wb * c[0], g = gain * wg * c[1], r = gain * wr * c[2];
      const double y = luma(b, g, r), u = (b - y) / 1.8556, v = (r - y) / 1.5748;
      const double s = p.saturation;
      const double blue = y + 1.8556 * s * (u * std::cos(angle) - v * std::sin(angle));
      const double red = y + 1.5748 * s * (u * std::sin(angle) + v * std::cos(angle));
      const double to[] = {blue, (y - .0722 * blue - .2126 * red) / .7152, red};
      for (int k = 0; k < 3; ++k) {
        const double graded = 127.5 + p.contrast * (to[k] - 127.5) + 255 * double{p.brightness};
        c[k] = static_cast<u8>(std::clamp(std::floor(graded + 0.5), 0.0, 255.0));
      }
    }
  });
}

[[maybe_unused]] Bytes MappedByFilm(u32 side) {
  Bytes mapped(static_cast<size_t>(4 * kSize.pixels()));
  const ColorLutParam param = {side, 256, FilmTable(side).data()};
  for (i64 y = 0; y < kSize.height; ++y)
    MapRow(8, mapped.data(), HardPicture(kSize).data(), kSize, y, param);
  return mapped;
}

#ifdef PICTAVO_BENCH_AVFILTER
Bytes Filtered(const std::string& filters) {
  AvFilter filter(filters, "bgra", kSize);
  filter.Load(HardPicture(kSize).data());
  filter.Run();
  return filter.Result();
}
#endif

void CompareColour(Comparisons* all) {
  [[maybe_unused]] const char* const kPicture = "hard edges";
  const ColorParam mild = {0.05f, 1.2f, 1.3f, 15, 0.2f, 0.1f}, glaring = {0, 4, 4, 200, -1, 1};
  all->push_back({"99 colour", "doubles", kPicture, Graded(mild), GradedInDoubles(mild), 1});
  all->push_back({"99 colour, weights above 8", "doubles", kPicture, Graded(glaring),
                  GradedInDoubles(glaring), 1});
#ifdef PICTAVO_BENCH_LIBYUV
  // Weights in 1/64 that are cut, as are the sums.
  const ColorParam grey = {0, 1, 0, 0, 0, 0};
  all->push_back(
      {"99 no saturation", "libyuv RGBColorMatrix", kPicture, Graded(grey), Changed([](u8* p) {
         const int8_t luma[] = {9, 92, 27, 0, 9, 92, 27, 0, 9, 92, 27, 0};  // of 128
         libyuv::RGBColorMatrix(p, 4 * kSize.width, luma, 0, 0, kSize.width, kSize.height);
       }),
       6});
#endif
#ifdef PICTAVO_BENCH_AVFILTER
  // In YUV of 8 bits, limited range: three roundings, two in steps of 1.2, and colours that leave
  // its range. eq's contrast is about 128 of luma and leaves the colour differences alone.
  const std::string yuv =
      "scale=out_color_matrix=bt709:flags=accurate_rnd+full_chroma_int+neighbor,"
      "format=yuv444p,";
  const std::string rgb =
      ",scale=in_color_matrix=bt709:flags=accurate_rnd+full_chroma_int+neighbor";
  const ColorParam turned = {0, 1, 1, 30, 0, 0}, pale = {0, 1, 0.5f, 0, 0, 0},
                   bright = {0.1f, 1, 1, 0, 0, 0}, warm = {0, 1, 1, 0, 0.2f, 0};
  all->push_back(
      {"99 hue", "libavfilter hue", kPicture, Graded(turned), Filtered(yuv + "hue=h=30" + rgb), 4});
  all->push_back({"99 saturation", "libavfilter eq", kPicture, Graded(pale),
                  Filtered(yuv + "eq=saturation=0.5" + rgb), 6});
  all->push_back({"99 brightness", "libavfilter eq", kPicture, Graded(bright),
                  Filtered(yuv + "eq=brightness=0.1" + rgb), 6});
  // Gains of a black body's temperature instead of ours.
  all->push_back({"99 temperature", "libavfilter colortemperature", kPicture, Graded(warm),
                  Filtered("colortemperature=temperature=5300:pl=1"), 32});
#endif
}

}  // namespace

Comparisons CompareGrading() {
  Comparisons all;
  [[maybe_unused]] const char* const kPicture = "hard edges";
  const Bytes levels = Changed([](u8* p) {
    cpu::AdjustLevels(8, p, kSize.width, kSize.height, 4 * kSize.width, 7, &kMidLevels);
  });
  std::vector<u8> table = TableOfLevels4(kMidLevels);
#ifdef PICTAVO_BENCH_OPENCV
  all.push_back({"53 levels", "OpenCV LUT, a table made in doubles", kPicture, levels,
                 Changed([&](u8* p) {
                   cv::Mat picture(kSize.height, kSize.width, CV_8UC4, p);
                   cv::LUT(picture, cv::Mat(1, 256, CV_8UC4, table.data()), picture);
                 }),
                 0});
#endif
#ifdef PICTAVO_BENCH_LIBYUV
  all.push_back(
      {"53 levels", "libyuv RGBColorTable, the same", kPicture, levels, Changed([&](u8* p) {
         libyuv::RGBColorTable(p, 4 * kSize.width, table.data(), 0, 0, kSize.width, kSize.height);
       }),
       0});
#endif
  CompareColour(&all);
#ifdef PICTAVO_BENCH_AVFILTER
  // Cuts where ours rounds.
  for (const u32 side : {2u, 17u, 33u, 65u}) {
    all.push_back({"66 table of " + std::to_string(side), "libavfilter lut3d tetrahedral", kPicture,
                   MappedByFilm(side), Filtered("lut3d=interp=tetrahedral:file=" + FilmFile(side)),
                   1});
  }
#endif
  return all;
}

}  // namespace pictavo::bench
