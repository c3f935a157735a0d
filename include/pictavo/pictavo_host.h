/// @file
/// A loader for hosts on Windows: opens Pictavo.dll at run time and owns its object.
///
///   pictavo::Library library;  // or Library(LR"(C:\Program Files\Editor\Pictavo.dll)")
///   if (!library) return Report(library.errorText(), library.systemError());
///   if (!library.Call<&IPictavo6::BlendOverPitched>(frame, title, width, height, pitch)) …
///
/// Header only; compiles as C++17 or later and needs no import library.
#ifndef PICTAVO_PICTAVO_HOST_H_
#define PICTAVO_PICTAVO_HOST_H_

#include <windows.h>

#include <cstring>
#include <cwchar>
#include <new>
#include <type_traits>
#include <utility>

#include "pictavo/pictavo.h"

namespace pictavo {

/// Why a Library has no object.
enum class LoadError {
  none,            ///< it has one, or has given it to another Library
  moduleNotFound,  ///< the DLL, or one that it needs, cannot be loaded
  entryMissing,    ///< the DLL is older than this header, or another DLL of that name
  objectNull,      ///< the DLL could not make its object
};

/// A DLL's version; all 0 where it states none.
struct LibraryVersion {
  unsigned major;  ///< changes with the table
  unsigned minor;  ///< changes with what is built
  unsigned patch;  ///< changes with what is mended
};

/// How a Library is loaded.
struct LoadSettings {
  /// Sets the level from what the system says of the processor when the library found none, for
  /// want of its module: without a level it runs its portable code.
  bool setLevel = true;
  /// Calls SearchSafely() first.
  bool searchSafely = true;
};

/// From now on DLLs that this process asks for by their plain names come from the program's own
/// folder, from those that the host has named by AddDllDirectory or SetDllDirectory, and from the
/// system's; no more from the current folder and the PATH. Modules that nobody ships could be put
/// there by anybody who can write to them. Holds for the whole process and cannot be undone.
inline void SearchSafely() noexcept {
  if (!SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_DEFAULT_DIRS)) SetDllDirectoryW(L"");
}

/// The level of this processor, as far as the system tells.
inline i32 ProcessorLevel() noexcept {
  constexpr struct {
    DWORD feature;  // PF_AVX2_INSTRUCTIONS_AVAILABLE and so on, which older headers lack
    i32 level;
  } kFeatures[] = {{40, PICTAVO_LEVEL_AVX2},
                   {38, 7},
                   {37, PICTAVO_LEVEL_SSE4_1},
                   {36, PICTAVO_LEVEL_SSSE3},
                   {13, 4}};
  for (const auto& known : kFeatures) {
    if (IsProcessorFeaturePresent(known.feature)) return known.level;
  }
  return PICTAVO_LEVEL_SSE2;  // every 64-bit processor's
}

/// A type for each method, since types can be compared.
template <auto method>
struct Named;

/// Whether a method is one of some.
template <auto method, auto... methods>
inline constexpr bool kIsAmong = (std::is_same_v<Named<method>, Named<methods>> || ...);

/// Whether a method's result is what its comment calls a status: 1 for success.
template <auto method>
inline constexpr bool kReturnsStatus = kIsAmong<
    method, &IPictavo6::BlendOverWithOpacityRamp, &IPictavo6::BlendOverPacked,
    &IPictavo6::BlendOverPitched, &IPictavo6::BlendPremultipliedWithOpacityRamp,
    &IPictavo6::BlendPremultipliedPacked, &IPictavo6::BlendPremultipliedPitched,
    &IPictavo6::CompositePremultipliedWithOpacityRamp, &IPictavo6::CompositePremultipliedPitched,
    &IPictavo6::CompositePremultipliedPacked, &IPictavo6::UnpremultiplyPitched,
    &IPictavo6::UnpremultiplyPacked, &IPictavo6::PremultiplyPitched, &IPictavo6::PremultiplyPacked,
    &IPictavo6::BlendOverWithOpacityRampAndAlpha, &IPictavo6::BlendOverWithOpacityRampKeepAlpha>;

