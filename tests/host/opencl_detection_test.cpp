// How the library brings an OpenCL runtime up, on runtimes of the test's making.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <memory>

#include "debugger_listener.h"
#include "fake_opencl.h"
#include "module_folder.h"
#include "opencl/opencl_util.h"

namespace pictavo::test {
namespace {

using Lines = std::vector<std::string>;

constexpr cl::u64 kCpu = 1 << 1, kGpu = 1 << 2;
const std::string kRefused = "I _isOCL2Support return false!!, Disable OpenCL 2.0.\n";

FakeDevice Gpu(const char* version) { return {kGpu, "gpu", "", version}; }
const std::vector<FakePlatform> kOther = {{"Other", "OpenCL 3.0", {Gpu("OpenCL 3.0")}}};
const std::vector<FakePlatform> kIntel = {{"Intel", "OpenCL 2.0", {Gpu("OpenCL 2.0")}}};

class Detection : public testing::Test {
 protected:
  Detection() { fakeOpenCL = {}; }
  ~Detection() override { SetEnvironmentVariableW(L"DetectOpenCL", nullptr); }

  /// Brings a runtime up. @return what the library says of it
  Lines Init(const std::vector<FakePlatform>& platforms, const wchar_t* folder = L"opencl2") {
    fakeOpenCL.platforms = platforms;
    FindModulesIn(folder);
    util_ = std::make_unique<OpenCLUtil>();
    return InitAgain();
  }

  /// @return lines that begin with I, P or V for the method
  Lines InitAgain() {
    util_->Init();
    Lines lines = lines_.Take();
    for (std::string& line : lines) {
      for (const std::string method : {"Init", "_isOCL2Platform", "_GetOpenCLVersion"}) {
        const std::string start = "[OpenCLUtil::" + method + "]  ";
        const char letter = method == "Init" ? 'I' : method == "_isOCL2Platform" ? 'P' : 'V';
        if (line.starts_with(start)) line.replace(0, start.size(), {letter, ' '});
      }
    }
    return lines;
  }

  /// How many entry points there are of a group, which ends at the first missing one.
  size_t Found(size_t from, size_t to) const {
    const auto all = std::bit_cast<std::array<void*, kAll>>(util_->cl);
    const auto present = [&](size_t i) { return all[i] != nullptr; };
    size_t count = 0;
    while (from + count < to && present(from + count)) ++count;
    for (size_t i = from + count; i < to; ++i) EXPECT_FALSE(present(i)) << i;
    return count;
  }
  size_t Group1() const { return Found(0, kGroup1); }
  size_t Group2() const { return Found(kGroup1, kAll); }

  static constexpr size_t kGroup1 = 74, kAll = 87;
  std::unique_ptr<OpenCLUtil> util_;
  DebuggerListener lines_;
};

TEST_F(Detection, LogsHowItDecides) {
  const std::vector<FakePlatform> platforms = {
      {"Intel(R) OpenCL", "OpenCL 2.1 x", {Gpu("OpenCL 3.0 a"), Gpu("OpenCL 2.0 b")}},
      {"Other", "OpenCL 2.2 y", {Gpu("OpenCL 2.2")}},
      {"Intel", "OpenCL 2.0", {{kCpu, "cpu", "", "OpenCL 2.0"}}}};
  const Lines expected = {"P _isOCL2Platform, filter: Intel.",
                          "P clGetPlatformIDs return num: 3. \n",
                          "P clGetPlatformInfo: 0, platVerSize: 13. \n",
                          "P clGetPlatformInfo: 0, szPlatName: Intel(R) OpenCL. \n",
                          "P find: Intel, go get platform ver! \n",
                          "P clGetPlatformInfo: 0, ver: OpenCL 2.1 x. \n",
                          "P major ver: 2. \n",
                          "P 2.0+ platfrom. Start to get device information. \n",
                          "P plat 0: find device count: 2. \n",
                          "P device 0: ver: OpenCL 3.0 a. \n",
                          "P device 0: temp major: 3. \n",
                          "P update device major to : 3. \n",
                          "P device 1: ver: OpenCL 2.0 b. \n",
                          "P device 1: temp major: 2. \n",
                          "P OpenCL 2.0 device found.\n",
                          "P clGetPlatformInfo: 0, platVerSize: 13. \n",
                          "P clGetPlatformInfo: 0, szPlatName: Other. \n",
                          "P platform name doesn't find: Intel, try next platform. \n",
                          "P clGetPlatformInfo: 0, platVerSize: 11. \n",
                          "P clGetPlatformInfo: 0, szPlatName: Intel. \n",
                          "P find: Intel, go get platform ver! \n",
                          "P clGetPlatformInfo: 0, ver: OpenCL 2.0. \n",
                          "P major ver: 2. \n",
                          "P 2.0+ platfrom. Start to get device information. \n",
                          "P plat 2: find device count: 0. \n",
                          "P no device set major to 0. \n",
                          "P No OpenCL 2.0 device found.\n",
                          "P return 1.\n",
                          "V platform num: 3. \n",
                          "V platform 0, ver: OpenCL 2.1 x. \n",
                          "V platform 0, major: 2, minor: 1. \n",
                          "V update major to: 2, minor to: 1. \n",
                          "V platform 1, ver: OpenCL 2.2 y. \n",
                          "V platform 1, major: 2, minor: 2. \n",
                          "V update major to: 2, minor to: 2. \n",
                          "V platform 2, ver: OpenCL 2.0. \n",
                          "V platform 2, major: 2, minor: 0. \n",
                          "I OpenCL 2.0 device detected, start to extract OpenCL 2.0 function.\n",
                          "I Initialized.\n"};
  EXPECT_EQ(Init(platforms), expected);
  EXPECT_EQ(InitAgain(), expected);  // the module comes once; the decision is made each time
  EXPECT_EQ(Group1(), kGroup1);
  EXPECT_EQ(Group2(), kAll - kGroup1);
  const std::vector<FakePlatform> refused[] = {{},
                                               kOther,
                                               {platforms[2]},
                                               {{"Intel", "OpenCL 2.0", {Gpu("OpenCL 1.2")}}},
                                               {{"Intel", "OpenCL 1.2", {Gpu("OpenCL 2.0")}}}};
  for (const auto& none : refused) {
    const Lines lines = Init(none);
    EXPECT_EQ(Lines(lines.end() - 2, lines.end()), (Lines{"P return 0.\n", kRefused}));
    EXPECT_EQ(Group1(), kGroup1);
    EXPECT_EQ(Group2(), 0u);
  }
}

TEST_F(Detection, TakesTheRegistrySwitchAsANumberOnly) {
  constexpr const wchar_t* kKey = L"Software\\Quorlin\\VKTMemMgr";
  constexpr const wchar_t* kName = L"AllowOCL2ForAll";
  const DWORD zero = 0, on = 256;
  const std::uint64_t wide = 1;
  const struct {
    DWORD type;
    const void* value;
    DWORD size;
  } cases[] = {
      {REG_DWORD, &on, 4}, {REG_DWORD, &zero, 4}, {REG_QWORD, &wide, 8}, {REG_SZ, L"1", 4}};
  for (const auto& c : cases) {
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, kName, c.type, c.value, c.size),
              ERROR_SUCCESS);
    const Lines lines = Init(kOther);
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kName);
    const bool allowed = c.value == &on;
    EXPECT_EQ(Group2(), allowed ? 13u : 0u) << c.type;
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 2),
              allowed ? (Lines{"[OpenCLUtil::_readRegistrySetting] Find key: m_AllowOCL2ForAll.\n",
                               "P _isOCL2Platform, filter: (null)."})
                      : (Lines{"P _isOCL2Platform, filter: Intel.",
                               "P clGetPlatformIDs return num: 1. \n"}));
    EXPECT_EQ(std::ranges::count(lines, "P clGetPlatformInfo: 0, szPlatName: Other. \n"), !allowed);
  }
}

