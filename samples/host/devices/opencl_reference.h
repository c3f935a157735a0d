// The rules of the OpenCL methods in plain C++, as pictavo.h states them: what a device's pixels
// are compared with. Pictures are packed 32-bit pixels.
#ifndef PICTAVO_SAMPLES_HOST_DEVICES_OPENCL_REFERENCE_H_
#define PICTAVO_SAMPLES_HOST_DEVICES_OPENCL_REFERENCE_H_

#include <algorithm>
#include <cmath>
#include <vector>

#include "pictavo/pictavo.h"

namespace reference {

using pictavo::f32;
using pictavo::i32;
using pictavo::i64;
using pictavo::u32;
using pictavo::u8;

/// A picture to read; outside it every channel is 0.
struct Source {
  const u8* pixels;
  i32 width, height;

  f32 At(i32 x, i32 y, int channel) const {
    if (x < 0 || y < 0 || x >= width || y >= height) return 0;
    return pixels[(i64{y} * width + x) * 4 + channel];
  }
};

/// A channel at a place between four pixels.
inline u8 Between(const Source& src, f32 u, f32 v, int channel) {
  const f32 left = std::floor(u), top = std::floor(v);
  const auto across = [&](i32 y) {
    const i32 x = static_cast<i32>(left);
    const f32 a = src.At(x, y, channel);
    return a + (src.At(x + 1, y, channel) - a) * (u - left);
  };
  const f32 a = across(static_cast<i32>(top)), b = across(static_cast<i32>(top) + 1);
  return static_cast<u8>(a + (b - a) * (v - top) + 0.5f);
}

/// Fills a picture by `channelAt(x, y, channel)`.
template <typename ChannelAt>
void Fill(u8* dst, i32 width, i32 height, ChannelAt channelAt) {
  for (i32 y = 0; y < height; ++y) {
    for (i32 x = 0; x < width; ++x) {
      for (int c = 0; c < 4; ++c) *dst++ = channelAt(x, y, c);
    }
  }
}

/// Slot 100.
inline void Transform(u8* dst, i32 width, i32 height, const Source& src, const f32* m) {
  Fill(dst, width, height, [&](i32 column, i32 row, int channel) {
    const f32 x = static_cast<f32>(column) + 0.5f, y = static_cast<f32>(row) + 0.5f;
    const f32 u = m[0] * x + m[1] * y + m[2] - 0.5f, v = m[3] * x + m[4] * y + m[5] - 0.5f;
    const auto touches = [](f32 at, i32 size) { return at > -1 && at < static_cast<f32>(size); };
    if (!touches(u, src.width) || !touches(v, src.height)) return u8{0};
    return Between(src, u, v, channel);
  });
}

/// Slot 102.
inline void Resize(u8* dst, i32 width, i32 height, const Source& src) {
  const auto position = [](i32 at, i32 size, i32 srcSize) {
    const f32 step = static_cast<f32>(srcSize) / static_cast<f32>(size);
    return std::clamp((static_cast<f32>(at) + 0.5f) * step - 0.5f, 0.0f,
                      static_cast<f32>(srcSize - 1));
  };
  Fill(dst, width, height, [&](i32 x, i32 y, int channel) {
    return Between(src, position(x, width, src.width), position(y, height, src.height), channel);
  });
}

/// Slot 104.
inline void Blur(u8* dst, const Source& src, i32 radiusX, i32 radiusY) {
  const auto mean = [](i32 radius, auto sample) {
    i32 sum = 0;
    for (i32 i = -radius; i <= radius; ++i) sum += sample(i);
    const i32 window = 2 * radius + 1;
    return static_cast<u8>((sum + window / 2) / window);
  };
  const auto inside = [](i32 at, i32 size) { return std::clamp(at, 0, size - 1); };
  const i32 width = src.width, height = src.height;
  std::vector<u8> between(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
  const Source second = {between.data(), width, height};
  Fill(between.data(), width, height, [&](i32 x, i32 y, int c) {
    return mean(radiusX,
                [&](i32 i) { return static_cast<i32>(src.At(inside(x + i, width), y, c)); });
  });
  Fill(dst, width, height, [&](i32 x, i32 y, int c) {
    return mean(radiusY,
                [&](i32 i) { return static_cast<i32>(second.At(x, inside(y + i, height), c)); });
  });
}

}  // namespace reference

#endif  // PICTAVO_SAMPLES_HOST_DEVICES_OPENCL_REFERENCE_H_
