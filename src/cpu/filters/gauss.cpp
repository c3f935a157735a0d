#include "cpu/filters/gauss.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/numbers.h"
#include "cpu/base/scratch.h"
#include "cpu/base/workspaces.h"
#include "cpu/filters/gauss_finish.h"
#include "cpu/filters/gauss_narrow.h"
#include "cpu/filters/gauss_simd.h"
#include "cpu/filters/gauss_windows.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu {
namespace gauss {
namespace {

/// Rows of four floats a pixel, so many floats apart.
struct Floats {
  f32* first = nullptr;
  i64 pitch = 0;

  f32* Row(i64 y) const { return first + y * pitch; }
};

/// Words have so many bits more than bytes.
constexpr int kWordBits = 7;

/// A sum of rows of words: what the others differ by from the middle one counts.
struct WordTaps {
  static constexpr i64 kMost = 12;

  struct Tap {
    const int16_t* row;
    u32 weight;
  };
  const int16_t* middle;
  i64 count = 0;
  Tap taps[kMost];
};

using FourRows = f32* [4];

struct Kernels {
  bool (*isOpaqueRow)(const u8* row, i64 width);
  void (*gatherWhole)(f32* dst, const Source& src, const Window& window, i64 first);
  void (*gatherRow[2])(f32* dst, const Source& src, const Window& window);  // plain, weighted
  void (*sumAlong)(f32* dst, const f32* src, const Window* windows, i64 count);
  void (*toWords)(int16_t* dst, const f32* src, i64 first, i64 end);
  void (*joinRows)(f32* dst, const FourRows& rows, i64 first, i64 end);  // as four channels
  void (*partRows)(const FourRows& rows, const f32* src, i64 first, i64 end);
  void (*finishWords[2])(u8* dst, const WordTaps& src, i64 first, i64 end,
                         const Finish& finish);  // blurred, sharpened
  void (*finishRow[2])(const Picture& dst, i64 y, const Floats& src, const Window& window,
                       const Finish& finish);  // the same, weighted
};

namespace portable {

bool IsOpaqueRow(const u8* row, i64 width) {
  u8 all = 255;
  for (i64 x = 0; x < width; ++x) all &= row[4 * x + 3];
  return all == 255;
}

/// Sums the bytes of a window's rows by its whole weights.
void GatherWhole(f32* dst, const Source& src, const Window& window, i64 first) {
  for (i64 i = 4 * first; i < 4 * src.width; ++i) {
    i32 sum = 0;
    for (i64 k = 0; k < window.count; ++k) sum += window.whole[k] * src.Row(window.first + k)[i];
    dst[i] = static_cast<f32>(sum) * window.unit;
  }
}

void ToWords(int16_t* dst, const f32* src, i64 first, i64 end) {
  for (i64 i = first; i < end; ++i)
    dst[i] = static_cast<int16_t>(TruncateToI32(src[i] * (1 << kWordBits) + 0.5f));
}

void JoinRows(f32* dst, const FourRows& rows, i64 first, i64 end) {
  for (i64 x = first; x < end; ++x)
    for (size_t i = 0; i < 4; ++i) dst[4 * x + static_cast<i64>(i)] = rows[i][x];
}
void PartRows(const FourRows& rows, const f32* src, i64 first, i64 end) {
  for (i64 x = first; x < end; ++x)
    for (size_t i = 0; i < 4; ++i) rows[i][x] = src[4 * x + static_cast<i64>(i)];
}

template <bool sharpens>
void FinishWords(u8* dst, const WordTaps& src, i64 first, i64 end, const Finish& finish) {
  for (i64 i = first; i < end; ++i) {
    if ((finish.kept >> (8 * (i % 4)) & 1) != 0) continue;
    i32 sum = src.middle[i];
    for (i64 k = 0; k < src.count; ++k)
      sum += Weighed(src.taps[k].row[i] - src.middle[i], src.taps[k].weight);
    dst[i] = FinishedByte<sharpens, kWordBits>(sum, dst[i], finish);
  }
}

/// The channels of two pixels; cpu/filters/gauss_simd.h says what each function is.
struct Pair {
  f32 v[8];

