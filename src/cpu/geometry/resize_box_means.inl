// The means of a strip of resize_box.cpp, included once for each instruction set.

/// The means of four columns of sums for each pixel.
inline void Means(u8* dst, RowSums* sums, const BoxRow& row, const Strip& strip) {
  i64 x = 0;
  if (row.pattern.isUsable) {
    const Pattern pattern = row.pattern;  // where no store of bytes can change it
    const i64 first = row.columns.Sample(strip.x, 0) - strip.first;
    std::fill_n(sums->data() + 4 * strip.columns, 4 * 3, u16{0});
    const u8* at = reinterpret_cast<const u8*>(sums->data() + 4 * first);
    for (; x + 4 <= strip.pixels; x += 4, at += pattern.stepBytes) {
      const auto [a, b, c, d] = pattern.firstBytes;
      StoreMeansOfColumns({at + a, at + b, at + c, at + d},
                          reinterpret_cast<const u8*>(pattern.counts), dst + 4 * x);
    }
  }
  MeansOneByOne(dst, *sums, row.columns, strip, x);
}
