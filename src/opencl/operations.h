// The operations on OpenCL, under the names of their methods, whose rules pictavo.h states.
#ifndef PICTAVO_OPENCL_OPERATIONS_H_
#define PICTAVO_OPENCL_OPERATIONS_H_

#include "opencl/ocl_base.h"

namespace pictavo::opencl {

u32 ExtendBoundaryOpenCL(COCLBase& ocl, IPictavoSurface* dst, u32 border) noexcept;
u32 TransformOpenCL(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src,
                    const f32 matrix[6]) noexcept;
u32 BilinearInterpolationOpenCL(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src) noexcept;
u32 FastBlurOpenCL(COCLBase& ocl, IPictavoSurface* dst, IPictavoSurface* src, u32 radiusX,
                   u32 radiusY) noexcept;
u32 MemsetColorOpenCL(COCLBase& ocl, IPictavoSurface* dst, u32 colour) noexcept;

}  // namespace pictavo::opencl

#endif  // PICTAVO_OPENCL_OPERATIONS_H_
