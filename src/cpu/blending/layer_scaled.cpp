#include "cpu/blending/layer_scaled.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/base/sampler.h"
#include "cpu/blending/layer.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

namespace pictavo::cpu {
namespace {

/// What a row or column of the destination takes of the source.
struct Share {
  i64 place;     // the first of two rows or columns
  i32 weight;    // of the second one, of 256
  i32 coverage;  // the part that the rectangle covers, of 256
};

/// The rectangle's rows or columns, from `first` to before `end` in the destination.
class Axis {
 public:
  Axis(f32 low, f32 high, i64 srcSize, i64 dstSize)
      : low_(low),
        high_(high),
        last_(static_cast<double>(srcSize - 1)),
        ratio_(static_cast<double>(srcSize) / (high_ - low_)) {
    const double most = static_cast<double>(dstSize);
    first = static_cast<i64>(std::clamp(std::floor(low_), 0.0, most));
    end = static_cast<i64>(std::clamp(std::ceil(high_), 0.0, most));
  }

  Share At(i64 i) const {
    const double from = static_cast<double>(i);
    const double at = std::clamp((from + 0.5 - low_) * ratio_ - 0.5, 0.0, last_);
    const i64 fixed = static_cast<i64>(std::floor(at * 256 + 0.5));
    // The last of several is the second one of a pair.
    const i64 place = std::min(fixed >> 8, std::max(static_cast<i64>(last_) - 1, i64{0}));
    const double covered = std::min(from + 1, high_) - std::max(from, low_);
    return {place, static_cast<i32>(fixed - 256 * place),
            static_cast<i32>(std::floor(covered * 256 + 0.5))};
  }

  i64 first, end;

 private:
  double low_, high_, last_, ratio_;
};

/// Columns of the destination, with whole vectors of tables.
struct Stretch {
  static constexpr i64 kMost = 256;

  Stretch(const Axis& columns, i64 begin)
      : first(begin), count(std::min(columns.end - begin, kMost)) {
    for (i64 x = 0; x < count; ++x) {
      const Share share = columns.At(first + x);
      places[x] = static_cast<i32>(4 * share.place);
      across[x] = share.weight;
      coverage[x] = share.coverage;
    }
  }

  i64 first, count;
  i32 places[kMost] = {}, across[kMost] = {}, coverage[kMost];
};

using SampleStretchFn = void(u8* out, const RowPair& rows, const Stretch& stretch, i32 down);

void SampleStretch(u8* out, const RowPair& rows, const Stretch& stretch, i32 down) {
  const i64 right = rows.width > 1 ? 4 : 0;
  for (i64 x = 0; x < stretch.count; ++x) {
    const u8 *top = rows.top + stretch.places[x], *bottom = rows.bottom + stretch.places[x];
    SampleRounded(out + 4 * x, {top, top + right, bottom, bottom + right},
                  {stretch.across[x], down});
  }
}

/// Takes off the alpha what the rectangle does not cover: of a row that it cuts, and else of the
/// columns at its ends.
void Cover(u8* pixels, const Stretch& stretch, i32 rowCoverage) {
  const i64 step = rowCoverage == 256 ? std::max(stretch.count - 1, i64{1}) : 1;
  for (i64 x = 0; x < stretch.count; x += step) {
    u8& alpha = pixels[4 * x + 3];
    alpha = static_cast<u8>((alpha * stretch.coverage[x] * rowCoverage + 0x8000) >> 16);
  }
}

}  // namespace

#define KERNELS "cpu/blending/layer_scaled.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

/// What lays a layer: the sampler, then a row of the mode.
struct Laying {
  SampleStretchFn* sample;
  LayerKernel* mix;
  const BlendParam& param;
};

void LayRow(const Laying& laying, u8* dst, const Source& src, const Share& row,
            const Stretch& stretch) {
  alignas(32) u8 sampled[4 * Stretch::kMost];
  const u8* const top = src.Row(row.place);
  const RowPair rows = {top, row.place + 1 < src.height ? top + src.pitch : top, src.width};
  laying.sample(sampled, rows, stretch, row.weight);
  Cover(sampled, stretch, row.coverage);
  laying.mix(dst + 4 * stretch.first, sampled, static_cast<i32>(stretch.count), 1, 0, 0,
             laying.param);
}

bool IsRectangle(const f32* rect) {
  return std::all_of(rect, rect + 4, [](f32 edge) { return std::abs(edge) <= 0x1p24f; }) &&
         rect[0] <= rect[2] && rect[1] <= rect[3];
}

}  // namespace

u32 BlendLayerScaled(i32 level, ImageDesc* dst, const ImageDesc* src, const BlendParam* param,
                     const f32* rect) noexcept {
  static constexpr Builds<SampleStretchFn*> kSamplers = {
      .portable = SampleStretch, .sse41 = sse41::SampleStretch, .avx2 = avx2::SampleStretch};
  if (param == nullptr || rect == nullptr) return PICTAVO_E_POINTER;
  const bool hold = param->mode < kLayerModes && param->opacity <= 255 && param->alphaMode <= 2 &&
                    IsRectangle(rect);
  const u32 code = CheckRecords(hold, dst, src);
  if (code != PICTAVO_S_OK) return code;
  const Picture to = PictureIn(*dst), from = PictureIn(*src);
  if (ShareBytes(to, from)) return PICTAVO_E_INVALIDARG;
  if (param->opacity == 0 || rect[0] == rect[2] || rect[1] == rect[3]) return PICTAVO_S_OK;
  const Laying laying = {kSamplers.For(from.width > 1 ? level : PICTAVO_LEVEL_PORTABLE),
                         kLayerKernels[param->mode].For(level), *param};
  const Axis columns(rect[0], rect[2], from.width, to.width);
  const Axis rows(rect[1], rect[3], from.height, to.height);
  const Source layer = {from.pixels, from.width, from.height, from.pitch};
  for (i64 first = columns.first; first < columns.end; first += Stretch::kMost) {
    const Stretch stretch(columns, first);
    for (i64 y = rows.first; y < rows.end; ++y)
      LayRow(laying, to.Row(y), layer, rows.At(y), stretch);
  }
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
