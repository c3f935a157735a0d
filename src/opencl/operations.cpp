#include "opencl/operations.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "cpu/geometry/border.h"
#include "frame/surface.h"

namespace pictavo::opencl {
namespace {

constexpr u32 kLargestRadius = 2047;
constexpr i32 kLargestSize = INT32_MAX / 4;  // a row's bytes and the kernels' sums fit 32 bits
constexpr size_t kGroup = 64;                // work-items that run together
constexpr i32 kBlurStretch = 64;             // pixels a work-item of Blur.cl slides along
constexpr i64 kMostBorderPixels = i64{1} << 40;

/// Rows of pixels in the host's memory.
struct Rows {
  u8* first;
  i64 pitch;
  i64 bytes;  // in a row
  i32 count;
};

Rows RowsOf(const ImageDesc& image) {
  return {static_cast<u8*>(image.data), image.pitch, i64{image.width} * image.bytesPerPixel,
          image.height};
}

bool IsPicture(const ImageDesc& image) noexcept {
  return image.data != nullptr && image.memoryKind != PICTAVO_MEMORY_D3D11_TEXTURE &&
         image.width >= 1 && image.height >= 1 && image.width <= kLargestSize &&
         image.height <= kLargestSize;
}

bool Is32Bit(const ImageDesc& image) noexcept {
  return IsPicture(image) && image.bytesPerPixel == 4;
}

i64 Stretches(i32 length) { return (i64{length} + kBlurStretch - 1) / kBlurStretch; }

/// See Mean() in Blur.cl.
u32 Reciprocal(u32 radius) {
  const cl::u64 window = 2 * cl::u64{radius} + 1;
  return static_cast<u32>(((cl::u64{1} << 32) + window - 1) / window);
}

/// `count` rows of `bytes` each.
void CopyRows(u8* to, i64 toPitch, const u8* from, i64 fromPitch, i64 bytes, i64 count) {
  for (i64 y = 0; y < count; ++y) {
    std::memcpy(to + y * toPitch, from + y * fromPitch, static_cast<size_t>(bytes));
  }
}

/// A packed picture in one of the device's buffers.
class DevicePicture {
 public:
  DevicePicture(COCLBase& ocl, DeviceBuffer& buffer) noexcept : ocl_(ocl), buffer_(buffer) {}

  /// Makes room; rows are padded to whole 32-bit words.
  u32 Reserve(CCommonUtility* client, i64 rowBytes, i64 rows) noexcept;

  // Move what is in pixels() to the device, and back when it is done.
  u32 Upload() noexcept { return ocl_.Check(buffer_.Upload(ocl_.cl(), ocl_.queue(), size_)); }
  u32 Download() noexcept { return ocl_.Check(buffer_.Download(ocl_.cl(), ocl_.queue(), size_)); }

  // The same, from and to the host's rows.
  u32 Put(const Rows& from) noexcept;
  u32 Get(const Rows& to) noexcept;

  u8* pixels() const noexcept { return buffer_.pixels(); }
  cl::Memory memory() const noexcept { return buffer_.memory(); }
  i64 pitch() const noexcept { return pitch_; }

