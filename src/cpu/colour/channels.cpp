#include "cpu/colour/channels.h"

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/simd/sse41.h"

namespace pictavo::cpu {
namespace {

using RowFn = void(u8* dst, const u8* src, i64 width);

void ExpandRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4) {
    dst[0] = dst[1] = dst[2] = src[x];
    dst[3] = 255;
  }
}

}  // namespace

#define KERNELS "cpu/colour/channels_rows.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

u32 ExpandPlane(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                i32 dstPitch) noexcept {
  static constexpr Builds<RowFn*> kBuilds = {.portable = ExpandRow, .sse41 = sse41::ExpandRow};
  const Picture to = {dst, width, height, dstPitch};
  const Source from = {src, width, height, srcPitch, 1};
  const u32 code = Check(to, from);
  if (code != PICTAVO_E_POINTER && to.IsEmpty()) return PICTAVO_S_OK;
  if (code != PICTAVO_S_OK) return code;
  if (ShareBytes(to, from)) return PICTAVO_E_INVALIDARG;
  ForPixels(to, from, kBuilds.For(level));
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
