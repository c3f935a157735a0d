// The snippets of docs/recipes.md, and a program that tries each on small frames. Its exit code is
// the number of the recipe that failed, 0 when none did.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <thread>
#include <vector>

#include "pictavo/pictavo_host.h"

// Frame
struct Frame {
  int width, height;
  std::vector<unsigned char> pixels;  // B, G, R, A, straight alpha, rows packed, the top row first

  Frame(int w, int h) : width(w), height(h), pixels(size_t{4} * w * h) {}
  int pitch() const { return 4 * width; }
  pictavo::ImageDesc Describe() {
    pictavo::ImageDesc image = {};
    image.data = pixels.data();
    image.width = image.bufferWidth = width;
    image.height = image.bufferHeight = height;
    image.pitch = pitch();
    image.bytesPerPixel = 4;
    return image;
  }
};

void Require(unsigned result, unsigned expected = pictavo::PICTAVO_S_OK) {
  if (result != expected) throw std::runtime_error("Pictavo refused a call");
}
// End

// Fade a layer in
/// `progress` runs from 0 to 1 over the frames of the fade. The title has the frame's size.
void FadeIn(pictavo::Library& library, Frame& frame, const Frame& title, float progress) {
  const auto opacity = static_cast<unsigned char>(progress * 255 + 0.5f);
  Require(library->BlendOverWithOpacity(frame.pixels.data(), title.pixels.data(), frame.width,
                                        frame.height, frame.pitch(), title.pitch(), opacity, 0));
}
// End

// Key a green screen over a background
/// Lays the subject, filmed in front of green, over the background. Both have one size.
void KeyOver(pictavo::Library& library, Frame& background, Frame& subject) {
  const pictavo::ChromaKey green = {40, 180, 60, 0, 35, 40};  // red first; then angle and denoise
  const pictavo::ImageDesc src = subject.Describe();
  Frame keyed(subject.width, subject.height);
  pictavo::ImageDesc dst = keyed.Describe();
  Require(library->ApplyChromaKey(&src, &dst, &green, 1, 1));
  Require(library->BlendOverPitched(background.pixels.data(), keyed.pixels.data(), keyed.width,
                                    keyed.height, keyed.pitch()),
          1);
}
// End

// Blur with a border first
/// Blurs as if the picture went on beyond its edges: it gets a border of its edge pixels, is
/// blurred with it, and loses it again.
void BlurWithBorder(pictavo::Library& library, Frame& frame, float radius) {
  const int border = static_cast<int>(3 * radius) + 1;  // as far as three box blurs reach
  Frame large(frame.width + 2 * border, frame.height + 2 * border);
  unsigned char* const inside = large.pixels.data() + border * large.pitch() + 4 * border;
  for (int y = 0; y < frame.height; ++y)
    std::memcpy(inside + y * large.pitch(), &frame.pixels[size_t(y) * frame.pitch()],
                frame.pitch());

  pictavo::ImageDesc image = large.Describe();  // the buffer …
  image.data = inside;                          // … and the picture in it
  image.width = frame.width;
  image.height = frame.height;
  Require(library->ExtendBoundary(&image, border));
  Require(library->GaussianBlurBox3(large.pixels.data(), large.width, large.height, large.pitch(),
                                    radius));
  for (int y = 0; y < frame.height; ++y)
    std::memcpy(&frame.pixels[size_t(y) * frame.pitch()], inside + y * large.pitch(),
                frame.pitch());
}
// End

// Resize for a thumbnail
/// The frame fitted into a square. Sixteen samples a pixel keep fine detail from flickering; alpha
/// weighs colours, so that clear surroundings leave no dark edge.
Frame Thumbnail(pictavo::Library& library, const Frame& frame, int side) {
  const double scale = static_cast<double>(side) / std::max(frame.width, frame.height);
  Frame small(std::max(1, static_cast<int>(frame.width * scale)),
              std::max(1, static_cast<int>(frame.height * scale)));
  Require(library->ResizeBox16AlphaWeighted(small.pixels.data(), small.width, small.height,
                                            small.pitch(), frame.pixels.data(), frame.width,
                                            frame.height, frame.pitch(), 0));
  return small;
}
// End

// Share one object between threads
/// Makes thumbnails of many frames on several threads. The calls share the object and nothing else:
/// each writes a frame of its own.
std::vector<Frame> Thumbnails(pictavo::Library& library, const std::vector<Frame>& frames) {
  std::vector<Frame> small(frames.size(), Frame(1, 1));
  const size_t count = std::max(1u, std::thread::hardware_concurrency());
  std::vector<std::thread> threads;
  for (size_t t = 0; t < count; ++t) {
    threads.emplace_back([&, t] {
      for (size_t i = t; i < frames.size(); i += count)
        small[i] = Thumbnail(library, frames[i], 160);
    });
  }
  for (std::thread& thread : threads) thread.join();
  return small;
}
// End

namespace {

Frame Filled(int width, int height, const unsigned char (&pixel)[4]) {
  Frame frame(width, height);
  for (size_t i = 0; i < frame.pixels.size(); ++i) frame.pixels[i] = pixel[i % 4];
  return frame;
}

bool IsAt(const Frame& frame, int x, int y, const unsigned char (&pixel)[4]) {
  return std::memcmp(&frame.pixels[size_t(y) * frame.pitch() + 4 * x], pixel, 4) == 0;
}

int TryAll(pictavo::Library& library) {
  const Frame white = Filled(64, 48, {255, 255, 255, 255});
  Frame frame = Filled(64, 48, {0, 0, 0, 255});
  FadeIn(library, frame, white, 0.5f);
  if (!IsAt(frame, 5, 5, {127, 127, 127, 255})) return 1;

  Frame background = Filled(64, 48, {200, 100, 50, 255});
  Frame subject = Filled(64, 48, {60, 180, 40, 255});
  std::memcpy(&subject.pixels[0], "\x20\x20\xE0\xFF", 4);  // something red in front of the green
  KeyOver(library, background, subject);
  if (!IsAt(background, 9, 9, {200, 100, 50, 255}) || background.pixels[2] < 200) return 2;

  Frame plain = Filled(64, 48, {10, 20, 30, 255});
  BlurWithBorder(library, plain, 4);
  if (!IsAt(plain, 0, 0, {10, 20, 30, 255}) || !IsAt(plain, 63, 47, {10, 20, 30, 255})) return 3;

  const Frame small = Thumbnail(library, Filled(640, 480, {1, 2, 3, 4}), 160);
  if (small.width != 160 || small.height != 120 || !IsAt(small, 80, 60, {1, 2, 3, 4})) return 4;

  const std::vector<Frame> all =
      Thumbnails(library, std::vector<Frame>(9, Filled(320, 200, {9, 8, 7, 255})));
  for (const Frame& one : all)
    if (!IsAt(one, 159, 99, {9, 8, 7, 255})) return 5;
  return 0;
}

}  // namespace

int main() {
  pictavo::Library library;
  if (!library) return std::puts(library.errorText()), 100;
  const int failed = TryAll(library);
  std::printf(failed == 0 ? "All recipes work\n" : "Recipe %d failed\n", failed);
  return failed;
}
