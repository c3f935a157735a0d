#include "opencl/ocl_base.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

#include "platform/debugger.h"
#include "platform/threads.h"

namespace pictavo {
namespace {

constexpr size_t kMostDeviceText = 64 * 1024;
constexpr const char* kBuildOptions = "";
constexpr DWORD kPathRoom = 260;

/// One for the process: runtimes do not all bear two threads that bring them up or down at once.
Mutex bringUpLock;

/// `folder`\`name`, where a folder is named.
void AddPath(std::wstring_view folder, const wchar_t* name, std::vector<std::wstring>* paths) {
  while (folder.ends_with(L'\\')) folder.remove_suffix(1);
  if (!folder.empty()) paths->push_back(std::wstring(folder) + L'\\' + name);
}

}  // namespace

COCLBase::COCLBase() noexcept : memoryClient_(CCommonUtility::Create("VKTMask_COCLBase", this)) {}

COCLBase::~COCLBase() {
  CloseDevice();
  if (util_ != nullptr) {  // else nothing is up
    const std::lock_guard guard(bringUpLock);
    util_.reset();
  }
  delete memoryClient_;
}

bool COCLBase::LoadOpenCL() noexcept {
  const std::lock_guard guard(bringUpLock);
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
  basePaths_.clear();
  wchar_t folder[kPathRoom];
  const DWORD temporary = GetTempPathW(kPathRoom, folder);
  if (temporary < kPathRoom) AddPath({folder, temporary}, cacheFolder_, &basePaths_);
  const DWORD local = GetEnvironmentVariableW(L"LOCALAPPDATA", folder, kPathRoom);
  if (local < kPathRoom) AddPath({folder, local}, cacheFolder_, &basePaths_);
  // Not for a folder that is only too long: anyone may have left a program in the current one.
  if (temporary == 0) basePaths_.emplace_back();
}

const COCLBase::Kernels* COCLBase::GetKernels(const char* programFile) {
  size_t index = 0;
  while (std::strcmp(kOpenCLPrograms[index].file, programFile) != 0) ++index;
  const Kernels* kernels = &programs_[index].kernels;
  std::string failure;
  const auto made = [&] {
    failure = MakeKernels(index);
    return failure.empty();
  };
  if (queue_ != nullptr && made()) return kernels;
  // Opened anew with the others: it may not be unfit but lost.
  CloseDevice();
  for (const Candidate& candidate : Candidates()) {
    if (OpenDevice(candidate) && made()) return kernels;
  }
  CloseDevice();
  if (!failure.empty()) PrintToDebugger("%s", failure.c_str());
  return nullptr;
}

/// What to tell the debugger if they cannot be had on the device at hand; else nothing.
std::string COCLBase::MakeKernels(size_t index) {
  const OpenCLProgram& wanted = kOpenCLPrograms[index];
  if (GetProgram(index) != 0) return std::string("error creating program ") + wanted.file + '\n';
  Built& built = programs_[index];
  for (size_t k = 0; k < wanted.kernels.size() && wanted.kernels[k] != nullptr; ++k) {
    if (built.kernels[k] == nullptr)
      built.kernels[k] = MakeKernel(built.program, wanted.kernels[k]);
    if (built.kernels[k] != nullptr) continue;
    return std::string("error creating kernel ") + wanted.kernels[k] + '\n';
  }
  return {};
}

/// Every device, GPUs first.
std::vector<COCLBase::Candidate> COCLBase::Candidates() const {
  std::vector<Candidate> candidates;
  if (!util_->CanRun()) return candidates;
  const std::lock_guard guard(bringUpLock);
  for (const cl::u64 type : {cl::kTypeGpu, cl::kTypeAll}) {
    for (const cl::Platform platform : util_->Platforms()) {
      for (const cl::Device device : util_->Devices(platform, type)) {
        const bool known = std::ranges::count(candidates, device, &Candidate::device) != 0;
        if (!known) candidates.push_back({platform, device});
      }
    }
  }
  return candidates;
}

/// In place of the device that is open, if it works out.
bool COCLBase::OpenDevice(const Candidate& candidate) noexcept {
  constexpr intptr_t kContextPlatform = 0x1084;
  const intptr_t properties[] = {kContextPlatform, reinterpret_cast<intptr_t>(candidate.platform),
                                 0};
  i32 result = cl::kSuccess;
  CloseDevice();
  const std::lock_guard guard(bringUpLock);
  context_ = Made(cl().clCreateContext(properties, 1, &candidate.device, nullptr, nullptr, &result),
                  &result);
  if (context_ == nullptr) return false;
  queue_ = Made(cl().clCreateCommandQueue(context_, candidate.device, 0, &result), &result);
  if (queue_ == nullptr) {
    cl().clReleaseContext(std::exchange(context_, nullptr));
    return false;
  }
  device_ = candidate.device;
  return true;
}

/// Gives back everything that was made on the device, when it has come to rest.
void COCLBase::CloseDevice() noexcept {
  deviceFailed_ = false;
  if (queue_ == nullptr) return;
  ReleaseBuffers();
  for (Built& built : programs_) Release(&built);
  const std::lock_guard guard(bringUpLock);
  cl().clReleaseCommandQueue(std::exchange(queue_, nullptr));
  cl().clReleaseContext(std::exchange(context_, nullptr));
  device_ = nullptr;
}

void COCLBase::ReleaseBuffers() noexcept {
  if (queue_ == nullptr) return;
  cl().clFinish(queue_);
  for (DeviceBuffer* buffer : {&buffers.source, &buffers.between, &buffers.result}) {
    buffer->Release(cl());
  }
}

u32 COCLBase::Check(i32 code) noexcept {
  switch (code) {
    case cl::kSuccess:
      return PICTAVO_S_OK;
    case cl::kMemObjectAllocationFailure:
    case cl::kOutOfHostMemory:
    case cl::kInvalidBufferSize:
      return PICTAVO_E_OUTOFMEMORY;
    default:
      deviceFailed_ = true;
      return PICTAVO_E_FAIL;
  }
}

void COCLBase::Recover() noexcept {
  if (deviceFailed_) {
    CloseDevice();
  } else {
    ReleaseBuffers();
  }
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
  std::vector<ProgramCache> caches;
  for (const std::wstring& basePath : basePaths_) caches.emplace_back(basePath.c_str());
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
      Made(cl().clCreateProgramWithBinary(context_, 1, &device_, &size, &bytes, &status, &result),
           &result);
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
  const cl::Program program =
      Made(cl().clCreateProgramWithSource(context_, 1, &text, &length, &result), &result);
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
  return Made(cl().clCreateKernel(program, name, &result), &result);
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
