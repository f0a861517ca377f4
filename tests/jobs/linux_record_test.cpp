// A job whose thread the system refuses.
#include "share/jobs/job_record.h"

#include "tests/jobs/job_support.h"
#include "tests/no_threads.h"

namespace {

using namespace kvtest;

using RecordWithoutThread = JobTest;

TEST_F(RecordWithoutThread, StaysWithoutAHandle) {
  WorkNode node;
  {
    const NoThreads none;
    EXPECT_EQ(node.RunCommand(7, nullptr, kPlain, kEnds), 0);
  }
  clock.Expect(-1);
  QFThreadData* data = manager.Record(0);
  EXPECT_TRUE(!data->GetThreadHandle() && data->GetThreadID() == 0);
  EXPECT_EQ(data->GetThreadStatus(), eThreadRunning);
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 1);
  manager.DestroyThreadData(data);
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 0);
}

}  // namespace
