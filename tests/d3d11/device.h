// A device to test on, and pictures on both sides of it.
#ifndef PICTAVO_TESTS_D3D11_DEVICE_H_
#define PICTAVO_TESTS_D3D11_DEVICE_H_

#include <d3d11.h>
#include <gtest/gtest.h>
#include <wrl/client.h>

#include <functional>
#include <random>
#include <vector>

#include "pictavo/pictavo.h"

namespace pictavo::test {

/// A colour as a shader sees it.
struct Colour {
  int r, g, b, a;
};

/// Pixels of one of the three formats.
struct Image {
  Image(int imageWidth, int imageHeight, DXGI_FORMAT imageFormat);
  /// With random colours and alphas, of which a third are 0 and a third 255.
  Image(int imageWidth, int imageHeight, DXGI_FORMAT imageFormat, std::mt19937& random);

  size_t PixelSize() const { return format == DXGI_FORMAT_R8_UNORM ? 1 : 4; }
  u8* At(int x, int y) {
    return bytes.data() + PixelSize() * (static_cast<size_t>(y) * static_cast<size_t>(width) +
                                         static_cast<size_t>(x));
  }
  bool Has(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }

  /// A pixel, a plane's being white of its alpha.
  Colour Get(int x, int y) const;
  /// Sets a pixel, of a plane its alpha. Ignores places outside.
  void Set(int x, int y, const Colour& colour);

  /// The picture in another format.
  Image In(DXGI_FORMAT other) const;

  int width, height;
  DXGI_FORMAT format;
  std::vector<u8> bytes;
};

/// Where two pictures of one size and format differ by more than the tolerance; empty when nowhere.
std::string Difference(const Image& expected, const Image& result, int tolerance);

inline constexpr u32 kInAndOut = D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_UNORDERED_ACCESS;
inline constexpr DXGI_FORMAT kFormats[] = {DXGI_FORMAT_B8G8R8A8_UNORM, DXGI_FORMAT_R8G8B8A8_UNORM,
                                           DXGI_FORMAT_R8_UNORM};

using Microsoft::WRL::ComPtr;
using Texture = ComPtr<ID3D11Texture2D>;

/// A device and its immediate context.
struct Device {
  /// The graphics card's, or the system's software device. Throws without any.
  Device();

  Texture Upload(Image image, u32 bindFlags = kInAndOut) const;
  Image Download(ID3D11Texture2D* texture) const;

  ComPtr<ID3D11Device> device;
  ComPtr<ID3D11DeviceContext> context;
};

/// The device of all tests that need no other.
const Device& SharedDevice();

/// The record of a texture.
ImageDesc Describe(ID3D11Texture2D* texture);

/// How many references an object has.
ULONG References(IUnknown* object);

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_D3D11_DEVICE_H_
