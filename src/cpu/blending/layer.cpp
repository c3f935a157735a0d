#include "cpu/blending/layer.h"

#include <algorithm>
#include <cstring>

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

/// Weights of the four pixels around a sampling point; they add up to 65536.
struct Neighbourhood {
  std::array<i64, 4> weights;  // here, right, below, below right

  explicit Neighbourhood(const BlendParam& param) {
    const i64 left = static_cast<i64>((1.0f - param.fractionX) * 256.0f + 0.5f);
    const i64 top = static_cast<i64>((1.0f - param.fractionY) * 256.0f + 0.5f);
    weights = {left * top, (256 - left) * top, left * (256 - top), (256 - left) * (256 - top)};
  }
};

/// Samples between four pixels. Where one of them is clear, its colour must not show: colours are
/// then weighted by alpha too, which leaves no fringe.
void SamplePixel(u8* out, const std::array<const u8*, 4>& pixels, const Neighbourhood& around) {
  bool anyClear = false;
  for (const u8* pixel : pixels) anyClear |= pixel[3] == 0;
  std::array<i64, 4> sums = {};
  i64 total = 0;
  for (size_t i = 0; i < 4; ++i) {
    const i64 alphaSum = around.weights[i] * pixels[i][3];
    const i64 weight = anyClear ? alphaSum : around.weights[i];
    for (size_t c = 0; c < 3; ++c) sums[c] += weight * pixels[i][c];
    sums[3] += alphaSum;
    total += weight;
  }
  for (size_t c = 0; c < 3; ++c) out[c] = static_cast<u8>(total == 0 ? 0 : sums[c] / total);
  out[3] = static_cast<u8>(sums[3] >> 16);
}

template <BlendFn* blend, Mixing mixing = Mixing::kMixes>
u32 LaySampled(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
               const BlendParam& param) {
  static constexpr LayerRows kRows = {LayerRow<blend, mixing, 0>, LayerRow<blend, mixing, 1>,
                                      LayerRow<blend, mixing, 2>};
  const bool inside =
      param.fractionX >= 0 && param.fractionX <= 1 && param.fractionY >= 0 && param.fractionY <= 1;
  if (!IsUsable(param) || !inside) return PICTAVO_E_INVALIDARG;
  const Neighbourhood around(param);
  constexpr i64 kStretch = 256;
  u8 sampled[4 * kStretch];
  for (i64 y = 0; y < height; ++y) {
    const u8* row = src + y * srcPitch;
    const u8* below = y + 1 < height ? row + srcPitch : row;
    for (i64 first = 0; first < width; first += kStretch) {
      const i64 end = std::min<i64>(first + kStretch, width);
      for (i64 x = first; x < end; ++x) {
        const i64 right = x + 1 < width ? 4 : 0;
        SamplePixel(sampled + 4 * (x - first),
                    {row + 4 * x, row + 4 * x + right, below + 4 * x, below + 4 * x + right},
                    around);
      }
      kRows[param.alphaMode](dst + y * dstPitch + 4 * first, sampled, end - first, Factor(param));
    }
  }
  return PICTAVO_S_OK;
}

template <BlendFn* blend, Mixing mixing = Mixing::kMixes>
u32 Lay(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
        const BlendParam& param) {
  static constexpr LayerRows kRows = {LayerRow<blend, mixing, 0>, LayerRow<blend, mixing, 1>,
                                      LayerRow<blend, mixing, 2>};
  return LayPicture(kRows, dst, src, width, height, dstPitch, srcPitch, param);
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
     .sse41 = sse41::VectorLay<sse41::NormalMode, Mixing::kAdds>},
    {.portable = Lay<SaturationMode>, .sse41 = sse41::VectorLay<sse41::SaturationMode>},
    {.portable = Lay<LuminosityMode>, .sse41 = sse41::VectorLay<sse41::LuminosityMode>},
    {.portable = Lay<ColourMode>, .sse41 = sse41::VectorLay<sse41::ColourMode>},
    {.portable = LaySampled<Normal, Mixing::kCopies>},
    {.portable = LaySampled<Darken>},
    {.portable = LaySampled<Multiply>},
    {.portable = LaySampled<Lighten>},
    {.portable = LaySampled<Screen>},
    {.portable = LaySampled<Overlay>},
    {.portable = LaySampled<Difference>},
    {.portable = LaySampled<HueMode>},
    {},
    {.portable = LaySampled<SaturationMode>},
    {.portable = LaySampled<LuminosityMode>},
    {.portable = LaySampled<ColourMode>},
}};

}  // namespace pictavo::cpu
