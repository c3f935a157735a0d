#include "cpu/colour/frames.h"

#include <algorithm>

#include "cpu/base/builds.h"
#include "cpu/base/picture.h"
#include "cpu/colour/frames_simd.h"
#include "cpu/colour/yuv.h"
#include "platform/parallel_rows.h"

namespace pictavo::cpu {
namespace {

using colour::Colour;

/// How the YUV numbers of a frame lie in memory. A step goes from one to the next in a row.
template <typename Byte>
struct FrameOf {
  Byte *y, *u, *v;
  i64 width, height;
  i64 lumaStep, lumaPitch;
  i64 chromaStep, chromaPitch;
  int shared;  // whether two rows share U and V: 1, else 0

  Byte* Y(i64 x, i64 row) const { return y + row * lumaPitch + x * lumaStep; }
  Byte* U(i64 x, i64 row) const { return u + (row >> shared) * chromaPitch + x / 2 * chromaStep; }
  Byte* V(i64 x, i64 row) const { return v + (row >> shared) * chromaPitch + x / 2 * chromaStep; }
  /// Numbers in a row of luma: one more than pixels where the last has no neighbour to share with.
  i64 Lumas() const { return lumaPitch / lumaStep; }
};
using Frame = FrameOf<u8>;
using SourceFrame = FrameOf<const u8>;

template <typename Byte>
FrameOf<Byte> Lay(Byte* p, i64 width, i64 height, u32 layout) {
  const i64 half = (width + 1) / 2, plane = width * height, quarter = half * ((height + 1) / 2);
  switch (layout) {
    case PICTAVO_FRAME_NV12:
      return {p, p + plane, p + plane + 1, width, height, 1, width, 2, 2 * half, 1};
    case PICTAVO_FRAME_I420:
      return {p, p + plane, p + plane + quarter, width, height, 1, width, 1, half, 1};
    case PICTAVO_FRAME_YV12:
      return {p, p + plane + quarter, p + plane, width, height, 1, width, 1, half, 1};
    case PICTAVO_FRAME_YUY2:
      return {p, p + 1, p + 3, width, height, 2, 4 * half, 4, 4 * half, 0};
    case PICTAVO_FRAME_UYVY:
      return {p + 1, p, p + 2, width, height, 2, 4 * half, 4, 4 * half, 0};
    default:  // P010
      return {p, p + 2 * plane, p + 2 * plane + 2, width, height, 2, 2 * width, 4, 4 * half, 1};
  }
}
constexpr size_t kYuvLayouts = PICTAVO_FRAME_P010 + 1;

struct Space {
  u32 matrix, range;
};

/// Two rows, or one twice, that share U and V.
struct Rows {
  i64 first, last;
};

// ---------------------------------------------------------------------------------------------
// The rule, for the pixels of some rows from `x` on, which is even.

template <int bits>
const auto& RuleOf(Space space) {
  if constexpr (bits == 8) {
    return colour::kSpaces<colour::MakeYuv8>[space.matrix][space.range];
  } else {
    return colour::kSpaces<colour::MakeYuv10>[space.matrix][space.range];
  }
}

template <int bits>
i32 Number(const u8* p) {
  return bits == 8 ? p[0] : (p[0] | p[1] << 8) >> 6;
}

template <int bits>
void Put(u8* p, i32 number) {
  if constexpr (bits == 8) {
    p[0] = static_cast<u8>(number);
  } else {
    p[0] = static_cast<u8>(number << 6);
    p[1] = static_cast<u8>(number >> 2);
  }
}

template <int bits>
void FromFrame(Space space, const SourceFrame& frame, const Picture& picture, Rows rows, i64 x) {
  const auto& rule = RuleOf<bits>(space);
  for (i64 row = rows.first; row <= rows.last; ++row) {
    u8* dst = picture.Row(row) + 4 * x;
    for (i64 i = x; i < frame.width; ++i, dst += 4) {
      const auto [r, g, b] =
          rule.ToRgb({Number<bits>(frame.Y(i, row)), Number<bits>(frame.U(i, row)),
                      Number<bits>(frame.V(i, row))});
      dst[0] = static_cast<u8>(b), dst[1] = static_cast<u8>(g), dst[2] = static_cast<u8>(r);
      dst[3] = 255;
    }
  }
}

/// A pixel without a neighbour is its own, so that means are always those of four.
template <int bits>
void ToFrame(Space space, const Frame& frame, const Source& picture, Rows rows, i64 x) {
  const auto& rule = RuleOf<bits>(space);
  for (; x < frame.width; x += 2) {
    Colour mean = {2, 2, 2};
    for (const i64 row : {rows.first, rows.last}) {
      for (const i64 i : {x, x + 1}) {
        const u8* const p = picture.Row(row) + 4 * std::min(i, frame.width - 1);
        const Colour rgb = {p[2], p[1], p[0]};
        if (i < frame.Lumas()) Put<bits>(frame.Y(i, row), rule.FromRgb(rgb)[0]);
        for (size_t c = 0; c < 3; ++c) mean[c] += rgb[c];
      }
    }
    for (i32& channel : mean) channel >>= 2;
    const Colour colour = rule.FromRgb(mean);
    Put<bits>(frame.U(x, rows.first), colour[1]);
    Put<bits>(frame.V(x, rows.first), colour[2]);
  }
}

using FromFrameFn = decltype(FromFrame<8>);
using ToFrameFn = decltype(ToFrame<8>);

/// Both ways by layout.
struct FrameBuild {
  FromFrameFn* from[kYuvLayouts];
  ToFrameFn* to[kYuvLayouts];
};
constexpr FrameBuild kPortable = {
    {FromFrame<8>, FromFrame<8>, FromFrame<8>, FromFrame<8>, FromFrame<8>, FromFrame<10>},
    {ToFrame<8>, ToFrame<8>, ToFrame<8>, ToFrame<8>, ToFrame<8>, ToFrame<10>}};

// ---------------------------------------------------------------------------------------------
// Layouts of RGB: where in a pixel blue, green, red and alpha stand.

using RowFn = void(u8* dst, const u8* src, i64 width);

template <size_t blue, size_t alpha>
void FromBytes(u8* dst, const u8* src, i64 width) {
  constexpr size_t kBytes = alpha == 3 ? 4 : 3;
  for (; width > 0; --width, dst += 4, src += kBytes) {
    const u8 b = src[blue], g = src[1], r = src[2 - blue], a = alpha == 3 ? src[3] : u8{255};
    dst[0] = b, dst[1] = g, dst[2] = r, dst[3] = a;
  }
}

template <size_t blue, size_t alpha>
void ToBytes(u8* dst, const u8* src, i64 width) {
  constexpr size_t kBytes = alpha == 3 ? 4 : 3;
  for (; width > 0; --width, dst += kBytes, src += 4) {
    dst[blue] = src[0], dst[1] = src[1], dst[2 - blue] = src[2];
    if constexpr (alpha == 3) dst[3] = src[3];
  }
}

struct ByteBuild {
  RowFn *from[3], *to[3];
};
constexpr ByteBuild kPortableBytes = {{FromBytes<0, 0>, FromBytes<2, 0>, FromBytes<2, 3>},
                                      {ToBytes<0, 0>, ToBytes<2, 0>, ToBytes<2, 3>}};

// ---------------------------------------------------------------------------------------------
// What the vector builds take instead of the rule's matrices.

/// What red, green and blue get from U and V, for bytes in units of 1/73, since luma is then whole:
/// a channel of limited range is
///
///   floor((85 (y - 16) + floor(73 (weighted u and v) + 73 / 2 - tie)) / 73)
///
/// exactly, because floor((n + x) / 73) is floor((n + floor(x)) / 73) for whole n. Full range has
/// 73 in place of 85. Numbers of 10 bits have 170 and a unit of 1/584, or 1/682 where they are
/// full.
///
/// A weight is taken apart into words of 16 bits, the highest first: of U in the lower half, of V
/// in the upper. That their bits below the unit suffice was tried in exact fractions, with every U
/// and V of every matrix and range.
template <int parts, int shift>
struct Terms {
  static constexpr int kParts = parts;
  static constexpr int kShift = shift;  // what the highest words have below the unit
  static constexpr int kBits = 16 * (parts - 1) + kShift;

