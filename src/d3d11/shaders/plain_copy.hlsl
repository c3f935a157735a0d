// Copies a picture, as far as both reach.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
RWTexture2D<unorm float4> txDst : register(u0);

[numthreads(32, 32, 1)]
void PlainCopy(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, SizeOf(txMaterial0))) return;
  txDst[position] = txMaterial0.Load(int3(position, 0));
}
