#include "cpu/filters/blur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "platform/pages.h"

namespace pictavo::cpu {
namespace {

/// 32-bit pixels; lines are rows, or columns for those who swap the steps and the sizes.
struct Surface {
  u8* first;
  i64 lineStep;   // bytes
  i64 pixelStep;  // bytes
  i64 lines;
  i64 pixels;  // in a line

  u8* At(i64 line, i64 pixel) const { return first + line * lineStep + pixel * pixelStep; }
  Surface Transposed() const { return {first, pixelStep, lineStep, pixels, lines}; }
};

/// The radii of the three boxes: each takes the pixels up to so far away on both sides.
using Radii = std::array<i64, 3>;

// ---------------------------------------------------------------------------------------------
// The rule.

/// The pixels around one, as far as they contribute: clear ones do not. The temporary picture is
/// allocated by the page, so no side is long enough for a sum to leave 31 bits.
struct PixelWindow {
  i32 sums[4] = {};
  i32 count = 0;

  void Enter(const u8* pixel) {
    if (pixel[3] == 0) return;
    for (int c = 0; c < 4; ++c) sums[c] += pixel[c];
    ++count;
  }
  void Leave(const u8* pixel) {
    if (pixel[3] == 0) return;
    for (int c = 0; c < 4; ++c) sums[c] -= pixel[c];
    --count;
  }

  /// Colours are averaged over the contributing pixels, alpha over all.
  void Write(i32 size, u8* dst) const {
    if (count == 0) return;
    for (int c = 0; c < 3; ++c) dst[c] = Mean(sums[c], count);
    dst[3] = Mean(sums[3], size);
  }

 private:
  static u8 Mean(i32 sum, i32 number) {
    return static_cast<u8>(std::min(255.0f, static_cast<f32>(sum) / static_cast<f32>(number)));
  }
};

/// Slides a window along each line. Beyond both ends of a line its last pixel goes on. Columns go
/// side by side, so as to use all of the memory that they touch.
void FilterLines(const Surface& dst, const Surface& src, i64 radius) {
  constexpr i64 kSideBySide = 16;
  const i32 size = static_cast<i32>(2 * radius + 1);
  const auto nearest = [&](i64 pixel) { return std::clamp<i64>(pixel, 0, src.pixels - 1); };
  for (i64 first = 0; first < src.lines; first += kSideBySide) {
    const i64 lines = std::min(kSideBySide, src.lines - first);
    PixelWindow windows[kSideBySide];
    for (i64 pixel = -radius - 1; pixel < radius; ++pixel) {
      for (i64 i = 0; i < lines; ++i) windows[i].Enter(src.At(first + i, nearest(pixel)));
    }
    for (i64 pixel = 0; pixel < src.pixels; ++pixel) {
      const i64 in = nearest(pixel + radius), out = nearest(pixel - radius - 1);
      for (i64 i = 0; i < lines; ++i) {
        windows[i].Enter(src.At(first + i, in));
        windows[i].Leave(src.At(first + i, out));
        windows[i].Write(size, dst.At(first + i, pixel));
      }
    }
  }
}

void Copy(const Surface& dst, const Surface& src) {
  for (i64 line = 0; line < src.lines; ++line)
    std::memcpy(dst.At(line, 0), src.At(line, 0), static_cast<size_t>(4 * src.pixels));
}

/// One box blur from src to dst, which spoils src.
void BoxBlur(const Surface& dst, const Surface& src, i64 radius) {
  Copy(dst, src);
  if (radius < 1) return;
  FilterLines(src, dst, radius);
  FilterLines(dst.Transposed(), src.Transposed(), radius);
}

size_t TemporaryBytes(const Surface& image) {
  return size_t{4} * static_cast<size_t>(image.pixels) * static_cast<size_t>(image.lines) + 32;
}

void BlurPortable(const Surface& image, const Radii& radii, u8* scratch) {
  const Surface temporary = {scratch, 4 * image.pixels, 4, image.lines, image.pixels};
  BoxBlur(temporary, image, radii[0]);
  BoxBlur(image, temporary, radii[1]);
  BoxBlur(temporary, image, radii[2]);
  Copy(image, temporary);
}

// ---------------------------------------------------------------------------------------------
// The vector builds. In windows of the sizes here the rule's quotients are whole-number quotients,
// rounded down: single precision holds the sums, and is too fine to round a quotient up to the next
// integer.

constexpr i64 kLargestShort = 257;   // window whose sums fit 16 bits
constexpr i64 kLargestLong = 16383;  // … and for which (sum + 0.5f) * (1.0f / count) is exact

/// How many pixels a window has, and what divides 16-bit sums by that:
/// (sum + bias) * multiplier >> (16 + shift). The bias makes up for a multiplier rounded down; one
/// rounded up needs none. The nearer of the two is exact.
struct WindowSize {
  u32 pixels;
  u32 shift;
  u32 multiplier;
  u32 bias;

