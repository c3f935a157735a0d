#ifndef PICTAVO_TESTS_START_LINE_H_
#define PICTAVO_TESTS_START_LINE_H_

#include <atomic>
#include <thread>

namespace pictavo::test {

/// Where threads wait for each other before they start together. Not a std::latch: MinGW's may
/// leave a thread asleep that has been woken.
class StartLine {
 public:
  explicit StartLine(int threads) : missing_(threads) {}

  void ArriveAndWait() {
    for (--missing_; missing_ > 0;) std::this_thread::yield();
  }

 private:
  std::atomic<int> missing_;
};

}  // namespace pictavo::test

#endif  // PICTAVO_TESTS_START_LINE_H_
