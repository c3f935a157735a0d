#include "opencl/operations.h"

#include <array>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>

namespace pictavo::opencl {
namespace {

constexpr u32 kUsable = 1;  // what a surface answers
constexpr u32 kLargestRadius = 2047;
constexpr i32 kLargestSize = INT32_MAX / 4;  // a row's bytes and the kernels' sums fit 32 bits
constexpr size_t kGroup = 64;                // work-items that run together
constexpr i32 kBlurStretch = 64;             // pixels a work-item of Blur.cl slides along

#define PICTAVO_RETURN_IF_FAILED(call) \
  if (const u32 result_ = (call); static_cast<i32>(result_) < 0) return result_

/// Rows of pixels in the host's memory.
struct Rows {
  u8* first;
  i64 pitch;
  size_t bytes;  // in a row
  i32 count;

  u8* At(i32 y) const { return first + y * pitch; }
};

Rows RowsOf(const ImageDesc& image) {
  return {static_cast<u8*>(image.data), image.pitch,
          static_cast<size_t>(image.width) * static_cast<size_t>(image.bytesPerPixel),
          image.height};
}

/// Asks a surface for its picture.
u32 Ask(IPictavoSurface* surface, ImageDesc* image) noexcept {
  *image = {};
  return surface->Query(image) == kUsable ? PICTAVO_S_OK : PICTAVO_E_FAIL;
}

u32 Ask(IPictavoSurface* dst, ImageDesc* dstImage, IPictavoSurface* src,
        ImageDesc* srcImage) noexcept {
  if (dst == nullptr || src == nullptr) return PICTAVO_E_POINTER;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, dstImage));
  return Ask(src, srcImage);
}

bool IsPicture(const ImageDesc& image) noexcept {
  return image.data != nullptr && image.memoryKind != PICTAVO_MEMORY_D3D11_TEXTURE &&
         image.width >= 1 && image.height >= 1 && image.width <= kLargestSize &&
         image.height <= kLargestSize;
}

bool Is32Bit(const ImageDesc& image) noexcept {
  return IsPicture(image) && image.bytesPerPixel == 4;
}

/// A packed picture in a memory-manager buffer, which the device works on in place where it can.
class DevicePicture {
 public:
  DevicePicture(COCLBase& ocl, CCommonUtility* client) noexcept : ocl_(ocl), client_(client) {}
  ~DevicePicture();
  DevicePicture(const DevicePicture&) = delete;
  DevicePicture& operator=(const DevicePicture&) = delete;

  /// Rows are padded to whole 32-bit words.
  u32 Allocate(i64 width, i64 height, i32 bytesPerPixel) noexcept;

  /// Fills a rectangle of the picture, before it is opened.
  void Put(const Rows& from, i64 left, i64 top) noexcept;

  /// Hands the picture to the device.
  u32 Open() noexcept;

  /// Waits for the device and hands the picture to `take(pixels, pitch)`.
  template <typename Take>
  u32 Read(Take take) noexcept;

  /// Waits for the device and copies the whole picture.
  u32 Get(const Rows& to) noexcept;

  cl::Memory memory() const noexcept { return memory_; }
  i32 pitch() const noexcept { return static_cast<i32>(pitch_); }

 private:
  COCLBase& ocl_;
  CCommonUtility* client_;
  IMemoryBuffer* buffer_ = nullptr;
  cl::Memory memory_ = nullptr;
  i32 bytesPerPixel_ = 0;
  i64 pitch_ = 0;
  i64 size_ = 0;
};

DevicePicture::~DevicePicture() {
  if (memory_ != nullptr) {
    ocl_.cl().clFinish(ocl_.queue());  // after a failure the device may still be at work on it
    ocl_.cl().clReleaseMemObject(memory_);
  }
  if (buffer_ != nullptr) client_->FreeBuffer(&buffer_);
}

u32 DevicePicture::Allocate(i64 width, i64 height, i32 bytesPerPixel) noexcept {
  if (client_ == nullptr) return PICTAVO_E_OUTOFMEMORY;
  bytesPerPixel_ = bytesPerPixel;
  pitch_ = (width * bytesPerPixel + 3) / 4 * 4;
  size_ = pitch_ * height;
  if (pitch_ > INT32_MAX || height > INT32_MAX) return PICTAVO_E_OUTOFMEMORY;
  return client_->AllocateBuffer(&buffer_, 0, bytesPerPixel == 4 ? 1 : 0, static_cast<u32>(width),
                                 static_cast<u32>(height), static_cast<u32>(pitch_), 0, 0, 0, 0);
}

