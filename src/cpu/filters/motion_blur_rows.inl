// Motion blur over V, included once for each instruction set after the portable kernels.
//
// A pixel is summed as two 16-bit halves, "even" (blue, red) and "odd" (green, alpha), which hold
// 256 samples; longer streaks are summed in stretches.

inline D All(double x) { return D::All(x); }
#include "cpu/filters/motion_blur_heading.inl"

constexpr i64 kStretch = 256;

/// The sums of up to kStretch samples of a V of pixels.
struct Stretch {
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

  Sums(const Stretch& s, u32 count)
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

/// Sums samples 0 … count. `sumStretch` sums those from its first argument to its second.
template <typename SumStretch>
auto SumAll(i64 count, SumStretch sumStretch) {
  auto sums = sumStretch(i64{0}, std::min(count, kStretch));
  for (i64 first = kStretch; first < count; first += kStretch)
    sums.Add(sumStretch(first, std::min(count, first + kStretch)));
  return sums;
}

inline void StorePixels(V pixels, u8* to, i64 count) {
  if (count >= V::kPixels) return pixels.Store(to);
  alignas(32) u8 bytes[4 * V::kPixels];
  pixels.Store(bytes);
  std::memcpy(to, bytes, static_cast<size_t>(4 * count));
}

// ---------------------------------------------------------------------------------------------
// Direction and zoom. A motion neither turns nor widens the picture: a pixel's neighbour comes from
// the same column of the source or from the next. So four pixels come from one load of four, moved
// to their places, and mostly whole stretches of pixels lie side by side. Only where a place
// reaches a power of two, and single precision becomes coarser, a column may be left out.

constexpr i32 kBlockPixels = 2 * V::kPixels;  // worked on at a time

/// How a block of pixels takes one sample from a row: where to load fours of pixels, as bytes in
/// the row, and which of their bytes then go where, kNothing for a miss.
struct Tap {
  i32 fours[kBlockPixels / 4];
};
struct Moves {
  u8 from[4 * kBlockPixels];
};
constexpr u8 kNothing = 128;

/// A vector of pixels, as a tap says.
inline V Take(const u8* row, const i32* fours, const u8* from) {
  return ShuffleBytes(LoadLanes([&](i64 lane) { return row + fours[lane]; }), V::Load(from));
}

/// False where four pixels do not come from four columns.
inline bool MakeTap(const Plan& plan, i32 sample, i32 x, Tap* tap, Moves* moves) {
  u8* from = moves->from;
  for (i32& four : tap->fours) {
    i32 columns[4];
    i32 first = plan.src.width - 4;
    for (i32& column : columns) {
      column = x < plan.dst.width ? plan.ColumnsOf(x)[sample] : kMiss;
      if (column != kMiss) first = std::min(first, column);
      ++x;
    }
    four = 4 * first;
    for (const i32 column : columns) {
      if (column - first > 3) return false;
      for (i32 b = 0; b < 4; ++b)
        *from++ = column == kMiss ? kNothing : static_cast<u8>(4 * (column - first) + b);
    }
  }
  return true;
}

inline bool HasClearPixels(const u8* row, i64 width) {
  V least = V::All32(~0u);
  i64 x = 0;
  for (; x + V::kPixels <= width; x += V::kPixels) least = MinU8(least, V::Load(row + 4 * x));
  bool found = !AlphasClear(Equal8(least, V::Zero()));
  for (; x < width; ++x) found |= row[4 * x + 3] == 0;
  return found;
}

/// The rows of the source that have clear pixels.
inline std::vector<u8> FindClearRows(const Size& size, const u8* src) {
  std::vector<u8> clear(static_cast<size_t>(size.height));
  for (u8& row : clear) {
    row = HasClearPixels(src, size.width);
    src += 4 * i64{size.width};
  }
  return clear;
}

/// The samples of a destination's row that lie on a row of the source.
struct Hits {
  struct Hit {
    const u8* row;
    i32 sample;
  };

  void Find(const Plan& plan, i32 y, const u8* src, const std::vector<u8>& clearRows) {
    hits.clear();
    onClearRows = false;
    const i32* rows = plan.RowsOf(y);
    for (i32 k = 0; k < plan.count; ++k) {
      if (rows[k] == kMiss) continue;
      hits.push_back({src + 4 * i64{rows[k]} * plan.src.width, k});
      onClearRows |= clearRows[static_cast<size_t>(rows[k])] != 0;
    }
  }

  std::vector<Hit> hits;
  bool onClearRows = false;
};

/// How the pixels of a block lie under all their samples.
struct Layout {
  bool isUsable = true;    // all its taps could be made
  bool isStraight = true;  // side by side in the source
  bool hasMisses = false;

