#include "cpu/blending/layer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "cpu/base/sampler.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

namespace pictavo::cpu {
namespace {

using Colour = std::array<i32, 3>;  // blue, green, red

// ---------------------------------------------------------------------------------------------
// The modes: what replaces the destination's colour before it is mixed by the layer's weight.

template <typename Channel>
Colour PerChannel(const Colour& s, const Colour& d, Channel channel) {
  return {channel(s[0], d[0]), channel(s[1], d[1]), channel(s[2], d[2])};
}

Colour Normal(const Colour& s, const Colour&) { return s; }

Colour Darken(const Colour& s, const Colour& d) {
  return PerChannel(s, d, [](i32 a, i32 b) { return std::min(a, b); });
}

Colour Multiply(const Colour& s, const Colour& d) {
  return PerChannel(s, d, [](i32 a, i32 b) { return (a * b) >> 8; });
}

Colour Lighten(const Colour& s, const Colour& d) {
  return PerChannel(s, d, [](i32 a, i32 b) { return std::max(a, b); });
}

Colour Screen(const Colour& s, const Colour& d) {
  return PerChannel(s, d, [](i32 a, i32 b) { return 255 - (((255 - a) * (255 - b)) >> 8); });
}

Colour Overlay(const Colour& s, const Colour& d) {
  return PerChannel(s, d, [](i32 a, i32 b) {
    return b < 128 ? std::min((a * b) >> 7, 255) : 255 - (((255 - a) * (255 - b)) >> 7);
  });
}

Colour Difference(const Colour& s, const Colour& d) {
  return PerChannel(s, d, [](i32 a, i32 b) { return std::abs(a - b); });
}

i32 Luma(const Colour& c) { return (c[0] * 28 + c[1] * 151 + c[2] * 77) >> 8; }
i32 Least(const Colour& c) { return std::min({c[0], c[1], c[2]}); }
i32 Most(const Colour& c) { return std::max({c[0], c[1], c[2]}); }
i32 Saturation(const Colour& c) { return Most(c) - Least(c); }

/// Moves a colour to a luma, and towards grey as far as it then leaves 0 … 255.
Colour WithLuma(Colour c, i32 luma) {
  const i32 shift = luma - Luma(c);
  for (i32& channel : c) channel += shift;
  const i32 least = Least(c), most = Most(c);
  for (i32& channel : c) {
    if (least < 0) channel = luma + (channel - luma) * luma / (luma - least);
    if (most > 255) channel = luma + (channel - luma) * (255 - luma) / (most - luma);
  }
  return c;
}

/// Stretches a colour's channels to a saturation, the least to 0; grey becomes black.
Colour WithSaturation(Colour c, i32 saturation) {
  const i32 least = Least(c), range = std::max(Saturation(c), 1);
  for (i32& channel : c) channel = (channel - least) * saturation / range;
  return c;
}

Colour HueMode(const Colour& s, const Colour& d) {
  return WithLuma(WithSaturation(s, Saturation(d)), Luma(d));
}
Colour SaturationMode(const Colour& s, const Colour& d) {
  return WithLuma(WithSaturation(d, Saturation(s)), Luma(d));
}
Colour LuminosityMode(const Colour& s, const Colour& d) { return WithLuma(d, Luma(s)); }
Colour ColourMode(const Colour& s, const Colour& d) { return WithLuma(s, Luma(d)); }

// ---------------------------------------------------------------------------------------------
// The layer's weight and alpha.

using BlendFn = Colour(const Colour& s, const Colour& d);

enum class Mixing {
  kCopies,  // a weight of 255 copies the source: normal mode
  kMixes,   // every weight mixes
  kAdds,    // the weighted source is added: add mode, whose BlendFn is Normal
};

Colour ColourAt(const u8* pixel) { return {pixel[0], pixel[1], pixel[2]}; }

void Store(u8* pixel, const Colour& c) {
  for (size_t i = 0; i < 3; ++i) pixel[i] = static_cast<u8>(c[i]);
}

/// The destination's colour under a layer of weight 1 … 255 when its alpha does not count.
template <BlendFn* blend, Mixing mixing>
Colour LaidOnOpaque(const Colour& s, const Colour& d, i32 weight) {
  const Colour blended = blend(s, d);
  return PerChannel(blended, d, [weight](i32 b, i32 c) {
    if (mixing == Mixing::kAdds) return std::min((weight == 255 ? b : (b * weight) >> 8) + c, 255);
    if (mixing == Mixing::kCopies && weight == 255) return b;
    return (b * weight + c * (256 - weight)) >> 8;
  });
}

/// Lays a pixel over a straight-alpha destination.
template <BlendFn* blend, Mixing mixing>
void LayOver(u8* dst, const u8* src, i32 weight) {
  const Colour s = ColourAt(src), d = ColourAt(dst);
  const i32 alpha = dst[3];
  const i32 outAlpha = alpha - alpha * weight / 255 + weight;
  dst[3] = static_cast<u8>(outAlpha);
  // On a clear destination there is nothing to blend with.
  if (alpha == 0 || (mixing == Mixing::kCopies && weight == 255)) return Store(dst, s);
  if (mixing == Mixing::kAdds) return Store(dst, LaidOnOpaque<blend, mixing>(s, d, weight));
  Store(dst, PerChannel(blend(s, d), d, [=](i32 b, i32 c) {
          return std::min((((c * alpha * (256 - weight)) >> 8) + b * weight) / outAlpha, 255);
        }));
}

template <BlendFn* blend, Mixing mixing, u32 alphaMode>
void LayerRow(u8* dst, const u8* src, i64 width, u32 factor) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    const i32 weight = static_cast<i32>((src[3] * factor) >> 8);
    if (alphaMode == 1) dst[3] = static_cast<u8>(weight);
    if (weight == 0) continue;
    if (alphaMode == 2) {
      LayOver<blend, mixing>(dst, src, weight);
    } else {
      Store(dst, LaidOnOpaque<blend, mixing>(ColourAt(src), ColourAt(dst), weight));
    }
  }
}

