// What the resizers share: their arguments and the checks of them.
#ifndef PICTAVO_CPU_GEOMETRY_RESIZE_PICTURES_H_
#define PICTAVO_CPU_GEOMETRY_RESIZE_PICTURES_H_

#include <cstdint>

#include "cpu/base/picture.h"

namespace pictavo::cpu {

using u64 = std::uint64_t;

struct ResizePictures {
  Picture dst;
  Source src;

  ResizePictures(u8* to, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* from, i32 srcWidth,
                 i32 srcHeight, i32 srcPitch)
      : dst{to, dstWidth, dstHeight, dstPitch}, src{from, srcWidth, srcHeight, srcPitch} {}

  /// PICTAVO_S_OK when there are pixels to write, else what the operation returns.
  u32 Check() const {
    if (dst.pixels == nullptr || src.pixels == nullptr) return PICTAVO_E_POINTER;
    return dst.IsEmpty() || src.IsEmpty() ? PICTAVO_S_FALSE : PICTAVO_S_OK;
  }

  /// Whether 16.16 fixed point holds every position in the source, and one step behind the last.
  bool Fits16() const { return src.width <= 0x7FFF && src.height <= 0x7FFF; }
};

/// Writes a row of source pixels that lie `step` apart, in 1/65536 of a pixel, from a place within
/// the first on.
using PickRowFn = void(u8* dst, const u8* row, i64 width, i64 srcWidth, u32 step, u32 place);

/// The fastest one up to a level for such a row.
PickRowFn* PickRowFor(i32 level, u32 step, i64 width, u32 place = 0) noexcept;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_RESIZE_PICTURES_H_
