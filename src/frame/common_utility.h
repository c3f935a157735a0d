#ifndef PICTAVO_FRAME_COMMON_UTILITY_H_
#define PICTAVO_FRAME_COMMON_UTILITY_H_

#include <windows.h>

#include <cstdint>

#include "memory_manager/memory_manager.h"
#include "pictavo/pictavo.h"

namespace pictavo {

/// Client of the memory manager VKTMemMgr.dll: owns the module and the one manager instance, and
/// allocates and frees pixel buffers. Takes no lock; its owner's lock orders the calls.
class CCommonUtility {
 public:
  /// Attaches at once; when that fails, every later call tries again.
  explicit CCommonUtility(const wchar_t* name) noexcept;
  virtual ~CCommonUtility();
  CCommonUtility(const CCommonUtility&) = delete;
  CCommonUtility& operator=(const CCommonUtility&) = delete;

  /// A client named "tag(0xADDRESS)" from its owner's tag and address, or null when memory is
  /// short.
  static CCommonUtility* Create(const char* tag, const void* owner) noexcept;

  /// Loads the manager, newest version first, unless it is attached under this name already. Names
  /// are cut at 255 characters.
  /// @return PICTAVO_S_OK or PICTAVO_E_FAIL
  u32 Attach(const wchar_t* name) noexcept;

  /// Gives the manager back and unloads its module. @return PICTAVO_S_OK or PICTAVO_E_FAIL
  u32 Detach() noexcept;

  /// Keeps `*buffer` when it holds at least height * pitch bytes, otherwise releases it and creates
  /// another.
  /// @param format 0 for one byte a pixel, anything else for four
  /// @param pitch bytes
  /// @param clear non-zero clears plain memory (kind 0): to 0, or to clear black in luma-chroma
  /// pixels for a format above 1
  /// @param alignment when not 0, width and height of a new buffer are rounded up to multiples of
  /// it; a width that grows replaces the pitch by its own bytes
  /// @return the manager's success code, PICTAVO_E_FAIL without a manager, PICTAVO_E_INVALIDARG for
  /// an empty or too large size, PICTAVO_E_OUTOFMEMORY when no buffer with pixels can be had
  u32 AllocateBuffer(IMemoryBuffer** buffer, u32 kind, u32 format, u32 width, u32 height, u32 pitch,
                     i32 clear, u32 usage, std::uint64_t reserved, u32 alignment) noexcept;

  /// Gives `*buffer` back and nulls it. @return PICTAVO_S_OK, or PICTAVO_E_FAIL without a manager
  u32 FreeBuffer(IMemoryBuffer** buffer) noexcept;

  /// 1, 3, 4 or 5; -1 when not attached.
  i32 version() const noexcept { return version_; }

  /// The adapter that clients made from now on allocate for; all zero for none.
  static AdapterIdentity processAdapterIdentity;

 private:
  using Name = wchar_t[256];

  template <typename Manager>
  bool TryCreate(const char* entryPoint, const wchar_t* name, i32 version, Manager** view) noexcept;
  template <typename Manager>
  void ReleaseView(const char* entryPoint, Manager** view) noexcept;
  void FillOlderViews() noexcept;
  u32 CreateBuffer(IMemoryBuffer** buffer, const MemoryBufferDesc& desc) noexcept;
  void ReleaseBuffer(IMemoryBuffer** buffer) noexcept;
  void Unload() noexcept;

  HMODULE module_ = nullptr;
  IMemoryManager* manager_ = nullptr;
  IMemoryManager3* manager3_ = nullptr;
  IMemoryManager4* manager4_ = nullptr;
  IMemoryManager5* manager5_ = nullptr;
  i32 version_ = -1;
  AdapterIdentity adapterIdentity_ = processAdapterIdentity;
  Name name_ = {};
};

}  // namespace pictavo

#endif  // PICTAVO_FRAME_COMMON_UTILITY_H_
