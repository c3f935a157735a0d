#ifndef PICTAVO_SAMPLES_HOST_COMMANDS_H_
#define PICTAVO_SAMPLES_HOST_COMMANDS_H_

#include <string>
#include <vector>

#include "pictavo/pictavo_host.h"

namespace host {

using Arguments = std::vector<std::wstring>;

// The commands. Each takes what follows its name on the command line and returns the program's exit
// code; it throws Failure, or UsageFailure for arguments that make no sense. The library is loaded
// and COM is up.

int RunInfo(pictavo::Library& library, const Arguments& arguments);
int RunBlend(pictavo::Library& library, const Arguments& arguments);
int RunDemo(pictavo::Library& library, const Arguments& arguments);

/// The version in a DLL's or program's resources, "unknown" without one.
std::string VersionOf(HMODULE module);

/// The full path of a loaded module.
std::wstring PathOf(HMODULE module);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_COMMANDS_H_
