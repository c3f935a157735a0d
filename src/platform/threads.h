#ifndef PICTAVO_PLATFORM_THREADS_H_
#define PICTAVO_PLATFORM_THREADS_H_

#include <mutex>

#ifdef _WIN32
#include <windows.h>
#else
#include <condition_variable>
#include <exception>
#include <thread>
#endif

namespace pictavo {

// A lock, a condition and a thread as the standard library has them. On Windows straight on the
// system: MinGW's own keep some memory for each that there was, which a host that loads and unloads
// the DLL would lose each time.

#ifdef _WIN32

class Mutex {
 public:
  void lock() noexcept { AcquireSRWLockExclusive(&lock_); }
  void unlock() noexcept { ReleaseSRWLockExclusive(&lock_); }

 private:
  friend class Condition;
  SRWLOCK lock_ = SRWLOCK_INIT;
};

class Condition {
 public:
  template <typename Predicate>
  void wait(std::unique_lock<Mutex>& guard, Predicate predicate) noexcept {
    while (!predicate()) {
      SleepConditionVariableSRW(&condition_, &guard.mutex()->lock_, INFINITE, 0);
    }
  }
  void notify_all() noexcept { WakeAllConditionVariable(&condition_); }

 private:
  CONDITION_VARIABLE condition_ = CONDITION_VARIABLE_INIT;
};

/// A thread that runs a method of its owner until it is joined.
template <typename Owner, void (Owner::*main)()>
class Thread {
 public:
  /// False where the system has no thread to give.
  bool Start(Owner* owner) noexcept {
    thread_ = CreateThread(nullptr, 0, Main, owner, 0, nullptr);
    return thread_ != nullptr;
  }
  void Join() noexcept {
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
  }

 private:
  static DWORD WINAPI Main(void* owner) {
    (static_cast<Owner*>(owner)->*main)();
    return 0;
  }

  HANDLE thread_;
};

#else

using Mutex = std::mutex;
using Condition = std::condition_variable;

template <typename Owner, void (Owner::*main)()>
class Thread {
 public:
  bool Start(Owner* owner) noexcept {
    try {
      thread_ = std::thread(main, owner);
    } catch (const std::exception&) {
      return false;
    }
    return true;
  }
  void Join() noexcept { thread_.join(); }

 private:
  std::thread thread_;
};

#endif

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_THREADS_H_
