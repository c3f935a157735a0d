// Times every operation at every build, in one run with a streaming loop that moves the same bytes,
// and prints nanoseconds a pixel with the ratios to that loop and to the portable build.
#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <cstdio>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "cpu/blend.h"
#include "cpu/layer.h"
#include "cpu/target_region.h"

namespace {

using namespace pictavo;

struct Size {
  const char* name;
  i32 width, height;
};
constexpr Size kSizes[] = {{"1920x1080", 1920, 1080}, {"256x256", 256, 256}};

const char* const kAlphas[] = {"opaque", "clear", "mixed", "soft"};

struct Build {
  const char* name;
  i32 level;
};
constexpr Build kBuilds[] = {{"portable", 0}, {"128 bits", 7}, {"256 bits", 8}};

using Blend = std::function<void(i32 level, u8* dst, const u8* src, i32 width, i32 height)>;

struct Operation {
  std::string name;
  Blend run;
};

std::vector<Operation> Blends() {
  return {
      {"2 over, ramp",
       [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
         cpu::BlendOverWithOpacityRamp(level, d, s, w, h, w * 4, w * 4, 0, 1.0f, 0.0f);
       }},
      {"3 over, packed", [](i32 level, u8* d, const u8* s, i32 w,
                            i32 h) { cpu::BlendOverPacked(level, d, s, w, h); }},
      {"4 over", [](i32 level, u8* d, const u8* s, i32 w,
                    i32 h) { cpu::BlendOverPitched(level, d, s, w, h, w * 4); }},
      {"5 premultiplied, ramp",
       [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
         cpu::BlendPremultipliedWithOpacityRamp(level, d, s, w, h, w * 4, w * 4, 0, 1.0f, 0.0f);
       }},
      {"7 premultiplied", [](i32 level, u8* d, const u8* s, i32 w,
                             i32 h) { cpu::BlendPremultipliedPitched(level, d, s, w, h, w * 4); }},
      {"8 composite, ramp",
       [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
         cpu::CompositePremultipliedWithOpacityRamp(level, d, s, w, h, w * 4, w * 4, 0, 1.0f, 0.0f);
       }},
      {"9 composite", [](i32 level, u8* d, const u8* s, i32 w,
                         i32 h) { cpu::CompositePremultipliedPitched(level, d, s, w, h, w * 4); }},
      {"11 opacity",
       [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
         cpu::BlendOverWithOpacity(level, d, s, w, h, w * 4, w * 4, 180, 0);
       }},
      {"11 opacity, backdrop",
       [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
         cpu::BlendOverWithOpacity(level, d, s, w, h, w * 4, w * 4, 180, 0xFF204060);
       }},
      {"36 opacity, ramp, alpha",
       [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
         cpu::BlendOverWithOpacityRampAndAlpha(level, d, s, w, h, w * 4, w * 4, 180, 0, 0, 1.0f,
                                               0.0f);
       }},
      {"37 opacity, ramp",
       [](i32 level, u8* d, const u8* s, i32 w, i32 h) {
         cpu::BlendOverWithOpacityRampKeepAlpha(level, d, s, w, h, w * 4, w * 4, 180, 0, 0, 1.0f,
                                                0.0f);
       }},
  };
}

/// A layer mode at full opacity.
Operation Layer(const std::string& name, u32 mode, u32 alphaMode) {
  return {"73 " + name, [=](i32 level, u8* d, const u8* s, i32 w, i32 h) {
            const cpu::LayerKernels& kernels = cpu::kLayerKernels;
            cpu::LayerKernel* kernel = level >= 6 ? kernels.sse41[mode] : kernels.defaults[mode];
            if (level >= 8 && kernels.avx2[mode] != nullptr) kernel = kernels.avx2[mode];
            kernel(d, s, w, h, w * 4, w * 4, {mode, 255, alphaMode, 0, 0});
          }};
}

std::vector<Operation> AllOperations() {
  std::vector<Operation> operations = Blends();
  const char* const modes[] = {"normal", "darken",     "multiply",   "lighten",
                               "screen", "overlay",    "difference", "hue",
                               "add",    "saturation", "luma",       "colour"};
  for (u32 mode = 0; mode < cpu::kLayerModes; ++mode)
    operations.push_back(Layer(modes[mode], mode, 0));
  operations.push_back(Layer("normal, over alpha", 0, 2));
  operations.push_back(Layer("multiply, over alpha", 2, 2));
  return operations;
}

const std::vector<Operation> kOperations = AllOperations();

TARGET_REGION("avx2")
/// Reads two pictures and writes one: the bytes a blend moves, with next to no arithmetic.
void Stream(u8* dst, const u8* src, i64 bytes) {
  for (i64 i = 0; i < bytes; i += 128) {
    for (i64 k = i; k < i + 128; k += 32) {
      auto* d = reinterpret_cast<__m256i*>(dst + k);
      const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + k));
      _mm256_storeu_si256(d, _mm256_xor_si256(_mm256_loadu_si256(d), s));
    }
  }
}
TARGET_REGION_END

