#include "cpu/geometry/warp.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/elementary.h"
#include "cpu/base/picture.h"
#include "cpu/base/sampler.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu {
namespace {

// ---------------------------------------------------------------------------------------------
// Sampling at a place.

enum class Filter : u32 { kNearest = PICTAVO_SAMPLE_NEAREST, kBilinear = PICTAVO_SAMPLE_BILINEAR };

/// How many pixels to the right and below a sample also takes.
constexpr i64 Reach(Filter filter) { return filter == Filter::kBilinear ? 1 : 0; }

/// A point of the source in 1/2^32 of a pixel from the first one's centre. What rounds it to what
/// the filter knows is added already: of the fraction only the high 8 bits count, or none.
struct Place {
  i64 x, y;
};
constexpr double kPixel = 0x1p32;
constexpr i64 kLongestSide = 1 << 28;  // of pictures
constexpr double kFar = kLongestSide;  // in pixels

/// What is added to a place, in pixels.
double Rounding(Filter filter) { return filter == Filter::kBilinear ? 0x1p-9 : 0.5; }

/// Pixel of the source, clear outside it.
const u8* PixelAt(const Source& src, i64 column, i64 row) {
  static constexpr u8 kClear[4] = {};
  const bool isInside = column >= 0 && column < src.width && row >= 0 && row < src.height;
  return isInside ? src.Row(row) + 4 * column : kClear;
}

template <Filter filter>
void SamplePlace(u8* out, const Source& src, Place at) {
  const i64 column = at.x >> 32, row = at.y >> 32;
  if (filter == Filter::kNearest) {
    std::memcpy(out, PixelAt(src, column, row), 4);
    return;
  }
  const SamplePoint point = {static_cast<i32>(at.x >> 24 & 255),
                             static_cast<i32>(at.y >> 24 & 255)};
  SampleRounded(out,
                {PixelAt(src, column, row), PixelAt(src, column + 1, row),
                 PixelAt(src, column, row + 1), PixelAt(src, column + 1, row + 1)},
                point);
}

// ---------------------------------------------------------------------------------------------
// Rows: where their columns lie in the source.

/// Columns of a row.
struct Span {
  i64 first, end;

  /// Those of them whose place is in `low` … before `high`; places go in steps.
  Span Within(i64 at, i64 step, i64 low, i64 high) const {
    if (step < 0) return Within(-at, -step, 1 - high, 1 - low);
    if (step == 0) return at >= low && at < high ? *this : Span{first, first};
    const auto steps = [step](i64 way) { return way / step + (way % step > 0); };
    const i64 from = std::clamp(steps(low - at), first, end);
    return {from, std::clamp(steps(high - at), from, end)};
  }
};

/// What every row knows: which columns may hold something of the source, and which of them have all
/// that they sample inside it, where that is known.
struct AnyRow {
  Span touched, whole;
};

/// A row whose places go in steps.
struct AffineRow : AnyRow {
  Place first;
  i64 xAcross, yAcross;

  Place At(i64 column) const { return {first.x + column * xAcross, first.y + column * yAcross}; }
};

/// A row of a plane in space. Its slopes are for each column to the right of the centre.
struct TiltRow : AnyRow {
  double centre;
  double x, xAcross, y, yAcross, w, wAcross;
  double offsetX, offsetY;  // of what the quotients are from
};

/// A row of a disc.
struct SwirlRow : AnyRow {
  double centre, v, inverseRadius, angle;
  double offsetX, offsetY;
};

// A double plus this has its 1/256 in its last bit, so that moving its bits up by so many makes the
// number one in 1/2^32.
constexpr double kRoundsTo256ths = 0x1.8p44;
constexpr int kFractionAbove256ths = 24;

namespace portable {
using namespace elementary;
#include "cpu/geometry/warp_spots.inl"
}  // namespace portable

i64 InFixedPoint(double x) {
  const double rounded = portable::Reachable(x) + kRoundsTo256ths;
  return static_cast<i64>(std::bit_cast<uint64_t>(rounded) << kFractionAbove256ths);
}

Place PlaceOf(const AffineRow& row, i64 column) { return row.At(column); }

template <typename Row>
Place PlaceOf(const Row& row, i64 column) {
  const portable::Spot spot = portable::SpotOf(row, static_cast<double>(column));
  return {InFixedPoint(spot.x), InFixedPoint(spot.y)};
}

template <Filter filter, typename Row>
void WarpRow(u8* out, const Source& src, const Row& row) {
  for (i64 x = row.touched.first; x < row.touched.end; ++x)
    SamplePlace<filter>(out + 4 * x, src, PlaceOf(row, x));
}

// ---------------------------------------------------------------------------------------------
// Maps, which make the rows of a picture, and know what surrounds what is touched.

void Clear(u8* row, i64 first, i64 end) {
  if (first < end) std::memset(row + 4 * first, 0, static_cast<size_t>(4 * (end - first)));
}

/// A place's matrix of columns and rows, and the place of the first pixel; in pixels.
struct Matrix {
  double xAcross, xDown, yAcross, yDown, x, y;
};

class Affine {
 public:
  /// Of a point that comes to lie on another one.
  Affine(const Source& src, Filter filter, const Matrix& about, double dstX, double dstY)
      : src_(src), filter_(filter), matrix_(about) {
    const double u = 0.5 - dstX, v = 0.5 - dstY;
    matrix_.x = about.x - 0.5 + u * about.xAcross + v * about.xDown;
    matrix_.y = about.y - 0.5 + v * about.yDown + u * about.yAcross;
  }

