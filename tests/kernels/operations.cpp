#include "operations.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>

#include "chromakey/chroma_key_fx.h"
#include "convert_utility/colour.h"
#include "cpu/operations.h"

#ifndef _WIN32
#include <unistd.h>
#endif

namespace pictavo::test {

thread_local bool isInOperation = false;

namespace {

// --- Operations --------------------------------------------------------------------------------

ImageDesc Describe(const u8* data, i32 width, i32 height, i32 pitch) {
  ImageDesc image = {};
  image.data = const_cast<u8*>(data);
  image.width = image.bufferWidth = width;
  image.height = image.bufferHeight = height;
  image.pitch = pitch;
  image.bytesPerPixel = 4;
  return image;
}

/// Some modes are there for one of the two groups only.
template <u32 kFirstMode>
u32 Layer(const Call& c) {
  cpu::LayerKernel* const kernel = cpu::kLayerKernels[kFirstMode + c.layer.mode].For(c.level);
  if (kernel == nullptr || c.width < 1 || c.height < 1) return PICTAVO_S_OK;
  return kernel(c.dst, c.src, c.width, c.height, c.dstPitch, c.srcPitch, c.layer);
}

/// The records of a call; of no memory, none.
class Records {
 public:
  explicit Records(const Call& c)
      : dst_(Describe(c.dst, c.width, c.height, c.dstPitch)),
        src_(Describe(c.src, c.srcWidth, c.srcHeight, c.srcPitch)) {
    if (c.changeDst != nullptr) c.changeDst(dst_);
    if (c.changeSrc != nullptr) c.changeSrc(src_);
    hasDst_ = c.dst != nullptr;
    hasSrc_ = c.src != nullptr;
  }

  ImageDesc* dst() { return hasDst_ ? &dst_ : nullptr; }
  const ImageDesc* src() const { return hasSrc_ ? &src_ : nullptr; }