/// Whether a method's result says that it did its work, or that there was nothing to do.
template <auto method>
constexpr bool Succeeded(u32 result) noexcept {
  return kReturnsStatus<method> ? result == 1 : static_cast<i32>(result) >= 0;
}

/// What a method answered.
struct Outcome {
  u32 result;      ///< as the method's comment says
  bool succeeded;  ///< Succeeded() of it
  /// Whether it succeeded.
  explicit operator bool() const noexcept { return succeeded; }
};

/// Calls a method and tells whether it succeeded, whatever kind of result it has:
/// Call<&IPictavo6::BlendOverPitched>(object, …).
template <auto method, typename... Arguments>
Outcome Call(IPictavo6* object, Arguments&&... arguments) noexcept {
  const u32 result = (object->*method)(std::forward<Arguments>(arguments)...);
  return {result, Succeeded<method>(result)};
}

/// The modules that this project makes for the library.
enum class Module {
  cpuDetect,       ///< CPUIstructionSetDetect.dll: the processor's level
  convertUtility,  ///< ConvertUtility.dll: slots 88 to 92
  memoryManager,   ///< VKTMemMgr.dll: buffers for OpenCL
};
/// Their files, in that order.
inline constexpr const wchar_t* kModuleFiles[] = {L"CPUIstructionSetDetect.dll",
                                                  L"ConvertUtility.dll", L"VKTMemMgr.dll"};

/// Pictavo.dll, loaded, and one object of it. Gives the object back and unloads the DLL when it
/// goes out of scope; pointers to the object do not outlive that.
///
/// Every Library has an object of its own, with its own instruction-set level. The object may be
/// used from several threads as pictavo.h states; the Library itself, like any plain value, must
/// not be moved or destroyed while another thread uses it. Never make or destroy one inside
/// DllMain.
class Library {
 public:
  /// Loads the DLL, the modules that lie beside it, and makes an object. A module that does not is
  /// looked for as the system looks for DLLs.
  /// @param path full path of the DLL, or its plain name to look for it in the system's order, the
  /// program's own folder first
  explicit Library(const wchar_t* path = L"Pictavo.dll", LoadSettings settings = {}) noexcept
      : error_(Open(path, settings)) {}

  ~Library() {
    if (object_ != nullptr) release_(object_);
    if (module_ != nullptr) FreeLibrary(module_);
    for (const HMODULE sibling : siblings_) {
      if (sibling != nullptr) FreeLibrary(sibling);
    }
  }

  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  /// Takes the other's object and leaves it with none.
  Library(Library&& other) noexcept
      : module_(std::exchange(other.module_, nullptr)),
        object_(std::exchange(other.object_, nullptr)),
        release_(other.release_),
        systemError_(std::exchange(other.systemError_, ERROR_SUCCESS)),
        error_(std::exchange(other.error_, LoadError::none)) {
    std::swap(siblings_, other.siblings_);
  }

  /// Gives back its own object and takes the other's.
  Library& operator=(Library&& other) noexcept {
    Library taken(std::move(other));
    std::swap(module_, taken.module_);
    std::swap(object_, taken.object_);
    std::swap(release_, taken.release_);
    std::swap(systemError_, taken.systemError_);
    std::swap(error_, taken.error_);
    std::swap(siblings_, taken.siblings_);
    return *this;
  }

  /// True when there is an object.
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// The object; null when there is none. It stays this Library's.
  IPictavo6* get() const noexcept { return object_; }

  /// The object's methods. There must be an object.
  IPictavo6* operator->() const noexcept { return object_; }

  /// Calls a method of the object's, as the function of that name. There must be an object.
  template <auto method, typename... Arguments>
  Outcome Call(Arguments&&... arguments) const noexcept {
    return pictavo::Call<method>(object_, std::forward<Arguments>(arguments)...);
  }

  /// Whether a module was found. Without one the library does what pictavo.h says.
  bool has(Module module) const noexcept { return siblings_[static_cast<int>(module)] != nullptr; }

  /// The loaded DLL, for example to ask for its path; null when it was not found. It stays this
  /// Library's.
  HMODULE module() const noexcept { return module_; }

