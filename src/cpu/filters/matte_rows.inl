// The vector rows of matte.cpp over V, included once for each instruction set.

/// Sixteen pixels of four vectors' bytes, in their order: byte i of 128 bits is pixel i.
inline V AlphasAt(const u8* pixels) {
  V four[4];
  for (i64 i = 0; i < 4; ++i) {
    four[i] = LoadLanes([=](i64 lane) { return pixels + 64 * lane + 16 * i; });
    four[i] = ShiftRightU32(four[i], 24);
  }
  return PackU8(four);
}

/// Asks for what is read later: rows of a strip are too short for the processor to see where they
/// lead. An address outside the picture is no fault.
inline void TakeAlphas(u8* plane, const u8* pixels, i64 width, u8 flip, const u8* next) {
  const V flips = V::All16(flip * 0x0101u);
  i64 x = 0;
  for (; x + kVectorBytes <= width; x += kVectorBytes) {
    for (i64 at = 4 * x; at < 4 * (x + kVectorBytes); at += 64)
      _mm_prefetch(reinterpret_cast<const char*>(next) + at, _MM_HINT_T0);
    (AlphasAt(pixels + 4 * x) ^ flips).Store(plane + x);
  }
  cpu::TakeAlphas(plane + x, pixels + 4 * x, width - x, flip, next);
}

inline void PutAlphas(u8* pixels, const u8* plane, i64 width, u8 flip) {
  alignas(32) static constexpr u32 kPlaces[] = {0x00808080, 0x01808080, 0x02808080, 0x03808080,
                                                0x04808080, 0x05808080, 0x06808080, 0x07808080};
  const V places = V::Load(reinterpret_cast<const u8*>(kPlaces));
  const V flips = V::All32(u32{flip} << 24), colours = V::All32(kColours);
  ForVectors<4, 1>(pixels, plane, width, [=](u8* d, const u8* s) {
    const V alphas = ShuffleBytes(SpreadBytes(s), places) ^ flips;
    ((V::Load(d) & colours) | alphas).Store(d);
  });
}

inline void PutBytes(u8* dst, const u8* plane, i64 count, u8 flip) {
  const V flips = V::All16(flip * 0x0101u);
  i64 i = 0;
  for (; i + kVectorBytes <= count; i += kVectorBytes) (V::Load(plane + i) ^ flips).Store(dst + i);
  cpu::PutBytes(dst + i, plane + i, count - i, flip);
}

inline void TakeLeast(u8* dst, const u8* a, const u8* b, i64 count) {
  i64 i = 0;
  for (; i + kVectorBytes <= count; i += kVectorBytes)
    MinU8(V::Load(a + i), V::Load(b + i)).Store(dst + i);
  cpu::TakeLeast(dst + i, a + i, b + i, count - i);
}

constexpr ChokeRows kChokeRows = {TakeAlphas, PutAlphas, PutBytes, TakeLeast};
