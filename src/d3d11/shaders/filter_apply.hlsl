// Grows a picture, as far as both reach.
#include "filter.hlsli"

cbuffer CSParam : register(b0) {
  uint uFilterRadiusW;
  uint uFilterRadiusH;
  uint uDummy1;
  uint uDummy2;
};

[numthreads(32, 32, 1)]
void FilterApply(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, SizeOf(txMaterial0))) return;
  txDst[position] = FromBytes(Grown(position, int2(uFilterRadiusW, uFilterRadiusH), 0));
}