  void Add(const Tap& tap, const Moves& moves) {
    for (size_t i = 0; i < std::size(moves.from); ++i) {
      isStraight &= moves.from[i] == i % 16;
      hasMisses |= moves.from[i] == kNothing;
    }
    for (size_t i = 1; i < std::size(tap.fours); ++i)
      isStraight &= tap.fours[i] - tap.fours[i - 1] == 16;
  }
};

/// A strip of columns, narrow enough for its taps and its rows of the source to stay in the cache
/// from one row of the destination to the next.
class Strip {
 public:
  static constexpr i32 kBlocks = 512 / kBlockPixels;

  Strip(const Plan& plan, const u8* src)
      : plan_(plan),
        src_(src),
        samples_(plan.count),
        taps_(static_cast<size_t>(kBlocks) * static_cast<size_t>(samples_)),
        moves_(taps_.size()) {}

  void Prepare(i32 x) {
    x_ = x;
    size_t i = 0;
    for (Layout& layout : layouts_) {
      layout = {};
      for (i32 k = 0; k < samples_; ++k, ++i) {
        layout.isUsable &= MakeTap(plan_, k, x, &taps_[i], &moves_[i]);
        if (layout.isUsable) layout.Add(taps_[i], moves_[i]);
      }
      x += kBlockPixels;
    }
  }

  /// Stores the strip's pixels of row y.
  void Run(const Hits& hits, i32 y, u8* dst) const {
    size_t i = 0;
    i32 x = x_;
    for (const Layout& layout : layouts_) {
      const i32 width = plan_.dst.width - x;
      const bool allHit = !hits.onClearRows && !layout.hasMisses;
      const auto store = layout.isStraight
                             ? allHit ? &Strip::Store<true, true> : &Strip::Store<true, false>
                         : allHit ? &Strip::Store<false, true>
                                  : &Strip::Store<false, false>;
      if (layout.isUsable) {
        (this->*store)(hits, i, dst, width);
      } else {
        RunPixels(plan_, src_, y, x, x + std::min(width, kBlockPixels), dst);
      }
      if (width <= kBlockPixels) break;
      i += static_cast<size_t>(samples_);
      dst += 4 * kBlockPixels;
      x += kBlockPixels;
    }
  }

 private:
  struct Pair {
    Sums left, right;

    void Add(const Pair& pair) {
      left.Add(pair.left);
      right.Add(pair.right);
    }
  };

  /// Stores a block, whose taps begin at index `at`.
  template <bool kIsStraight, bool kAllHit>
  void Store(const Hits& hits, size_t at, u8* dst, i64 width) const {
    const Pair sums = SumAll(static_cast<i64>(hits.hits.size()), [&](i64 first, i64 end) {
      const Tap* const taps = &taps_[at];
      const Moves* const moves = &moves_[at];
      const Hits::Hit* const stop = hits.hits.data() + end;
      Stretch left, right;
      for (const Hits::Hit* hit = hits.hits.data() + first; hit != stop; ++hit) {
        const Tap& tap = taps[hit->sample];
        if (kIsStraight) {
          left.template Add<kAllHit>(V::Load(hit->row + tap.fours[0]));
          right.template Add<kAllHit>(V::Load(hit->row + tap.fours[0] + 4 * V::kPixels));
        } else {
          const u8* from = moves[hit->sample].from;
          left.template Add<kAllHit>(Take(hit->row, tap.fours, from));
          right.template Add<kAllHit>(
              Take(hit->row, tap.fours + V::kPixels / 4, from + kVectorBytes));
        }
      }
      const u32 count = static_cast<u32>(end - first);
      return Pair{Sums(left, count), Sums(right, count)};
    });
    StorePixels(sums.left.Mean(samples_), dst, width);
    if (width > V::kPixels)
      StorePixels(sums.right.Mean(samples_), dst + 4 * V::kPixels, width - V::kPixels);
  }

