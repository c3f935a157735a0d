#include "cpu/blending/transition.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/elementary.h"
#include "cpu/base/picture.h"
#include "cpu/base/scratch.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

namespace pictavo::cpu {
namespace {

// ---------------------------------------------------------------------------------------------
// The mix. A weight of 0 … 256 is the second picture's; rows of them hold each in both halves of a
// word, as vectors want it.

u32 MixOf(const u8* from, const u8* to, u32 weight) {
  const u32 under = from[3] * (256 - weight), over = to[3] * weight, sum = under + over;
  const u32 alpha = (sum + 128) >> 8;
  if (alpha == 0) return 0;
  u32 pixel = alpha << 24;
  for (size_t i = 0; i < 3; ++i) pixel |= (from[i] * under + to[i] * over + sum / 2) / sum << 8 * i;
  return pixel;
}

using MixRowFn = void(u8* dst, const u8* from, const u8* to, const u32* weights, i64 width);

void MixRow(u8* dst, const u8* from, const u8* to, const u32* weights, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4, from += 4, to += 4) {
    const u32 weight = weights[x] & 0xFFFF;
    u32 pixel;
    if (weight == 0 || weight == 256) {
      std::memcpy(&pixel, weight == 0 ? from : to, 4);
    } else {
      pixel = MixOf(from, to, weight);
    }
    std::memcpy(dst, &pixel, 4);
  }
}

// ---------------------------------------------------------------------------------------------
// Ways of an edge through a row, and the edge on it.

struct Straight {
  f32 start, step;
};
struct Blinds {
  Straight whole;
};
struct Iris {
  f32 middle, down, scale;  // of half the diagonal
};
struct Clock {
  f32 middle, down, start;
};
struct Grain {
  u32 row;

  explicit Grain(i64 y) : row(static_cast<u32>(y) * 0x85EBCA77) { row ^= row >> 15; }
};

struct Edge {
  f32 reach, softness, sharpness;
};

template <typename Way>
using FillWeightsFn = void(u32* weights, i64 first, i64 end, const Edge& edge, const Way& way);

struct WeightRows {
  FillWeightsFn<Straight>* straight;
  FillWeightsFn<Blinds>* blinds;
  FillWeightsFn<Iris>* iris;
  FillWeightsFn<Clock>* clock;
  FillWeightsFn<Grain>* grain;
};

namespace portable {

/// Vectors of one lane.
struct V {
  static constexpr i64 kPixels = 1;

  u32 v;

  static V All32(u32 x) { return {x}; }
  void Store(u8* p) const { std::memcpy(p, &v, sizeof v); }
};
inline V operator|(V a, V b) { return {a.v | b.v}; }
inline V operator^(V a, V b) { return {a.v ^ b.v}; }
inline V Add32(V a, V b) { return {a.v + b.v}; }
inline V Sub32(V a, V b) { return {a.v - b.v}; }
inline V Mul32(V a, V b) { return {a.v * b.v}; }
inline V ShiftLeft32(V a, int bits) { return {a.v << bits}; }
inline V ShiftRightU32(V a, int bits) { return {a.v >> bits}; }
inline V Index32() { return {0}; }

struct F {
  f32 v;

  static F All(f32 x) { return {x}; }
};
inline F operator+(F a, F b) { return {a.v + b.v}; }
inline F operator-(F a, F b) { return {a.v - b.v}; }
inline F operator*(F a, F b) { return {a.v * b.v}; }
inline F operator/(F a, F b) { return {a.v / b.v}; }
inline bool operator<(F a, F b) { return a.v < b.v; }
inline F Abs(F a) { return {std::abs(a.v)}; }
inline F Min(F a, F b) { return {std::min(a.v, b.v)}; }
inline F Max(F a, F b) { return {std::max(a.v, b.v)}; }
inline F Sqrt(F a) { return {std::sqrt(a.v)}; }
inline F Select(bool mask, F yes, F no) { return mask ? yes : no; }
inline F ToF(V a) { return {static_cast<f32>(static_cast<i32>(a.v))}; }
inline V Truncate(F a) { return {static_cast<u32>(static_cast<i32>(a.v))}; }

#include "cpu/blending/transition_places.inl"

}  // namespace portable
}  // namespace

#define KERNELS "cpu/blending/transition_places.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS
#define KERNELS "cpu/blending/transition_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The weights of a row.

/// Columns outside of which one picture has all the weight: the second one before them or behind.
struct Band {
  i64 first, end;
  bool secondBefore = false, secondBehind = false;
};

