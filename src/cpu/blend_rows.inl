// The vector rows of blend.cpp over V, included once for each instruction set.
//
// A 32-bit pixel is worked on as two 16-bit halves: "even" holds blue and red, "odd" green and
// alpha. A weight is at most 256 and a byte at most 255, so that a product, and the sum of two
// whose weights add up to 256, fit 16 unsigned bits.

constexpr u32 kAlpha = 0xFF000000;
constexpr u32 kColours = 0x00FFFFFF;

inline V Even(V pixels) { return pixels & V::All16(0xFF); }
inline V Odd(V pixels) { return ShiftRight16(pixels, 8); }

/// (s * w + d * (256 - w)) >> 8 per channel, as d + (s - d) * w / 256 modulo 2^16.
inline V Mix(V s, V d, V evenWeight, V oddWeight) {
  const V even = Add16(Mul16(Sub16(Even(s), Even(d)), evenWeight), ShiftLeft16(d, 8));
  const V odd = Add16(Mul16(Sub16(Odd(s), Odd(d)), oddWeight), AndNot(V::All16(0xFF), d));
  return ShiftRight16(even, 8) | AndNot(V::All16(0xFF), odd);
}

/// (d * w) >> 8 per channel.
inline V Scale(V d, V weight) {
  return ShiftRight16(Mul16(Even(d), weight), 8) | AndNot(V::All16(0xFF), Mul16(Odd(d), weight));
}

/// (s * multiplier) >> 16 per channel.
inline V Fade(V s, V multiplier) {
  return MulHigh16(Even(s), multiplier) | ShiftLeft16(MulHigh16(Odd(s), multiplier), 8);
}

/// The source alpha in the low half of each pixel, faded if this row is.
template <bool faded>
V AlphaWeight(V s, V multiplier) {
  const V alpha = ShiftRight32(s, 24);
  return faded ? MulHigh16(alpha, multiplier) : alpha;
}

// A faded weight is never 255: that takes a factor of 1, which the plain rows handle.

template <bool faded, bool sourceAlpha>
struct OverRule {
  static constexpr bool kCopiesOpaque = !faded;
  V multiplier;

  explicit OverRule(const BlendRow& row) : multiplier(V::All16(row.multiplier)) {}

  V operator()(V s, V d) const {
    V weight = AlphaWeight<faded>(s, multiplier);
    V full = V::All32(0);
    if constexpr (!faded) {
      full = Equal32(weight, V::All32(255));
      full = full & SwapPairs(full);
      weight = Sub32(weight, full);  // 256 where the pair is copied
    }
    V alphaWeight = full & V::All32(256u << 16);
    if constexpr (sourceAlpha) {
      V clear = Equal32(weight, V::All32(0));
      clear = clear & SwapPairs(clear);
      alphaWeight = AndNot(clear, V::All32(256u << 16));
    }
    return Mix(s, d, Repeat16(weight), weight | alphaWeight);
  }
};

template <bool faded>
struct PremultipliedRule {
  static constexpr bool kCopiesOpaque = !faded;
  V multiplier;

  explicit PremultipliedRule(const BlendRow& row) : multiplier(V::All16(row.multiplier)) {}

  V operator()(V s, V d) const {
    if constexpr (faded) s = Fade(s, multiplier);
    const V weight = ShiftRight32(s, 24);
    const V rest = Sub16(V::All16(256), Repeat16(weight));
    const V mixed = AddSaturated8(s, Scale(d, rest)) | V::All32(kAlpha);
    return Select(Equal32(weight, V::All32(0)), mixed, d);
  }
};

template <bool faded>
struct CompositeRule {
  static constexpr bool kCopiesOpaque = !faded;
  V multiplier;

  explicit CompositeRule(const BlendRow& row) : multiplier(V::All16(row.multiplier)) {}

  V operator()(V source, V d) const {
    const V colours = V::All32(kColours), alpha = V::All32(kAlpha);
    const V s = faded ? Fade(source, multiplier) : source;
    const V weight = ShiftRight32(s, 24);
    const V rest = Sub16(V::All16(255), Repeat16(weight));
    // With the alpha inverted on the way in and out, one product serves colours and alpha.
    const V mixed = AddSaturated8(s & colours, Scale(d ^ alpha, rest) ^ alpha);
    const V copied = faded ? (source & colours) | (s & alpha) : source;
    const V zero = V::All32(0);
    const V laid = Select(Equal32(ShiftRight32(d, 24), zero), mixed, copied);
    return Select(Equal32(weight, zero), laid, d);
  }
};

