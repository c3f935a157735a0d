// Interface of CPUIstructionSetDetect.dll, the sibling module that tells the processor's level.
//
// Exports: AllocateCPUISDetectUtility returns an object (null when memory is short), which the
// caller gives back to ReleaseCPUISDetectUtility. An object may be asked from several threads.
#ifndef PICTAVO_MODULES_CPU_DETECT_H_
#define PICTAVO_MODULES_CPU_DETECT_H_

#include <stdint.h>

namespace pictavo {

/// Answers which instruction sets the processor and the operating system support. Every predicate
/// answers non-zero for yes; each set includes the ones before it.
struct ICpuDetect {
  /// Must be called once before any predicate. @param flags 0 @return 0
  virtual uint32_t Initialize(uint32_t flags) noexcept = 0;
  /// Counterpart of Initialize; the library leaves it to the release export. @return 0
  virtual uint32_t Uninitialize() noexcept = 0;

  virtual uint8_t HasMMX() noexcept = 0;
  virtual uint8_t HasSSE() noexcept = 0;
  virtual uint8_t HasSSE2() noexcept = 0;
  virtual uint8_t HasSSE3() noexcept = 0;
  virtual uint8_t HasSSSE3() noexcept = 0;
  virtual uint8_t HasSSE41() noexcept = 0;
  virtual uint8_t HasSSE42() noexcept = 0;
  virtual uint8_t HasAVX2() noexcept = 0;

 protected:
  ~ICpuDetect() = default;
};

using AllocateCpuDetectFn = ICpuDetect*();
using ReleaseCpuDetectFn = void(ICpuDetect*);

}  // namespace pictavo

#endif  // PICTAVO_MODULES_CPU_DETECT_H_