  /// The loaded DLL's product version, from its resources.
  LibraryVersion version() const noexcept {
    // The block of name 1 and type 16 (RT_VERSION) has the fixed part of a version at byte 40: a
    // signature and, from byte 16 on, the product version.
    constexpr DWORD kFixed = 40, kSignature = 0xFEEF04BDu;
    const HRSRC place = module_ != nullptr
                            ? FindResourceW(module_, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16))
                            : nullptr;
    if (place == nullptr || SizeofResource(module_, place) < kFixed + 24) return {};
    const HGLOBAL block = LoadResource(module_, place);
    DWORD fixed[6] = {};
    if (block != nullptr) {
      std::memcpy(fixed, static_cast<const char*>(LockResource(block)) + kFixed, sizeof fixed);
    }
    if (fixed[0] != kSignature) return {};
    return {HIWORD(fixed[4]), LOWORD(fixed[4]), HIWORD(fixed[5])};
  }

  /// Why there is no object.
  LoadError error() const noexcept { return error_; }

  /// The system's code for moduleNotFound and entryMissing, as GetLastError gave it, else 0.
  DWORD systemError() const noexcept { return systemError_; }

  /// One line of English for error(), without a full stop; a static string, empty for none.
  const char* errorText() const noexcept {
    switch (error_) {
      case LoadError::none:
        return "";
      case LoadError::moduleNotFound:
        return "Pictavo.dll cannot be loaded";
      case LoadError::entryMissing:
        return "Pictavo.dll is too old for this program";
      case LoadError::objectNull:
        return "Pictavo.dll could not create its object";
    }
    return "";
  }

 private:
  LoadError Open(const wchar_t* path, const LoadSettings& settings) noexcept {
    if (settings.searchSafely) SearchSafely();
    module_ = LoadLibraryW(path);
    if (module_ == nullptr) return Failed(LoadError::moduleNotFound);
    for (int i = 0; i < kModules; ++i) siblings_[i] = LoadSibling(kModuleFiles[i]);
    const auto create = Entry<decltype(&GetPictavo6)>("GetPictavo6");
    if (create == nullptr) return Failed(LoadError::entryMissing);
    release_ = Entry<decltype(&ReleasePictavo6)>("ReleasePictavo6");
    if (release_ == nullptr) return Failed(LoadError::entryMissing);
    object_ = create();
    if (object_ == nullptr) return LoadError::objectNull;
    if (settings.setLevel && object_->GetCPULevel() == PICTAVO_LEVEL_PORTABLE) {
      object_->SetCPULevel(ProcessorLevel());
    }
    return LoadError::none;
  }

  /// A module beside the DLL, or the one that the system finds. The library asks for it by its
  /// plain name, which finds what is loaded.
  HMODULE LoadSibling(const wchar_t* file) const noexcept {
    constexpr DWORD kLongest = 32768;                                 // the system's longest path
    wchar_t* const path = new (std::nothrow) wchar_t[kLongest + 32];  // and a name
    HMODULE sibling = nullptr;
    if (path != nullptr) {
      const DWORD length = GetModuleFileNameW(module_, path, kLongest);
      wchar_t* const slash = length > 0 && length < kLongest ? std::wcsrchr(path, L'\\') : nullptr;
      if (slash != nullptr) {
        std::wcscpy(slash + 1, file);
        sibling = LoadLibraryW(path);
      }
    }
    delete[] path;
    return sibling != nullptr ? sibling : LoadLibraryW(file);
  }

  LoadError Failed(LoadError error) noexcept {
    systemError_ = GetLastError();
    return error;
  }

  template <typename Fn>
  Fn Entry(const char* name) const noexcept {
    // Through void*: a cast between unrelated function types would warn.
    return reinterpret_cast<Fn>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

  static constexpr int kModules = 3;

  HMODULE module_ = nullptr;
  HMODULE siblings_[kModules] = {};  // in the order of Module
  IPictavo6* object_ = nullptr;
  decltype(&ReleasePictavo6) release_ = nullptr;
  DWORD systemError_ = ERROR_SUCCESS;
  LoadError error_;  // last: Open sets the others
};

}  // namespace pictavo

#endif  // PICTAVO_PICTAVO_HOST_H_
