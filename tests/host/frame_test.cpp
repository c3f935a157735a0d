// The library object and its sibling modules: what it loads, asks, creates and gives back, and
// when.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>

#include <thread>

#include "fakes.h"
#include "frame/pictavo_object.h"
#include "module_folder.h"
#include "start_line.h"

namespace pictavo::test {
namespace {

constexpr const wchar_t* kModules[] = {L"CPUIstructionSetDetect.dll", L"ConvertUtility.dll",
                                       L"VKT_3DRender.dll", L"VKTMemMgr.dll"};

std::vector<std::wstring> LoadedModules() {
  std::vector<std::wstring> loaded(std::begin(kModules), std::end(kModules));
  std::erase_if(loaded, [](const auto& name) { return !GetModuleHandleW(name.c_str()); });
  return loaded;
}

/// What a memory-manager client of `owner` is called.
std::string ClientName(const char* tag, const void* owner) {
  char name[64];
  std::snprintf(name, sizeof(name), "%s(0x%08X)", tag,
                static_cast<u32>(reinterpret_cast<std::uintptr_t>(owner)));
  return name;
}

TEST(Detection, HighestYesDecidesAndTheOthersAreNotAsked) {
  ResetFakes(L"all");
  Events asks;
  for (int level = 8; level > 0; --level) asks.push_back("detect Has " + std::to_string(level));
  {
    Pictavo object;
    Events expected = {"detect create", "detect Initialize 0"};
    expected.insert(expected.end(), asks.begin(), asks.end());
    EXPECT_EQ(TakeEvents("detect "), expected);
    EXPECT_EQ(object.GetCPULevel(), 0);

    for (u32 yes = 0; yes < 256; ++yes) {
      for (u32 set = 0; set < 8; ++set) {
        // Only the low byte is the answer; the rest of the register is left over.
        fakeControl.answers[set] = 0xABCDEF00 | (yes & 1u << set);
      }
      const int level = static_cast<int>(std::bit_width(yes));
      object.SetCPULevel(-7);
      object.DetectInstructionSet();
      ASSERT_EQ(object.GetCPULevel(), level) << yes;
      expected.assign(asks.begin(), asks.end() - std::max(level - 1, 0));
      ASSERT_EQ(TakeEvents("detect "), expected) << yes;
    }
  }
  EXPECT_EQ(TakeEvents("detect "), Events{"detect release"});
}

/// A part that comes from a module of its own.
struct Part {
  std::string name;
  const wchar_t* module;
  bool (*bring)(Pictavo& object);
};

const Part kParts[] = {
    {"detect", kModules[0],
     [](Pictavo& object) { return object.DetectInstructionSet(), object.GetCPULevel() == 1; }},
    {"convert", kModules[1], [](Pictavo& object) { return object.EnsureConvertUtility(); }},
    {"render", kModules[2], [](Pictavo& object) { return object.EnsureRenderHost() != nullptr; }},
};

TEST(Parts, AreTriedAgainUntilTheyCome) {
  struct Case {
    const wchar_t* folder;
    int refusals;
    bool comes;  // at the third attempt
    bool stays;  // the module, from the first attempt on
    Events events;
  } const cases[] = {
      {L"all", 2, true, true, {" refused", " refused", " create", " release"}},
      {L"no_create", 0, false, true, {}},
      {L"no_release", 0, true, true, {" create"}},
      {kNoModules, 0, false, false, {}},
  };
  for (const auto& part : kParts) {
    for (const auto& c : cases) {
      SCOPED_TRACE(part.name + " in " + std::filesystem::path(c.folder).string());
      ResetFakes(kNoModules);
      fakeControl.answers[0] = 1;
      fakeControl.refusals = c.refusals;
      {
        Pictavo object;
        EXPECT_EQ(object.GetCPULevel(), 0);
        FindModulesIn(c.folder);
        for (int attempt = 1; attempt <= 4; ++attempt) {
          EXPECT_EQ(part.bring(object), c.comes && attempt > c.refusals);
          EXPECT_EQ(GetModuleHandleW(part.module) != nullptr, c.stays);
        }
        EXPECT_LE(LoadedModules().size(), 1u);
      }
      Events expected = c.events;
      for (auto& event : expected) event.insert(0, part.name);
      Events events = TakeEvents(part.name);
      std::erase_if(events, [&](const auto& e) { return std::isupper(e[part.name.size() + 1]); });
      EXPECT_EQ(events, expected);
      EXPECT_EQ(LoadedModules().size(), 0u);
    }
  }
}

TEST(Parts, ComeOnDemandAndGoInOrder) {
  ResetFakes(L"all");
  fakeControl.answers[7] = 1;
  Events expected;
  {
    Pictavo object;
    const std::string opencl = ClientName("VKTMask_COCLBase", static_cast<COCLBase*>(&object));
    const std::string own = ClientName("Pictavo", &object);
    const std::string d3d = ClientName("Pictavo_CD3D11Base", static_cast<CD3D11Base*>(&object));
    expected = {"memory5 create " + opencl, "detect create", "detect Initialize 0", "detect Has 8"};
    EXPECT_EQ(TakeEvents(), expected);
    EXPECT_EQ(LoadedModules(), (std::vector<std::wstring>{kModules[0], kModules[3]}));

    EXPECT_EQ(object.FastBlurOpenCL(nullptr, nullptr, 1, 1), PICTAVO_E_POINTER);
    for (int attempt = 0; attempt < 2; ++attempt) {
      EXPECT_TRUE(object.EnsureRenderHost());
      EXPECT_TRUE(object.EnsureDilation());
      EXPECT_TRUE(object.EnsureMemoryClient());
      EXPECT_TRUE(object.EnsureConvertUtility());
      ID3D11Texture2D* texture = nullptr;
      EXPECT_EQ(object.CreateTexture2D(nullptr, 1, 1, DXGI_FORMAT_R8_UNORM, 0, &texture),
                PICTAVO_E_POINTER);
    }
    Events events = TakeEvents();
    ASSERT_EQ(events.size(), 5u);
    const std::string dilation = events[1].substr(std::string("memory5 create ").size());
    EXPECT_EQ(dilation.substr(0, 20), "CPictavo_Dilation(0x");
    expected = {"render create", "memory5 create " + dilation, "memory5 create " + own,
                "convert create", "memory5 create " + d3d};
    EXPECT_EQ(events, expected);
    expected = {"detect release", "convert release", "render release"};
    for (const auto& client : {own, dilation, opencl, d3d}) {
      expected.push_back("memory5 release " + client);
    }
  }
  EXPECT_EQ(TakeEvents(), expected);
  EXPECT_EQ(LoadedModules().size(), 0u);
}

TEST(Parts, ComeOnceWhenSeveralThreadsAsk) {
  void (*const brings[])(Pictavo&) = {
      [](Pictavo& o) { o.DetectInstructionSet(); }, [](Pictavo& o) { o.EnsureConvertUtility(); },
      [](Pictavo& o) { o.EnsureRenderHost(); }, [](Pictavo& o) { o.EnsureMemoryClient(); },
      [](Pictavo& o) { o.EnsureDilation(); }};
  const Events expected = {"convert create", "detect create", "memory5 create CPictavo_Dilation",
                           "memory5 create Pictavo", "render create"};
  for (int round = 0; round < 20; ++round) {
    ResetFakes(kNoModules);
    Pictavo object;
    FindModulesIn(L"all");
    StartLine start(6);
    std::vector<std::jthread> threads;
    for (u32 thread = 0; thread < 6; ++thread) {
      threads.emplace_back([&, thread] {
        start.ArriveAndWait();
        for (u32 i = 0; i < 5; ++i) brings[(i + thread / 2) % 5](object);  // in pairs
      });
    }
    threads.clear();
    Events created = TakeEvents();
    std::erase_if(created, [](const auto& e) { return e.find(" create") == std::string::npos; });
    for (auto& event : created) event = event.substr(0, event.find('('));
    std::sort(created.begin(), created.end());
    ASSERT_EQ(created, expected);
  }
}

/// Stands for a kernel that nobody calls.
LayerKernel* Marker(std::uintptr_t number) { return reinterpret_cast<LayerKernel*>(number); }

TEST(KernelTable, TakesTheBuildsOfALevel) {
  LayerKernels builds = kLayerKernels;  // which modes have which build
  for (u32 i = 0; i < builds.size(); ++i) {
    if (builds[i].portable != nullptr) builds[i].portable = Marker(100 + i);
    if (builds[i].sse41 != nullptr) builds[i].sse41 = Marker(200 + i);
    if (builds[i].avx2 != nullptr) builds[i].avx2 = Marker(300 + i);
  }

  KernelTable table;
  for (const i32 level : {-1, 0, 5, 6, 7, 8, 9, 7, 0}) {  // the last two: nothing newer stays
    table.Fill(level, builds);
    for (u32 entry = 0; entry < 2 * kLayerModes; ++entry) {
      const u32 mode = entry % kLayerModes;
      const bool isWide = mode <= 4 || mode == 6 || mode == 8;
      const u32 build = level >= 8 && isWide ? 300 : level >= 6 ? 200 : 100;
      EXPECT_EQ(table.At(entry), entry == 20 ? nullptr : Marker(build + entry)) << level;
    }
    EXPECT_EQ(table.At(24), nullptr);
    EXPECT_EQ(table.At(0xFFFFFFFF), nullptr);
  }
}

}  // namespace
}  // namespace pictavo::test
