// The record of one job from the request to its end, and its state as other threads see it.
#include "share/jobs/job_record.h"

#include <memory>
#include <stdexcept>

#include "tests/jobs/job_support.h"

namespace {

using namespace kvtest;
using testing::ElementsAre;

using Record = JobTest;

TEST_F(Record, GoesThroughItsHooksInOrder) {
  WorkNode node(_T("a"), &log);
  node.run = [&](void*&) {
    QFThreadData* mine = manager.FindThreadDataForCurrentThread();
    EXPECT_EQ(mine, manager.Record(0));
    EXPECT_EQ(QFThreadBaseMgr::GetIsSeperateThread(), 1);
    EXPECT_EQ(mine->GetThreadStatus(), eThreadRunning);
    EXPECT_EQ(mine->GetDocument(), &document_);
    EXPECT_TRUE(node.GetIsUsingThisObject(mine));
    return eThreadDone;
  };
  manager.onStart = [](QFThreadData* data) { EXPECT_EQ(data->RunCommand(1), 0) << "it is being started already"; };
  clock.Hold();
  const int id = node.RunCommand(7, nullptr, kPlain, kEnds);
  QFThreadData* data = manager.Record(0);
  EXPECT_EQ(DWORD(id), data->GetThreadID());
  EXPECT_NE(data->GetThreadHandle(), nullptr);
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 1);
  clock.Open();
  manager.WaitForAllThreadsToBeDone();
  clock.AwaitThreads();
  EXPECT_THAT(log.Take(), ElementsAre("a start 2", "a begin 2", "a command 0", "a done 1", "a destroy 1"));
  EXPECT_EQ(manager.Count(), 0);
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 0);
}

TEST_F(Record, ResultAndEndTypeGiveStatusAndDecideOnTheRecord) {
  const struct {
    int result;  // of the command; -1 throws
    int endType, status;
    bool kept;
  } rows[] = {{0, 0, 5, false}, {1, 0, 1, false},  {5, 0, 5, false}, {6, 0, 6, true},
              {8, 0, 8, true},  {-1, 0, 5, false}, {1, 2, 8, true},  {6, 2, 8, true},
              {5, 2, 5, false}, {0, 2, 5, false},  {-1, 2, 5, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "result " << row.result << ", end type " << row.endType);
    WorkNode node;
    node.run = [&](void*&) {
      if (row.result < 0) throw std::runtime_error("no");
      return QFeThreadStatus(row.result);
    };
    QFThreadData* data = Ask(node, nullptr, kPlain, QFeThreadEndType(row.endType));
    clock.AwaitThreads();
    const bool waits = row.kept && row.endType == 2;
    EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), waits);
    ASSERT_EQ(manager.Count(), row.kept);
    if (row.kept) {
      EXPECT_EQ(data->GetThreadStatus(), row.status);
      EXPECT_EQ(data->GetThreadHandle() != nullptr, waits);
      manager.DestroyThreadData(data);
      EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 0);
    }
    EXPECT_EQ(log.Take().back(), "node destroy " + std::to_string(row.status));
  }
}

TEST_F(Record, TextOfTheCommandsExceptionStaysInTheRecordUntilItRunsAgain) {
  WorkNode node;
  QFThreadData data(&node, kPlain, nullptr, QFeThreadType(0), QFeThreadEndType(0));
  const std::pair<std::function<void()>, CString> rows[] = {
      {[] { throw std::runtime_error("no \xC3\xA9"); }, CString(_T("no \u00E9"))},
      {[] { throw 7; }, CString(_T("unknown exception"))},
      {[] {}, CString()},
  };
  for (const auto& row : rows) {
    node.run = [&row](void*&) {
      row.first();
      return eThreadDoneKeepData;
    };
    data.HandleCommand(0);
    EXPECT_EQ(data.GetFailureText(), row.second);
  }
}

TEST_F(Record, TerminatedBeforeItBeginsNeverRuns) {
  WorkNode node(_T("a"), &log);
  clock.Hold();
  QFThreadData* data = Ask(node);
  EXPECT_EQ(data->TerminateThread(), eThreadRunning);
  EXPECT_EQ(data->GetThreadStatus(), eThreadTerminated);
  EXPECT_TRUE(!data->GetThreadHandle() && data->GetThreadID() == 0);
  EXPECT_EQ(data->TerminateThread(), eThreadTerminated) << "the node gets no second call";
  EXPECT_EQ(data->GetEndTimeStr(), _T(""));
  clock.Open();
  clock.AwaitThreads();
  EXPECT_THAT(log.Take(), ElementsAre("a start 2", "a command 1", "a begin 4", "a done 4", "a destroy 4"));
}

TEST_F(Record, TerminatedWhileItRunsStaysSo) {
  for (const bool throws : {false, true}) {
    WorkNode node(_T("a"), &log);
    Blocker blocker(node);
    const auto block = node.run;
    node.run = [&](void*& param) {
      block(param);
      if (throws) throw std::runtime_error("late");
      return eThreadDoneKeepData;
    };
    QFThreadData* data = Ask(node);
    blocker.running.acquire();
    data->TerminateThread();
    blocker.go.release();
    clock.AwaitThreads();
    EXPECT_EQ(log.Take().back(), throws ? "a destroy 5" : "a destroy 4");
  }
}