  template <typename Make>
  static Pair Of(Make make) {
    Pair pair;
    for (int i = 0; i < 8; ++i) pair.v[i] = make(i);
    return pair;
  }
  static Pair All(f32 x) {
    return Of([=](int) { return x; });
  }
  static Pair Each(const f32* two) {
    return Of([=](int i) { return two[i / 4]; });
  }
  static Pair Load(const f32* p) {
    return Of([=](int i) { return p[i]; });
  }
  static Pair OfBytes(const u8* p) {
    return Of([=](int i) { return static_cast<f32>(p[i]); });
  }
  void Store(f32* p) const { std::memcpy(p, v, sizeof v); }
  void StoreBytes(u8* p) const {
    for (int i = 0; i < 8; ++i) p[i] = static_cast<u8>(std::clamp(TruncateToI32(v[i]), 0, 255));
  }
  void StoreSum(f32* p) const {
    for (int i = 0; i < 4; ++i) p[i] = v[i] + v[i + 4];
  }
};
inline Pair operator+(const Pair& x, const Pair& y) {
  return Pair::Of([&](int i) { return x.v[i] + y.v[i]; });
}
inline Pair operator-(const Pair& x, const Pair& y) {
  return Pair::Of([&](int i) { return x.v[i] - y.v[i]; });
}
inline Pair operator*(const Pair& x, const Pair& y) {
  return Pair::Of([&](int i) { return x.v[i] * y.v[i]; });
}
inline Pair operator/(const Pair& x, const Pair& y) {
  return Pair::Of([&](int i) { return x.v[i] / y.v[i]; });
}
inline Pair Min(const Pair& x, const Pair& y) {
  return Pair::Of([&](int i) { return x.v[i] < y.v[i] ? x.v[i] : y.v[i]; });
}
inline Pair Max(const Pair& x, const Pair& y) {
  return Pair::Of([&](int i) { return x.v[i] > y.v[i] ? x.v[i] : y.v[i]; });
}
inline Pair SelectLess(const Pair& x, const Pair& y, const Pair& yes, const Pair& no) {
  return Pair::Of([&](int i) { return x.v[i] < y.v[i] ? yes.v[i] : no.v[i]; });
}
inline Pair JoinAlphas(const Pair& x, const Pair& y) {
  return Pair::Of([&](int i) { return i % 4 == 3 ? y.v[i] : x.v[i]; });
}
inline Pair SpreadAlphas(const Pair& x) {
  return Pair::Of([&](int i) { return x.v[i | 3]; });
}

#include "cpu/filters/gauss_rows.inl"
}  // namespace portable

}  // namespace

#define KERNELS "cpu/filters/gauss_whole.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

#define KERNELS "cpu/filters/gauss_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

/// Largest differences from the true Gaussian are, at a hard edge, a fiftieth of a level where
/// alpha weighs (where it is nearly none, colours are quotients of small numbers), a quarter
/// elsewhere, and nearly one where the rule allows two.
Quality QualityFor(f32 sigma, bool weighted) {
  if (weighted) return {0.9, 4.6};
  return sigma > 8 ? Quality{0.77, 3.3} : Quality{0.86, 3.7};
}

bool IsOpaque(const Kernels& kernels, const Picture& picture) {
  for (i64 y = 0; y < picture.height; ++y)
    if (!kernels.isOpaqueRow(picture.Row(y), picture.width)) return false;
  return true;
}

/// Hands out parts of memory; without any, counts what they take.
class Parts {
 public:
  explicit Parts(u8* memory) : memory_(memory) {}

