#include "cpu/filters/convolve.h"

#include <algorithm>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu {
namespace {

/// A filter as the kernels take it.
struct Filter {
  i32 size, shift, half, bias;
  bool withAlpha;
  const i32* weights;

  explicit Filter(const ConvolveParam& param)
      : size(static_cast<i32>(param.size)),
        shift(param.shift),
        half(param.shift > 0 ? 1 << (param.shift - 1) : 0),
        // Sums have 20 bits; more than that limits every byte as this does.
        bias(std::clamp(param.bias, -(1 << 21), 1 << 21)),
        withAlpha(param.withAlpha != 0),
        weights(param.weights) {}

  i32 radius() const { return size / 2; }
  i32 Weight(i32 row, i32 column) const { return column < size ? weights[row * size + column] : 0; }

  /// Whether every sum on the way, in whatever order, fits 16 bits.
  bool IsNarrow() const {
    i32 most = half, least = 0;
    for (i32 i = 0; i < size * size; ++i) {
      most += 255 * std::max(weights[i], 0);
      least += 255 * std::min(weights[i], 0);
    }
    return most + std::max(bias, 0) <= 32767 && least + std::min(bias, 0) >= -32768;
  }
};

u8 FilteredByte(const Source& src, const Filter& filter, i64 x, i64 y, i64 channel) {
  const i64 radius = filter.radius();
  const i32* weight = filter.weights;
  i32 sum = filter.half;
  for (i64 v = y - radius; v <= y + radius; ++v) {
    const u8* const row = src.Row(std::clamp<i64>(v, 0, src.height - 1));
    for (i64 u = x - radius; u <= x + radius; ++u)
      sum += *weight++ * row[4 * std::clamp<i64>(u, 0, src.width - 1) + channel];
  }
  return static_cast<u8>(std::clamp((sum >> filter.shift) + filter.bias, 0, 255));
}

/// Filters the rows from the first to before the end.
using ConvolveRowsFn = void(const Picture& dst, const Source& src, const Filter& filter, i64 first,
                            i64 end);

void ConvolveRows(const Picture& dst, const Source& src, const Filter& filter, i64 first, i64 end) {
  for (i64 y = first; y < end; ++y) {
    u8* pixel = dst.Row(y);
    for (i64 x = 0; x < dst.width; ++x, pixel += 4) {
      for (i64 channel = 0; channel < 4; ++channel)
        pixel[channel] = channel == 3 && !filter.withAlpha
                             ? src.Row(y)[4 * x + 3]
                             : FilteredByte(src, filter, x, y, channel);
    }
  }
}

bool Holds(const ConvolveParam& param) {
  if (param.size != 3 && param.size != 5) return false;
  if (param.shift < 0 || param.shift > 15) return false;
  return std::all_of(param.weights, param.weights + param.size * param.size,
                     [](i32 weight) { return weight >= -128 && weight <= 127; });
}

}  // namespace

#define KERNELS "cpu/filters/convolve_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

u32 ConvolvePicture(i32 level, const ImageDesc* src, ImageDesc* dst,
                    const ConvolveParam* param) noexcept {
  static constexpr Builds<ConvolveRowsFn*> kBuilds = {.portable = ConvolveRows,
                                                      .sse41 = sse41::VectorConvolveRows,
                                                      .avx2 = avx2::VectorConvolveRows};
  if (param == nullptr) return PICTAVO_E_POINTER;
  if (const u32 code = CheckRecords(Holds(*param), src, dst);
      code != PICTAVO_S_OK && code != PICTAVO_S_FALSE) {
    return code;
  }
  const Picture to = PictureIn(*dst);
  const Source from = SourceIn(*src);
  if (!SameSize(to, from)) return PICTAVO_E_INVALIDARG;
  if (to.IsEmpty()) return PICTAVO_S_FALSE;
  if (ShareBytes(to, from)) return PICTAVO_E_INVALIDARG;
  const Filter filter(*param);
  ConvolveRowsFn* const convolve = kBuilds.For(level);
  constexpr i64 kBand = 64;  // rows; those around them are read twice
  ParallelRows(static_cast<int>((to.height + kBand - 1) / kBand), kBand * to.width, [&](int band) {
    convolve(to, from, filter, band * kBand, std::min((band + 1) * kBand, to.height));
  });
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
