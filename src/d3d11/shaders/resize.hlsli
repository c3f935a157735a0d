// What the two passes of the filtered resize share: a table of the processor's, with a column for
// each pixel of the destination's side. It holds the weights of the pixels that make it, each beside
// the first one's place. Sums are in the processor's order.
#include "common.hlsli"

Texture2D<float4> txMaterial0 : register(t0);
Texture2D<float2> txTaps : register(t1);
cbuffer CSParam : register(b0) {
  uint uSrcColorFormat;
  uint uDstColorFormat;
  uint uWeighted;  // by alpha
  uint uDummy;
};

struct Taps {
  int count, first;
};

Taps TapsOf(uint place) {
  uint width, height;
  txTaps.GetDimensions(width, height);
  Taps taps;
  taps.count = place < width ? int(height) : 0;
  taps.first = int(txTaps.Load(int3(place, 0, 0)).y);
  return taps;
}

float WeightOf(uint place, int tap) { return txTaps.Load(int3(place, tap, 0)).x; }
