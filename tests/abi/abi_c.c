// What the C header says of the table, tried on the object from C.
#include "pictavo/pictavo_c.h"

struct Surface {
  const PictavoSurfaceMethods* methods;
  uint32_t pixels[2];
};

static uint32_t Query(PictavoSurface* self, PictavoImageDesc* image) {
  struct Surface* const surface = (struct Surface*)self;
  image->data = surface->pixels;
  image->width = 2;
  image->height = 1;
  image->pitch = 8;
  image->bytesPerPixel = 4;
  return 1;
}

int PassesInC(Pictavo* object) {
  static const PictavoSurfaceMethods surfaces = {Query};
  struct Surface dst = {&surfaces, {1, 2}}, src = {&surfaces, {3, 4}};
  const uint32_t copied =
      object->methods->CopySurface(object, (PictavoSurface*)&dst, (PictavoSurface*)&src);
  const uint8_t grey = 9;
  uint32_t pixel = 0;
  object->methods->SetCPULevel(object, 3);
  return copied == PICTAVO_S_OK && dst.pixels[0] == 3 && dst.pixels[1] == 4 &&
         object->methods->GetCPULevel(object) == 3 &&
         object->methods->Reserved12(object) == PICTAVO_E_NOTIMPL &&
         object->methods->ExpandPlane(object, &grey, 1, 1, 1, (uint8_t*)&pixel, 4) ==
             PICTAVO_S_OK &&
         pixel == 0xFF090909 && PictavoFrameBytes(PICTAVO_FRAME_NV12, 3, 3) == 17;
}
