// Resizing: pictavo-host resize, and the demo's part.
#include <algorithm>
#include <cstdio>
#include <limits>
#include <optional>

#include "chain.h"
#include "commands.h"
#include "demo.h"
#include "text.h"

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

const Method kMethods[] = {
    {"nearest", 55, "the pixel at the upper left", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ResizeNearest32>(
           object, reinterpret_cast<u32*>(d->pixels.data()), d->width, d->height, d->pitch(),
           reinterpret_cast<const u32*>(s.pixels.data()), s.width, s.height, s.pitch());
     }},
    {"bilinear7", 31, "bilinear, 7-bit weights", kAnySource,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ResizeBilinear7>(
           object, d->pixels.data(), d->width, d->height, d->pitch(), s.pixels.data(), s.width,
           s.height, s.pitch());
     }},
    {"bilinear16", 58, "bilinear, 16-bit weights", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ResizeBilinear16KeepAlpha>(
           object, d->pixels.data(), d->width, d->height, d->pitch(), s.pixels.data(), s.width,
           s.height, s.pitch(), 1);
     }},
    {"bilinear16-opaque", 30, "the same, made opaque", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ResizeBilinear16>(
           object, d->pixels.data(), d->width, d->height, d->pitch(), s.pixels.data(), s.width,
           s.height, s.pitch(), 1, 1);
     }},
    {"box", 57, "the mean of sixteen samples", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ResizeBox16>(
           object, d->pixels.data(), d->width, d->height, d->pitch(), s.pixels.data(), s.width,
           s.height, s.pitch());
     }},
    {"box-weighted", 29, "the same, weighted by alpha", kFixedPoint,
     [](pictavo::IPictavo6* object, Picture* d, const Picture& s) {
       return pictavo::Call<&pictavo::IPictavo6::ResizeBox16AlphaWeighted>(
           object, d->pixels.data(), d->width, d->height, d->pitch(), s.pixels.data(), s.width,
           s.height, s.pitch(), 0);
     }},
};

const Method& FindMethod(const std::string& name) {
  for (const Method& method : kMethods) {
    if (name == method.name) return method;
  }
  throw UsageFailure("there is no method \"" + name + '"');
}

int RunResize(pictavo::Library& library, const Arguments& arguments) {
  std::optional<Size> size;
  const Method* method = nullptr;
  const Arguments files =
      TakeFiles(2, "resize takes two files, PICTURE OUT", arguments,
                {{"--size", [&](Parser& parser) { size = parser.Dimensions("--size"); }},
                 {"--method",
                  [&](Parser& parser) {
                    method = &FindMethod(Utf8(parser.Next("the name after --method")));
                  }},
                 LevelOption(library)});
  if (!size || method == nullptr) throw UsageFailure("resize needs --size and --method");
  Picture resized(size->width, size->height);
  const Picture picture = ReadPicture(files[0]);
  const pictavo::Outcome outcome = method->resize(library.get(), &resized, picture);
  if (!outcome) throw Refusal("to resize the picture", outcome.result);
  WritePicture(files[1], resized);
  std::printf("%s: %d x %d from %d x %d, %s (slot %d) at level %d\n", Utf8(files[1]).c_str(),
              resized.width, resized.height, picture.width, picture.height, method->name,
              method->slot, library->GetCPULevel());
  return 0;
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
    "  pictavo-host resize PICTURE OUT --size WxH --method NAME [--level N]\n"
    "      Enlarges or reduces a picture. The methods:\n"
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
          FindMethod(settings.AtEnd() ? "bilinear16" : Utf8(settings.Next("METHOD of resize")));
      if (std::max(frame.width, frame.height) > method.largestSource) {
        throw UsageFailure(Format("resize by %s takes no more than %d pixels a side, not %d x %d",
                                  method.name, method.largestSource, frame.width, frame.height),
                           kBadSize);
      }
      return {size, false, [&](pictavo::IPictavo6* object, Picture* taken, Picture* result) {
                return method.resize(object, result, *taken);
              }};
    }};

std::vector<SheetColumn> ShowResizing(Demo& demo) {
  constexpr i32 kWidth = 360, kHeight = 240;
  const Picture whole = SoftDisc(Covering(demo.background, 3 * kWidth, 3 * kHeight));
  const Picture detail = Cropped(whole, {450, 340, kWidth / 6, kHeight / 6});
  SheetColumn enlarged = {"A detail, enlarged 6 times", {}};
  SheetColumn reduced = {"All of it, reduced 9 times", {}};
  for (const Method& method : kMethods) {
    const std::string slot = Format("slot %d", method.slot);
    enlarged.pictures.push_back({Resize(demo, method, " x 6", detail, kWidth, kHeight),
                                 method.name,
                                 slot,
                                 {method.description, ""}});
    const Picture small = Resize(demo, method, " / 9", whole, kWidth / 3, kHeight / 3);
    Picture shown(kWidth, kHeight);
    FindMethod("nearest").resize(demo.object, &shown, small);
    reduced.pictures.push_back(
        {shown, method.name, slot, {method.description, "shown 3 times as large"}});
  }
  return {enlarged, reduced};
}

}  // namespace host
