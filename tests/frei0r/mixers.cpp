// Mixes frames by the plug-ins that take two, as a program that loads them would.
//   frei0r_mixers FOLDER-OF-PLUG-INS
#include <dlfcn.h>
#include <frei0r.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using Frame = std::vector<uint32_t>;
constexpr unsigned kSide = 64;

int failures = 0;

void Expect(bool holds, const std::string& what) {
  if (holds) return;
  ++failures;
  std::fprintf(stderr, "FAILED: %s\n", what.c_str());
}

template <typename Function>
Function* Find(void* plugin, const char* name) {
  return reinterpret_cast<Function*>(dlsym(plugin, name));
}

/// What a mixer makes of two frames with these numbers set.
Frame Mixed(const std::string& path, const Frame& first, const Frame& second,
            const std::vector<double>& numbers) {
  Frame out(first.size());
  void* const plugin = dlopen(path.c_str(), RTLD_NOW);
  if (plugin == nullptr) return out;
  f0r_plugin_info_t info = {};
  Find<decltype(f0r_get_plugin_info)>(plugin, "f0r_get_plugin_info")(&info);
  Expect(info.plugin_type == F0R_PLUGIN_TYPE_MIXER2, path + " is no mixer");
  const auto instance = Find<decltype(f0r_construct)>(plugin, "f0r_construct")(kSide, kSide);
  for (size_t i = 0; i < numbers.size(); ++i) {
    double number = numbers[i];
    Find<decltype(f0r_set_param_value)>(plugin, "f0r_set_param_value")(instance, &number,
                                                                       static_cast<int>(i));
  }
  Find<decltype(f0r_update2)>(plugin, "f0r_update2")(instance, 0, first.data(), second.data(),
                                                     nullptr, out.data());
  Find<decltype(f0r_destruct)>(plugin, "f0r_destruct")(instance);
  dlclose(plugin);
  return out;
}

}  // namespace

int main(int, char** arguments) {
  const std::string folder = arguments[1];
  Frame first(kSide * kSide), second(first.size());
  for (uint32_t i = 0; i < first.size(); ++i) {
    first[i] = 0xFF000000 | i * 0x010307;
    second[i] = i % kSide < kSide / 2 ? 0 : 0xFF000000 | i * 0x070103;
  }
  Frame over = first;
  for (size_t i = 0; i < over.size(); ++i)
    if (second[i] != 0) over[i] = second[i];

  Expect(Mixed(folder + "/pictavo_over.so", first, second, {}) == over, "over");
  Expect(Mixed(folder + "/pictavo_layer.so", first, second, {0, 1}) == over, "a normal layer");
  Expect(Mixed(folder + "/pictavo_layer.so", first, second, {0.5, 0}) == first, "a clear layer");
  const std::string transition = folder + "/pictavo_transition.so";
  Expect(Mixed(transition, first, second, {0, 0, 0, 0}) == first, "the begin of a transition");
  Expect(Mixed(transition, first, second, {2 / 7.0, 1, 0.5, 0}) == second, "the end of one");
  const Frame wiped = Mixed(transition, first, second, {2 / 7.0, 0.5, 0, 0.5});  // to the left
  Expect(wiped[0] == first[0] && wiped[kSide - 1] == second[kSide - 1], "a wipe to the left");
  return failures;
}
