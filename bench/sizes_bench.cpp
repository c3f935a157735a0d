// What the size of a picture costs, from a thumbnail to 4K, and what it costs or brings to hand a
// picture to eight threads in bands of rows, as hosts do with operations that have no threads.
#include "bench.h"
#include "cpu/blending/blend.h"
#include "cpu/colour/convert.h"
#include "cpu/colour/grading.h"
#include "cpu/filters/gauss.h"
#include "cpu/geometry/warp.h"
#include "grading_data.h"
#include "warp_data.h"

namespace pictavo::bench {
namespace {

constexpr i32 kBands = 8;
constexpr Size kSizes[] = {{16, 16}, {64, 64}, kCached, {720, 576}, kHd, {3840, 2160}};

struct Operation {
  const char* name;
  bool inPlace, readsDst;
  bool hasThreads;  // of its own: nothing that a host would cut into bands
  void (*run)(u8* dst, const u8* src, const Size& size);
};

const Operation kOperations[] = {
    {"4 over", false, true, false,
     [](u8* d, const u8* s, const Size& size) {
       cpu::BlendOverPitched(8, d, s, size.width, size.height, 4 * size.width);
     }},
    {"18 premultiply", true, true, false,
     [](u8* d, const u8*, const Size& size) {
       cpu::PremultiplyPitched(8, d, size.width, size.height, 4 * size.width);
     }},
    {"53 levels", true, true, false,
     [](u8* d, const u8*, const Size& size) {
       cpu::AdjustLevels(8, d, size.width, size.height, 4 * size.width, 7, &kMidLevels);
     }},
    {"56 Gaussian, sigma 10", true, true, true,
     [](u8* d, const u8*, const Size& size) {
       cpu::GaussianBlur(8, d, size.width, size.height, 4 * size.width, 10, 10,
                         PICTAVO_EDGES_REPLICATE);
     }},
    {"66 table of 33", false, false, true,
     [](u8* d, const u8* s, const Size& size) {
       const ColorLutParam param = {33, 256, FilmTable(33).data()};
       const ImageDesc from = RecordOf(size, s);
       ImageDesc to = RecordOf(size, d);
       cpu::ApplyColorLut(8, &from, &to, &param);
     }},
    {"67 rotate by 15", false, false, true,
     [](u8* d, const u8* s, const Size& size) {
       const RotateParam param = Rotation(15, size);
       const ImageDesc from = RecordOf(size, s);
       ImageDesc to = RecordOf(size, d);
       cpu::RotatePicture(8, &from, &to, &param);
     }},
};

void RunBand(const Operation& operation, i32 band, u8* dst, const u8* src, const Size& size) {
  const i32 first = size.height * band / kBands, end = size.height * (band + 1) / kBands;
  const i64 offset = i64{4} * size.width * first;
  operation.run(dst + offset, operation.inPlace ? nullptr : src + offset,
                {size.width, end - first});
}

/// The bands one after the other, or each on a thread that waits for it.
Run RunBands(const Operation& operation, const Size& size, bool threads) {
  return [=](u8* dst, const u8* src) {
#pragma omp parallel for num_threads(kBands) if (threads)
    for (i32 band = 0; band < kBands; ++band) RunBand(operation, band, dst, src, size);
  };
}

}  // namespace

Table PictureSizes() {
  Table table = {"Picture sizes, and eight bands of rows", {"one call", "eight bands"}, 2, {}};
  for (const bool threads : {false, true}) {
    for (const Operation& operation : kOperations) {
      for (const Size& size : kSizes) {
        const Run whole = [=](u8* dst, const u8* src) { operation.run(dst, src, size); };
        table.lines.push_back(
            {operation.name + std::string(threads ? kAllThreads : ""),
             size.name(),
             size.pixels(),
             operation.inPlace ? nullptr : &Pixels(size, "soft"),
             &Pixels(size, "soft"),
             operation.readsDst,
             {whole, operation.hasThreads ? Run() : RunBands(operation, size, threads)}});
      }
    }
  }
  return table;
}

}  // namespace pictavo::bench
