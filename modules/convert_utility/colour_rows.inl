// The vector builds of colour.cpp over V, included once for each instruction set.
//
// A conversion makes a vector of pixels from one; numbers stand in 32-bit lanes, one a pixel.

/// Pixels of three bytes each, in the order of memory, with the alphas of others.
inline V Joined(V first, V second, V third, V alphas) {
  return first | ShiftLeft32(second, 8) | ShiftLeft32(third, 16) | (alphas & V::All32(kAlpha));
}

// ---------------------------------------------------------------------------------------------
// YUV.

#include "cpu/colour/yuv_sums.inl"

class YuvFromRgb {
 public:
  explicit YuvFromRgb(const Space& space)
      : y_(Row(space.yuv->fromRgb, 0, space.yuv->range.black)),
        u_(Row(space.yuv->fromRgb, 1, space.yuv->range.neutral)),
        v_(Row(space.yuv->fromRgb, 2, space.yuv->range.neutral)) {}

  V operator()(V pixels) const {
    const V even = Even(pixels), odd = JoinHalves(Odd(pixels), V::All32(kBias << 16));
    const V y = ShiftLeft32(y_(even, odd), 16 - kSumBits);
    const V u = ShiftRightU32(u_(even, odd), kSumBits - 8) & V::All32(0xFF00);
    const V v = ShiftRightU32(v_(even, odd), kSumBits);
    const V high = (pixels & V::All32(kAlpha)) | y;
    return JoinHalves(u | v, high);
  }

 private:
  static constexpr i32 kBias = 64;  // what it is multiplied by fits 16 bits

  static Sum3<kBias> Row(const NarrowMatrix& matrix, size_t row, i64 zero) {
    return {matrix.rows[row], (zero << kWeightBits) + NarrowMatrix::kHalf - matrix.tie};
  }

  Sum3<kBias> y_, u_, v_;
};

class RgbFromYuv {
 public:
  explicit RgbFromYuv(const Space& space) : RgbFromYuv(space.yuv->toRgb, space.yuv->range) {}

  V operator()(V pixels) const {
    const V vy = Sub16(Even(pixels), evenZero_);
    const V u1 = Sub16(JoinHalves(Odd(pixels), V::All32(1 << 16)), neutral_);
    const V r = ShiftRightI32(r_(vy), kSumBits);
    const V g = ShiftRightI32(g_(vy, u1), kSumBits);
    const V b = ShiftRightI32(b_(JoinHalves(u1, vy)), kSumBits);
    return JoinChannels(b, g, r, ShiftRightU32(pixels, 24));
  }

 private:
  RgbFromYuv(const NarrowMatrix& m, const YuvRange& range)
      : r_(m.rows[0][2], m.rows[0][0], m.kHalf - m.tie),
        g_(m.rows[1], m.kHalf - m.tie),
        b_(m.rows[2][1], m.rows[2][0], m.kHalf - m.tie),
        evenZero_(Pair16(range.neutral, range.black)),
        neutral_(V::All32(static_cast<u32>(range.neutral))) {}

  Sum2 r_;
  Sum3<1> g_;
  Sum2 b_;
  V evenZero_, neutral_;
};

// ---------------------------------------------------------------------------------------------
// HSV and HSL.

/// As the portable Rounded, for a below 2^23 and b below 2^15; 0 / 0 gives 0.
inline V Rounded(V a, V b) {
  const V one = V::All32(1), divisor = MaxI16(b, one);
  return Quotient32(Sub32(Add32(ShiftLeft32(a, 1), divisor), one), ShiftLeft32(divisor, 1));
}

template <u32 model>
struct HueFromRgb {
  explicit HueFromRgb(const Space&) {}

