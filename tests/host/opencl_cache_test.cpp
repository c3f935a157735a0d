// Devices, programs and their cache, on a runtime of the test's making: what Pictavo.dll compiles,
// keeps, believes and gives back.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "debugger_listener.h"
#include "fake_opencl.h"
#include "module_folder.h"
#include "opencl/program_cache.h"
#include "pictavo/pictavo.h"

namespace pictavo::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr cl::u64 kCpu = 1 << 1, kGpu = 1 << 2;
const Lines kCompiled = {"source"}, kLoaded = {"binary"};

struct Pixel final : IPictavoSurface {
  u32 Query(ImageDesc* image) noexcept override {
    *image = {{}, 1, 1, 0, bytes, 1, 1, 4, 4};
    return 1;
  }
  u8 bytes[4] = {};
};

class Programs : public testing::Test {
 protected:
  Programs() {
    fakeOpenCL = {};
    fakeOpenCL.platforms = {{"P", "OpenCL 1.2", {{kGpu, "Device 1", "V", "OpenCL 1.2"}}}};
    fs::remove_all(root_);
    for (const char* folder : {"temp", "local"}) fs::create_directories(root_ / folder);
    SetFolders(root_ / "temp", root_ / "local");
  }
  ~Programs() override {
    EXPECT_EQ(fakeOpenCL.live, 0);
    fs::remove_all(root_);
  }

  static void SetFolders(const fs::path& temp, const fs::path& local) {
    SetEnvironmentVariableW(L"TMP", temp.c_str());
    SetEnvironmentVariableW(L"LOCALAPPDATA", local.c_str());
  }

  /// What a new object answers and makes of programs, when it fills a pixel.
  u32 Fill(Lines* calls = nullptr) {
    const RealModule module(L"Pictavo.dll");
    IPictavo6* object = module.Entry<IPictavo6*()>("GetPictavo6")();
    FindModulesIn(L"opencl1");
    Pixel pixel;
    fakeOpenCL.calls.clear();
    const u32 result = object->MemsetColorOpenCL(&pixel, 0);
    module.Entry<int32_t(IPictavo6*)>("ReleasePictavo6")(object);
    if (calls != nullptr) *calls = fakeOpenCL.calls;
    return result;
  }

  /// The same, of an object that must succeed; without the choice of a device.
  Lines Calls() {
    Lines calls;
    EXPECT_EQ(Fill(&calls), PICTAVO_S_OK);
    std::erase_if(calls, [](const auto& call) { return call.starts_with("context"); });
    return calls;
  }

  /// Every file below the root, relative to it.
  std::vector<fs::path> Files() const {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(root_)) {
      if (!entry.is_directory()) files.push_back(entry.path().lexically_relative(root_));
    }
    return files;
  }

  fs::path OnlyFile() const {
    const auto files = Files();
    EXPECT_EQ(files.size(), 1u);
    return files.empty() ? root_ / "none" : root_ / files[0];
  }

  static inline const fs::path root_ = fs::temp_directory_path() / L"pictavo_program_test";
};

TEST_F(Programs, AreCompiledOncePerMachineAndDevice) {
  EXPECT_EQ(Calls(), kCompiled);
  const std::string file = OnlyFile().lexically_relative(root_).generic_string();
  const std::string expected =
      "temp/OpenCLFolder_Pictavo_" PICTAVO_VERSION "/OpenCLFolder/MemColor.clDevice 1_";
  ASSERT_EQ(file.substr(0, expected.size()), expected);
  EXPECT_EQ(file.find_first_not_of("0123456789", expected.size()), std::string::npos);
  EXPECT_EQ(Calls(), kLoaded);
  EXPECT_EQ(Calls(), kLoaded);

  // A binary belongs to one device, in one state.
  FakeDevice& device = fakeOpenCL.platforms[0].devices[0];
  for (std::string* text : {&device.driver, &device.version, &device.name}) {
    *text += "x";
    EXPECT_EQ(Calls(), kCompiled) << *text;
    EXPECT_EQ(Calls(), kLoaded) << *text;
  }
  device.type = kCpu;
  EXPECT_EQ(Calls(), kCompiled);
  device.vendor = "Intel Corporation";
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Files().size(), 6u);
}

