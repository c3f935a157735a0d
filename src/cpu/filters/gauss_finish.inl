// The vectors of gauss_finish.h over V, included once for each instruction set.

inline const u8* BytesOf(const int16_t* p) { return reinterpret_cast<const u8*>(p); }
inline V LoadWords(const int16_t* p) { return V::Load(BytesOf(p)); }

template <bool sharpens, int bits>
struct Finisher {
  V kept;
  F amount, threshold;

  explicit Finisher(const Finish& finish)
      : kept(V::All32(finish.kept)),
        amount(F::All(finish.amount)),
        threshold(F::All(finish.threshold)) {}

  /// Of a vector's bytes, which the picture holds before.
  void Store(const V (&sums)[2], u8* p) const {
    V words[2];
    for (i64 i = 0; i < 2; ++i) {
      if constexpr (sharpens) {
        words[i] = Sharpened(sums[i], WidenBytes(p + i * kVectorBytes / 2));
      } else {
        words[i] = ShiftRightI16(Add16(sums[i], V::All16(1 << (bits - 1))), bits);
      }
    }
    (AndNot(kept, PackPixels(words)) | (V::Load(p) & kept)).Store(p);
  }

 private:
  V Sharpened(V sum, V colour) const {
    const V detail = Sub16(ShiftLeft16(colour, bits), sum), low = V::All32(0xFFFF);
    const V even = SharpenedLanes(ShiftRightI32(ShiftLeft32(detail, 16), 16), colour & low);
    const V odd = SharpenedLanes(ShiftRightI32(detail, 16), ShiftRightU32(colour, 16));
    return even | ShiftLeft32(odd, 16);
  }
  V SharpenedLanes(V detail, V before) const {
    const F colour = ToF(before), d = ToF(detail) * F::All(1.0f / (1 << bits));
    const F sharp = Min(Max(colour + amount * d, F::All(0)), F::All(255));
    return Truncate(Select(Abs(d) < threshold, colour, sharp) + F::All(0.5f));
  }
};
