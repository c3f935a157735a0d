// What the benchmark and the comparison of tone and colour share.
#ifndef PICTAVO_BENCH_GRADING_DATA_H_
#define PICTAVO_BENCH_GRADING_DATA_H_

#include "bench.h"

namespace pictavo::bench {

inline constexpr LevelsParam kMidLevels = {0.0625f, 0.93f, 1.4f, 0.03f, 0.99f};

/// The bytes that levels make of each byte as blue, green and red, worked out anew; as alpha it
/// stays.
std::vector<u8> TableOfLevels4(const LevelsParam& param);

/// A look that moves every colour, as a table of so many entries a side. Made once.
const std::vector<u16>& FilmTable(u32 side);

/// The same in a .cube file in the folder for temporary files; returns its path.
std::string FilmFile(u32 side);

/// A picture of slopes with a little grain: neighbours have neighbouring colours. Made once.
const Bytes& Film(const Size& size);

/// Maps a row of packed pictures.
void MapRow(i32 level, u8* dst, const u8* src, const Size& size, i64 y, const ColorLutParam& param);

}  // namespace pictavo::bench

#endif  // PICTAVO_BENCH_GRADING_DATA_H_
