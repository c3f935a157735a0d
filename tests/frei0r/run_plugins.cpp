// Runs every plug-in of a folder on made frames, as a program that loads them would, writes what
// each makes of them, and sees that what mixes two frames does so.
//   run_plugins FOLDER-OF-PLUG-INS FOLDER-FOR-FRAMES
#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include <frei0r.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Frame = std::vector<uint32_t>;
constexpr unsigned kWidth = 96, kHeight = 64;

int failures = 0;

void Expect(bool holds, const std::string& what) {
  if (holds) return;
  ++failures;
  std::fprintf(stderr, "FAILED: %s\n", what.c_str());
}

#ifdef _WIN32
const char kSuffix[] = ".dll";
void* Open(const fs::path& path) { return LoadLibraryW(path.c_str()); }
void* Find(void* plugin, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(plugin), name));
}
void Close(void* plugin) { FreeLibrary(static_cast<HMODULE>(plugin)); }
#else
const char kSuffix[] = ".so";
void* Open(const fs::path& path) { return dlopen(path.c_str(), RTLD_NOW); }
void* Find(void* plugin, const char* name) { return dlsym(plugin, name); }
void Close(void* plugin) { dlclose(plugin); }
#endif

#define CALL(name) reinterpret_cast<decltype(name)*>(Find(plugin, #name))

/// What a plug-in makes of frames with its first numbers set.
Frame Made(const fs::path& path, const Frame& first, const Frame& second,
           std::vector<double> numbers = {}) {
  Frame out(first.size());
  void* const plugin = Open(path);
  Expect(plugin != nullptr && CALL(f0r_init)() == 1, path.string() + " does not load");
  if (plugin == nullptr) return out;
  f0r_plugin_info_t info = {};
  CALL(f0r_get_plugin_info)(&info);
  const auto instance = CALL(f0r_construct)(kWidth, kHeight);
  Expect(instance != nullptr, path.string() + " has no instance");
  for (size_t i = 0; i < numbers.size(); ++i) {
    CALL(f0r_set_param_value)(instance, &numbers[i], static_cast<int>(i));
  }
  if (info.plugin_type == F0R_PLUGIN_TYPE_MIXER2) {
    CALL(f0r_update2)(instance, 0, first.data(), second.data(), nullptr, out.data());
  } else {
    CALL(f0r_update)(instance, 0, first.data(), out.data());
  }
  CALL(f0r_destruct)(instance);
  CALL(f0r_deinit)();
  Close(plugin);
  return out;
}

void Write(const fs::path& path, const Frame& frame) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(frame.data()),
             static_cast<std::streamsize>(4 * frame.size()));
}

/// Takes a second frame of opaque and clear pixels.
void CheckMixers(const fs::path& folder, const Frame& first, const Frame& second) {
  const auto mixed = [&](const char* name, const std::vector<double>& numbers) {
    return Made(folder / (name + std::string(kSuffix)), first, second, numbers);
  };
  Frame over = first;
  for (size_t i = 0; i < over.size(); ++i)
    if (second[i] != 0) over[i] = second[i];
  Expect(mixed("pictavo_over", {}) == over, "over");
  Expect(mixed("pictavo_layer", {0, 1}) == over, "a normal layer");
  Expect(mixed("pictavo_layer", {0.5, 0}) == first, "a clear layer");
  Expect(mixed("pictavo_transition", {0, 0, 0, 0}) == first, "the begin of a transition");
  Expect(mixed("pictavo_transition", {2 / 7.0, 1, 0.5, 0}) == second, "the end of one");
  const Frame wiped = mixed("pictavo_transition", {2 / 7.0, 0.5, 0, 0.5});  // to the left
  Expect(wiped[0] == first[0] && wiped[kWidth - 1] == second[kWidth - 1], "a wipe to the left");
}

}  // namespace

int main(int, char** arguments) {
  const fs::path folder = arguments[1], out = arguments[2];
  Frame first(kWidth * kHeight), second(first.size());
  for (uint32_t i = 0; i < first.size(); ++i) {
    const uint32_t alpha = i < kWidth * kHeight / 2 ? 255 : i % 256;
    first[i] = alpha << 24 | (i * 0x010307 & 0xFFFFFF);
    second[i] = i % kWidth < kWidth / 2 ? 0 : 0xFF000000 | i * 0x070103;
  }
  Write(out / "first", first);
  Write(out / "second", second);
  for (const auto& entry : fs::directory_iterator(folder)) {
    const Frame made = Made(entry.path(), first, second);
    const bool wantsFile = entry.path().stem() == "pictavo_lut";
    Expect((made == first) == wantsFile, entry.path().string() + " leaves the frame as it was");
    Write(out / entry.path().stem(), made);
  }
  CheckMixers(folder, first, second);
  return failures;
}
