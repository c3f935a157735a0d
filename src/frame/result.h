#ifndef PICTAVO_FRAME_RESULT_H_
#define PICTAVO_FRAME_RESULT_H_

#include "pictavo/pictavo.h"

/// Leaves a function with a result that is a failure. What says that there is nothing to do is
/// none.
#define PICTAVO_RETURN_IF_FAILED(call) \
  if (const u32 result_ = (call); static_cast<i32>(result_) < 0) return result_

#endif  // PICTAVO_FRAME_RESULT_H_
