// The vector rows of flip.cpp over V, included once for each instruction set.

inline void MirrorRow(u8* dst, const u8* src, i64 width) {
  for (; width >= V::kPixels; width -= V::kPixels, dst += kVectorBytes) {
    const u8* const from = src + 4 * width - kVectorBytes;
    Reverse(V::Load(from)).Store(dst);
  }
  ::pictavo::cpu::MirrorRow(dst, src, width);
}

inline void MirrorOwnRow(u8* row, const u8*, i64 width) {
  for (; width >= 2 * V::kPixels; width -= 2 * V::kPixels, row += kVectorBytes) {
    u8* const other = row + 4 * width - kVectorBytes;
    const V left = V::Load(row), right = V::Load(other);
    Reverse(right).Store(row);
    Reverse(left).Store(other);
  }
  ::pictavo::cpu::MirrorOwnRow(row, row, width);
}
