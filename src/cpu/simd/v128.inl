// Vectors of 128 bits in SSE2: the vocabulary that every instruction set shares. avx2.h has the
// 256-bit twin, the same names with the same meaning, so that a kernel is written once over V, F
// and D. Here stand primitives only; what serves one family lives with the family.
//
// A number in a name is the width of the lanes, with I where they are signed and U where they are
// unsigned, if that matters. A mask has all bits of a lane set or none.

/// Four 32-bit pixels, or as many lanes as their widths allow.
struct V {
  static constexpr i64 kPixels = 4;

  __m128i v;

  static V Load(const u8* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
  void Store(u8* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static V Zero() { return {_mm_setzero_si128()}; }
  static V All16(u32 x) { return {_mm_set1_epi16(static_cast<short>(x))}; }
  static V All32(u32 x) { return {_mm_set1_epi32(static_cast<int>(x))}; }
};

inline V operator&(V a, V b) { return {_mm_and_si128(a.v, b.v)}; }
inline V operator|(V a, V b) { return {_mm_or_si128(a.v, b.v)}; }
inline V operator^(V a, V b) { return {_mm_xor_si128(a.v, b.v)}; }
/// a where the mask is clear, 0 where it is set.
inline V AndNot(V mask, V a) { return {_mm_andnot_si128(mask.v, a.v)}; }

inline V Add8(V a, V b) { return {_mm_add_epi8(a.v, b.v)}; }
inline V Add16(V a, V b) { return {_mm_add_epi16(a.v, b.v)}; }
inline V Add32(V a, V b) { return {_mm_add_epi32(a.v, b.v)}; }
inline V Add64(V a, V b) { return {_mm_add_epi64(a.v, b.v)}; }
inline V Sub16(V a, V b) { return {_mm_sub_epi16(a.v, b.v)}; }
inline V Sub32(V a, V b) { return {_mm_sub_epi32(a.v, b.v)}; }
inline V AddSaturatedU8(V a, V b) { return {_mm_adds_epu8(a.v, b.v)}; }
inline V SubSaturatedU8(V a, V b) { return {_mm_subs_epu8(a.v, b.v)}; }
inline V SubSaturatedU16(V a, V b) { return {_mm_subs_epu16(a.v, b.v)}; }
inline V AddSaturatedI16(V a, V b) { return {_mm_adds_epi16(a.v, b.v)}; }

/// The low half of the product, and the high half of the unsigned and of the signed one.
inline V Mul16(V a, V b) { return {_mm_mullo_epi16(a.v, b.v)}; }
inline V MulHighU16(V a, V b) { return {_mm_mulhi_epu16(a.v, b.v)}; }
inline V MulHighI16(V a, V b) { return {_mm_mulhi_epi16(a.v, b.v)}; }
/// The sum of the signed products of the two 16-bit halves of each lane.
inline V DotProduct32(V a, V b) { return {_mm_madd_epi16(a.v, b.v)}; }
/// a / b, rounded towards zero; exact for a below 2^24 and b from 1 to 2^16.
inline V Quotient32(V a, V b) {
  return {_mm_cvttps_epi32(_mm_div_ps(_mm_cvtepi32_ps(a.v), _mm_cvtepi32_ps(b.v)))};
}
/// The sum of each eight bytes, as a 64-bit lane.
inline V SumEights(V a) { return {_mm_sad_epu8(a.v, _mm_setzero_si128())}; }

inline V MinU8(V a, V b) { return {_mm_min_epu8(a.v, b.v)}; }
inline V MaxU8(V a, V b) { return {_mm_max_epu8(a.v, b.v)}; }
inline V MinI16(V a, V b) { return {_mm_min_epi16(a.v, b.v)}; }
inline V MaxI16(V a, V b) { return {_mm_max_epi16(a.v, b.v)}; }

// Masks.
inline V Equal8(V a, V b) { return {_mm_cmpeq_epi8(a.v, b.v)}; }
inline V Equal16(V a, V b) { return {_mm_cmpeq_epi16(a.v, b.v)}; }
inline V Equal32(V a, V b) { return {_mm_cmpeq_epi32(a.v, b.v)}; }
inline V GreaterI16(V a, V b) { return {_mm_cmpgt_epi16(a.v, b.v)}; }
inline V GreaterI32(V a, V b) { return {_mm_cmpgt_epi32(a.v, b.v)}; }
inline V IsNegative8(V a) { return {_mm_cmpgt_epi8(_mm_setzero_si128(), a.v)}; }

inline V ShiftLeft16(V a, int bits) { return {_mm_slli_epi16(a.v, bits)}; }
inline V ShiftLeft32(V a, int bits) { return {_mm_slli_epi32(a.v, bits)}; }
inline V ShiftRightU16(V a, int bits) { return {_mm_srli_epi16(a.v, bits)}; }
inline V ShiftRightU32(V a, int bits) { return {_mm_srli_epi32(a.v, bits)}; }
inline V ShiftRightI16(V a, int bits) { return {_mm_srai_epi16(a.v, bits)}; }
inline V ShiftRightI32(V a, int bits) { return {_mm_srai_epi32(a.v, bits)}; }
inline V ShiftLeft64(V a, int bits) { return {_mm_slli_epi64(a.v, bits)}; }

inline V Index32() { return {_mm_setr_epi32(0, 1, 2, 3)}; }
/// The 32-bit lanes from the last to the first.
inline V Reverse(V a) { return {_mm_shuffle_epi32(a.v, 0x1B)}; }
/// Swaps lanes 0 and 1, 2 and 3, …
inline V SwapPairs32(V a) { return {_mm_shuffle_epi32(a.v, 0xB1)}; }

/// One 32-bit lane of each 128 bits in all four.
template <int lane>
V Repeat32(V a) {
  return {_mm_shuffle_epi32(a.v, lane * 0x55)};
}

/// The low, or the high, 16 bits of each 32-bit lane in both its halves.
inline V RepeatLow16(V a) {
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0b10'10'00'00), 0b10'10'00'00)};
}
inline V RepeatHigh16(V a) {
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0b11'11'01'01), 0b11'11'01'01)};
}
/// RepeatLow16 of lanes whose high half is 0.
inline V SpreadLow16(V a) { return a | ShiftLeft32(a, 16); }

