#include "cpu/filters/matte.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/luma.h"
#include "cpu/base/numbers.h"
#include "cpu/base/picture.h"
#include "cpu/base/scratch.h"
#include "cpu/filters/gauss.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu {
namespace {

constexpr i32 kMostChoke = 64;

// ---------------------------------------------------------------------------------------------
// The rules.

/// Alphas as a plane, or 255 less them.
void TakeAlphas(u8* plane, const u8* pixels, i64 width, u8 flip) {
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
  void (*takeAlphas)(u8* plane, const u8* pixels, i64 width, u8 flip);
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
    const i64 bands = (picture_.height + kBandRows - 1) / kBandRows, cost = picture_.width / 2;
    Scratch scratch(picture_.height * Pitch());
    if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
    plane_ = scratch.data();
    ParallelRows(static_cast<int>(picture_.height), cost, [this](int y) { TakeRow(y); });
    ParallelRows(static_cast<int>(bands), cost * kBandRows, [this](int band) { PutBand(band); });
    return PICTAVO_S_OK;
  }

 private:
  static constexpr i64 kBandRows = 32, kTileColumns = 64;

  i64 WindowSize() const { return 2 * radius_ + 1; }
  /// Of rows with room for the windows of both their ends.
  i64 Pitch() const { return RoundUp(picture_.width + WindowSize(), 64); }
  u8* PlaneRow(i64 y) const { return plane_ + y * Pitch(); }

  /// Calls widen(by) until windows of one are whole: each becomes the least of itself and of the
  /// one so far behind it.
  template <typename Widen>
  void WidenWindows(Widen widen) const {
    i64 size = 1;
    for (; 2 * size <= WindowSize(); size *= 2) widen(size);
    if (size < WindowSize()) widen(WindowSize() - size);
  }

  /// Puts a row's alphas into the plane, and of these the least along the row.
  void TakeRow(i64 y) const {
    u8 *const row = PlaneRow(y), *const alphas = row + radius_;
    std::memset(row, 255, static_cast<size_t>(Pitch()));
    rows_.takeAlphas(alphas, picture_.Row(y), picture_.width, levels_.changes ? 0 : flip_);
    for (i64 x = 0; levels_.changes && x < picture_.width; ++x)
      alphas[x] = levels_.alphas[alphas[x]] ^ flip_;
    WidenWindows([&](i64 by) { rows_.takeLeast(row, row, row + by, Pitch() - by); });
  }

  /// Does the same down the columns of some rows, and puts their alphas where they belong.
  void PutBand(i64 band) const {
    for (i64 x = 0; x < picture_.width; x += kTileColumns) PutTile(band * kBandRows, x);
  }

  void PutTile(i64 top, i64 left) const {
    alignas(64) u8 tile[(kBandRows + 2 * kMostChoke) * kTileColumns];
    const i64 width = std::min(kTileColumns, picture_.width - left);
    const i64 height = std::min(kBandRows, picture_.height - top);
    i64 rows = height + WindowSize() - 1;
    const u8* from[kBandRows + 2 * kMostChoke];
    for (i64 y = 0; y < rows; ++y)
      from[y] = PlaneRow(std::clamp<i64>(top + y - radius_, 0, picture_.height - 1)) + left;
    WidenWindows([&](i64 by) {
      rows -= by;
      for (i64 y = 0; y < rows; ++y) {
        u8* const to = tile + y * kTileColumns;
        rows_.takeLeast(to, from[y], from[y + by], width);
        from[y] = to;
      }
    });
    const auto put = to_.pixelBytes == 1 ? rows_.putBytes : rows_.putAlphas;
    for (i64 y = 0; y < height; ++y)
      put(to_.Row(top + y) + to_.pixelBytes * left, from[y], width, flip_);
  }

  const ChokeRows& rows_;
  const Picture picture_, to_;
  const Levels& levels_;
  const u8 flip_;
  const i64 radius_;
  u8* plane_ = nullptr;
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
