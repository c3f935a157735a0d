// .cube files: what good ones become, and what is said of others.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>

// As <windows.h> has them for a host that does not ask for less.
#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))
#include "pictavo/pictavo_cube.h"
#undef min
#undef max

namespace pictavo::test {
namespace {

const std::string kRows = "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n";

TEST(Cube, BecomesEntries) {
  const CubeTable look =
      ReadCube("\xEF\xBB\xBF# look\r\nTITLE \"A \"look\"\"\r\n\r\nLUT_3D_SIZE 2\r\n" + kRows);
  EXPECT_EQ(look.title, "A \"look\"");
  EXPECT_EQ(look.Param().size, 2u);
  EXPECT_EQ(look.entries.size(), 32u);
  EXPECT_EQ((std::vector<u16>(look.entries.begin() + 4, look.entries.begin() + 12)),
            (std::vector<u16>{0, 0, 65535, 0, 0, 65535, 0, 0}));

  // Over a domain of twice the width, white reaches the middle.
  for (const char* domain : {"DOMAIN_MAX 2 2 2", " # of all channels\nLUT_3D_INPUT_RANGE 0 2"}) {
    const CubeTable wide = ReadCube(domain + ("\nLUT_3D_SIZE 2\n" + kRows));
    EXPECT_EQ((std::vector<u16>(wide.entries.end() - 4, wide.entries.end())),
              (std::vector<u16>{32768, 32768, 32768, 0}));
  }

  // Curves: red turns round, green is cut, blue has its step between the others.
  const CubeTable curve = ReadCube("LUT_1D_SIZE 3\n+1 -1 0\n.5 1e0 .25\n\t0 2 1 \n");
  EXPECT_EQ(curve.size, 3u);
  EXPECT_EQ((std::vector<u16>(curve.entries.begin() + 13 * 4, curve.entries.begin() + 14 * 4)),
            (std::vector<u16>{16384, 65535, 32768, 0}));
  std::string fine = "LUT_1D_SIZE 129\n";
  for (int i = 0; i < 129; ++i) fine += i == 127 ? "1 0 0\n" : "0 0 0\n";
  EXPECT_EQ(ReadCube(fine).size, 65u);
}

TEST(Cube, SaysWhatIsWrongAndWhere) {
  struct Malformed {
    std::string text;
    size_t line;
    const char* why;
  };
  const Malformed files[] = {
      {"", 0, "no size"},
      {"# nothing\n", 1, "no size"},
      {kRows, 1, "a size comes before"},
      {"LUT_3D_SIZE 1\n", 1, "from 2 to 65"},
      {"LUT_3D_SIZE 66\n", 1, "from 2 to 65"},
      {"LUT_3D_SIZE 2.5\n", 1, "from 2 to 65"},
      {"LUT_3D_SIZE 1e999\n", 1, "a number"},
      {"LUT_3D_SIZE\n", 1, "a number"},
      {"LUT_1D_SIZE 65537\n", 1, "from 2 to 65536"},
      {"LUT_1D_SIZE 2\nLUT_3D_SIZE 2\n", 2, "already"},
      {"\n\nSIZE 2\n", 3, "SIZE is no keyword"},
      {"TITLE \"\nLUT_3D_SIZE 2\n", 1, "quotation"},
      {"LUT_3D_SIZE 2\n0 0\n", 2, "a number"},
      {"LUT_3D_SIZE 2\n0 0 nan\n", 2, "a number"},
      {"LUT_3D_SIZE 2\n0 0 0x\n", 2, "a number"},
      {"LUT_3D_SIZE 2\n0 0 0 0\n", 2, "too much"},
      {"LUT_3D_SIZE 2\n0 0 0\nTITLE \"x\"\n", 3, "before the rows"},
      {"LUT_3D_SIZE 2\n0 0 0\n", 2, "1 of 8 rows"},
      {"LUT_3D_SIZE 2\n" + kRows + "0 0 0\n", 10, "too many"},
      {"LUT_3D_SIZE 2\n0 0 +-1\n", 2, "a number"},
      {"DOMAIN_MIN 0 1 0\nLUT_3D_SIZE 2\n" + kRows, 1, "domain"},
      {std::string("LUT_3D_SIZE 2\n\0 0", 17), 2, "no keyword"},
  };
  for (const Malformed& file : files) {
    try {
      ReadCube(file.text);
      ADD_FAILURE() << file.text;
    } catch (const CubeFailure& failure) {
      EXPECT_EQ(failure.line, file.line) << file.text << failure.what();
      EXPECT_NE(std::string(failure.what()).find(file.why), std::string::npos) << failure.what();
    }
  }
}

}  // namespace
}  // namespace pictavo::test
