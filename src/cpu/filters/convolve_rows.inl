// The vector rows of convolve.cpp over V, included once for each instruction set.
//
// Columns go in strips, whose last rows are kept as pairs: beside each byte lies that of the next
// pixel, so that one multiply-add takes two weights.

/// Pairs of bytes, for weights whose sums fit 16 bits.
struct NarrowPairs {
  static constexpr i64 kPixelBytes = 8;
  static constexpr int kVectors = 2;  // hold V::kPixels of them
  alignas(16) static constexpr u32 kPlaces[] = {0x05010400, 0x07030602, 0x09050804, 0x0B070A06};

  static V Weights(i32 first, i32 second) {
    return V::All16(static_cast<u32>((first & 0xFF) | (second & 0xFF) << 8));
  }
  static V All(i32 x) { return V::All16(static_cast<u32>(x)); }
  static V Add(V a, V b) { return Add16(a, b); }
  static V Product(V pairs, V weights) { return DotProduct16(pairs, weights); }
  static V ShiftRight(V a, int bits) { return ShiftRightI16(a, bits); }
};

/// Pairs of 16 bits, for any weights.
struct WidePairs {
  static constexpr i64 kPixelBytes = 16;
  static constexpr int kVectors = 4;
  alignas(16) static constexpr u32 kPlaces[] = {0x80048000, 0x80058001, 0x80068002, 0x80078003};

  static V Weights(i32 first, i32 second) {
    return V::All32(static_cast<u32>((first & 0xFFFF) | second * 65536));
  }
  static V All(i32 x) { return V::All32(static_cast<u32>(x)); }
  static V Add(V a, V b) { return Add32(a, b); }
  static V Product(V pairs, V weights) { return DotProduct32(pairs, weights); }
  static V ShiftRight(V a, int bits) { return ShiftRightI32(a, bits); }
};

template <typename Pairs>
class Convolution {
 public:
  Convolution(const Picture& dst, const Source& src, const Filter& filter)
      : dst_(dst), src_(src), filter_(filter), kept_(V::All32(filter.withAlpha ? 0 : kAlpha)) {}

  void Run(i64 first, i64 end) {
    for (i64 x = 0; x < dst_.width; x += kStrip) RunStrip(x, first, end);
  }

 private:
  static constexpr i64 kStrip = 4096 / Pairs::kPixelBytes;
  static constexpr i64 kStripPixels = kStrip + 4 + 2 * V::kPixels;  // with margins, whole vectors
  static constexpr i64 kMostTaps = 15;

  struct Tap {
    const u8* pairs;  // of the strip's first pixel
    V weights;
  };

  void RunStrip(i64 x, i64 first, i64 end) {
    const i64 width = std::min(kStrip, dst_.width - x), radius = filter_.radius();
    for (i64 i = 0; i < end - first + 2 * radius; ++i) {
      const i64 y = std::clamp<i64>(first - radius + i, 0, src_.height - 1);
      MakePairs(src_.Row(y), x, width, rows_[i % filter_.size]);
      if (i < 2 * radius) continue;
      const i64 to = first + i - 2 * radius;
      FilterRow(dst_.Row(to) + 4 * x, src_.Row(to) + 4 * x, width, i - 2 * radius);
    }
  }

  /// A strip of a row with its margins, and whole vectors: a copy where the picture does not go on.
  const u8* WithMargins(const u8* row, i64 x, i64 width) {
    const i64 radius = filter_.radius(), last = src_.width - 1;
    const i64 from = std::max<i64>(x - radius, 0), to = std::min(x + width + radius, src_.width);
    if (from == x - radius && to + 2 * V::kPixels <= src_.width) return row + 4 * from;
    std::memcpy(pixels_ + 4 * (from - (x - radius)), row + 4 * from,
                static_cast<size_t>(4 * (to - from)));
    for (i64 u = x - radius; u < 0; ++u) std::memcpy(pixels_ + 4 * (u - x + radius), row, 4);
    for (i64 u = to; u < x + width + radius; ++u)
      std::memcpy(pixels_ + 4 * (u - x + radius), row + 4 * last, 4);
    return pixels_;
  }

