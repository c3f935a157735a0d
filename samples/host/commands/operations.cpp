#include "commands/operations.h"

#include <utility>

#include "base/command_line.h"
#include "base/text.h"

namespace host {
namespace {

using pictavo::IPictavo;
using pictavo::IPictavo6;
using pictavo::Outcome;

using PackedMethod = u32 (IPictavo::*)(u8*, const u8*, i32, i32) noexcept;
using PitchedMethod = u32 (IPictavo::*)(u8*, const u8*, i32, i32, i32) noexcept;
using RampMethod = u32 (IPictavo::*)(u8*, const u8*, i32, i32, i32, i32, i32, f32, f32) noexcept;
using RampOpacityMethod = u32 (IPictavo::*)(u8*, const u8*, i32, i32, i32, i32, u8, u32, i32, f32,
                                            f32) noexcept;

template <PackedMethod method>
Outcome RunPacked(IPictavo6* object, Picture* background, const Picture& layer,
                  const BlendSettings&) {
  return pictavo::Call<method>(object, background->pixels.data(), layer.pixels.data(), layer.width,
                               layer.height);
}

template <PitchedMethod method>
Outcome RunPitched(IPictavo6* object, Picture* background, const Picture& layer,
                   const BlendSettings&) {
  return pictavo::Call<method>(object, background->pixels.data(), layer.pixels.data(), layer.width,
                               layer.height, layer.pitch());
}

template <RampMethod method>
Outcome RunRamp(IPictavo6* object, Picture* background, const Picture& layer,
                const BlendSettings& settings) {
  return pictavo::Call<method>(object, background->pixels.data(), layer.pixels.data(), layer.width,
                               layer.height, background->pitch(), layer.pitch(), settings.flip,
                               settings.rampStart, settings.rampEnd);
}

Outcome RunOpacity(IPictavo6* object, Picture* background, const Picture& layer,
                   const BlendSettings& settings) {
  return pictavo::Call<&pictavo::IPictavo6::BlendOverWithOpacity>(
      object, background->pixels.data(), layer.pixels.data(), layer.width, layer.height,
      background->pitch(), layer.pitch(), settings.opacity, settings.backdrop);
}

template <RampOpacityMethod method>
Outcome RunRampOpacity(IPictavo6* object, Picture* background, const Picture& layer,
                       const BlendSettings& settings) {
  return pictavo::Call<method>(object, background->pixels.data(), layer.pixels.data(), layer.width,
                               layer.height, background->pitch(), layer.pitch(), settings.opacity,
                               settings.backdrop, settings.flip, settings.rampStart,
                               settings.rampEnd);
}

constexpr unsigned kFade = kRamp | kFlip;
constexpr unsigned kTint = kOpacity | kBackdrop;

}  // namespace

// clang-format off
const std::array<Operation, 12> kOperations = {{
    // family, name, slot, settings, premultiplied pictures, level rule, description, run
    {"Over", "over-ramp", 2, kFade, Premultiplied::kNone, LevelRule::kPairsInRows,
     "straight alpha, fading", RunRamp<&IPictavo::BlendOverWithOpacityRamp>},
    {"Over", "over-packed", 3, kNone, Premultiplied::kNone, LevelRule::kPairsThroughout,
     "mixed pixels take the layer's alpha", RunPacked<&IPictavo::BlendOverPacked>},
    {"Over", "over", 4, kNone, Premultiplied::kNone, LevelRule::kPairsInRows,
     "straight alpha", RunPitched<&IPictavo::BlendOverPitched>},
    {"Premultiplied", "premultiplied-ramp", 5, kFade, Premultiplied::kLayer, LevelRule::kSameBytes,
     "premultiplied layer, fading", RunRamp<&IPictavo::BlendPremultipliedWithOpacityRamp>},
    {"Premultiplied", "premultiplied-packed", 6, kNone, Premultiplied::kLayer,
     LevelRule::kSameBytes, "premultiplied layer, packed rows",
     RunPacked<&IPictavo::BlendPremultipliedPacked>},
    {"Premultiplied", "premultiplied", 7, kNone, Premultiplied::kLayer, LevelRule::kSameBytes,
     "premultiplied layer", RunPitched<&IPictavo::BlendPremultipliedPitched>},
    {"Composite", "composite-ramp", 8, kFade, Premultiplied::kBoth, LevelRule::kSameBytes,
     "background with alpha, fading", RunRamp<&IPictavo::CompositePremultipliedWithOpacityRamp>},
    {"Composite", "composite", 9, kNone, Premultiplied::kBoth, LevelRule::kSameBytes,
     "background with alpha", RunPitched<&IPictavo::CompositePremultipliedPitched>},
    {"Composite", "composite-packed", 10, kNone, Premultiplied::kBoth, LevelRule::kSameBytes,
     "background with alpha, packed rows", RunPacked<&IPictavo::CompositePremultipliedPacked>},
    {"Opacity", "opacity", 11, kTint, Premultiplied::kNone, LevelRule::kSameBytes,
     "straight alpha at one opacity", RunOpacity},
    {"Opacity", "opacity-ramp", 36, kTint | kFade, Premultiplied::kNone, LevelRule::kSameBytes,
     "fading, mixed pixels take the weight as alpha",
     RunRampOpacity<&IPictavo::BlendOverWithOpacityRampAndAlpha>},
    {"Opacity", "opacity-ramp-keep", 37, kTint | kFade, Premultiplied::kNone, LevelRule::kSameBytes,
     "fading, mixed pixels keep their alpha",
     RunRampOpacity<&IPictavo::BlendOverWithOpacityRampKeepAlpha>},
}};
// clang-format on

Picture Operation::PreparedLayer(IPictavo6* object, Picture layer) const {
  return premultiplied == Premultiplied::kNone ? layer : Premultiply(object, std::move(layer));
}

Picture Operation::PreparedBackground(IPictavo6* object, Picture background) const {
  return premultiplied == Premultiplied::kBoth ? Premultiply(object, std::move(background))
                                               : background;
}

Picture Operation::Finished(Picture result) const {
  return premultiplied == Premultiplied::kBoth ? Unpremultiply(std::move(result)) : result;
}

const Operation& FindOperation(const std::string& name) {
  return FindNamed(kOperations, name, "operation");
}

std::string SettingsText(unsigned taken, const BlendSettings& settings) {
  std::string text;
  const auto add = [&text](const std::string& part) {
    if (!text.empty()) text += ", ";
    text += part;
  };
  if ((taken & kOpacity) != 0) add(Format("opacity %d", settings.opacity));
  if ((taken & kRamp) != 0) {
    add(Format("ramp %g to %g", double{settings.rampStart}, double{settings.rampEnd}));
  }
  if (settings.flip) add("flipped");
  if (settings.backdrop >> 24 != 0) add(Format("backdrop %08X", settings.backdrop));
  return text;
}

const char* LevelName(i32 level) {
  if (level >= pictavo::PICTAVO_LEVEL_AVX2) return "256-bit integer code (AVX2)";
  if (level >= pictavo::PICTAVO_LEVEL_SSE4_1) return "128-bit integer code (SSE4.1)";
  if (level >= pictavo::PICTAVO_LEVEL_SSSE3) return "128-bit integer code (SSSE3)";
  if (level >= pictavo::PICTAVO_LEVEL_SSE2) return "128-bit integer code (SSE2)";
  return "portable code";
}

}  // namespace host
