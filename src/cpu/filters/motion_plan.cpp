#include "cpu/filters/motion_plan.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "cpu/base/builds.h"
#include "cpu/base/elementary.h"
#include "cpu/base/numbers.h"
#include "cpu/base/scratch.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "platform/debugger.h"

namespace pictavo::cpu {
namespace {

/// Some samples that follow each other.
struct Span {
  i32 first = 0, end = 0;

  bool Has(i32 sample) const { return sample >= first && sample < end; }
  Span With(const Span& other) const {
    return {std::min(first, other.first), std::max(end, other.end)};
  }
};

/// Where the samples of a column of the destination lie in the source; the same for rows.
class Axis {
 public:
  /// Fills in, for the samples of the span that it returns, the source's column or kMiss. All other
  /// samples miss.
  virtual Span Find(i32 at, i32* places) const = 0;

 protected:
  ~Axis() = default;
};

/// The samples of a stretch of columns, or of rows.
struct Stretch {
  i32 start, samples;
  Span* spans;  // one for each column
  i32* places;  // so many samples for each column

  void Fill(const Axis& axis, i32 first, i64 count) {
    start = first;
    for (i32 i = 0; i < count; ++i) spans[i] = axis.Find(first + i, places + i64{i} * samples);
  }
  Span SpanOf(i32 at) const { return spans[at - start]; }
  const i32* PlacesOf(i32 at) const { return places + i64{at - start} * samples; }
};

struct Plan {
  Source src;
  Picture dst;
  i32 samples;
  const Axis& columns;
  const Axis& rows;
};

/// Columns and rows of the destination that are worked on together. However many the samples, the
/// tables of a tile stay small; those of all rows fit unless there are very many.
class Tile {
 public:
  static constexpr i32 kMostColumns = 512, kColumnStep = 16;

  explicit Tile(const Plan& plan)
      : width_(static_cast<i32>(std::min<i64>((plan.dst.width + kColumnStep - 1) / kColumnStep,
                                              Fitting(plan.samples, kMostColumns) / kColumnStep)) *
               kColumnStep),
        height_(
            static_cast<i32>(std::min(plan.dst.height, Fitting(plan.samples, plan.dst.height)))),
        scratch_((i64{width_} + height_) * (i64{sizeof(Span)} + plan.samples * i64{sizeof(i32)})) {
    if (scratch_.IsShort()) return;
    Span* const spans = reinterpret_cast<Span*>(scratch_.data());
    i32* const places = reinterpret_cast<i32*>(spans + width_ + height_);
    columns = {0, plan.samples, spans, places};
    rows = {0, plan.samples, spans + width_, places + i64{width_} * plan.samples};
  }

  bool IsShort() { return scratch_.IsShort(); }
  i32 width() const { return width_; }

  /// Calls beginStrip(x, width) for each strip of columns, and row(y) for each of its rows.
  template <typename BeginStrip, typename Row>
  void ForAll(const Plan& plan, BeginStrip beginStrip, Row row) {
    for (i64 top = 0; top < plan.dst.height; top += height_) {
      const i64 height = std::min<i64>(height_, plan.dst.height - top);
      rows.Fill(plan.rows, static_cast<i32>(top), height);
      for (i64 left = 0; left < plan.dst.width; left += width_) {
        const i64 width = std::min<i64>(width_, plan.dst.width - left);
        columns.Fill(plan.columns, static_cast<i32>(left), width);
        beginStrip(static_cast<i32>(left), static_cast<i32>(width));
        for (i64 y = top; y < top + height; ++y) row(static_cast<i32>(y));
      }
    }
  }

  Stretch columns, rows;

 private:
  /// How many columns or rows may have tables.
  static i64 Fitting(i32 samples, i64 most) {
    constexpr i64 kMostPlaces = 1 << 20;
    return std::clamp(kMostPlaces / samples, i64{kColumnStep}, std::max<i64>(most, kColumnStep));
  }

