#ifndef PICTAVO_PLATFORM_CRITICAL_SECTION_H_
#define PICTAVO_PLATFORM_CRITICAL_SECTION_H_

#include <windows.h>

namespace pictavo {

/// The system's lock, usable with std::lock_guard.
class CriticalSection {
 public:
  CriticalSection() noexcept { InitializeCriticalSection(&section_); }
  ~CriticalSection() { DeleteCriticalSection(&section_); }
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  void lock() noexcept { EnterCriticalSection(&section_); }
  void unlock() noexcept { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_;
};

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_CRITICAL_SECTION_H_
