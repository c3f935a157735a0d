// The vector rows of layer.cpp over V, included once for each instruction set.

#include "cpu/simd/sampler.inl"

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
  static Halves Blend(V s, V d) { return Halves::Of(MinU8(s, d)); }
};
struct MultiplyMode {
  static Halves Blend(V s, V d) {
    return {ShiftRightU16(Mul16(Even(s), Even(d)), 8), ShiftRightU16(Mul16(Odd(s), Odd(d)), 8)};
  }
};
struct LightenMode {
  static Halves Blend(V s, V d) { return Halves::Of(MaxU8(s, d)); }
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
    const V inverted = IsNegative8(d);  // both operands and the result, where d is 128 or more
    const V a = s ^ inverted, b = d ^ inverted;
    return {ShiftRightU16(Mul16(Even(a), Even(b)), 7) ^ Even(inverted),
            ShiftRightU16(Mul16(Odd(a), Odd(b)), 7) ^ Odd(inverted)};
  }
};
struct DifferenceMode {
  static Halves Blend(V s, V d) { return Halves::Of(SubSaturatedU8(s, d) | SubSaturatedU8(d, s)); }
};

/// a / b and a little more, so that a whole number times it, truncated, is the exact quotient
/// rounded towards zero: of products below 2^18 and quotients below 2^9.
inline F RatioAbove(V a, V b) { return F::All(1.0f + 0x1p-20f) * ToF(a) / ToF(b); }

/// What alphaMode 2 is where every pixel of the destination is opaque.
constexpr u32 kOverOpaque = 3;

template <typename Mode, Mixing mixing, u32 alphaMode>
struct LayerRule {
  V factor;
  bool copiesOpaque;  // at full opacity

  explicit LayerRule(u32 layerFactor)
      : factor(V::All16(layerFactor)), copiesOpaque(layerFactor == 256) {}

  /// Of the same mode.
  template <u32 otherAlphaMode>
  explicit LayerRule(const LayerRule<Mode, mixing, otherAlphaMode>& other)
      : factor(other.factor), copiesOpaque(other.copiesOpaque) {}

  V operator()(V s, V d) const { return Lay(s, d, Mode::Blend(s, d)); }

  /// Lays four vectors. Where they are clear or copied nothing is blended.
  void OnBlock(u8* dst, const Block& s) const {
    const bool isClear = s.AllClear();
    if (isClear && alphaMode != 1) return;
    Prefetch(dst);  // only here: a clear stretch leaves the destination out of the cache
    if (isClear) {
      ApplyToBlock(ClearAlpha, dst, s);
    } else if (mixing == Mixing::kCopies && copiesOpaque && s.AllOpaque()) {
      ApplyToBlock(Copy, dst, s);
    } else if (alphaMode == 2 && Block(dst).AllOpaque()) {
      LayerRule<Mode, mixing, kOverOpaque>(*this).OnBlock(dst, s);
    } else if constexpr (requires { &Mode::BlendFour; }) {
      const Block d(dst);
      const auto blended = Mode::BlendFour(s.v, d.v);
      for (size_t i = 0; i < 4; ++i)
        Lay(s.v[i], d.v[i], blended[i]).Store(dst + static_cast<i64>(i) * kVectorBytes);
    } else {
      ApplyToBlock(*this, dst, s);
    }
  }

 private:
  static V ClearAlpha(V, V d) { return d & V::All32(kColours); }
  static V Copy(V s, V d) {
    return alphaMode == 0 ? (s & V::All32(kColours)) | (d & V::All32(kAlpha)) : s;
  }

  V Lay(V s, V d, const Halves& blended) const {
    // In both halves of a pixel.
    const V weight = ShiftRightU16(Mul16(RepeatAlpha16(s), factor), 8);
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
    if constexpr (mixing == Mixing::kAdds) {
      const V even = ShiftRightU16(Mul16(Even(s), laid), 8);
      return AddSaturatedU8(d, even | (Mul16(Odd(s), oddLaid) & V::All16(0xFF00)));
    }
    return MixHalves(blended.even, blended.odd, d, laid, oddLaid);
  }

  /// x / 255 for x below 65280.
  static V Over255(V x) {
    return ShiftRightU16(Add16(Add16(x, ShiftRightU16(x, 8)), V::All16(1)), 8);
  }

  static V LayOverOpaque(V d, const Halves& blended, V weight) {
    const V rest = Mul16(V::All16(255), Sub16(V::All16(256), weight));
    const auto channel = [&](V under, V over) {
      return Over255(Add16(MulHighU16(under, rest), Mul16(over, weight)));
    };
    const V even = channel(ShiftLeft16(d, 8), blended.even);
    const V odd = channel(d & V::All16(0xFF00), blended.odd);
    return even | ShiftLeft16(odd, 8) | V::All32(kAlpha);
  }

  static V LayOver(V s, V d, const Halves& blended, V weight, V full, V laid) {
    const V colours = V::All32(kColours), low = V::All32(0xFFFF);
    const V alpha = RepeatAlpha16(d);
    const V outAlpha = Add16(Sub16(alpha, Over255(Mul16(alpha, weight))), weight);
    V mixed;
    if constexpr (mixing == Mixing::kAdds) {
      mixed = LayOnOpaque(s, d, blended, laid, laid) & colours;
    } else {
      const V rest = Mul16(alpha, Sub16(V::All16(256), weight));
      const V even = MulHighU16(ShiftLeft16(d, 8), rest), evenLaid = Mul16(blended.even, weight);
      const V odd = MulHighU16(d & V::All16(0xFF00), rest), oddLaid = Mul16(blended.odd, weight);
      const F scale = RatioAbove(V::All32(1), MaxI32(outAlpha & low, V::All32(1)));
      const auto channel = [&](V under, V over) {
        return Truncate(Min(ToF(Add32(under, over)) * scale, F::All(255)));
      };
      mixed = channel(even & low, evenLaid & low) |
              ShiftLeft32(channel(odd & low, oddLaid & low), 8) |
              ShiftLeft32(channel(ShiftRightU32(even, 16), ShiftRightU32(evenLaid, 16)), 16);
    }
    V copied = Equal16(alpha, V::Zero());
    if constexpr (mixing == Mixing::kCopies) copied = copied | full;
    mixed = Select(copied, s & colours, mixed) | (ShiftLeft16(outAlpha, 8) & V::All32(kAlpha));
    return Select(Equal16(weight, V::Zero()), d, mixed);
  }
};

template <typename Rule>
void VectorLayerRow(u8* dst, const u8* src, i64 width, u32 factor) {
  ApplyToRow(Rule(factor), dst, src, width);
}

template <typename Mode, Mixing mixing>
constexpr LayerRows kVectorRows = {VectorLayerRow<LayerRule<Mode, mixing, 0>>,
                                   VectorLayerRow<LayerRule<Mode, mixing, 1>>,
                                   VectorLayerRow<LayerRule<Mode, mixing, 2>>};

template <typename Mode, Mixing mixing = Mixing::kMixes>
u32 VectorLay(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
              const BlendParam& param) {
  return LayPicture(kVectorRows<Mode, mixing>, dst, src, width, height, dstPitch, srcPitch, param);
}

template <typename Mode, Mixing mixing = Mixing::kMixes>
u32 VectorLaySampled(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
                     const BlendParam& param) {
  return LaySampledPicture(kVectorRows<Mode, mixing>, SampleRow<Replicate>, dst, src, width, height,
                           dstPitch, srcPitch, param);
}
