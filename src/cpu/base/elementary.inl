// Elementary functions over D, a double or a vector of them. Every build does the same operations
// in the same order, so that the digits do not hang on the system, the compiler or the level.

/// To the nearest whole number, of what is below 2^51.
inline D Round(D x) {
  const D magic = D::All(6755399441055744.0);  // 1.5 * 2^52: what is added has no fraction left
  return x + magic - magic;
}

// 1 / n!
constexpr double kInverseFactorials[] = {1.0,
                                         1.0,
                                         1.0 / 2,
                                         1.0 / 6,
                                         1.0 / 24,
                                         1.0 / 120,
                                         1.0 / 720,
                                         1.0 / 5040,
                                         1.0 / 40320,
                                         1.0 / 362880,
                                         1.0 / 3628800,
                                         1.0 / 39916800,
                                         1.0 / 479001600,
                                         1.0 / 6227020800,
                                         1.0 / 87178291200,
                                         1.0 / 1307674368000,
                                         1.0 / 20922789888000};

struct SineCosine {
  D sin, cos;
};

/// Of an angle so many quarter turns further, a whole number.
inline SineCosine Turned(const SineCosine& angle, D quarters) {
  const D turned = quarters - Round(quarters * D::All(0.25)) * D::All(4);  // -2 to 2
  const auto isOdd = Abs(Abs(turned) - D::All(1)) < D::All(0.5);
  const auto sinFlips = D::All(1) < Abs(turned - D::All(0.5));  // -2, -1 and 2
  const auto cosFlips = D::All(1) < Abs(turned + D::All(0.5));  // -2, 1 and 2
  const D s = Select(isOdd, angle.cos, angle.sin), c = Select(isOdd, angle.sin, angle.cos);
  return {Select(sinFlips, D::All(0) - s, s), Select(cosFlips, D::All(0) - c, c)};
}

/// Of an angle in radians, up to six million turns.
inline SineCosine SineCosineOf(D angle) {
  // The rest from the nearest quarter turn, whose first parts have few enough digits for exact
  // products.
  const D quarters = Round(angle * D::All(0.63661977236758134));
  const D x = angle - quarters * D::All(0x1.921fb54p+0) - quarters * D::All(0x1.10b461p-30) -
              quarters * D::All(0x1.a62633145c06ep-58);
  const D w = x * x;
  D sin = D::All(0), cos = D::All(0);
  for (size_t n = 15; n > 1; n -= 2) sin = D::All(kInverseFactorials[n]) - w * sin;
  for (size_t n = 16; n > 2; n -= 2) cos = D::All(kInverseFactorials[n]) - w * cos;
  sin = x - x * (w * sin);
  cos = D::All(1) - w * (D::All(0.5) - w * cos);

  return Turned({sin, cos}, quarters);
}

/// Of an angle in degrees, up to 2^45. Those of quarter turns are exact.
inline SineCosine SineCosineOfDegrees(D angle) {
  const D quarters = Round(angle * D::All(1.0 / 90));
  const D rest = angle - quarters * D::All(90);
  return Turned(SineCosineOf(rest * D::All(0.017453292519943296)), quarters);
}

/// The angle of a point that lies v to the right and u upwards, from -pi to pi, which has the sign
/// of u. 0 for a point at 0. Not both may be infinite.
inline D Arctangent(D u, D v) {
  const D pi = D::All(3.14159265358979324);
  const D low = Min(Abs(u), Abs(v)), high = Max(Abs(u), Abs(v));
  // The arc tangent of low / high, from 0 or from an eighth turn, whichever is nearer.
  const auto isFar = D::All(0.41421356237309505) * high < low;
  const D z =
      Select(isFar, low - high, low) / Max(Select(isFar, high + low, high), D::All(0x1p-1000));
  const D w = z * z;
  // Within 1e-15 of atan(z) / z up to a sixteenth turn.
  static constexpr double kPolynomial[] = {
      -0.02531472973194233,  0.050246342455960433, -0.065059441555033107, 0.076735290984678265,
      -0.090895293573625549, 0.11111048820585145,  -0.14285712660659054,  0.19999999978376869,
      -0.33333333333221341,  0.99999999999999904};
  D ratio = D::All(0);
  for (const double coefficient : kPolynomial) ratio = ratio * w + D::All(coefficient);
  D angle = z * ratio;
  angle = Select(isFar, angle + pi * D::All(0.25), angle);
  angle = Select(Abs(v) < Abs(u), pi * D::All(0.5) - angle, angle);
  angle = Select(v < D::All(0), pi - angle, angle);
  return WithSign(angle, u);
}

/// e to the power of x + low, where low is small beside x.
inline D Exponential(D x, D low = D::All(0)) {
  x = Max(Min(x, D::All(720)), D::All(-760));
  const D twos = Round(x * D::All(1.4426950408889634));
  const D rest = x - twos * D::All(0x1.62e42feep-1) - twos * D::All(0x1.a39ef35793c76p-33) + low;
  D sum = D::All(0);
  for (size_t n = 14; n > 0; --n) sum = D::All(kInverseFactorials[n]) + rest * sum;
  const D half = Round(twos * D::All(0.5));  // 2^twos itself may be too large or too small
  return (D::All(1) + rest * sum) * PowerOfTwo(half) * PowerOfTwo(twos - half);
}

/// What rounding took from the product of a and b.
inline D LostOfProduct(D a, D b) {
  const D split = D::All(134217729);  // 2^27 + 1: halves of the digits
  const D aHigh = a * split - (a * split - a), aLow = a - aHigh;
  const D bHigh = b * split - (b * split - b), bLow = b - bHigh;
  return aHigh * bHigh - a * b + aHigh * bLow + aLow * bHigh + aLow * bLow;
}

/// Of a base from 0 to 1e300, below 1e-300 taken as 0, and an exponent above 0. The logarithm has
/// some digits more than a double, which large exponents bring up.
inline D Power(D base, D exponent) {
  D twos = Exponent(base);
  D m = base * PowerOfTwo(D::All(0) - twos);
  const auto isUpper = D::All(1.4142135623730951) < m;
  m = Select(isUpper, m * D::All(0.5), m);
  twos = Select(isUpper, twos + D::All(1), twos);
  // log m = 2 s + 2 s^3 / 3 + 2 s^5 / 5 + … of s = (m - 1) / (m + 1).
  const D above = m - D::All(1), sum = m + D::All(1), sumLow = m - (sum - D::All(1));
  const D s = above / sum, w = s * s;
  const D sLow = (above - s * sum - LostOfProduct(s, sum) - s * sumLow) / sum;
  D series = D::All(0);
  for (int n = 21; n > 1; n -= 2) series = series * w + D::All(2.0 / n);
  const D first = twos * D::All(0x1.62e42feep-1), second = s + s, log = first + second;
  const D lost = first - (log - (log - first)) + (second - (log - first));
  const D low = lost + (twos * D::All(0x1.a39ef35793c76p-33) + sLow + sLow + series * w * s);
  const D high = log + low, rest = low - (high - log), x = exponent * high;
  const D power = Exponential(x, LostOfProduct(exponent, high) + exponent * rest);
  return Select(base < D::All(1e-300), D::All(0), power);
}
