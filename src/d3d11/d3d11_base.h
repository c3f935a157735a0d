#ifndef PICTAVO_D3D11_D3D11_BASE_H_
#define PICTAVO_D3D11_D3D11_BASE_H_

#include <d3d11.h>
#include <wrl/client.h>

#include <array>
#include <atomic>

#include "d3d11/shader_bytecode.h"
#include "frame/common_utility.h"
#include "pictavo/pictavo.h"
#include "platform/critical_section.h"

namespace pictavo {

using Microsoft::WRL::ComPtr;

namespace d3d11 {

class Computation;

/// A picture of a call, or one in between, and views of it to bind.
struct Picture {
  ComPtr<ID3D11Texture2D> texture;
  i32 width = 0;
  i32 height = 0;
  u32 format = 0;  // a ColorFormat
  ComPtr<ID3D11ShaderResourceView> in;
  ComPtr<ID3D11UnorderedAccessView> out;
};

/// The pictures in between. One is kept for the next call that wants its size.
enum class Scratch : size_t {
  kSums,
  kRemainders,
  kDivisors,
  kFirst,
  kSecond,
  kPatch,
  kWeights,
  kReadBack,
  kTapsAcross,
  kTapsDown,
  kRows
};
inline constexpr size_t kScratchCount = 11;

/// No block of parameters is larger.
inline constexpr u32 kConstantBytes = 64;

}  // namespace d3d11

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

/// Where an operation has pixels on the processor from: a client, and what orders its calls.
struct PixelMemory {
  CCommonUtility* client;
  CriticalSection& lock;
};

/// The compute operations, and the objects of the device that they share: shaders, buffers and
/// pictures in between, made on demand and kept for the next call on that device.
class CPictavo_D3D : public CD3D11Base {
 public:
  CPictavo_D3D() = default;
  ~CPictavo_D3D() override;

  /// Releases every object of the resource table, in its order, and the pictures in between.
  void ReleaseResources() noexcept;

  /// Releases what this object and its partner keep of other devices.
  void UseDevice(ID3D11Device* device) noexcept;

  /// A picture's texture, which stays the host's; null when the record has none.
  static ID3D11Texture2D* GetTexture(const ImageDesc* picture) noexcept;

  /// A texture's format as the shaders know it (d3d11::ColorFormat). @return PICTAVO_S_OK, or
  /// PICTAVO_E_FAIL for another format
  static u32 GetColorFormat(ID3D11Texture2D* texture, u32* format) noexcept;

  /// The table's shader, or its constant buffer of kConstantBytes, on a device. Objects of another
  /// device leave the table first. @return PICTAVO_S_OK or the device's failure
  u32 GetShader(ID3D11Device* device, d3d11::Shader shader, ID3D11ComputeShader** result) noexcept;
  u32 GetConstantBuffer(ID3D11Device* device, ID3D11Buffer** result) noexcept;

  /// The table's buffer for keys, and a view of it.
  u32 GetKeys(ID3D11Device* device, ID3D11Buffer** buffer,
              ID3D11ShaderResourceView** view) noexcept;

  /// A picture in between, of any content. The one that is kept serves when it has that size and
  /// format. @return PICTAVO_S_OK or the failure of CreateTexture2D or the device
  u32 GetScratch(ID3D11Device* device, d3d11::Scratch which, u32 width, u32 height,
                 DXGI_FORMAT format, d3d11::Picture* picture) noexcept;

  /// As much of a texture's first level as the processor can read, of its size and format; of any
  /// content. @return as GetScratch
  u32 GetReadBack(ID3D11Device* device, const d3d11::Picture& like,
                  d3d11::Picture* picture) noexcept;

  /// A filter's weights for one side of a picture, as the shaders take them. @return also
  /// PICTAVO_E_OUTOFMEMORY
  u32 GetTaps(const D3DCall& call, d3d11::Scratch which, i64 srcSize, i64 dstSize, u32 filter,
              d3d11::Picture* table) noexcept;