  const Plan& plan_;
  const u8* src_;
  i32 samples_;
  i32 x_ = 0;              // where the strip begins
  std::vector<Tap> taps_;  // of the first block's samples, the second's, …
  std::vector<Moves> moves_;
  std::array<Layout, kBlocks> layouts_;
};

inline void RunPlan(const Plan& plan, const u8* src, u8* dst) {
  constexpr i32 kWidest = INT32_MAX / 4;  // places in a row are 32-bit numbers
  if (plan.src.width < 4 || plan.src.width > kWidest) return RunPlanPortable(plan, src, dst);
  const std::vector<u8> clearRows = FindClearRows(plan.src, src);
  Strip strip(plan, src);
  Hits hits;
  hits.hits.reserve(static_cast<size_t>(plan.count));
  for (i32 x = 0; x < plan.dst.width; x += Strip::kBlocks * kBlockPixels) {
    strip.Prepare(x);
    for (i32 y = 0; y < plan.dst.height; ++y) {
      hits.Find(plan, y, src, clearRows);
      strip.Run(hits, y, dst + 4 * (i64{y} * plan.dst.width + x));
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Spin.

/// Where the samples of a V of pixels of one row lie in the source.
class Streaks {
 public:
  Streaks(const Spin& spin, i32 y, i32 x) : spin_(spin), row_(F::All(static_cast<f32>(y))) {
    const V columns = Add32(V::All32(static_cast<u32>(x)), Index32());
    column_ = ToF(columns);
    const f32 up = static_cast<f32>(spin.centreY - y);
    const F u = F::All(up), v = ToF(Sub32(columns, V::All32(static_cast<u32>(spin.centreX))));
    distance_ = Sqrt((u * u + v * v) / F::All(spin.reach));
    const Heading low = HeadingOf(D::All(double{up}), LowToD(v));
    const Heading high = HeadingOf(D::All(double{up}), HighToD(v));
    cos_ = ToF(low.cos, high.cos);
    sin_ = ToF(low.sin, high.sin);
  }

  struct Places {
    V x, y;  // in the source; outside it, misses
  };
  Places At(i32 place) const {
    const F a = F::All(static_cast<f32>(place));
    return {Sub32(Truncate(a * sin_ * distance_ + column_), V::All32(static_cast<u32>(spin_.left))),
            Sub32(Truncate(a * cos_ * distance_ + row_), V::All32(static_cast<u32>(spin_.top)))};
  }

 private:
  const Spin& spin_;
  F row_, column_, distance_, cos_, sin_;
};

/// All ones where a place lies before the source, and after it.
struct Sides {
  Sides(V place, i32 size)
      : before(GreaterI32(V::Zero(), place)),
        after(GreaterI32(place, V::All32(static_cast<u32>(size - 1)))) {}

  V Outside() const { return before | after; }

  V before, after;
};

template <bool kAllInside>
V MeanOfStreaks(const Spin& spin, const Samples& samples, const Streaks& streaks) {
  const u8* src = static_cast<const u8*>(spin.src.data);
  const V pitch = V::All32(static_cast<u32>(spin.src.pitch));
  const Sums sums = SumAll(samples.count(), [&](i64 first, i64 end) {
    Stretch stretch;
    for (i64 i = first; i < end; ++i) {
      const Streaks::Places at = streaks.At(samples.places[static_cast<size_t>(i)]);
      const V places = Add32(Mul32(at.y, pitch), ShiftLeft32(at.x, 2));
      if constexpr (kAllInside) {
        stretch.Add<false>(Gather32(src, places));
      } else {
        const V outside =
            Sides(at.x, spin.src.width).Outside() | Sides(at.y, spin.src.height).Outside();
        stretch.Add<false>(Gather32(src, places, AndNot(outside, V::All32(~0u))));
      }
    }
    return Sums(stretch, static_cast<u32>(end - first));
  });
  return sums.Mean(samples.count());
}

/// The mean of the streaks of a V of pixels. A streak is straight, so that what both its ends have
/// in common holds in between.
inline V MeanAt(const Spin& spin, const Samples& samples, i32 y, i32 x) {
  const Streaks streaks(spin, y, x);
  const Streaks::Places first = streaks.At(0), last = streaks.At(samples.places.back());
  const Sides firstX(first.x, spin.src.width), lastX(last.x, spin.src.width);
  const Sides firstY(first.y, spin.src.height), lastY(last.y, spin.src.height);
  const V away = (firstX.before & lastX.before) | (firstX.after & lastX.after) |
                 (firstY.before & lastY.before) | (firstY.after & lastY.after);
  if (IsZero(away ^ V::All32(~0u))) return V::Zero();
  const V outside = firstX.Outside() | lastX.Outside() | firstY.Outside() | lastY.Outside();
  return IsZero(outside) ? MeanOfStreaks<true>(spin, samples, streaks)
                         : MeanOfStreaks<false>(spin, samples, streaks);
}

inline void RunSpin(const Spin& spin, const Samples& samples) {
  const bool placesFit =
      i64{spin.src.height} * std::abs(i64{spin.src.pitch}) + 4 * i64{spin.src.width} <= INT32_MAX;
  if (!placesFit) return RunSpinPortable(spin, samples);
  for (i32 y = 0; y < spin.dst.height; ++y) {
    u8* to = static_cast<u8*>(spin.dst.data) + i64{y} * spin.dst.pitch;
    for (i64 x = 0; x < spin.dst.width; x += V::kPixels) {
      StorePixels(MeanAt(spin, samples, y, static_cast<i32>(x)), to + 4 * x, spin.dst.width - x);
    }
  }
}
