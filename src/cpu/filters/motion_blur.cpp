#include "cpu/filters/motion_blur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "cpu/base/builds.h"
#include "cpu/base/numbers.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "platform/debugger.h"
#include "platform/invalid_parameter.h"

namespace pictavo::cpu {
namespace {

struct Size {
  i32 width, height;

  bool operator==(const Size&) const = default;
  bool IsEmpty() const { return width < 1 || height < 1; }
};

// Signed 32-bit arithmetic that wraps.
i32 Product(i32 a, i32 b) { return static_cast<i32>(static_cast<u32>(a) * static_cast<u32>(b)); }
i32 Sum(i32 a, i32 b) { return static_cast<i32>(static_cast<u32>(a) + static_cast<u32>(b)); }
i32 Quotient(i32 a, i32 b) { return static_cast<i32>(i64{a} / b); }
i32 Difference(i32 a, i32 b) { return static_cast<i32>(static_cast<u32>(a) - static_cast<u32>(b)); }
i32 Magnitude(i32 a) { return a < 0 ? Difference(0, a) : a; }

Size SizeOf(const ImageDesc& image) { return {image.width, image.height}; }

// ---------------------------------------------------------------------------------------------
// How many places each kind of motion passes through, and which kind wins.

/// In the choice of kind, in the destination's size, and in zoom and spin.
f32 LimitedStrength(const MotionBlurParam& p) { return std::min(p.strength, 2.0f); }

i32 DirectionPlaces(const MotionBlurParam& p, f32 strength) {
  return TruncateToI32(std::sqrt(p.dirX * p.dirX + p.dirY * p.dirY) * strength / 1.5f);
}

i32 ZoomPlaces(const MotionBlurParam& p, i32 width) {
  if (std::isnan(p.zoom)) return 0;
  const f32 distance = p.zoom > 1 ? p.zoom - 1 : 1 - p.zoom;
  return TruncateToI32(static_cast<f32>(width) * distance * LimitedStrength(p) / 3);
}

/// Two thirds of the diagonal; not a number where its square leaves 32 bits.
f32 SpinRadius(const Size& src) {
  const u32 w = static_cast<u32>(src.width), h = static_cast<u32>(src.height);
  return std::sqrt(static_cast<f32>(static_cast<i32>(w * w + h * h))) / 1.5f;
}

i32 SpinPlaces(const MotionBlurParam& p, const Size& src) {
  return TruncateToI32(std::abs(double{SpinRadius(src)} * 6.283185307179586 *
                                double{p.angle / 360} * double{LimitedStrength(p)}));
}

enum class Motion { kDirection, kZoom, kSpin };

Motion ChooseMotion(const MotionBlurParam& p, const Size& src) {
  const i32 direction = DirectionPlaces(p, LimitedStrength(p));
  const i32 zoom = ZoomPlaces(p, src.width), spin = SpinPlaces(p, src);
  if (spin >= direction && spin >= zoom && spin != 0) return Motion::kSpin;
  if (zoom >= direction && zoom >= spin && zoom != 0) return Motion::kZoom;
  return Motion::kDirection;
}

// ---------------------------------------------------------------------------------------------
// What the kinds share: the samples of a motion, and their mean.

/// The places of a motion at which a pixel is sampled: all n of them, or as many as are allowed,
/// evenly spread. Not usable when there is none, or one for several places, or more than sums and
/// single precision can hold.
struct Samples {
  Samples(i32 n, i32 maxSamples) {
    constexpr i32 kMostSamples = 1 << 16, kMostPlaces = 1 << 24;
    const i32 count = std::min(maxSamples, n);
    if (count < 1 || count > kMostSamples || n > kMostPlaces || (count == 1 && n > 1)) return;
    const f32 step = n > 1 ? static_cast<f32>(n - 1) / static_cast<f32>(count - 1) : 0;
    for (i32 k = 0; k < count; ++k)
      places.push_back(static_cast<i32>(static_cast<f32>(k) * step + 0.5f));
  }

  bool AreUsable() const { return !places.empty(); }
  i32 count() const { return static_cast<i32>(places.size()); }

