/* Calls Pictavo.dll from C. */
#include <windows.h>

#include <stdio.h>

#include "pictavo/pictavo_c.h"

/* Through void*: a cast between unrelated function types would warn. */
#define ENTRY(module, name, Type) ((Type*)(void*)GetProcAddress(module, name))

int main(void) {
  const HMODULE module = LoadLibraryW(L"Pictavo.dll");
  if (module == NULL) return puts("Pictavo.dll cannot be loaded"), 1;
  PictavoCreate* const create = ENTRY(module, "GetPictavo6", PictavoCreate);
  PictavoRelease* const release = ENTRY(module, "ReleasePictavo6", PictavoRelease);
  Pictavo* const object = create != NULL ? create() : NULL;
  if (object == NULL || release == NULL) return puts("Pictavo.dll has no object"), 1;
  const PictavoMethods* const methods = object->methods;

  uint8_t below[4] = {200, 100, 0, 255};
  const uint8_t above[4] = {0, 0, 255, 128}; /* half clear red */
  methods->BlendOverPitched(object, below, above, 1, 1, 4);
  printf("level %d: over gives %d %d %d\n", methods->GetCPULevel(object), below[0], below[1],
         below[2]);

  uint8_t dark[4] = {100, 50, 10, 255}, light[4] = {128, 128, 128, 255};
  PictavoImageDesc dst = {.data = dark, .width = 1, .height = 1, .pitch = 4, .bytesPerPixel = 4};
  const PictavoImageDesc src = {
      .data = light, .width = 1, .height = 1, .pitch = 4, .bytesPerPixel = 4};
  const PictavoBlendParam add = {.mode = 8, .opacity = 255};
  const uint32_t result = methods->BlendLayer(object, &dst, &src, &add);
  printf("result %u: add gives %d %d %d\n", result, dark[0], dark[1], dark[2]);

  release(object);
  FreeLibrary(module);
  return result == PICTAVO_S_OK ? 0 : 1;
}