  u32 words[3][parts] = {};
  i32 constant;
  i32 unit, lumaWeight;
  colour::YuvRange range;

  constexpr Terms(u32 matrix, const colour::YuvRange& of, i32 unitOf, i32 lumaWeightOf,
                  i32 constantOf)
      : constant(constantOf), unit(unitOf), lumaWeight(lumaWeightOf), range(of) {
    const colour::Weights weights = ToRgbWeights(colour::kLumaWeights[matrix], of);
    for (size_t c = 0; c < 3; ++c) {
      i64 u = colour::Scaled(weights[c][1] * unit, kBits);
      i64 v = colour::Scaled(weights[c][2] * unit, kBits);
      for (size_t i = parts; i-- > 0; u = Above(u), v = Above(v))
        words[c][i] = (static_cast<u32>(u) & 0xFFFF) | static_cast<u32>(v) << 16;
    }
  }

 private:
  static constexpr i64 Above(i64 x) { return (x + (1 << 15)) >> 16; }
};

/// A weight in parts, for the term of a byte n that alone makes it, which is
///
///   n * whole + constant + floor((floor(n * rest / 256) + rounding) / 256)
///
/// exactly, because these numbers were tried with every byte.
struct LoneWeight {
  u32 whole, rest, rounding;
  i32 constant;
};

/// By matrix and range, of V in red and of U in blue.
constexpr LoneWeight kLoneWeights[3][2][2] = {
    {{{116, 33420, 58, -14877}, {147, 16907, 123, -18813}},
     {{102, 22675, 54, -13064}, {129, 23331, 238, -16522}}},
    {{{130, 57023, 32, -16715}, {154, 13455, 56, -19702}},
     {{114, 62941, 145, -14679}, {135, 30068, 198, -17303}}},
    {{{122, 35600, 248, -15650}, {156, 22897, 199, -19977}},
     {{107, 42321, 215, -13743}, {137, 22426, 179, -17544}}}};

struct ByteTerms {
  LoneWeight red, blue;
  Terms<2, 7> green;
  i32 black;  // what the Y of black makes, which no term has
};

constexpr ByteTerms MakeTerms8(u32 matrix, u32 range) {
  const bool full = range == PICTAVO_RANGE_FULL;
  constexpr i32 kUnit = 73, kHalf = kUnit << (Terms<2, 7>::kBits - 1);
  const auto& [red, blue] = kLoneWeights[matrix][range];
  const Terms<2, 7> green = {matrix, colour::RangeOf(range, 8), kUnit, full ? kUnit : 85,
                             kHalf - (full ? 100 : 0)};
  return {red, blue, green, green.lumaWeight * green.range.black};
}
/// One number alone makes red and blue, which takes less than green.
struct WordTerms {
  Terms<2, 6> lone;
  Terms<3, 6> green;
};
constexpr WordTerms MakeTerms10(u32 matrix, u32 range) {
  const bool full = range == PICTAVO_RANGE_FULL;
  const i32 unit = full ? 682 : 584;
  const colour::YuvRange in = colour::RangeOf(range, 10);
  return {{matrix, in, unit, 170, full ? -1024 : -32}, {matrix, in, unit, 170, -1024}};
}

}  // namespace

#define KERNELS "cpu/colour/frames_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse2.inl"
#undef KERNELS

#define KERNELS "cpu/colour/frames_bytes.inl"
#include "cpu/simd/for_ssse3.inl"
#undef KERNELS

namespace {

// ---------------------------------------------------------------------------------------------
// The operations.

constexpr Builds<const FrameBuild*> kBuilds = {
    .portable = &kPortable, .sse2 = &sse2::kFrameBuild, .avx2 = &avx2::kFrameBuild};
constexpr Builds<const ByteBuild*> kByteBuilds = {.portable = &kPortableBytes,
                                                  .ssse3 = &ssse3::kByteBuild};

struct Format {
  u32 layout;
  Space space;