void DevicePicture::Put(const Rows& from, i64 left, i64 top) noexcept {
  u8* to = static_cast<u8*>(buffer_->GetPixels()) + top * pitch_ + left * bytesPerPixel_;
  for (i32 y = 0; y < from.count; ++y) std::memcpy(to + y * pitch_, from.At(y), from.bytes);
}

u32 DevicePicture::Open() noexcept {
  i32 result = cl::kSuccess;
  memory_ = ocl_.cl().clCreateBuffer(ocl_.context(), cl::kMemReadWrite | cl::kMemUseHostPointer,
                                     static_cast<size_t>(size_), buffer_->GetPixels(), &result);
  return memory_ != nullptr ? PICTAVO_S_OK : PICTAVO_E_OUTOFMEMORY;
}

template <typename Take>
u32 DevicePicture::Read(Take take) noexcept {
  i32 result = cl::kSuccess;
  void* mapped =
      ocl_.cl().clEnqueueMapBuffer(ocl_.queue(), memory_, 1, cl::kMapRead, 0,
                                   static_cast<size_t>(size_), 0, nullptr, nullptr, &result);
  if (mapped == nullptr || result != cl::kSuccess) return PICTAVO_E_FAIL;
  take(static_cast<const u8*>(mapped), pitch_);
  ocl_.cl().clEnqueueUnmapMemObject(ocl_.queue(), memory_, mapped, 0, nullptr, nullptr);
  return PICTAVO_S_OK;
}

u32 DevicePicture::Get(const Rows& to) noexcept {
  return Read([&](const u8* pixels, i64 pitch) {
    for (i32 y = 0; y < to.count; ++y) std::memcpy(to.At(y), pixels + y * pitch, to.bytes);
  });
}

/// Runs a kernel over columns x rows work-items, and some more columns: groups of one fixed size
/// save runtimes from compiling a kernel anew for each size of picture.
template <typename... Arguments>
u32 Launch(COCLBase& ocl, cl::Kernel kernel, i64 columns, i64 rows,
           const Arguments&... arguments) noexcept {
  u32 index = 0;
  const auto set = [&](const auto& argument) {
    return ocl.cl().clSetKernelArg(kernel, index++, sizeof(argument), &argument) == cl::kSuccess;
  };
  const size_t group[] = {kGroup, 1};
  const size_t global[] = {(static_cast<size_t>(columns) + kGroup - 1) / kGroup * kGroup,
                           static_cast<size_t>(rows)};
  const auto enqueue = [&](const size_t* local) {
    return ocl.cl().clEnqueueNDRangeKernel(ocl.queue(), kernel, 2, nullptr, global, local, 0,
                                           nullptr, nullptr) == cl::kSuccess;
  };
  // A device that cannot run such a group chooses one.
  const bool launched = (set(arguments) && ...) && (enqueue(group) || enqueue(nullptr));
  return launched ? PICTAVO_S_OK : PICTAVO_E_FAIL;
}

/// Runs an operation's work under the lock, with OpenCL and a device.
template <typename Work>
u32 OnDevice(COCLBase& ocl, Work work) noexcept {
  try {
    const std::lock_guard guard(ocl.OpenCLLock());
    if (!ocl.EnsureOpenCL() || !ocl.EnsureDevice()) return PICTAVO_E_FAIL;
    return work();
  } catch (const std::bad_alloc&) {
    return PICTAVO_E_OUTOFMEMORY;
  }
}

/// Runs a kernel that makes each pixel of the destination from the source.
template <typename... Arguments>
u32 MakeFrom(COCLBase& ocl, const ImageDesc& dst, const ImageDesc& src, const char* program,
             const char* kernelName, const Arguments&... arguments) noexcept {
  return OnDevice(ocl, [&] {
    const cl::Kernel kernel = ocl.GetKernel(program, kernelName);
    if (kernel == nullptr) return PICTAVO_E_FAIL;
    DevicePicture from(ocl, ocl.oclMemoryClient()), to(ocl, ocl.oclMemoryClient());
    PICTAVO_RETURN_IF_FAILED(from.Allocate(src.width, src.height, 4));
    PICTAVO_RETURN_IF_FAILED(to.Allocate(dst.width, dst.height, 4));
    from.Put(RowsOf(src), 0, 0);
    PICTAVO_RETURN_IF_FAILED(from.Open());
    PICTAVO_RETURN_IF_FAILED(to.Open());
    PICTAVO_RETURN_IF_FAILED(Launch(ocl, kernel, dst.width, dst.height, to.memory(), dst.width,
                                    from.memory(), src.width, src.height, arguments...));
    return to.Get(RowsOf(dst));
  });
}

