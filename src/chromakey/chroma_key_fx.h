// The chroma key: slot 86, which states the rule.
#ifndef PICTAVO_CHROMAKEY_CHROMA_KEY_FX_H_
#define PICTAVO_CHROMAKEY_CHROMA_KEY_FX_H_

#include <optional>

#include "chromakey/key_rows.h"
#include "pictavo/pictavo.h"
#include "platform/pages.h"

namespace pictavo::chromakey {

/// A picture as the effect sees it: packed rows.
struct ImageView {
  u32 width;
  u32 height;
  u32 byteSize;
  u8* pixels;
  u32 isYUV;  // 0: bytes B, G, R, A; else V, U, Y, A
};

/// A key as the effect works with it.
struct WorkingKey {
  u8 keyR, keyG, keyB;
  Yuv colour;  // known from its pass on
  i32 angle;
  i32 denoise;
};

/// Keys a picture: a pass over it for each key, then one that hands the result over. Views and keys
/// are borrowed. Statuses are result codes, negative for failures.
class ChromaKeyFx {
 public:
  explicit ChromaKeyFx(i32 level) : level_(level) {}
  virtual ~ChromaKeyFx() = default;
  ChromaKeyFx(const ChromaKeyFx&) = delete;
  ChromaKeyFx& operator=(const ChromaKeyFx&) = delete;

  u32 SetSource(const ImageView* view);
  /// Of the destination's size; for runs that composite.
  u32 SetBackground(const ImageView* view);
  /// As wide as the source. Of different heights the rows that both have are keyed.
  u32 SetDestination(const ImageView* view);
  /// At least one key.
  u32 SetKeys(WorkingKey* keys, i32 count);

  /// Keys the source into the destination, or, with `composite`, lays the keyed source over the
  /// background there.
  u32 Run(i32 composite);

 private:
  u32 _RunARGB(i32 composite);
  u32 _RunAYUV(i32 composite);
  u32 _ApplyKeyARGB(i32 keyIndex);
  u32 _ApplyKeyAYUV(i32 keyIndex);

  using ApplyKey = u32 (ChromaKeyFx::*)(i32 keyIndex);
  u32 RunPasses(ApplyKey applyKey, i32 composite);
  void KeyPicture(Layout layout, i32 keyIndex);
  u32 PrepareResult(i32 composite);
  void FinishResult(i32 composite);

  i32 Rows() const;
  i64 RowBytes() const { return i64{destination_->width} * 4; }

  const i32 level_;
  const ImageView* source_ = nullptr;
  const ImageView* background_ = nullptr;
  const ImageView* destination_ = nullptr;
  WorkingKey* keys_ = nullptr;
  i32 keyCount_ = 0;
  std::optional<Pages> resultBuffer_;
  u8* result_ = nullptr;  // the buffer, or the destination itself
};

/// The operation behind the slot.
u32 ApplyChromaKey(i32 level, const ImageDesc* src, ImageDesc* dst, const ChromaKey* keys,
                   i32 keyCount, i32 format) noexcept;

}  // namespace pictavo::chromakey

#endif  // PICTAVO_CHROMAKEY_CHROMA_KEY_FX_H_