  std::vector<i32> places;
};

constexpr i32 kMiss = -1;

/// The column or row of the source under a place of the destination, or kMiss. The source covers
/// `first` to `last` of the destination, as far as its `size` reaches.
i32 Find(i32 place, i32 first, i64 last, i32 size) {
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

// ---------------------------------------------------------------------------------------------
// Direction and zoom: a sample's column depends on the destination's column alone, its row on the
// row alone. Rows are packed; the records' pitches do not count.

/// Where the samples of every column and row lie in the source, kMiss outside it.
struct Plan {
  /// `findColumn` and `findRow` take the destination's column or row and a sample's place.
  template <typename FindColumn, typename FindRow>
  Plan(const Samples& samples, const Size& source, const Size& destination, FindColumn findColumn,
       FindRow findRow)
      : count(samples.count()), src(source), dst(destination) {
    columns.reserve(static_cast<size_t>(dst.width) * samples.places.size());
    rows.reserve(static_cast<size_t>(dst.height) * samples.places.size());
    for (i32 x = 0; x < dst.width; ++x)
      for (const i32 place : samples.places) columns.push_back(findColumn(x, place));
    for (i32 y = 0; y < dst.height; ++y)
      for (const i32 place : samples.places) rows.push_back(findRow(y, place));
  }

  const i32* ColumnsOf(i32 x) const { return columns.data() + i64{x} * count; }
  const i32* RowsOf(i32 y) const { return rows.data() + i64{y} * count; }

  i32 count;  // of samples
  Size src, dst;
  std::vector<i32> columns;  // of column 0's samples, column 1's, …
  std::vector<i32> rows;
};

using RunPlan = void(const Plan& plan, const u8* src, u8* dst);

/// Pixels x … end of row y, stored from dst.
void RunPixels(const Plan& plan, const u8* src, i32 y, i32 x, i32 end, u8* dst) {
  const i32* rows = plan.RowsOf(y);
  for (; x < end; ++x, dst += 4) {
    const i32* columns = plan.ColumnsOf(x);
    Mean mean;
    for (i32 k = 0; k < plan.count; ++k) {
      if (rows[k] == kMiss || columns[k] == kMiss) continue;
      mean.Add(src + 4 * (i64{rows[k]} * plan.src.width + columns[k]));
    }
    mean.Store(dst, plan.count);
  }
}

void RunPlanPortable(const Plan& plan, const u8* src, u8* dst) {
  for (i32 y = 0; y < plan.dst.height; ++y, dst += 4 * i64{plan.dst.width})
    RunPixels(plan, src, y, 0, plan.dst.width, dst);
}

/// A destination of another size is taken as it is.
void WarnOfSize(const char* kernel, const Size& dst, i64 width, i64 height) {
  if (dst.width == width && dst.height == height) return;
  std::string line = kernel;
  line += " : Warning !! The Dst buffer width or height is not the same as expected.\n";
  TellDebugger(line.c_str());
}

// Direction.

struct Direction {
  explicit Direction(const MotionBlurParam& p) {
    const f32 angle = std::atan2(p.dirY, p.dirX);
    cos = static_cast<f32>(std::cos(double{angle}));
    sin = static_cast<f32>(std::sin(double{angle}));
  }

  f32 cos, sin;
};

/// The columns, or rows, of a destination that the source covers when a motion reaches `extent`.
struct Cover {
  Cover(i32 extent, i32 dstSize, i32 srcSize)
      : first(std::max(extent, 0)), last(i64{dstSize} - 1 + std::min(extent, 0)), size(srcSize) {}

  i32 Sample(i32 at, f32 offset) const {
    const f32 place = static_cast<f32>(at) + offset;
    const bool outside = place < static_cast<f32>(first) || place > static_cast<f32>(last);
    return outside ? kMiss : Find(TruncateToI32(place), first, last, size);
  }

  i32 first;
  i64 last;
  i32 size;
};

/// Copies packed rows. A destination too small for them is cleared, and the error reported.
void CopyPacked(const ImageDesc& src, const ImageDesc& dst) {
  const i64 bytes = i64{src.width} * src.height * 4;
  const i64 room = i64{dst.pitch} * std::max(dst.height, 0);
  if (bytes == 0) return;
  if (room >= bytes) {
    std::memmove(dst.data, src.data, static_cast<size_t>(bytes));
  } else {
    if (room > 0) std::memset(dst.data, 0, static_cast<size_t>(room));
    ReportRangeError();
  }
}

u32 BlurDirection(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p,
                  RunPlan* run) {
  if (src.data == nullptr || dst.data == nullptr) return PICTAVO_E_INVALIDARG;
  const i32 n = DirectionPlaces(p, p.strength);  // not limited
  if (n == 0) return CopyPacked(src, dst), PICTAVO_S_OK;
  const Samples samples(n, p.maxSamples);
  if (!samples.AreUsable()) return PICTAVO_E_INVALIDARG;
  const Direction direction(p);
  const i32 extentX = TruncateToI32(static_cast<f32>(n - 1) * direction.cos);
  const i32 extentY = TruncateToI32(static_cast<f32>(n - 1) * direction.sin);
  WarnOfSize("MotionBlurDirection", SizeOf(dst), i64{src.width} + std::abs(i64{extentX}),
             i64{src.height} + std::abs(i64{extentY}));
  if (SizeOf(dst).IsEmpty()) return PICTAVO_S_OK;
  const Cover columns(extentX, dst.width, src.width), rows(extentY, dst.height, src.height);
  const Plan plan(
      samples, SizeOf(src), SizeOf(dst),
      [&](i32 x, i32 place) { return columns.Sample(x, static_cast<f32>(place) * direction.cos); },
      [&](i32 y, i32 place) { return rows.Sample(y, static_cast<f32>(place) * direction.sin); });
  run(plan, static_cast<const u8*>(src.data), static_cast<u8*>(dst.data));
  return PICTAVO_S_OK;
}

// Zoom.

/// The picture shrunk to fit a frame that is 2 * index wider, shape kept, centred.
struct Ring {
  i32 scaleX = 65535, scaleY = 65535, offsetY = 0;  // of index 0: not quite the picture itself
};

/// False when a picture is so large that a ring's height wraps to nothing.
bool MakeRing(const Size& src, i32 index, Ring* ring) {
  if (index == 0) return true;
  const i32 width = Sum(src.width, Product(2, index));
  const i32 height = Quotient(Product(width, src.height), src.width);
  if (width == 0 || height == 0) return false;
  *ring = {Quotient(Product(src.width, 65536), width), Quotient(Product(src.height, 65536), height),
           Quotient(Difference(height, src.height), 2)};
  return true;
}

i32 Border(i32 n, i32 height) { return Difference(Product(2, n), 2) > height ? height / 2 : n - 1; }

u32 BlurScale(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p, RunPlan* run) {
  if (src.data == nullptr || dst.data == nullptr || p.zoom == 1) return PICTAVO_E_INVALIDARG;
  const i32 n = ZoomPlaces(p, src.width);
  const Samples samples(n, p.maxSamples);
  if (!samples.AreUsable()) return PICTAVO_E_INVALIDARG;
  std::vector<Ring> rings(static_cast<size_t>(samples.places.back()) + 1);
  for (const i32 index : samples.places) {
    if (!MakeRing(SizeOf(src), index, &rings[static_cast<size_t>(index)]))
      return PICTAVO_E_INVALIDARG;
  }
  const i32 border = Border(n, src.height);
  WarnOfSize("MotionBlurScale", SizeOf(dst), src.width + 2 * i64{border},
             src.height + 2 * i64{border});
  if (SizeOf(dst).IsEmpty()) return PICTAVO_S_OK;
  const Plan plan(
      samples, SizeOf(src), SizeOf(dst),
      [&](i32 x, i32 index) {
        const Ring& ring = rings[static_cast<size_t>(index)];
        return Find(Product(Sum(index, x), ring.scaleX) >> 16, border, i64{dst.width} - border - 1,
                    src.width);
      },
      [&](i32 y, i32 index) {
        const Ring& ring = rings[static_cast<size_t>(index)];
        return Find(Product(Sum(ring.offsetY, y), ring.scaleY) >> 16, border,
                    i64{dst.height} - border - 1, src.height);
      });
  run(plan, static_cast<const u8*>(src.data), static_cast<u8*>(dst.data));
  return PICTAVO_S_OK;
}

// ---------------------------------------------------------------------------------------------
// Spin: every pixel has a streak of its own, along the tangent of its circle.

struct Spin {
  Spin(const ImageDesc& s, const ImageDesc& d)
      : src(s),
        dst(d),
        left((d.width - s.width) / 2),
        top((d.height - s.height) / 2),
        centreX(d.width / 2),
        centreY(d.height / 2),
        reach(static_cast<f32>(i64{centreX} * centreX + i64{centreY} * centreY)) {}

  const ImageDesc& src;
  const ImageDesc& dst;
  i32 left, top;  // of the source, in the destination
  i32 centreX, centreY;
  f32 reach;  // square of a corner's distance from the centre
};

using RunSpin = void(const Spin& spin, const Samples& samples);

using D = double;
D All(double x) { return x; }
D Abs(D x) { return std::abs(x); }
D Min(D a, D b) { return std::min(a, b); }
D Max(D a, D b) { return std::max(a, b); }
D Sqrt(D x) { return std::sqrt(x); }
D Select(bool mask, D yes, D no) { return mask ? yes : no; }
D RoundToSingle(D x) { return static_cast<f32>(x); }
#include "cpu/filters/motion_blur_heading.inl"

void RunSpinPortable(const Spin& spin, const Samples& samples) {
  const u8* src = static_cast<const u8*>(spin.src.data);
  for (i32 y = 0; y < spin.dst.height; ++y) {
    u8* to = static_cast<u8*>(spin.dst.data) + i64{y} * spin.dst.pitch;
    const f32 row = static_cast<f32>(y), u = static_cast<f32>(spin.centreY - y);  // upwards
    for (i32 x = 0; x < spin.dst.width; ++x, to += 4) {
      const f32 column = static_cast<f32>(x), v = static_cast<f32>(x - spin.centreX);
      const f32 distance = std::sqrt((u * u + v * v) / spin.reach);
      const Heading heading = HeadingOf(double{u}, double{v});
      const f32 cos = static_cast<f32>(heading.cos), sin = static_cast<f32>(heading.sin);
      Mean mean;
      for (const i32 place : samples.places) {
        const f32 a = static_cast<f32>(place);
        const i32 atY = Find(TruncateToI32(a * cos * distance + row), spin.top,
                             i64{spin.src.height} - 1 + spin.top, spin.src.height);
        const i32 atX = Find(TruncateToI32(a * sin * distance + column), spin.left,
                             i64{spin.src.width} - 1 + spin.left, spin.src.width);
        if (atY == kMiss || atX == kMiss) continue;
        mean.Add(src + i64{atY} * spin.src.pitch + 4 * i64{atX});
      }
      mean.Store(to, samples.count());
    }
  }
}

u32 BlurRotation(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p,
                 RunSpin* run) {
  if (src.data == nullptr || dst.data == nullptr || p.angle == 0) return PICTAVO_E_INVALIDARG;
  const Samples samples(SpinPlaces(p, SizeOf(src)), p.maxSamples);
  if (!samples.AreUsable()) return PICTAVO_E_INVALIDARG;
  if (!SizeOf(dst).IsEmpty()) run(Spin(src, dst), samples);
  return PICTAVO_S_OK;
}

}  // namespace

#define KERNELS "cpu/filters/motion_blur_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

using Kernel = u32(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& param);

u32 MotionBlurDirection(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p) {
  return BlurDirection(src, dst, p, RunPlanPortable);
}
u32 MotionBlurDirection_SSE4_1(const ImageDesc& src, const ImageDesc& dst,
                               const MotionBlurParam& p) {
  return BlurDirection(src, dst, p, sse41::RunPlan);
}
u32 MotionBlurDirection_AVX2(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p) {
  return BlurDirection(src, dst, p, avx2::RunPlan);
}
u32 MotionBlurScale(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p) {
  return BlurScale(src, dst, p, RunPlanPortable);
}
u32 MotionBlurScale_SSE4_1(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p) {
  return BlurScale(src, dst, p, sse41::RunPlan);
}
u32 MotionBlurRotation(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p) {
  return BlurRotation(src, dst, p, RunSpinPortable);
}
u32 MotionBlurRotation_SSE4_1(const ImageDesc& src, const ImageDesc& dst,
                              const MotionBlurParam& p) {
  return BlurRotation(src, dst, p, sse41::RunSpin);
}
u32 MotionBlurRotation_AVX2(const ImageDesc& src, const ImageDesc& dst, const MotionBlurParam& p) {
  return BlurRotation(src, dst, p, avx2::RunSpin);
}

Kernel* ChooseKernel(Motion motion, i32 level) {
  static constexpr Builds<Kernel*> kDirection = {.portable = MotionBlurDirection,
                                                 .sse41 = MotionBlurDirection_SSE4_1,
                                                 .avx2 = MotionBlurDirection_AVX2};
  static constexpr Builds<Kernel*> kScale = {.portable = MotionBlurScale,
                                             .sse41 = MotionBlurScale_SSE4_1};
  static constexpr Builds<Kernel*> kRotation = {.portable = MotionBlurRotation,
                                                .sse41 = MotionBlurRotation_SSE4_1,
                                                .avx2 = MotionBlurRotation_AVX2};
  switch (motion) {
    case Motion::kDirection:
      return kDirection.For(level);
    case Motion::kZoom:
      return kScale.For(level);
    default:
      return kRotation.For(level);
  }
}

bool IsUsable(const ImageDesc& image) {
  return image.memoryKind != PICTAVO_MEMORY_D3D11_TEXTURE &&
         (SizeOf(image).IsEmpty() || FitsInMemory(image.width, image.height));
}

}  // namespace

u32 MotionBlur(i32 level, const ImageDesc* src, const ImageDesc* dst,
               const MotionBlurParam* param) noexcept {
  if (src == nullptr || dst == nullptr || param == nullptr) return PICTAVO_E_INVALIDARG;
  if (!IsUsable(*src) || !IsUsable(*dst) || src->width < 0 || src->height < 0)
    return PICTAVO_E_INVALIDARG;
  Kernel* const kernel = ChooseKernel(ChooseMotion(*param, SizeOf(*src)), level);
  try {
    return kernel(ImageDesc(*src), ImageDesc(*dst), MotionBlurParam(*param));
  } catch (const std::bad_alloc&) {
    return PICTAVO_E_OUTOFMEMORY;
  }
}

u32 GetMotionBlurDstSize(const ImageDesc* src, ImageDesc* dst, const MotionBlurParam* param,
                         i32* offsetX, i32* offsetY) noexcept {
  if (src == nullptr || dst == nullptr || param == nullptr || offsetX == nullptr ||
      offsetY == nullptr) {
    return PICTAVO_E_POINTER;
  }
  const auto fill = [&](i32 width, i32 height, i32 x, i32 y) {
    dst->width = width;
    dst->height = height;
    dst->pitch = Product(width, 4);
    *offsetX = x;
    *offsetY = y;
    return PICTAVO_S_OK;
  };
  const auto grow = [&](i32 border) {
    const i32 both = Product(border, 2), offset = Difference(0, border);
    return fill(Sum(src->width, both), Sum(src->height, both), offset, offset);
  };
  const Size size = SizeOf(*src);
  switch (ChooseMotion(*param, size)) {
    case Motion::kSpin: {
      const i32 side = Product(TruncateToI32(SpinRadius(size) + 0.5f), 2);
      return fill(side, side, Difference(size.width, side) / 2, Difference(size.height, side) / 2);
    }
    case Motion::kZoom:
      return grow(Border(ZoomPlaces(*param, size.width), size.height));
    case Motion::kDirection:
      break;
  }
  const i32 n = DirectionPlaces(*param, LimitedStrength(*param));
  if (n == 0) return grow(0);
  const Direction direction(*param);
  const f32 length = static_cast<f32>(Difference(n, 1));
  const i32 x = TruncateToI32(-direction.cos * length);
  const i32 y = TruncateToI32(-direction.sin * length);
  return fill(Sum(size.width, Magnitude(x)), Sum(size.height, Magnitude(y)), std::min(x, 0),
              std::min(y, 0));
}

}  // namespace pictavo::cpu
