#ifndef PICTAVO_SAMPLES_HOST_BASE_PICTURE_H_
#define PICTAVO_SAMPLES_HOST_BASE_PICTURE_H_

#include <filesystem>
#include <vector>

#include "pictavo/pictavo.h"

namespace host {

using pictavo::f32;
using pictavo::i32;
using pictavo::i64;
using pictavo::u32;
using pictavo::u8;

struct Size {
  i32 width, height;
};

/// Whether a picture may have that size.
bool Fits(i64 width, i64 height);

struct Rect {
  i32 left, top, width, height;
};

/// A picture of 32-bit pixels as Pictavo takes them: blue, green, red, alpha, rows packed, the top
/// row first.
struct Picture {
  /// Clear black. Throws Failure when that many pixels do not fit.
  Picture(i64 pictureWidth, i64 pictureHeight);

  /// One whose pixels are yet to come, and their memory with them.
  static Picture Promised(Size size);

  i32 pitch() const { return 4 * width; }
  size_t bytes() const { return 4 * static_cast<size_t>(width) * static_cast<size_t>(height); }
  u8* At(i32 x, i32 y) { return pixels.data() + Offset(x, y); }
  const u8* At(i32 x, i32 y) const { return pixels.data() + Offset(x, y); }

  i32 width;
  i32 height;
  std::vector<u8> pixels;

 private:
  size_t Offset(i32 x, i32 y) const {
    return 4 * (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x));
  }
};

/// The record of a picture for the library, which reads or writes the picture's own pixels.
pictavo::ImageDesc Describe(Picture& picture);
pictavo::ImageDesc Describe(const Picture& picture);  // to be read only

/// The record of what lies that many pixels inside a picture, which has room for it as a border.
pictavo::ImageDesc DescribeInside(Picture& picture, i32 border);

/// Reads any picture that Windows has a codec for. Throws Failure. COM must be up.
Picture ReadPicture(const std::filesystem::path& path);

/// Writes a PNG, or a JPEG on white when the name ends in .jpg or .jpeg. A file that is there is
/// replaced once all is written. Throws Failure, UsageFailure for other endings. COM must be up.
void WritePicture(const std::filesystem::path& path, const Picture& picture);

/// A part of a picture. It must lie inside.
Picture Cropped(const Picture& picture, const Rect& part);

/// Puts a picture into another, over whatever is there. It must lie inside.
void Paste(const Picture& picture, i32 left, i32 top, Picture* into);

/// The picture in the middle of a larger, clear one.
Picture WithRoom(const Picture& picture, i32 border);

/// Resizes by the mean of the area under each pixel, colours weighted by alpha.
Picture Resized(const Picture& picture, i32 width, i32 height);

/// The largest size of the picture's shape inside width x height.
Picture Fitted(const Picture& picture, i32 width, i32 height);

/// The picture's middle, resized to fill width x height.
Picture Covering(const Picture& picture, i32 width, i32 height);

/// The root mean square of what the colours of two pictures of one size differ by.
double RmsDifference(const Picture& a, const Picture& b);

/// How far the bytes of two pictures of one size lie apart.
struct Difference {
  Picture picture;  // of the distances, made visible
  int largest = 0;
  double mean = 0;   // over what is clear in neither
  double share = 0;  // of bytes that differ, in percent
};
Difference DifferenceOf(const Picture& a, const Picture& b, int amplified = 1);

/// The picture in front of opaque white.
Picture OnWhite(Picture picture);

Picture Premultiply(pictavo::IPictavo6* object, Picture picture);

/// Back to straight alpha, rounding to the nearest. The library's own (slot 16) rounds down, and so
/// darkens a picture that goes both ways.
Picture Unpremultiply(Picture picture);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_BASE_PICTURE_H_
