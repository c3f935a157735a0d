// Growing a picture by a filter.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
Texture2D<float4> txFilter : register(t1);
RWTexture2D<float4> txDst : register(u0);

// The pixel with the most alpha around a place, alphas weighted by the middle of the filter that
// the radii leave; the first in reading order where several have it. Clear pixels surround the
// material.
uint4 Grown(int2 place, int2 radius, uint format) {
  const int2 middle = SizeOf(txFilter) / 2;
  const int2 size = SizeOf(txMaterial0);
  const int2 from = max(-radius, -place);
  const int2 to = min(radius, size - 1 - place);
  uint most = 0;
  uint4 grown = 0;
  for (int y = from.y; y <= to.y; ++y) {
    for (int x = from.x; x <= to.x; ++x) {
      const int2 offset = int2(x, y);
      const uint4 pixel = LoadBytes(txMaterial0, place + offset, format);
      const uint weight = uint(txFilter.Load(int3(middle + offset, 0)).r * 256.0 + 0.5);
      if (pixel.a * weight > most) {
        most = pixel.a * weight;
        grown = uint4(pixel.rgb, (most + 128) / 256);
      }
    }
  }
  return grown.a == 0 ? uint4(0, 0, 0, 0) : grown;
}
