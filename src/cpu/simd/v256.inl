// Vectors of 256 bits in AVX2: the twin of v128.inl, v128_ssse3.inl and v128_sse41.inl. What is
// said there of 128 bits holds for each half here.

struct V {
  static constexpr i64 kPixels = 8;

  __m256i v;

  static V Load(const u8* p) { return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))}; }
  void Store(u8* p) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static V Zero() { return {_mm256_setzero_si256()}; }
  static V All16(u32 x) { return {_mm256_set1_epi16(static_cast<short>(x))}; }
  static V All32(u32 x) { return {_mm256_set1_epi32(static_cast<int>(x))}; }
};

inline V operator&(V a, V b) { return {_mm256_and_si256(a.v, b.v)}; }
inline V operator|(V a, V b) { return {_mm256_or_si256(a.v, b.v)}; }
inline V operator^(V a, V b) { return {_mm256_xor_si256(a.v, b.v)}; }
inline V AndNot(V mask, V a) { return {_mm256_andnot_si256(mask.v, a.v)}; }

inline V Add8(V a, V b) { return {_mm256_add_epi8(a.v, b.v)}; }
inline V Add16(V a, V b) { return {_mm256_add_epi16(a.v, b.v)}; }
inline V Add32(V a, V b) { return {_mm256_add_epi32(a.v, b.v)}; }
inline V Add64(V a, V b) { return {_mm256_add_epi64(a.v, b.v)}; }
inline V Sub16(V a, V b) { return {_mm256_sub_epi16(a.v, b.v)}; }
inline V Sub32(V a, V b) { return {_mm256_sub_epi32(a.v, b.v)}; }
inline V AddSaturatedU8(V a, V b) { return {_mm256_adds_epu8(a.v, b.v)}; }
inline V SubSaturatedU8(V a, V b) { return {_mm256_subs_epu8(a.v, b.v)}; }
inline V SubSaturatedU16(V a, V b) { return {_mm256_subs_epu16(a.v, b.v)}; }
inline V AddSaturatedI16(V a, V b) { return {_mm256_adds_epi16(a.v, b.v)}; }

inline V Mul16(V a, V b) { return {_mm256_mullo_epi16(a.v, b.v)}; }
inline V MulHighU16(V a, V b) { return {_mm256_mulhi_epu16(a.v, b.v)}; }
inline V MulHighI16(V a, V b) { return {_mm256_mulhi_epi16(a.v, b.v)}; }
inline V DotProduct16(V a, V b) { return {_mm256_maddubs_epi16(a.v, b.v)}; }
inline V DotProduct32(V a, V b) { return {_mm256_madd_epi16(a.v, b.v)}; }
inline V Mul32(V a, V b) { return {_mm256_mullo_epi32(a.v, b.v)}; }
inline V Quotient32(V a, V b) {
  return {_mm256_cvttps_epi32(_mm256_div_ps(_mm256_cvtepi32_ps(a.v), _mm256_cvtepi32_ps(b.v)))};
}
inline V SumEights(V a) { return {_mm256_sad_epu8(a.v, _mm256_setzero_si256())}; }

inline V MinU8(V a, V b) { return {_mm256_min_epu8(a.v, b.v)}; }
inline V MaxU8(V a, V b) { return {_mm256_max_epu8(a.v, b.v)}; }
inline V MinI16(V a, V b) { return {_mm256_min_epi16(a.v, b.v)}; }
inline V MaxI16(V a, V b) { return {_mm256_max_epi16(a.v, b.v)}; }
inline V MinI32(V a, V b) { return {_mm256_min_epi32(a.v, b.v)}; }
inline V MaxI32(V a, V b) { return {_mm256_max_epi32(a.v, b.v)}; }
inline V Abs16(V a) { return {_mm256_abs_epi16(a.v)}; }
inline V WithSignI16(V a, V other) { return {_mm256_sign_epi16(a.v, other.v)}; }

