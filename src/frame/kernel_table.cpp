#include "frame/kernel_table.h"

namespace pictavo {
void KernelTable::Fill(i32 level, const LayerKernels& builds) noexcept {
  for (u32 entry = 0; entry < entries_.size(); ++entry) {
    LayerKernel* kernel = builds.defaults[entry];
    if (entry < kLayerModes) {
      if (level >= PICTAVO_LEVEL_SSE4_1 && builds.sse41[entry]) kernel = builds.sse41[entry];
      if (level >= PICTAVO_LEVEL_AVX2 && builds.avx2[entry]) kernel = builds.avx2[entry];
    }
    entries_[entry].store(kernel, std::memory_order_relaxed);
  }
}

}  // namespace pictavo
