// An OpenCL runtime that plays whatever platforms a test wants and runs no kernels. Its binaries
// are their sources behind a mark.
#include "fake_opencl.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

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
  std::string text;                // of a program
  bool binary = false;             // how the program came
  u8* host = nullptr;              // of a buffer
  size_t size = 0;                 // of a buffer
  bool onCard = false;             // whether a buffer's bytes are there
  bool bringUp = false;            // whether it comes and goes with a device
  std::map<u32, Object*> buffers;  // of a kernel's arguments
};

std::mutex lock;    // of everything here and in Control()
bool busy = false;  // whether the card may be at work
std::atomic<int> bringingUp = 0;
Object noObject;  // what a handle that comes with an error points at

void Expect(bool right) { Control().faults += !right; }

/// A call that brings the runtime up or down: it must be alone in the process.
struct Alone {
  Alone() {
    const bool alone = ++bringingUp == 1;
    Sleep(1);
    const std::lock_guard guard(lock);
    Expect(alone);
  }
  ~Alone() { --bringingUp; }
};

/// A function's code, which is `code` when it has to fail.
i32 Result(const std::string& function, i32 code) {
  FakeOpenCL& control = Control();
  if (function.empty() || control.fails != function) return cl::kSuccess;
  if (control.failsTimes != 0 && --control.failsTimes == 0) control.fails = "";
  return control.failsWith != 0 ? control.failsWith : code;
}
bool Fails(const std::string& function) { return Result(function, -1) != cl::kSuccess; }

/// Makes an object, or says that it cannot.
Object* Make(const char* function, i32* result, bool bringUp = false) {
  *result = Result(function, -6);
  if (*result != cl::kSuccess) return Control().failsWithHandle ? &noObject : nullptr;
  ++Control().live;
  Object* made = new Object;
  made->bringUp = bringUp;
  return made;
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
  const Alone alone;
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
  const Alone alone;
  const std::lock_guard guard(lock);
  Control().calls.push_back("context " + devices[0]->name);
  if (Fails(devices[0]->name)) return nullptr;
  return Make("clCreateContext", result, true);
}

void* clCreateCommandQueue(void*, void*, u64, i32* result) {
  const Alone alone;
  const std::lock_guard guard(lock);
  return Make("clCreateCommandQueue", result, true);
}

void* clCreateBuffer(void*, u64 flags, size_t size, u8* host, i32* result) {
  const std::lock_guard guard(lock);
  Control().buffers.push_back(flags);
  // A device shares whole pages only.
  Expect(reinterpret_cast<uintptr_t>(host) % 4096 == 0 && size % 4096 == 0);
  Object* object = Make("clCreateBuffer", result);
  if (*result != cl::kSuccess) return object;
  object->host = host;
  object->size = size;
  object->onCard = (flags & cl::kMemWriteOnly) != 0;
  return object;
}

void* clCreateProgramWithSource(void*, u32, const char** texts, const size_t* lengths,
                                i32* result) {
  const std::lock_guard guard(lock);
  Control().calls.emplace_back("source");
  Object* object = Make("clCreateProgramWithSource", result);
  if (*result == cl::kSuccess) object->text.assign(texts[0], lengths[0]);
  return object;
}

void* clCreateProgramWithBinary(void*, u32, void*, const size_t* lengths, const u8** binaries, i32*,
                                i32* result) {
  const std::lock_guard guard(lock);
  const std::string binary(reinterpret_cast<const char*>(binaries[0]), lengths[0]);
  Control().calls.emplace_back(binary.starts_with(kMark) ? "binary" : "strange binary");
  Object* object = Make("clCreateProgramWithBinary", result);
  if (*result != cl::kSuccess) return object;
  object->text = binary.substr(kMark.size());
  object->binary = true;
  return object;
}

i32 clBuildProgram(void*, u32, FakeDevice** devices, const char*, void*, void*) {
  return Fails("build " + devices[0]->name) ? -11 : Result("clBuildProgram", -11);
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
  const std::lock_guard guard(lock);
  const bool known =
      program->text.find(std::string("__kernel void ") + name + "(") != std::string::npos &&
      !(program->binary && Control().lacksKernel == name);
  return known ? Make("clCreateKernel", result) : nullptr;
}

i32 clSetKernelArg(Object* kernel, u32 index, size_t size, void* const* value) {
  if (size == sizeof(void*)) kernel->buffers[index] = static_cast<Object*>(*value);
  return Result("clSetKernelArg", -50);
}

i32 clEnqueueNDRangeKernel(void*, Object* kernel, u32, const size_t*, const size_t*,
                           const size_t* local, u32, void*, void*) {
  const std::lock_guard guard(lock);
  ++Control().launches;
  busy = true;
  for (const auto& [index, buffer] : kernel->buffers) {
    if (!std::exchange(buffer->onCard, true)) Control().uploaded += buffer->size;
  }
  const i32 result = local != nullptr ? Result("group", -54) : cl::kSuccess;
  return result != cl::kSuccess ? result : Result("clEnqueueNDRangeKernel", -5);
}

i32 clEnqueueWriteBuffer(void*, Object* buffer, u32, size_t, size_t size, const void* from, u32,
                         void*, void*) {
  const std::lock_guard guard(lock);
  Expect(from == buffer->host && size <= buffer->size);
  busy = buffer->onCard = true;
  Control().uploaded += size;
  return Result("clEnqueueWriteBuffer", -36);
}

i32 clEnqueueReadBuffer(void*, Object* buffer, u32 blocking, size_t, size_t size, void* to, u32,
                        void*, void*) {
  const std::lock_guard guard(lock);
  Expect(blocking != 0 && to == buffer->host && size <= buffer->size);
  Control().downloaded += size;
  const i32 result = Result("clEnqueueReadBuffer", -36);
  if (result == cl::kSuccess) busy = false;
  return result;
}

i32 clFinish(void*) {
  busy = false;
  return cl::kSuccess;
}

// The exports' other names: for what lets an object go, and for what the library never calls.
i32 FakeRelease(Object* object) {
  const std::unique_ptr<Alone> alone(object->bringUp ? new Alone : nullptr);
  const std::lock_guard guard(lock);
  MEMORY_BASIC_INFORMATION host = {};
  if (object->host != nullptr) VirtualQuery(object->host, &host, sizeof(host));
  Expect(!busy && host.State != MEM_FREE && object != &noObject);
  --Control().live;
  delete object;
  return cl::kSuccess;
}
i32 FakeNothing() { return cl::kSuccess; }

}  // extern "C"
}  // namespace pictavo::test
