// A device to test on, pictures on both sides of it, and the operations with something for each.
#ifndef PICTAVO_TESTS_D3D11_DEVICE_H_
#define PICTAVO_TESTS_D3D11_DEVICE_H_

#include <d3d11.h>
#include <gtest/gtest.h>
#include <wrl/client.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "frame/pictavo_object.h"

namespace pictavo::test {

using Colour = std::array<int, 4>;  // red, green, blue, alpha

inline constexpr DXGI_FORMAT kBgra = DXGI_FORMAT_B8G8R8A8_UNORM, kRgba = DXGI_FORMAT_R8G8B8A8_UNORM,
                             kPlane = DXGI_FORMAT_R8_UNORM;

/// Pixels of one of the three formats, at first clear.
struct Image {
  Image(int imageWidth, int imageHeight, DXGI_FORMAT imageFormat);
  /// With random colours and alphas, of which a third are 0 and a third 255.
  Image(int imageWidth, int imageHeight, DXGI_FORMAT imageFormat, std::mt19937& random);
  /// Another picture in another format.
  Image(const Image& image, DXGI_FORMAT imageFormat);

  int PixelSize() const { return format == kPlane ? 1 : 4; }
  bool Has(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }

  /// A pixel as a shader sees it; a plane's is white of its alpha.
  Colour Get(int x, int y) const;
  void Set(int x, int y, const Colour& colour);

  /// Where the bytes of another picture of this kind differ by more than the tolerance, or nothing.
  std::string Difference(const Image& other, int tolerance = 0) const;

  int width, height;
  DXGI_FORMAT format;
  std::vector<u8> bytes;
};

inline constexpr u32 kInAndOut = D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_UNORDERED_ACCESS;

using Microsoft::WRL::ComPtr;
using Texture = ComPtr<ID3D11Texture2D>;

/// A device and its immediate context: the graphics card's, or else the system's software one. With
/// PICTAVO_D3D11_DEVICE in the environment, card or software, that one with the debug layer.
struct Device {
  Device();  // throws without any

  Texture Upload(const Image& image, u32 bindFlags = kInAndOut) const;
  Image Download(ID3D11Texture2D* texture) const;

  /// The warnings and errors of the debug layer since the last call; nothing without it.
  std::string Complaints() const;

  ComPtr<ID3D11Device> device;
  ComPtr<ID3D11DeviceContext> context;
};

/// The record of a texture.
inline ImageDesc Describe(const Texture& texture) {
  return {{}, 0, 0, PICTAVO_MEMORY_D3D11_TEXTURE, texture.Get(), 0, 0, 0, 0};
}

/// How many references an object has.
inline ULONG References(IUnknown* object) { return object->AddRef(), object->Release(); }

/// A library object and the device of all tests that need no other.
class OnDevice : public testing::Test {
 protected:
  u32 Run(i32 opCode, const void* param, const ImageDesc& dst, const ImageDesc& src,
          ID3D11DeviceContext* context = nullptr) {
    return interface_->D3DComputeOp(opCode, 0, device_.device.Get(),
                                    context != nullptr ? context : device_.context.Get(), &dst,
                                    &src, param);
  }

  static const Device& SharedDevice() {
    static const Device device;
    return device;
  }

  const Device& device_ = SharedDevice();
  Pictavo object_;
  IPictavo6* const interface_ = &object_;
};

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_D3D11_DEVICE_H_
