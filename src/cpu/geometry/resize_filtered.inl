// The vector rows of resize_filtered.cpp over V, included once for each instruction set.
//
// A block of pixels fills four vectors, one channel a lane: a vector holds one pixel of every four
// of the block, so that packing four vectors puts the pixels in order. Blocks may end beyond the
// tile: what is made there of the last pixel again is not stored.

constexpr i64 kLanesOf4 = V::kPixels / 4;  // pixels in a vector of four lanes each
constexpr i64 kBytes = V::kPixels * 4;     // of a vector

// ---------------------------------------------------------------------------------------------
// Whole numbers.

/// What a tile's columns are made of: where the taps of each pixel begin, and their weights, spread
/// over its channels.
struct ColumnTable {
  i32* places;
  u8* weights;

  ColumnTable(u8* memory, const Tile& tile)
      : places(reinterpret_cast<i32*>(memory)), weights(memory + RoundUp(tile.width, kBlock) * 4) {}

  static i64 Bytes(const Filtered& f, const Tile& tile) {
    return RoundUp(tile.width, kBlock) * (4 + f.across.taps() * 8);
  }
};

void FillTable(u8* memory, const Filtered& f, const Tile& tile) {
  const ColumnTable table(memory, tile);
  const i64 words = f.across.taps() / 2;
  u32* to = reinterpret_cast<u32*>(table.weights);
  i32* place = table.places;
  for (i64 block = 0; block < tile.width; block += V::kPixels) {
    for (i64 vector = 0; vector < 4; ++vector) {
      for (i64 lane = 0; lane < kLanesOf4; ++lane) {
        const i64 x = tile.x + std::min(block + vector + 4 * lane, tile.width - 1);
        *place++ = static_cast<i32>(f.across.First(x) * 4);
        const u32* const weights = f.across.Words(x);
        u32* const own = to + 4 * lane;
        for (i64 k = 0; k < words; ++k) std::fill_n(own + k * V::kPixels, 4, weights[k]);
      }
      to += words * V::kPixels;
    }
  }
}

/// Where ShuffleBytes finds the bytes of the first two pixels of 128 bits, or of the next two, as
/// 16 bits: both blues, both greens, …
inline V PlacesOfPairs(u32 pixel) {
  alignas(32) static constexpr u32 kFirst[] = {0x80048000, 0x80058001, 0x80068002, 0x80078003,
                                               0x80048000, 0x80058001, 0x80068002, 0x80078003};
  return Add8(V::Load(reinterpret_cast<const u8*>(kFirst)), V::All32(pixel * 0x00040004));
}

/// Asks for what the next pair of rows reads: rows of a strip are too short for the processor to
/// see where they lead. An address outside the picture is no fault.
inline void PrefetchPair(const u8* row, const u8* next, const Filtered& f, const Tile& tile) {
  const Columns columns(f.across, tile);
  const i64 from = 2 * f.src.pitch + 4 * columns.first;
  for (i64 at = from; at < from + 4 * columns.count; at += 64) {
    _mm_prefetch(reinterpret_cast<const char*>(row) + at, _MM_HINT_T0);
    _mm_prefetch(reinterpret_cast<const char*>(next) + at, _MM_HINT_T0);
  }
}

/// kWords: the words of weights of a pixel, or 0 for any number.
template <i64 kWords>
void AcrossPlain(u8* slot, const u8* row, const u8* next, u8* memory, const Filtered& f,
                 const Tile& tile) {
  const i64 words = kWords > 0 ? kWords : f.across.taps() / 2;
  const ColumnTable table(memory, tile);
  const V firsts = PlacesOfPairs(0), seconds = PlacesOfPairs(2);
  const int shift = f.across.bits() - kFractionBits;
  const V half = V::All32(1u << (shift - 1));
  const i32* places = table.places;
  const u8* weights = table.weights;
  for (i64 n = (tile.width + V::kPixels - 1) / V::kPixels * 4; n > 0; --n) {
    V a = half, b = half;
    const auto add = [&](i64 at, V from, V weight) {
      const auto load = [&](const u8* p) {
        return ShuffleBytes(LoadLanes([&](i64 lane) { return p + places[lane] + at; }), from);
      };
      a = Add32(a, DotProduct32(load(row), weight));
      b = Add32(b, DotProduct32(load(next), weight));
    };
    i64 k = 0;
    for (; k + 2 <= words; k += 2) {
      add(8 * k, firsts, V::Load(weights + k * kBytes));
      add(8 * k, seconds, V::Load(weights + (k + 1) * kBytes));
    }
    if (k < words) add(8 * k - 8, seconds, V::Load(weights + k * kBytes));
    JoinHalves(ShiftRightI32(a, shift), ShiftLeft32(b, 16 - shift)).Store(slot);
    weights += words * kBytes;
    places += kLanesOf4;
    slot += kBytes;
  }
}

