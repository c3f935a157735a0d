// What the resizers share: their arguments and the checks of them.
#ifndef PICTAVO_CPU_GEOMETRY_RESIZE_PICTURES_H_
#define PICTAVO_CPU_GEOMETRY_RESIZE_PICTURES_H_

#include <cstdint>

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

using u16 = std::uint16_t;
using u64 = std::uint64_t;

struct ResizePictures {
  u8* dst;
  i32 dstWidth, dstHeight, dstPitch;
  const u8* src;
  i32 srcWidth, srcHeight, srcPitch;

  /// PICTAVO_S_OK when there are pixels to write, else what the operation returns.
  u32 Check() const {
    if (dst == nullptr || src == nullptr) return PICTAVO_E_POINTER;
    const bool empty = dstWidth < 1 || dstHeight < 1 || srcWidth < 1 || srcHeight < 1;
    return empty ? PICTAVO_S_FALSE : PICTAVO_S_OK;
  }

  /// Whether 16.16 fixed point holds every position in the source, and one step behind the last.
  bool Fits16() const { return srcWidth <= 0x7FFF && srcHeight <= 0x7FFF; }
};

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_RESIZE_PICTURES_H_
