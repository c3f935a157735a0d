// Keys made of the library's operations; docs/keying.md tells why it is as it is.
#ifndef PICTAVO_SAMPLES_HOST_KEYING_SCREEN_KEY_H_
#define PICTAVO_SAMPLES_HOST_KEYING_SCREEN_KEY_H_

#include "base/picture.h"
#include "pictavo/pictavo_host.h"

namespace host {

/// What stands before the screen, in straight alpha, of an easy shot. Throws Failure, as all here.
Picture SimpleKey(pictavo::IPictavo6* object, const Picture& shot, const pictavo::ChromaKey& key,
                  const pictavo::MatteParam& matte);

/// Settings for hard shots.
struct ScreenKey {
  // The screen by itself: what is not screen for a rough key is cut out, and the rest blurred.
  pictavo::ChromaKey screen = {0, 0, 0, 0, 30, 16};
  f32 sure = 0.1f;  // alphas from here on are no screen …
  i32 margin = 8;   // … nor are so many pixels around
  f32 blur = 20;    // sigma

  // The matte: a key on the evenly lit shot; alphas up to `black` become clear, from `white` on
  // opaque.
  i32 angle = 90, denoise = 6;
  f32 black = 0, white = 1;

  // Opaque for sure, though the screen's light makes it seem half clear.
  pictavo::MatteParam core = {0.65f, 0.85f, 0, 0};

  f32 spill = 0.6f;  // 0 … 1; the less, the less of the screen's colour stays anywhere
};

/// The screen without what stands before it, opaque, of an opaque shot.
Picture CleanPlate(pictavo::IPictavo6* object, const Picture& shot, const ScreenKey& key);

/// What stands before the screen, premultiplied.
/// @param plate the screen by itself, in the shot's size and light
Picture KeyScreen(pictavo::IPictavo6* object, const Picture& shot, const Picture& plate,
                  const ScreenKey& key);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_KEYING_SCREEN_KEY_H_
