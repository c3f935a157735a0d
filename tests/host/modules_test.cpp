// The product's own sibling modules.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include <thread>
#include <vector>

#include "cpu_detect/cpu_detect.h"
#include "cpu_detect/instruction_set.h"
#include "frame/common_utility.h"
#include "module_folder.h"
#include "start_line.h"

namespace pictavo::test {
namespace {

TEST(InstructionSet, IsTheHighestWithoutAGap) {
  using Set = InstructionSet;
  using Cpu = CpuRegisters;
  struct Case {
    u32 Cpu::*where;
    u32 bit;  // the one that this processor lacks
    Set highest;
  } const cases[] = {
      {&Cpu::leaf1Edx, 23, Set::kNone},  {&Cpu::leaf1Edx, 25, Set::kMMX},
      {&Cpu::leaf1Edx, 26, Set::kSSE},   {&Cpu::leaf1Ecx, 0, Set::kSSE2},
      {&Cpu::leaf1Ecx, 9, Set::kSSE3},   {&Cpu::leaf1Ecx, 19, Set::kSSSE3},
      {&Cpu::leaf1Ecx, 20, Set::kSSE41}, {&Cpu::leaf7Ebx, 5, Set::kSSE42},
      {&Cpu::leaf1Ecx, 27, Set::kSSE42}, {&Cpu::leaf1Ecx, 28, Set::kSSE42},  // XGETBV, AVX
      {&Cpu::xcr0, 1, Set::kSSE42},      {&Cpu::xcr0, 2, Set::kSSE42},       // XMM and YMM saved
  };
  Cpu full, sparse{1u << 0 | 1u << 9 | 3u << 19 | 3u << 27, 1u << 23 | 3u << 25, 1u << 5, 6};
  for (const auto& c : cases) full.*c.where = ~0u;
  EXPECT_EQ(HighestInstructionSet(full), Set::kAVX2);
  EXPECT_EQ(HighestInstructionSet(sparse), Set::kAVX2);
  for (const auto& c : cases) {
    Cpu cpu = full;
    cpu.*c.where ^= 1u << c.bit;
    EXPECT_EQ(HighestInstructionSet(cpu), c.highest) << "without bit " << c.bit;
  }
}

TEST(CpuDetectModule, EachYesIncludesTheOlderSets) {
  const RealModule module(L"CPUIstructionSetDetect.dll");
  auto* release = module.Entry<ReleaseCpuDetectFn>("ReleaseCPUISDetectUtility");
  ICpuDetect* detect = module.Entry<AllocateCpuDetectFn>("AllocateCPUISDetectUtility")();
  EXPECT_EQ(detect->Initialize(0), 0u);
  const u8 answers[] = {detect->HasMMX(),   detect->HasSSE(),   detect->HasSSE2(),
                        detect->HasSSE3(),  detect->HasSSSE3(), detect->HasSSE41(),
                        detect->HasSSE42(), detect->HasAVX2()};
  EXPECT_TRUE(std::is_sorted(std::begin(answers), std::end(answers), std::greater()));
  EXPECT_TRUE(answers[2]) << "every 64-bit processor has it";
  release(detect);
  release(nullptr);
}

TEST(MemoryManagerModule, ServesTheClient) {
  FindModulesIn(kRealModules);
  for (const u8 identity : {u8{0}, u8{9}}) {
    CCommonUtility::processAdapterIdentity.bytes[0] = identity;
    CCommonUtility client(L"name");
    CCommonUtility::processAdapterIdentity = {};
    IMemoryBuffer* buffer = nullptr;
    EXPECT_EQ(client.AllocateBuffer(&buffer, 0, 1, 17, 3, 68, 1, 0, 0, 16), PICTAVO_S_OK);
    EXPECT_EQ(buffer->GetSize(), 16u * 128);
    EXPECT_EQ(client.AllocateBuffer(&buffer, 1, 1, 9, 99, 999, 0, 0, 0, 0), PICTAVO_E_OUTOFMEMORY);
    EXPECT_EQ(client.FreeBuffer(&buffer), PICTAVO_S_OK);
  }
}

class MemoryManagerDirect : public testing::Test {
 protected:
  MemoryManagerDirect() { create_(L"name", &manager_); }
  ~MemoryManagerDirect() override { release_(&manager_); }

