// Threads: starting, suspending and waiting for them, ids, recursive locks, and the stack that is left.
#include "platform/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "platform/process.h"
#include "tests/platform/status.h"
#include "tests/semaphore.h"

namespace {

class Section : public testing::Test {
 protected:
  Section() { InitializeCriticalSection(&section); }
  ~Section() override { DeleteCriticalSection(&section); }

  // What TryEnterCriticalSection answers on another thread.
  BOOL OtherThreadCanEnter() {
    BOOL entered = FALSE;
    std::thread([&] {
      entered = TryEnterCriticalSection(&section);
      if (entered) LeaveCriticalSection(&section);
    }).join();
    return entered;
  }

  CRITICAL_SECTION section;
};

TEST_F(Section, IsFreeOnlyAfterAsManyLeavesAsEnters) {
  EXPECT_TRUE(OtherThreadCanEnter());
  EnterCriticalSection(&section);
  EXPECT_TRUE(TryEnterCriticalSection(&section));
  EXPECT_FALSE(OtherThreadCanEnter());
  LeaveCriticalSection(&section);
  EXPECT_FALSE(OtherThreadCanEnter());
  LeaveCriticalSection(&section);
  EXPECT_TRUE(OtherThreadCanEnter());
}

TEST(Threads, SleepLastsAtLeastAsLongAsAsked) {
  const auto start = std::chrono::steady_clock::now();
  Sleep(20);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

// A thread that calls SuspensionPoint when it is let go, and then ends.
struct Worker {
  Worker() { handle = CreateThread(nullptr, 0, Run, this, 0, &id); }
  ~Worker() { CloseHandle(handle); }
  static DWORD Run(void* self) {
    auto& worker = *static_cast<Worker*>(self);
    worker.own_id = GetCurrentThreadId();
    worker.running.release();
    worker.go.acquire();
    if (worker.held_off) HoldOffSuspension();
    SuspensionPoint();
    if (worker.held_off) AllowSuspension();
    worker.passed = true;
    return 0;
  }
  void Finish() {
    go.release();
    EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
  }

  kvtest::Semaphore running{0}, go{0};
  bool held_off = false;  // at the suspension point
  std::atomic<bool> passed = false;
  std::atomic<DWORD> own_id = 0;
  HANDLE handle = nullptr;
  DWORD id = 0;
};

TEST(Threads, RunsUnderItsIdAndIsSignalledByItsEnd) {
  Worker worker;
  EXPECT_EQ(WaitForSingleObject(worker.handle, 0), WAIT_TIMEOUT);
  worker.running.acquire();
  EXPECT_EQ(worker.own_id, worker.id);
  EXPECT_NE(worker.id, GetCurrentThreadId());
  worker.Finish();
  EXPECT_TRUE(worker.passed);
  EXPECT_EQ(StatusOf(SuspendAtPoint(worker.handle) != DWORD(-1)), ERROR_ACCESS_DENIED);
}

TEST(Threads, SuspendedThreadsWaitAtASuspensionPointUntilResumed) {
  Worker worker;
  EXPECT_EQ(ResumeAtPoint(worker.handle), 0u);
  EXPECT_EQ(SuspendAtPoint(worker.handle), 0u);
  EXPECT_EQ(SuspendAtPoint(worker.handle), 1u);
  worker.go.release();
  EXPECT_EQ(WaitForSingleObject(worker.handle, 1), WAIT_TIMEOUT);
  EXPECT_EQ(ResumeAtPoint(worker.handle), 2u);
  EXPECT_FALSE(worker.passed);
  EXPECT_EQ(ResumeAtPoint(worker.handle), 1u);
  EXPECT_EQ(WaitForSingleObject(worker.handle, INFINITE), WAIT_OBJECT_0);
}

TEST(Threads, SuspensionIsHeldOff) {
  Worker worker;
  worker.held_off = true;
  EXPECT_EQ(SuspendAtPoint(worker.handle), 0u);
  worker.Finish();
  EXPECT_TRUE(worker.passed);
}

TEST(Threads, WaitsForAllOrTheFirstOfMany) {
  std::vector<std::unique_ptr<Worker>> workers;
  std::vector<HANDLE> handles;
  for (int i = 0; i < 60; ++i) handles.push_back(workers.emplace_back(std::make_unique<Worker>())->handle);
  EXPECT_EQ(WaitForMultipleObjects(60, handles.data(), FALSE, 1), WAIT_TIMEOUT);
  workers[50]->go.release();
  EXPECT_EQ(WaitForMultipleObjects(60, handles.data(), FALSE, INFINITE), WAIT_OBJECT_0 + 50);
  EXPECT_EQ(WaitForMultipleObjects(60, handles.data(), TRUE, 1), WAIT_TIMEOUT);
  for (auto& worker : workers) worker->go.release();
  EXPECT_EQ(WaitForMultipleObjects(60, handles.data(), TRUE, INFINITE), WAIT_OBJECT_0);
  handles[59] = nullptr;
  EXPECT_EQ(StatusOf(WaitForMultipleObjects(60, handles.data(), TRUE, 0) != WAIT_FAILED), ERROR_INVALID_HANDLE);
}

// Goes down by frames of about 16 KB until less than the reserve is left; gives the number of levels.
int Descend(std::size_t reserve, std::size_t above) {
  volatile char frame[16 * 1024];
  frame[0] = 1;
  frame[sizeof frame - 1] = 1;
  const std::size_t left = StackBytesLeft();
  EXPECT_LT(left, above);
  if (left < reserve) return 0;
  return 1 + Descend(reserve, left) * frame[0];
}

TEST(Threads, StackLeftShrinksTruthfullyToItsEnd) {
  const std::size_t left = StackBytesLeft();
  ASSERT_GT(left, 512U * 1024);
  // Every level that was promised is really there: a wrong limit ends this test with a fault.
  EXPECT_GT(Descend(96 * 1024, left + 1), 16);
  std::thread([] {
    const std::size_t own = StackBytesLeft();
    ASSERT_GT(own, 512U * 1024);
    EXPECT_GT(Descend(96 * 1024, own + 1), 16);
  }).join();
}

}  // namespace
