#include <algorithm>

#include "d3d11/computation.h"
#include "frame/result.h"

namespace pictavo {

using namespace d3d11;

namespace {

constexpr u32 kMostRadius = 32, kShapes = 4, kSquare = 0;

bool Usable(const D3DGrowParam& filter) {
  return filter.radiusX <= kMostRadius && filter.radiusY <= kMostRadius && filter.shape < kShapes &&
         filter.alpha >= 0 && filter.alpha <= 1;
}

/// How many rows of a region one dispatch does: drivers stop those that take too long.
u32 RowsAtOnce(u32 columns, const D3DGrowParam& filter) {
  constexpr u32 kMostSamples = 1 << 28;
  const u32 samples = (2 * filter.radiusX + 1) * (2 * filter.radiusY + 1);
  return std::max(kMostSamples / samples / columns / 32, 1u) * 32;
}

}  // namespace

CPictavo_Dilation::CPictavo_Dilation(CPictavo_D3D* owner) noexcept
    : CPictavo_D3D(owner), filterUtility_(CCommonUtility::Create("CPictavo_Dilation", this)) {}

CPictavo_Dilation::~CPictavo_Dilation() { delete filterUtility_; }

/// A region to grow. The pixels around it count as well.
struct CPictavo_Dilation::Growth {
  ID3D11Device* device;
  Pictures pictures;
  Region region;
  D3DGrowParam filter;
  u32 clipSource;
  bool whole;  // from the corners of both pictures
};

/// Makes a filter's weights, in a square that reaches to a radius.
u32 CPictavo_Dilation::Weigh(Computation* computation, const Growth& growth, u32 radius,
                             Picture* weights) noexcept {
  const u32 side = 2 * radius + 1;
  PICTAVO_RETURN_IF_FAILED(
      GetScratch(growth.device, Scratch::kWeights, side, side, DXGI_FORMAT_R32_FLOAT, weights));
  const Pass pass = {.shader = Shader::kFilterWeights,
                     .inputs = {},
                     .outputs = {weights->out.Get()},
                     .groupsX = side,
                     .groupsY = side};
  return computation->Run(pass, FilterWeightsBlock{.uRadius = radius,
                                                   .fAlpha = growth.filter.alpha,
                                                   .uFilterType = growth.filter.shape});
}

/// Searches the window of every pixel, with weights that may reach farther.
u32 CPictavo_Dilation::Search(Computation* computation, const Growth& growth, u32 radius) noexcept {
  Picture weights;
  PICTAVO_RETURN_IF_FAILED(Weigh(computation, growth, radius, &weights));
  const auto& [x, y] = growth.region;
  const D3DGrowParam& filter = growth.filter;
  const u32 atOnce = RowsAtOnce(static_cast<u32>(x.length), filter);
  const bool whole = growth.whole && y.length <= atOnce;
  for (i64 row = 0; row < y.length; row += atOnce) {
    const Region band(x, {y.dst + row, y.src + row, std::min<i64>(atOnce, y.length - row)});
    Pass pass = PassOver(whole ? Shader::kFilterApply : Shader::kFilterApplyToRegion,
                         growth.pictures, band.x.length, band.y.length);
    pass.inputs[1] = weights.in.Get();
    if (whole) {
      return computation->Run(pass, FilterApplyBlock{.uFilterRadiusW = filter.radiusX,
                                                     .uFilterRadiusH = filter.radiusY});
    }
    PICTAVO_RETURN_IF_FAILED(
        computation->Run(pass, FilterApplyToRegionBlock{.region = BlockOf(band, growth.pictures),
                                                        .uFilterRadiusW = filter.radiusX,
                                                        .uFilterRadiusH = filter.radiusY,
                                                        .uClipSrcA = growth.clipSource}));
  }
  return PICTAVO_S_OK;
}

/// A square's most is the most of its rows' most. So each row is searched once, and then columns of
/// what was found.
u32 CPictavo_Dilation::SearchSquare(Computation* computation, const Growth& growth) noexcept {
  const auto& [dst, src] = growth.pictures;
  const auto& [x, y] = growth.region;
  const D3DGrowParam& filter = growth.filter;
  const u32 radius = std::max(filter.radiusX, filter.radiusY);
  const Stretch rows = y.WithMargin(filter.radiusY, {y.dst - y.src, 0, src.height});
  Growth along = growth, down = growth;
  PICTAVO_RETURN_IF_FAILED(GetScratch(growth.device, Scratch::kFirst, static_cast<u32>(x.length),
                                      static_cast<u32>(rows.length), DXGI_FORMAT_R8G8B8A8_UNORM,
                                      &along.pictures.dst));
  along.region = Region({0, x.src, x.length}, {0, rows.src, rows.length});
  along.filter = {filter.radiusX, 0, kSquare, 1};
  along.clipSource = 0;
  along.whole = false;
  PICTAVO_RETURN_IF_FAILED(Search(computation, along, radius));

  down.pictures.src = along.pictures.dst;
  down.region = Region({x.dst, 0, x.length}, {y.dst, y.src - rows.src, y.length});
  down.filter.radiusX = 0;
  down.clipSource = 0;
  if (growth.clipSource == 0) return Search(computation, down, radius);

  PICTAVO_RETURN_IF_FAILED(GetScratch(growth.device, Scratch::kSecond, static_cast<u32>(x.length),
                                      static_cast<u32>(y.length), DXGI_FORMAT_R8G8B8A8_UNORM,
                                      &down.pictures.dst));
  down.region.x.dst = down.region.y.dst = 0;
  PICTAVO_RETURN_IF_FAILED(Search(computation, down, radius));
  Pass clip = PassOver(Shader::kClipGrown, growth.pictures, x.length, y.length);
  clip.inputs[1] = down.pictures.dst.in.Get();
  return computation->Run(clip, BlockOf(growth.region, growth.pictures));
}

u32 CPictavo_Dilation::Apply(const D3DCall& call, const Growth& growth) noexcept {
  const D3DGrowParam& filter = growth.filter;
  Computation computation(this, call);
  if (filter.shape == kSquare && filter.radiusX > 0 && filter.radiusY > 0) {
    return SearchSquare(&computation, growth);
  }
  return Search(&computation, growth, std::max(filter.radiusX, filter.radiusY));
}

u32 CPictavo_Dilation::Grow(const D3DCall& call, const D3DGrowParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  if (AnyPlane(pictures) || !Usable(*param)) return PICTAVO_E_INVALIDARG;
  const Region all({0, 0, 0, 0, CommonWidth(pictures), CommonHeight(pictures)});
  return Apply(call, {call.device, pictures, all, *param, 0, true});
}

u32 CPictavo_Dilation::GrowRegion(const D3DCall& call, const D3DGrowRegionParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  if (!Usable(param->filter)) return PICTAVO_E_INVALIDARG;
  const Region region = Region(param->region).InDestination(pictures.dst).InSource(pictures.src);
  if (region.Empty()) return PICTAVO_S_FALSE;
  return Apply(call, {call.device, pictures, region, param->filter, param->clipSource, false});
}

}  // namespace pictavo
