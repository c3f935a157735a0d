// Devices, programs and their cache, on a runtime of the test's making: what Pictavo.dll compiles,
// keeps, believes and gives back.
#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>
#include <set>

#include "debugger_listener.h"
#include "fake_opencl.h"
#include "opencl/program_cache.h"
#include "opencl_methods.h"

namespace pictavo::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr cl::u64 kCpu = 1 << 1, kGpu = 1 << 2;
const Lines kCompiled = {"source"}, kLoaded = {"binary"}, kBoth = {"binary", "source"};

void Write(const fs::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary).write(content.data(), std::ssize(content));
}

class Programs : public testing::Test {
 protected:
  Programs() {
    fakeOpenCL = {};
    fakeOpenCL.platforms = {{"P", "OpenCL 1.2", {{kGpu, "Device 1", "V", "OpenCL 1.2"}}}};
    fs::remove_all(root_);
    for (const fs::path& folder : {temp_, local_}) fs::create_directories(folder);
    SetFolders(temp_, local_);
  }
  ~Programs() override {
    EXPECT_EQ(fakeOpenCL.live, 0);
    fs::current_path(before_);
    fs::remove_all(root_);
  }

  static void SetFolders(const fs::path& temp, const fs::path& local) {
    SetEnvironmentVariableW(L"TMP", temp.c_str());
    SetEnvironmentVariableW(L"LOCALAPPDATA", local.c_str());
  }

  /// What a new object makes: contexts, or programs, when it fills a pixel.
  static Lines Calls(bool contexts = false) {
    const DllObject object;
    FindModulesIn(L"opencl1");
    Surface pixel(1, 1);
    fakeOpenCL.calls.clear();
    EXPECT_EQ(object->MemsetColorOpenCL(&pixel, 0), PICTAVO_S_OK);
    Lines calls = fakeOpenCL.calls;
    std::erase_if(calls, [&](auto& call) { return call.starts_with("context") != contexts; });
    return calls;
  }

  /// Every file below the root, relative to it.
  static std::set<std::string> Files() {
    std::set<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root_)) {
      if (entry.is_directory()) continue;
      files.insert(entry.path().lexically_relative(root_).generic_string());
    }
    return files;
  }
  static fs::path OnlyFile() {
    const auto files = Files();
    EXPECT_EQ(files.size(), 1u);
    return root_ / (files.empty() ? "none" : *files.begin());
  }

  const fs::path before_ = fs::current_path();
  static inline const fs::path root_ = fs::temp_directory_path() / L"pictavo_program_test";
  static inline const fs::path temp_ = root_ / "temp", local_ = root_ / "local";
};

TEST_F(Programs, AreCompiledOncePerMachineAndDevice) {
  EXPECT_EQ(Calls(), kCompiled);
  const std::string file = *Files().begin();
  const std::string expected =
      "temp/OpenCLFolder_Pictavo_" PICTAVO_VERSION "/OpenCLFolder/MemColor.clDevice 1_";
  ASSERT_EQ(file.substr(0, expected.size()), expected);
  EXPECT_EQ(file.find_first_not_of("0123456789", expected.size()), std::string::npos);
  EXPECT_EQ(Calls(), kLoaded);

  // A binary belongs to one device, in one state.
  FakeDevice& device = fakeOpenCL.platforms[0].devices[0];
  const std::function<void()> changes[] = {
      [&] { device.driver += "x"; }, [&] { device.version += "x"; }, [&] { device.name += "x"; },
      [&] { device.type = kCpu; }, [&] { device.vendor = "Intel Corporation"; }};
  for (const auto& change : changes) {
    change();
    EXPECT_EQ(Calls(), kCompiled) << &change - changes;
    EXPECT_EQ(Calls(), kLoaded) << &change - changes;
  }
  EXPECT_EQ(Files().size(), 6u);
}

