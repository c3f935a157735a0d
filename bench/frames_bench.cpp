// Packed frames to pixels and back, beside other libraries where they are installed, which round
// coarsely.
#include <memory>

#include "cpu/colour/convert.h"
#include "cpu/colour/frames.h"
#include "frame_peers.h"

namespace pictavo::bench {
namespace {

struct Layout {
  const char* name;
  u32 layout;
  u32 builds = 0b111;
};
constexpr Layout kLayouts[] = {
    {"NV12", PICTAVO_FRAME_NV12},          {"I420", PICTAVO_FRAME_I420},
    {"YUY2", PICTAVO_FRAME_YUY2},          {"P010", PICTAVO_FRAME_P010},
    {"BGR24", PICTAVO_FRAME_BGR24, 0b011}, {"RGBA32", PICTAVO_FRAME_RGBA32, 0b011},
};

/// Random bytes of a frame. Made once.
const Bytes& FrameOf(const FrameKind& kind) {
  const Bytes& bytes = Samples(kind.size, 4);
  static std::vector<std::unique_ptr<Bytes>> frames;
  return *frames.emplace_back(
      std::make_unique<Bytes>(bytes.begin(), bytes.begin() + static_cast<i64>(kind.bytes())));
}

}  // namespace

Table Frames() {
  Table table = {"Frames", BuildColumns(), BuildColumns().size(), {}};
  table.columns.insert(table.columns.end(), {"libyuv", "swscale"});
  for (const Size& size : {kHd, kCached}) {
    const i32 w = size.width, h = size.height;
    table.lines.push_back({"50 YUVA to BGRA", size.name(), size.pixels(), &Pixels(size, "soft"),
                           &Pixels(size, "opaque"), false,
                           AtEachBuild([=](i32 level, u8* d, const u8* s) {
                             cpu::ConvertYUVAToBGRA(level, s, w, h, 4 * w, d, 4 * w);
                           })});
    for (const auto& [name, layout, builds] : kLayouts) {
      const FrameKind kind = {name, layout, 0, 0, size};
      const u32 format = kind.format();
      const Bytes& frame = FrameOf(kind);
      std::vector<Run> runs = AtEachBuild(
          [=](i32 level, u8* d, const u8* s) {
            cpu::ConvertFrameToBGRA(level, s, w, h, d, 4 * w, format);
          },
          builds);
      runs.insert(runs.end(), {FromFrameByLibyuv(kind), FromFrameBySwscale(kind)});
      table.lines.push_back({std::string("54 from ") + name, size.name(), size.pixels(), &frame,
                             &Pixels(size, "opaque"), false, runs});
      runs = AtEachBuild(
          [=](i32 level, u8* d, const u8* s) {
            cpu::ConvertBGRAToFrame(level, s, w, h, 4 * w, d, format);
          },
          builds);
      runs.insert(runs.end(), {ToFrameByLibyuv(kind), ToFrameBySwscale(kind)});
      table.lines.push_back({std::string("93 to ") + name, size.name(), size.pixels(),
                             &Pixels(size, "opaque"), &frame, false, runs});
    }
  }
  for (const char* name : {"54 from NV12", "93 to NV12"}) AddOnAllThreads(&table, name);
  return table;
}

}  // namespace pictavo::bench
