// Filtered resizing and flips.
#include <cmath>

#include "compare.h"
#include "cpu/geometry/flip.h"
#include "cpu/geometry/resize.h"
#include "resize_peers.h"

#ifdef PICTAVO_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace pictavo::bench {
namespace {

constexpr const char* kNames[] = {"60 triangle", "60 Catmull-Rom", "60 Mitchell", "60 Lanczos"};

Bytes Resized(u32 filter, const Size& src, const Bytes& pixels, const Size& dst) {
  Bytes made(static_cast<size_t>(4 * dst.pixels()));
  const ImageDesc from = RecordOf(src, pixels.data());
  ImageDesc to = RecordOf(dst, made.data());
  const ResizeParam param = {filter, 0, {0, 0}};
  cpu::ResizeFiltered(8, &from, &to, &param);
  return made;
}

/// The pixels that no filter reaches an edge from: beyond the edges zimg mirrors.
Bytes Inside(const Bytes& pixels, const Size& size) {
  constexpr i32 kRim = 6;
  Bytes inside;
  for (i32 y = kRim; y < size.height - kRim; ++y) {
    const auto row = pixels.begin() + 4 * i64{y} * size.width;
    inside.insert(inside.end(), row + 4 * kRim, row + 4 * (size.width - kRim));
  }
  return inside;
}

/// Rings that grow finer outwards, to a wave of two pixels.
Bytes ZonePlate(const Size& size) {
  Bytes pixels;
  for (i64 i = 0; i < size.pixels(); ++i) {
    const double x = static_cast<double>(i % size.width) + 0.5 - size.width / 2.0;
    const double y = static_cast<double>(i / size.width) + 0.5 - size.height / 2.0;
    const double wave = std::cos(3.14159265358979 * (x * x + y * y) / size.width);
    pixels.insert(pixels.end(), 3, static_cast<u8>(127.5 + 127.4 * wave));
    pixels.push_back(255);
  }
  return pixels;
}

/// Only zimg has the same filters, and both lie within 1 of the real numbers; but where a filter
/// with negative parts overshoots beyond 0 and 255, zimg cuts that off between its two passes.
int Explained(const std::string& peer, u32 filter, bool overshoots) {
  if (!peer.starts_with("zimg")) return 255;
  return filter == PICTAVO_FILTER_TRIANGLE || !overshoots ? 1 : 48;
}

void CompareFlips(Comparisons* all) {
#ifdef PICTAVO_BENCH_LIBYUV
  const ImageDesc from = RecordOf(kCached, HardPicture(kCached).data());
  Comparison& flip = all->emplace_back("65 left to right", "libyuv ARGBMirror", "hard edges",
                                       HardPicture(kCached), HardPicture(kCached), 0);
  ImageDesc to = RecordOf(kCached, flip.ours.data());
  cpu::FlipPicture(8, &from, &to, 1);
  libyuv::ARGBMirror(static_cast<const u8*>(from.data), from.pitch, flip.theirs.data(), from.pitch,
                     from.width, from.height);
#else
  (void)all;
#endif
}

}  // namespace

Comparisons CompareResizing() {
  constexpr Size kSource = {640, 360}, kSquare = {960, 960};
  struct Case {
    const char* name;
    const Bytes& pixels;
    Size src, dst;
  };
  const Bytes rings = ZonePlate(kSquare), &edges = HardPicture(kSource);
  Comparisons all;
  for (const auto& [name, pixels, src, dst] : {Case{"hard edges, ", edges, kSource, {427, 240}},
                                               {"hard edges, ", edges, kSource, {320, 180}},
                                               {"hard edges, ", edges, kSource, {160, 90}},
                                               {"hard edges, ", edges, kSource, {960, 540}},
                                               {"rings, ", rings, kSquare, {320, 320}}}) {
    for (u32 filter = 0; filter < 4; ++filter) {
      const Bytes ours = Resized(filter, src, pixels, dst);
      for (const ResizePeer& peer : ResizePeers()) {
        Bytes theirs(ours.size());
        peer.run(filter, src, dst, true)(theirs.data(), pixels.data());
        all.push_back({kNames[filter], peer.name, name + ("to " + dst.name()), Inside(ours, dst),
                       Inside(theirs, dst), Explained(peer.name, filter, &pixels == &edges)});
      }
    }
  }
  CompareFlips(&all);
  return all;
}

}  // namespace pictavo::bench
