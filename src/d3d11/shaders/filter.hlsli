// Growing a picture by a filter.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
Texture2D<float4> txFilter : register(t1);
RWTexture2D<unorm float4> txDst : register(u0);

uint WeightAt(int2 place) { return uint(txFilter.Load(int3(place, 0)).r * 256.0 + 0.5); }

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
    const uint limit = 255 * WeightAt(middle + int2(0, y));  // a row weighs most in its middle
    for (int x = from.x; x <= to.x && most < limit; ++x) {
      const int2 offset = int2(x, y);
      const uint4 pixel = LoadBytes(txMaterial0, place + offset, format);
      const uint weighted = pixel.a * WeightAt(middle + offset);
      if (weighted > most) {
        most = weighted;
        grown = uint4(pixel.rgb, (most + 128) / 256);
      }
    }
  }
  return grown.a == 0 ? uint4(0, 0, 0, 0) : grown;
}
