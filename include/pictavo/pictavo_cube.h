/// @file
/// Reads .cube files, tables of colours as text, into what IPictavo::ApplyColorLut takes. Header
/// only; needs pictavo.h and the standard library. Any bytes can be given: what is not such a file
/// gets the line and the reason.
//
// std::min and std::max stand in brackets for hosts in which they are macros, of <windows.h>.
#ifndef PICTAVO_PICTAVO_CUBE_H_
#define PICTAVO_PICTAVO_CUBE_H_

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "pictavo/pictavo.h"

namespace pictavo {

/// Why a text is not a .cube file, and on which line, from 1.
class CubeFailure : public std::runtime_error {
 public:
  /// On line `at`.
  CubeFailure(std::size_t at, const std::string& why)
      : std::runtime_error("line " + std::to_string(at) + ": " + why), line(at) {}
  std::size_t line;  ///< from 1; 0 for an empty text
};

/// A table of colours that owns its entries.
struct CubeTable {
  std::string title;         ///< the file's TITLE, or nothing
  u32 size = 0;              ///< entries a side
  std::vector<u16> entries;  ///< as ColorLutParam has them

  /// For ApplyColorLut, as long as the table stays as it is.
  ColorLutParam Param(u32 intensity = 256) const { return {size, intensity, entries.data()}; }
};

/// @cond
namespace cube {

using Colour = std::array<double, 3>;  // red, green, blue

/// What a file says.
struct Contents {
  std::string title;
  Colour least = {0, 0, 0}, most = {1, 1, 1};  // the domain
  std::size_t domainLine = 0;
  u32 size = 0;
  bool isCurve = false;
  std::vector<Colour> rows;

  std::size_t RowCount() const { return isCurve ? size : std::size_t{size} * size * size; }
};

constexpr u32 kMostSide = 65, kMostOfCurve = 65536;

/// One line, taken word by word.
class Line {
 public:
  Line(std::string_view text, std::size_t number) : text_(text), number_(number) { Skip(); }

  bool IsDone() const { return text_.empty(); }
  bool IsNumber() const { return std::string_view("+-.0123456789").find(text_[0]) != text_.npos; }
  bool IsComment() const { return text_[0] == '#'; }
  std::size_t number() const { return number_; }
  [[noreturn]] void Fail(const std::string& why) const { throw CubeFailure(number_, why); }

  std::string_view Word() {
    const std::string_view word = text_.substr(0, text_.find_first_of(" \t"));
    text_.remove_prefix(word.size());
    Skip();
    return word;
  }

  double Number() {
    std::string_view word = Word();
    if (word.size() > 1 && word[0] == '+' && word[1] != '-') word.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || !std::isfinite(number))
      Fail("a number is expected");
    return number;
  }

  template <std::size_t count = 3>
  std::array<double, count> Numbers() {
    std::array<double, count> numbers;
    for (double& number : numbers) number = Number();
    End();
    return numbers;
  }

  u32 Size(u32 most) {
    const double size = Number();
    End();
    if (size < 2 || size > most || size != std::floor(size))
      Fail("a size is a whole number from 2 to " + std::to_string(most));
    return static_cast<u32>(size);
  }

  std::string Quoted() {
    const std::size_t last = text_.find_last_not_of(" \t");
    if (text_.size() < 2 || text_[0] != '"' || last == 0 || text_[last] != '"')
      Fail("a title stands in quotation marks");
    return std::string(text_.substr(1, last - 1));
  }

  void End() const {
    if (!IsDone()) Fail("there is too much on the line");
  }

 private:
  void Skip() { text_.remove_prefix((std::min)(text_.find_first_not_of(" \t"), text_.size())); }