 private:
  COCLBase& ocl_;
  DeviceBuffer& buffer_;
  i64 pitch_ = 0;
  size_t size_ = 0;
};

u32 DevicePicture::Reserve(CCommonUtility* client, i64 rowBytes, i64 rows) noexcept {
  pitch_ = (rowBytes + 3) / 4 * 4;
  size_ = static_cast<size_t>(pitch_ * rows);
  PICTAVO_RETURN_IF_FAILED(buffer_.Allocate(client, ocl_.cl(), size_));
  const i32 opened = buffer_.Open(ocl_.cl(), ocl_.context());
  const u32 result = ocl_.Check(opened);
  // Which may be memory, or what drivers say of a lost device.
  return opened == cl::kOutOfResources ? PICTAVO_E_OUTOFMEMORY : result;
}

u32 DevicePicture::Put(const Rows& from) noexcept {
  CopyRows(pixels(), pitch_, from.first, from.pitch, from.bytes, from.count);
  return Upload();
}

u32 DevicePicture::Get(const Rows& to) noexcept {
  PICTAVO_RETURN_IF_FAILED(Download());
  CopyRows(to.first, to.pitch, pixels(), pitch_, to.bytes, to.count);
  return PICTAVO_S_OK;
}

/// Runs a kernel over columns x rows work-items, and some more columns: groups of one fixed size
/// save runtimes from compiling a kernel anew for each size of picture.
template <typename... Arguments>
u32 Launch(COCLBase& ocl, cl::Kernel kernel, i64 columns, i64 rows,
           const Arguments&... arguments) noexcept {
  u32 index = 0;
  i32 result = cl::kSuccess;
  const auto set = [&](const auto& argument) {
    result = ocl.cl().clSetKernelArg(kernel, index++, sizeof(argument), &argument);
    return result == cl::kSuccess;
  };
  const size_t group[] = {kGroup, 1};
  const size_t global[] = {(static_cast<size_t>(columns) + kGroup - 1) / kGroup * kGroup,
                           static_cast<size_t>(rows)};
  const auto enqueue = [&](const size_t* local) {
    return ocl.cl().clEnqueueNDRangeKernel(ocl.queue(), kernel, 2, nullptr, global, local, 0,
                                           nullptr, nullptr);
  };
  if ((set(arguments) && ...)) result = enqueue(group);
  // A device that cannot run such a group chooses one.
  if (result == cl::kInvalidWorkGroupSize || result == cl::kInvalidWorkItemSize) {
    result = enqueue(nullptr);
  }
  return ocl.Check(result);
}

/// Runs an operation's work under the lock, with a program's kernels. Work that failed has written
/// nothing to the host: short of memory it runs once more, without what earlier calls kept.
template <typename Work>
u32 OnDevice(COCLBase& ocl, const char* programFile, Work work) noexcept {
  const std::lock_guard guard(ocl.OpenCLLock());
  const auto run = [&]() -> u32 {
    try {
      if (!ocl.EnsureOpenCL()) return PICTAVO_E_FAIL;
      const COCLBase::Kernels* kernels = ocl.GetKernels(programFile);
      return kernels != nullptr ? work(*kernels) : PICTAVO_E_FAIL;
    } catch (const std::bad_alloc&) {
      return PICTAVO_E_OUTOFMEMORY;
    }
  };
  u32 result = run();
  if (result == PICTAVO_E_OUTOFMEMORY) {
    ocl.Recover();
    result = run();
  }
  if (static_cast<i32>(result) < 0) ocl.Recover();
  return result;
}

/// Runs a kernel that makes each pixel of the destination from the source.
template <typename... Arguments>
u32 MakeFrom(COCLBase& ocl, const ImageDesc& dst, const ImageDesc& src, const char* program,
             const Arguments&... arguments) noexcept {
  return OnDevice(ocl, program, [&](const COCLBase::Kernels& kernels) {
    DevicePicture from(ocl, ocl.buffers.source), to(ocl, ocl.buffers.result);
    PICTAVO_RETURN_IF_FAILED(from.Reserve(ocl.oclMemoryClient(), src.width * i64{4}, src.height));
    PICTAVO_RETURN_IF_FAILED(to.Reserve(ocl.oclMemoryClient(), dst.width * i64{4}, dst.height));
    PICTAVO_RETURN_IF_FAILED(from.Put(RowsOf(src)));
    PICTAVO_RETURN_IF_FAILED(Launch(ocl, kernels[0], dst.width, dst.height, to.memory(), dst.width,
                                    from.memory(), src.width, src.height, arguments...));
    return to.Get(RowsOf(dst));
  });
}

/// Bytes from row to row, where ExtendBoundary is concerned: whole pixels.
i64 StepOf(const ImageDesc& image) {
  return i64{image.pitch} / image.bytesPerPixel * image.bytesPerPixel;
}

/// Whether parts of the border lie in each other or in the picture, so that it counts in which
/// order they are written. Byte planes lie tightly whatever their pitch says, which then only
/// places the border.
bool OverlapsItself(const ImageDesc& image, i64 border) {
  const i64 tight = (image.width + 2 * border) * image.bytesPerPixel;
  return image.bytesPerPixel == 1 ? image.pitch != tight : std::abs(StepOf(image)) < tight;
}

/// Copies the picture's edges: its top row, bottom row, left column and right column.
void TakeEdges(const ImageDesc& image, u8* to) {
  const i64 bytes = image.bytesPerPixel, step = StepOf(image), row = image.width * bytes;
  const u8* const first = static_cast<const u8*>(image.data);
  CopyRows(to, row, first, (image.height - 1) * step, row, 2);
  to += 2 * row;
  CopyRows(to, bytes, first, step, bytes, image.height);
  CopyRows(to + image.height * bytes, bytes, first + row - bytes, step, bytes, image.height);
}

/// Copies the border into place: the rows above the picture, those below it, the columns left of it
/// and those right of it.
void PlaceBorder(const ImageDesc& image, i64 border, const u8* from) {
  const i64 bytes = image.bytesPerPixel, step = StepOf(image), height = image.height;
  const i64 side = border * bytes, row = image.width * bytes, across = row + 2 * side;
  u8* const left = static_cast<u8*>(image.data) - side;
  CopyRows(left - border * step, step, from, across, across, border);
  from += across * border;
  CopyRows(left + height * step, step, from, across, across, border);
  from += across * border;
  CopyRows(left, step, from, side, side, height);
  CopyRows(left + side + row, step, from + side * height, side, side, height);
}

/// ExtendBoundary's work: only the picture's edges go to the device and only the border comes back.
u32 ExtendOnDevice(COCLBase& ocl, const COCLBase::Kernels& kernels, const ImageDesc& image,
                   i32 border) noexcept {
  const i64 b = border, width = image.width, height = image.height, bytes = image.bytesPerPixel;
  const i64 above = (width + 2 * b) * b, beside = b * height;
  if (above + beside > kMostBorderPixels) return PICTAVO_E_OUTOFMEMORY;
  DevicePicture edges(ocl, ocl.buffers.source), around(ocl, ocl.buffers.result);
  PICTAVO_RETURN_IF_FAILED(edges.Reserve(ocl.oclMemoryClient(), 2 * (width + height) * bytes, 1));
  PICTAVO_RETURN_IF_FAILED(around.Reserve(ocl.oclMemoryClient(), 2 * (above + beside) * bytes, 1));
  TakeEdges(image, edges.pixels());
  PICTAVO_RETURN_IF_FAILED(edges.Upload());
  const auto launch = [&](cl::Kernel kernel, i64 columns, i64 lines) {
    return Launch(ocl, kernel, columns, lines, around.memory(), edges.memory(), image.width,
                  image.height, border, image.bytesPerPixel);
  };
  PICTAVO_RETURN_IF_FAILED(launch(kernels[0], above + beside, 1));
  PICTAVO_RETURN_IF_FAILED(launch(kernels[1], b, height));
  PICTAVO_RETURN_IF_FAILED(launch(kernels[2], width + 2 * b, b));
  PICTAVO_RETURN_IF_FAILED(around.Download());
  PlaceBorder(image, b, around.pixels());
  return PICTAVO_S_OK;
}

}  // namespace

u32 MemsetColorOpenCL(COCLBase& ocl, IPictavoSurface* dst, u32 colour) noexcept {
  if (dst == nullptr) return PICTAVO_E_POINTER;
  ImageDesc image;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &image));
  if (!IsPicture(image) || (image.bytesPerPixel != 1 && image.bytesPerPixel != 4)) {
    return PICTAVO_E_INVALIDARG;
  }
  const u32 word = image.bytesPerPixel == 4 ? colour : (colour & 0xFF) * 0x01010101;
  return OnDevice(ocl, "MemColor.cl", [&](const COCLBase::Kernels& kernels) {
    DevicePicture picture(ocl, ocl.buffers.result);
    PICTAVO_RETURN_IF_FAILED(picture.Reserve(ocl.oclMemoryClient(),
                                             i64{image.width} * image.bytesPerPixel, image.height));
    const i32 words = static_cast<i32>(picture.pitch() / 4);
    PICTAVO_RETURN_IF_FAILED(
        Launch(ocl, kernels[0], words, image.height, picture.memory(), words, word));
    return picture.Get(RowsOf(image));
  });
}