TEST_F(Record, DirectRunIsOverWhenTheRequestReturns) {
  WorkNode node(_T("a"), &log);
  for (const bool forbidden : {false, true}) {  // either the setting or the host forbids a thread
    Set(_T("ThreadMulti"), forbidden);
    manager.SetCanRunSeparateProcess(!forbidden);
    node.run = [](void*&) {
      EXPECT_EQ(QFThreadBaseMgr::GetIsSeperateThread(), 0);
      return eThreadDone;
    };
    EXPECT_EQ(node.RunCommand(7, nullptr, kPlain, kEnds), 1);
    EXPECT_THAT(log.Take(), ElementsAre("a command 0", "a destroy 1"));
    EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 0);
  }
}

TEST_F(Record, RunsAgain) {
  WorkNode node(_T("a"), &log);
  node.run = [](void*&) { return eThreadDoneKeepData; };
  QFThreadData* data = Ask(node);
  clock.AwaitThreads();
  EXPECT_EQ(data->GetThreadStatus(), eThreadDoneKeepData);
  data->RunCommand(1);
  clock.AwaitThreads();
  EXPECT_EQ(data->GetThreadStatus(), eThreadDoneKeepData);
  node.run = [](void*&) { return eThreadNotHandled; };
  log.Take();
  data->RunCommand(0);
  EXPECT_THAT(log.Take(), ElementsAre("a command 0", "a destroy 5"));
}

TEST_F(Record, WithoutACallerRunsNothing) {
  EXPECT_EQ(QFThreadData(nullptr, 7, nullptr, kPlain, kEnds).RunCommand(1), 0);
  auto node = std::make_unique<WorkNode>();
  QFThreadData data(node.get(), 7, nullptr, kPlain, kEnds);
  QFThreadBaseMgr::m_pInstance = nullptr;
  node.reset();
  EXPECT_EQ(data.GetCallingObject(), nullptr) << "it is gone, and no manager deletes the record";
  EXPECT_EQ(data.RunCommand(0) + data.HandleCommand(0), 0);
  EXPECT_EQ(data.GetThreadStatus(), eThreadNotStarted);
  EXPECT_EQ(data.GetStartTimeStr(), _T(""));
}

TEST_F(Record, TakesTheParameterThatTheCommandLeaves) {
  WorkNode node;
  QFThreadDataLink first = MakeLink(1, 1), second = MakeLink(2, 2);
  node.run = [&](void*& param) {
    EXPECT_EQ(param, &first);
    param = &second;
    return eThreadDone;
  };
  QFThreadData* data = Ask(node, &first, kPlain, eThreadEndWaitForChild);
  clock.AwaitThreads();
  EXPECT_EQ(data->GetCommandParameter(), &second);
}

TEST_F(Record, StopsWhereItEntersTheLibraryUntilItIsResumed) {
  WorkNode node(_T("a"), &log);
  kvtest::Semaphore running(0), go(0);
  std::atomic<int> passed = 0;
  node.run = [&](void*&) {
    running.release();
    go.acquire();
    IsUserJobCancelled();
    return passed = 1, eThreadDone;
  };
  QFThreadData* data = Ask(node);
  running.acquire();
  EXPECT_EQ(data->SuspendThread(), eThreadRunning);
  EXPECT_EQ(data->SuspendThread(), eThreadSuspended);
  go.release();
  EXPECT_EQ(data->ResumeThread(), eThreadSuspended);
  EXPECT_EQ(data->GetThreadStatus(), eThreadRunning) << "after the first, though it is suspended once more";
  EXPECT_EQ(passed, 0);
  EXPECT_EQ(data->ResumeThread(), eThreadRunning);
  clock.AwaitThreads();
  EXPECT_EQ(passed, 1);
}

// One job waits to begin; the other has returned from its command.
TEST_F(Record, SuspendedOutsideItsCommandStopsUntilItIsTerminated) {
  WorkNode early(_T("early"), &log), late(_T("late"), &log);
  Blocker blocker(late);
  QFThreadData* running = Ask(late);
  blocker.running.acquire();
  EXPECT_EQ(running->SuspendThread(), eThreadRunning);
  clock.Hold();
  QFThreadData* waiting = Ask(early);
  waiting->SuspendThread();
  log.Take();
  clock.Open();
  blocker.go.release();
  manager.TerminateAllThreadsInThisDoc(&document_);
  clock.AwaitThreads();
  using testing::Contains;
  EXPECT_THAT(log.Take(), testing::AllOf(Contains("late destroy 4"), Contains("early destroy 4"),
                                         testing::Not(Contains("early command 0"))));
}

TEST_F(Record, GoesWithItsNodeAndItsThreadEndsQuietly) {
  clock.Hold();
  {
    WorkNode node(_T("a"), &log);
    Ask(node);
  }
  EXPECT_EQ(manager.Count(), 0);
  clock.Open();
  clock.AwaitThreads();
  EXPECT_THAT(log.Take(), ElementsAre("a start 2", "a destroy 2")) << "the caller's name is still known";
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 0);
}

TEST_F(Record, DeletedWhileItRunsIsTouchedNoMore) {
  WorkNode node(_T("a"), &log);
  Blocker blocker(node);
  QFThreadData* data = Ask(node);
  blocker.running.acquire();
  manager.DestroyThreadData(data);
  EXPECT_FALSE(node.GetIsUsingThisObject(data));
  log.Take();
  blocker.go.release();
  clock.AwaitThreads();
  EXPECT_THAT(log.Take(), ElementsAre());
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 0);
}

}  // namespace
