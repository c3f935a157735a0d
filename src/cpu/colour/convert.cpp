#include "cpu/colour/convert.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/numbers.h"
#include "cpu/base/picture.h"
#include "cpu/colour/convert_simd.h"

namespace pictavo::cpu {
namespace {

// ---------------------------------------------------------------------------------------------
// The rules.

/// A row of the BT.601 studio-range matrix, in units of 1/4096; the constant holds the offset and
/// one half.
struct ToYuv {
  i32 r, g, b, constant;

  /// Modulo 2^32, as the vector builds sum.
  constexpr i32 Sum(i64 red, i64 green, i64 blue) const {
    return static_cast<i32>(red * r + green * g + blue * b + constant);
  }
};
constexpr ToYuv kToY = {1053, 2064, 401, 67584};
constexpr ToYuv kToU = {-606, -1192, 1798, 526336};
constexpr ToYuv kToV = {1798, -1507, -291, 526336};

struct ToRgb {
  i32 y, u, v;
};
constexpr ToRgb kToR = {4768, 0, 6537};
constexpr ToRgb kToG = {4768, -1602, -3330};
constexpr ToRgb kToB = {4768, 8266, 0};

/// From a colour less its offsets.
u32 RgbChannel(const ToRgb& row, i64 y, i64 u, i64 v) {
  return static_cast<u32>(
      std::clamp<i64>((y * row.y + u * row.u + v * row.v + 2048) >> 12, 0, 255));
}

/// Converts `width` pixels of src into dst; those that work in place take the same as both.
using RowFn = void(u8* dst, const u8* src, i64 width);

void PremultiplyRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const int alpha = src[3];
    if (alpha == 255) continue;
    for (int c = 0; c < 3; ++c) dst[c] = static_cast<u8>(((src[c] + 1) * alpha) >> 8);
  }
}

void UnpremultiplyRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const int alpha = src[3];
    if (alpha == 0) continue;
    for (int c = 0; c < 3; ++c) {
      dst[c] = static_cast<u8>(std::clamp(src[c] * 256 / alpha - 1, 0, 255));
    }
  }
}

void YuvaRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const u8 b = src[0], g = src[1], r = src[2];
    dst[0] = static_cast<u8>(kToV.Sum(r, g, b) >> 12);
    dst[1] = static_cast<u8>(kToU.Sum(r, g, b) >> 12);
    dst[2] = static_cast<u8>(kToY.Sum(r, g, b) >> 12);
    dst[3] = src[3];
  }
}

void BgraRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const i64 y = src[2] - 16, u = src[1] - 128, v = src[0] - 128;
    dst[0] = static_cast<u8>(RgbChannel(kToB, y, u, v));
    dst[1] = static_cast<u8>(RgbChannel(kToG, y, u, v));
    dst[2] = static_cast<u8>(RgbChannel(kToR, y, u, v));
    dst[3] = src[3];
  }
}

void GrayRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    dst[0] = dst[1] = dst[2] = static_cast<u8>((src[0] + src[1] + src[2]) / 3);
  }
}

/// One build of every rule.
struct ConvertBuild {
  RowFn *premultiply, *unpremultiply, *yuva, *bgra, *gray;
};

constexpr ConvertBuild kPortableBuild = {PremultiplyRow, UnpremultiplyRow, YuvaRow, BgraRow,
                                         GrayRow};

}  // namespace

#define KERNELS "cpu/colour/convert_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

constexpr Builds<const ConvertBuild*> kBuilds = {
    .portable = &kPortableBuild, .sse2 = &sse2::kConvertBuild, .avx2 = &avx2::kConvertBuild};

RowFn* RowFor(i32 level, RowFn* ConvertBuild::*rule) { return kBuilds.For(level)->*rule; }

u32 ConvertInPlace(RowFn* row, u8* buffer, i32 width, i32 height, i32 pitch) {
  if (buffer == nullptr || width < 1) return 1;
  ForPixels({buffer, width, height, pitch}, {buffer, width, height, pitch}, row);
  return 1;
}

/// Packed pixels are one row.
u32 ConvertInPlace(RowFn* row, u8* buffer, i32 width, i32 height) {
  if (buffer == nullptr || width < 1 || height < 1 || !FitsInMemory(width, height)) return 1;
  row(buffer, buffer, i64{width} * height);
  return 1;
}

/// A single colour's result from level 3: a negative sum becomes 255.
u32 Packed(i32 sum) { return std::min(255u, static_cast<u32>(sum) >> 12); }

i64 Saturated16(i64 x) { return std::clamp<i64>(x, INT16_MIN, INT16_MAX); }

/// A channel of an HSL colour: lightness less `chroma` times a wave of the hue, which is shifted by
/// `degrees` and runs from -30 to 30 in steps of its slopes and rests.
u8 HslChannel(i32 hue, i32 degrees, i32 lightness, i32 chroma) {
  const i32 at = (hue + degrees) % 360;
  const i32 wave = std::clamp(std::min(at - 90, 270 - at), -30, 30);
  constexpr i32 kUnit = 2 * 30 * 255;
  return static_cast<u8>((lightness * kUnit - chroma * wave + kUnit / 2) / kUnit);
}

}  // namespace

