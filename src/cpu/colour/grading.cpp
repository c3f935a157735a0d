#include "cpu/colour/grading.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

#include "cpu/base/builds.h"
#include "cpu/base/elementary.h"
#include "cpu/base/picture.h"
#include "cpu/colour/grading_simd.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu {
namespace {

// ---------------------------------------------------------------------------------------------
// The rules.

/// A curve for the bytes of some channels, which `mask` has in every pixel.
struct Curve {
  u8 table[256];
  u32 mask;
};

/// For each colour, from blue to red, the weights of blue, green and red and what is added, all in
/// 1/4096; the constant holds one half.
struct ColourMatrix {
  i32 weights[3][3];
  i32 constants[3];
};

/// A table of colours and the steps of 8 bytes to the next one along each side, from blue to red.
struct ColourTable {
  const u16* entries;
  i32 size, intensity;
  i32 steps[3];

  explicit ColourTable(const ColorLutParam& param)
      : entries(param.entries),
        size(static_cast<i32>(param.size)),
        intensity(static_cast<i32>(param.intensity)),
        steps{size * size, size, 1} {}
};

void CurveRow(u8* row, i64 width, const Curve& curve) {
  for (int c = 0; c < 4; ++c) {
    if ((curve.mask >> 8 * c & 1) == 0) continue;
    for (i64 x = c; x < 4 * width; x += 4) row[x] = curve.table[row[x]];
  }
}

void MatrixRow(u8* row, i64 width, const ColourMatrix& matrix) {
  for (i64 x = 0; x < width; ++x, row += 4) {
    const i32 from[] = {row[0], row[1], row[2]};
    for (int c = 0; c < 3; ++c) {
      const i32(&weight)[3] = matrix.weights[c];
      const i32 sum = weight[0] * from[0] + weight[1] * from[1] + weight[2] * from[2];
      row[c] = static_cast<u8>(std::clamp((sum + matrix.constants[c]) >> 12, 0, 255));
    }
  }
}

/// The sums of weights, 255 in all, times the entries around a colour.
void SumEntries(const u8* colour, const ColourTable& table, i32 (&sums)[3]) {
  struct Side {
    i32 distance, step;
  } sides[3];
  i32 at = 0;
  for (int c = 0; c < 3; ++c) {
    const i32 position = colour[c] * (table.size - 1);
    // The last entry is a distance of 255 from the cell before it.
    const i32 cell = std::min(position / 255, table.size - 2);
    sides[c] = {position - 255 * cell, table.steps[c]};
    at += cell * table.steps[c];
  }
  std::sort(sides, std::end(sides),
            [](const Side& a, const Side& b) { return a.distance > b.distance; });
  for (int corner = 0, before = 255; corner < 4; ++corner) {
    const i32 after = corner < 3 ? sides[corner].distance : 0;
    for (int c = 0; c < 3; ++c) sums[c] += (before - after) * table.entries[4 * at + c];
    if (corner < 3) at += sides[corner].step;
    before = after;
  }
}

void TableRow(u8* dst, const u8* src, i64 width, const ColourTable& table) {
  for (i64 x = 0; x < width; ++x, dst += 4, src += 4) {
    i32 sums[3] = {};
    SumEntries(src, table, sums);
    for (int c = 0; c < 3; ++c) {
      const i32 mapped = (sums[c] + 32767) / 65535;
      const i32 mixed = mapped * table.intensity + src[c] * (256 - table.intensity);
      dst[c] = static_cast<u8>((mixed + 128) >> 8);
    }
    dst[3] = src[3];
  }
}

/// One build of every rule.
struct GradingBuild {
  void (*curve)(u8* row, i64 width, const Curve& curve);
  void (*matrix)(u8* row, i64 width, const ColourMatrix& matrix);
  void (*wideMatrix)(u8* row, i64 width, const ColourMatrix& matrix);  // weights beyond 16 bits
  void (*table)(u8* dst, const u8* src, i64 width, const ColourTable& table);
};

constexpr GradingBuild kPortableBuild = {CurveRow, MatrixRow, MatrixRow, TableRow};

}  // namespace

