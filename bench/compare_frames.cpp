// Packed frames: every layout, matrix and range, both ways. Ours is exact; the others round
// coarsely, libyuv with weights of 6 bits below 1 to pixels, and U and V of P010 cut to 8 bits.
#include "compare.h"
#include "cpu/colour/frames.h"
#include "frame_peers.h"

namespace pictavo::bench {
namespace {

constexpr const char* kNames[] = {"NV12", "I420",  "YV12",  "YUY2",  "UYVY",
                                  "P010", "BGR24", "RGB24", "RGBA32"};
constexpr const char* kMatrices[] = {"BT.601", "BT.709", "BT.2020"};

/// Flat squares of 2 x 2, so that it does not matter how chroma is filtered.
Bytes Squares(const Size& size) {
  const Bytes& small = HardPicture({size.width / 2, size.height / 2});
  Bytes squares;
  for (i64 i = 0; i < size.pixels(); ++i) {
    const i64 x = i % size.width / 2, y = i / size.width / 2;
    const auto pixel = small.begin() + 4 * (y * (size.width / 2) + x);
    squares.insert(squares.end(), pixel, pixel + 4);
  }
  return squares;
}

/// P010's words as bytes: their upper ones.
Bytes Upper(const FrameKind& kind, const Bytes& frame) {
  if (kind.layout != PICTAVO_FRAME_P010) return frame;
  Bytes upper;
  for (size_t i = 1; i < frame.size(); i += 2) upper.push_back(frame[i]);
  return upper;
}

void Add(Comparisons* all, const std::string& operation, const std::string& peer,
         const FrameKind& kind, const Bytes& ours, const Run& run, const Bytes& src, int most) {
  if (!run) return;
  Bytes theirs(ours.size());
  run(theirs.data(), src.data());
  const bool yuv = kind.layout <= PICTAVO_FRAME_P010;
  const std::string space =
      yuv ? std::string(kMatrices[kind.matrix]) + (kind.range != 0 ? " full" : " limited")
          : "bytes";
  const bool frames = operation[0] == '9';
  all->push_back({operation + kind.name, peer, space, frames ? Upper(kind, ours) : ours,
                  frames ? Upper(kind, theirs) : theirs, yuv ? most : 0});
}

void Compare(const FrameKind& kind, Comparisons* all) {
  const auto [width, height] = kind.size;
  const Bytes pixels = Squares(kind.size);
  Bytes frame(kind.bytes()), back(pixels.size());
  cpu::ConvertBGRAToFrame(8, pixels.data(), width, height, 4 * width, frame.data(), kind.format());
  cpu::ConvertFrameToBGRA(8, frame.data(), width, height, back.data(), 4 * width, kind.format());
  const bool words = kind.layout == PICTAVO_FRAME_P010;
  const bool held = kind.matrix != PICTAVO_MATRIX_BT601 && kind.range == PICTAVO_RANGE_LIMITED;
  Add(all, "54 from ", "libyuv", kind, back, FromFrameByLibyuv(kind), frame,
      held    ? 16
      : words ? 4
              : 2);
  Add(all, "54 from ", "swscale", kind, back, FromFrameBySwscale(kind), frame, 1);
  Add(all, "93 to ", "libyuv", kind, frame, ToFrameByLibyuv(kind), pixels, 2);
  Add(all, "93 to ", "swscale", kind, frame, ToFrameBySwscale(kind), pixels, 1);
}

}  // namespace

Comparisons CompareFrames() {
  Comparisons all;
  for (u32 layout = 0; layout < std::size(kNames); ++layout) {
    const bool yuv = layout <= PICTAVO_FRAME_P010;
    for (u32 matrix = 0; matrix < (yuv ? 3u : 1u); ++matrix)
      for (u32 range = 0; range < (yuv ? 2u : 1u); ++range)
        Compare({kNames[layout], layout, matrix, range, kCached}, &all);
  }
  return all;
}

}  // namespace pictavo::bench
