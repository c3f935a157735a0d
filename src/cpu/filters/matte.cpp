#include "cpu/filters/matte.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/luma.h"
#include "cpu/base/numbers.h"
#include "cpu/base/picture.h"
#include "cpu/base/scratch.h"
#include "cpu/colour/channels_simd.h"
#include "cpu/filters/gauss.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu {
namespace {

constexpr i32 kMostChoke = 64;

// ---------------------------------------------------------------------------------------------
// The rules.

/// Alphas as a plane, or 255 less them. `next` is what will be read later.
void TakeAlphas(u8* plane, const u8* pixels, i64 width, u8 flip, const u8*) {
  for (i64 x = 0; x < width; ++x) plane[x] = pixels[4 * x + 3] ^ flip;
}
void PutAlphas(u8* pixels, const u8* plane, i64 width, u8 flip) {
  for (i64 x = 0; x < width; ++x) pixels[4 * x + 3] = plane[x] ^ flip;
}
void PutBytes(u8* dst, const u8* plane, i64 count, u8 flip) {
  for (i64 i = 0; i < count; ++i) dst[i] = plane[i] ^ flip;
}
/// The lesser of each two bytes. They may follow the destination at a distance in one row.
void TakeLeast(u8* dst, const u8* a, const u8* b, i64 count) {
  for (i64 i = 0; i < count; ++i) dst[i] = std::min(a[i], b[i]);
}

/// product / 255 of two bytes' product, to the nearest.
u32 Over255(u32 product) { return (product + 128 + ((product + 128) >> 8)) >> 8; }

template <u32 mode>
void ApplyPixels(u8* dst, const u8* matte, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4, matte += 4) {
    const u32 m = mode < PICTAVO_MATTE_LUMA ? matte[3] : LumaOf(matte);
    dst[3] = static_cast<u8>(Over255(dst[3] * (mode % 2 != 0 ? 255 - m : m)));
  }
}
template <u32 mode>
void ApplyPlane(u8* dst, const u8* matte, i64 width) {
  for (i64 x = 0; x < width; ++x, dst += 4)
    dst[3] = static_cast<u8>(Over255(dst[3] * (mode % 2 != 0 ? 255u - matte[x] : matte[x])));
}

using ApplyRow = void(u8* dst, const u8* matte, i64 width);

struct ChokeRows {
  void (*takeAlphas)(u8* plane, const u8* pixels, i64 width, u8 flip, const u8* next);
  void (*putAlphas)(u8* pixels, const u8* plane, i64 width, u8 flip);
  void (*putBytes)(u8* dst, const u8* plane, i64 count, u8 flip);
  void (*takeLeast)(u8* dst, const u8* a, const u8* b, i64 count);
};
constexpr ChokeRows kChokeRows = {TakeAlphas, PutAlphas, PutBytes, TakeLeast};
/// By mode; then of planes.
constexpr ApplyRow* kApplyRows[] = {ApplyPixels<0>, ApplyPixels<1>, ApplyPixels<2>, ApplyPixels<3>,
                                    ApplyPlane<0>,  ApplyPlane<1>,  ApplyPlane<2>,  ApplyPlane<3>};

}  // namespace

#define KERNELS "cpu/filters/matte_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

#define KERNELS "cpu/filters/matte_apply.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

struct Levels {
  u8 alphas[256];
  bool changes = false;

  /// Where the quotient is a half, nothing on the way to it was rounded.
  Levels(f32 black, f32 white) {
    const double from = static_cast<double>(black), range = static_cast<double>(white) - from;
    for (i32 a = 0; a < 256; ++a) {
      alphas[a] = static_cast<u8>(std::clamp((a - 255 * from) / range, 0.0, 255.0) + 0.5);
      changes |= alphas[a] != a;
    }
  }
};

/// Levels and choke, into the picture's alphas or a plane. The least of a window is that of two
/// windows half as long, which overlap in the end. The greatest is the least of what is flipped.
///
/// Columns go in strips, of which only as many rows are kept as a band of rows takes, so that a
/// pixel's alpha is put while it still lies in the cache. What a strip needs of its neighbours is
/// taken before any is changed.
class Choke {
 public:
  Choke(const ChokeRows& rows, const Picture& picture, const Picture& to, const Levels& levels,
        i32 choke)
      : rows_(rows),
        picture_(picture),
        to_(to),
        levels_(levels),
        flip_(choke < 0 ? 255 : 0),
        radius_(std::abs(choke)) {}

