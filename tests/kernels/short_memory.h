#ifndef PICTAVO_TESTS_SHORT_MEMORY_H_
#define PICTAVO_TESTS_SHORT_MEMORY_H_

#include <cstddef>
#include <cstdint>

namespace pictavo::test {

/// While it lives, only so many more allocations succeed: of pages, of arrays that may be refused,
/// and by operations of anything; and none of pages that is larger than allowed.
class ShortMemory {
 public:
  explicit ShortMemory(int allocations, size_t mostBytes = SIZE_MAX);
  ~ShortMemory();
};

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_SHORT_MEMORY_H_
