// The chroma key: its rows on one thread, and whole calls, which use all processors. Another
// library's filter, where it is installed, keys planes of YUVA by a distance, without hues or
// spill.
#include <cstdlib>
#include <memory>

#include "bench.h"
#include "chromakey/chroma_key_fx.h"

#ifdef PICTAVO_BENCH_AVFILTER
extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}
#endif

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
  const ImageDesc from = {
      {}, 0, 0, 0, const_cast<u8*>(src), size.width, size.height, size.width * 4, 4};
  ImageDesc to = from;
  to.data = dst;
  chromakey::ApplyChromaKey(level, &from, &to, keys.data(), static_cast<i32>(keys.size()), 1);
}

#ifdef PICTAVO_BENCH_AVFILTER
/// Of frames whose planes hold the picture's bytes in some order; a frame is copied, since the
/// filter works in place.
Run AvFilter(const Size& size) {
  struct Keyer {
    AVFilterGraph* graph = avfilter_graph_alloc();
    AVFilterContext *source = nullptr, *sink = nullptr;
    AVFrame *frame = av_frame_alloc(), *keyed = av_frame_alloc();
    ~Keyer() {
      av_frame_free(&keyed);
      av_frame_free(&frame);
      avfilter_graph_free(&graph);
    }
  };
  const auto keyer = std::make_shared<Keyer>();
  const std::string chain = "buffer@in=video_size=" + size.name() +
                            ":pix_fmt=yuva444p:time_base=1/25,chromakey=0x26A83E:0.1:0.1,"
                            "buffersink@out";
  keyer->graph->nb_threads = 1;
  AVFilterInOut *inputs = nullptr, *outputs = nullptr;
  keyer->frame->format = AV_PIX_FMT_YUVA444P;
  keyer->frame->width = size.width;
  keyer->frame->height = size.height;
  if (avfilter_graph_parse2(keyer->graph, chain.c_str(), &inputs, &outputs) < 0 ||
      avfilter_graph_config(keyer->graph, nullptr) < 0 ||
      av_frame_get_buffer(keyer->frame, 0) < 0) {
    std::abort();
  }
  keyer->source = avfilter_graph_get_filter(keyer->graph, "buffer@in");
  keyer->sink = avfilter_graph_get_filter(keyer->graph, "buffersink@out");
  return [=](u8*, const u8* src) {
    if (keyer->frame->opaque != src) {  // once
      keyer->frame->opaque = const_cast<u8*>(src);
      for (i64 i = 0; i < 4 * size.pixels(); ++i) {
        const i64 x = i / 4 % size.width, y = i / 4 / size.width;
        keyer->frame->data[i % 4][y * keyer->frame->linesize[i % 4] + x] = src[i];
      }
    }
    if (av_buffersrc_add_frame_flags(keyer->source, keyer->frame, AV_BUFFERSRC_FLAG_KEEP_REF) < 0 ||
        av_buffersink_get_frame(keyer->sink, keyer->keyed) < 0) {
      std::abort();
    }
    av_frame_unref(keyer->keyed);
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
    runs.push_back(AvFilter(size));
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
    add("86 one key", " screen", size, screen, whole({kGreen}));
    add("86 two keys", " screen", size, screen, whole({kGreen, kWhite}));
  }
  return table;
}

}  // namespace pictavo::bench
