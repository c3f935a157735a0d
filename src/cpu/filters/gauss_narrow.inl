// The vector rows of gauss_narrow.cpp over V, included once for each instruction set.

#include "cpu/filters/gauss_finish.inl"

/// What neighbours differ by counts, so that what is even stays so to the last bit.
inline void SumDown(int16_t* dst, const Neighbours& rows, const Taps& taps, i64 first, i64 end) {
  const V scale = V::All16(0x4040);
  i64 i = first;
  for (; i + kVectorBytes <= end; i += kVectorBytes) {
    const V here = V::Load(rows[0] + i);
    const V twiceLow = DotProduct16(InterleaveFirst8(here, here), scale);
    const V twiceHigh = DotProduct16(InterleaveSecond8(here, here), scale);
    V low = ShiftRightU16(twiceLow, 1), high = ShiftRightU16(twiceHigh, 1);
    for (i64 k = 1; k <= taps.reach; ++k) {
      const V a = V::Load(rows[2 * k] + i), b = V::Load(rows[2 * k + 1] + i);
      const V weight = V::All32(taps.weights[k]);
      const V moreLow = Sub16(DotProduct16(InterleaveFirst8(a, b), scale), twiceLow);
      const V moreHigh = Sub16(DotProduct16(InterleaveSecond8(a, b), scale), twiceHigh);
      low = Add16(low, MulRounded16(moreLow, weight));
      high = Add16(high, MulRounded16(moreHigh, weight));
    }
    StoreInterleaved(low, high, reinterpret_cast<u8*>(dst + i));
  }
  portable::SumDown(dst, rows, taps, i, end);
}

template <bool sharpens>
void FinishRow(u8* dst, const int16_t* src, const Taps& taps, i64 step, i64 count,
               const Finish& finish) {
  const Finisher<sharpens, kSumBits> finisher(finish);
  i64 i = 0;
  for (; i + kVectorBytes <= count; i += kVectorBytes) {
    V here[2], sums[2];
    for (i64 h = 0; h < 2; ++h) here[h] = sums[h] = LoadWords(src + i + h * kVectorBytes / 2);
    for (i64 k = 1; k <= taps.reach; ++k) {
      const V weight = V::All32(taps.weights[k]);
      for (i64 h = 0; h < 2; ++h) {
        const int16_t* const p = src + i + h * kVectorBytes / 2;
        const V both = Add16(LoadWords(p - k * step), LoadWords(p + k * step));
        const V more = Sub16(both, Add16(here[h], here[h]));
        sums[h] = Add16(sums[h], MulRounded16(more, weight));
      }
    }
    finisher.Store(sums, dst + i);
  }
  portable::FinishBytes<sharpens>(dst, src, taps, step, i, count, finish);
}

constexpr NarrowKernels kKernels = {SumDown, {FinishRow<false>, FinishRow<true>}};
