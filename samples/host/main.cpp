// pictavo-host: shows Pictavo.dll at work on pictures.
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <objbase.h>

#include <cstdio>
#include <filesystem>
#include <new>

#include "base/commands.h"
#include "base/text.h"
#include "commands/operations.h"

namespace host {
namespace {

/// In the order in which the usage tells of them.
const Command* const kCommands[] = {
    &kInfoCommand,       &kBlendCommand,     &kLayerCommand,      &kKeyCommand,
    &kScreenKeyCommand,  &kSceneCommand,     &kMotionBlurCommand, &kBlurCommand,
    &kPixelateCommand,   &kConvolveCommand,  &kTransitionCommand, &kLevelsCommand,
    &kColorCommand,      &kLutCommand,       &kGaussCommand,      &kSharpenCommand,
    &kMatteCommand,      &kResizeCommand,    &kFlipCommand,       &kRotateCommand,
    &kTiltCommand,       &kSwirlCommand,     &kConvertCommand,    &kBorderCommand,
    &kHistogramCommand,  &kMeasureCommand,   &kStreamCommand,     &kOpenCLCommand,
    &kGpuKeyCommand,     &kGpuBlurCommand,   &kGpuResizeCommand,  &kGpuTurnCommand,
    &kGpuOutlineCommand, &kGpuRotateCommand, &kGpuMatCommand,     &kGpuPairsCommand,
    &kDemoCommand};

/// For as long as it lives, the console shows UTF-8. Text reaches it as it is and in whole pieces:
/// neither the C library nor the console puts a character together from single bytes.
class Utf8Console {
 public:
  Utf8Console() : before_(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
    for (FILE* stream : {stdout, stderr}) {
      std::setvbuf(stream, nullptr, _IOFBF, 4096);
      _setmode(_fileno(stream), _O_BINARY);
    }
  }
  ~Utf8Console() {
    std::fflush(stdout);
    std::fflush(stderr);
    SetConsoleOutputCP(before_);
  }
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;

 private:
  const UINT before_;
};

/// COM, which the codecs need.
class ComApartment {
 public:
  ComApartment() : result_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {
    if (FAILED(result_)) throw Failure("cannot start COM: " + SystemMessage(result_));
  }
  ~ComApartment() { CoUninitialize(); }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

 private:
  const HRESULT result_;
};

void PrintUsage() {
  std::puts("Shows Pictavo.dll at work on pictures.\n");
  for (const Command* command : kCommands) std::puts(command->usage);
  std::fputs(
      "Exit code: 0 done, 1 failed or a check failed, 2 wrong arguments.\n"
      "\n"
      "  Operation             Slot  Takes                          Blends\n",
      stdout);
  for (const Operation& operation : kOperations) {
    std::string takes;
    if ((operation.settings & kRamp) != 0) takes += "ramp ";
    if ((operation.settings & kFlip) != 0) takes += "flip ";
    if ((operation.settings & kOpacity) != 0) takes += "opacity ";
    if ((operation.settings & kBackdrop) != 0) takes += "backdrop";
    std::printf("  %-20s  %4d  %-29s  %s\n", operation.name, operation.slot, takes.c_str(),
                operation.description);
  }
}

pictavo::Library LoadLibraryBesideProgram() {
  const std::filesystem::path path =
      std::filesystem::path(PathOf(nullptr)).replace_filename(L"Pictavo.dll");
  pictavo::Library library(path.c_str());
  if (!library) {
    std::string message = library.errorText();
    if (library.systemError() != ERROR_SUCCESS) {
      message += ": " + SystemMessage(HRESULT_FROM_WIN32(library.systemError()));
    }
    throw Failure(message + " (" + Utf8(path.native()) + ")");
  }
  return library;
}

int Run(const Arguments& arguments) {
  for (const std::wstring& argument : arguments) {
    if (argument == L"--help" || argument == L"-h" || argument == L"/?") {
      PrintUsage();
      return 0;
    }
  }
  if (arguments.empty()) {
    PrintUsage();
    return 2;
  }
  for (const Command* command : kCommands) {
    if (arguments[0] != command->name) continue;
    const ComApartment apartment;
    pictavo::Library library = LoadLibraryBesideProgram();
    return command->run(library, Arguments(arguments.begin() + 1, arguments.end()));
  }
  throw UsageFailure("there is no command \"" + Utf8(arguments[0]) + '"');
}

int Main(const Arguments& arguments) {
  const Utf8Console console;
  try {
    return Run(arguments);
  } catch (const UsageFailure& failure) {
    std::fprintf(stderr, "pictavo-host: %s; see pictavo-host --help\n", failure.what());
    return failure.exitCode();
  } catch (const Failure& failure) {
    std::fprintf(stderr, "pictavo-host: %s\n", failure.what());
    return failure.exitCode();
  } catch (const std::bad_alloc&) {
    std::fputs("pictavo-host: memory is short for pictures of this size\n", stderr);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "pictavo-host: %s\n", failure.what());
  }
  return 1;
}

}  // namespace

Option LevelOption(pictavo::Library& library) {
  return {"--level", [&library, highest = library->GetCPULevel()](Parser& parser) {
            library->SetCPULevel(parser.Integer("--level", 0, highest));
          }};
}

int Deliver(const std::wstring& file, const Picture& picture, const std::string& more) {
  WritePicture(file, picture);
  std::printf("%s: %d x %d%s\n", Utf8(file).c_str(), picture.width, picture.height, more.c_str());
  return 0;
}

}  // namespace host

int wmain(int count, wchar_t** arguments) {
  return host::Main(host::Arguments(arguments + (count > 0 ? 1 : 0), arguments + count));
}
