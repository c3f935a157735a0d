// pictavo-host info: asks the library itself what it can do.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <type_traits>
#include <vector>

#include "commands.h"
#include "opencl_info.h"
#include "operations.h"
#include "text.h"

namespace host {
namespace {

using pictavo::BlendParam;
using pictavo::ImageDesc;
using pictavo::IPictavo6;
using I = IPictavo6;  // shortens the table

/// A method that is built refuses null pointers with another code than this.
template <typename Owner, typename... Arguments>
bool Probe(IPictavo6* object, u32 (Owner::*method)(Arguments...) noexcept) {
  return (object->*method)(Arguments{}...) != pictavo::PICTAVO_E_NOTIMPL;
}

/// Room for what a method without a result gives out: one that is built changes it.
struct Scratch {
  Scratch() { std::fill(std::begin(words), std::end(words), kUntouched); }
  bool touched() const {
    return std::any_of(std::begin(words), std::end(words), [](u32 w) { return w != kUntouched; });
  }

  template <typename T>
  T Argument() {
    if constexpr (std::is_pointer_v<T>) {
      return reinterpret_cast<T>(words);
    } else {
      return T{};
    }
  }

  static constexpr u32 kUntouched = 0x5A5A5A5Au;
  u32 words[16];
};

template <typename Owner, typename... Arguments>
bool Probe(IPictavo6* object, void (Owner::*method)(Arguments...) noexcept) {
  Scratch scratch;
  (object->*method)(scratch.Argument<Arguments>()...);
  return scratch.touched();
}

/// Layer methods check their records before they look for the mode, so they are given good ones.
bool ProbeModes(IPictavo6* object, decltype(&pictavo::IPictavo4::BlendLayer) method) {
  u32 below = 0, above = 0xFF808080;
  ImageDesc dst = {};
  dst.data = &below;
  dst.bufferWidth = dst.bufferHeight = dst.width = dst.height = 1;
  dst.pitch = dst.bytesPerPixel = 4;
  ImageDesc src = dst;
  src.data = &above;
  for (u32 mode = 0; mode < 24; ++mode) {
    const BlendParam param = {mode, 255, 0, 0, 0};
    if ((object->*method)(&dst, &src, &param) == pictavo::PICTAVO_S_OK) return true;
  }
  return false;
}

bool ProbeLevel(IPictavo6* object) {
  const i32 level = object->GetCPULevel();
  object->SetCPULevel(level + 1);
  const bool built = object->GetCPULevel() == level + 1;
  object->SetCPULevel(level);
  return built;
}

bool ProbeDetection(IPictavo6* object) {
  constexpr i32 kNoLevel = -1;
  object->SetCPULevel(kNoLevel);
  object->DetectInstructionSet();
  return object->GetCPULevel() != kNoLevel;
}

bool ProbeD3D(IPictavo6* object) {
  constexpr i32 kAnyOperation = pictavo::PICTAVO_D3D_COPY;
  return object->D3DComputeOp(kAnyOperation, 0, nullptr, nullptr, nullptr, nullptr, nullptr) !=
         pictavo::PICTAVO_E_NOTIMPL;
}

template <auto method>
bool Is(IPictavo6* object) {
  return Probe(object, method);
}

template <auto method>
bool HasModes(IPictavo6* object) {
  return ProbeModes(object, method);
}

/// A method of the interface that is not reserved.
struct Method {
  int slot;
  const char* name;
  bool (*isBuilt)(IPictavo6* object);
};

constexpr Method kMethods[] = {
    {0, "DetectInstructionSet", ProbeDetection},
    {1, "GetCPULevel", ProbeLevel},
    {2, "BlendOverWithOpacityRamp", Is<&I::BlendOverWithOpacityRamp>},
    {3, "BlendOverPacked", Is<&I::BlendOverPacked>},
    {4, "BlendOverPitched", Is<&I::BlendOverPitched>},
    {5, "BlendPremultipliedWithOpacityRamp", Is<&I::BlendPremultipliedWithOpacityRamp>},
    {6, "BlendPremultipliedPacked", Is<&I::BlendPremultipliedPacked>},
    {7, "BlendPremultipliedPitched", Is<&I::BlendPremultipliedPitched>},
    {8, "CompositePremultipliedWithOpacityRamp", Is<&I::CompositePremultipliedWithOpacityRamp>},
    {9, "CompositePremultipliedPitched", Is<&I::CompositePremultipliedPitched>},
    {10, "CompositePremultipliedPacked", Is<&I::CompositePremultipliedPacked>},
    {11, "BlendOverWithOpacity", Is<&I::BlendOverWithOpacity>},
    {14, "ConvertRGBToYUVPixel", Is<&I::ConvertRGBToYUVPixel>},
    {15, "ConvertYUVToRGBPixel", Is<&I::ConvertYUVToRGBPixel>},
    {16, "UnpremultiplyPitched", Is<&I::UnpremultiplyPitched>},
    {17, "UnpremultiplyPacked", Is<&I::UnpremultiplyPacked>},
    {18, "PremultiplyPitched", Is<&I::PremultiplyPitched>},
    {19, "PremultiplyPacked", Is<&I::PremultiplyPacked>},
    {20, "ConvertBGRAToYUVA", Is<&I::ConvertBGRAToYUVA>},
    {21, "ConvertBGRAToYUVAPortable", Is<&I::ConvertBGRAToYUVAPortable>},
    {29, "ResizeBox16AlphaWeighted", Is<&I::ResizeBox16AlphaWeighted>},
    {30, "ResizeBilinear16", Is<&I::ResizeBilinear16>},
    {31, "ResizeBilinear7", Is<&I::ResizeBilinear7>},
    {34, "ConvertRGBToYUV4Pixels", Is<&I::ConvertRGBToYUV4Pixels>},
    {35, "ConvertRGBToYUVPixels", Is<&I::ConvertRGBToYUVPixels>},
    {36, "BlendOverWithOpacityRampAndAlpha", Is<&I::BlendOverWithOpacityRampAndAlpha>},
    {37, "BlendOverWithOpacityRampKeepAlpha", Is<&I::BlendOverWithOpacityRampKeepAlpha>},
    {42, "SetCPULevel", ProbeLevel},
    {43, "ComputeHistogram", Is<&I::ComputeHistogram>},
    {44, "ComputeLumaHistogram", Is<&I::ComputeLumaHistogram>},
    {46, "ConvertBGRAToGray", Is<&I::ConvertBGRAToGray>},
    {48, "DrawRectOutline", Is<&I::DrawRectOutline>},
    {55, "ResizeNearest32", Is<&I::ResizeNearest32>},
    {57, "ResizeBox16", Is<&I::ResizeBox16>},
    {58, "ResizeBilinear16KeepAlpha", Is<&I::ResizeBilinear16KeepAlpha>},
    {63, "MotionBlur", Is<&I::MotionBlur>},
    {64, "GetMotionBlurDstSize", Is<&I::GetMotionBlurDstSize>},
    {71, "ExtendBoundary", Is<&I::ExtendBoundary>},
    {73, "BlendLayer, any mode", HasModes<&I::BlendLayer>},
    {74, "BlendLayerSubpixel, any mode", HasModes<&I::BlendLayerSubpixel>},
    {77, "FillSolidColor", Is<&I::FillSolidColor>},
    {82, "ComputeMean", Is<&I::ComputeMean>},
    {86, "ApplyChromaKey", Is<&I::ApplyChromaKey>},
    {87, "GaussianBlurBox3", Is<&I::GaussianBlurBox3>},
    {88, "ConvertPictureFromRGB", Is<&I::ConvertPictureFromRGB>},
    {89, "ConvertPictureToRGB", Is<&I::ConvertPictureToRGB>},
    {90, "ConvertColorFromRGB", Is<&I::ConvertColorFromRGB>},
    {91, "ConvertColorToRGB", Is<&I::ConvertColorToRGB>},
    {92, "ConvertPixelFromRGB", Is<&I::ConvertPixelFromRGB>},
    {95, "ConvertHSLToRGB", Is<&I::ConvertHSLToRGB>},
    {98, "ExtendBoundaryOpenCL", Is<&I::ExtendBoundaryOpenCL>},
    {100, "TransformOpenCL", Is<&I::TransformOpenCL>},
    {102, "BilinearInterpolationOpenCL", Is<&I::BilinearInterpolationOpenCL>},
    {103, "BoxBlurD3D", Is<&I::BoxBlurD3D>},
    {104, "FastBlurOpenCL", Is<&I::FastBlurOpenCL>},
    {105, "MemsetColorOpenCL", Is<&I::MemsetColorOpenCL>},
    {107, "ExtendBoundaryTransparent", Is<&I::ExtendBoundaryTransparent>},
    {108, "D3DComputeOp", ProbeD3D},
};

struct Module {
  const wchar_t* file;
  const char* purpose;
};
constexpr Module kModules[] = {
    {L"CPUIstructionSetDetect.dll", "tells the processor's level; without it the level is 0"},
    {L"VKTMemMgr.dll", "hands out pixel buffers"},
    {L"ConvertUtility.dll", "converts colours"},
    {L"VKT_3DRender.dll", "renders on the graphics card"},
};

void PrintModules() {
  std::puts("\nModules");
  for (const Module& module : kModules) {
    const HMODULE loaded = LoadLibraryW(module.file);
    std::printf("  %-28s  %-10s  %s\n", Utf8(module.file).c_str(),
                loaded != nullptr ? VersionOf(loaded).c_str() : "not found", module.purpose);
    if (loaded != nullptr) FreeLibrary(loaded);
  }
}

void PrintInTwoColumns(const std::vector<const Method*>& methods) {
  const size_t rows = (methods.size() + 1) / 2;
  for (size_t row = 0; row < rows; ++row) {
    std::string line;
    for (size_t i = row; i < methods.size(); i += rows) {
      line.resize(line.empty() ? 0 : 46, ' ');
      line += Format("  %3d  %s", methods[i]->slot, methods[i]->name);
    }
    std::puts(line.c_str());
  }
}

void PrintMethods(IPictavo6* object) {
  std::vector<const Method*> built, missing;
  for (const Method& method : kMethods) {
    (method.isBuilt(object) ? built : missing).push_back(&method);
  }
  std::printf("\nBuilt: %zu methods of %zu, by slot\n", built.size(), std::size(kMethods));
  PrintInTwoColumns(built);
  std::printf("\nNot built: %zu methods and the other slots, which are reserved, return 0x%08X\n",
              missing.size(), pictavo::PICTAVO_E_NOTIMPL);
  PrintInTwoColumns(missing);
}

}  // namespace

std::string VersionOf(HMODULE module) {
  const std::wstring path = PathOf(module);
  std::string data(GetFileVersionInfoSizeW(path.c_str(), nullptr), '\0');
  VS_FIXEDFILEINFO* info = nullptr;
  UINT size = 0;
  if (data.empty() ||
      !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data()) ||
      !VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &size)) {
    return "unknown";
  }
  return Format("%d.%d.%d", HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                HIWORD(info->dwFileVersionLS));
}

std::wstring PathOf(HMODULE module) {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(2 * path.size());
  }
}

namespace {

int RunInfo(pictavo::Library& library, const Arguments& arguments) {
  if (!arguments.empty()) throw UsageFailure("info takes no arguments");
  const i32 level = library->GetCPULevel();
  std::printf("Pictavo %s\n  %s\n", VersionOf(library.module()).c_str(),
              Utf8(PathOf(library.module())).c_str());
  std::printf("\nLevel in use: %d, %s\n", level, LevelName(level));
  PrintModules();
  PrintOpenCL(library);
  PrintMethods(library.get());
  return 0;
}

}  // namespace

const Command kInfoCommand = {
    L"info",
    "  pictavo-host info\n"
    "      Says what the library beside this program can do on this processor.\n",
    RunInfo};

}  // namespace host
