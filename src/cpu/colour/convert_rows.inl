// The vector rows of convert.cpp over V, included once for each instruction set. Rules that ask for
// a block's alphas work in place: the first alpha mostly answers alone.

struct Premultiplied {
  V operator()(V p) const {
    const V alpha = SpreadLow16(ShiftRightU32(p, 24)), one = V::All16(1);
    const V even = Mul16(Add16(Even(p), one), alpha);
    // The rule makes an alpha byte of 255 into alpha itself.
    const V odd = Mul16(Add16(Odd(p | V::All32(kAlpha)), one), alpha);
    return ShiftRightU16(even, 8) | (odd & V::All16(0xFF00));
  }

  void OnBlock(u8* dst, const Block& s) const {
    if (dst[3] != 255 || !s.AllOpaque()) ApplyToBlock(*this, dst, s);
  }
};

/// At full alpha 256 * c / 255 is c, and 256 where c is 255.
struct UnpremultipliedOpaque {
  V operator()(V p) const {
    return SubSaturatedU8(p, V::All32(0x00010101)) | Equal8(p, V::All32(~0u));
  }
};

struct Unpremultiplied {
  V operator()(V p) const {
    // 2^24 / alpha, rounded up: 256 * c / alpha is (c * reciprocal) >> 16 for every c up to alpha.
    const V reciprocal = Quotient32(V::All32((1 << 24) + 254), ShiftRightU32(p, 24));
    const V low = RepeatLow16(reciprocal), high = RepeatHigh16(reciprocal);
    const V most = AlphaOnColours(p), colours = MinU8(p, most);
    const V even = Straight(Even(colours), low, high), odd = Straight(Odd(colours), low, high);
    const V kept = Equal8(most, V::All32(0));  // alphas, and colours of clear pixels
    return even | ShiftLeft16(odd, 8) | (p & kept);
  }

  void OnBlock(u8* dst, const Block& s) const {
    if (dst[3] == 255 && s.AllOpaque()) {
      ApplyToBlock(UnpremultipliedOpaque(), dst, s);
    } else if (dst[3] != 0 || !s.AllClear()) {
      ApplyToBlock(*this, dst, s);
    }
  }

 private:
  static V Straight(V c, V low, V high) {
    return SubSaturatedU16(Add16(MulHighU16(c, low), Mul16(c, high)), V::All16(1));
  }
};

/// A matrix row times `scale`, applied to two vectors: blue and red, and green with kOne.
struct YuvSum {
  static constexpr u32 kOne = 512;  // the constants are multiples of it that fit 16 bits

  V blueRed, greenOne;

  YuvSum(const ToYuv& row, i32 scale)
      : blueRed(Pair16(row.b * scale, row.r * scale)),
        greenOne(Pair16(row.g * scale, row.constant / i32{kOne} * scale)) {}

  V operator()(V br, V g1) const {
    return Add32(DotProduct32(br, blueRed), DotProduct32(g1, greenOne));
  }
};

inline V GreenOne(V p) { return JoinHalves(Odd(p), V::All32(YuvSum::kOne << 16)); }

struct Yuva {
  // Scaled so that the results stand in the high halves; luma's green would not fit 16 bits.
  YuvSum y{kToY, 8}, u{kToU, 16}, v{kToV, 16};

  V operator()(V p) const {
    const V br = Even(p), g1 = GreenOne(p);
    return PackHigh16(v(br, g1), u(br, g1), ShiftLeft32(y(br, g1), 1), Odd(p));
  }
};

struct Bgra {
  V zeros{Pair16(128, 16)}, half{V::All32(2048)};

  V operator()(V p) const {
    const V vy = Sub16(Even(p), zeros), uy = JoinHalves(Sub16(Odd(p), zeros), vy);
    const V green =
        Add32(DotProduct32(vy, Pair16(kToG.v, kToG.y)), DotProduct32(uy, Pair16(kToG.u, 0)));
    return JoinChannels(Channel(DotProduct32(uy, Pair16(kToB.u, kToB.y))), Channel(green),
                        Channel(DotProduct32(vy, Pair16(kToR.v, kToR.y))), ShiftRightU32(p, 24));
  }

 private:
  V Channel(V sum) const { return ShiftRightI32(Add32(sum, half), 12); }
};

struct Gray {
  V operator()(V s, V d) const {
    // 65536 / 3, rounded up: exact for every sum of three bytes.
    const V third = V::All32(21846u << 16 | 21846), thirdOfGreen = V::All32(21846);
    const V sum = Add32(DotProduct32(Even(s), third), DotProduct32(Odd(s), thirdOfGreen));
    const V gray = Mul16(RepeatHigh16(sum), V::All32(1 << 16 | 0x0101));
    return gray | (d & V::All32(kAlpha));
  }
};

template <typename Rule>
void VectorRow(u8* dst, const u8* src, i64 width) {
  ApplyToRow(Rule(), dst, src, width);
}

constexpr ConvertBuild kConvertBuild = {VectorRow<Premultiplied>, VectorRow<Unpremultiplied>,
                                        VectorRow<Yuva>, VectorRow<Bgra>, VectorRow<Gray>};
