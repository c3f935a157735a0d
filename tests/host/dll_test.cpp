// Pictavo.dll as a host meets it: through its exports and the public header alone.
#include <gtest/gtest.h>
#include <windows.h>
// After windows.h.
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "module_folder.h"
#include "pictavo/pictavo.h"

namespace pictavo::test {
namespace {

/// What lies at an address relative to a loaded module.
template <typename T>
const T* At(HMODULE module, DWORD address) {
  return reinterpret_cast<const T*>(reinterpret_cast<const u8*>(module) + address);
}

const IMAGE_OPTIONAL_HEADER64& Header(HMODULE module) {
  const LONG header = At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew;
  return At<IMAGE_NT_HEADERS64>(module, static_cast<DWORD>(header))->OptionalHeader;
}

template <typename T>
const T* Directory(HMODULE module, int index) {
  return At<T>(module, Header(module).DataDirectory[index].VirtualAddress);
}

std::vector<std::string> Exports(HMODULE module) {
  const auto* table = Directory<IMAGE_EXPORT_DIRECTORY>(module, IMAGE_DIRECTORY_ENTRY_EXPORT);
  const auto* names = At<DWORD>(module, table->AddressOfNames);
  std::vector<std::string> exports;
  for (DWORD i = 0; i < table->NumberOfNames; ++i) exports.emplace_back(At<char>(module, names[i]));
  return exports;
}

std::vector<std::string> Imports(HMODULE module) {
  std::vector<std::string> imports;
  const auto* entry = Directory<IMAGE_IMPORT_DESCRIPTOR>(module, IMAGE_DIRECTORY_ENTRY_IMPORT);
  for (; entry->Name != 0; ++entry) imports.emplace_back(At<char>(module, entry->Name));
  return imports;
}

struct File {
  const wchar_t* name;
  std::vector<std::string> exports;  // sorted
} const kFiles[] = {
    {L"Pictavo.dll",
     {"GetPictavo", "GetPictavo2", "GetPictavo3", "GetPictavo4", "GetPictavo5", "GetPictavo6",
      "ReleasePictavo", "ReleasePictavo2", "ReleasePictavo3", "ReleasePictavo4", "ReleasePictavo5",
      "ReleasePictavo6"}},
    {L"CPUIstructionSetDetect.dll", {"AllocateCPUISDetectUtility", "ReleaseCPUISDetectUtility"}},
    {L"ConvertUtility.dll", {"GetConvertUtility4", "ReleaseConvertUtility4"}},
    {L"VKTMemMgr.dll", {"CreateVKTMemMgr5", "ReleaseVKTMemMgr5"}},
};

TEST(Files, ExportPlainNamesNeedOnlyTheSystemAndAreHardened) {
  wchar_t system[MAX_PATH], path[MAX_PATH];
  GetSystemDirectoryW(system, MAX_PATH);
  for (const auto& file : kFiles) {
    const RealModule module(file.name);
    EXPECT_EQ(Exports(module.handle()), file.exports);
    constexpr WORD kHardened = IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA |
                               IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE |
                               IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(Header(module.handle()).DllCharacteristics & kHardened, kHardened);
    for (const auto& import : Imports(module.handle())) {
      GetModuleFileNameW(GetModuleHandleA(import.c_str()), path, MAX_PATH);
      EXPECT_EQ(_wcsnicmp(path, system, wcslen(system)), 0) << import;
      EXPECT_NE(_strnicmp(import.c_str(), "d3d", 3), 0) << import;  // a host brings Direct3D along
      EXPECT_NE(_strnicmp(import.c_str(), "dxgi", 4), 0) << import;
    }
  }
  const RealModule module(L"Pictavo.dll");
  for (const auto& name : kFiles[0].exports) {
    const char* same = name.starts_with("Get") ? "GetPictavo" : "ReleasePictavo";
    EXPECT_EQ(module.Entry<void()>(name.c_str()), module.Entry<void()>(same)) << name;
  }
}

TEST(Files, StateTheirVersion) {
  for (const auto& file : kFiles) {
    const RealModule module(file.name);
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(module.handle(), path, MAX_PATH);
    std::vector<u8> block(GetFileVersionInfoSizeW(path, nullptr));
    ASSERT_TRUE(GetFileVersionInfoW(path, 0, static_cast<DWORD>(block.size()), block.data()));
    void* version = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(block.data(), "\\StringFileInfo\\040904b0\\ProductVersion", &version,
                               &length));
    EXPECT_STREQ(static_cast<const char*>(version), PICTAVO_VERSION);
  }
}

TEST(Files, LeaveNothingBehindWhenUnloaded) {
  struct Use {
    DWORD handles = 0;
    SIZE_T bytes = 0;
    size_t threads = 0;
  };
  const auto measure = [] {
    Use use;
    PROCESS_MEMORY_COUNTERS memory;
    GetProcessHandleCount(GetCurrentProcess(), &use.handles);
    K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
    use.bytes = memory.PagefileUsage;
    THREADENTRY32 thread = {};
    thread.dwSize = sizeof(thread);
    const HANDLE threads = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    for (BOOL more = Thread32First(threads, &thread); more; more = Thread32Next(threads, &thread))
      use.threads += thread.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(threads);
    return use;
  };
  const Use before = measure();
  Use first;
  for (int round = 0; round < 1000; ++round) {
    if (round == 100) first = measure();
    const RealModule module(L"Pictavo.dll");
    IPictavo6* object = module.Entry<IPictavo6*()>("GetPictavo6")();
    std::vector<u8> pixels(4 * 256 * 256, 200), keyed(4 * 256 * 256);  // enough to share out
    u32 out[3];
    ImageDesc src = {{}, 256, 256, 0, pixels.data(), 256, 256, 1024, 4}, dst = src;
    dst.data = keyed.data();
    const ChromaKey green = {0, 200, 0, 0, 30, 20};
    EXPECT_EQ(object->ApplyChromaKey(&src, &dst, &green, 1, 1), PICTAVO_S_OK);
    EXPECT_EQ(object->GaussianBlurBox3(pixels.data(), 64, 64, 256, 9), PICTAVO_S_OK);
    EXPECT_EQ(object->ConvertPixelFromRGB(pixels.data(), out, out + 1, out + 2, PICTAVO_COLOR_HSV,
                                          0, PICTAVO_RANGE_FULL),
              PICTAVO_S_OK);
    module.Entry<int32_t(IPictavo6*)>("ReleasePictavo6")(object);
  }
  const Use last = measure();
  EXPECT_EQ(last.threads, before.threads);
  EXPECT_EQ(last.handles, first.handles);
  EXPECT_LT(last.bytes, first.bytes + 1000 * 900);  // the loader itself may keep a little
}

class Object : public testing::Test {
 protected:
  ~Object() override { EXPECT_EQ(release_(object_), 0); }