  u32 Run() {
    const i64 strips = (picture_.width + kStrip - 1) / kStrip;
    Scratch scratch(strips * StripBytes());
    if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
    memory_ = scratch.data();
    ParallelRows(static_cast<int>(picture_.height), strips * radius_,
                 [this](int y) { TakeMargins(y); });
    ParallelRows(static_cast<int>(strips), picture_.height * kStrip / 2,
                 [this](int strip) { ChokeStrip(strip); });
    return PICTAVO_S_OK;
  }

 private:
  static constexpr i64 kStrip = 512, kBandRows = 32, kVectors = 32;

  static i64 Whole(i64 columns) { return RoundUp(columns, kVectors); }

  i64 WindowSize() const { return 2 * radius_ + 1; }
  i64 KeptRows() const { return kBandRows + WindowSize() - 1; }
  /// Of kept rows, with room for the windows of both their ends and for whole vectors.
  i64 Pitch() const { return RoundUp(kStrip + WindowSize() + kVectors, 64); }
  /// Kept rows, what a band makes of them, and the margins.
  i64 StripBytes() const {
    return KeptRows() * (Pitch() + kStrip) + RoundUp(2 * radius_ * picture_.height, 64);
  }
  u8* KeptRow(i64 strip, i64 y) const {
    return memory_ + strip * StripBytes() + y % KeptRows() * Pitch();
  }
  u8* TileRow(i64 strip, i64 y) const {
    return memory_ + strip * StripBytes() + KeptRows() * Pitch() + y * kStrip;
  }
  /// Of the columns on both sides of a strip's left edge.
  u8* Margins(i64 strip, i64 y) const { return TileRow(strip, KeptRows()) + 2 * radius_ * y; }

  /// Calls widen(by) until windows of one are whole: each becomes the least of itself and of the
  /// one so far behind it.
  template <typename Widen>
  void WidenWindows(Widen widen) const {
    i64 size = 1;
    for (; 2 * size <= WindowSize(); size *= 2) widen(size);
    if (size < WindowSize()) widen(WindowSize() - size);
  }

  void TakeAlphas(u8* alphas, i64 x, i64 y, i64 width) const {
    constexpr i64 kAhead = 4;  // rows
    const u8* const pixels = picture_.Row(y) + 4 * x;
    rows_.takeAlphas(alphas, pixels, width, levels_.changes ? 0 : flip_,
                     pixels + kAhead * picture_.pitch);
  }

  void TakeMargins(i64 y) const {
    for (i64 x = kStrip; x < picture_.width; x += kStrip)
      TakeAlphas(Margins(x / kStrip, y), x - radius_, y,
                 std::min(2 * radius_, picture_.width - x + radius_));
  }

  /// Keeps the least along a row of its alphas.
  void TakeRow(i64 strip, i64 y) const {
    const i64 x = strip * kStrip, end = std::min(x + kStrip, picture_.width);
    u8 *const row = KeptRow(strip, y), *const alphas = row + radius_;
    u8 *from = alphas, *to = alphas + (end - x);
    std::memset(row, 255, static_cast<size_t>(Pitch()));
    TakeAlphas(alphas, x, y, end - x);
    if (x > 0) from = std::copy_n(Margins(strip, y), radius_, row) - radius_;
    to = std::copy_n(Margins(strip + 1, y) + radius_, std::min(radius_, picture_.width - end), to);
    for (; levels_.changes && from < to; ++from) *from = levels_.alphas[*from] ^ flip_;
    i64 columns = end - x + WindowSize() - 1;
    WidenWindows([&](i64 by) {
      columns -= by;
      rows_.takeLeast(row, row, row + by, Whole(columns));
    });
  }

  void ChokeStrip(i64 strip) const {
    i64 taken = 0;
    for (i64 top = 0; top < picture_.height; top += kBandRows) {
      const i64 end = std::min(top + kBandRows, picture_.height);
      for (; taken < std::min(end + radius_, picture_.height); ++taken) TakeRow(strip, taken);
      PutBand(strip, top, end);
    }
  }

