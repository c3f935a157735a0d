// What the benchmark's families share. A family gives tables; each line of a table is an operation
// on some pixels, run once a column: at our builds, then perhaps by other libraries. All lines are
// timed in one run with a streaming loop that moves the same bytes.
#ifndef PICTAVO_BENCH_BENCH_H_
#define PICTAVO_BENCH_BENCH_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "pictavo/pictavo.h"

namespace pictavo::bench {

using Bytes = std::vector<u8>;

struct Size {
  i32 width, height;

  i64 pixels() const { return i64{width} * height; }
  std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
};
inline constexpr Size kHd = {1920, 1080};    // memory-bound
inline constexpr Size kCached = {256, 256};  // two pictures fit the second-level cache

/// A record of packed pixels.
inline ImageDesc RecordOf(const Size& size, const u8* pixels) {
  return {{}, 0, 0, 0, const_cast<u8*>(pixels), size.width, size.height, 4 * size.width, 4};
}

using Run = std::function<void(u8* dst, const u8* src)>;

struct Line {
  std::string operation;
  std::string data;  // what it runs on: the size, the kind of alpha, a radius, …
  i64 pixels;        // that the time is divided by
  const Bytes* src;  // what is read; null when nothing but the destination is
  const Bytes* dst;  // what the destination holds before the first run; null without one
  bool readsDst;
  std::vector<Run> runs;  // one a column; an empty one leaves a gap
};

struct Table {
  std::string title;
  std::vector<std::string> columns;
  size_t builds;  // how many columns, from the first, are ours; the first is the slowest of them
  std::vector<Line> lines;
};

/// What a line's name ends in that runs on all processors; the others are kept on one.
inline constexpr std::string_view kAllThreads = ", all threads";

/// Adds what one of the lines does of ours on a whole frame, on all processors.
void AddOnAllThreads(Table* table, std::string_view operation);

/// The columns of a family with a portable, a 128-bit and a 256-bit build.
const std::vector<std::string>& BuildColumns();

/// The levels of these columns.
inline constexpr i32 kBuildLevels[] = {0, 7, 8};

/// One run for each of these columns, of an operation that takes the level. `builds` has a bit for
/// each column that the operation has a build for; the others stay empty.
std::vector<Run> AtEachBuild(std::function<void(i32 level, u8* dst, const u8* src)> operation,
                             u32 builds = 0b111);

/// Pixels of random colours; alphas are all 255 ("opaque"), all 0 ("clear"), all between ("soft"),
/// or runs of 50 of each ("mixed"). Made once.
const Bytes& Pixels(const Size& size, const std::string& alpha);

/// Random bytes, so many a pixel. Made once.
const Bytes& Samples(const Size& size, i32 pixelBytes);

// The families, each in its own file.
Table Blends();
Table Blurs();
Table ChromaKeys();
Table ColourTables();
Table Conversions();
Table FilteredResizing();
Table Flips();
Table Frames();
Table Gaussians();
Table Gradings();
Table Histograms();
Table Layers();
Table MotionBlurs();
Table PictureSizes();
Table Rectangles();
Table Resizing();
Table Transitions();
Table Warps();

}  // namespace pictavo::bench

#endif  // PICTAVO_BENCH_BENCH_H_
