// The vector rows of bounds.cpp over V, included once for each instruction set.

/// Looks where pixels lie only in blocks that reach beyond the columns known.
inline i64 VectorCountRow(const u8* row, i64 width, const Wanted& wanted, Columns* columns) {
  constexpr i64 kBlockPixels = 4 * V::kPixels;
  const u32 shift = 8 * wanted.channel;
  const V most = V::All32(~(0xFFu << shift) | wanted.threshold << shift);
  V misses = V::Zero();  // counted downwards
  i64 x = 0;
  for (; x + kBlockPixels <= width; x += kBlockPixels) {
    const u8* const pixels = row + 4 * x;
    Prefetch(pixels);
    const Block block(pixels);
    V hits = V::Zero();
    for (const V& four : block.v) {
      const V above = SubSaturatedU8(four, most);
      hits = hits | above;
      misses = Add32(misses, Equal32(above, V::Zero()));
    }
    const bool isKnown = columns->left <= x && x + kBlockPixels <= columns->right;
    if (!isKnown && !IsZero(hits)) CountPixels(row, x, x + kBlockPixels, wanted, columns);
  }
  i32 lanes[V::kPixels];
  misses.Store(reinterpret_cast<u8*>(lanes));
  i64 count = x + CountPixels(row, x, width, wanted, columns);
  for (const i32 lane : lanes) count += lane;
  return count;
}
