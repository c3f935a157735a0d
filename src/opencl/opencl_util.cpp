#include "opencl/opencl_util.h"

#include <cstdio>
#include <cstring>
#include <cwchar>

#include "platform/debugger.h"
#include "platform/module.h"

namespace pictavo {
namespace {

constexpr const char* kInit = "OpenCLUtil::Init";
constexpr const char* kIsOCL2Platform = "OpenCLUtil::_isOCL2Platform";
constexpr const char* kGetOpenCLVersion = "OpenCLUtil::_GetOpenCLVersion";

/// Whether the environment switches OpenCL off.
bool Disabled() noexcept {
  wchar_t value[64];
  const DWORD length = GetEnvironmentVariableW(L"DetectOpenCL", value, std::size(value));
  return length > 0 && length < std::size(value) && std::wcstol(value, nullptr, 10) == 2;
}

}  // namespace

/// What a runtime says of a platform or device. Zero behind it: a runtime may forget to end it.
struct OpenCLUtil::Text {
  static constexpr size_t kRoom = 1024;
  char text[kRoom + 1] = {};
};

OpenCLUtil::~OpenCLUtil() {
  if (module_ != nullptr) FreeLibrary(module_);
}

void OpenCLUtil::Init() noexcept {
  _readRegistrySetting();
  if (Disabled()) {
    PrintToDebugger("[%s]  OpenCL been disabled.\n", kInit);
    return;
  }
  if (tried_ == 0 && !LoadRuntime()) return;
  if (cl.clGetPlatformIDs != nullptr) {
    u32 count = 0;
    cl.clGetPlatformIDs(0, nullptr, &count);
  }
  if (!MayUseGroup2()) return;
  PrintToDebugger("[%s]  OpenCL 2.0 device detected, start to extract OpenCL 2.0 function.\n",
                  kInit);
  ResolveGroup2();
  PrintToDebugger("[%s]  Initialized.\n", kInit);
}

void OpenCLUtil::_readRegistrySetting() noexcept {
  allowOCL2ForAll_ = 0;
  HKEY key;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Quorlin\\VKTMemMgr", 0, KEY_READ, &key) !=
      ERROR_SUCCESS) {
    return;
  }
  const wchar_t* const name = L"AllowOCL2ForAll";
  DWORD type = 0, value = 0, size = 0;
  if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) == ERROR_SUCCESS &&
      type == REG_DWORD && size == sizeof(value) &&
      RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size) ==
          ERROR_SUCCESS &&
      value != 0) {
    allowOCL2ForAll_ = 1;
    TellDebugger(L"[OpenCLUtil::_readRegistrySetting] Find key: m_AllowOCL2ForAll.\n");
  }
  RegCloseKey(key);
}

bool OpenCLUtil::LoadRuntime() noexcept {
  tried_ = 1;
  module_ = LoadLibraryW(L"OpenCL.dll");
  if (module_ == nullptr) return false;
  loaded_ = 1;
  ResolveGroup1();
  return true;
}

// Both stop at the first entry point that is missing.

