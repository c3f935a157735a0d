#include "grading_data.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "cpu/colour/grading.h"

namespace pictavo::bench {
namespace {

/// Red, green and blue of an entry, 0 … 1.
std::array<double, 3> FilmColour(double r, double g, double b) {
  const double luma = 0.2126 * r + 0.7152 * g + 0.0722 * b;
  const auto tone = [luma](double c, double warmth) {
    const double mixed = std::clamp(luma + 1.25 * (c - luma) + warmth * (luma - 0.5), 0.0, 1.0);
    return mixed * mixed * (3 - 2 * mixed);
  };
  return {tone(r, 0.12), tone(g, 0.02), tone(b, -0.1)};
}

/// Calls use(r, g, b) for every entry, red fastest.
template <typename Use>
void ForEntries(u32 side, Use use) {
  const double most = side - 1;
  for (u32 b = 0; b < side; ++b)
    for (u32 g = 0; g < side; ++g)
      for (u32 r = 0; r < side; ++r) use(FilmColour(r / most, g / most, b / most));
}

}  // namespace

std::vector<u8> TableOfLevels4(const LevelsParam& p) {
  std::vector<u8> table;
  for (int v = 0; v < 256; ++v) {
    const double range = double{p.whiteIn} - double{p.blackIn};
    const double t = std::clamp((v / 255.0 - double{p.blackIn}) / range, 0.0, 1.0);
    const double power = std::pow(t, 1 / double{p.gamma});
    const double to = 255 * (p.blackOut + power * (double{p.whiteOut} - double{p.blackOut}));
    table.insert(table.end(), 3, static_cast<u8>(std::floor(to + 0.5)));
    table.push_back(static_cast<u8>(v));
  }
  return table;
}

const std::vector<u16>& FilmTable(u32 side) {
  static std::map<u32, std::vector<u16>> made;
  std::vector<u16>& entries = made[side];
  if (!entries.empty()) return entries;
  ForEntries(side, [&](const std::array<double, 3>& rgb) {
    for (const double c : {rgb[2], rgb[1], rgb[0], 0.0})
      entries.push_back(static_cast<u16>(std::lround(65535 * c)));
  });
  return entries;
}

std::string FilmFile(u32 side) {
  const auto path =
      std::filesystem::temp_directory_path() / ("pictavo_film_" + std::to_string(side) + ".cube");
  const std::string own = path.string() + "." + std::to_string(getpid());
  std::ofstream file(own);
  file << "LUT_3D_SIZE " << side << '\n';
  ForEntries(side, [&](const std::array<double, 3>& rgb) {
    file << rgb[0] << ' ' << rgb[1] << ' ' << rgb[2] << '\n';
  });
  file.close();
  std::filesystem::rename(own, path);  // other runs at the same time never see a part of it
  return path.string();
}

const Bytes& Film(const Size& size) {
  static std::map<std::string, Bytes> made;
  Bytes& picture = made[size.name()];
  if (!picture.empty()) return picture;
  std::mt19937 random(3);
  for (i32 y = 0; y < size.height; ++y) {
    for (i32 x = 0; x < size.width; ++x) {
      for (int channel = 0; channel < 3; ++channel) {
        const double wave = std::sin(x * 0.004 * (channel + 1)) * std::cos(y * 0.005 + channel);
        picture.push_back(static_cast<u8>(std::lround(124 + 118 * wave) + random() % 8));
      }
      picture.push_back(255);
    }
  }
  return picture;
}

void MapRow(i32 level, u8* dst, const u8* src, const Size& size, i64 y,
            const ColorLutParam& param) {
  const Size row = {size.width, 1};
  const ImageDesc from = RecordOf(row, src + 4 * y * size.width);
  ImageDesc to = RecordOf(row, dst + 4 * y * size.width);
  cpu::ApplyColorLut(level, &from, &to, &param);
}

}  // namespace pictavo::bench
