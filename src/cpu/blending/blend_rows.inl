// The vector rows of blend.cpp over V, included once for each instruction set.

/// How a weight comes from the source alpha.
enum class Fade {
  kNone,        // it is the source alpha
  kMultiplier,  // (source alpha * multiplier) >> 16; never 255, since that takes a factor of 1
  kProduct,     // the same for rows without a multiplier: the product in single precision
};

/// Applies a row's factor.
template <Fade fade>
struct Fader {
  V multiplier;
  f32 gain, factor;
  i32 gainShift;

  explicit Fader(const BlendRow& row)
      : multiplier(V::All16(row.multiplier)),
        gain(row.gain),
        factor(row.factor),
        gainShift(row.gainShift) {}

  /// In single precision, and in this order.
  V Product(V bytes) const {
    return ShiftRightU32(Truncate(ToF(bytes) * F::All(gain) * F::All(factor)), gainShift);
  }

  /// The weight, in the low half of each pixel.
  V Weight(V s) const {
    const V alpha = ShiftRightU32(s, 24);
    if constexpr (fade == Fade::kMultiplier) return MulHighU16(alpha, multiplier);
    if constexpr (fade == Fade::kProduct) return Product(alpha);
    return alpha;
  }

  /// Every channel as the alpha is weighted.
  V Pixels(V s) const {
    if constexpr (fade == Fade::kMultiplier) {
      return MulHighU16(Even(s), multiplier) | ShiftLeft16(MulHighU16(Odd(s), multiplier), 8);
    }
    if constexpr (fade == Fade::kProduct) {
      const V low = V::All32(0xFF);
      return Product(s & low) | ShiftLeft32(Product(ShiftRightU32(s, 8) & low), 8) |
             ShiftLeft32(Product(ShiftRightU32(s, 16) & low), 16) |
             ShiftLeft32(Product(ShiftRightU32(s, 24)), 24);
    }
    return s;
  }
};

// Each rule blends a vector of pixels. Some pixels it treats apart: those with a source alpha of
// 255 (kApartOpaque) or 0 (kApartClear), or with a destination alpha of 0 (kApartClearDst). A
// `soft` stretch holds none of them, and the rule is shorter there; but a faded weight may still be
// 0.

template <bool sourceAlpha, Fade fade, bool soft>
struct OverRule {
  static constexpr bool kApartOpaque = true, kApartClear = sourceAlpha, kApartClearDst = false;
  Fader<fade> fader;

  explicit OverRule(const BlendRow& row) : fader(row) {}

  V operator()(V s, V d) const {
    V weight = fader.Weight(s);
    V alphaWeight = V::All32(sourceAlpha ? kWholeAlpha : 0);
    if constexpr (sourceAlpha && !soft) {
      const V clear = Equal32(weight, V::All32(0));
      alphaWeight = AndNot(clear & SwapPairs32(clear), alphaWeight);
    }
    if constexpr (fade == Fade::kNone && !soft) {
      V full = Equal32(weight, V::All32(255));
      full = full & SwapPairs32(full);
      weight = Sub32(weight, full);  // 256 where the pair is copied
      alphaWeight = alphaWeight | (full & V::All32(kWholeAlpha));
    }
    return Mix(s, d, SpreadLow16(weight), weight | alphaWeight);
  }
};
template <Fade fade, bool soft>
using Over = OverRule<false, fade, soft>;
template <Fade fade, bool soft>
using OverSourceAlpha = OverRule<true, fade, soft>;

template <Fade fade, bool soft>
struct Premultiplied {
  static constexpr bool kApartOpaque = false, kApartClear = true, kApartClearDst = false;
  Fader<fade> fader;

  explicit Premultiplied(const BlendRow& row) : fader(row) {}

  V operator()(V source, V d) const {
    const V s = fader.Pixels(source);
    const V weight = ShiftRightU32(s, 24);
    V added = s | V::All32(kAlpha);
    // Nothing is added where the weight is 0; 256 - 0 then leaves the destination as it is.
    if constexpr (fade != Fade::kNone || !soft) added = AndNot(Equal32(weight, V::All32(0)), added);
    return AddSaturatedU8(added, Scale(d, Sub16(V::All16(256), SpreadLow16(weight))));
  }
};

template <Fade fade, bool soft>
struct Composite {
  static constexpr bool kApartOpaque = false, kApartClear = true, kApartClearDst = true;
  Fader<fade> fader;

  explicit Composite(const BlendRow& row) : fader(row) {}

  V operator()(V source, V d) const {
    const V colours = V::All32(kColours), alpha = V::All32(kAlpha), zero = V::All32(0);
    const V s = fader.Pixels(source);
    const V weight = ShiftRightU32(s, 24);
    // With the alpha inverted on the way in and out, one product serves colours and alpha.
    const V rest = V::All16(255) ^ SpreadLow16(weight);
    const V mixed = AddSaturatedU8(s & colours, Scale(d ^ alpha, rest) ^ alpha);
    V laid = mixed;
    if constexpr (!soft) {
      const V copied = fade == Fade::kNone ? source : (source & colours) | (s & alpha);
      laid = Select(Equal32(ShiftRightU32(d, 24), zero), copied, mixed);
    }
    if constexpr (fade == Fade::kNone && soft) return laid;
    return Select(Equal32(weight, zero), d, laid);
  }
};

