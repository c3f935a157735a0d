#ifndef PICTAVO_SAMPLES_HOST_COMMANDS_OPERATIONS_H_
#define PICTAVO_SAMPLES_HOST_COMMANDS_OPERATIONS_H_

#include <array>
#include <string>

#include "base/picture.h"
#include "pictavo/pictavo_host.h"

namespace host {

/// Everything that a blend operation may be given beside its pictures.
struct BlendSettings {
  u8 opacity = 255;
  f32 rampStart = 1.0f;  // opacity of the top row …
  f32 rampEnd = 1.0f;    // … and the one reached below the bottom row
  bool flip = false;     // read the layer bottom-up
  u32 backdrop = 0;      // 0xAARRGGBB; mixed with instead of the background when AA is not 0
};

/// The settings that an operation takes, as bits.
enum Settings : unsigned { kNone = 0, kRamp = 1, kFlip = 2, kOpacity = 4, kBackdrop = 8 };

/// Which pictures an operation takes premultiplied.
enum class Premultiplied { kNone, kLayer, kBoth };

/// What an operation's pixels do from level 3 on: nothing else, or, as pictavo.h says of slots 2 to
/// 4, go in pairs, within rows or through the whole picture.
enum class LevelRule { kSameBytes, kPairsInRows, kPairsThroughout };

/// A blend operation of the library.
struct Operation {
  const char* family;
  const char* name;
  int slot;
  unsigned settings;
  Premultiplied premultiplied;
  LevelRule levelRule;
  const char* description;

  /// Blends the layer into the background, which has its size.
  pictavo::Outcome (*run)(pictavo::IPictavo6* object, Picture* background, const Picture& layer,
                          const BlendSettings& settings);

  // The library takes pictures premultiplied or not; files and screens are not.
  Picture PreparedLayer(pictavo::IPictavo6* object, Picture layer) const;
  Picture PreparedBackground(pictavo::IPictavo6* object, Picture background) const;
  Picture Finished(Picture result) const;
};

/// In slot order.
extern const std::array<Operation, 12> kOperations;

/// The operation of that name. Throws UsageFailure where there is none.
const Operation& FindOperation(const std::string& name);

/// The settings that an operation takes, for people.
std::string SettingsText(unsigned taken, const BlendSettings& settings);

/// What a level means.
const char* LevelName(i32 level);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_COMMANDS_OPERATIONS_H_
