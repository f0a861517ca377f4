// Threads: ids, recursive locks, and the stack that is left.
#include "platform/threads.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

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

TEST_F(Section, LetsOneThreadInAtATime) {
  int sum = 0;
  const auto add = [&] {
    for (int i = 0; i < 20000; ++i) {
      EnterCriticalSection(&section);
      ++sum;
      LeaveCriticalSection(&section);
    }
  };
  std::thread other(add);
  add();
  other.join();
  EXPECT_EQ(sum, 40000);
}

TEST(Threads, IdIsTheThreadsOwn) {
  const DWORD mine = GetCurrentThreadId();
  DWORD its = 0;
  std::thread([&] { its = GetCurrentThreadId(); }).join();
  EXPECT_NE(mine, 0U);
  EXPECT_EQ(mine, GetCurrentThreadId());
  EXPECT_NE(its, 0U);
  EXPECT_NE(its, mine);
}

TEST(Threads, SleepLastsAtLeastAsLongAsAsked) {
  const auto start = std::chrono::steady_clock::now();
  Sleep(20);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
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
