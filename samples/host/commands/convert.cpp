// Conversions, borders and drawing: pictavo-host convert and border, and the demo's part.
#include <cstring>

#include "base/calls.h"
#include "base/in_place.h"
#include "commands/histogram.h"
#include "demo/demo.h"

namespace host {
namespace {

using pictavo::IPictavo6;
using pictavo::Outcome;
using pictavo::PICTAVO_S_OK;

struct Conversion {
  const char* name;
  int slot;
  const char* description;
  /// Converts src into dst, which holds the same pixels before.
  Outcome (*convert)(IPictavo6* object, Picture* dst, const Picture& src);
};

using ConvertPictureFn = decltype(&IPictavo6::ConvertPictureFromRGB);

template <ConvertPictureFn method, u32 model, u32 matrix, u32 range>
Outcome ConvertSpace(IPictavo6* object, Picture* d, const Picture& s) {
  return pictavo::Call<method>(object, s.pixels.data(), s.width, s.height, s.pitch(),
                               d->pixels.data(), d->pitch(), model, matrix, range);
}

template <ConvertPictureFn method>
constexpr auto ConvertYuv709 =
    ConvertSpace<method, pictavo::PICTAVO_COLOR_YUV, pictavo::PICTAVO_MATRIX_BT709,
                 pictavo::PICTAVO_RANGE_LIMITED>;
template <ConvertPictureFn method>
constexpr auto ConvertHsv =
    ConvertSpace<method, pictavo::PICTAVO_COLOR_HSV, 0, pictavo::PICTAVO_RANGE_FULL>;
template <ConvertPictureFn method>
constexpr auto ConvertHsl =
    ConvertSpace<method, pictavo::PICTAVO_COLOR_HSL, 0, pictavo::PICTAVO_RANGE_FULL>;

const Conversion kConversions[] = {
    {"premultiplied", 18, "colours times alpha",
     [](IPictavo6* object, Picture* d, const Picture&) {
       return CallOn<&IPictavo6::PremultiplyPitched>(object, d);
     }},
    {"straight", 16, "colours divided by alpha",
     [](IPictavo6* object, Picture* d, const Picture&) {
       return CallOn<&IPictavo6::UnpremultiplyPitched>(object, d);
     }},
    {"yuva", 20, "V as blue, U as green, Y as red",
     [](IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ConvertBGRAToYUVA>(
           object, s.pixels.data(), static_cast<u32>(s.width), s.height, s.pitch(),
           d->pixels.data(), d->pitch());
     }},
    {"grey", 46, "the mean of the colours",
     [](IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ConvertBGRAToGray>(
           object, s.pixels.data(), s.width, s.height, s.pitch(),
           reinterpret_cast<u32*>(d->pixels.data()), d->pitch());
     }},
    {"yuv709", 88, "BT.709: Y as red, U as green",
     ConvertYuv709<&IPictavo6::ConvertPictureFromRGB>},
    {"hsv", 88, "hue as red, S as green, V as blue", ConvertHsv<&IPictavo6::ConvertPictureFromRGB>},
    {"hsl", 88, "hue as red, S as green, L as blue", ConvertHsl<&IPictavo6::ConvertPictureFromRGB>},
    {"from-yuv709", 89, "back from yuv709", ConvertYuv709<&IPictavo6::ConvertPictureToRGB>},
    {"from-hsv", 89, "back from hsv", ConvertHsv<&IPictavo6::ConvertPictureToRGB>},
    {"from-hsl", 89, "back from hsl", ConvertHsl<&IPictavo6::ConvertPictureToRGB>},
};

const Conversion& FindConversion(const std::string& name) {
  return FindNamed(kConversions, name, "conversion");
}

int RunConvert(pictavo::Library& library, const Arguments& arguments) {
  const Conversion* conversion = nullptr;
  const Arguments files =
      TakeFiles(2, "convert takes two files, PICTURE OUT", arguments,
                {{"--to",
                  [&](Parser& parser) {
                    conversion = &FindConversion(Utf8(parser.Next("the name after --to")));
                  }},
                 LevelOption(library)});
  if (conversion == nullptr) throw UsageFailure("convert needs --to");
  const Picture picture = ReadPicture(files[0]);
  Picture converted = picture;
  Expect(conversion->convert(library.get(), &converted, picture), "to convert the picture");
  return Deliver(files[1], converted,
                 Format(", %s (slot %d) at level %d", conversion->name, conversion->slot,
                        library->GetCPULevel()));
}

// ---------------------------------------------------------------------------------------------
// Borders.

/// Extends what WithRoom put into the middle.
Outcome ExtendBorder(IPictavo6* object, Picture* room, i32 border, bool transparent) {
  const pictavo::ImageDesc image = DescribeInside(*room, border);
  const u32 width = static_cast<u32>(border);
  return transparent ? pictavo::Call<&IPictavo6::ExtendBoundaryTransparent>(object, &image, width)
                     : pictavo::Call<&IPictavo6::ExtendBoundary>(object, &image, width);
}

int RunBorder(pictavo::Library& library, const Arguments& arguments) {
  constexpr i32 kWidest = 1 << 16;
  i32 border = -1;
  bool transparent = false;
  const Arguments files = TakeFiles(2, "border takes two files, PICTURE OUT", arguments,
                                    {IntegerOption("--width", &border, 0, kWidest),
                                     {"--transparent", [&](Parser&) { transparent = true; }}});
  if (border < 0) throw UsageFailure("border needs --width");
  const Picture picture = ReadPicture(files[0]);
  Picture extended = WithRoom(picture, border);
  Expect(ExtendBorder(library.get(), &extended, border, transparent), "to extend the picture");
  return Deliver(files[1], extended, Format(" from %d x %d", picture.width, picture.height));
}

// ---------------------------------------------------------------------------------------------
// The demo's part.

SheetPicture ShowConversion(Demo& demo, const char* name, const Picture& picture,
                            const char* remark) {
  const Conversion& conversion = FindConversion(name);
  const Picture converted = demo.Examine(
      {std::string("to ") + conversion.name, conversion.slot, picture,
       [&](IPictavo6* object, Picture* dst) { return conversion.convert(object, dst, picture); }});
  return {Thumbnail(converted),
          conversion.name,
          Format("slot %d", conversion.slot),
          {conversion.description, remark}};
}

SheetPicture ShowBorder(Demo& demo, bool transparent) {
  const i32 border = demo.background.width / 8;
  const int slot = transparent ? 107 : 71;
  const char* name = transparent ? "clear border" : "border";
  const Picture extended = demo.Examine(
      {name, slot, WithRoom(demo.background, border), [=](IPictavo6* object, Picture* dst) {
         return ExtendBorder(object, dst, border, transparent);
       }});
  return {Thumbnail(extended),
          name,
          Format("slot %d", slot),
          {Format("%d pixels on every side", border),
           transparent ? "the edge's colours, alpha 0" : "the edge's pixels"}};
}

SheetPicture ShowHistogram(Demo& demo, const char* name, const Picture& picture) {
  demo.Examine(
      {"histogram, one channel", 43, picture, [](IPictavo6* object, Picture* dst) {
         Bins bins;
         const u32 result = object->ComputeHistogram(
             dst->pixels.data(), static_cast<u32>(dst->width), static_cast<u32>(dst->height),
             static_cast<u32>(dst->pitch()), bins.data(), 256, 2);
         std::memcpy(dst->pixels.data(), bins.data(), std::min(sizeof bins, dst->pixels.size()));
         return Outcome{result, result == PICTAVO_S_OK};
       }});
  const Histogram histogram(demo.object, picture);
  return {Plot(histogram, 360, 240),
          name,
          "slots 43, 44, 82",
          {"blue, green, red; their mean in white",
           Format("mean brightness %.1f", static_cast<double>(histogram.meanBrightness))}};
}

/// A colour of the library's own making, 0xAARRGGBB.
u32 Hsl(IPictavo6* object, i32 hue, int lightness) {
  u8 red = 0, green = 0, blue = 0;
  object->ConvertHSLToRGB(hue, 255, static_cast<u8>(lightness), &red, &green, &blue);
  return 0xFF000000 | static_cast<u32>(red << 16 | green << 8 | blue);
}

SheetPicture ShowColours(Demo& demo) {
  Picture colours =
      demo.Examine({"HSL to RGB", 95, Picture(360, 240), [](IPictavo6* object, Picture* dst) {
                      for (i32 y = 0; y < dst->height; ++y) {
                        for (i32 x = 0; x < dst->width; ++x) {
                          const u32 colour = Hsl(object, x, 255 - 255 * y / (dst->height - 1));
                          std::memcpy(dst->At(x, y), &colour, sizeof colour);
                        }
                      }
                      return Outcome{PICTAVO_S_OK, true};
                    }});
  return {std::move(colours),
          "HSL to RGB",
          "slot 95",
          {"hue across, lightness down", "full saturation"}};
}

SheetPicture ShowDrawing(Demo& demo) {
  Picture drawn = demo.Examine(
      {"outlines on a fill", 48, Picture(360, 240), [](IPictavo6* object, Picture* d) {
         u32 result = object->FillSolidColor(d->pixels.data(), d->width, d->height, d->pitch(),
                                             0x30, 0x20, 0x18, 0xFF);
         for (i32 i = 0; 5 * i + 5 < d->height / 2; ++i) {
           const i32 inset = 5 * i + 4;
           const i32 rect[] = {inset, inset, d->width - 1 - inset, d->height - 1 - inset};
           result |= object->DrawRectOutline(reinterpret_cast<u32*>(d->pixels.data()), d->width,
                                             d->height, static_cast<u32>(d->pitch()), rect,
                                             Hsl(object, 15 * i, 150));
         }
         return Outcome{result, result == PICTAVO_S_OK};
       }});
  return {std::move(drawn), "outlines on a fill", "slots 48, 77", {"in colours of slot 95", ""}};
}

}  // namespace

const Command kConvertCommand = {L"convert",
                                 "  pictavo-host convert PICTURE OUT --to NAME [--level N]\n"
                                 "      Converts pixels. The conversions:\n"
                                 "      premultiplied        colours times alpha\n"
                                 "      straight             colours divided by alpha\n"
                                 "      yuva                 V as blue, U as green, Y as red\n"
                                 "      grey                 the mean of the colours\n"
                                 "      yuv709, hsv, hsl     their numbers as red, green, blue\n"
                                 "      from-yuv709, from-hsv, from-hsl    and back\n",
                                 RunConvert};

const Command kBorderCommand = {
    L"border",
    "  pictavo-host border PICTURE OUT --width N [--transparent]\n"
    "      Extends the edges by N pixels on every side.\n"
    "      --transparent        keeps the border clear; only its colours are the edges'\n",
    RunBorder};

const Effect kBorderEffect = {"border", 1, [](Parser& settings, Size size) -> Step {
                                const i32 border = settings.Integer("N of border", 0, 1 << 16);
                                const i64 width = i64{size.width} + 2 * border,
                                          height = i64{size.height} + 2 * border;
                                if (!Fits(width, height))
                                  throw UsageFailure("the border is too wide", kBadSize);
                                return {{static_cast<i32>(width), static_cast<i32>(height)},
                                        false,
                                        [=](IPictavo6* object, Picture* frame, Picture* result) {
                                          Paste(*frame, border, border, result);
                                          return ExtendBorder(object, result, border, false);
                                        }};
                              }};

const Effect kConvertEffect = {"convert", 1, [](Parser& settings, Size size) -> Step {
                                 const Conversion& conversion =
                                     FindConversion(Utf8(settings.Next("NAME of convert")));
                                 return InPlaceStep(size, [&](IPictavo6* object, Picture* frame) {
                                   return conversion.convert(object, frame, *frame);
                                 });
                               }};

std::vector<SheetColumn> ShowConversions(Demo& demo) {
  const Picture straight = SoftDisc(demo.background);
  Picture premultiplied = straight;
  FindConversion("premultiplied").convert(demo.object, &premultiplied, straight);
  Picture hsv = demo.background;
  FindConversion("hsv").convert(demo.object, &hsv, demo.background);
  return {{"Alpha and colour",
           {ShowConversion(demo, "premultiplied", straight, "a disc with a soft edge"),
            ShowConversion(demo, "straight", premultiplied, "the same disc, back"),
            ShowConversion(demo, "yuva", demo.background, "BT.601, studio range"),
            ShowConversion(demo, "grey", demo.background, "")}},
          {"Colour spaces",
           {ShowConversion(demo, "hsv", demo.background, "256 hues"),
            ShowConversion(demo, "from-hsv", hsv, ""),
            ShowConversion(demo, "yuv709", demo.background, "limited range, V as blue"),
            ShowConversion(demo, "hsl", demo.background, "256 hues")}},
          {"Borders and drawing",
           {ShowBorder(demo, false), ShowBorder(demo, true), ShowDrawing(demo), ShowColours(demo)}},
          {"Counting",
           {ShowHistogram(demo, "the background", demo.background),
            ShowHistogram(demo, "the layer", demo.layer)}}};
}

}  // namespace host
