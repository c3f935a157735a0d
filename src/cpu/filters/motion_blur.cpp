// Which kind of motion a blur has, and how large its destination is.
#include "cpu/filters/motion_blur.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "cpu/base/numbers.h"
#include "cpu/filters/motion_plan.h"
#include "cpu/filters/motion_spin.h"
#include "platform/invalid_parameter.h"

namespace pictavo::cpu {
namespace {

struct Size {
  i32 width, height;
};

/// Negative for what has no positive counterpart.
i32 Magnitude(i32 a) { return a < 0 ? WrappedDifference(0, a) : a; }

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

/// The border that a zoom leaves on every side.
i32 Border(i32 places, i32 height) {
  return WrappedDifference(WrappedProduct(2, places), 2) > height ? height / 2 : places - 1;
}

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

bool IsUsable(const ImageDesc& image) {
  return !IsTexture(image) && image.data != nullptr &&
         (PictureIn(image).IsEmpty() || FitsInMemory(image.width, image.height));
}

/// The picture of a record, with the rows packed.
template <typename Byte>
PictureOf<Byte> PackedIn(const ImageDesc& image) {
  return {static_cast<Byte*>(image.data), image.width, image.height, i64{image.width} * 4};
}

}  // namespace

u32 MotionBlur(i32 level, const ImageDesc* src, const ImageDesc* dst,
               const MotionBlurParam* param) noexcept {
  if (src == nullptr || dst == nullptr || param == nullptr) return PICTAVO_E_INVALIDARG;
  if (!IsUsable(*src) || !IsUsable(*dst) || src->width < 0 || src->height < 0)
    return PICTAVO_E_INVALIDARG;
  const MotionBlurParam p = *param;
  const Size size = {src->width, src->height};
  Source from = PackedIn<const u8>(*src);
  Picture to = PackedIn<u8>(*dst);
  const Motion motion = ChooseMotion(p, size);
  const i32 places = motion == Motion::kSpin   ? SpinPlaces(p, size)
                     : motion == Motion::kZoom ? ZoomPlaces(p, size.width)
                                               : DirectionPlaces(p, p.strength);  // not limited
  if (motion == Motion::kDirection && places == 0) return CopyPacked(*src, *dst), PICTAVO_S_OK;
  const Samples samples(places, p.maxSamples);
  if (!samples.AreUsable()) return PICTAVO_E_INVALIDARG;
  switch (motion) {
    case Motion::kSpin:
      from.pitch = src->pitch;
      to.pitch = dst->pitch;
      return BlurSpin(level, from, to, samples);
    case Motion::kZoom:
      return BlurZoom(level, from, to, samples, Border(places, size.height));
    default:
      return BlurDirection(level, from, to, samples, places, Direction(p));
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
    dst->pitch = WrappedProduct(width, 4);
    *offsetX = x;
    *offsetY = y;
    return PICTAVO_S_OK;
  };
  const auto grow = [&](i32 border) {
    const i32 both = WrappedProduct(border, 2), offset = WrappedDifference(0, border);
    return fill(WrappedSum(src->width, both), WrappedSum(src->height, both), offset, offset);
  };
  const Size size = {src->width, src->height};
  switch (ChooseMotion(*param, size)) {
    case Motion::kSpin: {
      const i32 side = WrappedProduct(TruncateToI32(SpinRadius(size) + 0.5f), 2);
      return fill(side, side, WrappedDifference(size.width, side) / 2,
                  WrappedDifference(size.height, side) / 2);
    }
    case Motion::kZoom:
      return grow(Border(ZoomPlaces(*param, size.width), size.height));
    case Motion::kDirection:
      break;
  }
  const i32 n = DirectionPlaces(*param, LimitedStrength(*param));
  if (n == 0) return grow(0);
  const Direction direction(*param);
  const f32 length = static_cast<f32>(WrappedDifference(n, 1));
  const i32 x = TruncateToI32(-direction.cos * length);
  const i32 y = TruncateToI32(-direction.sin * length);
  return fill(WrappedSum(size.width, Magnitude(x)), WrappedSum(size.height, Magnitude(y)),
              std::min(x, 0), std::min(y, 0));
}

}  // namespace pictavo::cpu
