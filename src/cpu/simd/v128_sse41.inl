// What SSE4.1 adds to the vocabulary, and what it does better: see v128_sse2.inl.

inline V Select(V mask, V yes, V no) { return {_mm_blendv_epi8(no.v, yes.v, mask.v)}; }
inline F Select(F mask, F yes, F no) { return {_mm_blendv_ps(no.v, yes.v, mask.v)}; }
inline D Select(D mask, D yes, D no) { return {_mm_blendv_pd(no.v, yes.v, mask.v)}; }
inline V SelectNegative32(V sign, V yes, V no) {
  return Bits(Select(Singles(sign), Singles(yes), Singles(no)));
}
inline V JoinHalves(V low, V high) { return {_mm_blend_epi16(low.v, high.v, 0xAA)}; }

inline bool IsZero(V a) { return _mm_testz_si128(a.v, a.v) != 0; }
inline bool AlphasClear(V a) { return _mm_testz_si128(a.v, V::All32(0xFF000000).v) != 0; }
inline bool AlphasOpaque(V a) { return _mm_testc_si128(a.v, V::All32(0xFF000000).v) != 0; }

inline V MinI32(V a, V b) { return {_mm_min_epi32(a.v, b.v)}; }
inline V MaxI32(V a, V b) { return {_mm_max_epi32(a.v, b.v)}; }
/// The low half of the product.
inline V Mul32(V a, V b) { return {_mm_mullo_epi32(a.v, b.v)}; }

/// The pixels at the places, which are bytes from p. Places whose mask is clear are not touched and
/// give 0.
inline V Gather32(const u8* p, V places, V mask) {
  alignas(16) i32 at[4], wanted[4];
  alignas(16) u32 pixels[4] = {};
  places.Store(reinterpret_cast<u8*>(at));
  mask.Store(reinterpret_cast<u8*>(wanted));
  for (size_t i = 0; i < 4; ++i) {
    if (wanted[i] != 0) std::memcpy(&pixels[i], p + at[i], 4);
  }
  return V::Load(reinterpret_cast<const u8*>(pixels));
}
inline V Gather32(const u8* p, V places) {
  const auto load = [p](i32 place) {
    i32 pixel;
    std::memcpy(&pixel, p + place, 4);
    return pixel;
  };
  return {_mm_setr_epi32(load(_mm_extract_epi32(places.v, 0)), load(_mm_extract_epi32(places.v, 1)),
                         load(_mm_extract_epi32(places.v, 2)),
                         load(_mm_extract_epi32(places.v, 3)))};
}
