// Asking the host's surfaces for their pictures.
#ifndef PICTAVO_FRAME_SURFACE_H_
#define PICTAVO_FRAME_SURFACE_H_

#include "frame/result.h"

namespace pictavo {

/// Asks a surface for its picture.
inline u32 Ask(IPictavoSurface* surface, ImageDesc* image) noexcept {
  constexpr u32 kUsable = 1;
  *image = {};
  return surface->Query(image) == kUsable ? PICTAVO_S_OK : PICTAVO_E_FAIL;
}

inline u32 Ask(IPictavoSurface* dst, ImageDesc* dstImage, IPictavoSurface* src,
               ImageDesc* srcImage) noexcept {
  if (dst == nullptr || src == nullptr) return PICTAVO_E_POINTER;
  PICTAVO_RETURN_IF_FAILED(Ask(dst, dstImage));
  return Ask(src, srcImage);
}

}  // namespace pictavo

#endif  // PICTAVO_FRAME_SURFACE_H_
