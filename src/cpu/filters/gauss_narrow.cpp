#include "cpu/filters/gauss_narrow.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/elementary.h"
#include "cpu/base/scratch.h"
#include "cpu/filters/gauss_windows.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu::gauss {
namespace {

/// A row summed down the columns, in 1/64: blue and red of each pixel as halves of a number, and
/// green. Neighbours stand before the first pixel and behind the last.
struct SummedRow {
  u32 *blueRed, *green;
};

/// The rows above and below by their distance, from the row itself, which stands there twice.
using Neighbours = const u8 * [2 * kNarrowReach + 4];

struct NarrowKernels {
  void (*sumDown)(const SummedRow& dst, const Neighbours& rows, const Taps& taps, i64 first,
                  i64 width);
  void (*finishRow[2])(u8* dst, const SummedRow& src, const Taps& taps, i64 first, i64 width,
                       const NarrowFinish& finish);  // blurred, sharpened
};

// ---------------------------------------------------------------------------------------------
// The rule.

namespace portable {

void SumDown(const SummedRow& dst, const Neighbours& rows, const Taps& taps, i64 first, i64 width) {
  for (i64 x = first; x < width; ++x) {
    i32 sums[3] = {128, 128, 128};
    for (i64 k = 0; k <= taps.reach; ++k)
      for (i64 c = 0; c < 3; ++c)
        sums[c] += taps.weights[k] * (rows[2 * k][4 * x + c] + rows[2 * k + 1][4 * x + c]);
    dst.blueRed[x] = static_cast<u32>(sums[0] >> 8 | sums[2] >> 8 << 16);
    dst.green[x] = static_cast<u32>(sums[1] >> 8);
  }
}

/// `sum` is 2^20 times the blurred colour.
u8 Finished(i32 sum, u8 before, bool sharpens, const NarrowFinish& finish) {
  if (!sharpens) return static_cast<u8>((sum + (1 << 19)) >> 20);
  const f32 colour = before, detail = colour - static_cast<f32>(sum) * 0x1p-20f;
  const f32 sharp = std::min(std::max(colour + finish.amount * detail, 0.0f), 255.0f);
  return (detail < 0 ? -detail : detail) < finish.threshold ? before
                                                            : static_cast<u8>(sharp + 0.5f);
}

template <bool sharpens>
void FinishRow(u8* dst, const SummedRow& src, const Taps& taps, i64 first, i64 width,
               const NarrowFinish& finish) {
  for (i64 x = first; x < width; ++x) {
    u32 sums[3] = {};
    for (i64 k = 0; k <= taps.reach; ++k) {
      const u32 weight = static_cast<u32>(taps.weights[k]);
      const u32 blueRed = src.blueRed[x - k] + src.blueRed[x + k];
      sums[0] += weight * (blueRed & 0xFFFF);
      sums[1] += weight * (src.green[x - k] + src.green[x + k]);
      sums[2] += weight * (blueRed >> 16);
    }
    for (i64 c = 0; c < 3; ++c)
      dst[4 * x + c] = Finished(static_cast<i32>(sums[c]), dst[4 * x + c], sharpens, finish);
  }
}

constexpr NarrowKernels kKernels = {SumDown, {FinishRow<false>, FinishRow<true>}};

}  // namespace portable
}  // namespace

#define KERNELS "cpu/filters/gauss_narrow.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operation.

/// Blurs in place, by bands of rows that threads share: what a band needs of its neighbours is kept
/// before any is written, and of its own rows while it goes down.
class NarrowBlur {
 public:
  NarrowBlur(i32 level, const Picture& picture, f32 sigmaX, f32 sigmaY, u32 edges,
             const NarrowFinish& finish)
      : kernels_(KernelsFor(level)),
        picture_(picture),
        across_(static_cast<double>(sigmaX)),
        down_(static_cast<double>(sigmaY)),
        edges_(edges),
        finish_(finish) {}

  u32 Run() {
    const i64 bands = (picture_.height + kBandRows - 1) / kBandRows;
    Scratch scratch(bands * BandBytes());
    if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
    memory_ = scratch.data();
    const auto each = [&](i64 cost, auto body) {
      ParallelRows(static_cast<int>(bands), cost * picture_.width, body);
    };
    each(down_.reach / 2, [this](int band) { KeepNeighbours(BandAt(band)); });
    each(kBandRows * 2, [this](int band) { BlurBand(BandAt(band)); });
    return PICTAVO_S_OK;
  }

