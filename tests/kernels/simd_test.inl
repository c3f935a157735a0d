// Every primitive of the vocabulary against its scalar meaning, for one instruction set. A
// primitive that the set lacks is left out.

/// No bits for what is no number.
inline V NoNan(F a) {
  const F limit = F::All(std::numeric_limits<f32>::infinity());
  return Bits(a) & (Bits(a < limit) | Bits(F::All(0) < a));
}

/// A function of three vectors as one of memory.
template <typename Function>
VectorFn OnMemory(Function function) {
  return [function](const u8* a, const u8* b, const u8* c, u8* result) {
    function(V::Load(a), V::Load(b), V::Load(c)).Store(result);
  };
}

#define CHECK_LANES(Lane, vector, scalar)                                                   \
  Check<Lane>(                                                                              \
      #vector, sizeof(V), OnMemory([](T a, T b, T c) { return (void)b, (void)c, vector; }), \
      [](Lane a, Lane b, Lane c) { return static_cast<Lane>(((void)b, (void)c, scalar)); })

template <typename T>
void CheckBytes() {
  CHECK_LANES(u8, a & b, a & b);
  CHECK_LANES(u8, a | b, a | b);
  CHECK_LANES(u8, a ^ b, a ^ b);
  CHECK_LANES(u8, AndNot(a, b), ~a & b);
  CHECK_LANES(u8, Add8(a, b), a + b);
  CHECK_LANES(u8, AddSaturatedU8(a, b), std::min(a + b, 255));
  CHECK_LANES(u8, SubSaturatedU8(a, b), std::max(a - b, 0));
  CHECK_LANES(u8, MinU8(a, b), std::min(a, b));
  CHECK_LANES(u8, MaxU8(a, b), std::max(a, b));
  CHECK_LANES(u8, Equal8(a, b), a == b ? 255 : 0);
  CHECK_LANES(u8, IsNegative8(a), a >= 128 ? 255 : 0);
  CHECK_LANES(u8, Select(Equal8(a, b), b, c), a == b ? b : c);
}

template <typename T>
void CheckWords() {
  CHECK_LANES(i16, Add16(a, b), a + b);
  CHECK_LANES(i16, Sub16(a, b), a - b);
  CHECK_LANES(u16, SubSaturatedU16(a, b), std::max(a - b, 0));
  CHECK_LANES(i16, AddSaturatedI16(a, b), std::clamp(a + b, -32768, 32767));
  CHECK_LANES(u16, Mul16(a, b), u32{a} * b);
  CHECK_LANES(u16, MulHighU16(a, b), u32{a} * b >> 16);
  CHECK_LANES(i16, MulHighI16(a, b), a * b >> 16);
  CHECK_LANES(i16, MinI16(a, b), std::min(a, b));
  CHECK_LANES(i16, MaxI16(a, b), std::max(a, b));
  CHECK_LANES(i16, Equal16(a, b), a == b ? -1 : 0);
  CHECK_LANES(i16, GreaterI16(a, b), a > b ? -1 : 0);
  CHECK_LANES(u16, ShiftLeft16(a, 5), a << 5);
  CHECK_LANES(u16, ShiftRightU16(a, 5), a >> 5);
  CHECK_LANES(i16, ShiftRightI16(a, 5), a >> 5);
  CHECK_LANES(u16, V::All16(0x8001) ^ a, 0x8001 ^ a);
  if constexpr (requires(T x) { Abs16(x); }) {
    CHECK_LANES(i16, Abs16(a), std::abs(a));
    CHECK_LANES(i16, WithSignI16(a, b), b > 0 ? a : b < 0 ? -a : 0);
    CHECK_LANES(u16, DotProduct16(a, b),
                std::clamp((a & 255) * i8(b & 255) + (a >> 8) * i8(b >> 8), -32768, 32767));
  }
}

