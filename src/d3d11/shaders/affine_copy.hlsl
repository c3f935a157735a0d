// Copies a region through an affine map from destination to source, in 16.16 bits, between four
// pixels with 8-bit weights. Colours are weighted by alpha.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  REGION_COPY_BLOCK
  int nFxSrcXStart, nFxSrcYStart;
  int nFxSrcXStepX, nFxSrcXStepY;  // of the source's column, for a column and for a row
  int nFxSrcYStepX, nFxSrcYStepY;  // of the source's row
  int nDummy1, nDummy2;
};

[numthreads(32, 32, 1)]
void AffineCopy(uint3 id : SV_DispatchThreadID) {
  const int2 column = int2(nFxSrcXStepX, nFxSrcYStepX);
  const int2 row = int2(nFxSrcXStepY, nFxSrcYStepY);
  const int2 place =
      int2(nFxSrcXStart, nFxSrcYStart) + int(id.x) * column + int(id.y) * row;
  const int2 whole = place >> 16;
  if (Outside(whole - REGION_START, REGION_SIZE)) return;

  const int2 last = REGION_START + REGION_SIZE - 1;
  const uint2 fraction = (uint2(place) >> 8) & 255;
  uint alphas = 0;
  uint3 colours = 0;
  for (int i = 0; i < 4; ++i) {
    const int2 step = int2(i & 1, i >> 1);
    const uint4 pixel = LoadBytes(txMaterial0, min(whole + step, last), uSrcColorFormat);
    const uint2 weight = step == 1 ? fraction : 256 - fraction;
    const uint alpha = pixel.a * weight.x * weight.y;
    alphas += alpha;
    colours += pixel.rgb * alpha;
  }
  const uint4 mean = uint4((colours + alphas / 2) / max(alphas, 1), (alphas + 32768) >> 16);
  txDst[DST_ORIGIN + int2(id.xy)] = ForFormat(FromBytes(mean), uDstColorFormat);
}
