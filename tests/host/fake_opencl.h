// What a test and the fake OpenCL runtimes share: the program exports one FakeOpenCL, which the
// runtimes look up.
#ifndef PICTAVO_TESTS_HOST_FAKE_OPENCL_H_
#define PICTAVO_TESTS_HOST_FAKE_OPENCL_H_

#include <string>
#include <vector>

#include "opencl/cl_api.h"

namespace pictavo::test {

struct FakeDevice {
  cl::u64 type;
  std::string name, vendor, version, driver = "1";
};

struct FakePlatform {
  std::string name, version;
  std::vector<FakeDevice> devices;
};

struct FakeOpenCL {
  std::vector<FakePlatform> platforms;
  u32 claimedCount = 0;            // of platforms and devices, when not 0
  bool endlessTexts = false;       // texts fill all the room they are given and do not end
  std::string fails;               // the function that always fails
  std::string lacksKernel;         // a kernel that binaries do not have
  std::vector<std::string> calls;  // of those that make something
  int live = 0;                    // objects made and not released
};

}  // namespace pictavo::test

extern "C" __declspec(dllexport) pictavo::test::FakeOpenCL fakeOpenCL;

#endif  // PICTAVO_TESTS_HOST_FAKE_OPENCL_H_
