// Box blurs over V, included once for each instruction set.
//
// A pass takes the picture's rows in strips of as many rows as a vector has pixels. It turns a
// strip, so that each vector holds a column of it, slides one vector of windows along the columns,
// and turns the result back into rows, which it keeps in a ring. Then windows of all the picture's
// columns slide down the ring, and the pass writes the rows that nobody needs any longer: it works
// in place. It does so by tiles of columns, which stay in the first-level cache.
//
// Clear pixels are zero in the turned strip and in the ring, so that they add nothing to sums.
// Where there are none, a window's count is its size and is not looked at.

constexpr i64 kStripRows = V::kPixels;

inline V IsClear(V pixels) { return Equal32(pixels & V::All32(kAlpha), V::All32(0)); }
inline V WithoutClear(V pixels) { return AndNot(IsClear(pixels), pixels); }

/// What divides the sums of whole windows of one size.
struct Divisor {
  V size, multiplier, high, low, bias;
  F reciprocal;

  explicit Divisor(const WindowSize& window)
      : size(V::All32(window.pixels)),
        multiplier(V::All16(window.multiplier)),
        high(V::All16(1u << (16 - window.shift))),
        low(V::All16(1u << (8 - window.shift))),
        bias(V::All16(window.bias)),
        reciprocal(F::All(1.0f / static_cast<f32>(window.pixels))) {}
};

/// sum / count per 32-bit lane, rounded down. The half keeps rounding errors off the integers.
inline V Quotient(V sum, F reciprocal) { return Truncate((ToF(sum) + F::All(0.5f)) * reciprocal); }

/// Sums of each channel of as many windows as V has pixels, in 16 bits and with the bias.
struct ShortSums {
  V even, odd;  // blue and red, green and alpha

  explicit ShortSums(const Divisor& by) : even(by.bias), odd(by.bias) {}

  void Slide(V in, V out) {
    even = Add16(even, Sub16(Even(in), Even(out)));
    odd = Add16(odd, Sub16(Odd(in), Odd(out)));
  }

  /// Means over whole windows. Multiplications shift by what is no constant.
  V Means(const Divisor& by) const {
    const V high = MulHighU16(MulHighU16(even, by.multiplier), by.high);
    return high | (Mul16(MulHighU16(odd, by.multiplier), by.low) & V::All16(0xFF00));
  }

  V Means(const Divisor& by, V count) const {
    const V evenSums = Sub16(even, by.bias), oddSums = Sub16(odd, by.bias);
    const V half = V::All32(0xFFFF);
    const F each = F::All(1.0f) / ToF(count);
    return JoinChannels(Quotient(evenSums & half, each), Quotient(oddSums & half, each),
                        Quotient(ShiftRightU32(evenSums, 16), each),
                        Quotient(ShiftRightU32(oddSums, 16), by.reciprocal));
  }
};

/// The same in single precision, which holds them and a half exactly.
struct LongSums {
  F blue, green, red, alpha;

  explicit LongSums(const Divisor&) : blue(F::All(0.5f)), green(blue), red(blue), alpha(blue) {}

  void Slide(V in, V out) {
    const V low = V::All32(1), high = V::All32(1u << 16);
    const V even = Sub16(Even(in), Even(out)), odd = Sub16(Odd(in), Odd(out));
    blue = blue + ToF(DotProduct32(even, low));
    green = green + ToF(DotProduct32(odd, low));
    red = red + ToF(DotProduct32(even, high));
    alpha = alpha + ToF(DotProduct32(odd, high));
  }

  V Means(const Divisor& by) const { return Means(by, by.reciprocal); }
  V Means(const Divisor& by, V count) const { return Means(by, F::All(1.0f) / ToF(count)); }

 private:
  V Means(const Divisor& by, F each) const {
    return JoinChannels(Truncate(blue * each), Truncate(green * each), Truncate(red * each),
                        Truncate(alpha * by.reciprocal));
  }
};

/// As many windows as V has pixels. They begin with no pixel that contributes.
template <typename Sums>
struct Windows {
  Sums sums;
  V count = V::All32(0);

  explicit Windows(const Divisor& by) : sums(by) {}

  template <bool holes>
  void Slide(V in, V out) {
    sums.Slide(in, out);
    if (holes) count = Add32(count, Sub32(IsZero32(in), IsZero32(out)));
  }

