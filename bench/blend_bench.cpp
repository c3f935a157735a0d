// Alpha blending: straight and premultiplied, with and without ramps.
#include "bench.h"
#include "cpu/blending/blend.h"

namespace pictavo::bench {
namespace {

struct Blend {
  const char* name;
  void (*run)(i32 level, u8* dst, const u8* src, i32 width, i32 height);
};

const Blend kBlends[] = {
    {"2 over, ramp",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::BlendOverWithOpacityRamp(level, d, s, w, h, w * 4, w * 4, 0, 1.0f, 0.0f);
     }},
    {"3 over, packed",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) { cpu::BlendOverPacked(level, d, s, w, h); }},
    {"4 over", [](i32 level, u8* d, const u8* s, i32 w,
                  i32 h) { cpu::BlendOverPitched(level, d, s, w, h, w * 4); }},
    {"5 premultiplied, ramp",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::BlendPremultipliedWithOpacityRamp(level, d, s, w, h, w * 4, w * 4, 0, 1.0f, 0.0f);
     }},
    {"7 premultiplied", [](i32 level, u8* d, const u8* s, i32 w,
                           i32 h) { cpu::BlendPremultipliedPitched(level, d, s, w, h, w * 4); }},
    {"8 composite, ramp",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::CompositePremultipliedWithOpacityRamp(level, d, s, w, h, w * 4, w * 4, 0, 1.0f, 0.0f);
     }},
    {"9 composite", [](i32 level, u8* d, const u8* s, i32 w,
                       i32 h) { cpu::CompositePremultipliedPitched(level, d, s, w, h, w * 4); }},
    {"11 opacity",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::BlendOverWithOpacity(level, d, s, w, h, w * 4, w * 4, 180, 0);
     }},
    {"11 opacity, backdrop",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::BlendOverWithOpacity(level, d, s, w, h, w * 4, w * 4, 180, 0xFF204060);
     }},
    {"36 opacity, ramp, alpha",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::BlendOverWithOpacityRampAndAlpha(level, d, s, w, h, w * 4, w * 4, 180, 0, 0, 1.0f,
                                             0.0f);
     }},
    {"37 opacity, ramp",
     [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
       cpu::BlendOverWithOpacityRampKeepAlpha(level, d, s, w, h, w * 4, w * 4, 180, 0, 0, 1.0f,
                                              0.0f);
     }},
};

}  // namespace

Table Blends() {
  Table table = {"Alpha blending", BuildColumns(), BuildColumns().size(), {}};
  for (const Blend& blend : kBlends) {
    for (const Size& size : {kHd, kCached}) {
      for (const char* alpha : {"opaque", "clear", "mixed", "soft"}) {
        table.lines.push_back({blend.name, size.name() + " " + alpha, size.pixels(),
                               &Pixels(size, alpha), &Pixels(size, "soft"), true,
                               AtEachBuild([=](i32 level, u8* dst, const u8* src) {
                                 blend.run(level, dst, src, size.width, size.height);
                               })});
      }
    }
  }
  return table;
}

}  // namespace pictavo::bench
