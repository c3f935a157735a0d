// The exports of Pictavo.dll. exports.def gives each of the two functions its six names.
#include <new>

#include "frame/pictavo_object.h"

extern "C" {

pictavo::IPictavo* GetPictavo() { return new (std::nothrow) pictavo::Pictavo(); }

int32_t ReleasePictavo(pictavo::IPictavo* object) {
  delete static_cast<pictavo::Pictavo*>(static_cast<pictavo::IPictavo6*>(object));
  return 0;
}

}  // extern "C"
