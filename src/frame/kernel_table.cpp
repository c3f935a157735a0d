#include "frame/kernel_table.h"

namespace pictavo {
namespace {

// Stands at the entries of modes that have a place in the table but no kernel yet.
u32 NotBuilt(u8*, const u8*, i32, i32, i32, i32, const BlendParam&) { return PICTAVO_E_NOTIMPL; }

constexpr LayerKernel* X = NotBuilt;

}  // namespace

const LayerKernels kLayerKernels = {
    .defaults = {X, X, X, X, X, X, X, X, X,       X, X, X,   // modes 0 … 11
                 X, X, X, X, X, X, X, X, nullptr, X, X, X},  // their sub-pixel twins; no mode 8
    .sse41 = {X, X, X, X, X, X, X, X, X, X, X, X},
    .avx2 = {X, X, X, X, X, nullptr, X},  // 5 and 7 … 11 keep their SSE4.1 kernel
};

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
