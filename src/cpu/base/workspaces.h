// Memory for tasks that threads share.
#ifndef PICTAVO_CPU_BASE_WORKSPACES_H_
#define PICTAVO_CPU_BASE_WORKSPACES_H_

#include <atomic>
#include <bit>
#include <cstdint>
#include <thread>

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

/// Hands out the numbers of workspaces: a task gets the lowest that is free, so that only as many
/// are ever touched as there are tasks at a time. Pages that nobody touches cost nothing.
class Workspaces {
 public:
  static constexpr i64 kMost = 64;

  /// Runs a task with the number of a workspace below `count`, which is at most kMost.
  template <typename Task>
  void With(i64 count, const Task& task) {
    const int number = Take(static_cast<int>(count));
    task(number);
    taken_.fetch_and(~(uint64_t{1} << number), std::memory_order_release);
  }

 private:
  int Take(int count) {
    for (uint64_t taken = taken_.load(std::memory_order_relaxed);;) {
      const int number = std::countr_one(taken);
      if (number >= count) {
        std::this_thread::yield();
        taken = taken_.load(std::memory_order_relaxed);
      } else if (taken_.compare_exchange_weak(taken, taken | uint64_t{1} << number,
                                              std::memory_order_acquire)) {
        return number;
      }
    }
  }

  std::atomic<uint64_t> taken_{0};
};

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BASE_WORKSPACES_H_
