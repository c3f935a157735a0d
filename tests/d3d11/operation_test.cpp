// What the operations write, compared with the same rules on the CPU.
#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>

#include "cpu/geometry/resize.h"
#include "device.h"

namespace pictavo::test {
namespace {

/// What a pixel of the destination becomes; nothing where it stays.
using Result = std::optional<Colour>;

/// The pictures that an operation takes.
enum class Kinds { kAny, kAlike, kColour, kSame };

/// One operation on the device, and the same on the CPU.
struct Work {
  std::string name;
  i32 opCode;
  const void* param;
  std::function<Result(const Image& src, int x, int y)> rule;
  Kinds kinds = Kinds::kAny;
  int tolerance = 0;
  std::function<Image(const Image& src)> prepare = {};  // makes what the rule reads of the source
  i32 mode = PICTAVO_D3D_WHOLE;
};

struct Size {
  int width, height;
};

class Operations : public OnDevice {
 protected:
  Operations() { device_.Complaints(); }  // of others
  ~Operations() override { EXPECT_EQ(device_.Complaints(), ""); }

  /// Runs work between pictures of all formats, and compares.
  void Check(const Work& work, Size from = {70, 45}, Size to = {61, 83}) {
    for (const DXGI_FORMAT srcFormat : {kBgra, kRgba, kPlane}) {
      for (const DXGI_FORMAT dstFormat : {kBgra, kRgba, kPlane}) {
        const bool alike = (srcFormat == kPlane) == (dstFormat == kPlane);
        if (work.kinds != Kinds::kAny && !alike) continue;
        if (work.kinds == Kinds::kColour && srcFormat == kPlane) continue;
        if (work.kinds == Kinds::kSame && srcFormat != dstFormat) continue;
        SCOPED_TRACE(work.name + ", format " + std::to_string(srcFormat) + " to " +
                     std::to_string(dstFormat));
        const Image src(from.width, from.height, srcFormat, random_);
        Image dst(to.width, to.height, dstFormat, random_);
        const Texture source = device_.Upload(src, D3D11_BIND_SHADER_RESOURCE);
        const Texture destination = device_.Upload(dst, D3D11_BIND_UNORDERED_ACCESS);
        const ImageDesc record = Describe(source), result = Describe(destination);
        ASSERT_EQ(interface_->D3DComputeOp(work.opCode, work.mode, device_.device.Get(),
                                           device_.context.Get(), &result, &record, work.param),
                  PICTAVO_S_OK);
        const Image prepared = work.prepare ? work.prepare(src) : src;
        Apply(work, prepared, &dst);
        ASSERT_EQ(dst.Difference(device_.Download(destination.Get()), work.tolerance), "");
      }
    }
  }

  static void Apply(const Work& work, const Image& src, Image* dst) {
    for (int y = 0; y < dst->height; ++y) {
      for (int x = 0; x < dst->width; ++x) {
        if (const Result result = work.rule(src, x, y)) dst->Set(x, y, *result);
      }
    }
  }

