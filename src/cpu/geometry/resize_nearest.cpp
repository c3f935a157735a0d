#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/string_moves.h"
#include "cpu/geometry/resize.h"
#include "cpu/geometry/resize_pictures.h"
#include "cpu/simd/avx2.h"

namespace pictavo::cpu {
namespace {

/// The source pixels at every `step`, in 1/65536 of a pixel.
class Picker {
 public:
  Picker(const u8* row, u32 step, u32 place) : row_(row), step_(step), place_(place) {}

  const u8* At() const { return row_ + 4 * i64{place_ >> 16}; }
  u32 Next() {
    const u32 pixel = LoadPixel(At());
    place_ += step_;
    return pixel;
  }

 private:
  const u8* row_;
  u32 step_;
  u32 place_;
};

void CopyRow(u8* dst, const u8* src, i64 width, i64, u32, u32) {
  std::memmove(dst, src, 4 * static_cast<size_t>(width));
}

// Halves and doubles are common, and loops that a compiler turns into vector code.

void HalveRow(u8* dst, const u8* src, i64 width, i64, u32, u32) {
  for (i64 x = 0; x < width; ++x) std::memcpy(dst + 4 * x, src + 8 * x, 4);
}

void DoubleRow(u8* dst, const u8* src, i64 width, i64, u32, u32) {
  for (i64 x = 0; x < width / 2; ++x) {
    const u32 pixel = LoadPixel(src + 4 * x), pixels[] = {pixel, pixel};
    std::memcpy(dst + 8 * x, pixels, 8);
  }
}

void PickRow(u8* dst, const u8* src, i64 width, i64, u32 step, u32 place) {
  Picker picker(src, step, place);
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

PickRowFn* PickRowFor(i32 level, u32 step, i64 width, u32 place) noexcept {
  static constexpr Builds<PickRowFn*> kDense = {.portable = PickRow, .avx2 = avx2::PickDenseRow};
  if (step == 0x10000) return CopyRow;
  if (step == 0x20000) return HalveRow;
  if (step == 0x8000 && width % 2 == 0 && place == 0) return DoubleRow;
  return step < 0x20000 ? kDense.For(level) : PickRow;
}

namespace {

constexpr i32 kLong = 1024;  // pixels; from here on the string copy is the fastest

/// Where a destination column or row begins in the source, in 1/65536 of a pixel.
struct Steps {
  u32 x, y;

  explicit Steps(const ResizePictures& p)
      : x(static_cast<u32>((p.src.width << 16) / p.dst.width)),
        y(static_cast<u32>((p.src.height << 16) / p.dst.height)) {}
};

/// The pixels of columns left to right and rows top to bottom.
void PickPixels(i32 level, const ResizePictures& p, i64 left, i64 top, i64 right, i64 bottom) {
  const Steps steps(p);
  const i64 width = right - left, first = left * steps.x >> 16;
  const u32 within = static_cast<u32>(left) * steps.x & 0xFFFF;
  PickRowFn* const makeRow = PickRowFor(level, steps.x, width, within);
  const bool apart = std::abs(p.dst.pitch) >= 4 * width;
  for (i64 y = top; y < bottom; ++y) {
    const i64 from = y * steps.y >> 16;
    u8* const row = p.dst.Row(y) + 4 * left;
    const bool repeats = y > top && from == (y - 1) * steps.y >> 16;
    if (repeats && apart && width >= kLong) {
      StringCopy(row, row - p.dst.pitch, width);
    } else if (repeats && makeRow == PickRow) {  // the others are no slower than a short copy
      std::memmove(row, row - p.dst.pitch, 4 * static_cast<size_t>(width));
    } else {
      makeRow(row, p.src.Row(from) + 4 * first, width, p.src.width - first, steps.x, within);
    }
  }
}

/// Pitches of whole pixels.
ResizePictures PicturesOf32(u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u32* src,
                            i32 srcWidth, i32 srcHeight, i32 srcPitch) {
  return {reinterpret_cast<u8*>(dst),       dstWidth, dstHeight, dstPitch / 4 * 4,
          reinterpret_cast<const u8*>(src), srcWidth, srcHeight, srcPitch / 4 * 4};
}

}  // namespace

u32 ResizeNearest32(i32 level, u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u32* src,
                    i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept {
  const ResizePictures p =
      PicturesOf32(dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch);
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  PickPixels(level, p, 0, 0, dstWidth, dstHeight);
  return PICTAVO_S_OK;
}

u32 ResizeNearestInRect(i32 level, u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                        const u32* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                        const i32 rect[4]) noexcept {
  if (rect == nullptr) return PICTAVO_E_POINTER;
  const ResizePictures p =
      PicturesOf32(dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch);
  if (const u32 code = CheckWith(p.Fits16(), p.dst, p.src); code != PICTAVO_S_OK) return code;
  if (ShareBytes(p.dst, p.src)) return PICTAVO_E_INVALIDARG;
  const i64 left = std::max(rect[0], 0), right = std::min(rect[2], dstWidth);
  const i64 top = std::max(rect[1], 0), bottom = std::min(rect[3], dstHeight);
  if (left < right) PickPixels(level, p, left, top, right, bottom);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
