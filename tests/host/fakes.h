// What a test and the fake modules share. The program exports one FakeControl, which the modules
// look up: it outlives them, so that it can tell what happened while they were loaded.
#ifndef PICTAVO_TESTS_HOST_FAKES_H_
#define PICTAVO_TESTS_HOST_FAKES_H_

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace pictavo::test {

enum class BufferFault { kNone, kNoBuffer, kNoPixels };

struct FakeControl {
  void (*note)(const char* event) = nullptr;  // thread-safe
  std::uint32_t answers[8] = {};              // of the predicates, level 1 to 8, as whole registers
  std::atomic<int> refusals = 0;  // requests that fail first, for any object but a manager
  bool refuseManager = false;
  BufferFault bufferFault = BufferFault::kNone;
  int buffersBefore = 0;           // that are made before the fault
  std::uint32_t createResult = 0;  // what making a buffer answers
};

using Events = std::vector<std::string>;

/// Takes out what the fakes have noted, or only what begins with `prefix`, and forgets it all.
Events TakeEvents(const std::string& prefix = "");

/// Makes the fakes obliging and forgets what they noted; modules come from `folder`.
void ResetFakes(const wchar_t* folder);

}  // namespace pictavo::test

extern "C" __declspec(dllexport) pictavo::test::FakeControl fakeControl;

#endif  // PICTAVO_TESTS_HOST_FAKES_H_
