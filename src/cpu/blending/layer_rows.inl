// The vector rows of layer.cpp over V, included once for each instruction set after pixels.inl.

/// The channels of pixels as 16-bit numbers.
struct Halves {
  V even, odd;  // blue and red, green and alpha

  static Halves Of(V pixels) { return {Even(pixels), Odd(pixels)}; }
};

// The modes. What they make of the alpha does not matter.

struct NormalMode {
  static Halves Blend(V s, V) { return Halves::Of(s); }
};
struct DarkenMode {
  static Halves Blend(V s, V d) { return Halves::Of(Min8(s, d)); }
};
struct MultiplyMode {
  static Halves Blend(V s, V d) {
    return {ShiftRight16(Mul16(Even(s), Even(d)), 8), ShiftRight16(Mul16(Odd(s), Odd(d)), 8)};
  }
};
struct LightenMode {
  static Halves Blend(V s, V d) { return Halves::Of(Max8(s, d)); }
};
struct ScreenMode {
  static Halves Blend(V s, V d) {
    const V ones = V::All32(~0u), low = V::All16(0xFF);
    const Halves dark = MultiplyMode::Blend(s ^ ones, d ^ ones);
    return {dark.even ^ low, dark.odd ^ low};
  }
};
struct OverlayMode {
  static Halves Blend(V s, V d) {
    const V inverted = IsHigh8(d);  // both operands and the result, where d is 128 or more
    const V a = s ^ inverted, b = d ^ inverted;
    return {ShiftRight16(Mul16(Even(a), Even(b)), 7) ^ Even(inverted),
            ShiftRight16(Mul16(Odd(a), Odd(b)), 7) ^ Odd(inverted)};
  }
};
struct DifferenceMode {
  static Halves Blend(V s, V d) { return Halves::Of(SubSaturated8(s, d) | SubSaturated8(d, s)); }
};

/// What alphaMode 2 is where every pixel of the destination is opaque.
constexpr u32 kOverOpaque = 3;

template <typename Mode, Mixing mixing, u32 alphaMode>
struct LayerRule {
  V factor;

  explicit LayerRule(V layerFactor) : factor(layerFactor) {}

  V operator()(V s, V d) const { return Lay(s, d, Mode::Blend(s, d)); }

  /// Lays four vectors. Where they are clear or copied nothing is blended.
  void LayBlock(u8* dst, const Block& s, bool copiesOpaque) const {
    const bool isClear = s.AllClear();
    if (isClear && alphaMode != 1) return;
    Prefetch(dst);  // only here: a clear stretch leaves the destination out of the cache
    if (isClear) {
      BlendBlock(ClearAlpha, dst, s);
    } else if (mixing == Mixing::kCopies && copiesOpaque && s.AllOpaque()) {
      BlendBlock(Copy, dst, s);
    } else if (alphaMode == 2 && Block(dst).AllOpaque()) {
      LayerRule<Mode, mixing, kOverOpaque>(factor).LayBlock(dst, s, copiesOpaque);
    } else if constexpr (requires { &Mode::BlendFour; }) {
      const Block d(dst);
      const auto blended = Mode::BlendFour(s.v, d.v);
      for (size_t i = 0; i < 4; ++i)
        Lay(s.v[i], d.v[i], blended[i]).Store(dst + static_cast<i64>(i) * kVectorBytes);
    } else {
      BlendBlock(*this, dst, s);
    }
  }

 private:
  static V ClearAlpha(V, V d) { return d & V::All32(kColours); }
  static V Copy(V s, V d) {
    return alphaMode == 0 ? (s & V::All32(kColours)) | (d & V::All32(kAlpha)) : s;
  }

  V Lay(V s, V d, const Halves& blended) const {
    // In both halves of a pixel.
    const V weight = ShiftRight16(Mul16(RepeatAlpha(s), factor), 8);
    // 256 where the source is copied, or added whole.
    const V full = Equal16(weight, V::All16(255));
    const V laid = mixing == Mixing::kMixes ? weight : Sub16(weight, full);
    if constexpr (alphaMode == kOverOpaque && mixing != Mixing::kAdds) {
      return LayOverOpaque(d, blended, weight);
    }
    if constexpr (alphaMode == 2) return LayOver(s, d, blended, weight, full, laid);
    // The destination's alpha stays, or takes the weight.
    if constexpr (alphaMode != 1) return LayOnOpaque(s, d, blended, laid, laid & V::All32(0xFFFF));
    const V alpha = V::All32(kAlpha);
    return AndNot(alpha, LayOnOpaque(s, d, blended, laid, laid)) | (ShiftLeft16(weight, 8) & alpha);
  }