class Weights {
 public:
  Weights(const WeightRows& rows, const TransitionParam& param, i64 width, i64 height)
      : rows_(rows),
        mode_(param.mode),
        width_(width),
        fade_(Nearest256th(param.progress)),
        edge_({param.progress * (1 + param.softness), std::max(param.softness, 1e-9f), 0}),
        middleX_(static_cast<double>(width) / 2),
        middleY_(static_cast<double>(height) / 2) {
    edge_.sharpness = 1 / edge_.softness;
    const double angle = elementary::WithoutTurns(param.angle);
    const auto [sin, cos] = elementary::SineCosineOfDegrees(angle);
    turn_ = static_cast<f32>((angle < 0 ? angle + 360 : angle) / 360);
    const double way = 2 * (middleX_ * std::abs(cos) + middleY_ * std::abs(sin));
    stepX_ = cos / way;
    stepY_ = sin / way;
    // Both ends are copies whatever the places.
    if (param.progress <= 0 || param.progress >= 1) mode_ = PICTAVO_TRANSITION_FADE;
    if (mode_ == PICTAVO_TRANSITION_DIP) {
      const f32 doubled = 2 * param.progress;
      fade_ = Nearest256th(doubled <= 1 ? doubled : doubled - 1);
    }
  }

  /// Whether a row's weights serve for all.
  bool AreSameInAllRows() const { return IsFade() || (IsStraight() && stepY_ == 0); }

  /// Fills in the weights of the band.
  Band MakeRow(i64 y, u32* weights) const {
    const f32 middle = static_cast<f32>(middleX_), down = static_cast<f32>(Down(y));
    if (IsFade()) return FillAll(fade_ * 0x10001, weights);
    if (IsStraight()) return MakeStraightRow(y, weights);
    if (mode_ == PICTAVO_TRANSITION_IRIS) {
      const double half = std::sqrt(middleX_ * middleX_ + middleY_ * middleY_);
      rows_.iris(weights, 0, width_, edge_, {middle, down, static_cast<f32>(1 / half)});
    } else if (mode_ == PICTAVO_TRANSITION_CLOCK) {
      rows_.clock(weights, 0, width_, edge_, {middle, down, turn_});
    } else {
      rows_.grain(weights, 0, width_, edge_, Grain(y));
    }
    return {0, width_};
  }

 private:
  static u32 Nearest256th(f32 part) { return static_cast<u32>(part * 256 + 0.5f); }

  bool IsFade() const { return mode_ <= PICTAVO_TRANSITION_DIP; }
  bool IsStraight() const {
    return mode_ == PICTAVO_TRANSITION_WIPE || mode_ == PICTAVO_TRANSITION_BLINDS;
  }
  double Down(i64 y) const { return static_cast<double>(y) + 0.5 - middleY_; }

  Band FillAll(u32 weight, u32* weights) const {
    if (weight == 0 || weight == kWhole) return {width_, width_, weight != 0};
    std::fill_n(weights, width_, weight);
    return {0, width_};
  }

  Band MakeStraightRow(i64 y, u32* weights) const {
    const Straight way = {static_cast<f32>(0.5 + Down(y) * stepY_ - middleX_ * stepX_),
                          static_cast<f32>(stepX_)};
    const bool areBlinds = mode_ == PICTAVO_TRANSITION_BLINDS;
    if (way.step == 0) {
      return FillAll(areBlinds ? WeightAt(Blinds{way}, 0) : WeightAt(way, 0), weights);
    }
    if (!areBlinds) return MakeWipe(way, weights);
    rows_.blinds(weights, 0, width_, edge_, {way});
    return {0, width_};
  }

  /// Works out the band alone; what lies before and behind it is all of one picture. Places are
  /// singles: where an edge is nearly level, those of many columns are one.
  Band MakeWipe(const Straight& way, u32* weights) const {
    const double start = way.start, step = way.step, margin = 3 + 0x1p-22 / std::abs(step);
    const double a = (edge_.reach - start) / step;
    const double b = (edge_.reach - edge_.softness - start) / step;
    const auto column = [&](double x) {
      return static_cast<i64>(std::clamp(x, 0.0, static_cast<double>(width_)));
    };
    const i64 first = column(std::min(a, b) - margin), end = column(std::max(a, b) + margin);
    rows_.straight(weights, first, end, edge_, way);
    return {first, end, WeightAt(way, 0) == kWhole, WeightAt(way, width_ - 1) == kWhole};
  }

  static constexpr u32 kWhole = 256 * 0x10001;

  template <typename Way>
  u32 WeightAt(const Way& way, i64 x) const {
    return portable::WeightsOf(edge_, portable::PlaceAt(way, x)).v;
  }

