// The vector rows of frames.cpp over V, included once for each instruction set.
//
// Where 128 bits of a vector hold half as many pixels as the whole, vectors are loaded and stored
// by lanes, so that what is packed and unpacked within them lies in order.

#include "cpu/colour/yuv_sums.inl"

/// Calls step(x) for steps of so many pixels, an even number, the last of which may overlap the one
/// before it. Returns where less than two pixels, or all of a narrow row, are left.
template <i64 pixels, typename Step>
i64 ForSteps(i64 width, Step step) {
  i64 x = 0;
  for (; x + pixels <= width; x += pixels) step(x);
  if (x == 0 || x + 2 > width) return x;
  x = (width - pixels) & ~i64{1};
  step(x);
  return x + pixels;
}

/// Bytes of both numbers: 4 * kPixels of luma and as many of pairs.
constexpr i64 kBytePixels = 4 * V::kPixels;

struct PairPlane {
  static V Y(const SourceFrame& frame, i64 x, i64 row) { return V::Load(frame.Y(x, row)); }
  static V Uv(const SourceFrame& frame, i64 x, i64 row) { return V::Load(frame.U(x, row)); }

  static void StoreY(const Frame& frame, i64 x, i64 row, V y) { y.Store(frame.Y(x, row)); }
  /// 64 bits of U and 64 of V, in turn.
  static void StoreUv(const Frame& frame, i64 x, i64 row, V, V uv) {
    ZipHalves8(uv).Store(frame.U(x, row));
  }
};

struct ThreePlanes : PairPlane {
  static V Uv(const SourceFrame& frame, i64 x, i64 row) {
    return LoadInTurn8(frame.U(x, row), frame.V(x, row));
  }
  static void StoreUv(const Frame& frame, i64 x, i64 row, V, V uv) {
    StoreHalves(uv, frame.U(x, row), frame.V(x, row));
  }
};

template <bool lumaFirst>
struct OnePlane {
  static V Y(const SourceFrame& frame, i64 x, i64 row) {
    return Packed(frame, x, row, [](V v) { return lumaFirst ? Even(v) : Odd(v); });
  }
  static V Uv(const SourceFrame& frame, i64 x, i64 row) {
    return Packed(frame, x, row, [](V v) { return lumaFirst ? Odd(v) : Even(v); });
  }

  static void StoreY(const Frame&, i64, i64, V) {}  // with the others
  static void StoreUv(const Frame& frame, i64 x, i64 row, V y, V uv) {
    u8* const to = First(frame, x, row);
    const V pairs = ZipHalves8(uv), even = lumaFirst ? y : pairs, odd = lumaFirst ? pairs : y;
    StoreLanes(FirstLanes8(even, odd), [=](i64 lane) { return to + 32 * lane; });
    StoreLanes(LastLanes8(even, odd), [=](i64 lane) { return to + 32 * lane + 16; });
  }

 private:
  template <typename Byte>
  static Byte* First(const FrameOf<Byte>& frame, i64 x, i64 row) {
    return lumaFirst ? frame.Y(x, row) : frame.U(x, row);
  }
  template <typename Part>
  static V Packed(const SourceFrame& frame, i64 x, i64 row, Part part) {
    const u8* const from = First(frame, x, row);
    return PackU8(part(LoadLanes([=](i64 lane) { return from + 32 * lane; })),
                  part(LoadLanes([=](i64 lane) { return from + 32 * lane + 16; })));
  }
};

// ---------------------------------------------------------------------------------------------
// Frames to pixels.

/// One channel's term of pairs of words U, V.
template <int parts>
class Term {
 public:
  Term(const Terms<parts>& terms, size_t channel)
      : constant_(V::All32(static_cast<u32>(terms.constant))) {
    for (size_t i = 0; i < parts; ++i) weights_[i] = V::All32(terms.words[channel][i]);
  }

  V operator()(V uv) const {
    V sum = Add32(DotProduct32(uv, weights_[parts - 1]), constant_);
    for (size_t i = parts - 1; i-- > 0;)
      sum = Add32(DotProduct32(uv, weights_[i]), ShiftRightI32(sum, 16));
    return ShiftRightI32(sum, Terms<parts>::kShift);
  }

 private:
  V weights_[parts], constant_;
};

/// 4 * kPixels pixels of bytes.
class ByteColours {
 public:
  explicit ByteColours(const Terms<2>& terms)
      : terms_{{terms, 0}, {terms, 1}, {terms, 2}},
        neutral_(V::All16(static_cast<u32>(terms.range.neutral))),
        black_(V::All16(static_cast<u32>(terms.range.black))),
        lumaWeight_(V::All16(static_cast<u32>(terms.lumaWeight))) {}

  /// What the first and the last halves of 128 bits of pixels get, for each channel.
  struct Chroma {
    V first[3], last[3];
  };
  Chroma Share(V uv) const {
    const V first = Sub16(FirstLanes8(uv, V::Zero()), neutral_);
    const V last = Sub16(LastLanes8(uv, V::Zero()), neutral_);
    Chroma chroma;
    for (size_t c = 0; c < 3; ++c) {
      const V terms = PackI16(terms_[c](first), terms_[c](last));
      chroma.first[c] = FirstLanes16(terms, terms);
      chroma.last[c] = LastLanes16(terms, terms);
    }
    return chroma;
  }

