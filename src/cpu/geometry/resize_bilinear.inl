// The vector build of resize_bilinear.cpp over V, included once for each instruction set.
//
// A source row is interpolated across once and kept while it serves, so that a destination row is
// one pass over two kept rows. The weights have 16 bits; those of 7 bits do as multiples of 512.

/// a + ((b - a) * weight >> 16) per channel, for weights in both halves of each lane. A weight is
/// taken as a signed number, which is 65536 too small from 0x8000 on: b is then the one to add to.
inline V Between(V a, V b, V weight) {
  const V even = MulHighI16(Sub16(Even(b), Even(a)), weight);
  const V odd = MulHighI16(Sub16(Odd(b), Odd(a)), weight);
  const V nearer = SelectNegative32(weight, b, a);
  return Add8(nearer, (even & V::All16(0xFF)) | ShiftLeft16(odd, 8));
}

/// Dense columns: two vectors of the source row hold all their pixels, one for each half of them.
struct Dense {
  V weights;
  V picks[2];  // of a vector: its columns' pixels, then the pixels right of them
  i32 places[2];

  Dense(const i32* columns, V columnWeights, i64 srcWidth) : weights(columnWeights) {
    constexpr i64 kHalf = V::kPixels / 2;
    for (i64 half = 0; half < 2; ++half, columns += kHalf) {
      places[half] = static_cast<i32>(std::min<i64>(columns[0], srcWidth - V::kPixels));
      u32 lanes[V::kPixels];
      for (i64 i = 0; i < kHalf; ++i) {
        const u32 pick = static_cast<u32>(columns[i] - places[half]);
        lanes[i] = pick;
        lanes[kHalf + i] = pick + 1;
      }
      picks[half] = PicksOf(V::Load(reinterpret_cast<const u8*>(lanes)));
    }
  }

  void Load(const u8* row, V* here, V* right) const {
    const V first = PermutePixels(V::Load(row + 4 * i64{places[0]}), picks[0]);
    const V second = PermutePixels(V::Load(row + 4 * i64{places[1]}), picks[1]);
    *here = FirstHalves(first, second);
    *right = SecondHalves(first, second);
  }
};

/// Columns that lie anywhere.
struct Scattered {
  V weights;
  i32 places[V::kPixels];

  Scattered(const i32* columns, V columnWeights, i64) : weights(columnWeights) {
    std::copy(columns, columns + V::kPixels, places);
  }

  void Load(const u8* row, V* here, V* right) const {
    const PixelPairs pairs = LoadPairs<4>(row, places);
    *here = pairs.here;
    *right = pairs.right;
  }
};

/// Groups of as many columns as a vector has pixels; the last one ends at the last column.
template <typename Group>
void MakeGroups(Group* groups, const Bilinear& b) {
  i32 column = 0;  // source column of destination column x - 1
  for (i64 x = 0; x < b.dst.width; x += V::kPixels, ++groups) {
    for (; x + V::kPixels > b.dst.width; --x) column -= b.columns[x - 1].step;
    i32 columns[V::kPixels];
    u32 weights[V::kPixels];
    for (i64 i = 0; i < V::kPixels; ++i) {
      columns[i] = column += b.columns[x + i].step;
      weights[i] = (u32{b.columns[x + i].fraction} << (16 - b.fractionBits)) * 0x00010001;
    }
    new (groups) Group(columns, V::Load(reinterpret_cast<const u8*>(weights)), b.src.width);
  }
}

/// Walks a row by vectors, the last of which ends at the last pixel.
template <typename Body>
void ForVectors(i64 width, Body body) {
  i64 x = 0;
  for (; x + V::kPixels < width; x += V::kPixels) body(4 * x);
  body(4 * (width - V::kPixels));
}

/// Interpolates a row across.
template <typename Group>
void Across(u8* dst, const u8* row, const Group* groups, const Bilinear& b) {
  const V opaque = V::All32(b.opaque ? kAlpha : 0);
  ForVectors(b.dst.width, [&](i64 at) {
    Prefetch(row + 4 * i64{groups->places[0]}, 64);
    V here, right;
    groups->Load(row, &here, &right);
    (Between(here, right, groups->weights) | opaque).Store(dst + at);
    ++groups;
  });
}

/// Interpolates between two rows.
inline void Down(u8* dst, const u8* top, const u8* bottom, u32 weight, i64 width) {
  const V weights = V::All16(weight);
  ForVectors(width, [=](i64 at) {
    Between(V::Load(top + at), V::Load(bottom + at), weights).Store(dst + at);
  });
}

/// Source rows interpolated across: the last even one and the last odd one asked for.
template <typename Group>
class KeptRows {
 public:
  KeptRows(const Bilinear& b, const Group* groups, u8* memory, i64 size)
      : b_(b), groups_(groups), kept_{memory, memory + size} {}

  bool Holds(i64 row) const { return held_[row & 1] == row; }
  const u8* Row(i64 row) {
    u8* const kept = kept_[row & 1];
    if (!Holds(row)) Make(kept, row);
    held_[row & 1] = row;
    return kept;
  }
  void Make(u8* dst, i64 row) const { Across(dst, b_.src.Row(row), groups_, b_); }

 private:
  const Bilinear& b_;
  const Group* groups_;
  u8* kept_[2];
  i64 held_[2] = {-1, -1};
};

template <typename Group>
u32 ResizeGroups(const Bilinear& b) {
  const i64 groupCount = (b.dst.width + V::kPixels - 1) / V::kPixels;
  const i64 groupBytes = groupCount * i64{sizeof(Group)};
  const i64 rowBytes = groupCount * kVectorBytes + 64;  // a line more keeps powers of two apart
  Scratch scratch(groupBytes + 2 * rowBytes);
  if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  Group* const groups = reinterpret_cast<Group*>(scratch.data());
  MakeGroups(groups, b);
  KeptRows<Group> rows(b, groups, scratch.data() + groupBytes, rowBytes);

  i64 row = 0;
  for (i64 y = 0; y < b.dst.height; ++y) {
    u8* const dst = b.dst.Row(y);
    row += b.rows[y].step;
    const u32 weight = u32{b.rows[y].fraction} << (16 - b.fractionBits);
    if (weight != 0) {
      const u8* const top = rows.Row(row);
      Down(dst, top, rows.Row(row + 1), weight, b.dst.width);
    } else if (rows.Holds(row)) {
      std::memcpy(dst, rows.Row(row), static_cast<size_t>(4 * b.dst.width));
    } else {
      rows.Make(dst, row);
    }
  }
  return PICTAVO_S_OK;
}

inline u32 Resize(const Bilinear& b) {
  const bool dense = b.src.width >= V::kPixels && AreDense(b);
  return dense ? ResizeGroups<Dense>(b) : ResizeGroups<Scattered>(b);
}

constexpr VectorBilinear kBilinear = {V::kPixels, Resize};
