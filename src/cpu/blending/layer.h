// Layer blend modes: the kernels behind slots 73 and 74, which state the rule.
#ifndef PICTAVO_CPU_BLENDING_LAYER_H_
#define PICTAVO_CPU_BLENDING_LAYER_H_

#include <array>

#include "cpu/base/builds.h"
#include "pictavo/pictavo.h"

namespace pictavo::cpu {

/// Mixes the top-left width x height pixels of src into dst. Pitches in bytes.
/// @return PICTAVO_S_OK, or PICTAVO_E_INVALIDARG for parameters that the mode cannot use
using LayerKernel = u32(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch, i32 srcPitch,
                        const BlendParam& param);

inline constexpr u32 kLayerModes = 12;  // modes of one group

/// The builds of every mode: group A (slot 73), then group B (slot 74). A mode without any has no
/// kernel.
using LayerKernels = std::array<Builds<LayerKernel*>, 2 * kLayerModes>;

/// The library's own.
extern const LayerKernels kLayerKernels;

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BLENDING_LAYER_H_
