// Differential fuzzing: an operation, its geometry, parameters and pixels from the input, run at
// every level. The sanitizers see what is outside a buffer; this sees what differs between levels.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

#include "../kernels/pixels.h"
#include "chromakey/chroma_key_fx.h"
#include "cpu/blend.h"
#include "cpu/blur.h"
#include "cpu/border.h"
#include "cpu/convert.h"
#include "cpu/draw.h"
#include "cpu/histogram.h"
#include "cpu/layer.h"
#include "cpu/motion_blur.h"
#include "cpu/resize.h"

namespace pictavo::test {
namespace {

/// What is left of the fuzzer's bytes; zeros behind their end.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  u32 Bits() {
    u32 bits = 0;
    const size_t count = std::min(sizeof(bits), size_);
    std::memcpy(&bits, data_, count);
    data_ += count;
    size_ -= count;
    return bits;
  }
  u32 Byte() {
    if (size_ == 0) return 0;
    --size_;
    return *data_++;
  }
  i32 Below(i32 end) { return static_cast<i32>(Byte()) % end; }

  /// Mostly small, sometimes extreme.
  i32 Integer() {
    static constexpr i32 kExtremes[] = {-1, 0, 255, 256, 65536, INT32_MAX, INT32_MIN};
    const u32 kind = Byte();
    if (kind < 200) return static_cast<i32>(kind);
    return kind < 240 ? static_cast<i32>(Bits()) : kExtremes[kind % std::size(kExtremes)];
  }
  /// Mostly within `scale`, sometimes extreme.
  f32 Real(f32 scale) {
    using Limits = std::numeric_limits<f32>;
    static constexpr f32 kExtremes[] = {0,
                                        1,
                                        -1,
                                        2,
                                        -0.0f,
                                        1e38f,
                                        -1e38f,
                                        1e-42f,
                                        255.5f,
                                        Limits::quiet_NaN(),
                                        Limits::infinity(),
                                        -Limits::infinity()};
    const u32 kind = Byte();
    if (kind < 160) return scale * static_cast<f32>(kind) / 159;
    if (kind < 200) return -scale * static_cast<f32>(kind - 160) / 39;
    return kind < 230 ? std::bit_cast<f32>(Bits()) : kExtremes[kind % std::size(kExtremes)];
  }

 private:
  const uint8_t* data_;
  size_t size_;
};

/// A picture of just the bytes that its geometry describes, so that the sanitizer sees any other.
class Picture {
 public:
  explicit Picture(Input* in) {
    width = Side(in);
    height = Side(in);
    const i32 row = 4 * std::max(width, 0);
    switch (in->Below(8)) {
      case 0:
        pitch = row + 1 + in->Below(32);
        break;
      case 1:
        pitch = -row;
        break;
      case 2:
        pitch = row - in->Below(8);
        break;
      default:
        pitch = row;
    }
    const i64 rows = std::max(height, 0), step = std::abs(pitch);
    // Methods without a pitch take the rows as packed.
    const i64 pitched = rows > 0 && row > 0 ? (rows - 1) * step + row : 0;
    bytes_.resize(static_cast<size_t>(std::max(pitched, rows * row)));
    offset_ = pitch < 0 && pitched > 0 ? static_cast<size_t>(pitched - row) : 0;
    Random random(in->Bits());
    FillPixels(bytes_.data(), bytes_.size(), in->Below(kKinds), random);
  }

  /// Of the same geometry.
  Picture WithOtherPixels(Input* in) const {
    Picture other = *this;
    Random random(in->Bits());
    FillPixels(other.bytes_.data(), other.bytes_.size(), in->Below(kKinds), random);
    return other;
  }

  /// Whether each byte lies in one row only.
  bool isPlain() const { return pitch >= 4 * width; }

