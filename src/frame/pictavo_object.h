#ifndef PICTAVO_FRAME_PICTAVO_OBJECT_H_
#define PICTAVO_FRAME_PICTAVO_OBJECT_H_

#include <windows.h>

#include <atomic>

#include "convert_utility/convert_utility.h"
#include "cpu_detect/cpu_detect.h"
#include "d3d11/d3d11_base.h"
#include "frame/common_utility.h"
#include "frame/kernel_table.h"
#include "opencl/ocl_base.h"
#include "pictavo/pictavo.h"
#include "platform/critical_section.h"

namespace pictavo {

/// The library object. Its lazy parts move once from absent to present under their lock and stay
/// until destruction; a failed attempt leaves them absent for the next call to try again.
class Pictavo final : public IPictavo6, public CPictavo_D3D, public COCLBase {
 public:
  Pictavo() noexcept;
  ~Pictavo() override;

  // IPictavo
  void DetectInstructionSet() noexcept override;
  i32 GetCPULevel() noexcept override;
  u32 BlendOverWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                               i32 srcPitch, i32 flip, f32 opacityStart,
                               f32 opacityEnd) noexcept override;
  u32 BlendOverPacked(u8* dst, const u8* src, i32 width, i32 height) noexcept override;
  u32 BlendOverPitched(u8* dst, const u8* src, i32 width, i32 height, i32 pitch) noexcept override;
  u32 BlendPremultipliedWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                                        i32 srcPitch, i32 flip, f32 opacityStart,
                                        f32 opacityEnd) noexcept override;
  u32 BlendPremultipliedPacked(u8* dst, const u8* src, i32 width, i32 height) noexcept override;
  u32 BlendPremultipliedPitched(u8* dst, const u8* src, i32 width, i32 height,
                                i32 pitch) noexcept override;
  u32 CompositePremultipliedWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height,
                                            i32 dstPitch, i32 srcPitch, i32 flip, f32 opacityStart,
                                            f32 opacityEnd) noexcept override;
  u32 CompositePremultipliedPitched(u8* dst, const u8* src, i32 width, i32 height,
                                    i32 pitch) noexcept override;
  u32 CompositePremultipliedPacked(u8* dst, const u8* src, i32 width, i32 height) noexcept override;
  u32 BlendOverWithOpacity(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                           i32 srcPitch, u8 opacity, u32 backdrop) noexcept override;
  u32 Reserved12() noexcept override;
  u32 Reserved13() noexcept override;
  void ConvertRGBToYUVPixel(i32 r, i32 g, i32 b, u32* y, u32* u, u32* v) noexcept override;
  void ConvertYUVToRGBPixel(i32 y, i32 u, i32 v, u32* r, u32* g, u32* b) noexcept override;
  u32 UnpremultiplyPitched(u8* buffer, i32 width, i32 height, i32 pitch) noexcept override;
  u32 UnpremultiplyPacked(u8* buffer, i32 width, i32 height) noexcept override;
  u32 PremultiplyPitched(u8* buffer, i32 width, i32 height, i32 pitch) noexcept override;
  u32 PremultiplyPacked(u8* buffer, i32 width, i32 height) noexcept override;
  u32 ConvertBGRAToYUVA(const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                        i32 dstPitch) noexcept override;
  u32 ConvertBGRAToYUVAPortable(const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                                i32 dstPitch) noexcept override;
  u32 Reserved22() noexcept override;
  u32 Reserved23() noexcept override;
  u32 Reserved24() noexcept override;
  u32 Reserved25() noexcept override;
  u32 Reserved26() noexcept override;
  u32 Reserved27() noexcept override;
  u32 Reserved28() noexcept override;
  u32 ResizeBox16AlphaWeighted(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                               i32 srcWidth, i32 srcHeight, i32 srcPitch,
                               i32 forceOpaque) noexcept override;
  u32 ResizeBilinear16(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                       i32 srcWidth, i32 srcHeight, i32 srcPitch, i32 forceOpaque,
                       i32 fullSize) noexcept override;
  u32 ResizeBilinear7(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                      i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept override;
  u32 Reserved32() noexcept override;
  u32 Reserved33() noexcept override;
  void ConvertRGBToYUV4Pixels(const u8* pixels, i32* y, i32* u, i32* v) noexcept override;
  void ConvertRGBToYUVPixels(const u8* pixels, i32* y, i32* u, i32* v) noexcept override;
  u32 BlendOverWithOpacityRampAndAlpha(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                                       i32 srcPitch, u8 opacity, u32 backdrop, i32 flip,
                                       f32 opacityStart, f32 opacityEnd) noexcept override;
  u32 BlendOverWithOpacityRampKeepAlpha(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                                        i32 srcPitch, u8 opacity, u32 backdrop, i32 flip,
                                        f32 opacityStart, f32 opacityEnd) noexcept override;
  u32 Reserved38() noexcept override;
  u32 Reserved39() noexcept override;
  u32 Reserved40() noexcept override;
  u32 Reserved41() noexcept override;

  // IPictavo2
  void SetCPULevel(i32 level) noexcept override;
  u32 ComputeHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins, i32 binCount,
                       u32 selector) noexcept override;
  u32 ComputeLumaHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
                           i32 binCount, u32 selector) noexcept override;
  u32 Reserved45() noexcept override;
  u32 ConvertBGRAToGray(const u8* src, i32 width, i32 height, i32 srcPitch, u32* dst,
                        i32 dstPitch) noexcept override;
  u32 Reserved47() noexcept override;
  u32 DrawRectOutline(u32* buffer, i32 width, i32 height, u32 pitch, const i32 rect[4],
                      u32 colour) noexcept override;
  u32 Reserved49() noexcept override;
  u32 Reserved50(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                 i32 dstPitch) noexcept override;
  u32 Reserved51() noexcept override;
  u32 Reserved52() noexcept override;
  u32 Reserved53() noexcept override;
  u32 Reserved54(const u8* src, i32 width, i32 height, u8* dst, i32 option,
                 u32 flags) noexcept override;
  u32 ResizeNearest32(u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u32* src,
                      i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept override;
  u32 Reserved56() noexcept override;
  u32 ResizeBox16(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src, i32 srcWidth,
                  i32 srcHeight, i32 srcPitch) noexcept override;
  u32 ResizeBilinear16KeepAlpha(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                                i32 srcWidth, i32 srcHeight, i32 srcPitch,
                                i32 fullSize) noexcept override;
  u32 Reserved59(void* first, void* second, u32 third, u32 fourth) noexcept override;
  u32 Reserved60() noexcept override;
  u32 Reserved61() noexcept override;
  u32 Reserved62() noexcept override;

  // IPictavo3
  u32 MotionBlur(const ImageDesc* src, ImageDesc* dst,
                 const MotionBlurParam* param) noexcept override;
  u32 GetMotionBlurDstSize(const ImageDesc* src, ImageDesc* dst, const MotionBlurParam* param,
                           i32* offsetX, i32* offsetY) noexcept override;
  u32 Reserved65() noexcept override;
  u32 Reserved66() noexcept override;
  u32 Reserved67() noexcept override;
  u32 Reserved68() noexcept override;
  u32 Reserved69() noexcept override;
  u32 Reserved70() noexcept override;
  u32 ExtendBoundary(const ImageDesc* image, u32 border) noexcept override;
  u32 Reserved72() noexcept override;

  // IPictavo4
  u32 BlendLayer(ImageDesc* dst, const ImageDesc* src, const BlendParam* param) noexcept override;
  u32 BlendLayerSubpixel(ImageDesc* dst, const ImageDesc* src,
                         const BlendParam* param) noexcept override;
  u32 Reserved75() noexcept override;
  u32 Reserved76() noexcept override;
  u32 FillSolidColor(u8* buffer, i32 width, i32 height, i32 pitch, u8 blue, u8 green, u8 red,
                     u8 alpha) noexcept override;
  u32 Reserved78() noexcept override;
  u32 Reserved79() noexcept override;
  u32 Reserved80() noexcept override;
  u32 Reserved81() noexcept override;
  u32 ComputeMean(const u8* buffer, i32 width, i32 height, f32* mean) noexcept override;
  u32 Reserved83(const f32* values, u32 count, u32* result) noexcept override;
  u32 Reserved84(const u8* buffer, i32 width, i32 height, i32 pitch, i32 option, u32 flags,
                 f32* result) noexcept override;
  u32 Reserved85(const u8* buffer, i32 width, i32 height, u32 first, u32 second, u32 third,
                 u32* result, void* record) noexcept override;
  u32 ApplyChromaKey(const ImageDesc* src, ImageDesc* dst, const ChromaKey* keys, i32 keyCount,
                     i32 format) noexcept override;
  u32 GaussianBlurBox3(u8* image, i32 width, i32 height, i32 pitch, f32 radius) noexcept override;

  // IPictavo5
  u32 ConvertPictureFromRGB(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                            i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept override;
  u32 ConvertPictureToRGB(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst, i32 dstPitch,
                          u32 model, u32 matrix, u32 range) noexcept override;
  u32 ConvertColorFromRGB(i32 r, i32 g, i32 b, u32* first, u32* second, u32* third, u32 model,
                          u32 matrix, u32 range) noexcept override;
  u32 ConvertColorToRGB(i32 first, i32 second, i32 third, u32* r, u32* g, u32* b, u32 model,
                        u32 matrix, u32 range) noexcept override;
  u32 ConvertPixelFromRGB(const u8* pixel, u32* first, u32* second, u32* third, u32 model,
                          u32 matrix, u32 range) noexcept override;
  u32 Reserved93() noexcept override;
  u32 Reserved94() noexcept override;
  u32 ConvertHSLToRGB(i32 hue, u8 saturation, u8 lightness, u8* r, u8* g, u8* b) noexcept override;
  u32 Reserved96() noexcept override;
  u32 Reserved97() noexcept override;

  // IPictavo6
  u32 ExtendBoundaryOpenCL(IPictavoSurface* dst, u32 border) noexcept override;
  u32 Reserved99() noexcept override;
  u32 TransformOpenCL(IPictavoSurface* dst, IPictavoSurface* src,
                      const f32* matrix) noexcept override;
  u32 Reserved101() noexcept override;
  u32 BilinearInterpolationOpenCL(IPictavoSurface* dst, IPictavoSurface* src) noexcept override;
  u32 BoxBlurD3D(ID3D11Device* device, ID3D11DeviceContext* context, const ImageDesc* dst,
                 const ImageDesc* src, u32 radius) noexcept override;
  u32 FastBlurOpenCL(IPictavoSurface* dst, IPictavoSurface* src, u32 radiusX,
                     u32 radiusY) noexcept override;
  u32 MemsetColorOpenCL(IPictavoSurface* dst, u32 colour) noexcept override;
  u32 Reserved106(u8* dst, const u8* src, i64 count, u32 first, u32 second, u32 third,
                  u32 fourth) noexcept override;
  u32 ExtendBoundaryTransparent(const ImageDesc* image, u32 border) noexcept override;
  u32 D3DComputeOp(i32 opCode, i32 subMode, ID3D11Device* device, ID3D11DeviceContext* context,
                   const ImageDesc* dst, const ImageDesc* src, const void* param) noexcept override;
  u32 Reserved109() noexcept override;
  u32 Reserved110() noexcept override;

  // COCLBase
  CriticalSection& OpenCLLock() noexcept override { return openclLock; }
  bool EnsureOpenCL() override;

  // Bring up a lazy part; true, or the part, when it is there afterwards.
  bool EnsureMemoryClient() noexcept;
  bool EnsureConvertUtility() noexcept;
  bool EnsureDilation() noexcept;
  void* EnsureRenderHost() noexcept;

 private:
  ICpuDetect* EnsureCpuDetect() noexcept;
  u32 MixLayer(ImageDesc* dst, const ImageDesc* src, const BlendParam* param, u32 firstEntry,
               u32 modes) noexcept;

  std::atomic<i32> cpuLevel = 0;
  LARGE_INTEGER perfFrequency = {};
  HMODULE cpuDetectModule = nullptr;
  ICpuDetect* cpuDetect = nullptr;
  CCommonUtility* memoryClient = nullptr;
  HMODULE convertModule = nullptr;
  IConvertUtility* convertUtility = nullptr;
  CPictavo_Dilation* dilation = nullptr;
  HMODULE renderModule = nullptr;
  void* renderHost = nullptr;
  KernelTable kernelTable;
  std::uint64_t openclReady = 0;
  CriticalSection moduleLock;  // cpuDetect, memoryClient, convertUtility, dilation
  CriticalSection openclLock;  // OpenCL bring-up and every OpenCL-backed operation
  CriticalSection renderLock;  // renderHost
};

}  // namespace pictavo

#endif  // PICTAVO_FRAME_PICTAVO_OBJECT_H_
