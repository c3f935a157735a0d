#ifndef PICTAVO_SAMPLES_HOST_BASE_COMMAND_LINE_H_
#define PICTAVO_SAMPLES_HOST_BASE_COMMAND_LINE_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/picture.h"
#include "base/text.h"

namespace host {

using Arguments = std::vector<std::wstring>;

/// Takes a command line apart, one argument after the other. Throws UsageFailure for what is
/// missing or not what it should be; `what` names it for people.
class Parser {
 public:
  explicit Parser(const Arguments& arguments) : arguments_(arguments) {}

  bool AtEnd() const { return next_ == arguments_.size(); }
  /// Whether an option comes next, which begins with two hyphens.
  bool AtOption() const;

  std::wstring Next(const std::string& what);
  i32 Integer(const std::string& what, i64 least, i64 most);
  f32 Real(const std::string& what);
  /// The place of a name among some.
  u32 Choice(const std::string& what, const std::vector<std::string>& names);
  /// Hexadecimal digits, two a byte.
  u32 Hex(const std::string& what, size_t digits);
  /// For example 640x360.
  Size Dimensions(const std::string& what);

 private:
  const Arguments& arguments_;
  size_t next_ = 0;
};

/// An option of a command, and what takes the arguments behind it.
struct Option {
  const char* name;
  std::function<void(Parser& parser)> take;
};

// Options of the usual kinds, which put what they take into a place.

Option RealOption(const char* name, f32* number);
Option IntegerOption(const char* name, i32* number, i64 least, i64 most);
/// The place of a name among some.
Option ChoiceOption(const char* name, u32* place, const std::vector<std::string>& names);
Option SizeOption(const char* name, std::optional<Size>* size);
Option FileOption(const char* name, std::optional<std::wstring>* file);

/// The entry of that name in a table. Throws UsageFailure; `what` is an entry, for people.
template <typename Table>
const auto& FindNamed(const Table& table, const std::string& name, const char* what) {
  for (const auto& entry : table) {
    if (name == entry.name) return entry;
  }
  throw UsageFailure(Format("there is no %s \"%s\"", what, name.c_str()));
}

/// The arguments that are neither options nor theirs; the options take theirs in the order of the
/// command line.
Arguments TakeOptions(const Arguments& arguments, const std::vector<Option>& options);

/// The same for a command that takes so many files; `what` says so to people.
Arguments TakeFiles(size_t count, const char* what, const Arguments& arguments,
                    const std::vector<Option>& options);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_BASE_COMMAND_LINE_H_
