#include "cpu/colour/channels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "cpu/base/builds.h"
#include "cpu/base/luma.h"
#include "cpu/base/picture.h"
#include "cpu/colour/channels_simd.h"

namespace pictavo::cpu {
namespace {

// ---------------------------------------------------------------------------------------------
// The rules.

constexpr u32 kLuma = 4;  // a channel of its own

/// Which byte of the source's pixel each of the four is made from.
struct Places {
  u32 from[4];
};
constexpr u32 kZero = 4, kWhole = 5;  // no byte's places

using Table = u8[256];

void SetAlphaRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x) dst[4 * x + 3] = src[x];
}

void ExtractRow(u8* dst, const u8* src, i64 width, u32 channel) {
  for (i64 x = 0; x < width; ++x, src += 4)
    dst[x] = channel == kLuma ? static_cast<u8>(LumaOf(src)) : src[channel];
}

void ShuffleRow(u8* dst, const u8* src, i64 width, const Places& places) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const u8 bytes[] = {src[0], src[1], src[2], src[3], 0, 255};
    for (int c = 0; c < 4; ++c) dst[c] = bytes[places.from[c]];
  }
}

void ExpandByRow(u8* dst, const u8* src, i64 width, const Table& table) {
  for (i64 x = 0; x < width; ++x, dst += 4) {
    dst[0] = dst[1] = dst[2] = table[src[x]];
    dst[3] = 255;
  }
}

void ExpandRow(u8* dst, const u8* src, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4) {
    dst[0] = dst[1] = dst[2] = src[x];
    dst[3] = 255;
  }
}

/// One build of every rule.
struct ChannelsBuild {
  void (*setAlpha)(u8* dst, const u8* src, i64 width);
  void (*extract)(u8* dst, const u8* src, i64 width, u32 channel);
  void (*shuffle)(u8* dst, const u8* src, i64 width, const Places& places);
  void (*expandBy)(u8* dst, const u8* src, i64 width, const Table& table);
  void (*expand)(u8* dst, const u8* src, i64 width);
};

constexpr ChannelsBuild kPortableBuild = {SetAlphaRow, ExtractRow, ShuffleRow, ExpandByRow,
                                          ExpandRow};

}  // namespace

#define KERNELS "cpu/colour/channels_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

constexpr Builds<const ChannelsBuild*> kBuilds = {
    .portable = &kPortableBuild, .sse41 = &sse41::kChannelsBuild, .avx2 = &avx2::kChannelsBuild};

constexpr i64 kMostPixels = PTRDIFF_MAX / 4;

/// The products have 32 bits at most, so that nothing is rounded but the result.
void MultiplyAll(f32 gain, Table& table) {
  for (int v = 0; v < 256; ++v) {
    table[v] = static_cast<u8>(std::min(255.0, std::floor(v * double{gain} + 0.5)));
  }
}

/// Makes grey pixels of a plane: checks, and what to do with a row.
template <typename Row>
u32 Expand(bool holds, const Picture& dst, const Source& src, Row row) {
  const u32 code = CheckWith(holds, dst, src);
  if (code == PICTAVO_E_POINTER || !holds) return code;
  if (dst.IsEmpty()) return PICTAVO_S_OK;
  if (code != PICTAVO_S_OK) return code;
  if (ShareBytes(dst, src)) return PICTAVO_E_INVALIDARG;
  ForPixels(dst, src, row);
  return PICTAVO_S_OK;
}

}  // namespace

u32 SetAlphaPlane(i32 level, u8* pixels, const u8* plane, u32 width, u32 height) noexcept {
  const std::uint64_t pixelCount = std::uint64_t{width} * height;
  const bool fits = pixelCount <= kMostPixels;
  const i64 count = fits ? static_cast<i64>(pixelCount) : 0;
  const Picture to = {pixels, count, 1, 4 * count};
  const Source from = {plane, count, 1, count, 1};
  const u32 code = CheckWith(fits, to, from);
  if (code != PICTAVO_S_OK) return code;
  if (ShareBytes(to, from)) return PICTAVO_E_INVALIDARG;
  kBuilds.For(level)->setAlpha(pixels, plane, count);
  return PICTAVO_S_OK;
}

u32 ExtractPlane(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                 i32 dstPitch, u32 channel) noexcept {
  const Picture to = {dst, width, height, dstPitch, 1};
  const Source from = {src, width, height, srcPitch};
  const u32 code = CheckWith(channel <= kLuma, to, from);
  if (code != PICTAVO_S_OK) return code;
  if (ShareBytes(to, from)) return PICTAVO_E_INVALIDARG;
  ForPixels(to, from, [&, row = kBuilds.For(level)->extract](u8* d, const u8* s, i64 pixels) {
    row(d, s, pixels, channel);
  });
  return PICTAVO_S_OK;
}

u32 ShuffleChannels(i32 level, u8* dst, const u8* src, i64 count, u32 b, u32 g, u32 r,
                    u32 a) noexcept {
  const bool holds = std::max({b, g, r, a}) <= kWhole && count <= kMostPixels;
  const i64 pixels = std::clamp<i64>(count, 0, kMostPixels);
  const u32 code =
      CheckWith(holds, Picture{dst, pixels, 1, 4 * pixels}, Source{src, pixels, 1, 4 * pixels});
  if (code != PICTAVO_S_OK) return code;
  kBuilds.For(level)->shuffle(dst, src, pixels, {{b, g, r, a}});
  return PICTAVO_S_OK;
}

u32 ExpandPlaneScaled(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                      i32 dstPitch, f32 gain) noexcept {
  Table table;
  const bool holds = gain >= 0 && gain <= 255;
  if (holds) MultiplyAll(gain, table);
  const auto row = kBuilds.For(level)->expandBy;
  return Expand(holds, {dst, width, height, dstPitch}, {src, width, height, srcPitch, 1},
                [&](u8* d, const u8* s, i64 pixels) { row(d, s, pixels, table); });
}

u32 ExpandPlane(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                i32 dstPitch) noexcept {
  return Expand(true, {dst, width, height, dstPitch}, {src, width, height, srcPitch, 1},
                kBuilds.For(level)->expand);
}

}  // namespace pictavo::cpu
