// The compute operations: check, choose the shader and its parameters, run. Each rule stands in its
// shader.
#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <memory>
#include <new>

#include "d3d11/code.h"
#include "d3d11/computation.h"
#include "frame/result.h"

namespace pictavo {

using namespace d3d11;

namespace {

/// Copies a region that lies in both textures, of one format.
void CopyBetween(ID3D11DeviceContext* context, const Pictures& pictures, const Region& region) {
  const auto number = [](i64 value) { return static_cast<UINT>(value); };
  const auto& [x, y] = region;
  const D3D11_BOX box = {
      number(x.src), number(y.src), 0, number(x.src + x.length), number(y.src + y.length), 1};
  context->CopySubresourceRegion(pictures.dst.texture.Get(), 0, number(x.dst), number(y.dst), 0,
                                 pictures.src.texture.Get(), 0, &box);
}

bool SameSize(const Pictures& pictures) {
  const auto& [dst, src] = pictures;
  return dst.width == src.width && dst.height == src.height;
}

}  // namespace

u32 CPictavo_D3D::CopyTexture(const D3DCall& call, const D3DRegion* part) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenTextures(call, true, {}, &pictures));
  const auto& [dst, src] = pictures;
  if (dst.format != src.format || DescOf(dst).Usage == D3D11_USAGE_IMMUTABLE ||
      (part == nullptr && !SameSize(pictures))) {
    return PICTAVO_E_INVALIDARG;
  }
  const D3DRegion whole = {0, 0, 0, 0, src.width, src.height};
  const Region region = Region(part != nullptr ? *part : whole).InDestination(dst).InSource(src);
  if (region.Empty()) return PICTAVO_S_FALSE;
  UseDevice(call.device);
  CopyBetween(call.context, pictures, region);
  return PICTAVO_S_OK;
}

u32 CPictavo_D3D::PlainCopy(const D3DCall& call) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, true, &pictures));
  if (!BothColourOrBothPlanes(pictures)) return PICTAVO_E_INVALIDARG;
  return Computation(this, call)
      .Run(PassOver(Shader::kPlainCopy, pictures, CommonWidth(pictures), CommonHeight(pictures)));
}

u32 CPictavo_D3D::RegionCopy(const D3DCall& call, const D3DRegion* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  const Region region = Region(*param).InDestination(pictures.dst).InSource(pictures.src);
  if (region.Empty()) return PICTAVO_S_FALSE;
  const Shader shader = BothColourOrBothPlanes(pictures) ? Shader::kRegionCopy
                        : pictures.dst.format == kPlane  ? Shader::kRegionCopyToPlane
                                                         : Shader::kRegionCopyFromPlane;
  return Computation(this, call)
      .Run(PassOver(shader, pictures, region.x.length, region.y.length), BlockOf(region, pictures));
}

namespace {

constexpr DXGI_FORMAT kScratchFormat = DXGI_FORMAT_R8G8B8A8_UNORM;

/// A region's start so near that the shader can count from it. Beyond, all is edge anyway.
void KeepNear(Stretch* stretch) {
  stretch->src = std::clamp<i64>(stretch->src, -2 * kLargestTexture, 2 * kLargestTexture);
}

u32 CopyMaterial(Computation* computation, Region region, const Pictures& pictures) {
  KeepNear(&region.x);
  KeepNear(&region.y);
  return computation->Run(
      PassOver(Shader::kMaterialCopy, pictures, region.x.length, region.y.length),
      BlockOf(region, pictures));
}

}  // namespace

u32 CPictavo_D3D::MaterialCopy(const D3DCall& call, const D3DRegion* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  const Region region = Region(*param).InDestination(pictures.dst);
  if (region.Empty()) return PICTAVO_S_FALSE;
  Computation computation(this, call);
  return CopyMaterial(&computation, region, pictures);
}

