#include "cpu/measuring/measure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "cpu/base/builds.h"
#include "cpu/base/luma.h"
#include "cpu/base/picture.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"

namespace pictavo::cpu {
namespace {

/// What a pixel counts for: its bytes by weights out of 256, the nearest; one byte as it is.
struct Weights {
  i32 byte[4];

  i32 Of(const u8* pixel) const {
    i32 sum = 128;
    for (size_t i = 0; i < 4; ++i) sum += pixel[i] * byte[i];
    return sum >> 8;
  }
};

Weights WeightsOf(i32 channel) {
  if (channel < 0) return {{i32{kLumaOfBlue}, i32{kLumaOfGreen}, i32{kLumaOfRed}, 0}};
  Weights weights = {};
  weights.byte[channel] = 256;
  return weights;
}

/// A row and those beside it; at an edge, the row itself.
struct Rows {
  const u8 *above, *row, *below;
  i64 width;

  Rows(const Source& picture, i64 y)
      : above(picture.Row(std::max<i64>(y - 1, 0))),
        row(picture.Row(y)),
        below(picture.Row(std::min(y + 1, picture.height - 1))),
        width(picture.width) {}
};

/// Sums of numbers and of their squares.
struct Sums {
  i64 first = 0, second = 0;

  /// Of so many numbers. The multiples of the whole part of their mean come off exactly, so that
  /// what rounding takes is small beside the variance.
  double Variance(i64 count) const {
    const i64 whole = first / count, rest = first - whole * count;
    const double n = static_cast<double>(count), mean = static_cast<double>(rest) / n;
    const i64 squares = second - 2 * whole * first + whole * whole * count;
    return static_cast<double>(squares) / n - mean * mean;
  }
};

using NumberFn = i32(const Rows& rows, const Weights& weights, i64 x);

i32 Plain(const Rows& rows, const Weights& weights, i64 x) { return weights.Of(rows.row + 4 * x); }

i32 Laplacian(const Rows& rows, const Weights& weights, i64 x) {
  const auto value = [&](const u8* row, i64 at) {
    return weights.Of(row + 4 * std::clamp<i64>(at, 0, rows.width - 1));
  };
  return 4 * value(rows.row, x) - value(rows.above, x) - value(rows.below, x) -
         value(rows.row, x - 1) - value(rows.row, x + 1);
}

template <NumberFn* number>
void SumPixels(const Rows& rows, const Weights& weights, i64 first, i64 end, Sums* sums) {
  for (i64 x = first; x < end; ++x) {
    const i64 n = number(rows, weights, x);
    sums->first += n;
    sums->second += n * n;
  }
}

using SumRowFn = void(const Rows& rows, const Weights& weights, Sums* sums);

template <NumberFn* number>
void SumRow(const Rows& rows, const Weights& weights, Sums* sums) {
  SumPixels<number>(rows, weights, 0, rows.width, sums);
}

/// How often neighbours in a row lie so far apart. Differences beside each other count in different
/// tables, so that equal ones do not wait for each other's sum.
std::array<i64, 256> CountSteps(const Source& picture, const Weights& weights) {
  std::array<std::array<u32, 256>, 4> tables = {};
  for (i64 y = 0; y < picture.height; ++y) {
    const u8* const row = picture.Row(y);
    i32 last = weights.Of(row);
    for (i64 x = 1; x < picture.width; ++x) {
      const i32 value = weights.Of(row + 4 * x);
      ++tables[static_cast<size_t>(x % 4)][static_cast<size_t>(std::abs(value - last))];
      last = value;
    }
  }
  std::array<i64, 256> counts = {};
  for (const auto& table : tables)
    for (size_t i = 0; i < counts.size(); ++i) counts[i] += table[i];
  return counts;
}

/// The number at a place of the row that the counted ones make.
double NumberAt(const std::array<i64, 256>& counts, i64 place) {
  size_t i = 0;
  for (; place >= counts[i]; ++i) place -= counts[i];
  return static_cast<double>(i);
}

double Noise(const Source& picture, const Weights& weights) {
  const i64 steps = (picture.width - 1) * picture.height;
  if (steps == 0) return 0;
  const auto counts = CountSteps(picture, weights);
  const double median = (NumberAt(counts, (steps - 1) / 2) + NumberAt(counts, steps / 2)) / 2;
  return median * (1.4826 * 0.70710678118654752);
}

}  // namespace

#define KERNELS "cpu/measuring/measure_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#undef KERNELS

namespace {

template <NumberFn* number, SumRowFn* sse2Row, SumRowFn* avx2Row>
Sums SumPicture(i32 level, const Source& picture, const Weights& weights) {
  static constexpr Builds<SumRowFn*> kBuilds = {
      .portable = SumRow<number>, .sse2 = sse2Row, .avx2 = avx2Row};
  SumRowFn* const sumRow = kBuilds.For(level);
  Sums sums;
  for (i64 y = 0; y < picture.height; ++y) sumRow(Rows(picture, y), weights, &sums);
  return sums;
}

double Measure(i32 level, const Source& picture, const Weights& weights, u32 measure) {
  if (measure == PICTAVO_MEASURE_NOISE) return Noise(picture, weights);
  const i64 count = picture.width * picture.height;
  if (measure == PICTAVO_MEASURE_SHARPNESS) {
    return SumPicture<Laplacian, sse2::VectorSumRow<sse2::LaplacianOf, Laplacian>,
                      avx2::VectorSumRow<avx2::LaplacianOf, Laplacian>>(level, picture, weights)
        .Variance(count);
  }
  const Sums sums = SumPicture<Plain, sse2::VectorSumRow<sse2::PlainOf, Plain>,
                               avx2::VectorSumRow<avx2::PlainOf, Plain>>(level, picture, weights);
  if (measure == PICTAVO_MEASURE_DEVIATION) return std::sqrt(sums.Variance(count));
  return static_cast<double>(sums.first) / static_cast<double>(count);
}

}  // namespace

u32 MeasurePicture(i32 level, const u8* buffer, i32 width, i32 height, i32 pitch, i32 channel,
                   u32 measure, f32* result) noexcept {
  if (result == nullptr) return PICTAVO_E_POINTER;
  const Source picture = {buffer, width, height, pitch};
  const bool hold = channel >= -1 && channel <= 3 && measure <= PICTAVO_MEASURE_NOISE;
  if (const u32 code = CheckWith(hold, picture); code != PICTAVO_S_OK) return code;
  *result = static_cast<f32>(Measure(level, picture, WeightsOf(channel), measure));
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
