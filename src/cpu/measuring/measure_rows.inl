// The vector rows of measure.cpp over V, included once for each instruction set.

/// Weights as the operands of products: of blue and red, and of green and alpha.
struct LaneWeights {
  V even, odd;

  explicit LaneWeights(const Weights& w)
      : even(V::All32(static_cast<u32>(w.byte[0] | w.byte[2] << 16))),
        odd(V::All32(static_cast<u32>(w.byte[1] | w.byte[3] << 16))) {}

  V Of(const u8* pixels) const {
    const V p = V::Load(pixels);
    const V sum = Add32(DotProduct32(Even(p), even), DotProduct32(Odd(p), odd));
    return ShiftRightU32(Add32(sum, V::All32(128)), 8);
  }
};

struct PlainOf {
  static V At(const Rows& rows, const LaneWeights& weights, i64 x) {
    return weights.Of(rows.row + 4 * x);
  }
};

struct LaplacianOf {
  static V At(const Rows& rows, const LaneWeights& weights, i64 x) {
    const V across = Add32(weights.Of(rows.row + 4 * x - 4), weights.Of(rows.row + 4 * x + 4));
    const V down = Add32(weights.Of(rows.above + 4 * x), weights.Of(rows.below + 4 * x));
    return Sub32(ShiftLeft32(weights.Of(rows.row + 4 * x), 2), Add32(across, down));
  }
};

inline i64 SumOfLanes(V a) {
  i32 lanes[V::kPixels];
  a.Store(reinterpret_cast<u8*>(lanes));
  i64 sum = 0;
  for (const i32 lane : lanes) sum += lane;
  return sum;
}

/// The pixels at both ends, and those left over, as the rule has it: only they have edges beside
/// them.
template <typename Numbers, NumberFn* number>
void VectorSumRow(const Rows& rows, const Weights& weights, Sums* sums) {
  constexpr i64 kPiece = 1024 * V::kPixels;  // squares below 1021^2 fit the lanes
  const LaneWeights lanes(weights);
  i64 x = 1;
  SumPixels<number>(rows, weights, 0, 1, sums);
  while (x + V::kPixels < rows.width) {
    const i64 end = std::min(x + kPiece, rows.width - V::kPixels);
    V first = V::Zero(), second = V::Zero();
    for (; x < end; x += V::kPixels) {
      Prefetch(rows.below + 4 * x, kVectorBytes);
      const V n = Numbers::At(rows, lanes, x), low = n & V::All32(0xFFFF);
      first = Add32(first, n);
      second = Add32(second, DotProduct32(low, low));
    }
    sums->first += SumOfLanes(first);
    sums->second += SumOfLanes(second);
  }
  SumPixels<number>(rows, weights, x, rows.width, sums);
}
