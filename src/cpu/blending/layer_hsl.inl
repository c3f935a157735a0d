// The hue, saturation, luminosity and colour modes over V, for two vectors of pixels at a time: one
// channel is a vector of 16-bit numbers, those of the two vectors' pixels in turns.

/// 65536 * a / b per 16-bit lane, rounded down, and 1 more, in two halves; for bytes a and b. For a
/// byte x, x * ratio / 65536 then is too large by at most x / 65536, less than what is missing to
/// the next integer, which is 1 / b or more. Over a b of 0 it is anything.
struct Ratio {
  V low, high;

  Ratio(V a, V b) {
    const V even = Quotient32(PairLow16(b, a), b & V::All32(0xFFFF));
    const V odd = Quotient32(PairHigh16(b, a), ShiftRightU32(b, 16));
    low = PairLow16(even, odd);
    high = PairHigh16(even, odd);
  }
};

struct Channels {
  V b, g, r;

  static Channels Of(V p, V q) {
    return {PairLow16(Even(p), Even(q)), PairLow16(Odd(p), Odd(q)), PairHigh16(Even(p), Even(q))};
  }

  V Least() const { return MinI16(MinI16(b, g), r); }
  V Most() const { return MaxI16(MaxI16(b, g), r); }
  V Saturation() const { return Sub16(Most(), Least()); }
  V Luma() const {
    const V blueGreen = Add16(Mul16(b, V::All16(28)), Mul16(g, V::All16(151)));
    return ShiftRightU16(Add16(blueGreen, Mul16(r, V::All16(77))), 8);
  }

  template <typename Change>
  Channels Each(Change change) const {
    return {change(b), change(g), change(r)};
  }
};

/// A colour and the luma that it moves to. See WithLuma of the portable rule: the distances from
/// the luma shrink by the same ratio where an end would leave 0 … 255, which only one of them can.
struct Aim {
  Channels colour;
  V luma;

  struct Way {
    V own, shrinks, ratio;
  };
  Way Find() const {
    const V own = colour.Luma(), room = Sub16(V::All16(255), luma);
    const V below = Sub16(own, colour.Least()), above = Sub16(colour.Most(), own);
    const V isBelow = GreaterI16(below, luma);
    return {own, isBelow | GreaterI16(above, room),
            Ratio(Select(isBelow, luma, room), Select(isBelow, below, above)).low};
  }

  Channels Go(const Way& way) const {
    return colour.Each([&](V channel) {
      const V distance = Sub16(channel, way.own);
      const V shrunk = WithSignI16(MulHighU16(Abs16(distance), way.ratio), distance);
      return Add16(luma, Select(way.shrinks, shrunk, distance));
    });
  }
};

inline Channels WithSaturation(const Channels& colour, V saturation) {
  const V least = colour.Least();
  const Ratio ratio(saturation, MaxI16(colour.Saturation(), V::All16(1)));
  return colour.Each([&](V channel) {
    const V over = Sub16(channel, least);
    return Add16(Mul16(over, ratio.high), MulHighU16(over, ratio.low));
  });
}

template <typename Mode>
struct ByChannels {
  /// In steps: while one pair of vectors waits for a quotient the other is worked on.
  static std::array<Halves, 4> BlendFour(const V* s, const V* d) {
    Aim aims[2];
    Aim::Way ways[2];
    std::array<Halves, 4> blended;
    for (size_t i = 0; i < 2; ++i)
      aims[i] =
          Mode::AimOf(Channels::Of(s[2 * i], s[2 * i + 1]), Channels::Of(d[2 * i], d[2 * i + 1]));
    for (size_t i = 0; i < 2; ++i) ways[i] = aims[i].Find();
    for (size_t i = 0; i < 2; ++i) {
      const Channels c = aims[i].Go(ways[i]);
      blended[2 * i] = {PairLow16(c.b, c.r), c.g};
      blended[2 * i + 1] = {PairHigh16(c.b, c.r), ShiftRightU32(c.g, 16)};
    }
    return blended;
  }
  static Halves Blend(V s, V d) {
    const V sources[] = {s, s, s, s}, under[] = {d, d, d, d};
    return BlendFour(sources, under)[0];
  }
};

struct HueMode : ByChannels<HueMode> {
  static Aim AimOf(const Channels& s, const Channels& d) {
    return {WithSaturation(s, d.Saturation()), d.Luma()};
  }
};
struct SaturationMode : ByChannels<SaturationMode> {
  static Aim AimOf(const Channels& s, const Channels& d) {
    return {WithSaturation(d, s.Saturation()), d.Luma()};
  }
};
struct LuminosityMode : ByChannels<LuminosityMode> {
  static Aim AimOf(const Channels& s, const Channels& d) { return {d, s.Luma()}; }
};
struct ColourMode : ByChannels<ColourMode> {
  static Aim AimOf(const Channels& s, const Channels& d) { return {s, d.Luma()}; }
};
