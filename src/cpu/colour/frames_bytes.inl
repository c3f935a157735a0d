// The vector rows of frames.cpp for layouts of RGB, over V of 128 bits with its shuffle.

/// Where each byte of four pixels comes from: `step` bytes a pixel in the source, `width` here.
struct Places {
  alignas(16) u8 bytes[16] = {};

  constexpr Places(u32 width, u32 step, u32 blue) {
    for (u32 i = 0; i < 16; ++i) {
      const u32 pixel = i / width, channel = i % width;
      const u32 place = channel == 0 ? blue : channel == 2 ? 2 - blue : channel;
      bytes[i] = static_cast<u8>(pixel < 4 && place < step ? pixel * step + place : 0x80);
    }
  }
};

/// Four pixels a step, while a whole vector of the side that has three bytes lies in the row.
template <i64 dstBytes, i64 srcBytes, typename Step>
void ForFours(u8*& dst, const u8*& src, i64& width, Step step) {
  for (; width >= 6; width -= 4, dst += 4 * dstBytes, src += 4 * srcBytes)
    step(V::Load(src)).Store(dst);
}

template <u32 blue>
void From24(u8* dst, const u8* src, i64 width) {
  static constexpr Places kPlaces(4, 3, blue);
  const V places = V::Load(kPlaces.bytes), opaque = V::All32(kAlpha);
  ForFours<4, 3>(dst, src, width, [=](V s) { return ShuffleBytes(s, places) | opaque; });
  FromBytes<blue, 0>(dst, src, width);
}

/// What a step stores beyond its pixels, the next one overwrites.
template <u32 blue>
void To24(u8* dst, const u8* src, i64 width) {
  static constexpr Places kPlaces(3, 4, blue);
  const V places = V::Load(kPlaces.bytes);
  ForFours<3, 4>(dst, src, width, [=](V s) { return ShuffleBytes(s, places); });
  ToBytes<blue, 0>(dst, src, width);
}

inline void SwapRedAndBlue(u8* dst, const u8* src, i64 width) {
  static constexpr Places kPlaces(4, 4, 2);
  const V places = V::Load(kPlaces.bytes);
  ForVectors<4, 4>(dst, src, width,
                   [=](u8* d, const u8* s) { ShuffleBytes(V::Load(s), places).Store(d); });
}

constexpr ByteBuild kByteBuild = {{From24<0>, From24<2>, SwapRedAndBlue},
                                  {To24<0>, To24<2>, SwapRedAndBlue}};
