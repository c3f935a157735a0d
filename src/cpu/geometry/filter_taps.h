// Which pixels of one side of a source make each pixel of a destination's side, and how much of
// each: the tables of a separable filter.
#ifndef PICTAVO_CPU_GEOMETRY_FILTER_TAPS_H_
#define PICTAVO_CPU_GEOMETRY_FILTER_TAPS_H_

#include <cstdint>

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

using i16 = std::int16_t;

/// A stretch of a side, between pixels.
struct Stretch {
  double start, length;
};

/// Whether a filter can be had.
inline bool Holds(const ResizeParam& param) {
  return param.filter <= PICTAVO_FILTER_LANCZOS && param.alphaMode <= 1 && param.reserved[0] == 0 &&
         param.reserved[1] == 0;
}

/// Made in two steps: sizes, then the tables in memory that the caller has found for them.
class FilterTaps {
 public:
  /// @param align     what the first taps are a multiple of: 1, or 2 for taps that go in pairs
  /// @param isExact   also makes weights in single precision
  FilterTaps(i64 srcSize, i64 dstSize, Stretch stretch, u32 filter, i64 align, bool isExact);

  /// Of the tables; a multiple of 64.
  i64 Bytes() const;
  void Make(u8* memory);

  i64 srcSize() const { return srcSize_; }
  /// For each pixel; an even number.
  i64 taps() const { return taps_; }
  /// Of the whole-number weights, whose sum is 1 << bits.
  int bits() const { return bits_; }
  /// The stretch is as many pixels and lies on them.
  bool IsCopy() const { return isCopy_; }
  /// Every weight is 1, 3, 3, 1 of 8.
  bool Halves() const {
    return filter_ == PICTAVO_FILTER_TRIANGLE && period_ == 1 && srcPeriod_ == 2;
  }
  /// Where the stretch of a copy begins.
  i64 start() const { return static_cast<i64>(stretch_.start); }
  /// The first tap of a destination pixel. Behind the source's end are taps of weight 0 only.
  i64 First(i64 x) const { return first_[x]; }
  /// Its weights: two of 16 bits in each word, and singles.
  const u32* Words(i64 x) const { return words_ + x * taps_ / 2; }
  const u32* Singles(i64 x) const { return singles_ + x * taps_; }

 private:
  double Center(i64 x) const;
  i64 Begin(i64 x) const;
  void MakePixel(i64 x, double* weights);
  bool Repeat(i64 x, i64 begin);
  void Store(i64 x, const double* weights);

  i64 srcSize_, dstSize_;
  Stretch stretch_;
  i64 align_;
  bool isExact_, isCopy_;
  u32 filter_;
  double widening_;
  i64 period_ = 0, srcPeriod_ = 0;
  i64 reached_;  // pixels under the filter
  i64 taps_;
  int bits_;
  i32* first_ = nullptr;
  u32* words_ = nullptr;
  u32* singles_ = nullptr;
};

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_GEOMETRY_FILTER_TAPS_H_
