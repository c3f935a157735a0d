// Interface of ConvertUtility.dll, the sibling module that converts colours.
//
// Exports: GetConvertUtility4 returns an object (null when memory is short), which the caller gives
// back to ReleaseConvertUtility4. An object may be used from several threads.
#ifndef PICTAVO_MODULES_CONVERT_UTILITY_H_
#define PICTAVO_MODULES_CONVERT_UTILITY_H_

#include <stdint.h>

namespace pictavo {

/// Converts pictures and single colours between RGB and other colour spaces. Slots 88 to 92 of the
/// library hand their arguments to the method of the same name as they are; pictavo.h states the
/// rules, the options and the results. `level` is the instruction-set level to run at.
struct IConvertUtility {
  virtual uint32_t ConvertPictureFromRGB(int32_t level, const uint8_t* src, int32_t width,
                                         int32_t height, int32_t srcPitch, uint8_t* dst,
                                         int32_t dstPitch, uint32_t model, uint32_t matrix,
                                         uint32_t range) noexcept = 0;
  virtual uint32_t ConvertPictureToRGB(int32_t level, const uint8_t* src, int32_t width,
                                       int32_t height, int32_t srcPitch, uint8_t* dst,
                                       int32_t dstPitch, uint32_t model, uint32_t matrix,
                                       uint32_t range) noexcept = 0;
  virtual uint32_t ConvertColorFromRGB(int32_t r, int32_t g, int32_t b, uint32_t* first,
                                       uint32_t* second, uint32_t* third, uint32_t model,
                                       uint32_t matrix, uint32_t range) noexcept = 0;
  virtual uint32_t ConvertColorToRGB(int32_t first, int32_t second, int32_t third, uint32_t* r,
                                     uint32_t* g, uint32_t* b, uint32_t model, uint32_t matrix,
                                     uint32_t range) noexcept = 0;
  virtual uint32_t ConvertPixelFromRGB(const uint8_t* pixel, uint32_t* first, uint32_t* second,
                                       uint32_t* third, uint32_t model, uint32_t matrix,
                                       uint32_t range) noexcept = 0;

 protected:
  ~IConvertUtility() = default;
};

using GetConvertUtilityFn = IConvertUtility*();
using ReleaseConvertUtilityFn = void(IConvertUtility*);

}  // namespace pictavo

#endif  // PICTAVO_MODULES_CONVERT_UTILITY_H_
