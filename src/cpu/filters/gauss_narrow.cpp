#include "cpu/filters/gauss_narrow.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/elementary.h"
#include "cpu/base/numbers.h"
#include "cpu/base/scratch.h"
#include "cpu/base/workspaces.h"
#include "cpu/filters/gauss_simd.h"
#include "cpu/filters/gauss_windows.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu::gauss {
namespace {

/// Weights of a pixel's neighbours on each side, as WeightOf makes them; its own is what they
/// leave.
struct Taps {
  i64 reach;
  u32 weights[kNarrowReach + 1];

  explicit Taps(double sigma);
};

/// Sums have so many bits more than bytes: twice as many just fit.
constexpr int kSumBits = 6;

/// The rows above and below by their distance, from the row itself, which stands there twice.
using Neighbours = const u8 * [2 * kNarrowReach + 2];

struct NarrowKernels {
  /// The bytes from the first to before the end.
  void (*sumDown)(int16_t* dst, const Neighbours& rows, const Taps& taps, i64 first, i64 end);
  /// Neighbours are so many bytes apart; they stand before the first and behind the last, too.
  void (*finishRow[2])(u8* dst, const int16_t* src, const Taps& taps, i64 step, i64 count,
                       const Finish& finish);  // blurred, sharpened
};

// ---------------------------------------------------------------------------------------------
// The rule.

namespace portable {

void SumDown(int16_t* dst, const Neighbours& rows, const Taps& taps, i64 first, i64 end) {
  for (i64 i = first; i < end; ++i) {
    const i32 here = rows[0][i];
    i32 sum = here << kSumBits;
    for (i64 k = 1; k <= taps.reach; ++k)
      sum += Weighed((rows[2 * k][i] + rows[2 * k + 1][i] - 2 * here) * (1 << kSumBits),
                     taps.weights[k]);
    dst[i] = static_cast<int16_t>(sum);
  }
}

template <bool sharpens>
void FinishBytes(u8* dst, const int16_t* src, const Taps& taps, i64 step, i64 first, i64 end,
                 const Finish& finish) {
  for (i64 i = first; i < end; ++i) {
    if ((finish.kept >> (8 * (i % 4)) & 1) != 0) continue;
    i32 sum = src[i];
    for (i64 k = 1; k <= taps.reach; ++k)
      sum += Weighed(src[i - k * step] + src[i + k * step] - 2 * src[i], taps.weights[k]);
    dst[i] = FinishedByte<sharpens, kSumBits>(sum, dst[i], finish);
  }
}

template <bool sharpens>
void FinishRow(u8* dst, const int16_t* src, const Taps& taps, i64 step, i64 count,
               const Finish& finish) {
  FinishBytes<sharpens>(dst, src, taps, step, 0, count, finish);
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
             const Finish& finish)
      : kernels_(KernelsFor(level)),
        picture_(picture),
        across_(static_cast<double>(sigmaX)),
        down_(static_cast<double>(sigmaY)),
        edges_(edges),
        finish_(finish) {}

  u32 Run() {
    const i64 bands = (picture_.height + kBandRows - 1) / kBandRows;
    const i64 workspaces = std::min(bands, Workspaces::kMost);
    Scratch scratch(bands * NeighbourBytes() + workspaces * WorkspaceBytes());
    if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
    workspaceMemory_ = scratch.data();
    neighbours_ = workspaceMemory_ + workspaces * WorkspaceBytes();
    const auto each = [&](i64 cost, auto body) {
      ParallelRows(static_cast<int>(bands), cost * picture_.width, body);
    };
    each(down_.reach / 2, [this](int band) { KeepNeighbours(BandAt(band, 0)); });
    each(kBandRows * 2, [=, this](int band) {
      workspaces_.With(workspaces, [=, this](i64 number) { BlurBand(BandAt(band, number)); });
    });
    return PICTAVO_S_OK;
  }

 private:
  static constexpr i64 kBandRows = 128;

  /// Rows summed together, by pieces whose neighbours stay in the first-level cache.
  static constexpr i64 kGroupRows = 4, kPieceBytes = 512;

  struct Band {
    i64 top, end;
    int16_t* sums;               // of a group's rows
    u8 *above, *below, *passed;  // rows beyond it, and its own that are blurred
  };

  static const NarrowKernels& KernelsFor(i32 level) {
    static constexpr Builds<const NarrowKernels*> kBuilds = {
        .portable = &portable::kKernels, .sse41 = &sse41::kKernels, .avx2 = &avx2::kKernels};
    return *kBuilds.For(level);
  }