using LayerRowFn = void(u8* dst, const u8* src, i64 width, u32 factor);
using LayerRows = std::array<LayerRowFn*, 3>;  // by alphaMode

/// The weight's factor, 1 … 256, of an opacity; a layer of opacity 0 is never laid.
u32 Factor(const BlendParam& param) { return param.opacity + 1; }

bool IsUsable(const BlendParam& param) { return param.opacity <= 255 && param.alphaMode <= 2; }

u32 LayPicture(const LayerRows& rows, u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
               i32 srcPitch, const BlendParam& param) {
  if (!IsUsable(param)) return PICTAVO_E_INVALIDARG;
  for (i64 y = 0; y < height; ++y) {
    rows[param.alphaMode](dst + y * dstPitch, src + y * srcPitch, width, Factor(param));
  }
  return PICTAVO_S_OK;
}

// ---------------------------------------------------------------------------------------------
// The sub-pixel family.

using SampleRowFn = void(u8* out, const RowPair& rows, i64 first, i64 end, SamplePoint point);

SamplePoint PointOf(const BlendParam& param) {
  const auto place = [](f32 fraction) {
    return 256 - static_cast<i32>((1.0f - fraction) * 256.0f + 0.5f);
  };
  return {place(param.fractionX), place(param.fractionY)};
}

/// Lays what `sample` makes of the source, a stretch at a time.
u32 LaySampledPicture(const LayerRows& rows, SampleRowFn* sample, u8* dst, const u8* src, i32 width,
                      i32 height, i32 dstPitch, i32 srcPitch, const BlendParam& param) {
  const bool inside =
      param.fractionX >= 0 && param.fractionX <= 1 && param.fractionY >= 0 && param.fractionY <= 1;
  if (!IsUsable(param) || !inside) return PICTAVO_E_INVALIDARG;
  const SamplePoint point = PointOf(param);
  constexpr i64 kStretch = 256;  // whole vectors
  u8 sampled[4 * kStretch];
  for (i64 y = 0; y < height; ++y) {
    const u8* row = src + y * srcPitch;
    const RowPair pair = {row, y + 1 < height ? row + srcPitch : row, width};
    for (i64 first = 0; first < width; first += kStretch) {
      const i64 end = std::min<i64>(first + kStretch, width);
      sample(sampled, pair, first, end, point);
      rows[param.alphaMode](dst + y * dstPitch + 4 * first, sampled, end - first, Factor(param));
    }
  }
  return PICTAVO_S_OK;
}

template <BlendFn* blend, Mixing mixing>
constexpr LayerRows kRows = {LayerRow<blend, mixing, 0>, LayerRow<blend, mixing, 1>,
                             LayerRow<blend, mixing, 2>};

template <BlendFn* blend, Mixing mixing = Mixing::kMixes>
u32 Lay(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
        const BlendParam& param) {
  return LayPicture(kRows<blend, mixing>, dst, src, width, height, dstPitch, srcPitch, param);
}

