// Turns a picture as the processor does: through places in 1/2^32 of a pixel, at each the pixel that
// it lies in, or four around it with 8-bit weights. Colours are weighted by alpha; clear pixels
// surround the material.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  uint uSrcColorFormat;
  uint uDstColorFormat;
  uint uNearest;
  uint uDummy;
  uint2 uFxSrcXStart, uFxSrcYStart;  // 64 bits each, the low ones first
  uint2 uFxSrcXStepX, uFxSrcXStepY;  // of the source's column, for a column and for a row
  uint2 uFxSrcYStepX, uFxSrcYStepY;  // of the source's row
};

uint2 Add(uint2 a, uint2 b) {
  const uint low = a.x + b.x;
  return uint2(low, a.y + b.y + (low < a.x ? 1 : 0));
}

// Of a number below 2^16.
uint2 Times(uint2 a, uint n) {
  const uint low = (a.x & 0xFFFF) * n, middle = (a.x >> 16) * n + (low >> 16);
  return uint2(middle << 16 | (low & 0xFFFF), a.y * n + (middle >> 16));
}

uint4 PixelAt(int2 place) {
  if (Outside(place, SizeOf(txMaterial0))) return uint4(0, 0, 0, 0);
  return LoadBytes(txMaterial0, place, uSrcColorFormat);
}

uint4 Between(int2 whole, uint2 fraction) {
  uint alphas = 0;
  uint3 colours = 0;
  for (int i = 0; i < 4; ++i) {
    const int2 step = int2(i & 1, i >> 1);
    const uint4 pixel = PixelAt(whole + step);
    const uint2 weight = step == 1 ? fraction : 256 - fraction;
    const uint alpha = pixel.a * weight.x * weight.y;
    alphas += alpha;
    colours += pixel.rgb * alpha;
  }
  const uint alpha = (alphas + 32768) >> 16;
  return alpha == 0 ? uint4(0, 0, 0, 0) : uint4((colours + alphas / 2) / max(alphas, 1), alpha);
}

[numthreads(32, 32, 1)]
void RotateCopy(uint3 id : SV_DispatchThreadID) {
  const uint2 x = Add(Add(uFxSrcXStart, Times(uFxSrcXStepX, id.x)), Times(uFxSrcXStepY, id.y));
  const uint2 y = Add(Add(uFxSrcYStart, Times(uFxSrcYStepX, id.x)), Times(uFxSrcYStepY, id.y));
  const int2 whole = int2(int(x.y), int(y.y));
  const uint2 fraction = uint2(x.x >> 24, y.x >> 24);
  const bool onPixel = uNearest != 0 || (fraction.x | fraction.y) == 0;
  const uint4 pixel = onPixel ? PixelAt(whole) : Between(whole, fraction);
  txDst[id.xy] = ForFormat(FromBytes(pixel), uDstColorFormat);
}
