// The methods of the interface. Each on the processor or on OpenCL calls the operation of its name:
// the one in src/cpu or src/opencl, or where there is more to it, one that stands here. The methods
// about the object itself stand in pictavo_object.cpp.
#include <algorithm>
#include <type_traits>

#include "chromakey/chroma_key_fx.h"
#include "cpu/base/picture.h"
#include "cpu/operations.h"
#include "frame/pictavo_object.h"
#include "frame/surface.h"
#include "opencl/operations.h"
#include "platform/floating_point.h"

namespace pictavo {
namespace {

/// The object as its host holds it: calls follow its method table, where a host may have put other
/// methods. Calls on the object itself would be bound by the compiler.
IPictavo& ThroughTable(IPictavo& object) {
  IPictavo* const volatile opaque = &object;
  return *opaque;
}

/// Calls an operation with a method's arguments and what it wants before them: the object, the
/// level, or nothing. However the host has its floating point, the operation computes as always.
template <typename Operation, typename... Arguments>
auto Call(Operation operation, Pictavo& object, Arguments... arguments) {
  const DefaultFloatingPoint floatingPoint;
  if constexpr (std::is_invocable_v<Operation, Pictavo&, Arguments...>) {
    return operation(object, arguments...);
  } else if constexpr (std::is_invocable_v<Operation, i32, Arguments...>) {
    return operation(object.Pictavo::GetCPULevel(), arguments...);
  } else {
    return operation(arguments...);
  }
}

}  // namespace

namespace operations {
namespace {

// What is not below is found in these.
using namespace cpu;
using namespace chromakey;
using namespace opencl;

u32 ConvertBGRAToYUVA(Pictavo& object, const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                      i32 dstPitch) {
  const i32 level = object.Pictavo::GetCPULevel();
  if (level >= PICTAVO_LEVEL_SSE2) {
    return cpu::ConvertBGRAToYUVA(level, src, width, height, srcPitch, dst, dstPitch);
  }
  return ThroughTable(object).ConvertBGRAToYUVAPortable(src, width, height, srcPitch, dst,
                                                        dstPitch);
}

u32 ConvertBGRAToYUVAPortable(const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                              i32 dstPitch) {
  return cpu::ConvertBGRAToYUVA(PICTAVO_LEVEL_PORTABLE, src, width, height, srcPitch, dst,
                                dstPitch);
}

void ConvertRGBToYUVPixels(Pictavo& object, const u8* pixels, i32* y, i32* u, i32* v) {
  if (object.Pictavo::GetCPULevel() >= PICTAVO_LEVEL_SSE2) {
    ThroughTable(object).ConvertRGBToYUV4Pixels(pixels, y, u, v);
  } else {
    cpu::ConvertRGBToYUVPixelsPortable(pixels, y, u, v);
  }
}

u32 DrawRectOutline(u32* buffer, i32, i32, u32 pitch, const i32* rect, u32 colour) {
  return cpu::DrawRectOutline(buffer, pitch, rect, colour);
}

u32 BlendLayer(Pictavo& object, ImageDesc* dst, const ImageDesc* src, const BlendParam* param) {
  return object.kernels().Mix(0, 2 * kLayerModes, dst, src, param);
}

u32 BlendLayerSubpixel(Pictavo& object, ImageDesc* dst, const ImageDesc* src,
                       const BlendParam* param) {
  return object.kernels().Mix(kLayerModes, kLayerModes, dst, src, param);
}

u32 CopySurface(i32 level, IPictavoSurface* dst, IPictavoSurface* src) {
  ImageDesc to, from;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &to, src, &from));
  if (const u32 code = CheckRecords(true, &to, &from); code != PICTAVO_S_OK) return code;
  if (to.data == from.data && to.pitch == from.pitch) return PICTAVO_S_OK;
  const i32 common[] = {0, 0, std::min(to.width, from.width), std::min(to.height, from.height)};
  return cpu::CopyRectangle(level, &from, &to, common);
}

u32 ResizeSurface(i32 level, IPictavoSurface* dst, IPictavoSurface* src, const ResizeParam* param) {
  if (param == nullptr) return PICTAVO_E_POINTER;
  ImageDesc to, from;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &to, src, &from));
  return cpu::ResizeFiltered(level, &from, &to, param);
}

u32 FillSolidColor(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, u8 blue, u8 green,
                   u8 red, u8 alpha) {
  const u32 colour = u32{alpha} << 24 | u32{red} << 16 | u32{green} << 8 | blue;
  return cpu::FillSolidColor(level, buffer, width, height, pitch, colour);
}

}  // namespace
}  // namespace operations

#define PICTAVO_DEFINE_CPU(name, arguments)                      \
  PICTAVO_HEAD(Pictavo::, name, arguments) {                     \
    return Call(&operations::name, *this PICTAVO_AND arguments); \
  }
#define PICTAVO_DEFINE_MODULE(name, arguments)                                         \
  PICTAVO_HEAD(Pictavo::, name, arguments) {                                           \
    if (!EnsureConvertUtility()) return PICTAVO_E_FAIL;                                \
    const auto operation = [this](auto... a) -> decltype(convertUtility->name(a...)) { \
      return convertUtility->name(a...);                                               \
    };                                                                                 \
    return Call(operation, *this PICTAVO_AND arguments);                               \
  }
