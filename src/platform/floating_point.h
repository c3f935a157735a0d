#ifndef PICTAVO_PLATFORM_FLOATING_POINT_H_
#define PICTAVO_PLATFORM_FLOATING_POINT_H_

#include <xmmintrin.h>

namespace pictavo {

/// While it lives, its thread computes in floating point as threads do by default: rounding to
/// nearest, tiny numbers kept, no exceptions. Afterwards as before.
class DefaultFloatingPoint {
 public:
  DefaultFloatingPoint() noexcept : before_(_mm_getcsr()) { _mm_setcsr(0x1F80); }
  ~DefaultFloatingPoint() { _mm_setcsr(before_); }
  DefaultFloatingPoint(const DefaultFloatingPoint&) = delete;
  DefaultFloatingPoint& operator=(const DefaultFloatingPoint&) = delete;

 private:
  const unsigned before_;
};

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_FLOATING_POINT_H_
