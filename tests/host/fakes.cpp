#include "fakes.h"

#include <mutex>
#include <utility>

#include "module_folder.h"

namespace pictavo::test {
namespace {

std::mutex lock;
Events events;

void Note(const char* event) {
  const std::lock_guard guard(lock);
  events.emplace_back(event);
}

}  // namespace

Events TakeEvents(const std::string& prefix) {
  const std::lock_guard guard(lock);
  std::erase_if(events, [&](const std::string& event) { return !event.starts_with(prefix); });
  return std::exchange(events, {});
}

void ResetFakes(const wchar_t* folder) {
  FindModulesIn(folder);
  for (auto& answer : fakeControl.answers) answer = 0;
  fakeControl.refusals = 0;
  fakeControl.refuseManager = false;
  fakeControl.bufferFault = BufferFault::kNone;
  fakeControl.buffersBefore = 0;
  fakeControl.createResult = 0;
  TakeEvents();
}

}  // namespace pictavo::test

pictavo::test::FakeControl fakeControl = {.note = pictavo::test::Note};
