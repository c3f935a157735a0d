// What the chroma keys of the processor and of the graphics card share.
#ifndef PICTAVO_SAMPLES_HOST_KEYING_CHROMA_KEY_H_
#define PICTAVO_SAMPLES_HOST_KEYING_CHROMA_KEY_H_

#include <vector>

#include "base/command_line.h"
#include "pictavo/pictavo_host.h"

namespace host {

using Keys = std::vector<pictavo::ChromaKey>;

/// Writes the keyed source; true when the library did it.
pictavo::Outcome Key(pictavo::IPictavo6* object, Picture* dst, const Picture& source,
                     const Keys& keys);

/// A key of a colour, 0xRRGGBB.
pictavo::ChromaKey KeyOf(u32 colour, i32 angle, i32 denoise);

/// Takes RRGGBB ANGLE DENOISE from a command line.
pictavo::ChromaKey ParseKey(Parser* parser);

/// A rosette of the picture's middle as a camera sees it in front of a green screen: edges are
/// soft, and the screen's light falls on what is near them.
Picture OnGreenScreen(Picture picture);

/// The keys for that screen.
Keys KeysOfScreen();

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_KEYING_CHROMA_KEY_H_
