// Spin: every pixel has a streak of its own, along the tangent of its circle.
#include "cpu/filters/motion_spin.h"

#include <cmath>
#include <cstdlib>

#include "cpu/base/builds.h"
#include "cpu/base/elementary.h"
#include "cpu/base/numbers.h"
#include "cpu/base/scratch.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

namespace pictavo::cpu {
namespace {

struct Spin {
  Spin(const Source& s, const Picture& d, i32 samples, const f32* placesOfSamples)
      : src(s),
        dst(d),
        count(samples),
        places(placesOfSamples),
        left(static_cast<i32>((d.width - s.width) / 2)),
        top(static_cast<i32>((d.height - s.height) / 2)),
        centreX(static_cast<i32>(d.width / 2)),
        centreY(static_cast<i32>(d.height / 2)),
        reach(static_cast<f32>(i64{centreX} * centreX + i64{centreY} * centreY)) {}

  const Source& src;
  const Picture& dst;
  i32 count;  // of samples
  const f32* places;
  i32 left, top;  // of the source, in the destination
  i32 centreX, centreY;
  f32 reach;  // square of a corner's distance from the centre
};

using RunSpin = void(const Spin& spin);

namespace portable {
using namespace elementary;
#include "cpu/filters/motion_heading.inl"
}  // namespace portable

void RunSpinPortable(const Spin& spin) {
  for (i32 y = 0; y < spin.dst.height; ++y) {
    u8* to = spin.dst.Row(y);
    const f32 row = static_cast<f32>(y), u = static_cast<f32>(spin.centreY - y);  // upwards
    for (i32 x = 0; x < spin.dst.width; ++x, to += 4) {
      const f32 column = static_cast<f32>(x), v = static_cast<f32>(x - spin.centreX);
      const f32 distance = std::sqrt((u * u + v * v) / spin.reach);
      const portable::Heading heading = portable::HeadingOf(double{u}, double{v});
      const f32 cos = static_cast<f32>(heading.cos), sin = static_cast<f32>(heading.sin);
      Mean mean;
      for (i32 k = 0; k < spin.count; ++k) {
        const f32 a = spin.places[k];
        const i32 atY = Find(TruncateToI32(a * cos * distance + row), spin.top,
                             spin.src.height - 1 + spin.top, spin.src.height);
        const i32 atX = Find(TruncateToI32(a * sin * distance + column), spin.left,
                             spin.src.width - 1 + spin.left, spin.src.width);
        if (atY == kMiss || atX == kMiss) continue;
        mean.Add(spin.src.Row(atY) + 4 * i64{atX});
      }
      mean.Store(to, spin.count);
    }
  }
}

}  // namespace

#define KERNELS "cpu/filters/motion_spin.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

u32 BlurSpin(i32 level, const Source& src, const Picture& dst, const Samples& samples) {
  static constexpr Builds<RunSpin*> kBuilds = {
      .portable = RunSpinPortable, .sse41 = sse41::Run, .avx2 = avx2::Run};
  if (dst.IsEmpty()) return PICTAVO_S_OK;
  Scratch scratch(samples.count() * i64{sizeof(f32)});
  if (scratch.IsShort()) return PICTAVO_E_OUTOFMEMORY;
  f32* const places = reinterpret_cast<f32*>(scratch.data());
  for (i32 k = 0; k < samples.count(); ++k) places[k] = static_cast<f32>(samples.Place(k));
  kBuilds.For(level)(Spin(src, dst, samples.count(), places));
  return PICTAVO_S_OK;
}

}  // namespace pictavo::cpu
