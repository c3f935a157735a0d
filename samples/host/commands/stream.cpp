// pictavo-host stream: video as raw frames through a pipe.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include "base/chain.h"
#include "base/commands.h"
#include "base/text.h"

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

// The program's exit codes for what befalls a stream.
constexpr int kShortFrame = 5, kOutputClosed = 6;

constexpr size_t kPiece = size_t{1} << 24;  // of a frame, read or written at once

/// Frames as they go through the pipes: packed BGRA, or a format of the library's.
struct PixelFormat {
  bool bgra = true;
  u32 layout = 0, matrix = pictavo::PICTAVO_MATRIX_BT709, range = pictavo::PICTAVO_RANGE_LIMITED;

  u32 bits() const { return pictavo::FrameFormat(layout, matrix, range); }
  size_t Bytes(Size size) const {
    if (bgra) return 4 * static_cast<size_t>(size.width) * static_cast<size_t>(size.height);
    return static_cast<size_t>(pictavo::FrameBytes(layout, size.width, size.height));
  }
};

void Check(const char* method, u32 code) {
  if (code != pictavo::PICTAVO_S_OK) throw Refusal(method, code);
}

/// A file, or a pipe by its name, to be read.
class Input {
 public:
  explicit Input(const std::wstring& name)
      : handle_(CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            FILE_FLAG_SEQUENTIAL_SCAN, nullptr)) {
    if (handle_ == INVALID_HANDLE_VALUE)
      throw Failure("cannot read " + Utf8(name) + ": " +
                    SystemMessage(HRESULT_FROM_WIN32(GetLastError())));
  }
  ~Input() { CloseHandle(handle_); }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  HANDLE handle() const { return handle_; }

 private:
  const HANDLE handle_;
};

