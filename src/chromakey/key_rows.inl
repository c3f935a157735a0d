// The vector rows of key_rows.cpp over V, F and D, included once for each instruction set.

/// The colours of a vector of pixels.
struct Colours {
  F y, u, v;
};

inline F Byte(V pixels, int place) { return ToF(Channel(pixels, place)); }

/// The product in double precision, rounded once more.
inline F Product(F a, D b) { return ToF(LowToD(a) * b, HighToD(a) * b); }

struct VectorArgb {
  static Colours Read(V pixels) {
    const F r = Byte(pixels, 2), g = Byte(pixels, 1), b = Byte(pixels, 0);
    return {F::All(0.257f) * r + F::All(0.504f) * g + F::All(0.098f) * b + F::All(16.0f),
            F::All(-0.148f) * r - F::All(0.291f) * g + F::All(0.439f) * b,
            F::All(0.439f) * r - F::All(0.368f) * g - F::All(0.071f) * b};
  }

  static V Write(const Colours& c, V alpha) {
    const F y = (c.y - F::All(16.0f)) * F::All(1.164f);
    const F r = y + F::All(1.596f) * c.v;
    const F g = y - F::All(0.392f) * c.u - F::All(0.813f) * c.v;
    const F b = y + F::All(2.017f) * c.u;
    return JoinChannels(Truncate(b), Truncate(g), Truncate(r), alpha);
  }
};

struct VectorAyuv {
  static Colours Read(V pixels) {
    const F middle = F::All(128.0f);
    return {Byte(pixels, 2), Byte(pixels, 1) - middle, Byte(pixels, 0) - middle};
  }

  static V Write(const Colours& c, V alpha) {
    const V low = V::All32(0xFF);
    const F middle = F::All(128.0f);
    const V u = Truncate(c.u + middle) & low, v = Truncate(c.v + middle) & low;
    return JoinChannels(v, u, Truncate(c.y), alpha);
  }
};

template <typename Format>
class VectorNearGrey {
 public:
  explicit VectorNearGrey(const PassKey& k)
      : keyY_(F::All(k.key.y)),
        keyU_(F::All(k.key.u)),
        keyV_(F::All(k.key.v)),
        lumaTolerance_(F::All(static_cast<f32>(static_cast<u32>(k.angle)))),
        chromaTolerance_(F::All(static_cast<f32>(static_cast<u32>(k.denoise)))) {}

  V operator()(V pixels) const {
    const Colours c = Format::Read(pixels);
    const F u = c.u - keyU_, v = c.v - keyV_;
    const F distance = Sqrt(v * v + u * u);
    const F difference = Abs(c.y - keyY_);
    const V close = Bits((distance < chromaTolerance_) & (difference < lumaTolerance_));
    const V alpha = ShiftLeft32(ShiftRightU32(pixels, 24), 24);
    const V changed = AndNot(Equal32(alpha, V::All32(0)), close);
    return Select(changed, (pixels ^ alpha) | ShiftLeft32(Truncate(difference), 24), pixels);
  }

 private:
  F keyY_, keyU_, keyV_, lumaTolerance_, chromaTolerance_;
};

template <typename Format>
class VectorCone {
 public:
  explicit VectorCone(const PassKey& k)
      : keyU_(F::All(k.key.u)),
        keyV_(F::All(k.key.v)),
        kg_(F::All(k.kg)),
        lumaScale_(F::All(k.lumaScale)),
        clearSquare_(F::All(ClearSquare(k.denoise))),
        tangent_(D::All(k.tangent)),
        cotangent_(D::All(k.cotangent)) {}

  V operator()(V pixels) const {
    Colours c = Format::Read(pixels);
    const F x = (keyU_ * c.u + keyV_ * c.v) / kg_;
    const F z = (keyU_ * c.v - keyV_ * c.u) / kg_;
    F alpha = ToF(ShiftRightU32(pixels, 24));
    const F outside = Product(x, tangent_) < Abs(z);
    if (!AllSet(outside)) KeyOut(outside, x, z, &c, &alpha);
    return Format::Write(c, Truncate(alpha / F::All(255.0f) * F::All(255.0f)));
  }

 private:
  /// denoise >= sqrt(s) exactly where s <= this. s is a single below 2^18; the next single above a
  /// square of an integer has a root that is a different double.
  static f32 ClearSquare(i32 denoise) {
    return denoise < 0 ? -1.0f : static_cast<f32>(denoise) * static_cast<f32>(denoise);
  }

  void KeyOut(F outside, F x, F z, Colours* c, F* alpha) const {
    const F none = F::All(0.0f), all = F::All(1.0f);
    const F edge = Abs(Product(z, cotangent_));
    const F past = Max(none, x - edge);
    const F left = all - past / kg_;
    const F away = x - kg_;
    const F kept = clearSquare_ < away * away + z * z;
    const F share = kept & Max(none, Min(all, left * left));
    c->y = Select(outside, c->y, Max(none, c->y - past * lumaScale_));
    c->u = Select(outside, c->u, (keyU_ * edge - keyV_ * z) / kg_);
    c->v = Select(outside, c->v, (keyV_ * edge + keyU_ * z) / kg_);
    *alpha = Select(outside, *alpha, *alpha * share);
  }

  F keyU_, keyV_, kg_, lumaScale_, clearSquare_;
  D tangent_, cotangent_;
};

/// The first pass writes what is keyed, a later one the least of it and what earlier ones wrote.
template <typename Rule, bool first>
struct Pass {
  Rule rule;

  V operator()(V source) const requires first { return rule(source); }
  V operator()(V source, V result) const requires(!first) { return MinU8(rule(source), result); }
};

template <typename Rule, bool first>
void VectorRow(u8* result, const u8* source, i64 width, const PassKey& key) {
  ApplyToRow(Pass<Rule, first>{Rule(key)}, result, source, width);
}

constexpr KeyRows kRows = {
    VectorRow<VectorCone<VectorArgb>, false>,     VectorRow<VectorCone<VectorArgb>, true>,
    VectorRow<VectorNearGrey<VectorArgb>, false>, VectorRow<VectorNearGrey<VectorArgb>, true>,
    VectorRow<VectorCone<VectorAyuv>, false>,     VectorRow<VectorCone<VectorAyuv>, true>,
    VectorRow<VectorNearGrey<VectorAyuv>, false>, VectorRow<VectorNearGrey<VectorAyuv>, true>};
