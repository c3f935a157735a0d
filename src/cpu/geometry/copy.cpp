#include "cpu/geometry/copy.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/base/string_moves.h"

namespace pictavo::cpu {
namespace {

using CopyRowFn = void(u8* dst, const u8* src, i64 width);

void CopyRow(u8* dst, const u8* src, i64 width) {
  std::memcpy(dst, src, static_cast<size_t>(4 * width));
}

void CopyRow_AVX2(u8* dst, const u8* src, i64 width) {
  constexpr i64 kLong = 1024;
  width < kLong ? CopyRow(dst, src, width) : StringCopy(dst, src, width);
}

/// Whether a rectangle lies in a picture; in an empty one, only an empty one does.
template <typename Byte>
bool Holds(const PictureOf<Byte>& picture, const Rectangle& part) {
  return part.IsInside({0, 0, std::max<i64>(picture.width, 0), std::max<i64>(picture.height, 0)});
}

}  // namespace

u32 CopyRectangle(i32 level, const ImageDesc* src, ImageDesc* dst, const i32* rect) noexcept {
  static constexpr Builds<CopyRowFn*> kBuilds = {.portable = CopyRow, .avx2 = CopyRow_AVX2};
  if (rect == nullptr) return PICTAVO_E_POINTER;
  const Rectangle part = RectangleOf(rect);
  if (const u32 code = CheckRecords(part.width() >= 0 && part.height() >= 0, dst, src);
      code != PICTAVO_S_OK && code != PICTAVO_S_FALSE) {
    return code;
  }
  const Source from = SourceIn(*src);
  const Picture to = PictureIn(*dst);
  const Rectangle there = {0, 0, part.width(), part.height()};
  if (!Holds(from, part) || !Holds(to, there)) return PICTAVO_E_INVALIDARG;
  if (from.IsEmpty() || to.IsEmpty()) return PICTAVO_S_FALSE;
  if (ShareBytes(from, to)) return PICTAVO_E_INVALIDARG;
  if (part.IsEmpty()) return PICTAVO_S_FALSE;
  ForRows(to.Part(there), from.Part(part), kBuilds.For(level));
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
