#include "demo/level_check.h"

#include <algorithm>
#include <cstring>

#include "base/text.h"

namespace host {
namespace {

enum class MixedAlpha { kOpaque, kKept, kTaken };

/// Blends one pixel, or a pair that is treated alike.
void OverGroup(u8* dst, const u8* src, i64 count, f32 factor, MixedAlpha mixedAlpha) {
  int weights[2] = {};
  bool full = true, clear = true;
  for (i64 i = 0; i < count; ++i) {
    weights[i] = static_cast<int>(static_cast<f32>(src[4 * i + 3]) * factor);
    full = full && weights[i] == 255;
    clear = clear && weights[i] == 0;
  }
  if (full) std::memcpy(dst, src, static_cast<size_t>(4 * count));
  if (full || clear) return;
  for (i64 i = 0; i < count; ++i, dst += 4, src += 4) {
    for (int c = 0; c < 3; ++c) {
      dst[c] = static_cast<u8>((src[c] * weights[i] + dst[c] * (256 - weights[i])) >> 8);
    }
    if (mixedAlpha == MixedAlpha::kOpaque) dst[3] = 255;
    if (mixedAlpha == MixedAlpha::kTaken) dst[3] = src[3];
  }
}

u32 Word(const u8* pixel) {
  u32 word;
  std::memcpy(&word, pixel, sizeof word);
  return word;
}

}  // namespace

Picture ExpectedOver(const Operation& operation, Picture background, const Picture& layer,
                     const BlendSettings& settings, i32 level) {
  const bool inPairs = level >= pictavo::PICTAVO_LEVEL_SSE2;
  const bool throughout = operation.levelRule == LevelRule::kPairsThroughout;
  const MixedAlpha mixedAlpha = throughout ? MixedAlpha::kTaken
                                : inPairs  ? MixedAlpha::kKept
                                           : MixedAlpha::kOpaque;
  const i64 group = inPairs ? 2 : 1;
  const i64 rows = throughout ? 1 : layer.height;
  const i64 width = throughout ? i64{layer.width} * layer.height : layer.width;
  for (i64 row = 0; row < rows; ++row) {
    const f32 factor =
        static_cast<f32>(row) / static_cast<f32>(rows) * (settings.rampEnd - settings.rampStart) +
        settings.rampStart;
    u8* dst = background.pixels.data() + 4 * width * row;
    const u8* src = layer.pixels.data() + 4 * width * (settings.flip ? rows - 1 - row : row);
    for (i64 x = 0; x < width; x += group) {
      OverGroup(dst + 4 * x, src + 4 * x, std::min(group, width - x), factor, mixedAlpha);
    }
  }
  return background;
}

std::string FirstDifference(const Picture& expected, const Picture& result) {
  const auto place = std::mismatch(expected.pixels.begin(), expected.pixels.end(),
                                   result.pixels.begin(), result.pixels.end());
  if (place.first == expected.pixels.end()) return {};
  const i64 pixel = (place.first - expected.pixels.begin()) / 4;
  const i32 x = static_cast<i32>(pixel % expected.width);
  const i32 y = static_cast<i32>(pixel / expected.width);
  return Format("pixel (%d, %d) is %08X, not %08X", x, y, Word(result.At(x, y)),
                Word(expected.At(x, y)));
}

}  // namespace host
