#ifndef PICTAVO_PLATFORM_INVALID_PARAMETER_H_
#define PICTAVO_PLATFORM_INVALID_PARAMETER_H_

#ifdef _WIN32
#include <windows.h>

#include "platform/module.h"
#endif

#include <cerrno>
#include <cstdlib>

namespace pictavo {

#ifdef _WIN32

/// The handler that the host has set in a C runtime of its process; null where it has set none, or
/// the runtime is not loaded or too old to know handlers.
inline _invalid_parameter_handler InvalidParameterHandlerOf(const wchar_t* runtime) noexcept {
  const HMODULE module = GetModuleHandleW(runtime);
  if (module == nullptr) return nullptr;
  // Not the function of this name that is linked in: that may be a stand-in of the compiler's,
  // which knows no handler of anybody's.
  auto* get = EntryPoint<_invalid_parameter_handler()>(module, "_get_invalid_parameter_handler");
  return get != nullptr ? get() : nullptr;
}

#endif

/// Reports a range error as the C runtime's checked functions do: through errno and the
/// invalid-parameter handler. Unlike theirs, it does not end a process that has set no handler.
inline void ReportRangeError() noexcept {
  errno = ERANGE;
#ifdef _WIN32
  for (const wchar_t* runtime : {L"ucrtbase.dll", L"msvcrt.dll"}) {
    if (const _invalid_parameter_handler handler = InvalidParameterHandlerOf(runtime))
      handler(nullptr, nullptr, nullptr, 0, 0);
  }
#endif
}

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_INVALID_PARAMETER_H_
