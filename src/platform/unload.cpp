// Part of every DLL: what its run-time library leaves behind.
#include <windows.h>

#include <exception>  // tells which run-time library it is

#ifdef __GLIBCXX__

namespace __gnu_cxx {
/// Frees what the run-time library keeps for exceptions when memory is short: 72 KiB, which a host
/// that loads and unloads the DLL would lose each time.
void __freeres();
}  // namespace __gnu_cxx

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID processEnds) {
  if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) __gnu_cxx::__freeres();
  return TRUE;
}

#endif
