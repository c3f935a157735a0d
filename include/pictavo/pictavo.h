/// @file
/// Pictavo: image processing for video-editing hosts on 64-bit Windows.
///
/// This header is the whole contract between a host and Pictavo.dll: the interface chain IPictavo
/// to IPictavo6 (one table of 111 methods), the records the methods take, the result codes and the
/// exports. It needs nothing but <stddef.h> and <stdint.h> and compiles as C++17 or later with any
/// compiler that follows the platform's calling convention.
///
/// What holds for every method unless its own comment says otherwise:
///
/// - Pixels. A 32-bit pixel is four bytes in memory, blue, green, red, alpha (0xAARRGGBB as a
///   little-endian word). Alpha is straight unless a method says premultiplied.
/// - Buffers. A pointer to the first byte of the top row, width and height in pixels, pitch in
///   bytes from the start of one row to the start of the next. "Packed" buffers take no pitch:
///   their pixels are contiguous. No alignment is asked for. Nothing outside the described rows is
///   read or written, nor are the bytes between two rows that a wider pitch leaves; a pitch may be
///   negative (rows run upwards from the pointer) where no check refuses it.
/// - Aliasing. Source and destination may be the same picture at the same place; any other overlap
///   gives pixels that depend on the instruction-set level.
/// - Ownership. Pictures, records and arrays stay the host's. Nothing is kept between calls.
/// - Resizing. Rows follow their pitches literally: those of a source may share bytes or run
///   upwards, those of a destination are written in order, a later one over an earlier. Source and
///   destination must not overlap, or the pixels depend on the level. Positions have 16.16 bits
///   where a comment says so; a source wider or higher than 32767 is then refused with
///   PICTAVO_E_INVALIDARG.
/// - Flip. A non-zero flip reads the source bottom-up; a destination is always written top-down.
/// - Opacity ramp. Two floats fade a picture from its top row to its bottom row: row r of h uses
///   the factor r / h * (end - start) + start in single precision. Factors are not clamped. A
///   product with one that does not fit 32 bits, or is not a number, counts as the most negative
///   integer.
/// - Results. A method whose result is called a status returns 1 for success and 0 for bad
///   arguments; every other u32 result is one of the PICTAVO_ codes below. A refused call writes
///   nothing. No exception leaves a method.
/// - Levels. A method runs the fastest build that the object's instruction-set level allows. The
///   portable build (below level 3) is the reference; every other build gives its bytes except
///   where the method's comment states a difference.
/// - Floating point. Results do not depend on the calling thread's floating-point state (rounding,
///   exceptions, the x87 unit), which is the same after a call.
/// - Threads. Methods may be called from several threads at once on one object, as long as no
///   picture being written is used by another call. Creating and releasing are the host's to order:
///   no call may overlap the release of its object.
/// - Not built. A method marked so, or called Reserved, touches nothing and returns
///   PICTAVO_E_NOTIMPL whatever it is given, so that a host can fall back.
///
/// Parameters of one name are the same in every method, unless it says otherwise itself. No pointer
/// may be null: the method's codes tell what becomes of one.
///
/// | parameter | what it is |
/// |---|---|
/// | `u8* dst`, `u32* dst` | the picture that is written: first byte of its top row |
/// | `ImageDesc* dst` | record of the picture that is written; the record itself is only read |
/// | `const ImageDesc* dst` | record of the texture that is written |
/// | `IPictavoSurface* dst` | the picture that is written |
/// | `const u8* src`, `const u32* src` | the picture that is read: first byte of its top row |
/// | `const ImageDesc* src` | record of the picture that is read |
/// | `IPictavoSurface* src` | the picture that is read |
/// | `u8* buffer`, `u32* buffer` | the picture that is changed: first byte of its top row |
/// | `const u8* buffer`, `const u8* pixels` | the picture to measure: first byte of its top row |
/// | `const ImageDesc* image` | record of the picture, and of the buffer around it |
/// | `width` | pixels in a row, of every picture of the call |
/// | `height` | rows, of every picture of the call |
/// | `pitch` | bytes from row to row, of every picture of the call |
/// | `dstPitch` | bytes from row to row of the destination |
/// | `srcPitch` | bytes from row to row of the source |
/// | `dstWidth` | pixels in a row of the destination |
/// | `dstHeight` | rows of the destination |
/// | `srcWidth` | pixels in a row of the source |
/// | `srcHeight` | rows of the source |
/// | `forceOpaque` | not 0: all alphas become 255 |
/// | `fullSize` | 0: the destination's last column and row are not written |
/// | `flip` | not 0: the source is read from its bottom row to its top row |
/// | `opacityStart` | factor of the source's opacity in the top row, 0 … 1 or as the rule says |
/// | `opacityEnd` | the factor that the row below the last one would have |
/// | `opacity` | of the whole source: 0 leaves the destination, 255 is the source as it is |
/// | `backdrop` | 0xAARRGGBB; unless AA is 0, the colour that stands in for the destination's |
/// | `colour` | 0xAARRGGBB |
/// | `const i32* rect` | left, top, right, bottom in pixels, the last two beyond the last pixel |
/// | `border` | pixels on every side; 0 writes nothing |
/// | `param` | what to do: a record, whose fields state their units and ranges |
/// | `u32 model` | PICTAVO_COLOR_… |
/// | `u32 matrix` | PICTAVO_MATRIX_… with PICTAVO_COLOR_YUV, else 0 |
/// | `u32 range` | PICTAVO_RANGE_… |
/// | `bins` | takes the counts; room for binCount |
/// | `binCount` | bins, at least 1 |
/// | `ID3D11Device* device` | the host's device, which the textures are of |
/// | `ID3D11DeviceContext* context` | a context of that device, which gets the work |
#ifndef PICTAVO_PICTAVO_H_
#define PICTAVO_PICTAVO_H_

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32) && !defined(PICTAVO_BUILDING)
/// Marks the DLL's exports for hosts that link it.
#define PICTAVO_API __declspec(dllimport)
#else
#define PICTAVO_API
#endif

// Direct3D 11's own, from <d3d11.h>.
struct ID3D11Device;
struct ID3D11DeviceContext;
struct ID3D11Texture2D;

namespace pictavo {

using u8 = uint8_t;    ///< a byte
using u16 = uint16_t;  ///< a colour in a table
using i32 = int32_t;   ///< a size, a coordinate or a number
using u32 = uint32_t;  ///< a result code, a colour or a count
using i64 = int64_t;   ///< a number that needs 64 bits
using f32 = float;     ///< a factor

/// @name Result codes
/// The values of the platform's HRESULTs of the same names.
/// @{
inline constexpr u32 PICTAVO_S_OK = 0;                     ///< done
inline constexpr u32 PICTAVO_S_FALSE = 1;                  ///< nothing to do (an empty picture)
inline constexpr u32 PICTAVO_E_NOTIMPL = 0x80004001u;      ///< the method exists but does nothing
inline constexpr u32 PICTAVO_E_POINTER = 0x80004003u;      ///< a required pointer is null
inline constexpr u32 PICTAVO_E_FAIL = 0x80004005u;         ///< a step failed
inline constexpr u32 PICTAVO_E_OUTOFMEMORY = 0x8007000Eu;  ///< an allocation failed
inline constexpr u32 PICTAVO_E_INVALIDARG = 0x80070057u;   ///< an argument cannot be used
/// @}

/// @name Instruction-set levels
/// Steps of the ladder 0 … 8 that choose a build; the steps between behave like the one below.
/// @{
inline constexpr i32 PICTAVO_LEVEL_PORTABLE = 0;  ///< portable code
inline constexpr i32 PICTAVO_LEVEL_SSE2 = 3;      ///< 128-bit integer code
inline constexpr i32 PICTAVO_LEVEL_SSSE3 = 5;     ///< … with byte shuffles
inline constexpr i32 PICTAVO_LEVEL_SSE4_1 = 6;    ///< … with SSE4.1
inline constexpr i32 PICTAVO_LEVEL_AVX2 = 8;      ///< 256-bit integer code
/// @}

/// @name Colour spaces
/// What slots 88 to 92 convert RGB to and from: a model, for YUV a matrix (for the others 0), and
/// the range of the numbers.
/// @{
inline constexpr u32 PICTAVO_COLOR_YUV = 0;      ///< luma and two colour differences
inline constexpr u32 PICTAVO_COLOR_HSV = 1;      ///< hue, saturation, value
inline constexpr u32 PICTAVO_COLOR_HSL = 2;      ///< hue, saturation, lightness
inline constexpr u32 PICTAVO_MATRIX_BT601 = 0;   ///< ITU-R BT.601: standard definition
inline constexpr u32 PICTAVO_MATRIX_BT709 = 1;   ///< ITU-R BT.709: high definition
inline constexpr u32 PICTAVO_MATRIX_BT2020 = 2;  ///< ITU-R BT.2020, non-constant luminance
inline constexpr u32 PICTAVO_RANGE_LIMITED = 0;  ///< YUV: Y 16 … 235, U and V 16 … 240
inline constexpr u32 PICTAVO_RANGE_FULL = 1;     ///< 0 … 255; 256 hues to a turn
inline constexpr u32 PICTAVO_RANGE_DEGREES = 2;  ///< single colours with a hue: 360 to a turn
/// @}

/// @name Frames
/// Packed frames as decoders and capture cards deliver them: slots 54 and 93. Rows follow each
/// other without gaps. With a width w and a height h, w2 and h2 are half of these, rounded up;
/// sizes are in bytes. U and V of 2 x 2 pixels are one sample (2 x 1 in YUY2 and UYVY), at odd
/// sizes also of the last ones alone.
/// @{
inline constexpr u32 PICTAVO_FRAME_NV12 = 0;   ///< Y: w h; then pairs U, V: 2 w2 h2
inline constexpr u32 PICTAVO_FRAME_I420 = 1;   ///< Y: w h; then U: w2 h2; then V: w2 h2
inline constexpr u32 PICTAVO_FRAME_YV12 = 2;   ///< Y: w h; then V: w2 h2; then U: w2 h2
inline constexpr u32 PICTAVO_FRAME_YUY2 = 3;   ///< Y, U, Y, V for two pixels: 4 w2 h
inline constexpr u32 PICTAVO_FRAME_UYVY = 4;   ///< U, Y, V, Y for two pixels: 4 w2 h
inline constexpr u32 PICTAVO_FRAME_P010 = 5;   ///< as NV12 in 16-bit words, little-endian, of which
                                               ///< the upper 10 bits count: 2 w h, then 4 w2 h2
inline constexpr u32 PICTAVO_FRAME_BGR24 = 6;  ///< B, G, R: 3 w h
inline constexpr u32 PICTAVO_FRAME_RGB24 = 7;  ///< R, G, B: 3 w h
inline constexpr u32 PICTAVO_FRAME_RGBA32 = 8;  ///< R, G, B, A: 4 w h

/// What slots 54 and 93 take as `format`: a PICTAVO_FRAME_, and for those with YUV a
/// PICTAVO_MATRIX_ and limited or full; 0 and 0 for the others.
constexpr u32 FrameFormat(u32 layout, u32 matrix, u32 range) {
  return layout | matrix << 8 | range << 16;
}

/// The bytes of a frame, for sizes of 0 … 2^30; 0 for a layout that is none.
constexpr i64 FrameBytes(u32 layout, i32 width, i32 height) {
  const i64 w = width, h = height, w2 = (w + 1) / 2, h2 = (h + 1) / 2;
  switch (layout) {
    case PICTAVO_FRAME_NV12:
    case PICTAVO_FRAME_I420:
    case PICTAVO_FRAME_YV12:
      return w * h + 2 * w2 * h2;
    case PICTAVO_FRAME_YUY2:
    case PICTAVO_FRAME_UYVY:
      return 4 * w2 * h;
    case PICTAVO_FRAME_P010:
      return 2 * w * h + 4 * w2 * h2;
    case PICTAVO_FRAME_BGR24:
    case PICTAVO_FRAME_RGB24:
      return 3 * w * h;
    case PICTAVO_FRAME_RGBA32:
      return 4 * w * h;
    default:
      return 0;
  }
}
/// @}

/// @name Sampling
/// How slots 67, 79 and 81 take a pixel from a place between the source's pixels.
///
/// A place (x, y) is in pixels, with the centre of the source's first pixel at (0, 0), and what
/// lies outside the source is clear, so that edges are smooth. PICTAVO_SAMPLE_NEAREST copies the
/// pixel at (floor(x + 1/2), floor(y + 1/2)). PICTAVO_SAMPLE_BILINEAR rounds x and y to the nearest
/// 1/256; the four pixels around the place have the weights (256 - p) * (256 - q), p * (256 - q),
/// (256 - p) * q and p * q of its fractions p / 256 and q / 256. With W the sum of weight * alpha,
/// alpha becomes (W + 32768) >> 16 and a colour the nearest integer, halves up, to the sum of
/// weight * alpha * colour divided by W; a pixel of alpha 0 is four zeros. At a pixel's own centre
/// that pixel is copied as it is. Opaque pixels take the plain weighted mean, at the speed of one.
/// @{
inline constexpr u32 PICTAVO_SAMPLE_NEAREST = 0;   ///< the pixel that a place lies in
inline constexpr u32 PICTAVO_SAMPLE_BILINEAR = 1;  ///< of the four around it
/// @}

/// @name Edges
/// What stands beyond a picture's edges, for the filters that look there.
/// @{
inline constexpr u32 PICTAVO_EDGES_CLEAR = 0;      ///< clear pixels
inline constexpr u32 PICTAVO_EDGES_REPLICATE = 1;  ///< the nearest pixel of the picture
inline constexpr u32 PICTAVO_EDGES_MIRROR = 2;     ///< the picture mirrored, its last pixel twice
/// @}

/// @name Mattes
/// What ApplyMatte takes of a pixel of the matte.
/// @{
inline constexpr u32 PICTAVO_MATTE_ALPHA = 0;           ///< its alpha
inline constexpr u32 PICTAVO_MATTE_INVERTED_ALPHA = 1;  ///< 255 - its alpha
inline constexpr u32 PICTAVO_MATTE_LUMA = 2;            ///< its luma
inline constexpr u32 PICTAVO_MATTE_INVERTED_LUMA = 3;   ///< 255 - its luma
/// @}

/// @name Resizing filters
/// What ResizeParam::filter names, from soft to sharp. Each is as wide as said on either side of a
/// pixel's centre, in pixels of the coarser picture.
/// @{
inline constexpr u32 PICTAVO_FILTER_TRIANGLE = 0;     ///< 1: linear between pixels
inline constexpr u32 PICTAVO_FILTER_CATMULL_ROM = 1;  ///< 2: the cubic with B = 0, C = 1/2
inline constexpr u32 PICTAVO_FILTER_MITCHELL = 2;     ///< 2: the cubic with B = C = 1/3
inline constexpr u32 PICTAVO_FILTER_LANCZOS = 3;      ///< 3: sinc(x) sinc(x / 3)
/// @}

/// Value of ImageDesc::memoryKind for a picture that is a Direct3D 11 texture.
inline constexpr u32 PICTAVO_MEMORY_D3D11_TEXTURE = 3;

/// A picture as the record-based methods take it. The host owns the record and what it points at.
struct ImageDesc {
  u32 reserved[2];   ///< the host's own; the library neither reads nor writes them
  i32 bufferWidth;   ///< pixels in a row of the allocation that surrounds the picture
  i32 bufferHeight;  ///< rows of that allocation
  u32 memoryKind;    ///< PICTAVO_MEMORY_D3D11_TEXTURE: `data` is an ID3D11Texture2D*; any other
                     ///< value: plain memory, or a host object where a method takes one. Methods
                     ///< that work on plain memory refuse a texture with PICTAVO_E_INVALIDARG.
  alignas(8) void* data;  ///< first byte of the top row, or the texture or host object
  i32 width;              ///< pixels in a row
  i32 height;             ///< rows
  i32 pitch;              ///< bytes from the start of one row to the start of the next
  i32 bytesPerPixel;      ///< 4 for 32-bit pixels, 1 for 8-bit planes
};
static_assert(sizeof(ImageDesc) == 48 && alignof(ImageDesc) == 8, "ImageDesc is 48 bytes");
static_assert(offsetof(ImageDesc, bufferWidth) == 8 && offsetof(ImageDesc, bufferHeight) == 12 &&
                  offsetof(ImageDesc, memoryKind) == 16 && offsetof(ImageDesc, data) == 24 &&
                  offsetof(ImageDesc, width) == 32 && offsetof(ImageDesc, height) == 36 &&
                  offsetof(ImageDesc, pitch) == 40 && offsetof(ImageDesc, bytesPerPixel) == 44,
              "the order and places of ImageDesc's fields are part of the contract");

/// A host's own object behind a picture, where a Direct3D method takes one: the data of a record
/// whose memoryKind is not PICTAVO_MEMORY_D3D11_TEXTURE. Only its fifth method is called.
struct IHostPicture {
  virtual void Host0() noexcept = 0;  ///< Not called.
  virtual void Host1() noexcept = 0;  ///< Not called.
  virtual void Host2() noexcept = 0;  ///< Not called.
  virtual void Host3() noexcept = 0;  ///< Not called.
  /// Tells where a picture is.
  /// @param picture the record whose data is this object; not to be kept
  /// @return its texture, without a reference for the caller; null when there is none
  virtual ID3D11Texture2D* GetTexture(const ImageDesc* picture) noexcept = 0;

