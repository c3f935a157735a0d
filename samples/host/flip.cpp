// Flips: pictavo-host flip, and the effect of chains.
#include <cstdio>
#include <optional>

#include "chain.h"
#include "commands.h"
#include "text.h"

namespace host {
namespace {

struct Way {
  const char* name;
  u32 mode;
};
constexpr Way kWays[] = {{"sideways", 1}, {"over", 2}};

u32 ModeOf(const std::string& name) {
  for (const Way& way : kWays) {
    if (name == way.name) return way.mode;
  }
  throw UsageFailure("a picture is flipped sideways or over, not \"" + name + '"');
}

pictavo::Outcome Flip(pictavo::IPictavo6* object, Picture* picture, u32 mode) {
  pictavo::ImageDesc image = Describe(*picture);
  return pictavo::Call<&pictavo::IPictavo6::FlipPicture>(object, &image, &image, mode);
}

int RunFlip(pictavo::Library& library, const Arguments& arguments) {
  std::optional<u32> mode;
  const Arguments files = TakeFiles(
      2, "flip takes two files, PICTURE OUT", arguments,
      {{"--way", [&](Parser& parser) { mode = ModeOf(Utf8(parser.Next("the word after --way"))); }},
       LevelOption(library)});
  if (!mode) throw UsageFailure("flip needs --way");
  Picture picture = ReadPicture(files[0]);
  if (const pictavo::Outcome outcome = Flip(library.get(), &picture, *mode); !outcome)
    throw Refusal("to flip the picture", outcome.result);
  WritePicture(files[1], picture);
  std::printf("%s: %d x %d, level %d\n", Utf8(files[1]).c_str(), picture.width, picture.height,
              library->GetCPULevel());
  return 0;
}

}  // namespace

const Command kFlipCommand = {L"flip",
                              "  pictavo-host flip PICTURE OUT --way sideways|over [--level N]\n"
                              "      Exchanges left and right, or top and bottom.\n",
                              RunFlip};

const Effect kFlipEffect = {"flip", 1, [](Parser& settings, Size frame) -> Step {
                              const u32 mode = ModeOf(Utf8(settings.Next("WAY of flip")));
                              return {frame, true,
                                      [=](pictavo::IPictavo6* object, Picture* picture, Picture*) {
                                        return Flip(object, picture, mode);
                                      }};
                            }};

}  // namespace host
