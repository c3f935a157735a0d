// Sums of rows of bytes by whole weights, over V; included once for each instruction set.

/// Two rows at a time, whose bytes make pairs for a multiplication and addition in one. Each sum
/// has one pixel's channels in every 128 bits.
inline void GatherWhole(f32* dst, const Source& src, const Window& window, i64 first) {
  const F unit = F::All(window.unit);
  const V zero = V::Zero();
  i64 x = first;
  for (; x + V::kPixels <= src.width; x += V::kPixels) {
    V sums[4] = {zero, zero, zero, zero};
    for (i64 k = 0; k < window.count; k += 2) {
      const u8* const row = src.Row(window.first + k) + 4 * x;
      const V a = V::Load(row), b = V::Load(k + 1 < window.count ? row + src.pitch : row);
      u32 pair;
      std::memcpy(&pair, window.whole + k, sizeof pair);
      const V weights = V::All32(pair), low = InterleaveLow8(a, b), high = InterleaveHigh8(a, b);
      sums[0] = Add32(sums[0], DotProduct32(InterleaveLow8(low, zero), weights));
      sums[1] = Add32(sums[1], DotProduct32(InterleaveHigh8(low, zero), weights));
      sums[2] = Add32(sums[2], DotProduct32(InterleaveLow8(high, zero), weights));
      sums[3] = Add32(sums[3], DotProduct32(InterleaveHigh8(high, zero), weights));
    }
    for (i64 i = 0; i < 4; ++i) {
      StoreLanes(Bits(ToF(sums[i]) * unit),
                 [=](i64 lane) { return reinterpret_cast<u8*>(dst + 4 * (x + 4 * lane + i)); });
    }
  }
  portable::GatherWhole(dst, src, window, x);
}