void ConvertRGBToYUVPixel(i32 level, i32 r, i32 g, i32 b, u32* y, u32* u, u32* v) noexcept {
  if (y == nullptr || u == nullptr || v == nullptr) return;
  const auto result = [=](const ToYuv& row) {
    const i32 sum = row.Sum(r, g, b);
    return level >= PICTAVO_LEVEL_SSE2 ? Packed(sum) : static_cast<u32>(sum >> 12);
  };
  *y = result(kToY);
  *u = result(kToU);
  *v = result(kToV);
}

void ConvertYUVToRGBPixel(i32 level, i32 y, i32 u, i32 v, u32* r, u32* g, u32* b) noexcept {
  if (r == nullptr || g == nullptr || b == nullptr) return;
  const auto less = [=](i64 x, i64 offset) {
    return level >= PICTAVO_LEVEL_SSE2 ? Saturated16(Saturated16(x) - offset) : x - offset;
  };
  const i64 luma = less(y, 16), cb = less(u, 128), cr = less(v, 128);
  *r = RgbChannel(kToR, luma, cb, cr);
  *g = RgbChannel(kToG, luma, cb, cr);
  *b = RgbChannel(kToB, luma, cb, cr);
}

u32 UnpremultiplyPitched(i32 level, u8* buffer, i32 width, i32 height, i32 pitch) noexcept {
  return ConvertInPlace(RowFor(level, &ConvertBuild::unpremultiply), buffer, width, height, pitch);
}

u32 UnpremultiplyPacked(i32 level, u8* buffer, i32 width, i32 height) noexcept {
  return ConvertInPlace(RowFor(level, &ConvertBuild::unpremultiply), buffer, width, height);
}

u32 PremultiplyPitched(i32 level, u8* buffer, i32 width, i32 height, i32 pitch) noexcept {
  return ConvertInPlace(RowFor(level, &ConvertBuild::premultiply), buffer, width, height, pitch);
}

u32 PremultiplyPacked(i32 level, u8* buffer, i32 width, i32 height) noexcept {
  return ConvertInPlace(RowFor(level, &ConvertBuild::premultiply), buffer, width, height);
}

u32 ConvertBGRAToYUVA(i32 level, const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                      i32 dstPitch) noexcept {
  if (src == nullptr || dst == nullptr) return PICTAVO_E_INVALIDARG;
  if (width == 0 || height == 0) return PICTAVO_S_FALSE;
  ForPixels({dst, width, height, dstPitch}, {src, width, height, srcPitch},
            RowFor(level, &ConvertBuild::yuva));
  return PICTAVO_S_OK;
}

void ConvertRGBToYUV4Pixels(const u8* pixels, i32* y, i32* u, i32* v) noexcept {
  if (pixels == nullptr || y == nullptr || u == nullptr || v == nullptr) return;
  const sse2::V p = sse2::V::Load(pixels);
  const auto convert = [p](const ToYuv& row, i32* to) {
    const sse2::V sum = sse2::YuvSum(row, 1)(sse2::Even(p), sse2::GreenOne(p));
    ShiftRightU32(sum, 12).Store(reinterpret_cast<u8*>(to));
  };
  convert(kToY, y);
  convert(kToU, u);
  convert(kToV, v);
}

void ConvertRGBToYUVPixelsPortable(const u8* pixels, i32* y, i32* u, i32* v) noexcept {
  if (pixels == nullptr || y == nullptr || u == nullptr || v == nullptr) return;
  for (int i = 0; i < 4; ++i, pixels += 4) {
    y[i] = kToY.Sum(pixels[2], pixels[1], pixels[0]) >> 12;
    u[i] = kToU.Sum(pixels[2], pixels[1], pixels[0]) >> 12;
    v[i] = kToV.Sum(pixels[2], pixels[1], pixels[0]) >> 12;
  }
}

u32 ConvertBGRAToGray(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u32* dst,
                      i32 dstPitch) noexcept {
  if (src == nullptr || dst == nullptr) return PICTAVO_E_FAIL;
  if (width < 1) return PICTAVO_S_OK;
  const i64 dstStep = (width + (dstPitch - 4 * i64{width}) / 4) * 4;  // whole pixels
  ForPixels({reinterpret_cast<u8*>(dst), width, height, dstStep}, {src, width, height, srcPitch},
            RowFor(level, &ConvertBuild::gray));
  return PICTAVO_S_OK;
}

u32 ConvertYUVAToBGRA(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                      i32 dstPitch) noexcept {
  const Picture to = {dst, width, height, dstPitch};
  const Source from = {src, width, height, srcPitch};
  const u32 code = Check(to, from);
  if (code == PICTAVO_S_OK) ForRows(to, from, RowFor(level, &ConvertBuild::bgra));
  return code;
}

u32 ConvertHSLToRGB(i32 hue, u8 saturation, u8 lightness, u8* r, u8* g, u8* b) noexcept {
  if (r == nullptr || g == nullptr || b == nullptr) return PICTAVO_E_POINTER;
  const i32 wrapped = (hue % 360 + 360) % 360;
  const i32 chroma = (255 - std::abs(2 * lightness - 255)) * saturation;
  *r = HslChannel(wrapped, 0, lightness, chroma);
  *g = HslChannel(wrapped, 240, lightness, chroma);
  *b = HslChannel(wrapped, 120, lightness, chroma);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
