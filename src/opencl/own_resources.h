// What the library keeps in its own module's resources.
#ifndef PICTAVO_OPENCL_OWN_RESOURCES_H_
#define PICTAVO_OPENCL_OWN_RESOURCES_H_

#include <array>
#include <string>

#include "pictavo/pictavo.h"

namespace pictavo {

/// A program in OpenCL C and its kernels.
struct OpenCLProgram {
  static constexpr size_t kMostKernels = 3;

  const char* file;
  u32 resource;  // its number among the module's program resources
  std::array<const char*, kMostKernels> kernels;
};

/// Numbered as src/CMakeLists.txt lists the files.
inline constexpr std::array<OpenCLProgram, 5> kOpenCLPrograms = {{
    {"MemColor.cl", 1, {"MemsetColor_ALL"}},
    {"TransformF.cl", 2, {"TransformF_BYTE"}},
    {"Interpolation.cl", 3, {"BilinearInterpolation_BYTE"}},
    {"Blur.cl", 4, {"Blur_FastBlur_X_BYTE", "Blur_FastBlur_Y_BYTE"}},
    {"Common.cl",
     5,
     {"ExtendBoundary_BYTE", "ExtendBoundaryRight_BYTE", "ExtendBoundaryBottom_BYTE"}},
}};

/// The text of a program, from the resources of the module that this code is in; empty when it is
/// not there. @throws std::bad_alloc
std::string ProgramText(u32 resource);

/// The ProductVersion of Pictavo.dll, in its first language; empty when it states none.
/// @throws std::bad_alloc
std::wstring ProductVersion();

}  // namespace pictavo

#endif  // PICTAVO_OPENCL_OWN_RESOURCES_H_