#define KERNELS "cpu/colour/grading_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

constexpr GradingBuild kSse41Build = {CurveRow, sse41::MatrixRow<false>, sse41::MatrixRow<true>,
                                      sse41::TableRow};
constexpr GradingBuild kAvx2Build = {avx2::CurveRow, avx2::MatrixRow<false>, avx2::MatrixRow<true>,
                                     avx2::TableRow};
constexpr Builds<const GradingBuild*> kBuilds = {
    .portable = &kPortableBuild, .sse41 = &kSse41Build, .avx2 = &kAvx2Build};

/// Whether a number lies within its range; what is none does not.
bool IsWithin(f32 x, f32 least, f32 most) { return x >= least && x <= most; }

bool Holds(const LevelsParam& p) {
  return IsWithin(p.blackIn, 0, 1) && IsWithin(p.whiteIn, 0, 1) && p.blackIn < p.whiteIn &&
         IsWithin(p.gamma, 0.01f, 100) && IsWithin(p.blackOut, 0, 1) && IsWithin(p.whiteOut, 0, 1);
}

bool Holds(const ColorParam& p) {
  return IsWithin(p.brightness, -1, 1) && IsWithin(p.contrast, 0, 4) &&
         IsWithin(p.saturation, 0, 4) && std::isfinite(p.hue) && IsWithin(p.temperature, -1, 1) &&
         IsWithin(p.tint, -1, 1);
}

bool Holds(const ColorLutParam& p) { return p.size >= 2 && p.size <= 65 && p.intensity <= 256; }

Curve MakeCurve(const LevelsParam& p, u32 channels) {
  constexpr double kOfRounding = 1e-9;  // far more than the doubles below lose
  Curve curve = {};
  const double black = 255 * double{p.blackIn}, range = double{p.whiteIn} - double{p.blackIn};
  for (int v = 0; v < 256; ++v) {
    const double t = std::clamp((v - black) / (255 * range), 0.0, 1.0);
    const double power = elementary::Power(t, 1 / double{p.gamma});
    const double value = 255 * (p.blackOut + power * (double{p.whiteOut} - double{p.blackOut}));
    curve.table[v] = static_cast<u8>(std::floor(value + (0.5 + kOfRounding)));
  }
  for (int c = 0; c < 4; ++c) {
    if ((channels >> c & 1) != 0) curve.mask |= 0xFFu << 8 * c;
  }
  return curve;
}

bool ChangesNothing(const Curve& curve) {
  bool same = true;
  for (int v = 0; v < 256; ++v) same = same && curve.table[v] == v;
  return same || curve.mask == 0;
}

constexpr double kLumaOfRed = 0.2126, kLumaOfGreen = 0.7152, kLumaOfBlue = 0.0722;

double LumaOf(const double (&colour)[3]) {
  return colour[0] * kLumaOfBlue + colour[1] * kLumaOfGreen + colour[2] * kLumaOfRed;
}

/// A colour, from blue to red, whose distance from grey is turned and scaled.
void TurnAround(double (&colour)[3], elementary::SineCosine turn, double scale) {
  constexpr double kU = 2 * (1 - kLumaOfBlue), kV = 2 * (1 - kLumaOfRed);
  const double y = LumaOf(colour);
  const double u = (colour[0] - y) / kU, v = (colour[2] - y) / kV;
  colour[0] = y + kU * scale * (u * turn.cos - v * turn.sin);
  colour[2] = y + kV * scale * (u * turn.sin + v * turn.cos);
  colour[1] = (y - colour[0] * kLumaOfBlue - colour[2] * kLumaOfRed) / kLumaOfGreen;
}

