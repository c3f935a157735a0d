// Motion blur: the rules' corner cases.
#include "cpu/filters/motion_blur.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include "operations.h"
#include "short_memory.h"

#ifdef _WIN32
#include <windows.h>

#include "debugger_listener.h"
#include "platform/module.h"
#endif

namespace pictavo::test {
namespace {

constexpr f32 kNaN = std::numeric_limits<f32>::quiet_NaN();

/// A picture that ends where nothing may be touched.
class Guarded {
 public:
  Guarded(i32 width, i32 height, i32 pitch)
      : memory_(std::make_unique<GuardedMemory>(Span(width, height, pitch),
                                                GuardedMemory::Side::kAfter)) {
    image.data = memory_->data();
    image.width = width;
    image.height = height;
    image.pitch = pitch;
    image.bytesPerPixel = 4;
  }

  Bytes Contents() { return Bytes(memory_->data(), memory_->data() + memory_->size()); }
  u8* At(i32 x, i32 y) { return memory_->data() + y * image.pitch + 4 * x; }
  void Fill(int kind, Random& random) {
    FillPixels(memory_->data(), memory_->size(), kind, random);
  }
  void Set(int value) { std::memset(memory_->data(), value, memory_->size()); }

  ImageDesc image = {};

 private:
  std::unique_ptr<GuardedMemory> memory_;
};

ImageDesc DstSize(const Guarded& src, const MotionBlurParam& param, i32* x = nullptr,
                  i32* y = nullptr) {
  ImageDesc dst = {};
  i32 offsetX, offsetY;
  EXPECT_EQ(cpu::GetMotionBlurDstSize(&src.image, &dst, &param, x == nullptr ? &offsetX : x,
                                      y == nullptr ? &offsetY : y),
            PICTAVO_S_OK);
  return dst;
}

TEST(MotionBlur, SizesAndKinds) {
  struct Case {
    MotionBlurParam param;  // strength, maxSamples, direction, zoom, reserved, angle
    i32 width, height, offsetX, offsetY;
  } const cases[] = {
      {{0, 30, 50, 50, 3, 0, 90}, 60, 40, 0, 0},    // nothing moves
      {{1, 30, 15, 0, 1, 0, 0}, 69, 40, -9, 0},     // 10 places, a trail to the left
      {{1, 30, -15, 0, 1, 0, 0}, 69, 40, 0, 0},     // … to the right
      {{1, 30, 0, 15, 1, 0, 0}, 60, 49, 0, -9},     // … and above
      {{3, 30, 15, 0, 1, 0, 0}, 79, 40, -19, 0},    // strength counts up to 2
      {{1, 30, 0, 0, 1.5f, 0, 0}, 78, 58, -9, -9},  // 60 * 0.5 / 3 = 10 places
      {{1, 30, 0, 0, 0.5f, 0, 0}, 78, 58, -9, -9},
      {{1, 30, 15, 0, 1.5f, 0, 0}, 78, 58, -9, -9},  // zoom wins a tie with direction
      {{1, 30, 0, 0, 5, 0, 0}, 100, 80, -20, -20},   // 80 places: half the height at most
      {{1, 30, 0, 0, kNaN, 0, 0}, 60, 40, 0, 0},
      // Two thirds of the diagonal are 48.07, and 12 degrees there are 10 places.
      {{1, 30, 0, 0, 1, 0, 12}, 96, 96, -18, -28},
      {{1, 30, 15, 0, 1.5f, 0, -12}, 96, 96, -18, -28},  // spin wins every tie
  };
  Guarded src(60, 40, 240);
  for (const Case& c : cases) {
    i32 x = 77, y = 77;
    const ImageDesc dst = DstSize(src, c.param, &x, &y);
    EXPECT_EQ((std::array{dst.width, dst.height, dst.pitch, x, y}),
              (std::array{c.width, c.height, 4 * c.width, c.offsetX, c.offsetY}))
        << "direction " << c.param.dirX << " " << c.param.dirY << " zoom " << c.param.zoom
        << " angle " << c.param.angle << " strength " << c.param.strength;
  }
}

/// Blurs into a destination of the size told and returns it.
Guarded Blurred(const Guarded& src, const MotionBlurParam& param) {
  const ImageDesc size = DstSize(src, param);
  Guarded dst(size.width, size.height, size.pitch);
  dst.Set(0x5A);
  EXPECT_EQ(cpu::MotionBlur(Levels().back(), &src.image, &dst.image, &param), PICTAVO_S_OK);
  return dst;
}

using Pixel = std::array<int, 4>;
Pixel At(Guarded& picture, i32 x, i32 y) {
  const u8* p = picture.At(x, y);
  return {p[0], p[1], p[2], p[3]};
}
void Set(Guarded& picture, i32 x, i32 y, const Pixel& pixel) {
  for (size_t c = 0; c < 4; ++c) picture.At(x, y)[c] = static_cast<u8>(pixel[c]);
}

TEST(MotionBlur, MissesThinTheAlphaAlone) {
  Guarded src(4, 1, 16);
  src.Set(99);  // colours of clear pixels must not show
  for (const i32 x : {0, 1}) Set(src, x, 0, {99, 99, 99, 0});
  Set(src, 2, 0, {10, 20, 30, 255});
  Set(src, 3, 0, {30, 20, 11, 101});
  Guarded dst = Blurred(src, {1, 30, 4.5f, 0, 1, 0, 0});  // three places
  const Pixel expected[] = {{0, 0, 0, 0},      {0, 0, 0, 0},      {10, 20, 30, 85},
                            {20, 20, 20, 118}, {20, 20, 20, 118}, {30, 20, 11, 33}};
  for (i32 x = 0; x < 6; ++x) EXPECT_EQ(At(dst, x, 0), expected[x]) << x;

  src.Set(0);
  dst = Blurred(src, {1, 30, 4.5f, 0, 1, 0, 0});
  EXPECT_EQ(dst.Contents(), Bytes(24, 0));
}

TEST(MotionBlur, DirectionIgnoresTheStrengthLimitThatItsSizeHas) {
  Guarded src(40, 1, 160);
  for (i32 x = 0; x < 40; ++x) Set(src, x, 0, {x, x, x, 255});
  Guarded dst = Blurred(src, {3, 60, 15, 0, 1, 0, 0});
  EXPECT_EQ(dst.image.width, 40 + 19);
  // Thirty places reach 29 columns, ten of which find no room: the source begins at column 29 and
  // its last ten columns are missed. Column 58 still sees columns 29 and on of a streak of 30.
  EXPECT_EQ(At(dst, 0, 0), (Pixel{0, 0, 0, 255 / 30}));      // column 0 alone
  EXPECT_EQ(At(dst, 29, 0), (Pixel{14, 14, 14, 255}));       // columns 0 to 29
  EXPECT_EQ(At(dst, 58, 0), (Pixel{29, 29, 29, 255 / 30}));  // column 29 alone
}

TEST(MotionBlur, NarrowDestinationCutsTheSourceOnTheFarSide) {
  Guarded src(10, 2, 40), dst(12, 2, 48);  // three columns too few
  for (i32 x = 0; x < 10; ++x)
    for (const i32 y : {0, 1}) Set(src, x, y, {x, x, x, 255});
  // Six places leftwards, a hair down.
  const MotionBlurParam param = {1, 30, -9, 0.001f, 1, 0, 0};
  ASSERT_EQ(DstSize(src, param).width, 15);
  for (const i32 level : Levels()) {
    dst.Set(0x5A);
    EXPECT_EQ(cpu::MotionBlur(level, &src.image, &dst.image, &param), PICTAVO_S_OK);
    EXPECT_EQ(At(dst, 6, 0), (Pixel{3, 3, 3, 255}));          // columns 1 to 6
    EXPECT_EQ(At(dst, 7, 0), (Pixel{4, 4, 4, 5 * 255 / 6}));  // columns 2 to 6
    EXPECT_EQ(At(dst, 11, 0), (Pixel{6, 6, 6, 255 / 6}));     // column 6 alone
  }
}

TEST(MotionBlur, ZoomsFirstSampleLiesUpAndLeft) {
  Guarded src(30, 9, 120);
  Random random(3);
  src.Fill(kOpaque, random);
  Guarded dst = Blurred(src, {1, 30, 0, 0, 1.1f, 0, 0});  // one place
  ASSERT_EQ(dst.image.width, 30);
  for (i32 y = 0; y < 9; ++y)
    for (i32 x = 0; x < 30; ++x)
      ASSERT_EQ(At(dst, x, y), At(src, std::max(x - 1, 0), std::max(y - 1, 0))) << x << " " << y;
}

TEST(MotionBlur, ZoomShrinksThePictureAboutItsCentre) {
  Guarded src(24, 12, 96);
  for (i32 y = 0; y < 12; ++y)
    for (i32 x = 0; x < 24; ++x) Set(src, x, y, {10 * x, 10 * y, 0, 255});
  // Four places: frames of 24 x 12, 26 x 13, 28 x 14 and 30 x 15 pixels, a border of 3.
  const MotionBlurParam param = {1, 30, 0, 0, 1.5f, 0, 0};
  Guarded dst = Blurred(src, param);
  ASSERT_EQ((std::array{dst.image.width, dst.image.height}), (std::array{30, 18}));
  EXPECT_EQ(At(dst, 0, 0), (Pixel{0, 0, 0, 0}));
  EXPECT_EQ(At(dst, 2, 4), (Pixel{0, (10 + 0) / 2, 0, 2 * 255 / 4}));
  EXPECT_EQ(At(dst, 20, 10), (Pixel{(160 + 160 + 150 + 150) / 4, (60 + 60 + 60 + 50) / 4, 0, 255}));
  EXPECT_EQ(At(dst, 29, 17), (Pixel{220, 110, 0, 255 / 4}));

  // A destination two pixels smaller cuts the source on the right and below.
  Guarded small(28, 16, 112);
  EXPECT_EQ(cpu::MotionBlur(0, &src.image, &small.image, &param), PICTAVO_S_OK);
  EXPECT_EQ(At(small, 27, 8), (Pixel{(210 + 200) / 2, 40, 0, 2 * 255 / 4}));
  EXPECT_EQ(At(small, 10, 15), (Pixel{70, 90, 0, 255 / 4}));
}

TEST(MotionBlur, ZoomSeesAClearPixelInAnyColumn) {
  Random random(4);
  Call c = {
      .width = 32, .height = 10, .dstPitch = 128, .srcWidth = 30, .srcHeight = 8, .srcPitch = 120};
  c.motion.zoom = 1.21f;  // two places
  for (size_t x = 0; x < 30; ++x) {
    Bytes src(120 * 8);
    FillPixels(src.data(), src.size(), kOpaque, random);
    src[120 * 4 + 4 * x + 3] = 0;
    EXPECT_EQ(Disagreement(MakeCase(Slot(63), c, Bytes(128 * 10), src)), "");
  }
}

TEST(MotionBlur, SpinFollowsTheTangent) {
  Guarded src(60, 60, 240);
  for (i32 y = 0; y < 60; ++y)
    for (i32 x = 0; x < 60; ++x) Set(src, x, y, {4 * x, 4 * y, 0, 255});
  Guarded dst = Blurred(src, {1, 30, 0, 0, 1, 0, 40});  // 39 places, 30 samples
  ASSERT_EQ(dst.image.width, 114);
  EXPECT_EQ(At(dst, 57, 57), (Pixel{4 * 30, 4 * 30, 0, 255}));  // the centre stands still
  // Right of the centre the streak runs down, in steps that grow with the distance.
  for (i32 right = 1; right < 24; ++right) {
    int sum = 0, previous = 0;
    for (int k = 0; k < 30; ++k) {
      const int place = static_cast<int>(k * (38.0 / 29) + 0.5);
      sum += 4 * (30 + static_cast<int>(57 + place * right / std::sqrt(2 * 57.0 * 57)) - 57);
      ASSERT_GE(place, previous);
      previous = place;
    }
    EXPECT_EQ(At(dst, 57 + right, 57), (Pixel{4 * (30 + right), sum / 30, 0, 255})) << right;
  }
}

/// However many samples, and however far they reach.
TEST(MotionBlur, TakesLittleMemoryForManySamples) {
  Guarded src(20, 10, 80);
  Random random(5);
  src.Fill(kRandom, random);
  const MotionBlurParam motions[] = {{1, 65536, 98304.5f, 0, 1, 0, 0},
                                     {1, 4096, -700, 800, 1, 0, 0},
                                     {1, 65536, 0, 0, 9831, 0, 0},
                                     {1, 4096, 0, 0, 1, 0, 15732}};
  for (const MotionBlurParam& param : motions) {
    const ImageDesc size = DstSize(src, param);
    Guarded dst(size.width, size.height, size.pitch);
    Bytes portable;
    for (const i32 level : Levels()) {
      const ShortMemory memory(9, 20 << 20);
      EXPECT_EQ(cpu::MotionBlur(level, &src.image, &dst.image, &param), PICTAVO_S_OK);
      if (level == 0) portable = dst.Contents();
      EXPECT_TRUE(dst.Contents() == portable) << "level " << level;
      dst.Set(0x5A);
    }
    EXPECT_NE(std::ranges::count(portable, 0), std::ssize(portable)) << "an empty result";
  }
}

TEST(MotionBlur, NeedsItsParametersAndOutputs) {
  Guarded src(8, 6, 32), dst(20, 20, 80);
  const MotionBlurParam good = {1, 30, 9, 3, 1, 0, 0};
  EXPECT_EQ(cpu::MotionBlur(0, &src.image, &dst.image, nullptr), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(dst.Contents(), Bytes(1600, 0));
  i32 x = 7;
  EXPECT_EQ(cpu::GetMotionBlurDstSize(&src.image, &dst.image, &good, &x, nullptr),
            PICTAVO_E_POINTER);
  EXPECT_EQ(x, 7);
}

TEST(MotionBlur, CopiesWhatDoesNotMove) {
  Random random(1);
  Guarded src(5, 3, 20);
  src.Fill(kRandom, random);
  const MotionBlurParam still = {1, 0, 0, 0, 1, 0, 0};
  Guarded dst = Blurred(src, still);
  EXPECT_EQ(dst.Contents(), src.Contents());
  // Too little room: what there is is cleared.
  Guarded small(5, 2, 20);
  small.Set(77);
  errno = 0;
  EXPECT_EQ(cpu::MotionBlur(Levels().back(), &src.image, &small.image, &still), PICTAVO_S_OK);
  EXPECT_EQ(small.Contents(), Bytes(40, 0));
  EXPECT_EQ(errno, ERANGE);
  // No rows are no room, whatever the pitch.
  small.Set(77);
  small.image.height = -2;
  small.image.pitch = -20;
  EXPECT_EQ(cpu::MotionBlur(Levels().back(), &src.image, &small.image, &still), PICTAVO_S_OK);
  EXPECT_EQ(small.Contents(), Bytes(40, 77));
}

#ifdef _WIN32

int timesHandled = 0;
void Count(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) { ++timesHandled; }

/// The handler that a host sets in its own C runtime, whichever the library is built with.
TEST(MotionBlur, ReportsTheLackOfRoomToTheHostsHandler) {
  const HMODULE runtime = LoadLibraryW(L"ucrtbase.dll");
  ASSERT_NE(runtime, nullptr);
  using Handler = _invalid_parameter_handler;
  auto* const set = EntryPoint<Handler(Handler)>(runtime, "_set_invalid_parameter_handler");
  const Handler before = set(Count);
  Guarded src(5, 3, 20), small(5, 2, 20);
  const MotionBlurParam still = {1, 0, 0, 0, 1, 0, 0};
  EXPECT_EQ(cpu::MotionBlur(0, &src.image, &small.image, &still), PICTAVO_S_OK);
  EXPECT_EQ(timesHandled, 1);
  set(before);
  EXPECT_EQ(cpu::MotionBlur(0, &src.image, &small.image, &still), PICTAVO_S_OK);
  EXPECT_EQ(timesHandled, 1);
  FreeLibrary(runtime);
}

TEST(MotionBlur, TellsTheDebuggerOfAnUnexpectedSize) {
  const char kDirection[] =
      "MotionBlurDirection : Warning !! The Dst buffer width or height is not the same as "
      "expected.\n";
  const char kScale[] =
      "MotionBlurScale : Warning !! The Dst buffer width or height is not the same as expected.\n";
  struct Case {
    MotionBlurParam param;
    std::vector<std::string> lines;
  } const cases[] = {
      {{1, 30, -9, 0, 1, 0, 0}, {kDirection}},
      {{3, 90, 0, 9, 1, 0, 0}, {kDirection, kDirection}},  // longer than its size provides for
      {{1, 30, 0, 0, 2, 0, 0}, {kScale}},
      {{1, 30, 0, 0, 1, 0, 90}, {}},
      {{0, 30, 0, 0, 1, 0, 0}, {}},
  };
  Guarded src(12, 8, 48);
  for (const Case& c : cases) {
    const DebuggerListener listener;
    Blurred(src, c.param);
    Guarded dst(30, 30, 120);
    EXPECT_EQ(cpu::MotionBlur(0, &src.image, &dst.image, &c.param), PICTAVO_S_OK);
    EXPECT_EQ(listener.heard(), c.lines);
  }
}

#endif

}  // namespace
}  // namespace pictavo::test
