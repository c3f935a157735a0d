// pictavo-host stream: video as raw frames through a pipe.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include "chain.h"
#include "commands.h"
#include "text.h"

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

// The program's exit codes for what befalls a stream.
constexpr int kShortFrame = 5, kOutputClosed = 6;

constexpr size_t kPiece = size_t{1} << 24;  // of a frame, read or written at once

/// Fills the frame from the standard input. False at the end of the stream. Memory is taken piece
/// by piece as bytes come: a size that is asked for by mistake costs nothing.
bool ReadFrame(Picture* frame) {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  const size_t size = frame->bytes();
  size_t filled = 0;
  while (filled < size) {
    if (filled == frame->pixels.size()) {
      if (filled > 0) frame->pixels.reserve(size);
      frame->pixels.resize(std::min(size, filled + kPiece));
    }
    const size_t rest = std::min(frame->pixels.size() - filled, kPiece);
    DWORD got = 0;
    if (!ReadFile(input, &frame->pixels[filled], static_cast<DWORD>(rest), &got, nullptr) &&
        GetLastError() != ERROR_BROKEN_PIPE) {
      throw Failure("cannot read frames: " + SystemMessage(HRESULT_FROM_WIN32(GetLastError())));
    }
    if (got == 0) break;
    filled += got;
  }
  if (filled != 0 && filled < size) {
    throw Failure(Format("the last frame is short: %zu of %zu bytes", filled, size), kShortFrame);
  }
  return filled != 0;
}

void WriteFrame(const Picture& frame) {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  for (size_t written = 0; written < frame.pixels.size();) {
    const size_t rest = std::min(frame.pixels.size() - written, kPiece);
    DWORD put = 0;
    if (!WriteFile(output, &frame.pixels[written], static_cast<DWORD>(rest), &put, nullptr)) {
      const DWORD error = GetLastError();
      const bool closed =
          error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED;
      throw Failure(closed ? "nobody takes the frames any more"
                           : "cannot write frames: " + SystemMessage(HRESULT_FROM_WIN32(error)),
                    closed ? kOutputClosed : 1);
    }
    written += put;
  }
}

/// Runs frames through a chain on several threads. Each thread takes a frame, runs the chain on it
/// and waits for its turn to write it: so the order is kept, and a thread's one frame is all the
/// memory that it needs.
class Stream {
 public:
  Stream(pictavo::IPictavo6* object, const std::vector<Step>& steps, Size size)
      : object_(object), steps_(steps), size_(size) {}

  /// Returns when all is written. Throws the first failure; what came before it is written.
  void Run(int threadCount) {
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) threads.emplace_back([this] { Work(); });
    for (std::thread& thread : threads) thread.join();
    progress_.Clear();
    std::fprintf(stderr, "pictavo-host: %s\n", Pace().c_str());
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  void Work() {
    bool holding = false;
    try {
      Frame frame(steps_, size_);
      while (const std::optional<i64> number = Take(frame.source())) {
        holding = true;
        if (!Give(*number, frame.Run(object_))) return;
        holding = false;
      }
    } catch (...) {
      Fail(holding);
    }
  }

  /// The number of the frame that was read; none at the end.
  std::optional<i64> Take(Picture* frame) {
    const std::lock_guard lock(reading_);
    if (ended_) return {};
    if (ReadFrame(frame)) return taken_++;
    ended_ = true;
    return {};
  }

  /// Writes a frame when all before it are written. False when that will never be.
  bool Give(i64 number, const Picture& frame) {
    std::unique_lock lock(writing_);
    turn_.wait(lock, [&] { return given_ == number || lost_; });
    if (lost_) return false;
    WriteFrame(frame);
    ++given_;
    if (Clock::now() - shown_ > std::chrono::milliseconds(250)) {
      progress_.Show(Pace());
      shown_ = Clock::now();
    }
    turn_.notify_all();
    return true;
  }

  void Fail(bool holding) {
    ended_ = true;
    const std::lock_guard lock(writing_);
    if (!failure_) failure_ = std::current_exception();
    lost_ = lost_ || holding;
    turn_.notify_all();
  }

  std::string Pace() const {
    const std::chrono::duration<double> seconds = Clock::now() - start_;
    return Format("%lld frames in %.1f s, %.1f frames per second", static_cast<long long>(given_),
                  seconds.count(), static_cast<double>(given_) / seconds.count());
  }

  pictavo::IPictavo6* const object_;
  const std::vector<Step>& steps_;
  const Size size_;
  const Clock::time_point start_ = Clock::now();

  std::mutex reading_;
  std::atomic<bool> ended_ = false;
  i64 taken_ = 0;

  std::mutex writing_;
  std::condition_variable turn_;
  i64 given_ = 0;
  bool lost_ = false;  // a frame was, so that the turn of those behind it never comes
  std::exception_ptr failure_;
  Progress progress_;
  Clock::time_point shown_ = start_;
};

int RunStream(pictavo::Library& library, const Arguments& arguments) {
  std::optional<Size> size;
  // One more than processors: one waits for its turn or for a frame.
  i32 threads = static_cast<i32>(std::thread::hardware_concurrency()) + 1;
  const Arguments chain = TakeOptions(
      arguments, {{"--size", [&](Parser& parser) { size = FrameSize(&parser, "--size"); }},
                  {"--threads", [&](Parser& p) { threads = p.Integer("--threads", 1, 256); }},
                  LevelOption(library)});
  if (chain.size() > 1) throw UsageFailure("stream takes one chain; put it in quotes");
  if (!size) throw UsageFailure("stream needs the size of a frame, --size WxH", kBadSize);
  for (const DWORD end : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE}) {
    DWORD mode;
    if (GetConsoleMode(GetStdHandle(end), &mode))
      throw UsageFailure("stream reads and writes raw frames, through pipes or files");
  }
  const std::vector<Step> steps = ParseChain(chain.empty() ? L"" : chain[0], *size);
  Stream(library.get(), steps, *size).Run(threads);
  return 0;
}

}  // namespace

const Command kStreamCommand = {
    L"stream",
    "  pictavo-host stream --size WxH \"EFFECT | EFFECT | ...\" [options]\n"
    "      Runs raw BGRA frames from the standard input to the standard output through a chain:\n"
    "      key=RRGGBB:ANGLE:DENOISE   makes a colour clear\n"
    "      over=FILE                  lays the frame over a picture\n"
    "      layer=MODE:OPACITY:FILE    mixes a picture into the frame, as the command layer does\n"
    "      resize=WxH:METHOD          as the command resize does; by bilinear16 without METHOD\n"
    "      blur=RADIUS                blurs by three boxes\n"
    "      convert=NAME               as the command convert does\n"
    "      --threads N          frames at work at once; the processors and one by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n"
    "      Pictures are made to fill the frame. Exit code: also 3 bad size, of resize too,\n"
    "      4 unknown effect, 5 short last frame (those before it are written), 6 nobody takes\n"
    "      the frames.\n",
    RunStream};

}  // namespace host
