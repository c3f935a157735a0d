#include "frame/kernel_table.h"

namespace pictavo {

void KernelTable::Fill(i32 level, const LayerKernels& builds) noexcept {
  for (u32 entry = 0; entry < entries_.size(); ++entry) {
    entries_[entry].store(builds[entry].For(level), std::memory_order_relaxed);
  }
}

u32 KernelTable::Mix(u32 firstEntry, u32 modes, ImageDesc* dst, const ImageDesc* src,
                     const BlendParam* param) const noexcept {
  if (param == nullptr || dst == nullptr || src == nullptr) return PICTAVO_E_POINTER;
  if (dst->data == nullptr || src->data == nullptr) return PICTAVO_E_POINTER;
  if (param->opacity == 0) return PICTAVO_S_OK;
  LayerKernel* kernel = param->mode < modes ? At(firstEntry + param->mode) : nullptr;
  if (kernel == nullptr || dst->memoryKind == PICTAVO_MEMORY_D3D11_TEXTURE ||
      src->memoryKind == PICTAVO_MEMORY_D3D11_TEXTURE) {
    return PICTAVO_E_INVALIDARG;
  }
  return kernel(static_cast<u8*>(dst->data), static_cast<const u8*>(src->data),
                dst->width < src->width ? dst->width : src->width,
                dst->height < src->height ? dst->height : src->height, dst->pitch, src->pitch,
                *param);
}

}  // namespace pictavo
