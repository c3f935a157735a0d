// Times the OpenCL operations on this machine's device:
//   opencl_bench FOLDER
// The compiled programs are kept in the folder, so the first calls of a first run compile and those
// of a second one load. A runtime may have a cache of its own behind that; PoCL's is elsewhere with
// each new value of POCL_CACHE_DIR.
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

#include "frame/pictavo_object.h"

namespace {

using namespace pictavo;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr i32 kWidth = 1920, kHeight = 1080, kBorder = 16;

/// A frame with room for a border.
class Frame final : public IPictavoSurface {
 public:
  Frame(i32 width, i32 height) : width_(width), height_(height) {
    pixels_.resize(static_cast<size_t>(FullWidth() * (height + 2 * kBorder) * 4));
    u32 random = 1;
    for (u8& byte : pixels_) byte = static_cast<u8>((random = random * 1664525 + 1013904223) >> 24);
  }

  u32 Query(ImageDesc* image) noexcept override {
    u8* first = pixels_.data() + (kBorder * FullWidth() + kBorder) * 4;
    *image = {{},     FullWidth(), height_ + 2 * kBorder, 0, first,
              width_, height_,     FullWidth() * 4,       4};
    return 1;
  }

 private:
  i32 FullWidth() const { return width_ + 2 * kBorder; }

  i32 width_, height_;
  std::vector<u8> pixels_;
};

// What the kernels take, measured where the library launches them.
cl::EnqueueNDRangeKernel* launch;
cl::Finish* finish;
Milliseconds kernelTime;

i32 TimedLaunch(cl::Queue queue, cl::Kernel kernel, u32 dimensions, const size_t* offset,
                const size_t* global, const size_t* local, u32 waitCount, const cl::Event* waits,
                cl::Event* done) {
  const Clock::time_point start = Clock::now();
  const i32 result =
      launch(queue, kernel, dimensions, offset, global, local, waitCount, waits, done);
  finish(queue);
  kernelTime += Clock::now() - start;
  return result;
}

Milliseconds Time(const std::function<u32()>& run) {
  const Clock::time_point start = Clock::now();
  if (run() != PICTAVO_S_OK) {
    std::fputs("opencl_bench: the operation failed; is there an OpenCL device?\n", stderr);
    std::exit(1);
  }
  return Clock::now() - start;
}

void Bench(Pictavo* object, const char* name, const std::function<u32()>& run) {
  constexpr size_t kRounds = 31;
  const Milliseconds first = Time(run);
  auto& entryPoints = const_cast<OpenCLEntryPoints&>(object->cl());
  launch = std::exchange(entryPoints.clEnqueueNDRangeKernel, TimedLaunch);
  finish = entryPoints.clFinish;
  std::vector<Milliseconds> whole, kernels;
  for (size_t i = 0; i < kRounds; ++i) {
    kernelTime = {};
    whole.push_back(Time(run));
    kernels.push_back(kernelTime);
  }
  entryPoints.clEnqueueNDRangeKernel = launch;
  std::sort(whole.begin(), whole.end());
  std::sort(kernels.begin(), kernels.end());
  std::printf("%-12s %10.1f %10.2f %14.2f\n", name, first.count(), whole[kRounds / 2].count(),
              kernels[kRounds / 2].count());
  std::fflush(stdout);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 2) return std::fputs("usage: opencl_bench FOLDER\n", stderr), 2;
  SetEnvironmentVariableW(L"TMP", arguments[1]);
  Pictavo object;
  Frame dst(kWidth, kHeight), src(kWidth, kHeight), half(kWidth / 2, kHeight / 2);
  const f32 matrix[] = {0.97f, -0.26f, 160, 0.26f, 0.97f, -240};

  std::printf("%d x %d pixels, milliseconds (medians)\n\n", kWidth, kHeight);
  std::puts("              first call   any call   its kernels");
  Bench(&object, "fill", [&] { return object.MemsetColorOpenCL(&dst, 0xFF102030); });
  Bench(&object, "border 16", [&] { return object.ExtendBoundaryOpenCL(&dst, kBorder); });
  Bench(&object, "transform", [&] { return object.TransformOpenCL(&dst, &src, matrix); });
  Bench(&object, "to half", [&] { return object.BilinearInterpolationOpenCL(&half, &src); });
  Bench(&object, "from half", [&] { return object.BilinearInterpolationOpenCL(&dst, &half); });
  Bench(&object, "blur 8", [&] { return object.FastBlurOpenCL(&dst, &src, 8, 8); });
  Bench(&object, "blur 100", [&] { return object.FastBlurOpenCL(&dst, &src, 100, 100); });
  std::printf("\n%u programs compiled, the others loaded\n", object.programsCompiled());
  return 0;
}
