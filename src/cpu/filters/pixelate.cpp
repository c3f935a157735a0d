#include "cpu/filters/pixelate.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/simd/avx2.h"

namespace pictavo::cpu {
namespace {

/// Of alphas, and of colours times alpha.
struct Sums {
  i64 colours[3], alpha;
};

void AddPixel(const u8* pixel, Sums* sums) {
  const i64 alpha = pixel[3];
  for (size_t i = 0; i < 3; ++i) sums->colours[i] += alpha * pixel[i];
  sums->alpha += alpha;
}

/// The nearest whole number to a / b, halves up, where that is a byte. Exact for b below 2^45,
/// which takes more pixels than fit in memory.
u32 NearestQuotient(i64 a, i64 b) {
  return static_cast<u32>(static_cast<double>(a + b / 2) / static_cast<double>(b));
}

u32 MeanPixel(const Sums& sums, i64 count) {
  const u32 alpha = NearestQuotient(sums.alpha, count);
  if (alpha == 0) return 0;
  u32 pixel = alpha << 24;
  for (size_t i = 0; i < 3; ++i) pixel |= NearestQuotient(sums.colours[i], sums.alpha) << 8 * i;
  return pixel;
}

/// Makes blocks of a row of them, of which so many pixels may be read from the first on.
using PixelateBandFn = void(const Picture& band, i64 side, i64 readable);

Sums SumBlock(const Picture& block) {
  Sums sums = {};
  for (i64 y = 0; y < block.height; ++y)
    for (i64 x = 0; x < block.width; ++x) AddPixel(block.Row(y) + 4 * x, &sums);
  return sums;
}

/// Makes blocks of a band: fill(x, block) fills the first row of each, which the others repeat.
template <typename Fill>
void FillBlocks(const Picture& band, i64 side, Fill fill) {
  for (i64 x = 0; x < band.width; x += side)
    fill(x, band.Part({x, 0, std::min(x + side, band.width), band.height}));
  for (i64 y = 1; y < band.height; ++y)
    std::memcpy(band.Row(y), band.pixels, static_cast<size_t>(4 * band.width));
}

void PixelateBand(const Picture& band, i64 side, i64) {
  FillBlocks(band, side, [](i64, const Picture& block) {
    const u32 mean = MeanPixel(SumBlock(block), block.width * block.height);
    for (i64 x = 0; x < block.width; ++x) std::memcpy(block.pixels + 4 * x, &mean, 4);
  });
}

}  // namespace

#define KERNELS "cpu/filters/pixelate_blocks.inl"
#include "cpu/simd/for_avx2.inl"
#undef KERNELS

u32 PixelateRegion(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, const i32* rect,
                   u32 block) noexcept {
  static constexpr Builds<PixelateBandFn*> kBuilds = {.portable = PixelateBand,
                                                      .avx2 = avx2::VectorPixelateBand};
  if (rect == nullptr) return PICTAVO_E_POINTER;
  const Picture picture = {buffer, width, height, pitch};
  if (const u32 code = CheckWith(block >= 1, picture); code != PICTAVO_S_OK) return code;
  const Rectangle cut = RectangleOf(rect).CutTo(picture.Frame());
  if (cut.IsEmpty()) return PICTAVO_S_OK;
  for (i64 y = cut.top; y < cut.bottom; y += block) {
    const Rectangle band = {cut.left, y, cut.right, std::min(y + block, cut.bottom)};
    kBuilds.For(level)(picture.Part(band), block, width - cut.left);
  }
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
