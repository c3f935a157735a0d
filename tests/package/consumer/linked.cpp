// Links the import library.
#include <cstdio>

#include "pictavo/pictavo.h"

int main() {
  pictavo::IPictavo6* const object = GetPictavo6();
  if (object == nullptr) return 1;
  unsigned char below[4] = {200, 100, 0, 255};
  const unsigned char above[4] = {0, 0, 255, 128};
  const unsigned result = object->BlendOverPitched(below, above, 1, 1, 4);
  std::printf("linked: level %d, %d %d %d\n", object->GetCPULevel(), below[0], below[1], below[2]);
  return ReleasePictavo6(object) == 0 && result == 1 && below[0] == 100 && below[2] == 127 ? 0 : 1;
}
