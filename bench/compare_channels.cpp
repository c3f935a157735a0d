// Channels of pixels and planes of bytes.
#include "compare.h"
#include "cpu/colour/channels.h"

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace pictavo::bench {

Comparisons CompareChannels() {
  Comparisons all;
#ifdef PICTAVO_BENCH_LIBYUV
  const auto [width, height] = kCached;
  const u8* const plane = HardPicture(kCached).data();
  Comparison& expand = all.emplace_back("110 expand a plane", "libyuv J400ToARGB", "hard edges",
                                        Bytes(static_cast<size_t>(4 * kCached.pixels())),
                                        Bytes(static_cast<size_t>(4 * kCached.pixels())), 0);
  cpu::ExpandPlane(8, plane, width, height, width, expand.ours.data(), 4 * width);
  libyuv::J400ToARGB(plane, width, expand.theirs.data(), 4 * width, width, height);
#endif
  return all;
}

}  // namespace pictavo::bench
