// The mean of a region's pixels within a radius, along rows or along columns. Windows end with the
// region; colours are weighted by alpha.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  REGION_COPY_BLOCK
  int nRadius;
  int nDummy1, nDummy2, nDummy3;
};

void Filter(int2 position, int2 direction) {
  if (Outside(position, REGION_SIZE)) return;
  const int place = dot(position, direction);
  const int last = dot(REGION_SIZE, direction) - 1;
  const int from = max(place - nRadius, 0) - place;
  const int to = min(place + nRadius, last) - place;
  uint alphas = 0;
  uint3 colours = 0;
  for (int i = from; i <= to; ++i) {
    const uint4 pixel =
        LoadBytes(txMaterial0, REGION_START + position + i * direction, uSrcColorFormat);
    alphas += pixel.a;
    colours += pixel.rgb * pixel.a;
  }
  const uint count = uint(to - from + 1);
  const uint3 colour = alphas == 0 ? uint3(0, 0, 0) : (colours + alphas / 2) / max(alphas, 1);
  txDst[DST_ORIGIN + position] =
      ForFormat(FromBytes(uint4(colour, (alphas + count / 2) / count)), uDstColorFormat);
}

[numthreads(32, 32, 1)]
void RegionFilterRows(uint3 id : SV_DispatchThreadID) { Filter(int2(id.xy), int2(1, 0)); }

[numthreads(32, 32, 1)]
void RegionFilterColumns(uint3 id : SV_DispatchThreadID) { Filter(int2(id.xy), int2(0, 1)); }
