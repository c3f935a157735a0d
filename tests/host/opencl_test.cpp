// The OpenCL methods of Pictavo.dll on the machine's own runtime.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "frame/pictavo_object.h"
#include "module_folder.h"
#include "opencl_reference.h"
#include "pictavo/pictavo.h"

namespace pictavo::test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<u8>;

/// A picture of random pixels in random surroundings.
class Surface final : public IPictavoSurface {
 public:
  enum Rows { kTopDown, kBottomUp };

  /// @param border pixels around the picture that a method may write
  Surface(i32 width, i32 height, i32 bytes = 4, Rows rows = kTopDown, i32 border = 0)
      : width_(width), height_(height), bytes_(bytes), border_(border) {
    const i32 padding = bytes == 4 ? 12 : 0;  // border operations take byte planes tight
    pitch_ = RowBytes() + padding;
    first_ = 64;
    memory_.resize(static_cast<size_t>(pitch_ * FullHeight() + 2 * first_));
    for (u8& byte : memory_) byte = static_cast<u8>(random_());
    if (rows == kTopDown) return;
    first_ += (FullHeight() - 1) * pitch_;
    pitch_ = -pitch_;
  }

  u32 Query(ImageDesc* image) noexcept override {
    *image = {{},
              width_ + 2 * border_,
              FullHeight(),
              0,
              Row(border_) + border_ * bytes_,
              width_,
              height_,
              pitch_,
              bytes_};
    if (change) change(image);
    return answer;
  }

  /// All rows, their borders too.
  Bytes Packed() const {
    Bytes packed;
    for (i32 y = 0; y < FullHeight(); ++y) packed.insert(packed.end(), Row(y), Row(y) + RowBytes());
    return packed;
  }
  void Unpack(const Bytes& packed) {
    for (i32 y = 0; y < FullHeight(); ++y) {
      std::copy_n(packed.begin() + y * RowBytes(), RowBytes(), Row(y));
    }
  }

  i32 RowBytes() const { return (width_ + 2 * border_) * bytes_; }
  i32 FullHeight() const { return height_ + 2 * border_; }
  const Bytes& memory() const { return memory_; }

  u32 answer = 1;
  std::function<void(ImageDesc*)> change;

 private:
  static inline std::mt19937 random_{4711};

  u8* Row(i32 y) { return memory_.data() + first_ + y * pitch_; }
  const u8* Row(i32 y) const { return memory_.data() + first_ + y * pitch_; }

  i32 width_, height_, bytes_, border_, pitch_, first_;
  Bytes memory_;
};

/// The object of the DLL, with its caches in a folder of the test's.
class OpenCL : public testing::Test {
 protected:
  OpenCL() {
    fs::create_directories(folder_);
    SetEnvironmentVariableW(L"TMP", folder_.c_str());
    SetEnvironmentVariableW(L"LOCALAPPDATA", folder_.c_str());
  }
  ~OpenCL() override { release_(object_); }

  void SetUp() override {
    Surface pixel(1, 1);
    if (object_->MemsetColorOpenCL(&pixel, 0) == PICTAVO_S_OK) return;
    ASSERT_EQ(std::getenv("PICTAVO_OPENCL_REQUIRED"), nullptr) << "no OpenCL device";
    GTEST_SKIP() << "no OpenCL device here";
  }

  static void TearDownTestSuite() { fs::remove_all(folder_); }

  /// Runs a method that must write exactly the expected pixels, or nearly, and nothing else.
  void Expect(Surface* dst, const std::function<u32()>& run, const Bytes& expected,
              i32 tolerance = 0) {
    Surface after = *dst;
    ASSERT_EQ(run(), PICTAVO_S_OK);
    const Bytes result = dst->Packed();
    ASSERT_EQ(result.size(), expected.size());
    for (size_t i = 0; i < result.size(); ++i) {
      ASSERT_LE(std::abs(result[i] - expected[i]), tolerance)
          << "byte " << i << " of rows of " << dst->RowBytes() << ": " << int{result[i]} << ", not "
          << int{expected[i]};
    }
    after.Unpack(result);
    EXPECT_TRUE(dst->memory() == after.memory()) << "wrote outside the picture";
  }

  static inline const fs::path folder_ = fs::temp_directory_path() / L"pictavo_opencl_test";
  const RealModule module_{L"Pictavo.dll"};
  int32_t (*release_)(IPictavo6*) = module_.Entry<int32_t(IPictavo6*)>("ReleasePictavo6");
  IPictavo6* object_ = module_.Entry<IPictavo6*()>("GetPictavo6")();
};

struct Size {
  i32 width, height;
};
constexpr f32 kIdentity[] = {1, 0, 0, 0, 1, 0};
constexpr Size kSizes[] = {{1, 1}, {2, 3}, {64, 64}, {65, 129}, {200, 7}, {1, 300}};

