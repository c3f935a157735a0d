// What the operations refuse, what they leave behind, and what they do when Direct3D fails.
#include <algorithm>
#include <limits>
#include <memory>

#include "device.h"
#include "fakes.h"
#include "module_folder.h"

namespace pictavo::test {
namespace {

constexpr u32 kRemoved = 0x887A0005;  // DXGI_ERROR_DEVICE_REMOVED
constexpr u32 kOk = PICTAVO_S_OK, kNothing = PICTAVO_S_FALSE;
constexpr u32 kInvalid = PICTAVO_E_INVALIDARG, kNull = PICTAVO_E_POINTER;
constexpr i32 kFar = INT32_MAX;

constexpr ChromaKey kGreen = {0, 255, 0, 0, 30, 20};
constexpr D3DRegion kRegion = {1, 1, 0, 0, 8, 8};
constexpr D3DBlurParam kBlur = {1, 1, 1};
constexpr f32 kColour[] = {0, 0.5f, 1, 0.25f};
constexpr D3DClearParam kClear = {kColour, 4};
constexpr D3DGrowParam kFilter = {1, 1, 0, 1};
constexpr D3DScaleParam kScale = {0, 0, 4, 4};
constexpr D3DRegionFilterParam kRegionFilter = {kRegion, 1};
constexpr D3DAffineParam kAffine = {0, 0, 0, 0, 8, 8, 0, 0, 65536, 0, 0, 65536};
constexpr ResizeParam kResize = {PICTAVO_FILTER_LANCZOS, 1, {}};
constexpr RotateParam kTurn = {30, 1, 4, 4, 4, 4, PICTAVO_SAMPLE_BILINEAR};
constexpr D3DFillParam kFill = {1, 1, 5, 5, 1, 0, 0, 1};
constexpr D3DGrowRegionParam kGrowRegion = {kRegion, kFilter, 1};
constexpr D3DTintParam kTint = {0, 0, 1, 0, 0};
constexpr D3DKeyParam kKey = {kRegion, &kGreen, 1};

struct Op {
  i32 code;
  const void* param;
  bool planesAlone;  // of planes it takes none, or none together with colours
  i32 mode = PICTAVO_D3D_WHOLE;

  bool HasSource() const { return code != PICTAVO_D3D_FILL && code != PICTAVO_D3D_CLEAR; }
  bool Copies() const { return code == PICTAVO_D3D_COPY_TEXTURE; }  // whatever the flags
} const kOps[] = {
    {PICTAVO_D3D_COPY_TEXTURE, nullptr, true},
    {PICTAVO_D3D_COPY_TEXTURE, &kRegion, true, PICTAVO_D3D_PART},
    {PICTAVO_D3D_COPY, nullptr, true},
    {PICTAVO_D3D_BOX_BLUR, &kBlur, true},
    {PICTAVO_D3D_GROW, &kFilter, true},
    {PICTAVO_D3D_CLEAR, &kClear, false},
    {PICTAVO_D3D_COPY_REGION, &kRegion, false},
    {PICTAVO_D3D_SCALE, &kScale, false},
    {PICTAVO_D3D_COPY_MATERIAL, &kRegion, false},
    {PICTAVO_D3D_FILTER_REGION, &kRegionFilter, false},
    {PICTAVO_D3D_COPY_AFFINE, &kAffine, false},
    {PICTAVO_D3D_SCALE, &kResize, false, PICTAVO_D3D_AS_PROCESSOR},
    {PICTAVO_D3D_COPY_AFFINE, &kTurn, false, PICTAVO_D3D_AS_PROCESSOR},
    {PICTAVO_D3D_FILL, &kFill, false},
    {PICTAVO_D3D_GROW_REGION, &kGrowRegion, false},
    {PICTAVO_D3D_TINT, &kTint, true},
    {PICTAVO_D3D_CHROMA_KEY, &kKey, false},
};

/// What a device may fail at, and the method's place in its table.
struct DeviceMethod {
  const char* name;
  size_t place;
  int callsAnyway;  // at every operation
} const kDeviceMethods[] = {{"CreateBuffer", 3, 0},
                            {"CreateTexture2D", 5, 0},
                            {"CreateComputeShader", 18, 0},
                            {"CreateShaderResourceView", 7, 1},
                            {"GetDeviceRemovedReason", 39, 1},
                            {"CreateUnorderedAccessView", 8, 1}};
constexpr size_t kCreateRenderTargetView = 9;

/// Puts a function in the place of a method of an object's class for this object's life.
class Replaced {
 public:
  Replaced(const Replaced&) = delete;
  Replaced& operator=(const Replaced&) = delete;

