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

FakeDevice Gpu(const char* version) { return {kGpu, "gpu", "", version}; }

/// Sets the registry's switch for one case; a null value leaves it absent.
class RegistrySwitch {
 public:
  RegistrySwitch(DWORD type, const void* value, DWORD size) {
    if (value == nullptr) return;
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, kName, type, value, size), ERROR_SUCCESS);
  }
  ~RegistrySwitch() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kName); }

 private:
  static constexpr const wchar_t* kKey = L"Software\\Quorlin\\VKTMemMgr";
  static constexpr const wchar_t* kName = L"AllowOCL2ForAll";
};

class Detection : public testing::Test {
 protected:
  Detection() { fakeOpenCL = {}; }
  ~Detection() override { SetEnvironmentVariableW(L"DetectOpenCL", nullptr); }

  /// Brings a runtime up and says how many entry points of each group there are.
  void Init(const wchar_t* folder) {
    FindModulesIn(folder);
    util_ = std::make_unique<OpenCLUtil>();
    util_->Init();
  }

  /// The table of entry points, without their types.
  std::vector<void*> EntryPoints() const {
    const auto all = std::bit_cast<std::array<void*, kAll>>(util_->cl);
    return {all.begin(), all.end()};
  }
  size_t Found(size_t from, size_t to) const {
    const auto all = EntryPoints();
    const auto missing = std::find(all.data() + from, all.data() + to, nullptr);
    return static_cast<size_t>(missing - (all.data() + from));
  }

  static constexpr size_t kGroup1 = 74, kAll = 87;
  std::unique_ptr<OpenCLUtil> util_;
  DebuggerListener lines_;
};

