#ifndef PICTAVO_TESTS_DEBUGGER_LISTENER_H_
#define PICTAVO_TESTS_DEBUGGER_LISTENER_H_

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

namespace pictavo::test {

/// Hears what is said to the debugger for as long as it lives. One at a time.
class DebuggerListener {
 public:
  DebuggerListener() : handler_(AddVectoredExceptionHandler(1, Listen)) { heard_.clear(); }
  ~DebuggerListener() { RemoveVectoredExceptionHandler(handler_); }
  DebuggerListener(const DebuggerListener&) = delete;
  DebuggerListener& operator=(const DebuggerListener&) = delete;

  const std::vector<std::string>& heard() const { return heard_; }
  std::vector<std::string> Take() { return std::exchange(heard_, {}); }

 private:
  /// Some systems pass wide text on as narrow text.
  static LONG CALLBACK Listen(EXCEPTION_POINTERS* exception) {
    constexpr DWORD kNarrow = 0x40010006, kWide = 0x4001000A;
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == kWide) {
      const std::wstring line(reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]));
      heard_.emplace_back();
      for (const wchar_t c : line) heard_.back() += static_cast<char>(c);
    } else if (record.ExceptionCode == kNarrow) {
      heard_.emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
    } else {
      return EXCEPTION_CONTINUE_SEARCH;
    }
    return EXCEPTION_CONTINUE_EXECUTION;
  }

  static inline std::vector<std::string> heard_;
  void* handler_;
};

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_DEBUGGER_LISTENER_H_