  /// Whether all places of a destination of a size can be told.
  bool Reaches(i64 width, i64 height) const {
    const double right = static_cast<double>(width - 1);
    const double bottom = static_cast<double>(height - 1);
    const Matrix& m = matrix_;
    bool reaches = std::max({std::abs(m.xAcross), std::abs(m.xDown), std::abs(m.yAcross),
                             std::abs(m.yDown)}) <= kFar;
    for (const double across : {0.0, right}) {
      for (const double down : {0.0, bottom}) {
        reaches = reaches && std::abs(m.x + across * m.xAcross + down * m.xDown) <= kFar &&
                  std::abs(m.y + across * m.yAcross + down * m.yDown) <= kFar;
      }
    }
    return reaches;
  }

  RotationSteps Steps() const {
    const i64 rounding = Fixed(Rounding(filter_));
    return {Fixed(matrix_.x) + rounding, Fixed(matrix_.y) + rounding, Fixed(matrix_.xAcross),
            Fixed(matrix_.xDown),        Fixed(matrix_.yAcross),      Fixed(matrix_.yDown)};
  }

  AffineRow RowAt(i64 y, i64 width) const {
    const i64 reach = Reach(filter_);
    const RotationSteps steps = Steps();
    AffineRow row = {};
    row.xAcross = steps.xAcross;
    row.yAcross = steps.yAcross;
    row.first = {steps.x + y * steps.xDown, steps.y + y * steps.yDown};
    const auto columns = [&](Span span, i64 low, i64 reachBeyond) {
      const auto edge = [](i64 pixels) { return pixels * (i64{1} << 32); };
      return span.Within(row.first.x, row.xAcross, edge(low), edge(src_.width - reachBeyond))
          .Within(row.first.y, row.yAcross, edge(low), edge(src_.height - reachBeyond));
    };
    row.touched = columns({0, width}, -reach, 0);
    row.whole = columns(row.touched, 0, reach);
    return row;
  }

  void Surround(u8* out, const AffineRow& row, i64, i64 width) const {
    Clear(out, 0, row.touched.first);
    Clear(out, row.touched.end, width);
  }

 private:
  static i64 Fixed(double pixels) { return static_cast<i64>(std::floor(pixels * kPixel + 0.5)); }

  const Source& src_;
  Filter filter_;
  Matrix matrix_;
};

elementary::SineCosine Turn(f32 degrees) {
  return elementary::SineCosineOfDegrees(elementary::WithoutTurns(degrees));
}

/// What is added to a double place, of which the 1/256 are rounded anyway.
double SpotRounding(Filter filter) { return filter == Filter::kBilinear ? 0 : 0.5; }

class Tilt {
 public:
  Tilt(const Source& src, Filter filter, const TiltParam& param)
      : centreX_(double{param.centreX} - 0.5),
        centreY_(double{param.centreY} - 0.5),
        rounding_(SpotRounding(filter)) {
    const auto [sinYaw, cosYaw] = Turn(param.yaw);
    const auto [sinPitch, cosPitch] = Turn(param.pitch);
    const auto [sinRoll, cosRoll] = Turn(param.roll);
    const auto [sinView, cosView] = Turn(param.fieldOfView / 2);
    const double distance = static_cast<double>(src.width) / 2 * cosView / sinView;
    facing_ = cosPitch * cosYaw;
    xAcross_ = cosRoll * cosPitch / facing_;
    xDown_ = (sinRoll * cosYaw - cosRoll * sinPitch * sinYaw) / facing_;
    yAcross_ = 0 - sinRoll * cosPitch / facing_;
    yDown_ = (cosRoll * cosYaw + sinRoll * sinPitch * sinYaw) / facing_;
    wAcross_ = 0 - cosPitch * sinYaw / (facing_ * distance);
    wDown_ = sinPitch / (facing_ * distance);
  }

