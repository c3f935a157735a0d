#include "cpu/filters/gauss.h"

#include <algorithm>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/numbers.h"
#include "cpu/base/scratch.h"
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

/// What becomes of the blurred picture.
enum class Make { kBlurred, kSharpened, kAlpha };
struct Finish {
  Make make;
  f32 amount = 0, threshold = 0;
};

struct Kernels {
  void (*gatherWhole)(f32* dst, const Source& src, const Window& window, i64 first);
  void (*gatherRow[2])(f32* dst, const Source& src, const Window& window);  // plain, weighted
  void (*sumAlong)(f32* dst, const f32* src, const Window* windows, i64 count);
  void (*finishRow[3][2])(const Picture& dst, i64 y, const Floats& src, const Window& window,
                          const Finish& finish);  // by what is made
};

namespace portable {

/// Sums the bytes of a window's rows by its whole weights.
void GatherWhole(f32* dst, const Source& src, const Window& window, i64 first) {
  for (i64 i = 4 * first; i < 4 * src.width; ++i) {
    i32 sum = 0;
    for (i64 k = 0; k < window.count; ++k) sum += window.whole[k] * src.Row(window.first + k)[i];
    dst[i] = static_cast<f32>(sum) * window.unit;
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

bool IsOpaque(const Picture& picture) {
  for (i64 y = 0; y < picture.height; ++y) {
    const u8* const row = picture.Row(y);
    u8 all = 255;
    for (i64 x = 0; x < picture.width; ++x) all &= row[4 * x + 3];
    if (all != 255) return false;
  }
  return true;
}

/// Hands out parts of memory; without any, counts what they take.
class Parts {
 public:
  explicit Parts(u8* memory) : memory_(memory) {}

  u8* Take(i64 bytes) {
    u8* const part = memory_ != nullptr ? memory_ + taken_ : nullptr;
    taken_ += (bytes + 63) / 64 * 64;
    return part;
  }
  f32* TakePixels(i64 count) { return reinterpret_cast<f32*>(Take(16 * count)); }
  i64 taken() const { return taken_; }

 private:
  u8* memory_;
  i64 taken_ = 0;
};

/// Blurs a picture in place: down the columns into rows of floats, along these, and down once more
/// into the picture, which nobody needs any longer then.
class Blur {
 public:
  Blur(const Kernels& kernels, const Picture& picture, bool weighted, const Direction& across,
       const Direction& down)
      : kernels_(kernels), picture_(picture), weighted_(weighted), across_(across), down_(down) {}

  /// Takes the memory, and calls `first`; then blurs unless either fails.
  template <typename First>
  u32 RunAfter(const First& first, const Finish& finish) {
    Parts sizes(nullptr);
    LayOut(&sizes);
    Scratch scratch(sizes.taken());
    if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
    if (const u32 code = first(); code != PICTAVO_S_OK) return code;
    Parts parts(scratch.data());
    LayOut(&parts);
    gatherAcross_ = across_.Gather(windows_[0]);
    spreadAcross_ = across_.Spread(windows_[1]);
    gatherDown_ = down_.Gather(windows_[2]);
    spreadDown_ = down_.Spread(windows_[3]);
    const i64 cost = picture_.width * 2;
    ParallelRows(static_cast<int>(Bands()), cost * picture_.height / Bands(),
                 [this](int band) { GatherBand(band); });
    ParallelRows(static_cast<int>(picture_.height), cost, [&](int y) { FinishRow(y, finish); });
    return PICTAVO_S_OK;
  }

 private:
  i64 Bands() const { return std::min<i64>(down_.Samples(), 32); }
  /// Pixels of a row in memory: one more than it has at least, and rows apart in the cache.
  i64 RowPixels() const { return 4 * ((picture_.width / 4 + 1) | 1); }
  i64 SamplePixels() const { return across_.Reduces() ? across_.Samples() + 1 : 0; }

  void LayOut(Parts* parts) {
    windows_[0] = parts->Take(across_.GatherBytes());
    windows_[1] = parts->Take(across_.SpreadBytes());
    windows_[2] = parts->Take(down_.GatherBytes());
    windows_[3] = parts->Take(down_.SpreadBytes());
    temporary_ = parts->TakePixels(Bands() * (RowPixels() + SamplePixels()));
    middle_ = {parts->TakePixels(down_.Samples() * RowPixels()), 4 * RowPixels()};
  }

  void GatherBand(i64 band) const {
    f32* const row = temporary_ + 4 * band * (RowPixels() + SamplePixels());
    f32* const samples = row + 4 * RowPixels();
    std::fill_n(row + 4 * picture_.width, 4, 0.0f);  // read where a number of weights is odd
    if (across_.Reduces()) std::fill_n(samples + 4 * across_.Samples(), 4, 0.0f);
    const i64 end = (band + 1) * down_.Samples() / Bands();
    for (i64 y = band * down_.Samples() / Bands(); y < end; ++y) {
      f32* const to = middle_.Row(y);
      const Source source = {picture_.pixels, picture_.width, picture_.height, picture_.pitch};
      f32* const gathered = across_.IsIdentity() ? to : row;
      if (!weighted_ && gatherDown_[y].whole != nullptr) {
        kernels_.gatherWhole(gathered, source, gatherDown_[y], 0);
      } else {
        kernels_.gatherRow[weighted_](gathered, source, gatherDown_[y]);
      }
      if (across_.Reduces()) {
        kernels_.sumAlong(samples, row, gatherAcross_, across_.Samples());
        kernels_.sumAlong(to, samples, spreadAcross_, picture_.width);
      } else if (!across_.IsIdentity()) {
        kernels_.sumAlong(to, row, gatherAcross_, picture_.width);
      }
    }
  }

  void FinishRow(i64 y, const Finish& finish) const {
    static constexpr f32 kWhole = 1;
    const Window window = down_.Reduces() ? spreadDown_[y] : Window{y, 1, &kWhole};
    kernels_.finishRow[static_cast<int>(finish.make)][weighted_](picture_, y, middle_, window,
                                                                 finish);
  }

  const Kernels& kernels_;
  const Picture picture_;
  const bool weighted_;
  const Direction across_, down_;
  u8* windows_[4];
  const Window *gatherAcross_, *spreadAcross_, *gatherDown_, *spreadDown_;
  f32* temporary_;  // for each band a row and its samples
  Floats middle_;
};

const Kernels& KernelsFor(i32 level) {
  static constexpr Builds<const Kernels*> kBuilds = {
      .portable = &portable::kKernels, .sse41 = &sse41::kKernels, .avx2 = &avx2::kKernels};
  return *kBuilds.For(level);
}

constexpr auto kNothing = [] { return PICTAVO_S_OK; };

u32 Run(i32 level, const Picture& picture, const Finish& finish, f32 sigmaX, f32 sigmaY,
        u32 edges) {
  if (IsBeyondMemory(picture)) return PICTAVO_E_OUTOFMEMORY;
  // What is beyond clear edges has no colour, as clear pixels have none.
  const bool weighted = edges == PICTAVO_EDGES_CLEAR || !IsOpaque(picture);
  if (!weighted && std::max(sigmaX, sigmaY) <= kWidestNarrow) {
    const bool sharpens = finish.make == Make::kSharpened;
    return BlurNarrow(level, picture, sigmaX, sigmaY, edges,
                      {sharpens, finish.amount, finish.threshold});
  }
  const auto direction = [=](i64 length, f32 sigma) {
    return Direction(length, static_cast<double>(sigma), edges, QualityFor(sigma, weighted));
  };
  return Blur(KernelsFor(level), picture, weighted, direction(picture.width, sigmaX),
              direction(picture.height, sigmaY))
      .RunAfter(kNothing, finish);
}

bool Within(f32 x, f32 least, f32 most) { return x >= least && x <= most; }

}  // namespace

u32 BlurAlphaAfter(u32 (*first)(const void*), const void* context, i32 level,
                   const Picture& picture, f32 sigma) noexcept {
  const auto direction = [=](i64 length) {
    return Direction(length, static_cast<double>(sigma), PICTAVO_EDGES_REPLICATE,
                     QualityFor(sigma, false));
  };
  Blur blur(KernelsFor(level), picture, false, direction(picture.width), direction(picture.height));
  return blur.RunAfter([=] { return first(context); }, {Make::kAlpha});
}

}  // namespace gauss

u32 GaussianBlur(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, f32 sigmaX, f32 sigmaY,
                 u32 edges) noexcept {
  const Picture picture = {buffer, width, height, pitch};
  const bool hold = gauss::Within(sigmaX, 0, gauss::kMostSigma) &&
                    gauss::Within(sigmaY, 0, gauss::kMostSigma) && edges <= PICTAVO_EDGES_MIRROR;
  const u32 code = CheckWith(hold, picture);
  if (code != PICTAVO_S_OK) return code;
  return gauss::Run(level, picture, {gauss::Make::kBlurred}, sigmaX, sigmaY, edges);
}

u32 SharpenPicture(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, f32 amount,
                   f32 threshold, f32 radius) noexcept {
  const Picture picture = {buffer, width, height, pitch};
  const bool hold = gauss::Within(amount, -1, 16) && gauss::Within(threshold, 0, 255) &&
                    gauss::Within(radius, 0, gauss::kMostSigma);
  const u32 code = CheckWith(hold, picture);
  if (code != PICTAVO_S_OK) return code;
  return gauss::Run(level, picture, {gauss::Make::kSharpened, amount, threshold}, radius, radius,
                    PICTAVO_EDGES_REPLICATE);
}

}  // namespace pictavo::cpu