void Across(u8* slot, const u8* const* rows, u8* memory, const Filtered& f, const Tile& tile) {
  const auto across = [&] {
    switch (f.across.taps() / 2) {
      case 2:
        return AcrossPlain<2>;
      case 3:
        return AcrossPlain<3>;
      case 4:
        return AcrossPlain<4>;
      case 5:
        return AcrossPlain<5>;
      case 6:
        return AcrossPlain<6>;
      default:
        return AcrossPlain<0>;
    }
  }();
  PrefetchPair(rows[0], rows[1], f, tile);
  across(slot, rows[0], rows[1], memory, f, tile);
}

/// Calls block(dst, at) for each block of a row, `at` counting bytes of a slot; it writes a vector
/// of pixels.
template <typename Block>
void ForBlocks(u8* dst, i64 width, Block block) {
  i64 at = 0;
  for (; width >= V::kPixels; width -= V::kPixels, at += 4 * kBytes, dst += kBytes) block(dst, at);
  if (width < 1) return;
  u8 last[kBytes];
  block(last, at);
  std::memcpy(dst, last, static_cast<size_t>(4 * width));
}

template <i64 kCount, int kBits>
void DownPlain(u8* dst, const u8* const* slots, const u32* weights, i64 runCount,
               const Tile& tile) {
  constexpr int kShift = kBits + kFractionBits;
  const i64 count = kCount > 0 ? kCount : runCount;
  const V half = V::All32(1u << (kShift - 1));
  ForBlocks(dst, tile.width, [=](u8* to, i64 at) {
    V sums[] = {half, half, half, half};
    for (i64 k = 0; k < count; ++k) {
      const V weight = V::All32(weights[k]);
      const u8* const slot = slots[k] + at;
      for (i64 i = 0; i < 4; ++i)
        sums[i] = Add32(sums[i], DotProduct32(V::Load(slot + i * kBytes), weight));
    }
    for (V& sum : sums) sum = ShiftRightI32(sum, kShift);
    PackU8(sums).Store(to);
  });
}

void Down(u8* dst, const u8* const* slots, const u32* weights, i64 count, const Filtered& f,
          const Tile& tile) {
  const auto down = [&] {
    if (f.down.bits() == 16) return DownPlain<0, 16>;
    switch (count) {
      case 1:
        return DownPlain<1, 14>;
      case 2:
        return DownPlain<2, 14>;
      case 3:
        return DownPlain<3, 14>;
      case 4:
        return DownPlain<4, 14>;
      case 5:
        return DownPlain<5, 14>;
      case 6:
        return DownPlain<6, 14>;
      default:
        return DownPlain<0, 14>;
    }
  }();
  down(dst, slots, weights, count, tile);
}

constexpr Rows kPlain = {.rowsInSlot = 2,
                         .slotsAtOnce = 1,
                         .memoryBytes = ColumnTable::Bytes,
                         .prepare = FillTable,
                         .across = Across,
                         .down = Down};

// ---------------------------------------------------------------------------------------------
// Weighted by alpha. A vector holds the four channels of a column, of as many rows as it has 128
// bits, so that one weight serves all of it.

/// Where a slot has a pixel of the tile.
inline i64 PlaceInSlot(i64 x) {
  const i64 inBlock = x % 4 * kLanesOf4 + x / 4 % kLanesOf4;
  return (x / V::kPixels * V::kPixels + inBlock) * 16;
}

