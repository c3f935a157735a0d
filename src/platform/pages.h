#ifndef PICTAVO_PLATFORM_PAGES_H_
#define PICTAVO_PLATFORM_PAGES_H_

#include <cstddef>

namespace pictavo {

/// Memory from the system's page allocator, at the start of a page; null when there is none.
void* AllocatePages(size_t size) noexcept;
void ReleasePages(void* pages, size_t size) noexcept;

/// Pages for as long as it lives.
class Pages {
 public:
  explicit Pages(size_t size) noexcept : size_(size), data_(AllocatePages(size)) {}
  ~Pages() {
    if (data_ != nullptr) ReleasePages(data_, size_);
  }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  explicit operator bool() const { return data_ != nullptr; }
  void* data() const { return data_; }

 private:
  size_t size_;
  void* data_;
};

}  // namespace pictavo

#endif  // PICTAVO_PLATFORM_PAGES_H_