  i32 width_, height_;
  Scratch scratch_;
};

using RunPlan = u32(const Plan& plan);

/// Pixels x … end of row y, stored from dst.
void RunPixels(const Plan& plan, const Tile& tile, i32 y, i32 x, i32 end, u8* dst) {
  const i32* rows = tile.rows.PlacesOf(y);
  const Span inRow = tile.rows.SpanOf(y);
  for (; x < end; ++x, dst += 4) {
    const i32* columns = tile.columns.PlacesOf(x);
    const Span inColumn = tile.columns.SpanOf(x);
    const i32 last = std::min(inRow.end, inColumn.end);
    Mean mean;
    for (i32 k = std::max(inRow.first, inColumn.first); k < last; ++k) {
      if (rows[k] == kMiss || columns[k] == kMiss) continue;
      mean.Add(plan.src.Row(rows[k]) + 4 * i64{columns[k]});
    }
    mean.Store(dst, plan.samples);
  }
}

u32 RunPlanPortable(const Plan& plan) {
  Tile tile(plan);
  if (tile.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  i32 x, end;
  tile.ForAll(
      plan,
      [&](i32 left, i32 width) {
        x = left;
        end = left + width;
      },
      [&](i32 y) { RunPixels(plan, tile, y, x, end, plan.dst.Row(y) + 4 * i64{x}); });
  return PICTAVO_S_OK;
}

}  // namespace

#define KERNELS "cpu/filters/motion_plan.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

/// A destination of another size is taken as it is.
void WarnOfSize(const char* kernel, const Picture& dst, i64 width, i64 height) {
  if (dst.width == width && dst.height == height) return;
  PrintToDebugger("%s : Warning !! The Dst buffer width or height is not the same as expected.\n",
                  kernel);
}

// ---------------------------------------------------------------------------------------------
// Direction.

/// The first of some numbers for which a predicate does not hold that holds for all before it.
template <typename Predicate>
i32 FirstNot(const Predicate& holds, i32 first, i32 end) {
  while (first < end) {
    const i32 middle = first + (end - first) / 2;
    holds(middle) ? first = middle + 1 : end = middle;
  }
  return end;
}

/// The columns, or rows, of a destination that the source covers when a motion reaches `extent`.
class Cover final : public Axis {
 public:
  Cover(const Samples& samples, f32 step, i32 extent, i64 dstSize, i64 srcSize)
      : samples_(samples), step_(step), first_(std::max(extent, 0)) {
    const i64 last = dstSize - 1 + std::min(extent, 0);
    // Compared in single precision, and once more as the whole numbers that they become.
    lowest_ = std::max(double{static_cast<f32>(first_)}, double(first_));
    highest_ = static_cast<f32>(last);
    end_ = static_cast<double>(std::min(last, first_ + srcSize - 1) + 1);
  }

  /// Samples lie in order, so that those that hit follow each other.
  Span Find(i32 at, i32* places) const override {
    const i32 count = samples_.count();
    const f32 start = static_cast<f32>(at);
    const auto isBehind = [&](i32 k) {  // the way there
      const double place = Place(start, k);
      return step_ < 0 ? IsAfter(place) : place < lowest_;
    };
    const auto isNotPast = [&](i32 k) {
      const double place = Place(start, k);
      return step_ < 0 ? place >= lowest_ : !IsAfter(place);
    };
    const i32 first = FirstNot(isBehind, 0, count);
    const Span span = {first, FirstNot(isNotPast, first, count)};
    for (i32 k = span.first; k < span.end; ++k)
      places[k] = static_cast<i32>(Place(start, k)) - first_;
    return span;
  }

 private:
  f32 Place(f32 start, i32 sample) const {
    return start + static_cast<f32>(samples_.Place(sample)) * step_;
  }
  bool IsAfter(double place) const { return place > highest_ || place >= end_; }

