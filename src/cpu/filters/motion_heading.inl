// The direction in which a pixel lies from the centre, over D: a double, or a vector of them.

struct Heading {
  D sin, cos;
};

/// The sine and the cosine of the angle of u and v, whole numbers, when that angle is rounded to
/// single precision.
inline Heading HeadingOf(D u, D v) {
  // By how much the rounded angle turns further than the exact one, whose sine and cosine follow
  // from u and v; for turns so small the sine is the angle and the cosine 1.
  const D angle = Arctangent(u, v);
  const D turn = RoundToSingle(angle) - angle;
  const D scale = D::All(1) / Max(Sqrt(u * u + v * v), D::All(1));
  const D sin = u * scale, cos = v * scale;
  return {sin + cos * turn, cos - sin * turn};
}
