#ifndef PICTAVO_PLATFORM_DEBUGGER_H_
#define PICTAVO_PLATFORM_DEBUGGER_H_

#ifdef _WIN32
#include <windows.h>
#endif

#include <cstdarg>
#include <cstdio>

namespace pictavo {

/// Says something to whoever debugs the host. Without a debugger, or off Windows, nobody hears it.
inline void TellDebugger([[maybe_unused]] const char* line) noexcept {
#ifdef _WIN32
  OutputDebugStringA(line);
#endif
}
inline void TellDebugger([[maybe_unused]] const wchar_t* line) noexcept {
#ifdef _WIN32
  OutputDebugStringW(line);
#endif
}

/// The same, of a line put together as by printf and cut at 1023 characters.
#ifdef __GNUC__
#ifdef _WIN32
[[gnu::format(gnu_printf, 1, 2)]]
#else
[[gnu::format(printf, 1, 2)]]
#endif
#endif
inline void
PrintToDebugger(const char* format, ...) noexcept {
  char line[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof(line), format, arguments);
  va_end(arguments);
  TellDebugger(line);
}

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_DEBUGGER_H_
