// What the shaders share.
//
// A view shows the pixels of either channel order as red, green, blue, alpha. A plane (format 2)
// shows its byte as red; it stands for alpha, that of white pixels where a colour is wanted. Pictures
// that are written are declared as the views of their formats are, unorm.

static const uint kPlane = 2;

// The block that most shaders begin their parameters with.
#define REGION_COPY_BLOCK  \
  uint uSrcColorFormat;    \
  uint uDstColorFormat;    \
  int nDstOriX, nDstOriY;  \
  int nSrcRgnSx, nSrcRgnSy; \
  int nSrcRgnW, nSrcRgnH;

#define REGION_START int2(nSrcRgnSx, nSrcRgnSy)
#define REGION_SIZE int2(nSrcRgnW, nSrcRgnH)
#define DST_ORIGIN int2(nDstOriX, nDstOriY)

// Groups overhang the region that is written: true for a thread outside a size. Beyond the edges of
// the destination nobody needs to ask; Direct3D drops such writes.
bool Outside(int2 position, int2 size) {
  return any(position < 0) || any(position >= size);
}

int2 SizeOf(Texture2D<float4> picture) {
  uint width, height;
  picture.GetDimensions(width, height);
  return int2(width, height);
}

uint4 ToBytes(float4 colour) { return uint4(colour * 255.0 + 0.5); }

float4 FromBytes(uint4 bytes) { return float4(bytes) / 255.0; }

float4 Load(Texture2D<float4> picture, int2 position, uint format) {
  const float4 colour = picture.Load(int3(position, 0));
  return format == kPlane ? float4(1.0, 1.0, 1.0, colour.r) : colour;
}

uint4 LoadBytes(Texture2D<float4> picture, int2 position, uint format) {
  return ToBytes(Load(picture, position, format));
}

// A colour as a picture of the format takes it.
float4 ForFormat(float4 colour, uint format) { return format == kPlane ? colour.aaaa : colour; }
