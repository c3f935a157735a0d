#include "chromakey/chroma_key_fx.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <new>

#include "platform/debugger.h"
#include "platform/parallel_rows.h"

namespace pictavo::chromakey {
namespace {

using Clock = std::chrono::steady_clock;

/// Ends a line with the time since `start`. Seconds and their millionths are whole numbers, since
/// the C runtime would print others by way of the x87 unit, whose state is the host's.
template <typename... Values>
void TellTime(Clock::time_point start, const wchar_t* format, Values... values) {
  const auto micros = std::chrono::round<std::chrono::microseconds>(Clock::now() - start).count();
  wchar_t line[128];
  if (std::swprintf(line, std::size(line), format, values..., static_cast<int>(micros / 1000000),
                    static_cast<int>(micros % 1000000)) > 0) {
    TellDebugger(line);
  }
}

}  // namespace

u32 ChromaKeyFx::SetSource(const ImageView* view) {
  source_ = view;
  return PICTAVO_S_OK;
}

u32 ChromaKeyFx::SetBackground(const ImageView* view) {
  background_ = view;
  return PICTAVO_S_OK;
}

u32 ChromaKeyFx::SetDestination(const ImageView* view) {
  destination_ = view;
  return PICTAVO_S_OK;
}

u32 ChromaKeyFx::SetKeys(WorkingKey* keys, i32 count) {
  keys_ = keys;
  keyCount_ = count;
  return PICTAVO_S_OK;
}

u32 ChromaKeyFx::Run(i32 composite) {
  if (composite != 0 && background_ == nullptr) return PICTAVO_E_POINTER;
  return source_->isYUV == 0 ? _RunARGB(composite) : _RunAYUV(composite);
}

u32 ChromaKeyFx::_RunARGB(i32 composite) {
  const Clock::time_point start = Clock::now();
  const u32 status = RunPasses(&ChromaKeyFx::_ApplyKeyARGB, composite);
  if (status == PICTAVO_S_OK) TellTime(start, L"[ChromaKeyFx::_RunARGB] %d.%06d seconds\n");
  return status;
}

u32 ChromaKeyFx::_RunAYUV(i32 composite) {
  const Clock::time_point start = Clock::now();
  const u32 status = RunPasses(&ChromaKeyFx::_ApplyKeyAYUV, composite);
  if (status == PICTAVO_S_OK) TellTime(start, L"[ChromaKeyFx::_RunAYUV] %d.%06d seconds\n");
  return status;
}

u32 ChromaKeyFx::_ApplyKeyARGB(i32 keyIndex) {
  const Clock::time_point start = Clock::now();
  KeyPicture(Layout::kArgb, keyIndex);
  TellTime(start, L"[ChromaKeyFx::_ApplyKeyARGB(%d)] %d.%06d seconds\n", keyIndex);
  return PICTAVO_S_OK;
}

u32 ChromaKeyFx::_ApplyKeyAYUV(i32 keyIndex) {
  const Clock::time_point start = Clock::now();
  KeyPicture(Layout::kAyuv, keyIndex);
  TellTime(start, L"[ChromaKeyFx::_ApplyKeyAYUV(%d)] %d.%06d seconds\n", keyIndex);
  return PICTAVO_S_OK;
}

u32 ChromaKeyFx::RunPasses(ApplyKey applyKey, i32 composite) {
  u32 status = PrepareResult(composite);
  for (i32 k = 0; k < keyCount_ && status == PICTAVO_S_OK; ++k) status = (this->*applyKey)(k);
  if (status == PICTAVO_S_OK) FinishResult(composite);
  return status;
}

void ChromaKeyFx::KeyPicture(Layout layout, i32 keyIndex) {
  WorkingKey& key = keys_[keyIndex];
  key.colour = ToYuv(key.keyR, key.keyG, key.keyB);
  const PassKey pass(key.colour, key.angle, key.denoise);
  KeyRow* const keyRow = KeyRowFor(level_, layout, pass.IsNearGrey(), keyIndex == 0);
  ParallelRows(Rows(), destination_->width, [&](int row) {
    const i64 at = row * RowBytes();
    keyRow(result_ + at, source_->pixels + at, destination_->width, pass);
  });
}

i32 ChromaKeyFx::Rows() const {
  return static_cast<i32>(std::min(source_->height, destination_->height));
}

/// The passes write into the destination itself, unless they would write what a later one reads.
u32 ChromaKeyFx::PrepareResult(i32 composite) {
  resultBuffer_.reset();
  result_ = destination_->pixels;
  const i64 distance = reinterpret_cast<intptr_t>(destination_->pixels) -
                       reinterpret_cast<intptr_t>(source_->pixels);
  const bool apart = std::abs(distance) >= Rows() * RowBytes();
  if (composite == 0 && (apart || (distance == 0 && keyCount_ == 1))) return PICTAVO_S_OK;
  resultBuffer_.emplace(std::max(destination_->byteSize, 1u));  // there are no empty pages
  result_ = static_cast<u8*>(resultBuffer_->data());
  return *resultBuffer_ ? PICTAVO_S_OK : PICTAVO_E_OUTOFMEMORY;
}

void ChromaKeyFx::FinishResult(i32 composite) {
  if (!resultBuffer_) return;
  ParallelRows(Rows(), destination_->width, [&](int row) {
    const i64 at = row * RowBytes();
    if (composite == 0) {
      std::memcpy(destination_->pixels + at, result_ + at, static_cast<size_t>(RowBytes()));
    } else {
      CompositeRow(destination_->pixels + at, result_ + at, background_->pixels + at,
                   destination_->width);
    }
  });
}

// ---------------------------------------------------------------------------------------------
// The operation.

namespace {

/// The entry for an accelerated build; there is none.
u32 ApplyChromaKeyAccelerated(const ImageDesc&, ImageDesc&, const ChromaKey*, i32, i32) {
  return PICTAVO_E_NOTIMPL;
}

bool IsUsable(const ImageDesc& image) {
  return image.memoryKind != PICTAVO_MEMORY_D3D11_TEXTURE && image.width >= 0 &&
         image.height >= 0 && image.pitch >= i64{image.width} * 4;
}

}  // namespace

u32 ApplyChromaKey(i32 level, const ImageDesc* src, ImageDesc* dst, const ChromaKey* keys,
                   i32 keyCount, i32 format) noexcept {
  if (src == nullptr || dst == nullptr || keys == nullptr) return PICTAVO_E_POINTER;
  if (src->data == nullptr || dst->data == nullptr) return PICTAVO_E_POINTER;
  // Sizes of pictures and of the result buffer are 32-bit numbers.
  const i64 height = std::max(src->height, dst->height);
  if (!IsUsable(*src) || !IsUsable(*dst) || src->width != dst->width || keyCount < 0 ||
      height * std::max(src->pitch, dst->pitch) > UINT32_MAX) {
    return PICTAVO_E_INVALIDARG;
  }
  if (keyCount == 0) return PICTAVO_S_OK;
  if (level >= 8) {
    const u32 status = ApplyChromaKeyAccelerated(*src, *dst, keys, keyCount, format);
    if (static_cast<i32>(status) >= 0) return status;
  }
  const std::unique_ptr<WorkingKey[]> working(new (std::nothrow)
                                                  WorkingKey[static_cast<size_t>(keyCount)]);
  if (!working) return PICTAVO_E_OUTOFMEMORY;
  std::transform(keys, keys + keyCount, working.get(), [](const ChromaKey& key) {
    return WorkingKey{key.keyR, key.keyG, key.keyB, {}, key.angle, key.denoise};
  });
  const auto view = [&](const ImageDesc& image) {
    return ImageView{static_cast<u32>(image.width), static_cast<u32>(image.height),
                     // For the destination too: no more rows than the source has are keyed.
                     static_cast<u32>(i64{src->height} * image.pitch), static_cast<u8*>(image.data),
                     format != 1};
  };
  const ImageView source = view(*src), destination = view(*dst);
  ChromaKeyFx effect(level);
  effect.SetSource(&source);
  effect.SetDestination(&destination);
  effect.SetKeys(working.get(), keyCount);
  return effect.Run(0);
}

}  // namespace pictavo::chromakey
