// pictavo-host blend: lays one picture over another at any place.
#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <utility>

#include "base/calls.h"
#include "base/chain.h"
#include "base/command_line.h"
#include "base/commands.h"
#include "base/text.h"
#include "commands/operations.h"

namespace host {
namespace {

struct Job {
  Arguments files;
  const Operation* operation = &FindOperation("over");
  BlendSettings settings;
  unsigned given = kNone;  // the settings that stand on the command line
  i32 x = 0;
  i32 y = 0;
};

void CheckGivenSettings(const Job& job) {
  constexpr struct {
    Settings setting;
    const char* option;
  } kOptions[] = {
      {kRamp, "--ramp"}, {kFlip, "--flip"}, {kOpacity, "--opacity"}, {kBackdrop, "--backdrop"}};
  for (const auto& [setting, option] : kOptions) {
    if ((job.given & ~job.operation->settings & setting) != 0) {
      throw UsageFailure(std::string("the operation ") + job.operation->name + " takes no " +
                         option);
    }
  }
}

Job Parse(const Arguments& arguments, pictavo::Library& library) {
  Job job;
  BlendSettings& s = job.settings;
  constexpr i64 kFar = std::numeric_limits<i32>::max();
  job.files = TakeFiles(
      3, "blend takes three files, BACKGROUND LAYER OUT", arguments,
      {{"--op",
        [&](Parser& p) { job.operation = &FindOperation(Utf8(p.Next("the name after --op"))); }},
       {"--at",
        [&](Parser& p) {
          job.x = p.Integer("X of --at", -kFar, kFar);
          job.y = p.Integer("Y of --at", -kFar, kFar);
        }},
       {"--ramp",
        [&](Parser& p) {
          s.rampStart = p.Real("START of --ramp");
          s.rampEnd = p.Real("END of --ramp");
          job.given |= kRamp;
        }},
       {"--flip", [&](Parser&) { s.flip = true, job.given |= kFlip; }},
       {"--opacity",
        [&](Parser& p) {
          s.opacity = static_cast<u8>(p.Integer("--opacity", 0, 255));
          job.given |= kOpacity;
        }},
       {"--backdrop",
        [&](Parser& p) {
          s.backdrop = p.Hex("--backdrop", 8);
          job.given |= kBackdrop;
        }},
       LevelOption(library)});
  CheckGivenSettings(job);
  return job;
}

/// The part of 0 … size that a length at an offset covers; from an end on nothing is left.
struct Overlap {
  Overlap(i32 offset, i32 length, i32 size)
      : first(std::max(0, offset)),
        count(static_cast<i32>(std::min<i64>(size, i64{offset} + length) - first)) {}

