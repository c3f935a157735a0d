// The chroma key: the vector builds against the portable one, the rule's corner cases, and what
// the effect does around its kernels.
#include "chromakey/chroma_key_fx.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <regex>
#include <string>
#include <thread>

#include "guarded_memory.h"
#include "pixels.h"
#include "platform/parallel_rows.h"
#include "short_memory.h"

#ifdef _WIN32
#include "debugger_listener.h"
#endif

namespace pictavo::test {
namespace {

constexpr i32 kBgra = 1, kAyuv = 0;  // formats

using Keys = std::vector<ChromaKey>;

ImageDesc Image(u8* data, i32 width, i32 height) {
  ImageDesc image = {};
  image.data = data;
  image.width = width;
  image.height = height;
  image.pitch = width * 4;
  return image;
}

u32 Apply(i32 level, u8* dst, u8* src, i32 width, i32 height, const Keys& keys, i32 format) {
  const ImageDesc from = Image(src, width, height);
  ImageDesc to = Image(dst, width, height);
  return chromakey::ApplyChromaKey(level, &from, &to, keys.data(), static_cast<i32>(keys.size()),
                                   format);
}

/// The result of a picture in memory that ends where nothing may be touched.
Bytes Keyed(i32 level, const Bytes& src, i32 width, i32 height, const Keys& keys, i32 format) {
  GuardedMemory from(src.size(), GuardedMemory::Side::kAfter);
  GuardedMemory to(src.size(), GuardedMemory::Side::kAfter);
  std::memcpy(from.data(), src.data(), src.size());
  EXPECT_EQ(Apply(level, to.data(), from.data(), width, height, keys, format), PICTAVO_S_OK);
  return Bytes(to.data(), to.data() + src.size());
}

/// The levels at which builds change, as far as this processor can run them.
std::vector<i32> Levels() {
  std::vector<i32> levels = {PICTAVO_LEVEL_PORTABLE, 5};
  if (__builtin_cpu_supports("sse4.1")) levels.push_back(6);
  if (__builtin_cpu_supports("avx2")) levels.push_back(8);
  return levels;
}

ChromaKey RandomKey(Random& random) {
  constexpr i32 kAngles[] = {0,   1,  2,   30,  45,  60,  89,    90,      91,        180,
                             360, -1, -30, -91, 270, 720, 10000, 1000001, INT32_MAX, INT32_MIN};
  constexpr i32 kDenoises[] = {0, 1, 5, 20, 60, 110, 300, 50000, -1, -20, INT32_MAX, INT32_MIN};
  const auto byte = [&] { return static_cast<u8>(random()); };
  ChromaKey key = {byte(),
                   byte(),
                   byte(),
                   byte(),
                   kAngles[random() % std::size(kAngles)],
                   kDenoises[random() % std::size(kDenoises)]};
  if (random() % 3 == 0) {  // near grey
    key.keyG = static_cast<u8>(key.keyR ^ (random() % 8));
    key.keyB = static_cast<u8>(key.keyR ^ (random() % 8));
  }
  if (random() % 3 == 0) key.angle = static_cast<i32>(random() % 90);
  return key;
}

/// Random pixels, half of them near the key's colour.
void FillAround(u8* pixels, size_t bytes, const ChromaKey& key, i32 format, Random& random) {
  FillPixels(pixels, bytes, random() % 2 ? kRandom : kEdges, random);
  const chromakey::Yuv yuv = chromakey::ToYuv(key.keyR, key.keyG, key.keyB);
  const std::array<int, 3> bgra = {key.keyB, key.keyG, key.keyR};
  const std::array<int, 3> vuya = {static_cast<int>(yuv.v) + 128, static_cast<int>(yuv.u) + 128,
                                   static_cast<int>(yuv.y)};
  for (size_t at = 0; at < bytes; at += 4) {
    if (random() % 2) continue;
    const int spread = 1 + static_cast<int>(random() % 40);
    for (size_t c = 0; c < 3; ++c) {
      const int value = (format == kBgra ? bgra : vuya)[c] - spread +
                        static_cast<int>(random() % static_cast<u32>(2 * spread + 1));
      pixels[at + c] = static_cast<u8>(std::clamp(value, 0, 255));
    }
  }
}

std::string Describe(const Keys& keys, i32 format, i32 level) {
  std::string text = "level " + std::to_string(level) + ", format " + std::to_string(format);
  for (const ChromaKey& key : keys) {
    text += ", key";
    for (const i32 value : {i32{key.keyR}, i32{key.keyG}, i32{key.keyB}, key.angle, key.denoise}) {
      text += ' ' + std::to_string(value);
    }
  }
  return text;
}

TEST(ChromaKey, LevelsAgreeInsideGuardedPictures) {
  Random random(86);
  for (int round = 0; round < 600 && !testing::Test::HasFailure(); ++round) {
    Keys keys(1 + random() % 3);
    for (ChromaKey& key : keys) key = RandomKey(random);
    const i32 width = static_cast<i32>(1 + random() % 37);
    const i32 height = random() % 4 == 0 ? 3 : 1;
    const i32 format = static_cast<i32>(random() % 4) - 1;
    Bytes src(static_cast<size_t>(4 * width * height));
    FillAround(src.data(), src.size(), keys[0], format, random);
    const Bytes expected = Keyed(PICTAVO_LEVEL_PORTABLE, src, width, height, keys, format);
    for (const i32 level : Levels()) {
      EXPECT_EQ(Keyed(level, src, width, height, keys, format), expected)
          << Describe(keys, format, level);
      Bytes inPlace = src;
      Apply(level, inPlace.data(), inPlace.data(), width, height, keys, format);
      EXPECT_EQ(inPlace, expected) << "in place, " << Describe(keys, format, level);
    }
  }
}

using Pixel = std::array<u8, 4>;

TEST(ChromaKey, Corners) {
  const ChromaKey green = {0, 255, 0, 99, 30, 20}, white = {255, 255, 255, 0, 30, 20};
  const auto with = [](ChromaKey key, i32 angle, i32 denoise) {
    key.angle = angle;
    key.denoise = denoise;
    return key;
  };
  struct Corner {
    const char* what;
    i32 format;
    Keys keys;
    Pixel pixel, expected;
  } const corners[] = {
      {"the key itself", kBgra, {green}, {0, 255, 0, 255}, {0, 0, 0, 0}},
      {"a hue far away", kBgra, {green}, {0, 0, 255, 200}, {0, 0, 254, 200}},
      {"another", kBgra, {green}, {250, 100, 10, 77}, {249, 99, 10, 77}},
      {"spill", kBgra, {green}, {120, 180, 110, 255}, {116, 125, 106, 163}},
      {"spill on a soft pixel", kBgra, {green}, {100, 140, 100, 128}, {97, 97, 97, 90}},
      {"no denoise, on the axis", kBgra, {with(green, 0, 0)}, {0, 255, 0, 255}, {0, 0, 0, 0}},
      {"beside the axis", kBgra, {with(green, 0, 0)}, {0, 250, 9, 255}, {0, 249, 8, 255}},
      {"negative denoise", kBgra, {with(green, 30, -1)}, {0, 254, 0, 255}, {0, 0, 0, 0}},
      {"close to white", kBgra, {white}, {250, 250, 250, 255}, {250, 250, 250, 4}},
      {"close to white, clear", kBgra, {white}, {250, 250, 250, 0}, {250, 250, 250, 0}},
      {"not close to white", kBgra, {white}, {200, 200, 200, 255}, {200, 200, 200, 255}},
      {"huge tolerances", kBgra, {with(white, -1, -1)}, {10, 20, 30, 255}, {10, 20, 30, 200}},
      {"a luma that is just too far",
       kBgra,
       {with(white, 4, 20)},
       {250, 250, 250, 9},
       {250, 250, 250, 9}},
      {"just near grey",
       kBgra,
       {{116, 100, 133, 0, 30, 20}},
       {133, 100, 116, 255},
       {133, 100, 116, 0}},
      {"just not near grey",
       kBgra,
       {{123, 136, 103, 0, 30, 20}},
       {103, 136, 123, 255},
       {0, 0, 0, 0}},
      {"many turns",
       kBgra,
       {{231, 172, 3, 0, 2000000001, 0}},
       {15, 171, 169, 255},
       {12, 150, 141, 202}},
      {"clear", kAyuv, {green}, {34, 54, 145, 255}, {127, 127, 1, 0}},
      {"spill", 2, {green}, {60, 80, 120, 255}, {119, 126, 29, 35}},
      {"far away", -1, {green}, {200, 60, 7, 31}, {200, 60, 7, 31}},
      {"bytes wrap", kAyuv, {{72, 166, 192, 0, 91, 0}}, {255, 255, 255, 255}, {213, 23, 255, 255}},
      {"bytes wrap", kAyuv, {{117, 136, 43, 0, 89, 20}}, {255, 0, 207, 255}, {4, 119, 0, 255}},
  };
  for (const Corner& corner : corners) {
    for (const i32 level : Levels()) {
      Pixel pixel = corner.pixel, result = {};
      EXPECT_EQ(Apply(level, result.data(), pixel.data(), 1, 1, corner.keys, corner.format),
                PICTAVO_S_OK);
      EXPECT_EQ(result, corner.expected) << corner.what << ", level " << level;
    }
  }
}

/// Decided by squares in the vector builds. Around a key of 100, 0 distances are those of whole
/// numbers; around its neighbours they are just above and below.
TEST(ChromaKey, ClearsUpToTheDistance) {
  constexpr int kKeyU = 100;
  const auto cleared = [](i32 level, f32 keyU, int denoise, const Bytes& src) {
    const chromakey::PassKey key({50, keyU, 0}, 89, denoise);
    Bytes out(src.size()), result;
    chromakey::KeyRowFor(level, chromakey::Layout::kAyuv, false, true)(
        out.data(), src.data(), static_cast<i64>(src.size() / 4), key);
    for (size_t alpha = 3; alpha < out.size(); alpha += 4) result.push_back(out[alpha] == 0);
    return result;
  };
  for (int denoise = 12; denoise < 60; ++denoise) {
    Bytes src, expected;
    for (int u = kKeyU - 60; u <= kKeyU - 12; ++u) {
      for (int v = -20; v <= 20; ++v) {
        src.insert(src.end(), {static_cast<u8>(128 + v), static_cast<u8>(128 + u), 90, 255});
        const int distance = (u - kKeyU) * (u - kKeyU) + v * v;
        expected.push_back(distance <= denoise * denoise);
      }
    }
    EXPECT_EQ(cleared(0, kKeyU, denoise, src), expected) << "denoise " << denoise;
    for (const f32 keyU : {std::nextafter(100.0f, 0.0f), 100.0f, std::nextafter(100.0f, 200.0f)}) {
      for (const i32 level : Levels()) {
        EXPECT_EQ(cleared(level, keyU, denoise, src), cleared(0, keyU, denoise, src))
            << "level " << level << ", denoise " << denoise << ", key " << keyU;
      }
    }
  }
}

TEST(ChromaKey, SeveralKeysGiveTheLeast) {
  Random random(2);
  constexpr i32 kWidth = 41, kHeight = 3;
  for (const i32 format : {kBgra, kAyuv}) {
    for (int round = 0; round < 50; ++round) {
      const Keys keys = {RandomKey(random), RandomKey(random), RandomKey(random)};
      Bytes src(4 * kWidth * kHeight), expected(src.size(), 255);
      FillAround(src.data(), src.size(), keys[1], format, random);
      for (const ChromaKey& key : keys) {
        const Bytes one = Keyed(0, src, kWidth, kHeight, {key}, format);
        std::transform(one.begin(), one.end(), expected.begin(), expected.begin(),
                       [](u8 a, u8 b) { return std::min(a, b); });
      }
      EXPECT_EQ(Keyed(0, src, kWidth, kHeight, keys, format), expected)
          << Describe(keys, format, 0);
    }
  }
}

TEST(ChromaKey, OverlapsAsIfTheSourceWereReadFirst) {
  Random random(3);
  constexpr i32 kWidth = 23, kHeight = 9;
  constexpr size_t kBytes = 4 * kWidth * kHeight;
  const Keys one = {{20, 200, 30, 0, 50, 30}}, two = {one[0], {250, 250, 240, 0, 60, 9}};
  for (const Keys& keys : {one, two}) {
    for (const size_t shift : {size_t{0}, size_t{4}, size_t{4 * kWidth}, kBytes - 4, kBytes}) {
      Bytes memory(kBytes + shift);
      FillAround(memory.data(), memory.size(), keys[0], kBgra, random);
      Bytes up = memory, down = memory;
      const Bytes low(memory.begin(), memory.begin() + kBytes),
          high(memory.end() - kBytes, memory.end());
      EXPECT_EQ(
          Apply(Levels().back(), down.data() + shift, down.data(), kWidth, kHeight, keys, kBgra),
          PICTAVO_S_OK);
      EXPECT_EQ(Bytes(down.end() - kBytes, down.end()),
                Keyed(0, low, kWidth, kHeight, keys, kBgra));
      EXPECT_EQ(Apply(Levels().back(), up.data(), up.data() + shift, kWidth, kHeight, keys, kBgra),
                PICTAVO_S_OK);
      EXPECT_EQ(Bytes(up.begin(), up.begin() + kBytes),
                Keyed(0, high, kWidth, kHeight, keys, kBgra));
    }
  }
}

TEST(ChromaKey, KeysTheRowsThatBothHave) {
  const Keys green = {{0, 255, 0, 0, 30, 20}};
  Bytes src(4 * 3 * 4, 7);
  for (const i32 srcHeight : {0, 2, 4}) {
    for (const i32 dstHeight : {0, 2, 4}) {
      const i32 rows = std::min(srcHeight, dstHeight);
      Bytes dst(src.size(), 99), expected = dst;
      const Bytes keyed = Keyed(0, src, 3, 4, green, kBgra);
      std::copy_n(keyed.begin(), 12 * rows, expected.begin());
      const ImageDesc from = Image(src.data(), 3, srcHeight);
      ImageDesc to = Image(dst.data(), 3, dstHeight);
      EXPECT_EQ(chromakey::ApplyChromaKey(0, &from, &to, green.data(), 1, kBgra), PICTAVO_S_OK);
      EXPECT_EQ(dst, expected);
    }
  }
}

TEST(ChromaKey, RefusesWhatItCannotUse) {
  Bytes src(64, 7), dst(64, 3);
  const ChromaKey key = {0, 255, 0, 0, 30, 20};
  const ImageDesc good = Image(src.data(), 4, 4);
  ImageDesc to = Image(dst.data(), 4, 4);
  const auto apply = [&](const ImageDesc* from, ImageDesc* into, const ChromaKey* keys, i32 count) {
    return chromakey::ApplyChromaKey(8, from, into, keys, count, kBgra);
  };
  EXPECT_EQ(apply(nullptr, &to, &key, 1), PICTAVO_E_POINTER);
  EXPECT_EQ(apply(&good, nullptr, &key, 1), PICTAVO_E_POINTER);
  EXPECT_EQ(apply(&good, &to, nullptr, 0), PICTAVO_E_POINTER);
  for (const i32 count : {0, -1, INT32_MIN}) {
    EXPECT_EQ(apply(&good, &to, &key, count), PICTAVO_E_INVALIDARG);
  }
  const auto changed = [](ImageDesc image, auto change) {
    change(image);
    return image;
  };
  const auto refuses = [&](u32 code, auto change) {
    const ImageDesc from = changed(good, change);
    ImageDesc into = changed(to, change);
    EXPECT_EQ(apply(&from, &to, &key, 1), code);
    EXPECT_EQ(apply(&good, &into, &key, 1), code);
    // The same on both sides: what is wrong may be the sizes themselves.
    return apply(&from, &into, &key, 1);
  };
  EXPECT_EQ(refuses(PICTAVO_E_POINTER, [](ImageDesc& i) { i.data = nullptr; }), PICTAVO_E_POINTER);
  const auto bad = [&](auto change) {
    EXPECT_EQ(refuses(PICTAVO_E_INVALIDARG, change), PICTAVO_E_INVALIDARG);
  };
  bad([](ImageDesc& i) { i.memoryKind = PICTAVO_MEMORY_D3D11_TEXTURE; });
  bad([](ImageDesc& i) { i.height = -1; });
  bad([](ImageDesc& i) { i.width = i.pitch = -4; });
  bad([](ImageDesc& i) { i.pitch = 20; });
  bad([](ImageDesc& i) { i.pitch = -16; });
  bad([](ImageDesc& i) { i.width = 1 << 30, i.pitch = 0; });
  bad([](ImageDesc& i) { i.width = 1 << 28, i.pitch = 1 << 30, i.height = 4; });
  bad([](ImageDesc& i) { i.height = 1 << 28; });
  EXPECT_EQ(dst, Bytes(64, 3));
}

TEST(ChromaKey, SaysWhenMemoryIsShort) {
  Random random(4);
  Bytes memory(4 * 5 * 4);
  FillPixels(memory.data(), memory.size(), kRandom, random);
  const Bytes before = memory;
  const Keys keys(2, {0, 255, 0, 0, 30, 20});
  for (int allocations = 0; allocations < 3; ++allocations) {
    const ShortMemory shortage(allocations);  // the keys, then the result
    const u32 code = Apply(Levels().back(), memory.data() + 16, memory.data(), 4, 4, keys, kBgra);
    EXPECT_EQ(code, allocations < 2 ? PICTAVO_E_OUTOFMEMORY : PICTAVO_S_OK);
    EXPECT_EQ(memory == before, allocations < 2);
  }
}

TEST(ChromaKey, Composites) {
  // A key that leaves the colours alone and gives an alpha of |240 - Y|.
  chromakey::WorkingKey key = {240, 240, 240, {}, -1, -1};
  Bytes src = {10, 20, 30, 255, 200, 210, 220, 255, 50, 60, 70, 0};
  Bytes background = {255, 0, 90, 7, 1, 2, 3, 255, 4, 5, 6, 0};
  const Bytes keyed = Keyed(0, src, 3, 1, {{240, 240, 240, 0, -1, -1}}, kBgra);
  Bytes expected;
  for (size_t i = 0; i < keyed.size(); ++i) {
    const int alpha = keyed[i | 3];
    const int sum = keyed[i] * alpha + background[i] * (255 - alpha);
    expected.push_back(i % 4 == 3 ? 255 : static_cast<u8>(sum / 255));
  }
  EXPECT_GT(keyed[3], keyed[7]);
  EXPECT_GT(keyed[7], 0);
  Bytes dst(src.size());
  const auto view = [](Bytes& bytes) { return chromakey::ImageView{3, 1, 12, bytes.data(), 0}; };
  const chromakey::ImageView from = view(src), behind = view(background), into = view(dst);
  for (const auto* destination : {&into, &behind}) {
    chromakey::ChromaKeyFx effect(0);
    effect.SetSource(&from);
    effect.SetDestination(destination);
    effect.SetKeys(&key, 1);
    EXPECT_EQ(effect.Run(1), PICTAVO_E_POINTER);
    effect.SetBackground(&behind);
    EXPECT_EQ(effect.Run(1), PICTAVO_S_OK);
  }
  EXPECT_EQ(dst, expected);
  EXPECT_EQ(background, expected);

  const chromakey::ImageView empty = {3, 0, 0, dst.data(), 0};
  chromakey::ChromaKeyFx effect(0);
  effect.SetSource(&empty);
  effect.SetDestination(&empty);
  effect.SetKeys(&key, 1);
  effect.SetBackground(&empty);
  EXPECT_EQ(effect.Run(1), PICTAVO_S_OK);
}

TEST(ChromaKey, RunsInSeveralThreadsAtOnce) {
  constexpr i32 kWidth = 33, kHeight = 70;
  Random random(5);
  const Keys keys = {{20, 200, 30, 0, 50, 30}, {250, 250, 240, 0, 60, 9}};
  Bytes src(4 * kWidth * kHeight);
  FillAround(src.data(), src.size(), keys[0], kBgra, random);
  const Bytes expected = Keyed(0, src, kWidth, kHeight, keys, kBgra);
  const std::vector<i32> levels = Levels();
  std::array<int, 4> different = {};
  std::vector<std::thread> threads;
  for (int& count : different) {
    threads.emplace_back([&] {
      Bytes dst(src.size());
      for (int round = 0; round < 40; ++round) {
        std::fill(dst.begin(), dst.end(), u8{1});
        Apply(levels[static_cast<size_t>(round) % levels.size()], dst.data(), src.data(), kWidth,
              kHeight, keys, kBgra);
        count += dst != expected;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(different, (std::array<int, 4>{}));
}

TEST(ParallelRows, RunsEachRowOnce) {
  for (const int rows : {-5, 0, 1, 2, 3, 16, 17, 1000}) {
    std::vector<int> runs(static_cast<size_t>(std::max(rows, 0)));
    const auto caller = std::this_thread::get_id();
    ParallelRows(rows, [&](int row) {
      ++runs.at(static_cast<size_t>(row));
      EXPECT_TRUE(rows > 1 || std::this_thread::get_id() == caller);
    });
    EXPECT_EQ(runs, std::vector<int>(runs.size(), 1));
  }
}

#ifdef _WIN32

TEST(ChromaKey, TellsTheDebuggerHowLongItTook) {
  Bytes src(64), dst(64);
  const Keys keys(2, {0, 255, 0, 0, 30, 20});
  const DebuggerListener listener;
  Apply(Levels().back(), dst.data(), src.data(), 4, 4, keys, kBgra);
  Apply(0, dst.data(), src.data(), 4, 4, keys, kAyuv);
  const std::vector<std::string>& heard = listener.heard();
  const std::string heads[] = {"_ApplyKeyARGB\\(0\\)", "_ApplyKeyARGB\\(1\\)", "_RunARGB",
                               "_ApplyKeyAYUV\\(0\\)", "_ApplyKeyAYUV\\(1\\)", "_RunAYUV"};
  ASSERT_EQ(heard.size(), std::size(heads));
  for (size_t i = 0; i < heard.size(); ++i) {
    const std::regex line("\\[ChromaKeyFx::" + heads[i] + "\\] 0\\.\\d{6} seconds\n");
    EXPECT_TRUE(std::regex_match(heard[i], line)) << i;
  }
}

#endif

}  // namespace
}  // namespace pictavo::test
