// Motion blur: 30 samples a pixel; beside another library's line of the same length where it is
// installed, which takes samples between pixels, as many as the motion is long, in single
// precision; seconds a frame, so of a small picture only.
#include <string>

#include "bench.h"
#include "cpu/filters/motion_blur.h"

#ifdef PICTAVO_BENCH_GEGL
#include <gegl.h>
#endif

namespace pictavo::bench {
namespace {

struct Motion {
  const char* name;
  MotionBlurParam param;
  double length, angle;  // of the other library's line, if any
};

const Motion kMotions[] = {
    {"63 direction, level", {1, 30, 45, 0, 1, 0, 0}, 30, 0},
    {"63 direction, slanted", {1, 30, 40, 21, 1, 0, 0}, 30, 30},
    {"63 direction, 200 places", {1, 30, 250, 166, 1, 0, 0}, 200, 30},
    {"63 zoom", {1, 30, 0, 0, 1.047f, 0, 0}, 0, 0},
    {"63 spin", {1, 30, 0, 0, 1, 0, 1.2f}, 0, 0},
    {"63 spin, 200 places", {1, 30, 0, 0, 1, 0, 8}, 0, 0},
};

#ifdef PICTAVO_BENCH_GEGL
Run Gegl(const Motion& motion, const Size& size) {
  static const bool started = (gegl_init(nullptr, nullptr), true);
  g_object_set(gegl_config(), "threads", started ? 1 : 0, nullptr);
  return [=](u8* dst, const u8* src) {
    const GeglRectangle all = {0, 0, size.width, size.height};
    const Babl* format = babl_format("R'G'B'A u8");
    const int pitch = size.width * 4;
    GeglBuffer* picture = gegl_buffer_new(&all, format);
    gegl_buffer_set(picture, &all, 0, format, src, pitch);
    GeglNode* graph = gegl_node_new();
    GeglNode* source =
        gegl_node_new_child(graph, "operation", "gegl:buffer-source", "buffer", picture, nullptr);
    GeglNode* blur = gegl_node_new_child(graph, "operation", "gegl:motion-blur-linear", "length",
                                         motion.length, "angle", motion.angle, nullptr);
    gegl_node_link(source, blur);
    gegl_node_blit(blur, 1, &all, format, dst, pitch, GEGL_BLIT_DEFAULT);
    g_object_unref(graph);
    g_object_unref(picture);
  };
}
#endif

}  // namespace

Table MotionBlurs() {
  Table table = {
      "Motion blur, 30 samples, a destination pixel", BuildColumns(), BuildColumns().size(), {}};
#ifdef PICTAVO_BENCH_GEGL
  table.columns.push_back("GEGL");
#endif
  for (const Motion& motion : kMotions) {
    for (const Size& size : {kHd, kCached}) {
      for (const char* alpha : {"opaque", "mixed"}) {
        ImageDesc dst = {};
        i32 offsetX, offsetY;
        const ImageDesc src = RecordOf(size, nullptr);
        cpu::GetMotionBlurDstSize(&src, &dst, &motion.param, &offsetX, &offsetY);
        const Size dstSize = {dst.width, dst.height};
        std::vector<Run> runs = AtEachBuild([=](i32 level, u8* to, const u8* from) {
          const ImageDesc source = RecordOf(size, from), destination = RecordOf(dstSize, to);
          cpu::MotionBlur(level, &source, &destination, &motion.param);
        });
#ifdef PICTAVO_BENCH_GEGL
        if (motion.length > 0 && size.width == kCached.width) {
          runs.push_back(Gegl(motion, size));
        }
#endif
        table.lines.push_back({motion.name, size.name() + " " + alpha, dstSize.pixels(),
                               &Pixels(size, alpha), &Pixels(dstSize, "soft"), false, runs});
      }
    }
  }
  return table;
}

}  // namespace pictavo::bench
