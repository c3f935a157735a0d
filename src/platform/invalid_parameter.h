#ifndef PICTAVO_PLATFORM_INVALID_PARAMETER_H_
#define PICTAVO_PLATFORM_INVALID_PARAMETER_H_

#include <cerrno>
#include <cstdlib>

namespace pictavo {

/// Reports a range error as the C runtime's checked functions do: through errno and the
/// invalid-parameter handler. Unlike theirs, it does not end a process that has set no handler.
inline void ReportRangeError() noexcept {
  errno = ERANGE;
#ifdef _WIN32
  if (const _invalid_parameter_handler handler = _get_invalid_parameter_handler()) {
    handler(nullptr, nullptr, nullptr, 0, 0);
  }
#endif
}

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_INVALID_PARAMETER_H_
