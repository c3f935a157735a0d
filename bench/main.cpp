// Times every operation at every build, in one run with streaming loops that move the same bytes,
// and prints nanoseconds a pixel with the ratios to the loop and to the portable build.
#include <benchmark/benchmark.h>
#include <immintrin.h>
#include <sched.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>
#include <random>
#include <regex>
#include <set>
#include <string_view>
#include <utility>

#include "bench.h"
#include "cpu/simd/target_region.h"

namespace pictavo::bench {
namespace {

TARGET_REGION("avx2")

__m256i Load(const u8* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
void Store(u8* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

/// Reads one block and writes the other, which it may read too, with next to no arithmetic. Sizes
/// are multiples of 32 bytes; the rest is not worth moving.
void StreamBlock(u8* dst, i64 written, bool readsDst, const u8* src, i64 read) {
  __m256i sum = _mm256_setzero_si256();
  const i64 both = std::min(written, read);
#pragma GCC unroll 4
  for (i64 i = 0; i + 32 <= both; i += 32) {
    const __m256i s = Load(src + i);
    Store(dst + i, readsDst ? _mm256_xor_si256(Load(dst + i), s) : s);
  }
  for (i64 i = both; i + 32 <= read; i += 32) sum = _mm256_xor_si256(sum, Load(src + i));
  benchmark::DoNotOptimize(sum);
  for (i64 i = both; i + 32 <= written; i += 32)
    Store(dst + i, readsDst ? _mm256_xor_si256(Load(dst + i), sum) : sum);
}

TARGET_REGION_END

/// The bytes that an operation moves, in the order in which it would: in pieces of some kilobytes,
/// as many of each side.
void Stream(u8* dst, i64 written, bool readsDst, const u8* src, i64 read) {
  const i64 pieces = std::max<i64>(1, std::max(written, read) / 8192);
  const auto from = [=](i64 bytes, i64 piece) { return bytes * piece / pieces / 32 * 32; };
  for (i64 i = 0; i < pieces; ++i) {
    const i64 d = from(written, i), s = from(read, i);
    StreamBlock(dst + d, from(written, i + 1) - d, readsDst, src + s, from(read, i + 1) - s);
  }
}

Bytes MakePixels(const Size& size, const std::string& alpha) {
  std::mt19937 random(1);
  Bytes pixels(static_cast<size_t>(size.pixels()) * 4);
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

i64 SizeOf(const Bytes* bytes) { return bytes == nullptr ? 0 : static_cast<i64>(bytes->size()); }

/// Name of the streaming loop that moves what a line moves; lines that move the same share it.
std::string StreamName(const Line& line) {
  return "stream/" + std::to_string(SizeOf(line.src)) + "/" + std::to_string(SizeOf(line.dst)) +
         (line.readsDst ? "/reread" : "");
}

std::string RunName(const Line& line, const std::string& column) {
  return line.operation + "/" + line.data + "/" + column;
}

/// Keeps the thread, and those that it starts to help it, on one processor.
class OneProcessor {
 public:
  OneProcessor() {
    sched_getaffinity(0, sizeof all_, &all_);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof one, &one);
  }
  ~OneProcessor() { sched_setaffinity(0, sizeof all_, &all_); }

 private:
  cpu_set_t all_;
};

void Register(const std::string& name, const Line& line, const Run& run) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [&line, run](benchmark::State& state) {
                                 Bytes dst = line.dst == nullptr ? Bytes() : *line.dst;
                                 const u8* src = line.src == nullptr ? nullptr : line.src->data();
                                 std::optional<OneProcessor> one;
                                 if (!line.operation.ends_with(kAllThreads)) one.emplace();
                                 for (auto _ : state) {
                                   run(dst.data(), src);
                                   benchmark::ClobberMemory();
                                 }
                               })
      ->Unit(benchmark::kNanosecond)
      ->UseRealTime();
}

/// Registers the runs whose names a filter finds, and the streaming loops that they are compared
/// with.
void RegisterAll(const std::vector<Table>& tables, const std::regex& filter) {
  std::set<std::string> streams;
  for (const Table& table : tables) {
    for (const Line& line : table.lines) {
      for (size_t i = 0; i < line.runs.size(); ++i) {
        const std::string name = RunName(line, table.columns[i]);
        if (!line.runs[i] || !std::regex_search(name, filter)) continue;
        Register(name, line, line.runs[i]);
        if (!streams.insert(StreamName(line)).second) continue;
        Register(StreamName(line), line, [&line](u8* dst, const u8* src) {
          Stream(dst, SizeOf(line.dst), line.readsDst, src, SizeOf(line.src));
        });
      }
    }
  }
}

/// Takes --benchmark_filter out of the arguments: the benchmark itself would leave out the loops.
std::string TakeFilter(std::vector<char*>* arguments) {
  const std::string_view option = "--benchmark_filter=";
  std::string filter;
  std::erase_if(*arguments, [&](const char* argument) {
    const bool found = std::string_view(argument).starts_with(option);
    if (found) filter = argument + option.size();
    return found;
  });
  return filter;
}

/// Collects the medians and prints the tables of what was run.
class Printer : public benchmark::BenchmarkReporter {
 public:
  explicit Printer(const std::vector<Table>& tables) : tables_(tables) {}

  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name == "median")
        median_[run.run_name.function_name] = run.GetAdjustedRealTime();
    }
    std::fprintf(stderr, ".");
  }

  void Finalize() override {
    for (const Table& table : tables_) {
      bool headed = false;
      for (const Line& line : table.lines) {
        if (!WasRun(table, line)) continue;
        if (!std::exchange(headed, true)) PrintHeading(table);
        PrintLine(table, line);
      }
    }
  }

 private:
  double Median(const std::string& name) const {
    const auto found = median_.find(name);
    return found == median_.end() ? 0 : found->second;
  }

  bool WasRun(const Table& table, const Line& line) const {
    return std::any_of(table.columns.begin(), table.columns.end(),
                       [&](const auto& column) { return Median(RunName(line, column)) > 0; });
  }

  static void PrintHeading(const Table& table) {
    std::printf("\n%s: ns a pixel (x streaming)\n%-34s %-22s", table.title.c_str(), "", "");
    for (const std::string& column : table.columns) std::printf(" %16s", column.c_str());
    std::printf("   x faster than %s\n", table.columns[0].c_str());
  }

  void PrintLine(const Table& table, const Line& line) const {
    std::printf("%-34s %-22s", line.operation.c_str(), line.data.c_str());
    const double stream = Median(StreamName(line)),
                 slowest = Median(RunName(line, table.columns[0]));
    double fastest = slowest;
    for (size_t i = 0; i < table.columns.size(); ++i) {
      const double time = Median(RunName(line, table.columns[i]));
      if (time == 0) {
        std::printf(" %16s", "");
        continue;
      }
      if (i < table.builds) fastest = time;
      std::printf(" %8.3f (%5.2f)", time / static_cast<double>(line.pixels), time / stream);
    }
    std::printf("   %.1f\n", slowest / fastest);
  }

  const std::vector<Table>& tables_;
  std::map<std::string, double> median_;
};

