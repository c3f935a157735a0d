#ifndef PICTAVO_TESTS_HOST_MODULE_FOLDER_H_
#define PICTAVO_TESTS_HOST_MODULE_FOLDER_H_

#include <windows.h>

#include <filesystem>

#include "platform/module.h"

namespace pictavo::test {

inline constexpr const wchar_t* kRealModules = L"../bin";
inline constexpr const wchar_t* kNoModules = L"no_such_folder";

/// Modules loaded from now on by their plain names come from this folder beside the program.
inline void FindModulesIn(const wchar_t* folder) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const auto path = std::filesystem::path(program).parent_path() / folder;
  SetDllDirectoryW(path.lexically_normal().c_str());
}

/// One of the product's modules, loaded for this object's life.
class RealModule {
 public:
  explicit RealModule(const wchar_t* file) {
    FindModulesIn(kRealModules);
    handle_ = LoadLibraryW(file);
  }
  ~RealModule() { FreeLibrary(handle_); }
  RealModule(const RealModule&) = delete;
  RealModule& operator=(const RealModule&) = delete;

  HMODULE handle() const { return handle_; }
  template <typename Fn>
  Fn* Entry(const char* name) const {
    return EntryPoint<Fn>(handle_, name);
  }

 private:
  HMODULE handle_;
};

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_HOST_MODULE_FOLDER_H_
