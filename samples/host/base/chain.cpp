#include "base/chain.h"

#include <algorithm>

#include "base/text.h"

namespace host {
namespace {

const Effect* const kEffects[] = {
    &kKeyEffect,        &kScreenKeyEffect, &kOverEffect,   &kLayerEffect,   &kFadeEffect,
    &kTransitionEffect, &kResizeEffect,    &kFlipEffect,   &kBlurEffect,    &kMotionEffect,
    &kBorderEffect,     &kPixelateEffect,  &kLevelsEffect, &kColorEffect,   &kLutEffect,
    &kGaussEffect,      &kSharpenEffect,   &kMatteEffect,  &kConvertEffect, &kRotateEffect,
    &kTiltEffect};

std::wstring Trimmed(const std::wstring& text) {
  constexpr const wchar_t* kSpace = L" \t\r\n";
  const size_t first = text.find_first_not_of(kSpace);
  if (first == text.npos) return L"";
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

/// The pieces of a text, `most` at most; none of an empty text.
Arguments Split(const std::wstring& text, wchar_t separator, size_t most) {
  Arguments pieces;
  size_t from = 0;
  while (!text.empty() && pieces.size() < most) {
    const size_t at = pieces.size() + 1 < most ? text.find(separator, from) : text.npos;
    pieces.push_back(Trimmed(text.substr(from, at - from)));
    if (at == text.npos) break;
    from = at + 1;
  }
  return pieces;
}

const Effect& FindEffect(const std::wstring& name) {
  for (const Effect* effect : kEffects) {
    if (Utf8(name) == effect->name) return *effect;
  }
  throw UsageFailure("there is no effect \"" + Utf8(name) + '"', kUnknownEffect);
}

Step ParseStep(const std::wstring& text, Size frame) {
  const size_t equals = std::min(text.find(L'='), text.size());
  const Effect& effect = FindEffect(Trimmed(text.substr(0, equals)));
  const Arguments settings =
      Split(text.substr(std::min(equals + 1, text.size())), L':', effect.settings);
  Parser parser(settings);
  return effect.make(parser, frame);
}

void CheckSecond(const Step& step, Size taken, Size first, bool hasSecond) {
  if (!step.takesSecond) return;
  if (!hasSecond) throw UsageFailure('"' + step.text + "\" needs a second video, --second FILE");
  if (taken.width != first.width || taken.height != first.height)
    throw UsageFailure('"' + step.text + "\" needs frames of the second video's size", kBadSize);
}

}  // namespace

FrameBeside::FrameBeside(const std::wstring& name, Size size) {
  if (name == L"second") return;
  picture_ = std::make_shared<const Picture>(Covering(ReadPicture(name), size.width, size.height));
}

Size FrameSize(Parser* parser, const std::string& what) {
  try {
    return parser->Dimensions(what);
  } catch (const UsageFailure& failure) {
    throw UsageFailure(failure.what(), kBadSize);
  }
}

std::vector<Step> ParseChain(const std::wstring& chain, Size frame, bool hasSecond) {
  std::vector<Step> steps;
  const Size first = frame;
  for (const std::wstring& text : Split(Trimmed(chain), L'|', chain.npos)) {
    steps.push_back(ParseStep(text, frame));
    steps.back().text = Utf8(text);
    CheckSecond(steps.back(), frame, first, hasSecond);
    frame = steps.back().size;
  }
  return steps;
}

Frame::Frame(const std::vector<Step>& steps, Size size)
    : steps_(steps), second_(Picture::Promised(size)) {
  pictures_.push_back(Picture::Promised(size));
  for (const Step& step : steps) {
    if (!step.inPlace) pictures_.push_back(Picture::Promised(step.size));
  }
}

const Picture& Frame::Run(pictavo::IPictavo6* object, i64 number) {
  const Moment moment = {number, &second_};
  Picture* frame = source();
  for (const Step& step : steps_) {
    Picture* const result = step.inPlace ? frame : frame + 1;
    result->pixels.resize(result->bytes());
    const pictavo::Outcome outcome =
        step.runAt ? step.runAt(object, moment, frame, result) : step.run(object, frame, result);
    if (!outcome) {
      throw Refusal('"' + step.text + '"', outcome.result);
    }
    frame = result;
  }
  return *frame;
}

}  // namespace host
