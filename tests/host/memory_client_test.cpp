// The memory-manager client against fake managers of every version.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "fakes.h"
#include "frame/common_utility.h"
#include "module_folder.h"

namespace pictavo::test {
namespace {

bool IsLoaded() { return GetModuleHandleW(L"VKTMemMgr.dll") != nullptr; }

class MemoryClient : public testing::Test {
 protected:
  MemoryClient() { ResetFakes(L"all"); }
  ~MemoryClient() override { CCommonUtility::processAdapterIdentity = {}; }

  u32 Allocate(CCommonUtility& client, u32 width, u32 height, u32 pitch) {
    return client.AllocateBuffer(&buffer_, 0, 1, width, height, pitch, 0, 7, 0, 0);
  }

  IMemoryBuffer* buffer_ = nullptr;
};

TEST_F(MemoryClient, IsNamedByItsOwner) {
  struct Case {
    std::uintptr_t owner;
    const char* event;
  } const cases[] = {{0x1234ABCDEF9876, "memory5 create Tag(0xCDEF9876)"},
                     {0x1F, "memory5 create Tag(0x0000001F)"}};
  for (const auto& c : cases) {
    delete CCommonUtility::Create("Tag", reinterpret_cast<void*>(c.owner));
    EXPECT_EQ(TakeEvents("memory5 create"), Events{c.event});
  }
}

TEST_F(MemoryClient, TakesTheNewestVersionAndCreatesThroughTheRightView) {
  struct Case {
    const wchar_t* folder;
    i32 version;
    bool knowsIdentity;
  } const cases[] = {
      {L"memory1", 1, false}, {L"memory3", 3, true}, {L"memory4", 4, true}, {L"all", 5, true}};
  for (const auto& c : cases) {
    for (const u8 identity : {u8{0}, u8{9}}) {
      ResetFakes(c.folder);
      CCommonUtility::processAdapterIdentity.bytes[15] = identity;
      {
        CCommonUtility client(L"name");
        EXPECT_EQ(client.version(), c.version);
        EXPECT_EQ(Allocate(client, 5, 3, 20), PICTAVO_S_OK);
        EXPECT_EQ(client.FreeBuffer(&buffer_), PICTAVO_S_OK);
        EXPECT_EQ(buffer_, nullptr);
        EXPECT_EQ(client.FreeBuffer(&buffer_), PICTAVO_S_OK);
      }
      const std::string manager = "memory" + std::to_string(c.version);
      const Events expected = {manager + " create name",
                               identity != 0 && c.knowsIdentity
                                   ? "CreateBufferWithIdentity 9: 0 1 0x10DF 5 3 20 7"
                                   : "CreateBuffer 0 1 5 3 20 7",
                               "ReleaseBuffer 1", manager + " release name"};
      EXPECT_EQ(TakeEvents(), expected);
      EXPECT_FALSE(IsLoaded());
    }
  }
}

TEST_F(MemoryClient, AttachesOncePerName) {
  const std::wstring tooLong(300, L'n');
  CCommonUtility client(L"one");
  EXPECT_EQ(client.Attach(L"one"), PICTAVO_S_OK);
  EXPECT_EQ(TakeEvents(), Events{"memory5 create one"});
  EXPECT_EQ(client.Attach(tooLong.c_str()), PICTAVO_S_OK);
  EXPECT_EQ(client.Attach(tooLong.c_str()), PICTAVO_S_OK);
  const std::string kept(255, 'n');
  EXPECT_EQ(TakeEvents(), (Events{"memory5 release one", "memory5 create " + kept}));
  EXPECT_EQ(client.Detach(), PICTAVO_S_OK);
  EXPECT_EQ(TakeEvents(), Events{"memory5 release " + kept});
  EXPECT_EQ(client.version(), -1);
  EXPECT_FALSE(IsLoaded());
}

TEST_F(MemoryClient, FailsWithoutAManagerAndTriesAgain) {
  struct Case {
    const wchar_t* folder;
    bool stays;       // the module, loaded for the next attempt
    Events attempts;  // a refusal by the newest version is final: no older one is asked
  } const cases[] = {{kNoModules, false, {}},
                     {L"no_create", true, {}},
                     {L"all", false, Events(3, "memory5 refused name")}};
  for (const auto& c : cases) {
    ResetFakes(c.folder);
    fakeControl.refuseManager = true;
    CCommonUtility client(L"name");
    EXPECT_EQ(client.Attach(L"name"), PICTAVO_E_FAIL);
    EXPECT_EQ(Allocate(client, 4, 4, 16), PICTAVO_E_FAIL);
    EXPECT_EQ(client.version(), -1);
    EXPECT_EQ(IsLoaded(), c.stays);
    EXPECT_EQ(TakeEvents(), c.attempts);

    client.Detach();
    EXPECT_FALSE(IsLoaded());
    ResetFakes(L"all");
    EXPECT_EQ(Allocate(client, 4, 4, 16), PICTAVO_S_OK);
    EXPECT_EQ(client.FreeBuffer(&buffer_), PICTAVO_S_OK);
  }
}

TEST_F(MemoryClient, RoundsTheSizeAndReportsWhatTheManagerAnswers) {
  CCommonUtility client(L"name");
  using enum BufferFault;
  constexpr u32 kRefused = PICTAVO_E_INVALIDARG, kNoMemory = PICTAVO_E_OUTOFMEMORY;
  struct Case {
    u32 format, width, height, pitch, alignment;
    BufferFault fault;
    u32 answer, result;
    Events events;
  } const cases[] = {
      {1, 17, 4, 100, 16, kNone, 0, 0, {"CreateBuffer 0 1 32 16 128 0"}},
      {0, 17, 4, 100, 16, kNone, 0, 0, {"CreateBuffer 0 0 32 16 32 0"}},
      {2, 32, 17, 200, 16, kNone, 0, 0, {"CreateBuffer 0 2 32 32 200 0"}},
      {1, 17, 3, 100, 0, kNone, 5, 5, {"CreateBuffer 0 1 17 3 100 0"}},
      {1, 4, 0, 16, 0, kNone, 0, kRefused, {}},
      {1, 4, 4, 0, 0, kNone, 0, kRefused, {}},
      {0, 0xFFFFFFFF, 4, 16, 16, kNone, 0, kRefused, {}},
      {1, 0x40000001, 4, 16, 16, kNone, 0, kRefused, {}},
      {1, 16, 0xFFFFFFFF, 64, 16, kNone, 0, kRefused, {}},
      {1, 4, 1, 4, 0, kNoBuffer, 0, kNoMemory, {"CreateBuffer 0 1 4 1 4 0"}},
      {1, 4, 1, 4, 0, kNoBuffer, PICTAVO_E_FAIL, kNoMemory, {"CreateBuffer 0 1 4 1 4 0"}},
      {1, 4, 1, 4, 0, kNoPixels, 0, kNoMemory, {"CreateBuffer 0 1 4 1 4 0", "ReleaseBuffer 1"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    fakeControl.bufferFault = c.fault;
    fakeControl.createResult = c.answer;
    TakeEvents();
    EXPECT_EQ(client.AllocateBuffer(&buffer_, 0, c.format, c.width, c.height, c.pitch, 1, 0, 0,
                                    c.alignment),
              c.result);
    EXPECT_EQ(buffer_ != nullptr, c.result == c.answer);
    EXPECT_EQ(TakeEvents(), c.events);
    client.FreeBuffer(&buffer_);
  }
}

TEST_F(MemoryClient, KeepsABufferThatIsLargeEnough) {
  CCommonUtility client(L"name");
  TakeEvents();
  Allocate(client, 4, 4, 16);
  IMemoryBuffer* const first = buffer_;
  EXPECT_EQ(Allocate(client, 16, 1, 64), PICTAVO_S_OK);
  EXPECT_EQ(buffer_, first);
  Allocate(client, 4, 5, 13);
  EXPECT_EQ(buffer_->GetSize(), 65u);
  EXPECT_EQ(TakeEvents(),
            (Events{"CreateBuffer 0 1 4 4 16 7", "ReleaseBuffer 1", "CreateBuffer 0 1 4 5 13 7"}));
  fakeControl.bufferFault = BufferFault::kNoBuffer;
  EXPECT_EQ(Allocate(client, 99, 99, 99), PICTAVO_E_OUTOFMEMORY);
  EXPECT_EQ(buffer_, nullptr);
}

TEST_F(MemoryClient, ClearsOnlyThePicture) {
  constexpr std::size_t kSize = 64, kWords = 5;  // the picture is 3 x 7 bytes: five words
  struct Case {
    u32 kind, format;
    i32 clear;
  } const cases[] = {{0, 0, 1}, {0, 1, 1}, {0, 2, 1}, {0, 3, -1}, {0, 2, 0}, {1, 2, 1}};
  CCommonUtility client(L"name");
  for (const auto& c : cases) {
    const bool clears = c.kind == 0 && c.clear != 0;
    std::vector<u32> expected(kSize / 4, clears && c.format <= 1 ? 0 : 0xEEEEEEEE);
    if (clears && c.format > 1) std::fill_n(expected.begin(), kWords, 0x00108080);
    client.AllocateBuffer(&buffer_, c.kind, c.format, 1, 1, kSize, 0, 0, 0, 0);
    EXPECT_EQ(client.AllocateBuffer(&buffer_, c.kind, c.format, 7, 3, 7, c.clear, 0, 0, 0), 0u);
    EXPECT_EQ(std::memcmp(buffer_->GetPixels(), expected.data(), kSize), 0)
        << "kind " << c.kind << ", format " << c.format << ", clear " << c.clear;
    client.FreeBuffer(&buffer_);
  }
}

}  // namespace
}  // namespace pictavo::test
