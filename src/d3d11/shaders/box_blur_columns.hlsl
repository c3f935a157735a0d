// The mean of the rows' sums along columns, rounded.
#include "box_blur.hlsli"

Texture2D<uint4> txSrc : register(t0);
Texture2D<uint4> txRemainder : register(t1);
Texture2D<uint4> txDivisor : register(t2);
RWTexture2D<unorm float4> txDst : register(u0);

struct Sum {
  uint4 whole, remainder;
};

void Add(inout Sum sum, uint x, uint y) {
  sum.whole += txSrc.Load(int3(x, y, 0));
  sum.remainder += txRemainder.Load(int3(x, y, 0));
}

void Subtract(inout Sum sum, uint x, uint y) {
  sum.whole -= txSrc.Load(int3(x, y, 0));
  sum.remainder -= txRemainder.Load(int3(x, y, 0));
}

[numthreads(32, 1, 1)]
void BoxBlurColumns(uint3 id : SV_DispatchThreadID) {
  const uint x = id.x;
  if (x >= uWidth) return;
  const uint divisor = txDivisor.Load(int3(x, 0, 0)).x;
  const uint begin = id.y * Stretch();
  const uint end = min(begin + Stretch(), uHeight);
  Sum sum = {uint4(0, 0, 0, 0), uint4(0, 0, 0, 0)};
  for (uint y = WindowBegin(begin); y < min(begin + uBlurRadius, uHeight); ++y) Add(sum, x, y);
  for (uint place = begin; place < end; ++place) {
    if (place + uBlurRadius < uHeight) Add(sum, x, place + uBlurRadius);
    const uint rows = WindowSize(place, uHeight);
    const uint half = divisor * rows / 2;
    const uint4 mean = (sum.whole + (sum.remainder + half) / divisor) / rows;
    txDst[uint2(x, place)] = FromBytes(mean);
    if (place >= uBlurRadius) Subtract(sum, x, place - uBlurRadius);
  }
}