 protected:
  ~IHostPicture() = default;
};

/// How BlendLayer, BlendLayerSubpixel and BlendLayerScaled mix.
struct BlendParam {
  u32 mode;       ///< as BlendLayer numbers them: 0 … 23, 0 … 11 for the other two
  u32 opacity;    ///< 0 … 255; 0 leaves the destination alone
  u32 alphaMode;  ///< 0 destination opaque, 1 carry the layer's alpha, 2 straight-alpha over
  f32 fractionX;  ///< sub-pixel modes: how far right of the pixel the source is sampled, 0 … 1
  f32 fractionY;  ///< sub-pixel modes: how far below the pixel the source is sampled, 0 … 1
};
static_assert(sizeof(BlendParam) == 20, "BlendParam is 20 bytes");

/// How ResizeFiltered, ResizeFilteredRegion, ResizeSurface and operation 6 of D3DComputeOp resize.
struct ResizeParam {
  u32 filter;       ///< PICTAVO_FILTER_…
  u32 alphaMode;    ///< 0 four channels alike, 1 colours weighted by alpha
  u32 reserved[2];  ///< 0
};
static_assert(sizeof(ResizeParam) == 16, "ResizeParam is 16 bytes");
static_assert(offsetof(ResizeParam, alphaMode) == 4 && offsetof(ResizeParam, reserved) == 8,
              "the order of ResizeParam's fields is part of the contract");

/// How RotatePicture and RotateD3D turn: about a point that comes to lie where the host wants it.
/// Lengths are pixels from the top left corners, so that the centre of the first pixel is 0.5.
struct RotateParam {
  f32 angle;   ///< degrees, clockwise
  f32 scale;   ///< size of the turned picture beside the source's, above 0
  f32 srcX;    ///< the point of the source …
  f32 srcY;    ///< … -16777216 … 16777216
  f32 dstX;    ///< … that comes to lie on this one of the destination
  f32 dstY;    ///< … -16777216 … 16777216
  u32 filter;  ///< PICTAVO_SAMPLE_
};
static_assert(sizeof(RotateParam) == 28 && offsetof(RotateParam, filter) == 24,
              "RotateParam is 28 bytes");

/// How TiltPicture turns a picture in space. Angles are degrees.
struct TiltParam {
  f32 centreX;      ///< the point that keeps its place, in pixels from the left edge …
  f32 centreY;      ///< … and from the top edge, -16777216 … 16777216
  f32 yaw;          ///< above 0 the right edge goes away from the camera
  f32 pitch;        ///< above 0 the top edge goes away from it
  f32 roll;         ///< clockwise, before the other two
  f32 fieldOfView;  ///< that the untilted picture fills from left to right, 1 … 170
  u32 filter;       ///< PICTAVO_SAMPLE_
};
static_assert(sizeof(TiltParam) == 28 && offsetof(TiltParam, filter) == 24,
              "TiltParam is 28 bytes");

/// The disc that SwirlPicture turns, most in its middle and not at its edge.
struct SwirlParam {
  f32 centreX;  ///< its centre, in pixels from the left edge …
  f32 centreY;  ///< … and from the top edge, -16777216 … 16777216
  f32 radius;   ///< in pixels, 0 … 16777216
  f32 angle;    ///< of the middle, degrees, clockwise, -360000 … 360000
  u32 filter;   ///< PICTAVO_SAMPLE_
};
static_assert(sizeof(SwirlParam) == 20 && offsetof(SwirlParam, filter) == 16,
              "SwirlParam is 20 bytes");

/// The motion that MotionBlur smears along.
struct MotionBlurParam {
  f32 strength;    ///< multiplies every sample count
  i32 maxSamples;  ///< most samples taken for one pixel, at least 2
  f32 dirX;        ///< motion vector, pixels to the right
  f32 dirY;        ///< motion vector, rows down
  f32 zoom;        ///< zoom factor, 1 for none
  f32 reserved;    ///< not read
  f32 angle;       ///< spin, degrees
};
static_assert(sizeof(MotionBlurParam) == 28, "MotionBlurParam is 28 bytes");

/// What AdjustMatte does to a picture's alpha, in this order.
struct MatteParam {
  f32 black;    ///< alphas up to 255 * black become 0: 0 … 1, below white
  f32 white;    ///< alphas from 255 * white on become 255, those between are spread evenly; 0 … 1
  i32 choke;    ///< pixels by which what is opaque shrinks, or grows when negative; -64 … 64
  f32 feather;  ///< sigma of the Gaussian that softens at last; 0 … 1000
};
static_assert(sizeof(MatteParam) == 16, "MatteParam is 16 bytes");
static_assert(offsetof(MatteParam, white) == 4 && offsetof(MatteParam, choke) == 8 &&
                  offsetof(MatteParam, feather) == 12,
              "the order and places of MatteParam's fields are part of the contract");

/// One key colour of ApplyChromaKey. Mind the order: red first, unlike pixels.
struct ChromaKey {
  u8 keyR;      ///< key colour, red
  u8 keyG;      ///< key colour, green
  u8 keyB;      ///< key colour, blue
  u8 reserved;  ///< not read
  i32 angle;    ///< half-angle of the accepted hues, degrees; for a near-grey key a luma tolerance
  i32 denoise;  ///< chroma distance that becomes fully clear; for a near-grey key a tolerance
};
static_assert(sizeof(ChromaKey) == 12, "ChromaKey is 12 bytes");

/// Levels of AdjustLevels. 1 stands for a byte of 255.
struct LevelsParam {
  f32 blackIn;   ///< what becomes blackOut, with all below: 0 … 1, less than whiteIn
  f32 whiteIn;   ///< what becomes whiteOut, with all above: 0 … 1
  f32 gamma;     ///< of what lies between, above 1 brightens: 0.01 … 100
  f32 blackOut;  ///< 0 … 1
  f32 whiteOut;  ///< 0 … 1; less than blackOut turns the picture into its negative
};
static_assert(sizeof(LevelsParam) == 20, "LevelsParam is 20 bytes");

/// What AdjustColor does; in brackets what changes nothing.
struct ColorParam {
  f32 brightness;   ///< added to every colour, 1 for a byte of 255: -1 … 1 (0)
  f32 contrast;     ///< factor of the distance from mid grey: 0 … 4 (1)
  f32 saturation;   ///< factor of the distance from grey: 0 … 4 (1)
  f32 hue;          ///< degrees that colours turn from red towards green: finite (0)
  f32 temperature;  ///< towards blue (-1) or towards orange (1) (0)
  f32 tint;         ///< towards green (-1) or towards magenta (1) (0)
};
static_assert(sizeof(ColorParam) == 24, "ColorParam is 24 bytes");

/// A table of colours between whose entries ApplyColorLut interpolates. Table and record stay the
/// host's.
struct ColorLutParam {
  u32 size;            ///< entries along each side of the cube: 2 … 65
  u32 intensity;       ///< weight of the table's colour over 256, beside the pixel's own: 0 … 256
  const u16* entries;  ///< size^3 times blue, green, red and a number that does not count; 65535
                       ///< is a byte of 255. The entry of red r, green g and blue b is number
                       ///< (b * size + g) * size + r
};
static_assert(sizeof(ColorLutParam) == 16, "ColorLutParam is 16 bytes");

/// @name Transitions
/// Values of TransitionParam::mode.
/// @{
inline constexpr u32 PICTAVO_TRANSITION_FADE = 0;      ///< one picture fades into the other
inline constexpr u32 PICTAVO_TRANSITION_DIP = 1;       ///< … into a colour, then out of it
inline constexpr u32 PICTAVO_TRANSITION_WIPE = 2;      ///< a straight edge crosses the picture
inline constexpr u32 PICTAVO_TRANSITION_IRIS = 3;      ///< a circle opens from the centre
inline constexpr u32 PICTAVO_TRANSITION_CLOCK = 4;     ///< a hand goes round the centre
inline constexpr u32 PICTAVO_TRANSITION_BLINDS = 5;    ///< eight wipes side by side
inline constexpr u32 PICTAVO_TRANSITION_DISSOLVE = 6;  ///< single pixels change, as by chance
inline constexpr u32 PICTAVO_TRANSITION_PUSH = 7;      ///< one picture pushes the other out
/// @}

/// How ApplyTransition goes from one picture to another.
struct TransitionParam {
  u32 mode;      ///< PICTAVO_TRANSITION_…
  f32 progress;  ///< 0 … 1: 0 is the first picture to the byte, 1 the second
  f32 softness;  ///< 0 … 1: the width of the edge, as a part of its way; 0 is a hard one
  f32 angle;     ///< degrees, clockwise: where a wipe, blinds or a push move to, 0 to the right;
                 ///< where the clock's hand starts, 0 at the top
  u32 colour;    ///< 0xAARRGGBB: what a dip goes through
};
static_assert(sizeof(TransitionParam) == 20, "TransitionParam is 20 bytes");

/// The weights of ConvolvePicture.
struct ConvolveParam {
  u32 size;         ///< 3 or 5: rows and columns of weights
  i32 shift;        ///< 0 … 15: bits by which sums are divided
  i32 bias;         ///< added afterwards
  u32 withAlpha;    ///< non-zero: alpha is filtered like a colour; 0: it is copied
  i32 weights[25];  ///< -128 … 127, row by row; a size of 3 uses the first nine
};
static_assert(sizeof(ConvolveParam) == 116, "ConvolveParam is 116 bytes");

/// A rectangle around pixels; all 0 when there are none.
struct PixelBounds {
  i32 left;    ///< first column
  i32 top;     ///< first row
  i32 right;   ///< the column after the last
  i32 bottom;  ///< the row after the last
};
static_assert(sizeof(PixelBounds) == 16, "PixelBounds is 16 bytes");

/// @name Measures
/// What MeasurePicture tells of a picture.
/// @{
inline constexpr u32 PICTAVO_MEASURE_MEAN = 0;       ///< the mean
inline constexpr u32 PICTAVO_MEASURE_DEVIATION = 1;  ///< the standard deviation
inline constexpr u32 PICTAVO_MEASURE_SHARPNESS = 2;  ///< the variance of the Laplacian
inline constexpr u32 PICTAVO_MEASURE_NOISE = 3;      ///< a robust estimate of the noise

/// @}

/// A picture of the host's for the OpenCL methods and slots 97 and 101. The host implements it; the
/// library only calls it, from the thread of the call that it was given to, and keeps neither it
/// nor its record.
struct IPictavoSurface {
  /// Fills in the record, which comes zeroed: plain memory with `data`, `width`, `height`, `pitch`
  /// (bytes; on OpenCL negative where rows run upwards) and `bytesPerPixel`; `bufferWidth` and
  /// `bufferHeight` where a method asks for them. The pixels stay where they are until the method
  /// returns; the OpenCL methods copy them to the device and back.
  /// @param image the library's record; not to be kept
  /// @return 1 when the surface can be used; any other value refuses the call
  virtual u32 Query(ImageDesc* image) noexcept = 0;

