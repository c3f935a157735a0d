// The vector rows of channels.cpp over V, included once for each instruction set.

inline void ExpandRow(u8* dst, const u8* src, i64 width) {
  alignas(16) static constexpr u32 kPlaces[] = {0x80000000, 0x80010101, 0x80020202, 0x80030303};
  const V places = V::Load(reinterpret_cast<const u8*>(kPlaces)), opaque = V::All32(kAlpha);
  ForVectors<4, 1>(dst, src, width, [=](u8* d, const u8* s) {
    u32 four;
    std::memcpy(&four, s, sizeof(four));
    (ShuffleBytes(V::All32(four), places) | opaque).Store(d);
  });
}
