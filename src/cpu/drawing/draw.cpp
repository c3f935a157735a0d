#include "cpu/drawing/draw.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/base/string_moves.h"
#include "cpu/blending/layer.h"
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

constexpr Builds<FillRowFn*> kFillRow = {.portable = FillRow, .sse2 = FillRow_SSE2};

/// Of pixels there are.
void Fill(i32 level, const Picture& picture, u32 colour) {
  FillRowFn* const fillRow = kFillRow.For(level);
  if (picture.pitch == 4 * picture.width) {  // one row
    return fillRow(picture.pixels, picture.width * picture.height, colour);
  }
  for (i64 y = 0; y < picture.height; ++y) fillRow(picture.Row(y), picture.width, colour);
}

// ---------------------------------------------------------------------------------------------
// Rectangles between pixels.

/// Pixels that a side of the rectangle covers alike, in 1/256.
struct Stretch {
  i64 first, end;
  i64 coverage;
};

/// A side of the rectangle within 0 … size: the pixel that its beginning cuts, those it covers
/// whole, the one that its end cuts. Any of them may be empty.
struct Side {
  Stretch stretches[3];

  Side(f32 from, f32 to, i64 size) {
    const i64 a = Place(from, size), b = std::max(Place(to, size), a);
    const i64 whole = (a + 255) / 256, end = b / 256;
    if (whole > end) {  // within one pixel
      stretches[0] = {end, end + 1, b - a};
      stretches[1] = stretches[2] = {};
      return;
    }
    stretches[0] = {a / 256, whole, 256 * whole - a};
    stretches[1] = {whole, end, 256};
    stretches[2] = {end, (b + 255) / 256, b - 256 * end};
  }

  /// A place between pixels, in 1/256.
  static i64 Place(f32 x, i64 size) {
    const double inside = std::clamp<double>(x, 0, static_cast<double>(size));
    return static_cast<i64>(inside * 256 + 0.5);
  }
};

/// Lays a colour over pixels there may be, in columns as wide as the layer at hand.
void LayColour(i32 level, const Picture& picture, i64 coverage, u32 colour) {
  if (coverage == 0 || picture.IsEmpty()) return;
  constexpr i64 kColumns = 1024;
  u8 layer[4 * kColumns];
  const i64 columns = std::min(picture.width, kColumns);
  FillRow(layer, columns, colour);
  const BlendParam param = {0, static_cast<u32>(coverage - 1), 2, 0, 0};
  LayerKernel* const lay = kLayerKernels[0].For(level);
  for (i64 x = 0; x < picture.width; x += columns) {
    const i64 width = std::min(picture.width - x, columns);
    lay(picture.pixels + 4 * x, layer, static_cast<i32>(width), static_cast<i32>(picture.height),
        static_cast<i32>(picture.pitch), 0, param);
  }
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

u32 FillRectangle(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, const i32* rect,
                  u32 colour) noexcept {
  if (rect == nullptr) return PICTAVO_E_POINTER;
  const Picture picture = {buffer, width, height, pitch};
  if (const u32 code = Check(picture); code != PICTAVO_S_OK) return code;
  const Rectangle cut = RectangleOf(rect).CutTo(picture.Frame());
  if (!cut.IsEmpty()) Fill(level, picture.Part(cut), colour);
  return PICTAVO_S_OK;
}

u32 FillRectangleSmooth(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, f32 left, f32 top,
                        f32 right, f32 bottom, u32 colour) noexcept {
  const Picture picture = {buffer, width, height, pitch};
  const bool areNumbers = left == left && top == top && right == right && bottom == bottom;
  if (const u32 code = CheckWith(areNumbers, picture); code != PICTAVO_S_OK) return code;
  const Side across(left, right, width), down(top, bottom, height);
  for (const Stretch& rows : down.stretches) {
    for (const Stretch& columns : across.stretches) {
      LayColour(level, picture.Part({columns.first, rows.first, columns.end, rows.end}),
                (columns.coverage * rows.coverage + 128) >> 8, colour);
    }
  }
  return PICTAVO_S_OK;
}

u32 FillSolidColor(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, u32 colour) noexcept {
  if (buffer == nullptr) return PICTAVO_E_POINTER;
  if (width < 1 || height < 1) return PICTAVO_S_FALSE;
  Fill(level, {buffer, width, height, pitch}, colour);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