inline V Equal8(V a, V b) { return {_mm256_cmpeq_epi8(a.v, b.v)}; }
inline V Equal16(V a, V b) { return {_mm256_cmpeq_epi16(a.v, b.v)}; }
inline V Equal32(V a, V b) { return {_mm256_cmpeq_epi32(a.v, b.v)}; }
inline V GreaterI16(V a, V b) { return {_mm256_cmpgt_epi16(a.v, b.v)}; }
inline V GreaterI32(V a, V b) { return {_mm256_cmpgt_epi32(a.v, b.v)}; }
inline V IsNegative8(V a) { return {_mm256_cmpgt_epi8(_mm256_setzero_si256(), a.v)}; }
inline V Select(V mask, V yes, V no) { return {_mm256_blendv_epi8(no.v, yes.v, mask.v)}; }
inline bool IsZero(V a) { return _mm256_testz_si256(a.v, a.v) != 0; }
inline bool AlphasClear(V a) { return _mm256_testz_si256(a.v, V::All32(0xFF000000).v) != 0; }
inline bool AlphasOpaque(V a) { return _mm256_testc_si256(a.v, V::All32(0xFF000000).v) != 0; }

inline V ShiftLeft16(V a, int bits) { return {_mm256_slli_epi16(a.v, bits)}; }
inline V ShiftLeft32(V a, int bits) { return {_mm256_slli_epi32(a.v, bits)}; }
inline V ShiftRightU16(V a, int bits) { return {_mm256_srli_epi16(a.v, bits)}; }
inline V ShiftRightU32(V a, int bits) { return {_mm256_srli_epi32(a.v, bits)}; }
inline V ShiftRightI16(V a, int bits) { return {_mm256_srai_epi16(a.v, bits)}; }
inline V ShiftRightI32(V a, int bits) { return {_mm256_srai_epi32(a.v, bits)}; }
inline V ShiftLeft64(V a, int bits) { return {_mm256_slli_epi64(a.v, bits)}; }

inline V Index32() { return {_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)}; }
inline V Reverse(V a) {
  return {_mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0))};
}
inline V SwapPairs32(V a) { return {_mm256_shuffle_epi32(a.v, 0xB1)}; }
template <int lane>
V Repeat32(V a) {
  return {_mm256_shuffle_epi32(a.v, lane * 0x55)};
}
inline V ShuffleBytes(V a, V from) { return {_mm256_shuffle_epi8(a.v, from.v)}; }
inline V PicksOf(V pixels) { return pixels; }
inline V PermutePixels(V a, V picks) { return {_mm256_permutevar8x32_epi32(a.v, picks.v)}; }

/// Moves bytes within each pixel: `from` numbers, for each, the one that it takes; 128 gives 0.
inline V ShuffleInPixels(V a, u32 from) {
  const __m256i first =
      _mm256_broadcastsi128_si256(_mm_setr_epi32(0, 0x04040404, 0x08080808, 0x0C0C0C0C));
  return {_mm256_shuffle_epi8(a.v, _mm256_add_epi8(first, V::All32(from).v))};
}
inline V RepeatLow16(V a) { return ShuffleInPixels(a, 0x01000100); }
inline V RepeatHigh16(V a) { return ShuffleInPixels(a, 0x03020302); }
inline V SpreadLow16(V a) { return RepeatLow16(a); }
inline V RepeatAlpha16(V pixels) { return ShuffleInPixels(pixels, 0x80038003); }
inline V AlphaOnColours(V pixels) { return ShuffleInPixels(pixels, 0x80030303); }
inline V JoinHalves(V low, V high) { return {_mm256_blend_epi16(low.v, high.v, 0xAA)}; }

inline V InterleaveFirst8(V a, V b) { return {_mm256_unpacklo_epi8(a.v, b.v)}; }
inline V InterleaveSecond8(V a, V b) { return {_mm256_unpackhi_epi8(a.v, b.v)}; }
inline V InterleaveFirst16(V a, V b) { return {_mm256_unpacklo_epi16(a.v, b.v)}; }
inline V InterleaveSecond16(V a, V b) { return {_mm256_unpackhi_epi16(a.v, b.v)}; }
inline V InterleaveFirst32(V a, V b) { return {_mm256_unpacklo_epi32(a.v, b.v)}; }
inline V InterleaveSecond32(V a, V b) { return {_mm256_unpackhi_epi32(a.v, b.v)}; }
inline V InterleaveFirst64(V a, V b) { return {_mm256_unpacklo_epi64(a.v, b.v)}; }
inline V InterleaveSecond64(V a, V b) { return {_mm256_unpackhi_epi64(a.v, b.v)}; }

