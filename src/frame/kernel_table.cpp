#include "frame/kernel_table.h"

namespace pictavo {
void KernelTable::Fill(i32 level, const LayerKernels& builds) noexcept {
  for (u32 entry = 0; entry < entries_.size(); ++entry) {
    entries_[entry].store(builds[entry].For(level), std::memory_order_relaxed);
  }
}

}  // namespace pictavo