u32 CPictavo_D3D::RegionFilter(const D3DCall& call, const D3DRegionFilterParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  const D3DRegion& asked = param->region;
  if (param->radius < 0 || param->radius > 128 || asked.width > kLargestTexture ||
      asked.height > kLargestTexture) {
    return PICTAVO_E_INVALIDARG;
  }
  const Region whole(asked);
  Region part = Region(asked).InDestination(pictures.dst);
  if (part.Empty()) return PICTAVO_S_FALSE;
  // What is seen, and around it what that is made of.
  part.x = part.x.WithMargin(param->radius, whole.x);
  part.y = part.y.WithMargin(param->radius, whole.y);
  const auto width = static_cast<u32>(part.x.length), height = static_cast<u32>(part.y.length);

  Computation computation(this, call);
  Picture copied, rows;
  PICTAVO_RETURN_IF_FAILED(
      GetScratch(call.device, Scratch::kFirst, width, height, kScratchFormat, &copied));
  PICTAVO_RETURN_IF_FAILED(
      GetScratch(call.device, Scratch::kSecond, width, height, kScratchFormat, &rows));

  const auto filter = [&](Shader shader, const Pictures& pass, i64 dstX, i64 dstY) {
    const Region region({dstX, 0, width}, {dstY, 0, height});
    return computation.Run(
        PassOver(shader, pass, width, height),
        RegionFilterBlock{.region = BlockOf(region, pass), .nRadius = param->radius});
  };
  PICTAVO_RETURN_IF_FAILED(CopyMaterial(&computation,
                                        Region({0, part.x.src, width}, {0, part.y.src, height}),
                                        {copied, pictures.src}));
  PICTAVO_RETURN_IF_FAILED(filter(Shader::kRegionFilterRows, {rows, copied}, 0, 0));
  return filter(Shader::kRegionFilterColumns, {pictures.dst, rows}, part.x.dst, part.y.dst);
}

u32 CPictavo_D3D::ScaledCopy(const D3DCall& call, const D3DScaleParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  const i32 left = std::max(param->left, 0), right = std::min(param->right, pictures.dst.width);
  const i32 top = std::max(param->top, 0), bottom = std::min(param->bottom, pictures.dst.height);
  if (left >= right || top >= bottom) return PICTAVO_S_FALSE;
  const i64 width = i64{param->right} - param->left, height = i64{param->bottom} - param->top;
  const u32 stepX = static_cast<u32>(i64{pictures.src.width} * 65536 / width);
  const u32 stepY = static_cast<u32>(i64{pictures.src.height} * 65536 / height);
  return Computation(this, call)
      .Run(PassOver(Shader::kScaledCopy, pictures, right - left, bottom - top),
           ScaledCopyBlock{.uSrcColorFormat = pictures.src.format,
                           .uDstColorFormat = pictures.dst.format,
                           .ufxSrcXStep = stepX,
                           .ufxSrcYStep = stepY,
                           .uInnerXStep = stepX / 4,
                           .uInnerYStep = stepY / 4,
                           .nDstRgnSx = param->left,
                           .nDstRgnSy = param->top,
                           .nDstRgnEx = right,
                           .nDstRgnEy = bottom});
}

namespace {

/// A position that is linear in columns and rows.
struct LinearPosition {
  i64 start, stepX, stepY;

  i64 At(i64 x, i64 y) const { return start + stepX * x + stepY * y; }

  /// Whether it fits 32 bits at every place of a rectangle from 0, which is so at the corners.
  bool Fits(i64 width, i64 height) const {
    const auto [least, most] =
        std::minmax({At(0, 0), At(width - 1, 0), At(0, height - 1), At(width - 1, height - 1)});
    return least >= INT32_MIN && most <= INT32_MAX;
  }
};

}  // namespace

