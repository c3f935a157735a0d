#include "cpu/geometry/flip.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"

namespace pictavo::cpu {
namespace {

using RowFn = void(u8* dst, const u8* src, i64 width);

/// The pixels of a row from the last to the first, into another row.
void MirrorRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x) std::memcpy(dst + 4 * x, src + 4 * (width - 1 - x), 4);
}

/// In place: pixels change places with those as far from the other end.
void MirrorOwnRow(u8* row, const u8*, i64 width) {
  for (i64 x = 0; x < width / 2; ++x) {
    u8 *const left = row + 4 * x, *const right = row + 4 * (width - 1 - x);
    const u32 pixel = LoadPixel(left);
    std::memcpy(left, right, 4);
    std::memcpy(right, &pixel, 4);
  }
}

}  // namespace

#define KERNELS "cpu/geometry/flip_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#undef KERNELS

namespace {

void FlipSideways(i32 level, const Picture& dst, const Source& src) {
  static constexpr Builds<RowFn*> kApart = {
      .portable = MirrorRow, .sse2 = sse2::MirrorRow, .avx2 = avx2::MirrorRow};
  static constexpr Builds<RowFn*> kInPlace = {
      .portable = MirrorOwnRow, .sse2 = sse2::MirrorOwnRow, .avx2 = avx2::MirrorOwnRow};
  ForRows(dst, src, (dst.pixels == src.pixels ? kInPlace : kApart).For(level));
}

void FlipOver(const Picture& dst, const Source& src) {
  const i64 rowBytes = 4 * dst.width;
  if (dst.pixels != src.pixels) {
    ForRows(dst, src.Flipped(), [=](u8* to, const u8* from, i64) {
      std::memcpy(to, from, static_cast<size_t>(rowBytes));
    });
    return;
  }
  for (i64 y = 0; y < dst.height / 2; ++y)
    std::swap_ranges(dst.Row(y), dst.Row(y) + rowBytes, dst.Row(dst.height - 1 - y));
}

}  // namespace

u32 FlipPicture(i32 level, const ImageDesc* src, ImageDesc* dst, u32 mode) noexcept {
  if (const u32 code = CheckRecords(mode == 1 || mode == 2, src, dst); code != PICTAVO_S_OK)
    return code;
  const Source from = SourceIn(*src);
  const Picture to = PictureIn(*dst);
  if (!SameSize(from, to)) return PICTAVO_E_INVALIDARG;
  if (!AreSame(from, to) && ShareBytes(from, to)) return PICTAVO_E_INVALIDARG;
  mode == 1 ? FlipSideways(level, to, from) : FlipOver(to, from);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
