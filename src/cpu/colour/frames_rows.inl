// The vector rows of frames.cpp over V, included once for each instruction set.
//
// Longer vectors are packed and unpacked in each 128 bits. They are put in order where that takes
// least: ForUnpacking before, JoinFours and JoinPairs after.

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
  static constexpr bool kShares = true;  // U and V are two rows'

  static V Y(const SourceFrame& frame, i64 x, i64 row) { return V::Load(frame.Y(x, row)); }
  static V Uv(const SourceFrame& frame, i64 x, i64 row) { return V::Load(frame.U(x, row)); }

  static void StoreY(const Frame& frame, i64 x, i64 row, V y) { y.Store(frame.Y(x, row)); }
  static void StoreUv(const Frame& frame, i64 x, i64 row, V, V uv) { uv.Store(frame.U(x, row)); }
};

struct ThreePlanes : PairPlane {
  static V Uv(const SourceFrame& frame, i64 x, i64 row) {
    return LoadInTurn8(frame.U(x, row), frame.V(x, row));
  }
  static void StoreUv(const Frame& frame, i64 x, i64 row, V, V uv) {
    StoreHalves(PackU8(Even(uv), Odd(uv)), frame.U(x, row), frame.V(x, row));
  }
};

template <bool lumaFirst>
struct OnePlane {
  static constexpr bool kShares = false;

  static V Y(const SourceFrame& frame, i64 x, i64 row) {
    return Packed(frame, x, row, [](V v) { return lumaFirst ? Even(v) : Odd(v); });
  }
  static V Uv(const SourceFrame& frame, i64 x, i64 row) {
    return Packed(frame, x, row, [](V v) { return lumaFirst ? Odd(v) : Even(v); });
  }

