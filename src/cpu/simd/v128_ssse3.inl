// What SSSE3 adds to the vocabulary.

/// Moves bytes within each 128 bits: every byte takes the one that `from` numbers, or 0 for 128.
inline V ShuffleBytes(V a, V from) { return {_mm_shuffle_epi8(a.v, from.v)}; }

/// Numbers of pixels in a vector as PermutePixels takes them, which gives the pixels there.
inline V PicksOf(V pixels) {
  const __m128i first = _mm_setr_epi32(0, 0x04040404, 0x08080808, 0x0C0C0C0C);
  return Add8(ShuffleBytes(ShiftLeft32(pixels, 2), {first}), V::All32(0x03020100));
}
inline V PermutePixels(V a, V picks) { return ShuffleBytes(a, picks); }

/// The sum of the products of the two bytes of each lane, of a unsigned, of b signed, limited.
inline V DotProduct16(V a, V b) { return {_mm_maddubs_epi16(a.v, b.v)}; }
inline V Abs16(V a) { return {_mm_abs_epi16(a.v)}; }
/// a where the other is above 0, -a where it is below, 0 where it is 0; signed.
inline V WithSignI16(V a, V other) { return {_mm_sign_epi16(a.v, other.v)}; }

// See v128_bytes_sse2.inl.
inline V RepeatAlpha16(V pixels) {
  const __m128i from = _mm_setr_epi8(3, -1, 3, -1, 7, -1, 7, -1, 11, -1, 11, -1, 15, -1, 15, -1);
  return {_mm_shuffle_epi8(pixels.v, from)};
}
inline V AlphaOnColours(V pixels) {
  const __m128i from = _mm_setr_epi8(3, 3, 3, -1, 7, 7, 7, -1, 11, 11, 11, -1, 15, 15, 15, -1);
  return {_mm_shuffle_epi8(pixels.v, from)};
}
inline V JoinChannels(V b, V g, V r, V a) {
  const __m128i from = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  return {_mm_shuffle_epi8(PackU8({b, g, r, a}).v, from)};
}
