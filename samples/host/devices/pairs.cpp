// How well the graphics card's pictures register with the processor's: pictavo-host gpu-pairs.
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>

#include "base/calls.h"
#include "base/commands.h"
#include "base/surface.h"
#include "base/text.h"
#include "demo/contact_sheet.h"
#include "devices/gpu.h"
#include "devices/opencl_info.h"

namespace host {
namespace {

using pictavo::IPictavo6;

/// A method that makes a picture of another one.
struct Way {
  std::string name;
  std::function<u32(const Picture& src, Picture* dst)> run;
  bool onOpenCL = false;
};

struct Pair {
  Way card, processor;
};

struct Point {
  double x, y;
};

/// What all of its pairs do.
struct Task {
  std::string name;
  Size size;                        // of the result
  std::function<Point(Point)> map;  // where a point of the source belongs
  std::vector<Pair> pairs;
};

// ---------------------------------------------------------------------------------------------
// The methods.

/// By a method of records.
template <auto method>
Way OnProcessor(IPictavo6* object, std::string name, const auto& param) {
  return {std::move(name), [=](const Picture& src, Picture* dst) {
            return CallFrom<method>(object, dst, src, &param).result;
          }};
}

/// One of the resizers of bytes.
template <auto method>
Way OnBytes(IPictavo6* object, std::string name, auto... flags) {
  return {std::move(name), [=](const Picture& src, Picture* dst) {
            return CallResizer<method>(object, dst, src, flags...).result;
          }};
}

template <typename Param>
Way OnCard(const Gpu& gpu, IPictavo6* object, std::string name, i32 opCode, i32 subMode,
           const Param& param) {
  return {std::move(name), [=, &gpu](const Picture& src, Picture* dst) {
            *dst = gpu.Run(object, opCode, &param, src, {dst->width, dst->height}, subMode);
            return pictavo::PICTAVO_S_OK;
          }};
}

Way OnOpenCL(std::string name, std::function<u32(Surface* dst, Surface* src)> run) {
  return {std::move(name),
          [=](const Picture& src, Picture* dst) {
            Surface to(*dst), from(src);
            return run(&to, &from);
          },
          true};
}

// ---------------------------------------------------------------------------------------------
// The tasks.

Task Resizing(const Gpu& gpu, IPictavo6* object, const Picture& src, double ratio) {
  const auto scaled = [=](i32 side) { return std::max(1, static_cast<i32>(side * ratio)); };
  const Size size = {scaled(src.width), scaled(src.height)};
  constexpr const char* kFilters[] = {"triangle", "Catmull-Rom", "Mitchell", "Lanczos"};
  const auto filtered = [&](u32 filter) {
    return OnProcessor<&IPictavo6::ResizeFiltered>(object, Format("60 %s", kFilters[filter]),
                                                   pictavo::ResizeParam{filter, 0, {}});
  };
  const Way boxOnCard =
      OnCard(gpu, object, "108, operation 6", pictavo::PICTAVO_D3D_SCALE,
             pictavo::PICTAVO_D3D_WHOLE, pictavo::D3DScaleParam{0, 0, size.width, size.height});
  const Way bilinear = OnOpenCL("102", [=](Surface* dst, Surface* from) {
    return object->BilinearInterpolationOpenCL(dst, from);
  });
  Task task = {Format("%d x %d to %d x %d", src.width, src.height, size.width, size.height),
               size,
               [=](Point p) {
                 return Point{p.x * size.width / src.width, p.y * size.height / src.height};
               },
               {}};
  for (u32 filter = 0; filter < std::size(kFilters); ++filter) {
    const Way onCard = OnCard(gpu, object, Format("108, operation 6 as 60 %s", kFilters[filter]),
                              pictavo::PICTAVO_D3D_SCALE, pictavo::PICTAVO_D3D_AS_PROCESSOR,
                              pictavo::ResizeParam{filter, 0, {}});
    task.pairs.push_back({onCard, filtered(filter)});
  }
  const Way box = OnBytes<&IPictavo6::ResizeBox16AlphaWeighted>(object, "29 box", 0);
  task.pairs.insert(task.pairs.end(), {{boxOnCard, box},
                                       {boxOnCard, filtered(0)},
                                       {boxOnCard, filtered(3)},
                                       {bilinear, filtered(0)},
                                       {bilinear, filtered(3)}});
  task.pairs.push_back({bilinear, OnBytes<&IPictavo6::ResizeBilinear7>(object, "31 bilinear")});
  task.pairs.push_back(
      {bilinear, OnBytes<&IPictavo6::ResizeBilinear16KeepAlpha>(object, "58 bilinear", 1)});
  return task;
}

/// Clockwise about the middle. The matrix leads from the result to the source.
struct Turn {
  Turn(const Picture& picture, double degrees, double scale)
      : x(picture.width / 2.0),
        y(picture.height / 2.0),
        c(std::cos(degrees * std::numbers::pi / 180) / scale),
        s(std::sin(degrees * std::numbers::pi / 180) / scale),
        param{static_cast<f32>(degrees),
              static_cast<f32>(scale),
              static_cast<f32>(x),
              static_cast<f32>(y),
              static_cast<f32>(x),
              static_cast<f32>(y),
              pictavo::PICTAVO_SAMPLE_BILINEAR} {}

