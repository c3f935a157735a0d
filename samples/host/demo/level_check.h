#ifndef PICTAVO_SAMPLES_HOST_DEMO_LEVEL_CHECK_H_
#define PICTAVO_SAMPLES_HOST_DEMO_LEVEL_CHECK_H_

#include <string>

#include "commands/operations.h"

namespace host {

/// What an operation whose pixels differ between levels must give at a level, computed from its
/// rule in pictavo.h. The ramp must stay inside 0 … 1.
Picture ExpectedOver(const Operation& operation, Picture background, const Picture& layer,
                     const BlendSettings& settings, i32 level);

/// The first pixel in which two pictures of one size differ, for people; empty when none does.
std::string FirstDifference(const Picture& expected, const Picture& result);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_DEMO_LEVEL_CHECK_H_
