#include "base/in_place.h"

#include <utility>

#include "base/calls.h"

namespace host {

int Change(pictavo::Library& library, const Arguments& files, const char* what,
           const InPlace& change) {
  Picture picture = ReadPicture(files[0]);
  Expect(change(library.get(), &picture), Format("to %s the picture", what));
  return Deliver(files[1], picture, Format(", level %d", library->GetCPULevel()));
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