/// Fills a frame of so many bytes from a file or pipe. False at the end of the stream. Memory is
/// taken piece by piece as bytes come: a size that is asked for by mistake costs nothing.
bool ReadFrame(HANDLE input, std::vector<u8>* bytes, size_t size) {
  size_t filled = 0;
  while (filled < size) {
    if (filled == bytes->size()) {
      if (filled > 0) bytes->reserve(size);
      bytes->resize(std::min(size, filled + kPiece));
    }
    const size_t rest = std::min(bytes->size() - filled, kPiece);
    DWORD got = 0;
    if (!ReadFile(input, bytes->data() + filled, static_cast<DWORD>(rest), &got, nullptr) &&
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

void WriteFrame(const std::vector<u8>& bytes) {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  for (size_t written = 0; written < bytes.size();) {
    const size_t rest = std::min(bytes.size() - written, kPiece);
    DWORD put = 0;
    if (!WriteFile(output, &bytes[written], static_cast<DWORD>(rest), &put, nullptr)) {
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
  /// @param second null without a second video
  Stream(pictavo::IPictavo6* object, const std::vector<Step>& steps, Size size,
         const PixelFormat& format, HANDLE second)
      : object_(object), steps_(steps), size_(size), format_(format), second_(second) {}

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
  using Packed = std::vector<u8>;  // a frame as it went through a pipe

  void Work() {
    bool holding = false;
    try {
      Frame frame(steps_, size_);
      Packed in, second;
      Packed out;
      while (const std::optional<i64> number = Take(&frame, &in, &second)) {
        holding = true;
        if (!format_.bgra) {
          Unpack(in, frame.source());
          if (second_ != nullptr) Unpack(second, frame.second());
        }
        const Picture& result = frame.Run(object_, *number);
        if (!format_.bgra) Pack(result, &out);
        if (!Give(*number, format_.bgra ? result.pixels : out)) return;
        holding = false;
      }
    } catch (...) {
      Fail(holding);
    }
  }

  void Unpack(const Packed& packed, Picture* picture) {
    picture->pixels.resize(picture->bytes());
    Check("ConvertFrameToBGRA",
          object_->ConvertFrameToBGRA(packed.data(), picture->width, picture->height,
                                      picture->pixels.data(), picture->pitch(), format_.bits()));
  }

  void Pack(const Picture& picture, Packed* packed) {
    packed->resize(format_.Bytes({picture.width, picture.height}));
    Check("ConvertBGRAToFrame",
          object_->ConvertBGRAToFrame(picture.pixels.data(), picture.width, picture.height,
                                      picture.pitch(), packed->data(), format_.bits()));
  }

  /// Reads the next frame of a video: pixels into the picture, or what Unpack() takes.
  bool Read(HANDLE input, Picture* picture, Packed* packed) const {
    return ReadFrame(input, format_.bgra ? &picture->pixels : packed, format_.Bytes(size_));
  }

  /// The number of the frame that was read; none at the end, of the second video too.
  std::optional<i64> Take(Frame* frame, Packed* in, Packed* second) {
    const std::lock_guard lock(reading_);
    if (ended_) return {};
    if (Read(GetStdHandle(STD_INPUT_HANDLE), frame->source(), in) &&
        (second_ == nullptr || Read(second_, frame->second(), second))) {
      return taken_++;
    }
    ended_ = true;
    return {};
  }

  /// Writes a frame when all before it are written. False when that will never be.
  bool Give(i64 number, const std::vector<u8>& bytes) {
    std::unique_lock lock(writing_);
    turn_.wait(lock, [&] { return given_ == number || lost_; });
    if (lost_) return false;
    WriteFrame(bytes);
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
  const PixelFormat format_;
  const HANDLE second_;
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

std::vector<Option> FormatOptions(PixelFormat* format) {
  return {{"--pixels",
           [=](Parser& parser) {
             // In the order of the library's layouts, and BGRA behind them.
             const u32 layout = parser.Choice(
                 "--pixels", {"nv12", "i420", "yv12", "yuy2", "uyvy", "p010", "bgra"});
             format->bgra = layout > pictavo::PICTAVO_FRAME_P010;
             format->layout = layout;
           }},
          ChoiceOption("--matrix", &format->matrix, {"bt601", "bt709", "bt2020"}),
          ChoiceOption("--range", &format->range, {"limited", "full"})};
}

int RunStream(pictavo::Library& library, const Arguments& arguments) {
  std::optional<Size> size;
  std::optional<Input> second;
  // One more than processors: one waits for its turn or for a frame.
  i32 threads = static_cast<i32>(std::thread::hardware_concurrency()) + 1;
  PixelFormat format;
  std::vector<Option> options = FormatOptions(&format);
  options.insert(options.end(),
                 {{"--size", [&](Parser& parser) { size = FrameSize(&parser, "--size"); }},
                  {"--second", [&](Parser& p) { second.emplace(p.Next("the file of --second")); }},
                  IntegerOption("--threads", &threads, 1, 256),
                  LevelOption(library)});
  const Arguments chain = TakeOptions(arguments, options);
  if (chain.size() > 1) throw UsageFailure("stream takes one chain; put it in quotes");
  if (!size) throw UsageFailure("stream needs the size of a frame, --size WxH", kBadSize);
  for (const DWORD end : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE}) {
    DWORD mode;
    if (GetConsoleMode(GetStdHandle(end), &mode))
      throw UsageFailure("stream reads and writes raw frames, through pipes or files");
  }
  const std::vector<Step> steps =
      ParseChain(chain.empty() ? L"" : chain[0], *size, second.has_value());
  Stream(library.get(), steps, *size, format, second ? second->handle() : nullptr).Run(threads);
  return 0;
}

}  // namespace

const Command kStreamCommand = {
    L"stream",
    "  pictavo-host stream --size WxH \"EFFECT | EFFECT | ...\" [options]\n"
    "      Runs raw frames from the standard input to the standard output through a chain:\n"
    "      key=RRGGBB:ANGLE:DENOISE   makes a colour clear\n"
    "      screen-key=RRGGBB:ANGLE:DENOISE\n"
    "                                 the same with the screen's own light; 90 and 6 by default\n"
    "      over=FILE                  lays the frame over a picture\n"
    "      over=X:Y:WxH:FILE          the same in that size, its corner at a place between pixels\n"
    "      layer=MODE:OPACITY:FILE    mixes a picture into the frame, as the command layer does\n"
    "      fade=PROGRESS:FILE         fades into a picture\n"
    "      transition=MODE:PROGRESS:SOFTNESS:ANGLE:FILE    as the command transition does\n"
    "      resize=WxH:METHOD          as the command resize does; by lanczos without METHOD\n"
    "      rotate=ANGLE:SCALE         turns clockwise about the middle; at 1 without SCALE\n"
    "      tilt=YAW:PITCH:ROLL        turns in space, as the command tilt does\n"
    "      flip=WAY                   as the command flip does\n"
    "      blur=RADIUS                blurs by three boxes\n"
    "      levels=BLACK:WHITE:GAMMA   as the command levels does; 0:1:1\n"
    "      color=BRIGHTNESS:CONTRAST:SATURATION:HUE:TEMPERATURE:TINT   0:1:1:0:0:0\n"
    "      lut=FILE                   a .cube file's table of colours\n"
    "      gauss=SIGMA:SIGMA-Y        blurs by the true Gaussian, both ways alike without SIGMA-Y\n"
    "      sharpen=AMOUNT:RADIUS:THRESHOLD   as the command sharpen does; 1:2:0\n"
    "      matte=BLACK:WHITE:CHOKE:FEATHER   as the command matte does; 0:1:0:0\n"
    "      motion=X:Y                 smears by so many pixels right and down\n"
    "      border=N                   extends the edges by N pixels on every side\n"
    "      pixelate=BLOCK             blocks of one colour\n"
    "      convert=NAME               as the command convert does\n"
    "      --pixels NAME        bgra, nv12, i420, yv12, yuy2, uyvy or p010, going in and coming "
    "out;\n"
    "                           bgra by default\n"
    "      --matrix NAME        of those with YUV: bt601, bt709 or bt2020; bt709 by default\n"
    "      --range NAME         limited or full; limited by default\n"
    "      FILE may be \"second\", for the frames of --second. PROGRESS is 0 to 1, or two frames'\n"
    "      numbers, as in 25-50: 0 before the first and 1 from the second on.\n"
    "      --second FILE        a second video of as large frames, from a file or a named pipe;\n"
    "                           the shorter of both ends the stream\n"
    "      --threads N          frames at work at once; the processors and one by default\n"
    "      --level N            instruction-set level, 0 to the processor's\n"
    "      Pictures are made to fill the frame. Exit code: also 3 bad size, of resize too,\n"
    "      4 unknown effect, 5 short last frame (those before it are written), 6 nobody takes\n"
    "      the frames.\n",
    RunStream};

}  // namespace host
