// The library's page allocator, replaced: pages end at memory that may not be touched, and can be
// made short.
#include "short_memory.h"

#include <limits>
#include <map>
#include <memory>

#include "guarded_memory.h"
#include "platform/pages.h"

namespace pictavo {
namespace {

int left = std::numeric_limits<int>::max();
std::map<void*, std::unique_ptr<test::GuardedMemory>> handedOut;

}  // namespace

void* AllocatePages(size_t size) noexcept {
  if (left == 0) return nullptr;
  --left;
  const size_t whole = (size + 63) / 64 * 64;  // keeps the alignment that vectors count on
  auto pages = std::make_unique<test::GuardedMemory>(whole, test::GuardedMemory::Side::kAfter);
  void* const data = pages->data();
  handedOut[data] = std::move(pages);
  return data;
}

void ReleasePages(void* pages, size_t) noexcept { handedOut.erase(pages); }

namespace test {

ShortMemory::ShortMemory(int allocations) { left = allocations; }
ShortMemory::~ShortMemory() { left = std::numeric_limits<int>::max(); }

}  // namespace test
}  // namespace pictavo
