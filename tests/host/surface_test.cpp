// The methods of Pictavo.dll that work on host surfaces without a device.
#include <gtest/gtest.h>

#include <algorithm>

#include "opencl_methods.h"

namespace pictavo::test {
namespace {

class Surfaces : public testing::Test {
 protected:
  const DllObject object_;
};

TEST_F(Surfaces, CopyWhatTheyHaveInCommon) {
  for (const auto& [width, height] : {std::pair{5, 9}, {9, 5}, {300, 2}, {7, 7}}) {
    Surface dst(7, 7), src(width, height);
    Surface expected = dst;
    Bytes pixels = dst.Packed(), from = src.Packed();
    for (i32 y = 0; y < std::min(7, height); ++y) {
      std::copy_n(from.begin() + y * src.RowBytes(), 4 * std::min(7, width),
                  pixels.begin() + y * dst.RowBytes());
    }
    expected.Unpack(pixels);
    EXPECT_EQ(object_->CopySurface(&dst, &src), PICTAVO_S_OK);
    EXPECT_TRUE(dst.memory() == expected.memory()) << width << " x " << height;
    EXPECT_TRUE(src.Packed() == from);
    EXPECT_EQ(object_->CopySurface(&dst, &dst), PICTAVO_S_OK);
    EXPECT_TRUE(dst.memory() == expected.memory());
  }
}

TEST_F(Surfaces, ResizeAsPicturesDo) {
  const ResizeParam param = {PICTAVO_FILTER_LANCZOS, 1, {}}, wrong = {9, 1, {}};
  Surface dst(50, 31), src(33, 47);
  Surface expected = dst;
  ImageDesc from, to;
  src.Query(&from);
  expected.Query(&to);
  ASSERT_EQ(object_->ResizeFiltered(&from, &to, &param), PICTAVO_S_OK);
  EXPECT_EQ(object_->ResizeSurface(&dst, &src, &wrong), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(object_->ResizeSurface(&dst, &src, &param), PICTAVO_S_OK);
  EXPECT_TRUE(dst.memory() == expected.memory());
  EXPECT_EQ(object_->ResizeSurface(&dst, &src, nullptr), PICTAVO_E_POINTER);
  EXPECT_EQ(object_->ResizeSurface(&dst, &dst, &param), PICTAVO_E_INVALIDARG);
}

TEST_F(Surfaces, RefuseWhatTheyCannotUse) {
  const struct {
    const char* name;
    u32 answer;
    std::function<void(ImageDesc*)> change;
    u32 result;
  } cases[] = {
      {"answers 0", 0, {}, PICTAVO_E_FAIL},
      {"answers 2", 2, [](auto* i) { *i = {}; }, PICTAVO_E_FAIL},
      {"no data", 1, [](auto* i) { i->data = nullptr; }, PICTAVO_E_POINTER},
      {"texture", 1, [](auto* i) { i->memoryKind = 3; }, PICTAVO_E_INVALIDARG},
      {"bytes", 1, [](auto* i) { i->bytesPerPixel = 1; }, PICTAVO_E_INVALIDARG},
      {"short rows", 1, [](auto* i) { i->pitch = 31; }, PICTAVO_E_INVALIDARG},
      {"upwards", 1, [](auto* i) { i->pitch = -i->pitch; }, PICTAVO_E_INVALIDARG},
      {"no columns", 1, [](auto* i) { i->width = 0; }, PICTAVO_S_FALSE},
      {"no rows", 1, [](auto* i) { i->height = -1; }, PICTAVO_S_FALSE},
      {"empty texture", 1, [](auto* i) { i->height = 0, i->memoryKind = 3; }, PICTAVO_E_INVALIDARG},
  };
  const Surface before(8, 8);
  const ResizeParam param = {};
  const auto expect = [&](u32 result, Surface* dst, Surface* src, const char* name) {
    const Bytes memory = dst->memory();
    EXPECT_EQ(object_->CopySurface(dst, src), result) << name;
    EXPECT_EQ(object_->ResizeSurface(dst, src, &param), result) << name;
    EXPECT_TRUE(dst->memory() == memory) << name;
  };
  for (const auto& c : cases) {
    for (const bool odd : {false, true}) {  // the destination or the source
      Surface dst = before, src(8, 8);
      (odd ? src : dst).answer = c.answer;
      (odd ? src : dst).change = c.change;
      expect(c.result, &dst, &src, c.name);
    }
  }
  Surface whole = before, moved = before;
  for (Surface* const there : {&whole, static_cast<Surface*>(nullptr)}) {
    Surface* const other = there == nullptr ? &whole : nullptr;
    EXPECT_EQ(object_->CopySurface(there, other), PICTAVO_E_POINTER);
    EXPECT_EQ(object_->ResizeSurface(there, other, &param), PICTAVO_E_POINTER);
  }
  // A part of the same picture, at another place of it.
  ImageDesc image;
  whole.Query(&image);
  for (const i32 bytes : {4, image.pitch}) {
    moved.change = [=](ImageDesc* i) {
      *i = image;
      i->data = static_cast<u8*>(image.data) + bytes;
      i->width = i->height = 4;
    };
    expect(PICTAVO_E_INVALIDARG, &whole, &moved, "a picture moved in itself");
  }
}

}  // namespace
}  // namespace pictavo::test
