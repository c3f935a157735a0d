#include "chromakey/key_rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "cpu/base/builds.h"
#include "cpu/base/elementary.h"
#include "cpu/simd/avx2.h"
#include "cpu/simd/sse41.h"

namespace pictavo::chromakey {
namespace {

/// Which rows a build has, by layout, kind of key and pass.
using KeyRows = std::array<KeyRow*, 8>;

u8 LimitedByte(f32 x) { return static_cast<u8>(std::max(std::min(x, 255.0f), 0.0f)); }
u8 LowByte(f32 x) { return static_cast<u8>(static_cast<i32>(x)); }

// ---------------------------------------------------------------------------------------------
// The layouts: how a pixel's colour is read and written.

struct Argb {
  static Yuv Read(const u8* pixel) { return ToYuv(pixel[2], pixel[1], pixel[0]); }

  static void Write(u8* pixel, const Yuv& c) {
    const f32 y = (c.y - 16.0f) * 1.164f;
    pixel[2] = LimitedByte(y + 1.596f * c.v);
    pixel[1] = LimitedByte(y - 0.392f * c.u - 0.813f * c.v);
    pixel[0] = LimitedByte(y + 2.017f * c.u);
  }
};

struct Ayuv {
  static Yuv Read(const u8* pixel) {
    return {static_cast<f32>(pixel[2]), static_cast<f32>(pixel[1] - 128),
            static_cast<f32>(pixel[0] - 128)};
  }

  static void Write(u8* pixel, const Yuv& c) {
    pixel[2] = LowByte(c.y);
    pixel[1] = LowByte(c.u + 128.0f);
    pixel[0] = LowByte(c.v + 128.0f);
  }
};

// ---------------------------------------------------------------------------------------------
// The kinds of key.

/// Pixels close to the key, in luma and in chroma, get the difference of lumas as their alpha.
template <typename Format>
struct NearGrey {
  static void Key(u8* out, const u8* pixel, const PassKey& k) {
    std::memcpy(out, pixel, 4);
    if (pixel[3] == 0) return;
    const Yuv c = Format::Read(pixel);
    const f32 u = c.u - k.key.u, v = c.v - k.key.v;
    const f32 distance = std::sqrt(v * v + u * u);
    const f32 difference = std::abs(c.y - k.key.y);
    // Negative tolerances are huge ones.
    if (static_cast<f32>(static_cast<u32>(k.denoise)) > distance &&
        static_cast<f32>(static_cast<u32>(k.angle)) > difference) {
      out[3] = LowByte(difference);
    }
  }
};

/// Pixels of a hue within a cone around the key's lose what reaches past the cone's edge.
template <typename Format>
struct Cone {
  static void Key(u8* out, const u8* pixel, const PassKey& k) {
    Yuv c = Format::Read(pixel);
    const f32 x = (k.key.u * c.u + k.key.v * c.v) / k.kg;  // towards the key
    const f32 z = (k.key.u * c.v - k.key.v * c.u) / k.kg;  // across
    f32 alpha = static_cast<f32>(pixel[3]) / 255.0f;
    if (!(std::abs(z) > static_cast<f32>(x * k.tangent))) {
      const f32 edge = std::abs(static_cast<f32>(z * k.cotangent));
      const f32 past = std::max(0.0f, x - edge);
      c.y = std::max(0.0f, c.y - past * k.lumaScale);
      c.u = (k.key.u * edge - k.key.v * z) / k.kg;
      c.v = (k.key.v * edge + k.key.u * z) / k.kg;
      const f32 left = 1.0f - past / k.kg;
      alpha = static_cast<f32>(pixel[3]) * std::max(0.0f, std::min(1.0f, left * left)) / 255.0f;
      const f32 distance = (x - k.kg) * (x - k.kg) + z * z;
      if (k.denoise >= std::sqrt(double{distance})) alpha = 0;
    }
    Format::Write(out, c);
    out[3] = static_cast<u8>(alpha * 255.0f);
  }
};

template <typename Rule, bool first>
void Row(u8* result, const u8* source, i64 width, const PassKey& key) {
  for (i64 i = 0; i < width; ++i, result += 4, source += 4) {
    u8 out[4];
    Rule::Key(out, source, key);
    for (int c = 0; c < 4; ++c) result[c] = first ? out[c] : std::min(out[c], result[c]);
  }
}

constexpr KeyRows kPortable = {Row<Cone<Argb>, false>,     Row<Cone<Argb>, true>,
                               Row<NearGrey<Argb>, false>, Row<NearGrey<Argb>, true>,
                               Row<Cone<Ayuv>, false>,     Row<Cone<Ayuv>, true>,
                               Row<NearGrey<Ayuv>, false>, Row<NearGrey<Ayuv>, true>};

}  // namespace

#define KERNELS "chromakey/key_rows.inl"
#include "cpu/simd/for_avx2.inl"
#include "cpu/simd/for_sse41.inl"
#undef KERNELS

Yuv ToYuv(u8 r, u8 g, u8 b) {
  const f32 red = r, green = g, blue = b;
  return {0.257f * red + 0.504f * green + 0.098f * blue + 16.0f,
          -0.148f * red - 0.291f * green + 0.439f * blue,
          0.439f * red - 0.368f * green - 0.071f * blue};
}

PassKey::PassKey(const Yuv& keyColour, i32 keyAngle, i32 keyDenoise)
    : key(keyColour),
      angle(keyAngle),
      denoise(keyDenoise),
      kg(static_cast<f32>(std::sqrt(double{key.u * key.u + key.v * key.v}))) {
  const double theta = angle * 3.14159265 / 180;
  const cpu::elementary::SineCosine turned = cpu::elementary::SineCosineOf(theta);
  tangent = turned.sin / turned.cos;
  cotangent = angle == 0 ? 0 : turned.cos / turned.sin;
  lumaScale = key.y / kg;
}

KeyRow* KeyRowFor(i32 level, Layout layout, bool nearGrey, bool firstPass) {
  static constexpr cpu::Builds<const KeyRows*> kBuilds = {
      .portable = &kPortable, .sse41 = &sse41::kRows, .avx2 = &avx2::kRows};
  const size_t place = (layout == Layout::kAyuv ? 4u : 0u) + (nearGrey ? 2u : 0u) + firstPass;
  return (*kBuilds.For(level))[place];
}

void CompositeRow(u8* result, const u8* keyed, const u8* background, i64 width) {
  for (i64 x = 0; x < width; ++x, result += 4, keyed += 4, background += 4) {
    const int alpha = keyed[3];
    for (int c = 0; c < 3; ++c) {
      result[c] = static_cast<u8>((keyed[c] * alpha + background[c] * (255 - alpha)) / 255);
    }
    result[3] = 255;
  }
}

}  // namespace pictavo::chromakey