  std::string_view text_;
  std::size_t number_;
};

inline void ReadKeyword(Line& line, Contents* contents) {
  if (!contents->rows.empty()) line.Fail("keywords come before the rows");
  const std::string_view word = line.Word();
  if (word == "TITLE") {
    contents->title = line.Quoted();
  } else if (word == "DOMAIN_MIN" || word == "DOMAIN_MAX") {
    (word == "DOMAIN_MIN" ? contents->least : contents->most) = line.Numbers();
    contents->domainLine = line.number();
  } else if (word == "LUT_1D_INPUT_RANGE" || word == "LUT_3D_INPUT_RANGE") {
    const auto [least, most] = line.Numbers<2>();
    contents->least.fill(least);
    contents->most.fill(most);
    contents->domainLine = line.number();
  } else if (word == "LUT_1D_SIZE" || word == "LUT_3D_SIZE") {
    if (contents->size != 0) line.Fail("there is a size already");
    contents->isCurve = word == "LUT_1D_SIZE";
    contents->size = line.Size(contents->isCurve ? kMostOfCurve : kMostSide);
  } else {
    std::string shown(word.substr(0, 40));
    std::replace(shown.begin(), shown.end(), '\0', '?');
    line.Fail(shown + " is no keyword");
  }
}

inline void ReadLine(Line& line, Contents* contents) {
  if (line.IsDone() || line.IsComment()) return;
  if (!line.IsNumber()) return ReadKeyword(line, contents);
  if (contents->size == 0) line.Fail("a size comes before the rows");
  if (contents->rows.size() == contents->RowCount()) line.Fail("there are too many rows");
  contents->rows.push_back(line.Numbers());
}

inline Contents ReadContents(std::string_view text) {
  Contents contents;
  std::size_t number = 0;
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  while (!text.empty()) {
    const std::size_t end = (std::min)(text.find('\n'), text.size());
    std::string_view one = text.substr(0, end);
    text.remove_prefix((std::min)(end + 1, text.size()));
    if (!one.empty() && one.back() == '\r') one.remove_suffix(1);
    Line line(one, ++number);
    ReadLine(line, &contents);
  }
  const std::size_t wanted = contents.RowCount();
  if (contents.size == 0) throw CubeFailure(number, "there is no size");
  if (contents.rows.size() < wanted) {
    throw CubeFailure(number, "the file ends after " + std::to_string(contents.rows.size()) +
                                  " of " + std::to_string(wanted) + " rows");
  }
  for (std::size_t c = 0; c < 3; ++c) {
    if (!(contents.least[c] < contents.most[c]))
      throw CubeFailure(contents.domainLine, "the domain's least is not below its most");
  }
  return contents;
}

/// What the file makes of a colour: between rows linearly, along the domain's edges beyond them.
inline Colour Look(const Contents& contents, const Colour& colour) {
  std::array<std::size_t, 3> cell;
  Colour part, sum = {0, 0, 0};
  for (std::size_t c = 0; c < 3; ++c) {
    const double width = contents.most[c] - contents.least[c];
    const double place = (std::min)((std::max)((colour[c] - contents.least[c]) / width, 0.0), 1.0);
    const double position = place * (contents.size - 1);
    cell[c] = (std::min)(static_cast<std::size_t>(position), std::size_t{contents.size} - 2);
    part[c] = position - static_cast<double>(cell[c]);
  }
  for (std::size_t corner = 0; corner < (contents.isCurve ? 2u : 8u); ++corner) {
    double weight = 1;
    std::size_t row = 0;
    for (std::size_t c = 3; c-- > 0;) {
      const std::size_t next = corner >> c & 1;
      weight *= next != 0 ? part[c] : 1 - part[c];
      row = row * contents.size + cell[c] + next;
    }
    for (std::size_t c = 0; c < 3; ++c) {
      if (contents.isCurve) {
        sum[c] += contents.rows[cell[c] + corner][c] * (corner != 0 ? part[c] : 1 - part[c]);
      } else {
        sum[c] += weight * contents.rows[row][c];
      }
    }
  }
  return sum;
}

}  // namespace cube
/// @endcond

/// Reads a .cube file's text: TITLE, DOMAIN_MIN and DOMAIN_MAX (or LUT_1D_INPUT_RANGE,
/// LUT_3D_INPUT_RANGE: two numbers for all channels), LUT_1D_SIZE of 2 to 65536 or LUT_3D_SIZE of 2
/// to 65, comments, and as many rows. What lies outside 0 … 1 is cut.
///
/// A table with a domain of 0 to 1 keeps its entries, rounded to 16 bits; with another one it is
/// interpolated at as many places of 0 to 1. Curves become a table of as many entries a side, at
/// most 65: more are interpolated at 65 places.
/// Throws CubeFailure; std::bad_alloc.
inline CubeTable ReadCube(std::string_view text) {
  const cube::Contents contents = cube::ReadContents(text);
  CubeTable table = {contents.title, (std::min)(contents.size, cube::kMostSide), {}};
  const u32 size = table.size;
  table.entries.reserve(std::size_t{4} * size * size * size);
  for (u32 i = 0; i < size * size * size; ++i) {
    const double most = size - 1;
    const cube::Colour to =
        cube::Look(contents, {i % size / most, i / size % size / most, i / size / size / most});
    for (const double c : {to[2], to[1], to[0], 0.0}) {
      table.entries.push_back(static_cast<u16>((std::min)((std::max)(c, 0.0), 1.0) * 65535 + 0.5));
    }
  }
  return table;
}

}  // namespace pictavo

#endif  // PICTAVO_PICTAVO_CUBE_H_
