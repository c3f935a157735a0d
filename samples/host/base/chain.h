#ifndef PICTAVO_SAMPLES_HOST_BASE_CHAIN_H_
#define PICTAVO_SAMPLES_HOST_BASE_CHAIN_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/command_line.h"
#include "base/picture.h"
#include "pictavo/pictavo_host.h"

namespace host {

/// What an effect may ask for beside its frame.
struct Moment {
  i64 number = 0;                   // of the frame, from 0
  const Picture* second = nullptr;  // the second video's frame
};

/// An effect with its settings, made for frames of one size. Any number of threads may run it at
/// once.
struct Step {
  Size size;     // of what it gives
  bool inPlace;  // it gives its result in the frame that it takes
  std::function<pictavo::Outcome(pictavo::IPictavo6* object, Picture* frame, Picture* result)>
      run{};
  std::string text{};  // its own part of the chain
  /// In the place of `run`, for one that asks for more.
  std::function<pictavo::Outcome(pictavo::IPictavo6* object, const Moment& moment, Picture* frame,
                                 Picture* result)>
      runAt{};
  bool takesSecond = false;  // the second video's frames
};

struct Effect {
  const char* name;
  size_t settings;  // at most so many; the last one may contain colons
  Step (*make)(Parser& settings, Size frame);
};

// The effects, each in the file of its command.
extern const Effect kBlurEffect, kBorderEffect, kConvertEffect, kFlipEffect, kFadeEffect,
    kLevelsEffect, kColorEffect, kLutEffect, kGaussEffect, kMatteEffect, kSharpenEffect, kKeyEffect,
    kScreenKeyEffect, kLayerEffect, kMotionEffect, kOverEffect, kPixelateEffect, kResizeEffect,
    kTransitionEffect, kRotateEffect, kTiltEffect;

constexpr int kBadSize = 3, kUnknownEffect = 4;  // the program's exit codes for them

/// What a setting FILE names: a picture, made to fill the frame, or, as "second", the second video.
/// COM must be up. Throws Failure.
class FrameBeside {
 public:
  FrameBeside(const std::wstring& name, Size size);

  bool isSecond() const { return !picture_; }
  const Picture& At(const Moment& moment) const { return picture_ ? *picture_ : *moment.second; }

 private:
  std::shared_ptr<const Picture> picture_;
};

/// Takes the size of frames from a command line. Throws UsageFailure.
Size FrameSize(Parser* parser, const std::string& what);

/// The steps of a chain, for example "key=00b140:30:20 | over=background.png | blur=4". COM must be
/// up. Throws UsageFailure.
/// @param hasSecond whether there is a second video, of frames as large as those that go in
std::vector<Step> ParseChain(const std::wstring& chain, Size frame, bool hasSecond);

/// A frame on its way through a chain; one thread's own. Takes no memory before there are pixels.
class Frame {
 public:
  Frame(const std::vector<Step>& steps, Size size);

  /// Where the frame goes in.
  Picture* source() { return &pictures_.front(); }
  /// Where the second video's frame goes in.
  Picture* second() { return &second_; }

  /// Runs the chain on the frame of that number. The result stays until the next run. Throws
  /// Failure.
  const Picture& Run(pictavo::IPictavo6* object, i64 number);

 private:
  const std::vector<Step>& steps_;
  Picture second_;
  std::vector<Picture> pictures_;  // the source, and one for each step that is not in place
};

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_BASE_CHAIN_H_
