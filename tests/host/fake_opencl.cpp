// An OpenCL runtime that plays whatever platforms a test wants and runs no kernels. Its binaries
// are their sources behind a mark.
#include "fake_opencl.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

#include "platform/module.h"

namespace pictavo::test {
namespace {

using cl::u64;

FakeOpenCL& Control() {
  static auto* control = reinterpret_cast<FakeOpenCL*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), "fakeOpenCL")));
  return *control;
}

const std::string kMark = "BINARY";

struct Object {
  Object() { ++Control().live; }
  ~Object() { --Control().live; }
  std::string text;     // of a program
  bool binary = false;  // how the program came
  void* host = nullptr;
};

bool Fails(const std::string& function) { return !function.empty() && Control().fails == function; }

/// Makes an object, or says that it cannot.
Object* Make(const char* function, i32* result) {
  *result = Fails(function) ? -6 : cl::kSuccess;
  return *result == cl::kSuccess ? new Object : nullptr;
}

template <typename Items>
i32 List(const char* function, const Items& items, u32 capacity, void** handles, u32* count) {
  if (items.empty() || Fails(function)) return -1;
  const u32 size = static_cast<u32>(items.size()), claimed = Control().claimedCount;
  if (count != nullptr) *count = claimed != 0 ? claimed : size;
  for (u32 i = 0; handles != nullptr && i < std::min(capacity, size); ++i) handles[i] = items[i];
  return cl::kSuccess;
}

i32 Answer(const void* value, size_t size, size_t capacity, void* to, size_t* written) {
  if (written != nullptr) *written = size;
  if (to == nullptr) return cl::kSuccess;
  if (capacity < size) return -30;
  std::memcpy(to, value, size);
  return cl::kSuccess;
}

i32 Answer(const std::string& text, size_t capacity, void* to, size_t* written) {
  if (!Control().endlessTexts || to == nullptr) {
    return Answer(text.c_str(), text.size() + 1, capacity, to, written);
  }
  for (size_t i = 0; i < capacity; ++i) static_cast<char*>(to)[i] = text[i % text.size()];
  return cl::kSuccess;
}

}  // namespace

extern "C" {

i32 clGetPlatformIDs(u32 capacity, void** platforms, u32* count) {
  std::vector<void*> all;
  for (auto& platform : Control().platforms) all.push_back(&platform);
  return List("clGetPlatformIDs", all, capacity, platforms, count);
}

i32 clGetPlatformInfo(FakePlatform* platform, u32 what, size_t capacity, void* value,
                      size_t* size) {
  if (Fails("clGetPlatformInfo")) return -30;
  return Answer(what == cl::kPlatformName ? platform->name : platform->version, capacity, value,
                size);
}

i32 clGetDeviceIDs(FakePlatform* platform, u64 type, u32 capacity, void** devices, u32* count) {
  std::vector<void*> all;
  for (auto& device : platform->devices) {
    if ((device.type & type) != 0) all.push_back(&device);
  }
  return List("clGetDeviceIDs", all, capacity, devices, count);
}

i32 clGetDeviceInfo(FakeDevice* device, u32 what, size_t capacity, void* value, size_t* size) {
  if (Fails("clGetDeviceInfo")) return -30;
  switch (what) {
    case cl::kDeviceType:
      return Answer(&device->type, sizeof(device->type), capacity, value, size);
    case cl::kDeviceName:
      return Answer(device->name, capacity, value, size);
    case cl::kDeviceVendor:
      return Answer(device->vendor, capacity, value, size);
    case cl::kDriverVersion:
      return Answer(device->driver, capacity, value, size);
    default:
      return Answer(device->version, capacity, value, size);
  }
}

void* clCreateContext(const intptr_t*, u32, FakeDevice** devices, void*, void*, i32* result) {
  Control().calls.push_back("context " + devices[0]->name);
  if (Fails(devices[0]->name)) return nullptr;
  return Make("clCreateContext", result);
}

void* clCreateCommandQueue(void*, void*, u64, i32* result) {
  return Make("clCreateCommandQueue", result);
}

void* clCreateBuffer(void*, u64, size_t, void* host, i32* result) {
  Object* object = Make("clCreateBuffer", result);
  if (object != nullptr) object->host = host;
  return object;
}

void* clCreateProgramWithSource(void*, u32, const char** texts, const size_t* lengths,
                                i32* result) {
  Control().calls.emplace_back("source");
  Object* object = Make("clCreateProgramWithSource", result);
  if (object != nullptr) object->text.assign(texts[0], lengths[0]);
  return object;
}

void* clCreateProgramWithBinary(void*, u32, void*, const size_t* lengths, const u8** binaries, i32*,
                                i32* result) {
  const std::string binary(reinterpret_cast<const char*>(binaries[0]), lengths[0]);
  Control().calls.emplace_back(binary.starts_with(kMark) ? "binary" : "strange binary");
  Object* object = Make("clCreateProgramWithBinary", result);
  if (object == nullptr) return nullptr;
  object->text = binary.substr(kMark.size());
  object->binary = true;
  return object;
}

i32 clBuildProgram(Object*, u32, void*, const char*, void*, void*) {
  return Fails("clBuildProgram") ? -11 : cl::kSuccess;
}

i32 clGetProgramInfo(Object* program, u32 what, size_t capacity, void* value, size_t* size) {
  const std::string binary = kMark + program->text;
  const size_t length = Fails("clGetProgramInfo") ? SIZE_MAX : binary.size();
  if (what == cl::kProgramBinarySizes) {
    return Answer(&length, sizeof(length), capacity, value, size);
  }
  std::memcpy(*static_cast<u8**>(value), binary.data(), binary.size());
  return cl::kSuccess;
}

void* clCreateKernel(Object* program, const char* name, i32* result) {
  const bool known =
      program->text.find(std::string("__kernel void ") + name + "(") != std::string::npos &&
      !(program->binary && Control().lacksKernel == name);
  return known ? Make("clCreateKernel", result) : nullptr;
}

i32 clEnqueueUnmapMemObject(void*, void*, void*, u32, void*, void*) { return cl::kSuccess; }

i32 clSetKernelArg(void*, u32, size_t, const void*) { return Fails("clSetKernelArg") ? -50 : 0; }

i32 clEnqueueNDRangeKernel(void*, void*, u32, const size_t*, const size_t*, const size_t*, u32,
                           void*, void*) {
  return Fails("clEnqueueNDRangeKernel") ? -5 : 0;
}

void* clEnqueueMapBuffer(void*, Object* memory, u32, u64, size_t, size_t, u32, void*, void*,
                         i32* result) {
  *result = Fails("clEnqueueMapBuffer") ? -12 : 0;
  return Fails("clEnqueueMapBuffer") ? nullptr : memory->host;
}

i32 clFinish(void*) { return cl::kSuccess; }

// The exports' other names: for what lets an object go, and for what the library never calls.
i32 FakeRelease(Object* object) {
  delete object;
  return cl::kSuccess;
}
i32 FakeNothing() { return cl::kSuccess; }

}  // extern "C"
}  // namespace pictavo::test
