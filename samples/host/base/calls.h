// Calls of the library's methods with this program's pictures, by the shapes that methods have.
#ifndef PICTAVO_SAMPLES_HOST_BASE_CALLS_H_
#define PICTAVO_SAMPLES_HOST_BASE_CALLS_H_

#include <string>

#include "base/picture.h"
#include "base/text.h"
#include "pictavo/pictavo_host.h"

namespace host {

/// Throws Failure when the library refused; `what` is what it was asked for, for people.
inline void Expect(const pictavo::Outcome& outcome, const std::string& what) {
  if (!outcome) throw Refusal(what, outcome.result);
}

/// A method that takes the picture that it changes as bytes, size and pitch.
template <auto method, typename... Arguments>
pictavo::Outcome CallOn(pictavo::IPictavo6* object, Picture* picture,
                        const Arguments&... arguments) {
  return pictavo::Call<method>(object, picture->pixels.data(), picture->width, picture->height,
                               picture->pitch(), arguments...);
}

/// One that takes two pictures so: a resizer.
template <auto method, typename... Arguments>
pictavo::Outcome CallResizer(pictavo::IPictavo6* object, Picture* dst, const Picture& src,
                             const Arguments&... arguments) {
  return pictavo::Call<method>(object, dst->pixels.data(), dst->width, dst->height, dst->pitch(),
                               src.pixels.data(), src.width, src.height, src.pitch(), arguments...);
}

/// One that takes records, the picture that is read before the one that is written.
template <auto method, typename... Arguments>
pictavo::Outcome CallFrom(pictavo::IPictavo6* object, Picture* dst, const Picture& src,
                          const Arguments&... arguments) {
  const pictavo::ImageDesc from = Describe(src);
  pictavo::ImageDesc to = Describe(*dst);
  return pictavo::Call<method>(object, &from, &to, arguments...);
}

/// One that takes records, the picture that is written first.
template <auto method, typename... Arguments>
pictavo::Outcome CallOnto(pictavo::IPictavo6* object, Picture* dst, const Picture& src,
                          const Arguments&... arguments) {
  pictavo::ImageDesc to = Describe(*dst);
  const pictavo::ImageDesc from = Describe(src);
  return pictavo::Call<method>(object, &to, &from, arguments...);
}

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_BASE_CALLS_H_
