// What the tests of the OpenCL methods share: pictures, the methods, and an object to call them on.
#ifndef PICTAVO_TESTS_HOST_OPENCL_METHODS_H_
#define PICTAVO_TESTS_HOST_OPENCL_METHODS_H_

#include <functional>
#include <random>
#include <vector>

#include "module_folder.h"
#include "pictavo/pictavo.h"

namespace pictavo::test {

using Bytes = std::vector<u8>;

/// A picture of random pixels in random surroundings.
class Surface final : public IPictavoSurface {
 public:
  /// @param border pixels around the picture that a method may write
  /// @param wider bytes that rows of byte planes are longer, which else lie tight
  Surface(i32 width, i32 height, i32 bytes = 4, i32 border = 0, bool bottomUp = false,
          i32 wider = 0)
      : width_(width), height_(height), bytes_(bytes), border_(border) {
    pitch_ = RowBytes() + (bytes == 4 ? 12 : wider);
    memory_.resize(static_cast<size_t>(pitch_ * FullHeight() + 2 * first_));
    for (u8& byte : memory_) byte = static_cast<u8>(random_());
    if (!bottomUp) return;
    first_ += (FullHeight() - 1) * pitch_;
    pitch_ = -pitch_;
  }

  u32 Query(ImageDesc* image) noexcept override {
    u8* const data = memory_.data() + RowAt(border_) + border_ * bytes_;
    *image = {{}, RowBytes() / bytes_, FullHeight(), 0, data, width_, height_, pitch_, bytes_};
    if (change) change(image);
    return answer;
  }

  /// All rows, their borders too.
  Bytes Packed() const {
    Bytes packed;
    for (i32 y = 0; y < FullHeight(); ++y) {
      const auto row = memory_.begin() + RowAt(y);
      packed.insert(packed.end(), row, row + RowBytes());
    }
    return packed;
  }
  void Unpack(const Bytes& packed) {
    for (i32 y = 0; y < FullHeight(); ++y) {
      std::copy_n(packed.begin() + y * RowBytes(), RowBytes(), memory_.begin() + RowAt(y));
    }
  }

  i32 RowBytes() const { return (width_ + 2 * border_) * bytes_; }
  i32 FullHeight() const { return height_ + 2 * border_; }
  const Bytes& memory() const { return memory_; }

  u32 answer = 1;
  std::function<void(ImageDesc*)> change;

 private:
  static inline std::mt19937 random_{4711};

  i32 RowAt(i32 y) const { return first_ + y * pitch_; }

  i32 width_, height_, bytes_, border_, pitch_, first_ = 64;
  Bytes memory_;
};

inline constexpr f32 kIdentity[] = {1, 0, 0, 0, 1, 0};

/// A method, called with nothing odd but its surfaces.
struct Method {
  const char *program, *kernel;
  u32 (*call)(IPictavo6*, IPictavoSurface* dst, IPictavoSurface* src);
  bool hasSource, takesPlanes;
};
inline const Method kMethods[] = {
    {"Common.cl", "ExtendBoundary_BYTE",
     [](auto* o, auto* dst, auto*) { return o->ExtendBoundaryOpenCL(dst, 1); }, false, true},
    {"TransformF.cl", "TransformF_BYTE",
     [](auto* o, auto* dst, auto* src) { return o->TransformOpenCL(dst, src, kIdentity); }, true,
     false},
    {"Interpolation.cl", "BilinearInterpolation_BYTE",
     [](auto* o, auto* dst, auto* src) { return o->BilinearInterpolationOpenCL(dst, src); }, true,
     false},
    {"Blur.cl", "Blur_FastBlur_X_BYTE",
     [](auto* o, auto* dst, auto* src) { return o->FastBlurOpenCL(dst, src, 1, 1); }, true, false},
    {"MemColor.cl", "MemsetColor_ALL",
     [](auto* o, auto* dst, auto*) { return o->MemsetColorOpenCL(dst, 7); }, false, true},
};

/// An object of Pictavo.dll.
class DllObject {
 public:
  ~DllObject() { module_.Entry<i32(IPictavo6*)>("ReleasePictavo6")(object_); }
  IPictavo6* operator->() const { return object_; }
  operator IPictavo6*() const { return object_; }

 private:
  const RealModule module_{L"Pictavo.dll"};
  IPictavo6* const object_ = module_.Entry<IPictavo6*()>("GetPictavo6")();
};

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_HOST_OPENCL_METHODS_H_
