// The snippets of docs/recipes.md, and a program that tries each on small frames. Its exit code is
// the number of the recipe that failed, 0 when none did.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include "pictavo/pictavo_cube.h"
#include "pictavo/pictavo_host.h"

using pictavo::ConstView;
using pictavo::Picture;
using pictavo::View;

/// `progress` runs from 0 to 1 over the frames of the fade. The title has the frame's size.
void FadeIn(const pictavo::Host& host, View frame, ConstView title, float progress) {
  host.BlendOverWithOpacity(frame, title, static_cast<unsigned char>(progress * 255 + 0.5f));
}

/// Lays the subject, filmed in front of green, over the background. Both have one size.
void KeyOver(const pictavo::Host& host, View background, ConstView subject) {
  const pictavo::ChromaKey green = {40, 180, 60, 0, 35, 40};  // red first; then angle and denoise
  Picture keyed(subject.width(), subject.height());
  host.ApplyChromaKey(subject, keyed, green);
  host.BlendOver(background, keyed);
}

/// The title blurred in a larger picture, with room for what spreads beyond its edges.
Picture Spread(const pictavo::Host& host, ConstView title, float sigma) {
  const int border = static_cast<int>(3.5f * sigma) + 1;  // nothing is seen of it farther out
  Picture large(title.width() + 2 * border, title.height() + 2 * border);
  host.Copy(title, View(large).Part(border, border, title.width(), title.height()));
  host.GaussianBlur(large, sigma);
  return large;
}

/// The frame fitted into a square. Colours are weighted by alpha, so that clear surroundings leave
/// no dark edge.
Picture Thumbnail(const pictavo::Host& host, ConstView frame, int side) {
  const double scale = static_cast<double>(side) / std::max(frame.width(), frame.height());
  return host.Resized(frame, std::max(1, static_cast<int>(frame.width() * scale)),
                      std::max(1, static_cast<int>(frame.height() * scale)));
}

/// Makes thumbnails of many frames on several threads. The calls share the object and nothing else:
/// each writes a picture of its own.
std::vector<Picture> Thumbnails(const pictavo::Host& host, const std::vector<Picture>& frames) {
  std::vector<Picture> thumbnails(frames.size());
  const size_t count = std::max(1u, std::thread::hardware_concurrency());
  std::vector<std::thread> threads;
  for (size_t t = 0; t < count; ++t) {
    threads.emplace_back([&, t] {
      for (size_t i = t; i < frames.size(); i += count)
        thumbnails[i] = Thumbnail(host, frames[i], 160);
    });
  }
  for (std::thread& thread : threads) thread.join();
  return thumbnails;
}

/// The frame's most even split into dark and bright.
unsigned Split(const pictavo::Host& host, ConstView frame) {
  const auto bins = host.ComputeHistogram(frame, 1);
  const std::vector<float> values(bins.begin(), bins.end());
  unsigned index = 0;
  host.Require<&pictavo::IPictavo6::FindThreshold>(values.data(), 256, &index);
  return index;
}

/// Grades a decoder's frame, NV12 of high definition, by a .cube file, and packs it again for the
/// encoder. The look is kept from frame to frame: `pictavo::ReadCube(text)`.
void GradeFrame(const pictavo::Host& host, std::vector<unsigned char>& nv12, int width, int height,
                const pictavo::CubeTable& look) {
  const unsigned format = pictavo::FrameFormat(
      pictavo::PICTAVO_FRAME_NV12, pictavo::PICTAVO_MATRIX_BT709, pictavo::PICTAVO_RANGE_LIMITED);
  Picture frame(width, height);
  host.ConvertFrameToBGRA(nv12.data(), frame, format);
  host.ApplyColorLut(frame, frame, look.Param());
  host.ConvertBGRAToFrame(frame, nv12.data(), format);
}

namespace {

Picture Filled(const pictavo::Host& host, int width, int height, unsigned colour) {
  Picture picture(width, height);
  host.Fill(picture, colour);
  return picture;
}

bool IsAt(ConstView picture, int x, int y, unsigned colour) {
  return std::memcmp(picture.At(x, y), &colour, 4) == 0;
}

int TryAll(const pictavo::Host& host) {
  const Picture white = Filled(host, 64, 48, 0xFFFFFFFF);
  Picture frame = Filled(host, 64, 48, 0xFF000000);
  FadeIn(host, frame, white, 0.5f);
  if (!IsAt(frame, 5, 5, 0xFF7F7F7F)) return 1;

  Picture background = Filled(host, 64, 48, 0xFF3264C8);
  Picture subject = Filled(host, 64, 48, 0xFF28B43C);
  std::memcpy(subject.At(0, 0), "\x20\x20\xE0\xFF", 4);  // something red in front of the green
  KeyOver(host, background, subject);
  if (!IsAt(background, 9, 9, 0xFF3264C8) || background.At(0, 0)[2] < 200) return 2;

  // Its colour stays one, since clear pixels lend none, and it does not reach the corner.
  const Picture soft = Spread(host, Filled(host, 64, 48, 0xFF1E140A), 4);
  if (std::memcmp(soft.At(15, 30), "\x0A\x14\x1E", 3) != 0 || soft.At(15, 30)[3] > 150 ||
      !IsAt(soft, 47, 39, 0xFF1E140A) || !IsAt(soft, 0, 0, 0))
    return 3;

  const Picture thumbnail = Thumbnail(host, Filled(host, 640, 480, 0x04030201), 160);
  if (thumbnail.width() != 160 || thumbnail.height() != 120 || !IsAt(thumbnail, 80, 60, 0x04030201))
    return 4;

  const std::vector<Picture> frames(9, Filled(host, 320, 200, 0xFF070809));
  for (const Picture& one : Thumbnails(host, frames))
    if (!IsAt(one, 159, 99, 0xFF070809)) return 5;

  host.Fill(View(frame).Part(0, 0, 20, 48), 0xFF00C800);
  if (Split(host, frame) != 127) return 6;

  std::vector<unsigned char> nv12(64 * 48 * 3 / 2, 128);
  std::fill_n(nv12.begin(), 64 * 48, 235);  // white
  GradeFrame(host, nv12, 64, 48, pictavo::ReadCube("LUT_1D_SIZE 2\n1 1 1\n0 0 0\n"));
  return nv12.front() == 16 && nv12.back() == 128 ? 0 : 7;
}

}  // namespace

int main() try {
  const int failed = TryAll(pictavo::Host());
  std::printf(failed == 0 ? "All recipes work\n" : "Recipe %d failed\n", failed);
  return failed;
} catch (const std::exception& error) {
  return std::puts(error.what()), 100;
}