  void Store(u8* dst, V y, const Chroma& chroma) const {
    const V first = Luma(FirstLanes8(y, V::Zero())), last = Luma(LastLanes8(y, V::Zero()));
    const auto channel = [&](size_t c) {
      return PackU8(Channel(first, chroma.first[c]), Channel(last, chroma.last[c]));
    };
    const V r = channel(0), g = channel(1), b = channel(2), opaque = V::All32(~0u);
    const V bg[] = {FirstLanes8(b, g), LastLanes8(b, g)};
    const V ra[] = {FirstLanes8(r, opaque), LastLanes8(r, opaque)};
    for (i64 i = 0; i < 2; ++i) {
      const auto at = [=](i64 lane) { return dst + 64 * lane + 32 * i; };
      StoreLanes(FirstLanes16(bg[i], ra[i]), at);
      StoreLanes(LastLanes16(bg[i], ra[i]), [=](i64 lane) { return at(lane) + 16; });
    }
  }

 private:
  V Luma(V y) const { return Mul16(Sub16(y, black_), lumaWeight_); }

  /// A 73rd, rounded down; exact from 0 to 256 * 73, beyond which it is no byte either way. Sums
  /// that do not fit 16 bits are far beyond.
  static V Channel(V luma, V term) {
    const V sum = AddSaturatedI16(luma, term);
    return ShiftRightI16(MulHighI16(sum, V::All16((1 << 21) / 73 + 1)), 5);
  }

  Term<2> terms_[3];
  V neutral_, black_, lumaWeight_;
};

template <typename Layout>
void FromByteFrame(Space space, const SourceFrame& frame, const Picture& picture, Rows rows, i64) {
  const ByteColours colours(colour::kSpaces<MakeTerms8>[space.matrix][space.range]);
  const i64 x = ForSteps<kBytePixels>(frame.width, [&](i64 at) {
    const ByteColours::Chroma chroma = colours.Share(Layout::Uv(frame, at, rows.first));
    for (i64 row = rows.first; row <= rows.last; ++row)
      colours.Store(picture.Row(row) + 4 * at, Layout::Y(frame, at, row), chroma);
  });
  FromFrame<8>(space, frame, picture, rows, x);
}

/// 2 * kPixels pixels of words. The quotients by the unit are those of singles: what these are off
/// by is much less than half a unit, which is added.
class WordColours {
 public:
  explicit WordColours(const Terms<3>& terms)
      : terms_{{terms, 0}, {terms, 1}, {terms, 2}},
        inverse_(F::All(1 / static_cast<f32>(terms.unit))),
        half_(F::All(
            (static_cast<f32>(terms.unit / 2 - terms.lumaWeight * terms.range.black) + 0.5f) /
            static_cast<f32>(terms.unit))),
        lumaWeight_(
            F::All(static_cast<f32>(terms.lumaWeight) / static_cast<f32>(64 * terms.unit))) {}

  struct Chroma {
    F channels[3];
  };
  Chroma Share(V uv) const {
    const V pairs = ShiftRightI16(uv ^ V::All16(0x8000), 6);  // around neutral
    Chroma chroma;
    for (size_t c = 0; c < 3; ++c) chroma.channels[c] = ToF(terms_[c](pairs)) * inverse_ + half_;
    return chroma;
  }

  void Store(u8* dst, V y, const Chroma& chroma) const {
    const V even = Pixels(y & V::All32(0xFFC0), chroma);
    const V odd = Pixels(ShiftRightU32(y, 16) & V::All32(0xFFC0), chroma);
    StoreLanes(FirstLanes32(even, odd), [=](i64 lane) { return dst + 32 * lane; });
    StoreLanes(LastLanes32(even, odd), [=](i64 lane) { return dst + 32 * lane + 16; });
  }

 private:
  V Pixels(V y, const Chroma& chroma) const {
    const F luma = ToF(y) * lumaWeight_;
    const auto channel = [&](size_t c) { return Truncate(luma + chroma.channels[c]); };
    return JoinChannels(channel(2), channel(1), channel(0), V::All32(255));
  }

  Term<3> terms_[3];
  F inverse_, half_, lumaWeight_;
};

inline void FromWordFrame(Space space, const SourceFrame& frame, const Picture& picture, Rows rows,
                          i64) {
  const WordColours colours(colour::kSpaces<MakeTerms10>[space.matrix][space.range]);
  const i64 x = ForSteps<2 * V::kPixels>(frame.width, [&](i64 at) {
    const WordColours::Chroma chroma = colours.Share(V::Load(frame.U(at, rows.first)));
    for (i64 row = rows.first; row <= rows.last; ++row)
      colours.Store(picture.Row(row) + 4 * at, V::Load(frame.Y(at, row)), chroma);
  });
  FromFrame<10>(space, frame, picture, rows, x);
}

// ---------------------------------------------------------------------------------------------
// Pixels to frames.

