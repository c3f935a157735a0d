// The OpenCL methods of Pictavo.dll on the machine's own runtime.
#include <gtest/gtest.h>
#include <windows.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <thread>

#include "devices/opencl_reference.h"
#include "frame/pictavo_object.h"
#include "opencl_methods.h"

namespace pictavo::test {
namespace {

namespace fs = std::filesystem;

/// The object of the DLL, with its caches in a folder of the test's.
class OpenCL : public testing::Test {
 protected:
  OpenCL() {
    fs::create_directories(folder_);
    for (const auto* name : {L"TMP", L"LOCALAPPDATA"})
      SetEnvironmentVariableW(name, folder_.c_str());
  }

  void SetUp() override {
    Surface pixel(1, 1);
    if (object_->MemsetColorOpenCL(&pixel, 0) == PICTAVO_S_OK) return;
    ASSERT_EQ(std::getenv("PICTAVO_OPENCL_REQUIRED"), nullptr) << "no OpenCL device";
    GTEST_SKIP() << "no OpenCL device here";
  }

  static void TearDownTestSuite() { fs::remove_all(folder_); }

  /// Runs a method that must write exactly the expected pixels, or nearly, and nothing else.
  template <typename Run>
  void Expect(Surface* dst, Run run, const Bytes& expected, i32 tolerance = 0) {
    Surface after = *dst;
    ASSERT_EQ(run(), PICTAVO_S_OK);
    const Bytes result = dst->Packed();
    for (size_t i = 0; i < expected.size(); ++i) {
      ASSERT_LE(std::abs(result[i] - expected[i]), tolerance)
          << "byte " << i << " of rows of " << dst->RowBytes() << ": " << int{result[i]} << ", not "
          << int{expected[i]};
    }
    after.Unpack(result);
    EXPECT_TRUE(dst->memory() == after.memory()) << "wrote outside the picture";
  }

