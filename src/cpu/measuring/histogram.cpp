#include "cpu/measuring/histogram.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>
#include <utility>

#include "cpu/base/builds.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"

namespace pictavo::cpu {
namespace {

/// Neighbours count in different tables, so that equal ones do not wait for each other's sum.
constexpr size_t kTables = 8;
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

/// Counts so many pixels that each table gets some.
template <int pixelBytes, BinFn*... bins, size_t... places>
void CountRun(Tables* tables, const u8* run, std::index_sequence<places...>) {
  (CountPixel<bins...>(tables, run + places * pixelBytes, places * sizeof...(bins)), ...);
}

/// The counts are what takes time, one store for each; memory must not add to it.
template <int pixelBytes, BinFn*... bins>
void CountRow(Tables* tables, const u8* row, i64 width) {
  constexpr size_t kRun = 16;
  constexpr i64 kAhead = 1024;
  i64 x = 0;
  for (; x + i64{kRun} <= width; x += kRun, row += kRun * pixelBytes) {
    __builtin_prefetch(row + kAhead);  // outside the picture it is no fault
    CountRun<pixelBytes, bins...>(tables, row, std::make_index_sequence<kRun>());
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

using SumFn = i64(const u8* bytes, i64 count);

i64 Sum(const u8* bytes, i64 count) {
  i64 sum = 0;
  for (i64 i = 0; i < count; ++i) sum += bytes[i];
  return sum;
}

}  // namespace

#define KERNELS "cpu/measuring/sum.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#undef KERNELS

u32 ComputeHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins, i32 binCount,
                     u32 selector) noexcept {
  return Count(CounterOfBytes(selector), pixels, width, height, pitch, bins, binCount);
}

u32 ComputeLumaHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
                         i32 binCount, u32 selector) noexcept {
  return Count(CounterOfLuma(selector), pixels, width, height, pitch, bins, binCount);
}

u32 ComputeMean(i32 level, const u8* buffer, i32 width, i32 height, f32* mean) noexcept {
  if (buffer == nullptr || mean == nullptr) return PICTAVO_E_POINTER;
  if (width < 1 || height < 1) return PICTAVO_E_INVALIDARG;
  const i64 count = i64{width} * height;
  static constexpr Builds<SumFn*> kBuilds = {
      .portable = Sum, .sse2 = sse2::VectorSum, .avx2 = avx2::VectorSum};
  const i64 sum = kBuilds.For(level)(buffer, count);
  *mean = static_cast<f32>(static_cast<double>(sum) / static_cast<double>(count));
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
