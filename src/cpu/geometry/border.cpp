#include "cpu/geometry/border.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "cpu/base/picture.h"

namespace pictavo::cpu {
namespace {

/// Where a picture and its border lie. Counts in pixels, but for the step.
struct Frame {
  u8* picture;  // top-left pixel of the picture …
  u8* outer;    // … and of the border
  i64 width, height, border;
  i64 step;  // bytes from row to row
};

/// A pixel less the bits that are not kept.
template <typename Pixel>
Pixel PixelAt(const u8* p, Pixel kept) {
  Pixel pixel;
  std::memcpy(&pixel, p, sizeof pixel);
  return static_cast<Pixel>(pixel & kept);
}

template <typename Pixel>
void FillRow(u8* to, i64 count, Pixel pixel) {
  for (i64 x = 0; x < count; ++x) std::memcpy(to + x * i64{sizeof pixel}, &pixel, sizeof pixel);
}

/// Fills a rectangle of the extended picture with one of the picture's pixels.
template <typename Pixel>
void Fill(const Frame& f, i64 left, i64 top, i64 width, i64 height, i64 fromX, i64 fromY,
          Pixel kept) {
  const Pixel pixel = PixelAt(f.picture + fromY * f.step + fromX * i64{sizeof kept}, kept);
  for (i64 y = top; y < top + height; ++y)
    FillRow(f.outer + y * f.step + left * i64{sizeof pixel}, width, pixel);
}

/// Whether the border lies around the picture, so that no part reads what another wrote.
template <typename Pixel>
bool IsAround(const Frame& f) {
  constexpr i64 kBytes = sizeof(Pixel);
  return f.outer + f.border * (f.step + kBytes) == f.picture &&
         std::abs(f.step) >= (f.width + 2 * f.border) * kBytes;
}

/// The rows from `first` to before `end`, from the picture's row `from`: one is made, the others
/// are its copies.
template <typename Pixel>
void ExtendRows(const Frame& f, i64 first, i64 end, i64 from, Pixel kept) {
  constexpr i64 kBytes = sizeof(Pixel);
  const u8* const row = f.outer + (f.border + from) * f.step;
  u8* const made = f.outer + first * f.step;
  const i64 width = f.width + 2 * f.border;
  for (i64 x = 0; x < width; ++x) FillRow(made + x * kBytes, 1, PixelAt(row + x * kBytes, kept));
  for (i64 y = first + 1; y < end; ++y)
    std::memcpy(f.outer + y * f.step, made, static_cast<size_t>(width * kBytes));
}

/// Extend where the border lies around the picture: row by row, which is the same.
template <typename Pixel>
void ExtendAround(const Frame& f, Pixel kept) {
  constexpr i64 kBytes = sizeof(Pixel);
  if (f.border == 0) return;
  // The edges of a row lie in pages of their own, so what comes next is asked for some rows ahead.
  constexpr i64 kAhead = 16;
  const i64 asked = std::min<i64>(f.border * kBytes, 256);
  u8* left = f.picture - f.border * kBytes;
  for (i64 y = 0; y < f.height; ++y, left += f.step) {
    u8* const right = left + (f.border + f.width) * kBytes;
    for (const u8* edge : {left, right - kBytes}) {
      for (i64 at = 0; at <= asked; at += 64) __builtin_prefetch(edge + kAhead * f.step + at, 1);
    }
    FillRow(left, f.border, PixelAt(left + f.border * kBytes, kept));
    FillRow(right, f.border, PixelAt(right - kBytes, kept));
  }
  const i64 bottom = f.border + f.height;
  ExtendRows(f, 0, f.border, 0, kept);
  ExtendRows(f, bottom, bottom + f.border, f.height - 1, kept);
}

/// The order matters where a one-byte picture's rows are not tight: later parts then read what
/// earlier ones wrote.
template <typename Pixel>
void Extend(const Frame& f, Pixel kept) {
  if (IsAround<Pixel>(f)) return ExtendAround(f, kept);
  const i64 right = f.border + f.width, bottom = f.border + f.height;
  const i64 lastX = f.width - 1, lastY = f.height - 1;
  Fill(f, 0, 0, f.border, f.border, 0, 0, kept);
  Fill(f, right, 0, f.border, f.border, lastX, 0, kept);
  Fill(f, 0, bottom, f.border, f.border, 0, lastY, kept);
  Fill(f, right, bottom, f.border, f.border, lastX, lastY, kept);
  for (i64 x = 0; x < f.width; ++x) {
    Fill(f, f.border + x, 0, 1, f.border, x, 0, kept);
    Fill(f, f.border + x, bottom, 1, f.border, x, lastY, kept);
  }
  for (i64 y = 0; y < f.height; ++y) {
    Fill(f, 0, f.border + y, f.border, 1, 0, y, kept);
    Fill(f, right, f.border + y, f.border, 1, lastX, y, kept);
  }
}

bool HasRoom(const ImageDesc* image, u32 border) {
  return image != nullptr && image->data != nullptr && !IsTexture(*image) && image->width >= 1 &&
         image->height >= 1 && image->width + 2 * i64{border} <= image->bufferWidth &&
         image->height + 2 * i64{border} <= image->bufferHeight;
}

u32 ExtendPixels(const ImageDesc& image, i64 border, u32 kept) {
  u8* picture = static_cast<u8*>(image.data);
  const i64 step = i64{image.pitch} / 4 * 4;  // whole pixels
  Extend({picture, picture - border * step - 4 * border, image.width, image.height, border, step},
         kept);
  return PICTAVO_S_OK;
}

/// Rows of bytes are as long as the extended picture, whatever the pitch; the pitch only places the
/// border's first row. A shorter pitch would lead outside the buffer.
u32 ExtendBytes(const ImageDesc& image, i64 border) {
  if (border == 0) return PICTAVO_S_OK;
  const i64 step = image.width + 2 * border;
  if (image.pitch < step) return PICTAVO_E_INVALIDARG;
  u8* picture = static_cast<u8*>(image.data);
  Extend(
      {picture, picture - border * image.pitch - border, image.width, image.height, border, step},
      u8{0xFF});
  return PICTAVO_S_OK;
}

}  // namespace

u32 ExtendBoundary(const ImageDesc* image, u32 border) noexcept {
  if (!HasRoom(image, border)) return PICTAVO_E_INVALIDARG;
  if (image->bytesPerPixel == 1) return ExtendBytes(*image, border);
  return image->bytesPerPixel == 4 ? ExtendPixels(*image, border, ~0u) : PICTAVO_E_INVALIDARG;
}

u32 ExtendBoundaryTransparent(const ImageDesc* image, u32 border) noexcept {
  if (!HasRoom(image, border) || image->bytesPerPixel != 4) return PICTAVO_E_INVALIDARG;
  return ExtendPixels(*image, border, 0x00FFFFFF);
}

}  // namespace pictavo::cpu
