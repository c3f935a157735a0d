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
// Places, 0 … 1, that pixels of a row have on the way of an edge.

/// How far along a straight way.
struct StraightPlaces {
  f32 start, step;

  f32 At(i64 x) const { return start + (static_cast<f32>(x) + 0.5f) * step; }
};

struct BlindPlaces {
  StraightPlaces whole;

  f32 At(i64 x) const {
    const f32 blinds = std::max(8 * whole.At(x), 0.0f);
    return blinds - static_cast<f32>(static_cast<i32>(blinds));
  }
};

/// From the middle of the picture.
struct CentredPlaces {
  f32 middle, down;

  f32 Across(i64 x) const { return static_cast<f32>(x) + 0.5f - middle; }
};

struct IrisPlaces : CentredPlaces {
  f32 scale;  // of half the diagonal

  f32 At(i64 x) const {
    const f32 across = Across(x);
    return std::sqrt(across * across + down * down) * scale;
  }
};

/// The angle of a point clockwise from the top, in turns; within 3e-7.
f32 TurnOf(f32 across, f32 down) {
  static constexpr f32 kPolynomial[] = {-0.0018651559f, 0.008379082f,  -0.01852985f,
                                        0.03080291f,    -0.052938568f, 0.15915132f};
  const f32 x = std::abs(across), y = std::abs(down);
  const f32 z = std::min(x, y) / std::max({x, y, 1e-30f}), w = z * z;
  f32 ratio = 0;
  for (const f32 coefficient : kPolynomial) ratio = ratio * w + coefficient;
  f32 turn = z * ratio;
  if (x > y) turn = 0.25f - turn;
  if (down > 0) turn = 0.5f - turn;
  return across < 0 ? 1 - turn : turn;
}

struct ClockPlaces : CentredPlaces {
  f32 start;

  f32 At(i64 x) const {
    const f32 turn = TurnOf(Across(x), down) - start;
    return turn < 0 ? turn + 1 : turn;
  }
};

/// A number for each pixel as if by chance, the same everywhere.
struct DissolvePlaces {
  u32 row;

  explicit DissolvePlaces(i64 y) : row(static_cast<u32>(y) * 0x85EBCA77) { row ^= row >> 15; }

  f32 At(i64 x) const {
    u32 hash = (static_cast<u32>(x) + row) * 0x9E3779B1;
    hash = (hash ^ hash >> 16) * 0x21F0AAAD;
    hash = (hash ^ hash >> 15) * 0x735A2D97;
    return static_cast<f32>((hash ^ hash >> 15) >> 8) * 0x1p-24f;
  }
};

// ---------------------------------------------------------------------------------------------
// The weights of a row.

