#ifndef PICTAVO_PLATFORM_MODULE_H_
#define PICTAVO_PLATFORM_MODULE_H_

#include <windows.h>

namespace pictavo {

/// The entry point `name` of a loaded module as a pointer to the function type Fn, or null.
template <typename Fn>
Fn* EntryPoint(HMODULE module, const char* name) noexcept {
  // Through void*: a cast between unrelated function types would warn.
  return reinterpret_cast<Fn*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_MODULE_H_
