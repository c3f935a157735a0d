// Scales the material into a rectangle by the mean of a 4 x 4 grid of samples, colours weighted by
// alpha. Steps have 16.16 bits.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  uint uSrcColorFormat;
  uint uDstColorFormat;
  uint ufxSrcXStep, ufxSrcYStep;  // from pixel to pixel
  uint uInnerXStep, uInnerYStep;  // from sample to sample
  int nDstRgnSx, nDstRgnSy, nDstRgnEx, nDstRgnEy;
  int nDummy1, nDummy2;
};

[numthreads(32, 32, 1)]
void ScaledCopy(uint3 id : SV_DispatchThreadID) {
  const int2 start = int2(nDstRgnSx, nDstRgnSy);
  const int2 position = max(start, 0) + int2(id.xy);
  if (Outside(position, int2(nDstRgnEx, nDstRgnEy))) return;
  const uint2 origin = (uint2(position) - uint2(start)) * uint2(ufxSrcXStep, ufxSrcYStep);
  uint alphas = 0;
  uint3 colours = 0;
  for (uint i = 0; i < 16; ++i) {
    const uint2 place = origin + uint2(i % 4, i / 4) * uint2(uInnerXStep, uInnerYStep);
    const uint4 pixel = LoadBytes(txMaterial0, int2(place >> 16), uSrcColorFormat);
    alphas += pixel.a;
    colours += pixel.rgb * pixel.a;
  }
  const uint4 mean = uint4(colours / max(alphas, 1), alphas / 16);
  txDst[position] =
      ForFormat(mean.a == 0 ? float4(0, 0, 0, 0) : FromBytes(mean), uDstColorFormat);
}
