#include "cpu/filters/gauss_windows.h"

#include <algorithm>
#include <cmath>

#include "cpu/base/elementary.h"
#include "cpu/base/numbers.h"

namespace pictavo::cpu::gauss {
namespace {

constexpr double kWidestDirect = 2;  // sigma

i64 FloorToI64(double x) {
  const i64 whole = static_cast<i64>(x);
  return static_cast<double>(whole) > x ? whole - 1 : whole;
}
i64 CeilToI64(double x) { return -FloorToI64(-x); }

i64 Even(i64 count) { return RoundUp(count, 2); }

}  // namespace

i64 PixelAt(i64 place, i64 length, u32 edges) {
  if (place >= 0 && place < length) return place;
  if (edges == PICTAVO_EDGES_CLEAR) return -1;
  if (edges == PICTAVO_EDGES_REPLICATE) return place < 0 ? 0 : length - 1;
  const i64 turned = place % (2 * length), inside = turned < 0 ? turned + 2 * length : turned;
  return inside < length ? inside : 2 * length - 1 - inside;
}

/// A Gaussian around a place on a line, cut where it hardly counts any more.
struct Direction::Bell {
  double centre, sigma, reach;
  i64 length;
  u32 edges;

  i64 First() const { return CeilToI64(centre - reach); }
  i64 Last() const { return FloorToI64(centre + reach); }

  /// The pixels that count: from the first to before the second.
  struct Range {
    i64 first, end;
    i64 Count() const { return std::max<i64>(end - first, 0); }
  };
  Range Pixels() const {
    i64 first = First(), last = Last();
    if (edges == PICTAVO_EDGES_MIRROR) {
      if (First() < 0) last = std::max(last, -1 - First());
      if (Last() >= length) first = std::min(first, 2 * length - 1 - Last());
    } else if (edges == PICTAVO_EDGES_REPLICATE) {
      first = std::min(first, length - 1);
      last = std::max<i64>(last, 0);
    }
    return {std::max<i64>(first, 0), std::min(last + 1, length)};
  }

  /// Calls tap(place, weight) for each place within reach, with 1 for the middle one. The weights
  /// follow each other by quotients, which form a geometric sequence.
  template <typename Tap>
  void ForTaps(Tap tap) const {
    const i64 middle = std::clamp(FloorToI64(centre + 0.5), First(), std::max(First(), Last()));
    const double offset = static_cast<double>(middle) - centre, by = 1 / (2 * sigma * sigma);
    const double slower = elementary::Exponential(-2 * by);
    tap(middle, 1.0);
    double weight = 1, ratio = elementary::Exponential(-(1 + 2 * offset) * by);
    for (i64 place = middle + 1; place <= Last(); ++place, ratio *= slower)
      tap(place, weight *= ratio);
    weight = 1, ratio = elementary::Exponential(-(1 - 2 * offset) * by);
    for (i64 place = middle - 1; place >= First(); --place, ratio *= slower)
      tap(place, weight *= ratio);
  }

  /// Fills in a window's weights, and behind them the whole ones.
  Window Fill(f32* weights) const {
    const Range range = Pixels();
    if (range.Count() == 0) return {0, 0, weights};
    std::fill_n(weights, Even(range.Count()), 0.0f);
    double sum = 0;
    ForTaps([&](i64, double weight) { sum += weight; });
    ForTaps([&](i64 place, double weight) {
      const i64 pixel = PixelAt(place, length, edges);
      if (pixel >= 0) weights[pixel - range.first] += static_cast<f32>(weight / sum);
    });
    return WithWhole({range.first, range.Count(), weights},
                     reinterpret_cast<int16_t*>(weights + Even(range.Count())));
  }

 private:
  /// Sums of 255 times the weights stay in 31 bits. Errors of all weights together should be small:
  /// they are not where pixels beyond the edges fall on one that weighs much.
  static Window WithWhole(Window window, int16_t* whole) {
    const i64 count = Even(window.count);
    f32 most = 0;
    for (i64 i = 0; i < count; ++i) most = std::max(most, window.weights[i]);
    f32 scale = 1 << 14;
    while (scale < 1 << 23 && 2 * scale * most < 32767) scale *= 2;
    if (512 * static_cast<f32>(count) > scale) return window;
    for (i64 i = 0; i < count; ++i)
      whole[i] = static_cast<int16_t>(window.weights[i] * scale + 0.5f);
    window.whole = whole;
    window.unit = 1 / scale;
    return window;
  }
};

namespace {

/// Of singles and whole weights.
i64 WeightBytes(i64 count) {
  return RoundUp(Even(count) * static_cast<i64>(sizeof(f32) + sizeof(int16_t)), 8);
}

/// Fills windows, and their weights behind them.
template <typename BellOf>
const Window* FillAll(i64 count, u8* memory, BellOf bellOf) {
  Window* const windows = reinterpret_cast<Window*>(memory);
  f32* weights = reinterpret_cast<f32*>(windows + count);
  for (i64 i = 0; i < count; ++i) {
    windows[i] = bellOf(i).Fill(weights);
    weights += WeightBytes(windows[i].count) / static_cast<i64>(sizeof(f32));
  }
  return windows;
}

template <typename BellOf>
i64 BytesOf(i64 count, BellOf bellOf) {
  i64 bytes = count * static_cast<i64>(sizeof(Window));
  for (i64 i = 0; i < count; ++i) bytes += WeightBytes(bellOf(i).Pixels().Count());
  return bytes;
}

}  // namespace

Direction::Direction(i64 length, double sigma, u32 edges, const Quality& quality)
    : length_(length), edges_(edges), sigma_(sigma), reduces_(sigma > kWidestDirect) {
  samples_ = length;
  reach_ = static_cast<double>(CeilToI64(quality.reach * sigma));
  if (!reduces_) return;
  sigma_ = sigma * 0.70710678118654752;
  reach_ = quality.reach * sigma_;
  spacing_ = sigma_ / quality.samplesPerSigma;
  spread_ = quality.samplesPerSigma;
  spreadReach_ = quality.reach * spread_;
  before_ = CeilToI64(spreadReach_);
  samples_ = before_ + FloorToI64(static_cast<double>(length - 1) / spacing_ + spreadReach_) + 1;
}

Direction::Bell Direction::BellOf(i64 sample) const {
  const double centre = static_cast<double>(sample - before_) * spacing_;
  return {centre, std::max(sigma_, 0.01), reach_, length_, edges_};
}

Direction::Bell Direction::SpreadBellOf(i64 pixel) const {
  const double centre = static_cast<double>(pixel) / spacing_ + static_cast<double>(before_);
  return {centre, spread_, spreadReach_, samples_, PICTAVO_EDGES_REPLICATE};
}

i64 Direction::GatherBytes() const {
  return BytesOf(samples_, [this](i64 i) { return BellOf(i); });
}
i64 Direction::SpreadBytes() const {
  return reduces_ ? BytesOf(length_, [this](i64 i) { return SpreadBellOf(i); }) : 0;
}
const Window* Direction::Gather(u8* memory) const {
  return FillAll(samples_, memory, [this](i64 i) { return BellOf(i); });
}
const Window* Direction::Spread(u8* memory) const {
  if (!reduces_) return nullptr;
  return FillAll(length_, memory, [this](i64 i) { return SpreadBellOf(i); });
}

}  // namespace pictavo::cpu::gauss
