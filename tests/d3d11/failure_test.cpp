// What the operations refuse, what they leave behind, and what they do when Direct3D fails.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "d3d11/code.h"
#include "device.h"
#include "frame/pictavo_object.h"

namespace pictavo::test {
namespace {

using d3d11::Code;

constexpr HRESULT kRemoved = static_cast<HRESULT>(0x887A0005u);  // DXGI_ERROR_DEVICE_REMOVED

constexpr ChromaKey kGreen = {0, 255, 0, 0, 30, 20};
constexpr D3DRegion kRegion = {1, 1, 0, 0, 8, 8};
constexpr D3DBlurParam kBlur = {1, 1, 1};
constexpr D3DGrowParam kFilter = {1, 1, 0, 1};
constexpr D3DScaleParam kScale = {0, 0, 4, 4};
constexpr D3DRegionFilterParam kRegionFilter = {kRegion, 1};
constexpr D3DAffineParam kAffine = {0, 0, 0, 0, 8, 8, 0, 0, 65536, 0, 0, 65536};
constexpr D3DFillParam kFill = {1, 1, 5, 5, 1, 0, 0, 1};
constexpr D3DGrowRegionParam kGrowRegion = {kRegion, kFilter, 1};
constexpr D3DTintParam kTint = {0, 0, 1, 0, 0};
constexpr D3DKeyParam kKey = {kRegion, &kGreen, 1};

struct Op {
  i32 code;
  const void* param;
} const kOps[] = {
    {PICTAVO_D3D_COPY, nullptr},
    {PICTAVO_D3D_BOX_BLUR, &kBlur},
    {PICTAVO_D3D_GROW, &kFilter},
    {PICTAVO_D3D_COPY_REGION, &kRegion},
    {PICTAVO_D3D_SCALE, &kScale},
    {PICTAVO_D3D_COPY_MATERIAL, &kRegion},
    {PICTAVO_D3D_FILTER_REGION, &kRegionFilter},
    {PICTAVO_D3D_COPY_AFFINE, &kAffine},
    {PICTAVO_D3D_FILL, &kFill},
    {PICTAVO_D3D_GROW_REGION, &kGrowRegion},
    {PICTAVO_D3D_TINT, &kTint},
    {PICTAVO_D3D_CHROMA_KEY, &kKey},
};

/// Methods of a device, by their places in its table.
enum DeviceMethod : size_t {
  kCreateBuffer = 3,
  kCreateTexture2D = 5,
  kCreateShaderResourceView = 7,
  kCreateUnorderedAccessView = 8,
  kCreateComputeShader = 18,
  kGetDeviceRemovedReason = 39
};

int removedCalls = 0;
HRESULT STDMETHODCALLTYPE Removed() {
  ++removedCalls;
  return kRemoved;
}

/// Puts another function into an object's method table for this object's life, for all objects of
/// its class.
class Replaced {
 public:
  template <typename Fn>
  Replaced(IUnknown* object, size_t method, Fn* fn)
      : entry_(*reinterpret_cast<void***>(object) + method), original_(*entry_) {
    Put(reinterpret_cast<void*>(fn));
  }
  ~Replaced() { Put(original_); }
  Replaced(const Replaced&) = delete;
  Replaced& operator=(const Replaced&) = delete;

 private:
  void Put(void* fn) {
    DWORD protection;
    VirtualProtect(entry_, sizeof(void*), PAGE_READWRITE, &protection);
    *entry_ = fn;
    VirtualProtect(entry_, sizeof(void*), protection, &protection);
  }

  void** entry_;
  void* original_;
};

class Failures : public testing::Test {
 protected:
  u32 Run(const Op& op, const ImageDesc* dst, const ImageDesc* src) {
    return interface_->D3DComputeOp(op.code, 0, device_.device.Get(), device_.context.Get(), dst,
                                    src, op.param);
  }
  u32 Run(i32 code, const void* param) { return Run({code, param}, &dst_, &src_); }

