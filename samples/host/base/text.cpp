#include "base/text.h"

#include <io.h>

#include <cstdarg>
#include <cstdio>

#include "pictavo/pictavo_host.h"

namespace host {

std::string Utf8(std::wstring_view text) {
  const int length = static_cast<int>(text.size());
  std::string utf8(static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr,
                                                           0, nullptr, nullptr)),
                   '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), static_cast<int>(utf8.size()),
                      nullptr, nullptr);
  return utf8;
}

std::wstring Utf16(std::string_view text) {
  const int length = static_cast<int>(text.size());
  std::wstring utf16(
      static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, utf16.data(),
                      static_cast<int>(utf16.size()));
  return utf16;
}

std::string Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, again)), '\0');
  va_end(again);
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  va_end(arguments);
  return text;
}

std::string SystemMessage(HRESULT code) {
  wchar_t message[512];
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, static_cast<DWORD>(code), 0, message, static_cast<DWORD>(std::size(message)),
      nullptr);
  std::wstring_view text(message, length);
  while (!text.empty() && (text.back() == L' ' || text.back() == L'.')) text.remove_suffix(1);
  return text.empty() ? Format("error 0x%08lX", static_cast<unsigned long>(code)) : Utf8(text);
}

Failure Refusal(const std::string& what, std::uint32_t code) {
  std::string message = Format("the library refused %s with 0x%08X", what.c_str(), code);
  const char* before = "; missing beside the library: ";
  for (const wchar_t* file : pictavo::kModuleFiles) {
    if (GetModuleHandleW(file) != nullptr) continue;
    message += before + Utf8(file);
    before = ", ";
  }
  return Failure(message);
}

Progress::Progress() : watched_(_isatty(_fileno(stderr)) != 0) {}

void Progress::Show(const std::string& text) {
  if (!watched_ || std::chrono::steady_clock::now() - start_ < std::chrono::milliseconds(400))
    return;
  std::fprintf(stderr, "\r%-70s", text.c_str());
  std::fflush(stderr);
  shown_ = true;
}

void Progress::Clear() {
  if (shown_) std::fprintf(stderr, "\r%-70s\r", "");
  std::fflush(stderr);
  shown_ = false;
}

}  // namespace host
