#include "d3d11/d3d11_base.h"

#include <mutex>

namespace pictavo {

CD3D11Base::~CD3D11Base() { delete utility_; }

CPictavo_D3D::~CPictavo_D3D() { ReleaseResources(); }

void CPictavo_D3D::ReleaseResources() noexcept {
  const std::lock_guard guard(resourceLock_);
  for (IUnknown*& resource : resources_) {
    if (resource != nullptr) resource->Release();
    resource = nullptr;
  }
}

CPictavo_Dilation::CPictavo_Dilation() noexcept
    : filterUtility_(CCommonUtility::Create("CPictavo_Dilation", this)) {}

CPictavo_Dilation::~CPictavo_Dilation() { delete filterUtility_; }

}  // namespace pictavo
