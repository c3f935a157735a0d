// Motion blur: 30 samples a pixel.
#include "bench.h"
#include "cpu/motion_blur.h"

namespace pictavo::bench {
namespace {

struct Motion {
  const char* name;
  MotionBlurParam param;
};

const Motion kMotions[] = {
    {"63 direction, level", {1, 30, 45, 0, 1, 0, 0}},
    {"63 direction, slanted", {1, 30, 40, 21, 1, 0, 0}},
    {"63 direction, 200 places", {1, 30, 250, 166, 1, 0, 0}},
    {"63 zoom", {1, 30, 0, 0, 1.047f, 0, 0}},
    {"63 spin", {1, 30, 0, 0, 1, 0, 1.2f}},
    {"63 spin, 200 places", {1, 30, 0, 0, 1, 0, 8}},
};

ImageDesc Image(const Size& size, const u8* pixels) {
  ImageDesc image = {};
  image.data = const_cast<u8*>(pixels);
  image.width = size.width;
  image.height = size.height;
  image.pitch = size.width * 4;
  image.bytesPerPixel = 4;
  return image;
}

}  // namespace

Table MotionBlurs() {
  Table table = {
      "Motion blur, 30 samples, a destination pixel", BuildColumns(), BuildColumns().size(), {}};
  for (const Motion& motion : kMotions) {
    for (const Size& size : {kHd, kCached}) {
      for (const char* alpha : {"opaque", "mixed"}) {
        ImageDesc dst = {};
        i32 offsetX, offsetY;
        const ImageDesc src = Image(size, nullptr);
        cpu::GetMotionBlurDstSize(&src, &dst, &motion.param, &offsetX, &offsetY);
        const Size dstSize = {dst.width, dst.height};
        table.lines.push_back({motion.name, size.name() + " " + alpha, dstSize.pixels(),
                               &Pixels(size, alpha), &Pixels(dstSize, "soft"), false,
                               AtEachBuild([=](i32 level, u8* to, const u8* from) {
                                 const ImageDesc source = Image(size, from);
                                 const ImageDesc destination = Image(dstSize, to);
                                 cpu::MotionBlur(level, &source, &destination, &motion.param);
                               })});
      }
    }
  }
  return table;
}

}  // namespace pictavo::bench
