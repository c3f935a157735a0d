// The scene of docs/keying.md: pictavo-host scene.
#include "keying/key_scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <random>

#include "base/commands.h"
#include "base/text.h"
#include "demo/demo.h"

namespace host {
namespace {

using Colour = std::array<double, 3>;  // blue, green, red, 0 … 255

constexpr i32 kWidth = 960, kHeight = 540;
constexpr Colour kScreen = {kSceneScreen & 255, kSceneScreen >> 8 & 255, kSceneScreen >> 16};

Colour Mix(const Colour& a, const Colour& b, double weight) {
  Colour mixed;
  for (size_t c = 0; c < 3; ++c) mixed[c] = a[c] + (b[c] - a[c]) * weight;
  return mixed;
}

/// What stands before the screen: colours that are weighted by their alpha, as they lie on each
/// other.
struct Foreground {
  std::vector<Colour> colours = std::vector<Colour>(kWidth * kHeight);
  std::vector<double> alphas = std::vector<double>(kWidth * kHeight);
  std::vector<double> spills = std::vector<double>(kWidth * kHeight);

  void Lay(int x, int y, const Colour& colour, double alpha, double spill) {
    if (x < 0 || y < 0 || x >= kWidth || y >= kHeight || alpha <= 0) return;
    const auto i = static_cast<size_t>(y * kWidth + x);
    for (size_t c = 0; c < 3; ++c) colours[i][c] = colour[c] * alpha + colours[i][c] * (1 - alpha);
    alphas[i] = alpha + alphas[i] * (1 - alpha);
    spills[i] = spill * alpha + spills[i] * (1 - alpha);
  }
};

/// Calls place(x, y, distance) around a point: the distance to a circle's edge, positive inside.
template <typename Place>
void Disc(double centreX, double centreY, double radiusX, double radiusY, Place place) {
  for (int y = static_cast<int>(centreY - radiusY) - 2; y <= centreY + radiusY + 2; ++y) {
    for (int x = static_cast<int>(centreX - radiusX) - 2; x <= centreX + radiusX + 2; ++x) {
      const double away = std::hypot((x - centreX) / radiusX, (y - centreY) / radiusY);
      place(x, y, (1 - away) * std::min(radiusX, radiusY));
    }
  }
}

/// A body and a head, with the screen's light on their rims.
void DrawPerson(Foreground* scene) {
  const auto draw = [&](double x, double y, double rx, double ry, const Colour& colour) {
    Disc(x, y, rx, ry, [&](int px, int py, double inside) {
      const double shade = 0.75 + 0.25 * std::sin(px * 0.05) * std::cos(py * 0.04);
      scene->Lay(px, py, Mix({0, 0, 0}, colour, shade), std::clamp(inside + 0.5, 0., 1.),
                 0.25 * std::exp(-std::max(inside, 0.) / 9));
    });
  };
  draw(300, 520, 170, 210, {96, 52, 40});    // a blue jacket
  draw(300, 470, 52, 120, {205, 208, 212});  // a grey shirt
  draw(300, 215, 82, 102, {118, 150, 205});  // skin
}

/// Strands about a pixel wide that thin out, as arcs from the head.
void DrawHair(Foreground* scene) {
  std::mt19937 random(5);
  std::uniform_real_distribution<> part(0, 1);
  for (int strand = 0; strand < 900; ++strand) {
    const double angle = -3.4 + 3.66 * part(random), length = 60 + 90 * part(random),
                 bend = 1.6 * (part(random) - 0.5), width = 0.5 + 0.9 * part(random),
                 bright = part(random);
    const Colour colour = Mix({18, 24, 34}, {40, 70, 110}, bright * bright);
    double x = 300 + 74 * std::cos(angle), y = 205 + 92 * std::sin(angle), heading = angle;
    for (double at = 0; at < length; at += 0.5) {
      heading += bend / length * 0.5 + 0.004 * std::cos(angle);  // falls outwards
      x += 0.5 * std::cos(heading);
      y += 0.5 * std::sin(heading);
      const double half = width / 2 * (1 - at / length);
      for (int py = static_cast<int>(y) - 1; py <= y + 1; ++py) {
        for (int px = static_cast<int>(x) - 1; px <= x + 1; ++px) {
          const double cover = std::clamp(half + 0.5 - std::hypot(px - x, py - y), 0., 1.);
          scene->Lay(px, py, colour, 0.5 * cover, 0.2);
        }
      }
    }
  }
}

/// A ball that moved 60 pixels while the shutter was open.
void DrawBall(Foreground* scene) {
  for (int y = 60; y < 180; ++y) {
    for (int x = 560; x < 760; ++x) {
      double cover = 0;
      for (int k = 0; k < 60; ++k)
        cover += std::clamp(42.5 - std::hypot(x - 630 - k, y - 120 + 0.3 * k), 0., 1.) / 60;
      scene->Lay(x, y, Mix({30, 40, 190}, {60, 90, 240}, (y - 60) / 120.), cover, 0.05);
    }
  }
}

/// Glass that lets most of the screen through, in a frame of brass, with a reflection.
void DrawGlass(Foreground* scene) {
  for (int y = 260; y < 470; ++y) {
    for (int x = 650; x < 860; ++x) {
      const bool frame = x < 660 || x >= 850 || y < 270 || y >= 460;
      const double gleam = 0.55 * std::exp(-std::pow((x - 690 - 0.5 * (y - 270)) / 16., 2));
      if (frame) {
        scene->Lay(x, y, {60, 150, 190}, 1, 0.1);
      } else {
        scene->Lay(x, y, {232, 228, 220}, 0.16 + gleam, 0);
      }
    }
  }
}

/// How dark the shadow on the screen makes what lies behind, 0 … 1.
double Shadow(int x, int y) {
  return 0.5 * (1 - SmoothStep(0.55, 1.1, std::hypot((x - 470) / 190., (y - 500) / 60.)));
}

/// The screen's own unevenness: a light to the upper left, folds.
double Light(int x, int y) {
  const double falloff = 1.12 - 0.34 * std::hypot((x - 300) / 960., (y - 120) / 540.);
  return falloff + 0.03 * std::sin(x * 0.021 + 0.7 * std::sin(y * 0.011));
}

Colour BackgroundAt(int x, int y) {
  const Colour sky = Mix({190, 120, 60}, {120, 170, 240}, y / double{kHeight});
  const bool tile = y > 330 && (x / 40 + y / 40) % 2 == 0;
  return tile ? Mix(sky, {30, 30, 60}, 0.6) : sky;
}

void Put(Picture* picture, i32 x, i32 y, const Colour& colour) {
  u8* const pixel = picture->At(x, y);
  for (size_t c = 0; c < 3; ++c)
    pixel[c] = static_cast<u8>(std::clamp(std::lround(colour[c]), 0L, 255L));
  pixel[3] = 255;
}

Foreground DrawForeground() {
  Foreground front;
  DrawHair(&front);
  DrawPerson(&front);
  DrawBall(&front);
  DrawGlass(&front);
  return front;
}

int RunScene(pictavo::Library&, const Arguments& arguments) {
  const Arguments files =
      TakeFiles(3, "scene takes three files, SHOT BACKGROUND TRUTH", arguments, {});
  const KeyScene scene;
  WritePicture(files[0], scene.shot);
  WritePicture(files[1], scene.background);
  WritePicture(files[2], scene.truth);
  std::printf("%s, %s, %s: %d x %d, screen %06X\n", Utf8(files[0]).c_str(), Utf8(files[1]).c_str(),
              Utf8(files[2]).c_str(), kWidth, kHeight, kSceneScreen);
  return 0;
}

}  // namespace

KeyScene::KeyScene()
    : shot(kWidth, kHeight),
      background(kWidth, kHeight),
      truth(kWidth, kHeight),
      matte(kWidth, kHeight) {
  const Foreground front = DrawForeground();
  std::mt19937 random(9);
  std::normal_distribution<> noise(0, 2.5);
  for (i32 y = 0; y < kHeight; ++y) {
    for (i32 x = 0; x < kWidth; ++x) {
      const auto i = static_cast<size_t>(y * kWidth + x);
      const double alpha = front.alphas[i], through = (1 - alpha) * (1 - Shadow(x, y));
      const Colour behind = BackgroundAt(x, y);
      Colour seen, perfect;
      for (size_t c = 0; c < 3; ++c) {
        const double screen = kScreen[c] * Light(x, y), own = front.colours[i][c];
        seen[c] = own + (alpha * front.spills[i] + through) * screen + noise(random);
        perfect[c] = own + through * behind[c];
      }
      const double hidden = 255 * (1 - through);
      Put(&shot, x, y, seen);
      Put(&background, x, y, behind);
      Put(&truth, x, y, perfect);
      Put(&matte, x, y, {hidden, hidden, hidden});
    }
  }
}

const Command kSceneCommand = {
    L"scene",
    "  pictavo-host scene SHOT BACKGROUND TRUTH\n"
    "      Draws a scene before a green screen that is hard to key, a background, and what a\n"
    "      perfect key would show of the one before the other.\n",
    RunScene};

}  // namespace host
