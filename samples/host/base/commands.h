#ifndef PICTAVO_SAMPLES_HOST_BASE_COMMANDS_H_
#define PICTAVO_SAMPLES_HOST_BASE_COMMANDS_H_

#include <string>

#include "base/command_line.h"
#include "pictavo/pictavo_host.h"

namespace host {

struct Command {
  const wchar_t* name;
  const char* usage;  // lines for people, the first one its form

  /// Takes what follows the name on the command line and returns the program's exit code. Throws
  /// Failure, or UsageFailure for arguments that make no sense. The library is loaded and COM is
  /// up.
  int (*run)(pictavo::Library& library, const Arguments& arguments);
};

// The commands, each in the file of its family.
extern const Command kInfoCommand, kBlendCommand, kLayerCommand, kKeyCommand, kScreenKeyCommand,
    kSceneCommand, kMotionBlurCommand, kBlurCommand, kPixelateCommand, kConvolveCommand,
    kTransitionCommand, kLevelsCommand, kColorCommand, kLutCommand, kGaussCommand, kSharpenCommand,
    kMatteCommand, kResizeCommand, kFlipCommand, kConvertCommand, kBorderCommand, kHistogramCommand,
    kMeasureCommand, kStreamCommand, kOpenCLCommand, kGpuKeyCommand, kGpuBlurCommand,
    kGpuResizeCommand, kGpuTurnCommand, kGpuOutlineCommand, kGpuRotateCommand, kGpuMatCommand,
    kGpuPairsCommand, kDemoCommand, kRotateCommand, kTiltCommand, kSwirlCommand;

/// --level N, which sets the library's level, up to the one that it has.
Option LevelOption(pictavo::Library& library);

/// Writes what a command made, says so with its size and more, and returns the exit code for that.
/// Throws as WritePicture.
int Deliver(const std::wstring& file, const Picture& picture, const std::string& more);

/// The version in a DLL's or program's resources, "unknown" without one.
std::string VersionOf(HMODULE module);

/// The full path of a loaded module.
std::wstring PathOf(HMODULE module);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_BASE_COMMANDS_H_