  /// RotateD3D, by the build of a level.
  u32 Rotate(const D3DCall& call, i32 level, const RotateParam* param,
             const PixelMemory& memory) noexcept;

  // The operations of D3DComputeOp and BoxBlurD3D, as pictavo.h states them.
  // `part` null is the whole texture.
  u32 CopyTexture(const D3DCall& call, const D3DRegion* part) noexcept;
  u32 Clear(const D3DCall& call, const D3DClearParam* param) noexcept;
  u32 PlainCopy(const D3DCall& call) noexcept;
  u32 BoxBlur(const D3DCall& call, const D3DBlurParam* param) noexcept;
  u32 RegionCopy(const D3DCall& call, const D3DRegion* region) noexcept;
  u32 MaterialCopy(const D3DCall& call, const D3DRegion* region) noexcept;
  u32 RegionFilter(const D3DCall& call, const D3DRegionFilterParam* param) noexcept;
  u32 ScaledCopy(const D3DCall& call, const D3DScaleParam* param) noexcept;
  u32 AffineCopy(const D3DCall& call, const D3DAffineParam* param) noexcept;
  u32 FilteredCopy(const D3DCall& call, const ResizeParam* param) noexcept;
  u32 RotatedCopy(const D3DCall& call, const RotateParam* param) noexcept;
  u32 Fill(const D3DCall& call, const D3DFillParam* param) noexcept;
  u32 ColourFromSource(const D3DCall& call, const D3DTintParam* param) noexcept;
  u32 ApplyKeys(const D3DCall& call, const D3DKeyParam* param) noexcept;

 protected:
  /// Leaves devices together with another object from now on; both go at one time.
  explicit CPictavo_D3D(CPictavo_D3D* partner) noexcept;

 private:
  // The table: the shaders, then the constant buffer, the keys and their view.
  static constexpr size_t kConstants = d3d11::kShaderCount;
  static constexpr size_t kKeys = kConstants + 1, kKeysView = kKeys + 1;
  static_assert(kKeysView < 25);

  template <typename T, typename Create>
  u32 GetResource(ID3D11Device* device, size_t index, T** result, Create create) noexcept;
  d3d11::Picture ExchangeScratch(ID3D11Device* device, d3d11::Scratch which,
                                 d3d11::Picture picture) noexcept;
  void KeepOnly(ID3D11Device* device) noexcept;

  CriticalSection resourceLock_;  // guards all below but partner_
  std::array<IUnknown*, 25> resources_ = {};
  std::array<d3d11::Picture, d3d11::kScratchCount> scratch_;
  ID3D11Device* resourceDevice_ = nullptr;  // kept alive by what is kept of it
  std::atomic<CPictavo_D3D*> partner_ = nullptr;
};

/// Grows pictures by filters. Made by the first operation that needs it, with a memory-manager
/// client of its own.
class CPictavo_Dilation : public CPictavo_D3D {
 public:
  explicit CPictavo_Dilation(CPictavo_D3D* owner) noexcept;
  ~CPictavo_Dilation() override;

  u32 Grow(const D3DCall& call, const D3DGrowParam* param) noexcept;
  u32 GrowRegion(const D3DCall& call, const D3DGrowRegionParam* param) noexcept;

 private:
  struct Growth;

  u32 Weigh(d3d11::Computation* computation, const Growth& growth, u32 radius,
            d3d11::Picture* weights) noexcept;
  u32 Search(d3d11::Computation* computation, const Growth& growth, u32 radius) noexcept;
  u32 SearchSquare(d3d11::Computation* computation, const Growth& growth) noexcept;
  u32 Apply(const D3DCall& call, const Growth& growth) noexcept;

  CCommonUtility* filterUtility_;
};

}  // namespace pictavo

#endif  // PICTAVO_D3D11_D3D11_BASE_H_
