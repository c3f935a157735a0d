#ifndef PICTAVO_TESTS_SHORT_MEMORY_H_
#define PICTAVO_TESTS_SHORT_MEMORY_H_

namespace pictavo::test {

/// While it lives, only so many more allocations succeed: of pages, of arrays that may be refused,
/// and by operations of anything.
class ShortMemory {
 public:
  explicit ShortMemory(int allocations);
  ~ShortMemory();
};

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_SHORT_MEMORY_H_
