// The device base: textures and what it says of them, its lock and its resource table.
#include <cstring>
#include <list>

#include "device.h"

namespace pictavo::test {
namespace {

using d3d11::Shader;

class Base : public OnDevice {
 protected:
  u32 Create(u32 width, u32 height, DXGI_FORMAT format, u32 flags, Texture& texture) {
    return object_.CreateTexture2D(device, width, height, format, flags, texture.GetAddressOf());
  }

  ID3D11Device* device = device_.device.Get();
};

TEST_F(Base, CreatesTexturesOrReturnsTheDevicesFailure) {
  Texture texture;
  EXPECT_EQ(Create(0, 4, kPlane, 0, texture), PICTAVO_E_INVALIDARG);
  EXPECT_FALSE(texture);
  ASSERT_EQ(Create(33, 7, kPlane, kInAndOut, texture), PICTAVO_S_OK);
  const D3D11_TEXTURE2D_DESC expected = {33,        7, 1, 1, kPlane, {1, 0}, D3D11_USAGE_DEFAULT,
                                         kInAndOut, 0, 0};
  D3D11_TEXTURE2D_DESC desc;
  texture->GetDesc(&desc);
  EXPECT_EQ(std::memcmp(&desc, &expected, sizeof(desc)), 0);
}

TEST_F(Base, KeepsATextureOfTheSizeWhateverElseItIs) {
  Texture texture;
  ASSERT_EQ(Create(8, 4, kPlane, kInAndOut, texture), PICTAVO_S_OK);
  const Texture first = texture;
  EXPECT_EQ(Create(8, 4, DXGI_FORMAT_R32_FLOAT, 0, texture), PICTAVO_S_OK);
  device = nullptr;  // which a kept one does not need
  EXPECT_EQ(Create(8, 4, kPlane, 0, texture), PICTAVO_S_OK);
  EXPECT_EQ(texture, first);
  EXPECT_EQ(Create(8, 5, kPlane, 0, texture), PICTAVO_E_POINTER);
  EXPECT_FALSE(texture);
  EXPECT_EQ(References(first.Get()), 1u);
}

TEST_F(Base, TellsSizeAndFormat) {
  const struct {
    DXGI_FORMAT format;
    u32 result, code;
  } cases[] = {{kBgra, PICTAVO_S_OK, 0},
               {kRgba, PICTAVO_S_OK, 1},
               {kPlane, PICTAVO_S_OK, 2},
               {DXGI_FORMAT_R16G16B16A16_FLOAT, PICTAVO_E_FAIL, 77},
               {DXGI_FORMAT_R8G8B8A8_UNORM_SRGB, PICTAVO_E_FAIL, 77},
               {DXGI_FORMAT_B8G8R8A8_TYPELESS, PICTAVO_E_FAIL, 77}};
  for (const auto& c : cases) {
    Texture texture;
    ASSERT_EQ(Create(5, 6, c.format, D3D11_BIND_SHADER_RESOURCE, texture), PICTAVO_S_OK);
    u32 code = 77, width = 0, height = 0;
    EXPECT_EQ(CPictavo_D3D::GetColorFormat(texture.Get(), &code), c.result) << c.format;
    EXPECT_EQ(code, c.code) << c.format;
    for (ID3D11Texture2D* asked : {texture.Get(), static_cast<ID3D11Texture2D*>(nullptr)}) {
      CD3D11Base::GetTextureSize(asked, &width, &height);
      EXPECT_EQ(width, 5u);
      EXPECT_EQ(height, 6u);
    }
  }
}

TEST_F(Base, FindsTheTextureOfARecord) {
  struct HostPicture final : IHostPicture {
    void Host0() noexcept override { ADD_FAILURE(); }
    void Host1() noexcept override { ADD_FAILURE(); }
    void Host2() noexcept override { ADD_FAILURE(); }
    void Host3() noexcept override { ADD_FAILURE(); }
    ID3D11Texture2D* GetTexture(const ImageDesc* picture) noexcept override {
      return picture == expected ? texture : nullptr;
    }
    const ImageDesc* expected = nullptr;
    ID3D11Texture2D* texture = nullptr;
  } host;
  const Texture texture = device_.Upload(Image(1, 1, kPlane));
  ImageDesc picture = Describe(texture);
  EXPECT_EQ(CPictavo_D3D::GetTexture(&picture), texture.Get());
  host.expected = &picture;
  for (const u32 kind : {0u, 2u, 4u, ~0u, 3u}) {
    picture.memoryKind = kind;
    picture.data = nullptr;
    EXPECT_EQ(CPictavo_D3D::GetTexture(&picture), nullptr);
    if (kind == PICTAVO_MEMORY_D3D11_TEXTURE) continue;
    picture.data = static_cast<IHostPicture*>(&host);
    host.texture = kind == 2 ? nullptr : texture.Get();
    EXPECT_EQ(CPictavo_D3D::GetTexture(&picture), host.texture);
  }
}

// COM interfaces have no virtual destructor.
#ifdef __GNUC__
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

/// Notes its number when the object that holds it goes.
struct Farewell final : IUnknown {
  Farewell(size_t n, std::vector<size_t>* all) : number(n), notes(all) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override {
    if (--references == 0) notes->push_back(number);
    return references;
  }

  ULONG references = 0;
  size_t number;
  std::vector<size_t>* notes;
};

TEST_F(Base, KeepsResourcesAndReleasesThemInTheTablesOrder) {
  constexpr GUID kNote = {0x6f1f2d3a, 0x11, 0x22, {1, 2, 3, 4, 5, 6, 7, 8}};
  std::vector<size_t> notes, expected;
  std::list<Farewell> farewells;
  const auto watch = [&](size_t place, ID3D11DeviceChild* resource) {
    EXPECT_EQ(resource->SetPrivateDataInterface(kNote, &farewells.emplace_back(place, &notes)),
              S_OK);
    expected.insert(expected.begin(), place);
  };
  ComPtr<ID3D11Buffer> buffer;  // the table from its end
  ASSERT_EQ(object_.GetConstantBuffer(device, &buffer), PICTAVO_S_OK);
  watch(d3d11::kShaderCount, buffer.Get());
  buffer.Reset();
  for (size_t i = d3d11::kShaderCount; i-- > 0;) {
    ComPtr<ID3D11ComputeShader> shader, again;
    ASSERT_EQ(object_.GetShader(device, static_cast<Shader>(i), &shader), PICTAVO_S_OK);
    ASSERT_EQ(object_.GetShader(device, static_cast<Shader>(i), &again), PICTAVO_S_OK);
    EXPECT_EQ(shader, again);
    watch(i, shader.Get());
  }
  object_.ReleaseResources();
  EXPECT_EQ(notes, expected);
}

}  // namespace
}  // namespace pictavo::test
