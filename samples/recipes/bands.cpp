// The snippets of docs/threads.md, and a program that holds frames made in bands against those made
// by one call. Its exit code is 0 when they are the same.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "pictavo/pictavo_host.h"

struct Frame {
  int width, height;
  std::vector<unsigned char> pixels;  // B, G, R, A, rows packed, the top row first

  Frame(int w, int h) : width(w), height(h), pixels(size_t{4} * w * h) {}
  int pitch() const { return 4 * width; }
  unsigned char* Row(int y) { return pixels.data() + size_t(y) * pitch(); }
  const unsigned char* Row(int y) const { return pixels.data() + size_t(y) * pitch(); }
};

/// Calls work(first, end) for bands of the rows 0 … rows - 1, each on a thread of its own.
template <typename Work>
void InBands(int rows, const Work& work) {
  const int processors = static_cast<int>(std::thread::hardware_concurrency());
  const int count = std::clamp(rows / 64, 1, std::max(processors, 1));
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back(work, rows * i / count, rows * (i + 1) / count);
  for (std::thread& thread : threads) thread.join();
}

/// Each band is a picture of its own: its first row, its number of rows, the frame's pitch.
void Grade(pictavo::Library& library, Frame& frame, const pictavo::ColorParam& look) {
  InBands(frame.height, [&](int first, int end) {
    library->AdjustColor(frame.Row(first), frame.width, end - first, frame.pitch(), &look);
  });
}

/// Each band is blurred in a copy with as many rows above and below as the blur looks at; of that,
/// the band itself is kept. The source stays as it is, since all bands read it.
void Blur(pictavo::Library& library, const Frame& frame, Frame& blurred, float radius) {
  const int reach = static_cast<int>(std::ceil(radius));
  InBands(frame.height, [&](int first, int end) {
    const int top = std::max(first - reach, 0), bottom = std::min(end + reach, frame.height);
    Frame band(frame.width, bottom - top);
    std::memcpy(band.Row(0), frame.Row(top), band.pixels.size());
    library->GaussianBlurBox3(band.Row(0), band.width, band.height, band.pitch(), radius);
    std::memcpy(blurred.Row(first), band.Row(first - top), size_t(end - first) * frame.pitch());
  });
}

/// Each band has bins of its own, which add up.
std::array<unsigned, 256> CountReds(pictavo::Library& library, const Frame& frame) {
  std::array<unsigned, 256> reds = {};
  std::mutex lock;
  InBands(frame.height, [&](int first, int end) {
    unsigned bins[256];
    library->ComputeHistogram(frame.Row(first), frame.width, end - first, frame.pitch(), bins, 256,
                              2);
    const std::lock_guard guard(lock);
    for (size_t i = 0; i < reds.size(); ++i) reds[i] += bins[i];
  });
  return reds;
}

int main() {
  pictavo::Library library;
  if (!library) return std::puts(library.errorText()), 2;
  Frame frame(333, 517);
  unsigned state = 1;
  for (unsigned char& byte : frame.pixels)
    byte = static_cast<unsigned char>((state = state * 1664525 + 1013904223) >> 24);
  const int pitch = frame.pitch();

  Frame whole = frame, graded = frame;
  const pictavo::ColorParam look = {0.1f, 1.2f, 0.9f, 20, 0.2f, 0};
  library->AdjustColor(whole.Row(0), whole.width, whole.height, pitch, &look);
  Grade(library, graded, look);
  bool same = graded.pixels == whole.pixels;

  for (const float radius : {0.5f, 2.0f, 7.3f, 40.0f}) {
    whole = frame;
    library->GaussianBlurBox3(whole.Row(0), whole.width, whole.height, pitch, radius);
    Frame blurred(frame.width, frame.height);
    Blur(library, frame, blurred, radius);
    same = same && blurred.pixels == whole.pixels;
  }

  std::array<unsigned, 256> reds;
  library->ComputeHistogram(frame.Row(0), frame.width, frame.height, pitch, reds.data(), 256, 2);
  same = same && CountReds(library, frame) == reds;
  std::puts(same ? "Bands give what one call gives" : "Bands differ from one call");
  return same ? 0 : 1;
}
