// The vector rows of transition.cpp over V, included once for each instruction set.

/// The mix of opaque pixels.
inline V MixOpaque(V from, V to, V weight) {
  return MixHalves<128>(Even(to), Odd(to), from, weight, weight);
}

/// The mix of any pixels: the numerators stay below 2^24.
inline V MixAny(V from, V to, V weight) {
  const V w = weight & V::All32(0xFFFF), whole = V::All32(256), zero = V::Zero();
  const V under = Mul16(ShiftRightU32(from, 24), Sub16(whole, w));
  const V over = Mul16(ShiftRightU32(to, 24), w), sum = Add32(under, over);
  const V alpha = ShiftRightU32(Add32(sum, V::All32(128)), 8);
  const V divisor = MaxI32(sum, V::All32(1)), half = ShiftRightU32(sum, 1);
  V pixels = ShiftLeft32(alpha, 24);
  for (int i = 0; i < 3; ++i) {
    const V both = Add32(Mul32(Channel(from, i), under), Mul32(Channel(to, i), over));
    pixels = pixels | ShiftLeft32(Quotient32(Add32(both, half), divisor), 8 * i);
  }
  pixels = AndNot(Equal32(alpha, zero), pixels);
  return Select(Equal32(w, zero), from, Select(Equal32(w, whole), to, pixels));
}

inline bool AreAll(const Block& weights, u32 weight) {
  const V all = V::All16(weight);
  return IsZero((weights.v[0] ^ all) | (weights.v[1] ^ all) | (weights.v[2] ^ all) |
                (weights.v[3] ^ all));
}

/// Where one picture has all the weight, the other is not even read.
inline void MixBlock(u8* dst, const u8* from, const u8* to, const Block& weights) {
  const auto copy = [=](const u8* picture) {
    Prefetch(picture);
    Block(picture).Store(dst);
  };
  if (AreAll(weights, 0)) return copy(from);
  if (AreAll(weights, 256)) return copy(to);
  Prefetch(from);
  Prefetch(to);
  Block under(from);
  const Block over(to);
  const bool areOpaque = under.AllOpaque() && over.AllOpaque();
  for (int i = 0; i < 4; ++i) {
    under.v[i] = areOpaque ? MixOpaque(under.v[i], over.v[i], weights.v[i])
                           : MixAny(under.v[i], over.v[i], weights.v[i]);
  }
  under.Store(dst);
}

inline void VectorMixRow(u8* dst, const u8* from, const u8* to, const u32* weights, i64 width) {
  constexpr i64 kBlockPixels = 4 * V::kPixels;
  const u8* const bytes = reinterpret_cast<const u8*>(weights);
  i64 x = 0;
  for (; x + kBlockPixels <= width; x += kBlockPixels)
    MixBlock(dst + 4 * x, from + 4 * x, to + 4 * x, Block(bytes + 4 * x));
  for (; x + V::kPixels <= width; x += V::kPixels) {
    MixAny(V::Load(from + 4 * x), V::Load(to + 4 * x), V::Load(bytes + 4 * x)).Store(dst + 4 * x);
  }
  MixRow(dst + 4 * x, from + 4 * x, to + 4 * x, weights + x, width - x);
}