u32 TransformOpenCL(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src,
                    const f32 matrix[6]) noexcept {
  ImageDesc to, from;
  if (matrix == nullptr) return PICTAVO_E_POINTER;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &to, src, &from));
  const f32* m = matrix;
  const bool finite = std::all_of(m, m + 6, [](f32 number) { return std::isfinite(number); });
  if (!finite || !Is32Bit(to) || !Is32Bit(from)) return PICTAVO_E_INVALIDARG;
  return MakeFrom(ocl, to, from, "TransformF.cl", m[0], m[1], m[2], m[3], m[4], m[5]);
}

u32 BilinearInterpolationOpenCL(COCLBase& ocl, IPictavoSurface* dst,
                                IPictavoSurface* src) noexcept {
  ImageDesc to, from;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &to, src, &from));
  if (!Is32Bit(to) || !Is32Bit(from)) return PICTAVO_E_INVALIDARG;
  const f32 stepX = static_cast<f32>(from.width) / static_cast<f32>(to.width);
  const f32 stepY = static_cast<f32>(from.height) / static_cast<f32>(to.height);
  return MakeFrom(ocl, to, from, "Interpolation.cl", stepX, stepY);
}

u32 FastBlurOpenCL(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src, u32 radiusX,
                   u32 radiusY) noexcept {
  ImageDesc to, from;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &to, src, &from));
  if (!Is32Bit(to) || !Is32Bit(from) || to.width != from.width || to.height != from.height ||
      radiusX > kLargestRadius || radiusY > kLargestRadius) {
    return PICTAVO_E_INVALIDARG;
  }
  const bool twice = radiusX != 0 && radiusY != 0;
  CCommonUtility* clientBetween = twice ? ocl.EnsureClientBetween() : nullptr;
  return OnDevice(ocl, "Blur.cl", [&](const COCLBase::Kernels& kernels) {
    const i32 width = to.width, height = to.height;
    DevicePicture source(ocl, ocl.buffers.source), between(ocl, ocl.buffers.between),
        result(ocl, ocl.buffers.result);
    const auto reserve = [&](DevicePicture& picture, CCommonUtility* client) {
      return picture.Reserve(client, i64{4} * width, height);
    };
    PICTAVO_RETURN_IF_FAILED(reserve(source, ocl.oclMemoryClient()));
    PICTAVO_RETURN_IF_FAILED(reserve(result, ocl.oclMemoryClient()));
    if (twice) PICTAVO_RETURN_IF_FAILED(reserve(between, clientBetween));
    PICTAVO_RETURN_IF_FAILED(source.Put(RowsOf(from)));
    DevicePicture* last = &source;
    const auto pass = [&](cl::Kernel kernel, i64 columns, i64 rows, u32 radius,
                          DevicePicture* next) {
      const DevicePicture* before = std::exchange(last, next);
      return Launch(ocl, kernel, columns, rows, next->memory(), before->memory(), width, height,
                    static_cast<i32>(radius), Reciprocal(radius));
    };
    if (radiusX != 0) {
      PICTAVO_RETURN_IF_FAILED(
          pass(kernels[0], Stretches(width), height, radiusX, twice ? &between : &result));
    }
    if (radiusY != 0) {
      PICTAVO_RETURN_IF_FAILED(pass(kernels[1], width, Stretches(height), radiusY, &result));
    }
    return last->Get(RowsOf(to));
  });
}

u32 ExtendBoundaryOpenCL(COCLBase& ocl, IPictavoSurface* dst, u32 border) noexcept {
  if (dst == nullptr) return PICTAVO_E_POINTER;
  ImageDesc image;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, &image));
  const i64 b = border;
  const i64 fullWidth = image.width + 2 * b, fullHeight = image.height + 2 * b;
  // Byte planes: tight rows under a shorter pitch would lead outside the buffer.
  const bool shortRows = image.bytesPerPixel == 1 && b != 0 && image.pitch < fullWidth;
  if (!IsPicture(image) || fullWidth > image.bufferWidth || fullHeight > image.bufferHeight ||
      shortRows || (image.bytesPerPixel != 1 && image.bytesPerPixel != 4)) {
    return PICTAVO_E_INVALIDARG;
  }
  return OnDevice(ocl, "Common.cl", [&](const COCLBase::Kernels& kernels) {
    if (b == 0) return PICTAVO_S_OK;
    if (OverlapsItself(image, b)) return cpu::ExtendBoundary(&image, border);
    return ExtendOnDevice(ocl, kernels, image, static_cast<i32>(border));
  });
}

}  // namespace pictavo::opencl