bool OpenCLUtil::ResolveGroup1() noexcept {
  return true
#define PICTAVO_ENTRY_POINT(name, type) \
  &&(cl.name = EntryPoint<cl::type>(module_, #name)) != nullptr
#define PICTAVO_ENTRY_POINT_2(name, type)
#include "opencl/entry_points.inl"
      ;
}

bool OpenCLUtil::ResolveGroup2() noexcept {
  return true
#define PICTAVO_ENTRY_POINT(name, type)
#define PICTAVO_ENTRY_POINT_2(name, type) \
  &&(cl.name = EntryPoint<cl::type>(module_, #name)) != nullptr
#include "opencl/entry_points.inl"
      ;
}

bool OpenCLUtil::MayUseGroup2() const noexcept {
  if (!_isOCL2Platform(allowOCL2ForAll_ != 0 ? nullptr : "Intel")) {
    PrintToDebugger("[%s]  _isOCL2Support return false!!, Disable OpenCL 2.0.\n", kInit);
    return false;
  }
  i32 major = 0, minor = 0;
  _GetOpenCLVersion(&major, &minor);
  if (major < 2) {
    PrintToDebugger("[%s]  major version < 2, skip OpenCL 2.0 function.\n", kInit);
    return false;
  }
  return true;
}

bool OpenCLUtil::_isOCL2Platform(const char* filter) const noexcept {
  PrintToDebugger("[%s]  _isOCL2Platform, filter: %s.", kIsOCL2Platform,
                  filter != nullptr ? filter : "(null)");
  const auto platforms = Platforms();
  PrintToDebugger("[%s]  clGetPlatformIDs return num: %d. \n", kIsOCL2Platform,
                  static_cast<i32>(platforms.count));
  bool found = false;
  u32 index = 0;
  for (const cl::Platform platform : platforms) {
    const u32 platformIndex = index++;
    if (!IsVersion2(platform, filter)) continue;
    if (NewestGpu(platformIndex, platform) >= 2) {
      found = true;
      PrintToDebugger("[%s]  OpenCL 2.0 device found.\n", kIsOCL2Platform);
    } else {
      PrintToDebugger("[%s]  No OpenCL 2.0 device found.\n", kIsOCL2Platform);
    }
  }
  PrintToDebugger("[%s]  return %d.\n", kIsOCL2Platform, found ? 1 : 0);
  return found;
}

/// Whether a platform has the filter in its name, if there is one, and a version from 2 on.
bool OpenCLUtil::IsVersion2(cl::Platform platform, const char* filter) const noexcept {
  size_t size = 0;
  i32 result = cl::kInvalidOperation;
  if (cl.clGetPlatformInfo != nullptr) {
    result = cl.clGetPlatformInfo(platform, cl::kPlatformVersion, 0, nullptr, &size);
  }
  PrintToDebugger("[%s]  clGetPlatformInfo: %d, platVerSize: %d. \n", kIsOCL2Platform, result,
                  static_cast<i32>(size));
  if (static_cast<i32>(size) <= 0) return false;
  if (filter != nullptr) {
    Text name;
    result = PlatformText(platform, cl::kPlatformName, &name);
    PrintToDebugger("[%s]  clGetPlatformInfo: %d, szPlatName: %s. \n", kIsOCL2Platform, result,
                    name.text);
    if (std::strstr(name.text, filter) == nullptr) {
      PrintToDebugger("[%s]  platform name doesn't find: %s, try next platform. \n",
                      kIsOCL2Platform, filter);
      return false;
    }
    PrintToDebugger("[%s]  find: %s, go get platform ver! \n", kIsOCL2Platform, filter);
  }
  Text version;
  result = PlatformText(platform, cl::kPlatformVersion, &version);
  PrintToDebugger("[%s]  clGetPlatformInfo: %d, ver: %s. \n", kIsOCL2Platform, result,
                  version.text);
  const i32 major = ParseVersion(version).major;
  PrintToDebugger("[%s]  major ver: %d. \n", kIsOCL2Platform, major);
  return major >= 2;
}

/// The greatest major version of a platform's GPUs, 0 without one.
i32 OpenCLUtil::NewestGpu(u32 platformIndex, cl::Platform platform) const noexcept {
  PrintToDebugger("[%s]  2.0+ platfrom. Start to get device information. \n", kIsOCL2Platform);
  const auto devices = Devices(platform, cl::kTypeGpu);
  PrintToDebugger("[%s]  plat %d: find device count: %d. \n", kIsOCL2Platform,
                  static_cast<i32>(platformIndex), static_cast<i32>(devices.count));
  i32 newest = 0;
  i32 index = 0;
  for (const cl::Device device : devices) {
    Text version;
    if (cl.clGetDeviceInfo != nullptr) {
      cl.clGetDeviceInfo(device, cl::kDeviceVersion, Text::kRoom, version.text, nullptr);
    }
    PrintToDebugger("[%s]  device %d: ver: %s. \n", kIsOCL2Platform, index, version.text);
    const i32 major = ParseVersion(version).major;
    PrintToDebugger("[%s]  device %d: temp major: %d. \n", kIsOCL2Platform, index, major);
    if (major > newest) {
      newest = major;
      PrintToDebugger("[%s]  update device major to : %d. \n", kIsOCL2Platform, newest);
    }
    ++index;
  }
  if (devices.count == 0) {
    PrintToDebugger("[%s]  no device set major to %d. \n", kIsOCL2Platform, newest);
  }
  return newest;
}

void OpenCLUtil::_GetOpenCLVersion(i32* major, i32* minor) const noexcept {
  const auto platforms = Platforms();
  PrintToDebugger("[%s]  platform num: %d. \n", kGetOpenCLVersion,
                  static_cast<i32>(platforms.count));
  Version newest;
  i32 index = 0;
  for (const cl::Platform platform : platforms) {
    Text text;
    PlatformText(platform, cl::kPlatformVersion, &text);
    PrintToDebugger("[%s]  platform %d, ver: %s. \n", kGetOpenCLVersion, index, text.text);
    const Version version = ParseVersion(text);
    PrintToDebugger("[%s]  platform %d, major: %d, minor: %d. \n", kGetOpenCLVersion, index,
                    version.major, version.minor);
    if (version > newest) {
      newest = version;
      PrintToDebugger("[%s]  update major to: %d, minor to: %d. \n", kGetOpenCLVersion,
                      newest.major, newest.minor);
    }
    ++index;
  }
  *major = newest.major;
  *minor = newest.minor;
}

HandleList<cl::Platform> OpenCLUtil::Platforms() const noexcept {
  HandleList<cl::Platform> list;
  if (cl.clGetPlatformIDs == nullptr ||
      cl.clGetPlatformIDs(0, nullptr, &list.count) != cl::kSuccess || list.count == 0 ||
      cl.clGetPlatformIDs(std::min(list.count, list.kRoom), list.handles.data(), nullptr) !=
          cl::kSuccess) {
    list.count = 0;
  }
  return list;
}

HandleList<cl::Device> OpenCLUtil::Devices(cl::Platform platform, cl::u64 type) const noexcept {
  HandleList<cl::Device> list;
  if (cl.clGetDeviceIDs == nullptr ||
      cl.clGetDeviceIDs(platform, type, 0, nullptr, &list.count) != cl::kSuccess ||
      list.count == 0 ||
      cl.clGetDeviceIDs(platform, type, std::min(list.count, list.kRoom), list.handles.data(),
                        nullptr) != cl::kSuccess) {
    list.count = 0;
  }
  return list;
}

i32 OpenCLUtil::PlatformText(cl::Platform platform, u32 what, Text* text) const noexcept {
  if (cl.clGetPlatformInfo == nullptr) return cl::kInvalidOperation;
  return cl.clGetPlatformInfo(platform, what, Text::kRoom, text->text, nullptr);
}

/// Reads "OpenCL MAJOR.MINOR"; 0 for what is not there. Nine digits always fit.
OpenCLUtil::Version OpenCLUtil::ParseVersion(const Text& text) noexcept {
  Version version;
  std::sscanf(text.text, "OpenCL %9d.%9d", &version.major, &version.minor);
  return version;
}

}  // namespace pictavo
