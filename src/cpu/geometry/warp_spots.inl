// Where columns of a row lie in the source, over D, a double or a vector of them: every build does
// the same operations in the same order.

struct Spot {
  D x, y;
};

inline Spot SpotOf(const TiltRow& row, D column) {
  const D u = column - D::All(row.centre);
  const D w = u * D::All(row.wAcross) + D::All(row.w);
  const D nearest = D::All(0x1p-20);
  const D inverse = D::All(1) / Max(w, nearest);
  const D x = (u * D::All(row.xAcross) + D::All(row.x)) * inverse + D::All(row.offsetX);
  const D y = (u * D::All(row.yAcross) + D::All(row.y)) * inverse + D::All(row.offsetY);
  return {Select(nearest < w, x, D::All(-kFar)), y};
}

inline Spot SpotOf(const SwirlRow& row, D column) {
  const D u = column - D::All(row.centre), v = D::All(row.v);
  const D t = Max(D::All(1) - Sqrt(u * u + v * v) * D::All(row.inverseRadius), D::All(0));
  const SineCosine turn = SineCosineOf(D::All(row.angle) * (t * t));
  return {u * turn.cos + v * turn.sin + D::All(row.offsetX),
          v * turn.cos - u * turn.sin + D::All(row.offsetY)};
}

/// What lies farther away is as good as that.
inline D Reachable(D x) { return Max(Min(x, D::All(kFar)), D::All(-kFar)); }
