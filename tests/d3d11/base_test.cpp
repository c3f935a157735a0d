// The device base: textures and what it says of them, its lock and its resource table.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "d3d11/d3d11_base.h"
#include "d3d11/shader_blocks.h"
#include "device.h"

namespace pictavo::test {
namespace {

class Base : public testing::Test {
 protected:
  u32 Create(u32 width, u32 height, DXGI_FORMAT format, u32 flags, Texture& texture) {
    return base_.CreateTexture2D(device_.device.Get(), width, height, format, flags,
                                 texture.GetAddressOf());
  }

  const Device& device_ = SharedDevice();
  CPictavo_D3D base_;
};

TEST_F(Base, CreatesTextures) {
  Texture texture;
  ASSERT_EQ(Create(33, 7, DXGI_FORMAT_R8_UNORM, kInAndOut, texture), PICTAVO_S_OK);
  D3D11_TEXTURE2D_DESC desc;
  texture->GetDesc(&desc);
  EXPECT_EQ(desc.Width, 33u);
  EXPECT_EQ(desc.Height, 7u);
  EXPECT_EQ(desc.MipLevels, 1u);
  EXPECT_EQ(desc.ArraySize, 1u);
  EXPECT_EQ(desc.Format, DXGI_FORMAT_R8_UNORM);
  EXPECT_EQ(desc.SampleDesc.Count, 1u);
  EXPECT_EQ(desc.Usage, D3D11_USAGE_DEFAULT);
  EXPECT_EQ(desc.BindFlags, kInAndOut);
  EXPECT_EQ(desc.CPUAccessFlags, 0u);
  EXPECT_EQ(desc.MiscFlags, 0u);
}

TEST_F(Base, KeepsATextureOfTheSizeWhateverElseItIs) {
  Texture texture;
  ASSERT_EQ(Create(8, 4, DXGI_FORMAT_R8_UNORM, kInAndOut, texture), PICTAVO_S_OK);
  ID3D11Texture2D* const first = texture.Get();
  ASSERT_EQ(Create(8, 4, DXGI_FORMAT_R32_FLOAT, 0, texture), PICTAVO_S_OK);
  EXPECT_EQ(texture.Get(), first);
  // A kept texture needs no device.
  EXPECT_EQ(base_.CreateTexture2D(nullptr, 8, 4, DXGI_FORMAT_R8_UNORM, 0, texture.GetAddressOf()),
            PICTAVO_S_OK);
  EXPECT_EQ(texture.Get(), first);

  const Texture watch(first);
  ASSERT_EQ(Create(8, 5, DXGI_FORMAT_R32_FLOAT, kInAndOut, texture), PICTAVO_S_OK);
  EXPECT_NE(texture.Get(), first);
  EXPECT_EQ(References(first), 1u);
  EXPECT_EQ(base_.CreateTexture2D(nullptr, 9, 9, DXGI_FORMAT_R8_UNORM, 0, texture.GetAddressOf()),
            PICTAVO_E_POINTER);
  EXPECT_FALSE(texture);
}

TEST_F(Base, ReturnsTheDevicesFailure) {
  Texture texture;
  EXPECT_EQ(Create(0, 4, DXGI_FORMAT_R8_UNORM, 0, texture), PICTAVO_E_INVALIDARG);
  EXPECT_FALSE(texture);
}

TEST_F(Base, TellsSizeAndFormat) {
  const struct {
    DXGI_FORMAT format;
    u32 result, code;
  } cases[] = {{DXGI_FORMAT_B8G8R8A8_UNORM, PICTAVO_S_OK, 0},
               {DXGI_FORMAT_R8G8B8A8_UNORM, PICTAVO_S_OK, 1},
               {DXGI_FORMAT_R8_UNORM, PICTAVO_S_OK, 2},
               {DXGI_FORMAT_R16G16B16A16_FLOAT, PICTAVO_E_FAIL, 77},
               {DXGI_FORMAT_R8G8B8A8_UNORM_SRGB, PICTAVO_E_FAIL, 77},
               {DXGI_FORMAT_B8G8R8A8_TYPELESS, PICTAVO_E_FAIL, 77}};
  for (const auto& c : cases) {
    Texture texture;
    ASSERT_EQ(Create(5, 6, c.format, D3D11_BIND_SHADER_RESOURCE, texture), PICTAVO_S_OK);
    u32 code = 77;
    EXPECT_EQ(CPictavo_D3D::GetColorFormat(texture.Get(), &code), c.result) << c.format;
    EXPECT_EQ(code, c.code) << c.format;
    u32 width = 0, height = 0;
    CD3D11Base::GetTextureSize(texture.Get(), &width, &height);
    EXPECT_EQ(width, 5u);
    EXPECT_EQ(height, 6u);
    CD3D11Base::GetTextureSize(nullptr, &width, &height);
    EXPECT_EQ(width, 5u);
  }
}

TEST_F(Base, FindsTheTextureOfARecord) {
  struct HostPicture final : IHostPicture {
    void Host0() noexcept override { ADD_FAILURE(); }
    void Host1() noexcept override { ADD_FAILURE(); }
    void Host2() noexcept override { ADD_FAILURE(); }
    void Host3() noexcept override { ADD_FAILURE(); }
    ID3D11Texture2D* GetTexture(const ImageDesc* picture) noexcept override {
      asked = picture;
      return texture;
    }
    ID3D11Texture2D* texture = nullptr;
    const ImageDesc* asked = nullptr;
  } host;
  Texture texture;
  ASSERT_EQ(Create(1, 1, DXGI_FORMAT_R8_UNORM, 0, texture), PICTAVO_S_OK);
  ImageDesc picture = Describe(texture.Get());
  EXPECT_EQ(CPictavo_D3D::GetTexture(&picture), texture.Get());
  picture.data = nullptr;
  EXPECT_EQ(CPictavo_D3D::GetTexture(&picture), nullptr);
  for (const u32 kind : {0u, 2u, 4u, ~0u}) {
    picture.memoryKind = kind;
    picture.data = static_cast<IHostPicture*>(&host);
    host.texture = kind == 2 ? nullptr : texture.Get();
    EXPECT_EQ(CPictavo_D3D::GetTexture(&picture), host.texture);
    EXPECT_EQ(host.asked, &picture);
  }
}

TEST_F(Base, KeepsResourcesOfOneDevice) {
  ComPtr<ID3D11ComputeShader> first, second;
  ComPtr<ID3D11Buffer> small, large;
  ID3D11Device* const device = device_.device.Get();
  const ULONG before = References(device);
  ASSERT_EQ(base_.GetShader(device, d3d11::Shader::kRegionCopy, &first), PICTAVO_S_OK);
  ASSERT_EQ(base_.GetShader(device, d3d11::Shader::kRegionCopy, &second), PICTAVO_S_OK);
  EXPECT_EQ(first.Get(), second.Get());
  ASSERT_EQ(base_.GetConstantBuffer(device, 16, &small), PICTAVO_S_OK);
  ASSERT_EQ(base_.GetConstantBuffer(device, 64, &large), PICTAVO_S_OK);
  EXPECT_NE(small.Get(), large.Get());
  EXPECT_EQ(References(first.Get()), 3u);

  const Device other;
  ASSERT_EQ(base_.GetShader(other.device.Get(), d3d11::Shader::kRegionCopy, &second), PICTAVO_S_OK);
  EXPECT_NE(first.Get(), second.Get());
  EXPECT_EQ(References(first.Get()), 1u);
  EXPECT_EQ(References(small.Get()), 1u);

  base_.ReleaseResources();
  EXPECT_EQ(References(second.Get()), 1u);
  first.Reset();
  small.Reset();
  large.Reset();
  EXPECT_EQ(References(device), before);
}

// COM interfaces have no virtual destructor.
#ifdef __GNUC__
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

/// Notes its number when the object that holds it goes.
class Farewell final : public IUnknown {
 public:
  Farewell(u32 number, std::vector<u32>* notes) : number_(number), notes_(notes) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) notes_->push_back(number_);
    return left;
  }