  static inline const fs::path folder_ = fs::temp_directory_path() / L"pictavo_opencl_test";
  const DllObject object_;
};

struct Size {
  i32 width, height;
};
constexpr Size kSizes[] = {{1, 1}, {2, 3}, {64, 64}, {65, 129}, {200, 7}, {1, 300}};

TEST_F(OpenCL, FillsWithAColour) {
  const u8 colour[] = {0x43, 0x21, 0xFF, 0x80};
  for (const auto& [width, height] : kSizes) {
    for (const i32 bytes : {1, 4}) {
      Surface dst(width, height, bytes, 0, height == 3);
      Bytes expected = dst.Packed();
      for (size_t i = 0; i < expected.size(); ++i) expected[i] = colour[bytes == 4 ? i % 4 : 0];
      Expect(
          &dst, [&] { return object_->MemsetColorOpenCL(&dst, 0x80FF2143); }, expected);
    }
  }
}

TEST_F(OpenCL, ExtendsBoundariesAsTheProcessorDoes) {
  for (const auto& [width, height] : kSizes) {
    for (const i32 bytes : {1, 4}) {
      for (const u32 border : {0u, 1u, 3u, 70u}) {
        // Pitches of no whole pixels, of rows that overlap (refused of bytes), and, of bytes, of
        // rows farther apart than the border puts them.
        for (const i32 off : {0, 1, 13, -1, -40}) {
          Surface dst(width, height, bytes, static_cast<i32>(border), bytes == 4 && border == 3,
                      std::max(-off, 0));
          dst.change = [=](ImageDesc* image) {
            image->pitch += (image->pitch < 0 ? 1 : -1) * std::max(off, 0);
          };
          Surface expected = dst;
          ImageDesc image;
          expected.Query(&image);
          const u32 result = object_->ExtendBoundary(&image, border);
          EXPECT_EQ(result == PICTAVO_S_OK, bytes == 4 || border == 0 || off <= 0);
          EXPECT_EQ(object_->ExtendBoundaryOpenCL(&dst, border), result);
          EXPECT_TRUE(dst.memory() == expected.memory())
              << width << " x " << height << " pixels of " << bytes << ", border " << border;
        }
      }
    }
  }
}

TEST_F(OpenCL, ResizesWithinOneUnit) {
  for (const auto& [width, height] : kSizes) {
    for (const auto& [srcWidth, srcHeight] : kSizes) {
      Surface dst(width, height), src(srcWidth, srcHeight, 4, 0, true);
      Bytes expected(dst.Packed().size());
      reference::Resize(expected.data(), width, height, {src.Packed().data(), srcWidth, srcHeight});
      Expect(
          &dst, [&] { return object_->BilinearInterpolationOpenCL(&dst, &src); }, expected, 1);
    }
  }
  // Where floats skip pixels, the last place rounds beyond the picture.
  constexpr i32 kLong = (1 << 24) + 4;
  for (const auto& [width, height] : {Size{kLong, 1}, {1, kLong}}) {
    Surface dst(width, height), src(width, height);
    ASSERT_EQ(object_->BilinearInterpolationOpenCL(&dst, &src), PICTAVO_S_OK);
    const Bytes before = src.Packed(), after = dst.Packed();
    EXPECT_TRUE(std::equal(after.end() - 4, after.end(), before.end() - 4));
  }
}

TEST_F(OpenCL, TransformsWithinOneUnit) {
  constexpr f32 kBig = std::numeric_limits<f32>::max();
  const f32 matrices[][6] = {
      {1, 0, 0, 0, 1, 0},          {1, 0, 0.25f, 0, 1, -0.75f}, {0.8f, -0.6f, 3, 0.6f, 0.8f, -2},
      {-1, 0, 64, 0, 1, 0},        {3.5f, 0.1f, 0, 0, 0.2f, 1}, {0, 0, 5.5f, 0, 0, 1.5f},
      {1, 0, 1000, 0, 1, 0},       {kBig, -kBig, 0, 1, 1, 1},   {1e-30f, 0, 0, -1e30f, 0, 0},
      {0.5f, 0, -0.5f, 0, 2, 0.5f}};
  for (const auto& matrix : matrices) {
    for (const auto& [width, height] : kSizes) {
      Surface dst(width, height), src(65, 64);
      Bytes expected(dst.Packed().size());
      reference::Transform(expected.data(), width, height, {src.Packed().data(), 65, 64}, matrix);
      const i32 tolerance = &matrix == matrices ? 0 : 1;  // the first leaves all in its place
      Expect(
          &dst, [&] { return object_->TransformOpenCL(&dst, &src, matrix); }, expected, tolerance);
    }
  }
}

TEST_F(OpenCL, BlursExactly) {
  const auto check = [&](Size size, Size radius, const Bytes& pixels) {
    Surface dst(size.width, size.height), src(size.width, size.height, 4, 0, true);
    if (!pixels.empty()) src.Unpack(pixels);
    const Bytes before = src.Packed();
    Bytes expected(before.size());
    reference::Blur(expected.data(), {before.data(), size.width, size.height}, radius.width,
                    radius.height);
    for (Surface* to : {&dst, &src}) {  // the latter in place
      const auto blur = [&] {
        return object_->FastBlurOpenCL(to, &src, static_cast<u32>(radius.width),
                                       static_cast<u32>(radius.height));
      };
      Expect(to, blur, expected);
    }
  };
  for (const Size& size : kSizes) {
    for (const Size& radius : {Size{0, 0}, {1, 0}, {0, 1}, {3, 5}, {70, 2}, {1, 150}}) {
      check(size, radius, {});
    }
  }
  // Division by the largest windows, at its extremes.
  Bytes pixels(4 * 2 * 4097, 255);
  std::fill_n(pixels.begin() + 1000, 50, u8{0});
  for (const i32 radius : {2046, 2047}) check({2, 4097}, {0, radius}, pixels);
}

TEST_F(OpenCL, CompilesAProgramOnce) {
  fs::remove_all(folder_);
  fs::create_directories(folder_);
  for (const u32 compiled : {5u, 0u, 0u}) {
    const auto object = std::make_unique<Pictavo>();  // as after a new start
    Surface surface(8, 8, 4, 1);
    for (const int round : {1, 2}) {
      for (const Method& method : kMethods) {
        EXPECT_EQ(method.call(object.get(), &surface, &surface), PICTAVO_S_OK) << round;
      }
    }
    EXPECT_EQ(object->programsCompiled(), compiled);
    // And what comes from the cache works: the second round extended the first one's colour.
    for (u32 i = 0; const u8 byte : surface.Packed()) EXPECT_EQ(byte, i++ % 4 == 0 ? 7 : 0);
  }
}

TEST_F(OpenCL, RefusesWhatItCannotUse) {
  const struct {
    const char* name;
    u32 answer;
    std::function<void(ImageDesc*)> change;
    u32 result = PICTAVO_E_INVALIDARG;
  } cases[] = {
      {"answers 0", 0, {}, PICTAVO_E_FAIL},
      {"answers 2", 2, {}, PICTAVO_E_FAIL},
      {"refuses and describes nothing", ~0u, [](auto* i) { *i = {}; }, PICTAVO_E_FAIL},
      {"describes nothing", 1, [](auto* i) { *i = {}; }},
      {"no data", 1, [](auto* i) { i->data = nullptr; }},
      {"texture", 1, [](auto* i) { i->memoryKind = 3; }},
      {"no columns", 1, [](auto* i) { i->width = 0; }},
      {"no rows", 1, [](auto* i) { i->height = 0; }},
      {"negative", 1, [](auto* i) { i->width = i->height = INT32_MIN; }},
      {"huge rows", 1, [](auto* i) { i->width = i->bufferWidth = 1 << 29; }},
      {"huge columns", 1, [](auto* i) { i->height = i->bufferHeight = 1 << 29; }},
      {"huge", 1, [](auto* i) { i->width = i->height = INT32_MAX; }},
      {"24 bits", 1, [](auto* i) { i->bytesPerPixel = 3; }},
      {"64 bits", 1, [](auto* i) { i->bytesPerPixel = INT32_MIN; }},
  };
  for (const Method& method : kMethods) {
    for (const auto& c : cases) {
      for (const bool odd : {false, true}) {  // the destination or the source
        if (odd && !method.hasSource) continue;
        Surface dst(8, 8, 4, 1), src(8, 8);
        const Surface before = dst;
        (odd ? src : dst).answer = c.answer;
        (odd ? src : dst).change = c.change;
        EXPECT_EQ(method.call(object_, &dst, &src), c.result) << method.program << ": " << c.name;
        EXPECT_TRUE(dst.memory() == before.memory()) << method.program << ": " << c.name;
      }
    }
    Surface plane(8, 8, 1, 1);
    EXPECT_EQ(method.call(object_, nullptr, &plane), PICTAVO_E_POINTER) << method.program;
    if (method.hasSource) {
      EXPECT_EQ(method.call(object_, &plane, nullptr), PICTAVO_E_POINTER) << method.program;
    }
    EXPECT_EQ(method.call(object_, &plane, &plane),
              method.takesPlanes ? PICTAVO_S_OK : PICTAVO_E_INVALIDARG)
        << method.program;
  }
}

TEST_F(OpenCL, RefusesOddArguments) {
  Surface a(8, 8, 4, 2), b(8, 9);
  EXPECT_EQ(object_->ExtendBoundaryOpenCL(&a, 2), PICTAVO_S_OK);
  for (const u32 border : {3u, 0x7FFFFFFFu, 0x80000000u, ~0u}) {
    EXPECT_EQ(object_->ExtendBoundaryOpenCL(&a, border), PICTAVO_E_INVALIDARG) << border;
  }
  for (const auto narrow : {&ImageDesc::bufferWidth, &ImageDesc::bufferHeight}) {
    a.change = [=](ImageDesc* image) { --(image->*narrow); };
    EXPECT_EQ(object_->ExtendBoundaryOpenCL(&a, 2), PICTAVO_E_INVALIDARG);
  }
  EXPECT_EQ(object_->FastBlurOpenCL(&a, &b, 1, 1), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(object_->FastBlurOpenCL(&b, &b, 2048, 1), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(object_->FastBlurOpenCL(&b, &b, 1, ~0u), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(object_->TransformOpenCL(&a, &b, nullptr), PICTAVO_E_POINTER);
  for (int i = 0; i < 12; ++i) {
    f32 matrix[6] = {1, 0, 0, 0, 1, 0};
    matrix[i / 2] =
        i % 2 == 0 ? std::numeric_limits<f32>::quiet_NaN() : -std::numeric_limits<f32>::infinity();
    EXPECT_EQ(object_->TransformOpenCL(&a, &b, matrix), PICTAVO_E_INVALIDARG) << i;
  }
}

TEST_F(OpenCL, DoesNotDependOnTheHostsFloatingPoint) {
  const Surface before(200, 7, 4, 1);
  Surface same(200, 7), other(65, 129);
  for (const Method& method : kMethods) {
    Surface* const src = &method == &kMethods[2] ? &other : &same;
    Surface expected = before, dst = before;
    ASSERT_EQ(method.call(object_, &expected, src), PICTAVO_S_OK) << method.program;
    const unsigned usual = _mm_getcsr();
    _mm_setcsr(0x4000);  // upwards, and every exception traps
    const u32 result = method.call(object_, &dst, src);
    const unsigned after = _mm_getcsr();
    _mm_setcsr(usual);
    EXPECT_EQ(result, PICTAVO_S_OK) << method.program;
    EXPECT_EQ(after, 0x4000u) << method.program;
    EXPECT_TRUE(dst.memory() == expected.memory()) << method.program;
  }
}

TEST_F(OpenCL, RunsOneOperationAtATime) {
  Surface src(50, 40);
  Bytes expected(src.Packed().size());
  reference::Blur(expected.data(), {src.Packed().data(), 50, 40}, 4, 4);
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      Surface dst = src, result = src;
      for (int round = 0; round < 10; ++round) {
        result = src;
        EXPECT_EQ(object_->MemsetColorOpenCL(&dst, 1), PICTAVO_S_OK);
        EXPECT_EQ(object_->FastBlurOpenCL(&result, &result, 4, 4), PICTAVO_S_OK);
        EXPECT_TRUE(result.Packed() == expected);
      }
    });
  }
}

}  // namespace
}  // namespace pictavo::test
