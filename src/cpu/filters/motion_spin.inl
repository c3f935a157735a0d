// Spin over V, included once for each instruction set.

#include "cpu/filters/motion_heading.inl"

#include "cpu/filters/motion_sums.inl"

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
  Places At(f32 place) const {
    const F a = F::All(place);
    return {Sub32(Truncate(a * sin_ * distance_ + column_), V::All32(static_cast<u32>(spin_.left))),
            Sub32(Truncate(a * cos_ * distance_ + row_), V::All32(static_cast<u32>(spin_.top)))};
  }

 private:
  const Spin& spin_;
  F row_, column_, distance_, cos_, sin_;
};

/// All ones where a place lies before the source, and after it.
struct Sides {
  Sides(V place, i64 size)
      : before(GreaterI32(V::Zero(), place)),
        after(GreaterI32(place, V::All32(static_cast<u32>(size - 1)))) {}

  V Outside() const { return before | after; }

  V before, after;
};

template <bool kAllInside>
V MeanOfStreaks(const Spin& spin, const Streaks& streaks) {
  const V pitch = V::All32(static_cast<u32>(spin.src.pitch));
  const Sums sums = SumAll(spin.count, [&](i64 first, i64 end) {
    Part part;
    for (i64 i = first; i < end; ++i) {
      const Streaks::Places at = streaks.At(spin.places[i]);
      const V places = Add32(Mul32(at.y, pitch), ShiftLeft32(at.x, 2));
      if constexpr (kAllInside) {
        part.Add<false>(Gather32(spin.src.pixels, places));
      } else {
        const V outside =
            Sides(at.x, spin.src.width).Outside() | Sides(at.y, spin.src.height).Outside();
        part.Add<false>(Gather32(spin.src.pixels, places, AndNot(outside, V::All32(~0u))));
      }
    }
    return Sums(part, static_cast<u32>(end - first));
  });
  return sums.Mean(spin.count);
}

/// The mean of the streaks of a V of pixels. A streak is straight, so that what both its ends have
/// in common holds in between.
inline V MeanAt(const Spin& spin, i32 y, i32 x) {
  const Streaks streaks(spin, y, x);
  const Streaks::Places first = streaks.At(0), last = streaks.At(spin.places[spin.count - 1]);
  const Sides firstX(first.x, spin.src.width), lastX(last.x, spin.src.width);
  const Sides firstY(first.y, spin.src.height), lastY(last.y, spin.src.height);
  const V away = (firstX.before & lastX.before) | (firstX.after & lastX.after) |
                 (firstY.before & lastY.before) | (firstY.after & lastY.after);
  if (IsZero(away ^ V::All32(~0u))) return V::Zero();
  const V outside = firstX.Outside() | lastX.Outside() | firstY.Outside() | lastY.Outside();
  return IsZero(outside) ? MeanOfStreaks<true>(spin, streaks) : MeanOfStreaks<false>(spin, streaks);
}

inline void Run(const Spin& spin) {
  const bool placesFit =
      spin.src.height * std::abs(spin.src.pitch) + 4 * spin.src.width <= INT32_MAX;
  if (!placesFit) return RunSpinPortable(spin);
  for (i32 y = 0; y < spin.dst.height; ++y) {
    u8* to = spin.dst.Row(y);
    for (i64 x = 0; x < spin.dst.width; x += V::kPixels)
      StorePixels(MeanAt(spin, y, static_cast<i32>(x)), to + 4 * x, spin.dst.width - x);
  }
}
