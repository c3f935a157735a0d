// The true Gaussian and what is made with it: pictavo-host gauss, sharpen and matte, and the demo's
// part.
#include <algorithm>
#include <functional>
#include <optional>

#include "base/calls.h"
#include "base/in_place.h"
#include "demo/demo.h"

namespace host {
namespace {

using pictavo::IPictavo6;
using pictavo::MatteParam;
using pictavo::Outcome;

struct Sharpening {
  f32 amount = 1, threshold = 0, radius = 2;
};

Outcome Blur(IPictavo6* object, Picture* picture, f32 sigmaX, f32 sigmaY, u32 edges) {
  return CallOn<&IPictavo6::GaussianBlur>(object, picture, sigmaX, sigmaY, edges);
}

Outcome Sharpen(IPictavo6* object, Picture* picture, const Sharpening& s) {
  return CallOn<&IPictavo6::SharpenPicture>(object, picture, s.amount, s.threshold, s.radius);
}

Outcome Adjust(IPictavo6* object, Picture* picture, const MatteParam& param) {
  pictavo::ImageDesc image = Describe(*picture);
  return pictavo::Call<&IPictavo6::AdjustMatte>(object, &image, &param);
}

Outcome Apply(IPictavo6* object, Picture* picture, const Picture& matte, u32 mode) {
  return CallOnto<&IPictavo6::ApplyMatte>(object, picture, matte, mode);
}

int RunGauss(pictavo::Library& library, const Arguments& arguments) {
  f32 sigmaX = 10, sigmaY = 10;
  u32 edges = pictavo::PICTAVO_EDGES_REPLICATE;
  const Arguments files =
      TakeFiles(2, "gauss takes two files, PICTURE OUT", arguments,
                {{"--sigma", [&](Parser& p) { sigmaX = sigmaY = p.Real("--sigma"); }},
                 RealOption("--sigma-y", &sigmaY),
                 ChoiceOption("--edges", &edges, {"clear", "replicate", "mirror"}),
                 LevelOption(library)});
  return Change(library, files, "blur", [=](IPictavo6* object, Picture* picture) {
    return Blur(object, picture, sigmaX, sigmaY, edges);
  });
}

int RunSharpen(pictavo::Library& library, const Arguments& arguments) {
  Sharpening s;
  const Arguments files =
      TakeFiles(2, "sharpen takes two files, PICTURE OUT", arguments,
                {RealOption("--amount", &s.amount), RealOption("--threshold", &s.threshold),
                 RealOption("--radius", &s.radius), LevelOption(library)});
  return Change(library, files, "sharpen",
                [=](IPictavo6* object, Picture* picture) { return Sharpen(object, picture, s); });
}

int RunMatte(pictavo::Library& library, const Arguments& arguments) {
  MatteParam param = {0, 1, 0, 0};
  std::optional<std::wstring> by;
  u32 mode = pictavo::PICTAVO_MATTE_LUMA;
  const Arguments files = TakeFiles(
      2, "matte takes two files, PICTURE OUT", arguments,
      {RealOption("--black", &param.black), RealOption("--white", &param.white),
       IntegerOption("--choke", &param.choke, -64, 64), RealOption("--feather", &param.feather),
       FileOption("--by", &by),
       ChoiceOption("--mode", &mode, {"alpha", "inverted-alpha", "luma", "inverted-luma"}),
       LevelOption(library)});
  return Change(library, files, "adjust", [&](IPictavo6* object, Picture* picture) {
    if (by) {
      const Picture matte = Covering(ReadPicture(*by), picture->width, picture->height);
      if (const Outcome outcome = Apply(object, picture, matte, mode); !outcome) return outcome;
    }
    return Adjust(object, picture, param);
  });
}

}  // namespace

const Command kGaussCommand = {
    L"gauss",
    "  pictavo-host gauss PICTURE OUT [options]\n"
    "      Blurs a picture by the true Gaussian.\n"
    "      --sigma S            in pixels, 0 to 1000; 10 by default\n"
    "      --sigma-y S          for the columns, when it is another\n"
    "      --edges NAME         what is beyond: replicate (by default), mirror or clear\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunGauss};

const Command kSharpenCommand = {
    L"sharpen",
    "  pictavo-host sharpen PICTURE OUT [options]\n"
    "      Sharpens a picture by what a blur takes from it.\n"
    "      --amount A           -1 to 16; 1 by default\n"
    "      --threshold T        of 255, what differs less stays; 0 by default\n"
    "      --radius S           of the blur, its sigma; 2 by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunSharpen};

const Command kMatteCommand = {
    L"matte",
    "  pictavo-host matte PICTURE OUT [options]\n"
    "      Cleans up a picture's alpha, such as a key leaves, in this order.\n"
    "      --by FILE            multiplies it by a matte first\n"
    "      --mode NAME          what counts there: luma (by default), alpha, inverted-luma,\n"
    "                           inverted-alpha\n"
    "      --black B --white W  alphas up to B become 0, from W on 1; 0 and 1 by default\n"
    "      --choke N            shrinks what is opaque, or grows it below 0; -64 to 64\n"
    "      --feather S          softens it by a Gaussian\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunMatte};

const Effect kGaussEffect = {
    "gauss", 2, [](Parser& settings, Size size) -> Step {
      const f32 sigmaX = Setting(settings, "SIGMA of gauss", 10, 0, 1000);
      const f32 sigmaY = Setting(settings, "SIGMA-Y of gauss", sigmaX, 0, 1000);
      return InPlaceStep(size, [=](IPictavo6* object, Picture* frame) {
        return Blur(object, frame, sigmaX, sigmaY, pictavo::PICTAVO_EDGES_REPLICATE);
      });
    }};

const Effect kSharpenEffect = {
    "sharpen", 3, [](Parser& settings, Size size) -> Step {
      Sharpening s;
      s.amount = Setting(settings, "AMOUNT of sharpen", s.amount, -1, 16);
      s.radius = Setting(settings, "RADIUS of sharpen", s.radius, 0, 1000);
      s.threshold = Setting(settings, "THRESHOLD of sharpen", s.threshold, 0, 255);
      return InPlaceStep(
          size, [=](IPictavo6* object, Picture* frame) { return Sharpen(object, frame, s); });
    }};

const Effect kMatteEffect = {
    "matte", 4, [](Parser& settings, Size size) -> Step {
      MatteParam param = {};
      param.black = Setting(settings, "BLACK of matte", 0, 0, 1);
      param.white = Setting(settings, "WHITE of matte", 1, 0, 1);
      param.choke = static_cast<i32>(Setting(settings, "CHOKE of matte", 0, -64, 64));
      param.feather = Setting(settings, "FEATHER of matte", 0, 0, 1000);
      if (param.black >= param.white) throw UsageFailure("BLACK of matte is below WHITE");
      return InPlaceStep(
          size, [=](IPictavo6* object, Picture* frame) { return Adjust(object, frame, param); });
    }};

std::vector<SheetColumn> ShowGauss(Demo& demo) {
  const i32 side = std::min(demo.background.width, demo.background.height);
  const auto blur = [](f32 x, f32 y) -> InPlace {
    return [=](IPictavo6* object, Picture* dst) {
      return Blur(object, dst, x, y, pictavo::PICTAVO_EDGES_MIRROR);
    };
  };
  const auto shown = [&](const std::string& name, int slot, const Picture& picture,
                         const InPlace& run, const char* remark) -> SheetPicture {
    const Picture result = demo.Examine({name, slot, picture, run});
    return {Thumbnail(result), name, Format("slot %d", slot), {remark, ""}};
  };
  SheetColumn filters = {"Gaussian and sharpening", {}};
  for (const i32 part : {200, 20, 4}) {
    const f32 sigma = static_cast<f32>(std::max(1, side / part));
    filters.pictures.push_back(shown(Format("Gaussian, sigma %g", double{sigma}), 56,
                                     demo.background, blur(sigma, sigma), "edges mirrored"));
  }
  const f32 wide = static_cast<f32>(side) / 10;
  filters.pictures.push_back(
      shown("Gaussian, across", 56, demo.background, blur(wide, 0), "along the rows alone"));
  filters.pictures.push_back(shown(
      "sharpen", 49, demo.background,
      [](IPictavo6* object, Picture* dst) {
        return Sharpen(object, dst, {1.5f, 2, 2});
      },
      "amount 1.5, radius 2"));

  const Picture disc = SoftDisc(demo.layer);
  const auto adjust = [](const MatteParam& param) -> InPlace {
    return [=](IPictavo6* object, Picture* dst) { return Adjust(object, dst, param); };
  };
  SheetColumn mattes = {"Mattes", {}};
  mattes.pictures.push_back(shown("matte, levels", 78, disc, adjust({0.4f, 0.6f, 0, 0}),
                                  "a soft edge made hard: 0.4 to 0.6"));
  mattes.pictures.push_back(
      shown("matte, choke", 78, disc, adjust({0.4f, 0.6f, 24, 0}), "… and shrunk by 24 pixels"));
  mattes.pictures.push_back(shown("matte, feather", 78, disc, adjust({0.4f, 0.6f, 24, 9}),
                                  "… and softened by a sigma of 9"));
  mattes.pictures.push_back(shown(
      "apply a matte", 80, demo.layer,
      [&](IPictavo6* object, Picture* dst) {
        return Apply(object, dst, demo.background, pictavo::PICTAVO_MATTE_LUMA);
      },
      "by the luma of the background"));
  return {filters, mattes};
}

}  // namespace host
