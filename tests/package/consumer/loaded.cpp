// Loads the DLL at run time, once where it lies and once where it does not.
#include <cstdio>

#include "pictavo/pictavo_host.h"

int wmain(int, wchar_t** arguments) {
  const pictavo::Library library(arguments[1]), missing(L"no such folder\\Pictavo.dll");
  if (!library || missing || missing.error() != pictavo::LoadError::moduleNotFound) return 1;
  const pictavo::LibraryVersion version = library.version(), none = missing.version();
  std::printf("loaded: level %d, version %u.%u.%u\n", library->GetCPULevel(), version.major,
              version.minor, version.patch);
  return none.major + none.minor + none.patch == 0 ? 0 : 2;
}
