// Pictavo.dll as a host meets it: through its exports and the public header alone.
#include <gtest/gtest.h>
#include <windows.h>
// After windows.h.
#include <psapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <functional>
#include <set>
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
  };
  const auto measure = [] {
    Use use;
    PROCESS_MEMORY_COUNTERS memory;
    GetProcessHandleCount(GetCurrentProcess(), &use.handles);
    K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
    use.bytes = memory.PagefileUsage;
    return use;
  };
  Use first;
  for (int round = 0; round < 1000; ++round) {
    if (round == 100) first = measure();
    const RealModule module(L"Pictavo.dll");
    IPictavo6* object = module.Entry<IPictavo6*()>("GetPictavo6")();
    std::vector<u8> pixels(4 * 64 * 64, 200);
    u32 out[3];
    EXPECT_EQ(object->GaussianBlurBox3(pixels.data(), 64, 64, 256, 9), PICTAVO_S_OK);
    EXPECT_EQ(object->ConvertPixelFromRGB(pixels.data(), out, out + 1, out + 2, PICTAVO_COLOR_HSV,
                                          0, PICTAVO_RANGE_FULL),
              PICTAVO_S_OK);
    module.Entry<int32_t(IPictavo6*)>("ReleasePictavo6")(object);
  }
  const Use last = measure();
  EXPECT_EQ(last.handles, first.handles);
  EXPECT_LT(last.bytes, first.bytes + 1000 * 900);  // the loader itself may keep a little
}

class Object : public testing::Test {
 protected:
  ~Object() override { EXPECT_EQ(release_(object_), 0); }

  struct Case {
    u32 slot;
    std::function<u32()> call;
    u32 result;
    std::vector<u32> expected;  // the first pixels afterwards
  };
  /// Calls each slot on the same pixels at each level.
  void Check(const std::vector<Case>& cases, const std::vector<i32>& levels,
             const std::array<u32, 9>& before) {
    for (const i32 level : levels) {
      object_->SetCPULevel(level);
      for (const Case& c : cases) {
        pixels_ = before;
        EXPECT_EQ(c.call(), c.result) << "slot " << c.slot;
        EXPECT_EQ(std::vector<u32>(pixels_.begin(), pixels_.begin() + std::ssize(c.expected)),
                  c.expected)
            << "slot " << c.slot << ", level " << level;
      }
    }
  }

