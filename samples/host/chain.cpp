#include "chain.h"

#include <algorithm>

#include "text.h"

namespace host {
namespace {

const Effect* const kEffects[] = {&kKeyEffect,    &kOverEffect, &kLayerEffect,
                                  &kResizeEffect, &kBlurEffect, &kConvertEffect};

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

}  // namespace

Size FrameSize(Parser* parser, const std::string& what) {
  try {
    return parser->Dimensions(what);
  } catch (const UsageFailure& failure) {
    throw UsageFailure(failure.what(), kBadSize);
  }
}

std::vector<Step> ParseChain(const std::wstring& chain, Size frame) {
  std::vector<Step> steps;
  for (const std::wstring& text : Split(Trimmed(chain), L'|', chain.npos)) {
    steps.push_back(ParseStep(text, frame));
    steps.back().text = Utf8(text);
    frame = steps.back().size;
  }
  return steps;
}

Frame::Frame(const std::vector<Step>& steps, Size size) : steps_(steps) {
  pictures_.push_back(Picture::Promised(size));
  for (const Step& step : steps) {
    if (!step.inPlace) pictures_.push_back(Picture::Promised(step.size));
  }
}

const Picture& Frame::Run(pictavo::IPictavo6* object) {
  Picture* frame = source();
  for (const Step& step : steps_) {
    Picture* const result = step.inPlace ? frame : frame + 1;
    result->pixels.resize(result->bytes());
    if (const pictavo::Outcome outcome = step.run(object, frame, result); !outcome) {
      throw Refusal('"' + step.text + '"', outcome.result);
    }
    frame = result;
  }
  return *frame;
}

}  // namespace host