  u8* Take(i64 bytes) {
    u8* const part = memory_ != nullptr ? memory_ + taken_ : nullptr;
    taken_ += RoundUp(bytes, 64);
    return part;
  }
  f32* TakePixels(i64 count) { return reinterpret_cast<f32*>(Take(16 * count)); }
  i64 taken() const { return taken_; }

 private:
  u8* memory_;
  i64 taken_ = 0;
};

/// Blurs a picture in place: down the columns into rows of floats, along these, and down once more
/// into the picture, which nobody needs any longer then. In between, what weighs nothing by alpha
/// is kept as words. A plane of bytes is taken for a picture of a fourth of its columns down the
/// columns; along the rows, four rows are the channels of one.
class Blur {
 public:
  Blur(const Kernels& kernels, const Picture& picture, bool weighted, const Direction& across,
       const Direction& down, const Finish& finish)
      : kernels_(kernels),
        ofPlane_(picture.pixelBytes == 1),
        columns_(picture.width),
        picture_({picture.pixels, ofPlane_ ? (picture.width + 3) / 4 : picture.width,
                  picture.height, picture.pitch}),
        weighted_(weighted),
        across_(across),
        down_(down),
        finish_(finish) {}

  u32 Run() {
    Parts sizes(nullptr);
    LayOut(&sizes);
    Scratch scratch(sizes.taken());
    if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
    Parts parts(scratch.data());
    LayOut(&parts);
    gatherAcross_ = across_.Gather(windows_[0]);
    spreadAcross_ = across_.Spread(windows_[1]);
    gatherDown_ = down_.Gather(windows_[2]);
    spreadDown_ = down_.Spread(windows_[3]);
    const i64 cost = picture_.width * 2, groups = (picture_.height + kGroupRows - 1) / kGroupRows;
    ParallelRows(static_cast<int>(Bands()), cost * picture_.height / Bands(), [this](int band) {
      workspaces_.With(Bands(), [=, this](i64 number) { GatherBand(band, number); });
    });
    ParallelRows(static_cast<int>(groups), cost * kGroupRows,
                 [this](int group) { FinishGroup(group * kGroupRows); });
    return PICTAVO_S_OK;
  }

 private:
  /// Rows that end together, by pieces whose samples stay in the first-level cache.
  static constexpr i64 kGroupRows = 16, kPieceColumns = 256;
  static constexpr i64 kGatheredColumns = 128;

  i64 Bands() const { return std::min<i64>((down_.Samples() + 3) / 4, 32); }
  /// Pixels of a row in memory: one more than it has at least, and rows apart in the cache.
  i64 RowPixels() const { return 4 * ((picture_.width / 4 + 1) | 1); }
  i64 JoinedPixels() const { return ofPlane_ ? columns_ + 1 : 0; }
  i64 ResultPixels() const { return ofPlane_ ? columns_ : RowPixels(); }
  i64 SamplePixels() const { return across_.Reduces() ? across_.Samples() + 1 : 0; }
  i64 WorkspacePixels() const {
    return 4 * RowPixels() + ResultPixels() + SamplePixels() + JoinedPixels();
  }

  void LayOut(Parts* parts) {
    windows_[0] = parts->Take(across_.GatherBytes());
    windows_[1] = parts->Take(across_.SpreadBytes());
    windows_[2] = parts->Take(down_.GatherBytes());
    windows_[3] = parts->Take(down_.SpreadBytes());
    temporary_ = parts->TakePixels(Bands() * WorkspacePixels());
    if (weighted_) {
      middle_ = {parts->TakePixels(down_.Samples() * RowPixels()), 4 * RowPixels()};
    } else {
      words_ = reinterpret_cast<int16_t*>(parts->Take(8 * down_.Samples() * RowPixels()));
    }
  }
  int16_t* WordsRow(i64 y) const { return words_ + 4 * y * RowPixels(); }

