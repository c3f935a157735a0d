// The vector build of resize_box.cpp's alpha-weighted box over V, included once for each
// instruction set: the sampled rows are summed for a strip of columns, and then
// the columns.

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

/// What the alphas of a strip are.
enum class Alphas { kClear, kOpaque, kMixed };

/// Sums the rows of each column, and tells what alphas they hold.
inline Alphas SumPlain(RowSums* sums, const BoxRow& row, const Strip& strip) {
  const V opaque = V::All32(row.opaque ? kAlpha : 0);
  const auto rows = row.rows;
  const i64 first = strip.first;
  V least = V::All32(~0u), most = V::All32(0);
  ForColumns(strip.columns, [&](i64 i) {
    V p[4];
    for (size_t j = 0; j < 4; ++j) p[j] = V::Load(rows[j] + 4 * (first + i)) | opaque;
    least = MinU8(least, MinU8(MinU8(p[0], p[1]), MinU8(p[2], p[3])));
    most = MaxU8(most, MaxU8(MaxU8(p[0], p[1]), MaxU8(p[2], p[3])));
    V low, high;
    SumBytes(p[0], p[1], p[2], p[3], &low, &high);
    StoreWide(low, high, reinterpret_cast<u8*>(sums->data() + 4 * i));
  });
  return AlphasOpaque(least) ? Alphas::kOpaque
         : AlphasClear(most) ? Alphas::kClear
                             : Alphas::kMixed;
}

/// Sums of four rows, for each column: blue, green and red times alpha, and alpha.
using WeightedSums = std::array<i32, 4 * kStripColumns>;

inline void SumWeighted(WeightedSums* sums, const BoxRow& row, const Strip& strip) {
  const auto rows = row.rows;
  const i64 first = strip.first;
  ForColumns(strip.columns, [=](i64 i) {
    const i64 at = 4 * (first + i);
    V blue = V::All32(0), green = blue, red = blue, alpha = blue;
    for (size_t j = 0; j < 4; j += 2) {  // two rows side by side, as the halves of each lane
      const V p = V::Load(rows[j] + at), q = V::Load(rows[j + 1] + at);
      const V low = PairLow16(p, q), high = PairHigh16(p, q), weights = Odd(high);
      blue = Add32(blue, DotProduct32(Even(low), weights));
      green = Add32(green, DotProduct32(Odd(low), weights));
      red = Add32(red, DotProduct32(Even(high), weights));
      alpha = Add32(alpha, DotProduct32(V::All16(1), weights));
    }
    StoreZipped32({blue, green, red, alpha}, reinterpret_cast<u8*>(sums->data() + 4 * i));
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

inline void MixedRow(u8* dst, const BoxRow& row) {
  RowSums sums;
  for (i64 x = 0; x < row.dstWidth;) {
    const Strip strip = VectorStrip(row, x);
    u8* const to = dst + 4 * x;
    const Alphas alphas = SumPlain(&sums, row, strip);
    if (alphas == Alphas::kMixed) {
      WeightedStrip(to, row, strip);
    } else if (alphas == Alphas::kOpaque) {
      Means(to, &sums, row, strip);
    } else {
      std::memset(to, 0, static_cast<size_t>(4 * strip.pixels));
    }
    x += strip.pixels;
  }
}

constexpr VectorBox kMixed = {V::kPixels, MixedRow};
