// Direction and zoom over V, included once for each instruction set.
//
// A motion neither turns nor widens the picture: a pixel's neighbour comes from the same column of
// the source or from the next. So four pixels come from one load of four, moved to their places,
// and mostly whole stretches of pixels lie side by side. Only where a place reaches a power of two,
// and single precision becomes coarser, a column may be left out.

#include "cpu/filters/motion_sums.inl"

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

/// Where a sample lies in the columns from x on; false where four pixels do not come from four
/// columns.
inline bool MakeTap(const Stretch& stretch, i32 sample, i32 x, i32 end, i32 srcWidth, Tap* tap,
                    Moves* moves) {
  u8* from = moves->from;
  for (i32& four : tap->fours) {
    i32 columns[4];
    i32 first = srcWidth - 4;
    for (i32& column : columns) {
      const bool mayHit = x < end && stretch.SpanOf(x).Has(sample);
      column = mayHit ? stretch.PlacesOf(x)[sample] : kMiss;
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

/// A sample that lies on a row of the source.
struct Hit {
  const u8* row;
  i32 sample;
};

/// The samples of a row of the destination that hit, in their order.
struct Hits {
  Hit *first, *end;
  bool onClearRows;

  /// Those of the samples wanted.
  void Find(const Plan& plan, const Stretch& rowStretch, i32 y, const Span& wanted,
            const u8* clearRows) {
    end = first;
    onClearRows = false;
    const i32* rows = rowStretch.PlacesOf(y);
    const Span span = rowStretch.SpanOf(y);
    const i32 last = std::min(span.end, wanted.end);
    for (i32 k = std::max(span.first, wanted.first); k < last; ++k) {
      if (rows[k] == kMiss) continue;
      *end++ = {plan.src.Row(rows[k]), k};
      onClearRows |= clearRows[rows[k]] != 0;
    }
  }

  Hits Within(const Span& span) const {
    const auto from = [&](i32 sample) {
      return std::partition_point(first, end, [=](const Hit& hit) { return hit.sample < sample; });
    };
    Hits hits = *this;
    if (first != end && first->sample < span.first) hits.first = from(span.first);
    if (first != end && end[-1].sample >= span.end) hits.end = std::max(hits.first, from(span.end));
    return hits;
  }
};

/// How the pixels of a block lie under their samples, beyond which all miss.
struct Layout {
  Span span;
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
  Strip(const Plan& plan, const Tile& tile)
      : plan_(plan),
        tile_(tile),
        blocks_(tile.width() / kBlockPixels),
        scratch_(blocks_ * plan.samples * i64{sizeof(Moves) + sizeof(Tap)} +
                 plan.samples * i64{sizeof(Hit)} + plan.src.height) {
    if (IsShort()) return;
    moves_ = reinterpret_cast<Moves*>(scratch_.data());
    taps_ = reinterpret_cast<Tap*>(moves_ + blocks_ * plan.samples);
    hits_.first = reinterpret_cast<Hit*>(taps_ + blocks_ * plan.samples);
    clearRows_ = reinterpret_cast<u8*>(hits_.first + plan.samples);
  }

  bool IsShort() { return scratch_.IsShort(); }

  void FindClearRows() {
    for (i64 y = 0; y < plan_.src.height; ++y)
      clearRows_[y] = HasClearPixels(plan_.src.Row(y), plan_.src.width);
  }

  void Begin(i32 x, i32 width) {
    x_ = x;
    end_ = x + width;
    span_ = tile_.columns.SpanOf(x);
    for (i64 block = 0; x < end_; ++block, x += kBlockPixels) {
      layouts_[block] = Prepare(block, x);
      span_ = span_.With(layouts_[block].span);
    }
  }

  /// Stores the strip's pixels of row y.
  void Run(i32 y) {
    hits_.Find(plan_, tile_.rows, y, span_, clearRows_);
    u8* dst = plan_.dst.Row(y) + 4 * i64{x_};
    i32 x = x_;
    for (i64 block = 0; x < end_; ++block, x += kBlockPixels, dst += 4 * kBlockPixels) {
      const Layout& layout = layouts_[block];
      const i32 width = std::min(end_ - x, kBlockPixels);
      if (!layout.isUsable) {
        RunPixels(plan_, tile_, y, x, x + width, dst);
        continue;
      }
      const bool allHit = !hits_.onClearRows && !layout.hasMisses;
      const auto store = layout.isStraight
                             ? allHit ? &Strip::Store<true, true> : &Strip::Store<true, false>
                         : allHit ? &Strip::Store<false, true>
                                  : &Strip::Store<false, false>;
      (this->*store)(hits_.Within(layout.span), block * plan_.samples, dst, width);
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

  /// Makes the taps of the block of columns from x on.
  Layout Prepare(i64 block, i32 x) {
    const i32 end = std::min(end_, x + kBlockPixels);
    Layout layout;
    layout.span = tile_.columns.SpanOf(x);
    for (i32 i = x; i < end; ++i) layout.span = layout.span.With(tile_.columns.SpanOf(i));
    for (i32 k = layout.span.first; k < layout.span.end && layout.isUsable; ++k) {
      Tap& tap = taps_[block * plan_.samples + k];
      Moves& moves = moves_[block * plan_.samples + k];
      layout.isUsable =
          MakeTap(tile_.columns, k, x, end, static_cast<i32>(plan_.src.width), &tap, &moves);
      if (layout.isUsable) layout.Add(tap, moves);
    }
    return layout;
  }

  /// Stores a block, whose taps begin at index `at`.
  template <bool kIsStraight, bool kAllHit>
  void Store(const Hits& hits, i64 at, u8* dst, i64 width) const {
    const Pair sums = SumAll(hits.end - hits.first, [&](i64 first, i64 end) {
      const Tap* const taps = &taps_[at];
      const Moves* const moves = &moves_[at];
      const Hit* const stop = hits.first + end;
      Part left, right;
      for (const Hit* hit = hits.first + first; hit != stop; ++hit) {
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
    StorePixels(sums.left.Mean(plan_.samples), dst, width);
    if (width > V::kPixels)
      StorePixels(sums.right.Mean(plan_.samples), dst + 4 * V::kPixels, width - V::kPixels);
  }

  const Plan& plan_;
  const Tile& tile_;
  i64 blocks_;
  Scratch scratch_;
  i32 x_ = 0, end_ = 0;  // the strip's columns
  Span span_;            // beyond which all samples of the strip miss
  Moves* moves_;         // of the first block's samples, the second's, …
  Tap* taps_;
  Hits hits_ = {};
  u8* clearRows_;  // whether a row of the source has clear pixels
  Layout layouts_[Tile::kMostColumns / kBlockPixels];
};

inline u32 Run(const Plan& plan) {
  // Places in a row of the source are 32-bit numbers, and so are columns behind the last block.
  constexpr i32 kWidestSrc = INT32_MAX / 4, kWidestDst = INT32_MAX - kBlockPixels;
  const bool placesFit = plan.src.width <= kWidestSrc && plan.dst.width <= kWidestDst;
  if (plan.src.width < 4 || !placesFit) return RunPlanPortable(plan);
  Tile tile(plan);
  if (tile.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  Strip strip(plan, tile);
  if (strip.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  strip.FindClearRows();
  tile.ForAll(
      plan, [&](i32 x, i32 width) { strip.Begin(x, width); }, [&](i32 y) { strip.Run(y); });
  return PICTAVO_S_OK;
}
