// Layer blend modes.
#include "bench.h"
#include "cpu/blending/layer.h"

#ifdef PICTAVO_BENCH_PIXMAN
#include <pixman.h>
#endif

namespace pictavo::bench {
namespace {

struct Layer {
  const char* name;
  u32 mode, alphaMode;
};

const Layer kLayers[] = {
    {"73 normal", 0, 0},
    {"73 darken", 1, 0},
    {"73 multiply", 2, 0},
    {"73 lighten", 3, 0},
    {"73 screen", 4, 0},
    {"73 overlay", 5, 0},
    {"73 difference", 6, 0},
    {"73 hue", 7, 0},
    {"73 add", 8, 0},
    {"73 saturation", 9, 0},
    {"73 luminosity", 10, 0},
    {"73 colour", 11, 0},
    {"73 normal, over alpha", 0, 2},
    {"73 multiply, over alpha", 2, 2},
    {"74 normal", 12, 0},
    {"74 hue", 19, 0},
};

std::vector<Run> Runs(const Layer& layer, const Size& size) {
  const auto& kernels = cpu::kLayerKernels[layer.mode];
  std::vector<Run> runs = AtEachBuild(
      [=, &kernels](i32 level, u8* dst, const u8* src) {
        kernels.For(level)(dst, src, size.width, size.height, size.width * 4, size.width * 4,
                           {layer.mode, 255, layer.alphaMode, 0.3f, 0.6f});
      },
      kernels.avx2 == nullptr ? 0b011 : 0b111);
#ifdef PICTAVO_BENCH_PIXMAN
  if (layer.mode == 8) {  // adds as it is, without weighing by alpha
    runs.push_back([=](u8* dst, const u8* src) {
      const auto picture = [=](const u8* pixels) {
        return pixman_image_create_bits(PIXMAN_a8r8g8b8, size.width, size.height,
                                        const_cast<u32*>(reinterpret_cast<const u32*>(pixels)),
                                        size.width * 4);
      };
      pixman_image_t *from = picture(src), *to = picture(dst);
      pixman_image_composite32(PIXMAN_OP_ADD, from, nullptr, to, 0, 0, 0, 0, 0, 0, size.width,
                               size.height);
      pixman_image_unref(from);
      pixman_image_unref(to);
    });
  }
#endif
  return runs;
}

}  // namespace

Table Layers() {
  std::vector<std::string> columns = BuildColumns();
  columns.push_back("pixman");
  Table table = {"Layer modes", columns, BuildColumns().size(), {}};
  for (const Layer& layer : kLayers) {
    for (const Size& size : {kHd, kCached}) {
      for (const char* alpha : {"opaque", "clear", "mixed", "soft"}) {
        table.lines.push_back({layer.name, size.name() + " " + alpha, size.pixels(),
                               &Pixels(size, alpha), &Pixels(size, "soft"), true,
                               Runs(layer, size)});
      }
    }
  }
  return table;
}

}  // namespace pictavo::bench