 private:
  ULONG references_ = 0;
  u32 number_;
  std::vector<u32>* notes_;
};

TEST_F(Base, ReleasesResourcesInTheTablesOrder) {
  constexpr GUID kNote = {0x6f1f2d3a, 0x11, 0x22, {1, 2, 3, 4, 5, 6, 7, 8}};
  std::vector<u32> notes, expected;
  std::vector<std::unique_ptr<Farewell>> farewells;
  const auto watch = [&](ID3D11DeviceChild* resource) {
    farewells.push_back(std::make_unique<Farewell>(static_cast<u32>(farewells.size()), &notes));
    EXPECT_EQ(resource->SetPrivateDataInterface(kNote, farewells.back().get()), S_OK);
    expected.insert(expected.begin(), static_cast<u32>(expected.size()));
  };
  for (const u32 size : {64u, 16u}) {
    ComPtr<ID3D11Buffer> buffer;
    ASSERT_EQ(base_.GetConstantBuffer(device_.device.Get(), size, &buffer), PICTAVO_S_OK);
    watch(buffer.Get());
  }
  for (size_t i = d3d11::kShaderCount; i-- > 0;) {
    ComPtr<ID3D11ComputeShader> shader;
    ASSERT_EQ(base_.GetShader(device_.device.Get(), static_cast<d3d11::Shader>(i), &shader),
              PICTAVO_S_OK);
    watch(shader.Get());
  }
  base_.ReleaseResources();
  EXPECT_EQ(notes, expected);
}

}  // namespace
}  // namespace pictavo::test
