#include "base/command_line.h"

#include <algorithm>
#include <cmath>
#include <cwchar>

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

u32 Parser::Choice(const std::string& what, const std::vector<std::string>& names) {
  const std::string name = Utf8(Next("a name for " + what));
  const auto at = std::find(names.begin(), names.end(), name);
  if (at == names.end()) throw UsageFailure("there is no " + what + " \"" + name + '"');
  return static_cast<u32>(at - names.begin());
}

u32 Parser::Hex(const std::string& what, size_t digits) {
  const std::wstring text = Next(what);
  if (text.size() != digits || text.find_first_not_of(L"0123456789ABCDEFabcdef") != text.npos) {
    throw UsageFailure(Format("%s must be %zu hexadecimal digits, not \"%s\"", what.c_str(), digits,
                              Utf8(text).c_str()));
  }
  return static_cast<u32>(std::wcstoul(text.c_str(), nullptr, 16));
}

Size Parser::Dimensions(const std::string& what) {
  const std::wstring text = Next(what);
  const size_t times = std::min(text.find(L'x'), text.size());
  const Arguments sides = {text.substr(0, times), text.substr(std::min(times + 1, text.size()))};
  constexpr i64 kMost = 1 << 20;
  Parser parser(sides);
  const i32 width = parser.Integer("the width in " + what, 1, kMost);
  const i32 height = parser.Integer("the height in " + what, 1, kMost);
  if (!Fits(width, height)) {
    throw UsageFailure(
        Format("%d x %d pixels, as %s says, are too many", width, height, what.c_str()));
  }
  return {width, height};
}

Option RealOption(const char* name, f32* number) {
  return {name, [=](Parser& parser) { *number = parser.Real(name); }};
}

Option IntegerOption(const char* name, i32* number, i64 least, i64 most) {
  return {name, [=](Parser& parser) { *number = parser.Integer(name, least, most); }};
}

Option ChoiceOption(const char* name, u32* place, const std::vector<std::string>& names) {
  return {name, [=](Parser& parser) { *place = parser.Choice(name, names); }};
}

Option SizeOption(const char* name, std::optional<Size>* size) {
  return {name, [=](Parser& parser) { *size = parser.Dimensions(name); }};
}

Option FileOption(const char* name, std::optional<std::wstring>* file) {
  return {name, [=](Parser& parser) { *file = parser.Next(Format("the file after %s", name)); }};
}

Arguments TakeOptions(const Arguments& arguments, const std::vector<Option>& options) {
  Arguments others;
  Parser parser(arguments);
  while (!parser.AtEnd()) {
    const bool option = parser.AtOption();
    const std::wstring argument = parser.Next("an argument");
    if (option) {
      FindNamed(options, Utf8(argument), "option").take(parser);
    } else {
      others.push_back(argument);
    }
  }
  return others;
}

Arguments TakeFiles(size_t count, const char* what, const Arguments& arguments,
                    const std::vector<Option>& options) {
  Arguments files = TakeOptions(arguments, options);
  if (files.size() != count) throw UsageFailure(Format("%s, not %zu", what, files.size()));
  return files;
}

}  // namespace host
