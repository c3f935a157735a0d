// The vector rows of layer.cpp over V, included once for each instruction set after pixels.inl.

// The modes. Each makes bytes from bytes; what it makes of the alpha does not matter.

struct NormalMode {
  static V Blend(V s, V) { return s; }
};
struct DarkenMode {
  static V Blend(V s, V d) { return Min8(s, d); }
};
struct MultiplyMode {
  static V Blend(V s, V d) {
    return ShiftRight16(Mul16(Even(s), Even(d)), 8) | (Mul16(Odd(s), Odd(d)) & V::All16(0xFF00));
  }
};
struct LightenMode {
  static V Blend(V s, V d) { return Max8(s, d); }
};
struct ScreenMode {
  static V Blend(V s, V d) {
    const V ones = V::All32(~0u);
    return MultiplyMode::Blend(s ^ ones, d ^ ones) ^ ones;
  }
};
struct OverlayMode {
  static V Blend(V s, V d) {
    const V inverted = IsHigh8(d);  // both operands and the result, where d is 128 or more
    const V a = s ^ inverted, b = d ^ inverted;
    const V even = ShiftRight16(Mul16(Even(a), Even(b)), 7);
    const V odd = ShiftRight16(Mul16(Odd(a), Odd(b)), 7);
    return (even | ShiftLeft16(odd, 8)) ^ inverted;
  }
};
struct DifferenceMode {
  static V Blend(V s, V d) { return SubSaturated8(s, d) | SubSaturated8(d, s); }
};

template <typename Mode, Mixing mixing, u32 alphaMode>
struct LayerRule {
  V factor;

  explicit LayerRule(u32 layerFactor) : factor(V::All16(layerFactor)) {}

  V operator()(V s, V d) const {
    const V weight = ShiftRight16(Mul16(ShiftRight32(s, 24), factor), 8);
    // 256 where the source is copied, or added whole.
    const V full = Equal32(weight, V::All32(255));
    const V laid = mixing == Mixing::kMixes ? weight : Sub32(weight, full);
    if constexpr (alphaMode == 2) return LayOver(s, d, weight, full, laid);
    const V mixed = LayOnOpaque(s, d, laid);
    if constexpr (alphaMode == 0) return mixed;
    return (mixed & V::All32(kColours)) | ShiftLeft32(weight, 24);
  }

 private:
  /// The destination's alpha stays.
  static V LayOnOpaque(V s, V d, V laid) {
    if constexpr (mixing == Mixing::kAdds) {
      return AddSaturated8(d, Scale(s, Repeat16(laid)) & V::All32(kColours));
    }
    return Mix(Mode::Blend(s, d), d, Repeat16(laid), laid);
  }

  static V LayOver(V s, V d, V weight, V full, V laid) {
    const V colours = V::All32(kColours), zero = V::All32(0);
    const V alpha = ShiftRight32(d, 24);
    const V product = Mul16(alpha, weight);
    const V quotient =  // product / 255
        ShiftRight32(Add32(Add32(product, ShiftRight32(product, 8)), V::All32(1)), 8);
    const V outAlpha = Add32(Sub32(alpha, quotient), weight);
    V mixed;
    if constexpr (mixing == Mixing::kAdds) {
      mixed = LayOnOpaque(s, d, laid) & colours;
    } else {
      const V blended = Mode::Blend(s, d);
      const V rest = Mul16(alpha, Sub32(V::All32(256), weight));
      const auto channel = [&](int shift) {
        const V low = V::All32(0xFF);
        const V b = ShiftRight32(blended, shift) & low, c = ShiftRight32(d, shift) & low;
        const V sum = Add32(MulHigh16(ShiftLeft32(c, 8), rest), Mul16(b, weight));
        return ShiftLeft32(ByteQuotient32(sum, outAlpha), shift);
      };
      mixed = channel(0) | channel(8) | channel(16);
    }
    V copied = Equal32(alpha, zero);
    if constexpr (mixing == Mixing::kCopies) copied = copied | full;
    mixed = Select(copied, mixed, s & colours) | ShiftLeft32(outAlpha, 24);
    return Select(Equal32(weight, zero), mixed, d);
  }
};

template <typename Rule>
void VectorLayerRow(u8* dst, const u8* src, i64 width, u32 factor) {
  const Rule rule(factor);
  const i64 bytes = width * 4;
  i64 at = 0;
  for (; at + kBlockBytes <= bytes; at += kBlockBytes) {
    Prefetch(src + at);
    Prefetch(dst + at);
    BlendBlock(rule, dst + at, Block(src + at));
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
