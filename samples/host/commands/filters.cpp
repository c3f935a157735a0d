// Pixelating and convolving: pictavo-host pixelate and convolve, the chain's effect and the demo's
// part.
#include <sstream>

#include "base/calls.h"
#include "base/in_place.h"
#include "demo/demo.h"

namespace host {
namespace {

pictavo::Outcome Pixelate(pictavo::IPictavo6* object, Picture* picture, const i32* rect, u32 side) {
  return CallOn<&pictavo::IPictavo6::PixelateRegion>(object, picture, rect, side);
}

pictavo::Outcome Convolve(pictavo::IPictavo6* object, const Picture& picture, Picture* result,
                          const pictavo::ConvolveParam& param) {
  return CallFrom<&pictavo::IPictavo6::ConvolvePicture>(object, result, picture, &param);
}

int RunPixelate(pictavo::Library& library, const Arguments& arguments) {
  i32 side = 16, rect[] = {0, 0, INT32_MAX, INT32_MAX};
  const Arguments files = TakeFiles(2, "pixelate takes two files, PICTURE OUT", arguments,
                                    {IntegerOption("--block", &side, 1, INT32_MAX),
                                     {"--rect",
                                      [&](Parser& p) {
                                        for (i32& edge : rect)
                                          edge = p.Integer("--rect", INT32_MIN, INT32_MAX);
                                      }},
                                     LevelOption(library)});
  Picture picture = ReadPicture(files[0]);
  Expect(Pixelate(library.get(), &picture, rect, static_cast<u32>(side)),
         "to pixelate the picture");
  return Deliver(files[1], picture,
                 Format(", blocks of %d, level %d", side, library->GetCPULevel()));
}

/// Nine or 25 numbers with spaces or commas between.
void TakeWeights(const std::string& text, pictavo::ConvolveParam* param) {
  std::string spaced = text;
  for (char& c : spaced) c = c == ',' ? ' ' : c;
  std::istringstream in(spaced);
  size_t count = 0;
  for (i32 weight; count < std::size(param->weights) && in >> weight;)
    param->weights[count++] = weight;
  if (!(in >> std::ws).eof() || (count != 9 && count != 25))
    throw UsageFailure("--weights takes 9 or 25 whole numbers in quotes, not \"" + text + '"');
  param->size = count == 9 ? 3 : 5;
}

int RunConvolve(pictavo::Library& library, const Arguments& arguments) {
  pictavo::ConvolveParam param = {3, 0, 0, 0, {-1, -1, -1, -1, 9, -1, -1, -1, -1}};
  const Arguments files =
      TakeFiles(2, "convolve takes two files, PICTURE OUT", arguments,
                {{"--weights", [&](Parser& p) { TakeWeights(Utf8(p.Next("--weights")), &param); }},
                 IntegerOption("--shift", &param.shift, 0, 15),
                 IntegerOption("--bias", &param.bias, -65536, 65536),
                 {"--with-alpha", [&](Parser&) { param.withAlpha = 1; }},
                 LevelOption(library)});
  const Picture picture = ReadPicture(files[0]);
  Picture result(picture.width, picture.height);
  Expect(Convolve(library.get(), picture, &result, param), "weights of -128 to 127 only");
  return Deliver(
      files[1], result,
      Format(", %u x %u weights, level %d", param.size, param.size, library->GetCPULevel()));
}

SheetPicture ShowConvolved(Demo& demo, const char* name, const char* remark,
                           const pictavo::ConvolveParam& param) {
  const Picture result =
      demo.Examine({name, 72, demo.background, [&](pictavo::IPictavo6* object, Picture* dst) {
                      return Convolve(object, demo.background, dst, param);
                    }});
  return {Thumbnail(result), name, "slot 72", {remark, ""}};
}

}  // namespace

const Command kPixelateCommand = {
    L"pixelate",
    "  pictavo-host pixelate PICTURE OUT [options]\n"
    "      Blocks of one colour.\n"
    "      --block N            side of a block in pixels; 16 by default\n"
    "      --rect L T R B       within these edges only\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunPixelate};

const Command kConvolveCommand = {
    L"convolve",
    "  pictavo-host convolve PICTURE OUT [options]\n"
    "      Filters by whole-number weights; sharpens by default.\n"
    "      --weights \"W W ...\"  9 or 25 from -128 to 127, row by row\n"
    "      --shift N            bits that sums are divided by, 0 to 15\n"
    "      --bias N             added afterwards\n"
    "      --with-alpha         filters alpha too\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunConvolve};

const Effect kPixelateEffect = {
    "pixelate", 1, [](Parser& settings, Size size) -> Step {
      const auto side = static_cast<u32>(settings.Integer("BLOCK of pixelate", 1, INT32_MAX));
      return InPlaceStep(size, [=](pictavo::IPictavo6* object, Picture* frame) {
        const i32 rect[] = {0, 0, size.width, size.height};
        return Pixelate(object, frame, rect, side);
      });
    }};

std::vector<SheetColumn> ShowFilters(Demo& demo) {
  const i32 width = demo.background.width, height = demo.background.height;
  const i32 rect[] = {width / 4, height / 4, width * 3 / 4, height * 3 / 4};
  const u32 side = static_cast<u32>(std::max(2, width / 40));
  const Picture blocks = demo.Examine(
      {"pixelated", 69, demo.background, [&](pictavo::IPictavo6* object, Picture* dst) {
         return Pixelate(object, dst, rect, side);
       }});
  return {{"Filters",
           {{Thumbnail(blocks), "pixelated", "slot 69", {Format("blocks of %u", side), ""}},
            ShowConvolved(demo, "sharpened", "9 less the eight around",
                          {3, 0, 0, 0, {-1, -1, -1, -1, 9, -1, -1, -1, -1}}),
            ShowConvolved(demo, "embossed", "about mid grey",
                          {3, 0, 128, 0, {-2, -1, 0, -1, 0, 1, 0, 1, 2}})}}};
}

}  // namespace host
