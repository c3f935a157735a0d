// What SSE2 and SSSE3 do in several steps and SSE4.1 has an instruction for.

/// Lane by lane or bit by bit: `yes` where the mask is set, `no` where it is clear.
inline V Select(V mask, V yes, V no) { return AndNot(mask, no) | (mask & yes); }
inline F Select(F mask, F yes, F no) {
  return {_mm_or_ps(_mm_andnot_ps(mask.v, no.v), _mm_and_ps(mask.v, yes.v))};
}
inline D Select(D mask, D yes, D no) {
  return {_mm_or_pd(_mm_andnot_pd(mask.v, no.v), _mm_and_pd(mask.v, yes.v))};
}
/// `yes` where the 32-bit lane of `sign` is negative, `no` elsewhere.
inline V SelectNegative32(V sign, V yes, V no) { return Select(ShiftRightI32(sign, 31), yes, no); }

/// Per 32-bit lane, the low 16 bits of one and the high ones of the other.
inline V JoinHalves(V low, V high) { return Select(V::All32(0xFFFF0000), high, low); }

inline bool IsZero(V a) {
  return _mm_movemask_epi8(_mm_cmpeq_epi8(a.v, _mm_setzero_si128())) == 0xFFFF;
}
/// Whether every pixel's alpha is 0, or 255.
inline bool AlphasClear(V a) {
  return (_mm_movemask_epi8(_mm_cmpeq_epi8(a.v, _mm_setzero_si128())) & 0x8888) == 0x8888;
}
inline bool AlphasOpaque(V a) {
  return (_mm_movemask_epi8(_mm_cmpeq_epi8(a.v, _mm_set1_epi8(-1))) & 0x8888) == 0x8888;
}
