// Box blur in two passes over windows of 2 * radius + 1 pixels; the edge pixels go on outside the
// picture. A work-item slides the window's sum along a stretch of kStretch pixels.

#define kStretch 64

// The window's mean, rounded. `reciprocal` is 2^32 over the window, rounded up, which divides
// exactly for windows of 3 to 4096.
uchar4 Mean(uint4 sum, uint window, uint reciprocal) {
  return convert_uchar4(mul_hi(sum + window / 2, (uint4)(reciprocal)));
}

// One stretch of a line of `length` pixels that lie `step` apart.
void BlurStretch(__global uchar4* dst, __global const uchar4* src, size_t step, int length,
                 int first, int radius, uint reciprocal) {
  const int last = length - 1;
  const int end = min(first + kStretch, length);
  uint4 sum = (uint4)(0);
  for (int i = first - radius; i <= first + radius; ++i) {
    sum += convert_uint4(src[(size_t)clamp(i, 0, last) * step]);
  }
  for (int i = first; i < end; ++i) {
    dst[(size_t)i * step] = Mean(sum, 2 * (uint)radius + 1, reciprocal);
    sum += convert_uint4(src[(size_t)min(i + radius + 1, last) * step]);
    sum -= convert_uint4(src[(size_t)max(i - radius, 0) * step]);
  }
}

// Along rows. Work-items: stretches in a row or more, height.
__kernel void Blur_FastBlur_X_BYTE(__global uchar4* dst, __global const uchar4* src, int width,
                                   int height, int radius, uint reciprocal) {
  const int first = (int)get_global_id(0) * kStretch;
  if (first >= width) return;
  const size_t row = get_global_id(1) * (size_t)width;
  BlurStretch(dst + row, src + row, 1, width, first, radius, reciprocal);
}

// Along columns. Work-items: width or more, stretches in a column.
__kernel void Blur_FastBlur_Y_BYTE(__global uchar4* dst, __global const uchar4* src, int width,
                                   int height, int radius, uint reciprocal) {
  const int column = (int)get_global_id(0);
  if (column >= width) return;
  BlurStretch(dst + column, src + column, (size_t)width, height,
              (int)get_global_id(1) * kStretch, radius, reciprocal);
}
