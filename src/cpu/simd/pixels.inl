// Arithmetic on vectors of pixels, and the walk over rows of them, for each instruction set.
//
// A 32-bit pixel is worked on as two 16-bit halves: "even" holds blue and red, "odd" green and
// alpha. A weight is at most 256 and a byte at most 255, so that a product, and the sum of two
// whose weights add up to 256, fit 16 unsigned bits.

constexpr u32 kAlpha = 0xFF000000;
constexpr u32 kColours = 0x00FFFFFF;
constexpr u32 kWholeAlpha = 256u << 16;  // a weight of 256 for the alpha alone

inline V Even(V pixels) { return pixels & V::All16(0xFF); }
inline V Odd(V pixels) { return ShiftRightU16(pixels, 8); }
/// Byte number `place` of each pixel, blue being 0.
inline V Channel(V pixels, int place) { return ShiftRightU32(pixels, 8 * place) & V::All32(0xFF); }

/// The low, or the high, 16 bits of each pixel of a, and those of b above them.
inline V PairLow16(V a, V b) { return JoinHalves(a, ShiftLeft32(b, 16)); }
inline V PairHigh16(V a, V b) { return JoinHalves(ShiftRightU32(a, 16), b); }

/// Two signed numbers of 16 bits in each lane.
inline V Pair16(i32 low, i32 high) {
  return V::All32((static_cast<u32>(low) & 0xFFFF) | static_cast<u32>(high) << 16);
}

/// Swaps rows and columns in each square of lanes that 128 bits of the four vectors make.
inline void Transpose32(V (&rows)[4]) {
  const V first01 = InterleaveFirst32(rows[0], rows[1]);
  const V first23 = InterleaveFirst32(rows[2], rows[3]);
  const V second01 = InterleaveSecond32(rows[0], rows[1]);
  const V second23 = InterleaveSecond32(rows[2], rows[3]);
  rows[0] = InterleaveFirst64(first01, first23);
  rows[1] = InterleaveSecond64(first01, first23);
  rows[2] = InterleaveFirst64(second01, second23);
  rows[3] = InterleaveSecond64(second01, second23);
}

/// The lanes of two vectors of 16 bits, or four of 32, in their order, limited to bytes.
inline V PackPixels(const V (&a)[2]) { return JoinPairs(PackU8(a[0], a[1])); }
inline V PackPixels(const V (&a)[4]) { return JoinFours(PackU8(a)); }

/// (s * w + d * (256 - w) + rounding) >> 8 per channel, as d + (s - d) * w / 256 modulo 2^16.
template <u32 rounding = 0>
V MixHalves(V sEven, V sOdd, V d, V evenWeight, V oddWeight) {
  const V high = V::All16(0xFF00), more = V::All16(rounding);
  const V even = Add16(Mul16(Sub16(sEven, Even(d)), evenWeight), ShiftLeft16(d, 8));
  const V odd = Add16(Mul16(Sub16(sOdd, Odd(d)), oddWeight), d & high);
  return ShiftRightU16(Add16(even, more), 8) | (Add16(odd, more) & high);
}
inline V Mix(V s, V d, V evenWeight, V oddWeight) {
  return MixHalves(Even(s), Odd(s), d, evenWeight, oddWeight);
}

/// (d * w) >> 8 per channel.
inline V Scale(V d, V weight) {
  return ShiftRightU16(Mul16(Even(d), weight), 8) | (Mul16(Odd(d), weight) & V::All16(0xFF00));
}

// ---------------------------------------------------------------------------------------------
// Walking rows. A rule is an object that makes a vector of destination pixels from one of source
// pixels, or from one of source and one of destination pixels.

constexpr i64 kVectorBytes = V::kPixels * 4;
constexpr i64 kBlockBytes = 4 * kVectorBytes;

/// Four vectors, the stretch of pixels that one test covers.
struct Block {
  V v[4];