  const Samples& samples_;
  f32 step_;
  i32 first_;
  double lowest_, highest_, end_;
};

// ---------------------------------------------------------------------------------------------
// Zoom.

/// A sample's picture, shrunk to fit a frame 2 * place wider, shape kept, centred.
struct Ring {
  i32 scaleX, offsetX, scaleY, offsetY;
};

/// False when the picture is so large that the ring's height wraps to nothing.
bool MakeRing(const Source& src, i32 place, Ring* ring) {
  *ring = {65535, 0, 65535, 0};  // not quite the picture itself
  if (place == 0) return true;
  const i32 srcWidth = static_cast<i32>(src.width), srcHeight = static_cast<i32>(src.height);
  const i32 width = WrappedSum(srcWidth, WrappedProduct(2, place));
  const i32 height = Quotient(WrappedProduct(width, srcHeight), srcWidth);
  if (width == 0 || height == 0) return false;
  *ring = {Quotient(WrappedProduct(srcWidth, 65536), width), place,
           Quotient(WrappedProduct(srcHeight, 65536), height),
           Quotient(WrappedDifference(height, srcHeight), 2)};
  return true;
}

/// The columns, or rows, that samples take from their rings.
class Rings final : public Axis {
 public:
  Rings(const Ring* rings, i32 count, i32 Ring::*scale, i32 Ring::*offset, i32 border, i64 dstSize,
        i64 srcSize)
      : rings_(rings),
        count_(count),
        scale_(scale),
        offset_(offset),
        border_(border),
        last_(dstSize - border - 1),
        size_(srcSize) {}

  Span Find(i32 at, i32* places) const override {
    Span span = {count_, 0};
    for (i32 k = 0; k < count_; ++k) {
      const Ring& ring = rings_[k];
      const i32 place = WrappedProduct(WrappedSum(ring.*offset_, at), ring.*scale_) >> 16;
      places[k] = cpu::Find(place, border_, last_, size_);
      if (places[k] != kMiss) span = {std::min(span.first, k), k + 1};
    }
    return span;
  }

 private:
  const Ring* rings_;
  i32 count_;
  i32 Ring::*scale_;
  i32 Ring::*offset_;
  i32 border_;
  i64 last_, size_;
};

}  // namespace

Direction::Direction(const MotionBlurParam& param) {
  const bool infinite = std::isinf(param.dirX) && std::isinf(param.dirY);
  const f32 x = infinite ? std::copysign(1.0f, param.dirX) : param.dirX;
  const f32 y = infinite ? std::copysign(1.0f, param.dirY) : param.dirY;
  const f32 angle = static_cast<f32>(elementary::Arctangent(double{y}, double{x}));
  const elementary::SineCosine exact = elementary::SineCosineOf(double{angle});
  cos = static_cast<f32>(exact.cos);
  sin = static_cast<f32>(exact.sin);
}

u32 BlurDirection(i32 level, const Source& src, const Picture& dst, const Samples& samples,
                  i32 places, const Direction& direction) {
  static constexpr Builds<RunPlan*> kBuilds = {
      .portable = RunPlanPortable, .sse41 = sse41::Run, .avx2 = avx2::Run};
  const i32 extentX = TruncateToI32(static_cast<f32>(places - 1) * direction.cos);
  const i32 extentY = TruncateToI32(static_cast<f32>(places - 1) * direction.sin);
  WarnOfSize("MotionBlurDirection", dst, src.width + std::abs(i64{extentX}),
             src.height + std::abs(i64{extentY}));
  if (dst.IsEmpty()) return PICTAVO_S_OK;
  const Cover columns(samples, direction.cos, extentX, dst.width, src.width);
  const Cover rows(samples, direction.sin, extentY, dst.height, src.height);
  return kBuilds.For(level)({src, dst, samples.count(), columns, rows});
}

u32 BlurZoom(i32 level, const Source& src, const Picture& dst, const Samples& samples, i32 border) {
  static constexpr Builds<RunPlan*> kBuilds = {.portable = RunPlanPortable, .sse41 = sse41::Run};
  const i32 count = samples.count();
  Scratch scratch(count * i64{sizeof(Ring)});
  if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  Ring* const rings = reinterpret_cast<Ring*>(scratch.data());
  for (i32 k = 0; k < count; ++k) {
    if (!MakeRing(src, samples.Place(k), &rings[k])) return PICTAVO_E_INVALIDARG;
  }
  WarnOfSize("MotionBlurScale", dst, src.width + 2 * i64{border}, src.height + 2 * i64{border});
  if (dst.IsEmpty()) return PICTAVO_S_OK;
  const Rings columns(rings, count, &Ring::scaleX, &Ring::offsetX, border, dst.width, src.width);
  const Rings rows(rings, count, &Ring::scaleY, &Ring::offsetY, border, dst.height, src.height);
  return kBuilds.For(level)({src, dst, count, columns, rows});
}

}  // namespace pictavo::cpu