  static void StoreY(const Frame&, i64, i64, V) {}  // with the others
  static void StoreUv(const Frame& frame, i64 x, i64 row, V y, V uv) {
    u8* const to = First(frame, x, row);
    const V even = lumaFirst ? y : uv, odd = lumaFirst ? uv : y;
    StoreLanes(InterleaveFirst8(even, odd), [=](i64 lane) { return to + 32 * lane; });
    StoreLanes(InterleaveSecond8(even, odd), [=](i64 lane) { return to + 32 * lane + 16; });
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
template <typename Terms>
class Term {
 public:
  Term(const Terms& terms, size_t channel) : constant_(V::All32(static_cast<u32>(terms.constant))) {
    for (size_t i = 0; i < kParts; ++i) weights_[i] = V::All32(terms.words[channel][i]);
  }

  V operator()(V uv) const {
    V sum = Add32(DotProduct32(uv, weights_[kParts - 1]), constant_);
    for (size_t i = kParts - 1; i-- > 0;)
      sum = Add32(DotProduct32(uv, weights_[i]), ShiftRightI32(sum, 16));
    return ShiftRightI32(sum, Terms::kShift);
  }

 private:
  static constexpr size_t kParts = Terms::kParts;

  V weights_[kParts], constant_;
};

/// The term of a byte U or V that alone makes it, from that byte times 256: the weight's whole part
/// and the rest are multiplied apart.
class LoneTerm {
 public:
  LoneTerm(const LoneWeight& weight, i32 black)
      : whole_(V::All16(weight.whole << 8)),
        rest_(V::All16(weight.rest)),
        rounding_(V::All16(weight.rounding)),
        constant_(V::All16(static_cast<u32>(weight.constant - black))) {}

  V operator()(V times256) const {
    const V rest = ShiftRightU16(Add16(MulHighU16(times256, rest_), rounding_), 8);
    return Add16(Add16(MulHighU16(times256, whole_), constant_), rest);
  }

 private:
  V whole_, rest_, rounding_, constant_;
};

/// 4 * kPixels pixels of bytes.
class ByteColours {
 public:
  explicit ByteColours(const ByteTerms& terms)
      : red_(terms.red, terms.black),
        blue_(terms.blue, terms.black),
        green_(terms.green, 1),
        neutral_(V::All16(static_cast<u32>(terms.green.range.neutral))),
        black_(V::All16(static_cast<u32>(terms.black))),
        lumaWeight_(V::All16(static_cast<u32>(terms.green.lumaWeight))) {}

  /// What the first and the last halves of 128 bits of pixels get.
  struct Chroma {
    V first[3], last[3];
  };
  Chroma Share(V uv) const {
    const V first = Sub16(InterleaveFirst8(uv, V::Zero()), neutral_);
    const V last = Sub16(InterleaveSecond8(uv, V::Zero()), neutral_);
    const V terms[] = {red_(uv & V::All16(0xFF00)),
                       Sub16(PackI16(green_(first), green_(last)), black_),
                       blue_(ShiftLeft16(uv, 8))};
    Chroma chroma;
    for (size_t c = 0; c < 3; ++c) {
      chroma.first[c] = InterleaveFirst16(terms[c], terms[c]);
      chroma.last[c] = InterleaveSecond16(terms[c], terms[c]);
    }
    return chroma;
  }

  void Store(u8* dst, V y, const Chroma& chroma) const {
    const V first = Mul16(InterleaveFirst8(y, V::Zero()), lumaWeight_);
    const V last = Mul16(InterleaveSecond8(y, V::Zero()), lumaWeight_);
    const auto channel = [&](size_t c) {
      return PackU8(Channel(first, chroma.first[c]), Channel(last, chroma.last[c]));
    };
    const V r = channel(0), g = channel(1), b = channel(2), opaque = V::All32(~0u);
    const V bg[] = {InterleaveFirst8(b, g), InterleaveSecond8(b, g)};
    const V ra[] = {InterleaveFirst8(r, opaque), InterleaveSecond8(r, opaque)};
    for (i64 i = 0; i < 2; ++i) {
      InterleaveFirst16(bg[i], ra[i]).Store(dst + 2 * i * kVectorBytes);
      InterleaveSecond16(bg[i], ra[i]).Store(dst + (2 * i + 1) * kVectorBytes);
    }
  }

 private:
  /// A 73rd, rounded down; exact from 0 to 256 * 73, beyond which it is no byte either way. Sums
  /// that do not fit 16 bits are far beyond.
  static V Channel(V luma, V term) {
    const V sum = AddSaturatedI16(luma, term);
    return ShiftRightI16(MulHighI16(sum, V::All16((1 << 21) / 73 + 1)), 5);
  }

  LoneTerm red_, blue_;
  Term<Terms<2, 7>> green_;
  V neutral_, black_, lumaWeight_;
};

/// Converts what whole steps take of rows that share U and V. Returns where the rest begins. Copies
/// say where things lie: no store can change these.
template <typename Layout>
i64 FromByteRows(const ByteTerms& terms, const SourceFrame frame, const Picture picture,
                 Rows rows) {
  const ByteColours colours(terms);
  return ForSteps<kBytePixels>(frame.width, [&](i64 at) {
    const ByteColours::Chroma chroma =
        colours.Share(ForUnpacking(Layout::Uv(frame, at, rows.first)));
    for (i64 row = rows.first; row <= rows.last; ++row)
      colours.Store(picture.Row(row) + 4 * at, ForUnpacking(Layout::Y(frame, at, row)), chroma);
  });
}

template <typename Layout>
void FromByteFrame(Space space, const SourceFrame& frame, const Picture& picture, Rows rows, i64) {
  const ByteTerms& terms = colour::kSpaces<MakeTerms8>[space.matrix][space.range];
  FromFrame<8>(space, frame, picture, rows, FromByteRows<Layout>(terms, frame, picture, rows));
}

/// 2 * kPixels pixels of words. The quotients by the unit are those of singles: what these are off
/// by is much less than half a unit, which is added.
class WordColours {
 public:
  explicit WordColours(const WordTerms& terms)
      : red_(terms.lone, 0),
        blue_(terms.lone, 2),
        green_(terms.green, 1),
        inverse_(F::All(1 / static_cast<f32>(terms.green.unit))),
        half_(F::All((static_cast<f32>(terms.green.unit / 2 -
                                       terms.green.lumaWeight * terms.green.range.black) +
                      0.5f) /
                     static_cast<f32>(terms.green.unit))),
        lumaWeight_(F::All(static_cast<f32>(terms.green.lumaWeight) /
                           static_cast<f32>(64 * terms.green.unit))) {}

  struct Chroma {
    F channels[3];
  };
  Chroma Share(V uv) const {
    const V pairs = ShiftRightI16(uv ^ V::All16(0x8000), 6);  // around neutral
    const auto channel = [&](V term) { return ToF(term) * inverse_ + half_; };
    return {{channel(red_(pairs)), channel(green_(pairs)), channel(blue_(pairs))}};
  }

  void Store(u8* dst, V y, const Chroma& chroma) const {
    const V even = Pixels(y & V::All32(0xFFC0), chroma);
    const V odd = Pixels(ShiftRightU32(y, 16) & V::All32(0xFFC0), chroma);
    InterleaveFirst32(even, odd).Store(dst);
    InterleaveSecond32(even, odd).Store(dst + kVectorBytes);
  }

 private:
  V Pixels(V y, const Chroma& chroma) const {
    const F luma = ToF(y) * lumaWeight_;
    const auto channel = [&](size_t c) { return Truncate(luma + chroma.channels[c]); };
    return JoinChannels(channel(2), channel(1), channel(0), V::All32(255));
  }

  Term<Terms<2, 6>> red_, blue_;
  Term<Terms<3, 6>> green_;
  F inverse_, half_, lumaWeight_;
};

inline i64 FromWordRows(const WordTerms& terms, const SourceFrame frame, const Picture picture,
                        Rows rows) {
  const WordColours colours(terms);
  return ForSteps<2 * V::kPixels>(frame.width, [&](i64 at) {
    const WordColours::Chroma chroma = colours.Share(JoinPairs(V::Load(frame.U(at, rows.first))));
    for (i64 row = rows.first; row <= rows.last; ++row)
      colours.Store(picture.Row(row) + 4 * at, JoinPairs(V::Load(frame.Y(at, row))), chroma);
  });
}

inline void FromWordFrame(Space space, const SourceFrame& frame, const Picture& picture, Rows rows,
                          i64) {
  const WordTerms& terms = colour::kSpaces<MakeTerms10>[space.matrix][space.range];
  FromFrame<10>(space, frame, picture, rows, FromWordRows(terms, frame, picture, rows));
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

/// So many vectors of pixels in one row, or in each of two, whose luma is packed into one a row:
/// the numbers of the pixels, and those of the means of neighbours, U before V.
template <size_t count, bool two>
struct Columns {
  V luma[two ? 2 : 1][count], chroma[count];

  Columns(const Numbers& numbers, const u8* first, const u8* last) {
    for (size_t i = 0; i < count; i += 2) {
      V even[2], odd[2];
      for (size_t k = 0; k < 2; ++k) {
        const i64 at = static_cast<i64>(i + k) * kVectorBytes;
        luma[0][i + k] = Luma(numbers, first + at, &even[k], &odd[k]);
        if constexpr (two) {
          V evenBelow, oddBelow;
          luma[1][i + k] = Luma(numbers, last + at, &evenBelow, &oddBelow);
          even[k] = Add16(even[k], evenBelow);
          odd[k] = Add16(odd[k], oddBelow);
        }
      }
      const V meanEven = Mean(even), meanOdd = Mean(odd);
      chroma[i / 2] = numbers.Blueness(meanEven, meanOdd);
      chroma[(count + i) / 2] = numbers.Redness(meanEven, meanOdd);
    }
  }

 private:
  static V Luma(const Numbers& numbers, const u8* src, V* even, V* odd) {
    const V pixels = V::Load(src);
    *even = Even(pixels);
    *odd = Numbers::Greens(pixels);
    return numbers.Luma(*even, *odd);
  }
  static V Mean(const V (&sums)[2]) {
    const V left = LowHalves64(sums[0], sums[1]), right = HighHalves64(sums[0], sums[1]);
    if constexpr (!two) return Average16(left, right);
    return ShiftRightU16(Add16(Add16(left, right), V::All16(2)), 2);
  }
};

/// Converts what whole steps take of one row, or of two that share U and V. Returns where the rest
/// begins.
template <typename Layout, bool two>
i64 ToByteRows(const Numbers& numbers, const Frame frame, const Source picture, Rows rows) {
  return ForSteps<kBytePixels>(frame.width, [&](i64 at) {
    const Columns<4, two> columns(numbers, picture.Row(rows.first) + 4 * at,
                                  picture.Row(rows.last) + 4 * at);
    V y;
    for (i64 i = 0; i <= i64{two}; ++i) {
      y = JoinFours(PackU8(columns.luma[i]));
      Layout::StoreY(frame, at, rows.first + i, y);
    }
    Layout::StoreUv(frame, at, rows.first, y, JoinFours(ZipHalves8(PackU8(columns.chroma))));
  });
}

template <bool two>
i64 ToWordRows(const Numbers& numbers, const Frame frame, const Source picture, Rows rows) {
  return ForSteps<2 * V::kPixels>(frame.width, [&](i64 at) {
    const Columns<2, two> columns(numbers, picture.Row(rows.first) + 4 * at,
                                  picture.Row(rows.last) + 4 * at);
    const auto store = [](V words, u8* to) { JoinPairs(ShiftLeft16(words, 6)).Store(to); };
    for (i64 i = 0; i <= i64{two}; ++i)
      store(PackI16(columns.luma[i][0], columns.luma[i][1]), frame.Y(at, rows.first + i));
    store(PairLow16(columns.chroma[0], columns.chroma[1]), frame.U(at, rows.first));
  });
}

template <typename Layout>
void ToByteFrame(Space space, const Frame& frame, const Source& picture, Rows rows, i64) {
  const auto& rule = RuleOf<8>(space);
  const Numbers numbers(rule.fromRgb, rule.range);
  const i64 x = Layout::kShares && rows.first < rows.last
                    ? ToByteRows<Layout, Layout::kShares>(numbers, frame, picture, rows)
                    : ToByteRows<Layout, false>(numbers, frame, picture, rows);
  ToFrame<8>(space, frame, picture, rows, x);
}

inline void ToWordFrame(Space space, const Frame& frame, const Source& picture, Rows rows, i64) {
  const auto& rule = RuleOf<10>(space);
  const Numbers numbers(rule.fromRgb, rule.range);
  const i64 x = rows.first < rows.last ? ToWordRows<true>(numbers, frame, picture, rows)
                                       : ToWordRows<false>(numbers, frame, picture, rows);
  ToFrame<10>(space, frame, picture, rows, x);
}

constexpr FrameBuild kFrameBuild = {
    {FromByteFrame<PairPlane>, FromByteFrame<ThreePlanes>, FromByteFrame<ThreePlanes>,
     FromByteFrame<OnePlane<true>>, FromByteFrame<OnePlane<false>>, FromWordFrame},
    {ToByteFrame<PairPlane>, ToByteFrame<ThreePlanes>, ToByteFrame<ThreePlanes>,
     ToByteFrame<OnePlane<true>>, ToByteFrame<OnePlane<false>>, ToWordFrame}};
