// The vector rows of warp.cpp over V, included once for each instruction set.

#include "cpu/geometry/warp_spots.inl"
#include "cpu/simd/sampler.inl"

/// The places of a vector of pixels in 64-bit lanes, in the order of HalvesOrder32.
struct Places {
  V x[2], y[2];

  V Columns() const { return HighHalves64(x[0], x[1]); }
  V Rows() const { return HighHalves64(y[0], y[1]); }
  SampleWeights Weights() const {
    return {ShiftRightU32(LowHalves64(x[0], x[1]), 24), ShiftRightU32(LowHalves64(y[0], y[1]), 24)};
  }
};

/// The pixel of each lane of places.
struct Order {
  alignas(32) u32 pixel[V::kPixels];

  Order() { HalvesOrder32().Store(reinterpret_cast<u8*>(pixel)); }
};

/// The places along a row, a vector of pixels at a time.
template <typename Row>
class Path {
 public:
  explicit Path(const Row& row)
      : row_(row), first_(D::All(static_cast<double>(row.touched.first))) {
    const F index = ToF(HalvesOrder32());
    halves_[0] = LowToD(index), halves_[1] = HighToD(index);
  }

  Places Next() {
    Places places;
    for (int half = 0; half < 2; ++half) {
      const Spot spot = SpotOf(row_, first_ + halves_[half]);
      places.x[half] = InFixedPoint(spot.x);
      places.y[half] = InFixedPoint(spot.y);
    }
    first_ = first_ + D::All(V::kPixels);
    return places;
  }

 private:
  static V InFixedPoint(D x) {
    return ShiftLeft64(Bits(Reachable(x) + D::All(kRoundsTo256ths)), kFractionAbove256ths);
  }

  const Row& row_;
  D first_, halves_[2];
};

template <>
class Path<AffineRow> {
 public:
  explicit Path(const AffineRow& row)
      : xStep_(StepOfVectors(row.xAcross)), yStep_(StepOfVectors(row.yAcross)) {
    const Place at = row.At(row.touched.first);
    Fill(at.x, row.xAcross, next_.x);
    Fill(at.y, row.yAcross, next_.y);
  }

  Places Next() {
    const Places places = next_;
    for (int half = 0; half < 2; ++half) {
      next_.x[half] = Add64(next_.x[half], xStep_);
      next_.y[half] = Add64(next_.y[half], yStep_);
    }
    return places;
  }

 private:
  /// Modulo 2^64: the places of columns that are not touched may be any.
  static void Fill(i64 first, i64 step, V (&halves)[2]) {
    alignas(32) uint64_t lanes[V::kPixels];
    const Order order;
    for (i64 i = 0; i < V::kPixels; ++i)
      lanes[i] = static_cast<uint64_t>(first) + order.pixel[i] * static_cast<uint64_t>(step);
    const u8* const bytes = reinterpret_cast<const u8*>(lanes);
    halves[0] = V::Load(bytes);
    halves[1] = V::Load(bytes + kVectorBytes);
  }
  static V StepOfVectors(i64 step) {
    V halves[2];
    Fill(static_cast<i64>(static_cast<uint64_t>(step) * V::kPixels), 0, halves);
    return halves[0];
  }

  Places next_;
  V xStep_, yStep_;
};

/// All ones where `low` <= place < `end`.
inline V Within(V place, i64 low, i64 end) {
  const u32 bias = 0x80000000u;  // an unsigned comparison by a signed one
  const V above = Add32(place, V::All32(bias - static_cast<u32>(low)));
  return GreaterI32(V::All32(static_cast<u32>(end - low) ^ bias), above);
}

/// Whether all that the places sample lies in the source.
template <Filter filter>
bool AreInside(const Source& src, const Places& at) {
  const V inside = Within(at.Columns(), 0, src.width - Reach(filter)) &
                   Within(at.Rows(), 0, src.height - Reach(filter));
  return IsZero(inside ^ V::All32(~0u));
}

template <Filter filter>
V SampleInside(const Source& src, const Places& at) {
  const V pitch = V::All32(static_cast<u32>(src.pitch));
  const V places = Add32(Mul32(at.Rows(), pitch), ShiftLeft32(at.Columns(), 2));
  if constexpr (filter == Filter::kNearest) return Gather32(src.pixels, places);
  alignas(32) i32 stored[V::kPixels];
  i32 loaded[V::kPixels];
  places.Store(reinterpret_cast<u8*>(stored));
  // Through memory indeed: taking lanes out of vectors would cost more than the loads of pixels.
  for (int i = 0; i < V::kPixels; ++i) loaded[i] = static_cast<const volatile i32&>(stored[i]);
  const PixelPairs top = LoadPairs(src.pixels, loaded);
  const PixelPairs bottom = LoadPairs(src.pixels + src.pitch, loaded);
  return SampleRounded({top.here, top.right, bottom.here, bottom.right}, at.Weights());
}

/// Of places that are not all inside.
template <Filter filter>
V SampleAtEdges(const Source& src, const Places& at) {
  constexpr i64 reach = Reach(filter);
  if (IsZero(Within(at.Columns(), -reach, src.width) & Within(at.Rows(), -reach, src.height)))
    return V::Zero();
  alignas(32) i64 x[V::kPixels], y[V::kPixels];
  alignas(32) u8 pixels[kVectorBytes];
  for (int half = 0; half < 2; ++half) {
    at.x[half].Store(reinterpret_cast<u8*>(x) + half * kVectorBytes);
    at.y[half].Store(reinterpret_cast<u8*>(y) + half * kVectorBytes);
  }
  const Order order;
  for (i64 i = 0; i < V::kPixels; ++i)
    SamplePlace<filter>(pixels + 4 * order.pixel[i], src, {x[i], y[i]});
  return V::Load(pixels);
}

template <Filter filter, typename Row>
void WarpRow(u8* out, const Source& src, const Row& row) {
  Path<Row> path(row);
  const Span touched = row.touched, whole = row.whole;
  for (i64 x = touched.first; x < touched.end; x += V::kPixels) {
    const Places at = path.Next();
    const bool isInside =
        (x >= whole.first && x + V::kPixels <= whole.end) || AreInside<filter>(src, at);
    const V pixels = isInside ? SampleInside<filter>(src, at) : SampleAtEdges<filter>(src, at);
    if (x + V::kPixels <= touched.end) {
      pixels.Store(out + 4 * x);
    } else {
      alignas(32) u8 last[kVectorBytes];
      pixels.Store(last);
      std::memcpy(out + 4 * x, last, static_cast<size_t>(4 * (touched.end - x)));
    }
  }
}
