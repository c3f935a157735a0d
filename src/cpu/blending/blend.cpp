#include "cpu/blending/blend.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/numbers.h"
#include "cpu/base/picture.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse2.h"

namespace pictavo::cpu {
namespace {

/// What the pixels of one row are blended with.
struct BlendRow {
  f32 factor = 1.0f;   // of the opacity ramp
  f32 gain = 1.0f;     // opacity + 1 where the rule has an opacity byte …
  i32 gainShift = 0;   // … and 8, the shift that takes it back
  u32 backdrop = 0;    // a colour that stands in for the destination
  u32 multiplier = 0;  // of vector rows that have one: weight = (source alpha * multiplier) >> 16
};

/// Blends `width` pixels of src into dst.
using RowFn = void(u8* dst, const u8* src, i64 width, const BlendRow& row);

// ---------------------------------------------------------------------------------------------
// The rules. Weights leave 0 … 255 when a ramp leaves 0 … 1; sums of 64 bits hold what they make.

i32 Weight(u8 alpha, const BlendRow& row) {
  return TruncateToI32(static_cast<f32>(alpha) * row.gain * row.factor) >> row.gainShift;
}

u8 Mixed(i64 s, i64 d, i64 w) { return static_cast<u8>((s * w + d * (256 - w)) >> 8); }

u8 Added(u8 s, i64 d, i64 rest, f32 factor) {
  const i64 faded = TruncateToI32(static_cast<f32>(s) * factor);
  return static_cast<u8>(std::min<i64>(255, faded + ((d * rest) >> 8)));
}

template <bool sourceAlpha>
void OverRow(u8* dst, const u8* src, i64 width, const BlendRow& row) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const i32 w = Weight(src[3], row);
    if (w == 255) {
      std::memcpy(dst, src, 4);
    } else if (w != 0) {
      for (int c = 0; c < 3; ++c) dst[c] = Mixed(src[c], dst[c], w);
      dst[3] = sourceAlpha ? src[3] : 255;
    }
  }
}

void PremultipliedRow(u8* dst, const u8* src, i64 width, const BlendRow& row) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const i32 w = Weight(src[3], row);
    if (w == 255) {
      std::memcpy(dst, src, 4);
    } else if (w != 0) {
      const i64 rest = 256 - i64{w};
      for (int c = 0; c < 3; ++c) dst[c] = Added(src[c], dst[c], rest, row.factor);
      dst[3] = 255;
    }
  }
}

void CompositeRow(u8* dst, const u8* src, i64 width, const BlendRow& row) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const i32 w = Weight(src[3], row);
    if (w == 0) continue;
    if (w == 255 || dst[3] == 0) {
      std::memcpy(dst, src, 3);
      dst[3] = static_cast<u8>(w);
    } else {
      const i64 rest = 255 - i64{w};
      for (int c = 0; c < 3; ++c) dst[c] = Added(src[c], dst[c], rest, row.factor);
      dst[3] = static_cast<u8>(255 - (((255 - dst[3]) * rest) >> 8));
    }
  }
}

template <bool writeWeight, bool onBackdrop>
void OpacityRow(u8* dst, const u8* src, i64 width, const BlendRow& row) {
  u8 backdrop[4];
  std::memcpy(backdrop, &row.backdrop, 4);
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const i32 w = Weight(src[3], row);
    if (w == 255) {
      std::memcpy(dst, src, 4);
    } else if (w != 0) {
      const u8* base = onBackdrop ? backdrop : dst;
      for (int c = 0; c < 3; ++c) dst[c] = Mixed(src[c], base[c], w);
      if (writeWeight) dst[3] = static_cast<u8>(w);
    }
  }
}

// ---------------------------------------------------------------------------------------------
// The vector builds.

