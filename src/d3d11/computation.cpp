#include "d3d11/computation.h"

#include <cmath>
#include <cstring>

#include "d3d11/code.h"

namespace pictavo::d3d11 {
namespace {

/// Binds views. What is to become an output must not be an input any more, nor the other way round:
/// Direct3D takes such inputs away, and its debug layer warns.
void BindViews(ID3D11DeviceContext* context, ID3D11ShaderResourceView* const* inputs,
               ID3D11UnorderedAccessView* const* outputs, const UINT* counters) {
  constexpr UINT kSlots = SavedState::kSlots;
  constexpr std::array<ID3D11ShaderResourceView*, kSlots> kNone = {};
  context->CSSetShaderResources(0, kSlots, kNone.data());
  context->CSSetUnorderedAccessViews(0, kSlots, outputs, counters);
  context->CSSetShaderResources(0, kSlots, inputs);
}

}  // namespace

SavedState::SavedState(ID3D11DeviceContext* context) noexcept : context_(context) {
  context->CSGetShader(&shader_, instances_.data(), &instanceCount_);
  context->CSGetConstantBuffers(0, 1, &constants_);
  context->CSGetShaderResources(0, kSlots, inputs_.data());
  context->CSGetUnorderedAccessViews(0, kSlots, outputs_.data());
}

SavedState::~SavedState() {
  const auto release = [](IUnknown* object) {
    if (object != nullptr) object->Release();
  };
  constexpr UINT kKeep = ~0u;  // the counter that a view may have
  const std::array<UINT, kSlots> counters = {kKeep, kKeep, kKeep};
  BindViews(context_, inputs_.data(), outputs_.data(), counters.data());
  context_->CSSetConstantBuffers(0, 1, &constants_);
  context_->CSSetShader(shader_, instances_.data(), instanceCount_);
  for (UINT i = 0; i < instanceCount_; ++i) release(instances_[i]);
  for (UINT i = 0; i < kSlots; ++i) {
    release(inputs_[i]);
    release(outputs_[i]);
  }
  release(constants_);
  release(shader_);
}

UINT GroupsOf32(i64 length) {
  return static_cast<UINT>(std::ceil(static_cast<double>(length) * 0.03125));
}

Pass PassOver(Shader shader, const Pictures& pictures, i64 width, i64 height) {
  return {.shader = shader,
          .inputs = {pictures.src.in.Get()},
          .outputs = {pictures.dst.out.Get()},
          .groupsX = GroupsOf32(width),
          .groupsY = GroupsOf32(height)};
}

u32 Computation::Run(const Pass& pass, const void* block, u32 blockSize) noexcept {
  ComPtr<ID3D11ComputeShader> shader;
  u32 code = owner_->GetShader(device_, pass.shader, &shader);
  if (code != PICTAVO_S_OK) return code;
  context_->CSSetShader(shader.Get(), nullptr, 0);
  if (block != nullptr) {
    std::array<u8, kConstantBytes> whole = {};  // a buffer is written as a whole only
    std::memcpy(whole.data(), block, blockSize);
    ComPtr<ID3D11Buffer> constants;
    code = owner_->GetConstantBuffer(device_, &constants);
    if (code != PICTAVO_S_OK) return code;
    context_->UpdateSubresource(constants.Get(), 0, nullptr, whole.data(), 0, 0);
    context_->CSSetConstantBuffers(0, 1, constants.GetAddressOf());
  }
  code = Bind(pass);
  if (code == PICTAVO_S_OK) context_->Dispatch(pass.groupsX, pass.groupsY, 1);
  return code;
}

u32 Computation::Bind(const Pass& pass) noexcept {
  constexpr UINT kSlots = SavedState::kSlots;
  BindViews(context_, pass.inputs.data(), pass.outputs.data(), nullptr);

  // A source that the host still has bound for output elsewhere is silently not bound.
  std::array<ID3D11ShaderResourceView*, kSlots> bound = {};
  context_->CSGetShaderResources(0, kSlots, bound.data());
  const bool complete = bound == pass.inputs;
  for (ID3D11ShaderResourceView* view : bound) {
    if (view != nullptr) view->Release();
  }
  return complete ? PICTAVO_S_OK : PICTAVO_E_INVALIDARG;
}

}  // namespace pictavo::d3d11