TEST_F(OpenCL, FillsWithAColour) {
  const u8 colour[] = {0x43, 0x21, 0xFF, 0x80};
  for (const auto& [width, height] : kSizes) {
    for (const i32 bytes : {1, 4}) {
      Surface dst(width, height, bytes, height == 3 ? Surface::kBottomUp : Surface::kTopDown);
      Bytes expected = dst.Packed();
      for (size_t i = 0; i < expected.size(); ++i) expected[i] = colour[bytes == 4 ? i % 4 : 0];
      Expect(
          &dst, [&] { return object_->MemsetColorOpenCL(&dst, 0x80FF2143); }, expected);
    }
  }
}

TEST_F(OpenCL, ExtendsBoundaries) {
  for (const auto& [width, height] : kSizes) {
    for (const i32 bytes : {1, 4}) {
      for (const i32 border : {0, 1, 3, 70}) {
        const auto rows = bytes == 4 && border == 3 ? Surface::kBottomUp : Surface::kTopDown;
        Surface dst(width, height, bytes, rows, border);
        const Bytes before = dst.Packed();
        Bytes expected;
        for (i32 y = 0; y < dst.FullHeight(); ++y) {
          for (i32 x = 0; x < width + 2 * border; ++x) {
            const i32 fromX = std::clamp(x, border, border + width - 1);
            const i32 fromY = std::clamp(y, border, border + height - 1);
            const auto from = before.begin() + fromY * dst.RowBytes() + fromX * bytes;
            expected.insert(expected.end(), from, from + bytes);
          }
        }
        Expect(
            &dst, [&] { return object_->ExtendBoundaryOpenCL(&dst, static_cast<u32>(border)); },
            expected);
      }
    }
  }
}

TEST_F(OpenCL, ResizesWithinOneUnit) {
  for (const auto& [width, height] : kSizes) {
    for (const auto& [srcWidth, srcHeight] : kSizes) {
      Surface dst(width, height), src(srcWidth, srcHeight, 4, Surface::kBottomUp);
      Bytes expected(dst.Packed().size());
      reference::Resize(expected.data(), width, height, {src.Packed().data(), srcWidth, srcHeight});
      Expect(
          &dst, [&] { return object_->BilinearInterpolationOpenCL(&dst, &src); }, expected, 1);
    }
  }
}

TEST_F(OpenCL, ResizesWhereFloatsSkipPixels) {
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
      Expect(
          &dst, [&] { return object_->TransformOpenCL(&dst, &src, matrix); }, expected, 1);
    }
  }
  Surface dst(65, 64), src(65, 64);
  const Bytes same = src.Packed();
  Expect(
      &dst, [&] { return object_->TransformOpenCL(&dst, &src, matrices[0]); }, same);
}

TEST_F(OpenCL, BlursExactly) {
  for (const auto& [width, height] : kSizes) {
    for (const auto& [radiusX, radiusY] : {Size{0, 0}, {1, 0}, {0, 1}, {3, 5}, {70, 2}, {1, 150}}) {
      Surface dst(width, height), src(width, height, 4, Surface::kBottomUp);
      const auto blur = [&](Surface* to) {
        return [&, to, x = static_cast<u32>(radiusX), y = static_cast<u32>(radiusY)] {
          return object_->FastBlurOpenCL(to, &src, x, y);
        };
      };
      Bytes expected(dst.Packed().size());
      const Bytes before = src.Packed();
      reference::Blur(expected.data(), {before.data(), width, height}, radiusX, radiusY);
      Expect(&dst, blur(&dst), expected);
      Expect(&src, blur(&src), expected);  // in place
    }
  }
  // Division by the largest windows, at its extremes.
  for (const u32 radius : {2046u, 2047u}) {
    Surface dst(2, 4097), src(2, 4097);
    Bytes before(dst.Packed().size(), 255), expected(before.size());
    std::fill_n(before.begin() + 1000, 50, u8{0});
    src.Unpack(before);
    reference::Blur(expected.data(), {before.data(), 2, 4097}, 0, static_cast<i32>(radius));
    Expect(
        &dst, [&] { return object_->FastBlurOpenCL(&dst, &src, 0, radius); }, expected);
  }
}

TEST_F(OpenCL, CompilesAProgramOnce) {
  fs::remove_all(folder_);
  fs::create_directories(folder_);
  for (const u32 compiled : {5u, 0u, 0u}) {
    const auto object = std::make_unique<Pictavo>();  // as after a new start
    Surface surface(8, 8, 4, Surface::kTopDown, 1);
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(object->MemsetColorOpenCL(&surface, 7), PICTAVO_S_OK);
      EXPECT_EQ(object->ExtendBoundaryOpenCL(&surface, 1), PICTAVO_S_OK);
      EXPECT_EQ(object->BilinearInterpolationOpenCL(&surface, &surface), PICTAVO_S_OK);
      EXPECT_EQ(object->FastBlurOpenCL(&surface, &surface, 1, 1), PICTAVO_S_OK);
      EXPECT_EQ(object->TransformOpenCL(&surface, &surface, kIdentity), PICTAVO_S_OK);
    }
    EXPECT_EQ(object->programsCompiled(), compiled);
    for (u32 y = 0; y < 10; ++y) {  // and what comes from the cache works
      for (u32 x = 0; x < 40; ++x) EXPECT_EQ(surface.Packed()[y * 40 + x], x % 4 == 0 ? 7 : 0);
    }
  }
}

