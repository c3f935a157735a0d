// The vector rows of ApplyMatte over V, included for SSE4.1.

/// Multiplies alphas by bytes in 32-bit lanes.
template <u32 mode>
V MatteApplied(V pixels, V m) {
  if (mode % 2 != 0) m = m ^ V::All32(255);
  const V product = Add16(Mul16(ShiftRightU32(pixels, 24), m), V::All32(128));
  const V alpha = ShiftRightU16(Add16(product, ShiftRightU16(product, 8)), 8);
  return (pixels & V::All32(kColours)) | ShiftLeft32(alpha, 24);
}

inline V LumasOf(V pixels) {
  const V sum = Add32(DotProduct32(Even(pixels), V::All32(kLumaOfRed << 16 | kLumaOfBlue)),
                      DotProduct32(Odd(pixels), V::All32(kLumaOfGreen)));
  return ShiftRightU32(Add32(sum, V::All32(128)), 8);
}

template <u32 mode>
struct ApplyToPixels {
  V operator()(V matte, V pixels) const {
    return MatteApplied<mode>(
        pixels, mode < PICTAVO_MATTE_LUMA ? ShiftRightU32(matte, 24) : LumasOf(matte));
  }
};

template <u32 mode>
void ApplyPixels(u8* dst, const u8* matte, i64 width) {
  ApplyToRow(ApplyToPixels<mode>(), dst, matte, width);
}

template <u32 mode>
void ApplyPlane(u8* dst, const u8* matte, i64 width) {
  alignas(16) static constexpr u32 kPlaces[] = {0x80808000, 0x80808001, 0x80808002, 0x80808003};
  const V places = LoadLanes([](i64) { return reinterpret_cast<const u8*>(kPlaces); });
  i64 x = 0;
  for (; x + 4 <= width; x += 4) {
    u32 four;
    std::memcpy(&four, matte + x, sizeof four);
    const V bytes = ShuffleBytes(V::All32(four), places);
    MatteApplied<mode>(V::Load(dst + 4 * x), bytes).Store(dst + 4 * x);
  }
  cpu::ApplyPlane<mode>(dst + 4 * x, matte + x, width - x);
}

constexpr ApplyRow* kApplyRows[] = {ApplyPixels<0>, ApplyPixels<1>, ApplyPixels<2>, ApplyPixels<3>,
                                    ApplyPlane<0>,  ApplyPlane<1>,  ApplyPlane<2>,  ApplyPlane<3>};