  explicit Format(u32 bits)
      : layout(bits & 0xFF), space{bits >> 8 & 0xFF, bits >> 16 & 0xFF}, rest_(bits >> 24) {}
  bool IsYuv() const { return layout < kYuvLayouts; }
  bool IsValid() const {
    if (rest_ != 0 || layout > PICTAVO_FRAME_RGBA32) return false;
    if (!IsYuv()) return space.matrix == 0 && space.range == 0;
    return space.matrix <= PICTAVO_MATRIX_BT2020 && space.range <= PICTAVO_RANGE_FULL;
  }

 private:
  u32 rest_;
};

/// The checks of both ways: PICTAVO_S_OK when there are pixels to convert.
template <typename Frame, typename Pixels>
u32 CheckFrame(Frame* frame, const PictureOf<Pixels>& picture, const Format& format) {
  const PictureOf<Frame> bytes = {frame, picture.width, picture.height, picture.pitch};
  const u32 code = CheckWith(format.IsValid(), picture, bytes);
  if (code != PICTAVO_S_OK) return code;
  const i64 size =
      FrameBytes(format.layout, static_cast<i32>(picture.width), static_cast<i32>(picture.height));
  const bool shared = ShareBytes(PictureOf<Frame>{frame, size, 1, size, 1}, picture);
  return shared ? PICTAVO_E_INVALIDARG : PICTAVO_S_OK;
}

/// About how many nanoseconds so many pixels take.
i64 Cost(i64 pixels) { return pixels / 3; }

/// Calls convert(rows) for all rows of a frame that share U and V.
template <typename Byte, typename Convert>
void ForSharing(const FrameOf<Byte>& frame, Convert convert) {
  const i64 groups = (frame.height + frame.shared) >> frame.shared;
  ParallelRows(static_cast<int>(groups), Cost(frame.width << frame.shared), [&](int group) {
    const i64 first = i64{group} << frame.shared;
    convert(Rows{first, std::min(first + frame.shared, frame.height - 1)});
  });
}

template <typename Row>
void ForAllRows(const Picture& dst, const Source& src, Row row) {
  ParallelRows(static_cast<int>(dst.height), Cost(dst.width),
               [&](int y) { row(dst.Row(y), src.Row(y), dst.width); });
}

}  // namespace

u32 ConvertFrameToBGRA(i32 level, const u8* src, i32 width, i32 height, u8* dst, i32 dstPitch,
                       u32 format) noexcept {
  const Picture picture = {dst, width, height, dstPitch};
  const Format of(format);
  const u32 code = CheckFrame(src, picture, of);
  if (code != PICTAVO_S_OK) return code;
  if (!of.IsYuv()) {
    const i64 bytes = of.layout == PICTAVO_FRAME_RGBA32 ? 4 : 3;
    ForAllRows(picture, {src, width, height, bytes * width, bytes},
               kByteBuilds.For(level)->from[of.layout - kYuvLayouts]);
    return PICTAVO_S_OK;
  }
  const SourceFrame frame = Lay(src, width, height, of.layout);
  FromFrameFn* const convert = kBuilds.For(level)->from[of.layout];
  ForSharing(frame, [&](Rows rows) { convert(of.space, frame, picture, rows, 0); });
  return PICTAVO_S_OK;
}

u32 ConvertBGRAToFrame(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                       u32 format) noexcept {
  const Source picture = {src, width, height, srcPitch};
  const Format of(format);
  const u32 code = CheckFrame(dst, picture, of);
  if (code != PICTAVO_S_OK) return code;
  if (!of.IsYuv()) {
    const i64 bytes = of.layout == PICTAVO_FRAME_RGBA32 ? 4 : 3;
    ForAllRows({dst, width, height, bytes * width, bytes}, picture,
               kByteBuilds.For(level)->to[of.layout - kYuvLayouts]);
    return PICTAVO_S_OK;
  }
  const Frame frame = Lay(dst, width, height, of.layout);
  ToFrameFn* const convert = kBuilds.For(level)->to[of.layout];
  ForSharing(frame, [&](Rows rows) { convert(of.space, frame, picture, rows, 0); });
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