/// The numbers of pixels, one a lane, by the rule's own matrix.
class Numbers {
 public:
  Numbers(const colour::NarrowMatrix& matrix, const colour::YuvRange& range)
      : y_(Row(matrix, 0, range.black)),
        u_(Row(matrix, 1, range.neutral)),
        v_(Row(matrix, 2, range.neutral)) {}

  static V Greens(V pixels) { return JoinHalves(Odd(pixels), V::All32(kBias << 16)); }

  V Luma(V even, V odd) const { return ShiftRightU32(y_(even, odd), kSumBits); }
  V Blueness(V even, V odd) const { return ShiftRightU32(u_(even, odd), kSumBits); }
  V Redness(V even, V odd) const { return ShiftRightU32(v_(even, odd), kSumBits); }

 private:
  static constexpr i32 kBias = 256;

  static Sum3<kBias> Row(const colour::NarrowMatrix& matrix, size_t row, i64 zero) {
    return {matrix.rows[row], (zero << kWeightBits) + (matrix.kHalf - matrix.tie)};
  }

  Sum3<kBias> y_, u_, v_;
};

/// So many vectors of pixels whose luma is packed into one: the sums of their channels down two
/// rows, then the numbers of the means.
template <size_t count>
class Columns {
 public:
  /// Returns the luma of a row in `luma`.
  void Add(const Numbers& numbers, const u8* src, V (&luma)[count]) {
    for (size_t i = 0; i < count; ++i) {
      const V pixels = LoadLanes([=](i64 lane) {
        return src + 16 * (static_cast<i64>(count) * lane + static_cast<i64>(i));
      });
      const V even = Even(pixels), odd = Numbers::Greens(pixels);
      luma[i] = numbers.Luma(even, odd);
      even_[i] = Add16(even_[i], even);
      odd_[i] = Add16(odd_[i], odd);
    }
  }

  void Double() {
    for (V& sum : even_) sum = Add16(sum, sum);
    for (V& sum : odd_) sum = Add16(sum, sum);
  }

  void Chroma(const Numbers& numbers, V* u, V* v) const {
    for (size_t i = 0; i < count / 2; ++i) {
      const V even = Mean(even_ + 2 * i), odd = Mean(odd_ + 2 * i);
      u[i] = numbers.Blueness(even, odd);
      v[i] = numbers.Redness(even, odd);
    }
  }

 private:
  /// Of neighbours, in the order of the row.
  static V Mean(const V* sums) {
    const V four = Add16(EvenLanes32(sums[0], sums[1]), OddLanes32(sums[0], sums[1]));
    return ShiftRightU16(Add16(four, V::All16(2)), 2);
  }

  V even_[count] = {}, odd_[count] = {};
};

template <typename Layout>
void ToByteFrame(Space space, const Frame& frame, const Source& picture, Rows rows, i64) {
  const auto& rule = RuleOf<8>(space);
  const Numbers numbers(rule.fromRgb, rule.range);
  const i64 x = ForSteps<kBytePixels>(frame.width, [&](i64 at) {
    Columns<4> columns;
    V lanes[4], y;
    for (i64 row = rows.first; row <= rows.last; ++row) {
      columns.Add(numbers, picture.Row(row) + 4 * at, lanes);
      y = PackU8(lanes);
      Layout::StoreY(frame, at, row, y);
    }
    if (rows.first == rows.last) columns.Double();
    columns.Chroma(numbers, lanes, lanes + 2);
    Layout::StoreUv(frame, at, rows.first, y, PackU8(lanes));
  });
  ToFrame<8>(space, frame, picture, rows, x);
}

inline void ToWordFrame(Space space, const Frame& frame, const Source& picture, Rows rows, i64) {
  const auto& rule = RuleOf<10>(space);
  const Numbers numbers(rule.fromRgb, rule.range);
  const i64 x = ForSteps<2 * V::kPixels>(frame.width, [&](i64 at) {
    Columns<2> columns;
    V lanes[2];
    for (i64 row = rows.first; row <= rows.last; ++row) {
      columns.Add(numbers, picture.Row(row) + 4 * at, lanes);
      ShiftLeft16(PackI16(lanes[0], lanes[1]), 6).Store(frame.Y(at, row));
    }
    if (rows.first == rows.last) columns.Double();
    columns.Chroma(numbers, lanes, lanes + 1);
    ShiftLeft16(PairLow16(lanes[0], lanes[1]), 6).Store(frame.U(at, rows.first));
  });
  ToFrame<10>(space, frame, picture, rows, x);
}

constexpr FrameBuild kFrameBuild = {
    {FromByteFrame<PairPlane>, FromByteFrame<ThreePlanes>, FromByteFrame<ThreePlanes>,
     FromByteFrame<OnePlane<true>>, FromByteFrame<OnePlane<false>>, FromWordFrame},
    {ToByteFrame<PairPlane>, ToByteFrame<ThreePlanes>, ToByteFrame<ThreePlanes>,
     ToByteFrame<OnePlane<true>>, ToByteFrame<OnePlane<false>>, ToWordFrame}};