/// Of the whole vectors.
inline V FirstHalves(V a, V b) { return {_mm256_permute2x128_si256(a.v, b.v, 0x20)}; }
inline V SecondHalves(V a, V b) { return {_mm256_permute2x128_si256(a.v, b.v, 0x31)}; }
inline void StoreInterleaved(V first, V second, u8* p) {
  FirstHalves(first, second).Store(p);
  SecondHalves(first, second).Store(p + sizeof(V));
}

inline V LowHalves64(V a, V b) {
  return {_mm256_castps_si256(
      _mm256_shuffle_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v), 0x88))};
}
inline V HighHalves64(V a, V b) {
  return {_mm256_castps_si256(
      _mm256_shuffle_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v), 0xDD))};
}
inline V HalvesOrder32() { return {_mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7)}; }

struct PixelPairs {
  V here, right;
};
/// By loads that need no shuffle; gathers are slower than these where processors are mended against
/// spying on them.
template <i64 bytes = 1>
PixelPairs LoadPairs(const u8* p, const i32* places) {
  const auto pair = [=](int i) {
    return _mm256_broadcastsd_pd(
        _mm_load_sd(reinterpret_cast<const double*>(p + bytes * static_cast<u32>(places[i]))));
  };
  const auto four = [&](int i) {  // 0, 1, 4 and 5 from i on
    return _mm256_castpd_ps(_mm256_blend_pd(_mm256_blend_pd(pair(i), pair(i + 1), 0b0010),
                                            _mm256_blend_pd(pair(i + 4), pair(i + 5), 0b1000),
                                            0b1100));
  };
  const __m256 a = four(0), b = four(2);
  return {{_mm256_castps_si256(_mm256_shuffle_ps(a, b, 0x88))},
          {_mm256_castps_si256(_mm256_shuffle_ps(a, b, 0xDD))}};
}

inline V PackI16(V a, V b) { return {_mm256_packs_epi32(a.v, b.v)}; }
inline V PackU8(V a, V b) { return {_mm256_packus_epi16(a.v, b.v)}; }
inline V PackU8(const V (&a)[4]) { return PackU8(PackI16(a[0], a[1]), PackI16(a[2], a[3])); }
inline V JoinPairs(V a) { return {_mm256_permute4x64_epi64(a.v, 0b11'01'10'00)}; }
inline V JoinFours(V a) {
  return {_mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};
}
inline V JoinChannels(V b, V g, V r, V a) {
  const __m128i from = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  return {_mm256_shuffle_epi8(PackU8({b, g, r, a}).v, _mm256_broadcastsi128_si256(from))};
}

template <typename Address>
V LoadLanes(Address address) {
  const auto lane = [&](i64 i) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(address(i)));
  };
  return {_mm256_inserti128_si256(_mm256_castsi128_si256(lane(0)), lane(1), 1)};
}
template <typename Address>
void StoreLanes(V a, Address address) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(address(0)), _mm256_castsi256_si128(a.v));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(address(1)), _mm256_extracti128_si256(a.v, 1));
}

inline V Gather32(const u8* p, V places, V mask) {
  const auto* base = reinterpret_cast<const int*>(p);
  return {_mm256_mask_i32gather_epi32(_mm256_setzero_si256(), base, places.v, mask.v, 1)};
}
inline V Gather32(const u8* p, V places) {
  return {_mm256_i32gather_epi32(reinterpret_cast<const int*>(p), places.v, 1)};
}
struct F {
  __m256 v;

