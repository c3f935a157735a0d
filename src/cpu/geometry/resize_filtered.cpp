#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/numbers.h"
#include "cpu/base/picture.h"
#include "cpu/base/scratch.h"
#include "cpu/geometry/filter_taps.h"
#include "cpu/geometry/resize.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/ssse3.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu {
namespace {

/// A resize with its tables.
struct Filtered {
  Picture dst;
  Source src;
  FilterTaps across, down;
  bool weighted;  // by alpha
};

/// A part of the destination, small enough for what it takes to stay in the cache.
struct Tile {
  i64 x, y, width, height;
};

/// In what order rows hold the pixels of a tile is their build's own, but each takes 16 bytes. A
/// row has room for whole blocks of this many. A line more keeps powers of two apart.
constexpr i64 kBlock = 8;
i64 SlotBytes(const Tile& tile) { return RoundUp(tile.width, kBlock) * 16 + 64; }

/// Rows filtered across lie in slots: of one row, or of two that lie interleaved.
struct Rows {
  static constexpr i64 kMost = 2;

  i64 rowsInSlot;
  i64 slotsAtOnce;  // that `across` fills, of at most kMost rows
  /// Memory that `across` works in, prepared for a tile.
  i64 (*memoryBytes)(const Filtered& f, const Tile& tile);
  void (*prepare)(u8* memory, const Filtered& f, const Tile& tile);
  /// Filters rows of the source into slots that lie one after the other.
  void (*across)(u8* slots, const u8* const* rows, u8* memory, const Filtered& f, const Tile& tile);
  /// Makes a row of the destination of so many slots, each with its weight or pair of weights.
  void (*down)(u8* dst, const u8* const* slots, const u32* weights, i64 count, const Filtered& f,
               const Tile& tile);
};

// ---------------------------------------------------------------------------------------------
// The rule, in whole numbers: rows filtered across keep six bits of fraction. With weights of 14 or
// 16 bits, of which the absolute values sum to less than 1.6, no sum leaves 32 bits.

constexpr int kFractionBits = 6;

i16 WeighAcross(const u8* row, const FilterTaps& taps, i64 x) {
  const i16* const weights = reinterpret_cast<const i16*>(taps.Words(x));
  const int shift = taps.bits() - kFractionBits;
  const i64 first = taps.First(x), count = std::min(taps.taps(), taps.srcSize() - first);
  i32 sum = 1 << (shift - 1);
  for (i64 k = 0; k < count; ++k) sum += weights[k] * row[4 * (first + k)];
  return static_cast<i16>(sum >> shift);
}

void AcrossPair(u8* slot, const u8* const* rows, u8*, const Filtered& f, const Tile& tile) {
  i16* pair = reinterpret_cast<i16*>(slot);
  for (i64 x = tile.x; x < tile.x + tile.width; ++x) {
    for (i64 c = 0; c < 4; ++c) {
      *pair++ = WeighAcross(rows[0] + c, f.across, x);
      *pair++ = WeighAcross(rows[1] + c, f.across, x);
    }
  }
}

void DownPairs(u8* dst, const u8* const* slots, const u32* weights, i64 count, const Filtered& f,
               const Tile& tile) {
  const int shift = f.down.bits() + kFractionBits;
  const i16* const halves = reinterpret_cast<const i16*>(weights);
  for (i64 i = 0; i < 4 * tile.width; ++i) {
    i32 sum = 1 << (shift - 1);
    for (i64 k = 0; k < count; ++k) {
      const i16* const pair = reinterpret_cast<const i16*>(slots[k]) + 2 * i;
      sum += pair[0] * halves[2 * k] + pair[1] * halves[2 * k + 1];
    }
    dst[i] = static_cast<u8>(std::clamp(sum >> shift, 0, 255));
  }
}

constexpr Rows kPlain = {.rowsInSlot = 2,
                         .slotsAtOnce = 1,
                         .memoryBytes = [](const Filtered&, const Tile&) { return i64{0}; },
                         .prepare = [](u8*, const Filtered&, const Tile&) {},
                         .across = AcrossPair,
                         .down = DownPairs};

// ---------------------------------------------------------------------------------------------
// Weighted by alpha, where a small sum of alphas divides: single precision, in the order of the
// taps across and of the slots down.

/// The columns of the source that a tile reads.
struct Columns {
  i64 first, count;

