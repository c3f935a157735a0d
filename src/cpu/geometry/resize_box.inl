// The vector builds of resize_box.cpp over V, included once for each instruction set: the sampled
// rows are summed for a strip of columns, and then the columns.

/// Walks a strip's columns by vectors, the last of which ends at the last column. A strip narrower
/// than a vector begins further left.
template <typename Body>
void ForColumns(i64 columns, Body body) {
  for (i64 i = 0; i < columns; i += V::kPixels) body(std::min(i, columns - V::kPixels));
}

inline Strip VectorStrip(const BoxRow& row, i64 x) {
  Strip strip(row, x);
  strip.first = std::min(strip.first, row.srcWidth - V::kPixels);
  strip.columns = std::max(strip.columns, V::kPixels);
  return strip;
}

/// The sums of four vectors' bytes, as words: of the first two pixels of each 128 bits, and of the
/// others.
inline void SumBytes(V a, V b, V c, V d, V* first, V* second) {
  const auto sum = [](V pairs) { return DotProduct16(pairs, V::All16(0x0101)); };
  *first = Add16(sum(InterleaveFirst8(a, b)), sum(InterleaveFirst8(c, d)));
  *second = Add16(sum(InterleaveSecond8(a, b)), sum(InterleaveSecond8(c, d)));
}

/// What the alphas of a strip are.
enum class Alphas { kClear, kOpaque, kMixed };

/// Sums the rows of each column, and tells what alphas they hold.
inline Alphas SumPlain(RowSums* sums, const BoxRow& row, const Strip& strip) {
  const V opaque = V::All32(row.opaque ? kAlpha : 0);
  const auto rows = row.rows;
  const i64 first = strip.first;
  V all = V::All32(~0u), any = V::All32(0);
  ForColumns(strip.columns, [&](i64 i) {
    V p[4];
    for (size_t j = 0; j < 4; ++j) p[j] = V::Load(rows[j] + 4 * (first + i)) | opaque;
    all = all & p[0] & p[1] & p[2] & p[3];
    any = any | p[0] | p[1] | p[2] | p[3];
    V low, high;
    SumBytes(p[0], p[1], p[2], p[3], &low, &high);
    StoreInterleaved(low, high, reinterpret_cast<u8*>(sums->data() + 4 * i));
  });
  return AlphasOpaque(all) ? Alphas::kOpaque : AlphasClear(any) ? Alphas::kClear : Alphas::kMixed;
}

/// Sums of four rows, for each column: blue, green and red times alpha, and alpha.
using WeightedSums = std::array<i32, 4 * kStripColumns>;

/// The same of some columns, each number in a vector of its own.
struct WeightedColumns {
  V sums[4] = {V::Zero(), V::Zero(), V::Zero(), V::Zero()};

  explicit WeightedColumns(const V (&rows)[4]) {
    for (size_t j = 0; j < 4; j += 2) {  // two rows side by side, as the halves of each lane
      const V low = PairLow16(rows[j], rows[j + 1]), high = PairHigh16(rows[j], rows[j + 1]);
      const V weights = Odd(high);
      sums[0] = Add32(sums[0], DotProduct32(Even(low), weights));
      sums[1] = Add32(sums[1], DotProduct32(Odd(low), weights));
      sums[2] = Add32(sums[2], DotProduct32(Even(high), weights));
      sums[3] = Add32(sums[3], DotProduct32(V::All16(1), weights));
    }
  }
};

inline void SumWeighted(WeightedSums* sums, const BoxRow& row, const Strip& strip) {
  const auto rows = row.rows;
  const i64 first = strip.first;
  ForColumns(strip.columns, [=](i64 i) {
    V p[4];
    for (size_t j = 0; j < 4; ++j) p[j] = V::Load(rows[j] + 4 * (first + i));
    StoreZipped32(WeightedColumns(p).sums, reinterpret_cast<u8*>(sums->data() + 4 * i));
  });
}

/// The weighted means of four columns of sums for as many pixels as a vector holds.
inline V WeightedMeans(const WeightedSums& sums, Grid columns, Strip strip, i64 x) {
  V means[4];
  for (i64 k = 0; k < 4; ++k) {
    const auto sample = [&](i64 i) {
      return LoadLanes([&](i64 lane) {
        const i64 pixel = strip.x + std::min(x + k + 4 * lane, strip.pixels - 1);
        const i64 column = columns.Sample(pixel, i) - strip.first;
        return reinterpret_cast<const u8*>(sums.data() + 4 * column);
      });
    };
    means[k] = MeansByLast32(Add32(Add32(sample(0), sample(1)), Add32(sample(2), sample(3))));
  }
  return PackU8(means);
}

