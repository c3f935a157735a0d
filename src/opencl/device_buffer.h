#ifndef PICTAVO_OPENCL_DEVICE_BUFFER_H_
#define PICTAVO_OPENCL_DEVICE_BUFFER_H_

#include "frame/common_utility.h"
#include "opencl/opencl_util.h"

namespace pictavo {

/// Memory of the memory manager's that a device works on, in place where it can. Made once and kept
/// while it is large enough: making it costs fresh pages here and an upload to a card.
class DeviceBuffer {
 public:
  /// @param access what kernels do with it: cl::kMemReadOnly, kMemWriteOnly or kMemReadWrite
  explicit DeviceBuffer(cl::u64 access) noexcept : access_(access) {}
  DeviceBuffer(const DeviceBuffer&) = delete;
  DeviceBuffer& operator=(const DeviceBuffer&) = delete;

  /// Makes memory for `size` bytes, unless there is enough. @return the memory manager's code;
  /// PICTAVO_E_OUTOFMEMORY also without a client
  u32 Allocate(CCommonUtility* client, const OpenCLEntryPoints& cl, cl::u64 size) noexcept;

  /// Hands the memory to the device, unless it has it. @return the runtime's code
  i32 Open(const OpenCLEntryPoints& cl, cl::Context context) noexcept;

  // Move the first bytes, where the device does not work on this memory itself. Download waits for
  // what was enqueued before. @return the runtime's code
  i32 Upload(const OpenCLEntryPoints& cl, cl::Queue queue, size_t size) const noexcept;
  i32 Download(const OpenCLEntryPoints& cl, cl::Queue queue, size_t size) const noexcept;

  /// Gives everything back. The device is at rest.
  void Release(const OpenCLEntryPoints& cl) noexcept;

  u8* pixels() const noexcept { return pixels_; }
  cl::Memory memory() const noexcept { return memory_; }

 private:
  cl::u64 access_;
  CCommonUtility* client_ = nullptr;
  IMemoryBuffer* buffer_ = nullptr;
  u8* pixels_ = nullptr;  // in buffer_, at the start of a page
  size_t size_ = 0;       // from there, whole pages
  cl::Memory memory_ = nullptr;
};

}  // namespace pictavo

#endif  // PICTAVO_OPENCL_DEVICE_BUFFER_H_
