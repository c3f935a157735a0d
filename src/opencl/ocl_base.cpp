#include "opencl/ocl_base.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <new>
#include <string_view>
#include <vector>

#include "platform/debugger.h"

namespace pictavo {
namespace {

constexpr size_t kMostDeviceText = 64 * 1024;
constexpr const char* kBuildOptions = "";

/// `folder`\`name`, or nothing when that does not fit.
template <size_t size>
void JoinPath(const wchar_t* folder, const wchar_t* name, wchar_t (&path)[size]) noexcept {
  std::wstring_view stem(folder);
  while (stem.ends_with(L'\\')) stem.remove_suffix(1);
  const std::wstring_view last(name);
  path[0] = L'\0';
  if (stem.empty() || stem.size() + 1 + last.size() >= size) return;
  *std::copy(last.begin(), last.end(),
             std::copy_n(L"\\", 1, std::copy(stem.begin(), stem.end(), path))) = L'\0';
}

}  // namespace

COCLBase::COCLBase() noexcept : memoryClient_(CCommonUtility::Create("VKTMask_COCLBase", this)) {}

COCLBase::~COCLBase() {
  for (Built& built : programs_) Release(&built);
  if (queue_ != nullptr) cl().clReleaseCommandQueue(queue_);
  if (context_ != nullptr) cl().clReleaseContext(context_);
  util_.reset();
  delete memoryClient_;
}

bool COCLBase::LoadOpenCL() noexcept {
  util_.reset(new (std::nothrow) OpenCLUtil);
  if (util_ == nullptr) return false;
  util_->Init();
  if (util_->loaded()) return true;
  util_.reset();
  return false;
}

void COCLBase::SetCacheFolder() {
  std::swprintf(cacheFolder_, std::size(cacheFolder_), L"OpenCLFolder_Pictavo_%.200ls",
                ProductVersion().c_str());
  PathText folder;
  DWORD length = GetTempPathW(std::size(folder), folder);
  if (length > 0 && length < std::size(folder)) JoinPath(folder, cacheFolder_, basePath_);
  length = GetEnvironmentVariableW(L"LOCALAPPDATA", folder, std::size(folder));
  if (length > 0 && length < std::size(folder)) JoinPath(folder, cacheFolder_, secondBasePath_);
}

bool COCLBase::EnsureDevice() noexcept {
  if (queue_ != nullptr) return true;
  if (!util_->CanRun()) return false;
  for (const cl::u64 type : {cl::kTypeGpu, cl::kTypeAll}) {
    for (const cl::Platform platform : util_->Platforms()) {
      for (const cl::Device device : util_->Devices(platform, type)) {
        if (OpenDevice(platform, device)) return true;
      }
    }
  }
  return false;
}

bool COCLBase::OpenDevice(cl::Platform platform, cl::Device device) noexcept {
  constexpr intptr_t kContextPlatform = 0x1084;
  const intptr_t properties[] = {kContextPlatform, reinterpret_cast<intptr_t>(platform), 0};
  i32 result = cl::kSuccess;
  const cl::Context context =
      cl().clCreateContext(properties, 1, &device, nullptr, nullptr, &result);
  if (context == nullptr) return false;
  const cl::Queue queue = cl().clCreateCommandQueue(context, device, 0, &result);
  if (queue == nullptr) {
    cl().clReleaseContext(context);
    return false;
  }
  device_ = device;
  context_ = context;
  queue_ = queue;
  return true;
}

cl::Kernel COCLBase::GetKernel(const char* programFile, const char* kernelName) {
  for (size_t i = 0; i < kOpenCLPrograms.size(); ++i) {
    const OpenCLProgram& wanted = kOpenCLPrograms[i];
    if (std::strcmp(wanted.file, programFile) != 0) continue;
    if (GetProgram(i) != 0) {
      PrintToDebugger("error creating program %s\n", programFile);
      return nullptr;
    }
    for (size_t k = 0; k < wanted.kernels.size() && wanted.kernels[k] != nullptr; ++k) {
      if (std::strcmp(wanted.kernels[k], kernelName) != 0) continue;
      cl::Kernel& kernel = programs_[i].kernels[k];
      if (kernel == nullptr) kernel = MakeKernel(programs_[i].program, kernelName);
      if (kernel != nullptr) return kernel;
    }
  }
  PrintToDebugger("error creating kernel %s\n", kernelName);
  return nullptr;
}

/// What the device says of itself, however long; empty when it does not.
std::string COCLBase::DeviceText(u32 what) const {
  size_t size = 0;
  if (cl().clGetDeviceInfo(device_, what, 0, nullptr, &size) != cl::kSuccess) return {};
  std::string text(std::min(size, kMostDeviceText), '\0');
  if (cl().clGetDeviceInfo(device_, what, text.size(), text.data(), nullptr) != cl::kSuccess) {
    return {};
  }
  return text.substr(0, text.find('\0'));
}

/// Stands for everything that a compiled program depends on.
cl::u64 COCLBase::CacheKey(const std::string& source) const {
  cl::u64 type = 0;
  cl().clGetDeviceInfo(device_, cl::kDeviceType, sizeof(type), &type, nullptr);
  const i32 vendor = VendorCode(DeviceText(cl::kDeviceVendor));
  return Fingerprint()
      .Add(source)
      .Add(kBuildOptions)
      .Add(std::to_string(type))
      .Add(std::to_string(vendor))
      .Add(DeviceText(cl::kDeviceName))
      .Add(DeviceText(cl::kDeviceVersion))
      .Add(DeviceText(cl::kDriverVersion))
      .value();
}

/// 0 when the program is there, -1 when it cannot be had.
i32 COCLBase::GetProgram(size_t index) {
  Built& built = programs_[index];
  if (built.program != nullptr) return 0;
  const OpenCLProgram& wanted = kOpenCLPrograms[index];
  const std::string source = ProgramText(wanted.resource);
  const cl::u64 key = CacheKey(source);
  const std::string deviceName = DeviceText(cl::kDeviceName);
  std::vector<ProgramCache> caches = {ProgramCache(basePath_)};
  if (secondBasePath_[0] != L'\0') caches.emplace_back(secondBasePath_);
  for (const ProgramCache& cache : caches) {
    if (LoadProgram(cache, wanted, key, deviceName, &built) == 0) return 0;
  }
  if (BuildProgram(wanted, source, &built) != 0) return -1;
  ++programsCompiled_;
  const Binary binary = ProgramBinary(built.program);
  for (const ProgramCache& cache : caches) {
    if (cache.Save(wanted.file, deviceName, key, binary)) break;
  }
  return 0;
}

i32 COCLBase::LoadProgram(const ProgramCache& cache, const OpenCLProgram& wanted, cl::u64 key,
                          const std::string& deviceName, Built* built) const {
  const Binary binary = cache.Load(wanted.file, deviceName, key);
  if (binary.empty()) return -1;
  const size_t size = binary.size();
  const u8* bytes = binary.data();
  i32 status = cl::kSuccess, result = cl::kSuccess;
  const cl::Program program =
      cl().clCreateProgramWithBinary(context_, 1, &device_, &size, &bytes, &status, &result);
  if (!Finish(program, wanted, built)) return -1;
  // A binary that lacks a kernel is not this program's.
  for (size_t k = 0; k < wanted.kernels.size() && wanted.kernels[k] != nullptr; ++k) {
    if (built->kernels[k] != nullptr) continue;
    Release(built);
    return -1;
  }
  return 0;
}

i32 COCLBase::BuildProgram(const OpenCLProgram& wanted, const std::string& source,
                           Built* built) const {
  if (source.empty()) return -1;
  const char* text = source.c_str();
  const size_t length = source.size();
  i32 result = cl::kSuccess;
  const cl::Program program = cl().clCreateProgramWithSource(context_, 1, &text, &length, &result);
  return Finish(program, wanted, built) ? 0 : -1;
}

/// Compiles or links what a program was created from and makes its kernels, as far as it has them.
bool COCLBase::Finish(cl::Program program, const OpenCLProgram& wanted,
                      Built* built) const noexcept {
  if (program == nullptr) return false;
  if (cl().clBuildProgram(program, 1, &device_, kBuildOptions, nullptr, nullptr) != cl::kSuccess) {
    cl().clReleaseProgram(program);
    return false;
  }
  built->program = program;
  for (size_t k = 0; k < wanted.kernels.size() && wanted.kernels[k] != nullptr; ++k) {
    built->kernels[k] = MakeKernel(program, wanted.kernels[k]);
  }
  return true;
}

cl::Kernel COCLBase::MakeKernel(cl::Program program, const char* name) const noexcept {
  i32 result = cl::kSuccess;
  return cl().clCreateKernel(program, name, &result);
}

Binary COCLBase::ProgramBinary(cl::Program program) const {
  size_t size = 0;
  if (cl().clGetProgramInfo(program, cl::kProgramBinarySizes, sizeof(size), &size, nullptr) !=
          cl::kSuccess ||
      size > ProgramCache::kLargestBinary) {
    return {};
  }
  Binary binary(size);
  u8* bytes = binary.data();
  if (cl().clGetProgramInfo(program, cl::kProgramBinaries, sizeof(bytes), &bytes, nullptr) !=
      cl::kSuccess) {
    return {};
  }
  return binary;
}

void COCLBase::Release(Built* built) const noexcept {
  for (const cl::Kernel kernel : built->kernels) {
    if (kernel != nullptr) cl().clReleaseKernel(kernel);
  }
  if (built->program != nullptr) cl().clReleaseProgram(built->program);
  *built = {};
}

}  // namespace pictavo