  const RealModule module_{L"Pictavo.dll"};
  IPictavo6* (*create_)() = module_.Entry<IPictavo6*()>("GetPictavo6");
  int32_t (*release_)(IPictavo6*) = module_.Entry<int32_t(IPictavo6*)>("ReleasePictavo6");
  IPictavo6* object_ = create_();
  const std::vector<i32> levels_ = {0, 3, object_->GetCPULevel()};
  std::array<u32, 9> pixels_;
  u8* const d_ = reinterpret_cast<u8*>(pixels_.data());
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

TEST_F(Object, BlendsByTheRuleOfEachSlot) {
  constexpr i32 kDst = 8, kSrc = 4;  // pitches; where there is one for both, it is kDst
  constexpr f32 kStart = 0.25f, kEnd = 1.0f;
  constexpr u8 kOpacity = 200;
  constexpr u32 kBackdrop = 0xFF204060, kBetween = 0x50607080, kBelow = 0x90A0B0C0;
  using P = IPictavo;
  const u32 src[] = {0xC8643219, 0x80503C28, 0x60402010, 0xA0907050};
  const u8* s = reinterpret_cast<const u8*>(src);
  const auto packed = [&](u32 slot, auto method, u32 first, u32 second) {
    return Case{
        slot, [=, this] { return (object_->*method)(d_, s, 1, 2); }, 1, {first, second, kBelow}};
  };
  const auto pitched = [&](u32 slot, auto method, u32 top, u32 bottom) {
    return Case{slot,
                [=, this] { return (object_->*method)(d_, s, 1, 2, kDst); },
                1,
                {top, kBetween, bottom}};
  };
  const auto ramp = [&](u32 slot, auto method, u32 top, u32 bottom) {
    return Case{slot,
                [=, this] { return (object_->*method)(d_, s, 1, 2, kDst, kSrc, 1, kStart, kEnd); },
                1,
                {top, kBetween, bottom}};
  };
  const auto both = [&](u32 slot, auto method, u32 top, u32 bottom) {
    return Case{slot,
                [=, this] {
                  return (object_->*method)(d_, s, 1, 2, kDst, kSrc, kOpacity, kBackdrop, 1, kStart,
                                            kEnd);
                },
                1,
                {top, kBetween, bottom}};
  };
  const auto opacity = [=, this] {
    return object_->BlendOverWithOpacity(d_, s, 1, 2, kDst, kSrc, kOpacity, kBackdrop);
  };
  Check({ramp(2, &P::BlendOverWithOpacityRamp, 0xFF18232F, 0xFF82726E),
         packed(3, &P::BlendOverPacked, 0xC8512E1E, 0x80585654),
         pitched(4, &P::BlendOverPitched, 0xFF512E1E, 0xFF7C7A7E),
         ramp(5, &P::BlendPremultipliedWithOpacityRamp, 0xFF222B34, 0xFF8F7971),
         packed(6, &P::BlendPremultipliedPacked, 0xFF673923, 0xFF807468),
         pitched(7, &P::BlendPremultipliedPitched, 0xFF673923, 0xFFA48E88),
         ramp(8, &P::CompositePremultipliedWithOpacityRamp, 0x59212A33, 0xC78F7870),
         pitched(9, &P::CompositePremultipliedPitched, 0xD6673823, 0xBBA38D87),
         packed(10, &P::CompositePremultipliedPacked, 0xD6673823, 0xA97F7367),
         {11, opacity, PICTAVO_S_OK, {0x40493734, kBetween, 0x90323E4A}},
         both(36, &P::BlendOverWithOpacityRampAndAlpha, 0x19243F5A, 0x623A3A44),
         both(37, &P::BlendOverWithOpacityRampKeepAlpha, 0x40243F5A, 0x903A3A44)},
        {0}, {0x40102030, kBetween, kBelow, 0xD0E0F0FF});
}

TEST_F(Object, ResizesByTheRuleOfEachSlot) {
  const u32 src[] = {0x00000000, 0x80404040};
  const u8* s = reinterpret_cast<const u8*>(src);
  // Three pixels of two, and one that is not touched.
  const auto resize = [&](auto method, i32 height, auto... more) {
    return [=, this] { return (object_->*method)(d_, 3, height, 12, s, 2, 1, 8, more...); };
  };
  Check({{29,
          resize(&IPictavo6::ResizeBox16AlphaWeighted, 1, 0),
          PICTAVO_S_OK,
          {0, 0x20404040, 0x80404040, 7}},
         {30,
          resize(&IPictavo6::ResizeBilinear16, 1, 1, 1),
          PICTAVO_S_OK,
          {0xFF000000, 0xFF151515, 0xFF2A2A2A, 7}},
         {31, resize(&IPictavo6::ResizeBilinear7, 1), PICTAVO_S_OK, {0, 0x552A2A2A, 0x7F3F3F3F, 7}},
         {55,
          [&] { return object_->ResizeNearest32(pixels_.data(), 3, 1, 12, src, 2, 1, 8); },
          PICTAVO_S_OK,
          {0, 0, 0x80404040, 7}},
         {57, resize(&IPictavo6::ResizeBox16, 1), PICTAVO_S_OK, {0, 0x20101010, 0x80404040, 7}},
         {58,
          resize(&IPictavo6::ResizeBilinear16KeepAlpha, 2, 0),
          PICTAVO_S_OK,
          {0, 0x552A2A2A, 7, 7}}},
        levels_, {7, 7, 7, 7, 7, 7, 7, 7, 7});
}

TEST_F(Object, KeysInBothFormats) {
  u32 pixels[] = {0xFF00FF00, 0xC80000FF}, keyed[2];
  const ImageDesc src = {{}, 2, 1, 0, pixels, 2, 1, 8, 4};
  ImageDesc dst = {{}, 2, 1, 0, keyed, 2, 1, 8, 4};
  const ChromaKey green = {0, 255, 0, 0, 30, 20};
  for (const i32 level : {0, object_->GetCPULevel()}) {
    object_->SetCPULevel(level);
    EXPECT_EQ(object_->ApplyChromaKey(&src, &dst, &green, 1, 1), PICTAVO_S_OK);
    EXPECT_EQ(keyed[0], 0u);
    EXPECT_EQ(keyed[1], 0xC80000FEu);  // red, to YCbCr and back
    EXPECT_EQ(object_->ApplyChromaKey(&src, &dst, &green, 1, 0), PICTAVO_S_OK);
    EXPECT_EQ(keyed[1], 0xC80000FFu);  // as Y 0, U -128, V 127: far from green
  }
}

TEST_F(Object, ConvertsByTheRuleOfEachSlot) {
  const u32 src[] = {0x80FF8040, 0x00030201};
  const u8* s = reinterpret_cast<const u8*>(src);
  std::array<u32, 256> bins;
  const i32 rect[] = {0, 0, 1, 0};
  f32 mean = 0;
  ImageDesc image = {{}, 3, 3, 0, &pixels_[4], 1, 1, 12, 4};
  const std::vector<Case> cases = {
      {16,
       [&] { return object_->UnpremultiplyPitched(d_, 1, 2, 8); },
       1,
       {0x80FFFF7F, 0x80808080, 0x01FFFFFF}},
      {17,
       [&] { return object_->UnpremultiplyPacked(d_, 3, 1); },
       1,
       {0x80FFFF7F, 0x80FFFFFF, 0x01FFFFFF}},
      {18,
       [&] { return object_->PremultiplyPitched(d_, 1, 2, 8); },
       1,
       {0x80804020, 0x80808080, 0x01000000}},
      {19,
       [&] { return object_->PremultiplyPacked(d_, 2, 1); },
       1,
       {0x80804020, 0x80404040, 0x01040404}},
      {20,
       [&] { return object_->ConvertBGRAToYUVA(s, 1, 2, 4, d_, 8); },
       PICTAVO_S_OK,
       {0x809851BC, 0x80808080, 0x00127F81}},
      {21,
       [&] { return object_->ConvertBGRAToYUVAPortable(s, 2, 1, 8, d_, 12); },
       PICTAVO_S_OK,
       {0x809851BC, 0x00127F81, 0x01040404}},
      {46,
       [&] { return object_->ConvertBGRAToGray(s, 1, 2, 4, pixels_.data(), 8); },
       PICTAVO_S_OK,
       {0x80959595, 0x80808080, 0x01020202}},
      {48,
       [&] { return object_->DrawRectOutline(pixels_.data(), 3, 3, 12, rect, 9); },
       PICTAVO_S_OK,
       {9, 9, 0x01040404}},
      {71,
       [&] { return object_->ExtendBoundary(&image, 1); },
       PICTAVO_S_OK,
       {0x11223344, 0x11223344, 0x11223344}},
      {77,
       [&] { return object_->FillSolidColor(d_, 1, 2, 8, 4, 3, 2, 1); },
       PICTAVO_S_OK,
       {0x01020304, 0x80808080, 0x01020304}},
      {107,
       [&] { return object_->ExtendBoundaryTransparent(&image, 1); },
       PICTAVO_S_OK,
       {0x00223344, 0x00223344, 0x00223344}},
  };
  Check(cases, levels_, {0x80FF8040, 0x80808080, 0x01040404, 0, 0x11223344});
  for (const i32 level : levels_) {
    object_->SetCPULevel(level);
    EXPECT_EQ(object_->ComputeHistogram(s, 1, 2, 4, bins.data(), 256, 2), PICTAVO_S_OK);
    EXPECT_EQ(bins[255] + bins[3], 2u);
    EXPECT_EQ(object_->ComputeLumaHistogram(s, 1, 2, 4, bins.data(), 256, 1), PICTAVO_S_OK);
    EXPECT_EQ(bins[149] + bins[2], 2u);
    EXPECT_EQ(object_->ComputeMean(s + 4, 2, 1, &mean), PICTAVO_S_OK);
    EXPECT_EQ(mean, 1.5f);
    u32 a = 0, b = 0, c = 0;
    object_->ConvertRGBToYUVPixel(-100, 0, 0, &a, &b, &c);
    EXPECT_EQ(a, level < 3 ? ~0u - 9 : 255);
    object_->ConvertYUVToRGBPixel(235, 128, 128, &a, &b, &c);
    EXPECT_EQ(a + b + c, 3 * 255u);
    u8 red = 0, green = 0, blue = 0;
    EXPECT_EQ(object_->ConvertHSLToRGB(30, 255, 127, &red, &green, &blue), PICTAVO_S_OK);
    EXPECT_TRUE(red == 254 && green == 127 && blue == 0);
  }
}

TEST_F(Object, ConvertsColoursWhereItsModuleIs) {
  constexpr u32 kYuv = PICTAVO_COLOR_YUV, kMatrix = PICTAVO_MATRIX_BT709,
                kLimited = PICTAVO_RANGE_LIMITED, kHsv = PICTAVO_COLOR_HSV,
                kFull = PICTAVO_RANGE_FULL, kDegrees = PICTAVO_RANGE_DEGREES;
  const u32 src[] = {0x80FF8040, 0x00030201};
  const u8* s = reinterpret_cast<const u8*>(src);
  u32 *a = &pixels_[0], *b = &pixels_[1], *c = &pixels_[2];
  using P = IPictavo6;
  const auto call = [this](auto method, auto... arguments) {
    return [=, this] { return (object_->*method)(arguments...); };
  };
  std::vector<Case> cases = {
      {88,
       call(&P::ConvertPictureFromRGB, s, 1, 2, 4, d_, 8, kYuv, kMatrix, kLimited),
       0,
       {0x809157BA, 7, 0x00127F80}},
      {89,
       call(&P::ConvertPictureToRGB, s, 1, 2, 4, d_, 8, kHsv, 0, kFull),
       0,
       {0x80402021, 7, 0x00010101}},
      {90,
       call(&P::ConvertColorFromRGB, 255, 128, 64, a, b, c, kHsv, 0, kDegrees),
       0,
       {20, 191, 255}},
      {91,
       call(&P::ConvertColorToRGB, -340, 191, 255, a, b, c, kHsv, 0, kDegrees),
       0,
       {255, 128, 64}},
      {92,
       call(&P::ConvertPixelFromRGB, s, a, b, c, kYuv, kMatrix, kLimited),
       0,
       {0x91, 0x57, 0xBA}},
  };
  const std::vector<Case> good = cases;
  for (Case& one : cases) one.result = PICTAVO_E_FAIL, one.expected = {7, 7, 7};
  FindModulesIn(kNoModules);
  Check(cases, {0}, {7, 7, 7});
  FindModulesIn(kRealModules);
  Check(good, levels_, {7, 7, 7});
  EXPECT_EQ(object_->ConvertPictureFromRGB(nullptr, 1, 2, 4, d_, 8, kYuv, kMatrix, kLimited),
            PICTAVO_E_POINTER);
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

TEST_F(Object, BlursInPlace) {
  for (const i32 level : {0, object_->GetCPULevel()}) {
    object_->SetCPULevel(level);
    std::array<u32, 16> pixels;  // an opaque grey column beside clear ones
    for (u32 i = 0; i < 16; ++i) pixels[i] = i % 4 == 0 ? 0xFF808080 : 0x00112233;
    u8* image = reinterpret_cast<u8*>(pixels.data());
    EXPECT_EQ(object_->GaussianBlurBox3(image, 4, 4, 16, 3), PICTAVO_S_OK);
    for (u32 i = 0; i < 16; i += 4) {
      EXPECT_EQ(pixels[i], 0x8D808080);
      EXPECT_EQ(pixels[i + 1], 0x55808080);
      EXPECT_EQ(pixels[i + 2], 0x1C808080);
      EXPECT_EQ(pixels[i + 3], 0x00112233u);
    }
    // More than the system can have, so that not a pixel is looked at.
    EXPECT_EQ(object_->GaussianBlurBox3(image, 0x1FFFFFFF, INT32_MAX, INT32_MAX, 3),
              PICTAVO_E_OUTOFMEMORY);
  }
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

TEST_F(Object, ChecksLayers) {
  u8 pixel[4] = {1, 2, 3, 4};
  ImageDesc image = {{}, 1, 1, 0, pixel, 1, 1, 4, 4}, empty = image, texture = image;
  empty.data = nullptr;
  texture.memoryKind = PICTAVO_MEMORY_D3D11_TEXTURE;
  texture.data = reinterpret_cast<void*>(0x10);  // never followed
  const BlendParam normal = {0, 255, 0, 0, 0}, clear = {99, 0, 0, 0, 0};
  struct Layers {
    ImageDesc *dst, *src;
    const BlendParam* param;
    u32 result;
  } const cases[] = {
      {nullptr, &image, &clear, PICTAVO_E_POINTER},
      {&image, nullptr, &clear, PICTAVO_E_POINTER},
      {&image, &image, nullptr, PICTAVO_E_POINTER},
      {&empty, &image, &clear, PICTAVO_E_POINTER},
      {&image, &empty, &clear, PICTAVO_E_POINTER},
      {&texture, &image, &clear, PICTAVO_S_OK},
      {&texture, &image, &normal, PICTAVO_E_INVALIDARG},
      {&image, &texture, &normal, PICTAVO_E_INVALIDARG},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(object_->BlendLayer(c.dst, c.src, c.param), c.result);
    EXPECT_EQ(object_->BlendLayerSubpixel(c.dst, c.src, c.param), c.result);
  }
  const auto answer = [](bool known) { return known ? PICTAVO_S_OK : PICTAVO_E_INVALIDARG; };
  for (const u32 mode : {0u, 7u, 8u, 9u, 11u, 12u, 19u, 20u, 21u, 23u, 24u, ~11u, ~0u}) {
    const BlendParam param = {mode, 1, 0, 0, 0};
    EXPECT_EQ(object_->BlendLayer(&image, &image, &param), answer(mode <= 23 && mode != 20));
    EXPECT_EQ(object_->BlendLayerSubpixel(&image, &image, &param), answer(mode <= 11 && mode != 8));
  }
  EXPECT_EQ(std::memcmp(pixel, "\1\2\3\4", 4), 0);  // an opacity of 1 weighs nothing here
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
