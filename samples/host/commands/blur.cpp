// The blur: pictavo-host blur, and the demo's part.
#include <algorithm>
#include <cmath>

#include "base/calls.h"
#include "base/in_place.h"
#include "demo/demo.h"

namespace host {
namespace {

pictavo::Outcome Blur(pictavo::IPictavo6* object, Picture* picture, f32 radius) {
  return CallOn<&pictavo::IPictavo6::GaussianBlurBox3>(object, picture, radius);
}

int RunBlur(pictavo::Library& library, const Arguments& arguments) {
  f32 radius = 10;
  const Arguments files = TakeFiles(2, "blur takes two files, PICTURE OUT", arguments,
                                    {RealOption("--radius", &radius), LevelOption(library)});
  Picture picture = ReadPicture(files[0]);
  if (!Blur(library.get(), &picture, radius)) {
    throw Failure(Format("the library blurs this picture by radii above 0 and up to %d, not by %g",
                         std::min(picture.width, picture.height), double{radius}));
  }
  return Deliver(files[1], picture,
                 Format(", radius %g, level %d", double{radius}, library->GetCPULevel()));
}

/// A disc of the picture's middle with a hard edge, in the middle of clear black.
Picture CutOut(Picture picture) {
  const double radius = 0.3 * std::min(picture.width, picture.height);
  for (i32 y = 0; y < picture.height; ++y) {
    for (i32 x = 0; x < picture.width; ++x) {
      if (std::hypot(x + 0.5 - picture.width / 2.0, y + 0.5 - picture.height / 2.0) > radius)
        std::fill_n(picture.At(x, y), 4, u8{0});
    }
  }
  return picture;
}

Picture ShowBlurred(Demo& demo, const char* what, const Picture& picture, f32 radius) {
  return demo.Examine(
      {Format("%s, radius %g", what, double{radius}), 87, picture,
       [=](pictavo::IPictavo6* object, Picture* dst) { return Blur(object, dst, radius); }});
}

}  // namespace

const Command kBlurCommand = {
    L"blur",
    "  pictavo-host blur PICTURE OUT [options]\n"
    "      Blurs a picture by three boxes, clear surroundings left out.\n"
    "      --radius R           in pixels, up to the smaller side; 10 by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunBlur};

const Effect kBlurEffect = {
    "blur", 1, [](Parser& settings, Size size) -> Step {
      const f32 radius = settings.Real("RADIUS of blur");
      if (radius <= 0 || radius > static_cast<f32>(std::min(size.width, size.height)))
        throw UsageFailure("RADIUS of blur is above 0 and at most the frame's smaller side");
      return InPlaceStep(size, [=](pictavo::IPictavo6* object, Picture* frame) {
        return Blur(object, frame, radius);
      });
    }};

std::vector<SheetColumn> ShowBlur(Demo& demo) {
  SheetColumn column = {"Blur", {}};
  const i32 side = std::min(demo.background.width, demo.background.height);
  for (const i32 part : {60, 20}) {
    const f32 radius = static_cast<f32>(std::max(1, side / part));
    column.pictures.push_back({Thumbnail(ShowBlurred(demo, "blur", demo.background, radius)),
                               Format("radius %g", double{radius}),
                               "slot 87",
                               {"a photograph", ""}});
  }
  const f32 radius = static_cast<f32>(std::max(1, side / 10));
  const Picture blurred = ShowBlurred(demo, "blur, cut-out", CutOut(demo.layer), radius);
  Picture composed = demo.background;
  demo.object->BlendOverPitched(composed.pixels.data(), blurred.pixels.data(), composed.width,
                                composed.height, composed.pitch());
  column.pictures.push_back({Thumbnail(composed),
                             Format("cut-out, radius %g", double{radius}),
                             "slot 87",
                             {"clear black around it leaves", "no dark edge over a background"}});
  return {column};
}

}  // namespace host
