// Transitions: pictavo-host transition, the chain's effects and the demo's part.
#include <algorithm>

#include "base/calls.h"
#include "base/chain.h"
#include "base/commands.h"
#include "demo/demo.h"

namespace host {
namespace {

const std::vector<std::string> kModes = {"fade",  "dip",    "wipe",     "iris",
                                         "clock", "blinds", "dissolve", "push"};

pictavo::Outcome Mix(pictavo::IPictavo6* object, Picture* dst, const Picture& from,
                     const Picture& to, const pictavo::TransitionParam& param) {
  pictavo::ImageDesc mixed = Describe(*dst);
  const pictavo::ImageDesc first = Describe(from), second = Describe(to);
  return pictavo::Call<&pictavo::IPictavo6::ApplyTransition>(object, &mixed, &first, &second,
                                                             &param);
}

int RunTransition(pictavo::Library& library, const Arguments& arguments) {
  pictavo::TransitionParam param = {pictavo::PICTAVO_TRANSITION_FADE, 0.5f, 0, 0, 0xFF000000};
  const Arguments files =
      TakeFiles(3, "transition takes three files, FROM TO OUT", arguments,
                {ChoiceOption("--mode", &param.mode, kModes),
                 RealOption("--progress", &param.progress),
                 RealOption("--softness", &param.softness),
                 RealOption("--angle", &param.angle),
                 {"--colour", [&](Parser& p) { param.colour = 0xFF000000 | p.Hex("--colour", 6); }},
                 LevelOption(library)});
  const Picture from = ReadPicture(files[0]);
  const Picture to = Covering(ReadPicture(files[1]), from.width, from.height);
  Picture mixed(from.width, from.height);
  Expect(Mix(library.get(), &mixed, from, to, param), "a transition with these settings");
  return Deliver(files[2], mixed,
                 Format(", %s at %g, level %d", kModes[param.mode].c_str(), double{param.progress},
                        library->GetCPULevel()));
}

/// How far a transition is at a frame: always as far, or 0 at one frame and 1 at a later one.
struct Course {
  f32 still = 0;
  i64 first = 0, last = 0;

  static Course Of(const std::wstring& text) {
    const size_t hyphen = text.find(L'-', 1);
    if (hyphen == text.npos) {
      const Arguments one = {text};
      return {Parser(one).Real("PROGRESS")};
    }
    constexpr i64 kMost = INT32_MAX;
    const Arguments ends = {text.substr(0, hyphen), text.substr(hyphen + 1)};
    Parser parser(ends);
    const i64 first = parser.Integer("the first frame of PROGRESS", 0, kMost);
    return {0, first, parser.Integer("the last frame of PROGRESS", first + 1, kMost)};
  }

  f32 At(i64 frame) const {
    if (last == 0) return still;
    return std::clamp(static_cast<f32>(frame - first) / static_cast<f32>(last - first), 0.0f, 1.0f);
  }
};

Step TransitionStep(Parser& settings, Size size, pictavo::TransitionParam param, Course course) {
  const FrameBeside to(settings.Next("FILE"), size);
  const auto mix = [=](pictavo::IPictavo6* object, const Moment& moment, Picture* frame,
                       Picture* result) {
    pictavo::TransitionParam now = param;
    now.progress = course.At(moment.number);
    return Mix(object, result, *frame, to.At(moment), now);
  };
  return {.size = size, .inPlace = false, .runAt = mix, .takesSecond = to.isSecond()};
}

}  // namespace

const Command kTransitionCommand = {
    L"transition",
    "  pictavo-host transition FROM TO OUT [options]\n"
    "      A moment on the way from one picture to another, which is made to fill the first.\n"
    "      --mode NAME          fade, dip, wipe, iris, clock, blinds, dissolve or push\n"
    "      --progress P         how far, 0 to 1; 0.5 by default\n"
    "      --softness S         width of the edge, 0 to 1 of its way\n"
    "      --angle DEGREES      where it moves to, clockwise from the right\n"
    "      --colour RRGGBB      what a dip goes through\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunTransition};

const Effect kFadeEffect = {"fade", 2, [](Parser& settings, Size size) -> Step {
                              const Course course = Course::Of(settings.Next("PROGRESS of fade"));
                              return TransitionStep(settings, size, {}, course);
                            }};

const Effect kTransitionEffect = {"transition", 5, [](Parser& settings, Size size) -> Step {
                                    pictavo::TransitionParam param = {};
                                    param.mode = settings.Choice("transition", kModes);
                                    const Course course =
                                        Course::Of(settings.Next("PROGRESS of transition"));
                                    param.softness = settings.Real("SOFTNESS of transition");
                                    param.angle = settings.Real("ANGLE of transition");
                                    param.colour = 0xFF000000;
                                    return TransitionStep(settings, size, param, course);
                                  }};

std::vector<SheetColumn> ShowTransitions(Demo& demo) {
  std::vector<SheetColumn> columns;
  for (const f32 progress : {0.1f, 0.3f, 0.5f, 0.7f, 0.9f}) {
    SheetColumn& column = columns.emplace_back();
    column.heading = Format("%g of the way", double{progress});
    for (u32 mode = 0; mode < kModes.size(); ++mode) {
      const bool edge = mode >= pictavo::PICTAVO_TRANSITION_WIPE;
      const pictavo::TransitionParam param = {mode, progress, edge ? 0.15f : 0,
                                              mode == pictavo::PICTAVO_TRANSITION_WIPE ? 30.0f : 0,
                                              0xFF000000};
      const Picture mixed =
          demo.Examine({Format("%s at %g", kModes[mode].c_str(), double{progress}), 70,
                        demo.background, [&](pictavo::IPictavo6* object, Picture* dst) {
                          return Mix(object, dst, demo.background, demo.layer, param);
                        }});
      column.pictures.push_back({Thumbnail(mixed),
                                 kModes[mode],
                                 Format("slot 70, mode %u", mode),
                                 {Format("softness %g", double{param.softness}), ""}});
    }
  }
  return columns;
}

}  // namespace host