 protected:
  ~IPictavoSurface() = default;
};

/// @name Operations of D3DComputeOp
/// Each with the record of its parameters, below.
/// @{
inline constexpr i32 PICTAVO_D3D_COPY_TEXTURE = 0;   ///< by its sub-mode
inline constexpr i32 PICTAVO_D3D_COPY = 1;           ///< no record
inline constexpr i32 PICTAVO_D3D_BOX_BLUR = 2;       ///< D3DBlurParam
inline constexpr i32 PICTAVO_D3D_GROW = 3;           ///< D3DGrowParam
inline constexpr i32 PICTAVO_D3D_CLEAR = 4;          ///< D3DClearParam
inline constexpr i32 PICTAVO_D3D_COPY_REGION = 5;    ///< D3DRegion
inline constexpr i32 PICTAVO_D3D_SCALE = 6;          ///< D3DScaleParam, ResizeParam
inline constexpr i32 PICTAVO_D3D_RELEASE = 7;        ///< no record
inline constexpr i32 PICTAVO_D3D_COPY_MATERIAL = 8;  ///< D3DRegion
inline constexpr i32 PICTAVO_D3D_FILTER_REGION = 9;  ///< D3DRegionFilterParam
inline constexpr i32 PICTAVO_D3D_COPY_AFFINE = 10;   ///< D3DAffineParam, RotateParam
inline constexpr i32 PICTAVO_D3D_FILL = 11;          ///< D3DFillParam
inline constexpr i32 PICTAVO_D3D_GROW_REGION = 12;   ///< D3DGrowRegionParam
inline constexpr i32 PICTAVO_D3D_TINT = 13;          ///< D3DTintParam
inline constexpr i32 PICTAVO_D3D_CHROMA_KEY = 14;    ///< D3DKeyParam
/// @}

/// @name Sub-modes of D3DComputeOp
/// @{
inline constexpr i32 PICTAVO_D3D_WHOLE = 0;  ///< of all operations; no record for operation 0
inline constexpr i32 PICTAVO_D3D_AS_PROCESSOR = 1;  ///< of 6 and 10: ResizeParam, RotateParam
inline constexpr i32 PICTAVO_D3D_PART = 2;          ///< of 0: D3DRegion
/// @}

/// A part of the source and where it goes, in pixels. What leaves either picture is cut off.
struct D3DRegion {
  i32 dstX;    ///< where the part's left column goes
  i32 dstY;    ///< where its top row goes
  i32 srcX;    ///< its left column
  i32 srcY;    ///< its top row
  i32 width;   ///< its columns
  i32 height;  ///< its rows
};
static_assert(sizeof(D3DRegion) == 24, "D3DRegion is 24 bytes");

/// A box of 2 * trunc(radius * scale + 0.5) + 1 pixels each way, computed in double precision; no
/// radius is too large. One that comes out below -0.5, or is no number, cannot be used.
struct D3DBlurParam {
  double radiusX;  ///< to the left and right, at a scale of 1
  double radiusY;  ///< up and down, at a scale of 1
  f32 scale;       ///< size of the picture compared with the one that the radii are meant for
};
static_assert(sizeof(D3DBlurParam) == 24, "D3DBlurParam is 24 bytes");

/// A filter that pictures grow by. Its radius R is the larger of the two; a shape's weight at a
/// distance d from the middle is stated beside it.
struct D3DGrowParam {
  u32 radiusX;  ///< columns to either side that count, 0 … 32
  u32 radiusY;  ///< rows above and below that count, 0 … 32
  u32 shape;    ///< 0 square: 1; 1 disc: 1 for d <= R + 0.5, else 0; 2 cone: 1 - d / (R + 1);
                ///< 3 bell: exp(-4.5 * d * d / (R * R))
  f32 alpha;    ///< factor of all weights, 0 … 1
};
static_assert(sizeof(D3DGrowParam) == 16, "D3DGrowParam is 16 bytes");

/// A region grown by a filter.
struct D3DGrowRegionParam {
  D3DRegion region;     ///< what is written; the filter also reads around it
  D3DGrowParam filter;  ///< what it grows by
  u32 clipSource;       ///< non-zero takes out what the source itself covers: an outline remains
};
static_assert(sizeof(D3DGrowRegionParam) == 44, "D3DGrowRegionParam is 44 bytes");

/// A colour for a whole texture.
struct D3DClearParam {
  const f32* colour;  ///< blue, green, red, alpha, each 0 … 1
  i32 count;          ///< how many these are: 4
};
static_assert(sizeof(D3DClearParam) == 16, "D3DClearParam is 16 bytes");

/// The rectangle of the destination that the whole source is scaled into, in pixels. What leaves
/// the destination is cut off.
struct D3DScaleParam {
  i32 left;    ///< first column
  i32 top;     ///< first row
  i32 right;   ///< the column after the last
  i32 bottom;  ///< the row after the last
};
static_assert(sizeof(D3DScaleParam) == 16, "D3DScaleParam is 16 bytes");

/// A region whose pixels become the mean of those within a radius.
struct D3DRegionFilterParam {
  D3DRegion region;  ///< of at most 16384 columns and rows
  i32 radius;        ///< in pixels, 0 … 128
};
static_assert(sizeof(D3DRegionFilterParam) == 28, "D3DRegionFilterParam is 28 bytes");

/// Where destination pixels come from: x columns and y rows from (dstX, dstY), the source's column
/// xStart + x * xStepX + y * xStepY and row yStart + x * yStepX + y * yStepY, in 1/65536 of a
/// pixel. Whole numbers are the pixels' own places.
struct D3DAffineParam {
  i32 dstX;       ///< the first column that is written, on to the right edge
  i32 dstY;       ///< the first row that is written, on to the bottom edge
  i32 srcX;       ///< left column of the part of the source that counts
  i32 srcY;       ///< its top row
  i32 srcWidth;   ///< its columns
  i32 srcHeight;  ///< its rows
  i32 xStart;     ///< column of the first pixel
  i32 yStart;     ///< row of the first pixel
  i32 xStepX;     ///< columns further for each column
  i32 xStepY;     ///< columns further for each row
  i32 yStepX;     ///< rows further for each column
  i32 yStepY;     ///< rows further for each row
};
static_assert(sizeof(D3DAffineParam) == 48, "D3DAffineParam is 48 bytes");

/// A rectangle in pixels, and its colour, each channel 0 … 1. A plane takes the alpha.
struct D3DFillParam {
  i32 left;    ///< first column
  i32 top;     ///< first row
  i32 right;   ///< the column after the last
  i32 bottom;  ///< the row after the last
  f32 red;     ///< red
  f32 green;   ///< green
  f32 blue;    ///< blue
  f32 alpha;   ///< alpha
};
static_assert(sizeof(D3DFillParam) == 32, "D3DFillParam is 32 bytes");

/// A colour for the shape of a source, each channel 0 … 1, and where the source goes.
struct D3DTintParam {
  i32 dstX;   ///< where the source's left column goes, in pixels
  i32 dstY;   ///< where its top row goes
  f32 red;    ///< red
  f32 green;  ///< green
  f32 blue;   ///< blue
};
static_assert(sizeof(D3DTintParam) == 20, "D3DTintParam is 20 bytes");

/// A region and the colours to key it by.
struct D3DKeyParam {
  D3DRegion region;       ///< what is keyed
  const ChromaKey* keys;  ///< the colours
  i32 keyCount;           ///< 1 … 1024
};
static_assert(sizeof(D3DKeyParam) == 40, "D3DKeyParam is 40 bytes");

// No two methods of the chain share a name and none is a destructor: compilers place overloads and
// virtual destructors differently, and the table below must be the same for all of them.

/// Slots 0 to 41: level, blending, premultiplication, colour conversion, the first resizers.
struct IPictavo {
  /// Slot 0. Asks the detection module CPUIstructionSetDetect.dll for the processor's level and
  /// uses it from now on; level 0 when there is no such module. Runs once at construction too.
  /// BlendLayer and BlendLayerSubpixel keep the kernels of the level that construction found or
  /// SetCPULevel last set.
  virtual void DetectInstructionSet() noexcept = 0;

  /// Slot 1. Tells the level in use.
  /// @return as detected, or as last given to SetCPULevel
  virtual i32 GetCPULevel() noexcept = 0;

  /// Slot 2. Lays a straight-alpha source over the destination, faded by an opacity ramp.
  ///
  /// With w = trunc(source alpha * row factor): w = 255 copies the pixel, w = 0 leaves the
  /// destination, otherwise each colour becomes (s * w + d * (256 - w)) >> 8 and alpha 255.
  ///
  /// From level 3 pixels go in pairs (columns 0 and 1, 2 and 3, …): a pair is copied when both
  /// weights are 255, left alone when both are below 1, and otherwise both its pixels are mixed, so
  /// that a weight of 255 gives (255 * s + d) >> 8 there; mixed pixels keep the destination's
  /// alpha. The last pixel of an odd row goes alone. Row factors outside 0 … 1 make weights outside
  /// 0 … 255. They enter the formula as they are below level 3, where the low byte of the result is
  /// stored; from level 3 a negative weight counts as 0, 256 - w as at least 0, and a result above
  /// 255 as 255.
  ///
  /// @return status: 0 when dst or src is null, else 1 (also for an empty picture)
  virtual u32 BlendOverWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                                       i32 srcPitch, i32 flip, f32 opacityStart,
                                       f32 opacityEnd) noexcept = 0;

  /// Slot 3. Lays a packed straight-alpha source over a packed destination. The rule of slot 2 with
  /// w = source alpha, but mixed pixels take the source's alpha. From level 3 pixels go in pairs
  /// through the whole buffer, as in slot 2; a clear pixel in a mixed pair then takes alpha 0.
  /// @return status: 0 when dst or src is null or the picture cannot fit in memory, else 1
  virtual u32 BlendOverPacked(u8* dst, const u8* src, i32 width, i32 height) noexcept = 0;

  /// Slot 4. Lays a straight-alpha source over the destination. The rule of slot 2 with w = source
  /// alpha, its difference from level 3 included.
  /// @return status: 0 when dst or src is null, else 1
  virtual u32 BlendOverPitched(u8* dst, const u8* src, i32 width, i32 height,
                               i32 pitch) noexcept = 0;

  /// Slot 5. Lays a premultiplied source over the destination, faded by an opacity ramp.
  ///
  /// With row factor f and w = trunc(source alpha * f): w = 255 copies the pixel, w = 0 leaves the
  /// destination, otherwise each colour becomes min(255, trunc(s * f) + ((d * (256 - w)) >> 8)) and
  /// alpha 255. A pixel of weight 0 is left alone whatever its colours, at every level. A row
  /// factor outside 0 … 1 can make results below 0, which are stored by their low byte.
  /// @return status: 0 when dst or src is null, else 1
  virtual u32 BlendPremultipliedWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height,
                                                i32 dstPitch, i32 srcPitch, i32 flip,
                                                f32 opacityStart, f32 opacityEnd) noexcept = 0;

  /// Slot 6. Lays a packed premultiplied source over a packed destination: slot 5 with f = 1.
  /// @return status: 0 when dst or src is null, a size is below 1 or the picture cannot fit in
  /// memory, else 1
  virtual u32 BlendPremultipliedPacked(u8* dst, const u8* src, i32 width, i32 height) noexcept = 0;

  /// Slot 7. Lays a premultiplied source over the destination: slot 5 with f = 1.
  /// @param pitch bytes from row to row, of both pictures; nothing is done when it is below 1
  /// @return status: 0 when dst or src is null, else 1
  virtual u32 BlendPremultipliedPitched(u8* dst, const u8* src, i32 width, i32 height,
                                        i32 pitch) noexcept = 0;

  /// Slot 8. Composites a premultiplied source over a premultiplied destination whose alpha is
  /// meaningful, faded by an opacity ramp.
  ///
  /// With row factor f, w = trunc(source alpha * f) and destination alpha dA: w = 0 leaves the
  /// destination; w = 255 or dA = 0 copies the source's colours and sets alpha to w; otherwise each
  /// colour becomes min(255, trunc(s * f) + ((d * (255 - w)) >> 8)) and alpha becomes
  /// 255 - (((255 - dA) * (255 - w)) >> 8). What a row factor outside 0 … 1 makes leave 0 … 255 is
  /// stored by its low byte.
  /// @return status: 0 when dst or src is null or a size or pitch is below 1, else 1
  virtual u32 CompositePremultipliedWithOpacityRamp(u8* dst, const u8* src, i32 width, i32 height,
                                                    i32 dstPitch, i32 srcPitch, i32 flip,
                                                    f32 opacityStart, f32 opacityEnd) noexcept = 0;

  /// Slot 9. Composites a premultiplied source over a premultiplied destination: slot 8 with f = 1.
  /// @return status: 0 when dst or src is null or a size or the pitch is below 1, else 1
  virtual u32 CompositePremultipliedPitched(u8* dst, const u8* src, i32 width, i32 height,
                                            i32 pitch) noexcept = 0;

  /// Slot 10. Composites a packed premultiplied source over a packed premultiplied destination:
  /// slot 8 with f = 1.
  /// @return status: 0 when dst or src is null, a size is below 1 or the picture cannot fit in
  /// memory, else 1
  virtual u32 CompositePremultipliedPacked(u8* dst, const u8* src, i32 width,
                                           i32 height) noexcept = 0;

  /// Slot 11. Lays a straight-alpha source, at one opacity, over the destination or over a colour.
  ///
  /// With w = (source alpha * (opacity + 1)) >> 8: w = 255 copies the pixel, w = 0 leaves the
  /// destination, otherwise each colour becomes (s * w + d * (256 - w)) >> 8 and alpha stays.
  /// @return PICTAVO_S_OK; PICTAVO_E_FAIL when dst or src is null or a size is below 1
  virtual u32 BlendOverWithOpacity(u8* dst, const u8* src, i32 width, i32 height, i32 dstPitch,
                                   i32 srcPitch, u8 opacity, u32 backdrop) noexcept = 0;

  virtual u32 Reserved12() noexcept = 0;  ///< Slot 12.
  virtual u32 Reserved13() noexcept = 0;  ///< Slot 13.

  /// Slot 14. One colour from RGB to studio-range YUV (BT.601), in units of 1/4096:
  ///
  ///     Y = (1053 r + 2064 g +  401 b +  67584) >> 12
  ///     U = (-606 r - 1192 g + 1798 b + 526336) >> 12
  ///     V = (1798 r - 1507 g -  291 b + 526336) >> 12
  ///
  /// Bytes give Y in 16 … 235, U and V in 16 … 240, without a clamp. Inputs beyond a byte are taken
  /// as they are, sums modulo 2^32: below level 3 the shift keeps the sign; from level 3 a negative
  /// sum, like a large one, gives 255. Nothing is done when an output is null.
  /// @param r,g,b bytes, or any numbers
  /// @param y,u,v take a number each
  virtual void ConvertRGBToYUVPixel(i32 r, i32 g, i32 b, u32* y, u32* u, u32* v) noexcept = 0;

  /// Slot 15. One colour from studio-range YUV (BT.601) to RGB. With Y less 16, U and V less 128:
  ///
  ///     R = (4768 Y          + 6537 V + 2048) >> 12
  ///     G = (4768 Y - 1602 U - 3330 V + 2048) >> 12
  ///     B = (4768 Y + 8266 U          + 2048) >> 12, each clamped to 0 … 255
  ///
  /// From level 3 inputs and differences saturate to 16 bits; bytes give the same at every level.
  /// Nothing is done when an output is null.
  /// @param y,u,v bytes, or any numbers
  /// @param r,g,b take a number of 0 … 255 each
  virtual void ConvertYUVToRGBPixel(i32 y, i32 u, i32 v, u32* r, u32* g, u32* b) noexcept = 0;

  /// Slot 16. Turns premultiplied alpha into straight alpha in place.
  ///
  /// Each colour of a pixel of alpha a becomes 256 * c / a - 1, rounded towards zero and clamped to
  /// 0 … 255, so that c = a gives 255 and c = 0 gives 0. Alpha stays; pixels of alpha 0 stay whole.
  /// @return status: always 1; a null buffer or an empty picture is left alone
  virtual u32 UnpremultiplyPitched(u8* buffer, i32 width, i32 height, i32 pitch) noexcept = 0;

  /// Slot 17. Slot 16 for a packed buffer. @return status: always 1; a picture that cannot fit in
  /// memory is left alone too
  virtual u32 UnpremultiplyPacked(u8* buffer, i32 width, i32 height) noexcept = 0;

  /// Slot 18. Turns straight alpha into premultiplied alpha in place: each colour of a pixel of
  /// alpha a becomes ((c + 1) * a) >> 8, which is c where a = 255. Alpha stays.
  /// @return status: always 1; a null buffer or an empty picture is left alone
  virtual u32 PremultiplyPitched(u8* buffer, i32 width, i32 height, i32 pitch) noexcept = 0;

  /// Slot 19. Slot 18 for a packed buffer. @return status: always 1; a picture that cannot fit in
  /// memory is left alone too
  virtual u32 PremultiplyPacked(u8* buffer, i32 width, i32 height) noexcept = 0;

  /// Slot 20. BGRA to YUVA, bytes V, U, Y, A, by the matrix of slot 14; alpha is copied. Below
  /// level 3 it calls slot 21 through the table.
  /// @return PICTAVO_S_OK, with nothing done for a negative height; PICTAVO_S_FALSE when width or
  /// height is 0; PICTAVO_E_INVALIDARG when src or dst is null
  virtual u32 ConvertBGRAToYUVA(const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                                i32 dstPitch) noexcept = 0;

  /// Slot 21. The portable build of slot 20, at any level. @return as slot 20
  virtual u32 ConvertBGRAToYUVAPortable(const u8* src, u32 width, i32 height, i32 srcPitch, u8* dst,
                                        i32 dstPitch) noexcept = 0;

  virtual u32 Reserved22() noexcept = 0;  ///< Slot 22.
  virtual u32 Reserved23() noexcept = 0;  ///< Slot 23.
  virtual u32 Reserved24() noexcept = 0;  ///< Slot 24.
  virtual u32 Reserved25() noexcept = 0;  ///< Slot 25.
  virtual u32 Reserved26() noexcept = 0;  ///< Slot 26.
  virtual u32 Reserved27() noexcept = 0;  ///< Slot 27.
  virtual u32 Reserved28() noexcept = 0;  ///< Slot 28.

  /// Slot 29. Resizes by the mean of a 4 x 4 grid of samples, colours weighted by alpha.
  ///
  /// In 16.16 bits, sx = srcWidth * 65536 / dstWidth and sy likewise; pixel (x, y) samples the
  /// source at the columns (x * sx + i * (sx / 4)) >> 16 and rows (y * sy + j * (sy / 4)) >> 16, i
  /// and j from 0 to 3. With S the sum of the sixteen alphas, alpha becomes S >> 4 and each colour
  /// the sum of colour * alpha, / S; a pixel whose alpha becomes 0 becomes all 0. A non-zero
  /// forceOpaque takes each colour's sum >> 4 and alpha 255 instead. Divisions round towards zero.
  ///
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when dst or src is null;
  /// PICTAVO_S_FALSE when a size is below 1; PICTAVO_E_INVALIDARG when the source is too large
  virtual u32 ResizeBox16AlphaWeighted(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                                       const u8* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                                       i32 forceOpaque) noexcept = 0;

  /// Slot 30. Resizes bilinearly with 16-bit weights.
  ///
  /// In 16.16 bits, column x lies at x * sx, sx = srcWidth * 65536 / dstWidth; where the last
  /// column written would then have no right neighbour, the dividend is made 65536 smaller until
  /// it has one. With p the source pixel there, q the one right of it and f the low 16 bits of the
  /// position, each channel becomes (((q - p) * f) >> 16) + p, rounded down; so for two rows, and
  /// between them likewise with the row's position. A non-zero forceOpaque sets alpha to 255.
  /// Without fullSize the last column and row of the destination are not written; sx is still
  /// divided by dstWidth. In a source of one column, or row, that one is its own neighbour.
  ///
  /// @return PICTAVO_S_OK, also when nothing is left to write; PICTAVO_E_POINTER
  /// when dst or src is null; PICTAVO_S_FALSE when a size is below 1; PICTAVO_E_INVALIDARG when the
  /// source is too large; PICTAVO_E_OUTOFMEMORY
  virtual u32 ResizeBilinear16(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                               i32 srcWidth, i32 srcHeight, i32 srcPitch, i32 forceOpaque,
                               i32 fullSize) noexcept = 0;

  /// Slot 31. Resizes bilinearly with 7-bit weights.
  ///
  /// Column x lies at t = x * 256 * srcWidth / dstWidth: p is the source pixel t >> 8, q the one
  /// right of it and f = (t >> 1) & 127; from the source's last column on, p is the last but one
  /// and f 127. Each channel becomes (((q - p) * f) >> 7) + p, rounded down; so for two rows, and
  /// between them likewise with the row's t. The destination's last row is not blended with the row
  /// below it. A destination column or row lies at most 255 source ones beyond the one before; what
  /// is cut off there is missing from all further ones too. In a source of one column, or row, that
  /// one is its own neighbour.
  ///
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when dst or src is null;
  /// PICTAVO_S_FALSE when a size is below 1; PICTAVO_E_INVALIDARG when the destination is wider or
  /// higher than 2^23; PICTAVO_E_OUTOFMEMORY
  virtual u32 ResizeBilinear7(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                              i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept = 0;

  virtual u32 Reserved32() noexcept = 0;  ///< Slot 32.
  virtual u32 Reserved33() noexcept = 0;  ///< Slot 33.

  /// Slot 34. Four consecutive 32-bit pixels from RGB to YUV by the matrix of slot 14, in vector
  /// code at any level. Nothing is done when a pointer is null. Alphas are not read.
  /// @param pixels 16 bytes
  /// @param y,u,v take four numbers each
  virtual void ConvertRGBToYUV4Pixels(const u8* pixels, i32* y, i32* u, i32* v) noexcept = 0;

  /// Slot 35. Slot 34's conversion in portable code; from level 3 it calls slot 34 through the
  /// table.
  /// @param pixels 16 bytes
  /// @param y,u,v take four numbers each
  virtual void ConvertRGBToYUVPixels(const u8* pixels, i32* y, i32* u, i32* v) noexcept = 0;

  /// Slot 36. Slot 11 with an opacity ramp and a flip, writing the weight into the alpha.
  ///
  /// The weight is trunc(source alpha * (opacity + 1) * row factor) >> 8 in single precision. A
  /// mixed pixel's alpha becomes w; a copied one's is the source's; w = 0 leaves the pixel. What a
  /// row factor outside 0 … 1 makes leave 0 … 255 is stored by its low byte.
  /// @return status: 0 when dst or src is null, else 1 (also for an empty picture)
  virtual u32 BlendOverWithOpacityRampAndAlpha(u8* dst, const u8* src, i32 width, i32 height,
                                               i32 dstPitch, i32 srcPitch, u8 opacity, u32 backdrop,
                                               i32 flip, f32 opacityStart,
                                               f32 opacityEnd) noexcept = 0;

  /// Slot 37. Slot 36, but a mixed pixel keeps the destination's alpha.
  /// @return status: 0 when dst or src is null, else 1 (also for an empty picture)
  virtual u32 BlendOverWithOpacityRampKeepAlpha(u8* dst, const u8* src, i32 width, i32 height,
                                                i32 dstPitch, i32 srcPitch, u8 opacity,
                                                u32 backdrop, i32 flip, f32 opacityStart,
                                                f32 opacityEnd) noexcept = 0;

  virtual u32 Reserved38() noexcept = 0;  ///< Slot 38.
  virtual u32 Reserved39() noexcept = 0;  ///< Slot 39.
  virtual u32 Reserved40() noexcept = 0;  ///< Slot 40.
  virtual u32 Reserved41() noexcept = 0;  ///< Slot 41.

 protected:
  ~IPictavo() = default;  // only the release exports destroy the object
};

