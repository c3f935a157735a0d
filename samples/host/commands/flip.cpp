// Flips: pictavo-host flip, and the effect of chains.
#include <optional>
#include <string>
#include <vector>

#include "base/calls.h"
#include "base/in_place.h"
#include "base/text.h"

namespace host {
namespace {

const std::vector<std::string> kWays = {"sideways", "over"};

InPlace Flipping(u32 way) {
  return [=](pictavo::IPictavo6* object, Picture* picture) {
    return CallFrom<&pictavo::IPictavo6::FlipPicture>(object, picture, *picture, 1 + way);
  };
}

int RunFlip(pictavo::Library& library, const Arguments& arguments) {
  std::optional<u32> way;
  const Arguments files =
      TakeFiles(2, "flip takes two files, PICTURE OUT", arguments,
                {{"--way", [&](Parser& parser) { way = parser.Choice("--way", kWays); }},
                 LevelOption(library)});
  if (!way) throw UsageFailure("flip needs --way");
  return Change(library, files, "flip", Flipping(*way));
}

}  // namespace

const Command kFlipCommand = {L"flip",
                              "  pictavo-host flip PICTURE OUT --way sideways|over [--level N]\n"
                              "      Exchanges left and right, or top and bottom.\n",
                              RunFlip};

const Effect kFlipEffect = {"flip", 1, [](Parser& settings, Size frame) {
                              return InPlaceStep(frame,
                                                 Flipping(settings.Choice("WAY of flip", kWays)));
                            }};

}  // namespace host
