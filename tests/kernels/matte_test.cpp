// Mattes: corner cases worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "cpu/filters/matte.h"
#include "operations.h"

namespace pictavo::test {
namespace {

/// Pixels of one colour with these alphas.
Bytes WithAlphas(const Bytes& alphas) {
  Bytes pixels;
  for (const u8 alpha : alphas) pixels.insert(pixels.end(), {1, 2, 3, alpha});
  return pixels;
}

ImageDesc Record(Bytes* bytes, i32 width, i32 pixelBytes = 4) {
  ImageDesc image = {};
  image.data = bytes->data();
  image.width = width;
  image.height = static_cast<i32>(bytes->size()) / width / pixelBytes;
  image.pitch = width * pixelBytes;
  image.bytesPerPixel = pixelBytes;
  return image;
}

TEST(Matte, AdjustsAlphaInItsOrder) {
  struct Case {
    MatteParam param;
    i32 width;
    Bytes before, after;
  } const cases[] = {
      // Thirds: 85 and 170 are the ends; 128 is 129 = 43 * 3 of 255 above them, 86 is 3.
      {{1 / 3.0f, 2 / 3.0f, 0, 0}, 6, {0, 85, 86, 128, 170, 255}, {0, 0, 3, 129, 255, 255}},
      // Twice the alpha less 127.5.
      {{0.25f, 0.75f, 0, 0}, 5, {63, 64, 100, 147, 191}, {0, 1, 73, 167, 255}},
      {{0, 1, 1, 0}, 6, {9, 9, 5, 9, 9, 2}, {9, 5, 5, 5, 2, 2}},
      {{0, 1, -2, 0}, 6, {9, 0, 0, 0, 0, 3}, {9, 9, 9, 3, 3, 3}},
      {{0, 1, 1, 0}, 3, {9, 9, 9, 9, 9, 9, 9, 9, 1}, {9, 9, 9, 9, 1, 1, 9, 1, 1}},
      {{0, 1, 64, 0}, 2, {9, 8, 7, 6}, {6, 6, 6, 6}},
      // What levels raise is not choked away by what they leave.
      {{0, 0.5f, 1, 0}, 4, {255, 128, 200, 127}, {255, 255, 254, 254}},
      // A pixel of the middle weighs 0.786, its neighbours 0.106.
      {{0, 1, 0, 0.5f}, 5, {0, 0, 255, 0, 0}, {0, 27, 201, 27, 0}},
  };
  for (const auto& [param, width, before, after] : cases) {
    for (const i32 level : Levels()) {
      Bytes pixels = WithAlphas(before);
      ImageDesc image = Record(&pixels, width);
      EXPECT_EQ(cpu::AdjustMatte(level, &image, &param), PICTAVO_S_OK);
      EXPECT_EQ(pixels, WithAlphas(after)) << "level " << level << ", case " << param.choke;
    }
  }
}

/// The least of each byte and `reach` neighbours both ways, so many bytes apart, in a line of them.
Bytes Eroded(const Bytes& plane, size_t width, size_t reach, bool down) {
  const size_t step = down ? width : 1, length = down ? plane.size() / width : width;
  Bytes least = plane;
  for (size_t i = 0; i < plane.size(); ++i) {
    const size_t at = i / step % length;
    for (size_t k = at - std::min(at, reach); k <= std::min(at + reach, length - 1); ++k)
      least[i] = std::min(least[i], plane[i + (k - at) * step]);
  }
  return least;
}

TEST(Matte, ChokesPicturesOfSeveralStrips) {
  constexpr i32 kWidth = 1030;  // the last strip is narrower than the reach
  std::mt19937 random(1);
  Bytes alphas(kWidth * 70);
  for (u8& alpha : alphas) alpha = random() % 50 == 0 ? static_cast<u8>(random()) : 255;
  for (const i32 choke : {5, 64}) {
    const size_t reach = static_cast<size_t>(choke);
    const Bytes expected = Eroded(Eroded(alphas, kWidth, reach, false), kWidth, reach, true);
    for (const i32 level : Levels()) {
      Bytes pixels = WithAlphas(alphas);
      ImageDesc image = Record(&pixels, kWidth);
      const MatteParam param = {0, 1, choke, 0};
      EXPECT_EQ(cpu::AdjustMatte(level, &image, &param), PICTAVO_S_OK);
      EXPECT_TRUE(pixels == WithAlphas(expected)) << "level " << level << ", choke " << choke;
    }
  }
}

TEST(Matte, MultipliesAlphaByEachMode) {
  // Of a matte's pixel: alpha 100, luma nearest((54 * 30 + 183 * 20 + 19 * 10) / 256) = 21.
  const int factors[] = {100, 155, 21, 234};
  for (u32 mode = 0; mode < 4; ++mode) {
    for (const i32 level : Levels()) {
      Bytes alphas(37), expected(37), matte, plane(37, 21);
      for (size_t i = 0; i < alphas.size(); ++i) {
        alphas[i] = static_cast<u8>(i * 7);
        expected[i] = static_cast<u8>((alphas[i] * factors[mode] + 127) / 255);
        matte.insert(matte.end(), {10, 20, 30, 100});
      }
      Bytes pixels = WithAlphas(alphas);
      ImageDesc to = Record(&pixels, 37), from = Record(&matte, 37);
      EXPECT_EQ(cpu::ApplyMatte(level, &to, &from, mode), PICTAVO_S_OK);
      EXPECT_EQ(pixels, WithAlphas(expected)) << "level " << level << ", mode " << mode;
      if (mode < 2) continue;
      pixels = WithAlphas(alphas);
      to = Record(&pixels, 37), from = Record(&plane, 37, 1);
      EXPECT_EQ(cpu::ApplyMatte(level, &to, &from, mode), PICTAVO_S_OK);
      EXPECT_EQ(pixels, WithAlphas(expected)) << "plane, level " << level << ", mode " << mode;
    }
  }
}

}  // namespace
}  // namespace pictavo::test