u32 CPictavo_D3D::AffineCopy(const D3DCall& call, const D3DAffineParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  const D3DAffineParam& p = *param;
  const i32 left = std::max(p.dstX, 0), top = std::max(p.dstY, 0);
  const i32 columns = pictures.dst.width - left, rows = pictures.dst.height - top;
  const Region part =
      Region({0, 0, p.srcX, p.srcY, p.srcWidth, p.srcHeight}).InSource(pictures.src);
  if (columns <= 0 || rows <= 0 || part.Empty()) return PICTAVO_S_FALSE;
  constexpr i32 kFarthest = -(1 << 30);  // where positions still fit 64 bits
  if (p.dstX < kFarthest || p.dstY < kFarthest) return PICTAVO_E_INVALIDARG;
  LinearPosition x = {p.xStart, p.xStepX, p.xStepY}, y = {p.yStart, p.yStepX, p.yStepY};
  for (LinearPosition* position : {&x, &y}) {
    position->start = position->At(i64{left} - p.dstX, i64{top} - p.dstY);
    if (!position->Fits(columns, rows)) return PICTAVO_E_INVALIDARG;
  }
  AffineCopyBlock block = {.region = BlockOf(part, pictures),
                           .nFxSrcXStart = static_cast<i32>(x.start),
                           .nFxSrcYStart = static_cast<i32>(y.start),
                           .nFxSrcXStepX = p.xStepX,
                           .nFxSrcXStepY = p.xStepY,
                           .nFxSrcYStepX = p.yStepX,
                           .nFxSrcYStepY = p.yStepY};
  block.region.nDstOriX = left;
  block.region.nDstOriY = top;
  return Computation(this, call).Run(PassOver(Shader::kAffineCopy, pictures, columns, rows), block);
}

namespace {

bool AreChannels(std::initializer_list<f32> values) {
  return std::ranges::all_of(values, [](f32 value) { return value >= 0 && value <= 1; });
}

/// Fills from a place to the edges, as the shaders do.
u32 FillFrom(Computation* computation, const Picture& dst, i32 left, i32 top,
             const D3DFillParam& p) {
  const i64 width = dst.width - left, height = dst.height - top;
  if (dst.format == kPlane) {
    return computation->Run(PassOver(Shader::kFillPlane, {dst, {}}, width, height),
                            FillPlaneBlock{.nDstSx = left, .nDstSy = top, .fColorA = p.alpha});
  }
  return computation->Run(PassOver(Shader::kFillColour, {dst, {}}, width, height),
                          FillColourBlock{.nDstSx = left,
                                          .nDstSy = top,
                                          .fColorR = p.red,
                                          .fColorG = p.green,
                                          .fColorB = p.blue,
                                          .fColorA = p.alpha});
}

}  // namespace

u32 CPictavo_D3D::Fill(const D3DCall& call, const D3DFillParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures, false));
  if (!AreChannels({param->red, param->green, param->blue, param->alpha})) {
    return PICTAVO_E_INVALIDARG;
  }
  const Picture& dst = pictures.dst;
  const i32 left = std::max(param->left, 0), right = std::min(param->right, dst.width);
  const i32 top = std::max(param->top, 0), bottom = std::min(param->bottom, dst.height);
  if (left >= right || top >= bottom) return PICTAVO_S_FALSE;
  if (right == dst.width && bottom == dst.height) {
    Computation computation(this, call);
    return FillFrom(&computation, dst, left, top, *param);
  }

  // The shaders know no right and lower edges but a texture's: one of the rectangle's size.
  Picture patch;
  {
    Computation computation(this, call);
    PICTAVO_RETURN_IF_FAILED(
        GetScratch(call.device, Scratch::kPatch, static_cast<u32>(right - left),
                   static_cast<u32>(bottom - top), DescOf(dst).Format, &patch));
    patch.format = dst.format;
    PICTAVO_RETURN_IF_FAILED(FillFrom(&computation, patch, 0, 0, *param));
  }
  CopyBetween(call.context, {dst, patch}, Region({left, 0, patch.width}, {top, 0, patch.height}));
  return PICTAVO_S_OK;
}