  explicit Block(const u8* p) {
    for (i64 i = 0; i < 4; ++i) v[i] = V::Load(p + i * kVectorBytes);
  }
  void Store(u8* p) const {
    for (i64 i = 0; i < 4; ++i) v[i].Store(p + i * kVectorBytes);
  }

  V Most() const { return MaxU8(MaxU8(v[0], v[1]), MaxU8(v[2], v[3])); }
  V Least() const { return MinU8(MinU8(v[0], v[1]), MinU8(v[2], v[3])); }

  bool AllClear() const { return AlphasClear(Most()); }
  bool AllOpaque() const { return AlphasOpaque(Least()); }
  bool AnyOpaque() const { return !AlphasClear(Equal8(Most(), V::All32(~0u))); }
  bool AnyClear() const { return !AlphasClear(Equal8(Least(), V::All32(0))); }
};

/// Asks for some bytes ahead, a block's by default: the arithmetic keeps the processor from looking
/// as far by itself. An address outside the pictures is no fault.
inline void Prefetch(const u8* p, i64 bytes = kBlockBytes) {
  constexpr i64 kAhead = 1024;
  for (i64 i = 0; i < bytes; i += 64) {
    _mm_prefetch(reinterpret_cast<const char*>(p) + kAhead + i, _MM_HINT_T0);
  }
}

template <typename Rule>
void Apply(const Rule& rule, u8* dst, V s) {
  if constexpr (std::is_invocable_v<const Rule&, V>) {
    rule(s).Store(dst);
  } else {
    rule(s, V::Load(dst)).Store(dst);
  }
}

template <typename Rule>
void ApplyToBlock(const Rule& rule, u8* dst, const Block& s) {
  for (i64 i = 0; i < 4; ++i) Apply(rule, dst + i * kVectorBytes, s.v[i]);
}

/// The tail of a row, less than a vector of pixels: `step` takes whole vectors of memory of its
/// own. A last pixel without a partner is its own partner there, which makes what a rule does to
/// pairs what it does to a single pixel.
template <i64 dstBytes, i64 srcBytes, typename Step>
void ForTail(u8* dst, const u8* src, i64 width, Step step) {
  constexpr i64 kPixels = V::kPixels;
  alignas(32) u8 s[kPixels * srcBytes] = {}, d[kPixels * dstBytes] = {};
  const size_t read = static_cast<size_t>(width * srcBytes);
  const size_t written = static_cast<size_t>(width * dstBytes);
  std::memcpy(s, src, read);
  std::memcpy(d, dst, written);
  std::memcpy(s + read, s + read - srcBytes, srcBytes);
  std::memcpy(d + written, d + written - dstBytes, dstBytes);
  step(d, s);
  std::memcpy(dst, d, written);
}

/// Walks a row of pixels that take so many bytes on each side: `step` takes a vector of them.
template <i64 dstBytes, i64 srcBytes, typename Step>
void ForVectors(u8* dst, const u8* src, i64 width, Step step) {
  for (; width >= V::kPixels; width -= V::kPixels) {
    step(dst, src);
    dst += V::kPixels * dstBytes;
    src += V::kPixels * srcBytes;
  }
  if (width > 0) ForTail<dstBytes, srcBytes>(dst, src, width, step);
}

/// Applies a rule to a row of pixels, or to a packed picture as one row. A rule with a method
/// OnBlock takes blocks itself, since it knows better for what they hold.
template <typename Rule>
void ApplyToRow(const Rule& rule, u8* dst, const u8* src, i64 width) {
  constexpr i64 kBlockPixels = 4 * V::kPixels;
  for (; width >= kBlockPixels; width -= kBlockPixels, dst += kBlockBytes, src += kBlockBytes) {
    Prefetch(src);
    if constexpr (requires { &Rule::OnBlock; }) {
      rule.OnBlock(dst, Block(src));
    } else {
      if (dst != src) Prefetch(dst);
      ApplyToBlock(rule, dst, Block(src));
    }
  }
  ForVectors<4, 4>(dst, src, width, [&](u8* d, const u8* s) { Apply(rule, d, V::Load(s)); });
}