template <typename T>
void CheckLanes() {
  CHECK_LANES(u32, Add32(a, b), a + b);
  CHECK_LANES(u32, Sub32(a, b), a - b);
  CHECK_LANES(u32, V::All32(0x80010203) ^ V::Zero() ^ a, 0x80010203 ^ a);
  CHECK_LANES(i32, Equal32(a, b), a == b ? -1 : 0);
  CHECK_LANES(i32, GreaterI32(a, b), a > b ? -1 : 0);
  CHECK_LANES(u32, ShiftLeft32(a, 9), a << 9);
  CHECK_LANES(u32, ShiftRightU32(a, 9), a >> 9);
  CHECK_LANES(i32, ShiftRightI32(a, 9), a >> 9);
  CHECK_LANES(u64, ShiftLeft64(a, 24), a << 24);
  CHECK_LANES(u32, DotProduct32(a, b),
              static_cast<u32>(Low(a) * Low(b)) + static_cast<u32>(High(a) * High(b)));
  CHECK_LANES(u32, Quotient32(ShiftRightU32(a, 8), Add32(ShiftRightU32(b, 16), V::All32(1))),
              (a >> 8) / ((b >> 16) + 1));
  CHECK_LANES(u32, RepeatLow16(a), (a & 0xFFFF) * 0x10001);
  CHECK_LANES(u32, RepeatHigh16(a), (a >> 16) * 0x10001);
  CHECK_LANES(u32, SpreadLow16(ShiftRightU32(a, 16)), (a >> 16) * 0x10001);
  CHECK_LANES(u32, SelectNegative32(a, b, c), a >> 31 != 0 ? b : c);
  CHECK_LANES(u32, Pair16(-2, 0x7123) ^ a, 0x7123FFFE ^ a);
  CHECK_LANES(u32, JoinHalves(a, b), (a & 0xFFFF) | (b & 0xFFFF0000));
  CHECK_LANES(u32, PairLow16(a, b), (a & 0xFFFF) | b << 16);
  CHECK_LANES(u32, PairHigh16(a, b), a >> 16 | (b & 0xFFFF0000));
  CHECK_LANES(u32, RepeatAlpha16(a), (a >> 24) * 0x10001);
  CHECK_LANES(u32, AlphaOnColours(a), (a >> 24) * 0x10101);
  CHECK_LANES(u32, Even(a), a & 0xFF00FF);
  CHECK_LANES(u32, Odd(a), a >> 8 & 0xFF00FF);
  CHECK_LANES(u32, Channel(a, 2), a >> 16 & 0xFF);
  CHECK_LANES(u32, (JoinChannels(Channel(a, 0), Channel(a, 1), Channel(a, 2), Channel(a, 3))), a);
  CHECK_LANES(i32, (JoinChannels(a, a, a, a)), Limited(a) * 0x1010101);
  if constexpr (requires(T x) { Mul32(x, x); }) {
    CHECK_LANES(i32, MinI32(a, b), std::min(a, b));
    CHECK_LANES(i32, MaxI32(a, b), std::max(a, b));
    CHECK_LANES(u32, Mul32(a, b), a * b);
  }
  for (u32 weight = 0; weight <= 256; weight += 3) {
    const V w = V::All16(weight);
    const auto mixed = [weight](u32 s, u32 d) { return (s * weight + d * (256 - weight)) >> 8; };
    Check<u8>("Mix", sizeof(V), OnMemory([w](V s, V d, V) { return Mix(s, d, w, w); }),
              [&](u8 s, u8 d, u8) { return static_cast<u8>(mixed(s, d)); });
    Check<u8>("Scale", sizeof(V), OnMemory([w](V s, V, V) { return Scale(s, w); }),
              [&](u8 s, u8, u8) { return static_cast<u8>(mixed(s, 0)); });
  }
}