u32 CPictavo_D3D::Clear(const D3DCall& call, const D3DClearParam* param) noexcept {
  if (param == nullptr || param->colour == nullptr) return PICTAVO_E_POINTER;
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenTextures(
      call, false, {.dst = D3D11_BIND_UNORDERED_ACCESS | D3D11_BIND_RENDER_TARGET}, &pictures));
  const f32* bgra = param->colour;
  if (param->count != 4 || !AreChannels({bgra[0], bgra[1], bgra[2], bgra[3]})) {
    return PICTAVO_E_INVALIDARG;
  }
  UseDevice(call.device);
  // Devices may round what lies between two bytes either way.
  const auto byte = [=](size_t channel) {
    return static_cast<f32>(std::floor(double{bgra[channel]} * 255 + 0.5) / 255);
  };
  Picture& dst = pictures.dst;
  const f32 alpha = byte(3);
  const std::array<f32, 4> rgba = dst.format == kPlane
                                      ? std::array{alpha, alpha, alpha, alpha}
                                      : std::array{byte(2), byte(1), byte(0), alpha};
  if ((DescOf(dst).BindFlags & D3D11_BIND_UNORDERED_ACCESS) != 0) {
    PICTAVO_RETURN_IF_FAILED(CreateOutput(call.device, &dst));
    call.context->ClearUnorderedAccessViewFloat(dst.out.Get(), rgba.data());
    return PICTAVO_S_OK;
  }
  ComPtr<ID3D11RenderTargetView> target;
  PICTAVO_RETURN_IF_FAILED(Code(call.device->CreateRenderTargetView(
      dst.texture.Get(), nullptr, target.ReleaseAndGetAddressOf())));
  call.context->ClearRenderTargetView(target.Get(), rgba.data());
  return PICTAVO_S_OK;
}

u32 CPictavo_D3D::ColourFromSource(const D3DCall& call, const D3DTintParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  if (AnyPlane(pictures) || !AreChannels({param->red, param->green, param->blue})) {
    return PICTAVO_E_INVALIDARG;
  }
  const Picture& src = pictures.src;
  const Region part =
      Region({param->dstX, param->dstY, 0, 0, src.width, src.height}).InDestination(pictures.dst);
  if (part.Empty()) return PICTAVO_S_FALSE;
  return Computation(this, call)
      .Run(PassOver(Shader::kColourFromSource, pictures, part.x.src + part.x.length,
                    part.y.src + part.y.length),
           ColourFromSourceBlock{.nDstSx = param->dstX,
                                 .nDstSy = param->dstY,
                                 .fColorR = param->red,
                                 .fColorG = param->green,
                                 .fColorB = param->blue});
}

namespace {

/// The keys as the shader takes them, into its buffer.
bool WriteKeys(ID3D11DeviceContext* context, const D3DKeyParam& param, ID3D11Buffer* buffer) {
  const auto count = static_cast<size_t>(param.keyCount);
  const std::unique_ptr<ColorKey[]> keys(new (std::nothrow) ColorKey[count]);
  if (keys == nullptr) return false;
  for (size_t i = 0; i < count; ++i) {
    const ChromaKey& key = param.keys[i];
    keys[i] = {.r = static_cast<f32>(key.keyR),
               .g = static_cast<f32>(key.keyG),
               .b = static_cast<f32>(key.keyB),
               .angle = key.angle,
               .denoise = key.denoise};
  }
  const D3D11_BOX bytes = {0, 0, 0, static_cast<UINT>(count * sizeof(ColorKey)), 1, 1};
  context->UpdateSubresource(buffer, 0, &bytes, keys.get(), 0, 0);
  return true;
}

}  // namespace

