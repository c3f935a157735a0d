// Turning textures on the processor.
#include <cstring>
#include <mutex>
#include <utility>

#include "cpu/geometry/warp.h"
#include "d3d11/code.h"
#include "d3d11/d3d11_base.h"
#include "d3d11/pictures.h"
#include "frame/result.h"

namespace pictavo {

using namespace d3d11;

namespace {

/// A picture in a buffer of the memory manager's, which goes back at the end.
class ManagedPicture {
 public:
  explicit ManagedPicture(const PixelMemory& memory) : memory_(memory) {}
  ~ManagedPicture() {
    const std::lock_guard guard(memory_.lock);
    memory_.client->FreeBuffer(&buffer_);
  }
  ManagedPicture(const ManagedPicture&) = delete;
  ManagedPicture& operator=(const ManagedPicture&) = delete;

  /// Makes room for it, and for a clear rim of so many pixels. @return a failure, or not
  u32 Allocate(i32 width, i32 height, i32 rim) noexcept {
    constexpr u32 kPlainMemory = 0, kFourBytes = 1;
    const i32 fullWidth = width + 2 * rim, fullHeight = height + 2 * rim, pitch = 4 * fullWidth;
    const std::lock_guard guard(memory_.lock);
    PICTAVO_RETURN_IF_FAILED(memory_.client->AllocateBuffer(
        &buffer_, kPlainMemory, kFourBytes, static_cast<u32>(fullWidth),
        static_cast<u32>(fullHeight), static_cast<u32>(pitch), rim, 0, 0, 0));
    u8* const first = static_cast<u8*>(buffer_->GetPixels()) + i64{rim} * (pitch + 4);
    image_ = {{}, fullWidth, fullHeight, 0, first, width, height, pitch, 4};
    return PICTAVO_S_OK;
  }

  ImageDesc* image() { return &image_; }

 private:
  const PixelMemory& memory_;
  IMemoryBuffer* buffer_ = nullptr;
  ImageDesc image_ = {};
};

/// Copies rows of pixels, and lets red and blue change places where asked.
void CopyRows(const ImageDesc& to, const D3D11_MAPPED_SUBRESOURCE& from, bool swap) {
  for (i32 y = 0; y < to.height; ++y) {
    u8* const row = static_cast<u8*>(to.data) + i64{y} * to.pitch;
    std::memcpy(row, static_cast<const u8*>(from.pData) + i64{y} * from.RowPitch,
                static_cast<size_t>(4 * to.width));
    for (i32 x = 0; swap && x < to.width; ++x) std::swap(row[4 * x], row[4 * x + 2]);
  }
}

}  // namespace

u32 CPictavo_D3D::Rotate(const D3DCall& call, i32 level, const RotateParam* param,
                         const PixelMemory& memory) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  Pictures pictures;
  PICTAVO_RETURN_IF_FAILED(OpenTextures(call, true, {}, &pictures));
  const auto& [dst, src] = pictures;
  cpu::RotationSteps steps;  // which show that it can be turned
  if (AnyPlane(pictures) || DescOf(dst).Usage != D3D11_USAGE_DEFAULT ||
      call.context->GetType() != D3D11_DEVICE_CONTEXT_IMMEDIATE ||
      !cpu::FindRotationSteps(*param, dst.width, dst.height, &steps)) {
    return PICTAVO_E_INVALIDARG;
  }
  ManagedPicture before(memory), after(memory);
  PICTAVO_RETURN_IF_FAILED(before.Allocate(src.width, src.height, 1));
  PICTAVO_RETURN_IF_FAILED(after.Allocate(dst.width, dst.height, 0));

  UseDevice(call.device);
  Picture readBack;
  PICTAVO_RETURN_IF_FAILED(GetReadBack(call.device, src, &readBack));
  call.context->CopySubresourceRegion(readBack.texture.Get(), 0, 0, 0, 0, src.texture.Get(), 0,
                                      nullptr);
  D3D11_MAPPED_SUBRESOURCE mapped;
  PICTAVO_RETURN_IF_FAILED(
      Code(call.context->Map(readBack.texture.Get(), 0, D3D11_MAP_READ, 0, &mapped)));
  CopyRows(*before.image(), mapped, src.format != dst.format);
  call.context->Unmap(readBack.texture.Get(), 0);

  PICTAVO_RETURN_IF_FAILED(cpu::RotatePicture(level, before.image(), after.image(), param));
  call.context->UpdateSubresource(dst.texture.Get(), 0, nullptr, after.image()->data,
                                  static_cast<UINT>(after.image()->pitch), 0);
  return PICTAVO_S_OK;
}

}  // namespace pictavo