  /// Whether nothing can be seen of the plane.
  bool IsEdgeOn() const { return facing_ == 0; }
  /// Whether all of it is as far away.
  bool IsFlat() const { return wAcross_ == 0 && wDown_ == 0; }

  Matrix Flat() const {
    return {xAcross_, xDown_, yAcross_, yDown_, centreX_ + 0.5, centreY_ + 0.5};
  }

  TiltRow RowAt(i64 y, i64 width) const {
    const double v = static_cast<double>(y) - centreY_;
    TiltRow row = {};
    row.touched = {0, width};
    row.centre = centreX_;
    row.x = v * xDown_, row.xAcross = xAcross_;
    row.y = v * yDown_, row.yAcross = yAcross_;
    row.w = 1 + v * wDown_, row.wAcross = wAcross_;
    row.offsetX = centreX_ + rounding_, row.offsetY = centreY_ + rounding_;
    return row;
  }

  void Surround(u8*, const TiltRow&, i64, i64) const {}

 private:
  double centreX_, centreY_, rounding_;
  double facing_;
  double xAcross_, xDown_, yAcross_, yDown_, wAcross_, wDown_;
};

class Swirl {
 public:
  Swirl(const Source& src, Filter filter, const SwirlParam& param)
      : src_(src),
        centreX_(double{param.centreX} - 0.5),
        centreY_(double{param.centreY} - 0.5),
        radius_(param.radius),
        angle_(double{param.angle} * 0.017453292519943296),
        rounding_(SpotRounding(filter)) {}

  SwirlRow RowAt(i64 y, i64 width) const {
    SwirlRow row = {};
    row.v = static_cast<double>(y) - centreY_;
    const double half = std::sqrt(std::max(radius_ * radius_ - row.v * row.v, 0.0));
    const double most = static_cast<double>(width);
    if (half > 0) {  // what is a column too many is turned by nothing
      row.touched = {static_cast<i64>(std::clamp(centreX_ - half, 0.0, most)),
                     static_cast<i64>(std::clamp(centreX_ + half + 1, 0.0, most))};
    }
    row.centre = centreX_;
    row.inverseRadius = 1 / radius_;
    row.angle = angle_;
    row.offsetX = centreX_ + rounding_, row.offsetY = centreY_ + rounding_;
    return row;
  }

  void Surround(u8* out, const SwirlRow& row, i64 y, i64 width) const {
    const i64 copied = y < src_.height ? std::min(src_.width, width) : 0;
    const auto copy = [&](i64 first, i64 end) {
      if (first >= end) return;
      std::memcpy(out + 4 * first, src_.Row(y) + 4 * first, static_cast<size_t>(4 * (end - first)));
    };
    copy(0, std::min(row.touched.first, copied));
    copy(row.touched.end, copied);
    Clear(out, copied, row.touched.first);
    Clear(out, std::max(copied, row.touched.end), width);
  }

 private:
  const Source& src_;
  double centreX_, centreY_, radius_, angle_, rounding_;
};

template <typename Row>
using RowFn = void(u8* out, const Source& src, const Row& row);

}  // namespace

#define KERNELS "cpu/geometry/warp_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

template <Filter filter, typename Row>
constexpr Builds<RowFn<Row>*> kRows = {.portable = WarpRow<filter, Row>,
                                       .sse41 = sse41::WarpRow<filter, Row>,
                                       .avx2 = avx2::WarpRow<filter, Row>};

template <typename Map>
u32 Warp(i32 level, Filter filter, const Source& src, const Picture& dst, const Map& map) {
  using Row = decltype(map.RowAt(0, 0));
  // The vector rows reach pixels by 32 bits.
  const bool isNear = src.height * src.pitch <= INT32_MAX;
  const auto& builds =
      filter == Filter::kBilinear ? kRows<Filter::kBilinear, Row> : kRows<Filter::kNearest, Row>;
  RowFn<Row>* const sample = builds.For(isNear ? level : PICTAVO_LEVEL_PORTABLE);
  ParallelRows(static_cast<int>(dst.height), 2 * dst.width, [&](int y) {
    u8* const out = dst.Row(y);
    const Row row = map.RowAt(y, dst.width);
    map.Surround(out, row, y, dst.width);
    sample(out, src, row);
  });
  return PICTAVO_S_OK;
}