i32 In4096ths(double x) { return static_cast<i32>(std::floor(x * 4096 + 0.5)); }

ColourMatrix MakeMatrix(const ColorParam& p) {
  constexpr double kDegree = 3.14159265358979324 / 180;
  const elementary::SineCosine turn =
      elementary::SineCosineOf(elementary::WithoutTurns(p.hue) * kDegree);
  const double balance[3] = {1 - double{p.temperature} / 2, 1 - double{p.tint} / 2,
                             1 + double{p.temperature} / 2};
  double columns[3][3] = {};  // what becomes of blue, of green and of red alone
  for (int from = 0; from < 3; ++from) {
    columns[from][from] = balance[from] / LumaOf(balance);
    TurnAround(columns[from], turn, p.saturation);
  }
  ColourMatrix matrix = {};
  for (int to = 0; to < 3; ++to) {
    double sum = 0;
    i32 others = 0;
    for (int from = 0; from < 3; ++from) {
      const double weight = p.contrast * columns[from][to];
      sum += weight;
      matrix.weights[to][from] = In4096ths(weight);
      if (from != to) others += matrix.weights[to][from];
    }
    matrix.weights[to][to] = In4096ths(sum) - others;
    matrix.constants[to] =
        In4096ths(127.5 * (1 - double{p.contrast}) + 255 * double{p.brightness}) + 2048;
  }
  return matrix;
}

bool FitsIn16Bits(const ColourMatrix& matrix) {
  bool fits = true;
  for (const auto& row : matrix.weights) {
    for (const i32 weight : row) fits = fits && weight == static_cast<std::int16_t>(weight);
  }
  return fits;
}

}  // namespace

u32 AdjustLevels(i32 level, u8* buffer, i32 width, i32 height, i32 pitch, u32 channels,
                 const LevelsParam* param) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  const Picture picture = {buffer, width, height, pitch};
  const u32 code = CheckWith(channels < 16 && Holds(*param), picture);
  if (code != PICTAVO_S_OK) return code;
  const Curve curve = MakeCurve(*param, channels);
  if (ChangesNothing(curve)) return PICTAVO_S_OK;
  for (i64 y = 0; y < height; ++y) kBuilds.For(level)->curve(picture.Row(y), width, curve);
  return PICTAVO_S_OK;
}

u32 ApplyColorLut(i32 level, const ImageDesc* src, ImageDesc* dst,
                  const ColorLutParam* param) noexcept {
  if (src == nullptr || dst == nullptr || param == nullptr || param->entries == nullptr) {
    return PICTAVO_E_POINTER;
  }
  const bool fit = src->width == dst->width && src->height == dst->height;
  const u32 code = CheckRecords(fit && Holds(*param), src, static_cast<const ImageDesc*>(dst));
  if (code != PICTAVO_S_OK) return code;
  constexpr i64 kPixelCost = 3;  // nanoseconds
  const Picture from = PictureIn(*src), to = PictureIn(*dst);
  const ColourTable table(*param);
  const auto row = kBuilds.For(level)->table;
  ParallelRows(dst->height, kPixelCost * to.width,
               [&](int y) { row(to.Row(y), from.Row(y), to.width, table); });
  return PICTAVO_S_OK;
}

u32 AdjustColor(i32 level, u8* buffer, i32 width, i32 height, i32 pitch,
                const ColorParam* param) noexcept {
  if (param == nullptr) return PICTAVO_E_POINTER;
  const Picture picture = {buffer, width, height, pitch};
  const u32 code = CheckWith(Holds(*param), picture);
  if (code != PICTAVO_S_OK) return code;
  const ColourMatrix matrix = MakeMatrix(*param);
  const GradingBuild& build = *kBuilds.For(level);
  const auto row = FitsIn16Bits(matrix) ? build.matrix : build.wideMatrix;
  for (i64 y = 0; y < height; ++y) row(picture.Row(y), width, matrix);
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