/// Slots 42 to 62: level setter, histograms, rectangles, sharpening, blur, levels, frames,
/// resizers.
struct IPictavo2 : IPictavo {
  /// Slot 42. Uses this level from now on, whether or not the processor has its instructions.
  /// Values above 8 behave like 8, negative ones like 0; GetCPULevel returns the value as given.
  /// Calls already running keep the level they started with.
  /// @param level PICTAVO_LEVEL_…, or a number between
  virtual void SetCPULevel(i32 level) noexcept = 0;

  /// Slot 43. Counts the bytes of 32-bit pixels. Clears binCount bins, then adds 1 to bin v for
  /// each byte v; a byte without a bin is not counted, so 256 bins count them all.
  /// @param pitch bytes from row to row, not negative
  /// @param selector 1 green, 2 red, 3 alpha, 4 all four bytes, 5 the three colours; 0 and any
  /// other value blue
  /// @return PICTAVO_S_OK, also for an empty picture; PICTAVO_E_FAIL when pixels or bins is null or
  /// binCount is below 1
  virtual u32 ComputeHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
                               i32 binCount, u32 selector) noexcept = 0;

  /// Slot 44. Counts one value a pixel, in bins as slot 43 has them.
  /// @param pitch bytes from row to row, not negative
  /// @param selector 0 the bytes of an 8-bit picture; of 32-bit pixels 1 the mean of the three
  /// colours, rounded down, or 2 red; any other value leaves the bins cleared
  /// @return as slot 43
  virtual u32 ComputeLumaHistogram(const u8* pixels, u32 width, u32 height, u32 pitch, u32* bins,
                                   i32 binCount, u32 selector) noexcept = 0;

  virtual u32 Reserved45() noexcept = 0;  ///< Slot 45.

  /// Slot 46. Grey: (blue + green + red) / 3, rounded down, into the destination's three colours;
  /// its alpha stays.
  /// @param dstPitch bytes; what it has beyond a row of pixels counts in whole pixels, rounded
  /// towards zero
  /// @return PICTAVO_S_OK, also for an empty picture; PICTAVO_E_FAIL when src or dst is null
  virtual u32 ConvertBGRAToGray(const u8* src, i32 width, i32 height, i32 srcPitch, u32* dst,
                                i32 dstPitch) noexcept = 0;

  virtual u32 Reserved47() noexcept = 0;  ///< Slot 47.

  /// Slot 48. Draws a rectangle's outline, one pixel wide. Where top and bottom are the same row,
  /// the row below is drawn too.
  /// @param width not read: the rectangle is not clipped and must lie in the picture
  /// @param height not read either
  /// @param pitch bytes, rounded down to whole pixels
  /// @param rect left, top, right, bottom in pixels, all inclusive
  /// @return PICTAVO_S_OK; PICTAVO_E_FAIL when buffer or rect is null; PICTAVO_E_INVALIDARG when
  /// left or top is negative, right is before left or bottom above top
  virtual u32 DrawRectOutline(u32* buffer, i32 width, i32 height, u32 pitch, const i32 rect[4],
                              u32 colour) noexcept = 0;

  /// Slot 49. Sharpens by an unsharp mask, in place: c + amount * (c - b) for each colour c, where
  /// b is slot 56's blur of the picture with a sigma of `radius` both ways and replicated edges,
  /// to 1/64 or finer. Rounded to the nearest, halves up, and limited to 0 … 255. A colour nearer b
  /// than the threshold stays as it is, and alpha always does. Clear pixels become four zeros. All
  /// builds give the same bytes. Rows are shared with helping threads.
  /// @param amount -1 (the blur itself) … 16
  /// @param threshold 0 … 255
  /// @param radius 0 … 1000
  /// @return as slot 56
  virtual u32 SharpenPicture(u8* buffer, i32 width, i32 height, i32 pitch, f32 amount,
                             f32 threshold, f32 radius) noexcept = 0;

  /// Slot 50. YUVA, bytes V, U, Y, A, to BGRA by the rule of slot 15: the way back from slot 20.
  /// Alpha is copied. src may be dst, with the same pitch. All builds give the same bytes; they
  /// change at levels 3 and 8.
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when src or dst is null; PICTAVO_E_INVALIDARG for a
  /// pitch shorter than a row of pixels; PICTAVO_S_FALSE for a width or height below 1
  virtual u32 ConvertYUVAToBGRA(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                                i32 dstPitch) noexcept = 0;

  /// Slot 51. Writes a colour over a rectangle, cut to the picture. The build changes at level 3.
  /// @param rect any left, top, right, bottom in pixels, the last two beyond the last pixel
  /// @return PICTAVO_S_OK, also where the rectangle misses the picture; PICTAVO_E_POINTER when
  /// buffer or rect is null; PICTAVO_E_INVALIDARG when the pitch is shorter than a row;
  /// PICTAVO_S_FALSE for an empty picture
  virtual u32 FillRectangle(u8* buffer, i32 width, i32 height, i32 pitch, const i32 rect[4],
                            u32 colour) noexcept = 0;

  /// Slot 52. Lays a colour over a rectangle between pixels, cut to the picture. Its edges are
  /// taken to the nearest 1/256 of a pixel, halves up, so that rectangles with a common edge cover
  /// each pixel once. A pixel covered by cx / 256 across and cy / 256 down has the coverage
  /// c = (cx * cy + 128) >> 8; where c > 0 the colour is laid over it by slot 73's normal mode with
  /// the opacity c - 1 and alphaMode 2. The builds change with slot 73's.
  /// @param left the rectangle's left edge in pixels, 0 being the picture's; infinite ones too
  /// @param top its upper edge
  /// @param right its right edge; nothing is covered when it is not right of the left one
  /// @param bottom its lower edge
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when buffer is null; PICTAVO_E_INVALIDARG when an edge
  /// is not a number or the pitch is shorter than a row; PICTAVO_S_FALSE for an empty picture
  virtual u32 FillRectangleSmooth(u8* buffer, i32 width, i32 height, i32 pitch, f32 left, f32 top,
                                  f32 right, f32 bottom, u32 colour) noexcept = 0;

  /// Slot 53. Levels: maps the bytes of some channels along a curve, in place. With everything in
  /// double precision, a byte v becomes
  ///
  ///     t = (v - 255 * blackIn) / (255 * (whiteIn - blackIn)), kept within 0 … 1
  ///     255 * (blackOut + t^(1 / gamma) * (whiteOut - blackOut))
  ///
  /// rounded to the nearest integer, halves up; what falls short of a half by less than 1e-9 counts
  /// as one, so that the rounding of doubles does not show. The power has the same digits on every
  /// system. All builds give the same bytes; they change at level 8.
  /// @param channels bit 0 blue, 1 green, 2 red, 3 alpha; 0 changes nothing
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when buffer or param is null; PICTAVO_E_INVALIDARG for
  /// other bits in channels, a parameter outside its range or not a number, or a pitch shorter than
  /// a row; PICTAVO_S_FALSE for an empty picture
  virtual u32 AdjustLevels(u8* buffer, i32 width, i32 height, i32 pitch, u32 channels,
                           const LevelsParam* param) noexcept = 0;

  /// Slot 54. Makes pixels of a packed frame, which `format` describes (FrameFormat).
  ///
  /// A YUV frame's pixel is the exact conversion of its Y and the U and V that it shares, by slot
  /// 89's formula: rounded once to the nearest integer, the lower of two equally near, and limited
  /// to 0 … 255. P010 is converted from its 10 bits: limited, Y is 64 … 940, U and V 64 … 960
  /// around 512; full, all are 0 … 1023. The lower six bits of its words are not looked at. Alpha
  /// is 255 where the layout has none, and copied from RGBA32. Every build gives the same bytes;
  /// rows of large frames are shared out to helping threads.
  /// @param src     FrameBytes(layout, width, height) bytes
  /// @param dst     rows of BGRA pixels, dstPitch bytes apart; shares no byte with src
  /// @param format  what FrameFormat makes; nothing else may stand in it
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when src or dst is null; PICTAVO_E_INVALIDARG for a
  /// format that is none, a pitch shorter than a row of pixels, or memory that is shared;
  /// PICTAVO_S_FALSE for a width or height below 1
  virtual u32 ConvertFrameToBGRA(const u8* src, i32 width, i32 height, u8* dst, i32 dstPitch,
                                 u32 format) noexcept = 0;

  /// Slot 55. Resizes by taking the source pixel at the column (x * sx) >> 16 and row (y * sy) >>
  /// 16 for pixel (x, y), sx = (srcWidth << 16) / dstWidth and sy likewise: the upper left of those
  /// that it covers. All builds give the same bytes; they change at level 8.
  ///
  /// Of pitches only whole pixels count.
  /// @return as slot 29
  virtual u32 ResizeNearest32(u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u32* src,
                              i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept = 0;

  /// Slot 56. Blurs by the true Gaussian, in place: weights exp(-d * d / (2 * sigma * sigma)) of
  /// the pixels d columns (rows) away, over their sum. Alpha is the weighted mean of the alphas; a
  /// colour is the mean weighted by alpha too, so that clear pixels lend none, and a result of
  /// alpha 0 is four zeros.
  ///
  /// Every byte is within 1 of that rule's real-number result, within 2 above a sigma of 8. All
  /// builds give the same bytes. Above a sigma of some pixels the time hardly depends on it; where
  /// pixels are not opaque, or edges clear, it is longer. Rows are shared with helping threads.
  /// @param sigmaX,sigmaY in pixels, 0 (no blur that way) … 1000
  /// @param edges one of PICTAVO_EDGES_
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for a pitch shorter
  ///         than a row or a parameter outside its range; PICTAVO_S_FALSE when a size is below 1;
  ///         PICTAVO_E_OUTOFMEMORY
  virtual u32 GaussianBlur(u8* buffer, i32 width, i32 height, i32 pitch, f32 sigmaX, f32 sigmaY,
                           u32 edges) noexcept = 0;

  /// Slot 57. Resizes by the mean of slot 29's 4 x 4 grid of samples: every channel, alpha
  /// included, becomes its sum >> 4. The builds change at levels 6 and 8. @return as slot 29
  virtual u32 ResizeBox16(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch, const u8* src,
                          i32 srcWidth, i32 srcHeight, i32 srcPitch) noexcept = 0;

  /// Slot 58. Slot 30 with alpha always interpolated. @return as slot 30
  virtual u32 ResizeBilinear16KeepAlpha(u8* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                                        const u8* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                                        i32 fullSize) noexcept = 0;

  /// Slot 59. Sets the alpha of each pixel of a packed picture from a packed plane of bytes. All
  /// builds give the same bytes; they change at levels 6 and 8.
  /// @param pixels width * height pixels of 4 bytes
  /// @param plane width * height bytes; shares none with the picture
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for pictures that
  /// share a byte or cannot lie in memory; PICTAVO_S_FALSE for an empty picture
  virtual u32 SetAlphaPlane(u8* pixels, const u8* plane, u32 width, u32 height) noexcept = 0;

  /// Slot 60. Resizes by a filter: centred, so that nothing moves, and without aliases, since the
  /// filter widens with the ratio where it reduces. All builds give the same bytes; they change at
  /// levels 5 and 8. Large pictures are shared out over threads.
  ///
  /// Across and down each by itself: with r = srcSize / dstSize and w = max(r, 1), destination
  /// pixel i is the sum of the source pixels j, each times filter((j + 0.5 - (i + 0.5) r) / w),
  /// divided by the sum of these factors. Beyond the edges, the pixels of the edge go on. A side
  /// that keeps its size is not filtered (Mitchell would blur it), and a picture of the same size
  /// is copied.
  ///
  /// - Each byte is within 1 of that real number, limited to 0 … 255, where no side shrinks to less
  ///   than a sixteenth, and nearly always beyond. A picture of one colour keeps it.
  /// - alphaMode 0: alpha is a channel like the others.
  /// - alphaMode 1: alpha is that sum, A. Colours are the sum of alpha * colour divided by A,
  ///   limited to 0 … 255, since the negative parts of a filter can lead beyond. Where the byte
  ///   of A is 0, also for an A below 0, the pixel becomes four zeros. Opaque parts of a picture
  ///   take no longer than in mode 0, and what is clear less.
  ///
  /// @param src    record of the picture that is read, of any size; shares no byte with dst
  /// @param dst    record of the picture that is written, with the size to make
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for a texture, pixels
  /// of other than 4 bytes, a pitch shorter than its row, pictures that share a byte, another
  /// filter or mode, and reserved words other than 0; PICTAVO_S_FALSE for an empty picture;
  /// PICTAVO_E_OUTOFMEMORY
  virtual u32 ResizeFiltered(const ImageDesc* src, ImageDesc* dst,
                             const ResizeParam* param) noexcept = 0;

  /// Slot 61. Resizes a rectangle of the source as ResizeFiltered the whole: destination pixel i
  /// lies at left + (i + 0.5) r with r = (right - left) / dstWidth. The filter reads around the
  /// rectangle; only the picture's own edges go on beyond them. So pans and zooms have no steps,
  /// and parts made one by one join. Where the rectangle is as large as the destination and lies on
  /// whole pixels, they are copied.
  /// @param rect  left, top, right, bottom between the source's pixels: 0 <= left < right <= width,
  ///              and so down; else PICTAVO_E_INVALIDARG
  /// @return as slot 60; PICTAVO_E_POINTER for no rect
  virtual u32 ResizeFilteredRegion(const ImageDesc* src, ImageDesc* dst, const f32 rect[4],
                                   const ResizeParam* param) noexcept = 0;

  /// Slot 62. Writes slot 55's pixels inside a rectangle of the destination only; the others stay.
  /// All builds give the same bytes.
  ///
  /// Of pitches only whole pixels count. The pictures share no byte.
  /// @param rect  left, top, right, bottom in pixels of the destination, the last two beyond the
  ///              last pixel; cut to it
  /// @return PICTAVO_S_OK, also where nothing of the rectangle is left; PICTAVO_E_POINTER for a
  /// null; PICTAVO_E_INVALIDARG for a pitch shorter than its row, pictures that share a byte and a
  /// source wider or higher than 32767; PICTAVO_S_FALSE when a size is below 1
  virtual u32 ResizeNearestInRect(u32* dst, i32 dstWidth, i32 dstHeight, i32 dstPitch,
                                  const u32* src, i32 srcWidth, i32 srcHeight, i32 srcPitch,
                                  const i32 rect[4]) noexcept = 0;

 protected:
  ~IPictavo2() = default;
};

