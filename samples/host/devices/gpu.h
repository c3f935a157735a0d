// A Direct3D 11 device, and pictures on it.
#ifndef PICTAVO_SAMPLES_HOST_DEVICES_GPU_H_
#define PICTAVO_SAMPLES_HOST_DEVICES_GPU_H_

#include <d3d11.h>
#include <wrl/client.h>

#include <functional>
#include <string>

#include "base/picture.h"

namespace host {

class Gpu {
 public:
  using Texture = Microsoft::WRL::ComPtr<ID3D11Texture2D>;

  /// The graphics card's device, or Windows' own software one. Throws Failure where there is
  /// neither.
  Gpu();

  ID3D11Device* device() const { return device_.Get(); }
  ID3D11DeviceContext* context() const { return context_.Get(); }
  const std::string& name() const { return name_; }

  /// A picture to read, in its own order of channels.
  Texture Upload(const Picture& picture) const;
  /// Clear black to write and to read, in the order that every device can write.
  Texture Create(i32 width, i32 height) const;
  /// What Create has made. Waits for the device.
  Picture Download(ID3D11Texture2D* texture) const;

  /// What a method makes of a picture, in a size: a method of the library's that takes the textures
  /// to write and to read. Waits for it. Throws Failure when the library refuses.
  using Method = std::function<u32(const pictavo::ImageDesc* to, const pictavo::ImageDesc* from)>;
  Picture Made(const Picture& src, Size size, const Method& method) const;

  /// The same by an operation of slot 108.
  Picture Run(pictavo::IPictavo6* object, i32 opCode, const void* param, const Picture& src,
              Size size, i32 subMode = pictavo::PICTAVO_D3D_WHOLE) const;

 private:
  Texture CreateTexture(const D3D11_TEXTURE2D_DESC& desc, const void* pixels) const;

  Microsoft::WRL::ComPtr<ID3D11Device> device_;
  Microsoft::WRL::ComPtr<ID3D11DeviceContext> context_;
  std::string name_;
};

/// The record of a texture.
pictavo::ImageDesc Describe(ID3D11Texture2D* texture);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_DEVICES_GPU_H_
