// The library's allocators, replaced: pages end at memory that may not be touched, and they, arrays
// that may be refused and what operations ask for otherwise can be made short.
#include "short_memory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "operations.h"
#include "platform/pages.h"

namespace pictavo {
namespace {

std::atomic<int> left = std::numeric_limits<int>::max();  // some tests run threads
std::atomic<size_t> most = SIZE_MAX;                      // bytes of an allocation
std::mutex mutex;                                         // of what follows
std::map<void*, std::unique_ptr<test::GuardedMemory>> handedOut;

bool Take() {
  if (left == 0) return false;
  --left;
  return true;
}

}  // namespace

void* AllocatePages(size_t size) noexcept {
  if (size == 0 || size > most || !Take()) return nullptr;  // as the systems do
  // What the guards take is the test's own.
  const bool isInside = std::exchange(test::isInOperation, false);
  const size_t whole = (size + 63) / 64 * 64;  // keeps the alignment that vectors count on
  auto pages = std::make_unique<test::GuardedMemory>(whole, test::GuardedMemory::Side::kAfter);
  void* const data = pages->data();
  const std::lock_guard lock(mutex);
  handedOut[data] = std::move(pages);
  test::isInOperation = isInside;
  return data;
}

void ReleasePages(void* pages, size_t) noexcept {
  const std::lock_guard lock(mutex);
  handedOut.erase(pages);
}

namespace test {

ShortMemory::ShortMemory(int allocations, size_t mostBytes) {
  left = allocations;
  most = mostBytes;
}
ShortMemory::~ShortMemory() {
  left = std::numeric_limits<int>::max();
  most = SIZE_MAX;
}

}  // namespace test
}  // namespace pictavo

void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return pictavo::Take() ? std::malloc(size) : nullptr;
}

// Inlined, these would seem not to belong together.
[[gnu::noinline]] void* operator new(size_t size) {
  void* const memory =
      !pictavo::test::isInOperation || pictavo::Take() ? std::malloc(size) : nullptr;
  return memory != nullptr ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, size_t) noexcept { std::free(memory); }
