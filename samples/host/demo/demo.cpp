#include "demo/demo.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>

#include "demo/level_check.h"

namespace host {
namespace {

constexpr std::array<i32, 4> kLevels = {pictavo::PICTAVO_LEVEL_PORTABLE,
                                        pictavo::PICTAVO_LEVEL_SSE2, pictavo::PICTAVO_LEVEL_SSE4_1,
                                        pictavo::PICTAVO_LEVEL_AVX2};

/// What an operation gives, and the median time of a call in nanoseconds a pixel.
struct Run {
  Picture result;
  double time;
};

Run RunAtLevel(pictavo::IPictavo6* object, const Examined& operation, i32 level) {
  object->SetCPULevel(level);
  Picture result = operation.before;
  const double time = MedianTime(
      [&] {
        std::copy(operation.before.pixels.begin(), operation.before.pixels.end(),
                  result.pixels.begin());
      },
      [&] {
        if (const pictavo::Outcome outcome = operation.run(object, &result); !outcome) {
          throw Refusal("the operation " + operation.name, outcome.result);
        }
      });
  const double pixels = static_cast<double>(result.width) * result.height;
  return {std::move(result), time / pixels};
}

}  // namespace

double MedianTime(const std::function<void()>& prepare, const std::function<void()>& run) {
  using Clock = std::chrono::steady_clock;
  using Nanoseconds = std::chrono::duration<double, std::nano>;
  constexpr size_t kFewest = 3, kMost = 51;
  constexpr Nanoseconds kEnough = std::chrono::milliseconds(50);

  std::vector<Nanoseconds> times;
  Nanoseconds total{0};
  while (times.size() < kFewest || (times.size() < kMost && total < kEnough)) {
    prepare();
    const Clock::time_point start = Clock::now();
    run();
    times.push_back(Clock::now() - start);
    total += times.back();
  }
  std::nth_element(times.begin(), times.begin() + static_cast<i64>(times.size() / 2), times.end());
  return times[times.size() / 2].count();
}

Demo::Demo(pictavo::IPictavo6* libraryObject, Picture backgroundPicture, Picture layerPicture)
    : object(libraryObject),
      highestLevel(libraryObject->GetCPULevel()),
      background(std::move(backgroundPicture)),
      layer(std::move(layerPicture)) {}

Picture Demo::Examine(const Examined& operation) {
  progress_.Show(operation.name);
  std::optional<Picture> portable, highest;
  std::string times, difference;
  int levels = 0;
  for (const i32 level : kLevels) {
    if (level > highestLevel) {
      times += "         -";
      continue;
    }
    Run run = RunAtLevel(object, operation, level);
    ++levels;
    times += Format("  %8.2f", run.time);
    if (!portable) portable = run.result;
    const Picture expected = operation.expected ? operation.expected(level) : *portable;
    const std::string differs = FirstDifference(expected, run.result);
    if (difference.empty() && !differs.empty()) {
      difference = Format("DIFFER: level %d: %s", level, differs.c_str());
    }
    highest = std::move(run.result);
  }
  progress_.Clear();
  const char* agreement = operation.expected ? "as stated for each level"
                          : levels > 1       ? "same bytes"
                                             : "nothing to compare";
  std::printf("  %-22s  %4d%s  %s\n", operation.name.c_str(), operation.slot, times.c_str(),
              difference.empty() ? agreement : difference.c_str());
  std::fflush(stdout);
  ++examined;
  different += difference.empty() ? 0 : 1;
  object->SetCPULevel(highestLevel);
  return *std::move(highest);
}

void Demo::PrintHeading() const {
  std::puts("                                Nanoseconds a pixel, median");
  std::printf("  %-22s  %4s", "Operation", "Slot");
  for (const i32 level : kLevels) std::printf("  %8s", Format("level %d", level).c_str());
  std::puts("  Agreement");
}

double SmoothStep(double from, double to, double value) {
  const double t = std::clamp((value - from) / (to - from), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

Picture SoftDisc(Picture picture) {
  const double radius = 0.42 * std::min(picture.width, picture.height);
  const double middleX = picture.width / 2.0, middleY = picture.height / 2.0;
  FadeOut(&picture, [=](i32 x, i32 y) {
    return 1 - SmoothStep(0.7 * radius, radius, std::hypot(x + 0.5 - middleX, y + 0.5 - middleY));
  });
  return picture;
}

}  // namespace host
