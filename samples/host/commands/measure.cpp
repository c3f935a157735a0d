// Measures: pictavo-host measure.
#include <array>
#include <cstdio>
#include <optional>

#include "base/commands.h"
#include "base/picture.h"
#include "base/text.h"

namespace host {
namespace {

struct Channel {
  const char* name;
  i32 number;  // -1 for luma
};
constexpr Channel kChannels[] = {{"blue", 0}, {"green", 1}, {"red", 2}, {"alpha", 3}, {"luma", -1}};

void PrintMeasures(pictavo::IPictavo6* object, const Picture& picture, const Channel& channel) {
  std::printf("%-6s", channel.name);
  for (const u32 measure : {pictavo::PICTAVO_MEASURE_MEAN, pictavo::PICTAVO_MEASURE_DEVIATION,
                            pictavo::PICTAVO_MEASURE_SHARPNESS, pictavo::PICTAVO_MEASURE_NOISE}) {
    f32 number = 0;
    const u32 code = object->MeasurePicture(picture.pixels.data(), picture.width, picture.height,
                                            picture.pitch(), channel.number, measure, &number);
    if (code != pictavo::PICTAVO_S_OK) throw Refusal("to measure the picture", code);
    std::printf(" %10.3f", double{number});
  }
}

/// Where the channel's histogram splits best, and the rectangle of what is above.
void PrintBounds(pictavo::IPictavo6* object, const Picture& picture, const Channel& channel) {
  std::array<u32, 256> bins = {};
  const u32 width = static_cast<u32>(picture.width), height = static_cast<u32>(picture.height);
  const u32 pitch = static_cast<u32>(picture.pitch()), byte = static_cast<u32>(channel.number);
  object->ComputeHistogram(picture.pixels.data(), width, height, pitch, bins.data(), 256, byte);
  std::array<f32, 256> values;
  for (size_t i = 0; i < bins.size(); ++i) values[i] = static_cast<f32>(bins[i]);
  u32 threshold = 0, count = 0;
  pictavo::PixelBounds bounds = {};
  object->FindThreshold(values.data(), 256, &threshold);
  object->FindBounds(picture.pixels.data(), picture.width, picture.height, pitch, byte, threshold,
                     &count, &bounds);
  std::printf("   %4u %10u   %d, %d to %d, %d", threshold, count, bounds.left, bounds.top,
              bounds.right, bounds.bottom);
}

int PrintDifference(const Picture& a, const Picture& b) {
  if (a.width != b.width || a.height != b.height) throw Failure("the pictures are of two sizes");
  std::printf("%.3f\n", RmsDifference(a, b));
  return 0;
}

int RunMeasure(pictavo::Library& library, const Arguments& arguments) {
  std::optional<std::wstring> beside;
  const Arguments files = TakeFiles(1, "measure takes a file, PICTURE", arguments,
                                    {FileOption("--beside", &beside), LevelOption(library)});
  const Picture picture = ReadPicture(files[0]);
  if (beside) return PrintDifference(picture, ReadPicture(*beside));
  std::printf("%d x %d\n             mean  deviation  sharpness      noise  split      above\n",
              picture.width, picture.height);
  for (const Channel& channel : kChannels) {
    PrintMeasures(library.get(), picture, channel);
    if (channel.number >= 0) PrintBounds(library.get(), picture, channel);
    std::puts("");
  }
  return 0;
}

}  // namespace

const Command kMeasureCommand = {
    L"measure",
    "  pictavo-host measure PICTURE [--level N] [--beside OTHER]\n"
    "      Prints each channel's and luma's mean, standard deviation, sharpness and noise; where\n"
    "      each histogram splits best, how many pixels are above that, and their rectangle.\n"
    "      --beside OTHER       prints the root mean square of the colours' differences instead\n",
    RunMeasure};

}  // namespace host
