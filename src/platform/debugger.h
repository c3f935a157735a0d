#ifndef PICTAVO_PLATFORM_DEBUGGER_H_
#define PICTAVO_PLATFORM_DEBUGGER_H_

#ifdef _WIN32
#include <windows.h>
#endif

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

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_DEBUGGER_H_
