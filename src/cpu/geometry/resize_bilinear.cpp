#include <algorithm>
#include <cstring>
#include <new>

#include "cpu/base/builds.h"
#include "cpu/base/scratch.h"
#include "cpu/geometry/resize.h"
#include "cpu/geometry/resize_pictures.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/ssse3.h"

namespace pictavo::cpu {
namespace {

/// Where a destination column or row lies in the source.
struct Position {
  u16 fraction;  // the weight of the next source pixel or row
  u16 step;      // source pixels or rows from the position before
};

/// A resize with its tables.
struct Bilinear {
  Picture dst;  // what is written
  Source src;
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
  for (i64 x = 0; x < b.dst.width; ++x, dst += 4) {
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
  const u8* row = b.src.pixels;
  for (i64 y = 0; y < b.dst.height; ++y) {
    row += b.rows[y].step * b.src.pitch;
    BilinearRow<bits>(b.dst.Row(y), row, b.src.pitch, b.rows[y].fraction, b);
  }
}

/// Whether no destination column lies more than two source columns from the one before.
bool AreDense(const Bilinear& b) {
  return std::all_of(b.columns, b.columns + b.dst.width, [](Position p) { return p.step <= 2; });
}

/// Whether positions are pixels or rows as far apart as the first two, as where a size is halved.
bool AreWhole(const Position* positions, i64 count) {
  return std::all_of(positions + 1, positions + count,
                     [=](Position p) { return p.fraction == 0 && p.step == positions[1].step; });
}

/// A resize whose every pixel is one of the source.
bool IsPicked(const Bilinear& b) {
  return !b.opaque && b.src.width <= 0x7FFF && AreWhole(b.columns, b.dst.width) &&
         AreWhole(b.rows, b.dst.height);
}

void PickPixels(i32 level, const Bilinear& b) {
  const u32 step = u32{b.columns[1].step} << 16;
  PickRowFn* const pick = PickRowFor(level, step, b.dst.width);
  const i64 rowStep = b.dst.height > 1 ? b.rows[1].step : 0;
  for (i64 y = 0; y < b.dst.height; ++y)
    pick(b.dst.Row(y), b.src.Row(y * rowStep), b.dst.width, b.src.width, step, 0);
}

/// A vector build, for destinations of at least so many columns.
struct VectorBilinear {
  i64 leastWidth;
  u32 (*resize)(const Bilinear& b);
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// The vector builds.

#define KERNELS "cpu/geometry/resize_bilinear.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_ssse3.inl"
#undef KERNELS

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

using BilinearBuilds = Builds<const VectorBilinear*>;
constexpr BilinearBuilds kBuilds7 = {.ssse3 = &ssse3::kBilinear, .avx2 = &avx2::kBilinear};
constexpr BilinearBuilds kBuilds16 = {.sse41 = &ssse3::kBilinear, .avx2 = &avx2::kBilinear};

u32 Run(const BilinearBuilds& builds, i32 level, const Bilinear& b) {
  const VectorBilinear* const build = builds.For(level, [&](const VectorBilinear* vectors) {
    return b.dst.width >= vectors->leastWidth && b.src.width >= 2;
  });
  if (build != nullptr && IsPicked(b)) {
    PickPixels(level, b);
    return PICTAVO_S_OK;
  }
  if (build != nullptr) return build->resize(b);
  b.fractionBits == 7 ? ResizePortable<7>(b) : ResizePortable<16>(b);
  return PICTAVO_S_OK;
}

u32 Bilinear16(i32 level, const ResizePictures& p, bool opaque, bool fullSize) {
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  Picture written = p.dst;
  written.width -= !fullSize;
  written.height -= !fullSize;
  if (written.height < 1) return PICTAVO_S_OK;
  if (!p.Fits16()) return PICTAVO_E_INVALIDARG;
  Scratch tables((written.width + written.height) * i64{sizeof(Position)});
  if (tables.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  Position* const columns = reinterpret_cast<Position*>(tables.data());
  Position* const rows = columns + written.width;
  FindPositions16(columns, p.dst.width, p.src.width, written.width);
  FindPositions16(rows, p.dst.height, p.src.height, written.height);
  return Run(kBuilds16, level, {written, p.src, columns, rows, 16, opaque});
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
  const ResizePictures p(dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch);
  if (const u32 code = p.Check(); code != PICTAVO_S_OK) return code;
  constexpr i32 kMost = 1 << 23;  // the last position times 256 fits 32 bits
  if (dstWidth > kMost || dstHeight > kMost) return PICTAVO_E_INVALIDARG;
  Scratch tables((i64{dstWidth} + dstHeight) * i64{sizeof(Position)});
  if (tables.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  Position* const columns = reinterpret_cast<Position*>(tables.data());
  Position* const rows = columns + dstWidth;
  FindPositions7(columns, dstWidth, srcWidth);
  FindPositions7(rows, dstHeight, srcHeight);
  rows[dstHeight - 1].fraction = 0;  // the last row is never blended with the one below it
  return Run(kBuilds7, level, {p.dst, p.src, columns, rows, 7, false});
}

}  // namespace pictavo::cpu