 private:
  static constexpr i64 kBandRows = 64;

  struct Band {
    i64 top, end;
    u8 *above, *below, *passed;  // rows beyond it, and its own that are blurred
    SummedRow summed;
  };

  static const NarrowKernels& KernelsFor(i32 level) {
    static constexpr Builds<const NarrowKernels*> kBuilds = {
        .portable = &portable::kKernels, .sse41 = &sse41::kKernels, .avx2 = &avx2::kKernels};
    return *kBuilds.For(level);
  }

  i64 RowBytes() const { return 4 * picture_.width; }
  i64 SummedBytes() const { return RowBytes() + 8 * kNarrowReach; }
  i64 BandBytes() const { return 3 * down_.reach * RowBytes() + 2 * SummedBytes(); }

  Band BandAt(i64 number) const {
    u8* const memory = memory_ + number * BandBytes();
    const i64 kept = down_.reach * RowBytes();
    u32* const summed = reinterpret_cast<u32*>(memory + 3 * kept) + kNarrowReach;
    return {number * kBandRows,
            std::min((number + 1) * kBandRows, picture_.height),
            memory,
            memory + kept,
            memory + 2 * kept,
            {summed, summed + SummedBytes() / 4}};
  }

  void Keep(u8* to, i64 y) const {
    if (y >= 0 && y < picture_.height)
      std::memcpy(to, picture_.Row(y), static_cast<size_t>(RowBytes()));
  }
  void KeepNeighbours(const Band& band) const {
    for (i64 i = 0; i < down_.reach; ++i) {
      Keep(band.above + i * RowBytes(), band.top - down_.reach + i);
      Keep(band.below + i * RowBytes(), band.end + i);
    }
  }

  /// A row as it was, while row y is next.
  const u8* RowBefore(const Band& band, i64 y, i64 place) const {
    const i64 row = PixelAt(place, picture_.height, edges_);
    if (row < band.top) return band.above + (row - band.top + down_.reach) * RowBytes();
    if (row >= band.end) return band.below + (row - band.end) * RowBytes();
    return row < y ? band.passed + row % down_.reach * RowBytes() : picture_.Row(row);
  }

  void BlurBand(const Band& band) const {
    for (i64 y = band.top; y < band.end; ++y) {
      Neighbours rows;
      for (i64 k = 0; k <= down_.reach + 1; ++k) {
        const i64 distance = k <= down_.reach ? k : 0;  // one more, of weight 0
        rows[2 * k] = RowBefore(band, y, y - distance);
        rows[2 * k + 1] = RowBefore(band, y, y + distance);
      }
      kernels_.sumDown(band.summed, rows, down_, 0, picture_.width);
      for (u32* const row : {band.summed.blueRed, band.summed.green}) {
        for (i64 i = 1; i <= across_.reach + 1; ++i) {
          row[-i] = row[PixelAt(-i, picture_.width, edges_)];
          row[picture_.width - 1 + i] =
              row[PixelAt(picture_.width - 1 + i, picture_.width, edges_)];
        }
      }
      if (down_.reach > 0) Keep(band.passed + y % down_.reach * RowBytes(), y);
      kernels_.finishRow[finish_.sharpens](picture_.Row(y), band.summed, across_, 0, picture_.width,
                                           finish_);
    }
  }

  const NarrowKernels& kernels_;
  const Picture picture_;
  const Taps across_, down_;
  const u32 edges_;
  const NarrowFinish finish_;
  u8* memory_ = nullptr;
};

}  // namespace

Taps::Taps(double sigma) : reach(static_cast<i64>(3.5 * sigma + 0.3)), weights() {
  double bell[kNarrowReach + 1] = {1}, sum = 1;
  for (i64 k = 1; k <= reach; ++k) {
    bell[k] = elementary::Exponential(-static_cast<double>(k * k) / (2 * sigma * sigma));
    sum += 2 * bell[k];
  }
  weights[0] = 1 << 13;
  for (i64 k = 1; k <= reach; ++k) {
    weights[k] = static_cast<i32>((1 << 14) * bell[k] / sum + 0.5);
    weights[0] -= weights[k];
  }
}

u32 BlurNarrow(i32 level, const Picture& picture, f32 sigmaX, f32 sigmaY, u32 edges,
               const NarrowFinish& finish) {
  return NarrowBlur(level, picture, sigmaX, sigmaY, edges, finish).Run();
}

}  // namespace pictavo::cpu::gauss
