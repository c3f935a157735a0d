// Levels, the colour matrix and tables of colours: pictavo-host levels, color and lut, their
// effects, and the demo's part.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "base/calls.h"
#include "base/in_place.h"
#include "base/text.h"
#include "demo/demo.h"
#include "pictavo/pictavo_cube.h"

namespace host {
namespace {

using pictavo::ColorParam;
using pictavo::CubeTable;
using pictavo::IPictavo6;
using pictavo::LevelsParam;
using pictavo::Outcome;

constexpr u32 kColours = 0b0111;  // channels of AdjustLevels
constexpr LevelsParam kSameLevels = {0, 1, 1, 0, 1};
constexpr ColorParam kSameColour = {0, 1, 1, 0, 0, 0};

InPlace Levels(const LevelsParam& param) {
  return [=](IPictavo6* object, Picture* picture) {
    return CallOn<&IPictavo6::AdjustLevels>(object, picture, kColours, &param);
  };
}

InPlace Colour(const ColorParam& param) {
  return [=](IPictavo6* object, Picture* picture) {
    return CallOn<&IPictavo6::AdjustColor>(object, picture, &param);
  };
}

InPlace Lut(std::shared_ptr<const CubeTable> table, f32 intensity) {
  const u32 of256 = static_cast<u32>(intensity * 256 + 0.5f);
  return [=](IPictavo6* object, Picture* picture) {
    const pictavo::ColorLutParam param = table->Param(of256);
    return CallFrom<&IPictavo6::ApplyColorLut>(object, picture, *picture, &param);
  };
}

std::shared_ptr<const CubeTable> ReadTable(const std::wstring& name) {
  std::ifstream file(std::filesystem::path(name), std::ios::binary);
  if (!file) throw Failure("cannot read " + Utf8(name));
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  try {
    return std::make_shared<const CubeTable>(pictavo::ReadCube(text));
  } catch (const pictavo::CubeFailure& failure) {
    throw Failure(Utf8(name) + ", " + failure.what());
  }
}

int RunLevels(pictavo::Library& library, const Arguments& arguments) {
  LevelsParam p = kSameLevels;
  const Arguments files =
      TakeFiles(2, "levels takes two files, PICTURE OUT", arguments,
                {RealOption("--black", &p.blackIn), RealOption("--white", &p.whiteIn),
                 RealOption("--gamma", &p.gamma), RealOption("--black-out", &p.blackOut),
                 RealOption("--white-out", &p.whiteOut), LevelOption(library)});
  return Change(library, files, "grade", Levels(p));
}

int RunColour(pictavo::Library& library, const Arguments& arguments) {
  ColorParam p = kSameColour;
  const Arguments files =
      TakeFiles(2, "color takes two files, PICTURE OUT", arguments,
                {RealOption("--brightness", &p.brightness), RealOption("--contrast", &p.contrast),
                 RealOption("--saturation", &p.saturation), RealOption("--hue", &p.hue),
                 RealOption("--temperature", &p.temperature), RealOption("--tint", &p.tint),
                 LevelOption(library)});
  return Change(library, files, "grade", Colour(p));
}

int RunLut(pictavo::Library& library, const Arguments& arguments) {
  f32 intensity = 1;
  const Arguments files = TakeFiles(3, "lut takes three files, PICTURE TABLE.cube OUT", arguments,
                                    {RealOption("--intensity", &intensity), LevelOption(library)});
  if (!(intensity >= 0 && intensity <= 1)) throw UsageFailure("--intensity is 0 to 1");
  return Change(library, {files[0], files[2]}, "grade", Lut(ReadTable(files[1]), intensity));
}

/// A film's look, as its maker would put it into a file: dark blues, warm lights.
std::shared_ptr<const CubeTable> MadeTable() {
  std::string text = "TITLE \"warm lights\"\nLUT_3D_SIZE 9\n";
  for (int i = 0; i < 9 * 9 * 9; ++i) {
    const double r = i % 9 / 8., g = i / 9 % 9 / 8., b = i / 81 / 8.;
    const double luma = 0.2126 * r + 0.7152 * g + 0.0722 * b;
    text += Format("%.4f %.4f %.4f\n", 0.85 * r + 0.25 * luma * luma, 0.9 * g + 0.08 * luma,
                   0.75 * b + 0.2 * (1 - luma) * luma + 0.05);
  }
  return std::make_shared<const CubeTable>(pictavo::ReadCube(text));
}

}  // namespace

const Command kLevelsCommand = {
    L"levels",
    "  pictavo-host levels PICTURE OUT [options]\n"
    "      Maps the colours of a picture along a curve.\n"
    "      --black B --white W  what becomes black and white, 0 to 1\n"
    "      --gamma G            above 1 brightens what is between; 0.01 to 100\n"
    "      --black-out B --white-out W  what black and white become\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunLevels};

const Command kColorCommand = {
    L"color",
    "  pictavo-host color PICTURE OUT [options]\n"
    "      Adjusts a picture's colours.\n"
    "      --brightness B       -1 to 1; 0 changes nothing\n"
    "      --contrast C         0 to 4, as --saturation S; 1 changes nothing\n"
    "      --hue H              degrees\n"
    "      --temperature T      -1 (cold) to 1 (warm), as --tint T; 0 changes nothing\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunColour};

const Command kLutCommand = {
    L"lut",
    "  pictavo-host lut PICTURE TABLE.cube OUT [options]\n"
    "      Maps a picture's colours by the table of a .cube file.\n"
    "      --intensity I        how much of it, 0 to 1; all by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunLut};

const Effect kLevelsEffect = {"levels", 3, [](Parser& settings, Size size) -> Step {
                                LevelsParam p = kSameLevels;
                                p.blackIn = Setting(settings, "BLACK of levels", p.blackIn, 0, 1);
                                p.whiteIn = Setting(settings, "WHITE of levels", p.whiteIn, 0, 1);
                                p.gamma = Setting(settings, "GAMMA of levels", p.gamma, 0.01f, 100);
                                if (p.blackIn >= p.whiteIn)
                                  throw UsageFailure("BLACK of levels is below WHITE");
                                return InPlaceStep(size, Levels(p));
                              }};

const Effect kColorEffect = {
    "color", 6, [](Parser& settings, Size size) -> Step {
      ColorParam p = kSameColour;
      p.brightness = Setting(settings, "BRIGHTNESS of color", p.brightness, -1, 1);
      p.contrast = Setting(settings, "CONTRAST of color", p.contrast, 0, 4);
      p.saturation = Setting(settings, "SATURATION of color", p.saturation, 0, 4);
      p.hue = Setting(settings, "HUE of color", p.hue, -3600, 3600);
      p.temperature = Setting(settings, "TEMPERATURE of color", p.temperature, -1, 1);
      p.tint = Setting(settings, "TINT of color", p.tint, -1, 1);
      return InPlaceStep(size, Colour(p));
    }};

const Effect kLutEffect = {"lut", 1, [](Parser& settings, Size size) -> Step {
                             return InPlaceStep(size,
                                                Lut(ReadTable(settings.Next("FILE of lut")), 1));
                           }};

std::vector<SheetColumn> ShowGrading(Demo& demo) {
  const auto shown = [&](const char* name, int slot, const InPlace& run,
                         const char* remark) -> SheetPicture {
    const Picture result = demo.Examine({name, slot, demo.background, run});
    return {Thumbnail(result), name, Format("slot %d", slot), {remark, ""}};
  };
  const SheetPicture before = {Thumbnail(demo.background), "before", "", {"", ""}};
  return {{"Levels",
           {before, shown("levels", 53, Levels({0.1f, 0.8f, 1, 0, 1}), "0.1 to 0.8 spread"),
            shown("gamma", 53, Levels({0, 1, 2, 0, 1}), "2: brighter between"),
            shown("negative", 53, Levels({0, 1, 1, 1, 0}), "black out 1, white out 0")}},
          {"Colour",
           {shown("saturated", 99, Colour({0, 1, 1.8f, 0, 0, 0}), "1.8"),
            shown("warm", 99, Colour({0, 1.1f, 1, 0, 0.5f, 0}), "temperature 0.5, contrast 1.1"),
            shown("hue", 99, Colour({0, 1, 1, 120, 0, 0}), "turned by 120 degrees"),
            shown("table", 66, Lut(MadeTable(), 1), "9 entries a side, from .cube text")}}};
}

}  // namespace host
