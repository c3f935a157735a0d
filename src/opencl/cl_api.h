// What the library uses of the OpenCL 1.x API: its types, constants and function types, so that
// building needs no header of a runtime.
#ifndef PICTAVO_OPENCL_CL_API_H_
#define PICTAVO_OPENCL_CL_API_H_

#include <cstddef>
#include <cstdint>

#include "pictavo/pictavo.h"

namespace pictavo::cl {

using u64 = std::uint64_t;

// Handles of the runtime's objects.
using Platform = struct PlatformTag*;
using Device = struct DeviceTag*;
using Context = struct ContextTag*;
using Queue = struct QueueTag*;
using Memory = struct MemoryTag*;
using Program = struct ProgramTag*;
using Kernel = struct KernelTag*;
using Event = struct EventTag*;

inline constexpr i32 kSuccess = 0;
inline constexpr i32 kMemObjectAllocationFailure = -4;
inline constexpr i32 kOutOfResources = -5;
inline constexpr i32 kOutOfHostMemory = -6;
inline constexpr i32 kInvalidMemObject = -38;
inline constexpr i32 kInvalidWorkGroupSize = -54;
inline constexpr i32 kInvalidWorkItemSize = -55;
inline constexpr i32 kInvalidOperation = -59;
inline constexpr i32 kInvalidBufferSize = -61;

inline constexpr u32 kPlatformVersion = 0x0901;
inline constexpr u32 kPlatformName = 0x0902;
inline constexpr u32 kDeviceType = 0x1000;
inline constexpr u32 kDeviceName = 0x102B;
inline constexpr u32 kDeviceVendor = 0x102C;
inline constexpr u32 kDriverVersion = 0x102D;
inline constexpr u32 kDeviceVersion = 0x102F;
inline constexpr u32 kProgramBinarySizes = 0x1165;
inline constexpr u32 kProgramBinaries = 0x1166;

inline constexpr u64 kTypeGpu = 1 << 2;
inline constexpr u64 kTypeAll = 0xFFFFFFFF;
inline constexpr u64 kMemReadWrite = 1 << 0;
inline constexpr u64 kMemWriteOnly = 1 << 1;
inline constexpr u64 kMemReadOnly = 1 << 2;
inline constexpr u64 kMemUseHostPointer = 1 << 3;

using GetPlatformIDs = i32(u32 capacity, Platform* platforms, u32* count);
using GetPlatformInfo = i32(Platform, u32 what, size_t capacity, void* value, size_t* size);
using GetDeviceIDs = i32(Platform, u64 type, u32 capacity, Device* devices, u32* count);
using GetDeviceInfo = i32(Device, u32 what, size_t capacity, void* value, size_t* size);
using CreateContext = Context(const intptr_t* properties, u32 count, const Device*,
                              void (*notify)(const char*, const void*, size_t, void*), void* data,
                              i32* result);
using ReleaseContext = i32(Context);
using CreateCommandQueue = Queue(Context, Device, u64 properties, i32* result);
using ReleaseCommandQueue = i32(Queue);
using CreateBuffer = Memory(Context, u64 flags, size_t size, void* host, i32* result);
using ReleaseMemObject = i32(Memory);
using CreateProgramWithSource = Program(Context, u32 count, const char** texts,
                                        const size_t* lengths, i32* result);
using CreateProgramWithBinary = Program(Context, u32 count, const Device*, const size_t* lengths,
                                        const u8** binaries, i32* status, i32* result);
using ReleaseProgram = i32(Program);
using BuildProgram = i32(Program, u32 count, const Device*, const char* options,
                         void (*notify)(Program, void*), void* data);
using GetProgramInfo = i32(Program, u32 what, size_t capacity, void* value, size_t* size);
using CreateKernel = Kernel(Program, const char* name, i32* result);
using ReleaseKernel = i32(Kernel);
using SetKernelArg = i32(Kernel, u32 index, size_t size, const void* value);
using Finish = i32(Queue);
using EnqueueReadBuffer = i32(Queue, Memory, u32 blocking, size_t offset, size_t size, void* to,
                              u32 waitCount, const Event* waits, Event* done);
using EnqueueWriteBuffer = i32(Queue, Memory, u32 blocking, size_t offset, size_t size,
                               const void* from, u32 waitCount, const Event* waits, Event* done);
using EnqueueNDRangeKernel = i32(Queue, Kernel, u32 dimensions, const size_t* offset,
                                 const size_t* global, const size_t* local, u32 waitCount,
                                 const Event* waits, Event* done);
using Uncalled = void();  // looked up, but never called by the library

}  // namespace pictavo::cl

#endif  // PICTAVO_OPENCL_CL_API_H_
