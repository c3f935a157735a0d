// Sums of weighted numbers over V. Weights are taken apart into their high and low 16 bits, and
// sums of two products each are put together again, without the low bits that rounding drops.
// Included by a family's vector rows.

using colour::kWeightBits;

struct WeightPair {
  V high, low;

  WeightPair(i32 first, i32 second)
      : high(Pair16(High(first), High(second))),
        low(Pair16(first - (High(first) << 16), second - (High(second) << 16))) {}

 private:
  static i32 High(i32 weight) { return (weight + (1 << 15)) >> 16; }
};

constexpr int kSumBits = kWeightBits - 16;
inline V Sum(V high, V low) { return Add32(high, ShiftRightI32(low, 16)); }

/// The sum of three weighted numbers, those at a pixel's even bytes and the one between, and what a
/// sum is rounded with, a multiple of `bias`, which stands in the upper half of odd lanes.
template <i32 bias>
class Sum3 {
 public:
  Sum3(const std::array<i32, 3>& row, i64 constant)
      : even_(row[2], row[0]), odd_(row[1], static_cast<i32>(constant / bias)) {}

  V operator()(V even, V odd) const {
    return Sum(Add32(DotProduct32(even, even_.high), DotProduct32(odd, odd_.high)),
               Add32(DotProduct32(even, even_.low), DotProduct32(odd, odd_.low)));
  }

 private:
  WeightPair even_, odd_;
};

/// The sum of two.
class Sum2 {
 public:
  Sum2(i32 first, i32 second, i32 constant)
      : weights_(first, second), constant_(V::All32(static_cast<u32>(constant))) {}

  V operator()(V numbers) const {
    return Sum(DotProduct32(numbers, weights_.high),
               Add32(DotProduct32(numbers, weights_.low), constant_));
  }

 private:
  WeightPair weights_;
  V constant_;
};
