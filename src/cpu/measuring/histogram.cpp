#include "cpu/measuring/histogram.h"

#include <algorithm>
#include <array>

namespace pictavo::cpu {
namespace {

/// Neighbours count in different tables, so that equal ones do not wait for each other's sum.
constexpr size_t kTables = 4;
using Tables = std::array<std::array<u32, 256>, kTables>;

/// The bin that a pixel counts in.
using BinFn = u8(const u8* pixel);

template <int byte>
u8 Byte(const u8* pixel) {
  return pixel[byte];
}

u8 MeanOfColours(const u8* pixel) { return static_cast<u8>((pixel[0] + pixel[1] + pixel[2]) / 3); }

/// Counts one pixel, which is number `place` of a run, in each of the bins.
template <BinFn*... bins>
void CountPixel(Tables* tables, const u8* pixel, size_t place) {
  (++(*tables)[place++ % kTables][bins(pixel)], ...);
}

using CountRowFn = void(Tables* tables, const u8* row, i64 width);

template <int pixelBytes, BinFn*... bins>
void CountRow(Tables* tables, const u8* row, i64 width) {
  i64 x = 0;
  for (; x + i64{kTables} <= width; x += kTables, row += kTables * pixelBytes) {
    CountPixel<bins...>(tables, row, 0);
    CountPixel<bins...>(tables, row + pixelBytes, 1);
    CountPixel<bins...>(tables, row + 2 * pixelBytes, 2);
    CountPixel<bins...>(tables, row + 3 * pixelBytes, 3);
  }
  for (; x < width; ++x, row += pixelBytes) CountPixel<bins...>(tables, row, 0);
}

CountRowFn* CounterOfBytes(u32 selector) {
  switch (selector) {
    case 1:
      return CountRow<4, Byte<1>>;
    case 2:
      return CountRow<4, Byte<2>>;
    case 3:
      return CountRow<4, Byte<3>>;
    case 4:
      return CountRow<4, Byte<0>, Byte<1>, Byte<2>, Byte<3>>;
    case 5:
      return CountRow<4, Byte<0>, Byte<1>, Byte<2>>;
    default:
      return CountRow<4, Byte<0>>;
  }
}

/// Null for a selector that counts nothing.
CountRowFn* CounterOfLuma(u32 selector) {
  switch (selector) {
    case 0:
      return CountRow<1, Byte<0>>;
    case 1:
      return CountRow<4, MeanOfColours>;
    case 2:
      return CountRow<4, Byte<2>>;
    default:
      return nullptr;
  }
}

u32 Count(CountRowFn* countRow, const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
          i32 binCount) {
  if (pixels == nullptr || bins == nullptr || binCount < 1) return PICTAVO_E_FAIL;
  std::fill_n(bins, binCount, 0);
  if (countRow == nullptr || width == 0) return PICTAVO_S_OK;
  Tables tables = {};
  for (i64 y = 0; y < height; ++y) countRow(&tables, pixels + y * pitch, width);
  const size_t counted = std::min<size_t>(static_cast<size_t>(binCount), 256);
  for (const auto& table : tables) {
    for (size_t bin = 0; bin < counted; ++bin) bins[bin] += table[bin];
  }
  return PICTAVO_S_OK;
}

}  // namespace

u32 ComputeHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins, i32 binCount,
                     u32 selector) noexcept {
  return Count(CounterOfBytes(selector), pixels, width, height, pitch, bins, binCount);
}

u32 ComputeLumaHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
                         i32 binCount, u32 selector) noexcept {
  return Count(CounterOfLuma(selector), pixels, width, height, pitch, bins, binCount);
}

u32 ComputeMean(const u8* buffer, i32 width, i32 height, f32* mean) noexcept {
  if (buffer == nullptr || mean == nullptr) return PICTAVO_E_POINTER;
  if (width < 1 || height < 1) return PICTAVO_E_INVALIDARG;
  const i64 count = i64{width} * height;
  i64 sum = 0;
  for (i64 i = 0; i < count; ++i) sum += buffer[i];
  *mean = static_cast<f32>(static_cast<double>(sum) / static_cast<double>(count));
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
