#ifndef PICTAVO_D3D11_D3D11_BASE_H_
#define PICTAVO_D3D11_D3D11_BASE_H_

#include <d3d11.h>
#include <wrl/client.h>

#include <array>

#include "d3d11/shader_bytecode.h"
#include "frame/common_utility.h"
#include "pictavo/pictavo.h"
#include "platform/critical_section.h"

namespace pictavo {

using Microsoft::WRL::ComPtr;

namespace d3d11 {
struct Pass;
}

/// What every Direct3D 11 part owns: a memory-manager client, made by the first operation that
/// creates a texture.
class CD3D11Base {
 public:
  CD3D11Base() = default;
  virtual ~CD3D11Base();
  CD3D11Base(const CD3D11Base&) = delete;
  CD3D11Base& operator=(const CD3D11Base&) = delete;

  /// Makes a texture of one level in the graphics card's memory. A texture that `*texture` holds
  /// already is kept when it has that size, whatever its format and flags; otherwise it is released
  /// first. @return PICTAVO_S_OK; PICTAVO_E_FAIL without memory for the client; PICTAVO_E_POINTER
  /// when the device is null; the device's own failure
  u32 CreateTexture2D(ID3D11Device* device, u32 width, u32 height, DXGI_FORMAT format,
                      u32 bindFlags, ID3D11Texture2D** texture) noexcept;

  /// Leaves the size alone when there is no texture.
  static void GetTextureSize(ID3D11Texture2D* texture, u32* width, u32* height) noexcept;

 private:
  bool EnsureUtility() noexcept;

  CriticalSection utilityLock_;  // guards the creation of utility_
  CCommonUtility* utility_ = nullptr;
};

/// What a Direct3D call brings along, unchecked. Nothing of it is owned.
struct D3DCall {
  ID3D11Device* device;
  ID3D11DeviceContext* context;
  const ImageDesc* dst;
  const ImageDesc* src;  // not read by operations without a source
};

/// The compute operations, and the objects of the device that they share: shaders and constant
/// buffers, made on demand and kept for the next call on that device.
class CPictavo_D3D : public CD3D11Base {
 public:
  ~CPictavo_D3D() override;

  /// Releases every object of the resource table, in its order.
  void ReleaseResources() noexcept;

  /// A picture's texture, which stays the host's; null when the record has none.
  static ID3D11Texture2D* GetTexture(const ImageDesc* picture) noexcept;

  /// A texture's format as the shaders know it (d3d11::ColorFormat). @return PICTAVO_S_OK, or
  /// PICTAVO_E_FAIL for another format
  static u32 GetColorFormat(ID3D11Texture2D* texture, u32* format) noexcept;

  /// The table's shader, or its constant buffer for blocks of `size` bytes (16, 32, 48 or 64), on a
  /// device. Objects of another device leave the table first. @return PICTAVO_S_OK or the device's
  /// failure
  u32 GetShader(ID3D11Device* device, d3d11::Shader shader, ID3D11ComputeShader** result) noexcept;
  u32 GetConstantBuffer(ID3D11Device* device, u32 size, ID3D11Buffer** result) noexcept;

  // The operations of D3DComputeOp and BoxBlurD3D, as pictavo.h states them.
  u32 PlainCopy(const D3DCall& call) noexcept;
  u32 BoxBlur(const D3DCall& call, const D3DBlurParam* param) noexcept;
  u32 RegionCopy(const D3DCall& call, const D3DRegion* region) noexcept;
  u32 MaterialCopy(const D3DCall& call, const D3DRegion* region) noexcept;
  u32 RegionFilter(const D3DCall& call, const D3DRegionFilterParam* param) noexcept;
  u32 ScaledCopy(const D3DCall& call, const D3DScaleParam* param) noexcept;
  u32 AffineCopy(const D3DCall& call, const D3DAffineParam* param) noexcept;
  u32 Fill(const D3DCall& call, const D3DFillParam* param) noexcept;
  u32 ColourFromSource(const D3DCall& call, const D3DTintParam* param) noexcept;
  u32 ApplyKeys(const D3DCall& call, const D3DKeyParam* param) noexcept;

 private:
  // The table: the shaders, then constant buffers of one to four units.
  static constexpr size_t kConstantUnit = 16, kConstantBuffers = 4;
  static_assert(d3d11::kShaderCount + kConstantBuffers <= 25);

  template <typename T, typename Create>
  u32 GetResource(ID3D11Device* device, size_t index, T** result, Create create) noexcept;

  CriticalSection resourceLock_;  // guards resources_ and resourceDevice_
  std::array<IUnknown*, 25> resources_ = {};
  ID3D11Device* resourceDevice_ = nullptr;  // kept alive by the resources
};

/// Grows pictures by filters. Made by the first operation that needs it, with a memory-manager
/// client of its own.
class CPictavo_Dilation : public CPictavo_D3D {
 public:
  CPictavo_Dilation() noexcept;
  ~CPictavo_Dilation() override;

  u32 Grow(const D3DCall& call, const D3DGrowParam* param) noexcept;
  u32 GrowRegion(const D3DCall& call, const D3DGrowRegionParam* param) noexcept;

 private:
  /// Makes a filter's weights and runs the pass that reads them.
  template <typename Block>
  u32 Apply(const D3DCall& call, const D3DGrowParam& filter, d3d11::Pass* pass,
            const Block& block) noexcept;
  ComPtr<ID3D11Texture2D> ExchangeWeights(ComPtr<ID3D11Texture2D> weights) noexcept;

  CCommonUtility* filterUtility_;
  CriticalSection weightsLock_;      // guards weights_
  ComPtr<ID3D11Texture2D> weights_;  // of the last filter, for the next one of its size
};

}  // namespace pictavo

#endif  // PICTAVO_D3D11_D3D11_BASE_H_
