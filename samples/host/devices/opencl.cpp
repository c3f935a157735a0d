// The OpenCL operations beside what they must give: pictavo-host opencl, and the demo's part.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <optional>

#include "base/commands.h"
#include "base/surface.h"
#include "demo/demo.h"
#include "devices/opencl_info.h"
#include "devices/opencl_reference.h"

namespace host {
namespace {

using pictavo::IPictavo6;

struct Settings {
  u32 colour = 0xFF3060C0;
  i32 border = 32;
  std::optional<Size> size;  // half the picture's without one
  f32 angle = 15, zoom = 0.8f;
  i32 radiusX = 8, radiusY = 8;
};

struct OpenCLOperation {
  const char* name;
  int slot;
  const char* twin;  // what gives the same on the processor
  i32 tolerance;     // by how much a device may differ
  Picture (*before)(const Picture& src, const Settings&);
  u32 (*run)(IPictavo6* object, Picture* dst, const Picture& src, const Settings&);
  u32 (*runTwin)(IPictavo6* object, Picture* dst, const Picture& src, const Settings&);
};

reference::Source SourceOf(const Picture& picture) {
  return {picture.pixels.data(), picture.width, picture.height};
}

/// Clear black of the source's size.
Picture SameSize(const Picture& src, const Settings&) { return Picture(src.width, src.height); }

Picture HalfOrSet(const Picture& src, const Settings& s) {
  const Size size = s.size.value_or(Size{(src.width + 1) / 2, (src.height + 1) / 2});
  return Picture(size.width, size.height);
}

Picture WithBorder(const Picture& src, const Settings& s) { return WithRoom(src, s.border); }

/// From the destination to the source: turned and zoomed about the middle.
std::array<f32, 6> Matrix(const Picture& picture, const Settings& s) {
  const f32 angle = s.angle * std::numbers::pi_v<f32> / 180;
  const f32 c = std::cos(angle) / s.zoom, d = std::sin(angle) / s.zoom;
  const f32 x = static_cast<f32>(picture.width) / 2, y = static_cast<f32>(picture.height) / 2;
  return {c, d, x - c * x - d * y, -d, c, y + d * x - c * y};
}

u32 Fill(IPictavo6* object, Picture* dst, const Picture&, const Settings& s) {
  Surface to(*dst);
  return object->MemsetColorOpenCL(&to, s.colour);
}
u32 FillTwin(IPictavo6* object, Picture* dst, const Picture&, const Settings& s) {
  const auto channel = [&s](int shift) { return static_cast<u8>(s.colour >> shift); };
  return object->FillSolidColor(dst->pixels.data(), dst->width, dst->height, dst->pitch(),
                                channel(0), channel(8), channel(16), channel(24));
}

u32 Border(IPictavo6* object, Picture* dst, const Picture&, const Settings& s) {
  Surface to(*dst, s.border);
  return object->ExtendBoundaryOpenCL(&to, static_cast<u32>(s.border));
}
u32 BorderTwin(IPictavo6* object, Picture* dst, const Picture&, const Settings& s) {
  const pictavo::ImageDesc image = DescribeInside(*dst, s.border);
  return object->ExtendBoundary(&image, static_cast<u32>(s.border));
}

u32 Transform(IPictavo6* object, Picture* dst, const Picture& src, const Settings& s) {
  Surface to(*dst), from(src);
  return object->TransformOpenCL(&to, &from, Matrix(src, s).data());
}
u32 TransformTwin(IPictavo6*, Picture* dst, const Picture& src, const Settings& s) {
  reference::Transform(dst->pixels.data(), dst->width, dst->height, SourceOf(src),
                       Matrix(src, s).data());
  return pictavo::PICTAVO_S_OK;
}

u32 Resize(IPictavo6* object, Picture* dst, const Picture& src, const Settings&) {
  Surface to(*dst), from(src);
  return object->BilinearInterpolationOpenCL(&to, &from);
}
u32 ResizeTwin(IPictavo6*, Picture* dst, const Picture& src, const Settings&) {
  reference::Resize(dst->pixels.data(), dst->width, dst->height, SourceOf(src));
  return pictavo::PICTAVO_S_OK;
}

u32 Blur(IPictavo6* object, Picture* dst, const Picture& src, const Settings& s) {
  Surface to(*dst), from(src);
  return object->FastBlurOpenCL(&to, &from, static_cast<u32>(s.radiusX),
                                static_cast<u32>(s.radiusY));
}
u32 BlurTwin(IPictavo6*, Picture* dst, const Picture& src, const Settings& s) {
  reference::Blur(dst->pixels.data(), SourceOf(src), s.radiusX, s.radiusY);
  return pictavo::PICTAVO_S_OK;
}

constexpr const char* kRule = "its rule in plain C++";
const OpenCLOperation kOpenCLOperations[] = {
    {"fill", 105, "slot 77", 0, SameSize, Fill, FillTwin},
    {"border", 98, "slot 71", 0, WithBorder, Border, BorderTwin},
    {"transform", 100, kRule, 1, SameSize, Transform, TransformTwin},
    {"resize", 102, kRule, 1, HalfOrSet, Resize, ResizeTwin},
    {"blur", 104, kRule, 0, SameSize, Blur, BlurTwin},
};

/// An operation on the device and its twin on the processor.
struct Compared {
  Picture result;
  double time, twinTime;  // median of a call, nanoseconds
  i32 difference;         // the largest of any channel
};

Compared Compare(IPictavo6* object, const OpenCLOperation& operation, const Picture& src,
                 const Settings& settings) {
  const auto time = [&](Picture* dst, auto run) {
    const Picture before = operation.before(src, settings);
    u32 code = pictavo::PICTAVO_S_OK;
    const double median =
        MedianTime([&] { *dst = before; }, [&] { code = run(object, dst, src, settings); });
    if (code != pictavo::PICTAVO_S_OK) {
      throw Failure(Format("the operation %s failed with 0x%08X", operation.name, code));
    }
    return median;
  };
  Picture result(1, 1), twin(1, 1);
  const double median = time(&result, operation.run);
  const double twinMedian = time(&twin, operation.runTwin);
  const i32 difference = DifferenceOf(result, twin).largest;
  return {std::move(result), median, twinMedian, difference};
}

int RunOpenCL(pictavo::Library& library, const Arguments& arguments) {
  const OpenCLOperation* operation = nullptr;
  Settings settings;
  constexpr i32 kLargest = 1 << 15;
  const Arguments files = TakeFiles(
      2, "opencl takes two files, PICTURE OUT", arguments,
      {{"--op",
        [&](Parser& parser) {
          operation = &FindNamed(kOpenCLOperations, Utf8(parser.Next("the name after --op")),
                                 "OpenCL operation");
        }},
       {"--colour", [&](Parser& parser) { settings.colour = parser.Hex("--colour", 8); }},
       IntegerOption("--border", &settings.border, 0, kLargest),
       SizeOption("--size", &settings.size),
       RealOption("--turn", &settings.angle),
       RealOption("--zoom", &settings.zoom),
       {"--radius", [&](Parser& parser) {
          settings.radiusX = parser.Integer("--radius across", 0, 2047);
          settings.radiusY = parser.Integer("--radius down", 0, 2047);
        }}});
  if (operation == nullptr) throw UsageFailure("opencl needs --op");
  if (!(std::abs(settings.zoom) >= 1e-3f)) throw UsageFailure("--zoom is too small");
  const Picture picture = ReadPicture(files[0]);
  if (!OpenCLWorks(library.get())) throw Failure("no OpenCL device was found");
  const Compared compared = Compare(library.get(), *operation, picture, settings);
  WritePicture(files[1], compared.result);
  std::printf("%s: %d x %d, %s (slot %d) on %s\n", Utf8(files[1]).c_str(), compared.result.width,
              compared.result.height, operation->name, operation->slot, OpenCLDeviceName().c_str());
  std::printf("OpenCL %.2f ms, %s %.2f ms, largest difference %d of %d allowed\n",
              compared.time / 1e6, operation->twin, compared.twinTime / 1e6, compared.difference,
              operation->tolerance);
  return compared.difference <= operation->tolerance ? 0 : 1;
}

SheetPicture ShowOpenCLOperation(Demo& demo, const OpenCLOperation& operation) {
  const Compared compared = Compare(demo.object, operation, demo.background, Settings());
  const double pixels = static_cast<double>(compared.result.width) * compared.result.height;
  const bool good = compared.difference <= operation.tolerance;
  std::printf("  %-22s  %4d  %8.2f  %8.2f  %-22s  %d%s\n", operation.name, operation.slot,
              compared.time / pixels, compared.twinTime / pixels, operation.twin,
              compared.difference, good ? "" : ", DIFFERS");
  std::fflush(stdout);
  ++demo.examined;
  demo.different += good ? 0 : 1;
  return {Thumbnail(compared.result),
          operation.name,
          Format("slot %d", operation.slot),
          {std::string("beside ") + operation.twin + ':',
           Format("largest difference %d", compared.difference)}};
}

}  // namespace

const Command kOpenCLCommand = {
    L"opencl",
    "  pictavo-host opencl PICTURE OUT --op NAME [options]\n"
    "      Runs an operation on OpenCL and compares it with its twin on the processor.\n"
    "      fill                 --colour AARRGGBB\n"
    "      border               --border N; 32 by default\n"
    "      transform            --turn DEGREES --zoom F, about the middle; 15 and 0.8\n"
    "      resize               --size WxH; half by default\n"
    "      blur                 --radius X Y; 8 and 8\n",
    RunOpenCL};

std::vector<SheetColumn> ShowOpenCL(Demo& demo) {
  if (!OpenCLWorks(demo.object)) {
    std::puts("\nNo OpenCL device was found; the OpenCL operations are left out.");
    return {};
  }
  const std::string device = OpenCLDeviceName();
  std::printf("\nOpenCL on %s\n", device.c_str());
  std::puts("                                Nanoseconds a pixel, median");
  std::puts(
      "  Operation               Slot    OpenCL      Twin  Twin                    Difference");
  SheetColumn columns[] = {{"OpenCL", {}}, {"Resampling", {}}};
  for (const OpenCLOperation& operation : kOpenCLOperations) {
    SheetColumn& column = columns[operation.tolerance > 0 ? 1 : 0];
    column.pictures.push_back(ShowOpenCLOperation(demo, operation));
  }
  return {columns[0], columns[1]};
}

}  // namespace host
