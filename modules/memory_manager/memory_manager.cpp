#include "memory_manager/memory_manager.h"

#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>

#include "pictavo/pictavo.h"
#include "platform/critical_section.h"

namespace pictavo {
namespace {

constexpr std::align_val_t kPixelAlignment{64};  // a cache line, and more than any vector load

class Buffer final : public IMemoryBuffer {
 public:
  /// @throws std::bad_alloc
  explicit Buffer(std::uint64_t size) : size_(size), pixels_(operator new(size, kPixelAlignment)) {}
  ~Buffer() { operator delete(pixels_, kPixelAlignment); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  u32 Reserved0() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved1() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved2() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved3() noexcept override { return PICTAVO_E_NOTIMPL; }
  void* GetPixels() noexcept override { return pixels_; }
  std::uint64_t GetSize() noexcept override { return size_; }

 private:
  std::uint64_t size_;
  void* pixels_;
};

/// Makes buffers of plain memory only, whatever the adapter. Owns them: those that its client has
/// not given back go with it.
class MemoryManager final : public IMemoryManager5 {
 public:
  /// @throws std::bad_alloc
  explicit MemoryManager(const wchar_t* clientName)
      : clientName_(clientName != nullptr ? clientName : L"") {}

  u32 Reserved0() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 CreateBuffer(IMemoryBuffer** buffer, u32 kind, u32 format, u32 width, u32 height, u32 pitch,
                   u32 usage) noexcept override;
  u32 Reserved2() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved3() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved4() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved5() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved6() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved7() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved8() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved9() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved10() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 ReleaseBuffer(IMemoryBuffer** buffer, u32 flag) noexcept override;
  u32 Reserved12() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved13() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved14() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved15() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved16() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved17() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved18() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved19() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved20() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved21() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved22() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved23() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved24() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 Reserved25() noexcept override { return PICTAVO_E_NOTIMPL; }
  u32 CreateBufferWithIdentity(IMemoryBuffer** buffer, const AdapterIdentity* identity,
                               const MemoryBufferDesc* desc) noexcept override;

 private:
  std::wstring clientName_;  // tells whose a manager is when its memory is looked at
  CriticalSection lock_;     // buffers_
  std::unordered_map<IMemoryBuffer*, std::unique_ptr<Buffer>> buffers_;
};

u32 MemoryManager::CreateBuffer(IMemoryBuffer** buffer, u32 kind, u32, u32, u32 height, u32 pitch,
                                u32) noexcept {
  if (buffer == nullptr) return PICTAVO_E_POINTER;
  *buffer = nullptr;
  const std::uint64_t size = std::uint64_t{height} * pitch;  // two 32-bit factors always fit
  if (kind != 0 || size == 0) return PICTAVO_E_INVALIDARG;
  try {
    auto made = std::make_unique<Buffer>(size);
    IMemoryBuffer* key = made.get();
    const std::lock_guard guard(lock_);
    buffers_.emplace(key, std::move(made));
    *buffer = key;
  } catch (const std::bad_alloc&) {
    return PICTAVO_E_OUTOFMEMORY;
  }
  return PICTAVO_S_OK;
}

u32 MemoryManager::CreateBufferWithIdentity(IMemoryBuffer** buffer, const AdapterIdentity*,
                                            const MemoryBufferDesc* desc) noexcept {
  if (buffer == nullptr) return PICTAVO_E_POINTER;
  *buffer = nullptr;
  if (desc == nullptr) return PICTAVO_E_POINTER;
  return CreateBuffer(buffer, desc->kind, desc->format, desc->width, desc->height, desc->pitch,
                      desc->usage);
}

u32 MemoryManager::ReleaseBuffer(IMemoryBuffer** buffer, u32) noexcept {
  if (buffer == nullptr) return PICTAVO_E_POINTER;
  if (*buffer == nullptr) return PICTAVO_S_OK;
  const auto taken = [&] {
    const std::lock_guard guard(lock_);
    return buffers_.extract(*buffer);  // freed outside the lock
  }();
  if (taken.empty()) return PICTAVO_E_INVALIDARG;
  *buffer = nullptr;
  return PICTAVO_S_OK;
}

}  // namespace
}  // namespace pictavo

extern "C" {

uint32_t CreateVKTMemMgr5(const wchar_t* clientName, pictavo::IMemoryManager5** manager) {
  if (manager == nullptr) return pictavo::PICTAVO_E_POINTER;
  *manager = nullptr;
  try {
    *manager = new pictavo::MemoryManager(clientName);
  } catch (const std::bad_alloc&) {
    return pictavo::PICTAVO_E_OUTOFMEMORY;
  }
  return pictavo::PICTAVO_S_OK;
}

uint32_t ReleaseVKTMemMgr5(pictavo::IMemoryManager5** manager) {
  if (manager == nullptr) return pictavo::PICTAVO_E_POINTER;
  delete static_cast<pictavo::MemoryManager*>(*manager);
  *manager = nullptr;
  return pictavo::PICTAVO_S_OK;
}

}  // extern "C"
