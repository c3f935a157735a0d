#ifndef PICTAVO_FRAME_PICTAVO_OBJECT_H_
#define PICTAVO_FRAME_PICTAVO_OBJECT_H_

#include <windows.h>

#include <atomic>

#include "convert_utility/convert_utility.h"
#include "cpu_detect/cpu_detect.h"
#include "d3d11/d3d11_base.h"
#include "frame/common_utility.h"
#include "frame/kernel_table.h"
#include "frame/methods.h"
#include "opencl/ocl_base.h"
#include "pictavo/pictavo.h"
#include "platform/critical_section.h"
#include "platform/parallel_rows.h"

namespace pictavo {

/// The library object. Its lazy parts move once from absent to present under their lock and stay
/// until destruction; a failed attempt leaves them absent for the next call to try again.
class Pictavo final : public IPictavo6, public CPictavo_D3D, public COCLBase {
 public:
  Pictavo() noexcept;
  ~Pictavo() override;

  // The interface, from its list.
#define PICTAVO_METHOD(slot, name, where, arguments) PICTAVO_HEAD(, name, arguments) override;
#define PICTAVO_RESERVED(slot, arguments) \
  PICTAVO_HEAD(, Reserved##slot, arguments) override { return PICTAVO_E_NOTIMPL; }
#include "pictavo/pictavo_methods.inl"

  // COCLBase
  CriticalSection& OpenCLLock() noexcept override { return openclLock; }
  bool EnsureOpenCL() override;
  CCommonUtility* EnsureClientBetween() noexcept override {
    return EnsureMemoryClient() ? memoryClient : nullptr;
  }

  // Bring up a lazy part; true, or the part, when it is there afterwards.
  bool EnsureMemoryClient() noexcept;
  bool EnsureConvertUtility() noexcept;
  bool EnsureDilation() noexcept;
  void* EnsureRenderHost() noexcept;

  /// The layer kernels of the level.
  const KernelTable& kernels() const noexcept { return kernelTable; }

 private:
  ICpuDetect* EnsureCpuDetect() noexcept;

  std::atomic<i32> cpuLevel = 0;
  LARGE_INTEGER perfFrequency = {};
  HMODULE cpuDetectModule = nullptr;
  ICpuDetect* cpuDetect = nullptr;
  CCommonUtility* memoryClient = nullptr;
  HMODULE convertModule = nullptr;
  IConvertUtility* convertUtility = nullptr;
  CPictavo_Dilation* dilation = nullptr;
  HMODULE renderModule = nullptr;
  void* renderHost = nullptr;
  KernelTable kernelTable;
  const RowHelpers rowHelpers;
  std::uint64_t openclReady = 0;
  CriticalSection moduleLock;  // cpuDetect, memoryClient, convertUtility, dilation
  CriticalSection openclLock;  // OpenCL bring-up and every OpenCL-backed operation
  CriticalSection renderLock;  // renderHost
};

}  // namespace pictavo

#endif  // PICTAVO_FRAME_PICTAVO_OBJECT_H_
