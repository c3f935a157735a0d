#include <cstring>

#include "cpu/resize.h"
#include "cpu/resize_pictures.h"

namespace pictavo::cpu {
namespace {

void PickRow(u8* dst, const u8* src, i64 width, u32 step) {
  u32 place = 0;
  for (i64 x = 0; x < width; ++x, place += step) {
    std::memcpy(dst + 4 * x, src + 4 * i64{place >> 16}, 4);
  }
}

}  // namespace

u32 ResizeNearest32(u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u32* src,
                    i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept {
  const ResizePictures p = {reinterpret_cast<u8*>(dst),       dstWidth, dstHeight, dstPitch,
                            reinterpret_cast<const u8*>(src), srcWidth, srcHeight, srcPitch};
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  const u32 stepX = static_cast<u32>((srcWidth << 16) / dstWidth);
  const u32 stepY = static_cast<u32>((srcHeight << 16) / dstHeight);
  const i64 dstStep = dstPitch / 4 * 4, srcStep = srcPitch / 4 * 4;  // whole pixels
  u8* row = p.dst;
  u32 place = 0;
  for (i32 y = 0; y < dstHeight; ++y, row += dstStep, place += stepY) {
    const bool repeats = y > 0 && place >> 16 == (place - stepY) >> 16;
    if (repeats) {
      std::memmove(row, row - dstStep, 4 * static_cast<size_t>(dstWidth));
    } else {
      PickRow(row, p.src + i64{place >> 16} * srcStep, dstWidth, stepX);
    }
  }
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
