// The chroma key: its rows on one thread, and whole calls, which use all processors. Another
// library's filter, where it is installed, keys planes of YUVA by a distance, without hues or
// spill.
#include <memory>
#include <utility>

#include "av_filter.h"
#include "chromakey/chroma_key_fx.h"

namespace pictavo::bench {
namespace {

using chromakey::Layout;

constexpr ChromaKey kGreen = {38, 168, 62, 0, 60, 25}, kWhite = {250, 250, 250, 0, 20, 10};

/// The picture with a green screen around its middle.
Bytes MakeScreen(const Size& size) {
  Bytes pixels = Pixels(size, "opaque");
  for (i64 i = 0; i < size.pixels(); ++i) {
    const i64 x = i % size.width, y = i / size.width;
    if (x > size.width / 4 && x < size.width * 3 / 4 && y > size.height / 4) continue;
    u8* pixel = &pixels[static_cast<size_t>(4 * i)];
    pixel[0] = static_cast<u8>(kGreen.keyB + pixel[0] / 16);
    pixel[1] = static_cast<u8>(kGreen.keyG + pixel[1] / 16);
    pixel[2] = static_cast<u8>(kGreen.keyR + pixel[2] / 16);
  }
  return pixels;
}

/// Made once.
const Bytes& Screen(const Size& size) {
  static const Bytes hd = MakeScreen(kHd), cached = MakeScreen(kCached);
  return size.width == kHd.width ? hd : cached;
}

void KeyRows(i32 level, Layout layout, const ChromaKey& key, const Size& size, u8* dst,
             const u8* src) {
  const chromakey::PassKey pass(chromakey::ToYuv(key.keyR, key.keyG, key.keyB), key.angle,
                                key.denoise);
  chromakey::KeyRow* const row = chromakey::KeyRowFor(level, layout, pass.IsNearGrey(), true);
  for (i64 y = 0; y < size.height; ++y) {
    row(dst + y * size.width * 4, src + y * size.width * 4, size.width, pass);
  }
}

void KeyPicture(i32 level, const std::vector<ChromaKey>& keys, const Size& size, u8* dst,
                const u8* src) {
  const ImageDesc from = RecordOf(size, src);
  ImageDesc to = RecordOf(size, dst);
  chromakey::ApplyChromaKey(level, &from, &to, keys.data(), static_cast<i32>(keys.size()), 1);
}

#ifdef PICTAVO_BENCH_AVFILTER
/// Of planes that hold the picture's bytes; a frame is copied, since the filter works in place.
Run KeyPlanes(const Size& size) {
  const auto filter = std::make_shared<AvFilter>("chromakey=0x26A83E:0.1:0.1", "yuva444p", size);
  return [=, loaded = false](u8*, const u8* src) mutable {
    if (!std::exchange(loaded, true)) {
      Bytes planes;
      for (i64 channel = 0; channel < 4; ++channel)
        for (i64 i = 0; i < size.pixels(); ++i) planes.push_back(src[4 * i + channel]);
      filter->Load(planes.data());
    }
    filter->Run();
  };
}
#endif

}  // namespace

Table ChromaKeys() {
  Table table = {"Chroma key", BuildColumns(), BuildColumns().size(), {}};
#ifdef PICTAVO_BENCH_AVFILTER
  table.columns.push_back("libavfilter");
#endif
  const auto add = [&](const char* name, const char* data, const Size& size, const Bytes& src,
                       std::function<void(i32 level, u8 * dst, const u8* src)> run) {
    std::vector<Run> runs = AtEachBuild(std::move(run));
#ifdef PICTAVO_BENCH_AVFILTER
    runs.push_back(KeyPlanes(size));
#endif
    table.lines.push_back({name, size.name() + data, size.pixels(), &src, &src, false, runs});
  };
  for (const Size& size : {kHd, kCached}) {
    const Bytes &random = Pixels(size, "opaque"), &screen = Screen(size);
    const auto rows = [size](Layout layout, const ChromaKey& key) {
      return
          [=](i32 level, u8* dst, const u8* src) { KeyRows(level, layout, key, size, dst, src); };
    };
    const auto whole = [size](const std::vector<ChromaKey>& keys) {
      return [=](i32 level, u8* dst, const u8* src) { KeyPicture(level, keys, size, dst, src); };
    };
    add("86 one thread, BGRA", " screen", size, screen, rows(Layout::kArgb, kGreen));
    add("86 one thread, BGRA", " random", size, random, rows(Layout::kArgb, kGreen));
    add("86 one thread, BGRA, near grey", " screen", size, screen, rows(Layout::kArgb, kWhite));
    add("86 one thread, AYUV", " random", size, random, rows(Layout::kAyuv, kGreen));
    add("86 one key, all threads", " screen", size, screen, whole({kGreen}));
    add("86 two keys, all threads", " screen", size, screen, whole({kGreen, kWhite}));
  }
  return table;
}

}  // namespace pictavo::bench