/// Slots 63 to 72: motion blur, flips, colour tables, rotation, transitions, borders, convolution.
struct IPictavo3 : IPictavo2 {
  /// Slot 63. Smears a picture along a direction, a zoom about its centre or a spin about its
  /// centre: whichever passes through the most places, spin before zoom before direction where they
  /// tie.
  ///
  /// With s = min(strength, 2) and the source's width W and height H, a direction has
  /// trunc(|(dirX, dirY)| * s / 1.5) places, a zoom trunc(W * |zoom - 1| * s / 3), and a spin
  /// trunc(2 pi * R * |angle| / 360 * s) with R = sqrt(W * W + H * H) / 1.5.
  ///
  /// A destination pixel is the mean of at most maxSamples of its motion's places, evenly spread.
  /// Colours are the mean of the samples that hit a pixel of the source that is not clear, alpha is
  /// their sum divided by the number of all samples; divisions round towards zero. Where no sample
  /// hits, the pixel becomes 0. Every build gives the same bytes; angles, sines and cosines are
  /// worked out without the C library, so that they are the same on every system too.
  ///
  /// - Direction: n places one pixel apart, from the pixel on along the vector, so that the streak
  ///   trails behind. Its n does not limit strength. n = 0 copies W * H packed pixels; where the
  ///   destination's pitch * height bytes are fewer, these are cleared instead, errno becomes
  ///   ERANGE, the invalid-parameter handler that the host has set in its C runtime (ucrtbase.dll
  ///   or msvcrt.dll) is called, if any, and the result is still PICTAVO_S_OK. So the destination
  ///   must have pitch * height bytes, padding after its last row included.
  /// - Zoom: place i is the picture shrunk to fit a frame 2 * i pixels wider; place 0 is scaled by
  ///   65535 / 65536, so that it reads one pixel up and to the left.
  /// - Spin: places lie along the tangent, in steps that grow from 0 at the centre. The only kind
  ///   that uses pitches: in the other two, the rows of both pictures are packed whatever the
  ///   records say.
  ///
  /// The destination has the size that GetMotionBlurDstSize tells. Another one is filled as it is;
  /// direction and zoom then say so to the debugger. Source and destination must not overlap.
  ///
  /// @param dst record of the picture that is written, of the size that GetMotionBlurDstSize tells
  /// @return PICTAVO_S_OK, also for an empty destination; PICTAVO_E_INVALIDARG when a record or its
  /// data is null or it holds a texture, when a size of the source is negative or a picture cannot
  /// fit in memory, when the motion's places are negative, more than 2^24 or cannot be computed,
  /// and when it would take no sample, one for several places or more than 65536;
  /// PICTAVO_E_OUTOFMEMORY
  virtual u32 MotionBlur(const ImageDesc* src, ImageDesc* dst,
                         const MotionBlurParam* param) noexcept = 0;

  /// Slot 64. Tells what MotionBlur needs: the width, height and pitch (width * 4) of its
  /// destination, and where the destination's origin lies from the source's (0 or less).
  ///
  /// With the kind, places and R of MotionBlur: a spin needs a square of 2 * trunc(R + 0.5) around
  /// the source's centre; a zoom of n places a border of n - 1 pixels on every side, or of H / 2
  /// when that is less; a direction of n places, on the sides that it comes from, the columns and
  /// rows of a vector of n - 1 pixels along it, rounded towards zero.
  /// @param src only its width and height are read
  /// @param dst takes width, height and pitch; the other fields stay
  /// @param offsetX,offsetY take the column and row of the source where the destination begins
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when an argument is null
  virtual u32 GetMotionBlurDstSize(const ImageDesc* src, ImageDesc* dst,
                                   const MotionBlurParam* param, i32* offsetX,
                                   i32* offsetY) noexcept = 0;

  /// Slot 65. Flips a picture, also in place: dst then is src, with the same pitch. All builds give
  /// the same bytes; they change at levels 3 and 8.
  /// @param mode  1 left to right, 2 top to bottom
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for a texture, pixels
  /// of other than 4 bytes, a pitch shorter than its row, pictures of different sizes or that share
  /// a byte without being the same, and another mode; PICTAVO_S_FALSE for an empty picture
  virtual u32 FlipPicture(const ImageDesc* src, ImageDesc* dst, u32 mode) noexcept = 0;

  /// Slot 66. Maps each colour by a table with three sides, between whose entries it interpolates
  /// in tetrahedra. Alpha is copied.
  ///
  /// A byte v stands at v * (size - 1) / 255 along its side: the quotient is the cell, the
  /// remainder f its distance from there in 255ths. With the largest, the middle and the least of
  /// the three distances, f1 >= f2 >= f3, four entries count: the cell's with the weight 255 - f1,
  /// the next one along f1's side with f1 - f2, the next from there along f2's side with f2 - f3,
  /// and the one from there along f3's side, the cell's far corner, with f3. The sum of weights
  /// times entries, divided by 255 * 257, is rounded to the nearest integer (there are no halves).
  /// That byte l and the pixel's own byte c then become (l * intensity + c * (256 - intensity) +
  /// 128) >> 8.
  ///
  /// Works in place. Shares the rows out over threads. All builds give the same bytes; they change
  /// at levels 6 and 8.
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when a record, its data, param or its entries are
  /// null; PICTAVO_E_INVALIDARG for a texture, pixels of other than 4 bytes, a pitch shorter than a
  /// row, pictures of two sizes, or a size or intensity outside its range; PICTAVO_S_FALSE for
  /// empty pictures
  virtual u32 ApplyColorLut(const ImageDesc* src, ImageDesc* dst,
                            const ColorLutParam* param) noexcept = 0;

  /// Slot 67. Turns and scales a picture into another one, of any size; the whole destination is
  /// written. The levels give the same bytes; they change at 6 and 8.
  ///
  /// The pixel in column x and row y is sampled (see PICTAVO_SAMPLE_) at the place (X + x * c + y *
  /// s, Y - x * s + y * c) of the source, in 1/2^32 of a pixel: c and s are the cosine and the sine
  /// of the angle divided by the scale, X = srcX - 1/2 + u * c + v * s and Y = srcY - 1/2 + v * c -
  /// u * s with u = 1/2 - dstX and v = 1/2 - dstY; these four are computed in double precision and
  /// rounded to the nearest 1/2^32, halves up. Multiples of 90 degrees have exact sines, so that
  /// quarter turns at scale 1 that put pixels onto pixels copy them.
  ///
  /// Large pictures are shared out by rows, as in slot 86.
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for a texture, pixels
  /// of other than 4 bytes, a pitch shorter than a row, a side above 2^28, a parameter that is no
  /// number or outside its range, a map that takes a corner of the destination from more than 2^28
  /// pixels away or has steps as long, and pictures that share a byte; PICTAVO_S_FALSE for an empty
  /// picture
  virtual u32 RotatePicture(const ImageDesc* src, ImageDesc* dst,
                            const RotateParam* param) noexcept = 0;

  /// Slot 68. Turns a texture into another one by slot 67, on the processor: the source is read
  /// back into a buffer of the memory manager, of its size and a clear rim of one pixel, and what
  /// slot 67 makes of it is uploaded. So the call waits for the card.
  ///
  /// Textures as slot 108 takes them, but no planes, of any D3D11_BIND flags, the destination of
  /// D3D11_USAGE_DEFAULT; the two may differ in the order of their channels. The context is the
  /// immediate one; nothing that is bound to it is touched. The object keeps a texture of the
  /// source's size for the next call, as slot 108 keeps its own.
  /// @param context the device's immediate context
  /// @return as slots 67 and 108; PICTAVO_E_INVALIDARG also for a deferred context; PICTAVO_E_FAIL
  /// also without the memory manager
  virtual u32 RotateD3D(ID3D11Device* device, ID3D11DeviceContext* context, const ImageDesc* dst,
                        const ImageDesc* src, const RotateParam* param) noexcept = 0;

  /// Slot 69. Turns a rectangle, cut to the picture, into square blocks from the upper left corner
  /// of what is left of it; the last of a row or column may be smaller. Each pixel of a block
  /// becomes the block's mean: of alpha, and of the colours weighted by alpha, both to the nearest,
  /// halves up; four zeros where the mean alpha is 0. The build changes at level 8.
  /// @param rect any left, top, right, bottom in pixels, the last two beyond the last pixel
  /// @param block side of a block in pixels, at least 1
  /// @return PICTAVO_S_OK, also where the rectangle misses the picture; PICTAVO_E_POINTER when
  /// buffer or rect is null; PICTAVO_E_INVALIDARG when block is 0 or the pitch is shorter than a
  /// row; PICTAVO_S_FALSE for an empty picture
  virtual u32 PixelateRegion(u8* buffer, i32 width, i32 height, i32 pitch, const i32 rect[4],
                             u32 block) noexcept = 0;

  /// Slot 70. A moment on the way from one picture to another.
  ///
  /// But for a push, each pixel is a mix by a weight w of 0 … 256, the second picture's: w = 0
  /// gives the first one's pixel and w = 256 the second's to the byte; else alpha is (aF * (256 -
  /// w) + aT * w + 128) >> 8 and each colour the mean by the weights aF * (256 - w) and aT * w, to
  /// the nearest, halves up; four zeros where alpha is 0. Of opaque pixels that is the plain mix.
  ///
  /// - Fade: w is progress * 256, to the nearest, everywhere. So do both halves of a dip, from the
  ///   first picture to the colour and from there to the second.
  /// - Wipe, iris, clock, blinds and dissolve give each pixel's centre a place t of 0 … 1: how far
  ///   it lies along the way of an edge from one corner, or side, of the picture to that opposite;
  ///   its distance from the picture's centre by half the diagonal; its angle from the hand's start
  ///   in turns; the fraction of eight times the wipe's place; a hash of its column and row, the
  ///   same on every system. With u = (progress * (1 + softness) - t) * (1 / softness), a softness
  ///   below 1e-9 being that, limited to 0 … 1 and taken to q = trunc(1024 * u), it is
  ///   w = (q * q * (3072 - 2 * q) + 2^21) >> 22. Places and u are single precision. No w falls
  ///   while progress grows.
  /// - Push: both pictures move by progress * width (or height) whole pixels, to the nearest, along
  ///   the quarter turn nearest to the angle; softness does not count.
  ///
  /// Progress 0 copies the first picture and 1 the second, in every mode. The builds change at
  /// levels 6 and 8.
  /// @param dst record of the picture that is written; may be one of the two at the same place, but
  /// for a push
  /// @param from,to records of the first picture and of the second, of the destination's size
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when a record, its data or param is null;
  /// PICTAVO_E_INVALIDARG when the pictures differ in size, are textures or not of 4 bytes a pixel,
  /// a pitch is shorter than its row, the mode is above 7, progress or softness is not in 0 … 1,
  /// the angle is not a finite number, or dst shares a byte with a picture that pushes;
  /// PICTAVO_S_FALSE for empty pictures; PICTAVO_E_OUTOFMEMORY
  virtual u32 ApplyTransition(ImageDesc* dst, const ImageDesc* from, const ImageDesc* to,
                              const TransitionParam* param) noexcept = 0;

