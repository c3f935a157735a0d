// Maps a picture by a matrix and samples it bilinearly; what lies outside it is clear. Work-items:
// the destination's width or more, its height.

#pragma OPENCL FP_CONTRACT OFF

float4 PixelAt(__global const uchar4* src, int width, int height, int x, int y) {
  if (x < 0 || y < 0 || x >= width || y >= height) return (float4)(0.0f);
  return convert_float4(src[(size_t)y * width + x]);
}

// (across, down, offset) . (x, y, 1), x and y at the centre of a destination pixel; kept where its
// conversion to an integer is safe. Everything a pixel or more outside the source is equally clear.
float SourcePosition(float across, float down, float offset, float x, float y, int size) {
  const float at = across * x + down * y + offset - 0.5f;
  return fmin(fmax(at, -2.0f), (float)size + 1.0f);
}

__kernel void TransformF_BYTE(__global uchar4* dst, int dstWidth, __global const uchar4* src,
                              int srcWidth, int srcHeight, float m0, float m1, float m2, float m3,
                              float m4, float m5) {
  const int column = (int)get_global_id(0);
  const int row = (int)get_global_id(1);
  if (column >= dstWidth) return;
  const float x = (float)column + 0.5f;
  const float y = (float)row + 0.5f;
  const float u = SourcePosition(m0, m1, m2, x, y, srcWidth);
  const float v = SourcePosition(m3, m4, m5, x, y, srcHeight);
  const int left = (int)floor(u);
  const int top = (int)floor(v);
  const float fractionX = u - (float)left;
  const float fractionY = v - (float)top;
  const float4 p00 = PixelAt(src, srcWidth, srcHeight, left, top);
  const float4 p10 = PixelAt(src, srcWidth, srcHeight, left + 1, top);
  const float4 p01 = PixelAt(src, srcWidth, srcHeight, left, top + 1);
  const float4 p11 = PixelAt(src, srcWidth, srcHeight, left + 1, top + 1);
  const float4 a = p00 + (p10 - p00) * fractionX;
  const float4 b = p01 + (p11 - p01) * fractionX;
  dst[(size_t)row * dstWidth + column] = convert_uchar4(a + (b - a) * fractionY + 0.5f);
}
