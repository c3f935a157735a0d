// Arithmetic on vectors of pixels over V, included once for each instruction set.
//
// A 32-bit pixel is worked on as two 16-bit halves: "even" holds blue and red, "odd" green and
// alpha. A weight is at most 256 and a byte at most 255, so that a product, and the sum of two
// whose weights add up to 256, fit 16 unsigned bits.

constexpr u32 kAlpha = 0xFF000000;
constexpr u32 kColours = 0x00FFFFFF;
constexpr u32 kWholeAlpha = 256u << 16;  // a weight of 256 for the alpha alone

inline V Even(V pixels) { return pixels & V::All16(0xFF); }
inline V Odd(V pixels) { return ShiftRight16(pixels, 8); }

/// (s * w + d * (256 - w)) >> 8 per channel, as d + (s - d) * w / 256 modulo 2^16.
inline V Mix(V s, V d, V evenWeight, V oddWeight) {
  const V high = V::All16(0xFF00);
  const V even = Add16(Mul16(Sub16(Even(s), Even(d)), evenWeight), ShiftLeft16(d, 8));
  const V odd = Add16(Mul16(Sub16(Odd(s), Odd(d)), oddWeight), d & high);
  return ShiftRight16(even, 8) | (odd & high);
}

/// (d * w) >> 8 per channel.
inline V Scale(V d, V weight) {
  return ShiftRight16(Mul16(Even(d), weight), 8) | (Mul16(Odd(d), weight) & V::All16(0xFF00));
}

// ---------------------------------------------------------------------------------------------
// Walking rows. A rule is an object that makes a vector of destination pixels from one of source
// and one of destination pixels.

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

  V Most() const { return Max8(Max8(v[0], v[1]), Max8(v[2], v[3])); }
  V Least() const { return Min8(Min8(v[0], v[1]), Min8(v[2], v[3])); }

  bool AllClear() const { return AlphasClear(Most()); }
  bool AllOpaque() const { return AlphasOpaque(Least()); }
  bool AnyOpaque() const { return !AlphasClear(Equal8(Most(), V::All32(~0u))); }
  bool AnyClear() const { return !AlphasClear(Equal8(Least(), V::All32(0))); }
};

template <typename Rule>
void BlendBlock(const Rule& rule, u8* dst, const Block& s) {
  for (i64 i = 0; i < 4; ++i) {
    u8* to = dst + i * kVectorBytes;
    rule(s.v[i], V::Load(to)).Store(to);
  }
}

/// The rest of a row, less than a vector, through a vector of its own. A last pixel without a
/// partner is its own partner: that makes the pair rules those of a single pixel.
template <typename Rule>
void BlendRest(const Rule& rule, u8* dst, const u8* src, i64 bytes) {
  alignas(32) u8 s[kVectorBytes] = {}, d[kVectorBytes] = {};
  const size_t count = static_cast<size_t>(bytes);
  std::memcpy(s, src, count);
  std::memcpy(d, dst, count);
  if (count % 8 != 0) {
    std::memcpy(s + count, s + count - 4, 4);
    std::memcpy(d + count, d + count - 4, 4);
  }
  rule(V::Load(s), V::Load(d)).Store(d);
  std::memcpy(dst, d, count);
}

/// Asks for some bytes ahead, a block's by default: the arithmetic keeps the processor from looking
/// as far by itself. An address outside the pictures is no fault.
inline void Prefetch(const u8* p, i64 bytes = kBlockBytes) {
  constexpr i64 kAhead = 1024;
  for (i64 i = 0; i < bytes; i += 64) {
    _mm_prefetch(reinterpret_cast<const char*>(p) + kAhead + i, _MM_HINT_T0);
  }
}
