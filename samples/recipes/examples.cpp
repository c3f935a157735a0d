// Every method once, in the order of the slots: the examples of the API reference, which shows of
// each the paragraph that calls it. As a program it makes all these calls, but those of Direct3D,
// on a frame, a title over it and a matte, and says whether all did what they should.
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <vector>

#include "pictavo/pictavo_host.h"

using namespace pictavo;

void Require(u32 result, u32 expected = PICTAVO_S_OK) {
  if (result != expected) throw std::runtime_error("Pictavo refused a call");
}

using Pixels = std::vector<u8>;

constexpr int width = 320, height = 180, pitch = 4 * width;
Pixels frame = Pixels(pitch * height, 200), title = Pixels(pitch * height, 90);
Pixels result = Pixels(pitch * height);
Pixels matte = Pixels(width * height, 128);  // a byte a pixel

ImageDesc Describe(Pixels& pixels, int columns, int rows, int bytesPerPixel = 4) {
  ImageDesc record = {};
  record.data = pixels.data();
  record.width = record.bufferWidth = columns;
  record.height = record.bufferHeight = rows;
  record.pitch = columns * bytesPerPixel;
  record.bytesPerPixel = bytesPerPixel;
  return record;
}
ImageDesc picture = Describe(frame, width, height);
ImageDesc layer = Describe(title, width, height);
ImageDesc made = Describe(result, width, height);
ImageDesc plane = Describe(matte, width, height, 1);

void Blend(IPictavo6* library) {
  // The portable code, to compare with, and then again what the processor has.
  const i32 level = library->GetCPULevel();
  library->SetCPULevel(PICTAVO_LEVEL_PORTABLE);
  library->SetCPULevel(level);

  library->DetectInstructionSet();

  // Opaque at the top, gone at the bottom.
  Require(library->BlendOverWithOpacityRamp(frame.data(), title.data(), width, height, pitch, pitch,
                                            0, 1.0f, 0.0f),
          1);

  Require(library->BlendOverPacked(frame.data(), title.data(), width, height), 1);

  Require(library->BlendOverPitched(frame.data(), title.data(), width, height, pitch), 1);

  Require(library->BlendPremultipliedWithOpacityRamp(frame.data(), title.data(), width, height,
                                                     pitch, pitch, 0, 1.0f, 0.5f),
          1);

  Require(library->BlendPremultipliedPacked(frame.data(), title.data(), width, height), 1);

  Require(library->BlendPremultipliedPitched(frame.data(), title.data(), width, height, pitch), 1);

  // Two layers become one, which is laid over a frame later. Both are premultiplied.
  Require(library->CompositePremultipliedWithOpacityRamp(result.data(), title.data(), width, height,
                                                         pitch, pitch, 0, 0.5f, 0.5f),
          1);

  Require(library->CompositePremultipliedPitched(result.data(), title.data(), width, height, pitch),
          1);

  Require(library->CompositePremultipliedPacked(result.data(), title.data(), width, height), 1);

  // At half its opacity, over the frame.
  Require(library->BlendOverWithOpacity(frame.data(), title.data(), width, height, pitch, pitch,
                                        127, 0));

  Require(library->BlendOverWithOpacityRampAndAlpha(frame.data(), title.data(), width, height,
                                                    pitch, pitch, 255, 0, 0, 1.0f, 0.0f),
          1);

  // Over blue instead of the frame's colours.
  Require(library->BlendOverWithOpacityRampKeepAlpha(frame.data(), title.data(), width, height,
                                                     pitch, pitch, 255, 0xFF0000FF, 0, 1.0f, 0.0f),
          1);
}

void Convert(IPictavo6* library) {
  u32 y, u, v;
  library->ConvertRGBToYUVPixel(255, 128, 0, &y, &u, &v);

  u32 r, g, b;
  library->ConvertYUVToRGBPixel(81, 90, 240, &r, &g, &b);

  Require(library->PremultiplyPitched(title.data(), width, height, pitch), 1);
  Require(library->UnpremultiplyPitched(title.data(), width, height, pitch), 1);

  Require(library->PremultiplyPacked(title.data(), width, height), 1);
  Require(library->UnpremultiplyPacked(title.data(), width, height), 1);

  // There and back.
  Require(library->ConvertBGRAToYUVA(frame.data(), width, height, pitch, result.data(), pitch));
  Require(library->ConvertYUVAToBGRA(result.data(), width, height, pitch, frame.data(), pitch));

  Require(
      library->ConvertBGRAToYUVAPortable(frame.data(), width, height, pitch, result.data(), pitch));

  i32 luma[4], blueDifference[4], redDifference[4];
  library->ConvertRGBToYUV4Pixels(frame.data(), luma, blueDifference, redDifference);
  library->ConvertRGBToYUVPixels(frame.data(), luma, blueDifference, redDifference);

  auto* const grey = reinterpret_cast<u32*>(result.data());
  Require(library->ConvertBGRAToGray(frame.data(), width, height, pitch, grey, pitch));
}