  void GatherBand(i64 band, i64 workspace) const {
    FourRows rows;
    rows[0] = temporary_ + 4 * workspace * WorkspacePixels();
    for (size_t i = 1; i < 4; ++i) rows[i] = rows[i - 1] + 4 * RowPixels();
    f32* const result = rows[3] + 4 * RowPixels();
    f32* const samples = result + 4 * ResultPixels();
    f32* const joined = samples + 4 * SamplePixels();
    const i64 end = (band + 1) * down_.Samples() / Bands();
    for (i64 y = band * down_.Samples() / Bands(); y < end; y += 4) {
      const i64 count = std::min<i64>(4, end - y);
      GatherRows(rows, y, count);
      if (ofPlane_) {
        kernels_.joinRows(joined, rows, 0, columns_);
        BlurAlong(result, joined, samples);
        kernels_.partRows(rows, result, 0, columns_);
      }
      for (i64 i = 0; i < count; ++i) {
        f32* const row = rows[i];
        if (!ofPlane_) BlurAlong(weighted_ ? middle_.Row(y + i) : result, row, samples);
        if (!weighted_)
          kernels_.toWords(WordsRow(y + i), ofPlane_ ? row : result, 0, 4 * picture_.width);
      }
    }
  }

  /// Neighbouring sums, which share most of their rows, by pieces that stay in the cache.
  void GatherRows(const FourRows& rows, i64 first, i64 count) const {
    for (i64 x = 0; x < picture_.width; x += kGatheredColumns) {
      const i64 end = std::min(x + kGatheredColumns, picture_.width);
      const Picture part = picture_.Part({x, 0, end, picture_.height});
      const Source piece = {part.pixels, part.width, part.height, part.pitch};
      for (i64 i = 0; i < count; ++i) {
        const Window& window = gatherDown_[first + i];
        if (!weighted_ && window.whole != nullptr) {
          kernels_.gatherWhole(rows[i] + 4 * x, piece, window, 0);
        } else {
          kernels_.gatherRow[weighted_](rows[i] + 4 * x, piece, window);
        }
      }
    }
  }

  /// The pixel behind the last one is read where a number of weights is odd.
  void BlurAlong(f32* to, f32* row, f32* samples) const {
    std::fill_n(row + 4 * columns_, 4, 0.0f);
    if (across_.Reduces()) {
      kernels_.sumAlong(samples, row, gatherAcross_, across_.Samples());
      std::fill_n(samples + 4 * across_.Samples(), 4, 0.0f);
      kernels_.sumAlong(to, samples, spreadAcross_, columns_);
    } else {
      kernels_.sumAlong(to, row, gatherAcross_, columns_);
    }
  }

  void FinishGroup(i64 first) const {
    static constexpr f32 kWhole = 1;
    const i64 end = std::min(first + kGroupRows, picture_.height);
    for (i64 x = 0; x < picture_.width; x += kPieceColumns) {
      const i64 width = std::min(kPieceColumns, picture_.width - x);
      for (i64 y = first; y < end; ++y) {
        const Window window = down_.Reduces() ? spreadDown_[y] : Window{y, 1, &kWhole};
        if (weighted_) {
          const Picture piece = picture_.Part({x, 0, x + width, picture_.height});
          kernels_.finishRow[finish_.sharpens](piece, y, {middle_.first + 4 * x, middle_.pitch},
                                               window, finish_);
        } else {
          kernels_.finishWords[finish_.sharpens](picture_.Row(y) + 4 * x, TapsOf(window, 4 * x), 0,
                                                 4 * width, finish_);
        }
      }
    }
  }

  WordTaps TapsOf(const Window& window, i64 at) const {
    const i64 middle = window.count / 2;
    WordTaps taps;
    taps.middle = WordsRow(window.first + middle) + at;
    for (i64 k = 0; k < window.count; ++k) {
      if (k != middle)
        taps.taps[taps.count++] = {WordsRow(window.first + k) + at,
                                   WeightOf(static_cast<double>(window.weights[k]))};
    }
    return taps;
  }