template <typename... Lengths>
bool AreLengths(Lengths... lengths) {
  return (... && (std::abs(lengths) <= 0x1p24f));
}

/// The checks that the operations share.
u32 CheckWarp(bool hold, u32 filter, const ImageDesc* src, const ImageDesc* dst) {
  const u32 code = CheckRecords(hold && filter <= PICTAVO_SAMPLE_BILINEAR, src, dst);
  if (code != PICTAVO_S_OK) return code;
  const Picture from = PictureIn(*src), to = PictureIn(*dst);
  const i64 longest = std::max({from.width, from.height, to.width, to.height});
  return longest > kLongestSide || ShareBytes(to, from) ? PICTAVO_E_INVALIDARG : PICTAVO_S_OK;
}

bool Holds(const RotateParam& p) {
  return std::isfinite(p.angle) && std::isfinite(p.scale) && p.scale > 0 &&
         AreLengths(p.srcX, p.srcY, p.dstX, p.dstY);
}
bool Holds(const SwirlParam& p) {
  return AreLengths(p.centreX, p.centreY, p.radius) && p.radius >= 0 && std::abs(p.angle) <= 360000;
}
bool Holds(const TiltParam& p) {
  return AreLengths(p.centreX, p.centreY) && std::isfinite(p.yaw) && std::isfinite(p.pitch) &&
         std::isfinite(p.roll) && p.fieldOfView >= 1 && p.fieldOfView <= 170;
}

Affine RotationOf(const RotateParam& p, const Source& src) {
  const auto [sin, cos] = Turn(p.angle);
  const double s = sin / double{p.scale}, c = cos / double{p.scale};
  return {src,
          Filter{p.filter},
          {c, s, 0 - s, c, double{p.srcX}, double{p.srcY}},
          double{p.dstX},
          double{p.dstY}};
}

}  // namespace

bool FindRotationSteps(const RotateParam& param, i64 width, i64 height, RotationSteps* steps) {
  if (!Holds(param) || param.filter > PICTAVO_SAMPLE_BILINEAR) return false;
  const Source any;
  const Affine map = RotationOf(param, any);
  if (!map.Reaches(width, height)) return false;
  *steps = map.Steps();
  return true;
}

u32 RotatePicture(i32 level, const ImageDesc* src, ImageDesc* dst,
                  const RotateParam* param) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  const RotateParam p = *param;
  const u32 code = CheckWarp(Holds(p), p.filter, src, dst);
  if (code != PICTAVO_S_OK) return code;
  const Source from = SourceIn(*src);
  const Picture to = PictureIn(*dst);
  const Affine map = RotationOf(p, from);
  return map.Reaches(to.width, to.height) ? Warp(level, Filter{p.filter}, from, to, map)
                                          : PICTAVO_E_INVALIDARG;
}

u32 SwirlPicture(i32 level, const ImageDesc* src, ImageDesc* dst,
                 const SwirlParam* param) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  const SwirlParam p = *param;
  const u32 code = CheckWarp(Holds(p), p.filter, src, dst);
  if (code != PICTAVO_S_OK) return code;
  const Source from = SourceIn(*src);
  const Filter filter{p.filter};
  return Warp(level, filter, from, PictureIn(*dst), Swirl(from, filter, p));
}

u32 TiltPicture(i32 level, const ImageDesc* src, ImageDesc* dst, const TiltParam* param) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  const TiltParam p = *param;
  const u32 code = CheckWarp(Holds(p), p.filter, src, dst);
  if (code != PICTAVO_S_OK) return code;
  const Source from = SourceIn(*src);
  const Picture to = PictureIn(*dst);
  const Filter filter{p.filter};
  const Tilt map(from, filter, p);
  if (map.IsEdgeOn()) {
    for (i64 y = 0; y < to.height; ++y) Clear(to.Row(y), 0, to.width);
    return PICTAVO_S_OK;
  }
  if (!map.IsFlat()) return Warp(level, filter, from, to, map);
  const Affine flat(from, filter, map.Flat(), double{p.centreX}, double{p.centreY});
  return flat.Reaches(to.width, to.height) ? Warp(level, filter, from, to, flat)
                                           : PICTAVO_E_INVALIDARG;
}

}  // namespace pictavo::cpu
