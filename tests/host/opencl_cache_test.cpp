// Devices, programs and their cache, on a runtime of the test's making: what Pictavo.dll compiles,
// keeps, believes and gives back.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <thread>

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
    EXPECT_EQ(fakeOpenCL.faults, 0);
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
  for (const bool handle : {false, true}) {
    fakeOpenCL.failsWithHandle = handle;
    EXPECT_EQ(Calls(), kBoth);
  }
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

TEST_F(Programs, AreNotInTheCurrentFolderForATemporaryOneThatIsTooLong) {
  const fs::path bad = root_ / "file";
  Write(bad, "no folder");
  fs::current_path(root_);
  for (const size_t length : {238, 259, 300}) {
    const std::wstring temporary =
        (root_ / std::wstring(length - root_.native().size() - 1, 'x')).native();
    SetFolders(temporary, local_);
    EXPECT_EQ(Calls(), kCompiled) << length;
    EXPECT_EQ(Calls(), kLoaded) << length;
    EXPECT_TRUE(Files().contains("file") && Files().rbegin()->starts_with("local/")) << length;
    fs::remove(root_ / *Files().rbegin());
    SetFolders(temporary, bad);
    wchar_t folder[MAX_PATH];
    const bool named = GetTempPathW(MAX_PATH, folder) != 0;  // some systems drop what is too long
    EXPECT_EQ(Calls(), kCompiled) << length;
    EXPECT_EQ(Calls(), named ? kCompiled : kLoaded) << length;
    EXPECT_EQ(Files().size(), named ? 1u : 2u) << length;
    fs::remove_all(root_ / "OpenCLFolder");
  }
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
    for (const bool handle : {false, true}) {
      fakeOpenCL.fails = function;
      fakeOpenCL.failsWithHandle = handle;
      EXPECT_EQ(fill(), PICTAVO_E_FAIL) << function;
    }
  }
  for (const Method& method : kMethods) {
    const std::string noProgram = std::string("error creating program ") + method.program + '\n';
    const std::string noKernel = std::string("error creating kernel ") + method.kernel + '\n';
    constexpr u32 kFail = PICTAVO_E_FAIL, kMemory = PICTAVO_E_OUTOFMEMORY;
    const struct {
      const char* fails;
      i32 with;
      u32 result;
      bool lost;  // whether the device has to be brought up anew
      Lines lines = {};
    } cases[] = {{"clCreateProgramWithSource", 0, kFail, true, {noProgram}},
                 {"clBuildProgram", 0, kFail, true, {noProgram}},
                 {"clCreateKernel", 0, kFail, true, {noKernel}},
                 {"clCreateBuffer", -4, kMemory, false},
                 {"clCreateBuffer", -5, kMemory, true},
                 {"clCreateBuffer", -6, kMemory, false},
                 {"clCreateBuffer", -61, kMemory, false},
                 {"clCreateBuffer", -34, kFail, true},
                 {"clSetKernelArg", 0, kFail, true},
                 {"clEnqueueNDRangeKernel", -5, kFail, true},
                 {"clEnqueueNDRangeKernel", -4, kMemory, false},
                 {"clEnqueueReadBuffer", 0, kFail, true}};
    Surface written = dst;
    const auto contexts = [&] { return std::ranges::count(fakeOpenCL.calls, "context Device 1"); };
    for (const auto& c : cases) {
      for (const bool handle : {false, true}) {
        const std::string name = std::string(method.program) + ": " + c.fails;
        const auto call = [&](const char* fails, i32 with, Surface* to) {
          fakeOpenCL.fails = fails;
          fakeOpenCL.failsWith = with;
          fakeOpenCL.failsWithHandle = handle;
          return method.call(object, to, &src);
        };
        if (c.lines.empty()) {  // the device without its buffers
          EXPECT_EQ(call("", 0, &written), PICTAVO_S_OK) << name;
          EXPECT_EQ(call("clEnqueueNDRangeKernel", -4, &dst), kMemory) << name;
        }
        auto made = contexts();
        DebuggerListener lines;
        EXPECT_EQ(call(c.fails, c.with, &dst), c.result) << name << c.with;
        EXPECT_EQ(lines.Take(), c.lines) << name;
        EXPECT_TRUE(dst.memory() == before) << name;
        if (c.lines.empty()) {
          made = contexts();
          EXPECT_EQ(call("", 0, &written), PICTAVO_S_OK) << name;
        } else if (!handle) {
          continue;  // the next call is the one that fails again
        }
        EXPECT_EQ(contexts() - made, c.lost) << name << c.with;
      }
    }
    const auto files = Files();
    EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&](const std::string& file) {
      return file.find(std::string("/") + method.program + "Device 1") != std::string::npos;
    })) << method.program;
  }
}

TEST_F(Programs, ChooseTheGroupThatADeviceCannotRun) {
  const DllObject object;
  FindModulesIn(L"opencl1");
  Surface dst(64, 1);
  fakeOpenCL.fails = "group";
  for (const auto& [code, launches] : {std::pair{-54, 2}, {-55, 2}, {-36, 1}}) {
    fakeOpenCL.failsWith = code;
    fakeOpenCL.launches = 0;
    EXPECT_EQ(object->MemsetColorOpenCL(&dst, 0) == PICTAVO_S_OK, launches == 2) << code;
    EXPECT_EQ(fakeOpenCL.launches, launches) << code;
  }
}

