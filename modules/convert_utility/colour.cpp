#include "convert_utility/colour.h"

#include <array>
#include <cstdlib>

#include "convert_utility/colour_space.h"
#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"

namespace pictavo::colour {
namespace {

using cpu::Picture;
using cpu::Source;

/// PICTAVO_S_OK when there are pixels to convert, else what the operation returns.
u32 Check(const Picture& dst, const Source& src) {
  if (dst.pixels == nullptr || src.pixels == nullptr) return PICTAVO_E_POINTER;
  if (dst.width < 0 || dst.height < 0) return PICTAVO_E_INVALIDARG;
  if (dst.IsEmpty()) return PICTAVO_S_FALSE;
  const auto holdsRow = [&](i64 pitch) { return std::abs(pitch) >= 4 * dst.width; };
  return holdsRow(dst.pitch) && holdsRow(src.pitch) ? PICTAVO_S_OK : PICTAVO_E_INVALIDARG;
}

using ConvertFn = void(const Space& space, const Picture& dst, const Source& src);

/// The conversions of pictures by model.
struct Build {
  ConvertFn *fromRgb[3], *toRgb[3];
};

// ---------------------------------------------------------------------------------------------
// The portable build. The first number of a colour stands in red's byte, the last in blue's.

using ColourFn = Colour(const Space& space, const Colour& colour);

template <ColourFn convert>
void ConvertPicture(const Space& space, const Picture& picture, const Source& source) {
  cpu::ForRows(picture, source, [&](u8* dst, const u8* src, i64 width) {
    for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
      const Colour colour = convert(space, {src[2], src[1], src[0]});
      for (size_t i = 0; i < 3; ++i) dst[2 - i] = static_cast<u8>(colour[i]);
      dst[3] = src[3];
    }
  });
}

constexpr Build kPortable = {
    {ConvertPicture<FromRgb>, ConvertPicture<FromRgb>, ConvertPicture<FromRgb>},
    {ConvertPicture<ToRgb>, ConvertPicture<ToRgb>, ConvertPicture<ToRgb>},
};

}  // namespace

#define KERNELS "convert_utility/colour_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

constexpr cpu::Builds<const Build*> kBuilds = {
    .portable = &kPortable, .sse2 = &sse2::kBuild, .avx2 = &avx2::kBuild};

u32 ConvertChecked(ConvertFn* const (Build::*direction)[3], i32 level, const Picture& dst,
                   const Source& src, u32 model, u32 matrix, u32 range) {
  const u32 result = Check(dst, src);
  if (result == PICTAVO_E_POINTER) return result;
  Space space;
  // A hue in degrees does not fit a byte.
  if (range == PICTAVO_RANGE_DEGREES || !FindSpace(model, matrix, range, &space)) {
    return PICTAVO_E_INVALIDARG;
  }
  if (result == PICTAVO_S_OK) (kBuilds.For(level)->*direction)[model](space, dst, src);
  return result;
}

bool IsByte(i32 x) { return x >= 0 && x <= 255; }

void Write(const Colour& colour, u32* first, u32* second, u32* third) {
  *first = static_cast<u32>(colour[0]);
  *second = static_cast<u32>(colour[1]);
  *third = static_cast<u32>(colour[2]);
}

}  // namespace

u32 ConvertPictureFromRGB(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                          i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept {
  return ConvertChecked(&Build::fromRgb, level, {dst, width, height, dstPitch},
                        {src, width, height, srcPitch}, model, matrix, range);
}

u32 ConvertPictureToRGB(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                        i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept {
  return ConvertChecked(&Build::toRgb, level, {dst, width, height, dstPitch},
                        {src, width, height, srcPitch}, model, matrix, range);
}

u32 ConvertColorFromRGB(i32 r, i32 g, i32 b, u32* first, u32* second, u32* third, u32 model,
                        u32 matrix, u32 range) noexcept {
  if (first == nullptr || second == nullptr || third == nullptr) return PICTAVO_E_POINTER;
  Space space;
  if (!FindSpace(model, matrix, range, &space) || !IsByte(r) || !IsByte(g) || !IsByte(b)) {
    return PICTAVO_E_INVALIDARG;
  }
  Write(FromRgb(space, {r, g, b}), first, second, third);
  return PICTAVO_S_OK;
}

u32 ConvertColorToRGB(i32 first, i32 second, i32 third, u32* r, u32* g, u32* b, u32 model,
                      u32 matrix, u32 range) noexcept {
  if (r == nullptr || g == nullptr || b == nullptr) return PICTAVO_E_POINTER;
  Space space;
  if (!FindSpace(model, matrix, range, &space) || !IsByte(second) || !IsByte(third) ||
      (model == PICTAVO_COLOR_YUV && !IsByte(first))) {
    return PICTAVO_E_INVALIDARG;
  }
  Write(ToRgb(space, {first, second, third}), r, g, b);
  return PICTAVO_S_OK;
}

u32 ConvertPixelFromRGB(const u8* pixel, u32* first, u32* second, u32* third, u32 model, u32 matrix,
                        u32 range) noexcept {
  if (pixel == nullptr) return PICTAVO_E_POINTER;
  return ConvertColorFromRGB(pixel[2], pixel[1], pixel[0], first, second, third, model, matrix,
                             range);
}

}  // namespace pictavo::colour
