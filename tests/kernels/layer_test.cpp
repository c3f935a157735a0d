// Layer blend modes: the rules' corner cases.
#include "cpu/blending/layer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "operations.h"

namespace pictavo::test {
namespace {

using cpu::kLayerKernels;
using cpu::kLayerModes;
using cpu::LayerKernel;

Case Lay(const BlendParam& param, i32 width, i32 height, const Bytes& dst, const Bytes& src) {
  const Call call = {.width = width,
                     .height = height,
                     .dstPitch = 4 * width,
                     .srcPitch = 4 * width,
                     .layer = param};
  return MakeCase(Slot(73), call, dst, src);
}

using Pixel = std::array<int, 4>;  // blue, green, red, alpha

Bytes PixelBytes(const std::vector<Pixel>& pixels) {
  Bytes bytes;
  for (const Pixel& p : pixels)
    for (const int b : p) bytes.push_back(static_cast<u8>(b));
  return bytes;
}

TEST(Layer, Corners) {
  struct Corner {
    BlendParam param;  // mode, opacity, alphaMode
    Pixel src, dst, expected;
  } const corners[] = {
      // Normal copies at a weight of 255, and mixes below it.
      {{0, 255, 0, 0, 0}, {10, 20, 30, 255}, {90, 90, 90, 7}, {10, 20, 30, 7}},
      {{0, 255, 1, 0, 0}, {10, 20, 30, 255}, {90, 90, 90, 7}, {10, 20, 30, 255}},
      {{0, 127, 0, 0, 0}, {200, 100, 0, 255}, {100, 100, 100, 7}, {149, 100, 50, 7}},
      {{0, 127, 1, 0, 0}, {200, 100, 0, 255}, {100, 100, 100, 7}, {149, 100, 50, 127}},
      // A clear source clears the alpha when it is carried, and nothing else.
      {{0, 255, 1, 0, 0}, {10, 20, 30, 0}, {90, 91, 92, 7}, {90, 91, 92, 0}},
      {{0, 255, 2, 0, 0}, {10, 20, 30, 0}, {90, 91, 92, 7}, {90, 91, 92, 7}},
      // Over a straight-alpha destination: 100 - 100 * 128 / 255 + 128 = 178.
      {{0, 255, 2, 0, 0}, {200, 0, 10, 128}, {100, 255, 10, 100}, {171, 71, 10, 178}},
      {{0, 255, 2, 0, 0}, {200, 0, 10, 128}, {100, 255, 10, 0}, {200, 0, 10, 128}},
      {{0, 255, 2, 0, 0}, {200, 0, 10, 255}, {100, 255, 10, 3}, {200, 0, 10, 255}},
      // The others mix at a weight of 255 too: (b * 255 + d) >> 8.
      {{1, 255, 0, 0, 0}, {10, 200, 30, 255}, {90, 90, 30, 7}, {10, 90, 30, 7}},
      {{2, 255, 0, 0, 0}, {255, 128, 0, 255}, {200, 200, 200, 7}, {199, 100, 0, 7}},
      {{3, 255, 0, 0, 0}, {10, 200, 30, 255}, {90, 90, 30, 7}, {90, 199, 30, 7}},
      {{4, 255, 0, 0, 0}, {255, 128, 0, 255}, {200, 200, 200, 7}, {254, 227, 200, 7}},
      {{5, 255, 0, 0, 0}, {255, 128, 0, 255}, {127, 128, 255, 7}, {252, 128, 255, 7}},
      {{6, 255, 0, 0, 0}, {255, 10, 77, 255}, {55, 20, 77, 7}, {199, 10, 0, 7}},
      // Add is weighted, not mixed.
      {{8, 255, 0, 0, 0}, {100, 200, 0, 255}, {100, 100, 100, 7}, {200, 255, 100, 7}},
      {{8, 127, 1, 0, 0}, {100, 200, 0, 255}, {100, 100, 100, 7}, {149, 199, 100, 127}},
      // Red over grey takes grey's luma: as a colour it stays red, as a hue grey has nothing to
      // carry it; grey over red takes its saturation or gives its luma.
      {{11, 255, 0, 0, 0}, {0, 0, 255, 255}, {128, 128, 128, 7}, {75, 75, 254, 7}},
      {{7, 255, 0, 0, 0}, {0, 0, 255, 255}, {128, 128, 128, 7}, {128, 128, 128, 7}},
      {{9, 255, 0, 0, 0}, {128, 128, 128, 255}, {0, 0, 255, 7}, {75, 75, 76, 7}},
      {{10, 255, 0, 0, 0}, {76, 76, 76, 255}, {0, 0, 255, 7}, {0, 0, 255, 7}},
      // On a clear destination every mode gives the source.
      {{2, 255, 2, 0, 0}, {255, 128, 3, 99}, {0, 0, 0, 0}, {255, 128, 3, 99}},
  };
  for (const Corner& corner : corners) {
    EXPECT_EQ(
        RunCase(Lay(corner.param, 1, 1, PixelBytes({corner.dst}), PixelBytes({corner.src})), 0),
        (Outcome{PICTAVO_S_OK, PixelBytes({corner.expected})}))
        << "mode " << corner.param.mode << " case " << &corner - corners;
  }
}

TEST(Layer, SubPixelFractionsOfZeroAreThePlainMode) {
  Random random(9);
  Bytes dst(740), src(740);
  for (u32 mode = 0; mode < kLayerModes; ++mode) {
    EXPECT_EQ(kLayerKernels[kLayerModes + mode].For(8) == nullptr, mode == 8);
    if (mode == 8) continue;
    for (u32 alphaMode = 0; alphaMode < 3; ++alphaMode) {
      FillPixels(dst.data(), dst.size(), kRandom, random);
      FillPixels(src.data(), src.size(), kRuns, random);
      const BlendParam plain{mode, 200, alphaMode, 0, 0};
      BlendParam between = plain;
      between.mode += kLayerModes;
      EXPECT_EQ(RunCase(Lay(between, 37, 5, dst, src), 0), RunCase(Lay(plain, 37, 5, dst, src), 0));
    }
  }
}

TEST(Layer, SubPixelSamples) {
  const auto sample = [](std::vector<Pixel> src, f32 x, f32 y) {
    // Laid in normal mode with carried alpha on a clear destination, the sample itself shows at the
    // top left for a weight of 255; its alpha shows for any.
    return RunCase(Lay({kLayerModes, 255, 2, x, y}, 2, 2, Bytes(16), PixelBytes(src)), 0).dst;
  };
  const auto topLeft = [](const Bytes& bytes) {
    return Pixel{bytes[0], bytes[1], bytes[2], bytes[3]};
  };
  const Pixel a{0, 40, 200, 255}, b{100, 40, 0, 255}, c{200, 0, 0, 255}, d{100, 0, 0, 255};
  EXPECT_EQ(topLeft(sample({a, b, c, d}, 0.5f, 0)), (Pixel{50, 40, 100, 255}));
  EXPECT_EQ(topLeft(sample({a, b, c, d}, 0.5f, 0.5f)), (Pixel{100, 20, 50, 255}));
  EXPECT_EQ(topLeft(sample({a, b, c, d}, 1, 1)), d);
  // A clear neighbour takes alpha away and leaves the colour.
  EXPECT_EQ(topLeft(sample({a, {9, 9, 9, 0}, a, {9, 9, 9, 0}}, 0.5f, 0.25f)),
            (Pixel{0, 40, 200, 127}));
  EXPECT_EQ(topLeft(sample({{255, 254, 1, 2}, {}, {}, {}}, 0.25f, 0)), (Pixel{255, 254, 1, 1}));
  // Beyond the last column and row the last pixel goes on.
  const Bytes edge = sample({a, b, c, d}, 0.5f, 0.5f);
  EXPECT_EQ(Bytes(edge.begin() + 12, edge.end()), PixelBytes({d}));
}

/// Faint and clear pixels make the quotients that lie nearest to whole numbers.
TEST(Layer, SubPixelBuildsAgreeOnFaintPixels) {
  Random random(5);
  constexpr u8 kAlphas[] = {0, 1, 2, 3, 255};
  Bytes src(4 * 61 * 61);
  for (int round = 0; round < 50; ++round) {
    FillPixels(src.data(), src.size(), kRandom, random);
    for (size_t i = 3; i < src.size(); i += 4) src[i] = kAlphas[random() % 5];
    const f32 x = static_cast<f32>(random() % 257) / 256,
              y = static_cast<f32>(random() % 257) / 256;
    const Case c = Lay({kLayerModes, 255, 1, x, y}, 61, 61, Bytes(src.size(), 128), src);
    const Outcome expected = RunCase(c, 0);
    for (const i32 level : Levels()) EXPECT_EQ(RunCase(c, level), expected) << Describe(c, level);
  }
}

}  // namespace
}  // namespace pictavo::test
