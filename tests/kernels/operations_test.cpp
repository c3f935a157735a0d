// What holds for every operation: the same bytes and result from every build, nothing touched
// outside the rows, short memory told before anything is written, any thread, a small stack.
#include "operations.h"

#include <gtest/gtest.h>

#include <thread>

#include "short_memory.h"

#ifndef _WIN32
#include <pthread.h>
#endif

namespace pictavo::test {
namespace {

/// Calls `use` with so many cases of each operation, on pictures so many columns wider than usual.
template <typename Use>
void ForCases(int count, const Use& use, i32 wider = 0) {
  for (const Operation& operation : Operations()) {
    Random random(7);
    for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
      use(DrawCase(operation, random, wider));
    }
  }
}

TEST(Operations, BuildsAgreeInsideGuardedPictures) {
  ForCases(250, [](const Case& c) { EXPECT_EQ(Disagreement(c), ""); });
}

/// Each allocation in turn is refused. Small pictures do with the memory at hand.
TEST(Operations, SayThatMemoryIsShortBeforeTheyWrite) {
  size_t refused = 0;
  const auto refuse = [&](const Case& c) {
    const i32 level = Levels()[c.dst.size() % Levels().size()];
    const Outcome whole = RunCase(c, level);
    Outcome outcome = {};
    for (int allocations = 0; outcome != whole; ++allocations) {
      const ShortMemory memory(allocations);
      outcome = RunCase(c, level);
      if (outcome == whole) break;
      ++refused;
      ASSERT_EQ(outcome, (Outcome{PICTAVO_E_OUTOFMEMORY, c.dst})) << Describe(c, level);
    }
  };
  ForCases(60, refuse);
  ForCases(6, refuse, 2500);
  EXPECT_GT(refused, 100u);
}

TEST(Operations, RunInSeveralThreadsAtOnce) {
  std::vector<Case> cases;
  std::vector<Outcome> expected;
  ForCases(12, [&](const Case& c) {
    cases.push_back(c);
    expected.push_back(RunCase(c, Levels().back()));
  });
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (size_t i = 0; i < cases.size(); ++i) {
        const size_t k = (i + 7 * static_cast<size_t>(t)) % cases.size();
        const bool plain = cases[k].call.dstPitch >= 4 * cases[k].call.width;
        const i32 level = plain && t % 2 ? 3 : Levels().back();
        EXPECT_EQ(RunCase(cases[k], level), expected[k]) << Describe(cases[k], level);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// The address sanitizer's frames are larger than the product's.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PICTAVO_LARGE_FRAMES
#endif
#endif
#if !defined(_WIN32) && !defined(PICTAVO_LARGE_FRAMES)

/// The hosts' threads may have little.
TEST(Operations, NeedNoMoreStackThan64KiB) {
  const auto run = [](void*) -> void* {
    ForCases(40, [](const Case& c) { RunCase(c, Levels().back()), RunCase(c, 0); });
    return nullptr;
  };
  pthread_attr_t attributes;
  pthread_t thread;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 64 * 1024), 0);
  ASSERT_EQ(pthread_create(&thread, &attributes, run, nullptr), 0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}

#endif

}  // namespace
}  // namespace pictavo::test
