// Copies a region. Where it leaves the material, the material's edge goes on.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) { REGION_COPY_BLOCK };

[numthreads(32, 32, 1)]
void MaterialCopy(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, REGION_SIZE)) return;
  const int2 place = clamp(REGION_START + position, 0, SizeOf(txMaterial0) - 1);
  txDst[DST_ORIGIN + position] =
      ForFormat(Load(txMaterial0, place, uSrcColorFormat), uDstColorFormat);
}
