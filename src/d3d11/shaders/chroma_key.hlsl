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
RWTexture2D<float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  REGION_COPY_BLOCK
  uint uKeys;
  uint nDummy1, nDummy2, nDummy3;
};

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
// have fewer. The rule's pi is a little short, which is all that is left at multiples of 90.
float2 TangentAndCotangent(int degrees) {
  const float slip = float(-degrees) * 1.99433e-11;
  const int turns = degrees < 0 ? (degrees - 90) / 180 : (degrees + 90) / 180;
  const int rest = degrees - 180 * turns;
  if (rest == 0) return float2(slip, degrees == 0 ? 0.0 : 1.0 / slip);
  if (abs(rest) == 90) return float2(-1.0 / slip, -slip);
  const bool steep = abs(rest) > 45;
  const float angle = float(steep ? 90 - abs(rest) : abs(rest)) * (3.14159265 / 180.0);
  const float s = angle * angle;
  const float sine =
      angle * (1.0 - s / 6.0 * (1.0 - s / 20.0 * (1.0 - s / 42.0 * (1.0 - s / 72.0))));
  const float cosine = 1.0 - s / 2.0 * (1.0 - s / 12.0 * (1.0 - s / 30.0 * (1.0 - s / 56.0)));
  const float2 both = float(sign(rest)) * float2(sine / cosine, cosine / sine);
  return steep ? both.yx : both;
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

uint4 KeyCone(uint4 pixel, float3 yuv, float3 key, float kg, ColorKey k) {
  precise const float x = (key.y * yuv.y + key.z * yuv.z) / kg;
  precise const float z = (key.y * yuv.z - key.z * yuv.y) / kg;
  const float2 slopes = TangentAndCotangent(k.angle);
  float alpha = pixel.a / 255.0;
  if (abs(z) <= x * slopes.x) {
    const float edge = abs(z * slopes.y);
    const float past = max(0.0, x - edge);
    const float left = 1.0 - past / kg;
    yuv.x = max(0.0, yuv.x - past * (key.x / kg));
    yuv.y = (key.y * edge - key.z * z) / kg;
    yuv.z = (key.z * edge + key.y * z) / kg;
    alpha = pixel.a * clamp(left * left, 0.0, 1.0) / 255.0;
    precise const float squared = (x - kg) * (x - kg) + z * z;
    const float reach = float(min(k.denoise, 4095));
    if (reach >= 0.0 && reach * reach >= squared) alpha = 0.0;
  }
  return uint4(ToRgb(yuv), uint(alpha * 255.0));
}

uint4 Keyed(uint4 pixel, ColorKey k) {
  const float3 yuv = ToYuv(float3(pixel.rgb));
  const float3 key = ToYuv(float3(k.r, k.g, k.b));
  precise const float kg = sqrt(key.y * key.y + key.z * key.z);
  return kg < 13.0 ? KeyNearGrey(pixel, yuv, key, k) : KeyCone(pixel, yuv, key, kg, k);
}

[numthreads(32, 32, 1)]
void ChromaKey(uint3 id : SV_DispatchThreadID) {
  const int2 position = int2(id.xy);
  if (Outside(position, REGION_SIZE)) return;
  const uint4 pixel = LoadBytes(txMaterial0, REGION_START + position, uSrcColorFormat);
  uint4 keyed = Keyed(pixel, ColorKeys[0]);
  for (uint i = 1; i < uKeys; ++i) keyed = min(keyed, Keyed(pixel, ColorKeys[i]));
  txDst[DST_ORIGIN + position] = ForFormat(FromBytes(keyed), uDstColorFormat);
}
