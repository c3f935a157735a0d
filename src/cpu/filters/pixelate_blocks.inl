// The vector rows of pixelate.cpp over V, included once for each instruction set.

/// A mask of so many first lanes.
inline V FirstLanes(i64 count) {
  return GreaterI32(V::All32(static_cast<u32>(std::min(count, V::kPixels))), Index32());
}

/// The sum of each vector's lanes, in lanes 0 to 3 of each 128 bits.
inline V SumLanes(V a, V b, V c, V d) {
  V rows[] = {a, b, c, d};
  Transpose32(rows);
  const V sum = Add32(Add32(rows[0], rows[1]), Add32(rows[2], rows[3]));
  return Add32(FirstHalves(sum, sum), SecondHalves(sum, sum));
}

/// Sums, lane by lane.
struct LaneSums {
  static constexpr i64 kMostRows = 4096;  // times 255^2 and the lanes fits 32 bits

  V colours[3] = {V::Zero(), V::Zero(), V::Zero()}, alpha = V::Zero();

  /// Takes a pixel of each in a lane's halves, so that one multiply-add weighs both.
  void Add(V p, V q) {
    const V alphas = PairHigh16(Odd(p), Odd(q));
    const V pairs[] = {PairLow16(Even(p), Even(q)), PairLow16(Odd(p), Odd(q)),
                       PairHigh16(Even(p), Even(q))};
    for (int i = 0; i < 3; ++i) colours[i] = Add32(colours[i], DotProduct32(pairs[i], alphas));
    alpha = Add32(alpha, DotProduct32(alphas, V::All16(1)));
  }
  void AddTo(Sums* sums) const {
    i32 lanes[V::kPixels];
    SumLanes(colours[0], colours[1], colours[2], alpha).Store(reinterpret_cast<u8*>(lanes));
    for (size_t i = 0; i < 3; ++i) sums->colours[i] += lanes[i];
    sums->alpha += lanes[3];
  }
};

/// The pixels of a strip no wider than a vector and not too high for lanes; `kept` leaves out those
/// beside it.
inline void SumStrip(const u8* pixels, i64 pitch, i64 rows, V kept, Sums* sums) {
  LaneSums lanes;
  for (; rows > 1; rows -= 2, pixels += 2 * pitch) {
    Prefetch(pixels, kVectorBytes);
    Prefetch(pixels + pitch, kVectorBytes);
    lanes.Add(V::Load(pixels) & kept, V::Load(pixels + pitch) & kept);
  }
  if (rows > 0) lanes.Add(V::Load(pixels) & kept, V::Zero());
  lanes.AddTo(sums);
}

/// As many pixels as `readable` says may be read from the block's left edge on.
inline Sums VectorSumBlock(const Picture& block, i64 readable) {
  Sums sums = {};
  for (i64 y = 0; y < block.height; y += LaneSums::kMostRows) {
    const i64 rows = std::min(LaneSums::kMostRows, block.height - y);
    i64 x = 0;
    for (; x < block.width && x + V::kPixels <= readable; x += V::kPixels)
      SumStrip(block.Row(y) + 4 * x, block.pitch, rows, FirstLanes(block.width - x), &sums);
    if (x >= block.width) continue;
    const Sums rest = SumBlock(block.Part({x, y, block.width, y + rows}));
    for (size_t i = 0; i < 3; ++i) sums.colours[i] += rest.colours[i];
    sums.alpha += rest.alpha;
  }
  return sums;
}

/// Columns of a strip of blocks, whose sums fit 16 bits: of blue and red, and of green and alpha.
struct Columns {
  static constexpr i64 kMost = 512, kMostRows = 256;

  u32 even[kMost + V::kPixels], odd[kMost + V::kPixels];  // read by whole vectors

  explicit Columns(const Picture& strip) {
    i64 x = 0;
    for (; x + 4 * V::kPixels <= strip.width; x += 4 * V::kPixels) Add<4>(strip, x);
    for (; x + V::kPixels <= strip.width; x += V::kPixels) Add<1>(strip, x);
    for (; x < strip.width; ++x) {
      even[x] = odd[x] = 0;
      for (i64 y = 0; y < strip.height; ++y) {
        const u8* const p = strip.Row(y) + 4 * x;
        even[x] += static_cast<u32>(p[0] | p[2] << 16);
        odd[x] += static_cast<u32>(p[1] | p[3] << 16);
      }
    }
  }

