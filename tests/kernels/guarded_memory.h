#ifndef PICTAVO_TESTS_GUARDED_MEMORY_H_
#define PICTAVO_TESTS_GUARDED_MEMORY_H_

#include <cstddef>
#include <cstdint>

namespace pictavo::test {

/// Bytes that begin, or end, exactly at a page that may not be touched. A kernel that reads or
/// writes outside them stops the program.
class GuardedMemory {
 public:
  enum class Side { kBefore, kAfter };  // of the bytes: where the forbidden page touches them

  GuardedMemory(size_t size, Side side);
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  uint8_t* data() { return data_; }
  size_t size() const { return size_; }

 private:
  size_t size_;
  size_t mappedSize_;
  uint8_t* mapped_;
  uint8_t* data_;
};

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_GUARDED_MEMORY_H_