/// The rows of a picture together with its border.
struct BoundaryRows {
  u8* origin;  // the border's top left corner
  i64 step;    // bytes from row to row
};

/// Whole pixels to a row; byte planes lie tightly whatever their pitch says, which only places the
/// origin.
BoundaryRows BoundaryRowsOf(const ImageDesc& image, i64 border) noexcept {
  u8* const data = static_cast<u8*>(image.data);
  if (image.bytesPerPixel == 1) {
    return {data - border * image.pitch - border, image.width + 2 * border};
  }
  const i64 step = image.pitch / 4 * 4;
  return {data - border * step - border * 4, step};
}

/// ExtendBoundary's work. Checked: the area around the picture is inside 32 bits.
u32 ExtendOnDevice(COCLBase& ocl, const ImageDesc& image, i32 border) {
  std::array<cl::Kernel, 3> kernels;
  constexpr const char* kNames[] = {"ExtendBoundary_BYTE", "ExtendBoundaryRight_BYTE",
                                    "ExtendBoundaryBottom_BYTE"};
  for (size_t i = 0; i < kernels.size(); ++i) {
    kernels[i] = ocl.GetKernel("Common.cl", kNames[i]);
    if (kernels[i] == nullptr) return PICTAVO_E_FAIL;
  }
  if (border == 0) return PICTAVO_S_OK;

  const i64 b = border, width = image.width, height = image.height;
  const i64 fullWidth = width + 2 * b, fullHeight = height + 2 * b;
  const i32 pixelBytes = image.bytesPerPixel;
  const BoundaryRows rows = BoundaryRowsOf(image, b);
  DevicePicture area(ocl, ocl.oclMemoryClient());
  PICTAVO_RETURN_IF_FAILED(area.Allocate(fullWidth, fullHeight, pixelBytes));
  area.Put({rows.origin + b * rows.step + b * pixelBytes, rows.step,
            static_cast<size_t>(width * pixelBytes), image.height},
           b, b);
  PICTAVO_RETURN_IF_FAILED(area.Open());
  const auto launch = [&](cl::Kernel kernel, i64 columns, i64 lines) {
    return Launch(ocl, kernel, columns, lines, area.memory(), area.pitch(), image.width,
                  image.height, border, pixelBytes);
  };
  PICTAVO_RETURN_IF_FAILED(launch(kernels[0], fullWidth * b + b * height, 1));
  PICTAVO_RETURN_IF_FAILED(launch(kernels[1], b, height));
  PICTAVO_RETURN_IF_FAILED(launch(kernels[2], fullWidth, b));
  return area.Read([&](const u8* pixels, i64 pitch) {
    const auto copy = [&](i64 left, i64 top, i64 columns, i64 lines) {
      const i64 x = left * pixelBytes;
      for (i64 y = top; y < top + lines; ++y) {
        std::memcpy(rows.origin + y * rows.step + x, pixels + y * pitch + x,
                    static_cast<size_t>(columns * pixelBytes));
      }
    };
    copy(0, 0, fullWidth, b);
    copy(0, b, b, height);
    copy(b + width, b, b, height);
    copy(0, b + height, fullWidth, b);
  });
}

}  // namespace

u32 MemsetColor(COCLBase& ocl, IPictavoSurface* dst, u32 colour) noexcept {
  if (dst == nullptr) return PICTAVO_E_POINTER;
  ImageDesc image;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &image));
  if (!IsPicture(image) || (image.bytesPerPixel != 1 && image.bytesPerPixel != 4)) {
    return PICTAVO_E_INVALIDARG;
  }
  const u32 word = image.bytesPerPixel == 4 ? colour : (colour & 0xFF) * 0x01010101;
  return OnDevice(ocl, [&] {
    const cl::Kernel kernel = ocl.GetKernel("MemColor.cl", "MemsetColor_ALL");
    if (kernel == nullptr) return PICTAVO_E_FAIL;
    DevicePicture picture(ocl, ocl.oclMemoryClient());
    PICTAVO_RETURN_IF_FAILED(picture.Allocate(image.width, image.height, image.bytesPerPixel));
    PICTAVO_RETURN_IF_FAILED(picture.Open());
    PICTAVO_RETURN_IF_FAILED(Launch(ocl, kernel, picture.pitch() / 4, image.height,
                                    picture.memory(), picture.pitch() / 4, word));
    return picture.Get(RowsOf(image));
  });
}

