#include "opencl/device_buffer.h"

#include <cstdint>

namespace pictavo {
namespace {

// Devices without memory of their own work in place on whole pages only.
constexpr cl::u64 kPage = 4096;
constexpr cl::u64 kMostPages = INT32_MAX;

}  // namespace

u32 DeviceBuffer::Allocate(CCommonUtility* client, const OpenCLEntryPoints& cl,
                           cl::u64 size) noexcept {
  if (size <= size_) return PICTAVO_S_OK;
  Release(cl);
  const cl::u64 pages = size / kPage + (size % kPage != 0);
  if (client == nullptr || pages >= kMostPages) return PICTAVO_E_OUTOFMEMORY;
  client_ = client;
  // One page more, since the manager aligns to less.
  const u32 result =
      client->AllocateBuffer(&buffer_, 0, 0, kPage, static_cast<u32>(pages) + 1, kPage, 0, 0, 0, 0);
  if (static_cast<i32>(result) < 0) return result;
  const auto address = reinterpret_cast<std::uintptr_t>(buffer_->GetPixels());
  pixels_ = reinterpret_cast<u8*>((address + kPage - 1) / kPage * kPage);
  size_ = pages * kPage;
  return result;
}

i32 DeviceBuffer::Open(const OpenCLEntryPoints& cl, cl::Context context) noexcept {
  if (memory_ != nullptr) return cl::kSuccess;
  i32 result = cl::kSuccess;
  memory_ =
      Made(cl.clCreateBuffer(context, access_ | cl::kMemUseHostPointer, size_, pixels_, &result),
           &result);
  return result;
}

i32 DeviceBuffer::Upload(const OpenCLEntryPoints& cl, cl::Queue queue, size_t size) const noexcept {
  return cl.clEnqueueWriteBuffer(queue, memory_, 0, 0, size, pixels_, 0, nullptr, nullptr);
}

i32 DeviceBuffer::Download(const OpenCLEntryPoints& cl, cl::Queue queue,
                           size_t size) const noexcept {
  return cl.clEnqueueReadBuffer(queue, memory_, 1, 0, size, pixels_, 0, nullptr, nullptr);
}

void DeviceBuffer::Release(const OpenCLEntryPoints& cl) noexcept {
  if (memory_ != nullptr) cl.clReleaseMemObject(memory_);
  if (buffer_ != nullptr) client_->FreeBuffer(&buffer_);
  memory_ = nullptr;
  buffer_ = nullptr;
  pixels_ = nullptr;
  size_ = 0;
}

}  // namespace pictavo