/// The over rule as the vector rows have it, by pairs and with saturated 16-bit sums, for the
/// factors outside 0 … 1 that they cannot take.
void OverPairsRow(u8* dst, const u8* src, i64 width, const BlendRow& row) {
  for (i64 x = 0; x < width; x += 2) {
    const i64 pixels = std::min<i64>(2, width - x);
    u8* d = dst + 4 * x;
    const u8* s = src + 4 * x;
    const i32 weights[2] = {Weight(s[3], row), Weight(s[4 * pixels - 1], row)};
    if (weights[0] == 255 && weights[1] == 255) {
      std::memcpy(d, s, static_cast<size_t>(4 * pixels));
    } else {
      for (i64 i = 0; i < pixels; ++i) {
        const i64 w = std::max(weights[i], 0);
        for (i64 c = 4 * i; c < 4 * i + 3; ++c) {
          const i64 sum = s[c] * w + d[c] * std::max<i64>(256 - w, 0);
          d[c] = static_cast<u8>(std::min<i64>(sum, 0xFFFF) >> 8);
        }
      }
    }
  }
}

/// The vector rows of one rule.
struct RowBuilds {
  RowFn* plain;         // the weight is the source alpha
  RowFn* byMultiplier;  // it is faded by the row's multiplier
  RowFn* byProduct;     // it is faded by the row's factor, from 0 to 1
};

/// One vector build of every rule.
struct BlendBuilds {
  RowBuilds over, overSourceAlpha, premultiplied, composite;
  RowBuilds opacity, opacityOnBackdrop, opacityToAlpha, opacityToAlphaOnBackdrop;
};

}  // namespace

#define KERNELS "cpu/blending/blend_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

struct BlendRule {
  RowFn* portable;
  RowBuilds BlendBuilds::*builds;
  RowFn* wild;  // from level 3, for factors outside 0 … 1
};

constexpr BlendRule kOver = {OverRow<false>, &BlendBuilds::over, OverPairsRow};
constexpr BlendRule kOverSourceAlpha = {OverRow<true>, &BlendBuilds::overSourceAlpha, nullptr};
constexpr BlendRule kPremultiplied = {PremultipliedRow, &BlendBuilds::premultiplied,
                                      PremultipliedRow};
constexpr BlendRule kComposite = {CompositeRow, &BlendBuilds::composite, CompositeRow};
constexpr BlendRule kOpacity[2][2] = {  // [write the weight into alpha][on a backdrop]
    {{OpacityRow<false, false>, &BlendBuilds::opacity, OpacityRow<false, false>},
     {OpacityRow<false, true>, &BlendBuilds::opacityOnBackdrop, OpacityRow<false, true>}},
    {{OpacityRow<true, false>, &BlendBuilds::opacityToAlpha, OpacityRow<true, false>},
     {OpacityRow<true, true>, &BlendBuilds::opacityToAlphaOnBackdrop, OpacityRow<true, true>}}};

constexpr Builds<const BlendBuilds*> kBuilds = {.sse2 = &sse2::kBlendBuilds,
                                                .avx2 = &avx2::kBlendBuilds};

/// The destination and the source, of its size.
struct Pictures {
  Picture dst;
  Source src;

  Pictures(u8* to, const u8* from, i64 width, i64 height, i64 dstPitch, i64 srcPitch)
      : dst{to, width, height, dstPitch}, src{from, width, height, srcPitch} {}

  /// With the source upwards, if `flip` says so.
  Pictures Flipped(i32 flip) const {
    Pictures p = *this;
    if (flip != 0 && !dst.IsEmpty()) p.src = p.src.Flipped();
    return p;
  }
};

struct Ramp {
  f32 start = 1.0f;
  f32 end = 1.0f;
};

/// The alphas for which (alpha * lower) >> 16 and (alpha * (lower + 1)) >> 16 may differ, as bits
/// of groups of eight: those where the low half of the product plus alpha carries.
u32 AlphasInDoubt(u32 lower, u32 firstAlpha) {
  const __m128i steps = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
  const __m128i alphas = _mm_add_epi16(_mm_set1_epi16(static_cast<short>(firstAlpha)), steps);
  const __m128i low = _mm_mullo_epi16(alphas, _mm_set1_epi16(static_cast<short>(lower)));
  const __m128i carried = _mm_cmpeq_epi16(_mm_adds_epu16(low, alphas), _mm_set1_epi16(-1));
  return static_cast<u32>(_mm_movemask_epi8(_mm_packs_epi16(carried, _mm_setzero_si128())));
}

