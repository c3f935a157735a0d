// The hue, saturation, luminosity and colour modes over V, in 32-bit lanes, one channel a vector.

struct Channels {
  V b, g, r;

  static Channels Of(V pixels) {
    const V low = V::All32(0xFF);
    return {pixels & low, ShiftRight32(pixels, 8) & low, ShiftRight32(pixels, 16) & low};
  }
  Halves ToHalves() const { return {b | ShiftLeft32(r, 16), g}; }

  V Least() const { return Min32(Min32(b, g), r); }
  V Most() const { return Max32(Max32(b, g), r); }
  V Saturation() const { return Sub32(Most(), Least()); }

  /// (28 * blue + 151 * green + 77 * red) >> 8.
  V Luma() const {
    const V blueRed = DotProduct32(b | ShiftLeft32(r, 16), V::All32(77u << 16 | 28));
    return ShiftRight32(Add32(blueRed, DotProduct32(g, V::All32(151))), 8);
  }

  template <typename Change>
  Channels Each(Change change) const {
    return {change(b), change(g), change(r)};
  }
};

/// See WithLuma of the portable rule. The distances from the luma shrink by the same ratio, 1
/// unless an end would leave 0 … 255; a ratio over no distance is none and counts as 1.
inline Channels WithLuma(const Channels& colour, V luma) {
  const V own = colour.Luma();
  const F one = F::All(1);
  const F below = Ratio32(luma, Sub32(own, colour.Least()));
  const F above = Ratio32(Sub32(V::All32(255), luma), Sub32(colour.Most(), own));
  const F ratio = Least(Least(below, one), Least(above, one));
  return colour.Each(
      [&](V channel) { return Add32(luma, Truncate(Real(Sub32(channel, own)) * ratio)); });
}

inline Channels WithSaturation(const Channels& colour, V saturation) {
  const V least = colour.Least();
  const F ratio = Ratio32(saturation, Max32(colour.Saturation(), V::All32(1)));
  return colour.Each([&](V channel) { return Truncate(Real(Sub32(channel, least)) * ratio); });
}

struct HueMode {
  static Halves Blend(V s, V d) {
    const Channels under = Channels::Of(d);
    const Channels hue = WithSaturation(Channels::Of(s), under.Saturation());
    return WithLuma(hue, under.Luma()).ToHalves();
  }
};
struct SaturationMode {
  static Halves Blend(V s, V d) {
    const Channels under = Channels::Of(d);
    const Channels saturated = WithSaturation(under, Channels::Of(s).Saturation());
    return WithLuma(saturated, under.Luma()).ToHalves();
  }
};
struct LuminosityMode {
  static Halves Blend(V s, V d) {
    return WithLuma(Channels::Of(d), Channels::Of(s).Luma()).ToHalves();
  }
};
struct ColourMode {
  static Halves Blend(V s, V d) {
    return WithLuma(Channels::Of(s), Channels::Of(d).Luma()).ToHalves();
  }
};