  /// Slot 71. Grows a picture, in place, by a border on every side: each border pixel becomes the
  /// nearest pixel of the picture. `data` points at the picture, inside a buffer of bufferWidth x
  /// bufferHeight pixels with room for the border around it.
  ///
  /// Pixels have 4 bytes, or 1. Rows of 4-byte pixels are pitch / 4 pixels apart. Rows of bytes are
  /// taken to be tight, width + 2 * border apart, whatever the pitch; only the border's first byte
  /// is placed by the pitch. So a wider pitch puts the border of bytes in the wrong places.
  ///
  /// @return PICTAVO_S_OK; PICTAVO_E_INVALIDARG when the record or its data is null, the record
  /// holds a texture, a size is below 1, the picture with its border is wider or higher than the
  /// buffer, pixels have neither 4 bytes nor 1, or rows of bytes with a border are shorter than the
  /// width with that border
  virtual u32 ExtendBoundary(const ImageDesc* image, u32 border) noexcept = 0;

  /// Slot 72. Filters a picture by 3 x 3 or 5 x 5 whole-number weights. Weight (row, column) counts
  /// the pixel so far from the middle one, as it lies; pixels beyond an edge are those at the edge.
  /// Each byte becomes the sum of its channel's products, ((sum + half) >> shift) + bias, limited
  /// to 0 … 255, with half = 1 << (shift - 1), or 0 for a shift of 0, and an arithmetic shift;
  /// alphas do not weigh colours. Rows of large pictures run in parallel. The builds change at
  /// levels 6 and 8.
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when a record, its data or param is null;
  /// PICTAVO_E_INVALIDARG when the pictures differ in size, share a byte, are textures or not of 4
  /// bytes a pixel, a pitch is shorter than its row, or the size, the shift or a weight that counts
  /// is outside its range; PICTAVO_S_FALSE for empty pictures
  virtual u32 ConvolvePicture(const ImageDesc* src, ImageDesc* dst,
                              const ConvolveParam* param) noexcept = 0;

 protected:
  ~IPictavo3() = default;
};

/// Slots 73 to 87: layers, solid colours, mattes, swirl and tilt, measures, chroma key, blur.
struct IPictavo4 : IPictavo3 {
  /// Slot 73. Mixes a layer into the destination over their common top-left rectangle.
  ///
  /// A pixel's layer weight is a = (source alpha * (opacity + 1)) >> 8. A mode blends the source
  /// colour s and the destination colour d into b, per channel unless it says otherwise:
  ///
  ///      0 normal      s                       6 difference  |s - d|
  ///      1 darken      min(s, d)               7 hue         the source's hue
  ///      2 multiply    (s * d) >> 8            8 add         see below
  ///      3 lighten     max(s, d)               9 saturation  the source's saturation
  ///      4 screen      255 - (((255 - s) * (255 - d)) >> 8)
  ///      5 overlay     (s * d) >> 7 for d < 128, else 255 - (((255 - s) * (255 - d)) >> 7)
  ///     10 luminosity  the source's luma      11 colour      the source's hue and saturation
  ///
  /// Modes 7, 9, 10 and 11 are the non-separable modes of the W3C's Compositing and Blending Level
  /// 1 in integers: luma is (28 * blue + 151 * green + 77 * red) >> 8, saturation is the greatest
  /// channel less the least, and divisions round towards zero.
  ///
  /// alphaMode 0 takes the destination as opaque and leaves its alpha: each colour becomes
  /// (b * a + d * (256 - a)) >> 8 where a > 0; normal mode copies where a = 255. alphaMode 1 does
  /// the same and sets alpha to a, also where a = 0. alphaMode 2 lays over a straight-alpha
  /// destination of alpha dA: alpha becomes oA = dA - dA * a / 255 + a, and each colour
  /// min(255, (((d * dA * (256 - a)) >> 8) + b * a) / oA); a = 0 leaves the pixel, and dA = 0, or
  /// a = 255 in normal mode, copies the source colour. Add mode is not mixed: in every alphaMode a
  /// colour becomes min(255, ((s * a) >> 8) + d), with s itself where a = 255, and the source
  /// colour where alphaMode 2 finds dA = 0.
  ///
  /// Modes 12 to 23 are modes 0 to 11 sampled between pixels, as in slot 74.
  ///
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when the parameter record, a record or its data is
  /// null; PICTAVO_S_OK at once when the opacity is 0; PICTAVO_E_INVALIDARG for mode 20 or above
  /// 23, an opacity above 255, an alphaMode above 2 or a record that holds a texture
  virtual u32 BlendLayer(ImageDesc* dst, const ImageDesc* src,
                         const BlendParam* param) noexcept = 0;

  /// Slot 74. BlendLayer with the source sampled between pixels, in modes 0 to 11 without 8.
  ///
  /// The source pixel is taken at the fractions of the parameter record to the right and below,
  /// from four pixels with the weights wx = trunc((1 - fraction) * 256 + 0.5) and 256 - wx across,
  /// wy likewise down: each channel is the weighted sum >> 16. Where one of the four is clear,
  /// colours are weighted by alpha too, so that a clear pixel's colour never shows; alpha is the
  /// plain sum. The last column and row of the common rectangle go on beyond it.
  /// @return as BlendLayer; PICTAVO_E_INVALIDARG also for mode 8, modes above 11 and fractions
  /// outside 0 … 1
  virtual u32 BlendLayerSubpixel(ImageDesc* dst, const ImageDesc* src,
                                 const BlendParam* param) noexcept = 0;

  /// Slot 75. Copies a rectangle of the source to the destination's upper left corner. The build
  /// changes at level 8.
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when a record, its data or rect is null;
  /// PICTAVO_E_INVALIDARG when the rectangle leaves the source or, moved to the corner, the
  /// destination, its right is left of its left or its bottom above its top, the pictures share a
  /// byte, are textures or not of 4 bytes a pixel, or a pitch is shorter than its row;
  /// PICTAVO_S_FALSE for an empty picture or rectangle
  virtual u32 CopyRectangle(const ImageDesc* src, ImageDesc* dst, const i32 rect[4]) noexcept = 0;

  virtual u32 Reserved76() noexcept = 0;  ///< Slot 76.

  /// Slot 77. Fills a picture of 32-bit pixels with one colour.
  /// @param blue,green,red,alpha its bytes
  /// @return PICTAVO_S_OK; PICTAVO_S_FALSE when a size is below 1; PICTAVO_E_POINTER when buffer is
  /// null
  virtual u32 FillSolidColor(u8* buffer, i32 width, i32 height, i32 pitch, u8 blue, u8 green,
                             u8 red, u8 alpha) noexcept = 0;

  /// Slot 78. Cleans up a matte, such as a key leaves: changes the alpha of a picture of 32-bit
  /// pixels in place, and no colour, in this order.
  ///
  /// - Levels: alpha a becomes nearest(255 * clamp((a / 255 - black) / (white - black), 0, 1)),
  ///   halves up.
  /// - Choke: the least alpha, or for a negative choke the greatest, in the square of
  ///   2 * abs(choke) + 1 pixels around each, as far as it lies in the picture.
  /// - Feather: slot 56's blur of the alphas, with replicated edges.
  ///
  /// All builds give the same bytes. Rows, or strips of columns, are shared with helping threads.
  /// @param picture record of the picture, whose alphas change
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for a texture, pixels
  ///         of other than 4 bytes, a pitch shorter than a row or a field outside its range;
  ///         PICTAVO_S_FALSE for an empty picture; PICTAVO_E_OUTOFMEMORY
  virtual u32 AdjustMatte(ImageDesc* picture, const MatteParam* param) noexcept = 0;

  /// Slot 79. Swirls a disc of a picture; around it, and where nothing is left to turn, pixels are
  /// copied. Source and destination have their top left corners in common; what the destination has
  /// beyond the source is clear.
  ///
  /// The pixel in column x and row y lies at u = x - a to the right of the centre and v = y - b
  /// below it, where a = centreX - 1/2 and b = centreY - 1/2. With r = sqrt(u * u + v * v) and t =
  /// max(0, 1 - r * (1 / radius)) it is sampled (see PICTAVO_SAMPLE_) at
  /// (u * c + v * s + a, v * c - u * s + b), where c and s are the cosine and the sine of
  /// angle * t * t. All is double precision; of two 1/256 as near to a place the even one is taken,
  /// and PICTAVO_SAMPLE_NEAREST takes its place from x + 1/2 and y + 1/2 so rounded.
  ///
  /// Large pictures are shared out by rows, as in slot 86. The levels give the same bytes; they
  /// change at 6 and 8.
  /// @return as slot 67
  virtual u32 SwirlPicture(const ImageDesc* src, ImageDesc* dst,
                           const SwirlParam* param) noexcept = 0;

  /// Slot 80. Multiplies a picture's alpha by a matte of the same size, in place: nearest(a * m /
  /// 255), where m is what `mode` takes of the matte's pixel. Luma is nearest((54 r + 183 g + 19 b)
  /// / 256), halves up. A matte of one byte a pixel is a plane: modes 0 and 2 take the byte, 1 and
  /// 3 255 less it. Pixels whose alpha becomes 0 keep their colours. All builds give the same
  /// bytes; they change at level 6.
  /// @param picture record of a picture of 4 bytes a pixel, whose alphas change
  /// @param matte record of one of 4 bytes a pixel or 1; may be the picture, else shares no byte
  /// with it
  /// @param mode one of PICTAVO_MATTE_
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for a texture, other
  ///         bytes a pixel, a pitch shorter than its row, sizes that differ, pictures that share
  ///         bytes or another mode; PICTAVO_S_FALSE for an empty picture
  virtual u32 ApplyMatte(ImageDesc* picture, const ImageDesc* matte, u32 mode) noexcept = 0;

  /// Slot 81. Shows a picture as a plane that is turned in space, in perspective: by roll as slot
  /// 67 turns it, then by pitch about the horizontal and by yaw about the vertical axis, all
  /// through its centre, which keeps its place. The camera stands before the centre, d = width / 2
  /// / tan(fieldOfView / 2) away, with the source's width. From behind the picture is its mirror
  /// image.
  ///
  /// A point (p, q) right of and below the centre goes to p * m + q * n in space, x to the right, y
  /// down, z away from the camera; with the sines and cosines of yaw (sy, cy), pitch (sp, cp) and
  /// roll (sr, cr)
  ///
  ///     m = (cr * cy + sr * sp * sy, sr * cp, cr * sy - sr * sp * cy)
  ///     n = (cr * sp * sy - sr * cy, cr * cp, -sr * sy - cr * sp * cy)
  ///
  /// and is seen at (x, y) * d / (d + z). So the pixel in column x and row y, u = x + 1/2 - centreX
  /// right of the centre and v = y + 1/2 - centreY below it, is sampled (see PICTAVO_SAMPLE_) at
  /// centreX - 1/2 + (u * n.y / k - v * n.x / k) / w and centreY - 1/2 + (v * m.x / k - u * m.y /
  /// k) / w, where k = cp * cy and w = 1 + u * -cp * sy / (k * d) + v * sp / (k * d). All is double
  /// precision, the factors of u and v made once and one 1 / w for both; of two 1/256 as near to a
  /// place the even one is taken, and PICTAVO_SAMPLE_NEAREST takes its pixel from x + 1/2 and y +
  /// 1/2 so rounded. Where w is 2^-20 or less, at the horizon and behind the camera, and everywhere
  /// when the plane is seen from its edge, pixels are clear. With yaw and pitch multiples of 180
  /// degrees nothing is farther away than the rest, and places go in steps as in slot 67; at 0 they
  /// are that slot's, with scale 1 and the centre as both points.
  ///
  /// Large pictures are shared out by rows, as in slot 86. The levels give the same bytes; they
  /// change at 6 and 8.
  /// @return as slot 67
  virtual u32 TiltPicture(const ImageDesc* src, ImageDesc* dst,
                          const TiltParam* param) noexcept = 0;

  /// Slot 82. The mean of a packed 8-bit picture: the exact sum of its width * height bytes divided
  /// by their number.
  /// @param buffer width * height bytes
  /// @param mean takes the result
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when buffer or mean is null; PICTAVO_E_INVALIDARG when
  /// a size is below 1
  virtual u32 ComputeMean(const u8* buffer, i32 width, i32 height, f32* mean) noexcept = 0;

  /// Slot 83. The index that separates a histogram best (Otsu's): the variance between the values
  /// up to and with it and those above it is the greatest; of several such, the first; where a
  /// single index has a value, that one. In double precision.
  /// @param values what each index counts, of any scale
  /// @param count values
  /// @param index takes the result, 0 … count - 1
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when values or index is null; PICTAVO_E_INVALIDARG
  /// when a value is negative, infinite or not a number, and when there is none above 0
  virtual u32 FindThreshold(const f32* values, u32 count, u32* index) noexcept = 0;

  /// Slot 84. A measure of one channel, from exact sums: the same on every system.
  ///
  /// - Mean, and standard deviation from it, of all pixels.
  /// - Sharpness: the variance of 4 * v less the four neighbours' values; those beyond an edge have
  ///   the value at the edge.
  /// - Noise: the median of the absolute differences between neighbours in a row (of two in the
  ///   middle, their mean), times 1.4826 / sqrt(2): noise's standard deviation where the picture
  ///   itself is smooth. 0 for a picture one pixel wide.
  ///
  /// The builds of all but noise change at levels 3 and 8.
  /// @param channel 0 … 3 for blue, green, red, alpha; -1 for the nearest luma, (19 * blue + 183 *
  /// green + 54 * red + 128) >> 8
  /// @param measure PICTAVO_MEASURE_…
  /// @param result takes the measure, on the scale of bytes; of sharpness, on that of their squares
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when buffer or result is null; PICTAVO_E_INVALIDARG
  /// for another channel or measure and a pitch shorter than a row; PICTAVO_S_FALSE for an empty
  /// picture
  virtual u32 MeasurePicture(const u8* buffer, i32 width, i32 height, i32 pitch, i32 channel,
                             u32 measure, f32* result) noexcept = 0;

  /// Slot 85. How many pixels have a byte above a threshold, and the least rectangle around them.
  /// The builds change at levels 6 and 8.
  /// @param channel 0 … 3 for blue, green, red, alpha
  /// @param threshold no byte is above 255 or more
  /// @param count takes their number, at most 2^32 - 1
  /// @param bounds takes the rectangle; all 0 where there is no such pixel
  /// @return PICTAVO_S_OK, also where there is none; PICTAVO_E_POINTER when buffer, count or bounds
  /// is null; PICTAVO_E_INVALIDARG for another channel, a pitch shorter than a row and an empty
  /// picture
  virtual u32 FindBounds(const u8* buffer, i32 width, i32 height, u32 pitch, u32 channel,
                         u32 threshold, u32* count, PixelBounds* bounds) noexcept = 0;

