#ifndef PICTAVO_FRAME_KERNEL_TABLE_H_
#define PICTAVO_FRAME_KERNEL_TABLE_H_

#include <array>
#include <atomic>

#include "cpu/blending/layer.h"
#include "pictavo/pictavo.h"

namespace pictavo {

using cpu::kLayerKernels;
using cpu::kLayerModes;
using cpu::LayerKernel;
using cpu::LayerKernels;

/// Layer kernels by mode, for one level. May be read while another thread fills it: each entry is
/// then the old kernel or the new one, and both give the same pixels.
class KernelTable {
 public:
  void Fill(i32 level, const LayerKernels& builds) noexcept;

  /// The kernel at an entry: 0 … 11 are group A, 12 … 23 group B. Null for an entry without a
  /// kernel and for one outside the table.
  LayerKernel* At(u32 entry) const noexcept {
    return entry < entries_.size() ? entries_[entry].load(std::memory_order_relaxed) : nullptr;
  }

  /// Mixes a layer into the destination by the record's mode, one of `modes` from that entry on.
  /// The arguments and result of slots 73 and 74.
  u32 Mix(u32 firstEntry, u32 modes, ImageDesc* dst, const ImageDesc* src,
          const BlendParam* param) const noexcept;

 private:
  std::array<std::atomic<LayerKernel*>, 2 * kLayerModes> entries_ = {};
};

}  // namespace pictavo

#endif  // PICTAVO_FRAME_KERNEL_TABLE_H_