TEST_F(Programs, ComeUpForSeveralObjectsAtOnce) {
  const DllObject objects[4];
  FindModulesIn(L"opencl1");
  std::vector<std::jthread> threads;
  for (const DllObject& object : objects) {
    threads.emplace_back([&] {
      Surface pixel(1, 1);
      EXPECT_EQ(object->MemsetColorOpenCL(&pixel, 0), PICTAVO_S_OK);
    });
  }
}

TEST_F(Programs, MoveNoMoreThanTheyMustAndKeepTheirBuffers) {
  constexpr cl::u64 kRead = cl::kMemReadOnly | cl::kMemUseHostPointer,
                    kWritten = cl::kMemWriteOnly | cl::kMemUseHostPointer,
                    kBetween = cl::kMemReadWrite | cl::kMemUseHostPointer;
  constexpr cl::u64 kPicture = 1000 * 700 * 4, kEdges = 2 * (1000 + 700) * 4,
                    kBorder = 1002 * 702 * 4 - kPicture;
  const auto blur = [](u32 x, u32 y) {
    return [=](auto* o, auto* dst, auto* src) { return o->FastBlurOpenCL(dst, src, x, y); };
  };
  struct {
    std::function<u32(IPictavo6*, IPictavoSurface*, IPictavoSurface*)> call;
    cl::u64 uploaded, downloaded;
    int launches;
    std::vector<cl::u64> buffers;
  } cases[] = {{kMethods[0].call, kEdges, kBorder, 3, {kRead, kWritten}},
               {kMethods[1].call, kPicture, kPicture, 1, {kRead, kWritten}},
               {kMethods[2].call, kPicture, kPicture, 1, {kRead, kWritten}},
               {blur(1, 1), kPicture, kPicture, 2, {kRead, kWritten, kBetween}},
               {blur(1, 0), kPicture, kPicture, 1, {kRead, kWritten}},
               {blur(0, 1), kPicture, kPicture, 1, {kRead, kWritten}},
               {blur(0, 0), kPicture, kPicture, 0, {kRead, kWritten}},
               {kMethods[4].call, 0, kPicture, 1, {kWritten}}};
  for (auto& c : cases) {
    const DllObject object;
    FindModulesIn(L"opencl1");
    Surface dst(1000, 700, 4, 1), src(1000, 700), small(999, 1, 4, 1), tall(1000, 2000, 4, 1);
    for (Surface* surface : {&dst, &dst, &small, &dst}) {
      fakeOpenCL.uploaded = fakeOpenCL.downloaded = fakeOpenCL.launches = 0;
      EXPECT_EQ(c.call(object, surface, surface == &dst ? &src : surface), PICTAVO_S_OK);
      EXPECT_EQ(std::exchange(fakeOpenCL.buffers, {}), c.buffers) << &c - cases;
      c.buffers.clear();
    }
    EXPECT_EQ(fakeOpenCL.uploaded, c.uploaded) << &c - cases;
    EXPECT_EQ(fakeOpenCL.downloaded, c.downloaded) << &c - cases;
    EXPECT_EQ(fakeOpenCL.launches, c.launches) << &c - cases;
    const int live = fakeOpenCL.live;
    // Grows what is there, and gives that back first where memory is short.
    fakeOpenCL.fails = "clCreateBuffer";
    fakeOpenCL.failsWith = -4;
    fakeOpenCL.failsTimes = 1;
    EXPECT_EQ(c.call(object, &tall, &tall), PICTAVO_S_OK);
    EXPECT_FALSE(std::exchange(fakeOpenCL.buffers, {}).empty());
    EXPECT_EQ(fakeOpenCL.live, live) << &c - cases;
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
      {{{"A", "", {cpu}}, {"B", "", {gpu}}}, "build gpu", {"context gpu", "context cpu"}},
  };
  for (const auto& c : cases) {
    fakeOpenCL.platforms = c.platforms;
    fakeOpenCL.fails = c.fails;
    DebuggerListener lines;
    EXPECT_EQ(Calls(true), c.asked);
    EXPECT_TRUE(std::ranges::none_of(lines.Take(), [](const std::string& line) {
      return line.starts_with("error");
    })) << c.fails;
  }
}

TEST_F(Programs, StayOnADeviceThatIsLostBeforeTheyAreMade) {
  fakeOpenCL.platforms[0].devices = {{kGpu, "gpu", "", ""}, {kCpu, "cpu", "", ""}};
  const DllObject object;
  FindModulesIn(L"opencl1");
  Surface dst(3, 3, 4, 1), src(3, 3);
  for (const Method& method : kMethods) {
    fakeOpenCL.fails = &method == kMethods ? "" : "clCreateProgramWithSource";
    fakeOpenCL.failsTimes = 1;
    fakeOpenCL.calls.clear();
    EXPECT_EQ(method.call(object, &dst, &src), PICTAVO_S_OK);
    EXPECT_EQ(std::ranges::count(fakeOpenCL.calls, "context gpu"), 1) << method.program;
    EXPECT_EQ(std::ranges::count(fakeOpenCL.calls, "context cpu"), 0) << method.program;
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