/// Of numbers, to the bit; of what is none, only that it is none.
template <typename T>
void CheckReals() {
  const auto real = [](i32 bits) { return std::bit_cast<f32>(bits); };
  const auto check = [&](const char* name, auto vector, auto scalar) {
    Check<i32>(name, sizeof(V), OnMemory([&](V a, V b, V c) {
                 return NoNan(vector(Singles(a), Singles(b), Singles(c)));
               }),
               [&](i32 a, i32 b, i32 c) {
                 const f32 x = scalar(real(a), real(b), real(c));
                 return x == x ? std::bit_cast<i32>(x) : 0;
               });
  };
  check(
      "+", [](F a, F b, F) { return a + b; }, [](f32 a, f32 b, f32) { return a + b; });
  check(
      "-", [](F a, F b, F) { return a - b; }, [](f32 a, f32 b, f32) { return a - b; });
  check(
      "*", [](F a, F b, F) { return a * b; }, [](f32 a, f32 b, f32) { return a * b; });
  check(
      "/", [](F a, F b, F) { return a / b; }, [](f32 a, f32 b, f32) { return a / b; });
  check(
      "Abs", [](F a, F, F) { return Abs(a); }, [](f32 a, f32, f32) { return std::abs(a); });
  check(
      "Sqrt", [](F a, F, F) { return Sqrt(Abs(a)); },
      [](f32 a, f32, f32) { return std::sqrt(std::abs(a)); });
  check(
      "Min", [](F a, F b, F) { return Min(a, b); },
      [](f32 a, f32 b, f32) { return a < b ? a : b; });
  check(
      "Max", [](F a, F b, F) { return Max(a, b); },
      [](f32 a, f32 b, f32) { return a > b ? a : b; });
  check(
      "Select", [](F a, F b, F c) { return Select(a < b, b, c); },
      [](f32 a, f32 b, f32 c) { return a < b ? b : c; });
  check(
      "doubles",
      [](F a, F b, F c) {
        const auto half = [](D x, D y, D z) {
          const D least = Min(x, y), most = Max(x, y);
          return Select(x < y, RoundToSingle(least * D::All(3) - z), Sqrt(Abs(most / z + x)));
        };
        return ToF(half(LowToD(a), LowToD(b), LowToD(c)), half(HighToD(a), HighToD(b), HighToD(c)));
      },
      [](double x, double y, double z) {
        const double least = x < y ? x : y, most = x > y ? x : y;
        return static_cast<f32>(x < y ? static_cast<f32>(least * 3 - z)
                                      : std::sqrt(std::abs(most / z + x)));
      });
  CHECK_LANES(i32, Truncate(ToF(a)), cpu::TruncateToI32(static_cast<f32>(a)));
  CHECK_LANES(i32, Truncate(Singles(a)), cpu::TruncateToI32(std::bit_cast<f32>(a)));
}

