#ifndef PICTAVO_SAMPLES_HOST_CHAIN_H_
#define PICTAVO_SAMPLES_HOST_CHAIN_H_

#include <functional>
#include <string>
#include <vector>

#include "command_line.h"
#include "pictavo/pictavo_host.h"
#include "picture.h"

namespace host {

/// An effect with its settings, made for frames of one size. Any number of threads may run it at
/// once.
struct Step {
  Size size;     // of what it gives
  bool inPlace;  // it gives its result in the frame that it takes
  std::function<pictavo::Outcome(pictavo::IPictavo6* object, Picture* frame, Picture* result)> run;
  std::string text{};  // its own part of the chain
};

struct Effect {
  const char* name;
  size_t settings;  // at most so many; the last one may contain colons
  Step (*make)(Parser& settings, Size frame);
};

// The effects, each in the file of its command.
extern const Effect kBlurEffect, kConvertEffect, kKeyEffect, kLayerEffect, kOverEffect,
    kResizeEffect;

constexpr int kBadSize = 3, kUnknownEffect = 4;  // the program's exit codes for them

/// Takes the size of frames from a command line. Throws UsageFailure.
Size FrameSize(Parser* parser, const std::string& what);

/// The steps of a chain, for example "key=00b140:30:20 | over=background.png | blur=4". COM must be
/// up. Throws UsageFailure.
std::vector<Step> ParseChain(const std::wstring& chain, Size frame);

/// A frame on its way through a chain; one thread's own. Takes no memory before there are pixels.
class Frame {
 public:
  Frame(const std::vector<Step>& steps, Size size);

  /// Where the frame goes in.
  Picture* source() { return &pictures_.front(); }

  /// Runs the chain. The result stays until the next run. Throws Failure.
  const Picture& Run(pictavo::IPictavo6* object);

 private:
  const std::vector<Step>& steps_;
  std::vector<Picture> pictures_;  // the source, and one for each step that is not in place
};

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_CHAIN_H_