  std::mt19937 random_{20};
};

Result PixelOf(const Image& src, i64 x, i64 y) {
  const int column = static_cast<int>(x), row = static_cast<int>(y);
  return src.Has(column, row) ? Result(src.Get(column, row)) : std::nullopt;
}

/// The pixel of a source whose edges go on.
Result OnEdge(const Image& src, i64 x, i64 y) {
  return PixelOf(src, std::clamp<i64>(x, 0, src.width - 1), std::clamp<i64>(y, 0, src.height - 1));
}

/// `at(src, column, row)` where a region goes.
template <typename At>
auto Region(const D3DRegion& r, At at) {
  return [=](const Image& src, int x, int y) {
    const int column = x - r.dstX, row = y - r.dstY;
    const bool inside = column >= 0 && row >= 0 && column < r.width && row < r.height;
    return inside ? at(src, i64{r.srcX} + column, i64{r.srcY} + row) : std::nullopt;
  };
}

/// The source with its left top pixel elsewhere.
auto Moved(int left, int top) {
  return [=](const Image& src, int x, int y) { return PixelOf(src, i64{x} - left, i64{y} - top); };
}

constexpr D3DRegion kRegions[] = {
    {0, 0, 0, 0, 70, 45},         // all of a source of that size
    {3, 5, 11, 7, 33, 31},        // inside
    {-9, -4, -5, -8, 60, 50},     // beyond both at the left and top
    {40, 30, 41, 20, 100, 1000},  // beyond both at the right and bottom
    {60, 82, 69, 44, 1, 1},       // the last pixel of each
    {-1000000, 2, -1000001, 3, 2000000000, 4},
};

TEST_F(Operations, CopyWhatBothReach) {
  const Work work = {"copy", PICTAVO_D3D_COPY, nullptr, PixelOf, Kinds::kAlike};
  Check(work);
  Check(work, {1, 1}, {33, 2});
  Check(work, {64, 32}, {64, 32});
}

TEST_F(Operations, CopyRegionsAndMaterialBeyondItsEdge) {
  const D3DRegion remote[] = {{0, 0, INT32_MAX, INT32_MIN, 40, 40}, {-5, 7, 30, INT32_MAX, 70, 40}};
  Check({"whole", PICTAVO_D3D_COPY_TEXTURE, nullptr, PixelOf, Kinds::kSame}, {61, 83});
  for (const D3DRegion& r : kRegions) {
    Check({"part",
           PICTAVO_D3D_COPY_TEXTURE,
           &r,
           Region(r, PixelOf),
           Kinds::kSame,
           0,
           {},
           PICTAVO_D3D_PART});
    Check({"region", PICTAVO_D3D_COPY_REGION, &r, Region(r, PixelOf)});
    Check({"material", PICTAVO_D3D_COPY_MATERIAL, &r, Region(r, OnEdge)});
  }
  for (const D3DRegion& r : remote) {
    Check({"material", PICTAVO_D3D_COPY_MATERIAL, &r, Region(r, OnEdge)});
  }
}

/// A picture by a rule for its pixels.
template <typename At>
Image Made(int width, int height, At at) {
  Image image(width, height, kRgba);
  for (int i = 0; i < width * height; ++i) {
    image.Set(i % width, i / width, at(i % width, i / width));
  }
  return image;
}

/// A mean of pixels, colours weighted by alpha.
struct AlphaMean {
  void Add(const Colour& c, int weight) {
    count += weight;
    alphas += c[3] * weight;
    for (size_t k = 0; k < 3; ++k) sums[k] += i64{c[k]} * c[3] * weight;
  }
  Colour Get() const {
    const auto mean = [&](i64 sum) { return static_cast<int>((sum + alphas / 2) / alphas); };
    const int alpha = (alphas + count / 2) / count;
    if (alphas == 0) return {0, 0, 0, alpha};
    return {mean(sums[0]), mean(sums[1]), mean(sums[2]), alpha};
  }

