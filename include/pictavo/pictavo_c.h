// Pictavo for C11, and for languages that bind to C: the object as a pointer to its table of
// methods, the records and the exports. What they mean, their units, codes and threads are in
// pictavo.h, under the same names: this header is made of it, by scripts/c_header.py.
//
//   Pictavo* object = GetPictavo6();  // or by GetProcAddress: PictavoCreate and PictavoRelease
//   object->methods->BlendOverPitched(object, frame, title, width, height, pitch);
//   ReleasePictavo6(object);
//
// A method takes its object first and is called as any C function of the platform. A host
// implements PictavoSurface by an object of its own that begins with a pointer to its methods.
#ifndef PICTAVO_PICTAVO_C_H_
#define PICTAVO_PICTAVO_C_H_

#include <stdint.h>

struct ID3D11Device;
struct ID3D11DeviceContext;
struct ID3D11Texture2D;

#ifdef __cplusplus
extern "C" {
#endif

/// See pictavo::ImageDesc in pictavo.h.
typedef struct PictavoImageDesc {
  uint32_t reserved[2];
  int32_t bufferWidth;
  int32_t bufferHeight;
  uint32_t memoryKind;
  void* data;
  int32_t width;
  int32_t height;
  int32_t pitch;
  int32_t bytesPerPixel;
} PictavoImageDesc;

/// See pictavo::IHostPicture in pictavo.h.
typedef struct PictavoHostPicture PictavoHostPicture;
typedef struct PictavoHostPictureMethods {
  void (*Host0)(PictavoHostPicture* self);
  void (*Host1)(PictavoHostPicture* self);
  void (*Host2)(PictavoHostPicture* self);
  void (*Host3)(PictavoHostPicture* self);
  struct ID3D11Texture2D* (*GetTexture)(PictavoHostPicture* self, const PictavoImageDesc* picture);
} PictavoHostPictureMethods;
struct PictavoHostPicture {
  const PictavoHostPictureMethods* methods;
};

/// See pictavo::BlendParam in pictavo.h.
typedef struct PictavoBlendParam {
  uint32_t mode;
  uint32_t opacity;
  uint32_t alphaMode;
  float fractionX;
  float fractionY;
} PictavoBlendParam;

/// See pictavo::ResizeParam in pictavo.h.
typedef struct PictavoResizeParam {
  uint32_t filter;
  uint32_t alphaMode;
  uint32_t reserved[2];
} PictavoResizeParam;

/// See pictavo::RotateParam in pictavo.h.
typedef struct PictavoRotateParam {
  float angle;
  float scale;
  float srcX;
  float srcY;
  float dstX;
  float dstY;
  uint32_t filter;
} PictavoRotateParam;

/// See pictavo::TiltParam in pictavo.h.
typedef struct PictavoTiltParam {
  float centreX;
  float centreY;
  float yaw;
  float pitch;
  float roll;
  float fieldOfView;
  uint32_t filter;
} PictavoTiltParam;

/// See pictavo::SwirlParam in pictavo.h.
typedef struct PictavoSwirlParam {
  float centreX;
  float centreY;
  float radius;
  float angle;
  uint32_t filter;
} PictavoSwirlParam;

/// See pictavo::MotionBlurParam in pictavo.h.
typedef struct PictavoMotionBlurParam {
  float strength;
  int32_t maxSamples;
  float dirX;
  float dirY;
  float zoom;
  float reserved;
  float angle;
} PictavoMotionBlurParam;

/// See pictavo::MatteParam in pictavo.h.
typedef struct PictavoMatteParam {
  float black;
  float white;
  int32_t choke;
  float feather;
} PictavoMatteParam;

/// See pictavo::ChromaKey in pictavo.h.
typedef struct PictavoChromaKey {
  uint8_t keyR;
  uint8_t keyG;
  uint8_t keyB;
  uint8_t reserved;
  int32_t angle;
  int32_t denoise;
} PictavoChromaKey;

/// See pictavo::LevelsParam in pictavo.h.
typedef struct PictavoLevelsParam {
  float blackIn;
  float whiteIn;
  float gamma;
  float blackOut;
  float whiteOut;
} PictavoLevelsParam;

/// See pictavo::ColorParam in pictavo.h.
typedef struct PictavoColorParam {
  float brightness;
  float contrast;
  float saturation;
  float hue;
  float temperature;
  float tint;
} PictavoColorParam;

/// See pictavo::ColorLutParam in pictavo.h.
typedef struct PictavoColorLutParam {
  uint32_t size;
  uint32_t intensity;
  const uint16_t* entries;
} PictavoColorLutParam;

/// See pictavo::TransitionParam in pictavo.h.
typedef struct PictavoTransitionParam {
  uint32_t mode;
  float progress;
  float softness;
  float angle;
  uint32_t colour;
} PictavoTransitionParam;

/// See pictavo::ConvolveParam in pictavo.h.
typedef struct PictavoConvolveParam {
  uint32_t size;
  int32_t shift;
  int32_t bias;
  uint32_t withAlpha;
  int32_t weights[25];
} PictavoConvolveParam;

/// See pictavo::PixelBounds in pictavo.h.
typedef struct PictavoPixelBounds {
  int32_t left;
  int32_t top;
  int32_t right;
  int32_t bottom;
} PictavoPixelBounds;

/// See pictavo::IPictavoSurface in pictavo.h.
typedef struct PictavoSurface PictavoSurface;
typedef struct PictavoSurfaceMethods {
  uint32_t (*Query)(PictavoSurface* self, PictavoImageDesc* image);
} PictavoSurfaceMethods;
struct PictavoSurface {
  const PictavoSurfaceMethods* methods;
};

/// See pictavo::D3DRegion in pictavo.h.
typedef struct PictavoD3DRegion {
  int32_t dstX;
  int32_t dstY;
  int32_t srcX;
  int32_t srcY;
  int32_t width;
  int32_t height;
} PictavoD3DRegion;

/// See pictavo::D3DBlurParam in pictavo.h.
typedef struct PictavoD3DBlurParam {
  double radiusX;
  double radiusY;
  float scale;
} PictavoD3DBlurParam;

/// See pictavo::D3DGrowParam in pictavo.h.
typedef struct PictavoD3DGrowParam {
  uint32_t radiusX;
  uint32_t radiusY;
  uint32_t shape;
  float alpha;
} PictavoD3DGrowParam;

/// See pictavo::D3DGrowRegionParam in pictavo.h.
typedef struct PictavoD3DGrowRegionParam {
  PictavoD3DRegion region;
  PictavoD3DGrowParam filter;
  uint32_t clipSource;
} PictavoD3DGrowRegionParam;

/// See pictavo::D3DClearParam in pictavo.h.
typedef struct PictavoD3DClearParam {
  const float* colour;
  int32_t count;
} PictavoD3DClearParam;

/// See pictavo::D3DScaleParam in pictavo.h.
typedef struct PictavoD3DScaleParam {
  int32_t left;
  int32_t top;
  int32_t right;
  int32_t bottom;
} PictavoD3DScaleParam;

/// See pictavo::D3DRegionFilterParam in pictavo.h.
typedef struct PictavoD3DRegionFilterParam {
  PictavoD3DRegion region;
  int32_t radius;
} PictavoD3DRegionFilterParam;

/// See pictavo::D3DAffineParam in pictavo.h.
typedef struct PictavoD3DAffineParam {
  int32_t dstX;
  int32_t dstY;
  int32_t srcX;
  int32_t srcY;
  int32_t srcWidth;
  int32_t srcHeight;
  int32_t xStart;
  int32_t yStart;
  int32_t xStepX;
  int32_t xStepY;
  int32_t yStepX;
  int32_t yStepY;
} PictavoD3DAffineParam;

/// See pictavo::D3DFillParam in pictavo.h.
typedef struct PictavoD3DFillParam {
  int32_t left;
  int32_t top;
  int32_t right;
  int32_t bottom;
  float red;
  float green;
  float blue;
  float alpha;
} PictavoD3DFillParam;

/// See pictavo::D3DTintParam in pictavo.h.
typedef struct PictavoD3DTintParam {
  int32_t dstX;
  int32_t dstY;
  float red;
  float green;
  float blue;
} PictavoD3DTintParam;

/// See pictavo::D3DKeyParam in pictavo.h.
typedef struct PictavoD3DKeyParam {
  PictavoD3DRegion region;
  const PictavoChromaKey* keys;
  int32_t keyCount;
} PictavoD3DKeyParam;

/// See pictavo::IPictavo6 in pictavo.h.
typedef struct Pictavo Pictavo;
typedef struct PictavoMethods {
  void (*DetectInstructionSet)(Pictavo* self);  // slot 0
  int32_t (*GetCPULevel)(Pictavo* self);        // slot 1
  uint32_t (*BlendOverWithOpacityRamp)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                       int32_t width, int32_t height, int32_t dstPitch,
                                       int32_t srcPitch, int32_t flip, float opacityStart,
                                       float opacityEnd);  // slot 2
  uint32_t (*BlendOverPacked)(Pictavo* self, uint8_t* dst, const uint8_t* src, int32_t width,
                              int32_t height);  // slot 3
  uint32_t (*BlendOverPitched)(Pictavo* self, uint8_t* dst, const uint8_t* src, int32_t width,
                               int32_t height, int32_t pitch);  // slot 4
  uint32_t (*BlendPremultipliedWithOpacityRamp)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                                int32_t width, int32_t height, int32_t dstPitch,
                                                int32_t srcPitch, int32_t flip, float opacityStart,
                                                float opacityEnd);  // slot 5
  uint32_t (*BlendPremultipliedPacked)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                       int32_t width, int32_t height);  // slot 6
  uint32_t (*BlendPremultipliedPitched)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                        int32_t width, int32_t height, int32_t pitch);  // slot 7
  uint32_t (*CompositePremultipliedWithOpacityRamp)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                                    int32_t width, int32_t height, int32_t dstPitch,
                                                    int32_t srcPitch, int32_t flip,
                                                    float opacityStart,
                                                    float opacityEnd);  // slot 8
  uint32_t (*CompositePremultipliedPitched)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                            int32_t width, int32_t height,
                                            int32_t pitch);  // slot 9
  uint32_t (*CompositePremultipliedPacked)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                           int32_t width, int32_t height);  // slot 10
  uint32_t (*BlendOverWithOpacity)(Pictavo* self, uint8_t* dst, const uint8_t* src, int32_t width,
                                   int32_t height, int32_t dstPitch, int32_t srcPitch,
                                   uint8_t opacity, uint32_t backdrop);  // slot 11
  uint32_t (*Reserved12)(Pictavo* self);                                 // slot 12
  uint32_t (*Reserved13)(Pictavo* self);                                 // slot 13
  void (*ConvertRGBToYUVPixel)(Pictavo* self, int32_t r, int32_t g, int32_t b, uint32_t* y,
                               uint32_t* u, uint32_t* v);  // slot 14
  void (*ConvertYUVToRGBPixel)(Pictavo* self, int32_t y, int32_t u, int32_t v, uint32_t* r,
                               uint32_t* g, uint32_t* b);  // slot 15
  uint32_t (*UnpremultiplyPitched)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                                   int32_t pitch);  // slot 16
  uint32_t (*UnpremultiplyPacked)(Pictavo* self, uint8_t* buffer, int32_t width,
                                  int32_t height);  // slot 17
  uint32_t (*PremultiplyPitched)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                                 int32_t pitch);  // slot 18
  uint32_t (*PremultiplyPacked)(Pictavo* self, uint8_t* buffer, int32_t width,
                                int32_t height);  // slot 19
  uint32_t (*ConvertBGRAToYUVA)(Pictavo* self, const uint8_t* src, uint32_t width, int32_t height,
                                int32_t srcPitch, uint8_t* dst, int32_t dstPitch);  // slot 20
  uint32_t (*ConvertBGRAToYUVAPortable)(Pictavo* self, const uint8_t* src, uint32_t width,
                                        int32_t height, int32_t srcPitch, uint8_t* dst,
                                        int32_t dstPitch);  // slot 21
  uint32_t (*Reserved22)(Pictavo* self);                    // slot 22
  uint32_t (*Reserved23)(Pictavo* self);                    // slot 23
  uint32_t (*Reserved24)(Pictavo* self);                    // slot 24
  uint32_t (*Reserved25)(Pictavo* self);                    // slot 25
  uint32_t (*Reserved26)(Pictavo* self);                    // slot 26
  uint32_t (*Reserved27)(Pictavo* self);                    // slot 27
  uint32_t (*Reserved28)(Pictavo* self);                    // slot 28
  uint32_t (*ResizeBox16AlphaWeighted)(Pictavo* self, uint8_t* dst, int32_t dstWidth,
                                       int32_t dstHeight, int32_t dstPitch, const uint8_t* src,
                                       int32_t srcWidth, int32_t srcHeight, int32_t srcPitch,
                                       int32_t forceOpaque);  // slot 29
  uint32_t (*ResizeBilinear16)(Pictavo* self, uint8_t* dst, int32_t dstWidth, int32_t dstHeight,
                               int32_t dstPitch, const uint8_t* src, int32_t srcWidth,
                               int32_t srcHeight, int32_t srcPitch, int32_t forceOpaque,
                               int32_t fullSize);  // slot 30
  uint32_t (*ResizeBilinear7)(Pictavo* self, uint8_t* dst, int32_t dstWidth, int32_t dstHeight,
                              int32_t dstPitch, const uint8_t* src, int32_t srcWidth,
                              int32_t srcHeight, int32_t srcPitch);  // slot 31
  uint32_t (*Reserved32)(Pictavo* self);                             // slot 32
  uint32_t (*Reserved33)(Pictavo* self);                             // slot 33
  void (*ConvertRGBToYUV4Pixels)(Pictavo* self, const uint8_t* pixels, int32_t* y, int32_t* u,
                                 int32_t* v);  // slot 34
  void (*ConvertRGBToYUVPixels)(Pictavo* self, const uint8_t* pixels, int32_t* y, int32_t* u,
                                int32_t* v);  // slot 35
  uint32_t (*BlendOverWithOpacityRampAndAlpha)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                               int32_t width, int32_t height, int32_t dstPitch,
                                               int32_t srcPitch, uint8_t opacity, uint32_t backdrop,
                                               int32_t flip, float opacityStart,
                                               float opacityEnd);  // slot 36
  uint32_t (*BlendOverWithOpacityRampKeepAlpha)(Pictavo* self, uint8_t* dst, const uint8_t* src,
                                                int32_t width, int32_t height, int32_t dstPitch,
                                                int32_t srcPitch, uint8_t opacity,
                                                uint32_t backdrop, int32_t flip, float opacityStart,
                                                float opacityEnd);  // slot 37
  uint32_t (*Reserved38)(Pictavo* self);                            // slot 38
  uint32_t (*Reserved39)(Pictavo* self);                            // slot 39
  uint32_t (*Reserved40)(Pictavo* self);                            // slot 40
  uint32_t (*Reserved41)(Pictavo* self);                            // slot 41
  void (*SetCPULevel)(Pictavo* self, int32_t level);                // slot 42
  uint32_t (*ComputeHistogram)(Pictavo* self, const uint8_t* pixels, uint32_t width,
                               uint32_t height, uint32_t pitch, uint32_t* bins, int32_t binCount,
                               uint32_t selector);  // slot 43
  uint32_t (*ComputeLumaHistogram)(Pictavo* self, const uint8_t* pixels, uint32_t width,
                                   uint32_t height, uint32_t pitch, uint32_t* bins,
                                   int32_t binCount, uint32_t selector);  // slot 44
  uint32_t (*Reserved45)(Pictavo* self);                                  // slot 45
  uint32_t (*ConvertBGRAToGray)(Pictavo* self, const uint8_t* src, int32_t width, int32_t height,
                                int32_t srcPitch, uint32_t* dst, int32_t dstPitch);  // slot 46
  uint32_t (*Reserved47)(Pictavo* self);                                             // slot 47
  uint32_t (*DrawRectOutline)(Pictavo* self, uint32_t* buffer, int32_t width, int32_t height,
                              uint32_t pitch, const int32_t rect[4], uint32_t colour);  // slot 48
  uint32_t (*SharpenPicture)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                             int32_t pitch, float amount, float threshold,
                             float radius);  // slot 49
  uint32_t (*ConvertYUVAToBGRA)(Pictavo* self, const uint8_t* src, int32_t width, int32_t height,
                                int32_t srcPitch, uint8_t* dst, int32_t dstPitch);  // slot 50
  uint32_t (*FillRectangle)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                            int32_t pitch, const int32_t rect[4], uint32_t colour);  // slot 51
  uint32_t (*FillRectangleSmooth)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                                  int32_t pitch, float left, float top, float right, float bottom,
                                  uint32_t colour);  // slot 52
  uint32_t (*AdjustLevels)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                           int32_t pitch, uint32_t channels,
                           const PictavoLevelsParam* param);  // slot 53
  uint32_t (*ConvertFrameToBGRA)(Pictavo* self, const uint8_t* src, int32_t width, int32_t height,
                                 uint8_t* dst, int32_t dstPitch, uint32_t format);  // slot 54
  uint32_t (*ResizeNearest32)(Pictavo* self, uint32_t* dst, int32_t dstWidth, int32_t dstHeight,
                              int32_t dstPitch, const uint32_t* src, int32_t srcWidth,
                              int32_t srcHeight, int32_t srcPitch);  // slot 55
  uint32_t (*GaussianBlur)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                           int32_t pitch, float sigmaX, float sigmaY, uint32_t edges);  // slot 56
  uint32_t (*ResizeBox16)(Pictavo* self, uint8_t* dst, int32_t dstWidth, int32_t dstHeight,
                          int32_t dstPitch, const uint8_t* src, int32_t srcWidth, int32_t srcHeight,
                          int32_t srcPitch);  // slot 57
  uint32_t (*ResizeBilinear16KeepAlpha)(Pictavo* self, uint8_t* dst, int32_t dstWidth,
                                        int32_t dstHeight, int32_t dstPitch, const uint8_t* src,
                                        int32_t srcWidth, int32_t srcHeight, int32_t srcPitch,
                                        int32_t fullSize);  // slot 58
  uint32_t (*SetAlphaPlane)(Pictavo* self, uint8_t* pixels, const uint8_t* plane, uint32_t width,
                            uint32_t height);  // slot 59
  uint32_t (*ResizeFiltered)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                             const PictavoResizeParam* param);  // slot 60
  uint32_t (*ResizeFilteredRegion)(Pictavo* self, const PictavoImageDesc* src,
                                   PictavoImageDesc* dst, const float rect[4],
                                   const PictavoResizeParam* param);  // slot 61
  uint32_t (*ResizeNearestInRect)(Pictavo* self, uint32_t* dst, int32_t dstWidth, int32_t dstHeight,
                                  int32_t dstPitch, const uint32_t* src, int32_t srcWidth,
                                  int32_t srcHeight, int32_t srcPitch,
                                  const int32_t rect[4]);  // slot 62
  uint32_t (*MotionBlur)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                         const PictavoMotionBlurParam* param);  // slot 63
  uint32_t (*GetMotionBlurDstSize)(Pictavo* self, const PictavoImageDesc* src,
                                   PictavoImageDesc* dst, const PictavoMotionBlurParam* param,
                                   int32_t* offsetX, int32_t* offsetY);  // slot 64
  uint32_t (*FlipPicture)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                          uint32_t mode);  // slot 65
  uint32_t (*ApplyColorLut)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                            const PictavoColorLutParam* param);  // slot 66
  uint32_t (*RotatePicture)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                            const PictavoRotateParam* param);  // slot 67
  uint32_t (*RotateD3D)(Pictavo* self, struct ID3D11Device* device,
                        struct ID3D11DeviceContext* context, const PictavoImageDesc* dst,
                        const PictavoImageDesc* src, const PictavoRotateParam* param);  // slot 68
  uint32_t (*PixelateRegion)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                             int32_t pitch, const int32_t rect[4], uint32_t block);  // slot 69
  uint32_t (*ApplyTransition)(Pictavo* self, PictavoImageDesc* dst, const PictavoImageDesc* from,
                              const PictavoImageDesc* to,
                              const PictavoTransitionParam* param);  // slot 70
  uint32_t (*ExtendBoundary)(Pictavo* self, const PictavoImageDesc* image,
                             uint32_t border);  // slot 71
  uint32_t (*ConvolvePicture)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                              const PictavoConvolveParam* param);  // slot 72
  uint32_t (*BlendLayer)(Pictavo* self, PictavoImageDesc* dst, const PictavoImageDesc* src,
                         const PictavoBlendParam* param);  // slot 73
  uint32_t (*BlendLayerSubpixel)(Pictavo* self, PictavoImageDesc* dst, const PictavoImageDesc* src,
                                 const PictavoBlendParam* param);  // slot 74
  uint32_t (*CopyRectangle)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                            const int32_t rect[4]);  // slot 75
  uint32_t (*Reserved76)(Pictavo* self);             // slot 76
  uint32_t (*FillSolidColor)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                             int32_t pitch, uint8_t blue, uint8_t green, uint8_t red,
                             uint8_t alpha);  // slot 77
  uint32_t (*AdjustMatte)(Pictavo* self, PictavoImageDesc* picture,
                          const PictavoMatteParam* param);  // slot 78
  uint32_t (*SwirlPicture)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                           const PictavoSwirlParam* param);  // slot 79
  uint32_t (*ApplyMatte)(Pictavo* self, PictavoImageDesc* picture, const PictavoImageDesc* matte,
                         uint32_t mode);  // slot 80
  uint32_t (*TiltPicture)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                          const PictavoTiltParam* param);  // slot 81
  uint32_t (*ComputeMean)(Pictavo* self, const uint8_t* buffer, int32_t width, int32_t height,
                          float* mean);  // slot 82
  uint32_t (*FindThreshold)(Pictavo* self, const float* values, uint32_t count,
                            uint32_t* index);  // slot 83
  uint32_t (*MeasurePicture)(Pictavo* self, const uint8_t* buffer, int32_t width, int32_t height,
                             int32_t pitch, int32_t channel, uint32_t measure,
                             float* result);  // slot 84
  uint32_t (*FindBounds)(Pictavo* self, const uint8_t* buffer, int32_t width, int32_t height,
                         uint32_t pitch, uint32_t channel, uint32_t threshold, uint32_t* count,
                         PictavoPixelBounds* bounds);  // slot 85
  uint32_t (*ApplyChromaKey)(Pictavo* self, const PictavoImageDesc* src, PictavoImageDesc* dst,
                             const PictavoChromaKey* keys, int32_t keyCount,
                             int32_t format);  // slot 86
  uint32_t (*GaussianBlurBox3)(Pictavo* self, uint8_t* image, int32_t width, int32_t height,
                               int32_t pitch, float radius);  // slot 87
  uint32_t (*ConvertPictureFromRGB)(Pictavo* self, const uint8_t* src, int32_t width,
                                    int32_t height, int32_t srcPitch, uint8_t* dst,
                                    int32_t dstPitch, uint32_t model, uint32_t matrix,
                                    uint32_t range);  // slot 88
  uint32_t (*ConvertPictureToRGB)(Pictavo* self, const uint8_t* src, int32_t width, int32_t height,
                                  int32_t srcPitch, uint8_t* dst, int32_t dstPitch, uint32_t model,
                                  uint32_t matrix, uint32_t range);  // slot 89
  uint32_t (*ConvertColorFromRGB)(Pictavo* self, int32_t r, int32_t g, int32_t b, uint32_t* first,
                                  uint32_t* second, uint32_t* third, uint32_t model,
                                  uint32_t matrix, uint32_t range);  // slot 90
  uint32_t (*ConvertColorToRGB)(Pictavo* self, int32_t first, int32_t second, int32_t third,
                                uint32_t* r, uint32_t* g, uint32_t* b, uint32_t model,
                                uint32_t matrix, uint32_t range);  // slot 91
  uint32_t (*ConvertPixelFromRGB)(Pictavo* self, const uint8_t* pixel, uint32_t* first,
                                  uint32_t* second, uint32_t* third, uint32_t model,
                                  uint32_t matrix, uint32_t range);  // slot 92
  uint32_t (*ConvertBGRAToFrame)(Pictavo* self, const uint8_t* src, int32_t width, int32_t height,
                                 int32_t srcPitch, uint8_t* dst, uint32_t format);  // slot 93
  uint32_t (*ExtractPlane)(Pictavo* self, const uint8_t* src, int32_t width, int32_t height,
                           int32_t srcPitch, uint8_t* dst, int32_t dstPitch,
                           uint32_t channel);  // slot 94
  uint32_t (*ConvertHSLToRGB)(Pictavo* self, int32_t hue, uint8_t saturation, uint8_t lightness,
                              uint8_t* r, uint8_t* g, uint8_t* b);  // slot 95
  uint32_t (*BlendLayerScaled)(Pictavo* self, PictavoImageDesc* dst, const PictavoImageDesc* src,
                               const PictavoBlendParam* param, const float* rect);        // slot 96
  uint32_t (*CopySurface)(Pictavo* self, PictavoSurface* dst, PictavoSurface* src);       // slot 97
  uint32_t (*ExtendBoundaryOpenCL)(Pictavo* self, PictavoSurface* dst, uint32_t border);  // slot 98
  uint32_t (*AdjustColor)(Pictavo* self, uint8_t* buffer, int32_t width, int32_t height,
                          int32_t pitch, const PictavoColorParam* param);  // slot 99
  uint32_t (*TransformOpenCL)(Pictavo* self, PictavoSurface* dst, PictavoSurface* src,
                              const float* matrix);  // slot 100
  uint32_t (*ResizeSurface)(Pictavo* self, PictavoSurface* dst, PictavoSurface* src,
                            const PictavoResizeParam* param);  // slot 101
  uint32_t (*BilinearInterpolationOpenCL)(Pictavo* self, PictavoSurface* dst,
                                          PictavoSurface* src);  // slot 102
  uint32_t (*BoxBlurD3D)(Pictavo* self, struct ID3D11Device* device,
                         struct ID3D11DeviceContext* context, const PictavoImageDesc* dst,
                         const PictavoImageDesc* src, uint32_t radius);  // slot 103
  uint32_t (*FastBlurOpenCL)(Pictavo* self, PictavoSurface* dst, PictavoSurface* src,
                             uint32_t radiusX, uint32_t radiusY);                      // slot 104
  uint32_t (*MemsetColorOpenCL)(Pictavo* self, PictavoSurface* dst, uint32_t colour);  // slot 105
  uint32_t (*ShuffleChannels)(Pictavo* self, uint8_t* dst, const uint8_t* src, int64_t count,
                              uint32_t b, uint32_t g, uint32_t r, uint32_t a);  // slot 106
  uint32_t (*ExtendBoundaryTransparent)(Pictavo* self, const PictavoImageDesc* image,
                                        uint32_t border);  // slot 107
  uint32_t (*D3DComputeOp)(Pictavo* self, int32_t opCode, int32_t subMode,
                           struct ID3D11Device* device, struct ID3D11DeviceContext* context,
                           const PictavoImageDesc* dst, const PictavoImageDesc* src,
                           const void* param);  // slot 108
  uint32_t (*ExpandPlaneScaled)(Pictavo* self, const uint8_t* src, int32_t width, int32_t height,
                                int32_t srcPitch, uint8_t* dst, int32_t dstPitch,
                                float gain);  // slot 109
  uint32_t (*ExpandPlane)(Pictavo* self, const uint8_t* src, int32_t width, int32_t height,
                          int32_t srcPitch, uint8_t* dst, int32_t dstPitch);  // slot 110
} PictavoMethods;
struct Pictavo {
  const PictavoMethods* methods;
};