void Resize(IPictavo6* library) {
  const int halfWidth = width / 2, halfHeight = height / 2;
  Pixels small(4 * halfWidth * halfHeight);
  Require(library->ResizeBox16AlphaWeighted(small.data(), halfWidth, halfHeight, 4 * halfWidth,
                                            frame.data(), width, height, pitch, 0));

  Require(library->ResizeBilinear16(small.data(), halfWidth, halfHeight, 4 * halfWidth,
                                    frame.data(), width, height, pitch, 0, 1));

  Require(library->ResizeBilinear7(small.data(), halfWidth, halfHeight, 4 * halfWidth, frame.data(),
                                   width, height, pitch));

  Require(library->ResizeBox16(small.data(), halfWidth, halfHeight, 4 * halfWidth, frame.data(),
                               width, height, pitch));

  Require(library->ResizeBilinear16KeepAlpha(small.data(), halfWidth, halfHeight, 4 * halfWidth,
                                             frame.data(), width, height, pitch, 1));

  auto* const to = reinterpret_cast<u32*>(small.data());
  auto* const from = reinterpret_cast<const u32*>(frame.data());
  Require(library->ResizeNearest32(to, halfWidth, halfHeight, 4 * halfWidth, from, width, height,
                                   pitch));

  // Only the upper half of the small picture.
  const i32 upperHalf[4] = {0, 0, halfWidth, halfHeight / 2};
  Require(library->ResizeNearestInRect(to, halfWidth, halfHeight, 4 * halfWidth, from, width,
                                       height, pitch, upperHalf));

  ImageDesc target = Describe(small, halfWidth, halfHeight);
  const ResizeParam lanczos = {PICTAVO_FILTER_LANCZOS, 1, {0, 0}};
  Require(library->ResizeFiltered(&picture, &target, &lanczos));

  // A part of the frame, a quarter of a pixel further than in the frame before.
  const f32 view[4] = {10.25f, 5.0f, 170.25f, 95.0f};
  Require(library->ResizeFilteredRegion(&picture, &target, view, &lanczos));
}

void Measure(IPictavo6* library) {
  // How often each red occurs.
  u32 reds[256];
  Require(library->ComputeHistogram(frame.data(), width, height, pitch, reds, 256, 2));

  u32 greys[256];
  Require(library->ComputeLumaHistogram(frame.data(), width, height, pitch, greys, 256, 1));

  f32 mean;
  Require(library->ComputeMean(matte.data(), width, height, &mean));

  // The grey that best divides dark from bright.
  std::vector<f32> values(greys, greys + 256);
  u32 threshold;
  Require(library->FindThreshold(values.data(), 256, &threshold));

  f32 noise;  // of the luma
  Require(library->MeasurePicture(frame.data(), width, height, pitch, -1, PICTAVO_MEASURE_NOISE,
                                  &noise));

  // What of the title is not clear.
  u32 count;
  PixelBounds bounds;
  Require(library->FindBounds(title.data(), width, height, pitch, 3, 0, &count, &bounds));
}

void Draw(IPictavo6* library) {
  const i32 box[4] = {10, 10, 59, 39};  // the last column and row are drawn
  Require(library->DrawRectOutline(reinterpret_cast<u32*>(frame.data()), width, height, pitch, box,
                                   0xFFFFFF00));

  const i32 area[4] = {10, 10, 60, 40};  // as large, but the last two lie beyond it
  Require(library->FillRectangle(frame.data(), width, height, pitch, area, 0xFFFFFF00));

  Require(library->FillRectangleSmooth(frame.data(), width, height, pitch, 10.5f, 10.0f, 60.25f,
                                       40.0f, 0x80FFFF00));

  Require(library->FillSolidColor(result.data(), width, height, pitch, 0, 0, 0, 255));

  // A face, unrecognisable.
  const i32 face[4] = {100, 40, 160, 110};
  Require(library->PixelateRegion(frame.data(), width, height, pitch, face, 12));

  const i32 part[4] = {0, 0, 160, 90};
  Require(library->CopyRectangle(&picture, &made, part));
}

