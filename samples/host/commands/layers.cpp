// Layer modes: pictavo-host layer, and the demo's part.
#include "base/calls.h"
#include "base/chain.h"
#include "base/commands.h"
#include "demo/demo.h"

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
  const bool between = param.fractionX != 0 || param.fractionY != 0;
  const auto lay =
      between ? CallOnto<&pictavo::IPictavo6::BlendLayerSubpixel, const pictavo::BlendParam*>
              : CallOnto<&pictavo::IPictavo6::BlendLayer, const pictavo::BlendParam*>;
  return lay(object, background, layer, &param);
}

u32 TakeMode(Parser& parser, const char* what) {
  return FindNamed(kModes, Utf8(parser.Next(what)), "mode").mode;
}

int RunLayer(pictavo::Library& library, const Arguments& arguments) {
  pictavo::BlendParam param = {0, 255, 0, 0, 0};
  const Arguments files = TakeFiles(
      3, "layer takes three files, BACKGROUND LAYER OUT", arguments,
      {{"--mode", [&](Parser& parser) { param.mode = TakeMode(parser, "the name after --mode"); }},
       {"--opacity",
        [&](Parser& parser) {
          param.opacity = static_cast<u32>(parser.Integer("--opacity", 0, 255));
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
  const std::string mode = std::string("mode ") + kModes[param.mode].name;
  Expect(Lay(library.get(), &background, layer, param), mode + " with these settings");
  return Deliver(files[2], background,
                 Format(", %s at level %d", mode.c_str(), library->GetCPULevel()));
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
      param.mode = TakeMode(settings, "MODE of layer");
      param.opacity = static_cast<u32>(settings.Integer("OPACITY of layer", 0, 255));
      const FrameBeside layer(settings.Next("FILE of layer"), size);
      return {.size = size,
              .inPlace = true,
              .runAt = [=](pictavo::IPictavo6* object, const Moment& moment, Picture* frame,
                           Picture*) { return Lay(object, frame, layer.At(moment), param); },
              .takesSecond = layer.isSecond()};
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
