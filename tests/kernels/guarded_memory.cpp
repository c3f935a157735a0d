#include "guarded_memory.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace pictavo::test {
namespace {

constexpr size_t kPage = 4096;

uint8_t* Map(size_t size) {
#ifdef _WIN32
  void* memory = VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS);
#else
  void* memory = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) memory = nullptr;
#endif
  if (memory == nullptr) std::abort();
  return static_cast<uint8_t*>(memory);
}

void Open(uint8_t* memory, size_t size) {
#ifdef _WIN32
  const bool opened = VirtualAlloc(memory, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
#else
  const bool opened = mprotect(memory, size, PROT_READ | PROT_WRITE) == 0;
#endif
  if (!opened) std::abort();
}

}  // namespace

GuardedMemory::GuardedMemory(size_t size, Side side)
    : size_(size),
      mappedSize_((size + kPage - 1) / kPage * kPage + 2 * kPage),
      mapped_(Map(mappedSize_)) {
  uint8_t* first = mapped_ + kPage;
  uint8_t* last = mapped_ + mappedSize_ - kPage;
  if (last > first) Open(first, static_cast<size_t>(last - first));
  data_ = side == Side::kBefore ? first : last - size;
}

GuardedMemory::~GuardedMemory() {
#ifdef _WIN32
  VirtualFree(mapped_, 0, MEM_RELEASE);
#else
  munmap(mapped_, mappedSize_);
#endif
}

}  // namespace pictavo::test