void Filter(IPictavo6* library) {
  Require(library->SharpenPicture(frame.data(), width, height, pitch, 0.8f, 2.0f, 1.5f));

  Require(library->GaussianBlur(frame.data(), width, height, pitch, 8.0f, 8.0f,
                                PICTAVO_EDGES_REPLICATE));

  Require(library->GaussianBlurBox3(frame.data(), width, height, pitch, 24.0f));

  // Edges from the upper left, on grey.
  const ConvolveParam emboss = {3, 0, 128, 0, {-2, -1, 0, -1, 0, 1, 0, 1, 2}};
  Require(library->ConvolvePicture(&picture, &made, &emboss));

  // A pan to the right: how large the blurred picture is, and where it begins, comes first.
  MotionBlurParam pan = {};
  pan.strength = 1;
  pan.maxSamples = 30;
  pan.dirX = 24;
  pan.zoom = 1;
  ImageDesc blurred = picture;
  i32 column, row;
  Require(library->GetMotionBlurDstSize(&picture, &blurred, &pan, &column, &row));
  Pixels room(static_cast<size_t>(blurred.pitch) * blurred.height);
  blurred.data = room.data();
  Require(library->MotionBlur(&picture, &blurred, &pan));
}

void Grade(IPictavo6* library) {
  const LevelsParam lighter = {0.05f, 0.95f, 1.2f, 0.0f, 1.0f};
  Require(library->AdjustLevels(frame.data(), width, height, pitch, 7, &lighter));

  ColorParam warmer = {};
  warmer.contrast = warmer.saturation = 1;
  warmer.temperature = 0.2f;
  Require(library->AdjustColor(frame.data(), width, height, pitch, &warmer));

  // The eight corners of the cube, red and blue exchanged. pictavo_cube.h reads files.
  u16 entries[8 * 4];
  for (int i = 0; i < 8 * 4; ++i) entries[i] = (i / 4 >> i % 4 & 1) != 0 ? 65535 : 0;
  const ColorLutParam exchange = {2, 256, entries};
  Require(library->ApplyColorLut(&picture, &made, &exchange));
}

void Channels(IPictavo6* library) {
  // A frame from a decoder, BT.709 in limited range, and back for an encoder.
  const u32 format = FrameFormat(PICTAVO_FRAME_NV12, PICTAVO_MATRIX_BT709, PICTAVO_RANGE_LIMITED);
  Pixels decoded(FrameBytes(PICTAVO_FRAME_NV12, width, height), 128);
  Require(library->ConvertFrameToBGRA(decoded.data(), width, height, frame.data(), pitch, format));
  Require(library->ConvertBGRAToFrame(frame.data(), width, height, pitch, decoded.data(), format));

  Require(library->SetAlphaPlane(title.data(), matte.data(), width, height));

  Require(library->ExtractPlane(title.data(), width, height, pitch, matte.data(), width, 3));

  // BGRA to RGBA, in place.
  Require(library->ShuffleChannels(result.data(), result.data(), width * height, 2, 1, 0, 3));

  Require(library->ExpandPlaneScaled(matte.data(), width, height, width, result.data(), pitch, 2));

  Require(library->ExpandPlane(matte.data(), width, height, width, result.data(), pitch));
}

void Move(IPictavo6* library) {
  Require(library->FlipPicture(&picture, &made, 1));

  // 15 degrees clockwise about the middle.
  const RotateParam turn = {
      15, 1, width / 2.0f, height / 2.0f, width / 2.0f, height / 2.0f, PICTAVO_SAMPLE_BILINEAR};
  Require(library->RotatePicture(&picture, &made, &turn));

  const SwirlParam swirl = {width / 2.0f, height / 2.0f, 80, 240, PICTAVO_SAMPLE_BILINEAR};
  Require(library->SwirlPicture(&picture, &made, &swirl));

  const TiltParam away = {width / 2.0f, height / 2.0f, 40, 0, 0, 45, PICTAVO_SAMPLE_BILINEAR};
  Require(library->TiltPicture(&picture, &made, &away));

  // The frame in the middle of a larger buffer, and 8 pixels more of it on every side.
  Pixels large(4 * (width + 16) * (height + 16));
  ImageDesc inside = Describe(large, width + 16, height + 16);
  inside.data = &large[8 * inside.pitch + 8 * 4];
  inside.width = width;
  inside.height = height;
  Require(library->ExtendBoundary(&inside, 8));

  Require(library->ExtendBoundaryTransparent(&inside, 8));
}

void Layers(IPictavo6* library) {
  // A third of the way, by a soft edge that moves to the right.
  const TransitionParam wipe = {PICTAVO_TRANSITION_WIPE, 0.33f, 0.2f, 0, 0};
  Require(library->ApplyTransition(&made, &picture, &layer, &wipe));

  const BlendParam screen = {4, 200, 2, 0, 0};
  Require(library->BlendLayer(&picture, &layer, &screen));

  const BlendParam between = {0, 255, 2, 0.5f, 0.25f};
  Require(library->BlendLayerSubpixel(&picture, &layer, &between));

  // Picture in picture.
  const f32 corner[4] = {200.5f, 100, 310.5f, 161.875f};
  Require(library->BlendLayerScaled(&picture, &layer, &between, corner));

  const MatteParam clean = {0.1f, 0.9f, 1, 0.7f};
  Require(library->AdjustMatte(&layer, &clean));

  Require(library->ApplyMatte(&layer, &plane, PICTAVO_MATTE_ALPHA));

  const ChromaKey green = {0, 177, 64, 0, 35, 40};  // red first; then angle and denoise
  Require(library->ApplyChromaKey(&picture, &made, &green, 1, 1));
}

