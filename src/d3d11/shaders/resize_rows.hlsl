// Resizes rows: sums of weighted bytes, of colours times alpha where alpha weighs.
#include "resize.hlsli"

RWTexture2D<float4> txDst : register(u0);

[numthreads(32, 32, 1)]
void ResizeRows(uint3 id : SV_DispatchThreadID) {
  const Taps taps = TapsOf(id.x);
  const int last = SizeOf(txMaterial0).x - 1;  // beyond it weights are 0
  precise float4 sum = float4(0, 0, 0, 0);
  for (int i = 0; i < taps.count; ++i) {
    const int2 place = int2(min(taps.first + i, last), id.y);
    uint4 pixel = LoadBytes(txMaterial0, place, uSrcColorFormat);
    if (uWeighted != 0) pixel.rgb *= pixel.a;
    sum = sum + WeightOf(id.x, i) * float4(pixel);
  }
  txDst[id.xy] = sum;
}