  Columns(const FilterTaps& taps, const Tile& tile) : first(taps.First(tile.x)) {
    const i64 end = taps.First(tile.x + tile.width - 1) + taps.taps();
    count = std::min(end, taps.srcSize()) - first;
  }
};

i64 PremultipliedBytes(const Filtered& f, const Tile& tile) {
  return Columns(f.across, tile).count * 16;
}

/// Colours times alpha, and alpha.
void Premultiply(f32* to, const u8* pixels, i64 count) {
  for (i64 i = 0; i < count; ++i, pixels += 4, to += 4) {
    const int a = pixels[3];
    for (i64 c = 0; c < 3; ++c) to[c] = static_cast<f32>(pixels[c] * a);
    to[3] = static_cast<f32>(a);
  }
}

void AcrossWeighted(u8* slot, const u8* const* rows, u8* memory, const Filtered& f,
                    const Tile& tile) {
  const Columns columns(f.across, tile);
  f32* const pixels = reinterpret_cast<f32*>(memory);
  Premultiply(pixels, rows[0] + 4 * columns.first, columns.count);
  f32* to = reinterpret_cast<f32*>(slot);
  for (i64 x = tile.x; x < tile.x + tile.width; ++x) {
    const f32* const weights = reinterpret_cast<const f32*>(f.across.Singles(x));
    const i64 first = f.across.First(x) - columns.first;
    const i64 count = std::min(f.across.taps(), columns.count - first);
    for (i64 c = 0; c < 4; ++c) {
      f32 sum = 0;
      for (i64 k = 0; k < count; ++k) sum = sum + weights[k] * pixels[4 * (first + k) + c];
      *to++ = sum;
    }
  }
}

u8 ToByte(f32 x) { return static_cast<u8>(std::min(x > 0 ? x : 0, 255.0f) + 0.5f); }

void DownWeighted(u8* dst, const u8* const* slots, const u32* weights, i64 count, const Filtered&,
                  const Tile& tile) {
  const f32* const factors = reinterpret_cast<const f32*>(weights);
  for (i64 x = 0; x < tile.width; ++x, dst += 4) {
    f32 sums[4] = {};
    for (i64 k = 0; k < count; ++k) {
      const f32* const pixel = reinterpret_cast<const f32*>(slots[k]) + 4 * x;
      for (i64 c = 0; c < 4; ++c) sums[c] = sums[c] + factors[k] * pixel[c];
    }
    dst[3] = ToByte(sums[3]);
    for (i64 c = 0; c < 3; ++c) dst[c] = dst[3] == 0 ? u8{0} : ToByte(sums[c] / sums[3]);
  }
}

constexpr Rows kWeighted = {.rowsInSlot = 1,
                            .slotsAtOnce = 1,
                            .memoryBytes = PremultipliedBytes,
                            .prepare = [](u8*, const Filtered&, const Tile&) {},
                            .across = AcrossWeighted,
                            .down = DownWeighted};

}  // namespace

// ---------------------------------------------------------------------------------------------
// The vector builds.

#define KERNELS "cpu/geometry/resize_filtered.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_ssse3.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// Tiles.

using HalveTileFn = void(const Filtered& f, const Tile& tile, u8* memory);

/// What a picture is made with: whole numbers, of a half perhaps, or singles where alpha weighs.
struct Kernels {
  const Rows *plain, *weighted;
  HalveTileFn* halve;  // instead of plain
};

Kernels KernelsFor(i32 level, const Filtered& f) {
  static constexpr Builds<const Rows*> kPlains = {
      .portable = &kPlain, .ssse3 = &ssse3::kPlain, .avx2 = &avx2::kPlain};
  static constexpr Builds<const Rows*> kWeighteds = {
      .portable = &kWeighted, .ssse3 = &ssse3::kWeighted, .avx2 = &avx2::kWeighted};
  static constexpr Builds<HalveTileFn*> kHalves = {.ssse3 = ssse3::HalveTile,
                                                   .avx2 = avx2::HalveTile};
  // Vectors load the taps of a pixel from the source, so that it must be as wide.
  const i32 plainLevel = f.src.width < f.across.taps() ? PICTAVO_LEVEL_PORTABLE : level;
  const bool halves = f.across.Halves() && f.down.Halves();
  return {kPlains.For(plainLevel), kWeighteds.For(level), halves ? kHalves.For(level) : nullptr};
}

/// The slots, of which a row takes `count`, then where these lie, then what the rows work in.
struct TileMemory {
  i64 count, slots, slotBytes, listBytes, rowBytes;