void ConvertSpaces(IPictavo6* library) {
  // Hue, saturation and value in the bytes of red, green and blue; and back.
  Require(library->ConvertPictureFromRGB(frame.data(), width, height, pitch, result.data(), pitch,
                                         PICTAVO_COLOR_HSV, 0, PICTAVO_RANGE_FULL));
  Require(library->ConvertPictureToRGB(result.data(), width, height, pitch, frame.data(), pitch,
                                       PICTAVO_COLOR_HSV, 0, PICTAVO_RANGE_FULL));

  u32 hue, saturation, lightness;
  Require(library->ConvertColorFromRGB(255, 128, 0, &hue, &saturation, &lightness,
                                       PICTAVO_COLOR_HSL, 0, PICTAVO_RANGE_DEGREES));

  u32 r, g, b;
  Require(library->ConvertColorToRGB(180, 128, 128, &r, &g, &b, PICTAVO_COLOR_YUV,
                                     PICTAVO_MATRIX_BT709, PICTAVO_RANGE_LIMITED));

  u32 y, u, v;
  Require(library->ConvertPixelFromRGB(frame.data(), &y, &u, &v, PICTAVO_COLOR_YUV,
                                       PICTAVO_MATRIX_BT601, PICTAVO_RANGE_FULL));

  u8 red, green, blue;
  Require(library->ConvertHSLToRGB(210, 255, 128, &red, &green, &blue));
}

/// A picture of the host's, for the methods that take surfaces.
struct Surface : IPictavoSurface {
  explicit Surface(const ImageDesc& image) : image_(image) {}
  u32 Query(ImageDesc* image) noexcept override { return *image = image_, 1; }

 private:
  ImageDesc image_;
};

void OnSurfaces(IPictavo6* library, Surface& from, Surface& to) {
  Require(library->CopySurface(&to, &from));

  const ResizeParam mitchell = {PICTAVO_FILTER_MITCHELL, 0, {0, 0}};
  Require(library->ResizeSurface(&to, &from, &mitchell));
}

bool OnOpenCL(IPictavo6* library, Surface& from, Surface& to, Surface& inside) {
  // Without a device all of these fail.
  if (library->MemsetColorOpenCL(&to, 0xFF202020) == PICTAVO_E_FAIL) return false;

  Require(library->ExtendBoundaryOpenCL(&inside, 8));

  // 20 pixels to the right: each pixel comes from 20 columns before it.
  const f32 matrix[6] = {1, 0, -20, 0, 1, 0};
  Require(library->TransformOpenCL(&to, &from, matrix));

  Require(library->BilinearInterpolationOpenCL(&to, &from));

  Require(library->FastBlurOpenCL(&to, &from, 12, 12));
  return true;
}

/// Compiled, but not called here: the host brings the device and its textures.
void OnD3D(IPictavo6* library, ID3D11Device* device, ID3D11DeviceContext* context,
           const ImageDesc* from, const ImageDesc* to) {
  const RotateParam turn = {90, 1, 0, 0, 0, 0, PICTAVO_SAMPLE_NEAREST};
  Require(library->RotateD3D(device, context, to, from, &turn));

  Require(library->BoxBlurD3D(device, context, to, from, 12));

  const D3DScaleParam quarter = {0, 0, width / 2, height / 2};
  Require(library->D3DComputeOp(PICTAVO_D3D_SCALE, PICTAVO_D3D_WHOLE, device, context, to, from,
                                &quarter));
}

int main() try {
  Library library;
  if (!library) return std::puts(library.errorText()), 2;
  for (const auto run : {Blend, Convert, Resize, Measure, Draw, Filter, Grade, Channels, Move,
                         Layers, ConvertSpaces})
    run(library.get());

  Pixels large(4 * (width + 16) * (height + 16));
  ImageDesc middle = Describe(large, width + 16, height + 16);
  middle.data = &large[8 * middle.pitch + 8 * 4];
  middle.width = width;
  middle.height = height;
  Surface from(picture), to(made), inside(middle);
  OnSurfaces(library.get(), from, to);
  const bool hasOpenCL = OnOpenCL(library.get(), from, to, inside);
  std::printf("All examples work%s\n", hasOpenCL ? "" : "; there is no OpenCL device");
  return 0;
} catch (const std::runtime_error& failure) {
  return std::puts(failure.what()), 1;
}
