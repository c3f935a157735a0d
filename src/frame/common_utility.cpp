#include "frame/common_utility.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <iterator>
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

void ClearPixels(IMemoryBuffer* buffer, u32 format, std::uint64_t pictureBytes) {
  void* pixels = buffer->GetPixels();
  if (format <= 1) {
    std::memset(pixels, 0, buffer->GetSize());
  } else {
    std::fill_n(static_cast<u32*>(pixels), std::min(pictureBytes, buffer->GetSize()) / 4,
                kClearBlack);
  }
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
  StoreName(name);  // also when attaching fails, for the attempts that follow
  Attach(name_);
}

CCommonUtility::~CCommonUtility() { Detach(); }

u32 CCommonUtility::Attach(const wchar_t* name) noexcept {
  if (version_ >= 1 && std::wcscmp(name_, name) == 0) return PICTAVO_S_OK;
  Detach();
  module_ = LoadLibraryW(L"VKTMemMgr.dll");
  if (module_ == nullptr) return PICTAVO_E_FAIL;

  // Only a missing entry point sends us on to an older one; a refusal by an existing one is final.
  const bool found = TryCreate("CreateVKTMemMgr5", name, 5, &manager5_) ||
                     TryCreate("CreateVKTMemMgr4", name, 4, &manager4_) ||
                     TryCreate("CreateVKTMemMgr3", name, 3, &manager3_) ||
                     TryCreate("CreateVKTMemMgr", name, 1, &manager_);
  if (found) FillOlderViews();
  if (manager_ == nullptr) {
    version_ = -1;
    FreeLibrary(module_);
    module_ = nullptr;
    return PICTAVO_E_FAIL;
  }
  StoreName(name);
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
  manager_ = nullptr;
  manager3_ = nullptr;
  manager4_ = nullptr;
  manager5_ = nullptr;
  version_ = -1;
  FreeLibrary(module_);
  module_ = nullptr;
  return result;
}

u32 CCommonUtility::AllocateBuffer(IMemoryBuffer** buffer, u32 kind, u32 format, u32 width,
                                   u32 height, u32 pitch, i32 clear, u32 usage, std::uint64_t,
                                   u32 alignment) noexcept {
  u32 result = Attach(name_);
  if (Failed(result)) return result;
  if (height == 0 || pitch == 0) return PICTAVO_E_INVALIDARG;
  if (*buffer != nullptr && (*buffer)->GetSize() < std::uint64_t{height} * pitch) {
    manager_->ReleaseBuffer(buffer, kReleaseFlag);
    *buffer = nullptr;
  }
  if (*buffer == nullptr) {
    if (alignment != 0 && width % alignment != 0) {
      const u32 pixelBytes = format != 0 ? 4 : 1;
      if (!RoundUp(&width, alignment) || width > UINT32_MAX / pixelBytes) {
        return PICTAVO_E_INVALIDARG;
      }
      pitch = width * pixelBytes;
    }
    if (alignment != 0 && !RoundUp(&height, alignment)) return PICTAVO_E_INVALIDARG;
    result = CreateBuffer(buffer, {kind, format, kBufferFlags, width, height, pitch, usage});
    if (Failed(result)) return result;
  }
  if (kind == 0 && clear != 0) ClearPixels(*buffer, format, std::uint64_t{height} * pitch);
  return result;
}

u32 CCommonUtility::FreeBuffer(IMemoryBuffer** buffer) noexcept {
  if (*buffer == nullptr) return PICTAVO_S_OK;
  const u32 result = Attach(name_);
  if (Failed(result)) return result;
  manager_->ReleaseBuffer(buffer, kReleaseFlag);
  *buffer = nullptr;
  return PICTAVO_S_OK;
}

void CCommonUtility::StoreName(const wchar_t* name) noexcept {
  const std::size_t length = std::min(std::wcslen(name), std::size(name_) - 1);
  std::wmemmove(name_, name, length);  // `name` may be name_ itself
  name_[length] = L'\0';
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
  if (Failed(result) || *buffer == nullptr) return PICTAVO_E_OUTOFMEMORY;
  if ((*buffer)->GetPixels() == nullptr) {
    manager_->ReleaseBuffer(buffer, kReleaseFlag);
    *buffer = nullptr;
    return PICTAVO_E_OUTOFMEMORY;
  }
  return result;
}

}  // namespace pictavo