  /// The means, and `otherwise` for windows without a pixel that contributes.
  template <bool holes>
  V Means(const Divisor& by, V otherwise) const {
    if (!holes || AllOnes(Equal32(count, by.size))) return sums.Means(by);
    const V none = IsZero32(count);
    if (AllOnes(none)) return otherwise;
    return Select(none, otherwise, sums.Means(by, Sub32(count, none)));
  }

 private:
  static V IsZero32(V a) { return Equal32(a, V::All32(0)); }
  static bool AllOnes(V a) { return AlphasOpaque(a); }
};

// ---------------------------------------------------------------------------------------------
// Along the rows.

/// Turns four of the rows' columns into vectors, and puts the least bytes of all into `least`.
inline void TurnFour(const u8* const* rows, i64 x, u8* columns, V* least) {
  V four[4];
  for (i64 i = 0; i < 4; ++i) {
    four[i] = LoadLanes([&](i64 lane) { return rows[4 * lane + i] + 4 * x; });
    *least = MinU8(*least, four[i]);
  }
  Transpose32(four);
  for (i64 i = 0; i < 4; ++i) four[i].Store(columns + i * kVectorBytes);
}

/// Turns `count` columns from `first` on. Returns whether any pixel there or just before is clear.
inline bool TurnColumns(const u8* const* rows, i64 width, i64 first, i64 count, u8* columns) {
  const i64 end = first + count;
  V least = V::All32(~0u);
  i64 x = first;
  for (; x + 4 <= end; x += 4, columns += 4 * kVectorBytes) TurnFour(rows, x, columns, &least);
  if (x < end) {
    alignas(32) u8 four[4 * kVectorBytes];
    const i64 inside = std::min(x, width - 4);
    TurnFour(rows, inside, four, &least);
    std::memcpy(columns, four + (x - inside) * kVectorBytes,
                static_cast<size_t>((end - x) * kVectorBytes));
  }
  return !IsZero(IsClear(least));
}

inline void ZeroClearPixels(u8* columns, i64 count) {
  for (u8* end = columns + count * kVectorBytes; columns != end; columns += kVectorBytes)
    WithoutClear(V::Load(columns)).Store(columns);
}

inline void RepeatColumn(V column, u8* columns, i64 count) {
  for (u8* end = columns + count * kVectorBytes; columns != end; columns += kVectorBytes)
    column.Store(columns);
}

/// Slides a window along columns, at first that of the pixel before x, and writes rows from x on,
/// by fours of pixels.
template <typename Sums, bool holes>
void BlurAlong(Windows<Sums>* start, const u8* columns, i64 count, const WindowSize& size,
               u8* const* rows, i64 x) {
  const Divisor by(size);
  const u8* out = columns;
  const u8* in = columns + i64{size.pixels} * kVectorBytes;
  Windows<Sums> window = *start;
  for (const i64 end = x + count; x < end; x += 4) {
    V four[4];
    for (i64 i = 0; i < 4; ++i, in += kVectorBytes, out += kVectorBytes) {
      window.template Slide<holes>(V::Load(in), V::Load(out));
      four[i] = window.template Means<holes>(by, V::All32(0));
      if (holes) four[i] = WithoutClear(four[i]);
    }
    Transpose32(four);
    for (i64 i = 0; i < 4; ++i)
      StoreLanes(four[i], [&](i64 lane) { return rows[4 * lane + i] + 4 * x; });
  }
  *start = window;
}

// ---------------------------------------------------------------------------------------------
// Down the columns.

/// The rows that enter and leave the windows, and those to write.
struct RowGroup {
  const u8* in[kStripRows];
  const u8* out[kStripRows];
  u8* dst[kStripRows];
  i64 rows;
};

template <typename Sums, bool holes>
void BlurColumns(Windows<Sums>* columns, const RowGroup& group, i64 at, const Divisor& by) {
  Windows<Sums> windows = *columns;
  for (i64 row = 0; row < group.rows; ++row) {
    u8* const dst = group.dst[row] + at;
    windows.template Slide<holes>(V::Load(group.in[row] + at), V::Load(group.out[row] + at));
    windows.template Means<holes>(by, holes ? V::Load(dst) : V::All32(0)).Store(dst);
  }
  columns->sums = windows.sums;
  if (holes) columns->count = windows.count;
}

