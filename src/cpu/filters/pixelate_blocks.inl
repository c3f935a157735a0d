// The vector rows of pixelate.cpp over V, included once for each instruction set.

/// Sums, lane by lane.
struct LaneSums {
  V colours[3] = {V::Zero(), V::Zero(), V::Zero()}, alpha = V::Zero();

  void Add(V pixels) {
    const V a = ShiftRightU32(pixels, 24);
    for (int i = 0; i < 3; ++i) colours[i] = Add32(colours[i], DotProduct32(Channel(pixels, i), a));
    alpha = Add32(alpha, a);
  }
  void AddTo(Sums* sums) const {
    i32 lanes[4][V::kPixels];
    for (size_t i = 0; i < 3; ++i) colours[i].Store(reinterpret_cast<u8*>(lanes[i]));
    alpha.Store(reinterpret_cast<u8*>(lanes[3]));
    for (size_t lane = 0; lane < V::kPixels; ++lane) {
      for (size_t i = 0; i < 3; ++i) sums->colours[i] += lanes[i][lane];
      sums->alpha += lanes[3][lane];
    }
  }
};

/// The pixels of a strip no wider than a vector and not too high for lanes; `kept` leaves out those
/// beside it.
inline void SumStrip(const u8* pixels, i64 pitch, i64 rows, V kept, Sums* sums) {
  LaneSums lanes;
  for (i64 y = 0; y < rows; ++y, pixels += pitch) {
    Prefetch(pixels, kVectorBytes);
    lanes.Add(V::Load(pixels) & kept);
  }
  lanes.AddTo(sums);
}

/// As many pixels as `readable` says may be read from the block's left edge on.
inline Sums VectorSumBlock(const Picture& block, i64 readable) {
  constexpr i64 kRows = 32768;  // times 255^2 fits a lane
  Sums sums = {};
  for (i64 y = 0; y < block.height; y += kRows) {
    const i64 rows = std::min(kRows, block.height - y);
    i64 x = 0;
    for (; x < block.width && x + V::kPixels <= readable; x += V::kPixels) {
      const V kept =
          GreaterI32(V::All32(static_cast<u32>(std::min(block.width - x, V::kPixels))), Index32());
      SumStrip(block.Row(y) + 4 * x, block.pitch, rows, kept, &sums);
    }
    if (x >= block.width) continue;
    const Sums rest = SumBlock(block.Part({x, y, block.width, y + rows}));
    for (size_t i = 0; i < 3; ++i) sums.colours[i] += rest.colours[i];
    sums.alpha += rest.alpha;
  }
  return sums;
}

/// Columns of a strip of blocks, whose sums fit 16 bits: of blue and red, and of green and alpha.
struct Columns {
  static constexpr i64 kMost = 512, kMostRows = 257;

  u32 even[kMost], odd[kMost];

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

  /// Of some columns, as if no colour counted for its alpha.
  Sums Of(i64 first, i64 end) const {
    Sums sums = {};
    for (i64 x = first; x < end; ++x) {
      sums.colours[0] += even[x] & 0xFFFF;
      sums.colours[1] += odd[x] & 0xFFFF;
      sums.colours[2] += even[x] >> 16;
      sums.alpha += odd[x] >> 16;
    }
    return sums;
  }

 private:
  template <i64 vectors>
  void Add(const Picture& strip, i64 x) {
    V evens[vectors], odds[vectors];
    for (i64 i = 0; i < vectors; ++i) evens[i] = odds[i] = V::Zero();
    for (i64 y = 0; y < strip.height; ++y) {
      const u8* const p = strip.Row(y) + 4 * x;
      Prefetch(p, vectors * kVectorBytes);
      for (i64 i = 0; i < vectors; ++i) {
        const V pixels = V::Load(p + i * kVectorBytes);
        evens[i] = Add16(evens[i], Even(pixels));
        odds[i] = Add16(odds[i], Odd(pixels));
      }
    }
    for (i64 i = 0; i < vectors; ++i) {
      evens[i].Store(reinterpret_cast<u8*>(even + x + i * V::kPixels));
      odds[i].Store(reinterpret_cast<u8*>(odd + x + i * V::kPixels));
    }
  }
};

inline bool IsOpaqueRow(const u8* row, i64 width) {
  i64 x = 0;
  while (x < width && row[4 * x + 3] == 255) ++x;
  return x == width;
}

/// Opaque blocks need no weights; which they are their alphas' sums tell. A strip is worth asking
/// when its first row is opaque.
inline void VectorPixelateBand(const Picture& band, i64 side, i64 readable) {
  const bool fits = side <= Columns::kMostRows;
  const i64 columns = fits ? Columns::kMost / side * side : band.width;
  for (i64 left = 0; left < band.width; left += columns) {
    const i64 width = std::min(columns, band.width - left);
    const Picture strip = band.Part({left, 0, left + width, band.height});
    const auto weighted = [&](i64 x, const Picture& block) {
      return MeanPixel(VectorSumBlock(block, readable - left - x), block.width * block.height);
    };
    if (!fits || !IsOpaqueRow(strip.pixels, width)) {
      FillBlocks(strip, side, weighted);
      continue;
    }
    const Columns sums(strip);
    FillBlocks(strip, side, [&](i64 x, const Picture& block) {
      const i64 count = block.width * block.height;
      Sums plain = sums.Of(x, x + block.width);
      if (plain.alpha != 255 * count) return weighted(x, block);
      for (i64& colour : plain.colours) colour *= 255;
      return MeanPixel(plain, count);
    });
  }
}