/// Stores what 128 bits of each row make of a pixel in a slot of its own.
inline void StoreInSlots(V pixels, u8* slots, i64 x, i64 slotBytes) {
  u8* const first = slots + PlaceInSlot(x);
  StoreLanes(pixels, [=](i64 lane) { return first + lane * slotBytes; });
}

i64 WeightedBytes(const Filtered& f, const Tile& tile) {
  return RoundUp(Columns(f.across, tile).count + 1, 4) * kBytes;
}

inline F LoadSingles(const u8* p) { return Singles(V::Load(p)); }

/// Colours times alpha, and alpha: a vector for each column.
void MakeSingles(u8* singles, const u8* const* rows, const Filtered& f, const Tile& tile) {
  alignas(32) static constexpr u32 kColour[] = {0x80808000, 0x80808001, 0x80808002, 0x80808080,
                                                0x80808000, 0x80808001, 0x80808002, 0x80808080};
  alignas(32) static constexpr u32 kAlphas[] = {0x80808003, 0x80808003, 0x80808003, 0x80808003,
                                                0x80808003, 0x80808003, 0x80808003, 0x80808003};
  alignas(32) static constexpr u32 kOne[] = {0, 0, 0, 1, 0, 0, 0, 1};
  const auto load = [](const u32* p) { return V::Load(reinterpret_cast<const u8*>(p)); };
  const V colour = load(kColour), alpha = load(kAlphas), one = load(kOne);
  const i64 first = f.across.First(tile.x);
  const i64 end = f.across.First(tile.x + tile.width - 1) + f.across.taps();
  u8 last[Rows::kMost][16] = {};  // with clear pixels behind the row's end
  for (i64 x = first; x < end; x += 4) {
    const i64 left = f.src.width - x;
    const V pixels = LoadLanes([&](i64 lane) -> const u8* {
      const u8* const row = rows[lane] + 4 * x;
      if (left >= 4) return row;
      std::memcpy(last[lane], row, static_cast<size_t>(4 * left));
      return last[lane];
    });
    for (u32 i = 0; i < 4; ++i, singles += kBytes) {
      const V step = V::All32(4 * i);  // stays below 128 where it adds to an index
      const V colours = ShuffleBytes(pixels, Add8(colour, step)) | one;
      const V alphas = ShuffleBytes(pixels, Add8(alpha, step));
      Bits(ToF(DotProduct32(colours, alphas))).Store(singles);
    }
  }
}

void AcrossWeighted(u8* slots, const u8* const* rows, u8* memory, const Filtered& f,
                    const Tile& tile) {
  const i64 taps = f.across.taps(), first = f.across.First(tile.x), slotBytes = SlotBytes(tile);
  MakeSingles(memory, rows, f, tile);
  for (i64 x = 0; x < tile.width; ++x) {
    const i64 next = kLanesOf4 * f.src.pitch + 4 * f.across.First(tile.x + x);
    _mm_prefetch(reinterpret_cast<const char*>(rows[x % kLanesOf4]) + next, _MM_HINT_T0);
    const u8* const at = memory + (f.across.First(tile.x + x) - first) * kBytes;
    const f32* const weights = reinterpret_cast<const f32*>(f.across.Singles(tile.x + x));
    F sum = F::All(0);
    for (i64 k = 0; k < taps; ++k) sum = sum + F::All(weights[k]) * LoadSingles(at + k * kBytes);
    StoreInSlots(Bits(sum), slots, x, slotBytes);
  }
}

/// Sums of colours times alpha, and of alpha, as bytes of 32 bits.
inline V ToBytes(F sums) {
  alignas(32) static constexpr u32 kLast[] = {0, 0, 0, ~0u, 0, 0, 0, ~0u};
  const F isAlpha = LoadSingles(reinterpret_cast<const u8*>(kLast));
  const F x = Select(isAlpha, sums, sums / Repeat32<3>(sums));
  return Truncate(Min(Max(x, F::All(0)), F::All(255)) + F::All(0.5f));
}

