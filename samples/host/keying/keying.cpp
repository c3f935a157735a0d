// Keys of easy and of hard shots: pictavo-host screen-key, and the demo's part.
#include <optional>

#include "base/in_place.h"
#include "base/text.h"
#include "demo/demo.h"
#include "keying/chroma_key.h"
#include "keying/key_scene.h"
#include "keying/screen_key.h"

namespace host {
namespace {

using pictavo::ChromaKey;
using pictavo::IPictavo6;

/// The alpha of a picture, as greys.
Picture AlphaOf(IPictavo6* object, Picture picture) {
  u8* const pixels = picture.pixels.data();
  object->ShuffleChannels(pixels, pixels, i64{picture.width} * picture.height, 3, 3, 3, 5);
  return picture;
}

/// A premultiplied picture in front of a background of its size.
Picture InFront(IPictavo6* object, const Picture& front, Picture background) {
  object->BlendPremultipliedPitched(background.pixels.data(), front.pixels.data(), front.width,
                                    front.height, front.pitch());
  return background;
}

struct Job {
  ScreenKey key;
  std::optional<u32> screen;
  std::optional<std::wstring> plate, background;
  enum Shown : u32 { kResult, kPlate, kMatte };
  u32 shown = kResult;
};

Picture Run(IPictavo6* object, const Job& job, const Picture& shot) {
  const auto sized = [&](const std::wstring& file) {
    return OnWhite(Covering(ReadPicture(file), shot.width, shot.height));
  };
  const Picture plate = job.plate ? sized(*job.plate) : CleanPlate(object, shot, job.key);
  if (job.shown == Job::kPlate) return plate;
  Picture front = KeyScreen(object, shot, plate, job.key);
  if (job.shown == Job::kMatte) return AlphaOf(object, std::move(front));
  return job.background ? InFront(object, front, sized(*job.background))
                        : Unpremultiply(std::move(front));
}

std::vector<Option> OptionsOf(pictavo::Library& library, Job* job) {
  ScreenKey& key = job->key;
  return {{"--screen", [=](Parser& p) { job->screen = p.Hex("--screen", 6); }},
          ChoiceOption("--show", &job->shown, {"result", "plate", "matte"}),
          FileOption("--background", &job->background),
          FileOption("--plate", &job->plate),
          IntegerOption("--screen-angle", &key.screen.angle, 1, 90),
          IntegerOption("--screen-denoise", &key.screen.denoise, 0, 255),
          IntegerOption("--margin", &key.margin, 0, 64),
          RealOption("--blur", &key.blur),
          IntegerOption("--angle", &key.angle, 1, 90),
          IntegerOption("--denoise", &key.denoise, 0, 255),
          RealOption("--black", &key.black),
          RealOption("--white", &key.white),
          RealOption("--spill", &key.spill),
          RealOption("--core-black", &key.core.black),
          RealOption("--core-white", &key.core.white),
          IntegerOption("--core-choke", &key.core.choke, -64, 64),
          RealOption("--core-feather", &key.core.feather),
          LevelOption(library)};
}

int RunScreenKey(pictavo::Library& library, const Arguments& arguments) {
  Job job;
  const Arguments files =
      TakeFiles(2, "screen-key takes two files, PICTURE OUT", arguments, OptionsOf(library, &job));
  if (!job.screen) throw UsageFailure("screen-key needs --screen");
  if (!(job.key.spill >= 0 && job.key.spill <= 1)) throw UsageFailure("--spill is 0 to 1");
  job.key.screen = KeyOf(*job.screen, job.key.screen.angle, job.key.screen.denoise);
  const Picture result = Run(library.get(), job, OnWhite(ReadPicture(files[0])));
  return Deliver(files[1], result, Format(", level %d", library->GetCPULevel()));
}

/// The frame in straight alpha, for what follows in a chain.
Step ScreenKeyStep(Size size, const ScreenKey& key) {
  return {size, false, [=](IPictavo6* object, Picture* frame, Picture* result) {
            const Picture shot = OnWhite(*frame);
            *result = Unpremultiply(KeyScreen(object, shot, CleanPlate(object, shot, key), key));
            return pictavo::Outcome{pictavo::PICTAVO_S_OK, true};
          }};
}

/// A picture of the sheet over the scene's background, with its error.
SheetPicture Over(const KeyScene& scene, const Picture& picture, const char* tag) {
  return {
      Thumbnail(picture),
      "new background",
      tag,
      {Format("%.2f from the truth, root mean square", RmsDifference(picture, scene.truth)), ""}};
}

SheetColumn ShowSimpleKey(Demo& demo, const KeyScene& scene) {
  const ChromaKey key = KeyOf(kSceneScreen, 89, 15);
  const Picture front = SimpleKey(demo.object, scene.shot, key, {0.05f, 0.6f, 0, 0});
  Picture result = scene.background;
  demo.object->BlendOverPitched(result.pixels.data(), front.pixels.data(), front.width,
                                front.height, front.pitch());
  return {"Key and matte",
          {{Thumbnail(front),
            "keyed",
            "slots 86, 78",
            {Format("angle %d, denoise %d", key.angle, key.denoise), ""}},
           {Thumbnail(AlphaOf(demo.object, front)), "its matte", "", {"", ""}},
           Over(scene, result, "slot 4")}};
}

SheetColumn ShowScreenKey(Demo& demo, const KeyScene& scene) {
  ScreenKey key;
  key.screen = KeyOf(kSceneScreen, key.screen.angle, key.screen.denoise);
  const Picture plate = CleanPlate(demo.object, scene.shot, key);
  const Picture front =
      demo.Examine({"screen key", 86, scene.shot, [&](IPictavo6* object, Picture* dst) {
                      *dst =
                          KeyScreen(object, scene.shot, CleanPlate(object, scene.shot, key), key);
                      return pictavo::Outcome{pictavo::PICTAVO_S_OK, true};
                    }});
  return {"With the screen's own light",
          {{Thumbnail(plate),
            "the screen alone",
            "slots 86, 78, 80, 56",
            {"all else cut out, the rest blurred", ""}},
           {Thumbnail(AlphaOf(demo.object, front)), "matte", "slots 86, 53, 78, 80", {"", ""}},
           Over(scene, InFront(demo.object, front, scene.background), "slots 73, 66, 7")}};
}

}  // namespace

const Command kScreenKeyCommand = {
    L"screen-key",
    "  pictavo-host screen-key PICTURE OUT --screen RRGGBB [options]\n"
    "      Keys a hard shot: hair, motion, shadows, glass, an uneven screen (docs/keying.md).\n"
    "      --background FILE    lays the result over this picture\n"
    "      --plate FILE         the screen without anything before it; without one it is made of\n"
    "                           the shot: of what a key of --screen-angle N (30) and\n"
    "                           --screen-denoise N (16) finds, --margin N (8) pixels away from "
    "all\n"
    "                           else, blurred by --blur S (20)\n"
    "      --angle N            of the key, 1 to 90, as --denoise N; 90 and 6 by default\n"
    "      --black B --white W  alphas up to B become 0, from W on 1\n"
    "      --core-black B --core-white W --core-choke N --core-feather S\n"
    "                           what is made opaque, as matte has it; 0.65, 0.85, 0 and 0\n"
    "      --spill S            how much of the screen's colour may stay, 0 to 1; 0.6 by default\n"
    "      --show NAME          result, plate or matte\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunScreenKey};

const Effect kScreenKeyEffect = {"screen-key", 3, [](Parser& settings, Size size) -> Step {
                                   ScreenKey key;
                                   const u32 colour = settings.Hex("RRGGBB of screen-key", 6);
                                   if (!settings.AtEnd())
                                     key.angle = settings.Integer("ANGLE of screen-key", 1, 90);
                                   if (!settings.AtEnd())
                                     key.denoise =
                                         settings.Integer("DENOISE of screen-key", 0, 255);
                                   key.screen = KeyOf(colour, key.screen.angle, key.screen.denoise);
                                   return ScreenKeyStep(size, key);
                                 }};

std::vector<SheetColumn> ShowKeying(Demo& demo) {
  const KeyScene scene;
  return {{"The scene",
           {{Thumbnail(scene.shot),
             "shot",
             "",
             {"hair, motion, glass, a shadow, spill, noise,", "an uneven screen"}},
            {Thumbnail(scene.matte), "its true matte", "", {"", ""}},
            {Thumbnail(scene.truth), "the truth", "", {"", ""}}}},
          ShowSimpleKey(demo, scene),
          ShowScreenKey(demo, scene)};
}

}  // namespace host
