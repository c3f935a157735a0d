// Compiled programs on disk: where they are and what a file must be like to be believed. A file
// that is odd in any way counts as missing.
#ifndef PICTAVO_OPENCL_PROGRAM_CACHE_H_
#define PICTAVO_OPENCL_PROGRAM_CACHE_H_

#include <string>
#include <string_view>
#include <vector>

#include "opencl/cl_api.h"

namespace pictavo {

using Binary = std::vector<u8>;

/// Hashes (FNV-1a) a sequence of texts: their order and ends count.
class Fingerprint {
 public:
  Fingerprint& Add(std::string_view text) noexcept;
  cl::u64 value() const noexcept { return value_; }

 private:
  cl::u64 value_ = 0xCBF29CE484222325;
};

/// The class of a device's vendor.
i32 VendorCode(std::string_view vendor) noexcept;

/// One of the places for a device's compiled programs. All @throw std::bad_alloc.
class ProgramCache {
 public:
  static constexpr size_t kLargestBinary = size_t{64} << 20;

  /// @param basePath the folder that holds OpenCLFolder, empty for the current one; of one that
  /// cannot be written in the system's ANSI characters nothing is found and nothing kept
  explicit ProgramCache(const wchar_t* basePath);

  /// The binary kept for a program, a device name and a key, which stands for everything that the
  /// binary depends on; empty when there is none.
  Binary Load(const char* program, std::string_view deviceName, cl::u64 key) const;

  /// Keeps a binary, replacing an older one at once or not at all. False when that failed.
  bool Save(const char* program, std::string_view deviceName, cl::u64 key,
            const Binary& binary) const;

 private:
  std::string FileName(const char* program, std::string_view deviceName, cl::u64 key) const;

  /// Whether both folders are real ones.
  bool HasFolders() const;

  std::string base_;
  std::string folder_;  // in base_; empty when there is no cache here
};

}  // namespace pictavo

#endif  // PICTAVO_OPENCL_PROGRAM_CACHE_H_