/// Slides windows down `count` columns, from x on.
template <typename Sums, bool holes>
void BlurDown(Windows<Sums>* columns, const RowGroup& group, i64 x, i64 count,
              const WindowSize& size) {
  const Divisor by(size);
  i64 at = 4 * x;
  for (; count >= V::kPixels; count -= V::kPixels, at += kVectorBytes)
    BlurColumns<Sums, holes>(columns++, group, at, by);
  if (count == 0) return;
  alignas(32) u8 rest[kStripRows][kVectorBytes] = {};
  const size_t restBytes = static_cast<size_t>(4 * count);
  RowGroup shortened = group;
  for (i64 row = 0; row < group.rows; ++row) {
    std::memcpy(rest[row], group.dst[row] + at, restBytes);
    shortened.in[row] += at;
    shortened.out[row] += at;
    shortened.dst[row] = rest[row];
  }
  BlurColumns<Sums, holes>(columns, shortened, 0, by);
  for (i64 row = 0; row < group.rows; ++row) std::memcpy(group.dst[row] + at, rest[row], restBytes);
}

// ---------------------------------------------------------------------------------------------
// Passes.

constexpr i64 kTileColumns = 256;

inline i64 Tiles(i64 width) { return (width + kTileColumns - 1) / kTileColumns; }
/// Vectors that hold a row.
inline i64 RowVectors(i64 width) { return (width + V::kPixels - 1) / V::kPixels; }

inline i64 RingRows(i64 radius) { return 2 * radius + 1 + kStripRows; }
inline i64 RingPitch(i64 width) {  // an odd number of vectors, to spread rows over the cache
  return (RowVectors(width) | 1) * kVectorBytes;
}

inline size_t ScratchBytes(const Surface& image, i64 radius) {
  const i64 ring = RingRows(radius) * RingPitch(image.pixels);
  const i64 columns = RowVectors(image.pixels) * static_cast<i64>(sizeof(Windows<LongSums>));
  const i64 strip = (2 * radius + 1 + kTileColumns) * kVectorBytes;
  const i64 lastHoles = Tiles(image.pixels) * static_cast<i64>(sizeof(i64));
  return static_cast<size_t>(ring + columns + strip + lastHoles);
}

/// One box blur of a picture in place, from its top downwards.
template <typename Sums>
class Pass {
 public:
  Pass(const Surface& image, i64 radius, u8* scratch)
      : image_(image),
        radius_(radius),
        size_(radius),
        ringRows_(RingRows(radius)),
        ringPitch_(RingPitch(image.pixels)),
        ring_(scratch),
        columns_(reinterpret_cast<Windows<Sums>*>(ring_ + ringRows_ * ringPitch_)),
        strip_(reinterpret_cast<u8*>(columns_ + RowVectors(image.pixels))),
        lastHoles_(reinterpret_cast<i64*>(strip_ + (size_.pixels + kTileColumns) * kVectorBytes)) {
    std::fill_n(lastHoles_, Tiles(image.pixels), kNever);
  }

  void Run() {
    while (taken_ < image_.lines) {
      TakeStrip();
      WriteRows();
    }
  }

 private:
  static constexpr i64 kNever = INT64_MIN;

  u8* RingRow(i64 row) const { return ring_ + row % ringRows_ * ringPitch_; }
  const u8* NearestRow(i64 row) const { return RingRow(std::clamp<i64>(row, 0, image_.lines - 1)); }

  /// Blurs the next rows of the picture along, into the ring. The strip holds the columns of a
  /// tile's windows: the last ones of the tile before, then new ones.
  void TakeStrip() {
    const u8* from[kStripRows];
    u8* to[kStripRows];
    for (i64 i = 0; i < kStripRows; ++i) {
      from[i] = image_.At(std::min(taken_ + i, image_.lines - 1), 0);
      to[i] = RingRow(taken_ + i);
    }
    taken_ = std::min(taken_ + kStripRows, image_.lines);

    const i64 before = size_.pixels;
    Windows<Sums> window{Divisor(size_)};
    i64 lastHole = StartStrip(from, &window) ? radius_ - 1 : kNever;
    for (i64 tile = 0; tile < Tiles(image_.pixels); ++tile) {
      const i64 x = tile * kTileColumns, count = std::min(kTileColumns, image_.pixels - x);
      if (FillStrip(from, x + radius_, count, strip_ + before * kVectorBytes))
        lastHole = x + radius_ + count - 1;
      const bool holes = lastHole >= x - radius_ - 1;
      (holes ? BlurAlong<Sums, true> : BlurAlong<Sums, false>)(&window, strip_, count, size_, to,
                                                               x);
      if (holes) lastHoles_[tile] = taken_ - 1;
      std::memmove(strip_, strip_ + kTileColumns * kVectorBytes,
                   static_cast<size_t>(before * kVectorBytes));
    }
  }

