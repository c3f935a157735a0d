#include "convert_utility/colour.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "convert_utility/colour_space.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"
#include "cpu/simd/target_region.h"

namespace pictavo::colour {
namespace {

struct Pictures {
  u8* dst;
  const u8* src;
  i32 width, height, dstPitch, srcPitch;

  /// PICTAVO_S_OK when there are pixels to convert, else what the operation returns.
  u32 Check() const {
    if (dst == nullptr || src == nullptr) return PICTAVO_E_POINTER;
    if (width < 0 || height < 0) return PICTAVO_E_INVALIDARG;
    if (width == 0 || height == 0) return PICTAVO_S_FALSE;
    const auto holdsRow = [this](i64 pitch) { return std::abs(pitch) >= 4 * i64{width}; };
    return holdsRow(dstPitch) && holdsRow(srcPitch) ? PICTAVO_S_OK : PICTAVO_E_INVALIDARG;
  }
};

using ConvertFn = void(const Space& space, const Pictures& p);

/// The conversions of pictures by model.
struct Build {
  ConvertFn *fromRgb[3], *toRgb[3];
};

// ---------------------------------------------------------------------------------------------
// The portable build. The first number of a colour stands in red's byte, the last in blue's.

using ColourFn = Colour(const Space& space, const Colour& colour);

template <ColourFn convert>
void ConvertPicture(const Space& space, const Pictures& p) {
  for (i64 y = 0; y < p.height; ++y) {
    u8* dst = p.dst + y * p.dstPitch;
    const u8* src = p.src + y * p.srcPitch;
    for (i64 x = 0; x < p.width; ++x, dst += 4, src += 4) {
      const Colour colour = convert(space, {src[2], src[1], src[0]});
      for (size_t i = 0; i < 3; ++i) dst[2 - i] = static_cast<u8>(colour[i]);
      dst[3] = src[3];
    }
  }
}

constexpr Build kPortable = {
    {ConvertPicture<FromRgb>, ConvertPicture<FromRgb>, ConvertPicture<FromRgb>},
    {ConvertPicture<ToRgb>, ConvertPicture<ToRgb>, ConvertPicture<ToRgb>},
};

}  // namespace

namespace sse2 {
namespace {
using cpu::sse2::V;
#include "cpu/simd/pixels.inl"

/// Pixels of numbers that are limited to bytes.
inline V PackSaturated(V b, V g, V r, V a) {
  const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(b.v, g.v), _mm_packs_epi32(r.v, a.v));
  const __m128i br = _mm_unpacklo_epi8(bytes, _mm_srli_si128(bytes, 8));
  return {_mm_unpacklo_epi8(br, _mm_srli_si128(br, 8))};
}

#include "convert_utility/colour_rows.inl"
}  // namespace
}  // namespace sse2

TARGET_REGION("avx2")
namespace avx2 {
namespace {
using cpu::avx2::V;
#include "cpu/simd/pixels.inl"

inline V PackSaturated(V b, V g, V r, V a) { return cpu::avx2::Pixels(b, g, r, a); }

#include "convert_utility/colour_rows.inl"
}  // namespace
}  // namespace avx2
TARGET_REGION_END

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

const Build& BuildFor(i32 level) {
  return level >= PICTAVO_LEVEL_AVX2   ? avx2::kBuild
         : level >= PICTAVO_LEVEL_SSE2 ? sse2::kBuild
                                       : kPortable;
}

u32 ConvertChecked(ConvertFn* const (Build::*direction)[3], i32 level, const Pictures& p, u32 model,
                   u32 matrix, u32 range) {
  const u32 result = p.Check();
  if (result == PICTAVO_E_POINTER) return result;
  Space space;
  // A hue in degrees does not fit a byte.
  if (range == PICTAVO_RANGE_DEGREES || !FindSpace(model, matrix, range, &space)) {
    return PICTAVO_E_INVALIDARG;
  }
  if (result == PICTAVO_S_OK) (BuildFor(level).*direction)[model](space, p);
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
  return ConvertChecked(&Build::fromRgb, level, {dst, src, width, height, dstPitch, srcPitch},
                        model, matrix, range);
}

u32 ConvertPictureToRGB(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                        i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept {
  return ConvertChecked(&Build::toRgb, level, {dst, src, width, height, dstPitch, srcPitch}, model,
                        matrix, range);
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
