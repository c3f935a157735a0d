#ifndef PICTAVO_SAMPLES_HOST_BASE_SURFACE_H_
#define PICTAVO_SAMPLES_HOST_BASE_SURFACE_H_

#include "base/picture.h"

namespace host {

/// A picture as the methods take it that ask a host's surfaces. With a border: the part inside it.
class Surface final : public pictavo::IPictavoSurface {
 public:
  explicit Surface(Picture& picture, i32 border = 0) : image_(DescribeInside(picture, border)) {}
  explicit Surface(const Picture& picture) : image_(Describe(picture)) {}  // to be read only

  u32 Query(pictavo::ImageDesc* image) noexcept override {
    *image = image_;
    return 1;
  }

 private:
  const pictavo::ImageDesc image_;
};

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_BASE_SURFACE_H_