  /// The picture in an allocation of its own; `data` is the first byte of its top row.
  struct Copy {
    std::unique_ptr<u8[]> bytes;
    u8* data;
    size_t size;
  };
  Copy Make(bool pitched) const {
    Copy copy = {std::make_unique<u8[]>(bytes_.size()), nullptr, bytes_.size()};
    if (!bytes_.empty()) std::memcpy(copy.bytes.get(), bytes_.data(), bytes_.size());
    copy.data = copy.bytes.get() + (pitched ? offset_ : 0);
    return copy;
  }
  ImageDesc Describe(u8* data) const {
    ImageDesc image = {};
    image.data = data;
    image.width = image.bufferWidth = width;
    image.height = image.bufferHeight = height;
    image.pitch = pitch;
    image.bytesPerPixel = 4;
    return image;
  }

  i32 width, height, pitch;

 private:
  static i32 Side(Input* in) {
    const u32 side = in->Byte();
    if (side >= 250) return static_cast<i32>(side) - 256;
    return static_cast<i32>(side < 160 ? side % 20 : side - 159);
  }

  Bytes bytes_;
  size_t offset_ = 0;
};

/// What an operation takes besides pictures; each takes what it has.
struct Numbers {
  std::array<i32, 4> i;
  std::array<f32, 3> f;
};

struct Call {
  i32 level;
  const Picture &to, &from;
  u8* dst;
  const u8* src;
  const Numbers& n;
};

u32 Layer(const Call& c) {
  const cpu::LayerKernels& builds = cpu::kLayerKernels;
  const u32 mode = static_cast<u32>(c.n.i[0]) % (2 * cpu::kLayerModes);
  cpu::LayerKernel* kernel = builds.defaults[mode];
  if (mode < cpu::kLayerModes) {
    if (c.level >= PICTAVO_LEVEL_SSE4_1 && builds.sse41[mode]) kernel = builds.sse41[mode];
    if (c.level >= PICTAVO_LEVEL_AVX2 && builds.avx2[mode]) kernel = builds.avx2[mode];
  }
  const i32 width = std::min(c.to.width, c.from.width),
            height = std::min(c.to.height, c.from.height);
  if (kernel == nullptr || width < 1 || height < 1) return 0;
  const BlendParam param = {mode, 1 + static_cast<u32>(c.n.i[1]) % 255,
                            static_cast<u32>(c.n.i[2]) % 3, c.n.f[0], c.n.f[1]};
  return kernel(c.dst, c.src, width, height, c.to.pitch, c.from.pitch, param);
}

u32 Motion(const Call& c) {
  ImageDesc src = c.from.Describe(const_cast<u8*>(c.src)), dst = c.to.Describe(c.dst);
  src.pitch = 4 * src.width;  // as GetMotionBlurDstSize makes the destination's
  dst.pitch = 4 * dst.width;
  // Long motions only take time.
  const auto limited = [](f32 value, f32 most) {
    return value > most && value < 1e30f ? most : value;
  };
  const MotionBlurParam param = {limited(c.n.f[1], 4),
                                 std::min(c.n.i[3], 40),
                                 limited(c.n.f[0], 300),
                                 limited(c.n.f[2], 300),
                                 c.n.i[0] % 2 == 0 ? 1 : limited(c.n.f[1], 4),
                                 0,
                                 c.n.i[1] % 2 == 0 ? 0 : c.n.f[2]};
  ImageDesc room = {};
  i32 left, top;
  cpu::GetMotionBlurDstSize(&src, &room, &param, &left, &top);
  return cpu::MotionBlur(c.level, &src, &dst, &param);
}

u32 Key(const Call& c) {
  const ImageDesc src = c.from.Describe(const_cast<u8*>(c.src));
  ImageDesc dst = c.to.Describe(c.dst);
  ChromaKey keys[3];
  for (int k = 0; k < 3; ++k) {
    const u32 colour = std::bit_cast<u32>(c.n.f[static_cast<size_t>(k)]);
    keys[k] = {static_cast<u8>(colour >> 24),
               static_cast<u8>(colour >> 16),
               static_cast<u8>(colour >> 8),
               0,
               c.n.i[1] ^ k,
               c.n.i[2] ^ k};
  }
  return chromakey::ApplyChromaKey(c.level, &src, &dst, keys, std::min(c.n.i[3], 3), c.n.i[0] % 2);
}

