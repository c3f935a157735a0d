// Filtered resizing beside the same filters in double precision, written down as they are defined.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "cpu/geometry/resize.h"
#include "operations.h"

namespace pictavo::test {
namespace {

struct Size {
  i32 width, height;
};

double Sinc(double x) {
  return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

/// The cubics of Mitchell and Netravali.
double Cubic(double x, double b, double c) {
  if (x < 1)
    return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + 6 - 2 * b) / 6;
  if (x >= 2) return 0;
  return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x + 8 * b +
          24 * c) /
         6;
}

double Filter(u32 filter, double x) {
  x = std::abs(x);
  switch (filter) {
    case PICTAVO_FILTER_TRIANGLE:
      return std::max(1 - x, 0.0);
    case PICTAVO_FILTER_CATMULL_ROM:
      return Cubic(x, 0, 0.5);
    case PICTAVO_FILTER_MITCHELL:
      return Cubic(x, 1 / 3.0, 1 / 3.0);
    default:
      return x < 3 ? Sinc(x) * Sinc(x / 3) : 0;
  }
}

/// Along one side, of values that lie `step` apart in lines that do not touch each other.
std::vector<double> Along(const std::vector<double>& from, i32 lines, i32 size, i32 dstSize,
                          double start, double length, u32 filter, bool isDown) {
  const auto at = [=](i32 line, i32 place, i32 count) {
    const i32 pixel = isDown ? place * (lines / 4) + line / 4 : line / 4 * count + place;
    return static_cast<size_t>(4 * pixel + line % 4);
  };
  const double r = length / dstSize, w = std::max(r, 1.0);
  if (r == 1 && start == 0) filter = PICTAVO_FILTER_TRIANGLE;  // which copies
  std::vector<double> to(static_cast<size_t>(lines) * static_cast<size_t>(dstSize));
  for (i32 i = 0; i < dstSize; ++i) {
    const double center = start + (i + 0.5) * r;
    double sum = 0;
    for (i32 j = -60; j < size + 60; ++j) {
      const double weight = Filter(filter, (j + 0.5 - center) / w);
      sum += weight;
      if (weight == 0) continue;
      for (i32 line = 0; line < lines; ++line)
        to[at(line, i, dstSize)] += weight * from[at(line, std::clamp(j, 0, size - 1), size)];
    }
    for (i32 line = 0; line < lines; ++line) to[at(line, i, dstSize)] /= sum;
  }
  return to;
}

/// Sums of the channels, or of colours times alpha and of alpha.
std::vector<double> Sums(const Bytes& src, Size size, Size dst, const f32 (&rect)[4],
                         const ResizeParam& param) {
  std::vector<double> sums(src.begin(), src.end());
  for (size_t i = 0; param.alphaMode == 1 && i < sums.size(); ++i)
    if (i % 4 != 3) sums[i] *= src[i / 4 * 4 + 3];
  sums = Along(sums, 4 * size.height, size.width, dst.width, rect[0], rect[2] - rect[0],
               param.filter, false);
  return Along(sums, 4 * dst.width, size.height, dst.height, rect[1], rect[3] - rect[1],
               param.filter, true);
}

/// How far a picture's bytes lie from the real numbers at most.
double LargestDistance(const Bytes& made, const std::vector<double>& sums, u32 alphaMode) {
  double largest = 0;
  for (size_t i = 0; i < made.size(); ++i) {
    const double alpha = sums[i / 4 * 4 + 3];
    const bool isWeighed = alphaMode == 1 && i % 4 != 3;
    if (isWeighed && made[i / 4 * 4 + 3] == 0) continue;
    const double real = isWeighed ? sums[i] / alpha : sums[i];
    largest = std::max(largest, std::abs(made[i] - std::clamp(real, 0.0, 255.0)));
  }
  return largest;
}

ImageDesc Record(const Bytes& bytes, Size size) {
  ImageDesc image = {};
  image.data = const_cast<u8*>(bytes.data());
  image.width = size.width, image.height = size.height;
  image.pitch = 4 * size.width, image.bytesPerPixel = 4;
  return image;
}

Bytes Resized(const Bytes& src, Size size, Size dst, const f32 (&rect)[4], const ResizeParam& param,
              i32 level = Levels().back()) {
  Bytes made(Span(dst.width, dst.height, 4 * dst.width));
  const ImageDesc from = Record(src, size);
  ImageDesc to = Record(made, dst);
  EXPECT_EQ(cpu::ResizeFilteredRegion(level, &from, &to, rect, &param), PICTAVO_S_OK);
  return made;
}

TEST(ResizeFiltered, LiesWithinOneOfTheRealNumbers) {
  constexpr i32 kSides[][2] = {{7, 113}, {113, 7}, {50, 51}, {51, 50},  {45, 30}, {30, 45},
                               {99, 33}, {33, 99}, {3, 40},  {161, 10}, {24, 24}, {90, 45}};
  Random random(5);
  for (size_t i = 0; i < std::size(kSides); ++i) {
    const auto& [width, dstWidth] = kSides[i];
    // A half both ways has kernels of its own.
    const auto& [height, dstHeight] = i == 11 ? kSides[i] : kSides[(i + 3) % std::size(kSides)];
    const Size size = {width, height}, dst = {dstWidth, dstHeight};
    Bytes src(Span(width, height, 4 * width));
    for (const int kind : {kSoft, kRuns}) {
      FillPixels(src.data(), src.size(), kind, random);
      for (u32 way = 0; way < 16; ++way) {
        const ResizeParam param = {way % 4, way / 4 % 2, {0, 0}};
        const f32 w = static_cast<f32>(width), h = static_cast<f32>(height);
        const f32 cut = way < 8 ? 0 : 0.3f;
        const f32 rect[] = {cut, cut, w - cut / 2, h - cut};
        const Bytes made = Resized(src, size, dst, rect, param);
        ASSERT_EQ(made, Resized(src, size, dst, rect, param, PICTAVO_LEVEL_PORTABLE));
        ASSERT_LE(LargestDistance(made, Sums(src, size, dst, rect, param), param.alphaMode), 1)
            << width << "x" << height << " to " << dstWidth << "x" << dstHeight << ", filter "
            << param.filter << ", mode " << param.alphaMode << ", cut " << cut;
      }
    }
  }
}

/// The column of a picture's centre of brightness.
double Centre(const Bytes& bytes, i32 width) {
  double sum = 0, moment = 0;
  for (size_t i = 0; i < bytes.size() / 4; ++i) {
    sum += bytes[4 * i];
    moment += bytes[4 * i] * (static_cast<double>(i % static_cast<size_t>(width)) + 0.5);
  }
  return moment / sum;
}

/// A grey disc, opaque, whose edge is too steep for rounding to hold it in place.
Bytes Disc(Size size, double x, double y) {
  Bytes bytes;
  for (i32 i = 0; i < size.width * size.height; ++i) {
    const double radius = std::hypot(i % size.width + 0.5 - x, i / size.width + 0.5 - y);
    bytes.insert(bytes.end(), 3, static_cast<u8>(std::clamp(60 * (42 - radius), 0.0, 250.0)));
    bytes.push_back(255);
  }
  return bytes;
}

TEST(ResizeFiltered, MovesNothingAndPansEvenly) {
  constexpr Size kSize = {192, 112};
  const Bytes disc = Disc(kSize, 86.3, 57.6);
  const double centre = Centre(disc, kSize.width);
  for (u32 filter = 0; filter < 4; ++filter) {
    for (const Size dst : {Size{12, 7}, Size{61, 29}, Size{131, 96}, Size{287, 150}, {801, 300}}) {
      const Bytes made = Resized(disc, kSize, dst, {0, 0, 192, 112}, {filter, filter % 2, {}});
      const double ratio = dst.width / 192.0;
      EXPECT_NEAR(Centre(made, dst.width), centre * ratio, 0.01 * std::max(ratio, 1.0))
          << "filter " << filter << " to " << dst.width;
    }
    // Between pixels, Lanczos itself bends a line by so much.
    const double most = filter == PICTAVO_FILTER_LANCZOS ? 0.022 : 0.01;
    for (int step = 0; step < 20; ++step) {
      const f32 left = 20 + static_cast<f32>(step) / 16;
      const Bytes made =
          Resized(disc, kSize, {140, 112}, {left, 0, left + 140, 112}, {filter, 0, {}});
      EXPECT_NEAR(Centre(made, 140) + left, centre, most) << "filter " << filter << " at " << left;
    }
  }
}

}  // namespace
}  // namespace pictavo::test
