#ifndef PICTAVO_OPENCL_OCL_BASE_H_
#define PICTAVO_OPENCL_OCL_BASE_H_

#include <array>
#include <memory>
#include <string>

#include "frame/common_utility.h"
#include "opencl/opencl_util.h"
#include "opencl/own_resources.h"
#include "opencl/program_cache.h"
#include "platform/critical_section.h"

namespace pictavo {

/// The OpenCL part of the library object: its runtime, device and programs. Attaches its
/// memory-manager client at construction; everything else comes with the first operation and stays.
/// What failed to come is tried again by the next operation.
///
/// All of it is guarded by the lock that OpenCLLock() gives.
class COCLBase {
 public:
  COCLBase() noexcept;
  virtual ~COCLBase();
  COCLBase(const COCLBase&) = delete;
  COCLBase& operator=(const COCLBase&) = delete;

  virtual CriticalSection& OpenCLLock() noexcept = 0;

  /// Brings the runtime up, once. @throws std::bad_alloc
  virtual bool EnsureOpenCL() = 0;

  /// Chooses a device, once: a GPU before any other. OpenCL is up.
  bool EnsureDevice() noexcept;

  /// A kernel, ready for its arguments; it stays this object's. Null, and a line in the debugger
  /// output, when its program or itself cannot be made. There is a device. @throws std::bad_alloc
  cl::Kernel GetKernel(const char* programFile, const char* kernelName);

  const OpenCLEntryPoints& cl() const noexcept { return util_->cl; }
  cl::Context context() const noexcept { return context_; }
  cl::Queue queue() const noexcept { return queue_; }

  /// The memory-manager client; null when memory was short at construction.
  CCommonUtility* oclMemoryClient() const noexcept { return memoryClient_; }

  /// How many programs this object has compiled, rather than loaded from the cache.
  u32 programsCompiled() const noexcept { return programsCompiled_; }

 protected:
  /// Loads the runtime. False, and nothing kept, when there is none.
  bool LoadOpenCL() noexcept;

  /// Names the cache's folder after the library's version and finds its places.
  /// @throws std::bad_alloc
  void SetCacheFolder();

 private:
  using PathText = wchar_t[260];

  /// A program that is ready to run. Its kernels are in the order of kOpenCLPrograms.
  struct Built {
    cl::Program program = nullptr;
    std::array<cl::Kernel, OpenCLProgram::kMostKernels> kernels = {};
  };

  bool OpenDevice(cl::Platform platform, cl::Device device) noexcept;
  std::string DeviceText(u32 what) const;
  cl::u64 CacheKey(const std::string& source) const;
  i32 GetProgram(size_t index);
  i32 LoadProgram(const ProgramCache& cache, const OpenCLProgram& wanted, cl::u64 key,
                  const std::string& deviceName, Built* built) const;
  i32 BuildProgram(const OpenCLProgram& wanted, const std::string& source, Built* built) const;
  bool Finish(cl::Program program, const OpenCLProgram& wanted, Built* built) const noexcept;
  cl::Kernel MakeKernel(cl::Program program, const char* name) const noexcept;
  Binary ProgramBinary(cl::Program program) const;
  void Release(Built* built) const noexcept;

  CCommonUtility* memoryClient_;
  std::unique_ptr<OpenCLUtil> util_;
  PathText cacheFolder_ = {};
  PathText basePath_ = {};        // of the cache; empty for the current folder
  PathText secondBasePath_ = {};  // read after the first, written when that cannot be; or empty
  cl::Device device_ = nullptr;
  cl::Context context_ = nullptr;
  cl::Queue queue_ = nullptr;
  std::array<Built, kOpenCLPrograms.size()> programs_ = {};
  u32 programsCompiled_ = 0;
};

}  // namespace pictavo

#endif  // PICTAVO_OPENCL_OCL_BASE_H_
