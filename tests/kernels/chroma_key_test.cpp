// The chroma key: the rule's corner cases, and what the effect does around its kernels.
#include "chromakey/chroma_key_fx.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <regex>
#include <string>
#include <thread>

#include "operations.h"
#include "platform/parallel_rows.h"

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

/// Some keys, and pixels half of which are near the first.
struct Drawn {
  Keys keys;
  i32 format;
  Bytes pixels;
};
Drawn Draw(size_t keys, size_t size, Random& random) {
  Case c;
  do c = DrawCase(Slot(86), random);
  while (c.src.size() < size);
  Drawn drawn = {Keys(c.call.keys, c.call.keys + keys), c.call.format, c.src};
  drawn.pixels.resize(size);
  return drawn;
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

TEST(ChromaKey, OverlapsAsIfTheSourceWereReadFirst) {
  Random random(3);
  constexpr i32 kWidth = 11, kHeight = 9;
  constexpr size_t kBytes = 4 * kWidth * kHeight;
  for (const size_t count : {1u, 2u}) {
    for (const size_t shift : {size_t{0}, size_t{4}, size_t{4 * kWidth}, kBytes - 4, kBytes}) {
      const Drawn drawn = Draw(count, kBytes + shift, random);
      const Bytes& memory = drawn.pixels;
      const Bytes low(memory.begin(), memory.begin() + kBytes),
          high(memory.end() - kBytes, memory.end());
      Bytes up = memory, down = memory;
      const auto apply = [&](u8* dst, u8* src) {
        EXPECT_EQ(Apply(Levels().back(), dst, src, kWidth, kHeight, drawn.keys, drawn.format),
                  PICTAVO_S_OK);
      };
      apply(down.data() + shift, down.data());
      EXPECT_EQ(Bytes(down.end() - kBytes, down.end()),
                Keyed(0, low, kWidth, kHeight, drawn.keys, drawn.format));
      apply(up.data(), up.data() + shift);
      EXPECT_EQ(Bytes(up.begin(), up.begin() + kBytes),
                Keyed(0, high, kWidth, kHeight, drawn.keys, drawn.format));
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

/// Rows are packed whatever a wider pitch says.
TEST(ChromaKey, DoesNotUseThePitch) {
  Random random(4);
  for (const size_t count : {1u, 2u}) {
    Drawn drawn = Draw(count, 4 * 7 * 5, random);
    ImageDesc from = Image(drawn.pixels.data(), 7, 4);
    Bytes dst(drawn.pixels.size(), 99);
    ImageDesc to = Image(dst.data(), 7, 4);
    from.pitch = 35, to.pitch = 29;
    const Bytes four(drawn.pixels.begin(), drawn.pixels.begin() + 4 * 7 * 4);
    Bytes expected = Keyed(0, four, 7, 4, drawn.keys, drawn.format);
    expected.resize(dst.size(), 99);
    EXPECT_EQ(chromakey::ApplyChromaKey(Levels().back(), &from, &to, drawn.keys.data(),
                                        static_cast<i32>(count), drawn.format),
              PICTAVO_S_OK);
    EXPECT_EQ(dst, expected);
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

TEST(ParallelRows, RunsEachRowOnceAndLittleWorkOnTheCaller) {
  for (const int rows : {-5, 0, 1, 2, 3, 16, 17, 1000}) {
    for (const int64_t cost : {0, 64, 1 << 20}) {
      std::vector<int> runs(static_cast<size_t>(std::max(rows, 0)));
      const auto caller = std::this_thread::get_id();
      const bool alone = rows == 1 || rows * cost <= 64 * 17;
      ParallelRows(rows, cost, [&](int row) {
        ++runs.at(static_cast<size_t>(row));
        EXPECT_TRUE(!alone || std::this_thread::get_id() == caller);
      });
      EXPECT_EQ(runs, std::vector<int>(runs.size(), 1));
    }
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
