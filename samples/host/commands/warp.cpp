// Turning, tilting and swirling: pictavo-host rotate, tilt and swirl, and the demo's part.
#include <algorithm>
#include <optional>

#include "base/calls.h"
#include "base/in_place.h"
#include "demo/demo.h"

namespace host {
namespace {

using pictavo::IPictavo6;

template <auto method, typename Param>
pictavo::Outcome Warp(IPictavo6* object, Picture* dst, const Picture& src, const Param& param) {
  return CallFrom<method>(object, dst, src, &param);
}
constexpr auto kRotate = Warp<&IPictavo6::RotatePicture, pictavo::RotateParam>;
constexpr auto kTilt = Warp<&IPictavo6::TiltPicture, pictavo::TiltParam>;
constexpr auto kSwirl = Warp<&IPictavo6::SwirlPicture, pictavo::SwirlParam>;

f32 Middle(i32 length) { return static_cast<f32>(length) / 2; }

/// The middle of a picture to the middle of another one.
pictavo::RotateParam Rotation(f32 angle, f32 scale, Size from, Size to) {
  return {angle,
          scale,
          Middle(from.width),
          Middle(from.height),
          Middle(to.width),
          Middle(to.height),
          pictavo::PICTAVO_SAMPLE_BILINEAR};
}

pictavo::TiltParam Tilting(f32 yaw, f32 pitch, f32 roll, Size size) {
  return {Middle(size.width),
          Middle(size.height),
          yaw,
          pitch,
          roll,
          60,
          pictavo::PICTAVO_SAMPLE_BILINEAR};
}

/// A disc that touches the nearer edges.
pictavo::SwirlParam Swirling(f32 angle, Size size) {
  return {Middle(size.width), Middle(size.height), Middle(std::min(size.width, size.height)), angle,
          pictavo::PICTAVO_SAMPLE_BILINEAR};
}

Size SizeOf(const Picture& picture) { return {picture.width, picture.height}; }

/// Writes what a method makes of a picture.
template <typename Run>
int WriteWarped(pictavo::Library& library, const Arguments& files, const Picture& picture,
                Picture warped, Run run) {
  Expect(run(library.get(), &warped, picture), "these settings");
  return Deliver(
      files[1], warped,
      Format(" from %d x %d, level %d", picture.width, picture.height, library->GetCPULevel()));
}

Option NearestOption(u32* filter) {
  return {"--nearest", [filter](Parser&) { *filter = pictavo::PICTAVO_SAMPLE_NEAREST; }};
}

int RunRotate(pictavo::Library& library, const Arguments& arguments) {
  f32 angle = 0, scale = 1;
  u32 filter = pictavo::PICTAVO_SAMPLE_BILINEAR;
  std::optional<Size> asked;
  const Arguments files =
      TakeFiles(2, "rotate takes two files, PICTURE OUT", arguments,
                {RealOption("--angle", &angle), RealOption("--scale", &scale),
                 SizeOption("--size", &asked), NearestOption(&filter), LevelOption(library)});
  const Picture picture = ReadPicture(files[0]);
  const Size size = asked.value_or(SizeOf(picture));
  pictavo::RotateParam param = Rotation(angle, scale, SizeOf(picture), size);
  param.filter = filter;
  return WriteWarped(
      library, files, picture, Picture(size.width, size.height),
      [&](IPictavo6* o, Picture* d, const Picture& s) { return kRotate(o, d, s, param); });
}

int RunTilt(pictavo::Library& library, const Arguments& arguments) {
  f32 yaw = 0, pitch = 0, roll = 0, view = 60;
  u32 filter = pictavo::PICTAVO_SAMPLE_BILINEAR;
  const Arguments files = TakeFiles(
      2, "tilt takes two files, PICTURE OUT", arguments,
      {RealOption("--yaw", &yaw), RealOption("--pitch", &pitch), RealOption("--roll", &roll),
       RealOption("--view", &view), NearestOption(&filter), LevelOption(library)});
  const Picture picture = ReadPicture(files[0]);
  pictavo::TiltParam param = Tilting(yaw, pitch, roll, SizeOf(picture));
  param.fieldOfView = view;
  param.filter = filter;
  return WriteWarped(
      library, files, picture, Picture(picture.width, picture.height),
      [&](IPictavo6* o, Picture* d, const Picture& s) { return kTilt(o, d, s, param); });
}

int RunSwirl(pictavo::Library& library, const Arguments& arguments) {
  f32 angle = 180, radius = -1;
  u32 filter = pictavo::PICTAVO_SAMPLE_BILINEAR;
  const Arguments files = TakeFiles(2, "swirl takes two files, PICTURE OUT", arguments,
                                    {RealOption("--angle", &angle), RealOption("--radius", &radius),
                                     NearestOption(&filter), LevelOption(library)});
  const Picture picture = ReadPicture(files[0]);
  pictavo::SwirlParam param = Swirling(angle, SizeOf(picture));
  if (radius >= 0) param.radius = radius;
  param.filter = filter;
  return WriteWarped(
      library, files, picture, Picture(picture.width, picture.height),
      [&](IPictavo6* o, Picture* d, const Picture& s) { return kSwirl(o, d, s, param); });
}

}  // namespace

const Command kRotateCommand = {
    L"rotate",
    "  pictavo-host rotate PICTURE OUT [options]\n"
    "      Turns a picture about its middle. What it leaves is clear.\n"
    "      --angle DEGREES      clockwise\n"
    "      --scale F            1 by default\n"
    "      --size WxH           of the result; the picture's by default\n"
    "      --nearest            takes single pixels; four are mixed by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunRotate};

const Command kTiltCommand = {
    L"tilt",
    "  pictavo-host tilt PICTURE OUT [options]\n"
    "      Turns a picture in space, about its middle, and shows it in perspective.\n"
    "      --yaw DEGREES        the right edge away\n"
    "      --pitch DEGREES      the top edge away\n"
    "      --roll DEGREES       clockwise, before the other two\n"
    "      --view DEGREES       that the untilted picture fills, 1 to 170; 60 by default\n"
    "      --nearest            takes single pixels; four are mixed by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunTilt};

const Command kSwirlCommand = {
    L"swirl",
    "  pictavo-host swirl PICTURE OUT [options]\n"
    "      Swirls a disc in a picture's middle.\n"
    "      --angle DEGREES      of the middle, clockwise; 180 by default\n"
    "      --radius R           in pixels; half of the smaller side by default\n"
    "      --nearest            takes single pixels; four are mixed by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunSwirl};

const Effect kRotateEffect = {
    "rotate", 2, [](Parser& settings, Size size) -> Step {
      const f32 angle = settings.Real("ANGLE of rotate");
      const pictavo::RotateParam param =
          Rotation(angle, Setting(settings, "SCALE of rotate", 1, 0.001f, 1000), size, size);
      return {size, false, [=](IPictavo6* object, Picture* frame, Picture* result) {
                return kRotate(object, result, *frame, param);
              }};
    }};

const Effect kTiltEffect = {"tilt", 3, [](Parser& settings, Size size) -> Step {
                              const f32 yaw = settings.Real("YAW of tilt");
                              const f32 pitch = Setting(settings, "PITCH of tilt", 0, -3600, 3600);
                              const f32 roll = Setting(settings, "ROLL of tilt", 0, -3600, 3600);
                              const pictavo::TiltParam param = Tilting(yaw, pitch, roll, size);
                              return {size, false,
                                      [=](IPictavo6* object, Picture* frame, Picture* result) {
                                        return kTilt(object, result, *frame, param);
                                      }};
                            }};

std::vector<SheetColumn> ShowWarps(Demo& demo) {
  const Picture& photo = demo.background;
  const Size size = SizeOf(photo);
  const auto show = [&](SheetColumn* column, const char* name, int slot, const char* how,
                        std::function<pictavo::Outcome(IPictavo6*, Picture*)> run) {
    const Picture before = slot == 96 ? photo : Picture(size.width, size.height);
    const Picture made = demo.Examine({name, slot, before, std::move(run)});
    column->pictures.push_back({Thumbnail(made), name, Format("slot %d", slot), {how, ""}});
  };
  SheetColumn turned = {"Turned", {}}, tilted = {"In space", {}};
  show(&turned, "rotate", 67, "15 degrees, at 0.8", [&](IPictavo6* o, Picture* d) {
    return kRotate(o, d, photo, Rotation(15, 0.8f, size, size));
  });
  show(&turned, "swirl", 79, "240 degrees",
       [&](IPictavo6* o, Picture* d) { return kSwirl(o, d, photo, Swirling(240, size)); });
  show(&turned, "scaled layer", 96, "into a rectangle between pixels",
       [&](IPictavo6* o, Picture* d) {
         const pictavo::BlendParam param = {0, 230, 0, 0, 0};
         const f32 rect[] = {
             0.55f * static_cast<f32>(size.width), 0.55f * static_cast<f32>(size.height),
             0.95f * static_cast<f32>(size.width), 0.95f * static_cast<f32>(size.height)};
         return CallOnto<&IPictavo6::BlendLayerScaled>(o, d, demo.layer, &param, rect);
       });
  const struct {
    const char *name, *how;
    f32 yaw, pitch, roll;
  } kTilts[] = {{"tilt, yaw", "the right edge away by 50 degrees", 50, 0, 0},
                {"tilt, pitch", "the top edge away by 45 degrees", 0, 45, 0},
                {"tilt, all three", "yaw -30, pitch 30, roll 20", -30, 30, 20}};
  for (const auto& tilt : kTilts) {
    show(&tilted, tilt.name, 81, tilt.how, [&](IPictavo6* o, Picture* d) {
      return kTilt(o, d, photo, Tilting(tilt.yaw, tilt.pitch, tilt.roll, size));
    });
  }
  return {turned, tilted};
}

}  // namespace host
