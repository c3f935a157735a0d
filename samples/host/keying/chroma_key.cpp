// The chroma key: pictavo-host key, and the demo's part.
#include "keying/chroma_key.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "base/calls.h"
#include "base/chain.h"
#include "base/commands.h"
#include "demo/demo.h"

namespace host {

pictavo::Outcome Key(pictavo::IPictavo6* object, Picture* dst, const Picture& source,
                     const Keys& keys) {
  constexpr i32 kBgra = 1;
  return CallFrom<&pictavo::IPictavo6::ApplyChromaKey>(object, dst, source, keys.data(),
                                                       static_cast<i32>(keys.size()), kBgra);
}

pictavo::ChromaKey KeyOf(u32 colour, i32 angle, i32 denoise) {
  return {static_cast<u8>(colour >> 16),
          static_cast<u8>(colour >> 8),
          static_cast<u8>(colour),
          0,
          angle,
          denoise};
}

pictavo::ChromaKey ParseKey(Parser* parser) {
  const u32 colour = parser->Hex("RRGGBB of the key", 6);
  constexpr i64 kFar = std::numeric_limits<i32>::max();
  const i32 angle = parser->Integer("ANGLE of the key", -kFar, kFar);
  return KeyOf(colour, angle, parser->Integer("DENOISE of the key", -kFar, kFar));
}

namespace {

/// A keyed picture in front of a background of its size.
Picture InFront(pictavo::IPictavo6* object, const Picture& keyed, Picture background) {
  object->BlendOverPitched(background.pixels.data(), keyed.pixels.data(), keyed.width, keyed.height,
                           keyed.pitch());
  return background;
}

int RunKey(pictavo::Library& library, const Arguments& arguments) {
  std::optional<std::wstring> background;
  Keys keys;
  const Arguments files =
      TakeFiles(2, "key takes two files, PICTURE OUT", arguments,
                {{"--key", [&](Parser& parser) { keys.push_back(ParseKey(&parser)); }},
                 FileOption("--background", &background),
                 LevelOption(library)});
  if (keys.empty()) throw UsageFailure("key takes at least one --key");
  const Picture picture = ReadPicture(files[0]);
  Picture keyed(picture.width, picture.height);
  Expect(Key(library.get(), &keyed, picture, keys), "to key");
  if (background) {
    keyed = InFront(library.get(), keyed,
                    OnWhite(Covering(ReadPicture(*background), keyed.width, keyed.height)));
  }
  return Deliver(files[1], keyed,
                 Format(", %zu %s, level %d", keys.size(), keys.size() == 1 ? "key" : "keys",
                        library->GetCPULevel()));
}

/// The screen's green, lit from the upper left.
struct Screen {
  static constexpr u8 kRed = 38, kGreen = 168, kBlue = 62;

  i32 width, height;

  /// Blue, green or red at a place.
  double At(i32 x, i32 y, int channel) const {
    constexpr double kColour[] = {kBlue, kGreen, kRed};
    const double light = 1.1 - 0.14 * x / width - 0.08 * y / height;
    const double grain = ((x * 7919 + y * 104729 + channel * 31) % 17 - 8) * 0.4;
    return kColour[channel] * light + grain;
  }
};

}  // namespace

Picture OnGreenScreen(Picture picture) {
  const Screen screen = {picture.width, picture.height};
  const double size = 0.315 * std::min(picture.width, picture.height);
  for (i32 y = 0; y < picture.height; ++y) {
    for (i32 x = 0; x < picture.width; ++x) {
      const double right = x + 0.5 - picture.width / 2.0, down = y + 0.5 - picture.height / 2.0;
      const double petals = 1 + 0.03 * std::cos(16 * std::atan2(down, right));
      const double inside = 1 - std::hypot(right, down) / (size * petals);  // 0 at the edge
      const double cover = SmoothStep(-0.02, 0.05, inside);
      const double spill = 0.25 * (1 - SmoothStep(0, 0.35, inside));
      u8* pixel = picture.At(x, y);
      for (int c = 0; c < 3; ++c) {
        const double green = screen.At(x, y, c);
        const double lit = pixel[c] * (1 - spill) + green * spill;
        pixel[c] = static_cast<u8>(std::clamp(lit * cover + green * (1 - cover), 0.0, 255.0));
      }
    }
  }
  return picture;
}

Keys KeysOfScreen() { return {{Screen::kRed, Screen::kGreen, Screen::kBlue, 0, 82, 25}}; }

const Command kKeyCommand = {
    L"key",
    "  pictavo-host key PICTURE OUT --key RRGGBB ANGLE DENOISE [options]\n"
    "      Makes a colour clear and takes its spill off. ANGLE is how far a hue may be from the\n"
    "      key's, in degrees; DENOISE is how far a colour may be from it to be all clear.\n"
    "      --key ...            once more for each further colour\n"
    "      --background FILE    lays the result over this picture\n"
    "      --level N            instruction-set level, 0 to the processor's\n",
    RunKey};

const Effect kKeyEffect = {"key", 3, [](Parser& settings, Size size) -> Step {
                             return {
                                 size, false,
                                 [keys = Keys{ParseKey(&settings)}](
                                     pictavo::IPictavo6* object, Picture* frame, Picture* result) {
                                   return Key(object, result, *frame, keys);
                                 }};
                           }};

std::vector<SheetColumn> ShowChromaKey(Demo& demo) {
  const Picture source = OnGreenScreen(demo.layer);
  const Keys keys = KeysOfScreen();
  const Picture keyed = demo.Examine(
      {"chroma key", 86, Picture(source.width, source.height),
       [&](pictavo::IPictavo6* object, Picture* dst) { return Key(object, dst, source, keys); }});
  return {{"Chroma key",
           {{Thumbnail(source), "green screen", "", {"soft edges, green light on the rim", ""}},
            {Thumbnail(keyed),
             "keyed",
             "slot 86",
             {Format("key %02X%02X%02X, angle %d, denoise %d", keys[0].keyR, keys[0].keyG,
                     keys[0].keyB, keys[0].angle, keys[0].denoise),
              ""}},
            {Thumbnail(InFront(demo.object, keyed, demo.background)),
             "new background",
             "",
             {"laid over it with slot 4", ""}}}}};
}

}  // namespace host