  void MakePairs(const u8* row, i64 x, i64 width, u8* pairs) {
    constexpr i64 kLanePixels = 16 / Pairs::kPixelBytes;
    constexpr i64 kPixels = kLanePixels * kVectorBytes / 16;
    const u8* const from = WithMargins(row, x, width);
    const i64 count = width + 2 * filter_.radius();
    const V places = LoadLanes([](i64) { return reinterpret_cast<const u8*>(Pairs::kPlaces); });
    for (i64 i = 0; i < count; i += kPixels) {
      const V pixels = LoadLanes([&](i64 lane) { return from + 4 * (i + lane * kLanePixels); });
      ShuffleBytes(pixels, places).Store(pairs + i * Pairs::kPixelBytes);
    }
  }

  /// Weights of 0 beside each other are left out.
  i64 MakeTaps(i64 firstRow, Tap (&taps)[kMostTaps]) const {
    i64 count = 0;
    for (i32 row = 0; row < filter_.size; ++row) {
      for (i32 column = 0; column < filter_.size; column += 2) {
        const i32 a = filter_.Weight(row, column), b = filter_.Weight(row, column + 1);
        if (a == 0 && b == 0) continue;
        const u8* const pairs = rows_[(firstRow + row) % filter_.size];
        taps[count++] = {pairs + column * Pairs::kPixelBytes, Pairs::Weights(a, b)};
      }
    }
    return count;
  }

  /// Asks for what comes two rows later: rows of a strip are too short for the processor to see
  /// where they lead. An address outside the pictures is no fault.
  void FilterRow(u8* dst, const u8* src, i64 width, i64 firstRow) const {
    const bool goesOn = dst_.width > kStrip;
    const i64 srcAhead = goesOn ? (filter_.radius() + 2) * src_.pitch : 0;
    const i64 dstAhead = goesOn ? 2 * dst_.pitch : 0;
    Tap taps[kMostTaps];
    const i64 count = MakeTaps(firstRow, taps);
    const V half = Pairs::All(filter_.half), bias = Pairs::All(filter_.bias);
    i64 at = 0;
    ForVectors<4, 4>(dst, src, width, [&](u8* d, const u8* s) {
      _mm_prefetch(reinterpret_cast<const char*>(s) + srcAhead, _MM_HINT_T0);
      _mm_prefetch(reinterpret_cast<const char*>(d) + dstAhead, _MM_HINT_T0);
      V sums[Pairs::kVectors];
      for (V& sum : sums) sum = half;
      for (i64 t = 0; t < count; ++t) {
        const u8* const pairs = taps[t].pairs + at;
        for (int i = 0; i < Pairs::kVectors; ++i)
          sums[i] = Pairs::Add(sums[i],
                               Pairs::Product(V::Load(pairs + i * kVectorBytes), taps[t].weights));
      }
      for (V& sum : sums) sum = Pairs::Add(Pairs::ShiftRight(sum, filter_.shift), bias);
      (AndNot(kept_, PackPixels(sums)) | (V::Load(s) & kept_)).Store(d);
      at += V::kPixels * Pairs::kPixelBytes;
    });
  }

  const Picture& dst_;
  const Source& src_;
  const Filter& filter_;
  const V kept_;
  alignas(32) u8 pixels_[4 * kStripPixels] = {};
  alignas(32) u8 rows_[5][Pairs::kPixelBytes * kStripPixels];
};

inline void VectorConvolveRows(const Picture& dst, const Source& src, const Filter& filter,
                               i64 first, i64 end) {
  if (filter.IsNarrow()) {
    Convolution<NarrowPairs>(dst, src, filter).Run(first, end);
  } else {
    Convolution<WidePairs>(dst, src, filter).Run(first, end);
  }
}
