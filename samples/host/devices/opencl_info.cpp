// What OpenCL has here and what the library makes of it.
#include "devices/opencl_info.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "base/commands.h"
#include "base/surface.h"
#include "base/text.h"

namespace host {
namespace {

using pictavo::IPictavo6;
using u64 = std::uint64_t;

/// As much of an OpenCL runtime as listing takes.
class Runtime {
 public:
  struct Device {
    std::string name, version;
    bool gpu;
  };
  struct Platform {
    std::string name, version;
    std::vector<Device> devices;
  };

  Runtime() : module_(LoadLibraryW(L"OpenCL.dll")) {
    Find("clGetPlatformIDs", &getPlatforms_);
    Find("clGetPlatformInfo", &getPlatformInfo_);
    Find("clGetDeviceIDs", &getDevices_);
    Find("clGetDeviceInfo", &getDeviceInfo_);
  }
  ~Runtime() {
    if (module_ != nullptr) FreeLibrary(module_);
  }
  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;

  HMODULE module() const { return module_; }

  std::vector<Platform> Platforms() const {
    std::vector<Platform> platforms;
    if (!complete_) return platforms;
    void* handles[kMost];
    u32 count = 0;
    if (getPlatforms_(kMost, handles, &count) != 0) return platforms;
    for (u32 i = 0; i < count && i < kMost; ++i) {
      constexpr u32 kName = 0x0902, kVersion = 0x0901;
      platforms.push_back({Text(getPlatformInfo_, handles[i], kName),
                           Text(getPlatformInfo_, handles[i], kVersion), Devices(handles[i])});
    }
    return platforms;
  }

 private:
  using GetIds = i32(u32, void**, u32*);
  using GetTypedIds = i32(void*, u64, u32, void**, u32*);
  using GetInfo = i32(void*, u32, size_t, void*, size_t*);
  static constexpr u32 kMost = 16;

  template <typename Function>
  void Find(const char* name, Function** function) {
    if (module_ != nullptr) {
      *function =
          reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }
    complete_ = complete_ && *function != nullptr;
  }

  std::vector<Device> Devices(void* platform) const {
    constexpr u64 kAll = 0xFFFFFFFF, kGpu = 4;
    constexpr u32 kType = 0x1000, kName = 0x102B, kVersion = 0x102F;
    std::vector<Device> devices;
    void* handles[kMost];
    u32 count = 0;
    if (getDevices_(platform, kAll, kMost, handles, &count) != 0) return devices;
    for (u32 i = 0; i < count && i < kMost; ++i) {
      u64 type = 0;
      getDeviceInfo_(handles[i], kType, sizeof type, &type, nullptr);
      devices.push_back({Text(getDeviceInfo_, handles[i], kName),
                         Text(getDeviceInfo_, handles[i], kVersion), (type & kGpu) != 0});
    }
    return devices;
  }

  static std::string Text(GetInfo* get, void* handle, u32 what) {
    char text[1024] = {};
    if (get(handle, what, sizeof text - 1, text, nullptr) != 0) return "(nameless)";
    return text;
  }

  HMODULE module_;
  bool complete_ = true;
  GetIds* getPlatforms_ = nullptr;
  GetInfo* getPlatformInfo_ = nullptr;
  GetTypedIds* getDevices_ = nullptr;
  GetInfo* getDeviceInfo_ = nullptr;
};

/// The first GPU of all platforms, or else the first device.
const Runtime::Device* DeviceTaken(const std::vector<Runtime::Platform>& platforms) {
  const Runtime::Device* first = nullptr;
  for (const Runtime::Platform& platform : platforms) {
    for (const Runtime::Device& device : platform.devices) {
      if (device.gpu) return &device;
      if (first == nullptr) first = &device;
    }
  }
  return first;
}

/// Hears what the library tells a debugger while this lives, unless a debugger is there and does.
class DebuggerLines {
 public:
  DebuggerLines() : handler_(AddVectoredExceptionHandler(1, Hear)) { heard_.clear(); }
  ~DebuggerLines() { RemoveVectoredExceptionHandler(handler_); }
  DebuggerLines(const DebuggerLines&) = delete;
  DebuggerLines& operator=(const DebuggerLines&) = delete;

  bool Have(const char* words) const { return heard_.find(words) != std::string::npos; }

 private:
  static LONG CALLBACK Hear(EXCEPTION_POINTERS* exception) {
    constexpr DWORD kPrinted = 0x40010006;
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode != kPrinted) return EXCEPTION_CONTINUE_SEARCH;
    heard_ += reinterpret_cast<const char*>(record.ExceptionInformation[1]);
    return EXCEPTION_CONTINUE_EXECUTION;
  }

  static inline std::string heard_;
  void* handler_;
};

const char* DecisionIn(const DebuggerLines& lines) {
  if (lines.Have("OpenCL been disabled")) return "OpenCL is switched off by DetectOpenCL=2";
  if (lines.Have("start to extract OpenCL 2.0")) return "used";
  if (lines.Have("major version < 2")) return "not used: no platform is of version 2";
  if (lines.Have("Disable OpenCL 2.0")) {
    return "not used: no Intel platform with a GPU of version 2, nor AllowOCL2ForAll";
  }
  return "unknown";
}

void PrintCache(const std::string& version) {
  wchar_t temporary[MAX_PATH + 1];
  if (GetTempPathW(static_cast<DWORD>(std::size(temporary)), temporary) == 0) return;
  const std::filesystem::path folder =
      std::filesystem::path(temporary) / ("OpenCLFolder_Pictavo_" + version) / "OpenCLFolder";
  size_t files = 0;
  std::uintmax_t bytes = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    ++files;
    bytes += entry.file_size(error);
  }
  std::printf("  Cache       %s\n              %zu compiled programs, %llu KiB\n",
              Utf8(folder.native()).c_str(), files,
              static_cast<unsigned long long>((bytes + 1023) / 1024));
}

}  // namespace

bool OpenCLWorks(IPictavo6* object) {
  Picture pixel(1, 1);
  Surface surface(pixel);
  return object->MemsetColorOpenCL(&surface, 0) == pictavo::PICTAVO_S_OK;
}

std::string OpenCLDeviceName() {
  const std::vector<Runtime::Platform> platforms = Runtime().Platforms();
  const Runtime::Device* device = DeviceTaken(platforms);
  return device != nullptr ? device->name : "";
}

void PrintOpenCL(pictavo::Library& library) {
  std::puts("\nOpenCL");
  const Runtime runtime;
  if (runtime.module() == nullptr) {
    std::puts("  OpenCL.dll was not found; the OpenCL methods fail");
    return;
  }
  std::printf("  Runtime     %s\n", Utf8(PathOf(runtime.module())).c_str());
  const std::vector<Runtime::Platform> platforms = runtime.Platforms();
  for (const Runtime::Platform& platform : platforms) {
    std::printf("  Platform    %s, %s\n", platform.name.c_str(), platform.version.c_str());
    for (const Runtime::Device& device : platform.devices) {
      std::printf("    %-9s %s, %s\n", device.gpu ? "GPU" : "device", device.name.c_str(),
                  device.version.c_str());
    }
  }
  const DebuggerLines lines;
  const bool works = OpenCLWorks(library.get());
  const Runtime::Device* device = DeviceTaken(platforms);
  std::printf("  In use      %s\n", works && device != nullptr
                                        ? device->name.c_str()
                                        : "nothing; the OpenCL methods fail");
  std::printf("  OpenCL 2.0  %s\n", DecisionIn(lines));
  PrintCache(VersionOf(library.module()));
}

}  // namespace host