#define PICTAVO_DEFINE_SURFACE PICTAVO_DEFINE_CPU
#define PICTAVO_DEFINE_OBJECT(name, arguments)  // in pictavo_object.cpp
#define PICTAVO_DEFINE_OPENCL PICTAVO_DEFINE_CPU
#define PICTAVO_DEFINE_D3D11(name, arguments)  // below
#define PICTAVO_METHOD(slot, name, where, arguments) PICTAVO_DEFINE_##where(name, arguments)
#include "pictavo/pictavo_methods.inl"

u32 Pictavo::RotateD3D(ID3D11Device* device, ID3D11DeviceContext* context, const ImageDesc* dst,
                       const ImageDesc* src, const RotateParam* param) noexcept {
  if (!EnsureMemoryClient()) return PICTAVO_E_OUTOFMEMORY;
  const DefaultFloatingPoint floatingPoint;
  // FastBlurOpenCL uses that client under this lock.
  return Rotate({device, context, dst, src}, cpuLevel, param, {memoryClient, openclLock});
}

u32 Pictavo::BoxBlurD3D(ID3D11Device* device, ID3D11DeviceContext* context, const ImageDesc* dst,
                        const ImageDesc* src, u32 radius) noexcept {
  const DefaultFloatingPoint floatingPoint;
  const auto pixels = static_cast<double>(radius);
  const D3DBlurParam param = {pixels, pixels, 1};
  return BoxBlur({device, context, dst, src}, &param);
}

u32 Pictavo::D3DComputeOp(i32 opCode, i32 subMode, ID3D11Device* device,
                          ID3D11DeviceContext* context, const ImageDesc* dst, const ImageDesc* src,
                          const void* param) noexcept {
  if (opCode < 0 || opCode > PICTAVO_D3D_CHROMA_KEY) return PICTAVO_E_FAIL;
  const bool part = opCode == PICTAVO_D3D_COPY_TEXTURE && subMode == PICTAVO_D3D_PART;
  const bool asProcessor = (opCode == PICTAVO_D3D_SCALE || opCode == PICTAVO_D3D_COPY_AFFINE) &&
                           subMode == PICTAVO_D3D_AS_PROCESSOR;
  if (subMode != PICTAVO_D3D_WHOLE && !part && !asProcessor) return PICTAVO_E_INVALIDARG;
  const D3DCall call = {device, context, dst, src};
  const DefaultFloatingPoint floatingPoint;
  switch (opCode) {
    case PICTAVO_D3D_COPY_TEXTURE:
      if (part && param == nullptr) return PICTAVO_E_POINTER;
      return CopyTexture(call, part ? static_cast<const D3DRegion*>(param) : nullptr);
    case PICTAVO_D3D_COPY:
      return PlainCopy(call);
    case PICTAVO_D3D_BOX_BLUR:
      return BoxBlur(call, static_cast<const D3DBlurParam*>(param));
    case PICTAVO_D3D_GROW:
      if (!EnsureDilation()) return PICTAVO_E_OUTOFMEMORY;
      return dilation->Grow(call, static_cast<const D3DGrowParam*>(param));
    case PICTAVO_D3D_CLEAR:
      return Clear(call, static_cast<const D3DClearParam*>(param));
    case PICTAVO_D3D_COPY_REGION:
      return RegionCopy(call, static_cast<const D3DRegion*>(param));
    case PICTAVO_D3D_SCALE:
      if (asProcessor) return FilteredCopy(call, static_cast<const ResizeParam*>(param));
      return ScaledCopy(call, static_cast<const D3DScaleParam*>(param));
    case PICTAVO_D3D_RELEASE:
      UseDevice(nullptr);
      return PICTAVO_S_OK;
    case PICTAVO_D3D_COPY_MATERIAL:
      return MaterialCopy(call, static_cast<const D3DRegion*>(param));
    case PICTAVO_D3D_FILTER_REGION:
      return RegionFilter(call, static_cast<const D3DRegionFilterParam*>(param));
    case PICTAVO_D3D_COPY_AFFINE:
      if (asProcessor) return RotatedCopy(call, static_cast<const RotateParam*>(param));
      return AffineCopy(call, static_cast<const D3DAffineParam*>(param));
    case PICTAVO_D3D_FILL:
      return Fill(call, static_cast<const D3DFillParam*>(param));
    case PICTAVO_D3D_GROW_REGION:
      if (!EnsureDilation()) return PICTAVO_E_OUTOFMEMORY;
      return dilation->GrowRegion(call, static_cast<const D3DGrowRegionParam*>(param));
    case PICTAVO_D3D_TINT:
      return ColourFromSource(call, static_cast<const D3DTintParam*>(param));
    default:  // PICTAVO_D3D_CHROMA_KEY
      return ApplyKeys(call, static_cast<const D3DKeyParam*>(param));
  }
}

}  // namespace pictavo