  /// Slot 86. Makes pixels near one or more key colours clear, takes the keys' spill off the pixels
  /// around them, and writes that to a picture of the same size. The rows of both are packed: a
  /// pitch above 4 * width is accepted and not used.
  ///
  /// Colours are worked on in single precision, in the order written here. Y = 0.257 R + 0.504 G +
  /// 0.098 B + 16, U = -0.148 R - 0.291 G + 0.439 B, V = 0.439 R - 0.368 G - 0.071 B, of the pixel
  /// as of the key (KY, KU, KV); AYUV pixels are read as Y, U + 128, V + 128. A key's distance from
  /// grey is kg = sqrt(KU * KU + KV * KV). From 13 on the key takes a cone of hues:
  ///
  /// - x = (KU * U + KV * V) / kg lies towards the key, z = (KU * V - KV * U) / kg across. Where
  ///   |z| > x * tan(angle) the pixel keeps its colour and its alpha A, as a = A / 255.
  /// - Elsewhere, with the cone's edge e = |z * cot(angle)|, or 0 for an angle of 0, and p = max(0,
  ///   x - e) beyond it (both products with the angle rounded from double precision):
  ///   Y = max(0, Y - p * (KY / kg)), U = (KU * e - KV * z) / kg, V = (KV * e + KU * z) / kg and
  ///   a = A * limited((1 - p / kg)^2) / 255, or 0 where denoise >= sqrt((x - kg)^2 + z * z).
  /// - The alpha written is trunc(a * 255). Of BGRA pixels y = (Y - 16) * 1.164 gives red y + 1.596
  ///   V, green y - 0.392 U - 0.813 V and blue y + 2.017 U, limited to 0 … 255 and truncated; also
  ///   outside the cone, where colours may so change by rounding. AYUV pixels take trunc(Y),
  ///   trunc(U + 128) and trunc(V + 128), the low byte of each.
  ///
  /// With a key nearer to grey, pixels keep their colours. Where A is not 0, sqrt((V - KV)^2 + (U -
  /// KU)^2) < denoise and |Y - KY| < angle, the alpha becomes trunc(|Y - KY|); negative parameters
  /// are huge here, read as unsigned numbers.
  ///
  /// Several keys give, byte by byte and alpha included, the least of what each alone gives.
  ///
  /// Of different heights the rows that both have are keyed and the rest of dst is left alone. The
  /// pictures may overlap in any way: all is as if src were read first. The rows of large pictures
  /// are shared with helping threads, the library's own, which end with its last object. No key at
  /// all leaves dst alone. The debugger is told how long each key and the whole took.
  /// @param dst record of the picture that is written; may be src's, or overlap it
  /// @param keys the colours to key
  /// @param keyCount how many these are; 0 leaves dst alone
  /// @param format 1 for BGRA pictures, any other value for AYUV (bytes V, U, Y, A)
  /// @return PICTAVO_S_OK, also for an empty picture; PICTAVO_E_POINTER when a record, its data or
  /// keys is null; PICTAVO_E_INVALIDARG when keyCount is negative, a record is a texture, a size is
  /// negative, widths differ, a pitch is below 4 * width or a picture has 4 GiB or more;
  /// PICTAVO_E_OUTOFMEMORY
  virtual u32 ApplyChromaKey(const ImageDesc* src, ImageDesc* dst, const ChromaKey* keys,
                             i32 keyCount, i32 format) noexcept = 0;

  /// Slot 87. Blurs a picture in place by three box blurs that come near a Gaussian of standard
  /// deviation s = radius / 3. Clear pixels have no colour in it, so that they do not darken the
  /// edges of what they surround.
  ///
  /// With l the largest odd number up to sqrt(12 * s * s / 3 + 1) and
  /// m = trunc((12 * s * s - 3 * l * l - 12 * l - 9) / (-4 * l - 4)), box i of 0, 1 and 2 is l
  /// where i < m, else l + 2, but at most the picture's smaller side. It reaches
  /// r = trunc((box - 1) / 2) pixels to each side; one with r = 0 does nothing.
  ///
  /// Each box blur goes along the rows and then down the columns. A pixel becomes the mean of the n
  /// = 2 * r + 1 pixels around it: blue, green and red are the sums over those whose alpha is not
  /// 0, divided by their number, alpha is the sum of all divided by n; both in single precision,
  /// truncated. Where, after the rows, none of the n pixels down a column has an alpha, the pixel
  /// is left as it was before that box blur. Beyond every edge the pixel at the edge goes on, so
  /// that a mirrored picture gives the mirrored blur.
  ///
  /// The time does not depend on the radius, but for beginning each row and column. Rows may run
  /// upwards. Below level 6 the portable build runs. All memory is allocated before anything is
  /// written: width * height pixels, little of which vector builds touch, or what those need if
  /// that is more.
  /// @param image the picture that is changed in place: first byte of its top row
  /// @param pitch bytes from row to row; at least a row, up or down, unless there is one row only
  /// @param radius pixels, above 0, at most the picture's smaller side: three standard deviations
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when image is null; PICTAVO_S_FALSE when a size is
  /// below 1 or the radius is not above 0, not a number, or above the width or the height;
  /// PICTAVO_E_INVALIDARG when rows overlap; PICTAVO_E_OUTOFMEMORY
  virtual u32 GaussianBlurBox3(u8* image, i32 width, i32 height, i32 pitch,
                               f32 radius) noexcept = 0;

 protected:
  ~IPictavo4() = default;
};

/// Slots 88 to 97: colours, frames, planes, layers in rectangles, surfaces.
///
/// The first five convert colours through ConvertUtility.dll, loaded at the first call of any of
/// them. Options choose the colour space:
///
/// - PICTAVO_COLOR_YUV with a PICTAVO_MATRIX_, limited or full. With the matrix's weights Kr and Kb
///   of red and blue in luma, Y = Kr r + (1 - Kr - Kb) g + Kb b, U = (b - Y) / (2 - 2 Kb) and V =
///   (r - Y) / (2 - 2 Kr). Limited, 255 of Y becomes 219, above 16, and 255 of U or V 224, around
///   128; full, Y is as above and 128 is added to U and V. Back to RGB by the inverse, each channel
///   limited to 0 … 255.
/// - PICTAVO_COLOR_HSV and PICTAVO_COLOR_HSL, matrix 0. Hue is the place on the circle red, yellow,
///   green, cyan, blue, magenta, in 256ths of a turn (PICTAVO_RANGE_FULL) or degrees
///   (PICTAVO_RANGE_DEGREES), 0 for greys. With the greatest and the least channel, value is the
///   greatest and saturation 255 * (greatest - least) / greatest; lightness is (greatest + least) /
///   2 and saturation 255 * (greatest - least) / the lesser of greatest + least and 510 less that.
///
/// A colour's numbers are named first, second and third in the order of the model's name. Every
/// result is the exact one rounded once to the nearest integer, the lower of two equally near; a
/// hue that rounds to a full turn is 0. The levels give the same bytes.
///
/// There and back, a colour channel moves by at most 1 in full YUV and 2 in limited YUV, 3 in HSV
/// and 4 in HSL with 256 hues, 2 and 3 in degrees; greys come back as they were, but for limited
/// YUV. YUV has room for colours that RGB has not; these come back as others.
struct IPictavo5 : IPictavo4 {
  /// Slot 88. Converts a picture from RGB: the first number goes where red was, the second where
  /// green and the third where blue was. So YUV pixels are V, U, Y, A in memory, as those of slot
  /// 20 (which rounds otherwise), and HSV pixels V, S, H, A. Alpha is copied. src may be dst, with
  /// the same pitch.
  /// @return PICTAVO_S_OK; PICTAVO_S_FALSE when a size is 0; PICTAVO_E_FAIL without
  /// ConvertUtility.dll, whatever the arguments; PICTAVO_E_POINTER when src or dst is null;
  /// PICTAVO_E_INVALIDARG for options that name no space, a hue in degrees, a negative size, or a
  /// pitch, of either sign, shorter than a row of pixels
  virtual u32 ConvertPictureFromRGB(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                                    i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept = 0;

  /// Slot 89. Converts a picture back to RGB; the twin of slot 88. @return as slot 88
  virtual u32 ConvertPictureToRGB(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                                  i32 dstPitch, u32 model, u32 matrix, u32 range) noexcept = 0;

  /// Slot 90. Converts one colour from RGB, as slot 88 converts pixels.
  /// @param r,g,b 0 … 255
  /// @param first,second,third take a number each, named in the order of the model's name
  /// @return PICTAVO_S_OK; PICTAVO_E_FAIL without ConvertUtility.dll, whatever the arguments;
  /// PICTAVO_E_POINTER when an output is null; PICTAVO_E_INVALIDARG for options that name no space
  /// or a number outside 0 … 255
  virtual u32 ConvertColorFromRGB(i32 r, i32 g, i32 b, u32* first, u32* second, u32* third,
                                  u32 model, u32 matrix, u32 range) noexcept = 0;

  /// Slot 91. Converts one colour to RGB, as slot 89 converts pixels.
  /// @param first,second,third 0 … 255, in the order of the model's name; a hue may be any number:
  /// it goes round
  /// @param r,g,b take a number of 0 … 255 each
  /// @return as slot 90
  virtual u32 ConvertColorToRGB(i32 first, i32 second, i32 third, u32* r, u32* g, u32* b, u32 model,
                                u32 matrix, u32 range) noexcept = 0;

  /// Slot 92. Converts one pixel, as slot 90 converts a colour.
  /// @param pixel four bytes of a picture
  /// @param first,second,third take a number each, in the order of the model's name
  /// @return as slot 90; PICTAVO_E_POINTER when pixel is null, too
  virtual u32 ConvertPixelFromRGB(const u8* pixel, u32* first, u32* second, u32* third, u32 model,
                                  u32 matrix, u32 range) noexcept = 0;

  /// Slot 93. Makes a packed frame of pixels: the way back from slot 54.
  ///
  /// Y of each pixel is the exact one, by slot 88's formula; U and V are those of the mean colour
  /// of the pixels that share them, each channel to the nearest integer, halves up, whatever the
  /// alphas. P010 takes 10 bits, in the upper ones of its words; the lower six are 0. The second Y
  /// of a last pixel without a neighbour, in YUY2 and UYVY, is the first. Alpha goes nowhere but
  /// into RGBA32. Every build gives the same bytes; rows of large frames are shared out to helping
  /// threads.
  ///
  /// Squares of 2 x 2 equal pixels come back from full NV12 within 1 of what they were.
  /// @param src     rows of BGRA pixels, srcPitch bytes apart
  /// @param dst     FrameBytes(layout, width, height) bytes; shares no byte with src
  /// @param format  what FrameFormat makes, as slot 54 takes it
  /// @return as slot 54
  virtual u32 ConvertBGRAToFrame(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                                 u32 format) noexcept = 0;

  /// Slot 94. Makes a plane of bytes from one channel of a picture, or of its luma:
  /// (19 * blue + 183 * green + 54 * red + 128) >> 8, BT.709's weights. All builds give the same
  /// bytes; they change at levels 6 and 8.
  /// @param dst      rows of `width` bytes, `dstPitch` bytes apart; shares no byte with src
  /// @param channel  0 blue, 1 green, 2 red, 3 alpha, 4 luma
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for another channel,
  /// a pitch shorter than its row or pictures that share a byte; PICTAVO_S_FALSE for an empty
  /// picture
  virtual u32 ExtractPlane(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                           i32 dstPitch, u32 channel) noexcept = 0;

  /// Slot 95. One colour from hue, saturation and lightness to RGB.
  ///
  /// Saturation and lightness run from 0 to 255. With chroma C = (255 - |2 * lightness - 255|) *
  /// saturation / 255, the greatest channel is lightness + C / 2 and the least lightness - C / 2;
  /// the one between goes evenly from the least to the greatest, or back, in 60 degrees of hue.
  /// Each is computed exactly and rounded once to the nearest integer, the higher of two equally
  /// near.
  /// @param hue degrees, any: 0 is red, 120 green, 240 blue
  /// @param saturation,lightness 0 … 255
  /// @param r,g,b take a byte each
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when r, g or b is null
  virtual u32 ConvertHSLToRGB(i32 hue, u8 saturation, u8 lightness, u8* r, u8* g,
                              u8* b) noexcept = 0;

  /// Slot 96. Scales a layer into a rectangle between the destination's pixels and mixes it in as
  /// slot 73 does.
  ///
  /// The rectangle is left, top, right, bottom in pixels; what leaves the destination is cut off. A
  /// column x samples the source's at (x + 1/2 - left) * (source width / (right - left)) - 1/2,
  /// limited to 0 … source width - 1, in double precision, to the nearest 1/256, halves up; rows
  /// likewise. The four pixels around that place make a pixel as PICTAVO_SAMPLE_BILINEAR weighs
  /// them. Its alpha is then multiplied by the part of the destination's pixel that lies in the
  /// rectangle, the product of its parts across and down, each in the nearest 1/256, and rounded to
  /// the nearest, halves up. What comes out is blended by the record's mode, opacity and alphaMode;
  /// its fractions are not read. To less than half its size a layer loses pixels: a filtered
  /// resizer comes first. The levels give the same bytes; they change as those of slot 73.
  /// @param src record of the layer, of any size
  /// @param rect four numbers: left, top, right, bottom in pixels of the destination
  /// @return PICTAVO_S_OK, also when nothing of the rectangle lies in the destination, it has no
  /// area, or the opacity is 0; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for a texture,
  /// pixels of other than 4 bytes, a pitch shorter than a row, a mode above 11, an opacity above
  /// 255, an alphaMode above 2, a rectangle that is no number, beyond -16777216 … 16777216 or
  /// ends before it begins, and pictures that share a byte; PICTAVO_S_FALSE for an empty picture
  virtual u32 BlendLayerScaled(ImageDesc* dst, const ImageDesc* src, const BlendParam* param,
                               const f32* rect) noexcept = 0;

  /// Slot 97. Copies what two 32-bit surfaces have in common, from their upper left corners on; the
  /// rest of the destination stays. They may be the same picture, which then stays as it is.
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when a surface or its picture's data is null;
  /// PICTAVO_E_FAIL when a surface's query does not answer 1; PICTAVO_E_INVALIDARG for a texture,
  /// pixels of other than 4 bytes, a pitch shorter than its row and different pictures that share a
  /// byte; PICTAVO_S_FALSE for an empty picture
  virtual u32 CopySurface(IPictavoSurface* dst, IPictavoSurface* src) noexcept = 0;

 protected:
  ~IPictavo5() = default;
};

/// Slots 98 to 110: OpenCL, Direct3D 11, the colour matrix, channels and planes.
///
/// The OpenCL methods load the system's OpenCL runtime at the first call and run on its first GPU,
/// or on its first device of another kind when it has none; a device that cannot have a method's
/// program is left for the next one. They read and write plain memory through surfaces. One object
/// runs one of them at a time; calls from other threads wait. Their compiled programs are kept on
/// disk (docs/architecture.md). Buffers for the largest pictures so far stay with the object.
/// Source and destination may be the same surface: the source is read whole before the destination
/// is written. Levels do not matter.
///
/// Results of every OpenCL method: PICTAVO_S_OK; PICTAVO_E_POINTER when a surface or other pointer
/// is null; PICTAVO_E_FAIL when a surface's query does not answer 1; PICTAVO_E_INVALIDARG for a
/// picture whose data is null, that holds a texture, that has a size below 1 or from 2^29 on, or
/// whose bytesPerPixel the method does not take; PICTAVO_E_FAIL without a runtime, device, compiled
/// program or memory manager, or when the device fails, which the next call then brings up anew;
/// PICTAVO_E_OUTOFMEMORY when a buffer cannot be had. A call that fails writes nothing.
struct IPictavo6 : IPictavo5 {
  /// Slot 98. ExtendBoundary (slot 71) on OpenCL: copies a picture's edge pixels, alpha included,
  /// into a border of that many pixels around it, in place. The border lies inside the allocation
  /// around the picture; the picture's own pixels are not written. A border of 0 writes nothing.
  /// Rows lie as slot 71 takes them, and the same bytes are written; where that puts rows of the
  /// border into the picture or into each other, it is the processor that writes them.
  /// @param dst the picture that gets the border
  /// @return as IPictavo6 tells; PICTAVO_E_INVALIDARG also when picture and border are wider than
  /// bufferWidth or higher than bufferHeight, or rows of bytes with a border are shorter than
  /// the two
  virtual u32 ExtendBoundaryOpenCL(IPictavoSurface* dst, u32 border) noexcept = 0;