/// What puts the lanes of several vectors into one or two.
template <typename T>
void CheckPacking() {
  const std::vector<u32>& numbers = Operands<u32>::All().a;
  const auto load = [&](size_t i) {
    return V::Load(reinterpret_cast<const u8*>(numbers.data()) + sizeof(V) * i);
  };
  const auto check = [](const char* name, auto lanes, auto meaning) {
    for (size_t i = 0; i < lanes.size(); ++i) EXPECT_EQ(lanes[i], meaning(i)) << name << ' ' << i;
  };
  const auto turns = [&](const char* name, auto lane, V first, V second) {
    using Lane = decltype(lane);
    std::array<Lane, 2 * sizeof(V) / sizeof(Lane)> in, out;
    std::memcpy(&in, numbers.data(), sizeof in);
    StoreInterleaved(first, second, reinterpret_cast<u8*>(&out));
    check(name, out, [&](size_t i) { return in[i / 2 + i % 2 * in.size() / 2]; });
  };
  const V x = load(0), y = load(1);
  turns("Interleave8", u8{}, InterleaveFirst8(x, y), InterleaveSecond8(x, y));
  turns("Interleave16", u16{}, InterleaveFirst16(x, y), InterleaveSecond16(x, y));
  turns("Interleave32", u32{}, InterleaveFirst32(x, y), InterleaveSecond32(x, y));
  turns("Interleave64", u64{}, InterleaveFirst64(x, y), InterleaveSecond64(x, y));

  std::array<i16, sizeof(V)> words;
  std::array<i32, sizeof(V)> ints;
  for (size_t n = 0; n + 4 * V::kPixels <= numbers.size(); n += 4 * V::kPixels) {
    const size_t at = n / V::kPixels;
    std::memcpy(&words, numbers.data() + n, sizeof words);
    std::memcpy(&ints, numbers.data() + n, sizeof ints);
    std::array<u8, sizeof(V)> bytes;
    PackPixels({load(at), load(at + 1)}).Store(bytes.data());
    check("PackPixels of 16 bits", bytes, [&](size_t i) { return Limited(words[i]); });
    PackPixels({load(at), load(at + 1), load(at + 2), load(at + 3)}).Store(bytes.data());
    check("PackPixels of 32 bits", bytes, [&](size_t i) { return Limited(ints[i]); });
    std::array<i16, sizeof(V) / 2> packed;
    JoinPairs(PackI16(load(at), load(at + 1))).Store(reinterpret_cast<u8*>(&packed));
    check("PackI16", packed, [&](size_t i) { return std::clamp(ints[i], -32768, 32767); });
  }
}

