#include <algorithm>
#include <array>
#include <cstring>

#include "cpu/resize.h"
#include "cpu/resize_pictures.h"

namespace pictavo::cpu {
namespace {

/// The samples of one axis: four for each destination column or row, a quarter of a step apart.
struct Grid {
  i64 step, quarter;  // in 1/65536 of a source pixel

  Grid(i32 dstSize, i32 srcSize) : step(srcSize * 65536 / dstSize), quarter(step / 4) {}

  i64 Sample(i64 position, i64 i) const { return (position * step + i * quarter) >> 16; }
};

/// The source rows that a destination row samples; some may be one.
using SampledRows = std::array<const u8*, 4>;

// ---------------------------------------------------------------------------------------------
// The rule.

struct Sums {
  std::array<i32, 4> plain = {};     // of each channel
  std::array<i32, 3> weighted = {};  // of each colour times alpha

  Sums(const SampledRows& rows, const Grid& columns, i64 x) {
    for (i64 i = 0; i < 4; ++i) {
      for (const u8* row : rows) Add(row + 4 * columns.Sample(x, i));
    }
  }

 private:
  void Add(const u8* pixel) {
    for (size_t c = 0; c < 4; ++c) plain[c] += pixel[c];
    for (size_t c = 0; c < 3; ++c) weighted[c] += pixel[c] * pixel[3];
  }
};

using BoxRow = void(u8* dst, i64 width, const SampledRows& rows, const Grid& columns);

void OpaqueRow(u8* dst, i64 width, const SampledRows& rows, const Grid& columns) {
  for (i64 x = 0; x < width; ++x, dst += 4) {
    const Sums sums(rows, columns, x);
    for (size_t c = 0; c < 3; ++c) dst[c] = static_cast<u8>(sums.plain[c] >> 4);
    dst[3] = 255;
  }
}

/// Where every sample is opaque the weighted mean is the plain one.
void WeightedRow(u8* dst, i64 width, const SampledRows& rows, const Grid& columns) {
  for (i64 x = 0; x < width; ++x, dst += 4) {
    const Sums sums(rows, columns, x);
    const i32 alpha = sums.plain[3] >> 4;
    for (size_t c = 0; c < 3; ++c) {
      dst[c] = static_cast<u8>(alpha == 0 ? 0 : sums.weighted[c] / sums.plain[3]);
    }
    dst[3] = static_cast<u8>(alpha);
  }
}

void PlainRow(u8* dst, i64 width, const SampledRows& rows, const Grid& columns) {
  for (i64 x = 0; x < width; ++x, dst += 4) {
    const Sums sums(rows, columns, x);
    for (size_t c = 0; c < 4; ++c) dst[c] = static_cast<u8>(sums.plain[c] >> 4);
  }
}

u32 ResizeRows(const ResizePictures& p, BoxRow* boxRow) {
  const Grid columns(p.dstWidth, p.srcWidth), lines(p.dstHeight, p.srcHeight);
  u8* dst = p.dst;
  for (i64 y = 0; y < p.dstHeight; ++y, dst += p.dstPitch) {
    SampledRows rows;
    for (size_t j = 0; j < 4; ++j)
      rows[j] = p.src + lines.Sample(y, static_cast<i64>(j)) * p.srcPitch;
    boxRow(dst, p.dstWidth, rows, columns);
  }
  return PICTAVO_S_OK;
}

}  // namespace

u32 ResizeBox16AlphaWeighted(i32, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                             i32 srcWidth, i32 srcHeight, i32 srcPitch, i32 forceOpaque) noexcept {
  const ResizePictures p = {dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch};
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  return ResizeRows(p, forceOpaque != 0 ? OpaqueRow : WeightedRow);
}

u32 ResizeBox16(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src, i32 srcWidth,
                i32 srcHeight, i32 srcPitch) noexcept {
  const ResizePictures p = {dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch};
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  return ResizeRows(p, PlainRow);
}

}  // namespace pictavo::cpu
