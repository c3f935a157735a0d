// The sampler of cpu/base/sampler.h over V, from SSE4.1 on; included by a family's vector rows.

/// The four pixels around each point.
struct Neighbours {
  V here, right, below, belowRight;
};

/// The weights of the points of a vector of pixels, given in lanes of 32 bits.
struct SampleWeights {
  V across;       // of the right pixels, in both halves of each lane
  V down;         // of the upper row, and of the lower one in the high half
  V products[4];  // in the order of SamplePoint::Weights

  explicit SampleWeights(SamplePoint point)
      : SampleWeights(V::All32(static_cast<u32>(point.x)), V::All32(static_cast<u32>(point.y))) {}
  SampleWeights(V x, V y) : across(SpreadLow16(x)) {
    const V restX = Sub32(V::All32(256), x), restY = Sub32(V::All32(256), y);
    down = restY | ShiftLeft32(y, 16);
    products[0] = DotProduct32(restX, restY);
    products[1] = DotProduct32(x, restY);
    products[2] = DotProduct32(restX, y);
    products[3] = DotProduct32(x, y);
  }
};

/// Each channel by the weights alone. A row's mix has 16 bits unsigned; 0x8000 less, it is the
/// signed number that a product takes, and 0x8000 * 256 is added to the sum again.
/// @param rounding what is added before the sum is divided by 65536
inline V SamplePlain(const Neighbours& n, const SampleWeights& w, u32 rounding = 0) {
  const auto across = [&](V left, V right) {
    const V mix = Add16(ShiftLeft16(left, 8), Mul16(Sub16(right, left), w.across));
    return mix ^ V::All16(0x8000);
  };
  const auto down = [&](V pairs) {
    return Add32(DotProduct32(pairs, w.down), V::All32(0x8000 * 256 + rounding));
  };
  const auto both = [&](V top, V bottom) {
    return PairHigh16(down(PairLow16(top, bottom)), down(PairHigh16(top, bottom)));
  };
  const V even =
      both(across(Even(n.here), Even(n.right)), across(Even(n.below), Even(n.belowRight)));
  const V odd = both(across(Odd(n.here), Odd(n.right)), across(Odd(n.below), Odd(n.belowRight)));
  return even | ShiftLeft16(odd, 8);
}

/// sum / total for unsigned sums of 32 bits, totals below 2^24 and quotients of a byte. What the
/// estimate is off by, 1 at most, is put right.
inline V ByteQuotient(V sum, V total, F inverse) {
  const V estimate = Truncate(ToF(ShiftRightU32(sum, 1)) * inverse);
  const V rest = Sub32(sum, Mul32(estimate, total));
  const V tooMuch = GreaterI32(V::Zero(), rest), tooLittle = GreaterI32(total, rest);
  return Add32(Add32(estimate, tooMuch), Add32(tooLittle, V::All32(1)));
}

/// Sums by weights and alphas.
struct AlphaSums {
  V colours[3] = {V::Zero(), V::Zero(), V::Zero()}, total = V::Zero();

  AlphaSums(const Neighbours& n, const SampleWeights& w) {
    const V pixels[] = {n.here, n.right, n.below, n.belowRight};
    for (size_t i = 0; i < 4; ++i) {
      const V weight = Mul32(w.products[i], ShiftRightU32(pixels[i], 24));
      total = Add32(total, weight);
      for (int c = 0; c < 3; ++c)
        colours[c] = Add32(colours[c], Mul32(weight, Channel(pixels[i], c)));
    }
  }

  /// The colours' means.
  /// @param rounding what is added to their sums, at most half of the total
  V Means(V rounding) const {
    const V some = MaxI32(total, V::All32(1));
    const F inverse = F::All(2) / ToF(some);
    const auto mean = [&](int c) {
      return ShiftLeft32(ByteQuotient(Add32(colours[c], rounding), some, inverse), 8 * c);
    };
    return mean(0) | mean(1) | mean(2);
  }
};

inline V Sample(const Neighbours& n, const SampleWeights& w) {
  const V most = MaxU8(MaxU8(n.here, n.right), MaxU8(n.below, n.belowRight));
  if (AlphasClear(most)) return V::Zero();
  const V least = MinU8(MinU8(n.here, n.right), MinU8(n.below, n.belowRight));
  const V anyClear = Equal32(ShiftRightU32(least, 24), V::Zero());
  const V plain = SamplePlain(n, w);
  if (IsZero(anyClear)) return plain;
  return Select(anyClear & V::All32(kColours), AlphaSums(n, w).Means(V::Zero()), plain);
}

/// See SampleRounded of the portable sampler.
inline V SampleRounded(const Neighbours& n, const SampleWeights& w) {
  const V least = MinU8(MinU8(n.here, n.right), MinU8(n.below, n.belowRight));
  if (AlphasOpaque(least)) return SamplePlain(n, w, 0x8000);
  const V isPixel = Equal32(w.products[0], V::All32(65536));
  const V most = MaxU8(MaxU8(n.here, n.right), MaxU8(n.below, n.belowRight));
  if (AlphasClear(most)) return isPixel & n.here;
  const AlphaSums sums(n, w);
  const V alpha = ShiftRightU32(Add32(sums.total, V::All32(0x8000)), 16);
  const V mixed = sums.Means(ShiftRightU32(sums.total, 1)) | ShiftLeft32(alpha, 24);
  return Select(isPixel, n.here, AndNot(Equal32(alpha, V::Zero()), mixed));
}

/// The pixels from p on and the one that is right of the last of them.
template <typename Edge>
struct LastPixels {
  u8 bytes[kVectorBytes + 4] = {};

  LastPixels(const u8* p, i64 count) {
    std::memcpy(bytes, p, static_cast<size_t>(4 * count));
    std::memcpy(bytes + 4 * count, Edge::Beyond(p + 4 * (count - 1)), 4);
  }
};

/// See SampleRow of the portable sampler; `out` has room for whole vectors.
template <typename Edge>
void SampleRow(u8* out, const RowPair& rows, i64 first, i64 end, SamplePoint point) {
  const SampleWeights weights(point);
  const auto sample = [&](const u8* top, const u8* bottom) {
    const Neighbours n = {V::Load(top), V::Load(top + 4), V::Load(bottom), V::Load(bottom + 4)};
    Sample(n, weights).Store(out);
    out += kVectorBytes;
  };
  i64 x = first;
  for (; x < end && x + V::kPixels < rows.width; x += V::kPixels)
    sample(rows.top + 4 * x, rows.bottom + 4 * x);
  if (x >= end) return;
  const LastPixels<Edge> top(rows.top + 4 * x, end - x), bottom(rows.bottom + 4 * x, end - x);
  sample(top.bytes, bottom.bytes);
}
