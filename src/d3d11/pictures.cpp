#include "d3d11/pictures.h"

#include "d3d11/code.h"

namespace pictavo::d3d11 {
namespace {

bool SameObject(IUnknown* a, IUnknown* b) {
  ComPtr<IUnknown> identityA, identityB;
  a->QueryInterface(IID_PPV_ARGS(&identityA));
  b->QueryInterface(IID_PPV_ARGS(&identityB));
  return identityA.Get() == identityB.Get();
}

bool BelongsTo(ID3D11DeviceChild* child, ID3D11Device* device) {
  ComPtr<ID3D11Device> owner;
  child->GetDevice(owner.ReleaseAndGetAddressOf());
  return SameObject(owner.Get(), device);
}

u32 OpenTexture(ID3D11Device* device, u32 bindFlags, Picture* picture) {
  if (CPictavo_D3D::GetColorFormat(picture->texture.Get(), &picture->format) != PICTAVO_S_OK) {
    return PICTAVO_E_FAIL;
  }
  const D3D11_TEXTURE2D_DESC texture = DescOf(*picture);
  picture->width = static_cast<i32>(texture.Width);
  picture->height = static_cast<i32>(texture.Height);
  const bool usable = texture.ArraySize == 1 && texture.SampleDesc.Count == 1 &&
                      (bindFlags == 0 || (texture.BindFlags & bindFlags) != 0) &&
                      BelongsTo(picture->texture.Get(), device);
  return usable ? PICTAVO_S_OK : PICTAVO_E_INVALIDARG;
}

}  // namespace

u32 OpenTextures(const D3DCall& call, bool hasSource, const BindFlags& flags, Pictures* pictures) {
  if (call.device == nullptr || call.context == nullptr || call.dst == nullptr ||
      (hasSource && call.src == nullptr)) {
    return PICTAVO_E_POINTER;
  }
  auto& [dst, src] = *pictures;
  dst.texture = CPictavo_D3D::GetTexture(call.dst);
  if (hasSource) src.texture = CPictavo_D3D::GetTexture(call.src);
  if (!dst.texture || (hasSource && !src.texture)) return PICTAVO_E_POINTER;
  if (!BelongsTo(call.context, call.device)) return PICTAVO_E_INVALIDARG;
  const HRESULT removed = call.device->GetDeviceRemovedReason();
  if (FAILED(removed)) return Code(removed);
  u32 code = OpenTexture(call.device, flags.dst, &dst);
  if (code != PICTAVO_S_OK || !hasSource) return code;
  code = OpenTexture(call.device, flags.src, &src);
  if (code != PICTAVO_S_OK) return code;
  return SameObject(dst.texture.Get(), src.texture.Get()) ? PICTAVO_E_INVALIDARG : PICTAVO_S_OK;
}

u32 OpenPictures(const D3DCall& call, bool hasSource, Pictures* pictures) {
  constexpr BindFlags kForShaders = {D3D11_BIND_UNORDERED_ACCESS, D3D11_BIND_SHADER_RESOURCE};
  u32 code = OpenTextures(call, hasSource, kForShaders, pictures);
  if (code == PICTAVO_S_OK && hasSource) code = CreateInput(call.device, &pictures->src);
  return code == PICTAVO_S_OK ? CreateOutput(call.device, &pictures->dst) : code;
}

u32 CreateInput(ID3D11Device* device, Picture* picture) {
  return Code(device->CreateShaderResourceView(picture->texture.Get(), nullptr,
                                               picture->in.ReleaseAndGetAddressOf()));
}

u32 CreateOutput(ID3D11Device* device, Picture* picture) {
  return Code(device->CreateUnorderedAccessView(picture->texture.Get(), nullptr,
                                                picture->out.ReleaseAndGetAddressOf()));
}

D3D11_TEXTURE2D_DESC DescOf(const Picture& picture) {
  D3D11_TEXTURE2D_DESC desc;
  picture.texture->GetDesc(&desc);
  return desc;
}

bool BothColourOrBothPlanes(const Pictures& pictures) {
  return (pictures.dst.format == kPlane) == (pictures.src.format == kPlane);
}

bool AnyPlane(const Pictures& pictures) {
  return pictures.dst.format == kPlane || pictures.src.format == kPlane;
}

i32 CommonWidth(const Pictures& pictures) {
  return std::min(pictures.dst.width, pictures.src.width);
}
i32 CommonHeight(const Pictures& pictures) {
  return std::min(pictures.dst.height, pictures.src.height);
}

RegionCopyBlock BlockOf(const Region& region, const Pictures& pictures) {
  return {.uSrcColorFormat = pictures.src.format,
          .uDstColorFormat = pictures.dst.format,
          .nDstOriX = static_cast<i32>(region.x.dst),
          .nDstOriY = static_cast<i32>(region.y.dst),
          .nSrcRgnSx = static_cast<i32>(region.x.src),
          .nSrcRgnSy = static_cast<i32>(region.y.src),
          .nSrcRgnW = static_cast<i32>(region.x.length),
          .nSrcRgnH = static_cast<i32>(region.y.length)};
}

}  // namespace pictavo::d3d11