TEST_F(Programs, AreCompiledAgainWhenTheirFileIsOdd) {
  EXPECT_EQ(Calls(), kCompiled);
  const fs::path path = OnlyFile();
  std::ifstream file(path, std::ios::binary);
  const std::string good{std::istreambuf_iterator<char>(file), {}};
  file.close();
  std::vector<std::string> bad = {"", "x", good.substr(0, 32), good + '\0', std::string(100, 'P')};
  for (size_t cut = 1; cut < good.size(); cut += 13) bad.push_back(good.substr(0, cut));
  for (size_t at = 0; at < good.size(); at += at < 32 ? 1 : 37) {
    bad.push_back(good);
    bad.back()[at] = static_cast<char>(~good[at]);
  }
  for (const std::string& content : bad) {
    std::ofstream(path, std::ios::binary).write(content.data(), std::ssize(content));
    ASSERT_EQ(Calls(), kCompiled);
    ASSERT_EQ(Calls(), kLoaded);
  }
  EXPECT_EQ(OnlyFile(), path);

  // The runtime has the last word on a binary.
  fakeOpenCL.fails = "clCreateProgramWithBinary";
  EXPECT_EQ(Calls(), (Lines{"binary", "source"}));
  fakeOpenCL.fails = "";
  fakeOpenCL.lacksKernel = "MemsetColor_ALL";
  EXPECT_EQ(Calls(), (Lines{"binary", "source"}));
  fakeOpenCL.fails = "clGetProgramInfo";  // a size beyond belief
  EXPECT_EQ(Calls(), (Lines{"binary", "source"}));
}

TEST_F(Programs, UseTheSecondPathAndThenNone) {
  std::ofstream(root_ / "file") << "no folder";
  const fs::path good = root_ / "local", bad = root_ / "file", missing = root_ / "missing";
  SetFolders(bad, good);
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Calls(), kLoaded);
  EXPECT_EQ(Files().size(), 2u);
  SetFolders(bad, missing / std::wstring(200, 'x'));
  EXPECT_EQ(Calls(), kCompiled);
  SetFolders(bad, L"");
  EXPECT_EQ(Calls(), kCompiled);
  if (GetACP() != CP_UTF8) {
    SetFolders(bad, root_ / L"\x4E00\x0410");  // not to be had in one ANSI character set
    EXPECT_EQ(Calls(), kCompiled);
  }
  EXPECT_EQ(Files().size(), 2u);

  // A folder where the file should be: the second path takes it.
  SetFolders(root_ / "temp", good);
  fs::remove_all(good);
  fs::create_directories(good);
  EXPECT_EQ(Calls(), kCompiled);
  for (const fs::path& path : Files()) {
    if (path.begin()->string() != "temp") continue;
    fs::remove(root_ / path);
    fs::create_directories(root_ / path);
  }
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Calls(), kLoaded);
  EXPECT_EQ(Files().size(), 2u);
}

TEST_F(Programs, AreKeptInTheCurrentFolderWithoutABasePath) {
  const fs::path before = fs::current_path();
  fs::current_path(root_ / "temp");
  const ProgramCache cache(L"");
  EXPECT_TRUE(cache.Save("program", "device", 7, {1, 2, 3}));
  EXPECT_EQ(cache.Load("program", "device", 7), (Binary{1, 2, 3}));
  EXPECT_EQ(OnlyFile(), root_ / "temp" / "OpenCLFolder" / "programdevice_7");
  fs::current_path(before);
}

TEST_F(Programs, KeepToTheirFolderWhateverADeviceIsCalled) {
  struct Case {
    std::string name, inFile;
  } const cases[] = {
      {"", ""},
      {"..\\..\\..\\evil", ".._.._.._evil"},
      {"../../evil:stream", ".._.._evil_stream"},
      {"<a>|\"?*\x01\x7F\xC4%s%n", "_a________%s%n"},
      {"C:\\con", "C__con"},
      {std::string(5000, 'n'), ""},
  };
  for (const Case& c : cases) {
    fakeOpenCL.platforms[0].devices[0].name = c.name;
    EXPECT_EQ(Calls(), kCompiled) << c.name;
    EXPECT_EQ(Calls(), kLoaded) << c.name;
    const fs::path file = OnlyFile();
    EXPECT_EQ(file.parent_path().filename(), "OpenCLFolder");
    const std::string name = file.filename().string();
    if (c.name.size() < 5000) {
      EXPECT_EQ(name.substr(0, name.rfind('_')), "MemColor.cl" + c.inFile);
    }
    EXPECT_LT(file.native().size(), 260u);
    fs::remove(file);
  }
  fakeOpenCL.endlessTexts = true;
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Files().size(), 1u);
  fakeOpenCL.fails = "clGetDeviceInfo";
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Calls(), kLoaded);
}

