// The graphics card: pictavo-host gpu-*, and the demo's part.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>

#include "base/calls.h"
#include "base/commands.h"
#include "base/surface.h"
#include "demo/demo.h"
#include "devices/gpu.h"
#include "keying/chroma_key.h"

namespace host {
namespace {

Picture KeyOnGpu(const Gpu& gpu, pictavo::IPictavo6* object, const Picture& src, const Keys& keys) {
  const pictavo::D3DKeyParam param = {
      {0, 0, 0, 0, src.width, src.height}, keys.data(), static_cast<i32>(keys.size())};
  return gpu.Run(object, pictavo::PICTAVO_D3D_CHROMA_KEY, &param, src, {src.width, src.height});
}

Picture ResizeOnGpu(const Gpu& gpu, pictavo::IPictavo6* object, const Picture& src, Size size) {
  const pictavo::D3DScaleParam param = {0, 0, size.width, size.height};
  return gpu.Run(object, pictavo::PICTAVO_D3D_SCALE, &param, src, size);
}

Picture BlurOnGpu(const Gpu& gpu, pictavo::IPictavo6* object, const Picture& src, u32 radius) {
  return gpu.Made(src, {src.width, src.height}, [&](const auto* to, const auto* from) {
    return object->BoxBlurD3D(gpu.device(), gpu.context(), to, from, radius);
  });
}

Picture FilterOnGpu(const Gpu& gpu, pictavo::IPictavo6* object, const Picture& src, Size size,
                    const pictavo::ResizeParam& param) {
  return gpu.Run(object, pictavo::PICTAVO_D3D_SCALE, &param, src, size,
                 pictavo::PICTAVO_D3D_AS_PROCESSOR);
}

/// How slot 67 turns and scales a picture about its middle.
pictavo::RotateParam AboutTheMiddle(const Picture& picture, f32 degrees, f32 scale) {
  const f32 x = static_cast<f32>(picture.width) / 2, y = static_cast<f32>(picture.height) / 2;
  return {degrees, scale, x, y, x, y, pictavo::PICTAVO_SAMPLE_BILINEAR};
}

/// Turns a picture on the card …
Picture TurnOnGpu(const Gpu& gpu, pictavo::IPictavo6* object, const Picture& src,
                  const pictavo::RotateParam& param) {
  return gpu.Run(object, pictavo::PICTAVO_D3D_COPY_AFFINE, &param, src, {src.width, src.height},
                 pictavo::PICTAVO_D3D_AS_PROCESSOR);
}

/// … and a texture on the processor.
Picture RotateOnGpu(const Gpu& gpu, pictavo::IPictavo6* object, const Picture& src,
                    const pictavo::RotateParam& param) {
  return gpu.Made(src, {src.width, src.height}, [&](const auto* to, const auto* from) {
    return object->RotateD3D(gpu.device(), gpu.context(), to, from, &param);
  });
}

/// A channel of a colour, 0xRRGGBB, as the card takes it: 0 … 1.
f32 Channel(u32 colour, int shift) { return static_cast<f32>(colour >> shift & 255) / 255.0f; }

/// A picture with a line of one colour, 0xRRGGBB, around what it shows: in front of its own shape,
/// which is larger and all of that colour.
Picture OutlineOnGpu(const Gpu& gpu, pictavo::IPictavo6* object, const Picture& picture, u32 radius,
                     u32 colour) {
  const Size size = {picture.width, picture.height};
  constexpr u32 kDisc = 1;
  const pictavo::D3DGrowRegionParam grow = {
      {0, 0, 0, 0, size.width, size.height}, {radius, radius, kDisc, 1.0f}, 0};
  const pictavo::D3DTintParam tint = {0, 0, Channel(colour, 16), Channel(colour, 8),
                                      Channel(colour, 0)};
  const Picture shape = gpu.Run(object, pictavo::PICTAVO_D3D_GROW_REGION, &grow, picture, size);
  Picture outlined = gpu.Run(object, pictavo::PICTAVO_D3D_TINT, &tint, shape, size);
  object->BlendOverPitched(outlined.pixels.data(), picture.pixels.data(), size.width, size.height,
                           picture.pitch());
  return outlined;
}

/// Runs an operation of slot 108 between textures. Throws Failure when the library refuses.
void Operate(const Gpu& gpu, pictavo::IPictavo6* object, i32 opCode, i32 subMode,
             const Gpu::Texture& dst, const Gpu::Texture& src, const void* param) {
  const pictavo::ImageDesc to = Describe(dst.Get()), from = Describe(src.Get());
  const u32 code =
      object->D3DComputeOp(opCode, subMode, gpu.device(), gpu.context(), &to, &from, param);
  if (code != pictavo::PICTAVO_S_OK) throw Refusal("to work on the graphics card", code);
}

/// A mat of one colour, 0xRRGGBB, with a picture inside it.
Picture MatOnGpu(const Gpu& gpu, pictavo::IPictavo6* object, const Picture& picture, i32 border,
                 u32 colour) {
  const f32 bgra[] = {Channel(colour, 0), Channel(colour, 8), Channel(colour, 16), 1};
  const pictavo::D3DClearParam clear = {bgra, 4};
  const pictavo::D3DRegion region = {border, border, 0, 0, picture.width, picture.height};
  const Gpu::Texture source = gpu.Create(picture.width, picture.height);
  const Gpu::Texture mat = gpu.Create(picture.width + 2 * border, picture.height + 2 * border);
  Operate(gpu, object, pictavo::PICTAVO_D3D_COPY, 0, source, gpu.Upload(picture), nullptr);
  Operate(gpu, object, pictavo::PICTAVO_D3D_CLEAR, 0, mat, {}, &clear);
  Operate(gpu, object, pictavo::PICTAVO_D3D_COPY_TEXTURE, pictavo::PICTAVO_D3D_PART, mat, source,
          &region);
  return gpu.Download(mat.Get());
}

/// The same on the processor.
Picture Mat(pictavo::IPictavo6* object, const Picture& picture, i32 border, u32 colour) {
  const auto channel = [=](int shift) { return static_cast<u8>(colour >> shift); };
  Picture mat(picture.width + 2 * border, picture.height + 2 * border);
  object->FillSolidColor(mat.pixels.data(), mat.width, mat.height, mat.pitch(), channel(0),
                         channel(8), channel(16), 255);
  Surface inside(mat, border), source(picture);
  const u32 code = object->CopySurface(&inside, &source);
  if (code != pictavo::PICTAVO_S_OK) throw Refusal("to copy a surface", code);
  return mat;
}

/// A picture to work on, and what follows PICTURE OUT on the command line.
struct Job {
  const Gpu& gpu;
  pictavo::IPictavo6* object;
  Parser* settings;
  Picture src;
};
using Work = Picture (*)(const Job& job);

template <Work work>
int RunOnGpu(pictavo::Library& library, const Arguments& arguments) {
  Parser parser(arguments);
  const std::wstring from = parser.Next("PICTURE"), to = parser.Next("OUT");
  const Gpu gpu;
  const Picture result = work({gpu, library.get(), &parser, ReadPicture(from)});
  if (!parser.AtEnd()) throw UsageFailure("there is one argument too many");
  return Deliver(to, result, Format(", on what Direct3D calls %s", gpu.name().c_str()));
}

// ---------------------------------------------------------------------------------------------
// The demo's part.

/// The rule of the graphics card's blur.
Picture BoxBlurred(const Picture& src, i32 radius) {
  // Sums of columns slide down, a window's sum slides along them.
  std::vector<u32> columns(4 * static_cast<size_t>(src.width));
  const auto addRow = [&](i32 y, u32 sign) {
    if (y < 0 || y >= src.height) return;
    for (size_t i = 0; i < columns.size(); ++i) columns[i] += sign * src.At(0, y)[i];
  };
  const auto inside = [=](i32 place, i32 length) {
    return static_cast<u32>(std::min(place + radius, length - 1) - std::max(place - radius, 0) + 1);
  };
  constexpr u32 kMinus = ~0u;
  Picture blurred(src.width, src.height);
  for (i32 y = -radius; y < src.height; ++y) {
    addRow(y + radius, 1);
    addRow(y - radius - 1, kMinus);
    if (y < 0) continue;
    u32 sums[4] = {};
    for (i32 x = -radius; x < src.width; ++x) {
      const u32 count = inside(x, src.width) * inside(y, src.height);
      for (i32 c = 0; c < 4; ++c) {
        const i32 entering = x + radius, leaving = x - radius - 1;
        if (entering < src.width) sums[c] += columns[static_cast<size_t>(4 * entering + c)];
        if (leaving >= 0) sums[c] -= columns[static_cast<size_t>(4 * leaving + c)];
        if (x >= 0) blurred.At(x, y)[c] = static_cast<u8>((sums[c] + count / 2) / count);
      }
    }
  }
  return blurred;
}

/// One operation on both.
struct Compared {
  const char* name;
  const char* heading;
  int slot;
  const char* onCpu;  // where the processor's picture is from
  int tolerance;
  Picture cpu, gpu;
};

/// Prints how far two pictures agree, and shows them with their difference.
SheetColumn Compare(Demo* demo, const Compared& c) {
  constexpr int kAmplified = 64;
  const Difference found = DifferenceOf(c.cpu, c.gpu, kAmplified);
  const std::string agreement = found.largest == 0 ? "same bytes"
                                                   : Format("%.2f %% of bytes differ, by up to %d",
                                                            found.share, found.largest);
  const bool good = found.largest <= c.tolerance;
  std::printf("  %-22s  %4d  %-38s  %s%s\n", c.name, c.slot, "beside the processor",
              good ? "" : "DIFFER: ", agreement.c_str());
  ++demo->examined;
  demo->different += good ? 0 : 1;
  return {c.heading,
          {{Thumbnail(c.cpu), "processor", c.onCpu, {"", ""}},
           {Thumbnail(c.gpu), "graphics card", Format("slot %d", c.slot), {"", ""}},
           {Thumbnail(found.picture), "difference", Format("x %d", kAmplified), {agreement, ""}}}};
}

SheetColumn CompareKey(Demo* demo, const Gpu& gpu) {
  const Picture source = OnGreenScreen(demo->layer);
  Picture keyed(source.width, source.height);
  Expect(Key(demo->object, &keyed, source, KeysOfScreen()), "to key");
  return Compare(demo, {"GPU chroma key", "Chroma key", 108, "slot 86", 1, keyed,
                        KeyOnGpu(gpu, demo->object, source, KeysOfScreen())});
}

/// Room for a picture of three fifths the size.
Picture SmallerThan(const Picture& source) {
  return Picture(std::max(1, source.width * 3 / 5), std::max(1, source.height * 3 / 5));
}

SheetColumn CompareResizing(Demo* demo, const Gpu& gpu) {
  const Picture source = SoftDisc(demo->background);
  Picture small = SmallerThan(source);
  Expect(
      CallResizer<&pictavo::IPictavo6::ResizeBox16AlphaWeighted>(demo->object, &small, source, 0),
      "to resize a picture");
  return Compare(demo, {"GPU box resize", "Resizing to 3/5", 108, "slot 29", 1, small,
                        ResizeOnGpu(gpu, demo->object, source, {small.width, small.height})});
}

SheetColumn CompareBlur(Demo* demo, const Gpu& gpu) {
  const i32 radius = std::max(1, std::min(demo->layer.width, demo->layer.height) / 40);
  return Compare(demo, {"GPU box blur", "Box blur", 103, "this program's own rule", 0,
                        BoxBlurred(demo->layer, radius),
                        BlurOnGpu(gpu, demo->object, demo->layer, static_cast<u32>(radius))});
}

SheetColumn CompareMat(Demo* demo, const Gpu& gpu) {
  const i32 border = std::max(1, demo->layer.height / 12);
  constexpr u32 kSand = 0xE0D8C0;
  return Compare(demo, {"GPU clear and copy", "A mat", 108, "slots 77 and 97", 0,
                        Mat(demo->object, demo->layer, border, kSand),
                        MatOnGpu(gpu, demo->object, demo->layer, border, kSand)});
}

SheetColumn CompareFilter(Demo* demo, const Gpu& gpu) {
  const Picture source = SoftDisc(demo->background);
  Picture small = SmallerThan(source);
  const pictavo::ResizeParam param = {pictavo::PICTAVO_FILTER_LANCZOS, 1, {0, 0}};
  Expect(CallFrom<&pictavo::IPictavo6::ResizeFiltered>(demo->object, &small, source, &param),
         "to resize a picture");
  return Compare(demo,
                 {"GPU filtered resize", "Lanczos, to 3/5", 108, "slot 60", 1, small,
                  FilterOnGpu(gpu, demo->object, source, {small.width, small.height}, param)});
}

/// By the card, or a texture by the processor.
SheetColumn CompareRotation(Demo* demo, const Gpu& gpu, bool byCard) {
  const Picture source = SoftDisc(demo->background);
  const pictavo::RotateParam param = AboutTheMiddle(source, 15, 0.9f);
  Picture turned(source.width, source.height);
  Expect(CallFrom<&pictavo::IPictavo6::RotatePicture>(demo->object, &turned, source, &param),
         "to turn a picture");
  const auto turn = byCard ? TurnOnGpu : RotateOnGpu;
  return Compare(
      demo, {byCard ? "GPU rotation" : "GPU texture, turned", "Turned textures", byCard ? 108 : 68,
             "slot 67", 0, turned, turn(gpu, demo->object, source, param)});
}

SheetColumn ShowOutlined(const Demo& demo, const Gpu& gpu) {
  const Picture keyed = KeyOnGpu(gpu, demo.object, OnGreenScreen(demo.layer), KeysOfScreen());
  const u32 radius = static_cast<u32>(std::clamp(keyed.height / 60, 1, 32));
  return {"On the graphics card",
          {{Thumbnail(OutlineOnGpu(gpu, demo.object, keyed, radius, 0xFF8000)),
            "outlined",
            "slot 108",
            {Format("operations 12 and 13, radius %u", radius), ""}}}};
}

}  // namespace

const Command kGpuKeyCommand = {L"gpu-key",
                                "  pictavo-host gpu-key PICTURE OUT RRGGBB ANGLE DENOISE\n"
                                "      As key, on the graphics card.\n",
                                RunOnGpu<[](const Job& job) {
                                  return KeyOnGpu(job.gpu, job.object, job.src,
                                                  {ParseKey(job.settings)});
                                }>};

const Command kGpuBlurCommand = {
    L"gpu-blur",
    "  pictavo-host gpu-blur PICTURE OUT RADIUS\n"
    "      Blurs by a box, on the graphics card.\n",
    RunOnGpu<[](const Job& job) {
      return BlurOnGpu(job.gpu, job.object, job.src,
                       static_cast<u32>(job.settings->Integer("RADIUS", 0, 1 << 20)));
    }>};

const Command kGpuResizeCommand = {
    L"gpu-resize",
    "  pictavo-host gpu-resize PICTURE OUT WxH\n"
    "      Resizes by the mean of sixteen samples, on the graphics card.\n",
    RunOnGpu<[](const Job& job) {
      return ResizeOnGpu(job.gpu, job.object, job.src, job.settings->Dimensions("WxH"));
    }>};

const Command kGpuTurnCommand = {
    L"gpu-turn",
    "  pictavo-host gpu-turn PICTURE OUT DEGREES\n"
    "      Turns a picture around its middle, clockwise, on the graphics card.\n",
    RunOnGpu<[](const Job& job) {
      const f32 degrees = job.settings->Real("DEGREES");
      return TurnOnGpu(job.gpu, job.object, job.src, AboutTheMiddle(job.src, degrees, 1));
    }>};

const Command kGpuOutlineCommand = {
    L"gpu-outline",
    "  pictavo-host gpu-outline PICTURE OUT RADIUS RRGGBB\n"
    "      Draws a line around what is not clear, on the graphics card.\n",
    RunOnGpu<[](const Job& job) {
      const auto radius = static_cast<u32>(job.settings->Integer("RADIUS", 0, 32));
      return OutlineOnGpu(job.gpu, job.object, job.src, radius, job.settings->Hex("RRGGBB", 6));
    }>};

const Command kGpuRotateCommand = {
    L"gpu-rotate",
    "  pictavo-host gpu-rotate PICTURE OUT DEGREES SCALE\n"
    "      Turns and scales a texture about its middle by the processor's rule.\n",
    RunOnGpu<[](const Job& job) {
      const f32 degrees = job.settings->Real("DEGREES"), scale = job.settings->Real("SCALE");
      return RotateOnGpu(job.gpu, job.object, job.src, AboutTheMiddle(job.src, degrees, scale));
    }>};

const Command kGpuMatCommand = {
    L"gpu-mat",
    "  pictavo-host gpu-mat PICTURE OUT BORDER RRGGBB\n"
    "      Lays a picture on a mat of one colour, on the graphics card.\n",
    RunOnGpu<[](const Job& job) {
      const i32 border = job.settings->Integer("BORDER", 0, 4096);
      return MatOnGpu(job.gpu, job.object, job.src, border, job.settings->Hex("RRGGBB", 6));
    }>};

std::vector<SheetColumn> ShowGpu(Demo& demo) {
  std::unique_ptr<const Gpu> gpu;
  try {
    gpu = std::make_unique<const Gpu>();
  } catch (const Failure& failure) {
    std::printf("  Left out what runs on the graphics card: %s\n", failure.what());
    return {};
  }
  std::printf("  On what Direct3D calls %s:\n", gpu->name().c_str());
  return {CompareKey(&demo, *gpu),
          CompareResizing(&demo, *gpu),
          CompareBlur(&demo, *gpu),
          CompareMat(&demo, *gpu),
          CompareFilter(&demo, *gpu),
          CompareRotation(&demo, *gpu, true),
          CompareRotation(&demo, *gpu, false),
          ShowOutlined(demo, *gpu)};
}

}  // namespace host
