// Rows in whole numbers, over V; included once for each instruction set.

#include "cpu/filters/gauss_finish.inl"

inline bool IsOpaqueRow(const u8* row, i64 width) {
  i64 x = 0;
  for (; x + 4 * V::kPixels <= width; x += 4 * V::kPixels) {
    Prefetch(row + 4 * x);
    if (!Block(row + 4 * x).AllOpaque()) return false;
  }
  return portable::IsOpaqueRow(row + 4 * x, width - x);
}

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
      const V weights = V::All32(pair), low = InterleaveFirst8(a, b),
              high = InterleaveSecond8(a, b);
      sums[0] = Add32(sums[0], DotProduct32(InterleaveFirst8(low, zero), weights));
      sums[1] = Add32(sums[1], DotProduct32(InterleaveSecond8(low, zero), weights));
      sums[2] = Add32(sums[2], DotProduct32(InterleaveFirst8(high, zero), weights));
      sums[3] = Add32(sums[3], DotProduct32(InterleaveSecond8(high, zero), weights));
    }
    for (i64 i = 0; i < 4; ++i) {
      StoreLanes(Bits(ToF(sums[i]) * unit),
                 [=](i64 lane) { return reinterpret_cast<u8*>(dst + 4 * (x + 4 * lane + i)); });
    }
  }
  portable::GatherWhole(dst, src, window, x);
}

inline void ToWords(int16_t* dst, const f32* src, i64 first, i64 end) {
  const F unit = F::All(1 << kWordBits), half = F::All(0.5f);
  const auto at = [=](i64 i) { return Truncate(LoadF(src + i) * unit + half); };
  i64 i = first;
  for (; i + 2 * V::kPixels <= end; i += 2 * V::kPixels)
    JoinPairs(PackI16(at(i), at(i + V::kPixels))).Store(reinterpret_cast<u8*>(dst + i));
  portable::ToWords(dst, src, i, end);
}

inline void JoinRows(f32* dst, const FourRows& rows, i64 first, i64 end) {
  i64 x = first;
  for (; x + V::kPixels <= end; x += V::kPixels) {
    V four[4];
    for (i64 i = 0; i < 4; ++i) four[i] = V::Load(reinterpret_cast<const u8*>(rows[i] + x));
    Transpose32(four);
    for (i64 i = 0; i < 4; ++i)
      StoreLanes(four[i],
                 [=](i64 lane) { return reinterpret_cast<u8*>(dst + 4 * (x + 4 * lane + i)); });
  }
  portable::JoinRows(dst, rows, x, end);
}

inline void PartRows(const FourRows& rows, const f32* src, i64 first, i64 end) {
  i64 x = first;
  for (; x + V::kPixels <= end; x += V::kPixels) {
    V four[4];
    for (i64 i = 0; i < 4; ++i)
      four[i] = LoadLanes(
          [=](i64 lane) { return reinterpret_cast<const u8*>(src + 4 * (x + 4 * lane + i)); });
    Transpose32(four);
    for (i64 i = 0; i < 4; ++i) four[i].Store(reinterpret_cast<u8*>(rows[i] + x));
  }
  portable::PartRows(rows, src, x, end);
}

template <bool sharpens>
void FinishWords(u8* dst, const WordTaps& src, i64 first, i64 end, const Finish& finish) {
  const Finisher<sharpens, kWordBits> finisher(finish);
  i64 i = first;
  for (; i + kVectorBytes <= end; i += kVectorBytes) {
    const V here[] = {LoadWords(src.middle + i), LoadWords(src.middle + i + kVectorBytes / 2)};
    V sums[] = {here[0], here[1]};
    for (i64 k = 0; k < src.count; ++k) {
      const V weight = V::All32(src.taps[k].weight);
      const int16_t* const row = src.taps[k].row + i;
      for (i64 h = 0; h < 2; ++h) {
        const V more = Sub16(LoadWords(row + h * kVectorBytes / 2), here[h]);
        sums[h] = Add16(sums[h], MulRounded16(more, weight));
      }
    }
    finisher.Store(sums, dst + i);
  }
  portable::FinishWords<sharpens>(dst, src, i, end, finish);
}