u32 Transform(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src,
              const f32 matrix[6]) noexcept {
  ImageDesc to, from;
  if (matrix == nullptr) return PICTAVO_E_POINTER;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &to, src, &from));
  const f32* m = matrix;
  const bool finite = std::isfinite(m[0]) && std::isfinite(m[1]) && std::isfinite(m[2]) &&
                      std::isfinite(m[3]) && std::isfinite(m[4]) && std::isfinite(m[5]);
  if (!finite || !Is32Bit(to) || !Is32Bit(from)) return PICTAVO_E_INVALIDARG;
  return MakeFrom(ocl, to, from, "TransformF.cl", "TransformF_BYTE", m[0], m[1], m[2], m[3], m[4],
                  m[5]);
}

u32 BilinearInterpolation(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src) noexcept {
  ImageDesc to, from;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &to, src, &from));
  if (!Is32Bit(to) || !Is32Bit(from)) return PICTAVO_E_INVALIDARG;
  const f32 stepX = static_cast<f32>(from.width) / static_cast<f32>(to.width);
  const f32 stepY = static_cast<f32>(from.height) / static_cast<f32>(to.height);
  return MakeFrom(ocl, to, from, "Interpolation.cl", "BilinearInterpolation_BYTE", stepX, stepY);
}

u32 FastBlur(COCLBase& ocl, CCommonUtility* client, IPictavoSurface* dst, IPictavoSurface* src,
             u32 radiusX, u32 radiusY) noexcept {
  ImageDesc to, from;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &to, src, &from));
  if (!Is32Bit(to) || !Is32Bit(from) || to.width != from.width || to.height != from.height ||
      radiusX > kLargestRadius || radiusY > kLargestRadius) {
    return PICTAVO_E_INVALIDARG;
  }
  const i32 width = to.width, height = to.height;
  const auto stretches = [](i32 length) { return (i64{length} + kBlurStretch - 1) / kBlurStretch; };
  const auto reciprocal = [](u32 radius) {  // see Mean() in Blur.cl
    const cl::u64 window = 2 * cl::u64{radius} + 1;
    return radius == 0 ? 0 : static_cast<u32>(((cl::u64{1} << 32) + window - 1) / window);
  };
  return OnDevice(ocl, [&] {
    const cl::Kernel alongX = ocl.GetKernel("Blur.cl", "Blur_FastBlur_X_BYTE");
    if (alongX == nullptr) return PICTAVO_E_FAIL;
    const cl::Kernel alongY = ocl.GetKernel("Blur.cl", "Blur_FastBlur_Y_BYTE");
    if (alongY == nullptr) return PICTAVO_E_FAIL;
    DevicePicture picture(ocl, ocl.oclMemoryClient()), between(ocl, client);
    PICTAVO_RETURN_IF_FAILED(picture.Allocate(width, height, 4));
    PICTAVO_RETURN_IF_FAILED(between.Allocate(width, height, 4));
    picture.Put(RowsOf(from), 0, 0);
    PICTAVO_RETURN_IF_FAILED(picture.Open());
    PICTAVO_RETURN_IF_FAILED(between.Open());
    PICTAVO_RETURN_IF_FAILED(Launch(ocl, alongX, stretches(width), height, between.memory(),
                                    picture.memory(), width, height, static_cast<i32>(radiusX),
                                    reciprocal(radiusX)));
    PICTAVO_RETURN_IF_FAILED(Launch(ocl, alongY, width, stretches(height), picture.memory(),
                                    between.memory(), width, height, static_cast<i32>(radiusY),
                                    reciprocal(radiusY)));
    return picture.Get(RowsOf(to));
  });
}

u32 ExtendBoundary(COCLBase& ocl, IPictavoSurface* dst, u32 border) noexcept {
  if (dst == nullptr) return PICTAVO_E_POINTER;
  ImageDesc image;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &image));
  const i64 b = border;
  const i64 fullWidth = image.width + 2 * b, fullHeight = image.height + 2 * b;
  // Tight rows under a shorter pitch would lead outside the buffer.
  const bool shortRows = image.bytesPerPixel == 1 && b != 0 && image.pitch < fullWidth;
  if (!IsPicture(image) || fullWidth > image.bufferWidth || fullHeight > image.bufferHeight ||
      shortRows || (image.bytesPerPixel != 1 && image.bytesPerPixel != 4)) {
    return PICTAVO_E_INVALIDARG;
  }
  return OnDevice(ocl, [&] { return ExtendOnDevice(ocl, image, static_cast<i32>(border)); });
}

}  // namespace pictavo::opencl
