// Motion blur: pictavo-host motion-blur, and the demo's part.
#include "base/calls.h"
#include "base/in_place.h"
#include "demo/demo.h"

namespace host {
namespace {

/// The destination that a motion needs, clear, and where the picture lies in it.
struct Room {
  Room(pictavo::IPictavo6* object, const Picture& source, const pictavo::MotionBlurParam& param)
      : picture(1, 1) {
    const pictavo::ImageDesc src = Describe(source);
    pictavo::ImageDesc dst = {};
    i32 offsetX, offsetY;
    object->GetMotionBlurDstSize(&src, &dst, &param, &offsetX, &offsetY);
    // The sizes are sums modulo 2^32.
    picture = Picture(static_cast<u32>(dst.width), static_cast<u32>(dst.height));
    place = {-offsetX, -offsetY, source.width, source.height};
  }

  Picture picture;
  Rect place;
};

pictavo::Outcome Blur(pictavo::IPictavo6* object, Picture* dst, const Picture& picture,
                      const pictavo::MotionBlurParam& param) {
  return CallFrom<&pictavo::IPictavo6::MotionBlur>(object, dst, picture, &param);
}

int RunMotionBlur(pictavo::Library& library, const Arguments& arguments) {
  pictavo::MotionBlurParam param = {1, 30, 0, 0, 1, 0, 0};
  const Arguments files = TakeFiles(2, "motion-blur takes two files, PICTURE OUT", arguments,
                                    {{"--direction",
                                      [&](Parser& parser) {
                                        param.dirX = parser.Real("X of --direction");
                                        param.dirY = parser.Real("Y of --direction");
                                      }},
                                     RealOption("--zoom", &param.zoom),
                                     RealOption("--spin", &param.angle),
                                     RealOption("--strength", &param.strength),
                                     IntegerOption("--samples", &param.maxSamples, 2, 65536),
                                     LevelOption(library)});
  const Picture picture = ReadPicture(files[0]);
  Picture blurred = Room(library.get(), picture, param).picture;
  Expect(Blur(library.get(), &blurred, picture, param), "this motion");
  return Deliver(
      files[1], blurred,
      Format(" from %d x %d, level %d", picture.width, picture.height, library->GetCPULevel()));
}

}  // namespace

const Command kMotionBlurCommand = {
    L"motion-blur",
    "  pictavo-host motion-blur PICTURE OUT [options]\n"
    "      Smears a picture along the strongest of these motions; the result is larger.\n"
    "      --direction X Y      pixels to the right and down\n"
    "      --zoom F             about the centre, 1 for none\n"
    "      --spin DEGREES       about the centre\n"
    "      --strength S         multiplies the motion; 1 by default\n"
    "      --samples N          most samples a pixel; 30 by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunMotionBlur};

const Effect kMotionEffect = {
    "motion", 2, [](Parser& settings, Size size) -> Step {
      pictavo::MotionBlurParam param = {1, 30, 0, 0, 1, 0, 0};
      param.dirX = settings.Real("X of motion");
      param.dirY = settings.Real("Y of motion");
      return InPlaceStep(size, [=](pictavo::IPictavo6* object, Picture* frame) {
        Room room(object, *frame, param);
        const pictavo::Outcome outcome = Blur(object, &room.picture, *frame, param);
        if (outcome) *frame = Cropped(room.picture, room.place);
        return outcome;
      });
    }};

std::vector<SheetColumn> ShowMotionBlur(Demo& demo) {
  const struct {
    const char* name;
    const char* settings;
    pictavo::MotionBlurParam param;
  } kMotions[] = {
      {"direction", "60 right, 30 down", {1, 45, 60, 30, 1, 0, 0}},
      {"zoom", "1.3 times", {1, 64, 0, 0, 1.3f, 0, 0}},
      {"spin", "20 degrees", {1, 120, 0, 0, 1, 0, 20}},
  };
  SheetColumn column = {"Motion blur", {}};
  for (const auto& motion : kMotions) {
    const Room room(demo.object, demo.background, motion.param);
    const Picture blurred =
        demo.Examine({std::string("motion blur, ") + motion.name, 63, room.picture,
                      [&](pictavo::IPictavo6* object, Picture* dst) {
                        return Blur(object, dst, demo.background, motion.param);
                      }});
    column.pictures.push_back({Thumbnail(Cropped(blurred, room.place)),
                               motion.name,
                               "slot 63",
                               {Format("%s, %d samples", motion.settings, motion.param.maxSamples),
                                Format("cut from %d × %d", blurred.width, blurred.height)}});
  }
  return {column};
}

}  // namespace host