u32 CPictavo_D3D::ApplyKeys(const D3DCall& call, const D3DKeyParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  if (param->keys == nullptr) return PICTAVO_E_POINTER;
  if (param->keyCount < 1 || param->keyCount > kMostKeys) return PICTAVO_E_INVALIDARG;
  const Region region = Region(param->region).InDestination(pictures.dst).InSource(pictures.src);
  if (region.Empty()) return PICTAVO_S_FALSE;
  Computation computation(this, call);
  ComPtr<ID3D11Buffer> keys;
  ComPtr<ID3D11ShaderResourceView> view;
  PICTAVO_RETURN_IF_FAILED(GetKeys(call.device, &keys, &view));
  if (!WriteKeys(call.context, *param, keys.Get())) return PICTAVO_E_OUTOFMEMORY;
  Pass pass = PassOver(Shader::kChromaKey, pictures, region.x.length, region.y.length);
  pass.inputs[1] = view.Get();
  return computation.Run(pass, ChromaKeyBlock{.region = BlockOf(region, pictures),
                                              .uKeys = static_cast<u32>(param->keyCount)});
}

namespace {

/// A radius in pixels; false when it makes none. Beyond the largest texture, all are alike.
bool PixelsOf(double radius, f32 scale, u32* pixels) {
  const double scaled = radius * scale + 0.5;
  if (!(scaled >= 0)) return false;  // nor a number
  *pixels = static_cast<u32>(std::min<double>(scaled, kLargestTexture));
  return true;
}

/// How many threads share a line of the blur.
u32 StretchesOf(u32 length, u32 radius) {
  const u32 stretch = std::max(radius, 128u);  // as in the shaders
  return (length + stretch - 1) / stretch;
}

}  // namespace

u32 CPictavo_D3D::BoxBlur(const D3DCall& call, const D3DBlurParam* param) noexcept {
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenPictures(call, param, &pictures));
  const auto& [dst, src] = pictures;
  u32 radiusX = 0, radiusY = 0;
  if (!PixelsOf(param->radiusX, param->scale, &radiusX) ||
      !PixelsOf(param->radiusY, param->scale, &radiusY) || !BothColourOrBothPlanes(pictures) ||
      !SameSize(pictures)) {
    return PICTAVO_E_INVALIDARG;
  }
  const u32 width = static_cast<u32>(dst.width), height = static_cast<u32>(dst.height);
  radiusX = std::min(radiusX, width);
  radiusY = std::min(radiusY, height);

  // Sums are bytes again when divided, and remainders less than the widest window.
  const bool plane = dst.format == kPlane, narrow = 2 * radiusX + 1 <= 256;
  const DXGI_FORMAT bytes = plane ? DXGI_FORMAT_R8_UINT : DXGI_FORMAT_R8G8B8A8_UINT;
  const DXGI_FORMAT words = plane ? DXGI_FORMAT_R16_UINT : DXGI_FORMAT_R16G16B16A16_UINT;
  Computation computation(this, call);
  Picture sums, remainders, divisors;
  const struct {
    Scratch which;
    u32 height;
    DXGI_FORMAT format;
    Picture* picture;
  } wanted[] = {{Scratch::kSums, height, bytes, &sums},
                {Scratch::kRemainders, height, narrow ? bytes : words, &remainders},
                {Scratch::kDivisors, 1, DXGI_FORMAT_R16_UINT, &divisors}};
  for (const auto& w : wanted) {
    PICTAVO_RETURN_IF_FAILED(
        GetScratch(call.device, w.which, width, w.height, w.format, w.picture));
  }

  const Pass rows = {.shader = Shader::kBoxBlurRows,
                     .inputs = {src.in.Get()},
                     .outputs = {sums.out.Get(), remainders.out.Get(), divisors.out.Get()},
                     .groupsX = GroupsOf32(height),
                     .groupsY = StretchesOf(width, radiusX)};
  const Pass columns = {.shader = Shader::kBoxBlurColumns,
                        .inputs = {sums.in.Get(), remainders.in.Get(), divisors.in.Get()},
                        .outputs = {dst.out.Get()},
                        .groupsX = GroupsOf32(width),
                        .groupsY = StretchesOf(height, radiusY)};
  const auto block = [&](u32 radius) {
    return BoxBlurBlock{.uBlurRadius = radius, .uWidth = width, .uHeight = height};
  };
  PICTAVO_RETURN_IF_FAILED(computation.Run(rows, block(radiusX)));
  return computation.Run(columns, block(radiusY));
}

}  // namespace pictavo
