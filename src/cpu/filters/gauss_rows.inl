// Sums of pixels with weights, over Pair; included once for the portable build and once for each
// instruction set. Every build adds in the same order.

constexpr i64 kChunk = 8;  // pixels side by side, to hide how long an addition takes

/// Rows of the picture, as they are or with colours times alpha.
template <bool weighted>
struct ByteRows {
  const u8* first;
  i64 pitch;

  Pair At(i64 row, i64 x) const { return Made(Pair::OfBytes(first + row * pitch + 4 * x)); }
  Pair LastAt(i64 row, i64 x) const {
    u8 two[8] = {};
    std::memcpy(two, first + row * pitch + 4 * x, 4);
    return Made(Pair::OfBytes(two));
  }

 private:
  static Pair Made(Pair p) { return weighted ? p * JoinAlphas(SpreadAlphas(p), Pair::All(1)) : p; }
};

/// Rows of floats, of which there is an even number of pixels.
struct FloatRows {
  const f32* first;
  i64 pitch;

  Pair At(i64 row, i64 x) const { return Pair::Load(first + row * pitch + 4 * x); }
  Pair LastAt(i64 row, i64 x) const { return At(row, x); }
};

/// What is done with a sum of rows: stored as it is, …
struct KeepFloats {
  f32* row;

  void operator()(i64 x, Pair sum) const { sum.Store(row + 4 * x); }
  void Last(i64 x, Pair sum) const { (*this)(x, sum); }
};

/// … or made a pixel, which may look at what the picture held before.
template <typename Rule>
struct WriteBytes {
  u8* row;
  Rule rule;

  void operator()(i64 x, Pair sum) const { Write(row + 4 * x, sum); }
  void Last(i64 x, Pair sum) const {
    u8 two[8] = {};
    std::memcpy(two, row + 4 * x, 4);
    Write(two, sum);
    std::memcpy(row + 4 * x, two, 4);
  }

 private:
  void Write(u8* p, Pair sum) const {
    (rule(sum, Pair::OfBytes(p)) + Pair::All(0.5f)).StoreBytes(p);
  }
};

/// Colours by their weight, which is the alpha; none where the alpha is none.
inline Pair Straight(Pair sum) {
  const Pair alpha = SpreadAlphas(sum);
  const Pair colours = sum / Max(alpha, Pair::All(0x1p-60f));
  return SelectLess(alpha, Pair::All(0.5f), Pair::All(0), JoinAlphas(colours, sum));
}

struct TakeStraight {
  explicit TakeStraight(const Finish&) {}
  Pair operator()(Pair sum, Pair) const { return Straight(sum); }
};
struct Sharpen {
  Pair amount, threshold;

  explicit Sharpen(const Finish& finish)
      : amount(Pair::All(finish.amount)), threshold(Pair::All(finish.threshold)) {}

  Pair operator()(Pair sum, Pair before) const {
    const Pair detail = before - Straight(sum), none = Pair::All(0);
    const Pair sharp = Min(Max(before + amount * detail, none), Pair::All(255));
    const Pair taken = SelectLess(Max(detail, none - detail), threshold, before, sharp);
    return SelectLess(SpreadAlphas(before), Pair::All(0.5f), none, JoinAlphas(taken, before));
  }
};

/// The sum of a window's rows.
template <i64 pairs, typename Rows, typename Sink>
void SumRowsAt(const Window& window, const Rows& rows, i64 x, const Sink& sink) {
  Pair sums[pairs];
  for (Pair& sum : sums) sum = Pair::All(0);
  for (i64 k = 0; k < window.count; ++k) {
    const Pair weight = Pair::All(window.weights[k]);
    for (i64 i = 0; i < pairs; ++i)
      sums[i] = sums[i] + weight * rows.At(window.first + k, x + 2 * i);
  }
  for (i64 i = 0; i < pairs; ++i) sink(x + 2 * i, sums[i]);
}

template <typename Rows, typename Sink>
void SumRows(const Window& window, const Rows& rows, i64 width, const Sink& sink) {
  i64 x = 0;
  for (; x + kChunk <= width; x += kChunk) SumRowsAt<kChunk / 2>(window, rows, x, sink);
  for (; x + 2 <= width; x += 2) SumRowsAt<1>(window, rows, x, sink);
  if (x == width) return;
  Pair sum = Pair::All(0);
  for (i64 k = 0; k < window.count; ++k)
    sum = sum + Pair::All(window.weights[k]) * rows.LastAt(window.first + k, x);
  sink.Last(x, sum);
}

template <bool weighted>
void GatherRow(f32* dst, const Source& src, const Window& window) {
  SumRows(window, ByteRows<weighted>{src.pixels, src.pitch}, src.width, KeepFloats{dst});
}

template <typename Rule>
void FinishRow(const Picture& dst, i64 y, const Floats& src, const Window& window,
               const Finish& finish) {
  SumRows(window, FloatRows{src.first, src.pitch}, dst.width,
          WriteBytes<Rule>{dst.Row(y), Rule(finish)});
}

/// Sums along a row: even and odd neighbours apart, then both. The pixel after the last one read
/// counts 0 where their number is odd.
inline void SumAlong(f32* dst, const f32* src, const Window* windows, i64 count) {
  for (const Window* window = windows; window != windows + count; ++window, dst += 4) {
    const f32* p = src + 4 * window->first;
    Pair sum = Pair::All(0);
    for (i64 k = 0; k < window->count; k += 2, p += 8)
      sum = sum + Pair::Each(window->weights + k) * Pair::Load(p);
    sum.StoreSum(dst);
  }
}

constexpr Kernels kKernels = {IsOpaqueRow,
                              GatherWhole,
                              {GatherRow<false>, GatherRow<true>},
                              SumAlong,
                              ToWords,
                              JoinRows,
                              PartRows,
                              {FinishWords<false>, FinishWords<true>},
                              {FinishRow<TakeStraight>, FinishRow<Sharpen>}};
