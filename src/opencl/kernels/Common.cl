// Borders of copied edge pixels. The area holds the picture with `border` pixels around it; a pixel
// outside the picture takes the nearest one inside. Each kernel fills its part of the border, one
// work-item a pixel; the parts do not depend on each other. There may be work-items to spare in a
// line.

void ExtendTo(__global uchar* area, int pitch, int width, int height, int border, int pixelBytes,
              int x, int y) {
  const int fromX = clamp(x, border, border + width - 1);
  const int fromY = clamp(y, border, border + height - 1);
  __global uchar* to = area + (size_t)y * pitch + (size_t)x * pixelBytes;
  __global const uchar* from = area + (size_t)fromY * pitch + (size_t)fromX * pixelBytes;
  for (int i = 0; i < pixelBytes; ++i) to[i] = from[i];
}

// The rows above the picture, corners included, then the columns to its left. Work-items:
// (width + 2 * border) * border + border * height, in one line.
__kernel void ExtendBoundary_BYTE(__global uchar* area, int pitch, int width, int height,
                                  int border, int pixelBytes) {
  const size_t item = get_global_id(0);
  const size_t rowItems = (size_t)width + 2 * (size_t)border;
  const size_t above = rowItems * border;
  if (item >= above + (size_t)border * height) return;
  const int x = item < above ? (int)(item % rowItems) : (int)((item - above) % border);
  const int y = item < above ? (int)(item / rowItems) : border + (int)((item - above) / border);
  ExtendTo(area, pitch, width, height, border, pixelBytes, x, y);
}

// The columns to the picture's right. Work-items: border, height.
__kernel void ExtendBoundaryRight_BYTE(__global uchar* area, int pitch, int width, int height,
                                       int border, int pixelBytes) {
  const int x = (int)get_global_id(0);
  const int y = (int)get_global_id(1);
  if (x >= border) return;
  ExtendTo(area, pitch, width, height, border, pixelBytes, border + width + x, border + y);
}

// The rows below the picture, corners included. Work-items: width + 2 * border, border.
__kernel void ExtendBoundaryBottom_BYTE(__global uchar* area, int pitch, int width, int height,
                                        int border, int pixelBytes) {
  const size_t x = get_global_id(0);
  const int y = (int)get_global_id(1);
  if (x >= (size_t)width + 2 * (size_t)border) return;
  ExtendTo(area, pitch, width, height, border, pixelBytes, (int)x, border + height + y);
}