  static V LayOnOpaque(V s, V d, const Halves& blended, V laid, V oddLaid) {
    const V high = V::All16(0xFF00);
    if constexpr (mixing == Mixing::kAdds) {
      const V even = ShiftRight16(Mul16(Even(s), laid), 8);
      return AddSaturated8(d, even | (Mul16(Odd(s), oddLaid) & high));
    }
    const V even = Add16(Mul16(Sub16(blended.even, Even(d)), laid), ShiftLeft16(d, 8));
    const V odd = Add16(Mul16(Sub16(blended.odd, Odd(d)), oddLaid), d & high);
    return ShiftRight16(even, 8) | (odd & high);
  }

  /// x / 255 for x below 65280.
  static V Over255(V x) {
    return ShiftRight16(Add16(Add16(x, ShiftRight16(x, 8)), V::All16(1)), 8);
  }

  static V LayOverOpaque(V d, const Halves& blended, V weight) {
    const V rest = Mul16(V::All16(255), Sub16(V::All16(256), weight));
    const auto channel = [&](V under, V over) {
      return Over255(Add16(MulHigh16(under, rest), Mul16(over, weight)));
    };
    const V even = channel(ShiftLeft16(d, 8), blended.even);
    const V odd = channel(d & V::All16(0xFF00), blended.odd);
    return even | ShiftLeft16(odd, 8) | V::All32(kAlpha);
  }

  static V LayOver(V s, V d, const Halves& blended, V weight, V full, V laid) {
    const V colours = V::All32(kColours), low = V::All32(0xFFFF);
    const V alpha = RepeatAlpha(d);
    const V outAlpha = Add16(Sub16(alpha, Over255(Mul16(alpha, weight))), weight);
    V mixed;
    if constexpr (mixing == Mixing::kAdds) {
      mixed = LayOnOpaque(s, d, blended, laid, laid) & colours;
    } else {
      const V rest = Mul16(alpha, Sub16(V::All16(256), weight));
      const V even = MulHigh16(ShiftLeft16(d, 8), rest), evenLaid = Mul16(blended.even, weight);
      const V odd = MulHigh16(d & V::All16(0xFF00), rest), oddLaid = Mul16(blended.odd, weight);
      const F scale = Ratio32(V::All32(1), Max32(outAlpha & low, V::All32(1)));
      const auto channel = [&](V under, V over) {
        return Truncate(Least(Real(Add32(under, over)) * scale, F::All(255)));
      };
      mixed = channel(even & low, evenLaid & low) |
              ShiftLeft32(channel(odd & low, oddLaid & low), 8) |
              ShiftLeft32(channel(ShiftRight32(even, 16), ShiftRight32(evenLaid, 16)), 16);
    }
    V copied = Equal16(alpha, V::Zero());
    if constexpr (mixing == Mixing::kCopies) copied = copied | full;
    mixed = Select(copied, mixed, s & colours) | (ShiftLeft16(outAlpha, 8) & V::All32(kAlpha));
    return Select(Equal16(weight, V::Zero()), mixed, d);
  }
};

template <typename Rule>
void VectorLayerRow(u8* dst, const u8* src, i64 width, u32 factor) {
  const Rule rule(V::All16(factor));
  const i64 bytes = width * 4;
  i64 at = 0;
  for (; at + kBlockBytes <= bytes; at += kBlockBytes) {
    Prefetch(src + at);
    rule.LayBlock(dst + at, Block(src + at), factor == 256);
  }
  for (; at + kVectorBytes <= bytes; at += kVectorBytes) {
    rule(V::Load(src + at), V::Load(dst + at)).Store(dst + at);
  }
  if (at < bytes) BlendRest(rule, dst + at, src + at, bytes - at);
}

template <typename Mode, Mixing mixing = Mixing::kMixes>
u32 VectorLay(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
              const BlendParam& param) {
  static constexpr LayerRows kRows = {VectorLayerRow<LayerRule<Mode, mixing, 0>>,
                                      VectorLayerRow<LayerRule<Mode, mixing, 1>>,
                                      VectorLayerRow<LayerRule<Mode, mixing, 2>>};
  return LayPicture(kRows, dst, src, width, height, dstPitch, srcPitch, param);
}