/// Pixels whose alphas are all 255, all 0, runs of opaque, clear and soft pixels, or all between.
std::vector<u8> MakePixels(const Size& size, const std::string& alpha) {
  std::mt19937 random(1);
  std::vector<u8> pixels(static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * 4);
  for (size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = static_cast<u8>(random());
    if (i % 4 != 3) continue;
    const u8 soft = static_cast<u8>(1 + random() % 254);
    const size_t run = i / 4 / 50 % 3;
    pixels[i] = alpha == "opaque"  ? 255
                : alpha == "clear" ? 0
                : alpha == "soft"  ? soft
                : run == 0         ? 255
                : run == 1         ? 0
                                   : soft;
  }
  return pixels;
}

/// The same, made once.
const std::vector<u8>& Pixels(const Size& size, const std::string& alpha) {
  static std::map<std::pair<std::string, std::string>, std::vector<u8>> made;
  std::vector<u8>& pixels = made[{size.name, alpha}];
  if (pixels.empty()) pixels = MakePixels(size, alpha);
  return pixels;
}

/// Name of a benchmark: operation/size/alpha/build; the streaming loop is an operation of its own.
std::string Name(const std::string& operation, const Size& size, const std::string& alpha,
                 const std::string& build) {
  return operation + "/" + size.name + "/" + alpha + "/" + build;
}

void Register(const std::string& name, const Size& size, const std::string& alpha,
              std::function<void(u8*, const u8*)> run) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [=](benchmark::State& state) {
                                 std::vector<u8> dst = Pixels(size, "soft");
                                 const std::vector<u8>& src = Pixels(size, alpha);
                                 for (auto _ : state) {
                                   run(dst.data(), src.data());
                                   benchmark::ClobberMemory();
                                 }
                               })
      ->Unit(benchmark::kNanosecond)
      ->UseRealTime();
}

/// Collects the medians and prints them as one table.
class Table : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name == "median")
        median_[run.run_name.function_name] = run.GetAdjustedRealTime();
    }
    std::fprintf(stderr, ".");
  }

  void Finalize() override {
    std::printf("\n%-25s %-10s %-7s", "ns a pixel (x streaming)", "size", "alpha");
    for (const Build& build : kBuilds) std::printf(" %16s", build.name);
    std::printf("   x faster than portable\n");
    for (const Operation& op : kOperations) {
      for (const Size& size : kSizes) {
        for (const char* alpha : kAlphas) PrintRow(op.name.c_str(), size, alpha);
      }
    }
  }

 private:
  double NsPerPixel(const std::string& name, const Size& size) const {
    const auto found = median_.find(name);
    return found == median_.end() ? 0 : found->second / (double{1} * size.width * size.height);
  }

  void PrintRow(const char* op, const Size& size, const char* alpha) const {
    const double stream = NsPerPixel(Name("stream", size, "", ""), size);
    double ns = 0, portable = 0;
    std::string cells;
    for (const Build& build : kBuilds) {
      ns = NsPerPixel(Name(op, size, alpha, build.name), size);
      if (build.level == 0) portable = ns;
      char cell[32];
      std::snprintf(cell, sizeof(cell), " %8.3f (%5.2f)", ns, ns / stream);
      cells += cell;
    }
    if (ns > 0)
      std::printf("%-25s %-10s %-7s%s   %.1f\n", op, size.name, alpha, cells.c_str(),
                  portable / ns);
  }

  std::map<std::string, double> median_;
};

}  // namespace

int main(int argc, char** argv) {
  for (const Size& size : kSizes) {
    Register(Name("stream", size, "", ""), size, "soft",
             [size](u8* d, const u8* s) { Stream(d, s, i64{size.width} * size.height * 4); });
    for (const Operation& op : kOperations) {
      for (const char* alpha : kAlphas) {
        for (const Build& build : kBuilds) {
          Register(Name(op.name, size, alpha, build.name), size, alpha,
                   [&op, size, build](u8* d, const u8* s) {
                     op.run(build.level, d, s, size.width, size.height);
                   });
        }
      }
    }
  }
  std::vector<char*> arguments(argv, argv + argc);
  char repetitions[] = "--benchmark_repetitions=7",
       aggregates[] = "--benchmark_report_aggregates_only=true",
       interleave[] = "--benchmark_enable_random_interleaving=true",
       time[] = "--benchmark_min_time=0.02";
  arguments.insert(arguments.begin() + 1, {repetitions, aggregates, interleave, time});
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  Table table;
  benchmark::RunSpecifiedBenchmarks(&table);
}
