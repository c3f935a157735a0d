#ifndef PICTAVO_OPENCL_OCL_BASE_H_
#define PICTAVO_OPENCL_OCL_BASE_H_

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "frame/common_utility.h"
#include "opencl/device_buffer.h"
#include "opencl/opencl_util.h"
#include "opencl/own_resources.h"
#include "opencl/program_cache.h"
#include "platform/critical_section.h"

namespace pictavo {

/// The OpenCL part of the library object: its runtime, device, programs and buffers. Attaches its
/// memory-manager client at construction; everything else comes with the first operation and stays.
/// What failed to come is tried again by the next operation.
///
/// All of it is guarded by the lock that OpenCLLock() gives.
class COCLBase {
 public:
  using Kernels = std::array<cl::Kernel, OpenCLProgram::kMostKernels>;

  COCLBase() noexcept;
  virtual ~COCLBase();
  COCLBase(const COCLBase&) = delete;
  COCLBase& operator=(const COCLBase&) = delete;

  virtual CriticalSection& OpenCLLock() noexcept = 0;

  /// Brings the runtime up, once. @throws std::bad_alloc
  virtual bool EnsureOpenCL() = 0;

  /// The memory-manager client for pictures between two passes; null when memory is short. Called
  /// without the lock.
  virtual CCommonUtility* EnsureClientBetween() noexcept = 0;

  /// A program's kernels in the order of kOpenCLPrograms, ready for their arguments; they stay this
  /// object's. They are of the device at hand if they can be made there, else of the first one, a
  /// GPU before any other, that is opened anew and on which they can. Null, and a line in the
  /// debugger output, when there is none. OpenCL is up. @throws std::bad_alloc
  const Kernels* GetKernels(const char* programFile);

  /// What a code of the runtime means to the host. Other failures than of memory are of the device.
  u32 Check(i32 code) noexcept;

  /// After a call that failed: lets go of the device, if that failed, or else of the buffers.
  void Recover() noexcept;

  const OpenCLEntryPoints& cl() const noexcept { return util_->cl; }
  cl::Context context() const noexcept { return context_; }
  cl::Queue queue() const noexcept { return queue_; }

  /// The memory-manager client; null when memory was short at construction.
  CCommonUtility* oclMemoryClient() const noexcept { return memoryClient_; }

  /// How many programs this object has compiled, rather than loaded from the cache.
  u32 programsCompiled() const noexcept { return programsCompiled_; }

  /// What operations work in; given back with the device.
  struct Buffers {
    DeviceBuffer source{cl::kMemReadOnly};
    DeviceBuffer between{cl::kMemReadWrite};  // of EnsureClientBetween
    DeviceBuffer result{cl::kMemWriteOnly};
  } buffers;

 protected:
  /// Loads the runtime. False, and nothing kept, when there is none.
  bool LoadOpenCL() noexcept;

  /// Names the cache's folder after the library's version and finds its places.
  /// @throws std::bad_alloc
  void SetCacheFolder();

  /// Waits for the device and gives the buffers back.
  void ReleaseBuffers() noexcept;

 private:
  /// A program that is ready to run.
  struct Built {
    cl::Program program = nullptr;
    Kernels kernels = {};
  };
  struct Candidate {
    cl::Platform platform;
    cl::Device device;
  };

  std::vector<Candidate> Candidates() const;
  bool OpenDevice(const Candidate& candidate) noexcept;
  void CloseDevice() noexcept;
  std::string MakeKernels(size_t index);
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
  wchar_t cacheFolder_[260] = {};
  std::vector<std::wstring> basePaths_;  // of the cache, in order; an empty one: the current folder
  cl::Device device_ = nullptr;
  cl::Context context_ = nullptr;
  cl::Queue queue_ = nullptr;
  std::array<Built, kOpenCLPrograms.size()> programs_ = {};
  u32 programsCompiled_ = 0;
  bool deviceFailed_ = false;
};

}  // namespace pictavo

#endif  // PICTAVO_OPENCL_OCL_BASE_H_