TEST_F(Detection, LogsHowItDecides) {
  const std::string init = "[OpenCLUtil::Init]  ";
  const std::string is2 = "[OpenCLUtil::_isOCL2Platform]  ";
  const std::string version = "[OpenCLUtil::_GetOpenCLVersion]  ";
  const std::string refused = init + "_isOCL2Support return false!!, Disable OpenCL 2.0.\n";
  struct Case {
    std::vector<FakePlatform> platforms;
    bool allowAll;
    bool group2;
    Lines lines;
  } const cases[] = {
      {{{"Intel(R) OpenCL", "OpenCL 2.1 x", {Gpu("OpenCL 3.0 a"), Gpu("OpenCL 2.0 b")}},
        {"Other", "OpenCL 2.2 y", {Gpu("OpenCL 2.2")}},
        {"Intel", "OpenCL 2.0", {Gpu("OpenCL 1.2")}}},
       false,
       true,
       {is2 + "_isOCL2Platform, filter: Intel.",
        is2 + "clGetPlatformIDs return num: 3. \n",
        is2 + "clGetPlatformInfo: 0, platVerSize: 13. \n",
        is2 + "clGetPlatformInfo: 0, szPlatName: Intel(R) OpenCL. \n",
        is2 + "find: Intel, go get platform ver! \n",
        is2 + "clGetPlatformInfo: 0, ver: OpenCL 2.1 x. \n",
        is2 + "major ver: 2. \n",
        is2 + "2.0+ platfrom. Start to get device information. \n",
        is2 + "plat 0: find device count: 2. \n",
        is2 + "device 0: ver: OpenCL 3.0 a. \n",
        is2 + "device 0: temp major: 3. \n",
        is2 + "update device major to : 3. \n",
        is2 + "device 1: ver: OpenCL 2.0 b. \n",
        is2 + "device 1: temp major: 2. \n",
        is2 + "OpenCL 2.0 device found.\n",
        is2 + "clGetPlatformInfo: 0, platVerSize: 13. \n",
        is2 + "clGetPlatformInfo: 0, szPlatName: Other. \n",
        is2 + "platform name doesn't find: Intel, try next platform. \n",
        is2 + "clGetPlatformInfo: 0, platVerSize: 11. \n",
        is2 + "clGetPlatformInfo: 0, szPlatName: Intel. \n",
        is2 + "find: Intel, go get platform ver! \n",
        is2 + "clGetPlatformInfo: 0, ver: OpenCL 2.0. \n",
        is2 + "major ver: 2. \n",
        is2 + "2.0+ platfrom. Start to get device information. \n",
        is2 + "plat 2: find device count: 1. \n",
        is2 + "device 0: ver: OpenCL 1.2. \n",
        is2 + "device 0: temp major: 1. \n",
        is2 + "update device major to : 1. \n",
        is2 + "No OpenCL 2.0 device found.\n",
        is2 + "return 1.\n",
        version + "platform num: 3. \n",
        version + "platform 0, ver: OpenCL 2.1 x. \n",
        version + "platform 0, major: 2, minor: 1. \n",
        version + "update major to: 2, minor to: 1. \n",
        version + "platform 1, ver: OpenCL 2.2 y. \n",
        version + "platform 1, major: 2, minor: 2. \n",
        version + "update major to: 2, minor to: 2. \n",
        version + "platform 2, ver: OpenCL 2.0. \n",
        version + "platform 2, major: 2, minor: 0. \n",
        init + "OpenCL 2.0 device detected, start to extract OpenCL 2.0 function.\n",
        init + "Initialized.\n"}},
      {{{"Other", "OpenCL 3.0", {Gpu("OpenCL 3.0")}}},
       false,
       false,
       {is2 + "_isOCL2Platform, filter: Intel.", is2 + "clGetPlatformIDs return num: 1. \n",
        is2 + "clGetPlatformInfo: 0, platVerSize: 11. \n",
        is2 + "clGetPlatformInfo: 0, szPlatName: Other. \n",
        is2 + "platform name doesn't find: Intel, try next platform. \n", is2 + "return 0.\n",
        refused}},
      {{{"Other", "OpenCL 3.0", {Gpu("OpenCL 3.0")}}},
       true,
       true,
       {"[OpenCLUtil::_readRegistrySetting] Find key: m_AllowOCL2ForAll.\n",
        is2 + "_isOCL2Platform, filter: (null).", is2 + "clGetPlatformIDs return num: 1. \n",
        is2 + "clGetPlatformInfo: 0, platVerSize: 11. \n",
        is2 + "clGetPlatformInfo: 0, ver: OpenCL 3.0. \n", is2 + "major ver: 3. \n",
        is2 + "2.0+ platfrom. Start to get device information. \n",
        is2 + "plat 0: find device count: 1. \n", is2 + "device 0: ver: OpenCL 3.0. \n",
        is2 + "device 0: temp major: 3. \n", is2 + "update device major to : 3. \n",
        is2 + "OpenCL 2.0 device found.\n", is2 + "return 1.\n", version + "platform num: 1. \n",
        version + "platform 0, ver: OpenCL 3.0. \n", version + "platform 0, major: 3, minor: 0. \n",
        version + "update major to: 3, minor to: 0. \n",
        init + "OpenCL 2.0 device detected, start to extract OpenCL 2.0 function.\n",
        init + "Initialized.\n"}},
      {{{"Intel", "OpenCL 2.0", {Gpu("OpenCL 1.2"), {kCpu, "cpu", "", "OpenCL 2.0"}}},
        {"Intel", "OpenCL 2.0", {}},
        {"Intel", "OpenCL 1.2", {Gpu("OpenCL 2.0")}}},
       false,
       false,
       {is2 + "_isOCL2Platform, filter: Intel.",
        is2 + "clGetPlatformIDs return num: 3. \n",
        is2 + "clGetPlatformInfo: 0, platVerSize: 11. \n",
        is2 + "clGetPlatformInfo: 0, szPlatName: Intel. \n",
        is2 + "find: Intel, go get platform ver! \n",
        is2 + "clGetPlatformInfo: 0, ver: OpenCL 2.0. \n",
        is2 + "major ver: 2. \n",
        is2 + "2.0+ platfrom. Start to get device information. \n",
        is2 + "plat 0: find device count: 1. \n",
        is2 + "device 0: ver: OpenCL 1.2. \n",
        is2 + "device 0: temp major: 1. \n",
        is2 + "update device major to : 1. \n",
        is2 + "No OpenCL 2.0 device found.\n",
        is2 + "clGetPlatformInfo: 0, platVerSize: 11. \n",
        is2 + "clGetPlatformInfo: 0, szPlatName: Intel. \n",
        is2 + "find: Intel, go get platform ver! \n",
        is2 + "clGetPlatformInfo: 0, ver: OpenCL 2.0. \n",
        is2 + "major ver: 2. \n",
        is2 + "2.0+ platfrom. Start to get device information. \n",
        is2 + "plat 1: find device count: 0. \n",
        is2 + "no device set major to 0. \n",
        is2 + "No OpenCL 2.0 device found.\n",
        is2 + "clGetPlatformInfo: 0, platVerSize: 11. \n",
        is2 + "clGetPlatformInfo: 0, szPlatName: Intel. \n",
        is2 + "find: Intel, go get platform ver! \n",
        is2 + "clGetPlatformInfo: 0, ver: OpenCL 1.2. \n",
        is2 + "major ver: 1. \n",
        is2 + "return 0.\n",
        refused}},
      {{},
       false,
       false,
       {is2 + "_isOCL2Platform, filter: Intel.", is2 + "clGetPlatformIDs return num: 0. \n",
        is2 + "return 0.\n", refused}},
  };
  for (const Case& c : cases) {
    fakeOpenCL.platforms = c.platforms;
    const DWORD on = 256;  // any value but 0
    const RegistrySwitch allow(REG_DWORD, c.allowAll ? &on : nullptr, sizeof(on));
    Init(L"opencl2");
    EXPECT_EQ(lines_.Take(), c.lines);
    EXPECT_EQ(Found(0, kGroup1), kGroup1);
    EXPECT_EQ(Found(kGroup1, kAll), c.group2 ? kAll - kGroup1 : 0);
    // The module comes once; the decision is made each time.
    util_->Init();
    EXPECT_EQ(lines_.Take(), c.lines);
  }
}

