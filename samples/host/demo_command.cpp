// pictavo-host demo: every operation checked, timed and shown.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "commands.h"
#include "contact_sheet.h"
#include "level_check.h"
#include "operations.h"
#include "text.h"

namespace host {
namespace {

constexpr std::array<i32, 3> kLevels = {pictavo::PICTAVO_LEVEL_PORTABLE,
                                        pictavo::PICTAVO_LEVEL_SSE2, pictavo::PICTAVO_LEVEL_AVX2};

struct Inputs {
  Picture background;       // opaque
  Picture clearBackground;  // … turning clear towards the right, for the operations that can
  Picture layer;            // a soft-edged disc

  const Picture& BackgroundFor(const Operation& operation) const {
    return operation.premultiplied == Premultiplied::kBoth ? clearBackground : background;
  }
};

/// 0 below `from`, 1 above `to`, smooth between.
double SmoothStep(double from, double to, double value) {
  const double t = std::clamp((value - from) / (to - from), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

/// Makes a picture clearer by a function of the column and row, 0 … 1.
template <typename Alpha>
void FadeOut(Picture* picture, Alpha alpha) {
  for (i32 y = 0; y < picture->height; ++y) {
    for (i32 x = 0; x < picture->width; ++x) {
      u8* pixel = picture->At(x, y);
      pixel[3] = static_cast<u8>(alpha(x, y) * pixel[3] + 0.5);
    }
  }
}

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

Inputs MakeInputs(const Picture& backgroundPicture, const Picture& layerPicture) {
  Picture background = OnWhite(backgroundPicture);
  Picture clearBackground = background;
  const double width = background.width, height = background.height;
  FadeOut(&clearBackground,
          [=](i32 x, i32) { return 1 - SmoothStep(0.25 * width, 0.85 * width, x + 0.5); });
  Picture layer = Covering(layerPicture, background.width, background.height);
  const double radius = 0.42 * std::min(width, height);
  FadeOut(&layer, [=](i32 x, i32 y) {
    const double distance = std::hypot(x + 0.5 - width / 2, y + 0.5 - height / 2);
    return 1 - SmoothStep(0.7 * radius, radius, distance);
  });
  return {std::move(background), std::move(clearBackground), std::move(layer)};
}

/// What the demo gives an operation: each setting that it takes, at a value that shows; flip and
/// backdrop once each.
BlendSettings DemoSettings(const Operation& operation) {
  BlendSettings settings;
  if ((operation.settings & kRamp) != 0) settings.rampEnd = 0.0f;
  if (operation.slot == 8) settings.flip = true;
  if ((operation.settings & kOpacity) != 0) settings.opacity = 200;
  if (operation.slot == 37) settings.backdrop = 0xFF204A87;
  return settings;
}

/// Median time of a call in nanoseconds a pixel, and what the call makes of the background.
struct Run {
  Picture result;
  double time;
};

Run RunAtLevel(pictavo::IPictavo6* object, const Operation& operation, const Picture& background,
               const Picture& layer, const BlendSettings& settings, i32 level) {
  using Clock = std::chrono::steady_clock;
  using Nanoseconds = std::chrono::duration<double, std::nano>;
  constexpr size_t kFewest = 5, kMost = 51;
  constexpr Nanoseconds kEnough = std::chrono::milliseconds(60);

  object->SetCPULevel(level);
  Picture result = background;
  std::vector<Nanoseconds> times;
  Nanoseconds total{0};
  while (times.size() < kFewest || (times.size() < kMost && total < kEnough)) {
    std::copy(background.pixels.begin(), background.pixels.end(), result.pixels.begin());
    const Clock::time_point start = Clock::now();
    if (!operation.run(object, &result, layer, settings)) {
      throw Failure(std::string("the library refused the operation ") + operation.name);
    }
    times.push_back(Clock::now() - start);
    total += times.back();
  }
  std::nth_element(times.begin(), times.begin() + static_cast<i64>(times.size() / 2), times.end());
  const double pixels = static_cast<double>(result.width) * result.height;
  return {std::move(result), times[times.size() / 2].count() / pixels};
}

/// What one operation did.
struct Report {
  std::array<std::optional<double>, kLevels.size()> times;  // none above the processor's level
  std::string difference;                                   // from what a level must give
  std::optional<SheetPicture> picture;                      // of the highest level
};

Report Examine(pictavo::IPictavo6* object, i32 highestLevel, const Operation& operation,
               const Inputs& inputs) {
  const BlendSettings settings = DemoSettings(operation);
  const Picture background = operation.PreparedBackground(inputs.BackgroundFor(operation));
  const Picture layer = operation.PreparedLayer(inputs.layer);
  Report report;
  std::optional<Picture> portable, highest;
  for (size_t i = 0; i < kLevels.size() && kLevels[i] <= highestLevel; ++i) {
    Run run = RunAtLevel(object, operation, background, layer, settings, kLevels[i]);
    report.times[i] = run.time;
    if (!portable) portable = run.result;
    // What is expected is the same from level 3 on, so that levels 3 and 8 are compared as well.
    const Picture expected = operation.levelRule == LevelRule::kSameBytes
                                 ? *portable
                                 : ExpectedOver(operation, background, layer, settings, kLevels[i]);
    const std::string difference = FirstDifference(expected, run.result);
    if (report.difference.empty() && !difference.empty()) {
      report.difference = Format("level %d: %s", kLevels[i], difference.c_str());
    }
    highest = std::move(run.result);
  }
  report.picture =
      SheetPicture{Thumbnail(operation.Finished(*std::move(highest))),
                   operation.name,
                   Format("slot %d", operation.slot),
                   {operation.description, SettingsText(operation.settings, settings)}};
  return report;
}

std::string LevelsText(const Operation& operation, const Report& report) {
  if (!report.difference.empty()) return "DIFFER: " + report.difference;
  const auto levels = std::count_if(report.times.begin(), report.times.end(),
                                    [](const auto& time) { return time.has_value(); });
  if (operation.levelRule != LevelRule::kSameBytes) return "as stated for each level";
  return levels > 1 ? "same bytes" : "nothing to compare";
}

void PrintReport(const Operation& operation, const Report& report) {
  std::printf("  %-20s  %4d", operation.name, operation.slot);
  for (const std::optional<double>& time : report.times) {
    std::printf("  %8s", time ? Format("%.2f", *time).c_str() : "-");
  }
  std::printf("  %s\n", LevelsText(operation, report).c_str());
  std::fflush(stdout);
}

SheetColumn InputColumn(const Inputs& inputs) {
  return {"Inputs",
          {{Thumbnail(inputs.background), "background", "", {"opaque", ""}},
           {Thumbnail(inputs.clearBackground), "background with alpha", "", {"for composite", ""}},
           {Thumbnail(inputs.layer), "layer", "", {"a soft-edged disc", ""}}}};
}

void MakeFolder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!std::filesystem::is_directory(folder, error)) {
    throw Failure("cannot make the folder \"" + Utf8(folder.native()) + '"');
  }
}

void PrintHeading(const Inputs& inputs, const std::string& version, i32 highestLevel) {
  std::printf("Pictavo %s on pictures of %d x %d pixels; the processor's level is %d\n\n",
              version.c_str(), inputs.background.width, inputs.background.height, highestLevel);
  std::puts("                              Nanoseconds a pixel, median");
  std::printf("  %-20s  %4s", "Operation", "Slot");
  for (const i32 level : kLevels) std::printf("  %8s", Format("level %d", level).c_str());
  std::puts("  Agreement");
}

}  // namespace

int RunDemo(pictavo::Library& library, const Arguments& arguments) {
  if (arguments.size() != 1 && arguments.size() != 3) {
    throw UsageFailure("demo takes a folder, or a folder and two pictures");
  }
  const std::filesystem::path folder = arguments[0];
  MakeFolder(folder);
  Progress progress;
  const bool own = arguments.size() == 1;
  const Picture backgroundPicture = own ? Painted(0) : ReadPicture(arguments[1]);
  progress.Show("Reading the layer");
  const Picture layerPicture = own ? Painted(2) : ReadPicture(arguments[2]);
  progress.Show("Preparing the pictures");
  const Inputs inputs = MakeInputs(backgroundPicture, layerPicture);
  progress.Clear();
  const i32 highestLevel = library->GetCPULevel();
  const std::string version = VersionOf(library.module());
  PrintHeading(inputs, version, highestLevel);

  std::vector<SheetColumn> columns = {InputColumn(inputs)};
  size_t failures = 0;
  for (size_t i = 0; i < kOperations.size(); ++i) {
    const Operation& operation = kOperations[i];
    progress.Show(Format("%zu of %zu: %s", i + 1, kOperations.size(), operation.name));
    Report report = Examine(library.get(), highestLevel, operation, inputs);
    progress.Clear();
    PrintReport(operation, report);
    failures += report.difference.empty() ? 0 : 1;
    if (columns.back().heading != operation.family) columns.push_back({operation.family, {}});
    columns.back().pictures.push_back(*std::move(report.picture));
  }

  const std::filesystem::path path = folder / L"contact-sheet.png";
  progress.Show("Drawing the contact sheet");
  WritePicture(path, DrawContactSheet(
                         "Pictavo " + version + ": alpha blending",
                         Format("%d × %d pixels, level %d: %s", inputs.background.width,
                                inputs.background.height, highestLevel, LevelName(highestLevel)),
                         columns));
  progress.Clear();
  std::printf("\n%s\n", Utf8(path.native()).c_str());
  if (failures == 0) return 0;
  std::fflush(stdout);  // in this order
  std::fprintf(stderr, "pictavo-host: %zu of %zu operations do not give what they must\n", failures,
               kOperations.size());
  return 1;
}

}  // namespace host