  const RealModule module_{L"Pictavo.dll"};
  IPictavo6* (*create_)() = module_.Entry<IPictavo6*()>("GetPictavo6");
  int32_t (*release_)(IPictavo6*) = module_.Entry<int32_t(IPictavo6*)>("ReleasePictavo6");
  IPictavo6* object_ = create_();
};

TEST_F(Object, KeepsItsOwnLevel) {
  IPictavo6* other = create_();
  ASSERT_NE(other, nullptr);
  const i32 detected = other->GetCPULevel();
  for (const i32 level : {0, 8, -1, 1000, INT32_MIN, detected + 1}) {
    object_->SetCPULevel(level);
    EXPECT_EQ(object_->GetCPULevel(), level);
    EXPECT_EQ(other->GetCPULevel(), detected);
  }
  object_->DetectInstructionSet();
  EXPECT_EQ(object_->GetCPULevel(), detected);
  EXPECT_EQ(release_(other), 0);
  EXPECT_EQ(release_(nullptr), 0);
}

TEST_F(Object, DetectsTheProcessorWhereItsModuleIs) {
  EXPECT_EQ(object_->GetCPULevel(), __builtin_cpu_supports("avx2")     ? 8
                                    : __builtin_cpu_supports("sse4.2") ? 7
                                    : __builtin_cpu_supports("sse4.1") ? 6
                                    : __builtin_cpu_supports("ssse3")  ? 5
                                    : __builtin_cpu_supports("sse3")   ? 4
                                                                       : 3);
  release_(object_);
  FindModulesIn(kNoModules);
  object_ = create_();
  EXPECT_EQ(object_->GetCPULevel(), 0);
}

TEST(Methods, StandInTheirSlots) {
  size_t next = 0;
  // A pointer to a virtual method holds its place in the table, plus one.
#define PICTAVO_METHOD(slot, name, where, arguments)                                               \
  EXPECT_EQ(slot, next++);                                                                         \
  EXPECT_EQ((std::bit_cast<std::array<size_t, 2>>(&IPictavo6::name)[0] - 1) / sizeof(void*), slot) \
      << #name;
#define PICTAVO_RESERVED(slot, arguments) PICTAVO_METHOD(slot, Reserved##slot, , )
#include "pictavo/pictavo_methods.inl"
  EXPECT_EQ(next, PICTAVO_METHOD_COUNT);
}

TEST_F(Object, AnswersWhatItHasNotBuilt) {
  using Word = std::uintptr_t;  // as wide as any argument
  using Method = u32(void*, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word);
  Method* const* table = *reinterpret_cast<Method***>(object_);
  for (const Word a : {Word{0}, ~Word{0}}) {
#define PICTAVO_RESERVED(slot, arguments) \
  EXPECT_EQ(table[slot](object_, a, a, a, a, a, a, a, a, a, a), PICTAVO_E_NOTIMPL) << slot;
#include "pictavo/pictavo_methods.inl"
  }
}

TEST_F(Object, CallsOtherSlotsThroughItsTable) {
  // A host exchanges methods by giving the object a changed copy of its table.
  void*** object = reinterpret_cast<void***>(object_);
  void** const table = *object;
  constexpr std::size_t kBefore = 2, kAfter = 2;  // type information, destructors
  std::vector<void*> copy(table - kBefore, table + PICTAVO_METHOD_COUNT + kAfter);
  static i32 calls;
  using Yuva = u32(void*, const u8*, u32, i32, i32, u8*, i32);
  using FourPixels = void(void*, const u8*, i32*, i32*, i32*);
  Yuva* const yuva = [](void*, const u8*, u32, i32, i32, u8*, i32) {
    ++calls;
    return 77u;
  };
  FourPixels* const fourPixels = [](void*, const u8*, i32* y, i32*, i32*) { *y = 99; };
  copy[kBefore + 21] = reinterpret_cast<void*>(yuva);
  copy[kBefore + 34] = reinterpret_cast<void*>(fourPixels);
  *object = copy.data() + kBefore;
  const u8 pixels[16] = {};
  u8 converted[4];
  i32 y[4] = {}, u[4], v[4];
  calls = 0;
  object_->SetCPULevel(2);
  EXPECT_EQ(object_->ConvertBGRAToYUVA(pixels, 1, 1, 4, converted, 4), 77u);
  object_->ConvertRGBToYUVPixels(pixels, y, u, v);
  EXPECT_EQ(y[0], 16);
  object_->SetCPULevel(3);
  EXPECT_EQ(object_->ConvertBGRAToYUVA(pixels, 1, 1, 4, converted, 4), PICTAVO_S_OK);
  object_->ConvertRGBToYUVPixels(pixels, y, u, v);
  EXPECT_EQ(y[0], 99);
  EXPECT_EQ(calls, 1);
  *object = table;
}

TEST_F(Object, ServesManyThreadsWhileItsLevelChanges) {
  constexpr i32 kSide = 96;
  constexpr size_t kPixels = kSide * kSide;
  std::vector<u32> pixels(kPixels);
  for (u32 i = 0; i < kPixels; ++i) pixels[i] = i * 2654435761u;
  const ChromaKey keys[] = {{30, 200, 60, 0, 40, 30}, {250, 250, 250, 0, 20, 20}};
  // What every level gives the same bytes for.
  const auto work = [&] {
    std::vector<u32> keyed(kPixels), blurred = pixels, converted(kPixels);
    const ImageDesc src = {{}, kSide, kSide, 0, pixels.data(), kSide, kSide, 4 * kSide, 4};
    ImageDesc dst = src;
    dst.data = keyed.data();
    u8* const to = reinterpret_cast<u8*>(converted.data());
    u32 failed = object_->ApplyChromaKey(&src, &dst, keys, 2, 1);
    failed |= object_->GaussianBlurBox3(reinterpret_cast<u8*>(blurred.data()), kSide, kSide,
                                        4 * kSide, 7);
    failed |= object_->ConvertPictureFromRGB(reinterpret_cast<const u8*>(pixels.data()), kSide,
                                             kSide, 4 * kSide, to, 4 * kSide, PICTAVO_COLOR_HSL, 0,
                                             PICTAVO_RANGE_FULL);
    keyed.insert(keyed.end(), blurred.begin(), blurred.end());
    keyed.insert(keyed.end(), converted.begin(), converted.end());
    keyed.push_back(failed);
    return keyed;
  };
  const i32 detected = object_->GetCPULevel();
  for (const size_t count : {1, 2, 9}) {
    const auto expected = work();
    std::vector<int> different(count);
    std::atomic<bool> done = false;
    std::jthread changing([&] {
      for (i32 level = 0; !done; level = (level + 1) % (detected + 1)) object_->SetCPULevel(level);
    });
    {
      std::vector<std::jthread> threads;
      for (int& differing : different) {
        threads.emplace_back([&] {
          for (int round = 0; round < 30; ++round) differing += work() != expected;
        });
      }
    }
    done = true;
    EXPECT_EQ(different, std::vector<int>(count));
  }
}

TEST_F(Object, LaysOverTheCommonRectangle) {
  u32 wide[] = {0xFF000000, 0xFF000000}, high[] = {0xFF112233, 0xFF445566};
  ImageDesc dst = {{}, 0, 0, 0, wide, 2, 1, 8, 4}, src = {{}, 0, 0, 0, high, 1, 2, 4, 4};
  for (const i32 level : {0, 6, object_->GetCPULevel()}) {
    object_->SetCPULevel(level);
    wide[0] = 0xFF000000;
    const BlendParam normal = {0, 255, 0, 0, 0}, between = {0, 255, 0, 0, 0.5f};
    EXPECT_EQ(object_->BlendLayer(&dst, &src, &normal), PICTAVO_S_OK);
    EXPECT_EQ(wide[0], 0xFF112233);
    EXPECT_EQ(object_->BlendLayerSubpixel(&dst, &src, &between), PICTAVO_S_OK);
    EXPECT_EQ(wide[0], 0xFF112233);  // the common rectangle has no second row to sample
    EXPECT_EQ(wide[1], 0xFF000000);
  }
}

}  // namespace
}  // namespace pictavo::test