 protected:
  // No method that is called on takes more arguments, and the caller takes them all back.
  using Method = HRESULT STDMETHODCALLTYPE(void*, void*, void*, void*, void*);

  Replaced(IUnknown* object, size_t method, Method* by)
      : entry_(*reinterpret_cast<Method***>(object) + method) {
    original = *entry_;
    Put(by);
  }
  ~Replaced() { Put(original); }

  static inline Method* original = nullptr;

 private:
  void Put(Method* method) {
    DWORD protection;
    VirtualProtect(entry_, sizeof(void*), PAGE_READWRITE, &protection);
    *entry_ = method;
    VirtualProtect(entry_, sizeof(void*), protection, &protection);
  }

  Method** entry_;
};

/// Makes a method fail, after some calls that do not.
class Failing : Replaced {
 public:
  Failing(IUnknown* object, size_t method, int callsBefore) : Replaced(object, method, Sometimes) {
    callsLeft = callsBefore;
    failed = 0;
  }

  static inline int failed = 0;

 private:
  static HRESULT STDMETHODCALLTYPE Sometimes(void* a, void* b, void* c, void* d, void* e) {
    if (callsLeft-- > 0) return original(a, b, c, d, e);
    ++failed;
    return static_cast<HRESULT>(kRemoved);
  }

  static inline int callsLeft = 0;
};

/// Counts the textures that become outputs of a context while they are still inputs. Direct3D takes
/// them away from there, and its debug layer warns of each.
class Hazards : Replaced {
 public:
  explicit Hazards(ID3D11DeviceContext* context) : Replaced(context, 68, SetOutputs) { seen = 0; }

  static inline int seen = 0;

 private:
  static HRESULT STDMETHODCALLTYPE SetOutputs(void* context, void* first, void* count, void* views,
                                              void* counters) {
    for (UINT i = 0; i < 9; ++i) {
      ID3D11UnorderedAccessView* output = static_cast<ID3D11UnorderedAccessView**>(views)[i / 3];
      ComPtr<ID3D11ShaderResourceView> input;
      static_cast<ID3D11DeviceContext*>(context)->CSGetShaderResources(
          i % 3, 1, input.ReleaseAndGetAddressOf());
      seen += output != nullptr && input && TextureOf(output) == TextureOf(input.Get());
    }
    return original(context, first, count, views, counters);
  }

  static ComPtr<ID3D11Resource> TextureOf(ID3D11View* view) {
    ComPtr<ID3D11Resource> texture;
    view->GetResource(texture.ReleaseAndGetAddressOf());
    return texture;
  }
};

class Failures : public OnDevice {
 protected:
  using OnDevice::Run;
  u32 Run(i32 code, const void* param) { return Run(code, param, dst_, src_); }
  u32 Run(const Op& op, const ImageDesc& dst, const ImageDesc& src) {
    return interface_->D3DComputeOp(op.code, op.mode, device, context, &dst, &src, op.param);
  }
  u32 Run(const Op& op) { return Run(op, DstOf(op), src_); }

  /// A destination that gives an operation something to do.
  const ImageDesc& DstOf(const Op& op) const { return op.param == &kResize ? wide_ : dst_; }

  template <typename Param>
  void Expect(u32 result, i32 code, std::initializer_list<Param> params) {
    for (const Param& p : params) {
      EXPECT_EQ(Run(code, &p), result) << "operation " << code << ", case " << &p - params.begin();
    }
  }

