#include "d3d11/d3d11_base.h"

#include <mutex>
#include <utility>

#include "d3d11/code.h"
#include "d3d11/pictures.h"

namespace pictavo {

CD3D11Base::~CD3D11Base() { delete utility_; }

bool CD3D11Base::EnsureUtility() noexcept {
  const std::lock_guard guard(utilityLock_);
  if (utility_ == nullptr) utility_ = CCommonUtility::Create("Pictavo_CD3D11Base", this);
  return utility_ != nullptr;
}

u32 CD3D11Base::CreateTexture2D(ID3D11Device* device, u32 width, u32 height, DXGI_FORMAT format,
                                u32 bindFlags, ID3D11Texture2D** texture) noexcept {
  if (!EnsureUtility()) return PICTAVO_E_FAIL;
  if (*texture != nullptr) {
    u32 heldWidth = 0, heldHeight = 0;
    GetTextureSize(*texture, &heldWidth, &heldHeight);
    if (heldWidth == width && heldHeight == height) return PICTAVO_S_OK;
    (*texture)->Release();
    *texture = nullptr;
  }
  if (device == nullptr) return PICTAVO_E_POINTER;
  const D3D11_TEXTURE2D_DESC desc = {.Width = width,
                                     .Height = height,
                                     .MipLevels = 1,
                                     .ArraySize = 1,
                                     .Format = format,
                                     .SampleDesc = {.Count = 1, .Quality = 0},
                                     .Usage = D3D11_USAGE_DEFAULT,
                                     .BindFlags = bindFlags,
                                     .CPUAccessFlags = 0,
                                     .MiscFlags = 0};
  return d3d11::Code(device->CreateTexture2D(&desc, nullptr, texture));
}

void CD3D11Base::GetTextureSize(ID3D11Texture2D* texture, u32* width, u32* height) noexcept {
  if (texture == nullptr) return;
  D3D11_TEXTURE2D_DESC desc;
  texture->GetDesc(&desc);
  *width = desc.Width;
  *height = desc.Height;
}

CPictavo_D3D::CPictavo_D3D(CPictavo_D3D* partner) noexcept : partner_(partner) {
  partner->partner_ = this;
}

CPictavo_D3D::~CPictavo_D3D() { ReleaseResources(); }

void CPictavo_D3D::ReleaseResources() noexcept {
  const std::lock_guard guard(resourceLock_);
  for (IUnknown*& resource : resources_) {
    if (resource != nullptr) resource->Release();
    resource = nullptr;
  }
  scratch_ = {};
  resourceDevice_ = nullptr;
}

void CPictavo_D3D::UseDevice(ID3D11Device* device) noexcept {
  KeepOnly(device);
  if (CPictavo_D3D* partner = partner_) partner->KeepOnly(device);
}

void CPictavo_D3D::KeepOnly(ID3D11Device* device) noexcept {
  const std::lock_guard guard(resourceLock_);  // which ReleaseResources may take again
  if (device != resourceDevice_) ReleaseResources();
  resourceDevice_ = device;
}

ID3D11Texture2D* CPictavo_D3D::GetTexture(const ImageDesc* picture) noexcept {
  if (picture->data == nullptr) return nullptr;
  if (picture->memoryKind == PICTAVO_MEMORY_D3D11_TEXTURE) {
    return static_cast<ID3D11Texture2D*>(picture->data);
  }
  return static_cast<IHostPicture*>(picture->data)->GetTexture(picture);
}

u32 CPictavo_D3D::GetColorFormat(ID3D11Texture2D* texture, u32* format) noexcept {
  D3D11_TEXTURE2D_DESC desc;
  texture->GetDesc(&desc);
  switch (desc.Format) {
    case DXGI_FORMAT_B8G8R8A8_UNORM:
      *format = d3d11::kBgra;
      return PICTAVO_S_OK;
    case DXGI_FORMAT_R8G8B8A8_UNORM:
      *format = d3d11::kRgba;
      return PICTAVO_S_OK;
    case DXGI_FORMAT_R8_UNORM:
      *format = d3d11::kPlane;
      return PICTAVO_S_OK;
    default:
      return PICTAVO_E_FAIL;
  }
}

template <typename T, typename Create>
u32 CPictavo_D3D::GetResource(ID3D11Device* device, size_t index, T** result,
                              Create create) noexcept {
  const std::lock_guard guard(resourceLock_);
  KeepOnly(device);
  IUnknown*& entry = resources_[index];
  if (entry == nullptr) {
    T* created = nullptr;
    const HRESULT code = create(&created);
    if (FAILED(code)) return d3d11::Code(code);
    entry = created;
  }
  entry->AddRef();
  *result = static_cast<T*>(entry);
  return PICTAVO_S_OK;
}

u32 CPictavo_D3D::GetShader(ID3D11Device* device, d3d11::Shader shader,
                            ID3D11ComputeShader** result) noexcept {
  const auto index = static_cast<size_t>(shader);
  const d3d11::Bytecode& code = d3d11::kBytecode[index];
  return GetResource(device, index, result, [&](ID3D11ComputeShader** created) {
    return device->CreateComputeShader(code.data, code.size, nullptr, created);
  });
}

u32 CPictavo_D3D::GetConstantBuffer(ID3D11Device* device, ID3D11Buffer** result) noexcept {
  return GetResource(device, kConstants, result, [&](ID3D11Buffer** created) {
    const D3D11_BUFFER_DESC desc = {.ByteWidth = d3d11::kConstantBytes,
                                    .Usage = D3D11_USAGE_DEFAULT,
                                    .BindFlags = D3D11_BIND_CONSTANT_BUFFER,
                                    .CPUAccessFlags = 0,
                                    .MiscFlags = 0,
                                    .StructureByteStride = 0};
    return device->CreateBuffer(&desc, nullptr, created);
  });
}

u32 CPictavo_D3D::GetKeys(ID3D11Device* device, ID3D11Buffer** buffer,
                          ID3D11ShaderResourceView** view) noexcept {
  const u32 code = GetResource(device, kKeys, buffer, [&](ID3D11Buffer** created) {
    const D3D11_BUFFER_DESC desc = {.ByteWidth = d3d11::kMostKeys * sizeof(d3d11::ColorKey),
                                    .Usage = D3D11_USAGE_DEFAULT,
                                    .BindFlags = D3D11_BIND_SHADER_RESOURCE,
                                    .CPUAccessFlags = 0,
                                    .MiscFlags = D3D11_RESOURCE_MISC_BUFFER_STRUCTURED,
                                    .StructureByteStride = sizeof(d3d11::ColorKey)};
    return device->CreateBuffer(&desc, nullptr, created);
  });
  if (code != PICTAVO_S_OK) return code;
  return GetResource(device, kKeysView, view, [&](ID3D11ShaderResourceView** created) {
    return device->CreateShaderResourceView(*buffer, nullptr, created);
  });
}

namespace {

bool Fits(const d3d11::Picture& picture, u32 width, u32 height, DXGI_FORMAT format) {
  if (!picture.texture) return false;
  const D3D11_TEXTURE2D_DESC desc = d3d11::DescOf(picture);
  return desc.Width == width && desc.Height == height && desc.Format == format;
}

}  // namespace

u32 CPictavo_D3D::GetScratch(ID3D11Device* device, d3d11::Scratch which, u32 width, u32 height,
                             DXGI_FORMAT format, d3d11::Picture* picture) noexcept {
  *picture = ExchangeScratch(device, which, {});
  if (!Fits(*picture, width, height, format)) {
    *picture = {.texture = {},
                .width = static_cast<i32>(width),
                .height = static_cast<i32>(height),
                .format = d3d11::kRgba,
                .in = {},
                .out = {}};
    u32 code = CreateTexture2D(device, width, height, format, d3d11::kInAndOut,
                               picture->texture.GetAddressOf());
    if (code == PICTAVO_S_OK) code = d3d11::CreateInput(device, picture);
    if (code == PICTAVO_S_OK) code = d3d11::CreateOutput(device, picture);
    if (code != PICTAVO_S_OK) return code;
  }
  ExchangeScratch(device, which, *picture);
  return PICTAVO_S_OK;
}

u32 CPictavo_D3D::GetReadBack(ID3D11Device* device, const d3d11::Picture& like,
                              d3d11::Picture* picture) noexcept {
  const D3D11_TEXTURE2D_DESC of = d3d11::DescOf(like);
  *picture = ExchangeScratch(device, d3d11::Scratch::kReadBack, {});
  if (!Fits(*picture, of.Width, of.Height, of.Format)) {
    const D3D11_TEXTURE2D_DESC desc = {.Width = of.Width,
                                       .Height = of.Height,
                                       .MipLevels = 1,
                                       .ArraySize = 1,
                                       .Format = of.Format,
                                       .SampleDesc = {.Count = 1, .Quality = 0},
                                       .Usage = D3D11_USAGE_STAGING,
                                       .BindFlags = 0,
                                       .CPUAccessFlags = D3D11_CPU_ACCESS_READ,
                                       .MiscFlags = 0};
    const HRESULT code =
        device->CreateTexture2D(&desc, nullptr, picture->texture.ReleaseAndGetAddressOf());
    if (FAILED(code)) return d3d11::Code(code);
  }
  ExchangeScratch(device, d3d11::Scratch::kReadBack, *picture);
  return PICTAVO_S_OK;
}

d3d11::Picture CPictavo_D3D::ExchangeScratch(ID3D11Device* device, d3d11::Scratch which,
                                             d3d11::Picture picture) noexcept {
  const std::lock_guard guard(resourceLock_);
  KeepOnly(device);
  std::swap(scratch_[static_cast<size_t>(which)], picture);
  return picture;
}

}  // namespace pictavo