/// The lanes of a and b in turn: those of the first, or the second, 64 bits of each 128.
inline V InterleaveFirst8(V a, V b) { return {_mm_unpacklo_epi8(a.v, b.v)}; }
inline V InterleaveSecond8(V a, V b) { return {_mm_unpackhi_epi8(a.v, b.v)}; }
inline V InterleaveFirst16(V a, V b) { return {_mm_unpacklo_epi16(a.v, b.v)}; }
inline V InterleaveSecond16(V a, V b) { return {_mm_unpackhi_epi16(a.v, b.v)}; }
inline V InterleaveFirst32(V a, V b) { return {_mm_unpacklo_epi32(a.v, b.v)}; }
inline V InterleaveSecond32(V a, V b) { return {_mm_unpackhi_epi32(a.v, b.v)}; }
inline V InterleaveFirst64(V a, V b) { return {_mm_unpacklo_epi64(a.v, b.v)}; }
inline V InterleaveSecond64(V a, V b) { return {_mm_unpackhi_epi64(a.v, b.v)}; }
/// Stores what interleaving made, first and second, in the order of the lanes.
inline void StoreInterleaved(V first, V second, u8* p) {
  first.Store(p);
  second.Store(p + sizeof(V));
}

/// The first halves of a and b, and their second halves.
inline V FirstHalves(V a, V b) { return {_mm_unpacklo_epi64(a.v, b.v)}; }
inline V SecondHalves(V a, V b) { return {_mm_unpackhi_epi64(a.v, b.v)}; }

/// The low, or the high, 32 bits of 64-bit lanes: of the first two of a, of the first two of b, and
/// so on.
inline V LowHalves64(V a, V b) {
  return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.v), _mm_castsi128_ps(b.v), 0x88))};
}
inline V HighHalves64(V a, V b) {
  return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.v), _mm_castsi128_ps(b.v), 0xDD))};
}

/// The numbers that two vectors of 64-bit lanes, one after the other, have in their lanes when
/// LowHalves64 makes 0, 1, 2, … of them.
inline V HalvesOrder32() { return Index32(); }

/// One pixel at each of so many places, which are so many bytes each from p and not negative, and
/// the pixels right of them.
struct PixelPairs {
  V here, right;
};
template <i64 bytes = 1>
PixelPairs LoadPairs(const u8* p, const i32* places) {
  const auto pair = [=](int i) {
    return reinterpret_cast<const double*>(p + bytes * static_cast<u32>(places[i]));
  };
  const auto two = [&](int i) {
    return V{_mm_castpd_si128(_mm_loadh_pd(_mm_load_sd(pair(i)), pair(i + 1)))};
  };
  const V a = two(0), b = two(2);
  return {LowHalves64(a, b), HighHalves64(a, b)};
}

/// The signed lanes of a, then those of b, in half their width; what does not fit is limited. Of
/// longer vectors, 128 bits of each in turn.
inline V PackI16(V a, V b) { return {_mm_packs_epi32(a.v, b.v)}; }
inline V PackU8(V a, V b) { return {_mm_packus_epi16(a.v, b.v)}; }
/// The same of four vectors of 32-bit lanes.
inline V PackU8(const V (&a)[4]) { return PackU8(PackI16(a[0], a[1]), PackI16(a[2], a[3])); }
/// What two vectors, or four, were packed into, in the order of their lanes. JoinPairs is its own
/// inverse.
inline V JoinPairs(V a) { return a; }
inline V JoinFours(V a) { return a; }

