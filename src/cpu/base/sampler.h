// Sampling between pixels, from the four around a point; cpu/simd/sampler.inl is its vector form.
//
// A pixel whose colour nobody sees must not lend it to others: SamplePixel weights colours by alpha
// too where one of the four is clear, SampleRounded always. That leaves no fringe.
#ifndef PICTAVO_CPU_BASE_SAMPLER_H_
#define PICTAVO_CPU_BASE_SAMPLER_H_

#include <array>
#include <cstring>

#include "pictavo/pictavo.h"

namespace pictavo::cpu {

/// How far right of and below a pixel a point lies, in 1/256 of a pixel: 0 … 256.
struct SamplePoint {
  i32 x, y;

  /// Weights of the pixel, the right one, the one below and the one below right: 65536 together.
  std::array<i32, 4> Weights() const {
    return {(256 - x) * (256 - y), x * (256 - y), (256 - x) * y, x * y};
  }
};

/// An edge policy: what stands beyond the last pixel, here that pixel itself.
struct Replicate {
  static const u8* Beyond(const u8* last) { return last; }
};

/// Two rows of a picture, one below the other.
struct RowPair {
  const u8 *top, *bottom;
  i64 width;
};

inline void SamplePixel(u8* out, const std::array<const u8*, 4>& pixels, SamplePoint point) {
  const std::array<i32, 4> weights = point.Weights();
  bool anyClear = false;
  for (const u8* pixel : pixels) anyClear |= pixel[3] == 0;
  std::array<i64, 4> sums = {};
  i64 total = 0;
  for (size_t i = 0; i < 4; ++i) {
    const i64 alphaSum = i64{weights[i]} * pixels[i][3];
    const i64 weight = anyClear ? alphaSum : weights[i];
    for (size_t c = 0; c < 3; ++c) sums[c] += weight * pixels[i][c];
    sums[3] += alphaSum;
    total += weight;
  }
  for (size_t c = 0; c < 3; ++c) out[c] = static_cast<u8>(total == 0 ? 0 : sums[c] / total);
  out[3] = static_cast<u8>(sums[3] >> 16);
}

/// To the nearest, where SamplePixel cuts. What comes out clear has no colour; at a pixel's own
/// place it stays as it is.
inline void SampleRounded(u8* out, const std::array<const u8*, 4>& pixels, SamplePoint point) {
  if ((point.x | point.y) == 0) {
    std::memcpy(out, pixels[0], 4);
    return;
  }
  const std::array<i32, 4> weights = point.Weights();
  std::array<i64, 3> sums = {};
  i64 total = 0;
  for (size_t i = 0; i < 4; ++i) {
    const i64 weight = i64{weights[i]} * pixels[i][3];
    for (size_t c = 0; c < 3; ++c) sums[c] += weight * pixels[i][c];
    total += weight;
  }
  const i64 alpha = (total + 0x8000) >> 16;
  for (size_t c = 0; c < 3; ++c)
    out[c] = static_cast<u8>(alpha == 0 ? 0 : (sums[c] + total / 2) / total);
  out[3] = static_cast<u8>(alpha);
}

/// Samples at the same point of each pixel from `first` to before `end`.
template <typename Edge>
void SampleRow(u8* out, const RowPair& rows, i64 first, i64 end, SamplePoint point) {
  for (i64 x = first; x < end; ++x, out += 4) {
    const u8 *top = rows.top + 4 * x, *bottom = rows.bottom + 4 * x;
    const bool isLast = x + 1 == rows.width;
    SamplePixel(out,
                {top, isLast ? Edge::Beyond(top) : top + 4, bottom,
                 isLast ? Edge::Beyond(bottom) : bottom + 4},
                point);
  }
}

}  // namespace pictavo::cpu

#endif  // PICTAVO_CPU_BASE_SAMPLER_H_
