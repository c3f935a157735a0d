// The header for hosts on the real DLL and its modules, in folders of every make-up.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "module_folder.h"
#include "pictavo/pictavo_host.h"

namespace pictavo::test {
namespace {

namespace fs = std::filesystem;

/// The folder of the running program, which has no modules.
fs::path Here() {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  return fs::path(program).parent_path();
}

/// A folder of its own with Pictavo.dll and some modules.
class PlugIns {
 public:
  explicit PlugIns(const std::vector<const wchar_t*>& modules) {
    fs::remove_all(folder_);
    fs::create_directory(folder_);
    Bring(L"Pictavo.dll");
    for (const wchar_t* module : modules) Bring(module);
    SetDllDirectoryW(nullptr);
  }
  ~PlugIns() { fs::remove_all(folder_); }

  fs::path library() const { return folder_ / L"Pictavo.dll"; }

 private:
  void Bring(const wchar_t* file) { fs::copy_file(Here() / kRealModules / file, folder_ / file); }

  const fs::path folder_ = Here() / L"plug-ins \u00E9";
};

u32 PixelInHsv(const Library& library) {
  const u8 pixel[4] = {};
  u32 h, s, v;
  return library->ConvertPixelFromRGB(pixel, &h, &s, &v, PICTAVO_COLOR_HSV, 0, PICTAVO_RANGE_FULL);
}

TEST(Loader, FindsTheModulesBesideTheLibrary) {
  const PlugIns plugIns({std::begin(kModuleFiles), std::end(kModuleFiles)});
  Library library(plugIns.library().c_str());
  ASSERT_TRUE(library) << library.errorText();
  for (const Module module : {Module::cpuDetect, Module::convertUtility, Module::memoryManager})
    EXPECT_TRUE(library.has(module)) << static_cast<int>(module);
  EXPECT_EQ(PixelInHsv(library), PICTAVO_S_OK);
  const Library moved = std::move(library);
  EXPECT_TRUE(moved.has(Module::convertUtility));
  EXPECT_FALSE(library.has(Module::convertUtility));
  EXPECT_EQ(PixelInHsv(moved), PICTAVO_S_OK);
}

TEST(Loader, SetsTheLevelThatNoModuleTells) {
  i32 level;
  {
    const PlugIns plugIns({std::begin(kModuleFiles), std::end(kModuleFiles)});
    level = Library(plugIns.library().c_str())->GetCPULevel();
  }
  const PlugIns plugIns({});
  const Library library(plugIns.library().c_str());
  const Library plain(plugIns.library().c_str(), {.setLevel = false, .searchSafely = true});
  EXPECT_GE(level, PICTAVO_LEVEL_SSE2);
  EXPECT_EQ(library->GetCPULevel(), level);
  EXPECT_EQ(plain->GetCPULevel(), PICTAVO_LEVEL_PORTABLE);
  EXPECT_FALSE(library.has(Module::cpuDetect));
  EXPECT_EQ(PixelInHsv(library), PICTAVO_E_FAIL);
}

TEST(Loader, LeavesTheCurrentFolderAndThePathAlone) {
  const PlugIns plugIns({});
  const fs::path before = fs::current_path(), strange = Here() / kRealModules;
  fs::current_path(strange);
  SetEnvironmentVariableW(L"PATH", strange.c_str());
  EXPECT_FALSE(Library(plugIns.library().c_str()).has(Module::convertUtility));
  EXPECT_FALSE(Library());
  fs::current_path(before);
}

template <auto method, typename Owner, typename... Arguments>
u32 SucceedsOnNulls(const Library& library, u32 (Owner::*)(Arguments...) noexcept) {
  return library.Call<method>(Arguments{}...).succeeded;
}

template <auto... methods>
std::vector<u32> SucceedOnNulls(const Library& library) {
  return {SucceedsOnNulls<methods>(library, methods)...};
}

TEST(Loader, KnowsWhichMethodsReturnAStatus) {
  using I = IPictavo6;
  const PlugIns plugIns({});
  const Library library(plugIns.library().c_str());
  const auto refused =
      SucceedOnNulls<&I::BlendOverWithOpacityRamp, &I::BlendOverPacked, &I::BlendOverPitched,
                     &I::BlendPremultipliedWithOpacityRamp, &I::BlendPremultipliedPacked,
                     &I::BlendPremultipliedPitched, &I::CompositePremultipliedWithOpacityRamp,
                     &I::CompositePremultipliedPitched, &I::CompositePremultipliedPacked,
                     &I::BlendOverWithOpacity, &I::BlendOverWithOpacityRampAndAlpha,
                     &I::BlendOverWithOpacityRampKeepAlpha, &I::ComputeHistogram, &I::ResizeBox16,
                     &I::MotionBlur, &I::ExtendBoundary, &I::BlendLayer, &I::ApplyChromaKey,
                     &I::Reserved47>(library);
  EXPECT_EQ(refused, std::vector<u32>(refused.size(), 0));
  u8 pixel[8] = {1, 2, 3, 4, 5, 6, 7, 128};
  EXPECT_TRUE(library.Call<&I::BlendOverPitched>(pixel, pixel + 4, 1, 1, 4));
  EXPECT_TRUE(library.Call<&I::PremultiplyPitched>(pixel, 1, 1, 4));
  EXPECT_TRUE(library.Call<&I::UnpremultiplyPacked>(pixel, 1, 1));
  EXPECT_TRUE(library.Call<&I::FillSolidColor>(pixel, 1, 1, 4, u8{1}, u8{2}, u8{3}, u8{4}));
  EXPECT_EQ(library.Call<&I::FillSolidColor>(pixel, 0, 1, 4, u8{1}, u8{2}, u8{3}, u8{4}).result,
            PICTAVO_S_FALSE);
}

/// What a call was refused with, or nothing.
template <typename Call>
std::string Refusal(Call call) {
  try {
    call();
  } catch (const Error& error) {
    return error.what();
  }
  return {};
}

TEST(Host, CallsWithPartsOfPicturesAndNamesWhatIsRefused) {
  const PlugIns plugIns({});
  const Host host(plugIns.library().c_str());
  Picture frame(9, 7), layer(3, 2);
  host.Fill(frame, 0xFF302010);
  host.Fill(layer, 0x80804020);
  const View part = View(frame).Part(4, 5, 3, 2);
  host.Premultiply(layer);
  host.BlendPremultiplied(part, layer);
  const std::vector<u8> before(frame.At(3, 5), frame.At(8, 5));
  EXPECT_EQ(before, (std::vector<u8>{16, 32,  48, 255, 24, 48,  88, 255, 24, 48,
                                     88, 255, 24, 48,  88, 255, 16, 32,  48, 255}));
  host.GaussianBlur(part, 1);
  EXPECT_EQ(std::vector<u8>(frame.At(3, 5), frame.At(8, 5)), before);
  EXPECT_EQ(host.ComputeHistogram(frame, 2)[88], 6u);
  const Picture half = host.Resized(part, 6, 1);
  EXPECT_EQ(half.At(5, 0)[2], 88);
  host.ExtendBoundary(frame, 3);  // of a row of three pixels, left of and above the layer's
  EXPECT_EQ(*frame.At(4, 5), 16);

  EXPECT_EQ(Refusal([&] { host.BlendOver(frame, layer); }),
            "BlendOverWithOpacityRamp: the pictures differ in size");
  EXPECT_EQ(Refusal([&] { host.GaussianBlur(frame, -1); }),
            "GaussianBlur: an argument cannot be used (0x80070057)");
  EXPECT_EQ(Refusal([&] { host.ApplyChromaKey(part, layer, {}); }),
            "ApplyChromaKey: rows must be packed");
  EXPECT_EQ(Refusal([&] {
              host.ComputeHistogram({frame.At(0, 6), 9, 7, -36}, 0);
            }),
            "ComputeHistogram: sizes and pitches below 0 are none");
  EXPECT_EQ(Refusal([&] { host.Require<&IPictavo6::Reserved12>(); }),
            "A reserved method: not built (0x80004001)");
  EXPECT_EQ(Refusal([&] { host.Require<&IPictavo6::BlendOverPacked>(nullptr, nullptr, 1, 1); }),
            "BlendOverPacked: refused (0x00000000)");
  EXPECT_EQ(Refusal([] { Picture(1 << 29, 1); }), "Picture: the size cannot be used");
  EXPECT_EQ(Refusal([] { Host(L"no such.dll"); }), "Pictavo.dll cannot be loaded");
}

TEST(Host, ReadsAndWritesRawPixels) {
  std::stringstream raw("abcdefgh12");
  Picture picture(2, 1);
  picture.Read(raw);
  EXPECT_EQ(*picture.At(1, 0), 'e');
  EXPECT_EQ(Refusal([&] { picture.Read(raw); }), "Picture: the pixels cannot be read");
  std::ostringstream out;
  Picture(1, 2).Write(out);
  EXPECT_EQ(out.str(), std::string(8, '\0'));
  EXPECT_EQ(Refusal([&] { picture.Write(std::ofstream("no such folder/file")); }),
            "Picture: the pixels cannot be written");
}

}  // namespace
}  // namespace pictavo::test
