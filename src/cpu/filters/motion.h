// What the kinds of motion blur share: the samples of a motion, and their mean.
#ifndef PICTAVO_CPU_FILTERS_MOTION_H_
#define PICTAVO_CPU_FILTERS_MOTION_H_

#include <algorithm>

#include "cpu/base/picture.h"

namespace pictavo::cpu {

/// The places of a motion at which a pixel is sampled: all n of them, or as many as are allowed,
/// evenly spread. Not usable when there is none, or one for several places, or more than sums and
/// single precision can hold.
class Samples {
 public:
  Samples(i32 n, i32 maxSamples) : count_(std::min(maxSamples, n)) {
    constexpr i32 kMostSamples = 1 << 16, kMostPlaces = 1 << 24;
    if (count_ > kMostSamples || n > kMostPlaces || (count_ == 1 && n > 1)) count_ = 0;
    if (count_ > 1) step_ = static_cast<f32>(n - 1) / static_cast<f32>(count_ - 1);
  }

  bool AreUsable() const { return count_ > 0; }
  i32 count() const { return count_; }
  i32 Place(i32 sample) const { return static_cast<i32>(static_cast<f32>(sample) * step_ + 0.5f); }

 private:
  i32 count_;
  f32 step_ = 0;
};

constexpr i32 kMiss = -1;

/// The column or row of the source under a place of the destination, or kMiss. The source covers
/// `first` to `last` of the destination, as far as its `size` reaches.
inline i32 Find(i32 place, i32 first, i64 last, i64 size) {
  return place >= first && place <= last && i64{place} - first < size ? place - first : kMiss;
}

/// The mean of a pixel's samples. Clear pixels are misses; a miss thins the alpha and leaves the
/// colour alone.
class Mean {
 public:
  void Add(const u8* pixel) {
    if (pixel[3] == 0) return;
    for (size_t c = 0; c < 4; ++c) sums_[c] += pixel[c];
    ++hits_;
  }

  void Store(u8* pixel, i32 samples) const {
    for (size_t c = 0; c < 3; ++c) pixel[c] = static_cast<u8>(hits_ == 0 ? 0 : sums_[c] / hits_);
    pixel[3] = static_cast<u8>(sums_[3] / static_cast<u32>(samples));
  }

 private:
  u32 sums_[4] = {};
  u32 hits_ = 0;
};

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_FILTERS_MOTION_H_