template <BlendFn* blend, Mixing mixing = Mixing::kMixes>
u32 LaySampled(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
               const BlendParam& param) {
  return LaySampledPicture(kRows<blend, mixing>, SampleRow<Replicate>, dst, src, width, height,
                           dstPitch, srcPitch, param);
}

}  // namespace

#define KERNELS "cpu/blending/layer_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

#define KERNELS "cpu/blending/layer_hsl.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

const LayerKernels kLayerKernels = {{
    {.portable = Lay<Normal, Mixing::kCopies>,
     .sse41 = sse41::VectorLay<sse41::NormalMode, Mixing::kCopies>,
     .avx2 = avx2::VectorLay<avx2::NormalMode, Mixing::kCopies>},
    {.portable = Lay<Darken>,
     .sse41 = sse41::VectorLay<sse41::DarkenMode>,
     .avx2 = avx2::VectorLay<avx2::DarkenMode>},
    {.portable = Lay<Multiply>,
     .sse41 = sse41::VectorLay<sse41::MultiplyMode>,
     .avx2 = avx2::VectorLay<avx2::MultiplyMode>},
    {.portable = Lay<Lighten>,
     .sse41 = sse41::VectorLay<sse41::LightenMode>,
     .avx2 = avx2::VectorLay<avx2::LightenMode>},
    {.portable = Lay<Screen>,
     .sse41 = sse41::VectorLay<sse41::ScreenMode>,
     .avx2 = avx2::VectorLay<avx2::ScreenMode>},
    {.portable = Lay<Overlay>, .sse41 = sse41::VectorLay<sse41::OverlayMode>},
    {.portable = Lay<Difference>,
     .sse41 = sse41::VectorLay<sse41::DifferenceMode>,
     .avx2 = avx2::VectorLay<avx2::DifferenceMode>},
    {.portable = Lay<HueMode>, .sse41 = sse41::VectorLay<sse41::HueMode>},
    {.portable = Lay<Normal, Mixing::kAdds>,
     .sse41 = sse41::VectorLay<sse41::NormalMode, Mixing::kAdds>,
     .avx2 = avx2::VectorLay<avx2::NormalMode, Mixing::kAdds>},
    {.portable = Lay<SaturationMode>, .sse41 = sse41::VectorLay<sse41::SaturationMode>},
    {.portable = Lay<LuminosityMode>, .sse41 = sse41::VectorLay<sse41::LuminosityMode>},
    {.portable = Lay<ColourMode>, .sse41 = sse41::VectorLay<sse41::ColourMode>},
    {.portable = LaySampled<Normal, Mixing::kCopies>,
     .sse41 = sse41::VectorLaySampled<sse41::NormalMode, Mixing::kCopies>,
     .avx2 = avx2::VectorLaySampled<avx2::NormalMode, Mixing::kCopies>},
    {.portable = LaySampled<Darken>,
     .sse41 = sse41::VectorLaySampled<sse41::DarkenMode>,
     .avx2 = avx2::VectorLaySampled<avx2::DarkenMode>},
    {.portable = LaySampled<Multiply>,
     .sse41 = sse41::VectorLaySampled<sse41::MultiplyMode>,
     .avx2 = avx2::VectorLaySampled<avx2::MultiplyMode>},
    {.portable = LaySampled<Lighten>,
     .sse41 = sse41::VectorLaySampled<sse41::LightenMode>,
     .avx2 = avx2::VectorLaySampled<avx2::LightenMode>},
    {.portable = LaySampled<Screen>,
     .sse41 = sse41::VectorLaySampled<sse41::ScreenMode>,
     .avx2 = avx2::VectorLaySampled<avx2::ScreenMode>},
    {.portable = LaySampled<Overlay>, .sse41 = sse41::VectorLaySampled<sse41::OverlayMode>},
    {.portable = LaySampled<Difference>,
     .sse41 = sse41::VectorLaySampled<sse41::DifferenceMode>,
     .avx2 = avx2::VectorLaySampled<avx2::DifferenceMode>},
    {.portable = LaySampled<HueMode>, .sse41 = sse41::VectorLaySampled<sse41::HueMode>},
    {},
    {.portable = LaySampled<SaturationMode>,
     .sse41 = sse41::VectorLaySampled<sse41::SaturationMode>},
    {.portable = LaySampled<LuminosityMode>,
     .sse41 = sse41::VectorLaySampled<sse41::LuminosityMode>},
    {.portable = LaySampled<ColourMode>, .sse41 = sse41::VectorLaySampled<sse41::ColourMode>},
}};

}  // namespace pictavo::cpu
