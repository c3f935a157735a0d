// Grows a region; on demand without the part that the source itself covers.
#include "filter.hlsli"

cbuffer CSParam : register(b0) {
  REGION_COPY_BLOCK
  uint uFilterRadiusW;
  uint uFilterRadiusH;
  uint uClipSrcA;
  uint uDummy1;
};

[numthreads(32, 32, 1)]
void FilterApplyToRegion(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, REGION_SIZE)) return;
  const int2 place = REGION_START + position;
  uint4 grown = Grown(place, int2(uFilterRadiusW, uFilterRadiusH), uSrcColorFormat);
  if (uClipSrcA != 0) {
    const uint covered = LoadBytes(txMaterial0, place, uSrcColorFormat).a;
    grown.a = (grown.a * (255 - covered) + 127) / 255;
  }
  txDst[DST_ORIGIN + position] = ForFormat(FromBytes(grown), uDstColorFormat);
}
