#ifndef PICTAVO_SAMPLES_HOST_BASE_TEXT_H_
#define PICTAVO_SAMPLES_HOST_BASE_TEXT_H_

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace host {

// Text is UTF-8 inside the program, UTF-16 where Windows takes or gives it.

std::string Utf8(std::wstring_view text);
std::wstring Utf16(std::string_view text);

#ifdef __GNUC__
#define HOST_CHECK_FORMAT [[gnu::format(gnu_printf, 1, 2)]]
#else
#define HOST_CHECK_FORMAT
#endif

/// printf into a string.
HOST_CHECK_FORMAT std::string Format(const char* format, ...);

/// What Windows says about one of its error codes or HRESULTs, or the code's number.
std::string SystemMessage(HRESULT code);

/// What keeps a command from its work, as one line for the user, and the program's exit code.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& what, int exitCode = 1)
      : std::runtime_error(what), exitCode_(exitCode) {}
  int exitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

/// The library refused a call: what it was for, the code, and modules that are missing.
Failure Refusal(const std::string& what, std::uint32_t code);

/// A misused command line.
class UsageFailure : public Failure {
 public:
  explicit UsageFailure(const std::string& what, int exitCode = 2) : Failure(what, exitCode) {}
};

/// One line on the error stream that tells how far long work is. Stays away when the work is short
/// or nobody watches.
class Progress {
 public:
  Progress();
  ~Progress() { Clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Show(const std::string& text);
  void Clear();  // before anything else is printed

 private:
  const bool watched_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  bool shown_ = false;
};

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_BASE_TEXT_H_