TEST_F(Detection, IsSwitchedOffByTheEnvironment) {
  const std::pair<const wchar_t*, bool> values[] = {
      {L"2", true},   {L"02", true},   {L" 2", true}, {L"1", false},  {L"22", false},
      {L"-2", false}, {L"two", false}, {L"", false},  {L"0x2", false}};
  for (const auto& [value, off] : values) {
    SetEnvironmentVariableW(L"DetectOpenCL", value);
    EXPECT_EQ(Init(kOther) == Lines{"I OpenCL been disabled.\n"}, off) << value;
    EXPECT_EQ(util_->loaded(), !off) << value;
  }
}

TEST_F(Detection, StopsAtTheFirstMissingEntryPoint) {
  EXPECT_EQ(Init(kIntel, L"opencl_gap2").back(), "I Initialized.\n");  // without clSVMAlloc
  EXPECT_EQ(Group1(), kGroup1);
  EXPECT_EQ(Group2(), 3u);
  Init(kIntel, L"opencl_gap1");  // without clCreateImage2D, so without what runs kernels
  EXPECT_TRUE(util_->loaded());
  EXPECT_FALSE(util_->CanRun());
  EXPECT_EQ(Group1(), 16u);
  Init(kIntel, L"opencl_broken");
  EXPECT_FALSE(util_->loaded());
  EXPECT_EQ(Group1(), 0u);
}

TEST_F(Detection, BearsRuntimesThatLie) {
  fakeOpenCL.endlessTexts = true;
  for (const auto& line : Init(kIntel)) EXPECT_LE(line.size(), 1023u);
  fakeOpenCL.endlessTexts = false;
  const FakePlatform long1 = {std::string(5000, 'I'), "OpenCL 99999999999999999999.-7", {}};
  EXPECT_EQ(Init({long1}).back(), kRefused);
  fakeOpenCL.claimedCount = 0xFFFFFFFF;
  for (const size_t count : {1, 100}) {
    const FakePlatform platform = {"Intel", "OpenCL 2.0", {Gpu("OpenCL 1.2")}};
    EXPECT_EQ(Init(std::vector<FakePlatform>(count, platform)).back(), kRefused);
  }
  fakeOpenCL.claimedCount = 0;
  for (const char* function :
       {"clGetPlatformIDs", "clGetPlatformInfo", "clGetDeviceIDs", "clGetDeviceInfo"}) {
    fakeOpenCL.fails = function;
    EXPECT_EQ(Init(kIntel).back(), kRefused) << function;
  }
}

}  // namespace
}  // namespace pictavo::test

pictavo::test::FakeOpenCL fakeOpenCL;
