// The vector rows of gauss_narrow.cpp over V, included once for each instruction set.

/// Sums of each colour of as many pixels as V has, of two taps at a time.
struct ColourSums {
  V blue, green, red;

  explicit ColourSums(u32 from) : blue(V::All32(from)), green(blue), red(blue) {}

  /// Blue and red, and green in the low half, of both taps' neighbours.
  void Add(V evenA, V evenB, V oddA, V oddB, V weights) {
    blue = Add32(blue, DotProduct32(PairLow16(evenA, evenB), weights));
    red = Add32(red, DotProduct32(PairHigh16(evenA, evenB), weights));
    green = Add32(green, DotProduct32(PairLow16(oddA, oddB), weights));
  }
};

inline V WeightsOf(const Taps& taps, i64 k) {
  return V::All32(static_cast<u32>(taps.weights[k] | taps.weights[k + 1] << 16));
}

inline u8* BytesOf(u32* p) { return reinterpret_cast<u8*>(p); }
inline const u8* BytesOf(const u32* p) { return reinterpret_cast<const u8*>(p); }

inline void SumDown(const SummedRow& dst, const Neighbours& rows, const Taps& taps, i64 first,
                    i64 width) {
  i64 x = first;
  for (; x + V::kPixels <= width; x += V::kPixels) {
    ColourSums sums(128);
    for (i64 k = 0; k <= taps.reach; k += 2) {
      const V a = V::Load(rows[2 * k] + 4 * x), b = V::Load(rows[2 * k + 1] + 4 * x);
      const V c = V::Load(rows[2 * k + 2] + 4 * x), d = V::Load(rows[2 * k + 3] + 4 * x);
      sums.Add(Add16(Even(a), Even(b)), Add16(Even(c), Even(d)), Add16(Odd(a), Odd(b)),
               Add16(Odd(c), Odd(d)), WeightsOf(taps, k));
    }
    (ShiftRightU32(sums.blue, 8) | ShiftLeft32(ShiftRightU32(sums.red, 8), 16))
        .Store(BytesOf(dst.blueRed + x));
    ShiftRightU32(sums.green, 8).Store(BytesOf(dst.green + x));
  }
  portable::SumDown(dst, rows, taps, x, width);
}

struct Rounded {
  explicit Rounded(const NarrowFinish&) {}
  V operator()(V sum, V) const { return ShiftRightU32(Add32(sum, V::All32(1 << 19)), 20); }
};

struct Sharpened {
  F amount, threshold;

  explicit Sharpened(const NarrowFinish& finish)
      : amount(F::All(finish.amount)), threshold(F::All(finish.threshold)) {}

  V operator()(V sum, V before) const {
    const F colour = ToF(before), detail = colour - ToF(sum) * F::All(0x1p-20f);
    const F sharp = Min(Max(colour + amount * detail, F::All(0)), F::All(255));
    return Truncate(Select(Abs(detail) < threshold, colour, sharp) + F::All(0.5f));
  }
};

template <typename Rule, bool sharpens>
void FinishRow(u8* dst, const SummedRow& src, const Taps& taps, i64 first, i64 width,
               const NarrowFinish& finish) {
  const Rule rule(finish);
  i64 x = first;
  for (; x + V::kPixels <= width; x += V::kPixels) {
    ColourSums sums(0);
    for (i64 k = 0; k <= taps.reach; k += 2) {
      const auto pair = [=](const u32* row, i64 distance) {
        return Add16(V::Load(BytesOf(row + x - distance)), V::Load(BytesOf(row + x + distance)));
      };
      sums.Add(pair(src.blueRed, k), pair(src.blueRed, k + 1), pair(src.green, k),
               pair(src.green, k + 1), WeightsOf(taps, k));
    }
    const V before = V::Load(dst + 4 * x);
    JoinChannels(rule(sums.blue, Channel(before, 0)), rule(sums.green, Channel(before, 1)),
                 rule(sums.red, Channel(before, 2)), V::All32(255))
        .Store(dst + 4 * x);
  }
  portable::FinishRow<sharpens>(dst, src, taps, x, width, finish);
}

constexpr NarrowKernels kKernels = {SumDown,
                                    {FinishRow<Rounded, false>, FinishRow<Sharpened, true>}};