  i64 RowBytes() const { return picture_.pixelBytes * picture_.width; }
  i64 SumsPitch() const { return RowBytes() + 2 * kNarrowReach * picture_.pixelBytes; }
  i64 NeighbourBytes() const { return 2 * down_.reach * RowBytes(); }
  i64 WorkspaceBytes() const {
    return RoundUp(2 * kGroupRows * SumsPitch() + down_.reach * RowBytes(), 64);
  }

  Band BandAt(i64 number, i64 workspace) const {
    u8* const work = workspaceMemory_ + workspace * WorkspaceBytes();
    u8* const above = neighbours_ + number * NeighbourBytes();
    return {number * kBandRows,
            std::min((number + 1) * kBandRows, picture_.height),
            reinterpret_cast<int16_t*>(work),
            above,
            above + down_.reach * RowBytes(),
            work + 2 * kGroupRows * SumsPitch()};
  }
  int16_t* SumsOf(const Band& band, i64 row) const {
    return band.sums + row * SumsPitch() + kNarrowReach * picture_.pixelBytes;
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

  /// A row as it was, while the group at row y is next.
  const u8* RowBefore(const Band& band, i64 y, i64 place) const {
    const i64 row = PixelAt(place, picture_.height, edges_);
    if (row < band.top) return band.above + (row - band.top + down_.reach) * RowBytes();
    if (row >= band.end) return band.below + (row - band.end) * RowBytes();
    return row < y ? band.passed + row % down_.reach * RowBytes() : picture_.Row(row);
  }

  void BlurBand(const Band& band) const {
    for (i64 y = band.top; y < band.end; y += kGroupRows) {
      const i64 rows = std::min(kGroupRows, band.end - y);
      SumGroup(band, y, rows);
      for (i64 i = 0; i < rows; ++i) {
        if (down_.reach > 0) Keep(band.passed + (y + i) % down_.reach * RowBytes(), y + i);
        FinishRow(picture_.Row(y + i), SumsOf(band, i));
      }
    }
  }

  void SumGroup(const Band& band, i64 y, i64 rows) const {
    Neighbours neighbours[kGroupRows];
    for (i64 i = 0; i < rows; ++i) {
      for (i64 k = 0; k <= down_.reach; ++k) {
        neighbours[i][2 * k] = RowBefore(band, y, y + i - k);
        neighbours[i][2 * k + 1] = RowBefore(band, y, y + i + k);
      }
    }
    for (i64 x = 0; x < RowBytes(); x += kPieceBytes) {
      const i64 end = std::min(x + kPieceBytes, RowBytes());
      for (i64 i = 0; i < rows; ++i)
        kernels_.sumDown(SumsOf(band, i), neighbours[i], down_, x, end);
    }
  }

  void FinishRow(u8* dst, int16_t* sums) const {
    const i64 step = picture_.pixelBytes;
    const auto copy = [=, this](i64 place) {
      std::memcpy(sums + place * step, sums + PixelAt(place, picture_.width, edges_) * step,
                  static_cast<size_t>(2 * step));
    };
    for (i64 i = 1; i <= across_.reach; ++i) {
      copy(-i);
      copy(picture_.width - 1 + i);
    }
    kernels_.finishRow[finish_.sharpens](dst, sums, across_, step, RowBytes(), finish_);
  }

  const NarrowKernels& kernels_;
  const Picture picture_;
  const Taps across_, down_;
  const u32 edges_;
  const Finish finish_;
  Workspaces workspaces_;
  u8 *workspaceMemory_ = nullptr, *neighbours_ = nullptr;
};

Taps::Taps(double sigma) : reach(static_cast<i64>(3.5 * sigma + 0.3)), weights() {
  double bell[kNarrowReach + 1] = {1}, sum = 1;
  for (i64 k = 1; k <= reach; ++k) {
    bell[k] = elementary::Exponential(-static_cast<double>(k * k) / (2 * sigma * sigma));
    sum += 2 * bell[k];
  }
  for (i64 k = 1; k <= reach; ++k) weights[k] = WeightOf(bell[k] / sum);
}

}  // namespace

u32 BlurNarrow(i32 level, const Picture& picture, f32 sigmaX, f32 sigmaY, u32 edges,
               const Finish& finish) {
  return NarrowBlur(level, picture, sigmaX, sigmaY, edges, finish).Run();
}

}  // namespace pictavo::cpu::gauss
