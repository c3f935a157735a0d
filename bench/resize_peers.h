// Filtered resizing by other libraries, to time and to compare with ours.
#ifndef PICTAVO_BENCH_RESIZE_PEERS_H_
#define PICTAVO_BENCH_RESIZE_PEERS_H_

#include "bench.h"

namespace pictavo::bench {

struct ResizePeer {
  std::string name;
  /// By the nearest to PICTAVO_FILTER_… that it has; empty where it has none. One that works on
  /// planes works on its own when it is timed; `packs` has it take and give packed pixels.
  Run (*run)(u32 filter, Size src, Size dst, bool packs);
};
const std::vector<ResizePeer>& ResizePeers();

}  // namespace pictavo::bench

#endif  // PICTAVO_BENCH_RESIZE_PEERS_H_
