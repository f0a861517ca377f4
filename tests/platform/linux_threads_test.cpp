// Waiting for more threads than other systems wait for at once.
#include <gtest/gtest.h>

#include <vector>

#include "platform/threads.h"
#include "tests/semaphore.h"

namespace {

TEST(LinuxThreads, AnyNumberCanBeWaitedFor) {
  kvtest::Semaphore go{0};
  const auto run = [](void* semaphore) {
    static_cast<kvtest::Semaphore*>(semaphore)->acquire();
    return DWORD(0);
  };
  std::vector<HANDLE> handles;
  for (int i = 0; i < 100; ++i) handles.push_back(CreateThread(nullptr, 0, run, &go, 0, nullptr));
  EXPECT_EQ(WaitForMultipleObjects(100, handles.data(), FALSE, 1), WAIT_TIMEOUT);
  for (int i = 0; i < 100; ++i) go.release();
  EXPECT_EQ(WaitForMultipleObjects(100, handles.data(), TRUE, INFINITE), WAIT_OBJECT_0);
  for (const HANDLE handle : handles) CloseHandle(handle);
}

}  // namespace
