#include "opencl/own_resources.h"

#include <windows.h>

#include <cstdio>
#include <vector>

namespace pictavo {
namespace {

constexpr WORD kProgramType = 97;

HMODULE ThisModule() noexcept {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<const wchar_t*>(&kOpenCLPrograms), &module);
  return module;
}

}  // namespace

std::string ProgramText(u32 resource) {
  const HMODULE module = ThisModule();
  const HRSRC found =
      FindResourceW(module, MAKEINTRESOURCEW(resource), MAKEINTRESOURCEW(kProgramType));
  if (found == nullptr) return {};
  const HGLOBAL loaded = LoadResource(module, found);
  const auto* bytes = static_cast<const char*>(LockResource(loaded));
  if (bytes == nullptr) return {};
  std::string text(bytes, SizeofResource(module, found));
  u8 mask = 97;
  for (char& letter : text) {
    letter = static_cast<char>(letter ^ mask);
    mask = static_cast<u8>(mask + 37);
  }
  return text;
}

std::wstring ProductVersion() {
  wchar_t path[MAX_PATH];
  const DWORD length = GetModuleFileNameW(GetModuleHandleW(L"Pictavo.dll"), path, MAX_PATH);
  if (length == 0 || length == MAX_PATH) return {};
  std::vector<u8> info(GetFileVersionInfoSizeW(path, nullptr));
  if (info.empty() || !GetFileVersionInfoW(path, 0, static_cast<DWORD>(info.size()), info.data())) {
    return {};
  }
  struct Translation {
    WORD language, codePage;
  };
  void* value = nullptr;
  UINT size = 0;
  if (!VerQueryValueW(info.data(), L"\\VarFileInfo\\Translation", &value, &size) ||
      size < sizeof(Translation)) {
    return {};
  }
  const auto* first = static_cast<const Translation*>(value);
  wchar_t name[64];
  std::swprintf(name, std::size(name), L"\\StringFileInfo\\%04x%04x\\ProductVersion",
                first->language, first->codePage);
  if (!VerQueryValueW(info.data(), name, &value, &size) || size == 0) return {};
  const std::wstring version(static_cast<const wchar_t*>(value), size);
  return version.substr(0, version.find(L'\0'));
}

}  // namespace pictavo
