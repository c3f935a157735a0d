// Gaussians beside the rule in double precision, and corner cases worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "cpu/filters/gauss.h"
#include "operations.h"

namespace pictavo::test {
namespace {

using Reals = std::vector<double>;

/// The rule along lines of `length` values, `step` apart, of which each begins a block.
Reals Blurred(const Reals& in, size_t length, size_t step, double sigma, u32 edges) {
  if (sigma == 0) return in;
  const i64 reach = static_cast<i64>(7 * sigma) + 1, count = static_cast<i64>(length);
  Reals weights, out(in.size());
  double sum = 0;
  for (i64 d = -reach; d <= reach; ++d) {
    weights.push_back(std::exp(-static_cast<double>(d * d) / (2 * sigma * sigma)));
    sum += weights.back();
  }
  for (size_t at = 0; at < in.size(); ++at) {
    const i64 place = static_cast<i64>(at / step % length);
    for (i64 d = -reach; d <= reach; ++d) {
      i64 from = place + d;
      if (edges == PICTAVO_EDGES_CLEAR && (from < 0 || from >= count)) continue;
      if (edges == PICTAVO_EDGES_MIRROR) {
        from = (from % (2 * count) + 2 * count) % (2 * count);
        from = std::min(from, 2 * count - 1 - from);
      }
      from = std::clamp<i64>(from, 0, count - 1);
      out[at] +=
          weights[static_cast<size_t>(d + reach)] / sum *
          in[static_cast<size_t>(static_cast<i64>(at) + (from - place) * static_cast<i64>(step))];
    }
  }
  return out;
}

Reals Reference(const Bytes& bytes, size_t width, f32 sigmaX, f32 sigmaY, u32 edges) {
  Reals reals(bytes.begin(), bytes.end());
  for (size_t i = 0; i < reals.size(); ++i) reals[i] *= i % 4 == 3 ? 1 : bytes[i | 3];
  reals = Blurred(reals, width, 4, static_cast<double>(sigmaX), edges);
  reals = Blurred(reals, bytes.size() / width / 4, 4 * width, static_cast<double>(sigmaY), edges);
  for (size_t i = 0; i < reals.size(); ++i)
    if (i % 4 != 3) reals[i] = reals[i | 3] < 0.5 ? 0 : reals[i] / reals[i | 3];
  return reals;
}

/// Squares, a diagonal and stripes in black and white; alphas are all 255, or a disc's.
Bytes HardEdges(i32 width, i32 height, bool opaque) {
  Bytes bytes;
  for (i32 y = 0; y < height; ++y) {
    for (i32 x = 0; x < width; ++x) {
      const i32 fromMiddle =
          (x - width / 2) * (x - width / 2) + (y - height / 2) * (y - height / 2);
      const bool marks[] = {(x / 13 + y / 11) % 2 != 0, 3 * x > 4 * y, x % 2 != 0,
                            opaque || fromMiddle < width * height / 20};
      for (const bool mark : marks) bytes.push_back(mark ? 255 : 0);
    }
  }
  return bytes;
}

u32 Blur(i32 level, Bytes* bytes, i32 width, f32 sigmaX, f32 sigmaY, u32 edges) {
  const i32 height = static_cast<i32>(bytes->size()) / width / 4;
  return cpu::GaussianBlur(level, bytes->data(), width, height, 4 * width, sigmaX, sigmaY, edges);
}

TEST(Gauss, IsNearTheRealNumbers) {
  struct Case {
    i32 width, height;
    f32 sigmaX, sigmaY;
  } const cases[] = {{61, 47, 0.1f, 0.1f}, {61, 47, 0.4f, 0.6f}, {40, 31, 1, 1.7f},
                     {70, 36, 1.3f, 1.3f}, {50, 140, 4, 4},      {91, 70, 5, 8},
                     {110, 80, 12, 9},     {200, 9, 0, 20},      {30, 60, 40, 1},
                     {60, 41, 100, 200},   {33, 1, 9, 9},        {1, 17, 3, 4},
                     {1, 1, 5, 5}};
  for (const auto& [width, height, sigmaX, sigmaY] : cases) {
    for (u32 kind = 0; kind < 6; ++kind) {
      const u32 edges = kind % 3;
      const Bytes before = HardEdges(width, height, kind < 3);
      const Reals exact = Reference(before, static_cast<size_t>(width), sigmaX, sigmaY, edges);
      const double most = std::max(sigmaX, sigmaY) > 8 ? 2 : 1;
      Bytes after = before;
      EXPECT_EQ(Blur(Levels().back(), &after, width, sigmaX, sigmaY, edges), PICTAVO_S_OK);
      double worst = 0, sum = 0;
      for (size_t i = 0; i < after.size(); ++i) {
        if (i % 4 != 3 && (after[i | 3] == 0 || exact[i | 3] < 0.5)) continue;
        worst = std::max(worst, std::abs(after[i] - exact[i]));
        sum += after[i] - exact[i];
      }
      EXPECT_LE(worst, most) << width << ", sigma " << sigmaX << " " << sigmaY << ", kind " << kind;
      // Beyond, a picture may be so even that roundings of all pixels are alike.
      EXPECT_LE(std::abs(sum), (most == 1 ? 0.1 : 0.5) * static_cast<double>(after.size()) + 20);
      for (const i32 level : Levels()) {
        Bytes other = before;
        Blur(level, &other, width, sigmaX, sigmaY, edges);
        EXPECT_EQ(other, after) << "level " << level << ", sigma " << sigmaX << ", kind " << kind;
      }
    }
  }
}

/// Beside 255 / (1 + 2 exp(-0.5)) of a sigma so small that further neighbours do not matter.
TEST(Gauss, LendsNoColourOfClearPixels) {
  for (const i32 level : Levels()) {
    Bytes row = {10, 20, 30, 255, 200, 200, 200, 0, 90, 90, 90, 0};
    EXPECT_EQ(Blur(level, &row, 3, 0.5f, 0, PICTAVO_EDGES_CLEAR), PICTAVO_S_OK);
    EXPECT_EQ(row, Bytes({10, 20, 30, 201, 10, 20, 30, 27, 0, 0, 0, 0}));
  }
}

TEST(Gauss, SharpensByWhatTheBlurTakes) {
  const Bytes before = HardEdges(40, 31, true);
  const auto sharpened = [&](i32 level, f32 amount, f32 threshold, Bytes bytes) {
    EXPECT_EQ(cpu::SharpenPicture(level, bytes.data(), 40, 31, 160, amount, threshold, 2.5f),
              PICTAVO_S_OK);
    return bytes;
  };
  for (const i32 level : Levels()) {
    Bytes blurred = before;
    Blur(level, &blurred, 40, 2.5f, 2.5f, PICTAVO_EDGES_REPLICATE);
    EXPECT_EQ(sharpened(level, -1, 0, before), blurred);
    EXPECT_EQ(sharpened(level, 0, 0, before), before);
    EXPECT_EQ(sharpened(level, 9, 255, before), before);
    // Of what has no detail, nothing changes; clear pixels have no colour.
    Bytes flat(before.size(), 77);
    std::fill_n(flat.begin(), 4, u8{0});
    EXPECT_EQ(sharpened(level, 16, 0, flat), flat);
    EXPECT_EQ(sharpened(level, 4, 0, before), before);  // black and white have no room for more
    EXPECT_NE(sharpened(level, 1, 0, blurred), blurred);
  }
}

}  // namespace
}  // namespace pictavo::test