TEST_F(Programs, AreKeptInTheCurrentFolderWithoutABasePathAndBelievedOnlyWhole) {
  fs::current_path(temp_);
  const ProgramCache cache(L"");
  const Binary binary = {3, 1, 4, 1, 5, 9, 2, 6};
  ASSERT_TRUE(cache.Save("program", "device", 7, binary));
  EXPECT_EQ(cache.Load("program", "device", 7), binary);
  EXPECT_TRUE(cache.Load("program", "device", 7 + (cl::u64{1} << 40)).empty());  // of one name
  const fs::path path = OnlyFile();
  EXPECT_EQ(path, temp_ / "OpenCLFolder" / "programdevice_7");
  std::ifstream file(path, std::ios::binary);
  const std::string good{std::istreambuf_iterator<char>(file), {}};
  file.close();
  Lines bad = {good + '\0', std::string(100, 'P')};
  for (size_t i = 0; i < good.size(); ++i) {
    bad.push_back(good.substr(0, i));
    for (int bit = 1; bit < 256; bit *= 2) {
      bad.push_back(good);
      bad.back()[i] = static_cast<char>(good[i] ^ bit);
    }
  }
  for (const std::string& content : bad) {
    Write(path, content);
    ASSERT_TRUE(cache.Load("program", "device", 7).empty()) << &content - bad.data();
  }
  Write(path, good);
  EXPECT_EQ(cache.Load("program", "device", 7), binary);
}

TEST_F(Programs, AreCompiledAgainWhenTheirFileOrTheRuntimeWillNotDo) {
  EXPECT_EQ(Calls(), kCompiled);
  const fs::path path = OnlyFile();
  Write(path, "x");
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Calls(), kLoaded);
  EXPECT_EQ(OnlyFile(), path);
  fakeOpenCL.fails = "clCreateProgramWithBinary";
  EXPECT_EQ(Calls(), kBoth);
  fakeOpenCL.fails = "";
  fakeOpenCL.lacksKernel = "MemsetColor_ALL";
  EXPECT_EQ(Calls(), kBoth);
  fakeOpenCL.fails = "clGetProgramInfo";  // a size beyond belief
  EXPECT_EQ(Calls(), kBoth);
}

TEST_F(Programs, UseTheSecondPathAndThenNone) {
  const fs::path bad = root_ / "file";
  Write(bad, "no folder");
  SetFolders(bad, local_);
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Calls(), kLoaded);
  std::vector<fs::path> noFolders = {root_ / "missing" / std::wstring(200, 'x'), L""};
  if (GetACP() != CP_UTF8) noFolders.push_back(root_ / L"\x4E00\x0410");  // not one ANSI set's
  for (const fs::path& folder : noFolders) {
    SetFolders(bad, folder);
    EXPECT_EQ(Calls(), kCompiled);
  }
  EXPECT_EQ(Files().size(), 2u);

  // A folder where the file should be: the second path takes it.
  fs::remove_all(local_);
  fs::create_directories(local_);
  SetFolders(temp_, local_);
  fs::remove(bad);
  EXPECT_EQ(Calls(), kCompiled);
  const fs::path file = OnlyFile();
  fs::remove(file);
  fs::create_directories(file);
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Calls(), kLoaded);
  EXPECT_TRUE(Files().begin()->starts_with("local/"));
}

TEST_F(Programs, KeepToTheirFolderWhateverADeviceIsCalled) {
  const ProgramCache cache(temp_.c_str());
  const std::pair<std::string, std::string> names[] = {
      {"", ""},
      {"..\\..\\..\\evil", ".._.._.._evil"},
      {"../../evil:stream", ".._.._evil_stream"},
      {"<a>|\"?*\x01\x7F\xC4%s%n", "_a________%s%n"},
      {"C:\\con", "C__con"}};
  for (const auto& [name, inFile] : names) {
    EXPECT_TRUE(cache.Save("program", name, 7, {1})) << name;
    EXPECT_EQ(cache.Load("program", name, 7), Binary{1}) << name;
    EXPECT_EQ(*Files().begin(), "temp/OpenCLFolder/program" + inFile + "_7");
    fs::remove(OnlyFile());
  }
  FakeDevice& device = fakeOpenCL.platforms[0].devices[0];
  const std::function<void()> changes[] = {[&] { device.name.assign(5000, 'n'); },
                                           [&] { fakeOpenCL.fails = "clGetDeviceInfo"; }};
  for (const auto& change : changes) {
    change();
    EXPECT_EQ(Calls(), kCompiled);
    EXPECT_EQ(Calls(), kLoaded);
    EXPECT_LT(OnlyFile().native().size(), 260u);
    fs::remove(OnlyFile());
  }
  fakeOpenCL.fails = "";
  fakeOpenCL.endlessTexts = true;
  EXPECT_EQ(Calls(), kCompiled);
  EXPECT_EQ(Files().size(), 1u);
}

