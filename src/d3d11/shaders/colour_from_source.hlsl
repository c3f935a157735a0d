// Gives one colour the shape of a source: its alpha.
#include "common.hlsli"

Texture2D<float4> txSrc : register(t0);
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  int nDstSx, nDstSy;
  float fColorR, fColorG, fColorB;
  float fDummy1;
  int nDummy2, nDummy3;
};

[numthreads(32, 32, 1)]
void ColourFromSource(uint3 id : SV_DispatchThreadID) {
  const int2 place = int2(id.xy);
  if (Outside(place, SizeOf(txSrc))) return;
  txDst[int2(nDstSx, nDstSy) + place] = float4(fColorR, fColorG, fColorB, txSrc.Load(int3(place, 0)).a);
}