  i32 first;
  i32 count;
};

/// Blends the part of the layer that lies on the background, and tells whether there is one. The
/// library is given that part of both pictures, with the ramp's opacities at its edges.
bool BlendVisible(pictavo::IPictavo6* object, const Job& job, const Picture& layer,
                  Picture* background) {
  const Overlap columns(job.x, layer.width, background->width);
  const Overlap rows(job.y, layer.height, background->height);
  if (columns.count <= 0 || rows.count <= 0) return false;
  const i32 top = rows.first - job.y;
  const Rect shown = {columns.first - job.x,
                      job.settings.flip ? layer.height - top - rows.count : top, columns.count,
                      rows.count};
  const auto opacityAt = [&](i32 row) {
    return static_cast<f32>(row) / static_cast<f32>(layer.height) *
               (job.settings.rampEnd - job.settings.rampStart) +
           job.settings.rampStart;
  };
  BlendSettings settings = job.settings;
  settings.rampStart = opacityAt(top);
  settings.rampEnd = opacityAt(top + rows.count);

  const Operation& operation = *job.operation;
  Picture part = operation.PreparedBackground(
      object, Cropped(*background, {columns.first, rows.first, columns.count, rows.count}));
  Expect(operation.run(object, &part, operation.PreparedLayer(object, Cropped(layer, shown)),
                       settings),
         std::string("the operation ") + operation.name);
  Paste(operation.Finished(std::move(part)), columns.first, rows.first, background);
  return true;
}

int RunBlend(pictavo::Library& library, const Arguments& arguments) {
  const Job job = Parse(arguments, library);
  Progress progress;
  Picture background = ReadPicture(job.files[0]);
  progress.Show("Reading the layer");
  const Picture layer = ReadPicture(job.files[1]);
  progress.Show("Blending");
  const bool visible = BlendVisible(library.get(), job, layer, &background);
  progress.Show("Writing");
  WritePicture(job.files[2], background);
  progress.Clear();

  const std::string settings = SettingsText(job.operation->settings, job.settings);
  std::printf("%s: %d x %d, %s (slot %d) at level %d%s%s%s\n", Utf8(job.files[2]).c_str(),
              background.width, background.height, job.operation->name, job.operation->slot,
              library->GetCPULevel(), settings.empty() ? "" : ", ", settings.c_str(),
              visible ? "" : "; the layer lies outside the background");
  return 0;
}

/// The frame at a place, in a size, between the background's pixels.
Step OverAtPlace(const Arguments& pieces, Size size) {
  Parser parser(pieces);
  const f32 left = parser.Real("X of over"), top = parser.Real("Y of over");
  const Size shown = FrameSize(&parser, "WxH of over");
  const std::array<f32, 4> rect = {left, top, left + static_cast<f32>(shown.width),
                                   top + static_cast<f32>(shown.height)};
  const FrameBeside background(parser.Next("FILE of over"), size);
  const auto lay = [=](pictavo::IPictavo6* object, const Moment& moment, Picture* frame,
                       Picture* result) {
    *result = OnWhite(background.At(moment));
    const pictavo::BlendParam param = {0, 255, 0, 0, 0};
    return CallOnto<&pictavo::IPictavo6::BlendLayerScaled>(object, result, *frame, &param,
                                                           rect.data());
  };
  return {.size = size, .inPlace = false, .runAt = lay, .takesSecond = background.isSecond()};
}

/// The frame over all of the background.
Step OverAll(const std::wstring& file, Size size) {
  const FrameBeside background(file, size);
  const auto lay = [=](pictavo::IPictavo6* object, const Moment& moment, Picture* frame,
                       Picture* result) {
    *result = OnWhite(background.At(moment));
    return pictavo::Call<&pictavo::IPictavo6::BlendOverPitched>(object, result->pixels.data(),
                                                                frame->pixels.data(), frame->width,
                                                                frame->height, frame->pitch());
  };
  return {.size = size, .inPlace = false, .runAt = lay, .takesSecond = background.isSecond()};
}

}  // namespace

const Command kBlendCommand = {
    L"blend",
    "  pictavo-host blend BACKGROUND LAYER OUT [options]\n"
    "      Blends a layer into a background and writes a PNG, or a JPEG for a name in .jpg.\n"
    "      --op NAME            the operation, one of the list below; over by default\n"
    "      --at X Y             where the layer's top left corner goes; 0 0 by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n"
    "      --ramp START END     opacity of the layer's top and bottom, 1 for full\n"
    "      --flip               turns the layer upside down\n"
    "      --opacity N          opacity of the layer, 0 to 255\n"
    "      --backdrop AARRGGBB  colour to mix with instead of the background\n",
    RunBlend};

const Effect kOverEffect = {"over", 4, [](Parser& settings, Size size) -> Step {
                              Arguments pieces = {settings.Next("FILE of over")};
                              while (!settings.AtEnd())
                                pieces.push_back(settings.Next("FILE of over"));
                              if (pieces.size() == 4) return OverAtPlace(pieces, size);
                              std::wstring file = pieces[0];  // a name with colons was taken apart
                              for (size_t i = 1; i < pieces.size(); ++i) file += L':' + pieces[i];
                              return OverAll(file, size);
                            }};

}  // namespace host
