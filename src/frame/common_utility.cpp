#include "frame/common_utility.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <new>

#include "platform/module.h"

namespace pictavo {
namespace {

constexpr u32 kBufferFlags = 0x10DF;     // what the manager expects of an identity-aware buffer
constexpr u32 kClearBlack = 0x00108080;  // bytes 0x80, 0x80, 0x10, 0x00: black, clear, in V U Y A
constexpr u32 kReleaseFlag = 1;

bool Failed(u32 result) { return static_cast<i32>(result) < 0; }

/// Rounds up to a multiple of `alignment`; false when the result leaves 32 bits.
bool RoundUp(u32* value, u32 alignment) {
  const std::uint64_t rounded = (std::uint64_t{*value} + alignment - 1) / alignment * alignment;
  *value = static_cast<u32>(rounded);
  return rounded <= UINT32_MAX;
}

/// Rounds a new buffer's sizes up. A width that grows takes its pitch with it; one that is a
/// multiple already keeps the pitch it has. False when a size leaves 32 bits.
bool Align(u32 alignment, u32 format, u32* width, u32* height, u32* pitch) {
  if (alignment == 0) return true;
  if (*width % alignment != 0) {
    const u32 pixelBytes = format != 0 ? 4 : 1;
    if (!RoundUp(width, alignment) || *width > UINT32_MAX / pixelBytes) return false;
    *pitch = *width * pixelBytes;
  }
  return RoundUp(height, alignment);
}

void ClearPixels(IMemoryBuffer* buffer, u32 format, std::uint64_t pictureBytes) {
  void* pixels = buffer->GetPixels();
  if (format <= 1) {
    std::memset(pixels, 0, buffer->GetSize());
  } else {
    std::fill_n(static_cast<u32*>(pixels), std::min(pictureBytes, buffer->GetSize()) / 4,
                kClearBlack);
  }
}

template <std::size_t size>
void CopyName(const wchar_t* from, wchar_t (&to)[size]) {
  const std::size_t length = std::min(std::wcslen(from), size - 1);
  std::wmemmove(to, from, length);  // `from` may be `to`
  to[length] = L'\0';
}

}  // namespace

AdapterIdentity CCommonUtility::processAdapterIdentity = {};

CCommonUtility* CCommonUtility::Create(const char* tag, const void* owner) noexcept {
  char text[256];
  std::snprintf(text, sizeof(text), "%s(0x%08X)", tag,
                static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(owner)));
  wchar_t name[256] = {};
  std::copy_n(text, std::strlen(text), name);
  return new (std::nothrow) CCommonUtility(name);
}

CCommonUtility::CCommonUtility(const wchar_t* name) noexcept {
  CopyName(name, name_);  // also when attaching fails, for the attempts that follow
  Attach(name_);
}

CCommonUtility::~CCommonUtility() { Detach(); }

u32 CCommonUtility::Attach(const wchar_t* name) noexcept {
  Name wanted;
  CopyName(name, wanted);
  if (version_ >= 1) {
    if (std::wcscmp(name_, wanted) == 0) return PICTAVO_S_OK;
    Detach();
  }
  if (module_ == nullptr) module_ = LoadLibraryW(L"VKTMemMgr.dll");
  if (module_ == nullptr) return PICTAVO_E_FAIL;

  // Only a missing entry point sends us on to an older one; a refusal by an existing one is final.
  const bool found = TryCreate("CreateVKTMemMgr5", wanted, 5, &manager5_) ||
                     TryCreate("CreateVKTMemMgr4", wanted, 4, &manager4_) ||
                     TryCreate("CreateVKTMemMgr3", wanted, 3, &manager3_) ||
                     TryCreate("CreateVKTMemMgr", wanted, 1, &manager_);
  if (!found) return PICTAVO_E_FAIL;  // the module stays for the next attempt
  FillOlderViews();
  if (manager_ == nullptr) {
    Unload();
    return PICTAVO_E_FAIL;
  }
  CopyName(wanted, name_);
  return PICTAVO_S_OK;
}