  const WeightRows& rows_;
  u32 mode_;
  i64 width_;
  u32 fade_;
  f32 turn_;
  Edge edge_;
  double middleX_, middleY_, stepX_, stepY_;
};

bool IsUsable(const TransitionParam& param) {
  const auto isPart = [](f32 x) { return x >= 0 && x <= 1; };
  return param.mode <= PICTAVO_TRANSITION_PUSH && isPart(param.progress) &&
         isPart(param.softness) && std::isfinite(param.angle);
}

void CopyPixels(u8* dst, const u8* src, i64 width) {
  if (dst != src) std::memmove(dst, src, static_cast<size_t>(4 * width));
}
void CopyPicture(const Picture& dst, const Source& src) { ForRows(dst, src, CopyPixels); }

/// The last so many columns, or rows, of one picture, then the first of the other.
void Join(const Picture& dst, const Source& first, const Source& second, i64 count, bool across) {
  const i64 width = dst.width, height = dst.height;
  const Rectangle head = {0, 0, across ? count : width, across ? height : count};
  const Rectangle tail = {across ? count : 0, across ? 0 : count, width, height};
  CopyPicture(dst.Part(head),
              first.Part({width - head.right, height - head.bottom, width, height}));
  CopyPicture(dst.Part(tail), second.Part({0, 0, tail.width(), tail.height()}));
}

void Push(const Picture& dst, const Source& from, const Source& to, const TransitionParam& param) {
  const i64 quarters =
      static_cast<i64>(static_cast<f32>(elementary::WithoutTurns(param.angle)) / 90 + 4.5f) % 4;
  const bool across = quarters % 2 == 0;
  const i64 size = across ? dst.width : dst.height;
  const i64 moved =
      static_cast<i64>(static_cast<double>(param.progress) * static_cast<double>(size) + 0.5);
  if (quarters < 2) return Join(dst, to, from, moved, across);
  Join(dst, from, to, size - moved, across);
}

/// Mixes all rows. A dip has the colour in the place of one picture.
u32 Mix(i32 level, const Picture& dst, Source from, Source to, const TransitionParam& param) {
  static constexpr Builds<const WeightRows*> kWeights = {
      .portable = &portable::kWeightRows, .sse41 = &sse41::kWeightRows, .avx2 = &avx2::kWeightRows};
  static constexpr Builds<MixRowFn*> kMixes = {
      .portable = MixRow, .sse41 = sse41::VectorMixRow, .avx2 = avx2::VectorMixRow};
  MixRowFn* const mixRow = kMixes.For(level);
  Scratch scratch(8 * dst.width);
  if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  u32* const row = reinterpret_cast<u32*>(scratch.data());
  if (param.mode == PICTAVO_TRANSITION_DIP && param.progress > 0 && param.progress < 1) {
    u32* const colours = row + dst.width;
    std::fill_n(colours, dst.width, param.colour);
    (param.progress <= 0.5f ? to : from) = {reinterpret_cast<const u8*>(colours), dst.width,
                                            dst.height, 0};
  }
  const Weights weights(*kWeights.For(level), param, dst.width, dst.height);
  Band band = weights.MakeRow(0, row);
  for (i64 y = 0; y < dst.height; ++y) {
    if (y > 0 && !weights.AreSameInAllRows()) band = weights.MakeRow(y, row);
    u8* const out = dst.Row(y);
    const auto at = [](auto* p, i64 x) { return p + 4 * x; };
    CopyPixels(out, (band.secondBefore ? to : from).Row(y), band.first);
    mixRow(at(out, band.first), at(from.Row(y), band.first), at(to.Row(y), band.first),
           row + band.first, band.end - band.first);
    CopyPixels(at(out, band.end), at((band.secondBehind ? to : from).Row(y), band.end),
               dst.width - band.end);
  }
  return PICTAVO_S_OK;
}

}  // namespace

u32 ApplyTransition(i32 level, ImageDesc* dst, const ImageDesc* from, const ImageDesc* to,
                    const TransitionParam* param) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  const u32 code = CheckRecords(IsUsable(*param), dst, from, to);
  if (code != PICTAVO_S_OK && code != PICTAVO_S_FALSE) return code;
  const Picture out = PictureIn(*dst);
  const Source first = SourceIn(*from), second = SourceIn(*to);
  if (!SameSize(out, first) || !SameSize(out, second)) return PICTAVO_E_INVALIDARG;
  if (out.IsEmpty()) return PICTAVO_S_FALSE;
  if (param->mode != PICTAVO_TRANSITION_PUSH) return Mix(level, out, first, second, *param);
  if (ShareBytes(out, first) || ShareBytes(out, second)) return PICTAVO_E_INVALIDARG;
  Push(out, first, second, *param);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
