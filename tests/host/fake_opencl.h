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

/// A card with memory of its own: bytes come to it and leave it.
struct FakeOpenCL {
  std::vector<FakePlatform> platforms;
  u32 claimedCount = 0;       // of platforms and devices, when not 0
  bool endlessTexts = false;  // texts fill all the room they are given and do not end
  std::string fails;          // what always fails: a function, "group", a device, "build " a device
  i32 failsWith = 0;          // its code, when not 0
  i32 failsTimes = 0;         // how often it fails, when not 0
  bool failsWithHandle = false;    // and hands out a handle all the same
  std::string lacksKernel;         // a kernel that binaries do not have
  std::vector<std::string> calls;  // of those that make something
  std::vector<cl::u64> buffers;    // how each one made is used
  cl::u64 uploaded = 0, downloaded = 0;
  int launches = 0;
  int live = 0;    // objects made and not released
  int faults = 0;  // what no runtime must meet
};

}  // namespace pictavo::test

extern "C" __declspec(dllexport) pictavo::test::FakeOpenCL fakeOpenCL;

#endif  // PICTAVO_TESTS_HOST_FAKE_OPENCL_H_