TEST_F(Programs, FailWithTheirFunctionAndComeWithTheNextCall) {
  const DllObject object;
  Surface dst(3, 3, 4, 1), src(3, 3);
  const Bytes before = dst.memory();
  const auto fill = [&] { return object->MemsetColorOpenCL(&dst, 0); };
  FindModulesIn(L"opencl_broken");
  EXPECT_EQ(fill(), PICTAVO_E_FAIL);
  FindModulesIn(L"opencl1");
  SetEnvironmentVariableW(L"DetectOpenCL", L"2");
  EXPECT_EQ(fill(), PICTAVO_E_FAIL);
  SetEnvironmentVariableW(L"DetectOpenCL", nullptr);
  const auto platforms = std::exchange(fakeOpenCL.platforms, {});
  EXPECT_EQ(fill(), PICTAVO_E_FAIL);
  fakeOpenCL.platforms = platforms;
  for (const char* function :
       {"clGetPlatformIDs", "clGetDeviceIDs", "clCreateContext", "clCreateCommandQueue"}) {
    fakeOpenCL.fails = function;
    EXPECT_EQ(fill(), PICTAVO_E_FAIL) << function;
  }
  for (const Method& method : kMethods) {
    const std::string noProgram = std::string("error creating program ") + method.program + '\n';
    const std::string noKernel = std::string("error creating kernel ") + method.kernel + '\n';
    const struct {
      const char* fails;
      u32 result;
      Lines lines;
    } cases[] = {{"clCreateProgramWithSource", PICTAVO_E_FAIL, {noProgram}},
                 {"clBuildProgram", PICTAVO_E_FAIL, {noProgram}},
                 {"clCreateKernel", PICTAVO_E_FAIL, {noKernel}},
                 {"clCreateBuffer", PICTAVO_E_OUTOFMEMORY, {}},
                 {"clSetKernelArg", PICTAVO_E_FAIL, {}},
                 {"clEnqueueNDRangeKernel", PICTAVO_E_FAIL, {}},
                 {"clEnqueueMapBuffer", PICTAVO_E_FAIL, {}}};
    for (const auto& c : cases) {
      fakeOpenCL.fails = c.fails;
      DebuggerListener lines;
      EXPECT_EQ(method.call(object, &dst, &src), c.result) << method.program << ": " << c.fails;
      EXPECT_EQ(lines.Take(), c.lines) << method.program << ": " << c.fails;
      EXPECT_TRUE(dst.memory() == before) << method.program << ": " << c.fails;
    }
    fakeOpenCL.fails = "";
    const int live = fakeOpenCL.live;
    Surface written = dst;
    EXPECT_EQ(method.call(object, &written, &src), PICTAVO_S_OK) << method.program;
    EXPECT_EQ(fakeOpenCL.live, live) << method.program;
    const auto files = Files();
    EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&](const std::string& file) {
      return file.find(std::string("/") + method.program + "Device 1") != std::string::npos;
    })) << method.program;
  }
}

TEST_F(Programs, RunOnAGpuBeforeAnyOtherDevice) {
  const FakeDevice cpu = {kCpu, "cpu", "", ""}, gpu = {kGpu, "gpu", "", ""};
  const struct {
    std::vector<FakePlatform> platforms;
    const char* fails;
    Lines asked;
  } cases[] = {
      {{{"A", "", {cpu}}, {"B", "", {cpu, gpu}}}, "", {"context gpu"}},
      {{{"A", "", {}}, {"B", "", {cpu}}}, "", {"context cpu"}},
      {{{"A", "", {cpu, gpu}}}, "gpu", {"context gpu", "context cpu"}},
  };
  for (const auto& c : cases) {
    fakeOpenCL.platforms = c.platforms;
    fakeOpenCL.fails = c.fails;
    EXPECT_EQ(Calls(true), c.asked);
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
                                                 {"", 4},
                                                 {"NVIDIA Corporation ", 4}};
  for (const auto& [vendor, code] : vendors) EXPECT_EQ(VendorCode(vendor), code) << vendor;
}

}  // namespace
}  // namespace pictavo::test