  TileMemory(const Rows& rows, const Filtered& f, const Tile& tile)
      : count(f.down.taps() / rows.rowsInSlot),
        slots(RoundUp(count + rows.slotsAtOnce - 1, rows.slotsAtOnce)),
        slotBytes(SlotBytes(tile)),
        listBytes(RoundUp(8 * count, 64)),
        rowBytes(RoundUp(rows.memoryBytes(f, tile), 64)) {}
  i64 Bytes() const { return slots * slotBytes + listBytes + rowBytes; }
};

void FillSlots(u8* slots, i64 firstRow, const Rows& rows, u8* memory, const Filtered& f,
               const Tile& tile) {
  const u8* from[Rows::kMost];
  for (i64 i = 0; i < rows.slotsAtOnce * rows.rowsInSlot; ++i)
    from[i] = f.src.Row(std::min(firstRow + i, f.src.height - 1));
  rows.across(slots, from, memory, f, tile);
}

void ResizeTile(const Rows& rows, const Filtered& f, const Tile& tile, u8* memory) {
  const TileMemory sizes(rows, f, tile);
  const u8** const list = reinterpret_cast<const u8**>(memory + sizes.slots * sizes.slotBytes);
  u8* const rest = reinterpret_cast<u8*>(list) + sizes.listBytes;
  rows.prepare(rest, f, tile);
  const auto place = [&](i64 slot) { return memory + slot % sizes.slots * sizes.slotBytes; };
  i64 made = 0;  // a slot serves until its place is needed for one further down
  for (i64 y = tile.y; y < tile.y + tile.height; ++y) {
    const i64 first = f.down.First(y) / rows.rowsInSlot;
    made = std::max(made, first / rows.slotsAtOnce * rows.slotsAtOnce);
    for (; made < first + sizes.count; made += rows.slotsAtOnce)
      FillSlots(place(made), made * rows.rowsInSlot, rows, rest, f, tile);
    const u32* const weights = rows.rowsInSlot == 2 ? f.down.Words(y) : f.down.Singles(y);
    i64 count = 0;  // what weighs nothing at the end is left out
    for (i64 k = 0; k < sizes.count; ++k) {
      list[k] = place(first + k);
      if (weights[k] != 0) count = k + 1;
    }
    rows.down(f.dst.Row(y) + 4 * tile.x, list, weights, count, f, tile);
  }
}

/// What all alphas that a tile's pixels come from have in common.
struct Alphas {
  bool areOpaque, areClear;

  Alphas(const Filtered& f, const Tile& tile) {
    const Columns columns(f.across, tile);
    const i64 end = std::min(f.down.First(tile.y + tile.height - 1) + f.down.taps(), f.src.height);
    u32 all = ~0u, any = 0;
    for (i64 y = f.down.First(tile.y); y < end; ++y) {
      const u8* const row = f.src.Row(y) + 4 * columns.first;
      for (i64 x = 0; x < columns.count; ++x) {
        u32 pixel;
        std::memcpy(&pixel, row + 4 * x, 4);
        all &= pixel;
        any |= pixel;
      }
    }
    areOpaque = all >> 24 == 255;
    areClear = any >> 24 == 0;
  }
};

i64 TileBytes(const Kernels& kernels, const Filtered& f, const Tile& tile) {
  const i64 plain =
      kernels.halve == nullptr ? TileMemory(*kernels.plain, f, tile).Bytes() : 2 * SlotBytes(tile);
  return f.weighted ? std::max(plain, TileMemory(*kernels.weighted, f, tile).Bytes()) : plain;
}

void Clear(const Picture& dst, const Tile& tile) {
  for (i64 y = tile.y; y < tile.y + tile.height; ++y)
    std::memset(dst.Row(y) + 4 * tile.x, 0, static_cast<size_t>(4 * tile.width));
}

void ResizeTile(const Kernels& kernels, const Filtered& f, const Tile& tile, u8* memory) {
  if (f.weighted) {
    const Alphas alphas(f, tile);
    if (alphas.areClear) return Clear(f.dst, tile);
    if (!alphas.areOpaque) return ResizeTile(*kernels.weighted, f, tile, memory);
  }
  if (kernels.halve != nullptr) return kernels.halve(f, tile, memory);
  ResizeTile(*kernels.plain, f, tile, memory);
}

/// How a picture is cut: into strips of columns, and few strips into bands of rows.
struct Tiling {
  i64 columns, rows, width, height;

