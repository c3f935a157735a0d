// The weights of a growing filter, one thread a weight, in 256ths.
RWTexture2D<float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  uint uRadius;
  float fAlpha;
  uint uFilterType;
  uint uDummy;
};

static const uint kSquare = 0, kDisc = 1, kCone = 2;

// 0 … 1 at an offset from the filter's middle; type 3 and above is a bell.
float Shape(int2 offset) {
  const int squared = dot(offset, offset);
  const int reach = 2 * int(uRadius) + 1;
  if (uFilterType == kSquare) return 1.0;
  if (uFilterType == kDisc) return 4 * squared <= reach * reach ? 1.0 : 0.0;
  if (uFilterType == kCone) return max(0.0, 1.0 - sqrt(float(squared)) / (float(uRadius) + 1.0));
  return exp(-4.5 * float(squared) / float(max(uRadius * uRadius, 1)));  // a deviation of a third of the radius
}

[numthreads(1, 1, 1)]
void FilterWeights(uint3 id : SV_DispatchThreadID) {
  if (any(id.xy > 2 * uRadius)) return;
  const float weight = fAlpha * Shape(int2(id.xy) - int(uRadius));
  txDst[id.xy] = floor(weight * 256.0 + 0.5) / 256.0;
}