  /// Of some columns, from blue to alpha, as if no colour counted for its alpha.
  V Of(i64 first, i64 end) const {
    const V low = V::All32(0xFFFF);
    V b = V::Zero(), g = b, r = b, a = b;
    for (i64 x = first; x < end; x += V::kPixels) {
      const V kept = FirstLanes(end - x);
      const V evens = V::Load(reinterpret_cast<const u8*>(even + x)) & kept;
      const V odds = V::Load(reinterpret_cast<const u8*>(odd + x)) & kept;
      b = Add32(b, evens & low), r = Add32(r, ShiftRightU32(evens, 16));
      g = Add32(g, odds & low), a = Add32(a, ShiftRightU32(odds, 16));
    }
    return SumLanes(b, g, r, a);
  }

 private:
  /// What the odd bytes add to the sums of 16 bits is taken out in the end, all of it modulo 2^16.
  template <i64 vectors>
  void Add(const Picture& strip, i64 x) {
    V all[vectors], odds[vectors];
    for (i64 i = 0; i < vectors; ++i) all[i] = odds[i] = V::Zero();
    for (i64 y = 0; y < strip.height; ++y) {
      const u8* const p = strip.Row(y) + 4 * x;
      Prefetch(p, vectors * kVectorBytes);
      for (i64 i = 0; i < vectors; ++i) {
        const V pixels = V::Load(p + i * kVectorBytes);
        all[i] = Add16(all[i], pixels);
        odds[i] = Add16(odds[i], Odd(pixels));
      }
    }
    for (i64 i = 0; i < vectors; ++i) {
      const V evens = Sub16(all[i], ShiftLeft16(odds[i], 8));
      evens.Store(reinterpret_cast<u8*>(even + x + i * V::kPixels));
      odds[i].Store(reinterpret_cast<u8*>(odd + x + i * V::kPixels));
    }
  }
};

inline bool IsOpaqueRow(const u8* row, i64 width) {
  V all = V::All32(~0u);
  i64 x = 0;
  for (; x + V::kPixels <= width; x += V::kPixels) all = all & V::Load(row + 4 * x);
  while (x < width && row[4 * x + 3] == 255) ++x;
  return x == width && AlphasOpaque(all);
}

/// `pixel` has the same one in every lane.
inline void FillRow(u8* row, i64 width, V pixel) {
  i64 x = 0;
  for (; x + V::kPixels <= width; x += V::kPixels) pixel.Store(row + 4 * x);
  if (x == width) return;
  u8 rest[kVectorBytes];
  pixel.Store(rest);
  std::memcpy(row + 4 * x, rest, static_cast<size_t>(4 * (width - x)));
}

/// Opaque blocks need no weights; which they are their alphas' sums tell. A strip is worth asking
/// when its first row is opaque.
inline void VectorPixelateBand(const Picture& band, i64 side, i64 readable) {
  const bool fits = side <= Columns::kMostRows;
  const i64 columns = fits ? Columns::kMost / side * side : band.width;
  for (i64 left = 0; left < band.width; left += columns) {
    const i64 width = std::min(columns, band.width - left);
    const Picture strip = band.Part({left, 0, left + width, band.height});
    const auto fillWeighted = [&](i64 x, const Picture& block) {
      const Sums sums = VectorSumBlock(block, readable - left - x);
      FillRow(block.pixels, block.width, V::All32(MeanPixel(sums, block.width * block.height)));
    };
    if (!fits || !IsOpaqueRow(strip.pixels, width)) {
      FillBlocks(strip, side, fillWeighted);
      continue;
    }
    const Columns columnSums(strip);
    FillBlocks(strip, side, [&](i64 x, const Picture& block) {
      const u32 count = static_cast<u32>(block.width * block.height);
      const V sums = columnSums.Of(x, x + block.width);
      u32 lanes[V::kPixels];
      sums.Store(reinterpret_cast<u8*>(lanes));
      if (lanes[3] != 255 * count) return fillWeighted(x, block);
      const V means = Quotient32(Add32(sums, V::All32(count / 2)), V::All32(count));
      FillRow(block.pixels, block.width, PackU8({means, means, means, means}));
    });
  }
}
