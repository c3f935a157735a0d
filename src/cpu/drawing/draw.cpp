#include "cpu/drawing/draw.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/base/string_moves.h"
#include "cpu/simd/sse2.h"

namespace pictavo::cpu {
namespace {

using FillRowFn = void(u8* row, i64 width, u32 colour);

void FillRow(u8* row, i64 width, u32 colour) {
  for (i64 x = 0; x < width; ++x) std::memcpy(row + 4 * x, &colour, 4);
}

void FillRow_SSE2(u8* row, i64 width, u32 colour) {
  if (width >= 128) return StringFill(row, width, colour);
  const auto pixels = sse2::V::All32(colour);
  i64 x = 0;
  for (; x + 4 <= width; x += 4) pixels.Store(row + 4 * x);
  FillRow(row + 4 * x, width - x, colour);
}

}  // namespace

u32 DrawRectOutline(u32* buffer, u32 pitch, const i32* rect, u32 colour) noexcept {
  if (buffer == nullptr || rect == nullptr) return PICTAVO_E_FAIL;
  const i64 left = rect[0], top = rect[1], right = rect[2], bottom = rect[3];
  if (left < 0 || top < 0 || right < left || bottom < top) return PICTAVO_E_INVALIDARG;
  const i64 width = right - left + 1, step = i64{pitch >> 2} * 4;
  u8* row = reinterpret_cast<u8*>(buffer) + top * step + left * 4;
  FillRow(row, width, colour);
  row += step;
  for (i64 y = top + 1; y < bottom; ++y, row += step) {
    FillRow(row, 1, colour);
    FillRow(row + 4 * (width - 1), 1, colour);
  }
  FillRow(row, width, colour);
  return PICTAVO_S_OK;
}

u32 FillSolidColor(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, u32 colour) noexcept {
  if (buffer == nullptr) return PICTAVO_E_POINTER;
  if (width < 1 || height < 1) return PICTAVO_S_FALSE;
  static constexpr Builds<FillRowFn*> kBuilds = {.portable = FillRow, .sse2 = FillRow_SSE2};
  FillRowFn* const fillRow = kBuilds.For(level);
  if (pitch == 4 * i64{width}) {  // one row
    fillRow(buffer, i64{width} * height, colour);
    return PICTAVO_S_OK;
  }
  const Picture picture = {buffer, width, height, pitch};
  for (i64 y = 0; y < height; ++y) fillRow(picture.Row(y), width, colour);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
