// The sums of samples over V, of every kind of motion blur, included once for each instruction set.
//
// A pixel is summed as two 16-bit halves, "even" (blue, red) and "odd" (green, alpha), which hold
// 256 samples; longer streaks are summed in parts.

constexpr i64 kPart = 256;

/// The sums of up to kPart samples of a V of pixels.
struct Part {
  V even = V::Zero(), odd = V::Zero(), misses = V::Zero();

  /// Leaves out clear pixels, unless there are none.
  template <bool kAllHit>
  void Add(V pixels) {
    if (!kAllHit) {
      const V miss = Equal32(pixels & V::All32(kAlpha), V::Zero());
      misses = Add32(misses, miss);  // counts down
      pixels = AndNot(miss, pixels);
    }
    even = Add16(even, pixels & V::All16(0xFF));
    odd = Add16(odd, ShiftRightU16(pixels, 8));
  }
};

/// The sums of any number of samples, one channel a vector.
struct Sums {
  V blue, green, red, alpha, hits;

  Sums(const Part& s, u32 count)
      : blue(s.even & V::All32(0xFFFF)),
        green(s.odd & V::All32(0xFFFF)),
        red(ShiftRightU32(s.even, 16)),
        alpha(ShiftRightU32(s.odd, 16)),
        hits(Add32(V::All32(count), s.misses)) {}

  void Add(const Sums& s) {
    blue = Add32(blue, s.blue);
    green = Add32(green, s.green);
    red = Add32(red, s.red);
    alpha = Add32(alpha, s.alpha);
    hits = Add32(hits, s.hits);
  }

  /// See Mean of the portable kernels.
  V Mean(i32 samples) const {
    const V some = MaxI32(hits, V::All32(1));
    return Quotient32(blue, some) | ShiftLeft32(Quotient32(green, some), 8) |
           ShiftLeft32(Quotient32(red, some), 16) |
           ShiftLeft32(Quotient32(alpha, V::All32(static_cast<u32>(samples))), 24);
  }
};

/// Sums samples 0 … count. `sumPart` sums those from its first argument to its second.
template <typename SumStretch>
auto SumAll(i64 count, SumStretch sumPart) {
  auto sums = sumPart(i64{0}, std::min(count, kPart));
  for (i64 first = kPart; first < count; first += kPart)
    sums.Add(sumPart(first, std::min(count, first + kPart)));
  return sums;
}

inline void StorePixels(V pixels, u8* to, i64 count) {
  if (count >= V::kPixels) return pixels.Store(to);
  alignas(32) u8 bytes[4 * V::kPixels];
  pixels.Store(bytes);
  std::memcpy(to, bytes, static_cast<size_t>(4 * count));
}
