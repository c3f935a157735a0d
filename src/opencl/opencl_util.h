#ifndef PICTAVO_OPENCL_OPENCL_UTIL_H_
#define PICTAVO_OPENCL_OPENCL_UTIL_H_

#include <windows.h>

#include <algorithm>
#include <array>

#include "opencl/cl_api.h"

namespace pictavo {

/// The entry points of an OpenCL runtime; null where it has none or they may not be used.
struct OpenCLEntryPoints {
#define PICTAVO_ENTRY_POINT(name, type) cl::type* name = nullptr;
#define PICTAVO_ENTRY_POINT_2(name, type) PICTAVO_ENTRY_POINT(name, type)
#include "opencl/entry_points.inl"
};

/// What a runtime made: a handle counts only with success, and success only with a handle.
template <typename Handle>
Handle Made(Handle handle, i32* result) noexcept {
  if (*result == cl::kSuccess && handle == nullptr) *result = cl::kInvalidMemObject;
  return *result == cl::kSuccess ? handle : nullptr;
}

/// Platforms or devices as a runtime lists them. `count` is what it says it has; those beyond the
/// list's room are left out, and so is all from the first null on.
template <typename Handle>
struct HandleList {
  static constexpr u32 kRoom = 64;

  const Handle* begin() const { return handles.data(); }
  const Handle* end() const {
    return std::find(begin(), begin() + std::min(count, kRoom), nullptr);
  }

  std::array<Handle, kRoom> handles = {};
  u32 count = 0;
};

/// Loads the OpenCL runtime and decides whether its OpenCL 2.0 entry points may be used. The Init
/// of one object runs in one thread at a time.
class OpenCLUtil {
 public:
  OpenCLUtil() = default;
  ~OpenCLUtil();
  OpenCLUtil(const OpenCLUtil&) = delete;
  OpenCLUtil& operator=(const OpenCLUtil&) = delete;

  /// Loads the runtime at the first call; decides on OpenCL 2.0 at each.
  void Init() noexcept;

  bool loaded() const noexcept { return loaded_ != 0; }

  /// Whether every entry point that running kernels takes is there. The group is looked up in order
  /// up to the first missing one, so the last one needed speaks for all.
  bool CanRun() const noexcept { return cl.clEnqueueNDRangeKernel != nullptr; }

  HandleList<cl::Platform> Platforms() const noexcept;
  HandleList<cl::Device> Devices(cl::Platform platform, cl::u64 type) const noexcept;

 private:
  struct Version {
    i32 major = 0, minor = 0;
    auto operator<=>(const Version&) const = default;
  };
  struct Text;

  void _readRegistrySetting() noexcept;
  bool _isOCL2Platform(const char* filter) const noexcept;
  void _GetOpenCLVersion(i32* major, i32* minor) const noexcept;

  bool LoadRuntime() noexcept;
  bool ResolveGroup1() noexcept;
  bool ResolveGroup2() noexcept;
  bool MayUseGroup2() const noexcept;
  bool IsVersion2(cl::Platform platform, const char* filter) const noexcept;
  i32 NewestGpu(u32 platformIndex, cl::Platform platform) const noexcept;
  i32 PlatformText(cl::Platform platform, u32 what, Text* text) const noexcept;
  static Version ParseVersion(const Text& text) noexcept;

  u8 allowOCL2ForAll_ = 0;
  u8 tried_ = 0;
  u8 loaded_ = 0;
  HMODULE module_ = nullptr;

 public:
  OpenCLEntryPoints cl;
};

}  // namespace pictavo

#endif  // PICTAVO_OPENCL_OPENCL_UTIL_H_