/// The picture lies in the middle of the destination's bytes, with the border around it.
u32 Border(const Call& c) {
  ImageDesc image = c.to.Describe(c.dst);
  const i32 border = c.n.i[0] & 15;
  image.width -= 2 * border;
  image.height -= 2 * border;
  if (image.width < 1 || image.height < 1 || c.to.pitch < 4 * c.to.width) return 0;
  image.data = c.dst + i64{border} * (c.to.pitch / 4 * 4) + 4 * border;
  return (c.n.i[1] % 2 == 0 ? cpu::ExtendBoundary : cpu::ExtendBoundaryTransparent)(
      &image, static_cast<u32>(border));
}

u32 Histogram(const Call& c) {
  std::vector<u32> bins(static_cast<size_t>(std::clamp(c.n.i[0], 0, 300)));
  if (c.from.width < 0 || c.from.height < 0 || c.from.pitch < 0) return 0;
  return (c.n.i[2] % 2 == 0 ? cpu::ComputeHistogram : cpu::ComputeLumaHistogram)(
      c.src, static_cast<u32>(c.from.width), static_cast<u32>(c.from.height),
      static_cast<u32>(c.from.pitch), bins.data(), static_cast<i32>(bins.size()),
      static_cast<u32>(c.n.i[1]));
}

struct Operation {
  i32 sameFrom;     // the lowest level of those that give the same bytes
  bool resizes;     // the source has a size of its own
  bool keepsPitch;  // addresses rows by pitches
  u32 (*run)(const Call& call);
};

#define FLIP c.n.i[0]
#define OPACITY static_cast<u8>(c.n.i[1])
#define BACKDROP static_cast<u32>(c.n.i[2])
#define RAMP c.n.f[0], c.n.f[1]
#define PITCHED c.level, c.dst, c.src, c.to.width, c.to.height, c.to.pitch, c.from.pitch
#define PACKED c.level, c.dst, c.src, c.to.width, c.to.height
#define ONE_PITCH PACKED, c.to.pitch
#define SCALED \
  c.dst, c.to.width, c.to.height, c.to.pitch, c.src, c.from.width, c.from.height, c.from.pitch
#define IN_PLACE c.level, c.dst, c.to.width, c.to.height

