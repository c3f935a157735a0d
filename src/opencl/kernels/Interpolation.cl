// Resizes by bilinear interpolation. Work-items: the destination's width
// or more, its height.

#pragma OPENCL FP_CONTRACT OFF

// Where a destination pixel's centre lies among the source's, kept on the picture.
float SourcePosition(int at, float step, int size) {
  return clamp(((float)at + 0.5f) * step - 0.5f, 0.0f, (float)(size - 1));
}

float4 Between(uchar4 first, uchar4 second, float fraction) {
  const float4 a = convert_float4(first);
  return a + (convert_float4(second) - a) * fraction;
}

// A step is the source's size over the destination's.
__kernel void BilinearInterpolation_BYTE(__global uchar4* dst, int dstWidth,
                                         __global const uchar4* src, int srcWidth, int srcHeight,
                                         float stepX, float stepY) {
  const int x = (int)get_global_id(0);
  const int y = (int)get_global_id(1);
  if (x >= dstWidth) return;
  const float u = SourcePosition(x, stepX, srcWidth);
  const float v = SourcePosition(y, stepY, srcHeight);
  // A large picture's last place rounds beyond it.
  const int left = min((int)u, srcWidth - 1);
  const int top = min((int)v, srcHeight - 1);
  const int right = min(left + 1, srcWidth - 1);
  __global const uchar4* upper = src + (size_t)top * srcWidth;
  __global const uchar4* lower = src + (size_t)min(top + 1, srcHeight - 1) * srcWidth;
  const float4 a = Between(upper[left], upper[right], u - (float)left);
  const float4 b = Between(lower[left], lower[right], u - (float)left);
  dst[(size_t)y * dstWidth + x] = convert_uchar4(a + (b - a) * (v - (float)top) + 0.5f);
}
