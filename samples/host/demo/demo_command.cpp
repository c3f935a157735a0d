// pictavo-host demo: every operation checked, timed and shown.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "base/commands.h"
#include "commands/operations.h"
#include "demo/demo.h"

namespace host {
namespace {

using Part = std::vector<SheetColumn> (*)(Demo& demo);

/// A picture that the demo writes: contact-sheet-NAME.png.
struct Sheet {
  const char* name;
  const char* title;
  std::vector<Part> parts;
};
const Sheet kSheets[] = {
    {"blending", "alpha blending", {ShowBlending}},
    {"effects", "effects", {ShowLayers, ShowMotionBlur, ShowChromaKey, ShowBlur}},
    {"filters", "filters and mattes", {ShowGauss, ShowFilters}},
    {"keying", "keying", {ShowKeying}},
    {"frames", "frames, planes and channels", {ShowFrames}},
    {"grading", "grading", {ShowGrading}},
    {"transitions", "transitions", {ShowTransitions}},
    {"resizing", "resizing", {ShowResizing}},
    {"turning", "turning and tilting", {ShowWarps}},
    {"conversions", "conversions, borders, counting", {ShowConversions}},
    {"opencl", "OpenCL", {ShowOpenCL}},
    {"gpu", "on the graphics card", {ShowGpu}},
};

/// Stands in for a photograph: waves of colour. Other seeds give other pictures.
Picture Painted(double seed) {
  Picture picture(960, 640);
  for (i32 y = 0; y < picture.height; ++y) {
    for (i32 x = 0; x < picture.width; ++x) {
      for (int c = 0; c < 3; ++c) {
        const double wave = std::sin(x * (0.004 + 0.003 * seed) + (c + seed) * 1.3) +
                            std::sin(y * (0.011 - 0.003 * c) + x * 0.003 * c + seed);
        picture.At(x, y)[c] = static_cast<u8>(128 + 60 * wave);
      }
      picture.At(x, y)[3] = 255;
    }
  }
  return picture;
}

void MakeFolder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!std::filesystem::is_directory(folder, error)) {
    throw Failure("cannot make the folder \"" + Utf8(folder.native()) + '"');
  }
}

/// Runs a sheet's parts and writes it. Returns where; nowhere when they have nothing to show.
std::optional<std::filesystem::path> WriteSheet(const Sheet& sheet, const std::string& version,
                                                const std::filesystem::path& folder, Demo* demo) {
  std::vector<SheetColumn> columns;
  for (const Part part : sheet.parts) {
    for (SheetColumn& column : part(*demo)) columns.push_back(std::move(column));
  }
  if (columns.empty()) return std::nullopt;
  std::filesystem::path path = folder / Format("contact-sheet-%s.png", sheet.name);
  WritePicture(path, DrawContactSheet("Pictavo " + version + ": " + sheet.title,
                                      Format("%d × %d pixels, level %d: %s", demo->background.width,
                                             demo->background.height, demo->highestLevel,
                                             LevelName(demo->highestLevel)),
                                      columns));
  return path;
}

int RunDemo(pictavo::Library& library, const Arguments& arguments) {
  if (arguments.size() != 1 && arguments.size() != 3) {
    throw UsageFailure("demo takes a folder, or a folder and two pictures");
  }
  const std::filesystem::path folder = arguments[0];
  MakeFolder(folder);
  const bool own = arguments.size() == 1;
  Picture background = OnWhite(own ? Painted(0) : ReadPicture(arguments[1]));
  Picture layer = OnWhite(
      Covering(own ? Painted(2) : ReadPicture(arguments[2]), background.width, background.height));
  Demo demo(library.get(), std::move(background), std::move(layer));
  const std::string version = VersionOf(library.module());
  std::printf("Pictavo %s on pictures of %d x %d pixels; the processor's level is %d\n\n",
              version.c_str(), demo.background.width, demo.background.height, demo.highestLevel);
  demo.PrintHeading();

  std::vector<std::filesystem::path> written;
  for (const Sheet& sheet : kSheets) {
    if (auto path = WriteSheet(sheet, version, folder, &demo)) written.push_back(*std::move(path));
  }
  std::puts("");
  for (const std::filesystem::path& path : written)
    std::printf("%s\n", Utf8(path.native()).c_str());
  if (demo.different == 0) return 0;
  std::fflush(stdout);  // in this order
  std::fprintf(stderr, "pictavo-host: %d of %d operations do not give what they must\n",
               demo.different, demo.examined);
  return 1;
}

}  // namespace

const Command kDemoCommand = {
    L"demo",
    "  pictavo-host demo FOLDER [BACKGROUND LAYER]\n"
    "      Runs every operation, checks and times it at each level, and writes what it gives to\n"
    "      contact sheets in the folder. Without pictures it paints its own.\n",
    RunDemo};

}  // namespace host