  int count = 0, alphas = 0;
  i64 sums[3] = {};
};

TEST_F(Operations, FilterRegions) {
  const D3DRegionFilterParam params[] = {{{3, 5, 11, 7, 33, 31}, 4},
                                         {{-9, -4, -5, -8, 60, 50}, 1},
                                         {{40, 30, 41, 20, 100, 70}, 0},
                                         {{-90, -70, -40, -30, 260, 240}, 20},
                                         {{0, 0, 0, 0, 70, 45}, 128}};
  for (const D3DRegionFilterParam& p : params) {
    const D3DRegion& r = p.region;
    const auto means = [&](const Image& image, int stepX, int stepY) {
      return Made(r.width, r.height, [&](int x, int y) {
        AlphaMean mean;
        for (int i = -p.radius; i <= p.radius; ++i) {
          const Result pixel = PixelOf(image, x + i * stepX, y + i * stepY);
          if (pixel) mean.Add(*pixel, 1);
        }
        return mean.Get();
      });
    };
    const auto filtered = [&](const Image& src) {
      const auto copied = Made(r.width, r.height,
                               [&](int x, int y) { return *OnEdge(src, r.srcX + x, r.srcY + y); });
      return means(means(copied, 1, 0), 0, 1);
    };
    Check({"filter of radius " + std::to_string(p.radius), PICTAVO_D3D_FILTER_REGION, &p,
           Moved(r.dstX, r.dstY), Kinds::kAny, 0, filtered});
  }
}

TEST_F(Operations, ScaleAsTheCpuDoes) {
  const D3DScaleParam params[] = {{0, 0, 61, 83},        {-20, 7, 45, 200},  {60, 82, 61, 83},
                                  {0, 0, 9, 5},          {-7, -9, 1000, 90}, {-1 << 20, 82, 61, 84},
                                  {60, -1 << 20, 62, 83}};
  for (const D3DScaleParam& p : params) {
    const auto scaled = [&](const Image& src) {
      const Image from(src, kBgra);
      Image to(p.right - p.left, p.bottom - p.top, kBgra);
      EXPECT_EQ(cpu::ResizeBox16AlphaWeighted(0, to.bytes.data(), to.width, to.height, 4 * to.width,
                                              from.bytes.data(), from.width, from.height,
                                              4 * from.width, 0),
                PICTAVO_S_OK);
      return to;
    };
    Check({"scale", PICTAVO_D3D_SCALE, &p, Moved(p.left, p.top), Kinds::kAny, 0, scaled});
  }
}

/// Makes the processor's picture of a source, by a method with that record.
template <typename Param, typename Method>
auto OnProcessor(IPictavo6* object, Size size, const Param& param, Method method) {
  return [=](const Image& src) {
    Image from(src, kBgra), to(size.width, size.height, kBgra);
    const ImageDesc source = {{}, 0, 0, 0, from.bytes.data(), src.width, src.height, 4 * src.width,
                              4};
    ImageDesc result = {{}, 0, 0, 0, to.bytes.data(), to.width, to.height, 4 * to.width, 4};
    EXPECT_EQ((object->*method)(&source, &result, &param), PICTAVO_S_OK);
    return to;
  };
}

TEST_F(Operations, ResizeAndTurnAsTheProcessorDoes) {
  const auto check = [&](i32 code, const auto& p, auto method, int tolerance, Size from, Size to) {
    Check({"as the processor", code, &p, PixelOf, Kinds::kAny, tolerance,
           OnProcessor(interface_, to, p, method), PICTAVO_D3D_AS_PROCESSOR},
          from, to);
  };
  const Size sizes[][2] = {{{70, 45}, {70, 45}}, {{70, 45}, {61, 83}}, {{70, 45}, {35, 15}},
                           {{70, 45}, {3, 1}},   {{5, 3}, {101, 64}},  {{1, 1}, {33, 2}},
                           {{64, 90}, {64, 30}}, {{400, 9}, {7, 9}}};
  for (const auto& [from, to] : sizes) {
    for (u32 filter = 0; filter <= PICTAVO_FILTER_LANCZOS; ++filter) {
      for (const u32 alphaMode : {0u, 1u}) {
        const ResizeParam p = {filter, alphaMode, {}};
        check(PICTAVO_D3D_SCALE, p, &IPictavo6::ResizeFiltered, 1, from, to);
      }
    }
  }
  const RotateParam turns[] = {{0, 1, 0.5f, 0.5f, 0.5f, 0.5f, PICTAVO_SAMPLE_BILINEAR},
                               {90, 1, 35, 22.5f, 30.5f, 41, PICTAVO_SAMPLE_BILINEAR},
                               {30, 1.5f, 35.3f, 22.1f, 30, 41.5f, PICTAVO_SAMPLE_BILINEAR},
                               {-123.4f, 0.4f, -3.7f, 0.1f, 20.3f, 60, PICTAVO_SAMPLE_BILINEAR},
                               {7, 30, 35, 22, 30, 40, PICTAVO_SAMPLE_BILINEAR},
                               {1e6f, 0.01f, 35, 22, 30, 40, PICTAVO_SAMPLE_NEAREST},
                               {45, 0.7f, 1e7f, -1e7f, 1e7f, -1e7f, PICTAVO_SAMPLE_BILINEAR},
                               {200, 2.3f, 35.3f, 22.1f, 30, 41.5f, PICTAVO_SAMPLE_NEAREST}};
  for (const RotateParam& p : turns)
    check(PICTAVO_D3D_COPY_AFFINE, p, &IPictavo6::RotatePicture, 0, {70, 45}, {61, 83});
}

/// The pixel that comes to a place from where the map starts.
Result Affine(const Image& src, const D3DAffineParam& p, i64 x, i64 y) {
  const i64 u = p.xStart + x * p.xStepX + y * p.xStepY, v = p.yStart + x * p.yStepX + y * p.yStepY;
  const int left = std::max(p.srcX, 0), right = std::min(p.srcX + p.srcWidth, src.width);
  const int top = std::max(p.srcY, 0), bottom = std::min(p.srcY + p.srcHeight, src.height);
  const i64 column = u >> 16, row = v >> 16;
  if (x < 0 || y < 0 || column < left || column >= right || row < top || row >= bottom) return {};
  AlphaMean mean;
  for (int i = 0; i < 4; ++i) {
    const i64 across = (u >> 8) & 255, down = (v >> 8) & 255;
    const i64 weight = (i % 2 != 0 ? across : 256 - across) * (i / 2 != 0 ? down : 256 - down);
    mean.Add(*PixelOf(src, std::min<i64>(column + i % 2, right - 1),
                      std::min<i64>(row + i / 2, bottom - 1)),
             static_cast<int>(weight));
  }
  return mean.Get();
}

TEST_F(Operations, CopyThroughAffineMaps) {
  const D3DAffineParam params[] = {
      {0, 0, 0, 0, 70, 45, 0, 0, 65536, 0, 0, 65536},                       // the same place
      {5, -3, 4, 6, 50, 30, 300000, -200000, 46341, -46341, 46341, 46341},  // turned
      {-11, 9, -10, -10, 60, 200, 4500000, 0, -65536, 0, 0, 65536},         // mirrored
      {0, 0, 0, 0, 70, 45, -32768, 12345, 21845, 0, 0, 21845},              // enlarged
      {20, 20, 69, 44, 1, 1, 69 * 65536, 44 * 65536, 1000, 0, 0, 1000},     // the last pixel
      {-500, -500, 0, 0, 70, 45, -500 * 65536, -500 * 65536, 65536, 0, 0, 65536},
      {-1 << 30, -1 << 30, 0, 0, 70, 45, 0, -1 << 30, 2, -2, -1, 2},  // a call must not take hours
  };
  for (const D3DAffineParam& p : params) {
    Check({"affine", PICTAVO_D3D_COPY_AFFINE, &p, [&](const Image& src, int x, int y) {
             return Affine(src, p, i64{x} - p.dstX, i64{y} - p.dstY);
           }});
  }
}

int Byte(f32 value) { return static_cast<int>(value * 255.0f + 0.5f); }

TEST_F(Operations, ClearWholeTextures) {
  // Halves go up, and what lies between two bytes is no device's to round.
  const f32 colours[][4] = {{0, 1, 10 / 255.0f, 200 / 255.0f},
                            {0.5f, 0.50195f, 100.49f / 255, 254.51f / 255},
                            {254.4f / 255, 0.1f, 0.71f, 0.3f}};
  for (const auto& c : colours) {
    const D3DClearParam p = {c, 4};
    const Colour colour = {Byte(c[2]), Byte(c[1]), Byte(c[0]), Byte(c[3])};
    const auto rule = [&](const Image&, int, int) { return Result(colour); };
    const Work work = {"clear", PICTAVO_D3D_CLEAR, &p, rule};
    Check(work);
    Image picture(33, 5, kBgra, random_);
    const Texture target = device_.Upload(picture, D3D11_BIND_RENDER_TARGET);
    ASSERT_EQ(Run(PICTAVO_D3D_CLEAR, &p, Describe(target), Describe({})), PICTAVO_S_OK);
    Apply(work, picture, &picture);
    EXPECT_EQ(picture.Difference(device_.Download(target.Get())), "");
  }
}

TEST_F(Operations, FillRectanglesAndTint) {
  const D3DFillParam fills[] = {{0, 0, 61, 83, 10 / 255.0f, 20 / 255.0f, 30 / 255.0f, 40 / 255.0f},
                                {7, 9, 1000, 1000, 1, 0.5f, 0, 254 / 255.0f},
                                {-5, -6, 35, 40, 0, 1, 1 / 255.0f, 1},
                                {60, 82, 61, 83, 1, 1, 1, 0},
                                {3, 4, 4, 83, 0, 1, 0.25f, 0.75f}};
  for (const D3DFillParam& p : fills) {
    const Colour colour = {Byte(p.red), Byte(p.green), Byte(p.blue), Byte(p.alpha)};
    Check({"fill", PICTAVO_D3D_FILL, &p, [&](const Image&, int x, int y) {
             const bool inside = x >= p.left && y >= p.top && x < p.right && y < p.bottom;
             return inside ? Result(colour) : std::nullopt;
           }});
  }
  const D3DTintParam tints[] = {{0, 0, 1, 0.2f, 0}, {-20, -30, 0, 0, 1}, {50, 60, 1, 1, 1}};
  for (const D3DTintParam& p : tints) {
    const auto rule = [&](const Image& src, int x, int y) {
      Result pixel = PixelOf(src, x - p.dstX, y - p.dstY);
      if (pixel) pixel = {Byte(p.red), Byte(p.green), Byte(p.blue), (*pixel)[3]};
      return pixel;
    };
    Check({"tint", PICTAVO_D3D_TINT, &p, rule, Kinds::kColour});
  }
}

/// A filter's weight at an offset, in 256ths.
double Weight(const D3DGrowParam& p, int x, int y) {
  const double radius = std::max(p.radiusX, p.radiusY), d = std::hypot(x, y);
  const double shapes[] = {1.0, d <= radius + 0.5 ? 1.0 : 0.0, std::max(0.0, 1 - d / (radius + 1)),
                           std::exp(-4.5 * d * d / std::max(1.0, radius * radius))};
  return std::floor(p.alpha * shapes[p.shape] * 256 + 0.5);
}

/// A pixel of a picture grown by a filter.
Result Grown(const Image& src, const D3DGrowParam& p, i64 x, i64 y, u32 clip) {
  const Result covered = PixelOf(src, x, y);
  if (!covered) return {};
  const int across = static_cast<int>(p.radiusX), down = static_cast<int>(p.radiusY);
  Colour grown = {};
  double most = 0;
  for (int v = -down; v <= down; ++v) {
    for (int u = -across; u <= across; ++u) {
      const Result c = PixelOf(src, x + u, y + v);
      const double alpha = c && (*c)[3] != 0 ? (*c)[3] * Weight(p, u, v) : 0;
      if (alpha <= most) continue;
      most = alpha;
      grown = *c;
    }
  }
  grown[3] = static_cast<int>((most + 128) / 256);
  if (grown[3] == 0) return Colour{};
  if (clip != 0) grown[3] = (grown[3] * (255 - (*covered)[3]) + 127) / 255;
  return grown;
}

TEST_F(Operations, GrowPicturesAndRegions) {
  const D3DGrowParam filters[] = {
      {0, 0, 0, 1.0f}, {3, 1, 0, 0.5f}, {4, 4, 1, 1.0f}, {2, 5, 2, 0.75f}, {6, 6, 3, 1.0f}};
  u32 clip = 0;
  for (const D3DGrowParam& filter : filters) {
    const std::string name = "shape " + std::to_string(filter.shape);
    const auto rule = [&](u32 clipped) {
      return [=](const Image& src, i64 x, i64 y) { return Grown(src, filter, x, y, clipped); };
    };
    Check({name, PICTAVO_D3D_GROW, &filter, rule(0), Kinds::kColour});
    for (const D3DRegion& r : {kRegions[1], kRegions[2], kRegions[3]}) {
      const D3DGrowRegionParam p = {r, filter, clip};
      Check({name, PICTAVO_D3D_GROW_REGION, &p, Region(r, rule(clip))});
      clip = 1 - clip;
    }
  }
}

TEST_F(Operations, GrowWidePicturesInBands) {
  Image src(2048, 70, kBgra, random_);
  for (size_t i = 3; i < src.bytes.size(); i += 4) src.bytes[i] = 255;
  const Image expected(Made(src.width, src.height,
                            [&](int x, int y) {
                              int i = 0;  // all have the most alpha: the first of the disc
                              const auto u = [&] { return x + i % 65 - 32; };
                              const auto v = [&] { return y + i / 65 - 32; };
                              while (std::hypot(u() - x, v() - y) > 32.5 || !src.Has(u(), v())) ++i;
                              return src.Get(u(), v());
                            }),
                       kBgra);
  const D3DGrowParam disc = {32, 32, 1, 1};
  const D3DGrowRegionParam region = {{0, 0, 0, 0, src.width, src.height}, disc, 0};
  const Texture from = device_.Upload(src);
  for (const i32 code : {PICTAVO_D3D_GROW, PICTAVO_D3D_GROW_REGION}) {
    const Texture to = device_.Upload(Image(src.width, src.height, kBgra));
    const void* param = code == PICTAVO_D3D_GROW ? static_cast<const void*>(&disc) : &region;
    ASSERT_EQ(Run(code, param, Describe(to), Describe(from)), PICTAVO_S_OK);
    EXPECT_EQ(expected.Difference(device_.Download(to.Get())), "");
  }
}

/// The mean of a pixel's surroundings, as far as the picture has them.
Colour BoxMean(const Image& src, int x, int y, i64 radiusX, i64 radiusY) {
  const i64 right = std::min<i64>(x + radiusX + 1, src.width);
  const i64 bottom = std::min<i64>(y + radiusY + 1, src.height);
  Colour sums = {};
  int count = 0;
  for (int v = static_cast<int>(std::max<i64>(0, y - radiusY)); v < bottom; ++v) {
    for (int u = static_cast<int>(std::max<i64>(0, x - radiusX)); u < right; ++u, ++count) {
      for (size_t c = 0; c < 4; ++c) sums[c] += src.Get(u, v)[c];
    }
  }
  for (int& sum : sums) sum = (sum + count / 2) / count;
  return sums;
}

TEST_F(Operations, BlurByABox) {
  const struct {
    D3DBlurParam param;
    i64 radiusX, radiusY;
    std::vector<Size> sizes;
  } cases[] = {{{0, 0, 1}, 0, 0, {{37, 45}}},
               {{1, 2, 1}, 1, 2, {{37, 45}, {256, 33}}},                   // stretches of rows …
               {{7.4, 40.6, 0.5f}, 4, 20, {{37, 45}, {1, 1}, {33, 256}}},  // … and of columns
               {{130, 0.49, 1}, 130, 0, {{37, 45}, {300, 3}}},
               {{1e30, 1e9, 1e9f}, 1000, 1000, {{37, 45}}}};
  for (const auto& c : cases) {
    for (const Size& size : c.sizes) {
      Check(
          {"blur " + std::to_string(c.radiusX), PICTAVO_D3D_BOX_BLUR, &c.param,
           [&](const Image& src, int x, int y) { return BoxMean(src, x, y, c.radiusX, c.radiusY); },
           Kinds::kAlike},
          size, size);
    }
  }
}

TEST_F(Operations, BlurThroughItsOwnSlotAndADeferredContext) {
  ComPtr<ID3D11DeviceContext> deferred;
  ASSERT_EQ(device_.device->CreateDeferredContext(0, deferred.ReleaseAndGetAddressOf()), S_OK);
  for (const u32 radius : {0u, 3u, ~0u}) {
    const Image src(50, 20, kBgra, random_), before(50, 20, kRgba);
    const Texture from = device_.Upload(src), to = device_.Upload(before);
    const ImageDesc source = Describe(from), destination = Describe(to);
    ASSERT_EQ(
        interface_->BoxBlurD3D(device_.device.Get(), deferred.Get(), &destination, &source, radius),
        PICTAVO_S_OK);
    EXPECT_EQ(before.Difference(device_.Download(to.Get())), "");
    ComPtr<ID3D11CommandList> list;
    ASSERT_EQ(deferred->FinishCommandList(FALSE, list.ReleaseAndGetAddressOf()), S_OK);
    device_.context->ExecuteCommandList(list.Get(), FALSE);
    const Image after =
        Made(50, 20, [&](int x, int y) { return BoxMean(src, x, y, radius, radius); });
    EXPECT_EQ(after.Difference(device_.Download(to.Get())), "");
  }
}

TEST_F(Operations, BlurLargePicturesWithoutLosingADigit) {
  // Plain sums of this many pixels would not fit 32 bits.
  Image white(4100, 4200, kPlane);
  std::fill(white.bytes.begin(), white.bytes.end(), u8{255});
  Image nearly = white;
  nearly.bytes[5] = 0;
  const Texture from = device_.Upload(nearly), to = device_.Upload(nearly);
  const D3DBlurParam param = {4200, 4200, 1};
  ASSERT_EQ(Run(PICTAVO_D3D_BOX_BLUR, &param, Describe(to), Describe(from)), PICTAVO_S_OK);
  EXPECT_EQ(white.Difference(device_.Download(to.Get())), "");
}

TEST_F(Operations, KeyAsTheCpuDoes) {
  std::vector<std::vector<ChromaKey>> keySets = {
      {{0, 255, 0, 0, 30, 20}},
      {{20, 60, 230, 0, 45, 0}, {0, 255, 0, 9, 10, 60}},
      {{255, 255, 255, 0, 40, 30}},                            // near grey
      {{120, 125, 130, 0, -1, 25}, {200, 30, 40, 0, 25, -1}},  // a negative tolerance is huge
      {{0, 0, 255, 0, 30, 5000}}};
  keySets.emplace_back(70, ChromaKey{0, 255, 0, 0, 30, 20}).back() = {0, 0, 255, 0, 30, 5000};
  for (const i32 angle : {0, 1, 44, 45, 46, 89, 90, 91, 135, 179, 180, 181, 270, 1000, -30,
                          INT32_MAX, INT32_MAX - 97, INT32_MIN, 1234567890}) {
    keySets.push_back({{10, 200, 60, 0, angle, 15}});
  }
  for (const auto& keys : keySets) {
    const D3DRegion r = kRegions[keys.size() % std::size(kRegions)];
    const D3DKeyParam p = {r, keys.data(), static_cast<i32>(keys.size())};
    const auto keyed = [&](const Image& src) {
      Image from(src, kBgra), to = from;
      ImageDesc source = {{}, 0, 0, 0, from.bytes.data(), from.width, from.height, 4 * from.width,
                          4};
      ImageDesc result = source;
      result.data = to.bytes.data();
      EXPECT_EQ(interface_->ApplyChromaKey(&source, &result, keys.data(), p.keyCount, 1),
                PICTAVO_S_OK);
      return to;
    };
    Check({"key of angle " + std::to_string(keys[0].angle), PICTAVO_D3D_CHROMA_KEY, &p,
           Region(r, PixelOf), Kinds::kAny, 1, keyed});
  }
}

TEST_F(Operations, TurnAsTheProcessorDoes) {
  const RotateParam params[] = {{0, 1, 0.5f, 0.5f, 0.5f, 0.5f, PICTAVO_SAMPLE_NEAREST},
                                {30, 1.5f, 35.3f, 22.1f, 30, 41.5f, PICTAVO_SAMPLE_BILINEAR},
                                {-123.4f, 0.4f, -3.7f, 0.1f, 20.3f, 60, PICTAVO_SAMPLE_BILINEAR}};
  for (const RotateParam& p : params) {
    for (const auto& [srcFormat, dstFormat] :
         {std::pair{kBgra, kBgra}, {kRgba, kRgba}, {kBgra, kRgba}, {kRgba, kBgra}}) {
      const Image src(70, 45, srcFormat, random_);
      const Image expected(OnProcessor(interface_, {61, 83}, p, &IPictavo6::RotatePicture)(src),
                           dstFormat);
      const Texture source = device_.Upload(src, D3D11_BIND_RENDER_TARGET);
      const Texture result =
          device_.Upload(Image(61, 83, dstFormat, random_), D3D11_BIND_SHADER_RESOURCE);
      const ImageDesc turned = Describe(result), read = Describe(source);
      ASSERT_EQ(
          interface_->RotateD3D(device_.device.Get(), device_.context.Get(), &turned, &read, &p),
          PICTAVO_S_OK);
      EXPECT_EQ(expected.Difference(device_.Download(result.Get())), "") << p.angle;
    }
  }
}

}  // namespace
}  // namespace pictavo::test
