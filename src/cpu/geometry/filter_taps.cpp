#include "cpu/geometry/filter_taps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

#include "cpu/base/numbers.h"

namespace pictavo::cpu {
namespace {

/// 1 / (2 n + 1)!, the series of sin(x) / x.
constexpr auto kSeries = [] {
  std::array<double, 12> series = {1};
  for (size_t n = 1; n < series.size(); ++n)
    series[n] = series[n - 1] / static_cast<double>(2 * n * (2 * n + 1));
  return series;
}();

// The filters at x >= 0. They need not sum to 1: the weights of each pixel are brought to that.

double Triangle(double x) { return std::max(1 - x, 0.0); }

double CatmullRom(double x) {
  if (x < 1) return (1.5 * x - 2.5) * x * x + 1;
  return x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

double Mitchell(double x) {
  if (x < 1) return (7 * x - 12) * x * x + 16.0 / 3;
  return x < 2 ? ((12 - 7.0 / 3 * x) * x - 20) * x + 32.0 / 3 : 0;
}

/// (sin(pi x) / (pi x)) (sin(pi x / 3) / (pi x / 3)). With s = sin(pi x / 3) the first sine is
/// s (3 - 4 s^2), so that one series does, which is within 1e-11 up to pi.
double Lanczos(double x) {
  constexpr double kThird = 3.14159265358979324 / 3;
  const double w = kThird * kThird * x * x;
  double sinc = kSeries[11];
  for (size_t n = 11; n-- > 0;) sinc = kSeries[n] - w * sinc;
  const double square = sinc * sinc, lanczos = square * (1 - 4.0 / 3 * w * square);
  return x < 3 ? lanczos : 0;
}

/// The weights of pixels that lie one step apart, the first at x: in pieces that numbers of 32 bits
/// count, which vectors convert.
template <double kFilter(double)>
void Weigh(double* weights, i64 count, double x, double step) {
  constexpr i32 kPiece = 1 << 20;
  for (; count > 0; count -= kPiece, weights += kPiece, x += kPiece * step) {
    const i32 piece = static_cast<i32>(std::min<i64>(count, kPiece));
    for (i32 i = 0; i < piece; ++i) weights[i] = kFilter(std::abs(x + i * step));
  }
}

struct Filter {
  double reach;  // in pixels of the coarser side
  void (*weigh)(double* weights, i64 count, double x, double step);
};
constexpr Filter kFilters[] = {
    {1, Weigh<Triangle>}, {2, Weigh<CatmullRom>}, {2, Weigh<Mitchell>}, {3, Weigh<Lanczos>}};

i64 Floor(double x) { return static_cast<i64>(std::floor(x)); }
i64 Ceil(double x) { return static_cast<i64>(std::ceil(x)); }

}  // namespace

FilterTaps::FilterTaps(i64 srcSize, i64 dstSize, Stretch stretch, u32 filter, i64 align,
                       bool isExact)
    : srcSize_(srcSize), dstSize_(dstSize), stretch_(stretch), align_(align), isExact_(isExact) {
  const double step = stretch.length / static_cast<double>(dstSize);
  isCopy_ = step == 1 && stretch.start == std::floor(stretch.start);
  filter_ = isCopy_ ? PICTAVO_FILTER_TRIANGLE : filter;
  widening_ = std::max(step, 1.0);
  reached_ = Ceil(2 * kFilters[filter_].reach * widening_);
  bool isAligned = true;
  for (i64 x = 0; align > 1 && isAligned && x < dstSize; ++x) isAligned = Begin(x) % align == 0;
  // At least four, which vector builds load at once.
  taps_ = std::min(RoundUp(reached_ + (isAligned ? 0 : align - 1), 2), RoundUp(srcSize, 2));
  taps_ = std::max<i64>(taps_, 4);
  // Of a whole side, pixels a period apart lie alike between the source's.
  if (stretch.start == 0 && stretch.length == static_cast<double>(srcSize)) {
    const i64 common = std::gcd(srcSize, dstSize);
    period_ = dstSize / common;
    srcPeriod_ = srcSize / common;
  }
  // Wider filters have smaller weights, of which more bits fit a word.
  bits_ = step >= 4 ? 16 : 14;
}

i64 FilterTaps::Bytes() const {
  const i64 tapBytes = 2 + (isExact_ ? 4 : 0);
  return RoundUp(dstSize_ * (4 + taps_ * tapBytes) + (reached_ + taps_ + 1) * 8, 64);
}

void FilterTaps::Make(u8* memory) {
  double* const weights = reinterpret_cast<double*>(memory);
  first_ = reinterpret_cast<i32*>(weights + reached_ + taps_);
  words_ = reinterpret_cast<u32*>(first_ + dstSize_);
  singles_ = words_ + dstSize_ * taps_ / 2;
  for (i64 x = 0; x < dstSize_; ++x) MakePixel(x, weights);
}

/// Takes the weights of the pixel a period before, where neither reaches beyond an edge.
bool FilterTaps::Repeat(i64 x, i64 begin) {
  const i64 before = x - period_;
  if (period_ == 0 || before < 0 || begin - srcPeriod_ < 0 || begin + reached_ > srcSize_)
    return false;
  if (first_[x] - first_[before] != srcPeriod_) return false;
  // By bytes, since Store() writes them as numbers of other types.
  const size_t taps = static_cast<size_t>(taps_);
  std::memcpy(words_ + x * taps_ / 2, Words(before), taps * sizeof(i16));
  if (isExact_) std::memcpy(singles_ + x * taps_, Singles(before), taps * sizeof(f32));
  return true;
}

double FilterTaps::Center(i64 x) const {
  return stretch_.start +
         (static_cast<double>(x) + 0.5) * stretch_.length / static_cast<double>(dstSize_);
}

/// The first pixel under the filter, also beyond the edge.
i64 FilterTaps::Begin(i64 x) const {
  return Floor(Center(x) - kFilters[filter_].reach * widening_ + 0.5);
}

void FilterTaps::MakePixel(i64 x, double* weights) {
  const i64 begin = Begin(x);
  const i64 limit = RoundUp(std::max<i64>(srcSize_ - taps_, 0), align_);
  const i64 first = std::clamp<i64>(begin, 0, limit) / align_ * align_;
  first_[x] = static_cast<i32>(first);
  if (Repeat(x, begin)) return;

  const double step = 1 / widening_;
  kFilters[filter_].weigh(weights, reached_, (static_cast<double>(begin) + 0.5 - Center(x)) * step,
                          step);
  double* const folded = weights + reached_;
  std::fill(folded, folded + taps_, 0.0);
  // Pixels beyond an edge are the edge's.
  for (i64 i = 0; i < reached_; ++i)
    folded[std::clamp<i64>(begin + i, 0, srcSize_ - 1) - first] += weights[i];
  Store(x, folded);
}

/// Rounds the sums of the first weights, so that the whole sum is exact and no error adds up.
void FilterTaps::Store(i64 x, const double* weights) {
  double sum = 0;
  for (i64 i = 0; i < taps_; ++i) sum += weights[i];
  const double unit = static_cast<double>(1 << bits_) / sum;
  double part = 0.5 + 0x1p20;  // positive, so that conversion rounds down
  i32 before = 1 << 20;
  i16* const words = reinterpret_cast<i16*>(words_ + x * taps_ / 2);
  for (i64 i = 0; i < taps_; ++i) {
    part += weights[i] * unit;
    words[i] = static_cast<i16>(static_cast<i32>(part) - before);
    before = static_cast<i32>(part);
  }
  if (!isExact_) return;
  f32* const singles = reinterpret_cast<f32*>(singles_ + x * taps_);
  for (i64 i = 0; i < taps_; ++i) singles[i] = static_cast<f32>(weights[i] / sum);
}

}  // namespace pictavo::cpu