TEST_F(Programs, FailWithTheirFunctionAndComeWithTheNextCall) {
  struct Case {
    const char* fails;
    u32 result;
    Lines lines;
  } const cases[] = {
      {"clGetPlatformIDs", PICTAVO_E_FAIL, {}},
      {"clGetDeviceIDs", PICTAVO_E_FAIL, {}},
      {"clCreateContext", PICTAVO_E_FAIL, {}},
      {"clCreateCommandQueue", PICTAVO_E_FAIL, {}},
      {"clCreateProgramWithSource", PICTAVO_E_FAIL, {"error creating program MemColor.cl\n"}},
      {"clBuildProgram", PICTAVO_E_FAIL, {"error creating program MemColor.cl\n"}},
      {"clCreateKernel", PICTAVO_E_FAIL, {"error creating kernel MemsetColor_ALL\n"}},
      {"clCreateBuffer", PICTAVO_E_OUTOFMEMORY, {}},
      {"clSetKernelArg", PICTAVO_E_FAIL, {}},
      {"clEnqueueNDRangeKernel", PICTAVO_E_FAIL, {}},
      {"clEnqueueMapBuffer", PICTAVO_E_FAIL, {}},
      {"", PICTAVO_S_OK, {}},
  };
  const RealModule module(L"Pictavo.dll");
  IPictavo6* object = module.Entry<IPictavo6*()>("GetPictavo6")();
  Pixel pixel;
  FindModulesIn(L"opencl_broken");
  EXPECT_EQ(object->MemsetColorOpenCL(&pixel, 0), PICTAVO_E_FAIL);
  FindModulesIn(L"opencl1");
  SetEnvironmentVariableW(L"DetectOpenCL", L"2");
  EXPECT_EQ(object->MemsetColorOpenCL(&pixel, 0), PICTAVO_E_FAIL);
  SetEnvironmentVariableW(L"DetectOpenCL", nullptr);
  SetFolders(root_ / "none", root_ / "none");
  const auto platforms = std::exchange(fakeOpenCL.platforms, {});
  EXPECT_EQ(object->MemsetColorOpenCL(&pixel, 0), PICTAVO_E_FAIL);
  fakeOpenCL.platforms = platforms;
  for (const Case& c : cases) {
    fakeOpenCL.fails = c.fails;
    DebuggerListener lines;
    EXPECT_EQ(object->MemsetColorOpenCL(&pixel, 0), c.result) << c.fails;
    EXPECT_EQ(lines.Take(), c.lines) << c.fails;
  }
  module.Entry<int32_t(IPictavo6*)>("ReleasePictavo6")(object);
}

TEST_F(Programs, AreAllThere) {
  const RealModule module(L"Pictavo.dll");
  IPictavo6* object = module.Entry<IPictavo6*()>("GetPictavo6")();
  FindModulesIn(L"opencl1");
  Pixel pixel;
  const f32 matrix[6] = {};
  EXPECT_EQ(object->MemsetColorOpenCL(&pixel, 0), PICTAVO_S_OK);
  EXPECT_EQ(object->ExtendBoundaryOpenCL(&pixel, 0), PICTAVO_S_OK);
  EXPECT_EQ(object->TransformOpenCL(&pixel, &pixel, matrix), PICTAVO_S_OK);
  EXPECT_EQ(object->BilinearInterpolationOpenCL(&pixel, &pixel), PICTAVO_S_OK);
  EXPECT_EQ(object->FastBlurOpenCL(&pixel, &pixel, 1, 1), PICTAVO_S_OK);
  module.Entry<int32_t(IPictavo6*)>("ReleasePictavo6")(object);
  std::vector<std::string> names;
  for (const fs::path& file : Files()) {
    const std::string name = file.filename().string();
    names.push_back(name.substr(0, name.find("Device")));
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names,
            (Lines{"Blur.cl", "Common.cl", "Interpolation.cl", "MemColor.cl", "TransformF.cl"}));
}

TEST_F(Programs, RunOnAGpuBeforeAnyOtherDevice) {
  const FakeDevice cpu = {kCpu, "cpu", "", ""}, gpu = {kGpu, "gpu", "", ""};
  struct Case {
    std::vector<FakePlatform> platforms;
    const char* fails;
    Lines asked;
  } const cases[] = {
      {{{"A", "", {cpu}}, {"B", "", {cpu, gpu}}}, "", {"context gpu"}},
      {{{"A", "", {}}, {"B", "", {cpu}}}, "", {"context cpu"}},
      {{{"A", "", {cpu, gpu}}}, "gpu", {"context gpu", "context cpu"}},
  };
  for (const Case& c : cases) {
    fakeOpenCL.platforms = c.platforms;
    fakeOpenCL.fails = c.fails;
    Lines calls;
    EXPECT_EQ(Fill(&calls), PICTAVO_S_OK);
    std::erase_if(calls, [](const auto& call) { return !call.starts_with("context"); });
    EXPECT_EQ(calls, c.asked);
  }
}

TEST(VendorCodes, AreOfWholeNames) {
  const std::pair<std::string, i32> vendors[] = {{"Advanced Micro Devices, Inc.", 0},
                                                 {"AuthenticAMD", 0},
                                                 {"NVIDIA Corporation", 1},
                                                 {"Intel Corporation", 2},
                                                 {"GenuineIntel", 0},
                                                 {"Intel(R) Corporation", 3},
                                                 {"intel corporation", 4},
                                                 {"NVIDIA Corporation ", 4},
                                                 {"", 4}};
  for (const auto& [vendor, code] : vendors) EXPECT_EQ(VendorCode(vendor), code) << vendor;
}

}  // namespace
}  // namespace pictavo::test
