// Moving bytes about without SSSE3's shuffle.

/// Each pixel's alpha in both its 16-bit halves.
inline V RepeatAlpha16(V pixels) {
  const V alphas = ShiftRightU32(pixels, 24);
  return alphas | ShiftLeft32(alphas, 16);
}

/// Each pixel's alpha in its three colours' bytes, and 0 in its own.
inline V AlphaOnColours(V pixels) {
  const V halves = RepeatAlpha16(pixels);
  return halves | (ShiftLeft16(halves, 8) & V::All32(0xFFFF));
}

/// Pixels of channels that are given one a lane; what does not fit a byte is limited to it.
inline V JoinChannels(V b, V g, V r, V a) {
  const __m128i bytes = PackU8({b, g, r, a}).v;
  const __m128i br = _mm_unpacklo_epi8(bytes, _mm_srli_si128(bytes, 8));
  return {_mm_unpacklo_epi8(br, _mm_srli_si128(br, 8))};
}
