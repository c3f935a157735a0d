#include "keying/screen_key.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/calls.h"
#include "base/text.h"
#include "keying/chroma_key.h"

namespace host {
namespace {

using pictavo::ChromaKey;
using pictavo::IPictavo6;
using pictavo::LevelsParam;
using pictavo::MatteParam;

constexpr u32 kColours = 0b0111, kAlpha = 0b1000;  // channels of AdjustLevels
constexpr u32 kNormal = 0, kAdd = 8;               // modes of BlendLayer

// The operations, one call each.

Picture Keyed(IPictavo6* object, const Picture& picture, const ChromaKey& key) {
  Picture keyed(picture.width, picture.height);
  Expect(Key(object, &keyed, picture, {key}), "to key");
  return keyed;
}

void ApplyMatte(IPictavo6* object, Picture* picture, const Picture& matte, u32 mode) {
  Expect(CallOnto<&IPictavo6::ApplyMatte>(object, picture, matte, mode), "to apply a matte");
}

void AdjustMatte(IPictavo6* object, Picture* picture, const MatteParam& param) {
  pictavo::ImageDesc image = Describe(*picture);
  Expect(pictavo::Call<&IPictavo6::AdjustMatte>(object, &image, &param), "to adjust a matte");
}

void Levels(IPictavo6* object, Picture* picture, u32 channels, const LevelsParam& param) {
  Expect(CallOn<&IPictavo6::AdjustLevels>(object, picture, channels, &param), "to adjust levels");
}

void Invert(IPictavo6* object, Picture* picture) {
  Levels(object, picture, kColours, {0, 1, 1, 1, 0});
}

void Blur(IPictavo6* object, Picture* picture, f32 sigma) {
  Expect(CallOn<&IPictavo6::GaussianBlur>(object, picture, sigma, sigma,
                                          pictavo::PICTAVO_EDGES_REPLICATE),
         "to blur");
}

/// A picture of one colour, as large as another.
Picture Filled(IPictavo6* object, const Picture& size, const ChromaKey& colour) {
  Picture filled(size.width, size.height);
  Expect(CallOn<&IPictavo6::FillSolidColor>(object, &filled, colour.keyB, colour.keyG, colour.keyR,
                                            u8{255}),
         "to fill");
  return filled;
}

/// Lays a layer over an opaque picture.
void Layer(IPictavo6* object, Picture* picture, const Picture& layer, u32 mode) {
  const pictavo::BlendParam param = {mode, 255, 0, 0, 0};
  Expect(CallOnto<&IPictavo6::BlendLayer>(object, picture, layer, &param), "to lay pictures");
}

/// The picture with another alpha: one of its channels, or 5 for an opaque one.
Picture WithAlpha(IPictavo6* object, Picture picture, u32 channel) {
  u8* const pixels = picture.pixels.data();
  Expect(pictavo::Call<&IPictavo6::ShuffleChannels>(
             object, pixels, pixels, i64{picture.width} * picture.height, 0, 1, 2, channel),
         "to shuffle channels");
  return picture;
}

f32 Measured(IPictavo6* object, const Picture& picture, u32 channel, u32 measure) {
  f32 number = 0;
  Expect(pictavo::Call<&IPictavo6::MeasurePicture>(object, picture.pixels.data(), picture.width,
                                                   picture.height, picture.pitch(),
                                                   static_cast<i32>(channel), measure, &number),
         "to measure");
  return number;
}

u8 Mean(IPictavo6* object, const Picture& picture, u32 channel) {
  return static_cast<u8>(Measured(object, picture, channel, pictavo::PICTAVO_MEASURE_MEAN) + 0.5f);
}

// The steps.

/// Green for a green screen, blue for a blue one.
u32 MainChannel(const ChromaKey& screen) { return screen.keyG >= screen.keyB ? 1 : 0; }

/// How bright the plate is in its main channel, as an alpha that is 255 where it is brightest.
Picture Light(IPictavo6* object, const Picture& plate, u32 channel) {
  const f32 brightest = Measured(object, plate, channel, pictavo::PICTAVO_MEASURE_MEAN) +
                        2 * Measured(object, plate, channel, pictavo::PICTAVO_MEASURE_DEVIATION);
  Picture light = WithAlpha(object, plate, channel);
  Levels(object, &light, kAlpha, {0, std::clamp(brightest / 255, 0.1f, 1.0f), 1, 0, 1});
  return light;
}

/// A picture as if the screen were everywhere lit as it is where it is brightest.
Picture Evened(IPictavo6* object, const Picture& picture, const Picture& light) {
  Picture even = picture;
  ApplyMatte(object, &even, light, pictavo::PICTAVO_MATTE_ALPHA);
  object->UnpremultiplyPitched(even.pixels.data(), even.width, even.height, even.pitch());
  return WithAlpha(object, std::move(even), 5);
}

/// The key on the evenly lit shot. Its alpha is a square, so a gamma of 2 makes it even.
Picture Matte(IPictavo6* object, const Picture& shot, const Picture& plate, const ScreenKey& key) {
  const Picture light = Light(object, plate, MainChannel(key.screen));
  const Picture screen = Evened(object, plate, light);
  Picture matte = Keyed(object, Evened(object, shot, light),
                        {Mean(object, screen, 2), Mean(object, screen, 1), Mean(object, screen, 0),
                         0, key.angle, key.denoise});
  Levels(object, &matte, kAlpha, {key.black * key.black, key.white * key.white, 2, 0, 1});
  return matte;
}

/// Takes light off an opaque picture, the light's colours by its alpha.
void Subtract(IPictavo6* object, Picture* picture, const Picture& light) {
  Invert(object, picture);
  Layer(object, picture, light, kAdd);
  Invert(object, picture);
}

/// What is left of the screen's light: the main channel becomes at most a mean of the other two, in
/// which the larger has the weight `larger`.
void LimitSpill(IPictavo6* object, Picture* picture, u32 channel, f32 larger) {
  constexpr u32 kSize = 33;
  std::vector<pictavo::u16> entries;
  for (u32 i = 0; i < kSize * kSize * kSize; ++i) {
    f32 c[] = {static_cast<f32>(i / (kSize * kSize)), static_cast<f32>(i / kSize % kSize),
               static_cast<f32>(i % kSize), 0};
    const f32 a = c[2], b = c[1 - channel];
    c[channel] = std::min(c[channel], std::max(a, b) * larger + std::min(a, b) * (1 - larger));
    for (const f32 colour : c)
      entries.push_back(static_cast<pictavo::u16>(colour * 65535 / (kSize - 1) + 0.5f));
  }
  const pictavo::ColorLutParam param = {kSize, 256, entries.data()};
  Expect(CallFrom<&IPictavo6::ApplyColorLut>(object, picture, *picture, &param),
         "to limit the spill");
}

/// A picture of the screen alone: all that is not surely screen is cut out, and the rest blurred.
Picture ScreenAround(IPictavo6* object, const Picture& shot, Picture others, const ScreenKey& key) {
  AdjustMatte(object, &others, {key.sure / 2, key.sure, -key.margin, 0});
  Picture fine = shot;
  ApplyMatte(object, &fine, others, pictavo::PICTAVO_MATTE_INVERTED_ALPHA);
  Picture coarse = fine;
  Blur(object, &fine, key.blur);
  Blur(object, &coarse, 6 * key.blur);  // for the middle of what is large
  Levels(object, &coarse, kAlpha, {0, 0.05f, 1, 0, 1});
  Picture screen = Filled(object, shot, key.screen);  // where there is none anywhere near
  Layer(object, &screen, coarse, kNormal);
  Layer(object, &screen, fine, kNormal);
  return screen;
}

}  // namespace

Picture SimpleKey(IPictavo6* object, const Picture& shot, const ChromaKey& key,
                  const MatteParam& matte) {
  Picture front = Keyed(object, shot, key);
  AdjustMatte(object, &front, matte);
  return front;
}

Picture CleanPlate(IPictavo6* object, const Picture& shot, const ScreenKey& key) {
  const Picture rough = ScreenAround(object, shot, Keyed(object, shot, key.screen), key);
  return ScreenAround(object, shot, Matte(object, shot, rough, key), key);
}

Picture KeyScreen(IPictavo6* object, const Picture& shot, const Picture& plate,
                  const ScreenKey& key) {
  constexpr u32 kInverted = pictavo::PICTAVO_MATTE_INVERTED_ALPHA;
  const Picture matte = Matte(object, shot, plate, key);
  Picture light = plate;
  ApplyMatte(object, &light, matte, kInverted);
  Picture front = shot;
  Subtract(object, &front, light);
  LimitSpill(object, &front, MainChannel(key.screen), key.spill);

  Picture core = matte;
  AdjustMatte(object, &core, key.core);
  ApplyMatte(object, &light, core, kInverted);
  ApplyMatte(object, &front, light, kInverted);
  return front;
}

}  // namespace host
