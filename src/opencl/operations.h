// The operations on OpenCL. pictavo.h states their rules.
#ifndef PICTAVO_OPENCL_OPERATIONS_H_
#define PICTAVO_OPENCL_OPERATIONS_H_

#include "opencl/ocl_base.h"

namespace pictavo::opencl {

u32 ExtendBoundary(COCLBase& ocl, IPictavoSurface* dst, u32 border) noexcept;
u32 Transform(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src,
              const f32 matrix[6]) noexcept;
u32 BilinearInterpolation(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src) noexcept;
u32 FastBlur(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src, u32 radiusX,
             u32 radiusY) noexcept;
u32 MemsetColor(COCLBase& ocl, IPictavoSurface* dst, u32 colour) noexcept;

}  // namespace pictavo::opencl

#endif  // PICTAVO_OPENCL_OPERATIONS_H_
