// The direction in which a pixel lies from the centre, over D: a double, or a vector of them. It is
// worked out here and not by the C library, whose last digits differ between systems: every build
// does these operations in this order.

struct Heading {
  D sin, cos;
};

/// The sine and the cosine of atan2(u, v) when that angle is rounded to single precision. u and v
/// are whole numbers.
inline Heading HeadingOf(D u, D v) {
  const D pi = All(3.14159265358979324);
  const D low = Min(Abs(u), Abs(v)), high = Max(Abs(u), Abs(v));
  // The arc tangent of low / high, from 0 or from an eighth turn, whichever is nearer.
  const auto isFar = All(0.41421356237309505) * high < low;
  const D z = Select(isFar, low - high, low) / Max(Select(isFar, high + low, high), All(1));
  const D w = z * z;
  // Within 1e-15 of atan(z) / z up to a sixteenth turn.
  static constexpr double kPolynomial[] = {
      -0.02531472973194233,  0.050246342455960433, -0.065059441555033107, 0.076735290984678265,
      -0.090895293573625549, 0.11111048820585145,  -0.14285712660659054,  0.19999999978376869,
      -0.33333333333221341,  0.99999999999999904};
  D ratio = All(0);
  for (const double coefficient : kPolynomial) ratio = ratio * w + All(coefficient);
  D angle = z * ratio;
  angle = Select(isFar, angle + pi * All(0.25), angle);
  angle = Select(Abs(v) < Abs(u), pi * All(0.5) - angle, angle);
  angle = Select(v < All(0), pi - angle, angle);
  angle = Select(u < All(0), All(0) - angle, angle);

  // By how much the rounded angle turns further than the exact one, whose sine and cosine follow
  // from u and v; for turns so small the sine is the angle and the cosine 1.
  const D turn = RoundToSingle(angle) - angle;
  const D scale = All(1) / Max(Sqrt(u * u + v * v), All(1));
  const D sin = u * scale, cos = v * scale;
  return {sin + cos * turn, cos - sin * turn};
}
