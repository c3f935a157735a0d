#ifndef PICTAVO_PLATFORM_PARALLEL_ROWS_H_
#define PICTAVO_PLATFORM_PARALLEL_ROWS_H_

#include <cstdint>

namespace pictavo {

using RowTask = void(const void* context, int row);

/// Runs a task for each of the rows 0 … rows - 1, in any order, on the calling thread and, where
/// the work is worth waking them, on those of the system's pool. Returns when all are done. Where
/// the pool has nothing to give, the caller does them all. The task must not throw.
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
