#include <algorithm>
#include <limits>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/measuring/measure.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

namespace pictavo::cpu {
namespace {

/// Which byte of a pixel counts, and from where on.
struct Wanted {
  u32 channel, threshold;
};

/// The columns in which something was found; none before that.
struct Columns {
  i64 left, right;
};

/// Counts the pixels from the first to before the end, and widens the columns to hold them.
i64 CountPixels(const u8* row, i64 first, i64 end, const Wanted& wanted, Columns* columns) {
  i64 count = 0;
  for (i64 x = first; x < end; ++x) {
    if (row[4 * x + wanted.channel] <= wanted.threshold) continue;
    ++count;
    *columns = {std::min(columns->left, x), std::max(columns->right, x + 1)};
  }
  return count;
}

using CountRowFn = i64(const u8* row, i64 width, const Wanted& wanted, Columns* columns);

i64 CountRow(const u8* row, i64 width, const Wanted& wanted, Columns* columns) {
  return CountPixels(row, 0, width, wanted, columns);
}

}  // namespace

#define KERNELS "cpu/measuring/bounds_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

u32 FindBounds(i32 level, const u8* buffer, i32 width, i32 height, u32 pitch, u32 channel,
               u32 threshold, u32* count, PixelBounds* bounds) noexcept {
  static constexpr Builds<CountRowFn*> kBuilds = {
      .portable = CountRow, .sse41 = sse41::VectorCountRow, .avx2 = avx2::VectorCountRow};
  if (count == nullptr || bounds == nullptr) return PICTAVO_E_POINTER;
  const Source picture = {buffer, width, height, pitch};
  if (const u32 code = CheckWith(channel <= 3, picture); code != PICTAVO_S_OK) {
    return code == PICTAVO_S_FALSE ? PICTAVO_E_INVALIDARG : code;
  }
  *bounds = {};
  Columns columns = {width, 0};
  i64 found = 0;
  for (i32 y = 0; y < height && threshold < 255; ++y) {
    const i64 inRow = kBuilds.For(level)(picture.Row(y), width, {channel, threshold}, &columns);
    if (inRow == 0) continue;
    if (found == 0) bounds->top = y;
    bounds->bottom = y + 1;
    found += inRow;
  }
  if (found != 0) {
    bounds->left = static_cast<i32>(columns.left);
    bounds->right = static_cast<i32>(columns.right);
  }
  *count = static_cast<u32>(std::min<i64>(found, std::numeric_limits<u32>::max()));
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