/// 128 bits from, or to, the address that `address` gives for each number of them.
template <typename Address>
V LoadLanes(Address address) {
  return V::Load(address(0));
}
template <typename Address>
void StoreLanes(V a, Address address) {
  a.Store(address(0));
}

/// As many singles as a V has pixels.
struct F {
  __m128 v;

  static F All(f32 x) { return {_mm_set1_ps(x)}; }
};
inline F operator+(F a, F b) { return {_mm_add_ps(a.v, b.v)}; }
inline F operator-(F a, F b) { return {_mm_sub_ps(a.v, b.v)}; }
inline F operator*(F a, F b) { return {_mm_mul_ps(a.v, b.v)}; }
inline F operator/(F a, F b) { return {_mm_div_ps(a.v, b.v)}; }
inline F Abs(F a) { return {_mm_andnot_ps(_mm_set1_ps(-0.0f), a.v)}; }
/// a < b ? a : b, and a > b ? a : b; so b for what is not a number.
inline F Min(F a, F b) { return {_mm_min_ps(a.v, b.v)}; }
inline F Max(F a, F b) { return {_mm_max_ps(a.v, b.v)}; }
inline F Sqrt(F a) { return {_mm_sqrt_ps(a.v)}; }
/// A mask, as are the first arguments of Select and those of AllSet and Bits.
inline F operator<(F a, F b) { return {_mm_cmplt_ps(a.v, b.v)}; }
inline F operator&(F a, F b) { return {_mm_and_ps(a.v, b.v)}; }
inline bool AllSet(F mask) { return _mm_movemask_ps(mask.v) == 0xF; }
template <int lane>
F Repeat32(F a) {
  return {_mm_shuffle_ps(a.v, a.v, lane * 0x55)};
}
inline V Bits(F mask) { return {_mm_castps_si128(mask.v)}; }
inline F Singles(V bits) { return {_mm_castsi128_ps(bits.v)}; }
inline F ToF(V a) { return {_mm_cvtepi32_ps(a.v)}; }
/// Towards zero; the most negative integer for what does not fit.
inline V Truncate(F a) { return {_mm_cvttps_epi32(a.v)}; }

/// Half as many doubles.
struct D {
  static constexpr i64 kLanes = 2;

  __m128d v;

  static D All(double x) { return {_mm_set1_pd(x)}; }
};
inline D operator+(D a, D b) { return {_mm_add_pd(a.v, b.v)}; }
inline D operator-(D a, D b) { return {_mm_sub_pd(a.v, b.v)}; }
inline D operator*(D a, D b) { return {_mm_mul_pd(a.v, b.v)}; }
inline D operator/(D a, D b) { return {_mm_div_pd(a.v, b.v)}; }
inline D Abs(D a) { return {_mm_andnot_pd(_mm_set1_pd(-0.0), a.v)}; }
inline D Min(D a, D b) { return {_mm_min_pd(a.v, b.v)}; }
inline D Max(D a, D b) { return {_mm_max_pd(a.v, b.v)}; }
inline D Sqrt(D a) { return {_mm_sqrt_pd(a.v)}; }
inline D operator<(D a, D b) { return {_mm_cmplt_pd(a.v, b.v)}; }
inline V Bits(D a) { return {_mm_castpd_si128(a.v)}; }
inline D RoundToSingle(D a) { return {_mm_cvtps_pd(_mm_cvtpd_ps(a.v))}; }
/// The magnitude of one and the sign of the other.
inline D WithSign(D a, D sign) {
  const __m128d bit = _mm_set1_pd(-0.0);
  return {_mm_or_pd(_mm_andnot_pd(bit, a.v), _mm_and_pd(bit, sign.v))};
}
/// 2^n of a whole n from -1022 to 1023, and the n whose 2^n is next below an x above 0.
inline D PowerOfTwo(D n) {
  const D shifted = n + D::All(0x1p52 + 1023);
  return {_mm_castsi128_pd(_mm_slli_epi64(_mm_castpd_si128(shifted.v), 52))};
}
inline D Exponent(D x) {
  const __m128i bits = _mm_srli_epi64(_mm_castpd_si128(x.v), 52);
  return D{_mm_or_pd(_mm_castsi128_pd(bits), _mm_set1_pd(0x1p52))} - D::All(0x1p52 + 1023);
}
inline D LowToD(F a) { return {_mm_cvtps_pd(a.v)}; }
inline D HighToD(F a) { return {_mm_cvtps_pd(_mm_movehl_ps(a.v, a.v))}; }
inline F ToF(D low, D high) { return {_mm_movelh_ps(_mm_cvtpd_ps(low.v), _mm_cvtpd_ps(high.v))}; }
