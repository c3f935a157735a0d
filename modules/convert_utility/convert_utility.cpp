#include "convert_utility/convert_utility.h"

#include <new>

#include "convert_utility/colour.h"

namespace pictavo {
namespace {

class ConvertUtility final : public IConvertUtility {
 public:
  u32 ConvertPictureFromRGB(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                            i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept override {
    return colour::ConvertPictureFromRGB(level, src, width, height, srcPitch, dst, dstPitch, model,
                                         matrix, range);
  }
  u32 ConvertPictureToRGB(i32 level, const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                          i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept override {
    return colour::ConvertPictureToRGB(level, src, width, height, srcPitch, dst, dstPitch, model,
                                       matrix, range);
  }
  u32 ConvertColorFromRGB(i32 r, i32 g, i32 b, u32* first, u32* second, u32* third, u32 model,
                          u32 matrix, u32 range) noexcept override {
    return colour::ConvertColorFromRGB(r, g, b, first, second, third, model, matrix, range);
  }
  u32 ConvertColorToRGB(i32 first, i32 second, i32 third, u32* r, u32* g, u32* b, u32 model,
                        u32 matrix, u32 range) noexcept override {
    return colour::ConvertColorToRGB(first, second, third, r, g, b, model, matrix, range);
  }
  u32 ConvertPixelFromRGB(const u8* pixel, u32* first, u32* second, u32* third, u32 model,
                          u32 matrix, u32 range) noexcept override {
    return colour::ConvertPixelFromRGB(pixel, first, second, third, model, matrix, range);
  }
};

}  // namespace
}  // namespace pictavo

extern "C" {

pictavo::IConvertUtility* GetConvertUtility4() {
  return new (std::nothrow) pictavo::ConvertUtility();
}

void ReleaseConvertUtility4(pictavo::IConvertUtility* convert) {
  delete static_cast<pictavo::ConvertUtility*>(convert);
}

}  // extern "C"