  Point ToSource(double u, double v) const {
    return {x + (u - x) * c + (v - y) * s, y + (v - y) * c - (u - x) * s};
  }
  Point ToResult(Point p) const {
    const double u = p.x - x, v = p.y - y, square = c * c + s * s;
    return {x + (u * c - v * s) / square, y + (u * s + v * c) / square};
  }

  double x, y, c, s;
  pictavo::RotateParam param;
};

i32 Fixed(double pixels) { return static_cast<i32>(std::lround(pixels * 65536)); }

/// Operation 10 counts from pixels' centres.
pictavo::D3DAffineParam AffineOf(const Picture& picture, const Turn& turn) {
  const Point first = turn.ToSource(0.5, 0.5);
  return {0,
          0,
          0,
          0,
          picture.width,
          picture.height,
          Fixed(first.x - 0.5),
          Fixed(first.y - 0.5),
          Fixed(turn.c),
          Fixed(turn.s),
          Fixed(-turn.s),
          Fixed(turn.c)};
}

Task Turning(const Gpu& gpu, IPictavo6* object, const Picture& src, double degrees, double scale) {
  const Turn turn(src, degrees, scale);
  const Point first = turn.ToSource(0, 0);
  const auto single = [](double x) { return static_cast<f32>(x); };
  const std::array<f32, 6> matrix = {single(turn.c),  single(turn.s), single(first.x),
                                     single(-turn.s), single(turn.c), single(first.y)};
  const Way processor = OnProcessor<&IPictavo6::RotatePicture>(object, "67 bilinear", turn.param);
  const Way asProcessor =
      OnCard(gpu, object, "108, operation 10 as 67", pictavo::PICTAVO_D3D_COPY_AFFINE,
             pictavo::PICTAVO_D3D_AS_PROCESSOR, turn.param);
  const Way affine = OnCard(gpu, object, "108, operation 10", pictavo::PICTAVO_D3D_COPY_AFFINE,
                            pictavo::PICTAVO_D3D_WHOLE, AffineOf(src, turn));
  const Way transform = OnOpenCL("100", [=](Surface* dst, Surface* from) {
    return object->TransformOpenCL(dst, from, matrix.data());
  });
  return {Format("turned by %g degrees, scale %g", degrees, scale),
          {src.width, src.height},
          [=](Point p) { return turn.ToResult(p); },
          {{asProcessor, processor}, {affine, processor}, {transform, processor}}};
}

/// To the left and up by parts of a pixel, as layers move.
Task Moving(const Gpu& gpu, IPictavo6* object, const Picture& src, f32 x, f32 y) {
  const pictavo::BlendParam blend = {0, 255, 1, x, y};
  const Way processor = {
      "74", [=](const Picture& from, Picture* dst) {
        return CallOnto<&IPictavo6::BlendLayerSubpixel>(object, dst, from, &blend).result;
      }};
  const pictavo::D3DAffineParam steps = {
      0, 0, 0, 0, src.width, src.height, Fixed(double{x}), Fixed(double{y}), 65536, 0, 0, 65536};
  const Way affine = OnCard(gpu, object, "108, operation 10", pictavo::PICTAVO_D3D_COPY_AFFINE,
                            pictavo::PICTAVO_D3D_WHOLE, steps);
  const std::array<f32, 6> matrix = {1, 0, x, 0, 1, y};
  const Way transform = OnOpenCL("100", [=](Surface* dst, Surface* from) {
    return object->TransformOpenCL(dst, from, matrix.data());
  });
  return {Format("moved by %g, %g", double{-x}, double{-y}),
          {src.width, src.height},
          [=](Point p) {
            return Point{p.x - double{x}, p.y - double{y}};
          },
          {{affine, processor}, {transform, processor}}};
}

// ---------------------------------------------------------------------------------------------
// Measuring.

Picture Run(const Way& way, const Picture& src, Size size) {
  Picture result(size.width, size.height);
  if (const u32 code = way.run(src, &result); code != pictavo::PICTAVO_S_OK)
    throw Refusal("to run slot " + way.name, code);
  return result;
}

/// A soft dot on black.
Picture Dot(const Picture& like, Point at) {
  Picture picture(like.width, like.height);
  for (i32 y = 0; y < picture.height; ++y) {
    for (i32 x = 0; x < picture.width; ++x) {
      const double square =
          (x + 0.5 - at.x) * (x + 0.5 - at.x) + (y + 0.5 - at.y) * (y + 0.5 - at.y);
      const u8 grey = static_cast<u8>(255 * std::exp(-square / 72) + 0.5);
      u8* const pixel = picture.At(x, y);
      pixel[0] = pixel[1] = pixel[2] = grey;
      pixel[3] = 255;
    }
  }
  return picture;
}

/// Where a picture's light has its centre.
Point Centre(const Picture& picture) {
  double sum = 0, x = 0, y = 0;
  for (i32 row = 0; row < picture.height; ++row) {
    for (i32 column = 0; column < picture.width; ++column) {
      const double light = picture.At(column, row)[1];
      sum += light;
      x += light * (column + 0.5);
      y += light * (row + 0.5);
    }
  }
  return {x / sum, y / sum};
}

/// How far a method moves things from where they belong, in pixels of the result: the mean of two.
Point ShiftOf(const Way& way, const Task& task, const Picture& like) {
  Point shift = {0, 0};
  for (const double place : {0.3, 0.7}) {
    const Picture dot = Dot(like, {like.width * place, like.height * place});
    const Point is = Centre(Run(way, dot, task.size)), belongs = task.map(Centre(dot));
    shift.x += (is.x - belongs.x) / 2;
    shift.y += (is.y - belongs.y) / 2;
  }
  return shift;
}

/// Clears what is not opaque in both, so that what surrounds turned pictures does not count.
void KeepOpaque(Picture* a, Picture* b) {
  for (size_t i = 0; i < a->pixels.size(); i += 4) {
    if (a->pixels[i + 3] == 255 && b->pixels[i + 3] == 255) continue;
    std::fill_n(&a->pixels[i], 4, u8{0});
    std::fill_n(&b->pixels[i], 4, u8{0});
  }
}

constexpr int kAmplified = 8;

/// Prints a pair's line, and adds a picture of what is easily seen.
void Measure(const Pair& pair, const Task& task, const Picture& src,
             std::vector<SheetPicture>* seen) {
  Picture card = Run(pair.card, src, task.size), processor = Run(pair.processor, src, task.size);
  KeepOpaque(&card, &processor);
  const Difference found = DifferenceOf(processor, card, kAmplified);
  const Point a = ShiftOf(pair.card, task, src), b = ShiftOf(pair.processor, task, src);
  std::printf("| %s | %s | %s | %+.2f, %+.2f | %+.2f, %+.2f | %d | %.2f |\n", task.name.c_str(),
              pair.card.name.c_str(), pair.processor.name.c_str(), a.x, a.y, b.x, b.y,
              found.largest, found.mean);
  constexpr int kHardlySeen = 2;
  if (found.largest <= kHardlySeen) return;
  seen->push_back({Thumbnail(found.picture),
                   pair.card.name,
                   pair.processor.name,
                   {Format("largest %d, mean %.2f", found.largest, found.mean), ""}});
}

int RunPairs(pictavo::Library& library, const Arguments& arguments) {
  Parser parser(arguments);
  const Picture src = ReadPicture(parser.Next("PICTURE"));
  const std::wstring to = parser.Next("OUT");
  if (!parser.AtEnd()) throw UsageFailure("there is one argument too many");
  const Gpu gpu;
  IPictavo6* const object = library.get();
  const bool hasOpenCL = OpenCLWorks(object);
  const Task tasks[] = {Resizing(gpu, object, src, 0.4),    Resizing(gpu, object, src, 0.6),
                        Resizing(gpu, object, src, 2.5),    Turning(gpu, object, src, 15, 1),
                        Turning(gpu, object, src, 15, 0.9), Moving(gpu, object, src, 0.3f, 0.6f)};
  std::puts(
      "| task | card, slot | processor, slot | card moves | processor moves | largest | mean |\n"
      "|---|---|---|---|---|---:|---:|");
  std::vector<SheetColumn> columns;
  for (const Task& task : tasks) {
    SheetColumn column = {task.name, {}};
    for (const Pair& pair : task.pairs)
      if (hasOpenCL || !pair.card.onOpenCL) Measure(pair, task, src, &column.pictures);
    if (!column.pictures.empty()) columns.push_back(std::move(column));
  }
  WritePicture(to, DrawContactSheet("Card and processor",
                                    Format("differences times %d", kAmplified), columns));
  return 0;
}

}  // namespace

const Command kGpuPairsCommand = {L"gpu-pairs",
                                  "  pictavo-host gpu-pairs PICTURE OUT\n"
                                  "      Measures how far the card's pictures lie from the "
                                  "processor's, and draws the\n"
                                  "      differences that can be seen. PICTURE is opaque.\n",
                                  RunPairs};

}  // namespace host
