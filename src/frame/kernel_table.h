#ifndef PICTAVO_FRAME_KERNEL_TABLE_H_
#define PICTAVO_FRAME_KERNEL_TABLE_H_

#include <array>
#include <atomic>

#include "pictavo/pictavo.h"

namespace pictavo {

/// Mixes the top-left width x height pixels of src into dst. Pitches in bytes.
using LayerKernel = u32(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
                        const BlendParam& param);

inline constexpr u32 kLayerModes = 12;  // modes of one group

/// The builds that a table is filled from. A null entry of `defaults` is a mode without a kernel; a
/// null entry of a vector build keeps what a lower level put there.
struct LayerKernels {
  std::array<LayerKernel*, 2 * kLayerModes> defaults;  // group A (slot 73), then group B (slot 74)
  std::array<LayerKernel*, kLayerModes> sse41;         // group A
  std::array<LayerKernel*, kLayerModes> avx2;          // group A
};

/// The library's own builds.
extern const LayerKernels kLayerKernels;

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

 private:
  std::array<std::atomic<LayerKernel*>, 2 * kLayerModes> entries_ = {};
};

}  // namespace pictavo

#endif  // PICTAVO_FRAME_KERNEL_TABLE_H_