/// Finds the multiplier whose (alpha * multiplier) >> 16 is the row's weight for every alpha.
///
/// A weight is the staircase floor(alpha * slope). Its steps change only where the slope passes a
/// fraction with a denominator up to 255. Those lie more than 2^-16 apart, so there is at most one
/// between the multiples of 2^-16 around the slope, and one of the two has the slope's steps. They
/// differ where AlphasInDoubt says; only there is the product near enough to an integer for single
/// precision to round it up. If it does so for some alphas and not for others, none fits.
bool FindMultiplier(BlendRow* row) {
  const double slope = double{row->gain} * row->factor / (1 << row->gainShift);  // below 1, exact
  const u32 lower = static_cast<u32>(slope * 65536);
  bool lowerFits = true, upperFits = lower < 0xFFFF;
  for (u32 first = 0; first < 256; first += 8) {
    for (u32 doubt = AlphasInDoubt(lower, first); doubt != 0; doubt &= doubt - 1) {
      const u32 alpha = first + static_cast<u32>(std::countr_zero(doubt));
      const u32 weight = static_cast<u32>(Weight(static_cast<u8>(alpha), *row));
      lowerFits = lowerFits && (alpha * lower) >> 16 == weight;
      upperFits = upperFits && (alpha * (lower + 1)) >> 16 == weight;
    }
  }
  row->multiplier = lowerFits ? lower : lower + 1;
  return lowerFits || upperFits;
}

RowFn* VectorRowFor(const BlendRule& rule, const RowBuilds& builds, BlendRow* row) {
  if (!(row->factor >= 0.0f && row->factor <= 1.0f)) return rule.wild;
  const bool fullGain = row->gain == static_cast<f32>(1 << row->gainShift);
  if (fullGain && row->factor == 1.0f) return builds.plain;
  return FindMultiplier(row) ? builds.byMultiplier : builds.byProduct;
}

/// Blends row by row, unless the pictures are empty.
void BlendRows(i32 level, const BlendRule& rule, const Pictures& p, Ramp ramp, BlendRow row = {}) {
  const BlendBuilds* const builds = kBuilds.For(level);
  RowFn* blendRow = rule.portable;
  for (i64 y = 0; y < p.dst.height && p.dst.width > 0; ++y) {
    const f32 factor =
        static_cast<f32>(y) / static_cast<f32>(p.dst.height) * (ramp.end - ramp.start) + ramp.start;
    if (y == 0 || factor != row.factor) {
      row.factor = factor;
      if (builds != nullptr) blendRow = VectorRowFor(rule, builds->*rule.builds, &row);
    }
    blendRow(p.dst.Row(y), p.src.Row(y), p.dst.width, row);
  }
}

/// Blends at full opacity, or along a ramp.
void Blend(i32 level, const BlendRule& rule, const Pictures& p, i32 flip = 0, Ramp ramp = {}) {
  BlendRows(level, rule, p.Flipped(flip), ramp);
}

/// Blends packed pictures, as one row. False when they cannot lie in memory.
bool BlendPacked(i32 level, const BlendRule& rule, u8* dst, const u8* src, i32 width, i32 height) {
  if (width < 1 || height < 1) return true;
  if (!FitsInMemory(width, height)) return false;
  Blend(level, rule, {dst, src, i64{width} * height, 1, 0, 0});
  return true;
}

/// Blends with an opacity byte, over the destination or a backdrop colour.
void BlendOpacity(i32 level, bool writeWeight, const Pictures& p, i32 flip, u8 opacity,
                  u32 backdrop, Ramp ramp) {
  const bool onBackdrop = backdrop >> 24 != 0;
  BlendRow row;
  row.gain = static_cast<f32>(opacity + 1);
  row.gainShift = 8;
  row.backdrop = backdrop;
  BlendRows(level, kOpacity[writeWeight][onBackdrop], p.Flipped(flip), ramp, row);
}

}  // namespace

u32 BlendOverWithOpacityRamp(i32 level, u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                             i32 srcPitch, i32 flip, f32 opacityStart, f32 opacityEnd) noexcept {
  if (dst == nullptr || src == nullptr) return 0;
  Blend(level, kOver, {dst, src, width, height, dstPitch, srcPitch}, flip,
        {opacityStart, opacityEnd});
  return 1;
}