// A program that also includes pictavo.h, before this header, has these from there.
#ifndef PICTAVO_PICTAVO_H_
#define PICTAVO_S_OK ((uint32_t)0)
#define PICTAVO_S_FALSE ((uint32_t)1)
#define PICTAVO_E_NOTIMPL ((uint32_t)0x80004001)
#define PICTAVO_E_POINTER ((uint32_t)0x80004003)
#define PICTAVO_E_FAIL ((uint32_t)0x80004005)
#define PICTAVO_E_OUTOFMEMORY ((uint32_t)0x8007000E)
#define PICTAVO_E_INVALIDARG ((uint32_t)0x80070057)
#define PICTAVO_LEVEL_PORTABLE ((int32_t)0)
#define PICTAVO_LEVEL_SSE2 ((int32_t)3)
#define PICTAVO_LEVEL_SSSE3 ((int32_t)5)
#define PICTAVO_LEVEL_SSE4_1 ((int32_t)6)
#define PICTAVO_LEVEL_AVX2 ((int32_t)8)
#define PICTAVO_COLOR_YUV ((uint32_t)0)
#define PICTAVO_COLOR_HSV ((uint32_t)1)
#define PICTAVO_COLOR_HSL ((uint32_t)2)
#define PICTAVO_MATRIX_BT601 ((uint32_t)0)
#define PICTAVO_MATRIX_BT709 ((uint32_t)1)
#define PICTAVO_MATRIX_BT2020 ((uint32_t)2)
#define PICTAVO_RANGE_LIMITED ((uint32_t)0)
#define PICTAVO_RANGE_FULL ((uint32_t)1)
#define PICTAVO_RANGE_DEGREES ((uint32_t)2)
#define PICTAVO_FRAME_NV12 ((uint32_t)0)
#define PICTAVO_FRAME_I420 ((uint32_t)1)
#define PICTAVO_FRAME_YV12 ((uint32_t)2)
#define PICTAVO_FRAME_YUY2 ((uint32_t)3)
#define PICTAVO_FRAME_UYVY ((uint32_t)4)
#define PICTAVO_FRAME_P010 ((uint32_t)5)
#define PICTAVO_FRAME_BGR24 ((uint32_t)6)
#define PICTAVO_FRAME_RGB24 ((uint32_t)7)
#define PICTAVO_FRAME_RGBA32 ((uint32_t)8)
static inline uint32_t PictavoFrameFormat(uint32_t layout, uint32_t matrix, uint32_t range) {
  return layout | matrix << 8 | range << 16;
}
static inline int64_t PictavoFrameBytes(uint32_t layout, int32_t width, int32_t height) {
  const int64_t w = width, h = height, w2 = (w + 1) / 2, h2 = (h + 1) / 2;
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
#define PICTAVO_SAMPLE_NEAREST ((uint32_t)0)
#define PICTAVO_SAMPLE_BILINEAR ((uint32_t)1)
#define PICTAVO_EDGES_CLEAR ((uint32_t)0)
#define PICTAVO_EDGES_REPLICATE ((uint32_t)1)
#define PICTAVO_EDGES_MIRROR ((uint32_t)2)
#define PICTAVO_MATTE_ALPHA ((uint32_t)0)
#define PICTAVO_MATTE_INVERTED_ALPHA ((uint32_t)1)
#define PICTAVO_MATTE_LUMA ((uint32_t)2)
#define PICTAVO_MATTE_INVERTED_LUMA ((uint32_t)3)
#define PICTAVO_FILTER_TRIANGLE ((uint32_t)0)
#define PICTAVO_FILTER_CATMULL_ROM ((uint32_t)1)
#define PICTAVO_FILTER_MITCHELL ((uint32_t)2)
#define PICTAVO_FILTER_LANCZOS ((uint32_t)3)
#define PICTAVO_MEMORY_D3D11_TEXTURE ((uint32_t)3)
#define PICTAVO_TRANSITION_FADE ((uint32_t)0)
#define PICTAVO_TRANSITION_DIP ((uint32_t)1)
#define PICTAVO_TRANSITION_WIPE ((uint32_t)2)
#define PICTAVO_TRANSITION_IRIS ((uint32_t)3)
#define PICTAVO_TRANSITION_CLOCK ((uint32_t)4)
#define PICTAVO_TRANSITION_BLINDS ((uint32_t)5)
#define PICTAVO_TRANSITION_DISSOLVE ((uint32_t)6)
#define PICTAVO_TRANSITION_PUSH ((uint32_t)7)
#define PICTAVO_MEASURE_MEAN ((uint32_t)0)
#define PICTAVO_MEASURE_DEVIATION ((uint32_t)1)
#define PICTAVO_MEASURE_SHARPNESS ((uint32_t)2)
#define PICTAVO_MEASURE_NOISE ((uint32_t)3)
#define PICTAVO_D3D_COPY_TEXTURE ((int32_t)0)
#define PICTAVO_D3D_COPY ((int32_t)1)
#define PICTAVO_D3D_BOX_BLUR ((int32_t)2)
#define PICTAVO_D3D_GROW ((int32_t)3)
#define PICTAVO_D3D_CLEAR ((int32_t)4)
#define PICTAVO_D3D_COPY_REGION ((int32_t)5)
#define PICTAVO_D3D_SCALE ((int32_t)6)
#define PICTAVO_D3D_RELEASE ((int32_t)7)
#define PICTAVO_D3D_COPY_MATERIAL ((int32_t)8)
#define PICTAVO_D3D_FILTER_REGION ((int32_t)9)
#define PICTAVO_D3D_COPY_AFFINE ((int32_t)10)
#define PICTAVO_D3D_FILL ((int32_t)11)
#define PICTAVO_D3D_GROW_REGION ((int32_t)12)
#define PICTAVO_D3D_TINT ((int32_t)13)
#define PICTAVO_D3D_CHROMA_KEY ((int32_t)14)
#define PICTAVO_D3D_WHOLE ((int32_t)0)
#define PICTAVO_D3D_AS_PROCESSOR ((int32_t)1)
#define PICTAVO_D3D_PART ((int32_t)2)
#define PICTAVO_METHOD_COUNT ((uint32_t)111)
#if defined(_WIN32)
__declspec(dllimport) Pictavo* GetPictavo6(void);
__declspec(dllimport) int32_t ReleasePictavo6(Pictavo* object);
#endif
#endif

// The types of these two, for programs that load the DLL at run time.
typedef Pictavo* PictavoCreate(void);
typedef int32_t PictavoRelease(Pictavo* object);

#ifdef __cplusplus
}
#endif

#endif  // PICTAVO_PICTAVO_C_H_