  static F All(f32 x) { return {_mm256_set1_ps(x)}; }
};
inline F operator+(F a, F b) { return {_mm256_add_ps(a.v, b.v)}; }
inline F operator-(F a, F b) { return {_mm256_sub_ps(a.v, b.v)}; }
inline F operator*(F a, F b) { return {_mm256_mul_ps(a.v, b.v)}; }
inline F operator/(F a, F b) { return {_mm256_div_ps(a.v, b.v)}; }
inline F Abs(F a) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0f), a.v)}; }
inline F Min(F a, F b) { return {_mm256_min_ps(a.v, b.v)}; }
inline F Max(F a, F b) { return {_mm256_max_ps(a.v, b.v)}; }
inline F Sqrt(F a) { return {_mm256_sqrt_ps(a.v)}; }
inline F operator<(F a, F b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }
inline F operator&(F a, F b) { return {_mm256_and_ps(a.v, b.v)}; }
inline F Select(F mask, F yes, F no) { return {_mm256_blendv_ps(no.v, yes.v, mask.v)}; }
inline bool AllSet(F mask) { return _mm256_movemask_ps(mask.v) == 0xFF; }
template <int lane>
F Repeat32(F a) {
  return {_mm256_shuffle_ps(a.v, a.v, lane * 0x55)};
}
inline V Bits(F mask) { return {_mm256_castps_si256(mask.v)}; }
inline F Singles(V bits) { return {_mm256_castsi256_ps(bits.v)}; }
inline V SelectNegative32(V sign, V yes, V no) {
  return Bits(Select(Singles(sign), Singles(yes), Singles(no)));
}
inline F ToF(V a) { return {_mm256_cvtepi32_ps(a.v)}; }
inline V Truncate(F a) { return {_mm256_cvttps_epi32(a.v)}; }

struct D {
  static constexpr i64 kLanes = 4;

  __m256d v;

  static D All(double x) { return {_mm256_set1_pd(x)}; }
};
inline D operator+(D a, D b) { return {_mm256_add_pd(a.v, b.v)}; }
inline D operator-(D a, D b) { return {_mm256_sub_pd(a.v, b.v)}; }
inline D operator*(D a, D b) { return {_mm256_mul_pd(a.v, b.v)}; }
inline D operator/(D a, D b) { return {_mm256_div_pd(a.v, b.v)}; }
inline D Abs(D a) { return {_mm256_andnot_pd(_mm256_set1_pd(-0.0), a.v)}; }
inline D Min(D a, D b) { return {_mm256_min_pd(a.v, b.v)}; }
inline D Max(D a, D b) { return {_mm256_max_pd(a.v, b.v)}; }
inline D Sqrt(D a) { return {_mm256_sqrt_pd(a.v)}; }
inline D operator<(D a, D b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LT_OQ)}; }
inline D Select(D mask, D yes, D no) { return {_mm256_blendv_pd(no.v, yes.v, mask.v)}; }
inline V Bits(D a) { return {_mm256_castpd_si256(a.v)}; }
inline D RoundToSingle(D a) { return {_mm256_cvtps_pd(_mm256_cvtpd_ps(a.v))}; }
inline D WithSign(D a, D sign) {
  const __m256d bit = _mm256_set1_pd(-0.0);
  return {_mm256_or_pd(_mm256_andnot_pd(bit, a.v), _mm256_and_pd(bit, sign.v))};
}
inline D PowerOfTwo(D n) {
  const D shifted = n + D::All(0x1p52 + 1023);
  return {_mm256_castsi256_pd(_mm256_slli_epi64(_mm256_castpd_si256(shifted.v), 52))};
}
inline D Exponent(D x) {
  const __m256i bits = _mm256_srli_epi64(_mm256_castpd_si256(x.v), 52);
  return D{_mm256_or_pd(_mm256_castsi256_pd(bits), _mm256_set1_pd(0x1p52))} - D::All(0x1p52 + 1023);
}
inline D LowToD(F a) { return {_mm256_cvtps_pd(_mm256_castps256_ps128(a.v))}; }
inline D HighToD(F a) { return {_mm256_cvtps_pd(_mm256_extractf128_ps(a.v, 1))}; }
inline F ToF(D low, D high) {
  return {_mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(low.v)),
                               _mm256_cvtpd_ps(high.v), 1)};
}
