#include "opencl/program_cache.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>

namespace pictavo {
namespace {

constexpr size_t kPathRoom = 260;  // what the system's ANSI functions take, with the ending zero
constexpr size_t kTailRoom = 40;   // of that, for the number and a temporary name's ending
constexpr size_t kMostDeviceName = 260;

/// Stands before the binary in a file.
struct Header {
  std::array<char, 8> magic = {'P', 'C', 'T', 'V', 'C', 'L', 'B', '1'};
  cl::u64 key = 0;
  cl::u64 size = 0;  // of the binary, bytes
  cl::u64 checksum = 0;

  bool operator==(const Header&) const = default;
};
static_assert(sizeof(Header) == 32);

Header HeaderOf(cl::u64 key, const Binary& binary) {
  const std::string_view bytes(reinterpret_cast<const char*>(binary.data()), binary.size());
  return {.key = key, .size = binary.size(), .checksum = Fingerprint().Add(bytes).value()};
}

struct CloseFile {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// A real folder or file: nothing that leads elsewhere.
bool IsOwn(const std::string& path, bool folder) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 &&
         ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) == folder;
}

/// What a name may hold in a file's name; anything else a runtime puts there becomes '_'.
char FileNameLetter(char letter) {
  const bool plain =
      letter >= ' ' && letter <= '~' && std::strchr("<>:\"/\\|?*", letter) == nullptr;
  return plain ? letter : '_';
}

bool WriteWhole(const std::string& path, const Header& header, const Binary& binary) {
  // CREATE_NEW: never through a link that waits under this name.
  const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const auto write = [file](const void* bytes, size_t size) {
    DWORD written = 0;
    return WriteFile(file, bytes, static_cast<DWORD>(size), &written, nullptr) != 0 &&
           written == size;
  };
  const bool whole = write(&header, sizeof(header)) && write(binary.data(), binary.size());
  return CloseHandle(file) != 0 && whole;
}

}  // namespace

Fingerprint& Fingerprint::Add(std::string_view text) noexcept {
  const auto mix = [this](u8 byte) { value_ = (value_ ^ byte) * 0x100000001B3; };
  for (const char letter : text) mix(static_cast<u8>(letter));
  for (cl::u64 size = text.size(), i = 0; i < 8; ++i) mix(static_cast<u8>(size >> (8 * i)));
  return *this;
}

i32 VendorCode(std::string_view vendor) noexcept {
  constexpr struct {
    std::string_view vendor;
    i32 code;
  } kVendors[] = {
      {"Advanced Micro Devices, Inc.", 0},
      {"AuthenticAMD", 0},
      {"NVIDIA Corporation", 1},
      {"Intel Corporation", 2},
      {"GenuineIntel", 0},  // on purpose with AMD's
      {"Intel(R) Corporation", 3},
  };
  for (const auto& known : kVendors) {
    if (vendor == known.vendor) return known.code;
  }
  return 4;
}

ProgramCache::ProgramCache(const wchar_t* basePath) {
  char base[kPathRoom] = {};
  BOOL lossy = FALSE;
  const bool utf8 = GetACP() == CP_UTF8;  // which has every character and takes no such questions
  const int size = WideCharToMultiByte(CP_ACP, utf8 ? 0 : WC_NO_BEST_FIT_CHARS, basePath, -1, base,
                                       sizeof(base), nullptr, utf8 ? nullptr : &lossy);
  if (size == 0 || lossy) return;
  base_ = base;
  folder_ = base_.empty() ? "OpenCLFolder" : base_ + "\\OpenCLFolder";
}

bool ProgramCache::HasFolders() const {
  return (base_.empty() || IsOwn(base_, true)) && IsOwn(folder_, true);
}

/// Empty when it would be too long even without the device's name, which gives way if need be: the
/// number tells devices apart.
std::string ProgramCache::FileName(const char* program, std::string_view deviceName,
                                   cl::u64 key) const {
  std::string path = folder_ + '\\' + program;
  if (folder_.empty() || path.size() + kTailRoom >= kPathRoom) return {};
  const size_t room = kPathRoom - kTailRoom - path.size();
  for (const char letter : deviceName.substr(0, std::min(kMostDeviceName, room))) {
    path += FileNameLetter(letter);
  }
  char name[kPathRoom];
  std::snprintf(name, sizeof(name), "%s_%d", path.c_str(), static_cast<i32>(key & 0x7FFFFFFF));
  return name;
}

Binary ProgramCache::Load(const char* program, std::string_view deviceName, cl::u64 key) const {
  const std::string path = FileName(program, deviceName, key);
  if (path.empty() || !HasFolders() || !IsOwn(path, false)) return {};
  const File file(std::fopen(path.c_str(), "rb"));
  Header header;
  if (file == nullptr || std::fread(&header, sizeof(header), 1, file.get()) != 1 ||
      header.size == 0 || header.size > ProgramCache::kLargestBinary) {
    return {};
  }
  Binary binary(header.size);
  const bool whole = std::fread(binary.data(), 1, binary.size(), file.get()) == binary.size() &&
                     std::fgetc(file.get()) == EOF;
  if (!whole || header != HeaderOf(key, binary)) return {};
  return binary;
}

bool ProgramCache::Save(const char* program, std::string_view deviceName, cl::u64 key,
                        const Binary& binary) const {
  const std::string path = FileName(program, deviceName, key);
  if (path.empty() || binary.empty() || binary.size() > kLargestBinary) return false;
  if (!base_.empty()) CreateDirectoryA(base_.c_str(), nullptr);
  if (!base_.empty() && !IsOwn(base_, true)) return false;
  CreateDirectoryA(folder_.c_str(), nullptr);
  if (!HasFolders()) return false;

  char ending[kTailRoom];
  std::snprintf(ending, sizeof(ending), ".%lx-%lx", GetCurrentProcessId(), GetCurrentThreadId());
  const std::string temporary = path + ending;
  DeleteFileA(temporary.c_str());  // from a crash of a process that had these numbers before
  if (WriteWhole(temporary, HeaderOf(key, binary), binary) &&
      MoveFileExA(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
    return true;
  }
  DeleteFileA(temporary.c_str());
  return false;
}

}  // namespace pictavo
