// The chroma key of the CPU, key by key, with the least of the keys' results in each channel.
#include "common.hlsli"

struct ColorKey {
  float r, g, b;  // 0 … 255
  int angle;
  int denoise;
  uint nDummy1, nDummy2, nDummy3;
};

Texture2D<float4> txMaterial0 : register(t0);
StructuredBuffer<ColorKey> ColorKeys : register(t1);
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  REGION_COPY_BLOCK
  uint uKeys;
  uint nDummy1, nDummy2, nDummy3;
};

// What hangs on a key alone: a group works it out once, for some keys at a time.
struct Constants {
  float3 yuv;
  float kg;       // the key's distance from grey
  float2 slopes;  // tangent and cotangent of its angle
};
static const uint kBatch = 64;
groupshared Constants constants[kBatch];

static const float kRadians = 3.14159265358979 / 180.0;

// Luma, and chroma around 0, as x, y and z.
float3 ToYuv(float3 rgb) {
  precise float3 yuv;
  yuv.x = 0.257 * rgb.r + 0.504 * rgb.g + 0.098 * rgb.b + 16.0;
  yuv.y = -0.148 * rgb.r - 0.291 * rgb.g + 0.439 * rgb.b;
  yuv.z = 0.439 * rgb.r - 0.368 * rgb.g - 0.071 * rgb.b;
  return yuv;
}

uint3 ToRgb(float3 yuv) {
  const float y = (yuv.x - 16.0) * 1.164;
  const float3 rgb =
      float3(y + 1.596 * yuv.z, y - 0.392 * yuv.y - 0.813 * yuv.z, y + 2.017 * yuv.y);
  return uint3(max(min(rgb, 255.0), 0.0));
}

// Tangent and cotangent of whole degrees, to the last bits: graphics hardware's own sine and cosine
// have fewer. The rule's pi is a little short, which tells where many turns add up and at multiples
// of 90.
float2 TangentAndCotangent(int degrees) {
  int rest = degrees % 180;
  rest -= rest > 90 ? 180 : rest < -90 ? -180 : 0;
  const float slip = float(degrees) * -1.99433e-11;
  const bool steep = abs(rest) > 45;
  const float angle = steep ? float(sign(rest) * 90 - rest) * kRadians - slip
                            : float(rest) * kRadians + slip;
  const float s = angle * angle;
  const float sine =
      angle * (1.0 - s / 6.0 * (1.0 - s / 20.0 * (1.0 - s / 42.0 * (1.0 - s / 72.0))));
  const float cosine = 1.0 - s / 2.0 * (1.0 - s / 12.0 * (1.0 - s / 30.0 * (1.0 - s / 56.0)));
  const float2 both = float2(sine / cosine, degrees == 0 ? 0.0 : cosine / sine);
  return steep ? both.yx : both;
}

Constants ConstantsOf(ColorKey k) {
  Constants c;
  c.yuv = ToYuv(float3(k.r, k.g, k.b));
  precise const float kg = sqrt(c.yuv.y * c.yuv.y + c.yuv.z * c.yuv.z);
  c.kg = kg;
  c.slopes = TangentAndCotangent(k.angle);
  return c;
}

uint4 KeyNearGrey(uint4 pixel, float3 yuv, float3 key, ColorKey k) {
  const float2 chroma = yuv.yz - key.yz;
  const float distance = sqrt(dot(chroma, chroma));
  const float difference = abs(yuv.x - key.x);
  if (pixel.a != 0 && uint(k.denoise) > distance && uint(k.angle) > difference) {
    pixel.a = uint(difference);
  }
  return pixel;
}

uint4 KeyCone(uint4 pixel, float3 yuv, Constants c, int denoise) {
  const float3 key = c.yuv;
  const float kg = c.kg;
  precise const float x = (key.y * yuv.y + key.z * yuv.z) / kg;
  precise const float z = (key.y * yuv.z - key.z * yuv.y) / kg;
  float alpha = pixel.a / 255.0;
  if (abs(z) <= x * c.slopes.x) {
    const float edge = abs(z * c.slopes.y);
    const float past = max(0.0, x - edge);
    const float left = 1.0 - past / kg;
    yuv.x = max(0.0, yuv.x - past * (key.x / kg));
    yuv.y = (key.y * edge - key.z * z) / kg;
    yuv.z = (key.z * edge + key.y * z) / kg;
    alpha = pixel.a * clamp(left * left, 0.0, 1.0) / 255.0;
    precise const float squared = (x - kg) * (x - kg) + z * z;
    const float reach = float(min(denoise, 4095));
    if (reach >= 0.0 && reach * reach >= squared) alpha = 0.0;
  }
  return uint4(ToRgb(yuv), uint(alpha * 255.0));
}

uint4 Keyed(uint4 pixel, float3 yuv, Constants c, ColorKey k) {
  return c.kg < 13.0 ? KeyNearGrey(pixel, yuv, c.yuv, k) : KeyCone(pixel, yuv, c, k.denoise);
}

[numthreads(32, 32, 1)]
void ChromaKey(uint3 id : SV_DispatchThreadID, uint thread : SV_GroupIndex) {
  const int2 position = int2(id.xy);
  const uint4 pixel = LoadBytes(txMaterial0, REGION_START + position, uSrcColorFormat);
  const float3 yuv = ToYuv(float3(pixel.rgb));
  uint4 keyed = 255;
  for (uint first = 0; first < uKeys; first += kBatch) {
    const uint count = min(uKeys - first, kBatch);
    if (thread < count) constants[thread] = ConstantsOf(ColorKeys[first + thread]);
    GroupMemoryBarrierWithGroupSync();
    for (uint i = 0; i < count; ++i) {
      keyed = min(keyed, Keyed(pixel, yuv, constants[i], ColorKeys[first + i]));
    }
    GroupMemoryBarrierWithGroupSync();
  }
  if (Outside(position, REGION_SIZE)) return;
  txDst[DST_ORIGIN + position] = ForFormat(FromBytes(keyed), uDstColorFormat);
}