void DownWeighted(u8* dst, const u8* const* slots, const u32* weights, i64 count, const Filtered&,
                  const Tile& tile) {
  const f32* const factors = reinterpret_cast<const f32*>(weights);
  ForBlocks(dst, tile.width, [=](u8* to, i64 at) {
    F sums[] = {F::All(0), F::All(0), F::All(0), F::All(0)};
    for (i64 k = 0; k < count; ++k) {
      const u8* const slot = slots[k] + at;
      const F factor = F::All(factors[k]);
      for (i64 i = 0; i < 4; ++i) sums[i] = sums[i] + factor * LoadSingles(slot + i * kBytes);
    }
    const V pixels =
        PackU8({ToBytes(sums[0]), ToBytes(sums[1]), ToBytes(sums[2]), ToBytes(sums[3])});
    AndNot(Equal32(pixels & V::All32(kAlpha), V::Zero()), pixels).Store(to);
  });
}

constexpr Rows kWeighted = {.rowsInSlot = 1,
                            .slotsAtOnce = kLanesOf4,
                            .memoryBytes = WeightedBytes,
                            .prepare = [](u8*, const Filtered&, const Tile&) {},
                            .across = AcrossWeighted,
                            .down = DownWeighted};

// ---------------------------------------------------------------------------------------------
// To a half by the triangle: 1, 3, 3, 1 of 8 both ways. No sum leaves 16 bits, and what Rows make
// of it is rounded at the end only, so that these are its bytes.

/// Sums across of pixels that lie two apart, the first of which begins with the pixel at p.
inline V SumAcross(const u8* p) {
  alignas(32) static constexpr u32 kPairs[] = {0x05010400, 0x07030602, 0x0D090C08, 0x0F0B0E0A,
                                               0x05010400, 0x07030602, 0x0D090C08, 0x0F0B0E0A};
  const V pairs = V::Load(reinterpret_cast<const u8*>(kPairs));
  return Add16(DotProduct16(ShuffleBytes(V::Load(p), pairs), V::All16(0x0301)),
               DotProduct16(ShuffleBytes(V::Load(p + 8), pairs), V::All16(0x0103)));
}

/// Two rows of the source are the last ones of a row of the destination, for which `sums` has the
/// first two, and the first ones of the next row, for which they go there.
void HalveRows(u8* dst, u8* sums, const u8* const (&rows)[2], const Filtered& f, const Tile& tile) {
  constexpr i64 kRead = 2 * V::kPixels + 2;
  ForBlocks(dst, tile.width, [&](u8* to, i64 at) {
    const i64 first = 2 * (tile.x + at / 16) - 1;
    const bool inside = first >= 0 && first + kRead <= f.src.width;
    u8 edge[2][4 * kRead];
    const auto from = [&](size_t row) -> const u8* {
      _mm_prefetch(reinterpret_cast<const char*>(rows[row]) + 4 * first + 4 * f.src.pitch,
                   _MM_HINT_T0);
      if (inside) return rows[row] + 4 * first;
      for (i64 i = 0; i < kRead; ++i)
        std::memcpy(edge[row] + 4 * i,
                    rows[row] + 4 * std::clamp<i64>(first + i, 0, f.src.width - 1), 4);
      return edge[row];
    };
    const u8 *const upper = from(0), *const lower = from(1);
    V means[2];
    for (i64 i = 0; i < 2; ++i) {
      u8* const sum = sums + at / 2 + i * kBytes;
      const V p = SumAcross(upper + i * kBytes), q = SumAcross(lower + i * kBytes);
      const V both = Add16(p, q);
      means[i] = ShiftRightU16(Add16(V::Load(sum), Add16(both, ShiftLeft16(p, 1))), 6);
      Add16(Add16(both, V::All16(32)), ShiftLeft16(q, 1)).Store(sum);
    }
    PackPixels(means).Store(to);
  });
}

void HalveTile(const Filtered& f, const Tile& tile, u8* memory) {
  u8* const nowhere = memory + SlotBytes(tile);  // for the row above the tile
  for (i64 y = tile.y - 1; y < tile.y + tile.height; ++y) {
    const auto row = [&](i64 i) { return f.src.Row(std::clamp<i64>(i, 0, f.src.height - 1)); };
    HalveRows(y < tile.y ? nowhere : f.dst.Row(y) + 4 * tile.x, memory,
              {row(2 * y + 1), row(2 * y + 2)}, f, tile);
  }
}