TEST_F(Detection, TakesTheRegistrySwitchAsANumberOnly) {
  fakeOpenCL.platforms = {{"Other", "OpenCL 3.0", {Gpu("OpenCL 3.0")}}};
  const DWORD zero = 0;
  const std::uint64_t wide = 1;
  struct Case {
    DWORD type;
    const void* value;
    DWORD size;
  } const cases[] = {{REG_DWORD, &zero, 4}, {REG_QWORD, &wide, 8}, {REG_SZ, L"1", 4}};
  for (const Case& c : cases) {
    const RegistrySwitch value(c.type, c.value, c.size);
    Init(L"opencl2");
    EXPECT_EQ(Found(kGroup1, kAll), 0u) << c.type;
    EXPECT_NE(lines_.Take()[0].substr(0, 35), "[OpenCLUtil::_readRegistrySetting] ");
  }
}

TEST_F(Detection, IsSwitchedOffByTheEnvironment) {
  struct Case {
    const wchar_t* value;
    bool off;
  } const cases[] = {{L"2", true},   {L"02", true},   {L" 2", true}, {L"1", false},  {L"22", false},
                     {L"-2", false}, {L"two", false}, {L"", false},  {L"0x2", false}};
  for (const Case& c : cases) {
    SetEnvironmentVariableW(L"DetectOpenCL", c.value);
    Init(L"opencl1");
    EXPECT_EQ(util_->loaded(), !c.off) << c.value;
    const Lines lines = lines_.Take();
    EXPECT_EQ(lines == Lines{"[OpenCLUtil::Init]  OpenCL been disabled.\n"}, c.off) << c.value;
  }
}

TEST_F(Detection, StopsAtTheFirstMissingEntryPoint) {
  fakeOpenCL.platforms = {{"Intel", "OpenCL 2.0", {Gpu("OpenCL 2.0")}}};
  Init(L"opencl_gap2");  // without clSVMAlloc
  EXPECT_EQ(Found(0, kGroup1), kGroup1);
  EXPECT_EQ(Found(kGroup1, kAll), 3u);
  EXPECT_EQ(lines_.Take().back(), "[OpenCLUtil::Init]  Initialized.\n");

  Init(L"opencl_gap1");  // without clCreateImage2D, so without anything to run kernels with
  EXPECT_TRUE(util_->loaded());
  EXPECT_FALSE(util_->CanRun());
  const auto all = EntryPoints();
  EXPECT_EQ(Found(0, kGroup1), 16u);
  EXPECT_EQ(std::count(all.begin() + 16, all.begin() + kGroup1, nullptr), 58);

  Init(L"opencl_broken");
  EXPECT_FALSE(util_->loaded());
  EXPECT_EQ(Found(0, kAll), 0u);
}

TEST_F(Detection, BearsRuntimesThatLie) {
  fakeOpenCL.platforms = {{"Intel", "OpenCL 2.0", {Gpu("OpenCL 2.0")}}};
  fakeOpenCL.endlessTexts = true;
  Init(L"opencl1");
  for (const auto& line : lines_.Take()) EXPECT_LE(line.size(), 1023u);

  fakeOpenCL.endlessTexts = false;
  fakeOpenCL.platforms[0].name.assign(5000, 'I');
  fakeOpenCL.platforms[0].version = "OpenCL 99999999999999999999.-7";
  Init(L"opencl1");
  const std::string refused =
      "[OpenCLUtil::Init]  _isOCL2Support return false!!, Disable OpenCL 2.0.\n";
  fakeOpenCL.claimedCount = 0xFFFFFFFF;
  for (const size_t platforms : {1, 100}) {
    fakeOpenCL.platforms =
        std::vector<FakePlatform>(platforms, {"Intel", "OpenCL 2.0", {Gpu("OpenCL 1.2")}});
    Init(L"opencl1");
    EXPECT_EQ(lines_.Take().back(), refused);
  }
  fakeOpenCL.claimedCount = 0;
  fakeOpenCL.platforms = {{"Intel", "OpenCL 2.0", {Gpu("OpenCL 2.0")}}};
  for (const char* function :
       {"clGetPlatformIDs", "clGetPlatformInfo", "clGetDeviceIDs", "clGetDeviceInfo"}) {
    fakeOpenCL.fails = function;
    Init(L"opencl1");
    EXPECT_EQ(lines_.Take().back(), refused) << function;
  }
}

}  // namespace
}  // namespace pictavo::test

pictavo::test::FakeOpenCL fakeOpenCL;
