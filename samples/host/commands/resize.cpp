// Resizing: pictavo-host resize, and the demo's part.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

#include "base/calls.h"
#include "base/chain.h"
#include "base/commands.h"
#include "base/text.h"
#include "demo/demo.h"

namespace host {
namespace {

struct Method {
  const char* name;
  int slot;
  const char* description;
  i32 largestSource;  // width or height
  pictavo::Outcome (*resize)(pictavo::IPictavo6* object, Picture* dst, const Picture& src);
};

constexpr i32 kAnySource = std::numeric_limits<i32>::max(), kFixedPoint = 32767;

/// By a filter, colours weighted by alpha.
template <u32 kFilter>
pictavo::Outcome ResizeBy(pictavo::IPictavo6* object, Picture* d, const Picture& s) {
  const pictavo::ResizeParam param = {kFilter, 1, {0, 0}};
  return CallFrom<&pictavo::IPictavo6::ResizeFiltered>(object, d, s, &param);
}

const Method kMethods[] = {
    {"triangle", 60, "linear, widened to reduce", kAnySource,
     ResizeBy<pictavo::PICTAVO_FILTER_TRIANGLE>},
    {"catmull-rom", 60, "a sharp cubic", kAnySource, ResizeBy<pictavo::PICTAVO_FILTER_CATMULL_ROM>},
    {"mitchell", 60, "a soft cubic", kAnySource, ResizeBy<pictavo::PICTAVO_FILTER_MITCHELL>},
    {"lanczos", 60, "the sharpest", kAnySource, ResizeBy<pictavo::PICTAVO_FILTER_LANCZOS>},
    {"nearest", 55, "the pixel at the upper left", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ResizeNearest32>(
           object, reinterpret_cast<u32*>(d->pixels.data()), d->width, d->height, d->pitch(),
           reinterpret_cast<const u32*>(s.pixels.data()), s.width, s.height, s.pitch());
     }},
    {"bilinear7", 31, "bilinear, 7-bit weights", kAnySource,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return CallResizer<&pictavo::IPictavo6::ResizeBilinear7>(object, d, s);
     }},
    {"bilinear16", 58, "bilinear, 16-bit weights", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return CallResizer<&pictavo::IPictavo6::ResizeBilinear16KeepAlpha>(object, d, s, 1);
     }},
    {"bilinear16-opaque", 30, "the same, made opaque", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return CallResizer<&pictavo::IPictavo6::ResizeBilinear16>(object, d, s, 1, 1);
     }},
    {"box", 57, "the mean of sixteen samples", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return CallResizer<&pictavo::IPictavo6::ResizeBox16>(object, d, s);
     }},
    {"box-weighted", 29, "the same, weighted by alpha", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return CallResizer<&pictavo::IPictavo6::ResizeBox16AlphaWeighted>(object, d, s, 0);
     }},
};

constexpr const char* kDefault = "lanczos";

const Method& FindMethod(const std::string& name) { return FindNamed(kMethods, name, "method"); }

int RunResize(pictavo::Library& library, const Arguments& arguments) {
  std::optional<Size> size;
  const Method* method = &FindMethod(kDefault);
  const auto take = [&](Parser& parser) { method = &FindMethod(Utf8(parser.Next("a name"))); };
  const Arguments files = TakeFiles(
      2, "resize takes two files, PICTURE OUT", arguments,
      {SizeOption("--size", &size), {"--filter", take}, {"--method", take}, LevelOption(library)});
  if (!size) throw UsageFailure("resize needs --size");
  Picture resized(size->width, size->height);
  const Picture picture = ReadPicture(files[0]);
  Expect(method->resize(library.get(), &resized, picture), "to resize the picture");
  return Deliver(files[1], resized,
                 Format(" from %d x %d, %s (slot %d) at level %d", picture.width, picture.height,
                        method->name, method->slot, library->GetCPULevel()));
}

Picture Resize(Demo& demo, const Method& method, const char* how, const Picture& src, i32 width,
               i32 height) {
  return demo.Examine(
      {std::string(method.name) + how, method.slot, Picture(width, height),
       [&](pictavo::IPictavo6* object, Picture* dst) { return method.resize(object, dst, src); }});
}

}  // namespace

