// Pictures as operations see them.
#ifndef PICTAVO_CPU_BASE_PICTURE_H_
#define PICTAVO_CPU_BASE_PICTURE_H_

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

/// Columns and rows from the first to before the last, in 64 bits, in which a host's extreme
/// numbers keep their meaning.
struct Rectangle {
  i64 left, top, right, bottom;

  i64 width() const { return right - left; }
  i64 height() const { return bottom - top; }
  bool IsEmpty() const { return right <= left || bottom <= top; }
  bool IsInside(const Rectangle& other) const {
    return left >= other.left && top >= other.top && right <= other.right && bottom <= other.bottom;
  }
  Rectangle CutTo(const Rectangle& other) const {
    return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
            std::min(bottom, other.bottom)};
  }
};

/// Of a host's four numbers.
inline Rectangle RectangleOf(const i32* rect) { return {rect[0], rect[1], rect[2], rect[3]}; }

/// A pixel of 4 bytes, which may lie anywhere.
inline u32 LoadPixel(const u8* p) {
  u32 pixel;
  std::memcpy(&pixel, p, sizeof pixel);
  return pixel;
}

/// Rows of pixels in the host's memory. Sizes in pixels, the pitch in bytes; it may be negative.
template <typename Byte>
struct PictureOf {
  Byte* pixels = nullptr;
  i64 width = 0, height = 0, pitch = 0;
  i64 pixelBytes = 4;

  bool IsEmpty() const { return width < 1 || height < 1; }
  Byte* Row(i64 y) const { return pixels + y * pitch; }
  /// Whether a row is no longer than the pitch, which is not negative then.
  bool HoldsRows() const { return pitch >= (width > 0 ? width : 0) * pixelBytes; }

  Rectangle Frame() const { return {0, 0, width, height}; }
  /// The pixels of a rectangle that lies inside.
  PictureOf Part(const Rectangle& r) const {
    return {Row(r.top) + r.left * pixelBytes, r.width(), r.height(), pitch, pixelBytes};
  }

  /// The same rows from the last to the first.
  PictureOf Flipped() const {
    return {pixels + (height - 1) * pitch, width, height, -pitch, pixelBytes};
  }
};

using Picture = PictureOf<u8>;
using Source = PictureOf<const u8>;

/// The picture that a record describes, as it stands there.
inline Picture PictureIn(const ImageDesc& image) {
  return {static_cast<u8*>(image.data), image.width, image.height, image.pitch,
          image.bytesPerPixel};
}
inline Source SourceIn(const ImageDesc& image) {
  const Picture picture = PictureIn(image);
  return {picture.pixels, picture.width, picture.height, picture.pitch, picture.pixelBytes};
}
inline bool IsTexture(const ImageDesc& image) {
  return image.memoryKind == PICTAVO_MEMORY_D3D11_TEXTURE;
}

/// The usual checks, in their order: PICTAVO_S_OK when there are pixels to work on, else what the
/// operation returns. `hold` says whether its own parameters are in their ranges.
template <typename... Pictures>
u32 CheckWith(bool hold, const Pictures&... pictures) {
  if ((... || (pictures.pixels == nullptr))) return PICTAVO_E_POINTER;
  if (!hold || (... || !pictures.HoldsRows())) return PICTAVO_E_INVALIDARG;
  return (... || pictures.IsEmpty()) ? PICTAVO_S_FALSE : PICTAVO_S_OK;
}
template <typename... Pictures>
u32 Check(const Pictures&... pictures) {
  return CheckWith(true, pictures...);
}

/// The same for records of 32-bit pixels in plain memory.
template <typename... Images>
u32 CheckRecords(bool hold, const Images*... images) {
  if ((... || (images == nullptr || images->data == nullptr))) return PICTAVO_E_POINTER;
  const bool plain = (... && (!IsTexture(*images) && images->bytesPerPixel == 4));
  return CheckWith(hold && plain, PictureIn(*images)...);
}

/// Whether no memory holds a picture of that size, which must be known before 64-bit products of
/// its sides and some factors are taken.
template <typename Byte>
bool IsBeyondMemory(const PictureOf<Byte>& picture) {
  return picture.width * picture.height > i64{1} << 40;
}

template <typename A, typename B>
bool SameSize(const PictureOf<A>& a, const PictureOf<B>& b) {
  return a.width == b.width && a.height == b.height;
}

/// Whether two pictures of one size are one.
template <typename A, typename B>
bool AreSame(const PictureOf<A>& a, const PictureOf<B>& b) {
  return a.pixels == b.pixels && a.pitch == b.pitch && a.pixelBytes == b.pixelBytes;
}

/// Whether two pictures whose rows hold what they should share a byte. Pictures side by side in one
/// buffer share none, which their rows tell.
template <typename A, typename B>
bool ShareBytes(const PictureOf<A>& a, const PictureOf<B>& b) {
  const auto end = [](const auto& p) { return p.Row(p.height - 1) + p.width * p.pixelBytes; };
  if (end(a) <= b.pixels || end(b) <= a.pixels) return false;
  for (i64 i = 0, j = 0; i < a.height && j < b.height;) {
    const u8 *first = a.Row(i), *second = b.Row(j);
    if (first + a.width * a.pixelBytes <= second) {
      ++i;
    } else if (second + b.width * b.pixelBytes <= first) {
      ++j;
    } else {
      return true;
    }
  }
  return false;
}

/// Calls row(dst, src, width) for each row of two pictures of the destination's size.
template <typename Row>
void ForRows(const Picture& dst, const Source& src, Row row) {
  for (i64 y = 0; y < dst.height; ++y) row(dst.Row(y), src.Row(y), dst.width);
}

/// The same for rules that make each pixel of its own: packed pictures are then one row, which
/// begins and ends but once.
template <typename Row>
void ForPixels(const Picture& dst, const Source& src, Row row) {
  const bool packed =
      dst.pitch == dst.width * dst.pixelBytes && src.pitch == dst.width * src.pixelBytes;
  if (packed && dst.height > 0) {
    row(dst.pixels, src.pixels, dst.width * dst.height);
  } else {
    ForRows(dst, src, row);
  }
}

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BASE_PICTURE_H_
