// Running compute shaders on a host's context.
#ifndef PICTAVO_D3D11_COMPUTATION_H_
#define PICTAVO_D3D11_COMPUTATION_H_

#include <d3d11.h>

#include <array>

#include "d3d11/d3d11_base.h"
#include "d3d11/pictures.h"

namespace pictavo::d3d11 {

/// The compute state of a context that the shaders here use, taken over for this object's life and
/// put back at its end.
class SavedState {
 public:
  static constexpr UINT kSlots = 3;  // of each kind of view

  explicit SavedState(ID3D11DeviceContext* context) noexcept;
  ~SavedState();
  SavedState(const SavedState&) = delete;
  SavedState& operator=(const SavedState&) = delete;

 private:
  ID3D11DeviceContext* context_;
  ID3D11ComputeShader* shader_ = nullptr;
  std::array<ID3D11ClassInstance*, D3D11_SHADER_MAX_INTERFACES> instances_;
  UINT instanceCount_ = D3D11_SHADER_MAX_INTERFACES;
  ID3D11Buffer* constants_ = nullptr;
  std::array<ID3D11ShaderResourceView*, kSlots> inputs_ = {};
  std::array<ID3D11UnorderedAccessView*, kSlots> outputs_ = {};
};

/// One run of a shader: what it reads and writes, in the order of the registers.
struct Pass {
  Shader shader;
  std::array<ID3D11ShaderResourceView*, SavedState::kSlots> inputs;
  std::array<ID3D11UnorderedAccessView*, SavedState::kSlots> outputs;
  UINT groupsX, groupsY;
};

/// The groups of 32 threads that cover a length.
UINT GroupsOf32(i64 length);

/// A pass from the source to the destination, one thread a pixel of an area.
Pass PassOver(Shader shader, const Pictures& pictures, i64 width, i64 height);

/// Runs the passes of one operation and leaves the context as it was.
class Computation {
 public:
  Computation(CPictavo_D3D* owner, const D3DCall& call) noexcept
      : owner_(owner), device_(call.device), context_(call.context), saved_(call.context) {
    owner->UseDevice(call.device);
  }

  /// A pass without parameters.
  u32 Run(const Pass& pass) noexcept { return Run(pass, nullptr, 0); }

  template <typename Block>
  u32 Run(const Pass& pass, const Block& block) noexcept {
    static_assert(sizeof(Block) <= kConstantBytes);
    return Run(pass, &block, sizeof(Block));
  }

 private:
  u32 Run(const Pass& pass, const void* block, u32 blockSize) noexcept;
  u32 Bind(const Pass& pass) noexcept;

  CPictavo_D3D* owner_;
  ID3D11Device* device_;
  ID3D11DeviceContext* context_;
  SavedState saved_;
};

}  // namespace pictavo::d3d11

#endif  // PICTAVO_D3D11_COMPUTATION_H_
