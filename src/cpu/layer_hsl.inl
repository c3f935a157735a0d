// The hue, saturation, luminosity and colour modes over V, in 32-bit lanes, one channel a vector.

struct Channels {
  V b, g, r;

  static Channels Of(V pixels) {
    const V low = V::All32(0xFF);
    return {pixels & low, ShiftRight32(pixels, 8) & low, ShiftRight32(pixels, 16) & low};
  }
  V Pixels() const { return b | ShiftLeft32(g, 8) | ShiftLeft32(r, 16); }
  V Least() const { return Min32(Min32(b, g), r); }
  V Most() const { return Max32(Max32(b, g), r); }
  V Saturation() const { return Sub32(Most(), Least()); }
};

/// (28 * blue + 151 * green + 77 * red) >> 8.
inline V Luma(V pixels) {
  const V blueRed = DotProduct32(Even(pixels), V::All32(77u << 16 | 28));
  const V green = DotProduct32(Odd(pixels), V::All32(151));
  return ShiftRight32(Add32(blueRed, green), 8);
}

/// See WithLuma of the portable rule. At most one of the two ends leaves 0 … 255, so that one
/// division does for either.
inline V WithLuma(V pixels, V luma) {
  Channels c = Channels::Of(pixels);
  const V shift = Sub32(luma, Luma(pixels));
  c = {Add32(c.b, shift), Add32(c.g, shift), Add32(c.r, shift)};
  const V least = c.Least(), most = c.Most();
  const V below = Greater32(V::All32(0), least), above = Greater32(most, V::All32(255));
  const V outside = below | above;
  const V room = Select(below, Sub32(V::All32(255), luma), luma);
  const V reach =
      Select(outside, V::All32(1), Select(below, Sub32(most, luma), Sub32(luma, least)));
  const auto clipped = [&](V channel) {
    return Select(outside, channel, Add32(luma, Proportion32(Sub32(channel, luma), room, reach)));
  };
  return Channels{clipped(c.b), clipped(c.g), clipped(c.r)}.Pixels();
}

inline V WithSaturation(V pixels, V saturation) {
  const Channels c = Channels::Of(pixels);
  const V least = c.Least(), range = Max32(c.Saturation(), V::All32(1));
  const auto stretched = [&](V channel) {
    return Proportion32(Sub32(channel, least), saturation, range);
  };
  return Channels{stretched(c.b), stretched(c.g), stretched(c.r)}.Pixels();
}

struct HueMode {
  static V Blend(V s, V d) {
    return WithLuma(WithSaturation(s, Channels::Of(d).Saturation()), Luma(d));
  }
};
struct SaturationMode {
  static V Blend(V s, V d) {
    return WithLuma(WithSaturation(d, Channels::Of(s).Saturation()), Luma(d));
  }
};
struct LuminosityMode {
  static V Blend(V s, V d) { return WithLuma(d, Luma(s)); }
};
struct ColourMode {
  static V Blend(V s, V d) { return WithLuma(s, Luma(d)); }
};
