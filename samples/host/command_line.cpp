#include "command_line.h"

#include <cmath>
#include <cwchar>

#include "text.h"

namespace host {

bool Parser::AtOption() const { return !AtEnd() && arguments_[next_].rfind(L"--", 0) == 0; }

std::wstring Parser::Next(const std::string& what) {
  if (AtEnd()) throw UsageFailure(what + " is missing");
  return arguments_[next_++];
}

i32 Parser::Integer(const std::string& what, i64 least, i64 most) {
  const std::wstring text = Next(what);
  wchar_t* end = nullptr;
  const i64 value = std::wcstoll(text.c_str(), &end, 10);
  if (end == text.c_str() || *end != L'\0' || value < least || value > most) {
    throw UsageFailure(Format("%s must be a whole number from %lld to %lld, not \"%s\"",
                              what.c_str(), static_cast<long long>(least),
                              static_cast<long long>(most), Utf8(text).c_str()));
  }
  return static_cast<i32>(value);
}

f32 Parser::Real(const std::string& what) {
  const std::wstring text = Next(what);
  wchar_t* end = nullptr;
  const f32 value = std::wcstof(text.c_str(), &end);
  if (end == text.c_str() || *end != L'\0' || !std::isfinite(value)) {
    throw UsageFailure(what + " must be a number, not \"" + Utf8(text) + '"');
  }
  return value;
}

u32 Parser::Hex(const std::string& what, size_t digits) {
  const std::wstring text = Next(what);
  if (text.size() != digits || text.find_first_not_of(L"0123456789ABCDEFabcdef") != text.npos) {
    throw UsageFailure(Format("%s must be %zu hexadecimal digits, not \"%s\"", what.c_str(), digits,
                              Utf8(text).c_str()));
  }
  return static_cast<u32>(std::wcstoul(text.c_str(), nullptr, 16));
}

}  // namespace host
