// Memory for the time of a call.
#ifndef PICTAVO_CPU_BASE_SCRATCH_H_
#define PICTAVO_CPU_BASE_SCRATCH_H_

#include <cstddef>
#include <optional>

#include "pictavo/pictavo.h"
#include "platform/pages.h"

namespace pictavo::cpu {

/// Pages, unless a little will do: those of a small picture would take longer than the picture.
/// Aligned to 64 bytes; what it holds at first is anything.
class Scratch {
 public:
  explicit Scratch(i64 bytes) {
    if (bytes > i64{sizeof own_}) pages_.emplace(static_cast<size_t>(bytes));
  }

  /// Null when memory is short.
  u8* data() { return pages_ ? static_cast<u8*>(pages_->data()) : own_; }
  bool IsShort() { return data() == nullptr; }

 private:
  alignas(64) u8 own_[16384];
  std::optional<Pages> pages_;
};

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BASE_SCRATCH_H_
