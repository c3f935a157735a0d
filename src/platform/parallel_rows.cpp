#include "platform/parallel_rows.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <thread>
#include <vector>

#if __has_include(<ppl.h>)
#include <ppl.h>
#define PICTAVO_CONCURRENCY_RUNTIME
#elif defined(_WIN32)
#include <windows.h>
#endif

namespace pictavo {
namespace {

/// The rows of a call. Everybody who works on them takes the next stretch until none is left.
class SharedRows {
 public:
  SharedRows(int rows, int workers, RowTask* task, const void* context)
      : rows_(rows), stretch_(std::max(1, rows / (8 * workers))), task_(task), context_(context) {}

  void Work() noexcept {
    for (;;) {
      const int64_t first = next_.fetch_add(stretch_, std::memory_order_relaxed);
      if (first >= rows_) return;
      const int64_t end = std::min(first + stretch_, rows_);
      for (int64_t row = first; row < end; ++row) task_(context_, static_cast<int>(row));
    }
  }

 private:
  const int64_t rows_;
  const int64_t stretch_;
  RowTask* const task_;
  const void* const context_;
  std::atomic<int64_t> next_{0};
};

#if defined(PICTAVO_CONCURRENCY_RUNTIME)

void WorkTogether(SharedRows* shared, int workers) noexcept {
  try {
    concurrency::parallel_for(0, workers, [=](int) { shared->Work(); });
  } catch (const std::exception&) {
    shared->Work();  // what the runtime left
  }
}

#elif defined(_WIN32)

void CALLBACK Help(PTP_CALLBACK_INSTANCE, void* shared, PTP_WORK) {
  static_cast<SharedRows*>(shared)->Work();
}

void WorkTogether(SharedRows* shared, int workers) noexcept {
  const PTP_WORK work = CreateThreadpoolWork(Help, shared, nullptr);
  if (work == nullptr) return shared->Work();
  for (int helper = 1; helper < workers; ++helper) SubmitThreadpoolWork(work);
  shared->Work();
  // Helpers that the pool has not started by now would find nothing to do.
  WaitForThreadpoolWorkCallbacks(work, TRUE);
  CloseThreadpoolWork(work);
}

#else

void WorkTogether(SharedRows* shared, int workers) noexcept {
  std::vector<std::jthread> helpers;
  try {
    for (int helper = 1; helper < workers; ++helper) helpers.emplace_back([=] { shared->Work(); });
  } catch (const std::exception&) {
    // Those that there are, and the caller, do the work.
  }
  shared->Work();
}

#endif

/// How many threads are worth their waking, which takes some microseconds each.
int Workers(int rows, int64_t rowCost) noexcept {
  constexpr int64_t kLeastShare = 30000;
  const int64_t processors = std::max(1u, std::thread::hardware_concurrency());
  return static_cast<int>(
      std::clamp(rows * rowCost / kLeastShare, int64_t{1}, std::min<int64_t>(rows, processors)));
}

}  // namespace

void ParallelRows(int rows, int64_t rowCost, RowTask* task, const void* context) noexcept {
  if (rows <= 0) return;
  const int workers = Workers(rows, rowCost);
  SharedRows shared(rows, workers, task, context);
  if (workers == 1) return shared.Work();
  WorkTogether(&shared, workers);
}

}  // namespace pictavo
