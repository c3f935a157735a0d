// What the operations write, compared with the same rules on the CPU.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "cpu/resize.h"
#include "device.h"
#include "frame/pictavo_object.h"

namespace pictavo::test {
namespace {

/// The pictures that an operation takes.
enum class Kinds { kAny, kAlike, kColour };

/// One operation on the device, and the same on the CPU.
struct Work {
  std::string name;
  i32 opCode;
  const void* param;
  std::function<void(const Image& src, Image* dst)> expected;
  Kinds kinds = Kinds::kAny;
  int tolerance = 0;
};

class Operations : public testing::Test {
 protected:
  /// Runs work between pictures of all formats, and compares.
  void Check(const Work& work, int srcWidth, int srcHeight, int dstWidth, int dstHeight) {
    for (const DXGI_FORMAT srcFormat : kFormats) {
      for (const DXGI_FORMAT dstFormat : kFormats) {
        const bool srcPlane = srcFormat == DXGI_FORMAT_R8_UNORM;
        const bool dstPlane = dstFormat == DXGI_FORMAT_R8_UNORM;
        if (work.kinds != Kinds::kAny && srcPlane != dstPlane) continue;
        if (work.kinds == Kinds::kColour && srcPlane) continue;
        SCOPED_TRACE(work.name + ", format " + std::to_string(srcFormat) + " to " +
                     std::to_string(dstFormat));
        const Image src(srcWidth, srcHeight, srcFormat, random_);
        Image dst(dstWidth, dstHeight, dstFormat, random_);
        const Texture source = device_.Upload(src, D3D11_BIND_SHADER_RESOURCE);
        const Texture destination = device_.Upload(dst, D3D11_BIND_UNORDERED_ACCESS);
        const ImageDesc from = Describe(source.Get()), to = Describe(destination.Get());
        ASSERT_EQ(interface_->D3DComputeOp(work.opCode, 0, device_.device.Get(),
                                           device_.context.Get(), &to, &from, work.param),
                  PICTAVO_S_OK);
        work.expected(src, &dst);
        ASSERT_EQ(Difference(dst, device_.Download(destination.Get()), work.tolerance), "");
      }
    }
  }

