#ifndef PICTAVO_D3D11_D3D11_BASE_H_
#define PICTAVO_D3D11_D3D11_BASE_H_

#include <unknwn.h>

#include <array>

#include "frame/common_utility.h"
#include "platform/critical_section.h"

namespace pictavo {

/// What every Direct3D 11 part owns: a memory-manager client, made by the first operation that
/// creates a texture.
class CD3D11Base {
 public:
  CD3D11Base() = default;
  virtual ~CD3D11Base();
  CD3D11Base(const CD3D11Base&) = delete;
  CD3D11Base& operator=(const CD3D11Base&) = delete;

 protected:
  CriticalSection utilityLock_;  // guards the creation of utility_
  CCommonUtility* utility_ = nullptr;
};

/// Holds the shader objects that the compute operations make on demand.
class CPictavo_D3D : public CD3D11Base {
 public:
  ~CPictavo_D3D() override;

  /// Releases every object of the resource table, in its order.
  void ReleaseResources() noexcept;

 protected:
  CriticalSection resourceLock_;  // guards resources_
  std::array<IUnknown*, 25> resources_ = {};
};

/// The filter object, made by the first operation that needs it, with a memory-manager client of
/// its own.
class CPictavo_Dilation : public CPictavo_D3D {
 public:
  CPictavo_Dilation() noexcept;
  ~CPictavo_Dilation() override;

 private:
  CCommonUtility* filterUtility_;
};

}  // namespace pictavo

#endif  // PICTAVO_D3D11_D3D11_BASE_H_
