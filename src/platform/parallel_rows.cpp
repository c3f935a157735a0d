#include "platform/parallel_rows.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>
#include <vector>

#include "platform/floating_point.h"
#include "platform/threads.h"

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

/// The helping threads of the process.
class Pool {
 public:
  /// Works on the rows with so many helpers, or as many as the system gives.
  void Run(SharedRows* rows, int helpers) noexcept {
    Job job = {rows, helpers};
    {
      const std::lock_guard guard(lock_);
      Start(static_cast<size_t>(helpers));
      job.next = jobs_;
      jobs_ = &job;
    }
    work_.notify_all();
    rows->Work();
    Finish(&job);
  }

  /// Ends all threads. Nobody may run rows meanwhile.
  void End() noexcept {
    {
      const std::lock_guard guard(lock_);
      ending_ = true;
    }
    work_.notify_all();
    for (auto& thread : threads_) thread.Join();
    std::vector<Helper>().swap(threads_);
    ending_ = false;
  }

 private:
  /// Lives on the stack of the call that it belongs to.
  struct Job {
    SharedRows* rows;
    int wanted;  // helpers that may still come
    int working = 0;
    Job* next = nullptr;
  };

  /// Makes sure of so many threads, as far as the system has them.
  void Start(size_t count) noexcept {
    try {
      threads_.reserve(count);
    } catch (const std::exception&) {
      return;  // those that there are, and the caller, do the work
    }
    while (threads_.size() < count) {
      if (!threads_.emplace_back().Start(this)) return threads_.pop_back();
    }
  }

  void Help() {
    const DefaultFloatingPoint floatingPoint;  // some systems hand on that of the thread's maker
    std::unique_lock guard(lock_);
    for (;;) {
      work_.wait(guard, [this] { return jobs_ != nullptr || ending_; });
      if (jobs_ == nullptr) return;
      Job* const job = jobs_;
      if (--job->wanted == 0) jobs_ = job->next;
      ++job->working;
      guard.unlock();
      job->rows->Work();
      guard.lock();
      if (--job->working == 0) done_.notify_all();
    }
  }

  /// Helpers that have not come by now would find nothing to do; waits for those that have.
  void Finish(Job* job) noexcept {
    std::unique_lock guard(lock_);
    for (Job** place = &jobs_; *place != nullptr; place = &(*place)->next) {
      if (*place != job) continue;
      *place = job->next;
      break;
    }
    done_.wait(guard, [job] { return job->working == 0; });
  }

  using Helper = Thread<Pool, &Pool::Help>;

  Mutex lock_;  // all below
  Condition work_, done_;
  std::vector<Helper> threads_;
  Job* jobs_ = nullptr;  // those that want more helpers
  bool ending_ = false;
};

Pool pool;
Mutex usersLock;  // held while the pool ends
int users = 0;

/// How many threads are worth their waking, which takes some microseconds each.
int Workers(int rows, int64_t rowCost) noexcept {
  constexpr int64_t kLeastShare = 30000;
  const int64_t processors = std::max(1u, std::thread::hardware_concurrency());
  return static_cast<int>(
      std::clamp(rows * rowCost / kLeastShare, int64_t{1}, std::min<int64_t>(rows, processors)));
}

}  // namespace

RowHelpers::RowHelpers() noexcept {
  const std::lock_guard guard(usersLock);
  ++users;
}

RowHelpers::~RowHelpers() {
  const std::lock_guard guard(usersLock);
  if (--users == 0) pool.End();
}

void ParallelRows(int rows, int64_t rowCost, RowTask* task, const void* context) noexcept {
  if (rows <= 0) return;
  const int workers = Workers(rows, rowCost);
  SharedRows shared(rows, workers, task, context);
  if (workers == 1) return shared.Work();
  const RowHelpers helpers;
  pool.Run(&shared, workers - 1);
}

}  // namespace pictavo
