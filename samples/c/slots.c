/* Calls Pictavo.dll from C by slot number: the object's first word points at its table of methods,
 * and every method takes the object first. pictavo.h numbers the slots and states their arguments.
 */
#include <windows.h>

#include <stdint.h>
#include <stdio.h>

typedef void** Object; /* points at the table */

/* Slots 1 and 4. */
typedef int32_t GetCPULevel(Object object);
typedef uint32_t BlendOverPitched(Object object, uint8_t* dst, const uint8_t* src, int32_t width,
                                  int32_t height, int32_t pitch);

/* Slot 73 and its records. */
typedef struct ImageDesc {
  uint32_t reserved[2];
  int32_t bufferWidth, bufferHeight;
  uint32_t memoryKind;
  void* data; /* at byte 24 */
  int32_t width, height, pitch, bytesPerPixel;
} ImageDesc;
typedef struct BlendParam {
  uint32_t mode, opacity, alphaMode;
  float fractionX, fractionY;
} BlendParam;
typedef uint32_t BlendLayer(Object object, ImageDesc* dst, const ImageDesc* src,
                            const BlendParam* param);

/* Through void*: a cast between unrelated function types would warn. */
#define METHOD(object, slot, Type) ((Type*)(void*)((void**)*(object))[slot])
#define ENTRY(module, name, Type) ((Type*)(void*)GetProcAddress(module, name))

typedef Object Create(void);
typedef int32_t Release(Object object);

int main(void) {
  const HMODULE module = LoadLibraryW(L"Pictavo.dll");
  if (module == NULL) return puts("Pictavo.dll cannot be loaded"), 1;
  Create* const create = ENTRY(module, "GetPictavo6", Create);
  Release* const release = ENTRY(module, "ReleasePictavo6", Release);
  const Object object = create != NULL ? create() : NULL;
  if (object == NULL || release == NULL) return puts("Pictavo.dll has no object"), 1;

  uint8_t below[4] = {200, 100, 0, 255};
  const uint8_t above[4] = {0, 0, 255, 128}; /* half clear red */
  METHOD(object, 4, BlendOverPitched)(object, below, above, 1, 1, 4);
  printf("level %d: over gives %d %d %d\n", METHOD(object, 1, GetCPULevel)(object), below[0],
         below[1], below[2]);

  uint8_t dark[4] = {100, 50, 10, 255};
  ImageDesc dst = {{0, 0}, 1, 1, 0, dark, 1, 1, 4, 4};
  uint8_t light[4] = {128, 128, 128, 255};
  const ImageDesc src = {{0, 0}, 1, 1, 0, light, 1, 1, 4, 4};
  const BlendParam add = {8, 255, 0, 0, 0};
  const uint32_t result = METHOD(object, 73, BlendLayer)(object, &dst, &src, &add);
  printf("result %u: add gives %d %d %d\n", result, dark[0], dark[1], dark[2]);

  release(object);
  FreeLibrary(module);
  return 0;
}