  V operator()(V pixels) const {
    const V b = Channel(pixels, 0), g = Channel(pixels, 1), r = Channel(pixels, 2);
    const V most = MaxI16(MaxI16(r, g), b), least = MinI16(MinI16(r, g), b);
    const V chroma = Sub32(most, least), chroma2 = ShiftLeft32(chroma, 1);

    const V red = Sub32(g, b), green = Add32(Sub32(b, r), chroma2);
    const V blue = Add32(Sub32(r, g), ShiftLeft32(chroma, 2));
    const V place = Select(Equal32(r, most), red, Select(Equal32(g, most), green, blue));
    const V chroma3 = Add32(chroma, chroma2);
    const V positive = Add32(place, ShiftRightI32(place, 31) & ShiftLeft32(chroma3, 1));
    const V hue = Rounded(ShiftLeft32(positive, 7), chroma3) & V::All32(0xFF);

    const V chroma255 = Sub32(ShiftLeft32(chroma, 8), chroma);
    if constexpr (model == PICTAVO_COLOR_HSV) {
      return Joined(most, Rounded(chroma255, most), hue, pixels);
    } else {
      const V sum = Add32(most, least);
      const V room = MinI16(sum, Sub32(V::All32(510), sum));
      return Joined(ShiftRightU32(sum, 1), Rounded(chroma255, room), hue, pixels);
    }
  }
};

/// Shares are 0 … 128: those of the rule, halved.
template <u32 model>
struct RgbFromHue {
  explicit RgbFromHue(const Space&) {}

  V operator()(V pixels) const {
    const V last = Channel(pixels, 0), saturation = Channel(pixels, 1), hue = Channel(pixels, 2);
    const V place = Add32(Add32(hue, hue), hue), two = V::All32(2 * 128);
    const V r = Sub16(Distance(place, 3 * 128), V::All32(128));
    const V g = Sub16(two, Distance(place, 2 * 128));
    const V b = Sub16(two, Distance(place, 4 * 128));
    const Weighing weigh(last, saturation);
    return Joined(weigh(b), weigh(g), weigh(r), pixels);
  }

 private:
  static V Distance(V place, u32 from) {
    const V difference = Sub16(place, V::All32(from));
    return MaxI16(difference, Sub16(V::Zero(), difference));
  }

  static constexpr u32 kScale = 255 * 128;

  class Weighing {
   public:
    Weighing(V last, V saturation) {
      if constexpr (model == PICTAVO_COLOR_HSV) {
        factor_ = saturation;
        last_ = last;
      } else {
        const V room = MinI16(last, Sub16(V::All32(255), last));
        last_ = last | ShiftLeft32(Mul16(room, saturation), 16);
      }
    }

    V operator()(V unlimited) const {
      const V share = MaxI16(MinI16(unlimited, V::All32(128)), V::Zero());
      const V missing = Sub16(V::All32(128), share);
      if constexpr (model == PICTAVO_COLOR_HSV) {
        return Unscaled(DotProduct32(last_, Sub16(V::All32(kScale), Mul16(factor_, missing))));
      } else {
        const V contrast = ShiftLeft32(Sub16(share, missing), 16);
        return Unscaled(DotProduct32(last_, contrast | V::All32(kScale)));
      }
    }

   private:
    /// a / kScale, rounded: first by 128, then by 255, whose reciprocal is exact for 16 bits.
    static V Unscaled(V a) {
      const V by128 = ShiftRightU32(Add32(a, V::All32(kScale / 2 - 1)), 7);
      return ShiftRightU32(MulHighU16(by128, V::All32(0x8081)), 7);
    }

    V last_, factor_;
  };
};

// ---------------------------------------------------------------------------------------------

template <typename Conversion>
void ConvertPicture(const Space& space, const Picture& picture, const Source& source) {
  const Conversion convert(space);
  cpu::ForRows(picture, source,
               [&](u8* dst, const u8* src, i64 width) { ApplyToRow(convert, dst, src, width); });
}

constexpr Build kBuild = {
    {ConvertPicture<YuvFromRgb>, ConvertPicture<HueFromRgb<PICTAVO_COLOR_HSV>>,
     ConvertPicture<HueFromRgb<PICTAVO_COLOR_HSL>>},
    {ConvertPicture<RgbFromYuv>, ConvertPicture<RgbFromHue<PICTAVO_COLOR_HSV>>,
     ConvertPicture<RgbFromHue<PICTAVO_COLOR_HSL>>},
};