const Command kResizeCommand = {
    L"resize",
    "  pictavo-host resize PICTURE OUT --size WxH [--filter NAME | --method NAME] [--level N]\n"
    "      Enlarges or reduces a picture. The filters, centred and without aliases:\n"
    "      lanczos              the sharpest; without --filter or --method\n"
    "      catmull-rom          a sharp cubic\n"
    "      mitchell             a soft cubic\n"
    "      triangle             linear, widened to reduce\n"
    "      The other methods:\n"
    "      nearest              the pixel at the upper left\n"
    "      bilinear7            bilinear, 7-bit weights\n"
    "      bilinear16           bilinear, 16-bit weights\n"
    "      bilinear16-opaque    the same, made opaque\n"
    "      box                  the mean of sixteen samples\n"
    "      box-weighted         the same, weighted by alpha\n",
    RunResize};

const Effect kResizeEffect = {
    "resize", 2, [](Parser& settings, Size frame) -> Step {
      const Size size = FrameSize(&settings, "WxH of resize");
      const Method& method =
          FindMethod(settings.AtEnd() ? kDefault : Utf8(settings.Next("METHOD of resize")));
      if (std::max(frame.width, frame.height) > method.largestSource) {
        throw UsageFailure(Format("resize by %s takes no more than %d pixels a side, not %d x %d",
                                  method.name, method.largestSource, frame.width, frame.height),
                           kBadSize);
      }
      return {size, false, [&](pictavo::IPictavo6* object, Picture* taken, Picture* result) {
                return method.resize(object, result, *taken);
              }};
    }};

namespace {

/// Rings that grow finer towards the edge, where they reach a wave of two pixels, and letters.
Picture ZonePlate(i32 width, i32 height) {
  Picture picture(width, height);
  for (i32 y = 0; y < height; ++y) {
    for (i32 x = 0; x < width; ++x) {
      const double square =
          std::pow(x + 0.5 - width / 2.0, 2) + std::pow(y + 0.5 - height / 2.0, 2);
      const double wave = std::cos(std::numbers::pi * square / width);
      std::fill_n(picture.At(x, y), 3, static_cast<u8>(127.5 + 127.4 * wave));
      picture.At(x, y)[3] = 255;
    }
  }
  return picture;
}

/// What a method makes of fine rings, and of the letters of a contact sheet.
SheetColumn ShowMethods(Demo& demo, const std::string& heading, const char* how, const Picture& src,
                        i32 width, i32 height, i32 times) {
  SheetColumn column = {heading, {}};
  for (const Method& method : kMethods) {
    const Picture made = Resize(demo, method, how, src, width, height);
    Picture shown(width * times, height * times);
    FindMethod("nearest").resize(demo.object, &shown, made);
    column.pictures.push_back(
        {shown,
         method.name,
         Format("slot %d", method.slot),
         {method.description, times > 1 ? Format("shown %d times as large", times) : ""}});
  }
  return column;
}

/// A contact sheet's own text, above two of its pictures.
Picture Letters(const Picture& picture) {
  const SheetPicture below = {Thumbnail(picture), "jump", "quickly", {}};
  const Picture sheet = DrawContactSheet("Pictavo", "sphinx of black quartz, judge my vow",
                                         {{"Five boxing wizards", {below}}, {"at dawn", {below}}});
  return Cropped(sheet, {0, 0, 540, 360});
}

}  // namespace

std::vector<SheetColumn> ShowResizing(Demo& demo) {
  constexpr i32 kWidth = 360, kHeight = 240;
  const Picture whole = SoftDisc(Covering(demo.background, 3 * kWidth, 3 * kHeight));
  const Picture detail = Cropped(whole, {450, 340, kWidth / 6, kHeight / 6});
  const Picture text = Letters(demo.background);
  return {
      ShowMethods(demo, "A detail, enlarged 6 times", " x 6", detail, kWidth, kHeight, 1),
      ShowMethods(demo, "All of it, reduced 9 times", " / 9", whole, kWidth / 3, kHeight / 3, 3),
      ShowMethods(demo, "Fine rings, reduced 3 times", " / 3", ZonePlate(3 * kWidth, 3 * kHeight),
                  kWidth, kHeight, 1),
      ShowMethods(demo, "Letters, reduced to 2 / 3", " x 2/3", text, text.width * 2 / 3,
                  text.height * 2 / 3, 1)};
}

}  // namespace host
