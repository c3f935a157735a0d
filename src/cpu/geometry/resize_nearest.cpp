#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/string_moves.h"
#include "cpu/geometry/resize.h"
#include "cpu/geometry/resize_bilinear_simd.h"
#include "cpu/geometry/resize_pictures.h"

namespace pictavo::cpu {
namespace {

/// The source pixels at every `step`, in 1/65536 of a pixel.
class Picker {
 public:
  Picker(const u8* row, u32 step, u32 place = 0) : row_(row), step_(step), place_(place) {}

  const u8* At() const { return row_ + 4 * i64{place_ >> 16}; }
  u32 Next() {
    u32 pixel;
    std::memcpy(&pixel, At(), 4);
    place_ += step_;
    return pixel;
  }

 private:
  const u8* row_;
  u32 step_;
  u32 place_;
};

void CopyRow(u8* dst, const u8* src, i64 width, i64, u32) {
  std::memmove(dst, src, 4 * static_cast<size_t>(width));
}

// Halves and doubles are common, and loops that a compiler turns into vector code.

void HalveRow(u8* dst, const u8* src, i64 width, i64, u32) {
  for (i64 x = 0; x < width; ++x) std::memcpy(dst + 4 * x, src + 8 * x, 4);
}

void DoubleRow(u8* dst, const u8* src, i64 width, i64, u32) {
  for (i64 x = 0; x < width / 2; ++x) {
    u32 pixel;
    std::memcpy(&pixel, src + 4 * x, 4);
    const u32 pixels[] = {pixel, pixel};
    std::memcpy(dst + 8 * x, pixels, 8);
  }
}

void PickRow(u8* dst, const u8* src, i64 width, i64, u32 step) {
  Picker picker(src, step);
  const i64 ahead = 256 * i64{step >> 16};  // where pixels lie apart the processor looks less far
  for (; width >= 4; width -= 4, dst += 16) {  // one store for four
    __builtin_prefetch(picker.At() + ahead);
    const u32 pixels[] = {picker.Next(), picker.Next(), picker.Next(), picker.Next()};
    std::memcpy(dst, pixels, 16);
  }
  for (; width > 0; --width, dst += 4) {
    const u32 pixel = picker.Next();
    std::memcpy(dst, &pixel, 4);
  }
}

}  // namespace

#define KERNELS "cpu/geometry/resize_nearest.inl"
#include "cpu/simd/for_avx2.inl"
#undef KERNELS

PickRowFn* PickRowFor(i32 level, u32 step, i64 width) noexcept {
  static constexpr Builds<PickRowFn*> kDense = {.portable = PickRow, .avx2 = avx2::PickDenseRow};
  if (step == 0x10000) return CopyRow;
  if (step == 0x20000) return HalveRow;
  if (step == 0x8000 && width % 2 == 0) return DoubleRow;
  return step < 0x20000 ? kDense.For(level) : PickRow;
}

constexpr i32 kLong = 1024;  // pixels; from here on the string copy is the fastest

u32 ResizeNearest32(i32 level, u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u32* src,
                    i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept {
  const i32 dstStep = dstPitch / 4 * 4, srcStep = srcPitch / 4 * 4;  // whole pixels
  const ResizePictures p(reinterpret_cast<u8*>(dst), dstWidth, dstHeight, dstStep,
                         reinterpret_cast<const u8*>(src), srcWidth, srcHeight, srcStep);
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  const u32 stepX = static_cast<u32>((srcWidth << 16) / dstWidth);
  const u32 stepY = static_cast<u32>((srcHeight << 16) / dstHeight);
  PickRowFn* const makeRow = PickRowFor(level, stepX, dstWidth);
  const bool apart = std::abs(dstStep) >= 4 * i64{dstWidth};
  u32 place = 0;
  for (i64 y = 0; y < dstHeight; ++y, place += stepY) {
    u8* const row = p.dst.Row(y);
    const bool repeats = y > 0 && place >> 16 == (place - stepY) >> 16;
    if (repeats && apart && dstWidth >= kLong) {
      StringCopy(row, row - dstStep, dstWidth);
    } else if (repeats && makeRow == PickRow) {  // the others are no slower than a short copy
      std::memmove(row, row - dstStep, 4 * static_cast<size_t>(dstWidth));
    } else {
      makeRow(row, p.src.Row(place >> 16), dstWidth, srcWidth, stepX);
    }
  }
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
