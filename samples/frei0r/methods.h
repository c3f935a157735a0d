// The methods that the effects call: an object of Pictavo.dll's on Windows. Elsewhere, where there
// is no DLL, kernels of the project's own build under the methods' names.
#ifndef PICTAVO_SAMPLES_FREI0R_METHODS_H_
#define PICTAVO_SAMPLES_FREI0R_METHODS_H_

#ifdef _WIN32

#include <string>

#include "pictavo/pictavo_host.h"

class Methods {
 public:
  /// Looks for the DLL beside the plug-in, then in the SDK's bin beside the plug-in's folder.
  Methods() : library_(Load(L"Pictavo.dll")) {
    if (!library_) library_ = Load(L"..\\bin\\Pictavo.dll");
  }

  explicit operator bool() const { return static_cast<bool>(library_); }
  pictavo::IPictavo6* operator->() const { return library_.get(); }

 private:
  static pictavo::Library Load(const wchar_t* file) {
    static const wchar_t here = 0;
    HMODULE plugin = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        &here, &plugin);
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(plugin, path.data(), 32768));
    path.resize(path.find_last_of(L'\\') + 1);
    // How the program looks for DLLs is not a plug-in's to say.
    return pictavo::Library((path + file).c_str(), {true, false});
  }

  pictavo::Library library_;
};

#else

#include "chromakey/chroma_key_fx.h"
#include "cpu/operations.h"

class Methods {
 public:
  explicit operator bool() const { return true; }
  const Methods* operator->() const { return this; }

#define METHOD(space, name)                             \
  template <typename... Arguments>                      \
  pictavo::u32 name(Arguments... arguments) const {     \
    return pictavo::space::name(Level(), arguments...); \
  }
  METHOD(chromakey, ApplyChromaKey)
  METHOD(cpu, AdjustColor)
  METHOD(cpu, AdjustLevels)
  METHOD(cpu, ApplyColorLut)
  METHOD(cpu, ApplyTransition)
  METHOD(cpu, BlendOverPacked)
  METHOD(cpu, BlendOverWithOpacity)
  METHOD(cpu, ConvertBGRAToGray)
  METHOD(cpu, ConvertBGRAToYUVA)
  METHOD(cpu, GaussianBlur)
  METHOD(cpu, GaussianBlurBox3)
  METHOD(cpu, MotionBlur)
  METHOD(cpu, PixelateRegion)
  METHOD(cpu, PremultiplyPacked)
  METHOD(cpu, RotatePicture)
  METHOD(cpu, SharpenPicture)
  METHOD(cpu, TiltPicture)
  METHOD(cpu, UnpremultiplyPacked)
#undef METHOD

  pictavo::u32 GetMotionBlurDstSize(const pictavo::ImageDesc* src, pictavo::ImageDesc* dst,
                                    const pictavo::MotionBlurParam* param, pictavo::i32* offsetX,
                                    pictavo::i32* offsetY) const {
    return pictavo::cpu::GetMotionBlurDstSize(src, dst, param, offsetX, offsetY);
  }
  pictavo::u32 DrawRectOutline(pictavo::u32* buffer, pictavo::i32, pictavo::i32, pictavo::u32 pitch,
                               const pictavo::i32* rect, pictavo::u32 colour) const {
    return pictavo::cpu::DrawRectOutline(buffer, pitch, rect, colour);
  }
  /// Of two frames of one size.
  pictavo::u32 BlendLayer(pictavo::ImageDesc* dst, const pictavo::ImageDesc* src,
                          const pictavo::BlendParam* param) const {
    if (param->opacity == 0) return pictavo::PICTAVO_S_OK;
    return pictavo::cpu::kLayerKernels[param->mode].For(Level())(
        static_cast<pictavo::u8*>(dst->data), static_cast<pictavo::u8*>(src->data), dst->width,
        dst->height, dst->pitch, src->pitch, *param);
  }

 private:
  static pictavo::i32 Level() {
    if (__builtin_cpu_supports("avx2")) return 8;
    if (__builtin_cpu_supports("sse4.1")) return 6;
    return 3;
  }
};

#endif  // _WIN32

#endif  // PICTAVO_SAMPLES_FREI0R_METHODS_H_
