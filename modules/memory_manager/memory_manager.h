// Interface of VKTMemMgr.dll, the sibling module that hands out pixel buffers.
//
// Exports, one pair a version: CreateVKTMemMgrN(client name, &manager) fills the pointer, with null
// when it fails; ReleaseVKTMemMgrN(&manager) takes it back and nulls it. N is nothing (version 1),
// 3, 4 or 5; there is no version 2. Each version extends the one before it, so that one instance
// serves every older view.
#ifndef PICTAVO_MODULES_MEMORY_MANAGER_H_
#define PICTAVO_MODULES_MEMORY_MANAGER_H_

#include <stdint.h>

namespace pictavo {

/// A pixel buffer. Lives until it is given to ReleaseBuffer of the manager that made it.
struct IMemoryBuffer {
  virtual uint32_t Reserved0() noexcept = 0;
  virtual uint32_t Reserved1() noexcept = 0;
  virtual uint32_t Reserved2() noexcept = 0;
  virtual uint32_t Reserved3() noexcept = 0;
  /// First byte of the pixels, or null when the buffer has none.
  virtual void* GetPixels() noexcept = 0;
  /// Size of the pixels in bytes.
  virtual uint64_t GetSize() noexcept = 0;

 protected:
  ~IMemoryBuffer() = default;
};

/// Names the graphics adapter that a buffer is meant for; all zero for none.
struct AdapterIdentity {
  uint8_t bytes[16];

  bool operator==(const AdapterIdentity&) const = default;
};

/// What CreateBufferWithIdentity makes: the arguments of CreateBuffer, and flags.
struct MemoryBufferDesc {
  uint32_t kind;
  uint32_t format;
  uint32_t flags;
  uint32_t width;
  uint32_t height;
  uint32_t pitch;
  uint32_t usage;
};

/// Version 1. Results are 0 for success and an HRESULT-like error with the high bit set otherwise.
struct IMemoryManager {
  virtual uint32_t Reserved0() noexcept = 0;
  /// Makes a buffer of at least height * pitch bytes.
  /// @param buffer receives the buffer, or null on failure
  /// @param kind 0 for plain memory
  /// @param format 0 for one byte a pixel, anything else for four
  /// @param width, height in pixels
  /// @param pitch in bytes
  /// @param usage left to the manager
  virtual uint32_t CreateBuffer(IMemoryBuffer** buffer, uint32_t kind, uint32_t format,
                                uint32_t width, uint32_t height, uint32_t pitch,
                                uint32_t usage) noexcept = 0;
  virtual uint32_t Reserved2() noexcept = 0;
  virtual uint32_t Reserved3() noexcept = 0;
  virtual uint32_t Reserved4() noexcept = 0;
  virtual uint32_t Reserved5() noexcept = 0;
  virtual uint32_t Reserved6() noexcept = 0;
  virtual uint32_t Reserved7() noexcept = 0;
  virtual uint32_t Reserved8() noexcept = 0;
  virtual uint32_t Reserved9() noexcept = 0;
  virtual uint32_t Reserved10() noexcept = 0;
  /// Takes a buffer back and nulls the pointer. @param flag 1
  virtual uint32_t ReleaseBuffer(IMemoryBuffer** buffer, uint32_t flag) noexcept = 0;

 protected:
  ~IMemoryManager() = default;
};

/// Version 3.
struct IMemoryManager3 : IMemoryManager {
  virtual uint32_t Reserved12() noexcept = 0;
  virtual uint32_t Reserved13() noexcept = 0;
  virtual uint32_t Reserved14() noexcept = 0;
  virtual uint32_t Reserved15() noexcept = 0;
  virtual uint32_t Reserved16() noexcept = 0;
  virtual uint32_t Reserved17() noexcept = 0;
  virtual uint32_t Reserved18() noexcept = 0;
  virtual uint32_t Reserved19() noexcept = 0;
  virtual uint32_t Reserved20() noexcept = 0;
  virtual uint32_t Reserved21() noexcept = 0;
  virtual uint32_t Reserved22() noexcept = 0;
  virtual uint32_t Reserved23() noexcept = 0;
  virtual uint32_t Reserved24() noexcept = 0;
  virtual uint32_t Reserved25() noexcept = 0;
  /// CreateBuffer for one adapter.
  virtual uint32_t CreateBufferWithIdentity(IMemoryBuffer** buffer, const AdapterIdentity* identity,
                                            const MemoryBufferDesc* desc) noexcept = 0;

 protected:
  ~IMemoryManager3() = default;
};

/// Version 4. Adds nothing that the library calls.
struct IMemoryManager4 : IMemoryManager3 {
 protected:
  ~IMemoryManager4() = default;
};

/// Version 5. Adds nothing that the library calls.
struct IMemoryManager5 : IMemoryManager4 {
 protected:
  ~IMemoryManager5() = default;
};

template <typename Manager>
using CreateMemoryManagerFn = uint32_t(const wchar_t* clientName, Manager** manager);
template <typename Manager>
using ReleaseMemoryManagerFn = uint32_t(Manager** manager);

}  // namespace pictavo

#endif  // PICTAVO_MODULES_MEMORY_MANAGER_H_
