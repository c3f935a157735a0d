#include "device.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

namespace pictavo::test {

Image::Image(int imageWidth, int imageHeight, DXGI_FORMAT imageFormat)
    : width(imageWidth), height(imageHeight), format(imageFormat) {
  bytes.resize(static_cast<size_t>(PixelSize() * width * height));
}

Image::Image(int imageWidth, int imageHeight, DXGI_FORMAT imageFormat, std::mt19937& random)
    : Image(imageWidth, imageHeight, imageFormat) {
  const auto size = static_cast<size_t>(PixelSize());
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto kind = i % size == size - 1 ? random() % 3 : 2;
    bytes[i] = static_cast<u8>(kind == 2 ? random() : kind * 255);
  }
}

Image::Image(const Image& image, DXGI_FORMAT imageFormat)
    : Image(image.width, image.height, imageFormat) {
  for (int i = 0; i < width * height; ++i)
    Set(i % width, i / width, image.Get(i % width, i / width));
}

Colour Image::Get(int x, int y) const {
  const u8* pixel = &bytes[static_cast<size_t>(PixelSize() * (y * width + x))];
  if (format == kPlane) return {255, 255, 255, pixel[0]};
  const size_t red = format == kBgra ? 2 : 0;
  return {pixel[red], pixel[1], pixel[2 - red], pixel[3]};
}

void Image::Set(int x, int y, const Colour& colour) {
  u8* pixel = &bytes[static_cast<size_t>(PixelSize() * (y * width + x))];
  const size_t red = format == kBgra ? 2 : 0;
  const size_t places[] = {red, 1, 2 - red, 3};
  for (size_t c = format == kPlane ? 3 : 0; c < 4; ++c) {
    pixel[format == kPlane ? 0 : places[c]] = static_cast<u8>(colour[c]);
  }
}

std::string Image::Difference(const Image& other, int tolerance) const {
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (std::abs(bytes[i] - other.bytes[i]) <= tolerance) continue;
    const int pixel = static_cast<int>(i) / PixelSize();
    return "column " + std::to_string(pixel % width) + ", row " + std::to_string(pixel / width) +
           ", byte " + std::to_string(static_cast<int>(i) % PixelSize()) + ": " +
           std::to_string(other.bytes[i]) + " instead of " + std::to_string(bytes[i]);
  }
  return {};
}

Device::Device() {
  const D3D_FEATURE_LEVEL level = D3D_FEATURE_LEVEL_11_0;
  const char* asked = std::getenv("PICTAVO_D3D11_DEVICE");
  const UINT flags = std::getenv("PICTAVO_D3D11_DEBUG") != nullptr ? D3D11_CREATE_DEVICE_DEBUG : 0;
  for (const auto& [name, type] :
       {std::pair{"card", D3D_DRIVER_TYPE_HARDWARE}, std::pair{"software", D3D_DRIVER_TYPE_WARP}}) {
    if (asked != nullptr && std::strcmp(asked, name) != 0) continue;
    if (SUCCEEDED(D3D11CreateDevice(nullptr, type, nullptr, flags, &level, 1, D3D11_SDK_VERSION,
                                    device.ReleaseAndGetAddressOf(), nullptr,
                                    context.ReleaseAndGetAddressOf()))) {
      return;
    }
  }
  throw std::runtime_error("there is no such Direct3D 11 device, or no debug layer");
}

std::string Device::Complaints() const {
  std::string text;
  ComPtr<ID3D11InfoQueue> queue;
  if (FAILED(device->QueryInterface(IID_PPV_ARGS(&queue)))) return text;
  for (UINT64 i = 0; i < queue->GetNumStoredMessages(); ++i) {
    SIZE_T size = 0;
    queue->GetMessage(i, nullptr, &size);
    const std::unique_ptr<char[]> bytes(new char[size]);
    auto* message = reinterpret_cast<D3D11_MESSAGE*>(bytes.get());
    queue->GetMessage(i, message, &size);
    if (message->Severity > D3D11_MESSAGE_SEVERITY_WARNING) continue;
    text.append(message->pDescription).append("\n");
  }
  queue->ClearStoredMessages();
  return text;
}

Texture Device::Upload(const Image& image, u32 bindFlags) const {
  const auto width = static_cast<UINT>(image.width), height = static_cast<UINT>(image.height);
  const D3D11_TEXTURE2D_DESC desc = {
      width, height, 1, 1, image.format, {1, 0}, D3D11_USAGE_DEFAULT, bindFlags, 0, 0};
  const D3D11_SUBRESOURCE_DATA data = {image.bytes.data(),
                                       width * static_cast<UINT>(image.PixelSize()), 0};
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
  const size_t row = image.bytes.size() / desc.Height;
  for (size_t y = 0; y < desc.Height; ++y) {
    std::copy_n(static_cast<const u8*>(mapped.pData) + y * mapped.RowPitch, row,
                &image.bytes[y * row]);
  }
  context->Unmap(staging.Get(), 0);
  return image;
}

}  // namespace pictavo::test