inline void WeightedStrip(u8* dst, const BoxRow& row, const Strip& strip) {
  WeightedSums sums;
  SumWeighted(&sums, row, strip);
  i64 x = 0;
  for (; x + V::kPixels <= strip.pixels; x += V::kPixels) {
    WeightedMeans(sums, row.columns, strip, x).Store(dst + 4 * x);
  }
  if (x < strip.pixels) {
    u8 rest[kVectorBytes];
    WeightedMeans(sums, row.columns, strip, x).Store(rest);
    std::memcpy(dst + 4 * x, rest, static_cast<size_t>(4 * (strip.pixels - x)));
  }
}

template <bool isWeighted>
void StripsRow(u8* dst, const BoxRow& row) {
  RowSums sums;
  for (i64 x = 0; x < row.dstWidth;) {
    const Strip strip = VectorStrip(row, x);
    u8* const to = dst + 4 * x;
    const Alphas alphas = SumPlain(&sums, row, strip);
    if (!isWeighted || alphas == Alphas::kOpaque) {
      Means(to, &sums, row, strip);
    } else if (alphas == Alphas::kMixed) {
      WeightedStrip(to, row, strip);
    } else {
      std::memset(to, 0, static_cast<size_t>(4 * strip.pixels));
    }
    x += strip.pixels;
  }
}

/// Pixels of four vectors, each a sixteenth of the sum of the two quadruples of words in 128 bits.
inline V MeansOfPairs(const V (&a)[4]) {
  const auto means = [](V b, V c) {
    return ShiftRightU16(Add16(InterleaveFirst64(b, c), InterleaveSecond64(b, c)), 4);
  };
  return PackU8(means(a[0], a[1]), means(a[2], a[3]));
}

/// The squares of four by four pixels that a vector of destination pixels is made of: each of the
/// four vectors of a row holds as many squares as it has 128 bits.
struct Squares {
  V p[4][4];  // by vector, then row

  Squares(const BoxRow& row, i64 x) {
    const V opaque = V::All32(row.opaque ? kAlpha : 0);
    for (i64 i = 0; i < 4; ++i) {
      for (size_t j = 0; j < 4; ++j) {
        const u8* const from = row.rows[j] + 16 * (x + i);
        p[i][j] = LoadLanes([=](i64 lane) { return from + 64 * lane; }) | opaque;
      }
    }
  }

  V PlainMeans() const {
    V sums[4];
    for (size_t i = 0; i < 4; ++i) {
      V low, high;
      SumBytes(p[i][0], p[i][1], p[i][2], p[i][3], &low, &high);
      sums[i] = Add16(low, high);
    }
    return MeansOfPairs(sums);
  }

  V WeightedMeans() const {
    V all = p[0][0], any = p[0][0];  // the bits that all, or any, of the pixels have
    for (const auto& rows : p) {
      for (const V pixels : rows) {
        all = all & pixels;
        any = any | pixels;
      }
    }
    if (AlphasOpaque(all)) return PlainMeans();
    if (AlphasClear(any)) return V::Zero();
    V means[4];
    for (size_t i = 0; i < 4; ++i) {
      means[i] = MeansByLast32(SumsAcross32(WeightedColumns(p[i]).sums));
    }
    return PackU8(means);
  }
};

template <bool isWeighted>
void QuarterRow(u8* dst, const BoxRow& row) {
  for (i64 i = 0; i < row.dstWidth; i += V::kPixels) {
    const i64 x = std::min(i, row.dstWidth - V::kPixels);  // the last vector ends at the last pixel
    for (const u8* pixels : row.rows) Prefetch(pixels + 16 * x, 16 * V::kPixels);
    const Squares squares(row, x);
    (isWeighted ? squares.WeightedMeans() : squares.PlainMeans()).Store(dst + 4 * x);
  }
}

constexpr VectorBox kVectorBox = {V::kPixels, StripsRow<false>, StripsRow<true>, QuarterRow<false>,
                                  QuarterRow<true>};
