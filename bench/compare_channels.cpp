// Channels of pixels and planes of bytes.
#include "compare.h"
#include "cpu/colour/channels.h"

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef PICTAVO_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace pictavo::bench {
namespace {

constexpr i32 kWidth = kCached.width, kHeight = kCached.height;

/// What a function makes of the hard picture, of so many bytes a pixel; before, they are its own.
template <typename Make>
Bytes Made(i32 pixelBytes, Make make) {
  const Bytes& src = HardPicture(kCached);
  Bytes dst(src.begin(), src.begin() + pixelBytes * kCached.pixels());
  make(dst.data(), src.data());
  return dst;
}

}  // namespace

Comparisons CompareChannels() {
  Comparisons all;
  [[maybe_unused]] const char* const kPicture = "hard edges";
#ifdef PICTAVO_BENCH_LIBYUV
  all.push_back({"59 set alpha", "libyuv ARGBCopyYToAlpha", kPicture,
                 Made(4, [](u8* d, const u8* s) { cpu::SetAlphaPlane(8, d, s, kWidth, kHeight); }),
                 Made(4,
                      [](u8* d, const u8* s) {
                        libyuv::ARGBCopyYToAlpha(s, kWidth, d, 4 * kWidth, kWidth, kHeight);
                      }),
                 0});
  all.push_back(
      {"106 shuffle", "libyuv ARGBToABGR", kPicture,
       Made(4, [](u8* d,
                  const u8* s) { cpu::ShuffleChannels(8, d, s, kCached.pixels(), 2, 1, 0, 3); }),
       Made(4,
            [](u8* d, const u8* s) {
              libyuv::ARGBToABGR(s, 4 * kWidth, d, 4 * kWidth, kWidth, kHeight);
            }),
       0});
  all.push_back(
      {"110 expand a plane", "libyuv J400ToARGB", kPicture,
       Made(4, [](u8* d,
                  const u8* s) { cpu::ExpandPlane(8, s, kWidth, kHeight, kWidth, d, 4 * kWidth); }),
       Made(4, [](u8* d,
                  const u8* s) { libyuv::J400ToARGB(s, kWidth, d, 4 * kWidth, kWidth, kHeight); }),
       0});
#endif
#ifdef PICTAVO_BENCH_OPENCV
  for (u32 channel = 0; channel < 4; ++channel) {
    all.push_back({"94 extract channel " + std::to_string(channel), "OpenCV extractChannel",
                   kPicture,
                   Made(1,
                        [=](u8* d, const u8* s) {
                          cpu::ExtractPlane(8, s, kWidth, kHeight, 4 * kWidth, d, kWidth, channel);
                        }),
                   Made(1,
                        [=](u8* d, const u8* s) {
                          cv::Mat to(kHeight, kWidth, CV_8U, d);
                          cv::extractChannel(cv::Mat(kHeight, kWidth, CV_8UC4, const_cast<u8*>(s)),
                                             to, static_cast<int>(channel));
                        }),
                   0});
  }
#endif
  return all;
}

}  // namespace pictavo::bench
