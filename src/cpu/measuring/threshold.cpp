#include <limits>
#include <span>

#include "cpu/measuring/measure.h"

namespace pictavo::cpu {
namespace {

/// What a part of a histogram holds: the sums of its values and of value times index.
struct Mass {
  double values = 0, moment = 0;

  void Add(f32 value, size_t index) {
    values += value;
    moment += static_cast<double>(value) * static_cast<double>(index);
  }
};

/// The variance between the lower part and the rest, but for what all divisions share.
double VarianceBetween(const Mass& lower, const Mass& all) {
  const double rest = all.values - lower.values;
  if (lower.values <= 0 || rest <= 0) return 0;
  const double apart = all.moment * lower.values - lower.moment * all.values;
  return apart / lower.values * (apart / rest);
}

/// Of values that are numbers, none negative, not all 0.
u32 BestSplit(std::span<const f32> values, const Mass& all) {
  Mass lower;
  double best = -1;
  u32 found = 0;
  for (u32 i = 0; i < values.size(); ++i) {
    lower.Add(values[i], i);
    if (lower.values <= 0) continue;
    const double variance = VarianceBetween(lower, all);
    if (variance > best) best = variance, found = i;
  }
  return found;
}

}  // namespace

u32 FindThreshold(const f32* values, u32 count, u32* index) noexcept {
  if (values == nullptr || index == nullptr) return PICTAVO_E_POINTER;
  Mass all;
  for (u32 i = 0; i < count; ++i) {
    if (!(values[i] >= 0 && values[i] <= std::numeric_limits<f32>::max()))
      return PICTAVO_E_INVALIDARG;
    all.Add(values[i], i);
  }
  if (all.values <= 0) return PICTAVO_E_INVALIDARG;
  *index = BestSplit({values, count}, all);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