int Main(int argc, char** argv) {
  const std::vector<Table> tables = {
      Blends(),      Blurs(),      ChromaKeys(), ColourTables(), Conversions(), FilteredResizing(),
      Flips(),       Frames(),     Gaussians(),  Gradings(),     Histograms(),  Layers(),
      MotionBlurs(), Rectangles(), Resizing(),   Transitions(),  Warps(),       PictureSizes()};
  std::vector<char*> arguments(argv, argv + argc);
  RegisterAll(tables, std::regex(TakeFilter(&arguments)));
  char repetitions[] = "--benchmark_repetitions=7",
       aggregates[] = "--benchmark_report_aggregates_only=true",
       interleave[] = "--benchmark_enable_random_interleaving=true",
       time[] = "--benchmark_min_time=0.02";
  arguments.insert(arguments.begin() + 1, {repetitions, aggregates, interleave, time});
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  Printer printer(tables);
  benchmark::RunSpecifiedBenchmarks(&printer);
  return 0;
}

}  // namespace

void AddOnAllThreads(Table* table, std::string_view operation) {
  const auto found = std::find_if(table->lines.begin(), table->lines.end(), [&](const Line& line) {
    return line.operation == operation && line.data.starts_with(kHd.name());
  });
  Line line = *found;
  line.operation += kAllThreads;
  std::fill(line.runs.begin() + static_cast<i64>(table->builds), line.runs.end(), Run());
  table->lines.push_back(std::move(line));
}

const std::vector<std::string>& BuildColumns() {
  static const std::vector<std::string> columns = {"portable", "128 bits", "256 bits"};
  return columns;
}

std::vector<Run> AtEachBuild(std::function<void(i32, u8*, const u8*)> operation, u32 builds) {
  std::vector<Run> runs;
  for (const i32 level : kBuildLevels) {
    const bool has = builds >> runs.size() & 1;
    runs.push_back(has ? Run([=](u8* dst, const u8* src) { operation(level, dst, src); }) : Run());
  }
  return runs;
}

const Bytes& Samples(const Size& size, i32 pixelBytes) {
  static std::map<std::pair<std::string, i32>, Bytes> made;
  Bytes& samples = made[{size.name(), pixelBytes}];
  if (samples.empty()) {
    std::mt19937 random(2);
    samples.resize(static_cast<size_t>(size.pixels() * pixelBytes));
    for (u8& sample : samples) sample = static_cast<u8>(random());
  }
  return samples;
}

const Bytes& Pixels(const Size& size, const std::string& alpha) {
  static std::map<std::pair<std::string, std::string>, Bytes> made;
  Bytes& pixels = made[{size.name(), alpha}];
  if (pixels.empty()) pixels = MakePixels(size, alpha);
  return pixels;
}

}  // namespace pictavo::bench

int main(int argc, char** argv) { return pictavo::bench::Main(argc, argv); }
