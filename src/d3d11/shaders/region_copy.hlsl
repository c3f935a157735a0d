// Copies a region: between pictures of one kind, from colour to a plane, and from a plane to colour.
#include "common.hlsli"

Texture2D<float4> txSrc : register(t0);
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) { REGION_COPY_BLOCK };

[numthreads(32, 32, 1)]
void RegionCopy(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, REGION_SIZE)) return;
  txDst[DST_ORIGIN + position] = txSrc.Load(int3(REGION_START + position, 0));
}

[numthreads(32, 32, 1)]
void RegionCopyToPlane(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, REGION_SIZE)) return;
  txDst[DST_ORIGIN + position] = txSrc.Load(int3(REGION_START + position, 0)).aaaa;
}

[numthreads(32, 32, 1)]
void RegionCopyFromPlane(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, REGION_SIZE)) return;
  txDst[DST_ORIGIN + position] = Load(txSrc, REGION_START + position, kPlane);
}
