// A library with three methods, to try bindings with where there is no DLL.
#include "pictavo/pictavo_c.h"

static int32_t GetCPULevel(Pictavo* self) { return self->methods != 0 ? 7 : 0; }

static uint32_t BlendOverPitched(Pictavo* self, uint8_t* dst, const uint8_t* src, int32_t width,
                                 int32_t height, int32_t pitch) {
  (void)self;
  (void)width;
  for (int32_t i = 0; i < height * pitch; ++i) dst[i] = src[i];
  return 1;
}

static uint32_t GetMotionBlurDstSize(Pictavo* self, const PictavoImageDesc* src,
                                     PictavoImageDesc* dst, const PictavoMotionBlurParam* param,
                                     int32_t* offsetX, int32_t* offsetY) {
  (void)self;
  dst->width = src->width + (int32_t)param->dirX;
  dst->height = src->height + param->maxSamples;
  *offsetX = -(int32_t)param->zoom;
  *offsetY = -2;
  return PICTAVO_S_OK;
}

static const PictavoMethods kMethods = {.GetCPULevel = GetCPULevel,
                                        .BlendOverPitched = BlendOverPitched,
                                        .GetMotionBlurDstSize = GetMotionBlurDstSize};
static Pictavo object = {&kMethods};

Pictavo* GetPictavo6(void) { return &object; }
int32_t ReleasePictavo6(Pictavo* released) { return released != &object; }
