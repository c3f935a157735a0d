// Borders of copied edge pixels: a pixel outside the picture takes the nearest one inside. `edges`
// holds the picture's top row, bottom row, left column and right column; `around` gets the rows above
// the picture and those below it, corners included, then the columns left of it and those right of
// it. Each kernel makes its part, one work-item a pixel; there may be work-items to spare in a line.

void CopyPixel(__global uchar* around, size_t to, __global const uchar* edges, size_t from,
               int pixelBytes) {
  if (pixelBytes == 4) {
    ((__global uint*)around)[to] = ((__global const uint*)edges)[from];
  } else {
    around[to] = edges[from];
  }
}

// Pixels in a row with its border.
size_t FullWidth(int width, int border) { return (size_t)width + 2 * (size_t)border; }

// The rows above the picture, then the columns to its left. Work-items: (width + 2 * border) *
// border + border * height, in one line.
__kernel void ExtendBoundary_BYTE(__global uchar* around, __global const uchar* edges, int width,
                                  int height, int border, int pixelBytes) {
  const size_t item = get_global_id(0);
  const size_t fullWidth = FullWidth(width, border);
  const size_t above = fullWidth * border;
  if (item < above) {
    const int x = (int)(item % fullWidth);
    CopyPixel(around, item, edges, clamp(x - border, 0, width - 1), pixelBytes);
  } else if (item < above + (size_t)border * height) {
    const size_t row = (item - above) / border;
    CopyPixel(around, above + item, edges, 2 * (size_t)width + row, pixelBytes);
  }
}

// The columns to the picture's right. Work-items: border, height.
__kernel void ExtendBoundaryRight_BYTE(__global uchar* around, __global const uchar* edges,
                                       int width, int height, int border, int pixelBytes) {
  const size_t x = get_global_id(0);
  const size_t y = get_global_id(1);
  if (x >= (size_t)border) return;
  const size_t before = (2 * FullWidth(width, border) + height) * border;
  CopyPixel(around, before + y * border + x, edges, 2 * (size_t)width + height + y, pixelBytes);
}

// The rows below the picture. Work-items: width + 2 * border, border.
__kernel void ExtendBoundaryBottom_BYTE(__global uchar* around, __global const uchar* edges,
                                        int width, int height, int border, int pixelBytes) {
  const size_t x = get_global_id(0);
  const size_t y = get_global_id(1);
  const size_t fullWidth = FullWidth(width, border);
  if (x >= fullWidth) return;
  const int column = clamp((int)x - border, 0, width - 1);
  CopyPixel(around, (border + y) * fullWidth + x, edges, (size_t)width + column, pixelBytes);
}
