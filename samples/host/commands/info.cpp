// pictavo-host info: asks the library itself what it can do.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <type_traits>
#include <vector>

#include "base/commands.h"
#include "base/text.h"
#include "commands/operations.h"
#include "devices/opencl_info.h"

namespace host {
namespace {

using pictavo::IPictavo6;

/// Room for what a method without a result gives out: one that is built changes it.
struct Scratch {
  Scratch() { std::fill(std::begin(words), std::end(words), kUntouched); }
  bool touched() const {
    return std::any_of(std::begin(words), std::end(words), [](u32 w) { return w != kUntouched; });
  }

  template <typename T>
  T Argument() {
    if constexpr (std::is_pointer_v<T>) {
      return reinterpret_cast<T>(words);
    } else {
      return T{};
    }
  }

  static constexpr u32 kUntouched = 0x5A5A5A5Au;
  u32 words[16];
};

/// A method that is built refuses null pointers with another code than this.
template <typename Owner, typename... Arguments>
bool Probe(IPictavo6* object, u32 (Owner::*method)(Arguments...) noexcept) {
  return (object->*method)(Arguments{}...) != pictavo::PICTAVO_E_NOTIMPL;
}

template <typename Owner, typename... Arguments>
bool Probe(IPictavo6* object, void (Owner::*method)(Arguments...) noexcept) {
  Scratch scratch;
  (object->*method)(scratch.Argument<Arguments>()...);
  return scratch.touched();
}

template <auto method>
bool IsBuilt(IPictavo6* object) {
  return Probe(object, method);
}

template <>
bool IsBuilt<&IPictavo6::DetectInstructionSet>(IPictavo6* object) {
  constexpr i32 kNoLevel = -1;
  object->SetCPULevel(kNoLevel);
  object->DetectInstructionSet();
  return object->GetCPULevel() != kNoLevel;
}

template <>
bool IsBuilt<&IPictavo6::SetCPULevel>(IPictavo6* object) {
  const i32 level = object->GetCPULevel();
  object->SetCPULevel(level + 1);
  const bool built = object->GetCPULevel() == level + 1;
  object->SetCPULevel(level);
  return built;
}

template <>
bool IsBuilt<&IPictavo6::GetCPULevel>(IPictavo6* object) {
  return IsBuilt<&IPictavo6::SetCPULevel>(object);
}

/// A method of the interface that is not reserved.
struct Method {
  int slot;
  const char* name;
  bool (*isBuilt)(IPictavo6* object);
};

constexpr Method kMethods[] = {
#define PICTAVO_METHOD(slot, name, where, arguments) {slot, #name, IsBuilt<&IPictavo6::name>},
#include "pictavo/pictavo_methods.inl"
};

struct Module {
  const wchar_t* file;
  const char* purpose;
};
constexpr Module kModules[] = {
    {L"CPUIstructionSetDetect.dll", "tells the processor's level; without it the level is 0"},
    {L"VKTMemMgr.dll", "hands out pixel buffers"},
    {L"ConvertUtility.dll", "converts colours"},
    {L"VKT_3DRender.dll", "renders on the graphics card"},
};

void PrintModules() {
  std::puts("\nModules");
  for (const Module& module : kModules) {
    const HMODULE loaded = LoadLibraryW(module.file);
    std::printf("  %-28s  %-10s  %s\n", Utf8(module.file).c_str(),
                loaded != nullptr ? VersionOf(loaded).c_str() : "not found", module.purpose);
    if (loaded != nullptr) FreeLibrary(loaded);
  }
}

void PrintInTwoColumns(const std::vector<const Method*>& methods) {
  const size_t rows = (methods.size() + 1) / 2;
  for (size_t row = 0; row < rows; ++row) {
    std::string line;
    for (size_t i = row; i < methods.size(); i += rows) {
      line.resize(line.empty() ? 0 : 46, ' ');
      line += Format("  %3d  %s", methods[i]->slot, methods[i]->name);
    }
    std::puts(line.c_str());
  }
}

void PrintMethods(IPictavo6* object) {
  std::vector<const Method*> built, missing;
  for (const Method& method : kMethods) {
    (method.isBuilt(object) ? built : missing).push_back(&method);
  }
  std::printf("\nBuilt: %zu methods of %zu, by slot\n", built.size(), std::size(kMethods));
  PrintInTwoColumns(built);
  std::printf("\nNot built: %zu methods and the other slots, which are reserved, return 0x%08X\n",
              missing.size(), pictavo::PICTAVO_E_NOTIMPL);
  PrintInTwoColumns(missing);
}

}  // namespace

std::string VersionOf(HMODULE module) {
  const std::wstring path = PathOf(module);
  std::string data(GetFileVersionInfoSizeW(path.c_str(), nullptr), '\0');
  VS_FIXEDFILEINFO* info = nullptr;
  UINT size = 0;
  if (data.empty() ||
      !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data()) ||
      !VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &size)) {
    return "unknown";
  }
  return Format("%d.%d.%d", HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                HIWORD(info->dwFileVersionLS));
}

std::wstring PathOf(HMODULE module) {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(2 * path.size());
  }
}

namespace {

int RunInfo(pictavo::Library& library, const Arguments& arguments) {
  if (!arguments.empty()) throw UsageFailure("info takes no arguments");
  const i32 level = library->GetCPULevel();
  std::printf("Pictavo %s\n  %s\n", VersionOf(library.module()).c_str(),
              Utf8(PathOf(library.module())).c_str());
  std::printf("\nLevel in use: %d, %s\n", level, LevelName(level));
  PrintModules();
  PrintOpenCL(library);
  PrintMethods(library.get());
  return 0;
}

}  // namespace

const Command kInfoCommand = {
    L"info",
    "  pictavo-host info\n"
    "      Says what the library beside this program can do on this processor.\n",
    RunInfo};

}  // namespace host
