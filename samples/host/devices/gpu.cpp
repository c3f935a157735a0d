#include "devices/gpu.h"

#include <dxgi.h>

#include <algorithm>

#include "base/text.h"

namespace host {

using Microsoft::WRL::ComPtr;

namespace {

void Check(HRESULT result, const char* what) {
  if (FAILED(result)) throw Failure(Format("cannot %s: ", what) + SystemMessage(result));
}

std::string NameOf(ID3D11Device* device) {
  ComPtr<IDXGIDevice> dxgi;
  ComPtr<IDXGIAdapter> adapter;
  DXGI_ADAPTER_DESC desc;
  if (FAILED(device->QueryInterface(IID_PPV_ARGS(&dxgi))) || FAILED(dxgi->GetAdapter(&adapter)) ||
      FAILED(adapter->GetDesc(&desc))) {
    return "a device without a name";
  }
  return Utf8(desc.Description);
}

}  // namespace

Gpu::Gpu() {
  // Loaded by hand, so that all else works where there is no Direct3D 11.
  const HMODULE module = LoadLibraryW(L"d3d11.dll");
  const auto create = reinterpret_cast<PFN_D3D11_CREATE_DEVICE>(reinterpret_cast<void*>(
      module != nullptr ? GetProcAddress(module, "D3D11CreateDevice") : nullptr));
  if (create == nullptr) throw Failure("there is no Direct3D 11 on this system");
  constexpr D3D_FEATURE_LEVEL kLevel = D3D_FEATURE_LEVEL_11_0;
  HRESULT result = E_FAIL;
  for (const D3D_DRIVER_TYPE type : {D3D_DRIVER_TYPE_HARDWARE, D3D_DRIVER_TYPE_WARP}) {
    result = create(nullptr, type, nullptr, 0, &kLevel, 1, D3D11_SDK_VERSION, &device_, nullptr,
                    &context_);
    if (SUCCEEDED(result)) break;
  }
  Check(result, "make a Direct3D 11 device");
  name_ = NameOf(device());
}

Gpu::Texture Gpu::CreateTexture(const D3D11_TEXTURE2D_DESC& desc, const void* pixels) const {
  const D3D11_SUBRESOURCE_DATA data = {pixels, 4 * desc.Width, 0};
  Texture texture;
  Check(device_->CreateTexture2D(&desc, pixels != nullptr ? &data : nullptr, &texture),
        "make a texture");
  return texture;
}

namespace {

D3D11_TEXTURE2D_DESC TextureOf(i32 width, i32 height, DXGI_FORMAT format, UINT bindFlags) {
  return {.Width = static_cast<UINT>(width),
          .Height = static_cast<UINT>(height),
          .MipLevels = 1,
          .ArraySize = 1,
          .Format = format,
          .SampleDesc = {.Count = 1, .Quality = 0},
          .Usage = D3D11_USAGE_DEFAULT,
          .BindFlags = bindFlags,
          .CPUAccessFlags = 0,
          .MiscFlags = 0};
}

}  // namespace

Gpu::Texture Gpu::Upload(const Picture& picture) const {
  return CreateTexture(TextureOf(picture.width, picture.height, DXGI_FORMAT_B8G8R8A8_UNORM,
                                 D3D11_BIND_SHADER_RESOURCE),
                       picture.pixels.data());
}

Gpu::Texture Gpu::Create(i32 width, i32 height) const {
  return CreateTexture(TextureOf(width, height, DXGI_FORMAT_R8G8B8A8_UNORM,
                                 D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_UNORDERED_ACCESS),
                       Picture(width, height).pixels.data());
}

Picture Gpu::Download(ID3D11Texture2D* texture) const {
  D3D11_TEXTURE2D_DESC desc;
  texture->GetDesc(&desc);
  desc.Usage = D3D11_USAGE_STAGING;
  desc.BindFlags = 0;
  desc.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
  const Texture staging = CreateTexture(desc, nullptr);
  context_->CopyResource(staging.Get(), texture);
  D3D11_MAPPED_SUBRESOURCE mapped;
  Check(context_->Map(staging.Get(), 0, D3D11_MAP_READ, 0, &mapped), "read a texture");
  Picture picture(static_cast<i32>(desc.Width), static_cast<i32>(desc.Height));
  for (i32 y = 0; y < picture.height; ++y) {
    const u8* row = static_cast<const u8*>(mapped.pData) + i64{mapped.RowPitch} * y;
    std::copy_n(row, picture.pitch(), picture.At(0, y));
    for (i32 x = 0; x < picture.width; ++x) std::swap(picture.At(x, y)[0], picture.At(x, y)[2]);
  }
  context_->Unmap(staging.Get(), 0);
  return picture;
}

Picture Gpu::Made(const Picture& src, Size size, const Method& method) const {
  const Texture source = Upload(src), destination = Create(size.width, size.height);
  const pictavo::ImageDesc from = Describe(source.Get()), to = Describe(destination.Get());
  if (const u32 code = method(&to, &from); code != pictavo::PICTAVO_S_OK)
    throw Refusal("to work on the graphics card", code);
  return Download(destination.Get());
}

Picture Gpu::Run(pictavo::IPictavo6* object, i32 opCode, const void* param, const Picture& src,
                 Size size, i32 subMode) const {
  return Made(src, size, [&](const pictavo::ImageDesc* to, const pictavo::ImageDesc* from) {
    return object->D3DComputeOp(opCode, subMode, device(), context(), to, from, param);
  });
}

pictavo::ImageDesc Describe(ID3D11Texture2D* texture) {
  pictavo::ImageDesc desc = {};
  desc.memoryKind = pictavo::PICTAVO_MEMORY_D3D11_TEXTURE;
  desc.data = texture;
  return desc;
}

}  // namespace host
