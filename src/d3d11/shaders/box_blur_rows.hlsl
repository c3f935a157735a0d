// Running sums along rows. A sum is kept as the whole part and the remainder of its division by the
// window's size, so that the columns' sums fit 32 bits whatever the radius; no digit is lost.
#include "box_blur.hlsli"

Texture2D<float4> txSrc : register(t0);
RWTexture2D<uint4> txDst : register(u0);
RWTexture2D<uint4> txRemainder : register(u1);
RWTexture2D<uint4> txDivisor : register(u2);  // one row: windows of a column are alike

uint4 Pixel(uint x, uint y) { return ToBytes(txSrc.Load(int3(x, y, 0))); }

[numthreads(32, 1, 1)]
void BoxBlurRows(uint3 id : SV_DispatchThreadID) {
  const uint y = id.x;
  if (y >= uHeight) return;
  const uint begin = id.y * Stretch();
  const uint end = min(begin + Stretch(), uWidth);
  uint4 sum = 0;
  for (uint x = WindowBegin(begin); x < min(begin + uBlurRadius, uWidth); ++x) sum += Pixel(x, y);
  for (uint place = begin; place < end; ++place) {
    if (place + uBlurRadius < uWidth) sum += Pixel(place + uBlurRadius, y);
    const uint divisor = WindowSize(place, uWidth);
    txDst[uint2(place, y)] = sum / divisor;
    txRemainder[uint2(place, y)] = sum % divisor;
    if (y == 0) txDivisor[uint2(place, 0)] = uint4(divisor, divisor, divisor, divisor);
    if (place >= uBlurRadius) sum -= Pixel(place - uBlurRadius, y);
  }
}
