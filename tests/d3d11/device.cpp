#include "device.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace pictavo::test {

Image::Image(int imageWidth, int imageHeight, DXGI_FORMAT imageFormat)
    : width(imageWidth), height(imageHeight), format(imageFormat) {
  bytes.resize(PixelSize() * static_cast<size_t>(width) * static_cast<size_t>(height));
}

Image::Image(int imageWidth, int imageHeight, DXGI_FORMAT imageFormat, std::mt19937& random)
    : Image(imageWidth, imageHeight, imageFormat) {
  for (u8& byte : bytes) byte = static_cast<u8>(random());
  for (size_t i = PixelSize() - 1; i < bytes.size(); i += PixelSize()) {
    const auto kind = random() % 3;
    if (kind != 0) bytes[i] = kind == 1 ? 0 : 255;
  }
}

Colour Image::Get(int x, int y) const {
  const u8* pixel = const_cast<Image*>(this)->At(x, y);
  switch (format) {
    case DXGI_FORMAT_B8G8R8A8_UNORM:
      return {pixel[2], pixel[1], pixel[0], pixel[3]};
    case DXGI_FORMAT_R8G8B8A8_UNORM:
      return {pixel[0], pixel[1], pixel[2], pixel[3]};
    default:
      return {255, 255, 255, pixel[0]};
  }
}

void Image::Set(int x, int y, const Colour& colour) {
  if (!Has(x, y)) return;
  const bool reversed = format == DXGI_FORMAT_B8G8R8A8_UNORM;
  const int channels[] = {reversed ? colour.b : colour.r, colour.g, reversed ? colour.r : colour.b,
                          colour.a};
  for (size_t i = 0; i < PixelSize(); ++i) {
    At(x, y)[i] = static_cast<u8>(PixelSize() == 1 ? colour.a : channels[i]);
  }
}

Image Image::In(DXGI_FORMAT other) const {
  Image image(width, height, other);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) image.Set(x, y, Get(x, y));
  }
  return image;
}

std::string Difference(const Image& expected, const Image& result, int tolerance) {
  for (size_t i = 0; i < expected.bytes.size(); ++i) {
    if (std::abs(expected.bytes[i] - result.bytes[i]) <= tolerance) continue;
    const size_t pixel = i / expected.PixelSize(), width = static_cast<size_t>(expected.width);
    return "column " + std::to_string(pixel % width) + ", row " + std::to_string(pixel / width) +
           ", byte " + std::to_string(i % expected.PixelSize()) + ": " +
           std::to_string(result.bytes[i]) + " instead of " + std::to_string(expected.bytes[i]);
  }
  return {};
}

Device::Device() {
  const D3D_FEATURE_LEVEL level = D3D_FEATURE_LEVEL_11_0;
  for (const D3D_DRIVER_TYPE type : {D3D_DRIVER_TYPE_HARDWARE, D3D_DRIVER_TYPE_WARP}) {
    if (SUCCEEDED(D3D11CreateDevice(nullptr, type, nullptr, 0, &level, 1, D3D11_SDK_VERSION,
                                    device.ReleaseAndGetAddressOf(), nullptr,
                                    context.ReleaseAndGetAddressOf()))) {
      return;
    }
  }
  throw std::runtime_error("there is no Direct3D 11 device");
}

const Device& SharedDevice() {
  static const Device device;
  return device;
}

Texture Device::Upload(Image image, u32 bindFlags) const {
  const D3D11_TEXTURE2D_DESC desc = {static_cast<UINT>(image.width),
                                     static_cast<UINT>(image.height),
                                     1,
                                     1,
                                     image.format,
                                     {1, 0},
                                     D3D11_USAGE_DEFAULT,
                                     bindFlags,
                                     0,
                                     0};
  const auto pitch = static_cast<UINT>(image.PixelSize() * desc.Width);
  const D3D11_SUBRESOURCE_DATA data = {image.bytes.data(), pitch, 0};
  Texture texture;
  EXPECT_EQ(device->CreateTexture2D(&desc, &data, texture.ReleaseAndGetAddressOf()), S_OK);
  return texture;
}

Image Device::Download(ID3D11Texture2D* texture) const {
  D3D11_TEXTURE2D_DESC desc;
  texture->GetDesc(&desc);
  Image image(static_cast<int>(desc.Width), static_cast<int>(desc.Height), desc.Format);
  desc.Usage = D3D11_USAGE_STAGING;
  desc.BindFlags = 0;
  desc.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
  Texture staging;
  EXPECT_EQ(device->CreateTexture2D(&desc, nullptr, staging.ReleaseAndGetAddressOf()), S_OK);
  context->CopyResource(staging.Get(), texture);
  D3D11_MAPPED_SUBRESOURCE mapped;
  EXPECT_EQ(context->Map(staging.Get(), 0, D3D11_MAP_READ, 0, &mapped), S_OK);
  const size_t row = image.PixelSize() * desc.Width;
  for (size_t y = 0; y < desc.Height; ++y) {
    std::copy_n(static_cast<const u8*>(mapped.pData) + y * mapped.RowPitch, row,
                image.bytes.data() + y * row);
  }
  context->Unmap(staging.Get(), 0);
  return image;
}

ImageDesc Describe(ID3D11Texture2D* texture) {
  return {{}, 0, 0, PICTAVO_MEMORY_D3D11_TEXTURE, texture, 0, 0, 0, 0};
}

ULONG References(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

}  // namespace pictavo::test
