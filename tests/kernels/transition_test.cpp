// Ways from one picture to another: both ends, steady progress, and moments worked out by hand.
#include "cpu/blending/transition.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "operations.h"

namespace pictavo::test {
namespace {

using Pixels = std::vector<u32>;

Pixels Moment(i32 level, const Pixels& from, const Pixels& to, i32 width,
              const TransitionParam& param) {
  const auto record = [&](const Pixels& pixels) {
    return ImageDesc{{},
                     0,
                     0,
                     0,
                     const_cast<u32*>(pixels.data()),
                     width,
                     static_cast<i32>(pixels.size()) / width,
                     4 * width,
                     4};
  };
  Pixels result(from.size());
  ImageDesc dst = record(result), first = record(from), second = record(to);
  EXPECT_EQ(cpu::ApplyTransition(level, &dst, &first, &second, &param), PICTAVO_S_OK);
  return result;
}

/// From black to white: rows of '.' and '#', and '+' for what lies between.
std::string Drawn(TransitionParam param, i32 width, i32 height) {
  const size_t count = static_cast<size_t>(width * height);
  std::string text;
  for (const u32 pixel : Moment(0, Pixels(count, 0xFF000000), Pixels(count, ~0u), width, param)) {
    if (!text.empty() && text.size() % static_cast<size_t>(width + 1) == static_cast<size_t>(width))
      text += '|';
    text += pixel == ~0u ? '#' : pixel == 0xFF000000 ? '.' : '+';
  }
  return text;
}

TEST(Transition, DrawsWhatItsModeSays) {
  constexpr u32 kWipe = PICTAVO_TRANSITION_WIPE, kClock = PICTAVO_TRANSITION_CLOCK,
                kPush = PICTAVO_TRANSITION_PUSH;
  struct Case {
    TransitionParam param;
    const char* rows;
  } const cases[] = {
      {{PICTAVO_TRANSITION_FADE, 0.5f, 0, 0, 0}, "++++|++++|++++|++++"},
      {{PICTAVO_TRANSITION_FADE, 0.001f, 0, 0, 0}, "....|....|....|...."},  // less than half a step
      {{PICTAVO_TRANSITION_DIP, 0.5f, 0, 0, ~0u}, "####|####|####|####"},
      {{PICTAVO_TRANSITION_DIP, 0.7f, 0, 0, ~0u}, "####|####|####|####"},
      {{PICTAVO_TRANSITION_DIP, 0.3f, 0, 0, 0xFF000000}, "....|....|....|...."},
      {{kWipe, 0.5f, 0, 0, 0}, "##..|##..|##..|##.."},
      {{kWipe, 0.5f, 0, 90, 0}, "####|####|....|...."},
      {{kWipe, 0.3f, 0, 180, 0}, "...#|...#|...#|...#"},
      {{kWipe, 0.5f, 0, -90 - 3600, 0}, "....|....|####|####"},
      {{kWipe, 0.3f, 0, 45, 0}, "##..|#...|....|...."},    // places from 1/8 on in steps of 1/8
      {{kWipe, 0.5f, 0.5f, 0, 0}, "#++.|#++.|#++.|#++."},  // reach 0.75, down to 0.25
      {{kWipe, 0.5f, 1, 0, 0}, "++++|++++|++++|++++"},
      {{PICTAVO_TRANSITION_IRIS, 0.5f, 0, 0, 0}, "....|.##.|.##.|...."},
      {{kClock, 0.25f, 0, 0, 0}, "..##|..##|....|...."},
      {{kClock, 0.5f, 0, 90, 0}, "....|....|####|####"},
      {{kClock, 0.75f, 0, 180, 0}, "####|####|##..|##.."},
      {{kPush, 0.5f, 0, 44, 0}, "##..|##..|##..|##.."},
      {{kPush, 0.25f, 0, 90, 0}, "####|....|....|...."},
      {{kPush, 0.25f, 0, 540, 0}, "...#|...#|...#|...#"},
      {{kPush, 0.25f, 0, -91, 0}, "....|....|....|####"},
  };
  for (const auto& [param, rows] : cases) EXPECT_EQ(Drawn(param, 4, 4), rows);
  EXPECT_EQ(Drawn({PICTAVO_TRANSITION_BLINDS, 0.5f, 0, 0, 0}, 16, 1), "#.#.#.#.#.#.#.#.");
  EXPECT_EQ(Drawn({kClock, 0.4f, 0, 30 + 360 * 40000, 0}, 100, 100),
            Drawn({kClock, 0.4f, 0, 30, 0}, 100, 100));
}

/// Whose places many columns have in common.
TEST(Transition, WipesNearlyLevelAsTheFirstOfItsBlinds) {
  constexpr size_t kWidth = 400, kHeight = 1000, kEighth = kWidth * kHeight / 8;
  const Pixels black(kWidth * kHeight, 0xFF000000), white(black.size(), ~0u);
  for (const f32 angle : {90.00001f, 89.99999f}) {
    Pixels wipe = Moment(0, black, white, kWidth, {PICTAVO_TRANSITION_WIPE, 0.0625f, 0, angle, 0});
    Pixels blinds = Moment(0, black, white, kWidth, {PICTAVO_TRANSITION_BLINDS, 0.5f, 0, angle, 0});
    wipe.resize(kEighth);
    blinds.resize(kEighth);
    EXPECT_TRUE(wipe == blinds) << angle;
  }
}

TEST(Transition, PushesWholePictures) {
  const Pixels from = {1, 2, 3, 4, 5, 6}, to = {11, 12, 13, 14, 15, 16};
  const auto pushed = [&](f32 angle) {
    return Moment(0, from, to, 3, {PICTAVO_TRANSITION_PUSH, 0.5f, 0, angle, 0});
  };
  EXPECT_EQ(pushed(0), (Pixels{12, 13, 1, 15, 16, 4}));
  EXPECT_EQ(pushed(180), (Pixels{3, 11, 12, 6, 14, 15}));
  EXPECT_EQ(pushed(90), (Pixels{14, 15, 16, 1, 2, 3}));
  EXPECT_EQ(pushed(270), (Pixels{4, 5, 6, 11, 12, 13}));
}

TEST(Transition, WeighsColoursByAlpha) {
  const Pixels from = {0xFF646464, 0xFF000000, 0x40646464, 0x01123456};
  const Pixels to = {0x00C8C8C8, 0xFFFFFFFF, 0xC0C8C8C8, 0x00654321};
  for (const i32 level : Levels()) {
    // Clear pixels have no colour; (64 * 100 + 192 * 200) / 256; an alpha below a half is none.
    EXPECT_EQ(Moment(level, from, to, 4, {0, 0.5f, 0, 0, 0}),
              (Pixels{0x80646464, 0xFF808080, 0x80AFAFAF, 0x01123456}));
    EXPECT_EQ(Moment(level, from, to, 4, {0, 0.75f, 0, 0, 0})[3], 0u);
  }
}

/// Hidden colours of clear pixels too.
TEST(Transition, BeginsAndEndsWithThePicturesThemselves) {
  Random random(1);
  Pixels from(70 * 9), to(from.size());
  std::generate(from.begin(), from.end(), random);
  std::generate(to.begin(), to.end(), random);
  for (u32 mode = 0; mode < 8; ++mode) {
    for (const f32 softness : {0.0f, 0.4f, 1.0f}) {
      EXPECT_EQ(Moment(Levels().back(), from, to, 70, {mode, 0, softness, 33, 5}), from) << mode;
      EXPECT_EQ(Moment(Levels().back(), from, to, 70, {mode, 1, softness, 33, 5}), to) << mode;
    }
  }
}

TEST(Transition, NeverGoesBack) {
  const Pixels black(41 * 23, 0xFF000000), white(black.size(), ~0u);
  for (u32 mode = 0; mode < 7; ++mode) {
    for (const f32 softness : {0.0f, 1e-12f, 0.01f, 0.3f, 1.0f}) {
      for (const f32 angle : {0.0f, 90.0f, 217.0f}) {
        Pixels last = black;
        for (int step = 1; step <= 60; ++step) {
          const TransitionParam param = {mode, static_cast<f32>(step) / 60, softness, angle,
                                         0xFF808080};
          const Pixels now = Moment(Levels().back(), black, white, 41, param);
          for (size_t i = 0; i < now.size(); ++i)
            ASSERT_GE(now[i], last[i]) << mode << " " << softness << " " << angle << " " << step;
          last = now;
        }
      }
    }
  }
}

TEST(Transition, DissolvesInProportion) {
  const std::string half = Drawn({PICTAVO_TRANSITION_DISSOLVE, 0.5f, 0, 0, 0}, 200, 100);
  EXPECT_NEAR(static_cast<double>(std::count(half.begin(), half.end(), '#')), 10000, 200);
  // No pattern: neighbours agree as often as not.
  int across = 0, down = 0;
  for (size_t i = 0; i + 202 < half.size(); ++i) {
    across += half[i] == half[i + 1];
    down += half[i] == half[i + 201];
  }
  EXPECT_NEAR(across, 10000, 300);
  EXPECT_NEAR(down, 10000, 300);
}

TEST(Transition, RefusesToPushAPictureOntoItself) {
  Pixels pixels(8, 7);
  ImageDesc from = {{}, 0, 0, 0, pixels.data(), 2, 2, 8, 4}, dst = from, to = from;
  to.data = pixels.data() + 4;
  TransitionParam param = {PICTAVO_TRANSITION_PUSH, 0.5f, 0, 0, 0};
  EXPECT_EQ(cpu::ApplyTransition(Levels().back(), &dst, &from, &to, &param), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(cpu::ApplyTransition(Levels().back(), &dst, &to, &from, &param), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(cpu::ApplyTransition(Levels().back(), &dst, &to, &from, nullptr), PICTAVO_E_POINTER);
}

}  // namespace
}  // namespace pictavo::test