  /// `most`: columns of a strip.
  Tiling(const Picture& dst, i64 most) {
    constexpr i64 kLeastHeight = 128, kEnough = 8;
    const i64 strips = (dst.width + most - 1) / most;
    width = RoundUp((dst.width + strips - 1) / strips, kBlock);
    columns = (dst.width + width - 1) / width;
    const i64 bands =
        std::max<i64>(std::min((kEnough + columns - 1) / columns, dst.height / kLeastHeight), 1);
    height = (dst.height + bands - 1) / bands;
    rows = (dst.height + height - 1) / height;
  }

  Tile At(i64 number, const Picture& dst) const {
    const i64 x = number % columns * width, y = number / columns * height;
    return {x, y, std::min(width, dst.width - x), std::min(height, dst.height - y)};
  }
};

void Copy(const Filtered& f) {
  const u8* const from = f.src.Row(f.down.start()) + 4 * f.across.start();
  for (i64 y = 0; y < f.dst.height; ++y)
    std::memcpy(f.dst.Row(y), from + y * f.src.pitch, static_cast<size_t>(4 * f.dst.width));
}

u32 Resize(i32 level, Filtered f) {
  if (f.across.IsCopy() && f.down.IsCopy()) {
    Copy(f);
    return PICTAVO_S_OK;
  }
  Scratch tables(f.across.Bytes() + f.down.Bytes());
  if (tables.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  f.across.Make(tables.data());
  f.down.Make(tables.data() + f.across.Bytes());

  const Kernels kernels = KernelsFor(level, f);
  // Short rows cost more than a half's few sums.
  const Tiling tiling(f.dst, kernels.halve != nullptr && !f.weighted ? 512 : 128);
  const i64 tiles = tiling.columns * tiling.rows;
  i64 tileBytes = 0;
  for (i64 i = 0; i < tiles; ++i)
    tileBytes = std::max(tileBytes, TileBytes(kernels, f, tiling.At(i, f.dst)));
  Scratch memory(tiles * tileBytes);
  if (memory.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  const i64 cost = tiling.width * tiling.height * (f.across.taps() + f.down.taps()) / 4;
  ParallelRows(static_cast<int>(tiles), cost, [&](int i) {
    ResizeTile(kernels, f, tiling.At(i, f.dst), memory.data() + i * tileBytes);
  });
  return PICTAVO_S_OK;
}

u32 Resize(i32 level, const ImageDesc& src, const ImageDesc& dst, Stretch across, Stretch down,
           const ResizeParam& param) {
  const bool weighted = param.alphaMode == 1;
  const Picture from = PictureIn(src), to = PictureIn(dst);
  const Source source = {from.pixels, from.width, from.height, from.pitch};
  return Resize(level,
                {to, source, FilterTaps(from.width, to.width, across, param.filter, 1, weighted),
                 FilterTaps(from.height, to.height, down, param.filter, 2, weighted), weighted});
}

u32 CheckPictures(const ImageDesc* src, const ImageDesc* dst, bool hold) {
  const u32 code = CheckRecords(hold, src, dst);
  if (code == PICTAVO_S_OK && ShareBytes(PictureIn(*src), PictureIn(*dst)))
    return PICTAVO_E_INVALIDARG;
  return code;
}

/// Whether a stretch lies on a side; false for what is not a number.
bool Lies(f32 begin, f32 end, i32 size) {
  return begin >= 0 && begin < end && end <= static_cast<double>(size);
}

}  // namespace

u32 ResizeFilteredRegion(i32 level, const ImageDesc* src, ImageDesc* dst, const f32 rect[4],
                         const ResizeParam* param) noexcept {
  if (rect == nullptr || param == nullptr) return PICTAVO_E_POINTER;
  const bool lies =
      src != nullptr && Lies(rect[0], rect[2], src->width) && Lies(rect[1], rect[3], src->height);
  if (const u32 code = CheckPictures(src, dst, Holds(*param) && lies); code != PICTAVO_S_OK)
    return code;
  return Resize(level, *src, *dst, {rect[0], double{rect[2]} - rect[0]},
                {rect[1], double{rect[3]} - rect[1]}, *param);
}

u32 ResizeFiltered(i32 level, const ImageDesc* src, ImageDesc* dst,
                   const ResizeParam* param) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  if (const u32 code = CheckPictures(src, dst, Holds(*param)); code != PICTAVO_S_OK) return code;
  return Resize(level, *src, *dst, {0, static_cast<double>(src->width)},
                {0, static_cast<double>(src->height)}, *param);
}

}  // namespace pictavo::cpu