  const RealModule module_{L"VKTMemMgr.dll"};
  CreateMemoryManagerFn<IMemoryManager5>* create_ =
      module_.Entry<CreateMemoryManagerFn<IMemoryManager5>>("CreateVKTMemMgr5");
  ReleaseMemoryManagerFn<IMemoryManager5>* release_ =
      module_.Entry<ReleaseMemoryManagerFn<IMemoryManager5>>("ReleaseVKTMemMgr5");
  IMemoryManager5* manager_ = nullptr;
};

TEST_F(MemoryManagerDirect, RefusesWhatItCannotMake) {
  auto* const garbage = reinterpret_cast<IMemoryBuffer*>(0x10);
  struct Case {
    u32 kind, height, pitch, result;
  } const cases[] = {{1, 4, 4, PICTAVO_E_INVALIDARG},
                     {0, 0, 4, PICTAVO_E_INVALIDARG},
                     {0, 4, 0, PICTAVO_E_INVALIDARG},
                     {0, 0x10000, 0x80000000, PICTAVO_E_OUTOFMEMORY},  // 2^47, more than there is
                     {0, 0xFFFFFFFF, 0xFFFFFFFF, PICTAVO_E_OUTOFMEMORY}};
  for (const auto& c : cases) {
    IMemoryBuffer* buffer = garbage;
    EXPECT_EQ(manager_->CreateBuffer(&buffer, c.kind, 1, 4, c.height, c.pitch, 0), c.result);
    EXPECT_EQ(buffer, nullptr);
    const MemoryBufferDesc desc = {c.kind, 1, 0, 4, c.height, c.pitch, 0};
    buffer = garbage;
    EXPECT_EQ(manager_->CreateBufferWithIdentity(&buffer, nullptr, &desc), c.result);
    EXPECT_EQ(buffer, nullptr);
  }
  IMemoryBuffer* stranger = garbage;
  EXPECT_EQ(manager_->ReleaseBuffer(&stranger, 1), PICTAVO_E_INVALIDARG);
  EXPECT_EQ(manager_->Reserved10(), PICTAVO_E_NOTIMPL);
  EXPECT_EQ(manager_->Reserved25(), PICTAVO_E_NOTIMPL);
  EXPECT_EQ(create_(L"name", nullptr), PICTAVO_E_POINTER);
}

TEST_F(MemoryManagerDirect, FreesWhatItsClientForgot) {
  IMemoryBuffer* buffers[2] = {};
  void* pixels[2];
  for (int i = 0; i < 2; ++i) {  // large enough for the system to get their pages back at once
    ASSERT_EQ(manager_->CreateBuffer(&buffers[i], 0, 1, 4, 1 << 12, 1 << 14, 0), PICTAVO_S_OK);
    pixels[i] = buffers[i]->GetPixels();
  }
  EXPECT_EQ(manager_->ReleaseBuffer(&buffers[0], 1), PICTAVO_S_OK);
  EXPECT_EQ(buffers[0], nullptr);
  const auto isFree = [&](int i) {
    MEMORY_BASIC_INFORMATION info = {};
    VirtualQuery(pixels[i], &info, sizeof(info));
    return info.State == MEM_FREE;
  };
  EXPECT_TRUE(isFree(0));
  EXPECT_FALSE(isFree(1));
  EXPECT_EQ(release_(&manager_), PICTAVO_S_OK);
  EXPECT_EQ(manager_, nullptr);
  EXPECT_TRUE(isFree(1));
}

TEST_F(MemoryManagerDirect, ServesSeveralThreads) {
  StartLine start(4);
  std::vector<std::jthread> threads;
  for (u8 thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      start.ArriveAndWait();
      IMemoryBuffer* buffers[8] = {};
      for (u32 i = 0; i < 40000; ++i) {
        IMemoryBuffer*& buffer = buffers[i % 8];
        if (buffer != nullptr) {  // nobody else was given the same memory
          const u8* pixels = static_cast<u8*>(buffer->GetPixels());
          ASSERT_TRUE(std::all_of(pixels, pixels + buffer->GetSize(),
                                  [&](u8 byte) { return byte == thread; }));
        }
        ASSERT_EQ(manager_->ReleaseBuffer(&buffer, 1), PICTAVO_S_OK);
        ASSERT_EQ(manager_->CreateBuffer(&buffer, 0, 1, 4, 1 + i % 7, 33, 0), PICTAVO_S_OK);
        ASSERT_EQ(buffer->GetSize(), 33u * (1 + i % 7));
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(buffer->GetPixels()) % 64, 0u);
        std::memset(buffer->GetPixels(), thread, buffer->GetSize());
      }
    });
  }
}

}  // namespace
}  // namespace pictavo::test