/// A method under one name, called with nothing odd but its surfaces.
struct Method {
  const char* name;
  std::function<u32(IPictavo6*, IPictavoSurface* dst, IPictavoSurface* src)> call;
  bool hasSource;
  bool takesPlanes;
};
const Method kMethods[] = {
    {"extend", [](auto* o, auto* dst, auto*) { return o->ExtendBoundaryOpenCL(dst, 1); }, false,
     true},
    {"transform",
     [](auto* o, auto* dst, auto* src) { return o->TransformOpenCL(dst, src, kIdentity); }, true,
     false},
    {"resize",
     [](auto* o, auto* dst, auto* src) { return o->BilinearInterpolationOpenCL(dst, src); }, true,
     false},
    {"blur", [](auto* o, auto* dst, auto* src) { return o->FastBlurOpenCL(dst, src, 1, 1); }, true,
     false},
    {"memset", [](auto* o, auto* dst, auto*) { return o->MemsetColorOpenCL(dst, 7); }, false, true},
};

TEST_F(OpenCL, RefusesWhatItCannotUse) {
  struct Case {
    const char* name;
    u32 answer;
    std::function<void(ImageDesc*)> change;
    u32 result;
  } const cases[] = {
      {"answers 0", 0, {}, PICTAVO_E_FAIL},
      {"answers 2", 2, {}, PICTAVO_E_FAIL},
      {"refuses and describes nothing", ~0u, [](auto* i) { *i = {}; }, PICTAVO_E_FAIL},
      {"describes nothing", 1, [](auto* i) { *i = {}; }, PICTAVO_E_INVALIDARG},
      {"no data", 1, [](auto* i) { i->data = nullptr; }, PICTAVO_E_INVALIDARG},
      {"texture", 1, [](auto* i) { i->memoryKind = 3; }, PICTAVO_E_INVALIDARG},
      {"no columns", 1, [](auto* i) { i->width = 0; }, PICTAVO_E_INVALIDARG},
      {"no rows", 1, [](auto* i) { i->height = 0; }, PICTAVO_E_INVALIDARG},
      {"negative", 1, [](auto* i) { i->width = i->height = INT32_MIN; }, PICTAVO_E_INVALIDARG},
      {"huge rows", 1, [](auto* i) { i->width = i->bufferWidth = 1 << 29; }, PICTAVO_E_INVALIDARG},
      {"huge columns", 1, [](auto* i) { i->height = i->bufferHeight = 1 << 29; },
       PICTAVO_E_INVALIDARG},
      {"huge", 1, [](auto* i) { i->width = i->height = INT32_MAX; }, PICTAVO_E_INVALIDARG},
      {"24 bits", 1, [](auto* i) { i->bytesPerPixel = 3; }, PICTAVO_E_INVALIDARG},
      {"64 bits", 1, [](auto* i) { i->bytesPerPixel = INT32_MIN; }, PICTAVO_E_INVALIDARG},
  };
  for (const Method& method : kMethods) {
    for (const Case& c : cases) {
      for (const bool odd : {false, true}) {  // the destination or the source
        if (odd && !method.hasSource) continue;
        Surface dst(8, 8, 4, Surface::kTopDown, 1), src(8, 8);
        const Surface before = dst;
        (odd ? src : dst).answer = c.answer;
        (odd ? src : dst).change = c.change;
        EXPECT_EQ(method.call(object_, &dst, &src), c.result) << method.name << ": " << c.name;
        EXPECT_TRUE(dst.memory() == before.memory()) << method.name << ": " << c.name;
      }
    }
    Surface surface(8, 8, 1, Surface::kTopDown, 1);
    EXPECT_EQ(method.call(object_, nullptr, &surface), PICTAVO_E_POINTER) << method.name;
    if (method.hasSource) {
      EXPECT_EQ(method.call(object_, &surface, nullptr), PICTAVO_E_POINTER) << method.name;
    }
    EXPECT_EQ(method.call(object_, &surface, &surface),
              method.takesPlanes ? PICTAVO_S_OK : PICTAVO_E_INVALIDARG)
        << method.name;
  }
}

TEST_F(OpenCL, RefusesOddArguments) {
  Surface a(8, 8, 4, Surface::kTopDown, 2), b(8, 9);
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
  for (int i = 0; i < 6; ++i) {
    for (const f32 odd :
         {std::numeric_limits<f32>::quiet_NaN(), -std::numeric_limits<f32>::infinity()}) {
      f32 matrix[6] = {1, 0, 0, 0, 1, 0};
      matrix[i] = odd;
      EXPECT_EQ(object_->TransformOpenCL(&a, &b, matrix), PICTAVO_E_INVALIDARG);
    }
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