  /// Puts what stands before the first window into the strip, and slides the window to there.
  /// Returns whether any pixel is clear.
  bool StartStrip(const u8* const* rows, Windows<Sums>* window) {
    u8* const first = strip_ + (radius_ + 1) * kVectorBytes;
    const bool holes = FillStrip(rows, 0, radius_, first);
    RepeatColumn(V::Load(first), strip_, radius_ + 1);
    for (i64 i = 0; i < size_.pixels; ++i)
      window->template Slide<true>(V::Load(strip_ + i * kVectorBytes), V::All32(0));
    return holes;
  }

  /// Turns columns into the strip, and repeats the last one beyond the picture. Returns whether any
  /// pixel is clear.
  bool FillStrip(const u8* const* rows, i64 first, i64 count, u8* columns) const {
    const i64 inside = std::clamp<i64>(image_.pixels - first, 0, count);
    const bool holes = TurnColumns(rows, image_.pixels, first, inside, columns);
    if (holes) ZeroClearPixels(columns, inside);
    u8* const outside = columns + inside * kVectorBytes;
    RepeatColumn(V::Load(outside - kVectorBytes), outside, count - inside);
    return holes;
  }

  /// Writes the rows of the picture for which the ring has all.
  void WriteRows() {
    const i64 end = taken_ == image_.lines ? taken_ : taken_ - radius_;
    if (written_ == 0 && end > 0) StartColumns();
    while (written_ < end) {
      RowGroup group;
      group.rows = std::min(kStripRows, end - written_);
      for (i64 i = 0; i < group.rows; ++i) {
        const i64 row = written_ + i;
        group.in[i] = NearestRow(row + radius_);
        group.out[i] = NearestRow(row - radius_ - 1);
        group.dst[i] = image_.At(row, 0);
      }
      for (i64 tile = 0; tile < Tiles(image_.pixels); ++tile) {
        const i64 x = tile * kTileColumns, count = std::min(kTileColumns, image_.pixels - x);
        const bool holes = lastHoles_[tile] >= written_ - radius_ - 1;
        (holes ? BlurDown<Sums, true> : BlurDown<Sums, false>)(columns_ + x / V::kPixels, group, x,
                                                               count, size_);
      }
      written_ += group.rows;
    }
  }

  /// Fills the windows of the columns with what they hold before the first row.
  void StartColumns() {
    const i64 vectors = RowVectors(image_.pixels);
    const Windows<Sums> empty{Divisor(size_)};
    for (i64 i = 0; i < vectors; ++i) columns_[i] = empty;
    for (i64 row = -radius_ - 1; row < radius_; ++row) {
      const u8* const in = NearestRow(row);
      for (i64 i = 0; i < vectors; ++i)
        columns_[i].template Slide<true>(V::Load(in + i * kVectorBytes), V::All32(0));
    }
  }

  Surface image_;
  i64 radius_;
  WindowSize size_;
  i64 ringRows_;
  i64 ringPitch_;
  u8* ring_;
  Windows<Sums>* columns_;  // one for each vector of a row
  u8* strip_;               // columns, turned
  i64* lastHoles_;          // for each tile the last row taken that may have clear pixels
  i64 taken_ = 0;           // rows that are in the ring, or were
  i64 written_ = 0;         // rows that are blurred
};

inline void BoxBlurInPlace(const Surface& image, i64 radius, u8* scratch) {
  if (2 * radius + 1 <= kLargestShort) {
    Pass<ShortSums>(image, radius, scratch).Run();
  } else {
    Pass<LongSums>(image, radius, scratch).Run();
  }
}

constexpr VectorBlur kVectorBlur = {ScratchBytes, BoxBlurInPlace};
