// Methods of Pictavo as frei0r effects. frei0r has one effect a plug-in: each is this source linked
// with a name, kPluginName, that ends with the name of a row of kEffects.
extern "C" {
#pragma GCC visibility push(default)
#include <frei0r.h>
#pragma GCC visibility pop
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "methods.h"
#include "pictavo/pictavo_cube.h"

extern const char kPluginName[];

namespace {

using namespace pictavo;

/// Within 0 … 1; 0 for what is not a number.
double Limited(double value) { return std::min(std::max(0.0, value), 1.0); }

/// One instance of the effect. Its frames are packed BGRA, as the kernels take them.
struct Instance {
  i32 width, height;
  std::array<double, 4> numbers;  // of its parameters, 0 to 1
  f0r_param_color_t colour;
  Methods pictavo;
  std::string file = {};
  CubeTable table = {};  // of the file; nothing when that is no .cube file

  i32 pitch() const { return 4 * width; }
  size_t bytes() const {
    return size_t{4} * static_cast<size_t>(width) * static_cast<size_t>(height);
  }
  double Number(int index, double most) const {
    return most * Limited(numbers[static_cast<size_t>(index)]);
  }
  ImageDesc Describe(const u8* pixels) const {
    ImageDesc image = {};
    image.data = const_cast<u8*>(pixels);
    image.width = image.bufferWidth = width;
    image.height = image.bufferHeight = height;
    image.pitch = pitch();
    image.bytesPerPixel = 4;
    return image;
  }
  u8 Channel(float value) const { return static_cast<u8>(Limited(value) * 255 + 0.5); }
  u32 Argb() const {
    return 0xFF000000u | static_cast<u32>(Channel(colour.r) << 16 | Channel(colour.g) << 8) |
           Channel(colour.b);
  }
};

/// The blurred picture is larger than its source; the frame shows the part where the source is.
bool BlurMotion(const Instance& frame, const u8* in, u8* out, const MotionBlurParam& param) {
  const ImageDesc src = frame.Describe(in);
  ImageDesc dst = {};
  i32 left = 0, top = 0;
  if (frame.pictavo->GetMotionBlurDstSize(&src, &dst, &param, &left, &top) != PICTAVO_S_OK)
    return false;
  const size_t pitch = static_cast<size_t>(dst.pitch);
  std::vector<u8> room(pitch * static_cast<size_t>(dst.height));
  dst.data = room.data();
  if (frame.pictavo->MotionBlur(&src, &dst, &param) != PICTAVO_S_OK) return false;
  // A spin of a narrow frame may need less room than the frame.
  const i32 columns = std::min(frame.width, dst.width + left);
  for (i32 y = 0; y < std::min(frame.height, dst.height + top); ++y) {
    const u8* row = &room[static_cast<size_t>(y - top) * pitch] - 4 * std::min(left, 0);
    std::memcpy(out + y * frame.pitch(), row, static_cast<size_t>(4 * columns));
  }
  return true;
}

bool Key(const Instance& frame, const u8* in, u8* out) {
  const ImageDesc src = frame.Describe(in);
  ImageDesc dst = frame.Describe(out);
  const ChromaKey key = {
      frame.Channel(frame.colour.r),          frame.Channel(frame.colour.g),
      frame.Channel(frame.colour.b),          0,
      static_cast<i32>(frame.Number(0, 180)), static_cast<i32>(frame.Number(1, 255))};
  constexpr i32 kBgra = 1;
  return frame.pictavo->ApplyChromaKey(&src, &dst, &key, 1, kBgra) == PICTAVO_S_OK;
}

bool Lay(const Instance& frame, const u8* layer, u8* out) {
  constexpr int kModes = 12;
  const BlendParam param = {static_cast<u32>(frame.Number(0, kModes - 1) + 0.5),
                            static_cast<u32>(frame.Number(1, 255) + 0.5), 2, 0, 0};
  ImageDesc dst = frame.Describe(out);
  const ImageDesc src = frame.Describe(layer);
  return frame.pictavo->BlendLayer(&dst, &src, &param) == PICTAVO_S_OK;
}

/// The whole text of a file; nothing of one that cannot be read.
std::string TextOf(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void SetFile(Instance* frame, const char* name) {
  frame->table = {};
  try {
    frame->file = name;
    frame->table = ReadCube(TextOf(frame->file));
  } catch (const std::exception&) {  // leaves frames as they are
  }
}

bool Map(const Instance& frame, const u8* in, u8* out) {
  const ImageDesc src = frame.Describe(in);
  ImageDesc dst = frame.Describe(out);
  const ColorLutParam param = frame.table.Param(static_cast<u32>(frame.Number(1, 256) + 0.5));
  return frame.pictavo->ApplyColorLut(&src, &dst, &param) == PICTAVO_S_OK;
}

bool Transit(const Instance& frame, const u8* from, const u8* to, u8* out) {
  const TransitionParam param = {
      static_cast<u32>(frame.Number(0, 7) + 0.5), static_cast<f32>(frame.Number(1, 1)),
      static_cast<f32>(frame.Number(2, 1)), static_cast<f32>(frame.Number(3, 360)), frame.Argb()};
  ImageDesc dst = frame.Describe(out);
  const ImageDesc first = frame.Describe(from), second = frame.Describe(to);
  return frame.pictavo->ApplyTransition(&dst, &first, &second, &param) == PICTAVO_S_OK;
}

struct Effect {
  const char* name;
  const char* explanation;
  std::vector<f0r_param_info_t> parameters;
  std::array<double, 4> defaults;
  f0r_param_color_t colour;
  /// `out` holds the frame before. False leaves the frame as it was.
  bool (*run)(const Instance& frame, const u8* in, u8* out);
  /// In the place of `run`, of an effect that mixes two frames; `out` holds the first.
  bool (*mix)(const Instance& frame, const u8* first, const u8* second, u8* out) = nullptr;
};

constexpr int kNumber = F0R_PARAM_DOUBLE, kColour = F0R_PARAM_COLOR, kText = F0R_PARAM_STRING;

const Effect kEffects[] = {
    {"blur",
     "Three box blurs, clear surroundings left out",
     {{"radius", kNumber, "0 to 1 for 0 to 100 pixels, at most the frame's smaller side"}},
     {0.05},
     {},
     [](const Instance& f, const u8*, u8* out) {
       const double most = std::min(f.width, f.height);
       return f.pictavo->GaussianBlurBox3(out, f.width, f.height, f.pitch(),
                                          static_cast<f32>(std::min(f.Number(0, 100), most))) ==
              PICTAVO_S_OK;
     }},
    {"color",
     "Contrast, saturation and hue",
     {{"contrast", kNumber, "0 to 1 for a factor of 0 to 4"},
      {"saturation", kNumber, "the same"},
      {"hue", kNumber, "0 to 1 for a whole turn"}},
     {0.3, 0.35, 0.05},
     {},
     [](const Instance& f, const u8*, u8* out) {
       const ColorParam param = {0,
                                 static_cast<f32>(f.Number(0, 4)),
                                 static_cast<f32>(f.Number(1, 4)),
                                 static_cast<f32>(f.Number(2, 360)),
                                 0,
                                 0};
       return f.pictavo->AdjustColor(out, f.width, f.height, f.pitch(), &param) == PICTAVO_S_OK;
     }},
    {"direction",
     "Motion blur along a line",
     {{"right", kNumber, "0 to 1 for 0 to 100 pixels"}, {"down", kNumber, "the same"}},
     {0.2, 0.1},
     {},
     [](const Instance& f, const u8* in, u8* out) {
       return BlurMotion(f, in, out,
                         {1, 101, static_cast<f32>(f.Number(0, 100)),
                          static_cast<f32>(f.Number(1, 100)), 1, 0, 0});
     }},
    {"fade",
     "Fades to a colour",
     {{"colour", kColour, "to fade to"}, {"opacity", kNumber, "what stays of the frame"}},
     {0, 0.5},
     {0, 0, 0},
     [](const Instance& f, const u8* in, u8* out) {
       return f.pictavo->BlendOverWithOpacity(out, in, f.width, f.height, f.pitch(), f.pitch(),
                                              static_cast<u8>(f.Number(1, 255)),
                                              f.Argb()) == PICTAVO_S_OK;
     }},
    {"gauss",
     "The true Gaussian",
     {{"sigma", kNumber, "0 to 1 for 0 to 100 pixels"}},
     {0.05},
     {},
     [](const Instance& f, const u8*, u8* out) {
       const f32 sigma = static_cast<f32>(f.Number(0, 100));
       return f.pictavo->GaussianBlur(out, f.width, f.height, f.pitch(), sigma, sigma,
                                      PICTAVO_EDGES_REPLICATE) == PICTAVO_S_OK;
     }},
    {"grey",
     "The mean of the colours",
     {},
     {},
     {},
     [](const Instance& f, const u8* in, u8* out) {
       return f.pictavo->ConvertBGRAToGray(in, f.width, f.height, f.pitch(),
                                           reinterpret_cast<u32*>(out), f.pitch()) == PICTAVO_S_OK;
     }},
    {"layer",
     "Mixes the second frame into the first by a layer mode",
     {{"mode", kNumber,
       "0 to 1 for modes 0 to 11: normal, darken, multiply, lighten, screen, "
       "overlay, difference, hue, add, saturation, luminosity, colour"},
      {"opacity", kNumber, "of the second frame"}},
     {0, 1},
     {},
     nullptr,
     [](const Instance& f, const u8*, const u8* second, u8* out) { return Lay(f, second, out); }},
    {"key",
     "Chroma key",
     {{"angle", kNumber, "0 to 1 for hues 0 to 180 degrees off"},
      {"denoise", kNumber, "0 to 1 for a distance of 0 to 255"},
      {"colour", kColour, "to become clear"}},
     {0.2, 0.1},
     {0, 0.69f, 0.25f},
     Key},
    {"levels",
     "Levels of the colours",
     {{"black", kNumber, "what becomes black"},
      {"white", kNumber, "what becomes white"},
      {"gamma", kNumber, "0 to 1 for 0.01 to 4 of what lies between"}},
     {0.05, 0.95, 0.35},
     {},
     [](const Instance& f, const u8*, u8* out) {
       const LevelsParam param = {static_cast<f32>(f.Number(0, 1)),
                                  static_cast<f32>(f.Number(1, 1)),
                                  static_cast<f32>(std::max(0.01, f.Number(2, 4))), 0, 1};
       return f.pictavo->AdjustLevels(out, f.width, f.height, f.pitch(), 7, &param) == PICTAVO_S_OK;
     }},
    {"lut",
     "A table of colours",
     {{"file", kText, "a .cube file"}, {"intensity", kNumber, "how much of it"}},
     {0, 1},
     {},
     Map},
    {"mosaic",
     "Blocks of one colour",
     {{"side", kNumber, "0 to 1 for 1 to 100 pixels"}},
     {0.15},
     {},
     [](const Instance& f, const u8*, u8* out) {
       const i32 rect[] = {0, 0, f.width, f.height};
       return f.pictavo->PixelateRegion(out, f.width, f.height, f.pitch(), rect,
                                        1 + static_cast<u32>(f.Number(0, 99))) == PICTAVO_S_OK;
     }},
    {"outline",
     "A line of one pixel inside the frame's edge",
     {{"colour", kColour, "of the line"}},
     {},
     {1, 1, 1},
     [](const Instance& f, const u8*, u8* out) {
       if (f.height == 1) return false;  // an outline has two rows
       const i32 rect[] = {0, 0, f.width - 1, f.height - 1};
       return f.pictavo->DrawRectOutline(reinterpret_cast<u32*>(out), f.width, f.height,
                                         static_cast<u32>(f.pitch()), rect,
                                         f.Argb()) == PICTAVO_S_OK;
     }},
    {"over",
     "Lays the second frame over the first",
     {},
     {},
     {},
     nullptr,
     [](const Instance& f, const u8*, const u8* second, u8* out) {
       return f.pictavo->BlendOverPacked(out, second, f.width, f.height) == 1;
     }},
    {"premultiply",
     "Straight alpha to premultiplied",
     {},
     {},
     {},
     [](const Instance& f, const u8*, u8* out) {
       return f.pictavo->PremultiplyPacked(out, f.width, f.height) == 1;
     }},
    {"sharpen",
     "Adds what a Gaussian takes",
     {{"amount", kNumber, "0 to 1 for 0 to 16"},
      {"radius", kNumber, "of the Gaussian: 0 to 1 for a sigma of 0 to 100 pixels"},
      {"threshold", kNumber, "what differs less stays"}},
     {0.0625, 0.02, 0},
     {},
     [](const Instance& f, const u8*, u8* out) {
       return f.pictavo->SharpenPicture(out, f.width, f.height, f.pitch(),
                                        static_cast<f32>(f.Number(0, 16)),
                                        static_cast<f32>(f.Number(2, 255)),
                                        static_cast<f32>(f.Number(1, 100))) == PICTAVO_S_OK;
     }},
    {"rotate",
     "Turns the frame about its middle; what it leaves is clear",
     {{"angle", kNumber, "0 to 1 for -180 to 180 degrees, clockwise"},
      {"scale", kNumber, "0 to 1 for a quarter to four times, 0.5 for one"}},
     {0.55, 0.5},
     {},
     [](const Instance& f, const u8* in, u8* out) {
       const f32 x = static_cast<f32>(f.width) / 2, y = static_cast<f32>(f.height) / 2;
       const RotateParam param = {static_cast<f32>(f.Number(0, 360) - 180),
                                  static_cast<f32>(std::exp2(f.Number(1, 4) - 2)),
                                  x,
                                  y,
                                  x,
                                  y,
                                  PICTAVO_SAMPLE_BILINEAR};
       const ImageDesc src = f.Describe(in);
       ImageDesc dst = f.Describe(out);
       return f.pictavo->RotatePicture(&src, &dst, &param) == PICTAVO_S_OK;
     }},
    {"spin",
     "Motion blur around the middle",
     {{"angle", kNumber, "0 to 1 for 0 to 90 degrees"}},
     {0.05},
     {},
     [](const Instance& f, const u8* in, u8* out) {
       return BlurMotion(f, in, out, {1, 30, 0, 0, 1, 0, static_cast<f32>(f.Number(0, 90))});
     }},
    {"tilt",
     "Turns the frame in space about its middle",
     {{"yaw", kNumber, "0 to 1 for -90 to 90 degrees, the right edge away"},
      {"pitch", kNumber, "the same, the top edge away"},
      {"roll", kNumber, "0 to 1 for -180 to 180 degrees, clockwise"}},
     {0.65, 0.5, 0.5},
     {},
     [](const Instance& f, const u8* in, u8* out) {
       const TiltParam param = {static_cast<f32>(f.width) / 2,
                                static_cast<f32>(f.height) / 2,
                                static_cast<f32>(f.Number(0, 180) - 90),
                                static_cast<f32>(f.Number(1, 180) - 90),
                                static_cast<f32>(f.Number(2, 360) - 180),
                                60,
                                PICTAVO_SAMPLE_BILINEAR};
       const ImageDesc src = f.Describe(in);
       ImageDesc dst = f.Describe(out);
       return f.pictavo->TiltPicture(&src, &dst, &param) == PICTAVO_S_OK;
     }},
    {"transition",
     "On the way from the first frame to the second",
     {{"mode", kNumber,
       "0 to 1 for modes 0 to 7: fade, dip, wipe, iris, clock, blinds, dissolve, "
       "push"},
      {"progress", kNumber, "how far"},
      {"softness", kNumber, "of the edge"},
      {"angle", kNumber, "0 to 1 for a turn"},
      {"colour", kColour, "that a dip goes through"}},
     {0, 0.5, 0.1, 0},
     {0, 0, 0},
     nullptr,
     Transit},
    {"unpremultiply",
     "Premultiplied alpha to straight",
     {},
     {},
     {},
     [](const Instance& f, const u8*, u8* out) {
       return f.pictavo->UnpremultiplyPacked(out, f.width, f.height) == 1;
     }},
    {"yuva",
     "BGRA to V, U, Y, A",
     {},
     {},
     {},
     [](const Instance& f, const u8* in, u8* out) {
       return f.pictavo->ConvertBGRAToYUVA(in, static_cast<u32>(f.width), f.height, f.pitch(), out,
                                           f.pitch()) == PICTAVO_S_OK;
     }},
    {"zoom",
     "Motion blur towards the middle",
     {{"zoom", kNumber, "0 to 1 for factors 1 to 2"}},
     {0.1},
     {},
     [](const Instance& f, const u8* in, u8* out) {
       return BlurMotion(f, in, out, {1, 30, 0, 0, static_cast<f32>(1 + f.Number(0, 1)), 0, 0});
     }},
};

const Effect& kEffect = *std::find_if(
    std::begin(kEffects), std::end(kEffects),
    [](const Effect& e) { return std::string_view(kPluginName).substr(8) == e.name; });

}  // namespace

extern "C" {

int f0r_init() { return 1; }
void f0r_deinit() {}

void f0r_get_plugin_info(f0r_plugin_info_t* info) {
  *info = {kPluginName,
           "Pictavo",
           kEffect.mix != nullptr ? F0R_PLUGIN_TYPE_MIXER2 : F0R_PLUGIN_TYPE_FILTER,
           F0R_COLOR_MODEL_BGRA8888,
           FREI0R_MAJOR_VERSION,
           PICTAVO_MAJOR,
           PICTAVO_MINOR,
           static_cast<int>(kEffect.parameters.size()),
           kEffect.explanation};
}

void f0r_get_param_info(f0r_param_info_t* info, int index) {
  *info = kEffect.parameters[static_cast<size_t>(index)];
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height) {
  try {
    std::unique_ptr<Instance> frame(new Instance{
        static_cast<i32>(width), static_cast<i32>(height), kEffect.defaults, kEffect.colour, {}});
    return frame->pictavo ? frame.release() : nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void f0r_destruct(f0r_instance_t instance) { delete static_cast<Instance*>(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
  auto& frame = *static_cast<Instance*>(instance);
  switch (kEffect.parameters[static_cast<size_t>(index)].type) {
    case kColour:
      frame.colour = *static_cast<f0r_param_color_t*>(value);
      break;
    case kText:
      SetFile(&frame, *static_cast<f0r_param_string*>(value));
      break;
    default:
      frame.numbers[static_cast<size_t>(index)] = *static_cast<double*>(value);
  }
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
  auto& frame = *static_cast<Instance*>(instance);
  switch (kEffect.parameters[static_cast<size_t>(index)].type) {
    case kColour:
      *static_cast<f0r_param_color_t*>(value) = frame.colour;
      break;
    case kText:
      *static_cast<f0r_param_string*>(value) = frame.file.data();
      break;
    default:
      *static_cast<double*>(value) = frame.numbers[static_cast<size_t>(index)];
  }
}

void f0r_update2(f0r_instance_t instance, double /*time*/, const uint32_t* in,
                 const uint32_t* second, const uint32_t* /*third*/, uint32_t* out) {
  const auto& frame = *static_cast<Instance*>(instance);
  const u8* const first = reinterpret_cast<const u8*>(in);
  u8* const result = reinterpret_cast<u8*>(out);
  std::memcpy(out, in, frame.bytes());
  bool done = false;
  try {
    done = kEffect.mix != nullptr
               ? kEffect.mix(frame, first, reinterpret_cast<const u8*>(second), result)
               : kEffect.run(frame, first, result);
  } catch (const std::bad_alloc&) {
  }
  if (!done) std::memcpy(out, in, frame.bytes());
}

void f0r_update(f0r_instance_t instance, double time, const uint32_t* in, uint32_t* out) {
  f0r_update2(instance, time, in, in, in, out);
}

}  // extern "C"
