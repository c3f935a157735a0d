// Resizes columns of what ResizeRows has made, and rounds.
#include "resize.hlsli"

RWTexture2D<unorm float4> txDst : register(u0);

[numthreads(32, 32, 1)]
void ResizeColumns(uint3 id : SV_DispatchThreadID) {
  const Taps taps = TapsOf(id.y);
  const int last = SizeOf(txMaterial0).y - 1;
  precise float4 sum = float4(0, 0, 0, 0);
  for (int i = 0; i < taps.count; ++i) {
    const int2 place = int2(id.x, min(taps.first + i, last));
    sum = sum + WeightOf(id.y, i) * txMaterial0.Load(int3(place, 0));
  }
  const float alpha = floor(clamp(sum.a, 0.0, 255.0) + 0.5);
  if (uWeighted != 0) sum.rgb = alpha == 0.0 ? float3(0, 0, 0) : sum.rgb / sum.a;
  const float4 bytes = float4(floor(clamp(sum.rgb, 0.0, 255.0) + 0.5), alpha);
  txDst[id.xy] = ForFormat(bytes / 255.0, uDstColorFormat);
}
