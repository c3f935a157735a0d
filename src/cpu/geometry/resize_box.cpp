#include <algorithm>
#include <array>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/geometry/resize.h"
#include "cpu/geometry/resize_box_simd.h"
#include "cpu/geometry/resize_pictures.h"

namespace pictavo::cpu {
namespace {

/// The samples of one axis: four for each destination column or row, a quarter of a step apart.
struct Grid {
  i64 step, quarter;  // in 1/65536 of a source pixel

  Grid(i64 dstSize, i64 srcSize) : step(srcSize * 65536 / dstSize), quarter(step / 4) {}

  bool Divides(i64 by) const { return step == by * 65536; }
  i64 Sample(i64 position, i64 i) const { return (position * step + i * quarter) >> 16; }
};

/// How the samples of four destination pixels lie on columns where four steps are whole columns, so
/// that those of the next four lie alike, and each pixel's are within four columns.
struct Pattern {
  bool isUsable;
  i64 stepBytes;                       // from four pixels to the next, in RowSums
  std::array<i64, 4> firstBytes = {};  // to each pixel's first column
  alignas(32) u16 counts[4][16] = {};  // of samples on each pixel's columns, for each channel

  explicit Pattern(const Grid& grid)
      : isUsable(4 * grid.step % 65536 == 0 && grid.quarter <= 65536),
        stepBytes(8 * grid.Sample(4, 0)) {
    if (!isUsable) return;
    for (i64 x = 0; x < 4; ++x) {
      const i64 first = grid.Sample(x, 0);
      firstBytes[static_cast<size_t>(x)] = 8 * first;
      for (i64 i = 0; i < 16; ++i) ++counts[x][4 * (grid.Sample(x, i / 4) - first) + i % 4];
    }
  }
};

/// What a destination row is made of.
struct BoxRow {
  std::array<const u8*, 4> rows;  // the sampled source rows, of which some may be one
  i64 srcWidth, dstWidth;
  const Grid& columns;
  const Pattern& pattern;
  bool opaque;  // alpha is not read
};

using BoxRowFn = void(u8* dst, const BoxRow& row);

/// A vector build: of any size, for sources of at least so many columns, and of a quarter each way,
/// for destinations of as many.
struct VectorBox {
  i64 leastWidth;
  BoxRowFn *plain, *weighted, *plainQuarter, *weightedQuarter;
};

// ---------------------------------------------------------------------------------------------
// The rule.

struct Sums {
  std::array<i32, 4> plain = {};     // of each channel
  std::array<i32, 3> weighted = {};  // of each colour times alpha

  Sums(const BoxRow& row, i64 x) {
    for (i64 i = 0; i < 4; ++i) {
      for (const u8* pixels : row.rows) Add(pixels + 4 * row.columns.Sample(x, i));
    }
  }

 private:
  void Add(const u8* pixel) {
    for (size_t c = 0; c < 4; ++c) plain[c] += pixel[c];
    for (size_t c = 0; c < 3; ++c) weighted[c] += pixel[c] * pixel[3];
  }
};

void PlainRow(u8* dst, const BoxRow& row) {
  for (i64 x = 0; x < row.dstWidth; ++x, dst += 4) {
    const Sums sums(row, x);
    for (size_t c = 0; c < 4; ++c) dst[c] = static_cast<u8>(sums.plain[c] >> 4);
    if (row.opaque) dst[3] = 255;
  }
}

/// Where every sample is opaque the weighted mean is the plain one.
void WeightedRow(u8* dst, const BoxRow& row) {
  for (i64 x = 0; x < row.dstWidth; ++x, dst += 4) {
    const Sums sums(row, x);
    const i32 alpha = sums.plain[3] >> 4;
    for (size_t c = 0; c < 3; ++c) {
      dst[c] = static_cast<u8>(alpha == 0 ? 0 : sums.weighted[c] / sums.plain[3]);
    }
    dst[3] = static_cast<u8>(alpha);
  }
}

// ---------------------------------------------------------------------------------------------
// The rule by strips: the sampled rows of a stretch of columns are summed once, then the columns.

constexpr i64 kStripColumns = 256;

/// The stretch of source columns that some destination pixels sample.
struct Strip {
  i64 x, pixels;  // of the destination
  i64 first, columns;

  Strip(const BoxRow& row, i64 from)
      : x(from),
        pixels(std::min({row.dstWidth - x, MostPixels(row.columns), kStripColumns})),
        first(row.columns.Sample(x, 0)),
        columns(row.columns.Sample(x + pixels - 1, 3) + 1 - first) {}

  /// No more destination pixels than fit, wherever the strip begins; whole fours of them.
  static i64 MostPixels(const Grid& grid) {
    const i64 room = (kStripColumns - 1) * 65536 - 1 - 3 * grid.quarter;
    return (room / std::max<i64>(grid.step, 1) + 1) / 4 * 4;
  }

