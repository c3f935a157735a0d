// The vector rows of resize_filtered.cpp over V, included once for each instruction set.
//
// A block of pixels fills four vectors, one channel a lane: a vector holds one pixel of every four
// of the block, so that packing four vectors puts the pixels in order. Blocks may end beyond the
// tile: what is made there of the last pixel again is not stored.

constexpr i64 kLanesOf4 = V::kPixels / 4;  // pixels in a vector of four lanes each
constexpr i64 kBytes = V::kPixels * 4;     // of a vector

/// What a tile's columns are made of: where the taps of each pixel begin, and their weights, spread
/// over its channels.
struct ColumnTable {
  i32* places;
  u8* weights;
  u8* rest;  // behind the table

  ColumnTable(u8* memory, const Tile& tile, i64 words)
      : places(reinterpret_cast<i32*>(memory)),
        weights(memory + RoundUp(tile.width, kBlock) * 4),
        rest(weights + RoundUp(tile.width, kBlock) * words * 16) {}

  static i64 Bytes(const Tile& tile, i64 words) {
    return RoundUp(tile.width, kBlock) * (4 + words * 16);
  }
};

/// @param words      of weights for each pixel, which `weightsOf` gives
/// @param placeBytes of a pixel in what is read
template <typename WeightsOf>
void FillTable(const ColumnTable& table, const Filtered& f, const Tile& tile, i64 words,
               i64 placeBytes, i64 firstColumn, WeightsOf weightsOf) {
  u32* to = reinterpret_cast<u32*>(table.weights);
  i32* place = table.places;
  for (i64 block = 0; block < tile.width; block += V::kPixels) {
    for (i64 vector = 0; vector < 4; ++vector) {
      for (i64 lane = 0; lane < kLanesOf4; ++lane) {
        const i64 x = tile.x + std::min(block + vector + 4 * lane, tile.width - 1);
        *place++ = static_cast<i32>((f.across.First(x) - firstColumn) * placeBytes);
        const u32* const weights = weightsOf(x);
        u32* const own = to + 4 * lane;
        for (i64 k = 0; k < words; ++k) std::fill_n(own + k * V::kPixels, 4, weights[k]);
      }
      to += words * V::kPixels;
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Whole numbers.

/// Where ShuffleBytes finds the bytes of the first two pixels of 128 bits, or of the next two, as
/// 16 bits: both blues, both greens, …
inline V PlacesOfPairs(u32 pixel) {
  alignas(32) static constexpr u32 kFirst[] = {0x80048000, 0x80058001, 0x80068002, 0x80078003,
                                               0x80048000, 0x80058001, 0x80068002, 0x80078003};
  return Add8(V::Load(reinterpret_cast<const u8*>(kFirst)), V::All32(pixel * 0x00040004));
}

i64 PlainBytes(const Filtered& f, const Tile& tile) {
  return ColumnTable::Bytes(tile, f.across.taps() / 2);
}

void PreparePlain(u8* memory, const Filtered& f, const Tile& tile) {
  const i64 words = f.across.taps() / 2;
  FillTable(ColumnTable(memory, tile, words), f, tile, words, 4, 0,
            [&](i64 x) { return f.across.Words(x); });
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
  const ColumnTable table(memory, tile, words);
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

void Across(u8* slot, const u8* row, const u8* next, u8* memory, const Filtered& f,
            const Tile& tile) {
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
  PrefetchPair(row, next, f, tile);
  across(slot, row, next, memory, f, tile);
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

template <i64 kCount>
void DownPlain(u8* dst, const u8* slots, const u32* weights, i64 runCount, const Filtered& f,
               const Tile& tile) {
  const i64 count = kCount > 0 ? kCount : runCount, pitch = SlotBytes(tile);
  const int shift = f.down.bits() + kFractionBits;
  const V half = V::All32(1u << (shift - 1));
  ForBlocks(dst, tile.width, [=](u8* to, i64 at) {
    V sums[] = {half, half, half, half};
    const u8* slot = slots + at;
    for (i64 k = 0; k < count; ++k, slot += pitch) {
      const V weight = V::All32(weights[k]);
      for (i64 i = 0; i < 4; ++i)
        sums[i] = Add32(sums[i], DotProduct32(V::Load(slot + i * kBytes), weight));
    }
    for (V& sum : sums) sum = ShiftRightI32(sum, shift);
    PackU8(sums).Store(to);
  });
}

void Down(u8* dst, const u8* slots, const u32* weights, i64 count, const Filtered& f,
          const Tile& tile) {
  const auto down = [&] {
    switch (count) {
      case 2:
        return DownPlain<2>;
      case 3:
        return DownPlain<3>;
      case 4:
        return DownPlain<4>;
      case 5:
        return DownPlain<5>;
      case 6:
        return DownPlain<6>;
      default:
        return DownPlain<0>;
    }
  }();
  down(dst, slots, weights, count, f, tile);
}

constexpr Rows kPlain = {.rowsInSlot = 2,
                         .memoryBytes = PlainBytes,
                         .prepare = PreparePlain,
                         .across = Across,
                         .down = Down};

// ---------------------------------------------------------------------------------------------
// Weighted by alpha.

i64 WeightedBytes(const Filtered& f, const Tile& tile) {
  return ColumnTable::Bytes(tile, f.across.taps()) + PremultipliedBytes(f, tile);
}

void PrepareWeighted(u8* memory, const Filtered& f, const Tile& tile) {
  const i64 words = f.across.taps();
  FillTable(ColumnTable(memory, tile, words), f, tile, words, 16, Columns(f.across, tile).first,
            [&](i64 x) { return f.across.Singles(x); });
}

inline F LoadSingles(const u8* p) { return Singles(V::Load(p)); }

void AcrossWeighted(u8* slot, const u8* row, const u8*, u8* memory, const Filtered& f,
                    const Tile& tile) {
  const i64 taps = f.across.taps();
  const ColumnTable table(memory, tile, taps);
  const Columns columns(f.across, tile);
  Premultiply(reinterpret_cast<f32*>(table.rest), row + 4 * columns.first, columns.count);
  const i32* places = table.places;
  const u8* weights = table.weights;
  for (i64 n = (tile.width + V::kPixels - 1) / V::kPixels * 4; n > 0; --n) {
    F sum = F::All(0);
    for (i64 k = 0; k < taps; ++k, weights += kBytes) {
      const V pixels = LoadLanes([&](i64 lane) { return table.rest + places[lane] + 16 * k; });
      sum = sum + LoadSingles(weights) * Singles(pixels);
    }
    Bits(sum).Store(slot);
    places += kLanesOf4;
    slot += kBytes;
  }
}

/// Sums of colours times alpha, and of alpha, as bytes of 32 bits.
inline V ToBytes(F sums) {
  alignas(32) static constexpr u32 kLast[] = {0, 0, 0, ~0u, 0, 0, 0, ~0u};
  const F isAlpha = LoadSingles(reinterpret_cast<const u8*>(kLast));
  const F x = Select(isAlpha, sums, sums / RepeatLast(sums));
  return Truncate(Min(Max(x, F::All(0)), F::All(255)) + F::All(0.5f));
}

void DownWeighted(u8* dst, const u8* slots, const u32* weights, i64 count, const Filtered&,
                  const Tile& tile) {
  const i64 pitch = SlotBytes(tile);
  const f32* const factors = reinterpret_cast<const f32*>(weights);
  ForBlocks(dst, tile.width, [=](u8* to, i64 at) {
    F sums[] = {F::All(0), F::All(0), F::All(0), F::All(0)};
    const u8* slot = slots + at;
    for (i64 k = 0; k < count; ++k, slot += pitch) {
      const F factor = F::All(factors[k]);
      for (i64 i = 0; i < 4; ++i) sums[i] = sums[i] + factor * LoadSingles(slot + i * kBytes);
    }
    const V pixels =
        PackU8({ToBytes(sums[0]), ToBytes(sums[1]), ToBytes(sums[2]), ToBytes(sums[3])});
    AndNot(Equal32(pixels & V::All32(kAlpha), V::Zero()), pixels).Store(to);
  });
}

constexpr Rows kWeighted = {.rowsInSlot = 1,
                            .memoryBytes = WeightedBytes,
                            .prepare = PrepareWeighted,
                            .across = AcrossWeighted,
                            .down = DownWeighted};