constexpr Operation kOperations[] = {
    {3, false, true,
     [](const Call& c) { return cpu::BlendOverWithOpacityRamp(PITCHED, FLIP, RAMP); }},
    {3, false, false, [](const Call& c) { return cpu::BlendOverPacked(PACKED); }},
    {3, false, true, [](const Call& c) { return cpu::BlendOverPitched(ONE_PITCH); }},
    {0, false, true,
     [](const Call& c) { return cpu::BlendPremultipliedWithOpacityRamp(PITCHED, FLIP, RAMP); }},
    {0, false, false, [](const Call& c) { return cpu::BlendPremultipliedPacked(PACKED); }},
    {0, false, true, [](const Call& c) { return cpu::BlendPremultipliedPitched(ONE_PITCH); }},
    {0, false, true,
     [](const Call& c) { return cpu::CompositePremultipliedWithOpacityRamp(PITCHED, FLIP, RAMP); }},
    {0, false, true, [](const Call& c) { return cpu::CompositePremultipliedPitched(ONE_PITCH); }},
    {0, false, false, [](const Call& c) { return cpu::CompositePremultipliedPacked(PACKED); }},
    {0, false, true,
     [](const Call& c) { return cpu::BlendOverWithOpacity(PITCHED, OPACITY, BACKDROP); }},
    {0, false, true,
     [](const Call& c) {
       return cpu::BlendOverWithOpacityRampAndAlpha(PITCHED, OPACITY, BACKDROP, FLIP, RAMP);
     }},
    {0, false, true,
     [](const Call& c) {
       return cpu::BlendOverWithOpacityRampKeepAlpha(PITCHED, OPACITY, BACKDROP, FLIP, RAMP);
     }},
    {0, false, true, [](const Call& c) { return cpu::UnpremultiplyPitched(IN_PLACE, c.to.pitch); }},
    {0, false, false, [](const Call& c) { return cpu::UnpremultiplyPacked(IN_PLACE); }},
    {0, false, true, [](const Call& c) { return cpu::PremultiplyPitched(IN_PLACE, c.to.pitch); }},
    {0, false, false, [](const Call& c) { return cpu::PremultiplyPacked(IN_PLACE); }},
    {0, false, true,
     [](const Call& c) {
       return cpu::ConvertBGRAToYUVA(c.level, c.src, static_cast<u32>(std::max(c.to.width, 0)),
                                     c.to.height, c.from.pitch, c.dst, c.to.pitch);
     }},
    {0, false, true,
     [](const Call& c) {
       return cpu::ConvertBGRAToGray(c.level, c.src, c.to.width, c.to.height, c.from.pitch,
                                     reinterpret_cast<u32*>(c.dst), c.to.pitch);
     }},
    {0, false, true,
     [](const Call& c) { return cpu::FillSolidColor(IN_PLACE, c.to.pitch, BACKDROP); }},
    {0, true, true,
     [](const Call& c) { return cpu::ResizeBox16AlphaWeighted(c.level, SCALED, c.n.i[0] % 2); }},
    {0, true, true,
     [](const Call& c) {
       return cpu::ResizeBilinear16(c.level, SCALED, c.n.i[0] % 2, c.n.i[1] % 2);
     }},
    {0, true, true,
     [](const Call& c) { return cpu::ResizeBilinear16KeepAlpha(c.level, SCALED, c.n.i[1] % 2); }},
    {0, true, true, [](const Call& c) { return cpu::ResizeBilinear7(c.level, SCALED); }},
    {0, true, true, [](const Call& c) { return cpu::ResizeBox16(SCALED); }},
    {0, true, true,
     [](const Call& c) {
       return cpu::ResizeNearest32(reinterpret_cast<u32*>(c.dst), c.to.width, c.to.height,
                                   c.to.pitch, reinterpret_cast<const u32*>(c.src), c.from.width,
                                   c.from.height, c.from.pitch);
     }},
    {0, false, true,
     [](const Call& c) { return cpu::GaussianBlurBox3(IN_PLACE, c.to.pitch, c.n.f[0]); }},
    {0, true, true, Layer},
    {0, true, false, Motion},
    {0, true, true, Key},
    {0, true, true, Border},
    {0, true, true, Histogram},
};

std::vector<i32> Levels() {
  std::vector<i32> levels = {0, 3, 5, 6};
  if (__builtin_cpu_supports("avx2")) levels.push_back(8);
  return levels;
}

void FuzzOne(Input in) {
  const size_t index = in.Byte() % std::size(kOperations);
  const Operation& operation = kOperations[index];
  const Picture to(&in);
  const Picture from = operation.resizes ? Picture(&in) : to.WithOtherPixels(&in);
  const Numbers numbers = {{in.Integer(), in.Integer(), in.Integer(), in.Integer()},
                           {in.Real(1), in.Real(1), in.Real(64)}};

  Bytes first;
  u32 firstResult = 0;
  i32 firstLevel = -1;
  for (const i32 level : Levels()) {
    const Picture::Copy dst = to.Make(operation.keepsPitch), src = from.Make(operation.keepsPitch);
    const u32 result = operation.run({level, to, from, dst.data, src.data, numbers});
    // Rows that share bytes are written by more than one pixel, in an order of the build's own.
    if (level < operation.sameFrom || (operation.keepsPitch && !to.isPlain())) continue;
    Bytes bytes(dst.bytes.get(), dst.bytes.get() + dst.size);
    if (firstLevel < 0) {
      first = std::move(bytes);
      firstResult = result;
      firstLevel = level;
    } else if (bytes != first || result != firstResult) {
      std::fprintf(stderr, "operation %zu: level %d gives other bytes or another result than %d\n",
                   index, level, firstLevel);
      std::abort();
    }
  }
}

}  // namespace
}  // namespace pictavo::test

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  pictavo::test::FuzzOne({data, size});
  return 0;
}