  /// Takes the least down the columns too, and puts them where they belong.
  void PutBand(i64 strip, i64 top, i64 end) const {
    const i64 x = strip * kStrip, width = std::min(kStrip, picture_.width - x);
    const u8* from[kBandRows + 2 * kMostChoke];
    i64 rows = end - top + WindowSize() - 1;
    for (i64 y = 0; y < rows; ++y)
      from[y] = KeptRow(strip, std::clamp<i64>(top + y - radius_, 0, picture_.height - 1));
    WidenWindows([&](i64 by) {
      rows -= by;
      for (i64 y = 0; y < rows; ++y) {
        u8* const to = TileRow(strip, y);
        rows_.takeLeast(to, from[y], from[y + by], Whole(width));
        from[y] = to;
      }
    });
    const auto put = to_.pixelBytes == 1 ? rows_.putBytes : rows_.putAlphas;
    for (i64 y = top; y < end; ++y)
      put(to_.Row(y) + to_.pixelBytes * x, from[y - top], width, flip_);
  }

  const ChokeRows& rows_;
  const Picture picture_, to_;
  const Levels& levels_;
  const u8 flip_;
  const i64 radius_;
  u8* memory_ = nullptr;
};

/// Makes a plane of the alphas, and changes the picture when all else is done.
u32 Feather(i32 level, const ChokeRows& rows, const Picture& picture, const Levels& levels,
            const MatteParam& param) {
  const i64 pitch = RoundUp(picture.width, 64);
  Scratch scratch(pitch * picture.height);
  if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  const Picture plane = {scratch.data(), picture.width, picture.height, pitch, 1};
  for (i64 y = 0; y < picture.height; ++y)  // blurred with the others, and never looked at
    std::memset(plane.Row(y) + picture.width, 0, static_cast<size_t>(pitch - picture.width));
  u32 code = Choke(rows, picture, plane, levels, param.choke).Run();
  if (code == PICTAVO_S_OK) code = gauss::BlurPlane(level, plane, param.feather);
  if (code != PICTAVO_S_OK) return code;
  ParallelRows(static_cast<int>(picture.height), picture.width / 2,
               [&](int y) { rows.putAlphas(picture.Row(y), plane.Row(y), picture.width, 0); });
  return PICTAVO_S_OK;
}

bool Holds(const MatteParam& param) {
  return param.black >= 0 && param.black < param.white && param.white <= 1 &&
         param.choke >= -kMostChoke && param.choke <= kMostChoke && param.feather >= 0 &&
         param.feather <= gauss::kMostSigma;
}

}  // namespace

u32 AdjustMatte(i32 level, ImageDesc* picture, const MatteParam* param) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  const u32 code = CheckRecords(Holds(*param), picture);
  if (code != PICTAVO_S_OK) return code;
  const Picture pixels = PictureIn(*picture);
  if (IsBeyondMemory(pixels)) return PICTAVO_E_OUTOFMEMORY;
  static constexpr Builds<const ChokeRows*> kBuilds = {
      .portable = &kChokeRows, .sse41 = &sse41::kChokeRows, .avx2 = &avx2::kChokeRows};
  const Levels levels(param->black, param->white);
  const ChokeRows& rows = *kBuilds.For(level);
  if (param->feather > 0) return Feather(level, rows, pixels, levels, *param);
  if (!levels.changes && param->choke == 0) return PICTAVO_S_OK;
  return Choke(rows, pixels, pixels, levels, param->choke).Run();
}

u32 ApplyMatte(i32 level, ImageDesc* picture, const ImageDesc* matte, u32 mode) noexcept {
  if (picture == nullptr || matte == nullptr) return PICTAVO_E_POINTER;
  const Picture to = PictureIn(*picture);
  const Source from = SourceIn(*matte);
  const bool ofBytes = from.pixelBytes == 1;
  const bool hold = !IsTexture(*picture) && !IsTexture(*matte) && to.pixelBytes == 4 &&
                    (ofBytes || from.pixelBytes == 4) && SameSize(to, from) &&
                    mode <= PICTAVO_MATTE_INVERTED_LUMA;
  const u32 code = CheckWith(hold, to, from);
  if (code != PICTAVO_S_OK) return code;
  if (!AreSame(to, from) && ShareBytes(to, from)) return PICTAVO_E_INVALIDARG;
  static constexpr Builds<ApplyRow* const*> kBuilds = {.portable = kApplyRows,
                                                       .sse41 = sse41::kApplyRows};
  ForRows(to, from, kBuilds.For(level)[mode + (ofBytes ? 4 : 0)]);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
