#ifndef PICTAVO_PLATFORM_PARALLEL_ROWS_H_
#define PICTAVO_PLATFORM_PARALLEL_ROWS_H_

#include <cstdint>

namespace pictavo {

/// Keeps the threads that help with rows from one call to the next: they are started when there are
/// rows for them, and end with the last of these objects. They are not the system's pool's, whose
/// threads live on when the library is unloaded.
class RowHelpers {
 public:
  RowHelpers() noexcept;
  ~RowHelpers();
  RowHelpers(const RowHelpers&) = delete;
  RowHelpers& operator=(const RowHelpers&) = delete;
};

using RowTask = void(const void* context, int row);

/// Runs a task for each of the rows 0 … rows - 1, in any order, on the calling thread and, where
/// the work is worth waking them, on helping threads, as many as there are processors together.
/// Returns when all are done. Where no thread can be started, the caller does them all. The task
/// must not throw. Any number of threads may call it at once.
/// @param rowCost about how many nanoseconds a row takes
void ParallelRows(int rows, int64_t rowCost, RowTask* task, const void* context) noexcept;

/// The same with a function object that takes the row.
template <typename Body>
void ParallelRows(int rows, int64_t rowCost, const Body& body) noexcept {
  ParallelRows(
      rows, rowCost,
      [](const void* context, int row) { (*static_cast<const Body*>(context))(row); }, &body);
}

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_PARALLEL_ROWS_H_
