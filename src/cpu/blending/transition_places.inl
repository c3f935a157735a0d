// How far pixels lie along an edge's way, 0 … 1, and what they weigh: over V and F, the portable
// ones of a single lane too. Every build does the same operations in the same order.

/// So many columns from x on.
inline V ColumnsAt(i64 x) { return Add32(V::All32(static_cast<u32>(x)), Index32()); }
inline F CentresAt(i64 x) { return ToF(ColumnsAt(x)) + F::All(0.5f); }

inline F PlaceAt(const Straight& way, i64 x) {
  return F::All(way.start) + CentresAt(x) * F::All(way.step);
}

inline F PlaceAt(const Blinds& way, i64 x) {
  const F blinds = Max(F::All(8) * PlaceAt(way.whole, x), F::All(0));
  return blinds - ToF(Truncate(blinds));
}

inline F PlaceAt(const Iris& way, i64 x) {
  const F across = CentresAt(x) - F::All(way.middle), down = F::All(way.down);
  return Sqrt(across * across + down * down) * F::All(way.scale);
}

/// The angle of a point clockwise from the top, in turns; within 3e-7.
inline F TurnOf(F across, F down) {
  static constexpr f32 kPolynomial[] = {-0.0018651559f, 0.008379082f,  -0.01852985f,
                                        0.03080291f,    -0.052938568f, 0.15915132f};
  const F x = Abs(across), y = Abs(down), zero = F::All(0);
  const F z = Min(x, y) / Max(Max(x, y), F::All(1e-30f)), w = z * z;
  F ratio = zero;
  for (const f32 coefficient : kPolynomial) ratio = ratio * w + F::All(coefficient);
  F turn = z * ratio;
  turn = Select(y < x, F::All(0.25f) - turn, turn);
  turn = Select(zero < down, F::All(0.5f) - turn, turn);
  return Select(across < zero, F::All(1) - turn, turn);
}

inline F PlaceAt(const Clock& way, i64 x) {
  const F turn = TurnOf(CentresAt(x) - F::All(way.middle), F::All(way.down)) - F::All(way.start);
  return Select(turn < F::All(0), turn + F::All(1), turn);
}

/// A number for each pixel as if by chance, the same everywhere.
inline F PlaceAt(const Grain& way, i64 x) {
  V hash = Mul32(Add32(ColumnsAt(x), V::All32(way.row)), V::All32(0x9E3779B1));
  hash = Mul32(hash ^ ShiftRightU32(hash, 16), V::All32(0x21F0AAAD));
  hash = Mul32(hash ^ ShiftRightU32(hash, 15), V::All32(0x735A2D97));
  return ToF(ShiftRightU32(hash ^ ShiftRightU32(hash, 15), 8)) * F::All(0x1p-24f);
}

/// A smooth band behind the edge. Whole numbers keep it from falling while the edge advances.
inline V WeightsOf(const Edge& edge, F place) {
  const F part = (F::All(edge.reach) - place) * F::All(edge.sharpness);
  const V q = Truncate(Min(Max(part, F::All(0)), F::All(1)) * F::All(1024));
  const V cube = Mul32(Mul32(q, q), Sub32(V::All32(3072), Add32(q, q)));
  const V weight = ShiftRightU32(Add32(cube, V::All32(1 << 21)), 22);
  return weight | ShiftLeft32(weight, 16);
}

template <typename Way>
void FillWeights(u32* weights, i64 first, i64 end, const Edge& edge, const Way& way) {
  i64 x = first;
  for (; x + V::kPixels <= end; x += V::kPixels)
    WeightsOf(edge, PlaceAt(way, x)).Store(reinterpret_cast<u8*>(weights + x));
  if constexpr (V::kPixels > 1) portable::FillWeights(weights, x, end, edge, way);
}

constexpr WeightRows kWeightRows = {FillWeights<Straight>, FillWeights<Blinds>, FillWeights<Iris>,
                                    FillWeights<Clock>, FillWeights<Grain>};