  /// Columns far apart are better sampled one by one.
  static bool Suits(const Grid& grid) { return grid.step <= 16 * 65536; }
};

/// Sums of four rows, for each column and channel, and room for the columns behind the last ones
/// that a pixel's four reach into.
using RowSums = std::array<u16, 4 * (kStripColumns + 3)>;

void SumRows(RowSums* sums, const BoxRow& row, const Strip& strip) {
  const auto [a, b, c, d] = row.rows;
  const i64 from = 4 * strip.first, count = 4 * strip.columns;
  u16* const out = sums->data();
  for (i64 i = 0; i < count; ++i) {
    out[i] = static_cast<u16>(a[from + i] + b[from + i] + c[from + i] + d[from + i]);
  }
}

/// The means of four columns of sums for each pixel from x on; its four channels are added as one
/// number.
void MeansOneByOne(u8* dst, const RowSums& sums, const Grid& columns, const Strip& strip,
                   i64 from) {
  RowSums boxes;
  const i64 step = columns.step, quarter = columns.quarter, pixels = strip.pixels;
  i64 place = (strip.x + from) * step - strip.first * 65536;
  for (i64 x = from; x < pixels; ++x, place += step) {
    u64 box = 0;
    for (i64 i = 0; i < 4; ++i) {
      u64 column;
      std::memcpy(&column, sums.data() + 4 * ((place + i * quarter) >> 16), 8);
      box += column;
    }
    std::memcpy(boxes.data() + 4 * x, &box, 8);
  }
  for (i64 i = 4 * from; i < 4 * pixels; ++i) {
    dst[i] = static_cast<u8>(boxes[static_cast<size_t>(i)] >> 4);
  }
}

/// Two rows and columns into one, each of which is sampled twice.
void HalveRow(u8* dst, const BoxRow& row) {
  constexpr u32 kEven = 0x00FF00FF;  // blue and red
  const u8 *top = row.rows[0], *bottom = row.rows[2];
  const i64 width = row.dstWidth;
  for (i64 x = 0; x < width; ++x) {
    const u32 a = LoadPixel(top + 8 * x), b = LoadPixel(top + 8 * x + 4);
    const u32 c = LoadPixel(bottom + 8 * x), d = LoadPixel(bottom + 8 * x + 4);
    const u32 even = (a & kEven) + (b & kEven) + (c & kEven) + (d & kEven);
    const u32 odd = (a >> 8 & kEven) + (b >> 8 & kEven) + (c >> 8 & kEven) + (d >> 8 & kEven);
    const u32 mean = (even >> 2 & kEven) | (odd << 6 & ~kEven);
    std::memcpy(dst + 4 * x, &mean, 4);
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// The vector builds.

#define KERNELS "cpu/geometry/resize_box_means.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#undef KERNELS

namespace sse41 {
using sse2::Means;
}

#define KERNELS "cpu/geometry/resize_box.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

void PlainStrips(u8* dst, const BoxRow& row) {
  RowSums sums;
  for (i64 x = 0; x < row.dstWidth;) {
    const Strip strip(row, x);
    SumRows(&sums, row, strip);
    sse2::Means(dst + 4 * x, &sums, row, strip);
    x += strip.pixels;
  }
}

// ---------------------------------------------------------------------------------------------
// The operations.

/// Whether each way is divided by the same number.
bool Divides(const ResizePictures& p, i64 by) {
  return Grid(p.dst.width, p.src.width).Divides(by) && Grid(p.dst.height, p.src.height).Divides(by);
}

/// The vector build for these pictures up to a level; null when there is none.
const VectorBox* VectorsFor(i32 level, const ResizePictures& p) {
  static constexpr Builds<const VectorBox*> kBuilds = {.sse41 = &sse41::kVectorBox,
                                                       .avx2 = &avx2::kVectorBox};
  return kBuilds.For(level,
                     [&](const VectorBox* build) { return p.src.width >= build->leastWidth; });
}

bool IsQuarter(const VectorBox& build, const ResizePictures& p) {
  return p.dst.width >= build.leastWidth && Divides(p, 4);
}

u32 ResizeRows(const ResizePictures& p, bool opaque, BoxRowFn* strips, BoxRowFn* pixels) {
  const Grid columns(p.dst.width, p.src.width), lines(p.dst.height, p.src.height);
  BoxRowFn* const makeRow = Strip::Suits(columns) ? strips : pixels;
  const Pattern pattern(columns);
  BoxRow row = {{}, p.src.width, p.dst.width, columns, pattern, opaque};
  for (i64 y = 0; y < p.dst.height; ++y) {
    u8* const dst = p.dst.Row(y);
    const auto rowsBefore = row.rows;
    for (size_t j = 0; j < 4; ++j) {
      row.rows[j] = p.src.Row(lines.Sample(y, static_cast<i64>(j)));
    }
    if (row.rows == rowsBefore) {
      std::memmove(dst, dst - p.dst.pitch, 4 * static_cast<size_t>(p.dst.width));
    } else {
      makeRow(dst, row);
    }
  }
  return PICTAVO_S_OK;
}

}  // namespace

u32 ResizeBox16AlphaWeighted(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                             const u8* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                             i32 forceOpaque) noexcept {
  const ResizePictures p(dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch);
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  const bool opaque = forceOpaque != 0;
  BoxRowFn* const pixels = opaque ? PlainRow : WeightedRow;
  const VectorBox* const vectors = VectorsFor(level, p);
  if (vectors == nullptr) return ResizeRows(p, opaque, pixels, pixels);
  return ResizeRows(p, opaque,
                    IsQuarter(*vectors, p) ? vectors->weightedQuarter : vectors->weighted, pixels);
}

u32 ResizeBox16(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept {
  const ResizePictures p(dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch);
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  if (Divides(p, 2)) return ResizeRows(p, false, HalveRow, PlainRow);
  const VectorBox* const vectors = VectorsFor(level, p);
  if (vectors == nullptr) return ResizeRows(p, false, PlainStrips, PlainRow);
  return ResizeRows(p, false, IsQuarter(*vectors, p) ? vectors->plainQuarter : vectors->plain,
                    PlainRow);
}

}  // namespace pictavo::cpu
