// The demo's part about alpha blending.
#include "commands/operations.h"
#include "demo/demo.h"
#include "demo/level_check.h"

namespace host {
namespace {

/// What the demo gives an operation: each setting that it takes, at a value that shows; flip and
/// backdrop once each.
BlendSettings DemoSettings(const Operation& operation) {
  BlendSettings settings;
  if ((operation.settings & kRamp) != 0) settings.rampEnd = 0.0f;
  if (operation.slot == 8) settings.flip = true;
  if ((operation.settings & kOpacity) != 0) settings.opacity = 200;
  if (operation.slot == 37) settings.backdrop = 0xFF204A87;
  return settings;
}

SheetPicture Show(Demo& demo, const Operation& operation, const Picture& backgroundPicture,
                  const Picture& layerPicture) {
  const BlendSettings settings = DemoSettings(operation);
  const Picture background = operation.PreparedBackground(demo.object, backgroundPicture);
  const Picture layer = operation.PreparedLayer(demo.object, layerPicture);
  Examined examined = {operation.name, operation.slot, background,
                       [&](pictavo::IPictavo6* object, Picture* dst) {
                         return operation.run(object, dst, layer, settings);
                       }};
  if (operation.levelRule != LevelRule::kSameBytes) {
    examined.expected = [&](i32 level) {
      return ExpectedOver(operation, background, layer, settings, level);
    };
  }
  return {Thumbnail(operation.Finished(demo.Examine(examined))),
          operation.name,
          Format("slot %d", operation.slot),
          {operation.description, SettingsText(operation.settings, settings)}};
}

}  // namespace

std::vector<SheetColumn> ShowBlending(Demo& demo) {
  const Picture& background = demo.background;
  const Picture layer = SoftDisc(demo.layer);
  Picture clearBackground = background;
  const double width = background.width;
  FadeOut(&clearBackground,
          [=](i32 x, i32) { return 1 - SmoothStep(0.25 * width, 0.85 * width, x + 0.5); });

  std::vector<SheetColumn> columns = {
      {"Inputs",
       {{Thumbnail(background), "background", "", {"opaque", ""}},
        {Thumbnail(clearBackground), "background with alpha", "", {"for composite", ""}},
        {Thumbnail(layer), "layer", "", {"a soft-edged disc", ""}}}}};
  for (const Operation& operation : kOperations) {
    if (columns.back().heading != operation.family) columns.push_back({operation.family, {}});
    const bool onClear = operation.premultiplied == Premultiplied::kBoth;
    columns.back().pictures.push_back(
        Show(demo, operation, onClear ? clearBackground : background, layer));
  }
  return columns;
}

}  // namespace host
