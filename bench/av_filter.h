// Filters of libavfilter, where it is installed.
#ifndef PICTAVO_BENCH_AV_FILTER_H_
#define PICTAVO_BENCH_AV_FILTER_H_

#include <memory>

#include "bench.h"

namespace pictavo::bench {

/// Runs an AvFilter on what is read, taken for a frame of the format; where a line reads nothing,
/// on any bytes. What comes out is dropped. Empty where the library is not installed.
Run RunOf(const std::string& chain, const std::string& format, const Size& size, int inputs = 1);

#ifdef PICTAVO_BENCH_AVFILTER

/// A chain on one thread, whose frames have a pixel format and a size going in and perhaps others
/// coming out.
class AvFilter {
 public:
  /// `chain` takes what `inputs` pads named in0, in1, … give ("[in0][in1]xfade=…"), one needs no
  /// name; `format` is one of its names ("bgra", "yuva444p"), and the chain's end is made to it.
  AvFilter(const std::string& chain, const std::string& format, const Size& size, int inputs = 1);

  /// Gives an input its frame, planes one after the other without padding. It is kept.
  void Load(const u8* picture, int input = 0);
  /// Filters a frame.
  void Run();
  /// Filters the frame of the only input where it lies, and keeps what comes out in its place.
  void RunInPlace();
  /// The last frame that Run filtered, as packed as those given.
  Bytes Result() const;

 private:
  struct Graph;
  std::shared_ptr<Graph> graph_;
};

#endif

}  // namespace pictavo::bench

#endif  // PICTAVO_BENCH_AV_FILTER_H_
