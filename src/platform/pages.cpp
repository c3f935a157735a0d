#include "platform/pages.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace pictavo {

void* AllocatePages(size_t size) noexcept {
#ifdef _WIN32
  return VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
#else
  void* pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return pages == MAP_FAILED ? nullptr : pages;
#endif
}

void ReleasePages(void* pages, [[maybe_unused]] size_t size) noexcept {
#ifdef _WIN32
  VirtualFree(pages, 0, MEM_RELEASE);
#else
  munmap(pages, size);
#endif
}

}  // namespace pictavo
