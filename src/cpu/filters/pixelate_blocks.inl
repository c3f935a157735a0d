// The vector sums of pixelate.cpp over V, included once for each instruction set.

/// Sums, lane by lane.
struct LaneSums {
  V colours[3] = {V::Zero(), V::Zero(), V::Zero()}, alpha = V::Zero();

  void Add(V pixels) {
    const V a = ShiftRightU32(pixels, 24);
    for (int i = 0; i < 3; ++i) colours[i] = Add32(colours[i], DotProduct32(Channel(pixels, i), a));
    alpha = Add32(alpha, a);
  }
  void AddTo(Sums* sums) const {
    i32 lanes[4][V::kPixels];
    for (size_t i = 0; i < 3; ++i) colours[i].Store(reinterpret_cast<u8*>(lanes[i]));
    alpha.Store(reinterpret_cast<u8*>(lanes[3]));
    for (size_t lane = 0; lane < V::kPixels; ++lane) {
      for (size_t i = 0; i < 3; ++i) sums->colours[i] += lanes[i][lane];
      sums->alpha += lanes[3][lane];
    }
  }
};

/// The pixels of a strip no wider than a vector and not too high for lanes; `kept` leaves out those
/// beside it.
inline void SumStrip(const u8* pixels, i64 pitch, i64 rows, V kept, Sums* sums) {
  LaneSums lanes;
  for (i64 y = 0; y < rows; ++y, pixels += pitch) {
    Prefetch(pixels, kVectorBytes);
    lanes.Add(V::Load(pixels) & kept);
  }
  lanes.AddTo(sums);
}

/// As many pixels as `readable` says may be read from the block's left edge on.
inline Sums VectorSumBlock(const Picture& block, i64 readable) {
  constexpr i64 kRows = 32768;  // times 255^2 fits a lane
  Sums sums = {};
  for (i64 y = 0; y < block.height; y += kRows) {
    const i64 rows = std::min(kRows, block.height - y);
    i64 x = 0;
    for (; x < block.width && x + V::kPixels <= readable; x += V::kPixels) {
      const V kept =
          GreaterI32(V::All32(static_cast<u32>(std::min(block.width - x, V::kPixels))), Index32());
      SumStrip(block.Row(y) + 4 * x, block.pitch, rows, kept, &sums);
    }
    if (x >= block.width) continue;
    const Sums rest = SumBlock(block.Part({x, y, block.width, y + rows}), 0);
    for (size_t i = 0; i < 3; ++i) sums.colours[i] += rest.colours[i];
    sums.alpha += rest.alpha;
  }
  return sums;
}