 private:
  ImageDesc dst_, src_;
  bool hasDst_, hasSrc_;
};

u32 Motion(const Call& c) {
  Records records(c);
  return cpu::MotionBlur(c.level, records.src(), records.dst(), &c.motion);
}

ResizeParam FilterOf(const Call& c) {
  return {c.words[0] % 256 == 255 ? c.words[0] : c.words[0] % 4,
          c.words[1] % 2 + c.words[1] / ~0u,
          {c.words[2] / ~0u, c.words[3] / ~0u}};
}

u32 Filtered(const Call& c) {
  Records records(c);
  const ResizeParam param = FilterOf(c);
  return cpu::ResizeFiltered(c.level, records.src(), records.dst(), &param);
}

/// A part of the source, or the whole.
u32 FilteredRegion(const Call& c) {
  Records records(c);
  const ResizeParam param = FilterOf(c);
  const f32 width = static_cast<f32>(c.srcWidth), height = static_cast<f32>(c.srcHeight);
  const f32 left = c.reals[0] * width, top = c.reals[1] * height;
  const f32 rect[] = {left, top, width - c.reals[2] * (width - left),
                      height - c.reals[3] * (height - top)};
  return cpu::ResizeFilteredRegion(c.level, records.src(), records.dst(), rect, &param);
}

/// A rectangle that may reach beyond the picture.
u32 NearestInRect(const Call& c) {
  const auto place = [&](int i) { return static_cast<i32>(c.words[i] % 48) - 8; };
  const i32 rect[] = {place(0), place(1), c.width - place(2), c.height - place(3)};
  return cpu::ResizeNearestInRect(c.level, reinterpret_cast<u32*>(c.dst), c.width, c.height,
                                  c.dstPitch, reinterpret_cast<const u32*>(c.src), c.srcWidth,
                                  c.srcHeight, c.srcPitch, rect);
}

u32 Flip(const Call& c) {
  Records records(c);
  return cpu::FlipPicture(c.level, records.src(), records.dst(),
                          1 + c.words[0] % 2 + c.words[0] / ~0u);
}

u32 Key(const Call& c) {
  Records records(c);
  return chromakey::ApplyChromaKey(c.level, records.src(), records.dst(), c.keys, c.keyCount,
                                   c.format);
}

/// Often a quarter turn about points that fit.
u32 Rotate(const Call& c) {
  Records records(c);
  const auto& [angle, scale, srcX, srcY, dstX, dstY, more, last] = c.reals;
  RotateParam param = {360 * angle,
                       1 + scale,
                       srcX * static_cast<f32>(c.srcWidth),
                       srcY * static_cast<f32>(c.srcHeight),
                       dstX * static_cast<f32>(c.width),
                       dstY * static_cast<f32>(c.height),
                       c.words[0] % 16 < 15 ? c.words[0] % 2 : 2};
  if (c.words[1] % 4 == 1) {
    param.angle = 90 * std::round(8 * angle);
    param.scale = 1;
    for (f32* const place : {&param.srcX, &param.srcY, &param.dstX, &param.dstY})
      *place = std::round(*place);
  }
  return cpu::RotatePicture(c.level, records.src(), records.dst(), &param);
}

u32 Swirl(const Call& c) {
  Records records(c);
  const SwirlParam param = {c.reals[0] * static_cast<f32>(c.srcWidth),
                            c.reals[1] * static_cast<f32>(c.srcHeight),
                            c.reals[2] * static_cast<f32>(c.width), 720 * c.reals[3],
                            c.words[0] % 16 < 15 ? c.words[0] % 2 : 2};
  return cpu::SwirlPicture(c.level, records.src(), records.dst(), &param);
}

u32 Tilt(const Call& c) {
  Records records(c);
  const auto& [x, y, yaw, pitch, roll, view, more, last] = c.reals;
  const f32 turn = c.words[1] % 4 == 1 ? 0 : 100;
  const TiltParam param = {x * static_cast<f32>(c.srcWidth),
                           y * static_cast<f32>(c.srcHeight),
                           turn * yaw,
                           turn * pitch,
                           100 * roll,
                           60 + 100 * view,
                           c.words[0] % 16 < 15 ? c.words[0] % 2 : 2};
  return cpu::TiltPicture(c.level, records.src(), records.dst(), &param);
}

/// Of the whole destination, moved at its edges.
u32 ScaledLayer(const Call& c) {
  Records records(c);
  const f32 right = static_cast<f32>(c.width), bottom = static_cast<f32>(c.height);
  const f32 rect[] = {right * c.reals[0], bottom * c.reals[1], right * (1 + c.reals[2]),
                      bottom * (1 + c.reals[3])};
  return cpu::BlendLayerScaled(c.level, records.dst(), records.src(), &c.layer, rect);
}

u32 Matte(const Call& c) {
  Records records(c);
  const i32 choke = static_cast<i32>(c.words[0] % 4 == 1 ? c.words[1] % 140 : c.words[1] % 9 + 66);
  const MatteParam param = {c.reals[0] / 2, 1 - c.reals[1] / 2, choke - 70, c.radius / 2};
  return cpu::AdjustMatte(c.level, records.dst(), &param);
}

/// The matte is a picture, or a plane.
template <i32 kBytes>
u32 ApplyMatte(const Call& c) {
  Records records(c);
  ImageDesc matte = records.src() != nullptr ? *records.src() : ImageDesc{};
  if (c.changeSrc == nullptr) matte.bytesPerPixel = kBytes;
  return cpu::ApplyMatte(c.level, records.dst(), records.src() != nullptr ? &matte : nullptr,
                         c.words[0] % 4);
}

/// The picture lies in the middle of the destination's bytes, with the border around it; where rows
/// are tight, it may be one of bytes.
template <auto kExtend>
u32 Border(const Call& c) {
  const i32 border = static_cast<i32>(c.border);
  const bool ofBytes = c.format == 0 && c.dstPitch == 4 * c.width;
  const i32 pixelBytes = ofBytes ? 1 : 4, columns = c.width * 4 / pixelBytes;
  const i64 inside = c.dst != nullptr ? i64{border} * (c.dstPitch + pixelBytes) : 0;
  ImageDesc image =
      Describe(c.dst + inside, columns - 2 * border, c.height - 2 * border, c.dstPitch);
  image.bufferWidth = columns;
  image.bufferHeight = c.height;
  image.bytesPerPixel = pixelBytes;
  if (image.width < 1 || image.height < 1 || c.dstPitch < 4 * c.width) return PICTAVO_S_OK;
  if (c.changeDst != nullptr) c.changeDst(image);
  return kExtend(c.dst != nullptr ? &image : nullptr, c.border);
}

/// Counts the source, and leaves the first bins in the destination.
template <auto kCount>
u32 Histogram(const Call& c) {
  if (c.width < 0 || c.height < 0 || c.srcPitch < 0) return PICTAVO_S_OK;
  u32 bins[300];
  const i32 count = std::min(c.binCount, 300);
  const u32 result =
      kCount(c.src, static_cast<u32>(c.width), static_cast<u32>(c.height),
             static_cast<u32>(c.srcPitch), c.dst != nullptr ? bins : nullptr, count, c.selector);
  const i32 row = c.height > 0 ? std::min(c.width, count) : 0;
  if (result == PICTAVO_S_OK && row > 0) std::memcpy(c.dst, bins, 4 * static_cast<size_t>(row));
  return result;
}

/// A rectangle that lies in the picture; a flat one is two rows high.
u32 Outline(const Call& c) {
  if (c.width < 1 || c.height < 2 || c.dstPitch < 4 * c.width) return PICTAVO_S_OK;
  const i32 right = c.opacity % c.width, bottom = c.opacity / 3 % (c.height - 1);
  const i32 rect[4] = {right / 2, bottom / 3, right, bottom};
  return cpu::DrawRectOutline(reinterpret_cast<u32*>(c.dst), static_cast<u32>(c.dstPitch), rect,
                              c.colour);
}

u32 Yuva(const Call& c, i32 level) {
  return cpu::ConvertBGRAToYUVA(level, c.src, static_cast<u32>(std::max(c.width, 0)), c.height,
                                c.srcPitch, c.dst, c.dstPitch);
}

u32 Mean(const Call& c) {
  f32 mean = 0;
  const u32 result =
      cpu::ComputeMean(c.level, c.src, c.width, c.height, c.dst != nullptr ? &mean : nullptr);
  if (result == PICTAVO_S_OK) std::memcpy(c.dst, &mean, sizeof(mean));
  return result;
}

/// A rectangle about a picture's size, sometimes of extreme numbers; the whole of it for words of
/// 0.
std::array<i32, 4> RectAbout(const Call& c) {
  std::array<i32, 4> rect;
  for (size_t i = 0; i < 4; ++i) {
    const i32 size = std::max(i % 2 == 0 ? c.width : c.height, 0);
    const i32 inside = static_cast<i32>(c.words[i] / 16 % static_cast<u32>(size + 8));
    rect[i] = i < 2 ? inside - 4 : size + 4 - inside;
    if (c.words[i] % 16 == 15) rect[i] = static_cast<i32>(c.words[i]);
  }
  return rect;
}

u32 Fill(const Call& c) {
  return cpu::FillRectangle(c.level, c.dst, c.width, c.height, c.dstPitch, RectAbout(c).data(),
                            c.colour);
}

u32 FillSmooth(const Call& c) {
  const f32 width = static_cast<f32>(c.width), height = static_cast<f32>(c.height);
  return cpu::FillRectangleSmooth(c.level, c.dst, c.width, c.height, c.dstPitch,
                                  c.reals[0] * width / 2, c.reals[1] * height / 2,
                                  width - c.reals[2] * width / 2, height - c.reals[3] * height / 2,
                                  ~c.colour);
}

u32 Pixelate(const Call& c) {
  return cpu::PixelateRegion(c.level, c.dst, c.width, c.height, c.dstPitch, RectAbout(c).data(),
                             c.border * (2 + c.colour % 9));
}

/// A rectangle that both pictures hold, but for some that leave them.
u32 CopyPart(const Call& c) {
  Records records(c);
  const i32 srcSize[] = {c.srcWidth, c.srcHeight}, dstSize[] = {c.width, c.height};
  i32 rect[4];
  for (size_t i = 0; i < 2; ++i) {
    const u32 all = static_cast<u32>(std::max(srcSize[i], 0)), first = c.words[i] % (all + 1);
    const u32 most = std::min(all - first, static_cast<u32>(std::max(dstSize[i], 0)));
    rect[i] = static_cast<i32>(first);
    rect[i + 2] = static_cast<i32>(first + most - c.words[i + 2] % (most + 1));
    if (c.words[i + 2] % 64 == 63) rect[i + 2] = static_cast<i32>(c.words[i + 2]);
  }
  return cpu::CopyRectangle(c.level, records.src(), records.dst(), rect);
}

/// From the destination's pixels to the source's; a push, which would move them, between two parts
/// of the source.
u32 Transit(const Call& c) {
  Records records(c);
  const TransitionParam param = {c.words[0] % 9, 1 - c.reals[0], c.reals[1], 360 * c.reals[2],
                                 c.colour};
  if (param.mode != PICTAVO_TRANSITION_PUSH || c.src == nullptr || c.dst == nullptr)
    return cpu::ApplyTransition(c.level, records.dst(), records.dst(), records.src(), &param);
  ImageDesc dst = *records.dst(), from = *records.src();
  --dst.width;
  --from.width;
  ImageDesc to = from;
  to.data = static_cast<u8*>(from.data) + 4;
  return cpu::ApplyTransition(c.level, &dst, &from, &to, &param);
}

/// Any weights, small ones or few.
u32 Convolve(const Call& c) {
  Records records(c);
  ConvolveParam param = {c.format == 2  ? 4u
                         : c.format < 1 ? 5u
                                        : 3u,
                         static_cast<i32>(c.words[1] % 18) - (c.words[1] % 18 == 17 ? 18 : 0),
                         static_cast<i32>(c.words[3]) >> (c.words[1] % 4 != 1 ? 24 : 0),
                         c.words[0] % 2,
                         {}};
  Random random(c.words[2]);
  for (i32& weight : param.weights) {
    weight = static_cast<i32>(random() % 256) - 128;
    if (c.words[0] / 2 % 3 == 1) weight /= 16;
    if (c.words[0] / 2 % 3 == 2 && random() % 4 != 0) weight = 0;
  }
  if (c.words[2] % 64 >= 62) param.weights[4] = c.words[2] % 64 == 63 ? 128 : -129;
  return cpu::ConvolvePicture(c.level, records.src(), records.dst(), &param);
}

/// Leaves a number in the first pixel.
template <typename Number>
u32 Tell(const Call& c, u32 result, Number number) {
  static_assert(sizeof(number) == 4);
  if (result == PICTAVO_S_OK) std::memcpy(c.dst, &number, sizeof(number));
  return result;
}

/// Of the source's first bytes, one of them more or less.
u32 Threshold(const Call& c) {
  const i64 count = std::clamp<i64>(i64{c.width} * std::max(c.height, 0), 0, 1000);
  f32 values[1000] = {};
  if (c.src != nullptr) std::copy_n(c.src, count, values);
  values[0] += c.reals[0];
  u32 index = 0;
  const u32 result =
      cpu::FindThreshold(c.src != nullptr ? values : nullptr, static_cast<u32>(count),
                         c.dst != nullptr ? &index : nullptr);
  return Tell(c, result, index);
}

u32 Measure(const Call& c) {
  f32 number = 0;
  const u32 result = cpu::MeasurePicture(c.level, c.src, c.width, c.height, c.srcPitch,
                                         static_cast<i32>(c.selector) - 1, c.words[0] % 5,
                                         c.dst != nullptr ? &number : nullptr);
  return Tell(c, result, number);
}

u32 Bounds(const Call& c) {
  if (c.srcPitch < 0) return PICTAVO_S_OK;
  u32 count = 0;
  PixelBounds bounds = {};
  const u32 result = cpu::FindBounds(c.level, c.src, c.width, c.height,
                                     static_cast<u32>(c.srcPitch), c.selector % 5, c.words[0] % 260,
                                     &count, c.dst != nullptr ? &bounds : nullptr);
  u32 all = count * 5;
  for (const auto& [side, factor] : {std::pair{bounds.left, 7u},
                                     {bounds.top, 1001u},
                                     {bounds.right, 65537u},
                                     {bounds.bottom, 1000003u}})
    all += static_cast<u32>(side) * factor;
  return Tell(c, result, all);
}

/// What an operation on a single colour makes of it: numbers and a code.
using Numbers = std::array<u32, 4>;

/// A pixel's bytes as numbers; at some alphas far outside a byte.
std::array<i32, 3> NumbersAt(const u8* pixel) {
  std::array<i32, 3> numbers;
  for (size_t i = 0; i < 3; ++i) {
    numbers[i] = pixel[2 - i];
    if (pixel[3] % 4 == 1) numbers[i] = (numbers[i] - 128) * (1 << pixel[3] / 11);
  }
  return numbers;
}

/// Puts into each pixel what tells one result for it from another.
void StoreNumbers(const Numbers& numbers, u8* pixel) {
  u32 all = 2166136261;
  for (const u32 number : numbers) all = (all ^ number ^ number >> 16) * 16777619;
  std::memcpy(pixel, &all, 4);
}

/// Each pixel by itself.
template <auto kConvert>
u32 Singles(const Call& c) {
  for (i64 i = 0; i < i64{std::max(c.width, 0)} * c.height; ++i) {
    Numbers out = {};
    kConvert(c, c.dst + 4 * i, &out);
    StoreNumbers(out, c.dst + 4 * i);
  }
  return PICTAVO_S_OK;
}

void PixelToYuv(const Call& c, const u8* pixel, Numbers* to) {
  const auto [r, g, b] = NumbersAt(pixel);
  cpu::ConvertRGBToYUVPixel(c.level, r, g, b, &(*to)[0], &(*to)[1], &(*to)[2]);
}
void PixelToRgb(const Call& c, const u8* pixel, Numbers* to) {
  const auto [y, u, v] = NumbersAt(pixel);
  cpu::ConvertYUVToRGBPixel(c.level, y, u, v, &(*to)[0], &(*to)[1], &(*to)[2]);
}
void HslToRgb(const Call&, const u8* pixel, Numbers* to) {
  u8 rgb[3] = {};
  (*to)[3] = cpu::ConvertHSLToRGB(NumbersAt(pixel)[0], pixel[1], pixel[0], rgb, rgb + 1, rgb + 2);
  std::copy(rgb, rgb + 3, to->begin());
}

/// Also degrees, which models without a hue do not take.
u32 SingleRange(const Call& c, const u8* pixel) {
  return pixel[3] % 8 < 3 ? u32{PICTAVO_RANGE_DEGREES} : c.range;
}
template <auto kConvert>
void SpaceColour(const Call& c, const u8* pixel, Numbers* to) {
  const auto [x, y, z] = NumbersAt(pixel);
  (*to)[3] =
      kConvert(x, y, z, &(*to)[0], &(*to)[1], &(*to)[2], c.model, c.matrix, SingleRange(c, pixel));
}
void SpacePixel(const Call& c, const u8* pixel, Numbers* to) {
  (*to)[3] = colour::ConvertPixelFromRGB(pixel, &(*to)[0], &(*to)[1], &(*to)[2], c.model, c.matrix,
                                         SingleRange(c, pixel));
}

/// Whole fours of pixels.
template <auto kConvert>
u32 Fours(const Call& c) {
  for (i64 i = 0; i + 4 <= i64{std::max(c.width, 0)} * c.height; i += 4) {
    i32 y[4], u[4], v[4];
    kConvert(c.level)(c.dst + 4 * i, y, u, v);
    for (i64 k = 0; k < 4; ++k) {
      StoreNumbers({static_cast<u32>(y[k]), static_cast<u32>(u[k]), static_cast<u32>(v[k])},
                   c.dst + 4 * (i + k));
    }
  }
  return PICTAVO_S_OK;
}
constexpr auto kFourAtOnce = [](i32) { return cpu::ConvertRGBToYUV4Pixels; };
constexpr auto kFourByLevel = [](i32 level) {
  return level < PICTAVO_LEVEL_SSE2 ? cpu::ConvertRGBToYUVPixelsPortable
                                    : cpu::ConvertRGBToYUV4Pixels;
};

/// The numbers told, in the first pixels.
u32 MotionSize(const Call& c) {
  const ImageDesc src = Describe(nullptr, c.srcWidth, c.srcHeight, 4 * c.srcWidth);
  ImageDesc told = {};
  i32 numbers[5] = {};
  const u32 result = cpu::GetMotionBlurDstSize(&src, &told, &c.motion, numbers, numbers + 1);
  numbers[2] = told.width, numbers[3] = told.height, numbers[4] = told.pitch;
  if (c.width >= 5 && c.height > 0) std::memcpy(c.dst, numbers, sizeof numbers);
  return result;
}

/// Frames are one row of bytes.
u32 FromFrame(const Call& c) {
  return cpu::ConvertFrameToBGRA(c.level, c.src, c.width, c.height, c.dst, c.dstPitch,
                                 static_cast<u32>(c.format));
}
u32 ToFrame(const Call& c) {
  return cpu::ConvertBGRAToFrame(c.level, c.src, c.srcWidth, c.srcHeight, c.srcPitch, c.dst,
                                 static_cast<u32>(c.format));
}

/// Any of a record's words as a number: itself where it is small, else one below the end.
u32 Below(u32 end, u32 word) { return word < 100 ? word : word % end; }

u32 Curve(const Call& c) {
  const LevelsParam param = {c.reals[0] / 4, 1 - c.reals[1] / 4, 0.02f + 4 * c.reals[2], c.reals[3],
                             c.reals[4]};
  return cpu::AdjustLevels(c.level, c.dst, c.width, c.height, c.dstPitch,
                           15 ^ Below(16, c.words[0]), c.words[1] == 1 ? nullptr : &param);
}

u32 Colour(const Call& c) {
  const ColorParam param = {c.reals[0],       1 + 3 * c.reals[1], 4 * c.reals[2],
                            720 * c.reals[3], c.reals[4],         c.reals[5]};
  return cpu::AdjustColor(c.level, c.dst, c.width, c.height, c.dstPitch,
                          c.words[1] == 1 ? nullptr : &param);
}

constexpr u32 kMostSide = 65;

/// Entries of a table of colours, which end at a forbidden page.
struct Entries : GuardedMemory {
  Entries() : GuardedMemory(size_t{8} * kMostSide * kMostSide * kMostSide, Side::kAfter) {
    Random random(17);
    std::generate(data(), data() + size(), [&] { return static_cast<u8>(random()); });
  }
} entries;

u32 Lut(const Call& c) {
  const u32 size = 2 + Below(c.words[2] % 4 == 0 ? kMostSide - 1 : 5, c.words[0]);
  const size_t bytes = size_t{8} * size * size * size;
  const auto* const first = reinterpret_cast<const u16*>(entries.data() + entries.size() -
                                                         std::min(bytes, entries.size()));
  const ColorLutParam param = {size, 256 - Below(257, c.words[1]),
                               c.words[3] == 1 ? nullptr : first};
  Records records(c);
  return cpu::ApplyColorLut(c.level, records.src(), records.dst(),
                            c.words[3] == 2 ? nullptr : &param);
}

u32 Shuffle(const Call& c) {
  const auto place = [&](size_t i) { return Below(6, c.words[i]); };
  return cpu::ShuffleChannels(c.level, c.dst, c.src, i64{c.width} * std::max(c.height, 0), place(0),
                              place(1), place(2), place(3));
}

u32 AlphaPlane(const Call& c) {
  return cpu::SetAlphaPlane(c.level, c.dst, c.src, static_cast<u32>(std::max(c.width, 0)),
                            static_cast<u32>(std::max(c.height, 0)));
}

#define SIZE c.width, c.height
#define PACKED c.level, c.dst, c.src, SIZE
#define ONE_PITCH PACKED, c.dstPitch
#define PITCHED PACKED, c.dstPitch, c.srcPitch
#define IN_PLACE c.level, c.dst, SIZE
#define RAMP c.flip, c.start, c.end
#define FROM_TO c.level, c.src, SIZE, c.srcPitch, c.dst, c.dstPitch
#define SCALED c.dst, SIZE, c.dstPitch, c.src, c.srcWidth, c.srcHeight, c.srcPitch

using C = const Call&;
constexpr u32 kInPlacePacked = kInPlace | kPacked;
const Operation kOperations[] = {
    {"2 BlendOverWithOpacityRamp", kEachPixel,
     [](C c) { return cpu::BlendOverWithOpacityRamp(PITCHED, RAMP); }, 3},
    {"3 BlendOverPacked", kPacked | kEachPixel, [](C c) { return cpu::BlendOverPacked(PACKED); },
     3},
    {"4 BlendOverPitched", kOnePitch | kEachPixel,
     [](C c) { return cpu::BlendOverPitched(ONE_PITCH); }, 3},
    {"5 BlendPremultipliedWithOpacityRamp", kEachPixel,
     [](C c) { return cpu::BlendPremultipliedWithOpacityRamp(PITCHED, RAMP); }},
    {"6 BlendPremultipliedPacked", kPacked | kEachPixel,
     [](C c) { return cpu::BlendPremultipliedPacked(PACKED); }},
    {"7 BlendPremultipliedPitched", kOnePitch | kEachPixel,
     [](C c) { return cpu::BlendPremultipliedPitched(ONE_PITCH); }},
    {"8 CompositePremultipliedWithOpacityRamp", kEachPixel,
     [](C c) { return cpu::CompositePremultipliedWithOpacityRamp(PITCHED, RAMP); }},
    {"9 CompositePremultipliedPitched", kOnePitch | kEachPixel,
     [](C c) { return cpu::CompositePremultipliedPitched(ONE_PITCH); }},
    {"10 CompositePremultipliedPacked", kPacked | kEachPixel,
     [](C c) { return cpu::CompositePremultipliedPacked(PACKED); }},
    {"11 BlendOverWithOpacity", kEachPixel,
     [](C c) { return cpu::BlendOverWithOpacity(PITCHED, c.opacity, c.colour); }},
    {"14 ConvertRGBToYUVPixel", kInPlacePacked, Singles<PixelToYuv>, 3},
    {"15 ConvertYUVToRGBPixel", kInPlacePacked, Singles<PixelToRgb>, 3},
    {"16 UnpremultiplyPitched", kInPlace | kEachPixel,
     [](C c) { return cpu::UnpremultiplyPitched(IN_PLACE, c.dstPitch); }},
    {"17 UnpremultiplyPacked", kInPlacePacked,
     [](C c) { return cpu::UnpremultiplyPacked(IN_PLACE); }},
    {"18 PremultiplyPitched", kInPlace | kEachPixel,
     [](C c) { return cpu::PremultiplyPitched(IN_PLACE, c.dstPitch); }},
    {"19 PremultiplyPacked", kInPlacePacked, [](C c) { return cpu::PremultiplyPacked(IN_PLACE); }},
    {"20 ConvertBGRAToYUVA", kMayAlias | kEachPixel, [](C c) { return Yuva(c, c.level); }},
    {"21 ConvertBGRAToYUVAPortable", kMayAlias, [](C c) { return Yuva(c, 0); }},
    {"29 ResizeBox16AlphaWeighted", kOwnSize,
     [](C c) { return cpu::ResizeBox16AlphaWeighted(c.level, SCALED, c.forceOpaque); }},
    {"30 ResizeBilinear16", kOwnSize,
     [](C c) { return cpu::ResizeBilinear16(c.level, SCALED, c.forceOpaque, c.fullSize); }},
    {"31 ResizeBilinear7", kOwnSize, [](C c) { return cpu::ResizeBilinear7(c.level, SCALED); }},
    {"34 ConvertRGBToYUV4Pixels", kInPlacePacked, Fours<kFourAtOnce>},
    {"35 ConvertRGBToYUVPixels", kInPlacePacked, Fours<kFourByLevel>},
    {"36 BlendOverWithOpacityRampAndAlpha", kEachPixel,
     [](C c) { return cpu::BlendOverWithOpacityRampAndAlpha(PITCHED, c.opacity, c.colour, RAMP); }},
    {"37 BlendOverWithOpacityRampKeepAlpha", kEachPixel,
     [](C c) {
       return cpu::BlendOverWithOpacityRampKeepAlpha(PITCHED, c.opacity, c.colour, RAMP);
     }},
    {"43 ComputeHistogram", 0, Histogram<cpu::ComputeHistogram>},
    {"44 ComputeLumaHistogram", 0, Histogram<cpu::ComputeLumaHistogram>},
    {"46 ConvertBGRAToGray", kMayAlias | kWholePitch | kEachPixel,
     [](C c) {
       return cpu::ConvertBGRAToGray(c.level, c.src, SIZE, c.srcPitch,
                                     reinterpret_cast<u32*>(c.dst), c.dstPitch);
     }},
    {"48 DrawRectOutline", kInPlace | kWholePitch, Outline},
    {"49 SharpenPicture", kInPlace,
     [](C c) {
       return cpu::SharpenPicture(IN_PLACE, c.dstPitch, 1 + c.reals[0], 9 * c.reals[1], c.radius);
     }},
    {"50 ConvertYUVAToBGRA", kMayAlias | kEachPixel,
     [](C c) { return cpu::ConvertYUVAToBGRA(FROM_TO); }},
    {"51 FillRectangle", kInPlace, Fill},
    {"52 FillRectangleSmooth", kInPlace, FillSmooth},
    {"53 AdjustLevels", kInPlace, Curve},
    {"54 ConvertFrameToBGRA", kOwnSize, FromFrame, 0, 1},
    {"55 ResizeNearest32", kOwnSize | kWholePitch,
     [](C c) {
       return cpu::ResizeNearest32(c.level, reinterpret_cast<u32*>(c.dst), SIZE, c.dstPitch,
                                   reinterpret_cast<const u32*>(c.src), c.srcWidth, c.srcHeight,
                                   c.srcPitch);
     }},
    {"56 GaussianBlur", kInPlace,
     [](C c) {
       return cpu::GaussianBlur(IN_PLACE, c.dstPitch, c.radius, 9 * c.reals[0], c.words[0] % 3);
     }},
    {"57 ResizeBox16", kOwnSize, [](C c) { return cpu::ResizeBox16(c.level, SCALED); }},
    {"58 ResizeBilinear16KeepAlpha", kOwnSize,
     [](C c) { return cpu::ResizeBilinear16KeepAlpha(c.level, SCALED, c.fullSize); }},
    {"59 SetAlphaPlane", kPacked, AlphaPlane, 0, 1},
    {"60 ResizeFiltered", kOwnSize, Filtered},
    {"61 ResizeFilteredRegion", kOwnSize, FilteredRegion},
    {"62 ResizeNearestInRect", kOwnSize, NearestInRect},
    {"63 MotionBlur", kOwnSize, Motion},
    {"64 GetMotionBlurDstSize", kOwnSize | kPacked, MotionSize},
    {"65 FlipPicture", kMayAlias, Flip},
    {"66 ApplyColorLut", kMayAlias, Lut},
    {"67 RotatePicture", kOwnSize, Rotate},
    {"69 PixelateRegion", kInPlace, Pixelate},
    {"70 ApplyTransition", kMayAlias | kEachPixel, Transit},
    {"71 ExtendBoundary", kInPlace | kWholePitch, Border<cpu::ExtendBoundary>},
    {"72 ConvolvePicture", 0, Convolve},
    {"73 BlendLayer", kEachPixel | kManyRules, Layer<0>},
    {"74 BlendLayerSubpixel", 0, Layer<cpu::kLayerModes>},
    {"75 CopyRectangle", kOwnSize, CopyPart},
    {"77 FillSolidColor", kInPlace,
     [](C c) { return cpu::FillSolidColor(IN_PLACE, c.dstPitch, c.colour); }},
    {"78 AdjustMatte", kInPlace, Matte},
    {"79 SwirlPicture", kOwnSize, Swirl},
    {"80 ApplyMatte", kMayAlias | kEachPixel, ApplyMatte<4>},
    {"80 ApplyMatte, a plane", 0, ApplyMatte<1>, 0, 1},
    {"81 TiltPicture", kOwnSize, Tilt},
    {"82 ComputeMean", kPacked, Mean},
    {"83 FindThreshold", kPacked, Threshold},
    {"84 MeasurePicture", 0, Measure},
    {"85 FindBounds", 0, Bounds},
    {"86 ApplyChromaKey", kPacked | kMayAlias | kEachPixel, Key},
    {"87 GaussianBlurBox3", kInPlace,
     [](C c) { return cpu::GaussianBlurBox3(IN_PLACE, c.dstPitch, c.radius); }},
    {"88 ConvertPictureFromRGB", kMayAlias | kEachPixel | kManyRules,
     [](C c) { return colour::ConvertPictureFromRGB(FROM_TO, c.model, c.matrix, c.range); }},
    {"89 ConvertPictureToRGB", kMayAlias | kEachPixel | kManyRules,
     [](C c) { return colour::ConvertPictureToRGB(FROM_TO, c.model, c.matrix, c.range); }},
    {"90 ConvertColorFromRGB", kInPlacePacked, Singles<SpaceColour<colour::ConvertColorFromRGB>>},
    {"91 ConvertColorToRGB", kInPlacePacked, Singles<SpaceColour<colour::ConvertColorToRGB>>},
    {"92 ConvertPixelFromRGB", kInPlacePacked, Singles<SpacePixel>},
    {"93 ConvertBGRAToFrame", kOwnSize, ToFrame, 0, 4, 1},
    {"94 ExtractPlane", 0, [](C c) { return cpu::ExtractPlane(FROM_TO, Below(5, c.words[0])); }, 0,
     4, 1},
    {"95 ConvertHSLToRGB", kInPlacePacked, Singles<HslToRgb>},
    {"96 BlendLayerScaled", kOwnSize, ScaledLayer},
    {"99 AdjustColor", kInPlace, Colour},
    {"106 ShuffleChannels", kPacked | kMayAlias, Shuffle},
    {"107 ExtendBoundaryTransparent", kInPlace | kWholePitch,
     Border<cpu::ExtendBoundaryTransparent>},
    {"109 ExpandPlaneScaled", 0,
     [](C c) { return cpu::ExpandPlaneScaled(FROM_TO, 3 * c.reals[0]); }, 0, 1},
    {"110 ExpandPlane", 0, [](C c) { return cpu::ExpandPlane(FROM_TO); }, 0, 1},
};

// --- Drawing calls -----------------------------------------------------------------------------

i32 DrawSide(Input* in) {
  const i32 side = in->Byte();
  if (side >= 250) return side - 256;
  return side < 160 ? side % 20 : side - 159;
}

/// Doubles and halves often, also but for a pixel.
i32 DrawScaled(i32 side, Input* in) {
  const i32 kind = in->Byte();
  switch (kind % 8) {
    case 0:
      return side;
    case 1:
      return 2 * side + kind / 128;
    case 2:
      return side / 2 + kind / 128;
    case 3:
      return 5 * kind;
    default:
      return DrawSide(in);
  }
}

/// Tight, padded, upwards, or so small that rows share bytes.
i32 DrawPitch(i32 width, Input* in, i32 pixelBytes = 4) {
  const i32 row = pixelBytes * std::max(width, 0);
  switch (in->Below(8)) {
    case 0:
      return row + 1 + in->Below(32);
    case 1:
      return -row;
    case 2:
      return row - in->Below(8);
    case 3:
      return -row - in->Below(9);
    default:
      return row;
  }
}

void DrawColours(Call* c, Input* in) {
  constexpr i32 kAngles[] = {0, 30, 60, 89, 90, 91, 180, 360, -30, 10000, INT32_MAX, INT32_MIN};
  constexpr i32 kDenoises[] = {0, 1, 5, 20, 60, 110, 300, 50000, -20, INT32_MAX, INT32_MIN};
  c->keyCount = 1 + in->Below(3);
  c->format = in->Below(4) - 1;
  for (ChromaKey& key : c->keys) {
    key = {in->Byte(),
           in->Byte(),
           in->Byte(),
           0,
           kAngles[static_cast<size_t>(in->Below(std::size(kAngles)))],
           kDenoises[static_cast<size_t>(in->Below(std::size(kDenoises)))]};
    const u8 grey = in->Byte();
    if (grey < 80) key.keyG = key.keyR ^ (grey & 7);
    if (grey < 80) key.keyB = key.keyR ^ (grey >> 3 & 7);
  }
  c->model = static_cast<u32>(in->Below(3));
  c->matrix = c->model == PICTAVO_COLOR_YUV ? static_cast<u32>(in->Below(3)) : 0;
  c->range = c->model == PICTAVO_COLOR_YUV ? static_cast<u32>(in->Below(2)) : PICTAVO_RANGE_FULL;
}

/// A frame's format, and its size as that of the side that has it.
void DrawFrame(Call* c, bool isSource, Input* in) {
  const u32 layout = static_cast<u32>(in->Below(9)), space = layout < 6 ? in->Byte() : 0u;
  c->format = static_cast<i32>(FrameFormat(layout, space % 3, space / 128));
  const bool empty = c->width < 1 || c->height < 1;
  const i64 bytes = empty ? 0 : FrameBytes(layout, c->width, c->height);
  if (!isSource) c->srcWidth = c->width, c->srcHeight = c->height;
  (isSource ? c->srcWidth : c->width) = static_cast<i32>(bytes);
  (isSource ? c->srcHeight : c->height) = 1;
}

/// Of one kind, or of several; long motions only take time.
MotionBlurParam DrawMotion(Input* in) {
  const auto limited = [in](f32 most) {
    const f32 value = in->Real(most);
    return std::abs(value) > 8 * most && std::abs(value) < 1e30f ? most : value;
  };
  MotionBlurParam motion = {1, 2 + in->Below(40), 0, 0, 1, 0, 0};
  const u8 kinds = in->Byte();
  if (kinds % 8 == 0) motion.maxSamples = in->Integer() % 600;
  if (kinds % 3 == 0) motion.strength = limited(2);
  if (kinds / 32 % 8 < 3) motion.dirX = std::round(limited(60));
  if (kinds / 32 % 8 > 1 && kinds / 32 < 5) motion.dirY = limited(60);
  if (kinds / 32 == 5 || kinds % 16 == 1) motion.zoom = limited(3);
  if (kinds / 32 > 5) motion.angle = limited(200);
  return motion;
}

Bytes RandomBytes(size_t count, Random& random) {
  Bytes bytes(count);
  for (u8& byte : bytes) byte = static_cast<u8>(random());
  return bytes;
}

/// Half of the pixels near the key's colour.
void PullTowardsKey(const Call& c, Bytes* pixels, Random& random) {
  const ChromaKey& key = c.keys[0];
  const chromakey::Yuv yuv = chromakey::ToYuv(key.keyR, key.keyG, key.keyB);
  const int bgra[] = {key.keyB, key.keyG, key.keyR};
  const int vuya[] = {static_cast<int>(yuv.v) + 128, static_cast<int>(yuv.u) + 128,
                      static_cast<int>(yuv.y)};
  for (size_t at = 0; at + 4 <= pixels->size(); at += 4) {
    if (random() % 2) continue;
    const int spread = 1 + static_cast<int>(random() % 40);
    for (size_t k = 0; k < 3; ++k) {
      const int value = (c.format == 1 ? bgra : vuya)[k] - spread +
                        static_cast<int>(random() % static_cast<u32>(2 * spread + 1));
      (*pixels)[at + k] = static_cast<u8>(std::clamp(value, 0, 255));
    }
  }
}

// --- Running them ------------------------------------------------------------------------------

i32 SrcHeight(const Case& c) {
  return c.operation->traits & kOwnSize ? c.call.srcHeight : c.call.height;
}

/// Whether what lies between the rows is as before.
bool KeepsGaps(const Case& c, const Bytes& after) {
  const size_t row = static_cast<size_t>(c.operation->dstBytes * std::max(c.call.width, 0));
  const size_t pitch = static_cast<size_t>(std::abs(c.call.dstPitch));
  for (size_t at = row; pitch > row && at < c.dst.size(); at += pitch) {
    const size_t gap = std::min(pitch - row, c.dst.size() - at);
    if (std::memcmp(&after[at], &c.dst[at], gap) != 0) return false;
  }
  return true;
}

std::string Describe(const Operation& operation, const Call& n, i32 level) {
  std::string text = operation.name;
  const auto add = [&text](const char* what, auto... numbers) {
    text += std::string(", ") + what;
    ((text += ' ', text += std::to_string(numbers)), ...);
  };
  add("level", level);
  add("size", n.width, n.height, n.srcWidth, n.srcHeight);
  add("pitches", n.dstPitch, n.srcPitch);
  add("ramp", n.flip, n.start, n.end);
  add("opacity", n.opacity, n.colour);
  add("resizing", n.forceOpaque, n.fullSize);
  add("radius", n.radius);
  add("layer", n.layer.mode, n.layer.opacity, n.layer.alphaMode);
  add("motion", n.motion.strength, n.motion.maxSamples, n.motion.dirX, n.motion.dirY, n.motion.zoom,
      n.motion.angle);
  for (const ChromaKey& key : n.keys) {
    add("key", key.keyR, key.keyG, key.keyB, key.angle, key.denoise);
  }
  add("format", n.keyCount, n.format);
  add("counting", n.binCount, n.selector);
  add("space", n.model, n.matrix, n.range);
  for (const f32 real : n.reals) add("real", real);
  for (const u32 word : n.words) add("word", word);
  return text;
}

// --- What a fault came from --------------------------------------------------------------------

using Text = char[960];
thread_local Text doing;
std::atomic<const char*> lastDone = doing;  // by whom threads of the library's own work

void Remember(const std::string& text) {
  doing[text.copy(doing, sizeof doing - 1)] = 0;
  lastDone = doing;
}

#ifndef _WIN32

constexpr int kFaults[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
struct sigaction handlersBefore[NSIG];

void TellAndFault(int signal) {
  const char* const text = doing[0] != 0 ? doing : lastDone.load();
  for (const char* part : {"Fault in: ", text, "\n"}) {
    if (write(STDERR_FILENO, part, std::strlen(part)) < 0) break;
  }
  sigaction(signal, &handlersBefore[signal], nullptr);
  if (signal == SIGABRT) raise(signal);  // the others return to what faults again
}

[[maybe_unused]] const bool kTells = [] {
  struct sigaction action = {};
  action.sa_handler = TellAndFault;
  for (const int signal : kFaults) sigaction(signal, &action, &handlersBefore[signal]);
  return true;
}();

#endif

}  // namespace

size_t Span(i32 width, i32 height, i32 pitch, i32 pixelBytes) {
  if (width < 1 || height < 1) return 0;
  return static_cast<size_t>(i64{height - 1} * std::abs(pitch) + i64{pixelBytes} * width);
}

u8* Top(u8* memory, i32 height, i32 pitch) {
  return pitch < 0 && height > 0 ? memory - i64{height - 1} * pitch : memory;
}

std::span<const Operation> Operations() { return kOperations; }

const Operation& Slot(int slot) {
  return *std::find_if(std::begin(kOperations), std::end(kOperations),
                       [slot](const Operation& o) { return std::atoi(o.name) == slot; });
}

std::vector<i32> Levels() {
  std::vector<i32> levels = {PICTAVO_LEVEL_PORTABLE, 3};
  if (__builtin_cpu_supports("ssse3")) levels.push_back(5);
  if (__builtin_cpu_supports("sse4.1")) levels.push_back(6);
  if (__builtin_cpu_supports("avx2")) levels.push_back(8);
  return levels;
}

u8 Input::Byte() {
  if (bytes_.empty()) return 0;
  const u8 byte = bytes_.front();
  bytes_ = bytes_.subspan(1);
  return byte;
}

u32 Input::Bits() {
  u32 bits = 0;
  for (int i = 0; i < 4; ++i) bits = bits << 8 | Byte();
  return bits;
}

i32 Input::Integer() {
  static constexpr i32 kExtremes[] = {-1, 0, 255, 256, 65536, INT32_MAX, INT32_MIN};
  const u8 kind = Byte();
  if (kind < 200) return kind;
  return kind < 240 ? static_cast<i32>(Bits()) : kExtremes[kind % std::size(kExtremes)];
}

f32 Input::Real(f32 most) {
  using Limits = std::numeric_limits<f32>;
  static constexpr f32 kExtremes[] = {0,     1,      -1,     2,
                                      -0.0f, 1e38f,  -1e38f, 1e-42f,
                                      700,   255.5f, 0.5f,   Limits::quiet_NaN(),
                                      1.5f,  -0.5f,  1e-3f,  Limits::infinity(),
                                      3,     0.25f,  1e-30f, -Limits::infinity()};
  const u8 kind = Byte();
  if (kind < 150) return most * static_cast<f32>(kind) / 149;
  if (kind < 180) return -most * static_cast<f32>(kind - 150) / 29;
  return kind < 200 ? std::bit_cast<f32>(Bits()) : kExtremes[kind % std::size(kExtremes)];
}

Case MakeCase(const Operation& operation, const Call& call, Bytes dst, Bytes src,
              GuardedMemory::Side side) {
  return {&operation, call, std::move(dst), std::move(src), false, side};
}

Case DrawCase(const Operation& operation, Input* in, i32 wider) {
  Case drawn = {&operation, {}, {}, {}, false, {}};
  Call& c = drawn.call;
  const u32 traits = operation.traits;
  c.width = DrawSide(in) + wider;
  c.height = DrawSide(in);
  c.flip = in->Below(3) - 1;
  c.start = in->Real(1);
  c.end = in->Below(2) == 0 ? c.start : in->Real(1);
  c.opacity = in->Below(3) == 0 ? u8{255} : in->Byte();
  c.colour = in->Bits();
  if (c.opacity % 4 == 0) c.colour &= 0xFFFFFF;
  c.forceOpaque = in->Below(2);
  c.fullSize = in->Below(4);
  c.radius = in->Real(static_cast<f32>(std::min(c.width, c.height)));
  c.layer = {static_cast<u32>(in->Below(cpu::kLayerModes)), c.opacity,
             static_cast<u32>(in->Below(3)), c.start, c.end};
  c.border = static_cast<u32>(in->Below(8));
  c.selector = static_cast<u32>(in->Below(7));
  c.binCount = in->Integer();
  DrawColours(&c, in);
  c.srcWidth = traits & kOwnSize ? DrawScaled(c.width, in) : c.width;
  c.srcHeight = traits & kOwnSize ? DrawScaled(c.height, in) : c.height;
  bool packed = traits & kPacked;
  if (operation.run == FromFrame || operation.run == ToFrame)
    DrawFrame(&c, operation.run == FromFrame, in);
  if (operation.run == MotionSize) c.motion = DrawMotion(in);
  if (operation.run == Motion) {
    const MotionBlurParam& m = c.motion = DrawMotion(in);
    const ImageDesc src = Describe(nullptr, c.srcWidth, c.srcHeight, 4 * c.srcWidth);
    ImageDesc told = {};
    i32 x, y;
    cpu::GetMotionBlurDstSize(&src, &told, &m, &x, &y);
    if (in->Below(4) != 0 && std::min(told.width, told.height) > 0 &&
        i64{told.width} * told.height < 20000) {
      c.width = told.width;
      c.height = told.height;
    }
    // Only what spins has pitches.
    packed = m.dirX != 0 || m.dirY != 0 || m.zoom != 1 || told.width == c.srcWidth;
  }

  c.dstPitch = DrawPitch(c.width, in, operation.dstBytes);
  c.srcPitch = DrawPitch(c.srcWidth, in, operation.srcBytes);
  if (traits & kOnePitch) c.srcPitch = c.dstPitch;
  if (packed) {
    c.dstPitch = operation.dstBytes * c.width;
    c.srcPitch = operation.srcBytes * c.srcWidth;
  }
  if (traits & kWholePitch) {
    c.dstPitch &= ~3;
    c.srcPitch &= ~3;
  }
  drawn.aliased = traits & kMayAlias && in->Below(4) == 0;
  if (drawn.aliased) c.srcPitch = c.dstPitch;

  drawn.dst.resize(Span(c.width, c.height, c.dstPitch, operation.dstBytes));
  if (!(traits & kInPlace))
    drawn.src.resize(Span(c.srcWidth, c.srcHeight, c.srcPitch, operation.srcBytes));
  for (Bytes* pixels : {&drawn.dst, &drawn.src}) {
    Random random(in->Bits());
    FillPixels(pixels->data(), pixels->size(), in->Below(kKinds), random);
    if (operation.run == Key) PullTowardsKey(c, pixels, random);
  }
  drawn.side = in->Below(2) == 0 ? GuardedMemory::Side::kBefore : GuardedMemory::Side::kAfter;
  Random random(in->Bits());
  const Bytes more = RandomBytes(64, random);
  Input parameters(more);
  for (f32& real : c.reals) real = parameters.Real(1);
  for (u32& word : c.words) word = parameters.Bits();
  return drawn;
}

Case DrawCase(const Operation& operation, Random& random, i32 wider) {
  const Bytes bytes = RandomBytes(128, random);
  Input input(bytes);
  return DrawCase(operation, &input, wider);
}

Outcome RunCase(const Case& c, i32 level) {
  GuardedMemory dst(c.dst.size(), c.side), src(c.src.size(), c.side);
  std::copy(c.dst.begin(), c.dst.end(), dst.data());
  std::copy(c.src.begin(), c.src.end(), src.data());
  u8* const to = Top(dst.data(), c.call.height, c.call.dstPitch);
  const u8* const from = c.aliased ? to : Top(src.data(), SrcHeight(c), c.call.srcPitch);
  const u32 result = (*c.operation)(level, to, from, c.call);
  if (!std::equal(c.src.begin(), c.src.end(), src.data())) std::abort();  // no method writes there
  return {result, Bytes(dst.data(), dst.data() + dst.size())};
}

std::string Disagreement(const Case& c) {
  // Rows that share bytes are written by more than one pixel, in an order of the build's own.
  const bool plain = std::abs(c.call.dstPitch) >= c.operation->dstBytes * c.call.width &&
                     (!c.aliased || c.call.srcPitch == c.call.dstPitch);
  std::optional<Outcome> first;
  for (const i32 level : Levels()) {
    const Outcome outcome = RunCase(c, level);
    if (!plain) continue;
    if (!KeepsGaps(c, outcome.dst)) return "writes between rows: " + Describe(c, level);
    if (level < c.operation->sameFrom) continue;
    if (!first) first = outcome;
    if (outcome == *first) continue;
    const auto at =
        std::mismatch(outcome.dst.begin(), outcome.dst.end(), first->dst.begin()).first -
        outcome.dst.begin();
    return "byte " + std::to_string(at) + " or the result " + std::to_string(outcome.result) +
           " differs: " + Describe(c, level);
  }
  return {};
}

std::string Describe(const Case& c, i32 level) { return Describe(*c.operation, c.call, level); }

u32 Operation::operator()(i32 level, u8* dst, const u8* src, Call call) const {
  Remember(Describe(*this, call, level));
  call.level = level;
  call.dst = dst;
  call.src = src;
  isInOperation = true;
  const u32 result = run(call);
  isInOperation = false;
  return result;
}

}  // namespace pictavo::test