  ID3D11Device* const device = device_.device.Get();
  ID3D11DeviceContext* const context = device_.context.Get();
  const Image picture_{8, 8, kBgra};
  const Texture source_ = device_.Upload(picture_), destination_ = device_.Upload(picture_);
  const Texture wideTexture_ = device_.Upload(Image(9, 8, kBgra));
  const ImageDesc src_ = Describe(source_), dst_ = Describe(destination_),
                  wide_ = Describe(wideTexture_);
};

TEST_F(Failures, NullPointersAndCodes) {
  const ImageDesc empty = Describe({});
  for (const Op& op : kOps) {
    const struct {
      ID3D11Device* device;
      ID3D11DeviceContext* context;
      const ImageDesc *dst, *src;
      const void* param;
      bool needed;
    } cases[] = {{nullptr, context, &dst_, &src_, op.param, true},
                 {device, nullptr, &dst_, &src_, op.param, true},
                 {device, context, nullptr, &src_, op.param, true},
                 {device, context, &empty, &src_, op.param, true},
                 {device, context, &dst_, nullptr, op.param, op.HasSource()},
                 {device, context, &dst_, &empty, op.param, op.HasSource()},
                 {device, context, &dst_, &src_, nullptr, op.param != nullptr}};
    for (const auto& c : cases) {
      EXPECT_EQ(
          interface_->D3DComputeOp(op.code, op.mode, c.device, c.context, c.dst, c.src, c.param),
          c.needed ? kNull : kOk)
          << "operation " << op.code << ", case " << &c - cases;
    }
    for (const i32 mode : {1, 2, 3, -1}) {
      const auto has = [&](const Op& other) { return other.code == op.code && other.mode == mode; };
      if (std::ranges::any_of(kOps, has)) continue;
      EXPECT_EQ(interface_->D3DComputeOp(op.code, mode, device, context, &dst_, &src_, op.param),
                kInvalid)
          << "operation " << op.code << ", sub-mode " << mode;
    }
  }
  EXPECT_EQ(interface_->BoxBlurD3D(nullptr, context, &dst_, &src_, 1), kNull);
  for (const i32 code : {-1, 15, INT32_MIN, kFar}) EXPECT_EQ(Run(code, &kRegion), PICTAVO_E_FAIL);
  Expect<D3DClearParam>(kNull, PICTAVO_D3D_CLEAR, {{nullptr, 4}, {nullptr, 0}});
  // Before anything else is found wrong.
  constexpr D3DClearParam kNoColour = {nullptr, 4};
  const Texture half = device_.Upload(picture_, D3D11_BIND_SHADER_RESOURCE);
  EXPECT_EQ(Run(PICTAVO_D3D_CLEAR, &kNoColour, Describe(half), empty), kNull);
  EXPECT_EQ(Run(PICTAVO_D3D_COPY, nullptr, Describe(half), empty), kNull);
}

TEST_F(Failures, TexturesThatCannotBeUsed) {
  const auto texture = [&](DXGI_FORMAT format, u32 flags, u32 mips, u32 array, u32 samples) {
    const D3D11_TEXTURE2D_DESC desc = {
        8, 8, mips, array, format, {samples, 0}, D3D11_USAGE_DEFAULT, flags, 0, 0};
    Texture result;
    EXPECT_EQ(device->CreateTexture2D(&desc, nullptr, result.ReleaseAndGetAddressOf()), S_OK);
    return result;
  };
  constexpr u32 kIn = D3D11_BIND_SHADER_RESOURCE, kOut = D3D11_BIND_UNORDERED_ACCESS;
  constexpr u32 kFail = PICTAVO_E_FAIL;
  const Device other;
  const struct {
    const char* what;
    Texture texture;
    u32 asSource, asDestination;
  } cases[] = {
      {"format", texture(DXGI_FORMAT_R16G16B16A16_FLOAT, kInAndOut, 1, 1, 1), kFail, kFail},
      {"output only", texture(kBgra, kOut, 1, 1, 1), kInvalid, kOk},
      {"input only", texture(kBgra, kIn, 1, 1, 1), kOk, kInvalid},
      {"levels", texture(kBgra, kInAndOut, 3, 1, 1), kOk, kOk},
      {"array", texture(kBgra, kInAndOut, 1, 2, 1), kInvalid, kInvalid},
      {"samples", texture(kBgra, kIn | D3D11_BIND_RENDER_TARGET, 1, 1, 4), kInvalid, kInvalid},
      {"another device's", other.Upload(picture_), kInvalid, kInvalid},
  };
  const Texture plane = device_.Upload(Image(8, 8, kPlane));
  for (const Op& op : kOps) {
    for (const auto& c : cases) {
      SCOPED_TRACE(std::string(c.what) + ", operation " + std::to_string(op.code));
      const ImageDesc picture = Describe(c.texture);
      const bool anyFlags = op.Copies() && std::string(c.what).ends_with("only");
      EXPECT_EQ(Run(op, dst_, picture), anyFlags || !op.HasSource() ? kOk : c.asSource);
      EXPECT_EQ(Run(op, picture, src_), anyFlags ? kOk : c.asDestination);
    }
    const u32 mixed = op.planesAlone ? kInvalid : kOk;
    EXPECT_EQ(Run(op, Describe(plane), src_), mixed) << op.code;
    EXPECT_EQ(Run(op, dst_, Describe(plane)), op.HasSource() ? mixed : kOk) << op.code;
    EXPECT_EQ(Run(op, dst_, dst_), op.HasSource() ? kInvalid : kOk) << op.code;
    EXPECT_EQ(interface_->D3DComputeOp(op.code, op.mode, other.device.Get(), context, &dst_, &src_,
                                       op.param),
              kInvalid);
  }
  const Texture rgba = device_.Upload(Image(8, 8, kRgba));
  const D3D11_TEXTURE2D_DESC fixed = {8, 8, 1, 1, kBgra, {1, 0}, D3D11_USAGE_IMMUTABLE, kIn, 0, 0};
  const D3D11_SUBRESOURCE_DATA data = {picture_.bytes.data(), 32, 0};
  Texture immutable;
  ASSERT_EQ(device->CreateTexture2D(&fixed, &data, immutable.ReleaseAndGetAddressOf()), S_OK);
  for (const Texture& unfit : {wideTexture_, rgba, immutable}) {
    EXPECT_EQ(Run(kOps[0], Describe(unfit), src_), kInvalid);
  }
  EXPECT_EQ(Run(kOps[1], Describe(rgba), src_), kInvalid);
  EXPECT_EQ(Run(kOps[1], Describe(immutable), src_), kInvalid);
  EXPECT_EQ(Run(PICTAVO_D3D_BOX_BLUR, &kBlur, wide_, src_), kInvalid);
}

TEST_F(Failures, ValuesOutOfRange) {
  constexpr f32 kNaN = std::numeric_limits<f32>::quiet_NaN();
  for (const D3DRegion& r : {D3DRegion{8, 0, 0, 0, 8, 8},
                             {0, -8, 0, 0, 8, 8},
                             {0, 0, 0, 0, 0, 8},
                             {0, 0, 0, 0, 8, -1},
                             {0, 0, 8, 0, 8, 8},
                             {kFar, kFar, kFar, kFar, kFar, kFar}}) {
    const u32 beyondSource = r.srcX == 8 ? kOk : kNothing;
    Expect(kNothing, PICTAVO_D3D_COPY_REGION, {r});
    EXPECT_EQ(Run({PICTAVO_D3D_COPY_TEXTURE, &r, true, PICTAVO_D3D_PART}), kNothing);
    Expect(beyondSource, PICTAVO_D3D_COPY_MATERIAL, {r});
    Expect<D3DRegionFilterParam>(r.width == kFar ? kInvalid : beyondSource,
                                 PICTAVO_D3D_FILTER_REGION, {{r, 1}});
    Expect<D3DGrowRegionParam>(kNothing, PICTAVO_D3D_GROW_REGION, {{r, kFilter, 0}});
    Expect<D3DKeyParam>(kNothing, PICTAVO_D3D_CHROMA_KEY, {{r, &kGreen, 1}});
  }
  Expect<D3DBlurParam>(kInvalid, PICTAVO_D3D_BOX_BLUR,
                       {{-1, 1, 1}, {1, kNaN, 1}, {1, 1, kNaN}, {1, 1, -1}});
  for (const D3DGrowParam& p : {D3DGrowParam{33, 0, 0, 1}, {0, 33, 0, 1}, {1, 1, 4, 1}}) {
    Expect(kInvalid, PICTAVO_D3D_GROW, {p});
    Expect<D3DGrowRegionParam>(kInvalid, PICTAVO_D3D_GROW_REGION, {{kRegion, p, 0}});
  }
  Expect<D3DClearParam>(kInvalid, PICTAVO_D3D_CLEAR, {{kColour, 3}, {kColour, 5}, {kColour, -4}});
  for (const f32 bad : {-0.01f, 1.01f, kNaN}) {
    for (size_t i = 0; i < 4; ++i) {
      f32 colour[4] = {};
      colour[i] = bad;
      Expect<D3DClearParam>(kInvalid, PICTAVO_D3D_CLEAR, {{colour, 4}});
    }
    Expect<D3DGrowParam>(kInvalid, PICTAVO_D3D_GROW, {{1, 1, 0, bad}});
    Expect<D3DGrowRegionParam>(kInvalid, PICTAVO_D3D_GROW_REGION, {{kRegion, {1, 1, 0, bad}, 0}});
    Expect<D3DFillParam>(kInvalid, PICTAVO_D3D_FILL,
                         {{1, 1, 5, 5, bad, 0, 0, 1},
                          {1, 1, 5, 5, 0, bad, 0, 1},
                          {1, 1, 5, 5, 0, 0, bad, 1},
                          {1, 1, 5, 5, 0, 0, 0, bad}});
    Expect<D3DTintParam>(kInvalid, PICTAVO_D3D_TINT,
                         {{0, 0, bad, 0, 0}, {0, 0, 0, bad, 0}, {0, 0, 0, 0, bad}});
  }
  Expect<D3DRegionFilterParam>(kInvalid, PICTAVO_D3D_FILTER_REGION,
                               {{kRegion, -1}, {kRegion, 129}});
  Expect<D3DScaleParam>(kNothing, PICTAVO_D3D_SCALE, {{8, 0, 9, 8}, {0, 5, 8, 5}, {0, -9, 8, 0}});
  Expect<D3DScaleParam>(kOk, PICTAVO_D3D_SCALE, {{INT32_MIN, INT32_MIN, kFar, kFar}});
  const auto affine = [](i32 D3DAffineParam::*field, i32 value) {
    D3DAffineParam p = kAffine;
    p.*field = value;
    return p;
  };
  using A = D3DAffineParam;
  Expect(kNothing, PICTAVO_D3D_COPY_AFFINE,
         {affine(&A::dstX, 8), affine(&A::srcX, 8), affine(&A::srcHeight, 0)});
  Expect(kInvalid, PICTAVO_D3D_COPY_AFFINE,
         {affine(&A::dstY, INT32_MIN), affine(&A::xStart, kFar), affine(&A::yStepY, kFar),
          affine(&A::xStepX, INT32_MIN)});
  for (const ResizeParam& p : {ResizeParam{4, 0, {}}, {0, 2, {}}, {0, 0, {1, 0}}, {0, 0, {0, 1}}})
    EXPECT_EQ(Run({PICTAVO_D3D_SCALE, &p, false, PICTAVO_D3D_AS_PROCESSOR}), kInvalid);
  for (const RotateParam& p : {RotateParam{kNaN, 1, 0, 0, 0, 0, 1},
                               {0, 0, 0, 0, 0, 0, 1},
                               {0, 1, 0, 0, 0, 3e7f, 1},
                               {0, 1e-9f, 0, 0, 0, 0, 1},
                               {0, 1, 0, 0, 0, 0, 2}})
    EXPECT_EQ(Run({PICTAVO_D3D_COPY_AFFINE, &p, false, PICTAVO_D3D_AS_PROCESSOR}), kInvalid);
  Expect<D3DFillParam>(
      kNothing, PICTAVO_D3D_FILL,
      {{5, 1, 5, 8, 0, 0, 0, 1}, {8, 8, 9, 9, 0, 0, 0, 1}, {0, -5, 8, 0, 0, 0, 0, 1}});
  Expect<D3DTintParam>(kNothing, PICTAVO_D3D_TINT, {{0, -8, 1, 1, 1}});
  Expect<D3DKeyParam>(kNull, PICTAVO_D3D_CHROMA_KEY, {{kRegion, nullptr, 1}});
  Expect<D3DKeyParam>(kInvalid, PICTAVO_D3D_CHROMA_KEY,
                      {{kRegion, &kGreen, 0}, {kRegion, &kGreen, -1}, {kRegion, &kGreen, 1025}});
}

/// What is bound to the places that the operations use.
std::vector<IUnknown*> Bound(ID3D11DeviceContext* context) {
  ID3D11ComputeShader* shader = nullptr;
  ID3D11Buffer* constants;
  ID3D11ShaderResourceView* in[3];
  ID3D11UnorderedAccessView* out[3];
  context->CSGetShader(&shader, nullptr, nullptr);
  context->CSGetConstantBuffers(0, 1, &constants);
  context->CSGetShaderResources(0, 3, in);
  context->CSGetUnorderedAccessViews(0, 3, out);
  const std::vector<IUnknown*> all = {shader, constants, in[0],  in[1],
                                      in[2],  out[0],    out[1], out[2]};
  for (IUnknown* object : all) {
    if (object != nullptr) object->Release();
  }
  return all;
}

/// Binds something to each of those places.
void Bind(const Device& on, CPictavo_D3D* owner, const Texture& shown, const Image& picture) {
  ComPtr<ID3D11ComputeShader> shader;
  ComPtr<ID3D11Buffer> constants;
  EXPECT_EQ(owner->GetShader(on.device.Get(), d3d11::Shader::kPlainCopy, &shader), kOk);
  EXPECT_EQ(owner->GetConstantBuffer(on.device.Get(), &constants), kOk);
  on.context->CSSetShader(shader.Get(), nullptr, 0);
  on.context->CSSetConstantBuffers(0, 1, constants.GetAddressOf());
  for (UINT i = 0; i < 3; ++i) {
    ComPtr<ID3D11ShaderResourceView> input;
    ComPtr<ID3D11UnorderedAccessView> output;
    const Texture in = i == 0 ? shown : on.Upload(picture), out = on.Upload(picture);
    on.device->CreateShaderResourceView(in.Get(), nullptr, input.ReleaseAndGetAddressOf());
    on.device->CreateUnorderedAccessView(out.Get(), nullptr, output.ReleaseAndGetAddressOf());
    on.context->CSSetShaderResources(i, 1, input.GetAddressOf());
    on.context->CSSetUnorderedAccessViews(i, 1, output.GetAddressOf(), nullptr);
  }
}

TEST_F(Failures, OfTheDeviceAreReturnedLoseNothingAndLeaveTheContextAsItWas) {
  Bind(device_, &object_, destination_, picture_);
  const auto bound = Bound(context);
  std::vector<IUnknown*> objects = bound;
  objects.insert(objects.end(), {device, context, source_.Get(), destination_.Get()});
  ASSERT_EQ(std::ranges::count(objects, nullptr), 0);
  const auto references = [&] {
    std::vector<ULONG> counts(objects.size());
    std::ranges::transform(objects, counts.begin(), References);
    return counts;
  };
  const auto before = references();
  for (const DeviceMethod& method : kDeviceMethods) {
    int failures = 0;
    for (const Op& op : kOps) {
      for (int callsBefore = 0, failed = 1; failed != 0; ++callsBefore) {
        SCOPED_TRACE("operation " + std::to_string(op.code) + ", " + method.name + ", call " +
                     std::to_string(callsBefore));
        {
          const auto fresh = std::make_unique<Pictavo>();
          IPictavo6* const object = fresh.get();
          const Failing failing(device, method.place, callsBefore);
          const u32 result =
              object->D3DComputeOp(op.code, op.mode, device, context, &DstOf(op), &src_, op.param);
          failed = failing.failed;
          EXPECT_EQ(result, failed != 0 ? kRemoved : kOk);
        }
        EXPECT_LE(failed, 1);
        EXPECT_EQ(Bound(context), bound);
        EXPECT_EQ(references(), before);
        failures += failed;
      }
    }
    EXPECT_GT(failures, 0);
  }
  const Texture target = device_.Upload(picture_, D3D11_BIND_RENDER_TARGET);
  for (const u32 result : {kRemoved, kOk}) {
    const Failing failing(device, kCreateRenderTargetView, result == kOk);
    EXPECT_EQ(Run(PICTAVO_D3D_CLEAR, &kClear, Describe(target), src_), result);
    EXPECT_EQ(picture_.Difference(device_.Download(target.Get())).empty(), result != kOk);
  }
  EXPECT_EQ(Bound(context), bound);
  context->ClearState();
}

TEST_F(Failures, OfTurningWriteNothingAndLoseNothing) {
  const Device other;
  ComPtr<ID3D11DeviceContext> deferred;
  device->CreateDeferredContext(0, deferred.ReleaseAndGetAddressOf());
  D3D11_TEXTURE2D_DESC desc;
  destination_->GetDesc(&desc);
  desc.Usage = D3D11_USAGE_STAGING;
  desc.BindFlags = 0;
  desc.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
  Texture staging;
  ASSERT_EQ(device->CreateTexture2D(&desc, nullptr, staging.ReleaseAndGetAddressOf()), S_OK);
  const Texture plane = device_.Upload(Image(8, 8, kPlane));
  const ImageDesc none = Describe({}), bytes = Describe(plane), read = Describe(staging);
  constexpr RotateParam kFlat = {30, 0, 4, 4, 4, 4, PICTAVO_SAMPLE_BILINEAR};
  const struct {
    ID3D11Device* device;
    ID3D11DeviceContext* context;
    const ImageDesc *dst, *src;
    const RotateParam* param;
    u32 result;
  } cases[] = {{nullptr, context, &dst_, &src_, &kTurn, kNull},
               {device, nullptr, &dst_, &src_, &kTurn, kNull},
               {device, context, nullptr, &src_, &kTurn, kNull},
               {device, context, &none, &src_, &kTurn, kNull},
               {device, context, &dst_, nullptr, &kTurn, kNull},
               {device, context, &dst_, &none, &kTurn, kNull},
               {device, context, &dst_, &src_, nullptr, kNull},
               {device, deferred.Get(), &dst_, &src_, &kTurn, kInvalid},
               {device, other.context.Get(), &dst_, &src_, &kTurn, kInvalid},
               {device, context, &bytes, &src_, &kTurn, kInvalid},
               {device, context, &dst_, &bytes, &kTurn, kInvalid},
               {device, context, &dst_, &dst_, &kTurn, kInvalid},
               {device, context, &read, &src_, &kTurn, kInvalid},
               {device, context, &dst_, &src_, &kFlat, kInvalid}};
  for (const auto& c : cases) {
    EXPECT_EQ(interface_->RotateD3D(c.device, c.context, c.dst, c.src, c.param), c.result)
        << "case " << &c - cases;
  }
  Bind(device_, &object_, destination_, picture_);
  const auto bound = Bound(context);
  const ULONG before = References(source_.Get()) + References(destination_.Get());
  const struct {
    IUnknown* object;
    size_t method;
  } methods[] = {{device, 5}, {device, 39}, {context, 14}, {device, 7}};  // the last is not called
  for (const auto& m : methods) {
    const auto fresh = std::make_unique<Pictavo>();
    IPictavo6* const object = fresh.get();
    const bool called = m.method != 7;
    {
      const Failing failing(m.object, m.method, 0);
      EXPECT_EQ(object->RotateD3D(device, context, &dst_, &src_, &kTurn), called ? kRemoved : kOk);
    }
    EXPECT_EQ(Bound(context), bound);
    EXPECT_EQ(References(source_.Get()) + References(destination_.Get()), before);
  }
  EXPECT_EQ(interface_->RotateD3D(device, context, &dst_, &src_, &kTurn), kOk);
  const Failing noTexture(device, 5, 0);  // the one to read back is kept
  EXPECT_EQ(interface_->RotateD3D(device, context, &dst_, &src_, &kTurn), kOk);
  context->ClearState();
}

/// A module stays the one of its name while it is loaded, wherever it is looked for.
TEST(Turning, GivesTheMemoryManagersBuffersBack) {
  ResetFakes(L"../host_tests/all");
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const auto file =
      std::filesystem::path(program).parent_path() / L"../host_tests/all/VKTMemMgr.dll";
  const HMODULE fake = LoadLibraryW(file.lexically_normal().c_str());
  ASSERT_NE(fake, nullptr);
  const Device on;
  const Image picture(8, 8, kBgra);
  const Texture source = on.Upload(picture), destination = on.Upload(picture);
  const ImageDesc src = Describe(source), dst = Describe(destination);
  const std::string rimmed = "CreateBuffer 0 1 10 10 40 0", plain = "CreateBuffer 0 1 8 8 32 0",
                    back = "ReleaseBuffer 1";
  const struct {
    BufferFault fault;
    int buffersBefore;
    bool refuseManager;
    u32 result;
    Events events;
  } cases[] = {{BufferFault::kNone, 0, false, kOk, {rimmed, plain, back, back}},
               {BufferFault::kNoBuffer, 0, false, PICTAVO_E_OUTOFMEMORY, {rimmed}},
               {BufferFault::kNoBuffer, 1, false, PICTAVO_E_OUTOFMEMORY, {rimmed, plain, back}},
               {BufferFault::kNoPixels, 0, false, PICTAVO_E_OUTOFMEMORY, {rimmed, back}},
               {BufferFault::kNone, 0, true, PICTAVO_E_FAIL, {}},
               {BufferFault::kNone, 0, true, kInvalid, {}}};  // by its parameters, to begin with
  constexpr RotateParam kFlat = {30, 0, 4, 4, 4, 4, PICTAVO_SAMPLE_BILINEAR};
  for (const auto& c : cases) {
    fakeControl.refuseManager = c.refuseManager;
    const auto fresh = std::make_unique<Pictavo>();
    IPictavo6* const object = fresh.get();
    fakeControl.bufferFault = c.fault;
    fakeControl.buffersBefore = c.buffersBefore;
    EXPECT_EQ(object->RotateD3D(on.device.Get(), on.context.Get(), &dst, &src,
                                c.result == kInvalid ? &kFlat : &kTurn),
              c.result);
    Events events = TakeEvents();
    std::erase_if(events, [](const std::string& event) { return event.starts_with("memory"); });
    EXPECT_EQ(events, c.events);
    EXPECT_EQ(picture.Difference(on.Download(destination.Get())), "");
  }
  FreeLibrary(fake);
}

TEST_F(Failures, NothingIsKeptOfADeviceAfterTheNext) {
  const Device other;
  const Texture source = other.Upload(picture_), destination = other.Upload(picture_);
  const ImageDesc src = Describe(source), dst = Describe(destination);
  const ULONG before = References(other.device.Get());
  // One operation of each class of objects that keep something, those that keep nothing, and the
  // one to let go.
  const std::pair<i32, const void*> all[] = {{PICTAVO_D3D_COPY, nullptr},
                                             {PICTAVO_D3D_GROW, &kFilter},
                                             {PICTAVO_D3D_COPY_TEXTURE, nullptr},
                                             {PICTAVO_D3D_CLEAR, &kClear},
                                             {PICTAVO_D3D_RELEASE, nullptr}};
  for (const auto& [next, param] : all) {
    for (const Op& op : kOps) {
      EXPECT_EQ(interface_->D3DComputeOp(op.code, op.mode, other.device.Get(), other.context.Get(),
                                         &dst, &src, op.param),
                kOk);
    }
    EXPECT_GT(References(other.device.Get()), before);
    if (next == PICTAVO_D3D_RELEASE) {
      EXPECT_EQ(interface_->D3DComputeOp(next, 0, nullptr, nullptr, nullptr, nullptr, nullptr),
                kOk);
    } else {
      EXPECT_EQ(Run(next, param), kOk);
    }
    EXPECT_EQ(References(other.device.Get()), before);
  }
}

TEST_F(Failures, NothingIsMadeTwiceButViewsOfTheHostsPictures) {
  const ULONG before = References(source_.Get()) + References(destination_.Get());
  for (const Op& op : kOps) {
    EXPECT_EQ(Run(op), kOk);
    for (const DeviceMethod& method : kDeviceMethods) {
      const Failing failing(device, method.place, method.callsAnyway);
      EXPECT_EQ(Run(op), kOk) << "operation " << op.code << ", " << method.name;
    }
  }
  EXPECT_EQ(References(source_.Get()) + References(destination_.Get()), before);
  // No larger than what is seen and a margin: 10 pixels of 16384.
  Expect<D3DRegionFilterParam>(kOk, PICTAVO_D3D_FILTER_REGION, {{{-9, -9, 0, 0, 16384, 16384}, 1}});
  d3d11::Picture kept;
  const Failing failing(device, kDeviceMethods[1].place, 0);
  for (const u32 height : {10u, 11u}) {
    EXPECT_EQ(object_.GetScratch(device, d3d11::Scratch::kFirst, 10, height, kRgba, &kept),
              height == 10 ? kOk : kRemoved);
  }
}

TEST_F(Failures, NothingBecomesAnOutputWhileItIsAnInput) {
  ComPtr<ID3D11ShaderResourceView> input;
  ComPtr<ID3D11UnorderedAccessView> output;
  device->CreateShaderResourceView(destination_.Get(), nullptr, input.ReleaseAndGetAddressOf());
  device->CreateUnorderedAccessView(source_.Get(), nullptr, output.ReleaseAndGetAddressOf());
  for (const bool hostsToo : {false, true}) {
    if (hostsToo) context->CSSetShaderResources(0, 1, input.GetAddressOf());
    if (hostsToo) context->CSSetUnorderedAccessViews(0, 1, output.GetAddressOf(), nullptr);
    for (const Op& op : kOps) {
      const Hazards hazards(context);
      EXPECT_EQ(Run(op), kOk);
      EXPECT_EQ(hazards.seen, 0) << "operation " << op.code;
    }
  }
  context->ClearState();
}

TEST_F(Failures, SourcesThatAreBoundForOutput) {
  const Texture shown = device_.Upload(picture_, kInAndOut | D3D11_BIND_RENDER_TARGET);
  ComPtr<ID3D11RenderTargetView> target;
  ASSERT_EQ(device->CreateRenderTargetView(shown.Get(), nullptr, target.ReleaseAndGetAddressOf()),
            S_OK);
  context->OMSetRenderTargets(1, target.GetAddressOf(), nullptr);
  EXPECT_EQ(Run(PICTAVO_D3D_COPY, nullptr, dst_, Describe(shown)), kInvalid);
  EXPECT_EQ(Run(kOps[0], dst_, Describe(shown)), kOk);
  context->ClearState();
  EXPECT_EQ(Run(PICTAVO_D3D_COPY, nullptr, dst_, Describe(shown)), kOk);
}

}  // namespace
}  // namespace pictavo::test