u32 CCommonUtility::Detach() noexcept {
  if (module_ == nullptr) return PICTAVO_S_OK;
  u32 result = PICTAVO_S_OK;
  switch (version_) {
    case 1:
      ReleaseView("ReleaseVKTMemMgr", &manager_);
      break;
    case 3:
      ReleaseView("ReleaseVKTMemMgr3", &manager3_);
      break;
    case 4:
      ReleaseView("ReleaseVKTMemMgr4", &manager4_);
      break;
    case 5:
      ReleaseView("ReleaseVKTMemMgr5", &manager5_);
      break;
    default:
      result = PICTAVO_E_FAIL;
  }
  Unload();
  return result;
}

u32 CCommonUtility::AllocateBuffer(IMemoryBuffer** buffer, u32 kind, u32 format, u32 width,
                                   u32 height, u32 pitch, i32 clear, u32 usage, std::uint64_t,
                                   u32 alignment) noexcept {
  u32 result = Attach(name_);
  if (Failed(result)) return result;
  if (height == 0 || pitch == 0) return PICTAVO_E_INVALIDARG;
  if (*buffer == nullptr || (*buffer)->GetSize() < std::uint64_t{height} * pitch) {
    if (!Align(alignment, format, &width, &height, &pitch)) return PICTAVO_E_INVALIDARG;
    ReleaseBuffer(buffer);
    result = CreateBuffer(buffer, {kind, format, kBufferFlags, width, height, pitch, usage});
    if (Failed(result)) return result;
  }
  if (kind == 0 && clear != 0) {
    if ((*buffer)->GetPixels() == nullptr) return PICTAVO_E_OUTOFMEMORY;
    ClearPixels(*buffer, format, std::uint64_t{height} * pitch);
  }
  return result;
}

u32 CCommonUtility::FreeBuffer(IMemoryBuffer** buffer) noexcept {
  if (*buffer == nullptr) return PICTAVO_S_OK;
  const u32 result = Attach(name_);
  if (Failed(result)) return result;
  ReleaseBuffer(buffer);
  return PICTAVO_S_OK;
}

/// True when the entry point exists, whatever it answered.
template <typename Manager>
bool CCommonUtility::TryCreate(const char* entryPoint, const wchar_t* name, i32 version,
                               Manager** view) noexcept {
  auto* create = EntryPoint<CreateMemoryManagerFn<Manager>>(module_, entryPoint);
  if (create == nullptr) return false;
  create(name, view);
  version_ = version;
  return true;
}

template <typename Manager>
void CCommonUtility::ReleaseView(const char* entryPoint, Manager** view) noexcept {
  auto* release = EntryPoint<ReleaseMemoryManagerFn<Manager>>(module_, entryPoint);
  if (release != nullptr && *view != nullptr) release(view);
}

void CCommonUtility::FillOlderViews() noexcept {
  if (manager5_ != nullptr) manager4_ = manager5_;
  if (manager4_ != nullptr) manager3_ = manager4_;
  if (manager3_ != nullptr) manager_ = manager3_;
}

u32 CCommonUtility::CreateBuffer(IMemoryBuffer** buffer, const MemoryBufferDesc& desc) noexcept {
  const u32 result = manager3_ != nullptr && adapterIdentity_ != AdapterIdentity{}
                         ? manager3_->CreateBufferWithIdentity(buffer, &adapterIdentity_, &desc)
                         : manager_->CreateBuffer(buffer, desc.kind, desc.format, desc.width,
                                                  desc.height, desc.pitch, desc.usage);
  if (Failed(result)) *buffer = nullptr;  // whatever the manager left there
  if (*buffer != nullptr && (*buffer)->GetPixels() != nullptr) return result;
  ReleaseBuffer(buffer);
  return PICTAVO_E_OUTOFMEMORY;
}

void CCommonUtility::ReleaseBuffer(IMemoryBuffer** buffer) noexcept {
  if (*buffer != nullptr) manager_->ReleaseBuffer(buffer, kReleaseFlag);
  *buffer = nullptr;
}

/// Forgets the manager.
void CCommonUtility::Unload() noexcept {
  manager_ = nullptr;
  manager3_ = nullptr;
  manager4_ = nullptr;
  manager5_ = nullptr;
  version_ = -1;
  FreeLibrary(module_);
  module_ = nullptr;
}

}  // namespace pictavo
