#include "av_filter.h"

#ifdef PICTAVO_BENCH_AVFILTER

#include <cstdio>
#include <cstdlib>
#include <utility>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace pictavo::bench {
namespace {

void Expect(bool works, const std::string& what) {
  if (works) return;
  std::fprintf(stderr, "libavfilter: %s\n", what.c_str());
  std::abort();
}

}  // namespace

struct AvFilter::Graph {
  AVFilterGraph* graph = avfilter_graph_alloc();
  std::vector<AVFilterContext*> sources;
  AVFilterContext* sink = nullptr;
  std::vector<AVFrame*> frames;
  AVFrame* filtered = av_frame_alloc();
  i64 time = 0;

  ~Graph() {
    for (AVFrame*& frame : frames) av_frame_free(&frame);
    av_frame_free(&filtered);
    avfilter_graph_free(&graph);
  }
};

AvFilter::AvFilter(const std::string& chain, const std::string& format, const Size& size,
                   int inputs)
    : graph_(std::make_shared<Graph>()) {
  Graph& g = *graph_;
  g.graph->nb_threads = 1;
  std::string all;
  for (int i = 0; i < inputs; ++i) {
    const std::string number = std::to_string(i);
    all += "buffer@" + number + "=video_size=" + size.name() + ":pix_fmt=" + format +
           ":time_base=1/25:frame_rate=25" + (inputs == 1 ? "," : "[in" + number + "];");
    AVFrame* const frame = g.frames.emplace_back(av_frame_alloc());
    frame->format = av_get_pix_fmt(format.c_str());
    frame->width = size.width;
    frame->height = size.height;
    Expect(av_frame_get_buffer(frame, 0) >= 0, "no frame");
  }
  all += chain + ",format=" + format + ",buffersink@out";
  AVFilterInOut *open = nullptr, *outputs = nullptr;
  Expect(avfilter_graph_parse2(g.graph, all.c_str(), &open, &outputs) >= 0 &&
             avfilter_graph_config(g.graph, nullptr) >= 0,
         all);
  for (int i = 0; i < inputs; ++i)
    g.sources.push_back(
        avfilter_graph_get_filter(g.graph, ("buffer@" + std::to_string(i)).c_str()));
  g.sink = avfilter_graph_get_filter(g.graph, "buffersink@out");
}

void AvFilter::Load(const u8* picture, int input) {
  AVFrame* const frame = graph_->frames[static_cast<size_t>(input)];
  const auto format = static_cast<AVPixelFormat>(frame->format);
  u8* planes[4];
  int pitches[4];
  av_image_fill_arrays(planes, pitches, picture, format, frame->width, frame->height, 1);
  av_image_copy(frame->data, frame->linesize, const_cast<const u8**>(planes), pitches, format,
                frame->width, frame->height);
}

void AvFilter::Run() {
  Graph& g = *graph_;
  for (size_t i = 0; i < g.frames.size(); ++i) {
    g.frames[i]->pts = g.time;
    Expect(av_buffersrc_add_frame_flags(g.sources[i], g.frames[i], AV_BUFFERSRC_FLAG_KEEP_REF) >= 0,
           "takes no frame");
  }
  ++g.time;
  av_frame_unref(g.filtered);
  Expect(av_buffersink_get_frame(g.sink, g.filtered) >= 0, "gives no frame");
}

void AvFilter::RunInPlace() {
  Graph& g = *graph_;
  AVFrame* const frame = g.frames[0];
  frame->pts = g.time++;
  Expect(av_buffersrc_add_frame_flags(g.sources[0], frame, 0) >= 0, "takes no frame");
  Expect(av_buffersink_get_frame(g.sink, frame) >= 0, "gives no frame");
}

Bytes AvFilter::Result() const {
  const AVFrame& frame = *graph_->filtered;
  const auto format = static_cast<AVPixelFormat>(frame.format);
  Bytes bytes(static_cast<size_t>(av_image_get_buffer_size(format, frame.width, frame.height, 1)));
  av_image_copy_to_buffer(bytes.data(), static_cast<int>(bytes.size()), frame.data, frame.linesize,
                          format, frame.width, frame.height, 1);
  return bytes;
}

Run RunOf(const std::string& chain, const std::string& format, const Size& size, int inputs) {
  const AvFilter made(chain, format, size, inputs);
  return [filter = made, loaded = static_cast<const u8*>(nullptr)](u8*, const u8* src) mutable {
    if (std::exchange(loaded, src) != src) filter.Load(src);
    filter.Run();
  };
}

}  // namespace pictavo::bench

#else

namespace pictavo::bench {

Run RunOf(const std::string&, const std::string&, const Size&, int) { return {}; }

}  // namespace pictavo::bench

#endif
