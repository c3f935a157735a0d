// The vector rows of grading.cpp over V, included once for each instruction set.

#include "cpu/simd/byte_table.inl"

struct Curved {
  ByteTable table;
  V mask;

  V operator()(V p) const { return Select(mask, table[p], p); }
};

inline void CurveRow(u8* row, i64 width, const Curve& curve) {
  ApplyToRow(Curved{ByteTable(curve.table), V::All32(curve.mask)}, row, row, width);
}

/// A colour's weights, of blue and red and of green, and what is added. Those of more than 16 bits
/// come as sixteens and the rest.
template <bool wide>
struct ColourSum {
  V blueRed, green, constant;
  V blueRedSixteens, greenSixteens;

  ColourSum(const ColourMatrix& matrix, int colour) {
    const i32(&w)[3] = matrix.weights[colour];
    const auto rest = [](i32 weight) { return wide ? weight & 15 : weight; };
    blueRed = Pair16(rest(w[0]), rest(w[2]));
    green = Pair16(rest(w[1]), 0);
    constant = V::All32(static_cast<u32>(matrix.constants[colour]));
    blueRedSixteens = Pair16(w[0] >> 4, w[2] >> 4);
    greenSixteens = Pair16(w[1] >> 4, 0);
  }

  V operator()(V even, V odd) const {
    V sum = Add32(DotProduct32(even, blueRed), Add32(DotProduct32(odd, green), constant));
    if constexpr (wide) {
      const V sixteens =
          Add32(DotProduct32(even, blueRedSixteens), DotProduct32(odd, greenSixteens));
      sum = Add32(sum, ShiftLeft32(sixteens, 4));
    }
    return ShiftRightI32(sum, 12);
  }
};

template <bool wide>
struct Graded {
  ColourSum<wide> blue, green, red;

  explicit Graded(const ColourMatrix& matrix) : blue(matrix, 0), green(matrix, 1), red(matrix, 2) {}

  V operator()(V p) const {
    const V even = Even(p), odd = Odd(p);
    return JoinChannels(blue(even, odd), green(even, odd), red(even, odd), ShiftRightU32(p, 24));
  }
};

template <bool wide>
void MatrixRow(u8* row, i64 width, const ColourMatrix& matrix) {
  ApplyToRow(Graded<wide>(matrix), row, row, width);
}

/// The four entries around each pixel's colour, by their places in the table, and their weights,
/// those of the first and second, and of the third and fourth, in the halves of a lane.
struct Corners {
  V places[4];
  V nearWeights, farWeights;
};

class Mapped {
 public:
  explicit Mapped(const ColourTable& table)
      : entries_(reinterpret_cast<const u8*>(table.entries)),
        sizeLessOne_(V::All16(static_cast<u32>(table.size - 1))),
        lastCell_(V::All16(static_cast<u32>(table.size - 2))),
        blueStep_(V::All32(static_cast<u32>(table.steps[0]))),
        greenStep_(V::All32(static_cast<u32>(table.steps[1]))),
        blueRedSteps_(Pair16(table.steps[0], 1)),
        weight_(V::All16(static_cast<u32>(table.intensity))) {}

  V operator()(V p) const {
    const Corners corners = CornersOf(p);
    V front[2][2], back[2][2];
    for (int i = 0; i < 2; ++i) {
      Gather64(entries_, corners.places[i], front[i]);
      Gather64(entries_, corners.places[i + 2], back[i]);
    }
    const V mapped = PackU8({Weighted<0>(InterleaveFirst16(front[0][0], front[1][0]),
                                         InterleaveFirst16(back[0][0], back[1][0]), corners),
                             Weighted<1>(InterleaveSecond16(front[0][0], front[1][0]),
                                         InterleaveSecond16(back[0][0], back[1][0]), corners),
                             Weighted<2>(InterleaveFirst16(front[0][1], front[1][1]),
                                         InterleaveFirst16(back[0][1], back[1][1]), corners),
                             Weighted<3>(InterleaveSecond16(front[0][1], front[1][1]),
                                         InterleaveSecond16(back[0][1], back[1][1]), corners)});
    return Select(V::All32(kAlpha), p, Faded(mapped, p));
  }

 private:
  /// Numbers of 32 bits hold the distance along a side and, below it, the side's step, so that they
  /// come in their order together. An order of equal distances is as good as another: the entry
  /// between them has no weight.
  Corners CornersOf(V p) const {
    V distances[2], cells[2];
    for (int i = 0; i < 2; ++i) {
      const V position = Mul16(i == 0 ? Even(p) : Odd(p), sizeLessOne_);
      const V quotient =
          ShiftRightU16(Add16(Add16(position, ShiftRightU16(position, 8)), V::All16(1)), 8);
      cells[i] = MinI16(quotient, lastCell_);
      distances[i] = Sub16(position, Mul16(cells[i], V::All16(255)));
    }
    const V blue = ShiftLeft32(distances[0], 16) | blueStep_;
    const V green = ShiftLeft32(distances[1], 16) | greenStep_;
    const V red = JoinHalves(V::All32(1), distances[0]);
    const V more = MaxI32(blue, green), less = MinI32(blue, green), rest = MinI32(more, red);
    const V most = MaxI32(more, red), middle = MaxI32(less, rest), least = MinI32(less, rest);

    const V low = V::All32(0xFFFF);
    const V steps = Add32(Add32(blueStep_, greenStep_), V::All32(1));
    Corners corners;
    corners.places[0] =
        Add32(DotProduct32(cells[0], blueRedSteps_), DotProduct32(cells[1], greenStep_));
    corners.places[3] = Add32(corners.places[0], steps);
    corners.places[1] = Add32(corners.places[0], most & low);
    corners.places[2] = Sub32(corners.places[3], least & low);
    corners.nearWeights =
        JoinHalves(Sub16(V::All32(255), ShiftRightU32(most, 16)), Sub16(most, middle));
    corners.farWeights = JoinHalves(ShiftRightU32(Sub16(middle, least), 16), least);
    return corners;
  }

  /// A pixel's colour of each 128 bits, as bytes in four lanes: sums of at most 255 * 65535, made
  /// of signed entries, divided by 65535.
  template <int pixel>
  static V Weighted(V front, V back, const Corners& corners) {
    const V sign = V::All16(0x8000);
    const V sum = Add32(DotProduct32(front ^ sign, Repeat32<pixel>(corners.nearWeights)),
                        DotProduct32(back ^ sign, Repeat32<pixel>(corners.farWeights)));
    const V rounded = Add32(sum, V::All32(255 * 32768 + 32768));
    return ShiftRightU32(Add32(rounded, ShiftRightU32(rounded, 16)), 16);
  }

  V Faded(V mapped, V p) const {
    const V rest = Sub16(V::All16(256), weight_), half = V::All16(128);
    const auto mix = [&](V to, V from) {
      return Add16(Add16(Mul16(to, weight_), Mul16(from, rest)), half);
    };
    return ShiftRightU16(mix(Even(mapped), Even(p)), 8) |
           (mix(Odd(mapped), Odd(p)) & V::All16(0xFF00));
  }

  const u8* entries_;
  V sizeLessOne_, lastCell_, blueStep_, greenStep_, blueRedSteps_, weight_;
};

inline void TableRow(u8* dst, const u8* src, i64 width, const ColourTable& table) {
  ApplyToRow(Mapped(table), dst, src, width);
}
