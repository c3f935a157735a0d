// The same conversions of packed frames by other libraries, where they are installed.
#ifndef PICTAVO_BENCH_FRAME_PEERS_H_
#define PICTAVO_BENCH_FRAME_PEERS_H_

#include "bench.h"

namespace pictavo::bench {

struct FrameKind {
  const char* name;
  u32 layout, matrix, range;
  Size size;

  u32 format() const { return FrameFormat(layout, matrix, range); }
  size_t bytes() const { return static_cast<size_t>(FrameBytes(layout, size.width, size.height)); }
};

/// Empty where the library has no such conversion, or is not there.
Run FromFrameByLibyuv(const FrameKind& kind);
Run ToFrameByLibyuv(const FrameKind& kind);
/// With all the accuracy that it has; no filter between samples of chroma.
Run FromFrameBySwscale(const FrameKind& kind);
Run ToFrameBySwscale(const FrameKind& kind);

}  // namespace pictavo::bench

#endif  // PICTAVO_BENCH_FRAME_PEERS_H_
