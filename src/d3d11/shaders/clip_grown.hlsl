// Takes out of a grown region what the source itself covers.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
Texture2D<float4> txGrown : register(t1);  // of the region's size
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) { REGION_COPY_BLOCK };

[numthreads(32, 32, 1)]
void ClipGrown(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, REGION_SIZE)) return;
  uint4 grown = ToBytes(txGrown.Load(int3(position, 0)));
  const uint covered = LoadBytes(txMaterial0, REGION_START + position, uSrcColorFormat).a;
  grown.a = (grown.a * (255 - covered) + 127) / 255;
  txDst[DST_ORIGIN + position] = ForFormat(FromBytes(grown), uDstColorFormat);
}
