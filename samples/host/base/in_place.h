// What commands and effects share that change a picture where it is.
#ifndef PICTAVO_SAMPLES_HOST_BASE_IN_PLACE_H_
#define PICTAVO_SAMPLES_HOST_BASE_IN_PLACE_H_

#include <functional>

#include "base/chain.h"
#include "base/commands.h"

namespace host {

using InPlace = std::function<pictavo::Outcome(pictavo::IPictavo6* object, Picture* picture)>;

/// Reads the first file, changes the picture, writes it to the second. Throws Failure.
/// @param what for the message of a refusal: "blur"
int Change(pictavo::Library& library, const Arguments& files, const char* what,
           const InPlace& change);

/// The next setting of an effect, or what it is without. Throws UsageFailure.
f32 Setting(Parser& settings, const char* what, f32 otherwise, f32 least, f32 most);

/// An effect's step.
Step InPlaceStep(Size size, InPlace change);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_BASE_IN_PLACE_H_
