// A scene before a green screen that is hard to key, with the picture that a perfect key would
// make.
#ifndef PICTAVO_SAMPLES_HOST_KEYING_KEY_SCENE_H_
#define PICTAVO_SAMPLES_HOST_KEYING_KEY_SCENE_H_

#include "base/picture.h"

namespace host {

/// Opaque pictures of one size. The shot has hair, a ball in motion, a shadow on the screen, a pane
/// of glass, the screen's light on what stands before it, an uneven screen and noise.
struct KeyScene {
  KeyScene();

  Picture shot;
  Picture background;
  Picture truth;  // what stands before the screen, without its light, over the background
  Picture matte;  // what hides the background, white, the shadow too
};

/// The screen's colour where it is lit as it should be, 0xRRGGBB.
inline constexpr u32 kSceneScreen = 0x2EA83E;

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_KEYING_KEY_SCENE_H_