  std::mt19937 random_{20};
  Pictavo object_;
  IPictavo6* const interface_ = &object_;
  const Device& device_ = SharedDevice();
};

/// Calls for every place of a region that both pictures have.
template <typename Place>
void ForRegion(const D3DRegion& r, const Image& src, const Image& dst, Place place) {
  for (int v = 0; v < dst.height; ++v) {
    for (int u = 0; u < dst.width; ++u) {
      const int x = u - r.dstX, y = v - r.dstY;
      if (x >= 0 && y >= 0 && x < r.width && y < r.height && src.Has(r.srcX + x, r.srcY + y)) {
        place(x, y);
      }
    }
  }
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
  const Work work = {"copy", PICTAVO_D3D_COPY, nullptr,
                     [](const Image& src, Image* dst) {
                       for (int y = 0; y < src.height; ++y) {
                         for (int x = 0; x < src.width; ++x) dst->Set(x, y, src.Get(x, y));
                       }
                     },
                     Kinds::kAlike};
  Check(work, 70, 45, 61, 83);
  Check(work, 1, 1, 33, 2);
  Check(work, 64, 32, 64, 32);
}

TEST_F(Operations, CopyRegions) {
  for (const D3DRegion& r : kRegions) {
    Check({"region", PICTAVO_D3D_COPY_REGION, &r,
           [&](const Image& src, Image* dst) {
             ForRegion(r, src, *dst, [&](int x, int y) {
               dst->Set(r.dstX + x, r.dstY + y, src.Get(r.srcX + x, r.srcY + y));
             });
           }},
          70, 45, 61, 83);
  }
}

/// The region of a source whose edges go on.
Colour OnEdge(const Image& src, i64 x, i64 y) {
  return src.Get(static_cast<int>(std::clamp<i64>(x, 0, src.width - 1)),
                 static_cast<int>(std::clamp<i64>(y, 0, src.height - 1)));
}

TEST_F(Operations, CopyMaterialBeyondItsEdge) {
  const D3DRegion remote[] = {{0, 0, INT32_MAX, INT32_MIN, 40, 40}, {-5, 7, 30, INT32_MAX, 70, 40}};
  std::vector<D3DRegion> regions(std::begin(kRegions), std::end(kRegions) - 1);
  regions.insert(regions.end(), std::begin(remote), std::end(remote));
  for (const D3DRegion& r : regions) {
    Check({"material", PICTAVO_D3D_COPY_MATERIAL, &r,
           [&](const Image& src, Image* dst) {
             for (int y = 0; y < r.height; ++y) {
               for (int x = 0; x < r.width; ++x) {
                 dst->Set(r.dstX + x, r.dstY + y, OnEdge(src, i64{r.srcX} + x, i64{r.srcY} + y));
               }
             }
           }},
          70, 45, 61, 83);
  }
}

/// The mean of a line's pixels up to the radius away, colours weighted by alpha.
Colour WeightedMean(const Image& image, int x, int y, int stepX, int stepY, int radius) {
  u32 count = 0, alphas = 0, red = 0, green = 0, blue = 0;
  for (int i = -radius; i <= radius; ++i) {
    if (!image.Has(x + i * stepX, y + i * stepY)) continue;
    const Colour c = image.Get(x + i * stepX, y + i * stepY);
    const auto alpha = static_cast<u32>(c.a);
    ++count;
    alphas += alpha;
    red += static_cast<u32>(c.r) * alpha;
    green += static_cast<u32>(c.g) * alpha;
    blue += static_cast<u32>(c.b) * alpha;
  }
  const auto mean = [&](u32 sum) {
    return alphas == 0 ? 0 : static_cast<int>((sum + alphas / 2) / alphas);
  };
  return {mean(red), mean(green), mean(blue), static_cast<int>((alphas + count / 2) / count)};
}

TEST_F(Operations, FilterRegions) {
  const D3DRegionFilterParam params[] = {{{3, 5, 11, 7, 33, 31}, 4},
                                         {{-9, -4, -5, -8, 60, 50}, 1},
                                         {{40, 30, 41, 20, 100, 70}, 0},
                                         {{0, 0, 0, 0, 70, 45}, 128}};
  for (const D3DRegionFilterParam& p : params) {
    Check({"filter of radius " + std::to_string(p.radius), PICTAVO_D3D_FILTER_REGION, &p,
           [&](const Image& src, Image* dst) {
             const D3DRegion& r = p.region;
             Image copied(r.width, r.height, DXGI_FORMAT_R8G8B8A8_UNORM), rows = copied;
             for (int y = 0; y < r.height; ++y) {
               for (int x = 0; x < r.width; ++x) {
                 copied.Set(x, y, OnEdge(src, r.srcX + x, r.srcY + y));
               }
             }
             for (int y = 0; y < r.height; ++y) {
               for (int x = 0; x < r.width; ++x) {
                 rows.Set(x, y, WeightedMean(copied, x, y, 1, 0, p.radius));
               }
             }
             for (int y = 0; y < r.height; ++y) {
               for (int x = 0; x < r.width; ++x) {
                 dst->Set(r.dstX + x, r.dstY + y, WeightedMean(rows, x, y, 0, 1, p.radius));
               }
             }
           }},
          70, 45, 61, 83);
  }
}

TEST_F(Operations, ScaleAsTheCpuDoes) {
  const D3DScaleParam params[] = {{0, 0, 61, 83},        {-20, 7, 45, 200},  {60, 82, 61, 83},
                                  {0, 0, 9, 5},          {-7, -9, 1000, 90}, {-1 << 20, 82, 61, 84},
                                  {60, -1 << 20, 62, 83}};
  for (const D3DScaleParam& p : params) {
    Check({"scale", PICTAVO_D3D_SCALE, &p,
           [&](const Image& src, Image* dst) {
             Image from = src.In(DXGI_FORMAT_B8G8R8A8_UNORM);
             Image scaled(p.right - p.left, p.bottom - p.top, DXGI_FORMAT_B8G8R8A8_UNORM);
             ASSERT_EQ(cpu::ResizeBox16AlphaWeighted(
                           0, scaled.bytes.data(), scaled.width, scaled.height, 4 * scaled.width,
                           from.bytes.data(), from.width, from.height, 4 * from.width, 0),
                       PICTAVO_S_OK);
             for (int y = 0; y < scaled.height; ++y) {
               for (int x = 0; x < scaled.width; ++x) {
                 dst->Set(p.left + x, p.top + y, scaled.Get(x, y));
               }
             }
           }},
          70, 45, 61, 83);
  }
}

/// A pixel of an affine copy; false when the destination's stays.
bool SampleAffine(const Image& src, const D3DAffineParam& p, i64 x, i64 y, Colour* colour) {
  const i64 u = p.xStart + x * p.xStepX + y * p.xStepY, v = p.yStart + x * p.yStepX + y * p.yStepY;
  const int left = std::max(p.srcX, 0), right = std::min(p.srcX + p.srcWidth, src.width);
  const int top = std::max(p.srcY, 0), bottom = std::min(p.srcY + p.srcHeight, src.height);
  const i64 column = u >> 16, row = v >> 16;
  if (column < left || column >= right || row < top || row >= bottom) return false;
  double alphas = 0, sums[3] = {};
  for (int i = 0; i < 4; ++i) {
    const i64 across = (u >> 8) & 255, down = (v >> 8) & 255;
    const i64 weight = (i % 2 != 0 ? across : 256 - across) * (i / 2 != 0 ? down : 256 - down);
    const Colour c = src.Get(static_cast<int>(std::min<i64>(column + i % 2, right - 1)),
                             static_cast<int>(std::min<i64>(row + i / 2, bottom - 1)));
    const double alpha = static_cast<double>(weight) * c.a;
    alphas += alpha;
    sums[0] += alpha * c.r;
    sums[1] += alpha * c.g;
    sums[2] += alpha * c.b;
  }
  const auto mean = [&](int c) {
    return alphas == 0 ? 0 : static_cast<int>((sums[c] + std::floor(alphas / 2)) / alphas);
  };
  *colour = {mean(0), mean(1), mean(2), static_cast<int>((alphas + 32768) / 65536)};
  return true;
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
    Check({"affine", PICTAVO_D3D_COPY_AFFINE, &p,
           [&](const Image& src, Image* dst) {
             for (int y = std::max(p.dstY, 0); y < dst->height; ++y) {
               for (int x = std::max(p.dstX, 0); x < dst->width; ++x) {
                 Colour colour;
                 if (SampleAffine(src, p, x - p.dstX, y - p.dstY, &colour)) dst->Set(x, y, colour);
               }
             }
           }},
          70, 45, 61, 83);
  }
}

TEST_F(Operations, FillRectangles) {
  const D3DFillParam params[] = {{0, 0, 61, 83, 10 / 255.0f, 20 / 255.0f, 30 / 255.0f, 40 / 255.0f},
                                 {7, 9, 1000, 1000, 1, 0.5f, 0, 254 / 255.0f},
                                 {-5, -6, 35, 40, 0, 1, 1 / 255.0f, 1},
                                 {60, 82, 61, 83, 1, 1, 1, 0},
                                 {3, 4, 4, 83, -1, 2, 0.25f, 0.75f}};
  const auto byte = [](f32 value) {
    return static_cast<int>(std::clamp(value, 0.0f, 1.0f) * 255.0f + 0.5f);
  };
  for (const D3DFillParam& p : params) {
    Check({"fill", PICTAVO_D3D_FILL, &p,
           [&](const Image&, Image* dst) {
             const Colour colour = {byte(p.red), byte(p.green), byte(p.blue), byte(p.alpha)};
             for (int y = p.top; y < p.bottom; ++y) {
               for (int x = p.left; x < p.right; ++x) dst->Set(x, y, colour);
             }
           }},
          1, 1, 61, 83);
  }
}

TEST_F(Operations, Tint) {
  const D3DTintParam params[] = {{0, 0, 1, 0.2f, 0}, {-20, -30, 0, 0, 1}, {50, 60, 1, 1, 1}};
  for (const D3DTintParam& p : params) {
    Check({"tint", PICTAVO_D3D_TINT, &p,
           [&](const Image& src, Image* dst) {
             for (int y = 0; y < src.height; ++y) {
               for (int x = 0; x < src.width; ++x) {
                 dst->Set(p.dstX + x, p.dstY + y,
                          {static_cast<int>(p.red * 255), static_cast<int>(p.green * 255),
                           static_cast<int>(p.blue * 255), src.Get(x, y).a});
               }
             }
           },
           Kinds::kColour},
          70, 45, 61, 83);
  }
}

/// A filter's weight in 256ths.
double Weight(const D3DGrowParam& p, int x, int y) {
  const double radius = std::max(p.radiusX, p.radiusY), distance = std::hypot(x, y);
  const double shapes[] = {1.0, distance <= radius + 0.5 ? 1.0 : 0.0,
                           std::max(0.0, 1 - distance / (radius + 1)),
                           std::exp(-4.5 * distance * distance / std::max(1.0, radius * radius))};
  return std::floor(p.alpha * shapes[p.shape] * 256 + 0.5);
}

/// A filter's places, in reading order.
struct WeightedPlace {
  int x, y;
  double weight;
};
std::vector<WeightedPlace> PlacesOf(const D3DGrowParam& p) {
  std::vector<WeightedPlace> places;
  const int across = static_cast<int>(p.radiusX), down = static_cast<int>(p.radiusY);
  for (int y = -down; y <= down; ++y) {
    for (int x = -across; x <= across; ++x) places.push_back({x, y, Weight(p, x, y)});
  }
  return places;
}

/// A pixel of a picture grown by a filter.
Colour Grown(const Image& src, const std::vector<WeightedPlace>& filter, int x, int y) {
  Colour grown = {0, 0, 0, 0};
  double most = 0;
  for (const WeightedPlace& place : filter) {
    if (!src.Has(x + place.x, y + place.y)) continue;
    const Colour c = src.Get(x + place.x, y + place.y);
    const double alpha = c.a * place.weight;
    if (alpha <= most) continue;
    most = alpha;
    grown = {c.r, c.g, c.b, static_cast<int>((alpha + 128) / 256)};
  }
  return grown.a == 0 ? Colour{0, 0, 0, 0} : grown;
}

constexpr D3DGrowParam kFilters[] = {
    {0, 0, 0, 1.0f}, {3, 1, 0, 0.5f}, {4, 4, 1, 1.0f}, {2, 5, 2, 0.75f}, {6, 6, 3, 1.0f}};

TEST_F(Operations, Grow) {
  for (const D3DGrowParam& p : kFilters) {
    const auto places = PlacesOf(p);
    Check({"shape " + std::to_string(p.shape), PICTAVO_D3D_GROW, &p,
           [&](const Image& src, Image* dst) {
             for (int y = 0; y < std::min(src.height, dst->height); ++y) {
               for (int x = 0; x < std::min(src.width, dst->width); ++x) {
                 dst->Set(x, y, Grown(src, places, x, y));
               }
             }
           },
           Kinds::kColour},
          70, 45, 61, 83);
  }
}

TEST_F(Operations, GrowRegions) {
  u32 clip = 0;
  for (const D3DGrowParam& filter : kFilters) {
    const auto places = PlacesOf(filter);
    for (const D3DRegion& r : {kRegions[1], kRegions[2], kRegions[3]}) {
      const D3DGrowRegionParam p = {r, filter, clip};
      clip = 1 - clip;
      Check({"shape " + std::to_string(filter.shape), PICTAVO_D3D_GROW_REGION, &p,
             [&](const Image& src, Image* dst) {
               ForRegion(r, src, *dst, [&](int x, int y) {
                 Colour grown = Grown(src, places, r.srcX + x, r.srcY + y);
                 const int covered = src.Get(r.srcX + x, r.srcY + y).a;
                 if (p.clipSource != 0) grown.a = (grown.a * (255 - covered) + 127) / 255;
                 dst->Set(r.dstX + x, r.dstY + y, grown);
               });
             }},
            70, 45, 61, 83);
    }
  }
}

/// The sizes that a box's window has around a place of a line.
struct Window {
  int begin, end;
  Window(int place, u32 radius, int length)
      : begin(place - static_cast<int>(std::min<i64>(radius, place))),
        end(static_cast<int>(std::min<i64>(i64{place} + radius + 1, length))) {}
};

void BoxBlur(const Image& src, u32 radiusX, u32 radiusY, Image* dst) {
  const bool plane = src.format == DXGI_FORMAT_R8_UNORM;
  for (int y = 0; y < src.height; ++y) {
    for (int x = 0; x < src.width; ++x) {
      const Window columns(x, radiusX, src.width), rows(y, radiusY, src.height);
      int sums[4] = {}, count = 0;
      for (int j = rows.begin; j < rows.end; ++j) {
        for (int i = columns.begin; i < columns.end; ++i, ++count) {
          const Colour c = src.Get(i, j);
          sums[0] += c.r;
          sums[1] += c.g;
          sums[2] += c.b;
          sums[3] += c.a;
        }
      }
      const auto mean = [&](int c) { return (sums[c] + count / 2) / count; };
      dst->Set(x, y, {mean(plane ? 3 : 0), mean(1), mean(2), mean(3)});
    }
  }
}

TEST_F(Operations, BlurByABox) {
  const struct {
    D3DBlurParam param;
    u32 radiusX, radiusY;
  } cases[] = {{{0, 0, 1}, 0, 0},
               {{1, 2, 1}, 1, 2},
               {{7.4, 40.6, 0.5f}, 4, 20},
               {{130, 0.49, 1}, 130, 0},
               {{1e30, 1e9, 1e9f}, 1000, 1000}};
  const auto check = [&](auto& c, int width, int height) {
    Check({"blur " + std::to_string(c.radiusX), PICTAVO_D3D_BOX_BLUR, &c.param,
           [&](const Image& src, Image* dst) { BoxBlur(src, c.radiusX, c.radiusY, dst); },
           Kinds::kAlike},
          width, height, width, height);
  };
  for (const auto& c : cases) check(c, 37, 45);
  check(cases[2], 1, 1);
  check(cases[1], 256, 33);  // several stretches of rows …
  check(cases[2], 33, 256);  // … and of columns
  check(cases[3], 300, 3);
}

TEST_F(Operations, BlurThroughItsOwnSlot) {
  for (const u32 radius : {0u, 3u, ~0u}) {
    const Image src(50, 20, DXGI_FORMAT_B8G8R8A8_UNORM, random_);
    Image dst(50, 20, DXGI_FORMAT_R8G8B8A8_UNORM);
    const Texture from = device_.Upload(src), to = device_.Upload(dst);
    const ImageDesc source = Describe(from.Get()), destination = Describe(to.Get());
    ASSERT_EQ(interface_->BoxBlurD3D(device_.device.Get(), device_.context.Get(), &destination,
                                     &source, radius),
              PICTAVO_S_OK);
    BoxBlur(src, radius, radius, &dst);
    EXPECT_EQ(Difference(dst, device_.Download(to.Get()), 0), "");
  }
}

TEST_F(Operations, BlurLargePicturesWithoutLosingADigit) {
  // Plain sums of this many pixels would not fit 32 bits.
  Image white(4100, 4200, DXGI_FORMAT_R8_UNORM);
  std::fill(white.bytes.begin(), white.bytes.end(), u8{255});
  white.bytes[5] = 0;
  const Texture from = device_.Upload(white), to = device_.Upload(white);
  const ImageDesc source = Describe(from.Get()), destination = Describe(to.Get());
  ASSERT_EQ(interface_->BoxBlurD3D(device_.device.Get(), device_.context.Get(), &destination,
                                   &source, 4200),
            PICTAVO_S_OK);
  white.bytes[5] = 255;
  EXPECT_EQ(Difference(white, device_.Download(to.Get()), 0), "");
}

TEST_F(Operations, KeyAsTheCpuDoes) {
  std::vector<std::vector<ChromaKey>> keySets = {
      {{0, 255, 0, 0, 30, 20}},
      {{20, 60, 230, 0, 45, 0}, {0, 255, 0, 9, 10, 60}},
      {{255, 255, 255, 0, 40, 30}},                            // near grey
      {{120, 125, 130, 0, -1, 25}, {200, 30, 40, 0, 25, -1}},  // a negative tolerance is huge
      {{0, 0, 255, 0, 30, 5000}}};
  for (const i32 angle : {0, 1, 44, 45, 46, 89, 90, 91, 135, 179, 180, 181, 270, 360, 1000, -30}) {
    keySets.push_back({{10, 200, 60, 0, angle, 15}});
  }
  for (const auto& keys : keySets) {
    const D3DRegion r = kRegions[keys.size()];
    const D3DKeyParam p = {r, keys.data(), static_cast<i32>(keys.size())};
    Check({"key of angle " + std::to_string(keys[0].angle), PICTAVO_D3D_CHROMA_KEY, &p,
           [&](const Image& src, Image* dst) {
             Image from = src.In(DXGI_FORMAT_B8G8R8A8_UNORM), keyed = from;
             const ImageDesc source = {
                 {}, 0, 0, 0, from.bytes.data(), from.width, from.height, 4 * from.width, 4};
             ImageDesc result = source;
             result.data = keyed.bytes.data();
             ASSERT_EQ(interface_->ApplyChromaKey(&source, &result, keys.data(), p.keyCount, 1),
                       PICTAVO_S_OK);
             ForRegion(r, src, *dst, [&](int x, int y) {
               dst->Set(r.dstX + x, r.dstY + y, keyed.Get(r.srcX + x, r.srcY + y));
             });
           },
           Kinds::kAny, 1},
          70, 45, 61, 83);
  }
}

TEST_F(Operations, RunOnADeferredContext) {
  ComPtr<ID3D11DeviceContext> deferred;
  ASSERT_EQ(device_.device->CreateDeferredContext(0, deferred.ReleaseAndGetAddressOf()), S_OK);
  const Image src(50, 20, DXGI_FORMAT_B8G8R8A8_UNORM, random_);
  Image dst(50, 20, DXGI_FORMAT_R8G8B8A8_UNORM);
  const Texture from = device_.Upload(src), to = device_.Upload(dst);
  const ImageDesc source = Describe(from.Get()), destination = Describe(to.Get());
  ASSERT_EQ(interface_->BoxBlurD3D(device_.device.Get(), deferred.Get(), &destination, &source, 2),
            PICTAVO_S_OK);
  EXPECT_EQ(Difference(dst, device_.Download(to.Get()), 0), "");
  ComPtr<ID3D11CommandList> list;
  ASSERT_EQ(deferred->FinishCommandList(FALSE, list.ReleaseAndGetAddressOf()), S_OK);
  device_.context->ExecuteCommandList(list.Get(), FALSE);
  BoxBlur(src, 2, 2, &dst);
  EXPECT_EQ(Difference(dst, device_.Download(to.Get()), 0), "");
}

}  // namespace
}  // namespace pictavo::test