/// What moves lanes and asks whole vectors.
template <typename T>
void CheckMoves() {
  constexpr i64 kLanes = V::kPixels, kHalf = kLanes / 2;
  std::array<u32, 4 * kLanes> in, out;
  for (size_t i = 0; i < in.size(); ++i) in[i] = static_cast<u32>(i * 0x01030507);
  const u8* const bytes = reinterpret_cast<const u8*>(in.data());
  const auto load = [&](i64 i) { return V::Load(bytes + 4 * kLanes * i); };
  const auto lane = [&](V v, i64 i) {
    v.Store(reinterpret_cast<u8*>(out.data()));
    return out[static_cast<size_t>(i)];
  };
  V square[4] = {load(0), load(1), load(2), load(3)};
  const V packed = PackU8({load(0) & V::All32(0xFF), load(1) | V::All32(0x80000000),
                           ShiftRightU32(load(2), 1) | V::All32(256), V::Zero()});
  Transpose32(square);
  constexpr i32 kPlaces[] = {28, 24, 20, 16, 12, 8, 4, 0}, kPixels[] = {7, 6, 5, 4, 3, 2, 1, 0};
  const V lanes = LoadLanes([&](i64 i) { return bytes + 4 + 20 * i; });
  for (i64 i = 0; i < kLanes; ++i) {
    EXPECT_EQ(lane(Index32(), i), i);
    EXPECT_EQ(lane(Reverse(load(0)), i), in[static_cast<size_t>(kLanes - 1 - i)]);
    EXPECT_EQ(lane(SwapPairs32(load(0)), i), in[static_cast<size_t>(i ^ 1)]);
    EXPECT_EQ(lane(Repeat32<2>(load(0)), i), in[static_cast<size_t>(i / 4 * 4 + 2)]);
    EXPECT_EQ(lane(Bits(Repeat32<1>(Singles(load(0)))), i), in[static_cast<size_t>(i / 4 * 4 + 1)]);
    const size_t half = static_cast<size_t>(i < kHalf ? i : i - kHalf + kLanes);
    EXPECT_EQ(lane(FirstHalves(load(0), load(1)), i), in[half]);
    EXPECT_EQ(lane(SecondHalves(load(0), load(1)), i), in[half + kHalf]);
    const i64 vector = i / 2 % 2, place = i / 4 * 2 + i % 2;  // of a 64-bit lane
    const size_t pair = static_cast<size_t>(vector * kLanes + 2 * place);
    EXPECT_EQ(lane(LowHalves64(load(0), load(1)), i), in[pair]);
    EXPECT_EQ(lane(HighHalves64(load(0), load(1)), i), in[pair + 1]);
    EXPECT_EQ(lane(HalvesOrder32(), vector * kHalf + place), i);
    const auto pixels = LoadPairs(bytes, kPlaces);
    EXPECT_EQ(lane(pixels.here, i), in[static_cast<size_t>(7 ^ i)]);
    EXPECT_EQ(lane(pixels.right, i), in[static_cast<size_t>((7 ^ i) + 1)]);
    EXPECT_EQ(lane(LoadPairs<4>(bytes, kPixels).right, i), in[static_cast<size_t>((7 ^ i) + 1)]);
    for (i64 j = 0; j < 4; ++j)
      EXPECT_EQ(lane(square[j], i), in[static_cast<size_t>(kLanes * (i % 4) + i / 4 * 4 + j)]);
    EXPECT_EQ(lane(lanes, i), in[static_cast<size_t>(1 + i / 4 * 5 + i % 4)]);
    const u32 kinds[] = {0, 0, 0xFFFFFFFF, 0};        // of each quarter of a packed vector
    const u32 low = static_cast<u32>(i / 4 * 4) * 7;  // of the numbers' bytes
    EXPECT_EQ(lane(packed, i), i % 4 != 0 ? kinds[i % 4] : low * 0x01010101 + 0x150E0700);
    out = {};
    out[static_cast<size_t>(i)] = 0x01000000;
    const V changed = V::Load(reinterpret_cast<const u8*>(out.data()));
    EXPECT_TRUE(IsZero(V::Zero()) && !IsZero(changed));
    EXPECT_TRUE(AlphasClear(V::All32(kColours)) && !AlphasClear(changed));
    EXPECT_TRUE(AlphasOpaque(V::All32(kAlpha)) && !AlphasOpaque(V::All32(~0u) ^ changed));
    EXPECT_TRUE(AllSet(Singles(V::All32(~0u))) && !AllSet(Singles(Equal32(changed, V::Zero()))));
  }
  StoreLanes(load(1), [&](i64 i) { return reinterpret_cast<u8*>(out.data()) + 16 * i; });
  EXPECT_TRUE(std::equal(out.begin(), out.begin() + kLanes, in.begin() + kLanes));
  if constexpr (requires(T x) { ShuffleBytes(x, x); }) {
    alignas(32) u8 from[sizeof(V)], moved[sizeof(V)];
    for (u32 i = 0; i < sizeof(V); ++i) from[i] = static_cast<u8>(i % 16 == 9 ? 128 : 15 - i % 16);
    ShuffleBytes(load(0), V::Load(from)).Store(moved);
    for (size_t i = 0; i < sizeof(V); ++i)
      EXPECT_EQ(moved[i], i % 16 == 9 ? 0 : bytes[i / 16 * 16 + 15 - i % 16]);
    const V picked = PermutePixels(load(0), PicksOf(T{V::All32(kLanes - 1) ^ Index32()}));
    for (i64 i = 0; i < kLanes; ++i)
      EXPECT_EQ(lane(picked, i), in[static_cast<size_t>(kLanes - 1 - i)]);
  }
  if constexpr (requires(T x) { Gather32(bytes, x); }) {
    const V places = ShiftLeft32(V::All32(7) ^ Index32(), 2),
            some = GreaterI32(Index32(), V::All32(1));
    for (i64 i = 0; i < kLanes; ++i) {
      EXPECT_EQ(lane(Gather32(bytes, T{places}), i), in[static_cast<size_t>(7 ^ i)]);
      EXPECT_EQ(lane(Gather32(bytes, T{places}, some), i),
                i > 1 ? in[static_cast<size_t>(7 ^ i)] : 0);
    }
  }
}

inline void CheckVocabulary() {
  CheckBytes<V>();
  CheckWords<V>();
  CheckLanes<V>();
  CheckReals<V>();
  CheckPacking<V>();
  CheckMoves<V>();
}
