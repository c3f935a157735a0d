#include "in_place.h"

#include <cstdio>
#include <utility>

#include "text.h"

namespace host {

int Change(pictavo::Library& library, const Arguments& files, const char* what,
           const InPlace& change) {
  Picture picture = ReadPicture(files[0]);
  if (const pictavo::Outcome outcome = change(library.get(), &picture); !outcome)
    throw Refusal(Format("to %s the picture", what), outcome.result);
  WritePicture(files[1], picture);
  std::printf("%s: %d x %d, level %d\n", Utf8(files[1]).c_str(), picture.width, picture.height,
              library->GetCPULevel());
  return 0;
}

Option RealOption(const char* name, f32* number) {
  return {name, [=](Parser& parser) { *number = parser.Real(name); }};
}

f32 Setting(Parser& settings, const char* what, f32 otherwise, f32 least, f32 most) {
  if (settings.AtEnd()) return otherwise;
  const f32 number = settings.Real(what);
  if (!(number >= least && number <= most))
    throw UsageFailure(Format("%s is %g to %g", what, double{least}, double{most}));
  return number;
}

Step InPlaceStep(Size size, InPlace change) {
  return {size, true,
          [change = std::move(change)](pictavo::IPictavo6* object, Picture* frame, Picture*) {
            return change(object, frame);
          }};
}

}  // namespace host
