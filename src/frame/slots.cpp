// The interface table, in slot order: each method names the operation behind it. The methods about
// the object itself stand in pictavo_object.cpp.
#include "chromakey/chroma_key_fx.h"
#include "cpu/operations.h"
#include "frame/pictavo_object.h"
#include "opencl/operations.h"

namespace pictavo {
namespace {

/// The object as its host holds it: calls follow its method table, where a host may have put other
/// methods. Calls on `this` would be bound by the compiler.
IPictavo* ThroughTable(IPictavo* object) {
  IPictavo* const volatile opaque = object;
  return opaque;
}

}  // namespace

// IPictavo

u32 Pictavo::BlendOverWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                                      i32 srcPitch, i32 flip, f32 opacityStart,
                                      f32 opacityEnd) noexcept {
  return cpu::BlendOverWithOpacityRamp(cpuLevel, dst, src, width, height, dstPitch, srcPitch, flip,
                                       opacityStart, opacityEnd);
}
u32 Pictavo::BlendOverPacked(u8* dst, const u8* src, i32 width, i32 height) noexcept {
  return cpu::BlendOverPacked(cpuLevel, dst, src, width, height);
}
u32 Pictavo::BlendOverPitched(u8* dst, const u8* src, i32 width, i32 height, i32 pitch) noexcept {
  return cpu::BlendOverPitched(cpuLevel, dst, src, width, height, pitch);
}
u32 Pictavo::BlendPremultipliedWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height,
                                               i32 dstPitch, i32 srcPitch, i32 flip,
                                               f32 opacityStart, f32 opacityEnd) noexcept {
  return cpu::BlendPremultipliedWithOpacityRamp(cpuLevel, dst, src, width, height, dstPitch,
                                                srcPitch, flip, opacityStart, opacityEnd);
}
u32 Pictavo::BlendPremultipliedPacked(u8* dst, const u8* src, i32 width, i32 height) noexcept {
  return cpu::BlendPremultipliedPacked(cpuLevel, dst, src, width, height);
}
u32 Pictavo::BlendPremultipliedPitched(u8* dst, const u8* src, i32 width, i32 height,
                                       i32 pitch) noexcept {
  return cpu::BlendPremultipliedPitched(cpuLevel, dst, src, width, height, pitch);
}
u32 Pictavo::CompositePremultipliedWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height,
                                                   i32 dstPitch, i32 srcPitch, i32 flip,
                                                   f32 opacityStart, f32 opacityEnd) noexcept {
  return cpu::CompositePremultipliedWithOpacityRamp(cpuLevel, dst, src, width, height, dstPitch,
                                                    srcPitch, flip, opacityStart, opacityEnd);
}
u32 Pictavo::CompositePremultipliedPitched(u8* dst, const u8* src, i32 width, i32 height,
                                           i32 pitch) noexcept {
  return cpu::CompositePremultipliedPitched(cpuLevel, dst, src, width, height, pitch);
}
u32 Pictavo::CompositePremultipliedPacked(u8* dst, const u8* src, i32 width, i32 height) noexcept {
  return cpu::CompositePremultipliedPacked(cpuLevel, dst, src, width, height);
}
u32 Pictavo::BlendOverWithOpacity(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                                  i32 srcPitch, u8 opacity, u32 backdrop) noexcept {
  return cpu::BlendOverWithOpacity(cpuLevel, dst, src, width, height, dstPitch, srcPitch, opacity,
                                   backdrop);
}
u32 Pictavo::Reserved12() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved13() noexcept { return PICTAVO_E_NOTIMPL; }
void Pictavo::ConvertRGBToYUVPixel(i32 r, i32 g, i32 b, u32* y, u32* u, u32* v) noexcept {
  cpu::ConvertRGBToYUVPixel(cpuLevel, r, g, b, y, u, v);
}
void Pictavo::ConvertYUVToRGBPixel(i32 y, i32 u, i32 v, u32* r, u32* g, u32* b) noexcept {
  cpu::ConvertYUVToRGBPixel(cpuLevel, y, u, v, r, g, b);
}
u32 Pictavo::UnpremultiplyPitched(u8* buffer, i32 width, i32 height, i32 pitch) noexcept {
  return cpu::UnpremultiplyPitched(cpuLevel, buffer, width, height, pitch);
}
u32 Pictavo::UnpremultiplyPacked(u8* buffer, i32 width, i32 height) noexcept {
  return cpu::UnpremultiplyPacked(cpuLevel, buffer, width, height);
}
u32 Pictavo::PremultiplyPitched(u8* buffer, i32 width, i32 height, i32 pitch) noexcept {
  return cpu::PremultiplyPitched(cpuLevel, buffer, width, height, pitch);
}
u32 Pictavo::PremultiplyPacked(u8* buffer, i32 width, i32 height) noexcept {
  return cpu::PremultiplyPacked(cpuLevel, buffer, width, height);
}
u32 Pictavo::ConvertBGRAToYUVA(const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                               i32 dstPitch) noexcept {
  const i32 level = cpuLevel;
  if (level < PICTAVO_LEVEL_SSE2) {
    return ThroughTable(this)->ConvertBGRAToYUVAPortable(src, width, height, srcPitch, dst,
                                                         dstPitch);
  }
  return cpu::ConvertBGRAToYUVA(level, src, width, height, srcPitch, dst, dstPitch);
}
u32 Pictavo::ConvertBGRAToYUVAPortable(const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                                       i32 dstPitch) noexcept {
  return cpu::ConvertBGRAToYUVA(PICTAVO_LEVEL_PORTABLE, src, width, height, srcPitch, dst,
                                dstPitch);
}
u32 Pictavo::Reserved22() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved23() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved24() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved25() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved26() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved27() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved28() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::ResizeBox16AlphaWeighted(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                                      const u8* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                                      i32 forceOpaque) noexcept {
  return cpu::ResizeBox16AlphaWeighted(cpuLevel, dst, dstWidth, dstHeight, dstPitch, src, srcWidth,
                                       srcHeight, srcPitch, forceOpaque);
}
u32 Pictavo::ResizeBilinear16(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                              i32 srcWidth, i32 srcHeight, i32 srcPitch, i32 forceOpaque,
                              i32 fullSize) noexcept {
  return cpu::ResizeBilinear16(cpuLevel, dst, dstWidth, dstHeight, dstPitch, src, srcWidth,
                               srcHeight, srcPitch, forceOpaque, fullSize);
}
u32 Pictavo::ResizeBilinear7(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                             i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept {
  return cpu::ResizeBilinear7(cpuLevel, dst, dstWidth, dstHeight, dstPitch, src, srcWidth,
                              srcHeight, srcPitch);
}
u32 Pictavo::Reserved32() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved33() noexcept { return PICTAVO_E_NOTIMPL; }
void Pictavo::ConvertRGBToYUV4Pixels(const u8* pixels, i32* y, i32* u, i32* v) noexcept {
  cpu::ConvertRGBToYUV4Pixels(pixels, y, u, v);
}
void Pictavo::ConvertRGBToYUVPixels(const u8* pixels, i32* y, i32* u, i32* v) noexcept {
  if (cpuLevel >= PICTAVO_LEVEL_SSE2) {
    ThroughTable(this)->ConvertRGBToYUV4Pixels(pixels, y, u, v);
  } else {
    cpu::ConvertRGBToYUVPixelsPortable(pixels, y, u, v);
  }
}
u32 Pictavo::BlendOverWithOpacityRampAndAlpha(u8* dst, const u8* src, i32 width, i32 height,
                                              i32 dstPitch, i32 srcPitch, u8 opacity, u32 backdrop,
                                              i32 flip, f32 opacityStart, f32 opacityEnd) noexcept {
  return cpu::BlendOverWithOpacityRampAndAlpha(cpuLevel, dst, src, width, height, dstPitch,
                                               srcPitch, opacity, backdrop, flip, opacityStart,
                                               opacityEnd);
}
u32 Pictavo::BlendOverWithOpacityRampKeepAlpha(u8* dst, const u8* src, i32 width, i32 height,
                                               i32 dstPitch, i32 srcPitch, u8 opacity, u32 backdrop,
                                               i32 flip, f32 opacityStart,
                                               f32 opacityEnd) noexcept {
  return cpu::BlendOverWithOpacityRampKeepAlpha(cpuLevel, dst, src, width, height, dstPitch,
                                                srcPitch, opacity, backdrop, flip, opacityStart,
                                                opacityEnd);
}
u32 Pictavo::Reserved38() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved39() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved40() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved41() noexcept { return PICTAVO_E_NOTIMPL; }

// IPictavo2

u32 Pictavo::ComputeHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
                              i32 binCount, u32 selector) noexcept {
  return cpu::ComputeHistogram(pixels, width, height, pitch, bins, binCount, selector);
}
u32 Pictavo::ComputeLumaHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
                                  i32 binCount, u32 selector) noexcept {
  return cpu::ComputeLumaHistogram(pixels, width, height, pitch, bins, binCount, selector);
}
u32 Pictavo::Reserved45() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::ConvertBGRAToGray(const u8* src, i32 width, i32 height, i32 srcPitch, u32* dst,
                               i32 dstPitch) noexcept {
  return cpu::ConvertBGRAToGray(cpuLevel, src, width, height, srcPitch, dst, dstPitch);
}
u32 Pictavo::Reserved47() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::DrawRectOutline(u32* buffer, i32, i32, u32 pitch, const i32 rect[4],
                             u32 colour) noexcept {
  return cpu::DrawRectOutline(buffer, pitch, rect, colour);
}
u32 Pictavo::Reserved49() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved50(const u8*, i32, i32, i32, u8*, i32) noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved51() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved52() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved53() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved54(const u8*, i32, i32, u8*, i32, u32) noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::ResizeNearest32(u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u32* src,
                             i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept {
  return cpu::ResizeNearest32(dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight,
                              srcPitch);
}
u32 Pictavo::Reserved56() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::ResizeBox16(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                         i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept {
  return cpu::ResizeBox16(dst, dstWidth, dstHeight, dstPitch, src, srcWidth, srcHeight, srcPitch);
}
u32 Pictavo::ResizeBilinear16KeepAlpha(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                                       const u8* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                                       i32 fullSize) noexcept {
  return cpu::ResizeBilinear16KeepAlpha(cpuLevel, dst, dstWidth, dstHeight, dstPitch, src, srcWidth,
                                        srcHeight, srcPitch, fullSize);
}
u32 Pictavo::Reserved59(void*, void*, u32, u32) noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved60() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved61() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved62() noexcept { return PICTAVO_E_NOTIMPL; }

// IPictavo3

u32 Pictavo::MotionBlur(const ImageDesc* src, ImageDesc* dst,
                        const MotionBlurParam* param) noexcept {
  return cpu::MotionBlur(cpuLevel, src, dst, param);
}
u32 Pictavo::GetMotionBlurDstSize(const ImageDesc* src, ImageDesc* dst,
                                  const MotionBlurParam* param, i32* offsetX,
                                  i32* offsetY) noexcept {
  return cpu::GetMotionBlurDstSize(src, dst, param, offsetX, offsetY);
}
u32 Pictavo::Reserved65() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved66() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved67() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved68() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved69() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved70() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::ExtendBoundary(const ImageDesc* image, u32 border) noexcept {
  return cpu::ExtendBoundary(image, border);
}
u32 Pictavo::Reserved72() noexcept { return PICTAVO_E_NOTIMPL; }

// IPictavo4

u32 Pictavo::Reserved75() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved76() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::FillSolidColor(u8* buffer, i32 width, i32 height, i32 pitch, u8 blue, u8 green, u8 red,
                            u8 alpha) noexcept {
  const u32 colour = u32{alpha} << 24 | u32{red} << 16 | u32{green} << 8 | blue;
  return cpu::FillSolidColor(cpuLevel, buffer, width, height, pitch, colour);
}
u32 Pictavo::Reserved78() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved79() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved80() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved81() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::ComputeMean(const u8* buffer, i32 width, i32 height, f32* mean) noexcept {
  return cpu::ComputeMean(buffer, width, height, mean);
}
u32 Pictavo::Reserved83(const f32*, u32, u32*) noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved84(const u8*, i32, i32, i32, i32, u32, f32*) noexcept {
  return PICTAVO_E_NOTIMPL;
}
u32 Pictavo::Reserved85(const u8*, i32, i32, u32, u32, u32, u32*, void*) noexcept {
  return PICTAVO_E_NOTIMPL;
}
u32 Pictavo::ApplyChromaKey(const ImageDesc* src, ImageDesc* dst, const ChromaKey* keys,
                            i32 keyCount, i32 format) noexcept {
  return chromakey::ApplyChromaKey(cpuLevel, src, dst, keys, keyCount, format);
}
u32 Pictavo::GaussianBlurBox3(u8* image, i32 width, i32 height, i32 pitch, f32 radius) noexcept {
  return cpu::GaussianBlurBox3(cpuLevel, image, width, height, pitch, radius);
}

// IPictavo5

u32 Pictavo::ConvertPictureFromRGB(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                                   i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept {
  if (!EnsureConvertUtility()) return PICTAVO_E_FAIL;
  return convertUtility->ConvertPictureFromRGB(cpuLevel, src, width, height, srcPitch, dst,
                                               dstPitch, model, matrix, range);
}
u32 Pictavo::ConvertPictureToRGB(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                                 i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept {
  if (!EnsureConvertUtility()) return PICTAVO_E_FAIL;
  return convertUtility->ConvertPictureToRGB(cpuLevel, src, width, height, srcPitch, dst, dstPitch,
                                             model, matrix, range);
}
u32 Pictavo::ConvertColorFromRGB(i32 r, i32 g, i32 b, u32* first, u32* second, u32* third,
                                 u32 model, u32 matrix, u32 range) noexcept {
  if (!EnsureConvertUtility()) return PICTAVO_E_FAIL;
  return convertUtility->ConvertColorFromRGB(r, g, b, first, second, third, model, matrix, range);
}
u32 Pictavo::ConvertColorToRGB(i32 first, i32 second, i32 third, u32* r, u32* g, u32* b, u32 model,
                               u32 matrix, u32 range) noexcept {
  if (!EnsureConvertUtility()) return PICTAVO_E_FAIL;
  return convertUtility->ConvertColorToRGB(first, second, third, r, g, b, model, matrix, range);
}
u32 Pictavo::ConvertPixelFromRGB(const u8* pixel, u32* first, u32* second, u32* third, u32 model,
                                 u32 matrix, u32 range) noexcept {
  if (!EnsureConvertUtility()) return PICTAVO_E_FAIL;
  return convertUtility->ConvertPixelFromRGB(pixel, first, second, third, model, matrix, range);
}
u32 Pictavo::Reserved93() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved94() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::ConvertHSLToRGB(i32 hue, u8 saturation, u8 lightness, u8* r, u8* g, u8* b) noexcept {
  return cpu::ConvertHSLToRGB(hue, saturation, lightness, r, g, b);
}
u32 Pictavo::Reserved96() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved97() noexcept { return PICTAVO_E_NOTIMPL; }

// IPictavo6

u32 Pictavo::ExtendBoundaryOpenCL(IPictavoSurface* dst, u32 border) noexcept {
  return opencl::ExtendBoundary(*this, dst, border);
}
u32 Pictavo::Reserved99() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::TransformOpenCL(IPictavoSurface* dst, IPictavoSurface* src,
                             const f32* matrix) noexcept {
  return opencl::Transform(*this, dst, src, matrix);
}
u32 Pictavo::Reserved101() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::BilinearInterpolationOpenCL(IPictavoSurface* dst, IPictavoSurface* src) noexcept {
  return opencl::BilinearInterpolation(*this, dst, src);
}
u32 Pictavo::BoxBlurD3D(ID3D11Device* device, ID3D11DeviceContext* context, const ImageDesc* dst,
                        const ImageDesc* src, u32 radius) noexcept {
  const auto pixels = static_cast<double>(radius);
  const D3DBlurParam param = {pixels, pixels, 1};
  return BoxBlur({device, context, dst, src}, &param);
}
u32 Pictavo::FastBlurOpenCL(IPictavoSurface* dst, IPictavoSurface* src, u32 radiusX,
                            u32 radiusY) noexcept {
  CCommonUtility* client = EnsureMemoryClient() ? memoryClient : nullptr;
  return opencl::FastBlur(*this, client, dst, src, radiusX, radiusY);
}
u32 Pictavo::MemsetColorOpenCL(IPictavoSurface* dst, u32 colour) noexcept {
  return opencl::MemsetColor(*this, dst, colour);
}
u32 Pictavo::Reserved106(u8*, const u8*, i64, u32, u32, u32, u32) noexcept {
  return PICTAVO_E_NOTIMPL;
}
u32 Pictavo::ExtendBoundaryTransparent(const ImageDesc* image, u32 border) noexcept {
  return cpu::ExtendBoundaryTransparent(image, border);
}
u32 Pictavo::D3DComputeOp(i32 opCode, i32 subMode, ID3D11Device* device,
                          ID3D11DeviceContext* context, const ImageDesc* dst, const ImageDesc* src,
                          const void* param) noexcept {
  if (opCode < 0 || opCode > PICTAVO_D3D_CHROMA_KEY) return PICTAVO_E_FAIL;
  if (subMode != 0 && (opCode != 0 || subMode != 2)) return PICTAVO_E_INVALIDARG;
  const D3DCall call = {device, context, dst, src};
  switch (opCode) {
    case PICTAVO_D3D_COPY:
      return PlainCopy(call);
    case PICTAVO_D3D_BOX_BLUR:
      return BoxBlur(call, static_cast<const D3DBlurParam*>(param));
    case PICTAVO_D3D_GROW:
      if (!EnsureDilation()) return PICTAVO_E_OUTOFMEMORY;
      return dilation->Grow(call, static_cast<const D3DGrowParam*>(param));
    case PICTAVO_D3D_COPY_REGION:
      return RegionCopy(call, static_cast<const D3DRegion*>(param));
    case PICTAVO_D3D_SCALE:
      return ScaledCopy(call, static_cast<const D3DScaleParam*>(param));
    case PICTAVO_D3D_COPY_MATERIAL:
      return MaterialCopy(call, static_cast<const D3DRegion*>(param));
    case PICTAVO_D3D_FILTER_REGION:
      return RegionFilter(call, static_cast<const D3DRegionFilterParam*>(param));
    case PICTAVO_D3D_COPY_AFFINE:
      return AffineCopy(call, static_cast<const D3DAffineParam*>(param));
    case PICTAVO_D3D_FILL:
      return Fill(call, static_cast<const D3DFillParam*>(param));
    case PICTAVO_D3D_GROW_REGION:
      if (!EnsureDilation()) return PICTAVO_E_OUTOFMEMORY;
      return dilation->GrowRegion(call, static_cast<const D3DGrowRegionParam*>(param));
    case PICTAVO_D3D_TINT:
      return ColourFromSource(call, static_cast<const D3DTintParam*>(param));
    case PICTAVO_D3D_CHROMA_KEY:
      return ApplyKeys(call, static_cast<const D3DKeyParam*>(param));
    default:
      return PICTAVO_E_NOTIMPL;
  }
}
u32 Pictavo::Reserved109() noexcept { return PICTAVO_E_NOTIMPL; }
u32 Pictavo::Reserved110() noexcept { return PICTAVO_E_NOTIMPL; }
}  // namespace pictavo
