/// @file
/// A loader for hosts on Windows: opens Pictavo.dll at run time and owns its object.
///
///   pictavo::Library library;  // or Library(LR"(C:\Program Files\Editor\Pictavo.dll)")
///   if (!library) return Report(library.errorText(), library.systemError());
///   library->BlendOverPitched(frame, title, width, height, pitch);
///
/// Header only; compiles as C++17 or later and needs no import library.
#ifndef PICTAVO_PICTAVO_HOST_H_
#define PICTAVO_PICTAVO_HOST_H_

#include <windows.h>

#include <cstring>
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

/// Pictavo.dll, loaded, and one object of it. Gives the object back and unloads the DLL when it
/// goes out of scope; pointers to the object do not outlive that.
///
/// Every Library has an object of its own, with its own instruction-set level. The object may be
/// used from several threads as pictavo.h states; the Library itself, like any plain value, must
/// not be moved or destroyed while another thread uses it. Never make or destroy one inside
/// DllMain.
class Library {
 public:
  /// Loads the DLL and makes an object.
  /// @param path full path of the DLL, or its plain name to look for it in the system's order, the
  /// program's own folder first. The DLL looks for its sibling modules in that order too, wherever
  /// it lies itself.
  explicit Library(const wchar_t* path = L"Pictavo.dll") noexcept : error_(Open(path)) {}

  ~Library() {
    if (object_ != nullptr) release_(object_);
    if (module_ != nullptr) FreeLibrary(module_);
  }

  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  /// Takes the other's object and leaves it with none.
  Library(Library&& other) noexcept
      : module_(std::exchange(other.module_, nullptr)),
        object_(std::exchange(other.object_, nullptr)),
        release_(other.release_),
        systemError_(std::exchange(other.systemError_, ERROR_SUCCESS)),
        error_(std::exchange(other.error_, LoadError::none)) {}

  /// Gives back its own object and takes the other's.
  Library& operator=(Library&& other) noexcept {
    Library taken(std::move(other));
    std::swap(module_, taken.module_);
    std::swap(object_, taken.object_);
    std::swap(release_, taken.release_);
    std::swap(systemError_, taken.systemError_);
    std::swap(error_, taken.error_);
    return *this;
  }

  /// True when there is an object.
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// The object; null when there is none. It stays this Library's.
  IPictavo6* get() const noexcept { return object_; }

  /// The object's methods. There must be an object.
  IPictavo6* operator->() const noexcept { return object_; }

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
  LoadError Open(const wchar_t* path) noexcept {
    module_ = LoadLibraryW(path);
    if (module_ == nullptr) return Failed(LoadError::moduleNotFound);
    const auto create = Entry<decltype(&GetPictavo6)>("GetPictavo6");
    if (create == nullptr) return Failed(LoadError::entryMissing);
    release_ = Entry<decltype(&ReleasePictavo6)>("ReleasePictavo6");
    if (release_ == nullptr) return Failed(LoadError::entryMissing);
    object_ = create();
    return object_ != nullptr ? LoadError::none : LoadError::objectNull;
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

  HMODULE module_ = nullptr;
  IPictavo6* object_ = nullptr;
  decltype(&ReleasePictavo6) release_ = nullptr;
  DWORD systemError_ = ERROR_SUCCESS;
  LoadError error_;  // last: Open sets the others
};

}  // namespace pictavo

#endif  // PICTAVO_PICTAVO_HOST_H_