  constexpr explicit WindowSize(i64 radius)
      : pixels(static_cast<u32>(2 * radius + 1)), shift(0), multiplier(0), bias(0) {
    while (shift < 8 && 2u << shift < pixels) ++shift;
    const u32 whole = 65536u << shift;
    multiplier = whole / pixels;
    bias = whole % pixels <= pixels / 2 ? 1 : 0;
    multiplier += 1 - bias;
  }

  constexpr u32 Quotient(u32 sum) const {
    return static_cast<u32>(i64{sum + bias} * multiplier >> (16 + shift));
  }
};

constexpr bool ShortSumsDivideExactly() {
  for (i64 radius = 1; 2 * radius + 1 <= kLargestShort; ++radius) {
    const WindowSize size(radius);
    if (size.multiplier > 0xFFFF || 255 * size.pixels + size.bias > 0xFFFF) return false;
    for (u32 quotient = 0; quotient <= 255; ++quotient) {
      if (size.Quotient(quotient * size.pixels) != quotient) return false;
      if (quotient < 255 && size.Quotient((quotient + 1) * size.pixels - 1) != quotient)
        return false;
    }
  }
  return true;
}
static_assert(ShortSumsDivideExactly());

/// A vector build of one box blur.
struct VectorBlur {
  /// The memory that it works in, which may hold anything.
  size_t (*scratchBytes)(const Surface& image, i64 radius);
  void (*run)(const Surface& image, i64 radius, u8* scratch);
};

}  // namespace

#define KERNELS "cpu/filters/blur_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operation.

/// The radii of three boxes, each the odd size below or above the ideal one, that together come
/// near the variance of a Gaussian of radius / 3. How many are of the lower size is truncated, not
/// rounded.
Radii BoxRadii(f32 radius, i64 smallerSide) {
  const f32 sigma = radius / 3.0f;
  const f32 ideal = static_cast<f32>(std::sqrt(12.0 * sigma * sigma / 3.0 + 1.0));
  i64 lower = static_cast<i64>(std::floor(ideal));
  if (lower % 2 == 0) --lower;
  const f32 missing = 12.0f * sigma * sigma - static_cast<f32>(3 * lower * lower) -
                      static_cast<f32>(12 * lower) - 9.0f;
  const i64 lowerBoxes = static_cast<i64>(missing / static_cast<f32>(-4 * lower - 4));
  Radii radii;
  for (i64 i = 0; i < 3; ++i) {
    const i64 box = lowerBoxes < i + 1 ? lower + 2 : lower;
    radii[static_cast<size_t>(i)] = (std::min(box, smallerSide) - 1) / 2;
  }
  return radii;
}

const VectorBlur* VectorBlurFor(i32 level, const Surface& image, const Radii& radii) {
  if (image.pixels < 4 || 2 * radii.back() + 1 > kLargestLong) return nullptr;
  static constexpr Builds<const VectorBlur*> kBuilds = {.sse41 = &sse41::kVectorBlur,
                                                        .avx2 = &avx2::kVectorBlur};
  return kBuilds.For(level);
}

}  // namespace

u32 GaussianBlurBox3(i32 level, u8* image, i32 width, i32 height, i32 pitch, f32 radius) noexcept {
  if (image == nullptr) return PICTAVO_E_POINTER;
  if (width < 1 || height < 1 || !(radius > 0.0f)) return PICTAVO_S_FALSE;
  if (radius > static_cast<f32>(width) || radius > static_cast<f32>(height)) return PICTAVO_S_FALSE;
  if (height > 1 && std::abs(i64{pitch}) < 4 * i64{width}) return PICTAVO_E_INVALIDARG;

  const Surface surface = {image, pitch, 4, height, width};
  const Radii radii = BoxRadii(radius, std::min(width, height));
  const VectorBlur* vectors = VectorBlurFor(level, surface, radii);
  // All builds ask for the temporary picture, so that they refuse the same sizes.
  size_t bytes = TemporaryBytes(surface);
  if (vectors != nullptr) bytes = std::max(bytes, vectors->scratchBytes(surface, radii.back()));
  const Pages pages(bytes);
  if (!pages) return PICTAVO_E_OUTOFMEMORY;
  u8* scratch = static_cast<u8*>(pages.data());
  if (vectors == nullptr) {
    BlurPortable(surface, radii, scratch);
  } else {
    for (const i64 boxRadius : radii) {
      if (boxRadius > 0) vectors->run(surface, boxRadius, scratch);
    }
  }
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
