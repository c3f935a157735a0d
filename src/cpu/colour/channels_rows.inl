// The vector rows of channels.cpp over V, included once for each instruction set.

#include "cpu/simd/byte_table.inl"

/// Where the bytes of pixels come from in SpreadBytes: the pixel's own byte of the plane for those
/// that are 0 in `places`, none for those that are 0x80.
inline V PlanePlaces(u32 places) {
  alignas(32) static constexpr u32 kPixel[] = {0,          0x01010101, 0x02020202, 0x03030303,
                                               0x04040404, 0x05050505, 0x06060606, 0x07070707};
  return Add8(V::Load(reinterpret_cast<const u8*>(kPixel)), V::All32(places));
}
constexpr u32 kGrey = 0x80000000, kAlphaAlone = 0x00808080;

inline void SetAlphaRow(u8* dst, const u8* src, i64 width) {
  const V places = PlanePlaces(kAlphaAlone), colours = V::All32(kColours);
  ForVectors<4, 1>(dst, src, width, [=](u8* d, const u8* s) {
    ((V::Load(d) & colours) | ShuffleBytes(SpreadBytes(s), places)).Store(d);
  });
}

/// The luma in the second byte of each pixel.
struct Luma {
  V blueRed = V::All32(kLumaOfRed << 16 | kLumaOfBlue), green = V::All32(kLumaOfGreen);

  V operator()(V p) const {
    const V sum = Add32(DotProduct32(Even(p), blueRed), DotProduct32(Odd(p), green));
    return Add32(sum, V::All32(128));
  }
};

struct AsTheyAre {
  V operator()(V p) const { return p; }
};

inline void ExtractRow(u8* dst, const u8* src, i64 width, u32 channel) {
  const u32 first = channel == kLuma ? 1 : channel;
  const V places = V::All32(0x0C080400 + 0x01010101 * first);
  const auto extract = [&](const auto& rule) {
    ForVectors<1, 4>(dst, src, width, [&](u8* d, const u8* s) {
      StoreFours(ShuffleBytes(rule(V::Load(s)), places), d);
    });
  };
  if (channel == kLuma) {
    extract(Luma());
  } else {
    extract(AsTheyAre());
  }
}

/// Bytes that come from nowhere are 0 first.
struct Shuffled {
  V places, whole;

  V operator()(V p) const { return ShuffleBytes(p, places) | whole; }
};

inline void ShuffleRow(u8* dst, const u8* src, i64 width, const Places& places) {
  u32 whole = 0;
  alignas(16) u8 from[16];
  for (u32 i = 0; i < 16; ++i) {
    const u32 place = places.from[i % 4];
    from[i] = static_cast<u8>(place < kZero ? i / 4 * 4 + place : 0x80);
    if (place == kWhole) whole |= 0xFFu << i % 4 * 8;
  }
  ApplyToRow(Shuffled{LoadLanes([&](i64) { return from; }), V::All32(whole)}, dst, src, width);
}

inline void ExpandRow(u8* dst, const u8* src, i64 width) {
  const V places = PlanePlaces(kGrey), opaque = V::All32(kAlpha);
  ForVectors<4, 1>(dst, src, width, [=](u8* d, const u8* s) {
    (ShuffleBytes(SpreadBytes(s), places) | opaque).Store(d);
  });
}

inline void ExpandByRow(u8* dst, const u8* src, i64 width, const Table& entries) {
  const ByteTable table(entries);
  constexpr i64 kMost = kVectorBytes;
  alignas(32) u8 scaled[kMost] = {};
  for (; width > 0; width -= kMost, dst += 4 * kMost, src += kMost) {
    const i64 pixels = width < kMost ? width : kMost;
    if (pixels < kMost)
      src = static_cast<u8*>(std::memcpy(scaled, src, static_cast<size_t>(pixels)));
    table[V::Load(src)].Store(scaled);
    ExpandRow(dst, scaled, pixels);
  }
}

constexpr ChannelsBuild kChannelsBuild = {SetAlphaRow, ExtractRow, ShuffleRow, ExpandByRow,
                                          ExpandRow};
