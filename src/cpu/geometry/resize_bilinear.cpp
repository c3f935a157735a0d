#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "cpu/geometry/resize.h"
#include "cpu/geometry/resize_pictures.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"
#include "cpu/simd/ssse3.h"
#include "cpu/simd/target_region.h"
#include "platform/pages.h"

namespace pictavo::cpu {
namespace {

/// Memory for a call: pages, unless a little will do. Those of a small picture would take longer
/// than the picture.
class Scratch {
 public:
  explicit Scratch(i64 size) {
    if (size > i64{sizeof own_}) pages_.emplace(static_cast<size_t>(size));
  }

  /// Null when there is none.
  u8* data() { return pages_ ? static_cast<u8*>(pages_->data()) : own_; }

 private:
  alignas(64) u8 own_[16384];
  std::optional<Pages> pages_;
};

/// Where a destination column or row lies in the source.
struct Position {
  u16 fraction;  // the weight of the next source pixel or row
  u16 step;      // source pixels or rows from the position before
};

/// A resize with its tables.
struct Bilinear {
  u8* dst;
  i64 dstPitch;
  const u8* src;
  i64 srcWidth, srcPitch;
  i64 width, height;  // what is written
  const Position *columns, *rows;
  int fractionBits;
  bool opaque;
};

// ---------------------------------------------------------------------------------------------
// The rule.

i32 Between(i32 a, i32 b, i32 fraction, int bits) { return (((b - a) * fraction) >> bits) + a; }

/// Across first, then down. What weighs nothing is not read: the last column or row has no next.
template <int bits>
void BilinearRow(u8* dst, const u8* row, i64 nextRow, i32 fractionDown, const Bilinear& b) {
  const u8* p = row;
  for (i64 x = 0; x < b.width; ++x, dst += 4) {
    const Position position = b.columns[x];
    p += 4 * i64{position.step};
    const u8* q = p + (fractionDown == 0 ? 0 : nextRow);
    const i64 next = position.fraction == 0 ? 0 : 4;
    for (i64 c = 0; c < 4; ++c) {
      const i32 top = Between(p[c], p[next + c], position.fraction, bits);
      const i32 bottom = Between(q[c], q[next + c], position.fraction, bits);
      dst[c] = static_cast<u8>(Between(top, bottom, fractionDown, bits));
    }
    if (b.opaque) dst[3] = 255;
  }
}

template <int bits>
void ResizePortable(const Bilinear& b) {
  const u8* row = b.src;
  for (i64 y = 0; y < b.height; ++y) {
    row += b.rows[y].step * b.srcPitch;
    BilinearRow<bits>(b.dst + y * b.dstPitch, row, b.srcPitch, b.rows[y].fraction, b);
  }
}

/// Whether no destination column lies more than two source columns from the one before.
bool AreDense(const Bilinear& b) {
  return std::all_of(b.columns, b.columns + b.width, [](Position p) { return p.step <= 2; });
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// The vector builds.

TARGET_REGION("ssse3")
namespace ssse3 {
namespace {
#include "cpu/simd/pixels.inl"

#include "cpu/geometry/resize_bilinear.inl"
}  // namespace
}  // namespace ssse3
TARGET_REGION_END

TARGET_REGION("avx2")
namespace avx2 {
namespace {
#include "cpu/simd/pixels.inl"

#include "cpu/geometry/resize_bilinear.inl"
}  // namespace
}  // namespace avx2
TARGET_REGION_END

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

/// The positions of slot 31, in 1/128 of a source pixel.
void FindPositions7(Position* positions, i64 dstSize, i64 srcSize) {
  i64 previous = 0;
  for (i64 i = 0; i < dstSize; ++i) {
    const i64 place = i * 256 * srcSize / dstSize;  // in 1/256
    i64 index = place >> 8, fraction = (place >> 1) & 127;
    if (srcSize == 1) fraction = 0;
    if (srcSize >= 2 && index >= srcSize - 1) {
      index = srcSize - 2;
      fraction = 127;
    }
    positions[i] = {static_cast<u16>(fraction),
                    static_cast<u16>(std::min<i64>(index - previous, 255))};
    previous = index;
  }
}

/// The step of slots 30 and 58, in 1/65536 of a source pixel: short enough for the last of `count`
/// positions to have a next pixel. A single source pixel has none: the step is then 0.
i64 Step16(i64 dstSize, i64 srcSize, i64 count) {
  if (srcSize == 1) return 0;
  i64 length = srcSize * 65536;
  while (length / dstSize * (count - 1) >> 16 >= srcSize - 1) length -= 65536;
  return length / dstSize;
}

void FindPositions16(Position* positions, i64 dstSize, i64 srcSize, i64 count) {
  const i64 step = Step16(dstSize, srcSize, count);
  i64 place = 0, previous = 0;
  for (i64 i = 0; i < count; ++i, place += step) {
    positions[i] = {static_cast<u16>(place & 0xFFFF), static_cast<u16>((place >> 16) - previous)};
    previous = place >> 16;
  }
}

u32 Run(i32 level, i32 vectorLevel, const Bilinear& b) {
  if (level >= PICTAVO_LEVEL_AVX2 && avx2::Takes(b)) return avx2::Resize(b);
  if (level >= vectorLevel && ssse3::Takes(b)) return ssse3::Resize(b);
  b.fractionBits == 7 ? ResizePortable<7>(b) : ResizePortable<16>(b);
  return PICTAVO_S_OK;
}

u32 Bilinear16(i32 level, const ResizePictures& p, bool opaque, bool fullSize) {
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  const i64 width = i64{p.dstWidth} - !fullSize, height = i64{p.dstHeight} - !fullSize;
  if (height < 1) return PICTAVO_S_OK;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  Scratch tables((width + height) * i64{sizeof(Position)});
  if (tables.data() == nullptr) return PICTAVO_E_OUTOFMEMORY;
  Position* const columns = reinterpret_cast<Position*>(tables.data());
  Position* const rows = columns + width;
  FindPositions16(columns, p.dstWidth, p.srcWidth, width);
  FindPositions16(rows, p.dstHeight, p.srcHeight, height);
  return Run(
      level, PICTAVO_LEVEL_SSE4_1,
      {p.dst, p.dstPitch, p.src, p.srcWidth, p.srcPitch, width, height, columns, rows, 16, opaque});
}

}  // namespace

u32 ResizeBilinear16(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                     i32 srcWidth, i32 srcHeight, i32 srcPitch, i32 forceOpaque,
                     i32 fullSize) noexcept {
  return Bilinear16(level, {dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch},
                    forceOpaque != 0, fullSize != 0);
}

u32 ResizeBilinear16KeepAlpha(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                              const u8* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                              i32 fullSize) noexcept {
  return Bilinear16(level, {dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch},
                    false, fullSize != 0);
}

u32 ResizeBilinear7(i32 level, u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                    i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept {
  const ResizePictures p = {dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch};
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  constexpr i32 kMost = 1 << 23;  // the last position times 256 fits 32 bits
  if (dstWidth > kMost || dstHeight > kMost) return PICTAVO_E_INVALIDARG;
  Scratch tables((i64{dstWidth} + dstHeight) * i64{sizeof(Position)});
  if (tables.data() == nullptr) return PICTAVO_E_OUTOFMEMORY;
  Position* const columns = reinterpret_cast<Position*>(tables.data());
  Position* const rows = columns + dstWidth;
  FindPositions7(columns, dstWidth, srcWidth);
  FindPositions7(rows, dstHeight, srcHeight);
  rows[dstHeight - 1].fraction = 0;  // the last row is never blended with the one below it
  return Run(
      level, PICTAVO_LEVEL_SSSE3,
      {dst, dstPitch, src, srcWidth, srcPitch, dstWidth, dstHeight, columns, rows, 7, false});
}

}  // namespace pictavo::cpu