template <bool writeWeight, bool onBackdrop, Fade fade, bool soft>
struct OpacityRule {
  static constexpr bool kApartOpaque = true, kApartClear = writeWeight || onBackdrop,
                        kApartClearDst = false;
  Fader<fade> fader;
  V backdrop;

  explicit OpacityRule(const BlendRow& row)
      : fader(row), backdrop(V::All32(row.backdrop & kColours)) {}

  V operator()(V s, V d) const {
    const V plain = fader.Weight(s);
    V weight = plain, alphaWeight = V::All32(0);
    if constexpr (fade == Fade::kNone && !soft) {
      const V full = Equal32(plain, V::All32(255));
      weight = Sub32(plain, full);  // 256 where the pixel is copied
      alphaWeight = full & V::All32(kWholeAlpha);
    }
    const V base = onBackdrop ? backdrop | (d & V::All32(kAlpha)) : d;
    V mixed = Mix(s, base, SpreadLow16(weight), weight | alphaWeight);
    if constexpr (writeWeight) mixed = (mixed & V::All32(kColours)) | ShiftLeft32(plain, 24);
    if constexpr (!kApartClear || (fade == Fade::kNone && soft)) return mixed;
    return Select(Equal32(plain, V::All32(0)), d, mixed);
  }
};
template <Fade fade, bool soft>
using Opacity = OpacityRule<false, false, fade, soft>;
template <Fade fade, bool soft>
using OpacityOnBackdrop = OpacityRule<false, true, fade, soft>;
template <Fade fade, bool soft>
using OpacityToAlpha = OpacityRule<true, false, fade, soft>;
template <Fade fade, bool soft>
using OpacityToAlphaOnBackdrop = OpacityRule<true, true, fade, soft>;

/// What a block holds for a rule.
enum class Holds { kNothing, kCopies, kSoft, kMixed };

template <typename Rule, Fade fade>
Holds WhatHolds(const Block& s, const u8* dst) {
  if (s.AllClear()) return Holds::kNothing;
  if constexpr (fade == Fade::kNone) {  // else neither a source alpha of 0 nor one of 255 matters
    const bool anyOpaque = s.AnyOpaque();
    if (anyOpaque && s.AllOpaque()) return Holds::kCopies;
    if (Rule::kApartOpaque && anyOpaque) return Holds::kMixed;
    if (Rule::kApartClear && s.AnyClear()) return Holds::kMixed;
  }
  if (Rule::kApartClearDst && Block(dst).AnyClear()) return Holds::kMixed;
  return Holds::kSoft;
}

/// A rule of a row. Blocks that are all clear, or all opaque where that means a copy, cost a test
/// or two.
template <template <Fade, bool> typename Rule, Fade fade>
struct RowRule {
  Rule<fade, false> rule;
  Rule<fade, true> softRule;

  explicit RowRule(const BlendRow& row) : rule(row), softRule(row) {}

  V operator()(V s, V d) const { return rule(s, d); }

  void OnBlock(u8* dst, const Block& s) const {
    const Holds holds = WhatHolds<Rule<fade, false>, fade>(s, dst);
    if (holds == Holds::kNothing) return;
    Prefetch(dst);  // only here: a clear stretch leaves the destination out of the cache
    if (holds == Holds::kSoft) {
      ApplyToBlock(softRule, dst, s);
    } else if (holds == Holds::kMixed) {
      ApplyToBlock(rule, dst, s);
    } else {
      s.Store(dst);
    }
  }
};

template <template <Fade, bool> typename Rule, Fade fade>
void VectorRow(u8* dst, const u8* src, i64 width, const BlendRow& row) {
  ApplyToRow(RowRule<Rule, fade>(row), dst, src, width);
}

template <template <Fade, bool> typename Rule>
constexpr RowBuilds kRows = {VectorRow<Rule, Fade::kNone>, VectorRow<Rule, Fade::kMultiplier>,
                             VectorRow<Rule, Fade::kProduct>};

constexpr BlendBuilds kBlendBuilds = {
    .over = kRows<Over>,
    .overSourceAlpha = {VectorRow<OverSourceAlpha, Fade::kNone>, nullptr, nullptr},  // never faded
    .premultiplied = kRows<Premultiplied>,
    .composite = kRows<Composite>,
    .opacity = kRows<Opacity>,
    .opacityOnBackdrop = kRows<OpacityOnBackdrop>,
    .opacityToAlpha = kRows<OpacityToAlpha>,
    .opacityToAlphaOnBackdrop = kRows<OpacityToAlphaOnBackdrop>,
};