  const Device& device_ = SharedDevice();
  const Image picture_{8, 8, DXGI_FORMAT_B8G8R8A8_UNORM};
  const Texture source_ = device_.Upload(picture_), destination_ = device_.Upload(picture_);
  const ImageDesc src_ = Describe(source_.Get()), dst_ = Describe(destination_.Get());
  Pictavo object_;
  IPictavo6* const interface_ = &object_;
};

TEST_F(Failures, NullPointersAndCodes) {
  ID3D11Device* const device = device_.device.Get();
  ID3D11DeviceContext* const context = device_.context.Get();
  ImageDesc empty = src_;
  empty.data = nullptr;
  for (const Op& op : kOps) {
    const auto run = [&](auto* d, auto* c, const ImageDesc* dst, const ImageDesc* src,
                         const void* param) {
      return interface_->D3DComputeOp(op.code, 0, d, c, dst, src, param);
    };
    ID3D11Device* const noDevice = nullptr;
    ID3D11DeviceContext* const noContext = nullptr;
    const bool fills = op.code == PICTAVO_D3D_FILL;
    const u32 withoutSource = fills ? PICTAVO_S_OK : PICTAVO_E_POINTER;
    SCOPED_TRACE(op.code);
    EXPECT_EQ(run(noDevice, context, &dst_, &src_, op.param), PICTAVO_E_POINTER);
    EXPECT_EQ(run(device, noContext, &dst_, &src_, op.param), PICTAVO_E_POINTER);
    EXPECT_EQ(run(device, context, nullptr, &src_, op.param), PICTAVO_E_POINTER);
    EXPECT_EQ(run(device, context, &empty, &src_, op.param), PICTAVO_E_POINTER);
    EXPECT_EQ(run(device, context, &dst_, nullptr, op.param), withoutSource);
    EXPECT_EQ(run(device, context, &dst_, &empty, op.param), withoutSource);
    EXPECT_EQ(run(device, context, &dst_, &src_, nullptr),
              op.param != nullptr ? PICTAVO_E_POINTER : PICTAVO_S_OK);
    EXPECT_EQ(interface_->D3DComputeOp(op.code, 1, device, context, &dst_, &src_, op.param),
              PICTAVO_E_INVALIDARG);
  }
  EXPECT_EQ(interface_->BoxBlurD3D(nullptr, context, &dst_, &src_, 1), PICTAVO_E_POINTER);
  for (const i32 code : {-1, 15, INT32_MIN, INT32_MAX})
    EXPECT_EQ(Run(code, &kRegion), PICTAVO_E_FAIL);
  for (const i32 code : {0, 4, 7}) EXPECT_EQ(Run(code, &kRegion), PICTAVO_E_NOTIMPL);
  EXPECT_EQ(interface_->D3DComputeOp(0, 2, device, context, nullptr, nullptr, nullptr),
            PICTAVO_E_NOTIMPL);
  EXPECT_EQ(interface_->D3DComputeOp(0, 1, device, context, nullptr, nullptr, nullptr),
            PICTAVO_E_INVALIDARG);
}

TEST_F(Failures, TexturesThatCannotBeUsed) {
  const auto texture = [&](DXGI_FORMAT format, u32 flags, u32 array, u32 samples) {
    const D3D11_TEXTURE2D_DESC desc = {
        8, 8, 1, array, format, {samples, 0}, D3D11_USAGE_DEFAULT, flags, 0, 0};
    Texture result;
    EXPECT_EQ(device_.device->CreateTexture2D(&desc, nullptr, result.ReleaseAndGetAddressOf()),
              S_OK);
    return result;
  };
  const DXGI_FORMAT bgra = DXGI_FORMAT_B8G8R8A8_UNORM;
  const Device other;
  const struct {
    const char* what;
    Texture texture;
    u32 asSource, asDestination;
  } cases[] = {
      {"format", texture(DXGI_FORMAT_R16G16B16A16_FLOAT, kInAndOut, 1, 1), PICTAVO_E_FAIL,
       PICTAVO_E_FAIL},
      {"output only", texture(bgra, D3D11_BIND_UNORDERED_ACCESS, 1, 1), PICTAVO_E_INVALIDARG,
       PICTAVO_S_OK},
      {"input only", texture(bgra, D3D11_BIND_SHADER_RESOURCE, 1, 1), PICTAVO_S_OK,
       PICTAVO_E_INVALIDARG},
      {"array", texture(bgra, kInAndOut, 2, 1), PICTAVO_E_INVALIDARG, PICTAVO_E_INVALIDARG},
      {"multisampled", texture(bgra, D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_RENDER_TARGET, 1, 4),
       PICTAVO_E_INVALIDARG, PICTAVO_E_INVALIDARG},
      {"another device's", other.Upload(picture_), PICTAVO_E_INVALIDARG, PICTAVO_E_INVALIDARG},
  };
  for (const auto& c : cases) {
    const ImageDesc picture = Describe(c.texture.Get());
    for (const Op& op : kOps) {
      SCOPED_TRACE(std::string(c.what) + ", operation " + std::to_string(op.code));
      if (op.code != PICTAVO_D3D_FILL) {
        EXPECT_EQ(Run(op, &dst_, &picture), c.asSource);
      }
      EXPECT_EQ(Run(op, &picture, &src_), c.asDestination);
    }
  }
  for (const Op& op : kOps) {
    const u32 same = op.code == PICTAVO_D3D_FILL ? PICTAVO_S_OK : PICTAVO_E_INVALIDARG;
    EXPECT_EQ(Run(op, &dst_, &dst_), same);
  }
  EXPECT_EQ(interface_->D3DComputeOp(PICTAVO_D3D_COPY, 0, other.device.Get(), device_.context.Get(),
                                     &dst_, &src_, nullptr),
            PICTAVO_E_INVALIDARG);
}

TEST_F(Failures, ValuesOutOfRange) {
  constexpr f32 kNaN = std::numeric_limits<f32>::quiet_NaN();
  constexpr i32 kFar = INT32_MAX;
  const D3DRegion nowhere[] = {{8, 0, 0, 0, 8, 8},
                               {0, -8, 0, 0, 8, 8},
                               {0, 0, 0, 0, 0, 8},
                               {0, 0, 0, 0, 8, -1},
                               {kFar, kFar, kFar, kFar, kFar, kFar}};
  for (const D3DRegion& r : nowhere) {
    const D3DRegionFilterParam filter = {r, 1};
    const D3DGrowRegionParam grow = {r, kFilter, 0};
    const D3DKeyParam key = {r, &kGreen, 1};
    EXPECT_EQ(Run(PICTAVO_D3D_COPY_REGION, &r), PICTAVO_S_FALSE);
    EXPECT_EQ(Run(PICTAVO_D3D_COPY_MATERIAL, &r), PICTAVO_S_FALSE);
    const bool huge = r.width == kFar;
    EXPECT_EQ(Run(PICTAVO_D3D_FILTER_REGION, &filter),
              huge ? PICTAVO_E_INVALIDARG : PICTAVO_S_FALSE);
    EXPECT_EQ(Run(PICTAVO_D3D_GROW_REGION, &grow), PICTAVO_S_FALSE);
    EXPECT_EQ(Run(PICTAVO_D3D_CHROMA_KEY, &key), PICTAVO_S_FALSE);
  }
  const D3DRegion beyondSource = {0, 0, 8, 0, 8, 8};
  EXPECT_EQ(Run(PICTAVO_D3D_COPY_REGION, &beyondSource), PICTAVO_S_FALSE);

  for (const D3DBlurParam& p : {D3DBlurParam{-1, 1, 1}, {1, kNaN, 1}, {1, 1, kNaN}, {1, 1, -1}}) {
    EXPECT_EQ(Run(PICTAVO_D3D_BOX_BLUR, &p), PICTAVO_E_INVALIDARG);
  }
  for (const D3DGrowParam& p : {D3DGrowParam{33, 0, 0, 1},
                                {0, 33, 0, 1},
                                {1, 1, 4, 1},
                                {1, 1, 0, -0.5f},
                                {1, 1, 0, 1.5f},
                                {1, 1, 0, kNaN}}) {
    const D3DGrowRegionParam region = {kRegion, p, 0};
    EXPECT_EQ(Run(PICTAVO_D3D_GROW, &p), PICTAVO_E_INVALIDARG);
    EXPECT_EQ(Run(PICTAVO_D3D_GROW_REGION, &region), PICTAVO_E_INVALIDARG);
  }
  for (const i32 radius : {-1, 129}) {
    const D3DRegionFilterParam p = {kRegion, radius};
    EXPECT_EQ(Run(PICTAVO_D3D_FILTER_REGION, &p), PICTAVO_E_INVALIDARG);
  }
  for (const D3DScaleParam& p : {D3DScaleParam{8, 0, 9, 8}, {0, 5, 8, 5}, {0, -9, 8, 0}}) {
    EXPECT_EQ(Run(PICTAVO_D3D_SCALE, &p), PICTAVO_S_FALSE);
  }
  const D3DScaleParam wide = {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
  EXPECT_EQ(Run(PICTAVO_D3D_SCALE, &wide), PICTAVO_S_OK);
  const auto affine = [&](i32 D3DAffineParam::*field, i32 value) {
    D3DAffineParam p = kAffine;
    p.*field = value;
    return Run(PICTAVO_D3D_COPY_AFFINE, &p);
  };
  EXPECT_EQ(affine(&D3DAffineParam::dstX, 8), PICTAVO_S_FALSE);
  EXPECT_EQ(affine(&D3DAffineParam::srcX, 8), PICTAVO_S_FALSE);
  EXPECT_EQ(affine(&D3DAffineParam::srcHeight, 0), PICTAVO_S_FALSE);
  EXPECT_EQ(affine(&D3DAffineParam::dstY, INT32_MIN), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(affine(&D3DAffineParam::xStart, kFar), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(affine(&D3DAffineParam::yStepY, kFar), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(affine(&D3DAffineParam::xStepX, INT32_MIN), PICTAVO_E_INVALIDARG);
  for (const D3DFillParam& p : {D3DFillParam{5, 1, 5, 8, 0, 0, 0, 1},
                                {8, 8, 9, 9, 0, 0, 0, 1},
                                {0, -5, 8, 0, 0, 0, 0, 1}}) {
    EXPECT_EQ(Run(PICTAVO_D3D_FILL, &p), PICTAVO_S_FALSE);
  }
  const D3DTintParam farTint = {0, -8, 1, 1, 1};
  EXPECT_EQ(Run(PICTAVO_D3D_TINT, &farTint), PICTAVO_S_FALSE);
  const D3DKeyParam noKeys = {kRegion, nullptr, 1};
  EXPECT_EQ(Run(PICTAVO_D3D_CHROMA_KEY, &noKeys), PICTAVO_E_POINTER);
  for (const i32 count : {0, -1, 1025}) {
    const D3DKeyParam p = {kRegion, &kGreen, count};
    EXPECT_EQ(Run(PICTAVO_D3D_CHROMA_KEY, &p), PICTAVO_E_INVALIDARG);
  }
}

TEST_F(Failures, PicturesThatDoNotFitTogether) {
  const Texture plane = device_.Upload(Image(8, 8, DXGI_FORMAT_R8_UNORM));
  const Texture wide = device_.Upload(Image(9, 8, DXGI_FORMAT_B8G8R8A8_UNORM));
  const ImageDesc planePicture = Describe(plane.Get()), widePicture = Describe(wide.Get());
  for (const Op& op :
       {kOps[0], kOps[1], kOps[2], kOps[10]}) {  // that know no planes, or no mixture
    SCOPED_TRACE(op.code);
    EXPECT_EQ(Run(op, &planePicture, &src_), PICTAVO_E_INVALIDARG);
    EXPECT_EQ(Run(op, &dst_, &planePicture), PICTAVO_E_INVALIDARG);
  }
  EXPECT_EQ(Run(kOps[1], &widePicture, &src_), PICTAVO_E_INVALIDARG);
}

TEST_F(Failures, OfTheDeviceAreReturnedAndLoseNothing) {
  ID3D11Device* const device = device_.device.Get();
  const auto references = [&] {
    return std::array{References(device), References(device_.context.Get()),
                      References(source_.Get()), References(destination_.Get())};
  };
  const auto before = references();
  for (const size_t method :
       {kCreateBuffer, kCreateTexture2D, kCreateShaderResourceView, kCreateUnorderedAccessView,
        kCreateComputeShader, kGetDeviceRemovedReason}) {
    int refused = 0;
    for (const Op& op : kOps) {
      SCOPED_TRACE("operation " + std::to_string(op.code) + ", method " + std::to_string(method));
      auto fresh = std::make_unique<Pictavo>();
      u32 result;
      {
        removedCalls = 0;
        const Replaced replaced(device, method, Removed);
        result =
            static_cast<IPictavo6*>(fresh.get())
                ->D3DComputeOp(op.code, 0, device, device_.context.Get(), &dst_, &src_, op.param);
      }
      EXPECT_EQ(result, removedCalls != 0 ? Code(kRemoved) : PICTAVO_S_OK);
      EXPECT_LE(removedCalls, 1);
      refused += removedCalls;
      fresh.reset();
      EXPECT_EQ(references(), before);
    }
    EXPECT_GT(refused, 0);
  }
}

TEST_F(Failures, NothingIsKeptOfADeviceAfterTheNext) {
  const Device other;
  const Texture source = other.Upload(picture_), destination = other.Upload(picture_);
  const ImageDesc src = Describe(source.Get()), dst = Describe(destination.Get());
  const ULONG before = References(other.device.Get());
  for (const Op& op : kOps) {
    EXPECT_EQ(interface_->D3DComputeOp(op.code, 0, other.device.Get(), other.context.Get(), &dst,
                                       &src, op.param),
              PICTAVO_S_OK);
  }
  EXPECT_GT(References(other.device.Get()), before);
  for (const Op& op : kOps) EXPECT_EQ(Run(op, &dst_, &src_), PICTAVO_S_OK);
  EXPECT_EQ(References(other.device.Get()), before);
}

/// What a host has bound to the places that the operations use.
struct Bindings {
  explicit Bindings(ID3D11DeviceContext* context) {
    context->CSGetShader(shader.ReleaseAndGetAddressOf(), nullptr, nullptr);
    context->CSGetConstantBuffers(0, 1, constants.ReleaseAndGetAddressOf());
    for (UINT i = 0; i < 3; ++i) {
      context->CSGetShaderResources(i, 1, inputs[i].ReleaseAndGetAddressOf());
      context->CSGetUnorderedAccessViews(i, 1, outputs[i].ReleaseAndGetAddressOf());
    }
  }

  std::array<IUnknown*, 8> Objects() const {
    return {shader.Get(),    constants.Get(),  inputs[0].Get(),  inputs[1].Get(),
            inputs[2].Get(), outputs[0].Get(), outputs[1].Get(), outputs[2].Get()};
  }

  ComPtr<ID3D11ComputeShader> shader;
  ComPtr<ID3D11Buffer> constants;
  ComPtr<ID3D11ShaderResourceView> inputs[3];
  ComPtr<ID3D11UnorderedAccessView> outputs[3];
};

TEST_F(Failures, LeaveTheContextAsItWas) {
  ID3D11DeviceContext* const context = device_.context.Get();
  Texture textures[5];  // inputs, then outputs
  for (Texture& texture : textures) texture = device_.Upload(picture_);
  for (UINT i = 0; i < 3; ++i) {
    ComPtr<ID3D11ShaderResourceView> input;
    ComPtr<ID3D11UnorderedAccessView> output;
    // One input is of the pictures themselves.
    ID3D11Texture2D* const shown = i == 0 ? destination_.Get() : textures[i - 1].Get();
    ASSERT_EQ(
        device_.device->CreateShaderResourceView(shown, nullptr, input.ReleaseAndGetAddressOf()),
        S_OK);
    ASSERT_EQ(device_.device->CreateUnorderedAccessView(textures[i + 2].Get(), nullptr,
                                                        output.ReleaseAndGetAddressOf()),
              S_OK);
    context->CSSetShaderResources(i, 1, input.GetAddressOf());
    context->CSSetUnorderedAccessViews(i, 1, output.GetAddressOf(), nullptr);
  }
  const D3D11_BUFFER_DESC desc = {32, D3D11_USAGE_DEFAULT, D3D11_BIND_CONSTANT_BUFFER, 0, 0, 0};
  ComPtr<ID3D11Buffer> constants;
  ASSERT_EQ(device_.device->CreateBuffer(&desc, nullptr, constants.ReleaseAndGetAddressOf()), S_OK);
  context->CSSetConstantBuffers(0, 1, constants.GetAddressOf());
  ComPtr<ID3D11ComputeShader> shader;
  ASSERT_EQ(object_.GetShader(device_.device.Get(), d3d11::Shader::kPlainCopy, &shader),
            PICTAVO_S_OK);
  context->CSSetShader(shader.Get(), nullptr, 0);

  const Bindings before(context);
  const auto references = [&] {
    std::array<ULONG, 8> counts;
    std::ranges::transform(before.Objects(), counts.begin(), References);
    return counts;
  };
  const auto counts = references();
  for (const bool fails : {false, true}) {
    for (const Op& op : kOps) {
      SCOPED_TRACE("operation " + std::to_string(op.code) + (fails ? ", which fails" : ""));
      std::optional<Replaced> failing;
      if (fails) failing.emplace(device_.device.Get(), kCreateUnorderedAccessView, Removed);
      EXPECT_EQ(Run(op, &dst_, &src_), fails ? Code(kRemoved) : PICTAVO_S_OK);
      EXPECT_EQ(Bindings(context).Objects(), before.Objects());
      EXPECT_EQ(references(), counts);
    }
  }
  context->ClearState();
}

TEST_F(Failures, SourcesThatAreBoundForOutput) {
  const Texture shown = device_.Upload(picture_, kInAndOut | D3D11_BIND_RENDER_TARGET);
  const ImageDesc src = Describe(shown.Get());
  ComPtr<ID3D11RenderTargetView> target;
  ASSERT_EQ(
      device_.device->CreateRenderTargetView(shown.Get(), nullptr, target.ReleaseAndGetAddressOf()),
      S_OK);
  device_.context->OMSetRenderTargets(1, target.GetAddressOf(), nullptr);
  EXPECT_EQ(Run(kOps[0], &dst_, &src), PICTAVO_E_INVALIDARG);
  device_.context->ClearState();
  EXPECT_EQ(Run(kOps[0], &dst_, &src), PICTAVO_S_OK);
}

}  // namespace
}  // namespace pictavo::test