u32 BlendOverPacked(i32 level, u8* dst, const u8* src, i32 width, i32 height) noexcept {
  if (dst == nullptr || src == nullptr) return 0;
  return BlendPacked(level, kOverSourceAlpha, dst, src, width, height);
}

u32 BlendOverPitched(i32 level, u8* dst, const u8* src, i32 width, i32 height, i32 pitch) noexcept {
  if (dst == nullptr || src == nullptr) return 0;
  Blend(level, kOver, {dst, src, width, height, pitch, pitch});
  return 1;
}

u32 BlendPremultipliedWithOpacityRamp(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                      i32 dstPitch, i32 srcPitch, i32 flip, f32 opacityStart,
                                      f32 opacityEnd) noexcept {
  if (dst == nullptr || src == nullptr) return 0;
  Blend(level, kPremultiplied, {dst, src, width, height, dstPitch, srcPitch}, flip,
        {opacityStart, opacityEnd});
  return 1;
}

u32 BlendPremultipliedPacked(i32 level, u8* dst, const u8* src, i32 width, i32 height) noexcept {
  if (dst == nullptr || src == nullptr || width < 1 || height < 1) return 0;
  return BlendPacked(level, kPremultiplied, dst, src, width, height);
}

u32 BlendPremultipliedPitched(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                              i32 pitch) noexcept {
  if (dst == nullptr || src == nullptr) return 0;
  if (pitch >= 1) Blend(level, kPremultiplied, {dst, src, width, height, pitch, pitch});
  return 1;
}

u32 CompositePremultipliedWithOpacityRamp(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                          i32 dstPitch, i32 srcPitch, i32 flip, f32 opacityStart,
                                          f32 opacityEnd) noexcept {
  if (dst == nullptr || src == nullptr || width < 1 || height < 1) return 0;
  if (dstPitch < 1 || srcPitch < 1) return 0;
  Blend(level, kComposite, {dst, src, width, height, dstPitch, srcPitch}, flip,
        {opacityStart, opacityEnd});
  return 1;
}

u32 CompositePremultipliedPitched(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                  i32 pitch) noexcept {
  if (dst == nullptr || src == nullptr || width < 1 || height < 1 || pitch < 1) return 0;
  Blend(level, kComposite, {dst, src, width, height, pitch, pitch});
  return 1;
}

u32 CompositePremultipliedPacked(i32 level, u8* dst, const u8* src, i32 width,
                                 i32 height) noexcept {
  if (dst == nullptr || src == nullptr || width < 1 || height < 1) return 0;
  return BlendPacked(level, kComposite, dst, src, width, height);
}

u32 BlendOverWithOpacity(i32 level, u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                         i32 srcPitch, u8 opacity, u32 backdrop) noexcept {
  if (dst == nullptr || src == nullptr || width < 1 || height < 1) return PICTAVO_E_FAIL;
  BlendOpacity(level, false, {dst, src, width, height, dstPitch, srcPitch}, 0, opacity, backdrop,
               {});
  return PICTAVO_S_OK;
}

u32 BlendOverWithOpacityRampAndAlpha(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                     i32 dstPitch, i32 srcPitch, u8 opacity, u32 backdrop, i32 flip,
                                     f32 opacityStart, f32 opacityEnd) noexcept {
  if (dst == nullptr || src == nullptr) return 0;
  BlendOpacity(level, true, {dst, src, width, height, dstPitch, srcPitch}, flip, opacity, backdrop,
               {opacityStart, opacityEnd});
  return 1;
}

u32 BlendOverWithOpacityRampKeepAlpha(i32 level, u8* dst, const u8* src, i32 width, i32 height,
                                      i32 dstPitch, i32 srcPitch, u8 opacity, u32 backdrop,
                                      i32 flip, f32 opacityStart, f32 opacityEnd) noexcept {
  if (dst == nullptr || src == nullptr) return 0;
  BlendOpacity(level, false, {dst, src, width, height, dstPitch, srcPitch}, flip, opacity, backdrop,
               {opacityStart, opacityEnd});
  return 1;
}

}  // namespace pictavo::cpu