class Weights {
 public:
  Weights(const TransitionParam& param, i64 width, i64 height)
      : mode_(param.mode),
        width_(width),
        fade_(Nearest256th(param.progress)),
        turn_(param.angle / 360 - std::floor(param.angle / 360)),
        reach_(param.progress * (1 + param.softness)),
        softness_(std::max(param.softness, 1e-9f)),
        sharpness_(1 / softness_),
        middleX_(static_cast<double>(width) / 2),
        middleY_(static_cast<double>(height) / 2) {
    const auto [sin, cos] = elementary::SineCosineOfDegrees(elementary::WithoutTurns(param.angle));
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

  void MakeRow(i64 y, u32* weights) const {
    if (IsFade()) return FillAll(weights, fade_);
    if (IsStraight()) return MakeStraightRow(y, weights);
    const CentredPlaces centred = {static_cast<f32>(middleX_), static_cast<f32>(Down(y))};
    if (mode_ == PICTAVO_TRANSITION_IRIS) {
      const double half = std::sqrt(middleX_ * middleX_ + middleY_ * middleY_);
      return Fill(IrisPlaces{centred, static_cast<f32>(1 / half)}, 0, width_, weights);
    }
    if (mode_ == PICTAVO_TRANSITION_CLOCK)
      return Fill(ClockPlaces{centred, turn_}, 0, width_, weights);
    Fill(DissolvePlaces(y), 0, width_, weights);
  }

 private:
  static u32 Nearest256th(f32 part) { return static_cast<u32>(part * 256 + 0.5f); }

  bool IsFade() const { return mode_ <= PICTAVO_TRANSITION_DIP; }
  bool IsStraight() const {
    return mode_ == PICTAVO_TRANSITION_WIPE || mode_ == PICTAVO_TRANSITION_BLINDS;
  }
  double Down(i64 y) const { return static_cast<double>(y) + 0.5 - middleY_; }

  /// A smooth band behind the edge. Whole numbers keep it from falling while the edge advances.
  u32 WeightAt(f32 place) const {
    const f32 part = std::clamp((reach_ - place) * sharpness_, 0.0f, 1.0f);
    const u32 q = static_cast<u32>(static_cast<i32>(part * 1024));
    return (q * q * (3072 - 2 * q) + (1 << 21)) >> 22;
  }

  static u32 InBothHalves(u32 weight) { return weight * 0x10001; }
  void FillAll(u32* weights, u32 weight) const {
    std::fill_n(weights, width_, InBothHalves(weight));
  }
  template <typename Places>
  void Fill(const Places& places, i64 first, i64 end, u32* weights) const {
    for (i64 x = first; x < end; ++x) weights[x] = InBothHalves(WeightAt(places.At(x)));
  }

  void MakeStraightRow(i64 y, u32* weights) const {
    const StraightPlaces places = {static_cast<f32>(0.5 + Down(y) * stepY_ - middleX_ * stepX_),
                                   static_cast<f32>(stepX_)};
    const bool areBlinds = mode_ == PICTAVO_TRANSITION_BLINDS;
    if (places.step == 0) {
      FillAll(weights, WeightAt(areBlinds ? BlindPlaces{places}.At(0) : places.At(0)));
    } else if (areBlinds) {
      Fill(BlindPlaces{places}, 0, width_, weights);
    } else {
      MakeWipe(places, weights);
    }
  }

  /// Works out the band alone; what lies before and behind it is all of one picture.
  void MakeWipe(const StraightPlaces& places, u32* weights) const {
    const auto column = [&](f32 place) {
      const double x = (static_cast<double>(place) - places.start) / places.step;
      return static_cast<i64>(std::clamp(x, -4.0, static_cast<double>(width_) + 4));
    };
    const i64 a = column(reach_), b = column(reach_ - softness_);
    const i64 first = std::clamp<i64>(std::min(a, b) - 3, 0, width_);
    const i64 end = std::clamp<i64>(std::max(a, b) + 3, 0, width_);
    const auto side = [&](i64 x) { return InBothHalves(WeightAt(places.At(x))); };
    std::fill(weights, weights + first, side(0));
    Fill(places, first, end, weights);
    std::fill(weights + end, weights + width_, side(width_ - 1));
  }

  u32 mode_;
  i64 width_;
  u32 fade_;
  f32 turn_, reach_, softness_, sharpness_;
  double middleX_, middleY_, stepX_, stepY_;
};

bool IsUsable(const TransitionParam& param) {
  const auto isPart = [](f32 x) { return x >= 0 && x <= 1; };
  return param.mode <= PICTAVO_TRANSITION_PUSH && isPart(param.progress) &&
         isPart(param.softness) && std::isfinite(param.angle);
}

void CopyPicture(const Picture& dst, const Source& src) {
  ForRows(dst, src,
          [](u8* d, const u8* s, i64 width) { std::memcpy(d, s, static_cast<size_t>(4 * width)); });
}

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

}  // namespace

#define KERNELS "cpu/blending/transition_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

/// Mixes all rows. A dip has the colour in the place of one picture.
u32 Mix(i32 level, const Picture& dst, Source from, Source to, const TransitionParam& param) {
  static constexpr Builds<MixRowFn*> kBuilds = {
      .portable = MixRow, .sse41 = sse41::VectorMixRow, .avx2 = avx2::VectorMixRow};
  Scratch scratch(8 * dst.width);
  if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  u32* const row = reinterpret_cast<u32*>(scratch.data());
  if (param.mode == PICTAVO_TRANSITION_DIP && param.progress > 0 && param.progress < 1) {
    u32* const colours = row + dst.width;
    std::fill_n(colours, dst.width, param.colour);
    (param.progress <= 0.5f ? to : from) = {reinterpret_cast<const u8*>(colours), dst.width,
                                            dst.height, 0};
  }
  const Weights weights(param, dst.width, dst.height);
  for (i64 y = 0; y < dst.height; ++y) {
    if (y == 0 || !weights.AreSameInAllRows()) weights.MakeRow(y, row);
    kBuilds.For(level)(dst.Row(y), from.Row(y), to.Row(y), row, dst.width);
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
  const bool pushes = param->mode == PICTAVO_TRANSITION_PUSH;
  if (!SameSize(out, first) || !SameSize(out, second) ||
      (pushes && (ShareBytes(out, first) || ShareBytes(out, second)))) {
    return PICTAVO_E_INVALIDARG;
  }
  if (out.IsEmpty()) return PICTAVO_S_FALSE;
  if (!pushes) return Mix(level, out, first, second, *param);
  Push(out, first, second, *param);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