  const Kernels& kernels_;
  const bool ofPlane_;
  const i64 columns_;
  const Picture picture_;
  const bool weighted_;
  const Direction across_, down_;
  const Finish finish_;
  u8* windows_[4];
  const Window *gatherAcross_, *spreadAcross_, *gatherDown_, *spreadDown_;
  Workspaces workspaces_;
  f32* temporary_;  // of each workspace
  Floats middle_;
  int16_t* words_ = nullptr;
};

const Kernels& KernelsFor(i32 level) {
  static constexpr Builds<const Kernels*> kBuilds = {
      .portable = &portable::kKernels, .sse41 = &sse41::kKernels, .avx2 = &avx2::kKernels};
  return *kBuilds.For(level);
}

u32 RunWide(i32 level, const Picture& picture, bool weighted, const Finish& finish, f32 sigmaX,
            f32 sigmaY, u32 edges) {
  const auto direction = [=](i64 length, f32 sigma) {
    return Direction(length, static_cast<double>(sigma), edges, QualityFor(sigma, weighted));
  };
  return Blur(KernelsFor(level), picture, weighted, direction(picture.width, sigmaX),
              direction(picture.height, sigmaY), finish)
      .Run();
}

u32 RunPlain(i32 level, const Picture& picture, const Finish& finish, f32 sigmaX, f32 sigmaY,
             u32 edges) {
  if (std::max(sigmaX, sigmaY) <= kWidestNarrow)
    return BlurNarrow(level, picture, sigmaX, sigmaY, edges, finish);
  return RunWide(level, picture, false, finish, sigmaX, sigmaY, edges);
}

u32 Run(i32 level, const Picture& picture, const Finish& finish, f32 sigmaX, f32 sigmaY,
        u32 edges) {
  if (IsBeyondMemory(picture)) return PICTAVO_E_OUTOFMEMORY;
  // What is beyond clear edges has no colour, as clear pixels have none.
  if (edges != PICTAVO_EDGES_CLEAR && IsOpaque(KernelsFor(level), picture))
    return RunPlain(level, picture, finish, sigmaX, sigmaY, edges);
  return RunWide(level, picture, true, finish, sigmaX, sigmaY, edges);
}

bool Within(f32 x, f32 least, f32 most) { return x >= least && x <= most; }

}  // namespace

u32 BlurPlane(i32 level, const Picture& plane, f32 sigma) noexcept {
  return RunPlain(level, plane, {.kept = 0}, sigma, sigma, PICTAVO_EDGES_REPLICATE);
}

}  // namespace gauss

u32 GaussianBlur(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, f32 sigmaX, f32 sigmaY,
                 u32 edges) noexcept {
  const Picture picture = {buffer, width, height, pitch};
  const bool hold = gauss::Within(sigmaX, 0, gauss::kMostSigma) &&
                    gauss::Within(sigmaY, 0, gauss::kMostSigma) && edges <= PICTAVO_EDGES_MIRROR;
  const u32 code = CheckWith(hold, picture);
  if (code != PICTAVO_S_OK) return code;
  return gauss::Run(level, picture, {}, sigmaX, sigmaY, edges);
}

u32 SharpenPicture(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, f32 amount,
                   f32 threshold, f32 radius) noexcept {
  const Picture picture = {buffer, width, height, pitch};
  const bool hold = gauss::Within(amount, -1, 16) && gauss::Within(threshold, 0, 255) &&
                    gauss::Within(radius, 0, gauss::kMostSigma);
  const u32 code = CheckWith(hold, picture);
  if (code != PICTAVO_S_OK) return code;
  return gauss::Run(level, picture, {true, amount, threshold}, radius, radius,
                    PICTAVO_EDGES_REPLICATE);
}

}  // namespace pictavo::cpu