template <bool faded, bool writeWeight, bool onBackdrop>
struct OpacityRule {
  static constexpr bool kCopiesOpaque = !faded;
  V multiplier, backdrop;

  explicit OpacityRule(const BlendRow& row)
      : multiplier(V::All16(row.multiplier)), backdrop(V::All32(row.backdrop & kColours)) {}

  V operator()(V s, V d) const {
    const V plain = AlphaWeight<faded>(s, multiplier);
    const V full = faded ? V::All32(0) : Equal32(plain, V::All32(255));
    const V weight = Sub32(plain, full);  // 256 where the pixel is copied
    const V base = onBackdrop ? backdrop | (d & V::All32(kAlpha)) : d;
    V mixed = Mix(s, base, Repeat16(weight), weight | (full & V::All32(256u << 16)));
    if constexpr (writeWeight) mixed = (mixed & V::All32(kColours)) | ShiftLeft32(plain, 24);
    if constexpr (!writeWeight && !onBackdrop) return mixed;
    return Select(Equal32(plain, V::All32(0)), mixed, d);
  }
};

/// One row, or one packed picture. Blocks of four vectors that are all clear, or all opaque where
/// that means a copy, cost one test.
template <typename Rule>
void VectorRow(u8* dst, const u8* src, i64 width, const BlendRow& row) {
  const Rule rule(row);
  constexpr i64 kVectorBytes = V::kPixels * 4, kBlockBytes = 4 * kVectorBytes;
  const i64 bytes = width * 4;
  i64 at = 0;
  for (; at + kBlockBytes <= bytes; at += kBlockBytes) {
    const u8* from = src + at;
    u8* to = dst + at;
    const V s[4] = {V::Load(from), V::Load(from + kVectorBytes), V::Load(from + 2 * kVectorBytes),
                    V::Load(from + 3 * kVectorBytes)};
    if (AllClear(s[0] | s[1] | s[2] | s[3])) continue;
    if (Rule::kCopiesOpaque && AllOpaque(s[0] & s[1] & s[2] & s[3])) {
      for (i64 i = 0; i < 4; ++i) s[i].Store(to + i * kVectorBytes);
      continue;
    }
    for (i64 i = 0; i < 4; ++i) {
      rule(s[i], V::Load(to + i * kVectorBytes)).Store(to + i * kVectorBytes);
    }
  }
  for (; at + kVectorBytes <= bytes; at += kVectorBytes) {
    rule(V::Load(src + at), V::Load(dst + at)).Store(dst + at);
  }
  if (at == bytes) return;

  // The rest goes through a vector of its own. A last pixel without a partner is its own partner:
  // that makes the pair rules those of a single pixel.
  alignas(32) u8 s[kVectorBytes] = {}, d[kVectorBytes] = {};
  const i64 rest = bytes - at;
  std::memcpy(s, src + at, static_cast<size_t>(rest));
  std::memcpy(d, dst + at, static_cast<size_t>(rest));
  if (rest % 8 != 0) {
    std::memcpy(s + rest, s + rest - 4, 4);
    std::memcpy(d + rest, d + rest - 4, 4);
  }
  rule(V::Load(s), V::Load(d)).Store(d);
  std::memcpy(dst + at, d, static_cast<size_t>(rest));
}

constexpr BlendBuilds kBlendBuilds = {
    .over = {VectorRow<OverRule<false, false>>, VectorRow<OverRule<true, false>>},
    .overSourceAlpha = {VectorRow<OverRule<false, true>>, VectorRow<OverRule<true, true>>},
    .premultiplied = {VectorRow<PremultipliedRule<false>>, VectorRow<PremultipliedRule<true>>},
    .composite = {VectorRow<CompositeRule<false>>, VectorRow<CompositeRule<true>>},
    .opacity = {VectorRow<OpacityRule<false, false, false>>,
                VectorRow<OpacityRule<true, false, false>>},
    .opacityOnBackdrop = {VectorRow<OpacityRule<false, false, true>>,
                          VectorRow<OpacityRule<true, false, true>>},
    .opacityToAlpha = {VectorRow<OpacityRule<false, true, false>>,
                       VectorRow<OpacityRule<true, true, false>>},
    .opacityToAlphaOnBackdrop = {VectorRow<OpacityRule<false, true, true>>,
                                 VectorRow<OpacityRule<true, true, true>>},
};
