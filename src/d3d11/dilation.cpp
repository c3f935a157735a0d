#include <algorithm>
#include <mutex>
#include <utility>

#include "d3d11/computation.h"

namespace pictavo {

using namespace d3d11;

namespace {

constexpr u32 kMostRadius = 32, kShapes = 4;

bool Usable(const D3DGrowParam& filter) {
  return filter.radiusX <= kMostRadius && filter.radiusY <= kMostRadius && filter.shape < kShapes &&
         filter.alpha >= 0 && filter.alpha <= 1;
}

}  // namespace

CPictavo_Dilation::CPictavo_Dilation() noexcept
    : filterUtility_(CCommonUtility::Create("CPictavo_Dilation", this)) {}

CPictavo_Dilation::~CPictavo_Dilation() { delete filterUtility_; }

template <typename Block>
u32 CPictavo_Dilation::Apply(const D3DCall& call, const D3DGrowParam& filter, d3d11::Pass* pass,
                             const Block& block) noexcept {
  const u32 radius = std::max(filter.radiusX, filter.radiusY), side = 2 * radius + 1;
  ComPtr<ID3D11Texture2D> weights = ExchangeWeights({});
  if (weights && !BelongsTo(weights.Get(), call.device)) weights.Reset();
  u32 code = CreateTexture2D(call.device, side, side, DXGI_FORMAT_R32_FLOAT,
                             D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_UNORDERED_ACCESS,
                             weights.GetAddressOf());
  if (code != PICTAVO_S_OK) return code;
  const Pass weigh = {.shader = Shader::kFilterWeights,
                      .inputs = {},
                      .outputs = {weights.Get()},
                      .groupsX = side,
                      .groupsY = side};
  pass->inputs[1] = weights.Get();

  Computation computation(this, call);
  code = computation.Run(
      weigh,
      FilterWeightsBlock{.uRadius = radius, .fAlpha = filter.alpha, .uFilterType = filter.shape});
  if (code == PICTAVO_S_OK) code = computation.Run(*pass, block);
  ExchangeWeights(std::move(weights));
  return code;
}

ComPtr<ID3D11Texture2D> CPictavo_Dilation::ExchangeWeights(
    ComPtr<ID3D11Texture2D> weights) noexcept {
  const std::lock_guard guard(weightsLock_);
  std::swap(weights_, weights);
  return weights;
}

u32 CPictavo_Dilation::Grow(const D3DCall& call, const D3DGrowParam* param) noexcept {
  Pictures pictures;
  const u32 code = OpenPictures(call, param, &pictures);
  if (code != PICTAVO_S_OK) return code;
  if (AnyPlane(pictures) || !Usable(*param)) return PICTAVO_E_INVALIDARG;
  Pass pass =
      PassOver(Shader::kFilterApply, pictures, CommonWidth(pictures), CommonHeight(pictures));
  return Apply(
      call, *param, &pass,
      FilterApplyBlock{.uFilterRadiusW = param->radiusX, .uFilterRadiusH = param->radiusY});
}

u32 CPictavo_Dilation::GrowRegion(const D3DCall& call, const D3DGrowRegionParam* param) noexcept {
  Pictures pictures;
  const u32 code = OpenPictures(call, param, &pictures);
  if (code != PICTAVO_S_OK) return code;
  const D3DGrowParam& filter = param->filter;
  if (!Usable(filter)) return PICTAVO_E_INVALIDARG;
  const Region region = Region(param->region).InDestination(pictures.dst).InSource(pictures.src);
  if (region.Empty()) return PICTAVO_S_FALSE;
  Pass pass = PassOver(Shader::kFilterApplyToRegion, pictures, region.x.length, region.y.length);
  return Apply(call, filter, &pass,
               FilterApplyToRegionBlock{.region = BlockOf(region, pictures),
                                        .uFilterRadiusW = filter.radiusX,
                                        .uFilterRadiusH = filter.radiusY,
                                        .uClipSrcA = param->clipSource});
}

}  // namespace pictavo
