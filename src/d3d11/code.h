#ifndef PICTAVO_D3D11_CODE_H_
#define PICTAVO_D3D11_CODE_H_

#include <windows.h>

#include "pictavo/pictavo.h"

namespace pictavo::d3d11 {

/// A result of Direct3D as the library returns it.
inline u32 Code(HRESULT result) { return static_cast<u32>(result); }

}  // namespace pictavo::d3d11

#endif  // PICTAVO_D3D11_CODE_H_
