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

inline void TakeAlphas(u8* plane, const u8* pixels, i64 width, u8 flip) {
  const V flips = V::All16(flip * 0x0101u);
  i64 x = 0;
  for (; x + kVectorBytes <= width; x += kVectorBytes) {
    Prefetch(pixels + 4 * x);
    (AlphasAt(pixels + 4 * x) ^ flips).Store(plane + x);
  }
  cpu::TakeAlphas(plane + x, pixels + 4 * x, width - x, flip);
}

inline void PutAlphas(u8* pixels, const u8* plane, i64 width, u8 flip) {
  alignas(16) static constexpr u32 kPlaces[] = {0x00808080, 0x01808080, 0x02808080, 0x03808080};
  const V flips = V::All16(flip * 0x0101u), colours = V::All32(kColours), next = V::All32(4u << 24);
  const V first = LoadLanes([](i64) { return reinterpret_cast<const u8*>(kPlaces); });
  i64 x = 0;
  for (; x + kVectorBytes <= width; x += kVectorBytes) {
    Prefetch(pixels + 4 * x);
    const V alphas = V::Load(plane + x) ^ flips;
    V places = first;
    for (i64 i = 0; i < 4; ++i, places = Add8(places, next)) {
      const auto at = [=](i64 lane) { return pixels + 4 * x + 64 * lane + 16 * i; };
      StoreLanes((LoadLanes(at) & colours) | ShuffleBytes(alphas, places), at);
    }
  }
  cpu::PutAlphas(pixels + 4 * x, plane + x, width - x, flip);
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
