// Nearest pixels of resize_nearest.cpp over vectors of 256 bits.

/// Picks for steps below two pixels: four destination pixels then lie within eight of the source.
/// Places in the source are kept as each four's first pixel and, per lane, what is beyond it.
inline void PickDenseRow(u8* dst, const u8* row, i64 width, i64 srcWidth, u32 step, u32 place) {
  constexpr u32 kPixels = V::kPixels, kHalf = kPixels / 2;
  const V within = Mul32(Index32() & V::All32(kHalf - 1), V::All32(step));
  const V low = V::All32(0xFFFF), advance = V::All32(kPixels * step);
  const V ofHalves = V{_mm256_setr_epi32(0, 0, 0, 0, -1, -1, -1, -1)} & V::All32(kHalf * step);
  V fractions = Add32(ofHalves, V::All32(place)) & low;
  for (; width >= V::kPixels; width -= V::kPixels, dst += kVectorBytes) {
    const i64 first = place >> 16, second = (place + kHalf * step) >> 16;
    if (second + V::kPixels > srcWidth) break;
    const V lanes = ShiftRightU32(Add32(fractions, within), 16);
    const V a = PermutePixels(V::Load(row + 4 * first), lanes);
    const V b = PermutePixels(V::Load(row + 4 * second), lanes);
    V{_mm256_blend_epi32(a.v, b.v, 0xF0)}.Store(dst);
    fractions = Add32(fractions, advance) & low;
    place += kPixels * step;
  }
  Picker rest(row, step, place);
  for (; width > 0; --width, dst += 4) {
    const u32 pixel = rest.Next();
    std::memcpy(dst, &pixel, 4);
  }
}
