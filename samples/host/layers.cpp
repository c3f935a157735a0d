// Layer modes: pictavo-host layer, and the demo's part.
#include <cstdio>

#include "chain.h"
#include "commands.h"
#include "demo.h"

namespace host {
namespace {

struct Mode {
  u32 mode;
  const char* name;
  const char* description;
};
constexpr Mode kModes[] = {
    {0, "normal", "the layer"},
    {1, "darken", "the darker of both, by channel"},
    {2, "multiply", "the product, as of two slides"},
    {3, "lighten", "the lighter of both, by channel"},
    {4, "screen", "the product of the negatives"},
    {5, "overlay", "multiplies darks, screens lights"},
    {6, "difference", "the distance, by channel"},
    {7, "hue", "the layer's hue"},
    {8, "add", "the sum"},
    {9, "saturation", "the layer's saturation"},
    {10, "luminosity", "the layer's luma"},
    {11, "colour", "the layer's hue and saturation"},
};

pictavo::Outcome Lay(pictavo::IPictavo6* object, Picture* background, const Picture& layer,
                     const pictavo::BlendParam& param) {
  pictavo::ImageDesc dst = Describe(*background);
  const pictavo::ImageDesc src = Describe(layer);
  const bool between = param.fractionX != 0 || param.fractionY != 0;
  return between
             ? pictavo::Call<&pictavo::IPictavo6::BlendLayerSubpixel>(object, &dst, &src, &param)
             : pictavo::Call<&pictavo::IPictavo6::BlendLayer>(object, &dst, &src, &param);
}

u32 ModeNamed(const std::string& name) {
  for (const Mode& mode : kModes) {
    if (name == mode.name) return mode.mode;
  }
  throw UsageFailure("there is no mode \"" + name + '"');
}

int RunLayer(pictavo::Library& library, const Arguments& arguments) {
  pictavo::BlendParam param = {0, 255, 0, 0, 0};
  std::string mode = "normal";
  const Arguments files = TakeFiles(3, "layer takes three files, BACKGROUND LAYER OUT", arguments,
                                    {{"--mode",
                                      [&](Parser& parser) {
                                        mode = Utf8(parser.Next("the name after --mode"));
                                        param.mode = ModeNamed(mode);
                                      }},
                                     {"--opacity",
                                      [&](Parser& parser) {
                                        param.opacity =
                                            static_cast<u32>(parser.Integer("--opacity", 0, 255));
                                      }},
                                     {"--over-alpha", [&](Parser&) { param.alphaMode = 2; }},
                                     {"--shift",
                                      [&](Parser& parser) {
                                        param.fractionX = parser.Real("X of --shift");
                                        param.fractionY = parser.Real("Y of --shift");
                                      }},
                                     LevelOption(library)});
  Picture background = ReadPicture(files[0]);
  const Picture layer = ReadPicture(files[1]);
  const pictavo::Outcome outcome = Lay(library.get(), &background, layer, param);
  if (!outcome) throw Refusal("mode " + mode + " with these settings", outcome.result);
  WritePicture(files[2], background);
  std::printf("%s: %d x %d, mode %s at level %d\n", Utf8(files[2]).c_str(), background.width,
              background.height, mode.c_str(), library->GetCPULevel());
  return 0;
}

}  // namespace

const Command kLayerCommand = {
    L"layer",
    "  pictavo-host layer BACKGROUND LAYER OUT [options]\n"
    "      Mixes a layer into a background from its top left corner.\n"
    "      --mode NAME          normal, darken, multiply, lighten, screen, overlay, difference,\n"
    "                           hue, add, saturation, luminosity or colour\n"
    "      --opacity N          opacity of the layer, 0 to 255\n"
    "      --over-alpha         minds the background's alpha\n"
    "      --shift X Y          samples the layer so far right and down, 0 to 1 (add cannot)\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunLayer};

const Effect kLayerEffect = {
    "layer", 3, [](Parser& settings, Size size) -> Step {
      pictavo::BlendParam param = {};
      param.mode = ModeNamed(Utf8(settings.Next("MODE of layer")));
      param.opacity = static_cast<u32>(settings.Integer("OPACITY of layer", 0, 255));
      const FrameBeside layer(settings.Next("FILE of layer"), size);
      return {size,
              true,
              {},
              {},
              [=](pictavo::IPictavo6* object, const Moment& moment, Picture* frame, Picture*) {
                return Lay(object, frame, layer.At(moment), param);
              },
              layer.isSecond()};
    }};

std::vector<SheetColumn> ShowLayers(Demo& demo) {
  const Picture layer = SoftDisc(demo.layer);
  std::vector<SheetColumn> columns;
  for (const Mode& mode : kModes) {
    if (mode.mode % 4 == 0) columns.push_back({columns.empty() ? "Layer modes" : "", {}});
    const Picture mixed = demo.Examine({std::string("layer, ") + mode.name, 73, demo.background,
                                        [&](pictavo::IPictavo6* object, Picture* dst) {
                                          return Lay(object, dst, layer, {mode.mode, 255, 0, 0, 0});
                                        }});
    columns.back().pictures.push_back({Thumbnail(mixed),
                                       mode.name,
                                       Format("slot 73, mode %u", mode.mode),
                                       {mode.description, ""}});
  }
  return columns;
}

}  // namespace host