  /// Slot 99. Grades a picture in place by one matrix, made of six parameters in this order; with
  /// luma Y = 0.2126 R + 0.7152 G + 0.0722 B (BT.709), in double precision:
  ///
  /// 1. White balance: red, green and blue are multiplied by 1 + temperature / 2, 1 - tint / 2 and
  ///    1 - temperature / 2, and all three by what leaves the luma of greys.
  /// 2. Saturation and hue: with u = (B - Y) / 1.8556 and v = (R - Y) / 1.5748, which turn by the
  ///    hue's angle a and grow by the saturation s, R, G and B become those of the same luma, of
  ///    u' = s * (u * cos a - v * sin a) and v' = s * (u * sin a + v * cos a).
  /// 3. Contrast and brightness: c becomes 127.5 + contrast * (c - 127.5) + 255 * brightness.
  ///
  /// Each row's weights and constant are rounded to the nearest 1/4096, the weight of the channel
  /// itself being what the other two leave of the rounded sum of the three: so greys stay grey. A
  /// byte is (the sum of weights times bytes + constant + 2048) >> 12, kept within 0 … 255. Alpha
  /// stays. All builds give the same bytes; they change at levels 6 and 8.
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER when buffer or param is null; PICTAVO_E_INVALIDARG for
  /// a parameter outside its range or not a number, or a pitch shorter than a row; PICTAVO_S_FALSE
  /// for an empty picture
  virtual u32 AdjustColor(u8* buffer, i32 width, i32 height, i32 pitch,
                          const ColorParam* param) noexcept = 0;

  /// Slot 100. Makes every pixel of a 32-bit picture from the place in the source where a matrix
  /// puts it. The destination pixel in column x and row y lies at
  ///
  ///     u = m[0] * (x + 0.5) + m[1] * (y + 0.5) + m[2] - 0.5
  ///     v = m[3] * (x + 0.5) + m[4] * (y + 0.5) + m[5] - 0.5
  ///
  /// and each channel is interpolated between the four pixels around it, across by u - floor(u),
  /// then down by v - floor(v), in single precision, and rounded to the nearest integer, halves up.
  /// Pixels outside the source are clear black, so straight-alpha colours darken along its edge;
  /// premultiply first. A device may differ from the rule by 1.
  /// @param matrix six finite numbers, from the destination to the source
  /// @return as IPictavo6 tells; PICTAVO_E_INVALIDARG also for a matrix that is not finite
  virtual u32 TransformOpenCL(IPictavoSurface* dst, IPictavoSurface* src,
                              const f32* matrix) noexcept = 0;

  /// Slot 101. Resizes a 32-bit surface into another one by slot 60.
  /// @return as slot 60; PICTAVO_E_POINTER also when a surface is null; PICTAVO_E_FAIL when a
  /// surface's query does not answer 1
  virtual u32 ResizeSurface(IPictavoSurface* dst, IPictavoSurface* src,
                            const ResizeParam* param) noexcept = 0;

  /// Slot 102. Resizes a 32-bit picture to the destination's size. The destination pixel in column
  /// x lies at u = (x + 0.5) * (source width / destination width) - 0.5, kept within 0 … source
  /// width - 1, and v likewise down; between its four neighbours as in slot 100, every channel
  /// alike. A device may differ from the rule by 1.
  /// @return as IPictavo6 tells
  virtual u32 BilinearInterpolationOpenCL(IPictavoSurface* dst, IPictavoSurface* src) noexcept = 0;

  /// Slot 103. Blurs a texture by a box: every channel of a pixel becomes the mean of the pixels up
  /// to `radius` columns and rows away, as far as the picture has them, (sum + count / 2) / count.
  ///
  /// Pictures, state of the context and codes as slot 108; source and destination have one size,
  /// and are both colour or both planes.
  /// @param radius pixels, any number
  /// @return as slot 108; PICTAVO_E_INVALIDARG also for pictures that do not fit together
  virtual u32 BoxBlurD3D(ID3D11Device* device, ID3D11DeviceContext* context, const ImageDesc* dst,
                         const ImageDesc* src, u32 radius) noexcept = 0;

  /// Slot 104. Box blur of a 32-bit picture, along rows and then along columns, every channel
  /// alike; premultiply first where alpha varies. Each pass makes a pixel the mean of the window
  /// n = 2 * radius + 1 around it, (sum + n / 2) / n in whole numbers; the edge pixels go on
  /// outside the picture.
  /// @param radiusX 0 … 2047; 0 leaves the pass along rows out
  /// @param radiusY 0 … 2047; 0 leaves the pass down columns out; 0 for both copies the picture
  /// @return as IPictavo6 tells; PICTAVO_E_INVALIDARG also for surfaces of two sizes, larger radii
  virtual u32 FastBlurOpenCL(IPictavoSurface* dst, IPictavoSurface* src, u32 radiusX,
                             u32 radiusY) noexcept = 0;

  /// Slot 105. Fills a picture with one colour.
  /// @param colour 0xAARRGGBB; its low byte for planes of bytes
  /// @return as IPictavo6 tells
  virtual u32 MemsetColorOpenCL(IPictavoSurface* dst, u32 colour) noexcept = 0;

  /// Slot 106. Makes each byte of a pixel from one of the bytes of the source's pixel: `b` says
  /// from which one blue is made, and so on, 0 … 3; 4 gives 0 and 5 gives 255. Works in place. All
  /// builds give the same bytes; they change at levels 6 and 8.
  /// @param count packed pixels
  /// @param b,g,r,a where each byte comes from: 0 … 5
  /// @return PICTAVO_S_OK; PICTAVO_E_POINTER for a null; PICTAVO_E_INVALIDARG for a number above 5,
  /// or pixels that cannot lie in memory; PICTAVO_S_FALSE for a count below 1
  virtual u32 ShuffleChannels(u8* dst, const u8* src, i64 count, u32 b, u32 g, u32 r,
                              u32 a) noexcept = 0;

  /// Slot 107. Slot 71 for 4-byte pixels, with the alpha of every border pixel cleared.
  /// @return as slot 71; PICTAVO_E_INVALIDARG also for pixels of 1 byte
  virtual u32 ExtendBoundaryTransparent(const ImageDesc* image, u32 border) noexcept = 0;

  /// Slot 108. Runs a Direct3D 11 operation on textures, by compute shaders on the host's context.
  ///
  /// Pictures are textures of one of three formats: B8G8R8A8_UNORM, R8G8B8A8_UNORM, or R8_UNORM, a
  /// plane of alphas. Operations convert between them: a plane read is white of its alpha, a plane
  /// written takes the alpha. Of the records only memoryKind and data are read; the size is the
  /// texture's. Textures are single (no array, no multisampling, the first level) and of `device`;
  /// a destination needs D3D11_BIND_UNORDERED_ACCESS, a source D3D11_BIND_SHADER_RESOURCE and must
  /// not be bound for output. Pixels of the destination outside what an operation writes stay.
  ///
  /// | opCode | param | what the destination gets |
  /// |---|---|---|
  /// | 0 | null, D3DRegion | the source, or with subMode 2 the region, copied as it is |
  /// | 1 | null | the source's pixels, as far as both reach; both colour or both planes |
  /// | 2 | D3DBlurParam | slot 103 with a radius for columns and one for rows |
  /// | 3 | D3DGrowParam | the source grown by a filter, as far as both reach; no planes |
  /// | 4 | D3DClearParam | one colour all over; `src` is not read |
  /// | 5 | D3DRegion | the region |
  /// | 6 | D3DScaleParam, ResizeParam | the source scaled as slot 29, or with subMode 1 as 60 |
  /// | 7 | null | nothing: no pointer is read; the object lets go of what it keeps |
  /// | 8 | D3DRegion | the region; where it leaves the source, the source's edge goes on |
  /// | 9 | D3DRegionFilterParam | operation 8's region, filtered |
  /// | 10 | D3DAffineParam, RotateParam | the source through an affine map, or as slot 67 |
  /// | 11 | D3DFillParam | one colour; `src` is not read |
  /// | 12 | D3DGrowRegionParam | the region, grown by a filter |
  /// | 13 | D3DTintParam | one colour with the source's alpha; no planes |
  /// | 14 | D3DKeyParam | the region, keyed as slot 86 keys BGRA pictures |
  ///
  /// With colours as bytes, and divisions rounding towards zero:
  ///
  /// - Copied as it is: by the card's own copy, without a shader. Both textures have one format
  ///   and, for subMode 0, one size. They may have any D3D11_BIND flags and usages, but for a
  ///   destination that is D3D11_USAGE_IMMUTABLE, and a source may be bound for output.
  /// - All over: by the card's own clear, to the nearest bytes, halves up. A destination with
  ///   D3D11_BIND_RENDER_TARGET will do too.
  /// - Filtered: along rows, then along columns, the mean of the pixels up to the radius away and
  ///   inside the region. Of n pixels with S the sum of alphas, alpha becomes (S + n / 2) / n and
  ///   each colour (the sum of colour * alpha + S / 2) / S, 0 where S = 0.
  /// - Grown: of the pixels inside the filter, the one with the most alpha * weight, the first in
  ///   reading order of several, weights being rounded to 256ths. Alpha becomes that product,
  ///   rounded; nothing is left where it is 0. clipSource multiplies it by 255 less the source's
  ///   own alpha there, / 255, rounded. Cones and bells take the card's square root and
  ///   exponential, so two cards may round a weight to neighbouring 256ths; the alpha then differs
  ///   by 1, or another pixel has the most.
  /// - Affine: four pixels around the place, with the upper 8 bits of its fraction as weights, the
  ///   last column and row of the part going on. The weighted sum of alphas, S, becomes alpha
  ///   (S + 32768) >> 16, and colours the weighted mean by alpha, rounded. Places left of or above
  ///   the part, or beyond its last column or row, leave the destination's pixel; a map that has no
  ///   others is PICTAVO_S_OK.
  /// - As slot 60 or 67 (subMode 1): the whole source, into the whole destination. Turned, it has
  ///   slot 67's bytes; resized, each channel is within 1 of slot 60's, but for the colours of
  ///   pixels whose weighted alpha lies between 0 and 1 to the last bits of a float.
  /// - Keyed: each channel within 1 of slot 86 with format 1, but for pixels that lie on one of its
  ///   limits to the last bits of a float.
  ///
  /// The context's compute shader, its first constant buffer and its first three inputs and outputs
  /// are put back afterwards, a range of a constant buffer as the whole buffer; Direct3D itself
  /// unbinds the destination from wherever else it is bound. A predicate that the host has set
  /// holds for this work too: where it forbids drawing, nothing is written. The call only records
  /// work, so a deferred context will do. The object keeps shaders, buffers and textures in between
  /// of the last device, and so the device, until it is released, used with another one or told to
  /// let go by operation 7. The textures take, after operations 2 and 9, 8 to 12 bytes a pixel (2
  /// or 3 for planes in operation 2); after 3 and 12 up to 8; after 6 with subMode 1, 16 for each
  /// of the destination's columns in each of the source's rows; after 11 up to the rectangle. Of
  /// contexts and of the host's textures it keeps nothing.
  /// One thread at a time may use a context.
  ///
  /// @param opCode PICTAVO_D3D_…
  /// @param subMode PICTAVO_D3D_WHOLE; for opCode 0 also PICTAVO_D3D_PART, for 6 and 10 also
  /// PICTAVO_D3D_AS_PROCESSOR
  /// @param src record of the texture that is read; not looked at by operations 4 and 11
  /// @param param the operation's record, as the table has it, or null
  /// @return PICTAVO_S_OK; PICTAVO_S_FALSE when nothing is to be written; PICTAVO_E_FAIL for
  /// another opCode and for a texture of another format; PICTAVO_E_POINTER when an argument, a
  /// record's texture, the colour or the keys are null;
  /// PICTAVO_E_INVALIDARG for another subMode, a context of another device, pictures that cannot be
  /// used as stated, one texture as both, values out of their range and places too far out to
  /// compute; PICTAVO_E_OUTOFMEMORY;
  /// what Direct3D answers when it fails or the device is removed
  virtual u32 D3DComputeOp(i32 opCode, i32 subMode, ID3D11Device* device,
                           ID3D11DeviceContext* context, const ImageDesc* dst, const ImageDesc* src,
                           const void* param) noexcept = 0;

  /// Slot 109. Makes grey, opaque pixels of a plane of bytes times a factor: blue, green and red
  /// become the nearest integer to byte * gain, exactly, halves up, at most 255. All builds give
  /// the same bytes; they change at levels 6 and 8.
  /// @param src   rows of `width` bytes, `srcPitch` bytes apart
  /// @param dst   rows of `width` pixels of 4 bytes, `dstPitch` bytes apart; shares no byte with
  /// src
  /// @param gain  0 … 255
  /// @return PICTAVO_S_OK, for an empty picture too; PICTAVO_E_POINTER for a null;
  /// PICTAVO_E_INVALIDARG for a gain outside its range or not a number, a pitch shorter than its
  /// row or pictures that share a byte
  virtual u32 ExpandPlaneScaled(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                                i32 dstPitch, f32 gain) noexcept = 0;

  /// Slot 110. Makes grey, opaque pixels of a plane of bytes: each byte becomes a pixel's blue,
  /// green and red; alpha is 255. All builds give the same bytes; they change at levels 6 and 8.
  /// @param src  rows of `width` bytes, `srcPitch` bytes apart
  /// @param dst  rows of `width` pixels of 4 bytes, `dstPitch` bytes apart; shares no byte with src
  /// @return PICTAVO_S_OK, for an empty picture too; PICTAVO_E_POINTER for a null;
  ///         PICTAVO_E_INVALIDARG for a pitch shorter than its row or pictures that share a byte
  virtual u32 ExpandPlane(const u8* src, i32 width, i32 height, i32 srcPitch, u8* dst,
                          i32 dstPitch) noexcept = 0;

 protected:
  ~IPictavo6() = default;
};

/// Number of methods in the table that IPictavo6 completes. pictavo_methods.inl lists them all.
inline constexpr u32 PICTAVO_METHOD_COUNT = 111;

}  // namespace pictavo

extern "C" {

/// @name Create
/// @{

/// Returns a new, independent object, or null when memory is short. The six create functions are
/// one: ask for the newest interface that your host was built with. The host owns the object and
/// gives it back through any release function. Thread-safe.
PICTAVO_API pictavo::IPictavo* GetPictavo();
PICTAVO_API pictavo::IPictavo2* GetPictavo2();
PICTAVO_API pictavo::IPictavo3* GetPictavo3();
PICTAVO_API pictavo::IPictavo4* GetPictavo4();
PICTAVO_API pictavo::IPictavo5* GetPictavo5();
PICTAVO_API pictavo::IPictavo6* GetPictavo6();
/// @}

/// @name Release
/// @{

/// Destroys an object. Ignores null and always returns 0. The six release functions are one.
/// Thread-safe; a release must not overlap any call on the same object.
PICTAVO_API int32_t ReleasePictavo(pictavo::IPictavo* object);
PICTAVO_API int32_t ReleasePictavo2(pictavo::IPictavo2* object);
PICTAVO_API int32_t ReleasePictavo3(pictavo::IPictavo3* object);
PICTAVO_API int32_t ReleasePictavo4(pictavo::IPictavo4* object);
PICTAVO_API int32_t ReleasePictavo5(pictavo::IPictavo5* object);
PICTAVO_API int32_t ReleasePictavo6(pictavo::IPictavo6* object);
/// @}

}  // extern "C"

#endif  // PICTAVO_PICTAVO_H_
