// A counting semaphore for tests with several threads. The one in GCC 12's standard library can leave a waiting thread
// asleep for ever (its bug 104928).
#pragma once

#include <condition_variable>
#include <mutex>

namespace kvtest {

class Semaphore {
 public:
  explicit Semaphore(int count) : count_(count) {}

  void acquire() {
    std::unique_lock guard(lock_);
    more_.wait(guard, [&] { return count_ > 0; });
    --count_;
  }
  bool try_acquire() {
    const std::scoped_lock guard(lock_);
    if (count_ == 0) return false;
    --count_;
    return true;
  }
  void release(int count = 1) {
    const std::scoped_lock guard(lock_);
    count_ += count;
    more_.notify_all();
  }

 private:
  std::mutex lock_;
  std::condition_variable more_;
  int count_;
};

}  // namespace kvtest
