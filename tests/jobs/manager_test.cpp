// Requests, looking, waiting and ending.
#include <memory>

#include "tests/jobs/job_support.h"
#include "tests/values.h"

namespace {

using namespace kvtest;
using testing::Each;
using testing::ElementsAre;

class Manager : public JobTest {
 protected:
  // Starts that many jobs, one for each node; none of them begins.
  void Start(int count, unsigned context = 7) {
    clock.Hold();
    for (int i = 0; i < count; ++i) {
      nodes_.push_back(std::make_unique<WorkNode>(_T("n"), &log));
      Ask(*nodes_.back(), nullptr, kPlain, kEnds, context);
    }
  }
  std::vector<std::unique_ptr<WorkNode>> nodes_;
};

TEST_F(Manager, RefusesWithoutAnInstance) {
  WorkNode node(_T("a"), &log);
  QFThreadBaseMgr::m_pInstance = nullptr;
  EXPECT_EQ(node.RunCommand(7, nullptr, kPlain, kEnds), 0);
  EXPECT_EQ(QFThreadBaseMgr::IsAnyThreadsRunningOrWaiting(nullptr), 0);
  EXPECT_THAT(log.Take(), ElementsAre());
}

TEST_F(Manager, DropsARepeat) {
  clock.Hold();
  WorkNode node;
  QFThreadDataLink link = MakeLink(1, 2), other = MakeLink(3, 4);
  Ask(node, &link);
  EXPECT_EQ(node.RunCommand(7, &link, kPlain, kEnds), 0);
  EXPECT_EQ(node.RunCommand(7, nullptr, kPlain, kEnds), 0) << "null agrees with any parameter";
  EXPECT_NE(node.RunCommand(7, &other, kPlain, kEnds), 0);
  EXPECT_NE(node.RunCommand(8, &link, kPlain, kEnds), 0);
  EXPECT_NE(WorkNode().RunCommand(7, &link, kPlain, kEnds), 0);
  for (int i = 0; i < 2; ++i) EXPECT_NE(node.RunCommand(0, nullptr, kPlain, kEnds), 0) << "0 is never a repeat";
  EXPECT_EQ(manager.Count(), 5);
}

TEST_F(Manager, EndsSimilarJobsUnlessTheyAreOfOneGroup) {
  clock.Hold();
  WorkNode a, b, c, d;
  QFThreadDataLink one = MakeLink(1, 2, 3), same = MakeLink(1, 2, 3), other = MakeLink(1, 2, 4);
  Ask(a, &one);
  Ask(b, &same);
  EXPECT_EQ(manager.Record(0)->GetThreadStatus(), eThreadRunning);
  Ask(c, &other);
  std::vector<int> statuses;
  for (int at : {0, 1, 2}) statuses.push_back(manager.Record(at)->GetThreadStatus());
  EXPECT_THAT(statuses, ElementsAre(4, 4, 2));
}

TEST_F(Manager, CountsByStatus) {
  Start(1);
  QFThreadData* data = manager.Record(0);
  // Of each status: any runs, all done, not done, of the document, all of the document done; and deleted.
  const std::tuple<int, const char*, int> rows[] = {{0, "1|1|0|0|0", 1}, {1, "0|1|0|0|1", 1}, {2, "1|0|1|1|0", 0},
                                                    {3, "1|0|1|0|0", 0}, {4, "0|1|0|0|1", 1}, {5, "0|1|0|0|1", 1},
                                                    {6, "0|1|0|0|1", 1}, {7, "1|1|0|1|0", 0}, {8, "0|1|0|0|0", 0}};
  for (const auto& [status, counts, deletes] : rows) {
    SCOPED_TRACE(status);
    data->SetThreadStatus(QFeThreadStatus(status));
    EXPECT_EQ(
        Values(manager.AnyThreadsRunning(), manager.AllThreadsDone(), manager.GetNumThreadsNotDone(),
               manager.GetNumThreadsRunningOrWaiting(&document_), manager.GetAreAllThreadsInThisDocDone(&document_)),
        counts);
    EXPECT_EQ(manager.GetAreAllThreadsInThisDocDone(nodes_[0].get()), 1) << "another document";
    const int deleted = manager.DeleteAllDoneThreads();
    EXPECT_EQ(deleted, deletes);
    if (deleted) {
      EXPECT_FALSE(manager.ThreadInList(data));
      Ask(*nodes_[0]);
      data = manager.Record(0);
    }
  }
}

TEST_F(Manager, GivesAsManyHandlesAsThereIsRoomFor) {
  Start(5);
  void* handles[3] = {nullptr, nullptr, nullptr};
  EXPECT_EQ(manager.GetThreadsNotDone(handles, 2), 5);
  EXPECT_THAT(handles,
              ElementsAre(manager.Record(0)->GetThreadHandle(), manager.Record(1)->GetThreadHandle(), nullptr));
  clock.Open();
  clock.AwaitThreads();
  EXPECT_EQ(WaitForMultipleObjects(2, handles, TRUE, INFINITE), WAIT_OBJECT_0) << "handles outlive their jobs";
}

TEST_F(Manager, WaitsForMoreJobsThanASystemsCallTakes) {
  Start(70);
  kvtest::Semaphore done(0);
  for (auto& node : nodes_) node->run = [&](void*&) { return done.release(), eThreadDone; };
  clock.Open();
  manager.WaitForAllThreadsToBeDone();
  for (int i = 0; i < 70; ++i) EXPECT_TRUE(done.try_acquire());
}

// Modules do not close the handles of jobs; the library closes them later.
TEST_F(Manager, HandlesAreClosedLongAfterTheirJobs) {
  Start(1);
  const HANDLE first = manager.Record(0)->GetThreadHandle();
  clock.Open();
  WorkNode node;
  for (int i = 0; i < 600; ++i) {
    Ask(node);
    clock.AwaitThreads();
  }
  EXPECT_EQ(WaitForMultipleObjects(1, &first, TRUE, INFINITE), WAIT_FAILED);
}

TEST_F(Manager, TerminatesByTarget) {
  clock.Hold();
  WorkNode a(_T("a"), &log), b(_T("b"), &log), c(_T("c"), &log);
  QFThreadDataLink one = MakeLink(1, 1), two = MakeLink(1, 2), other = MakeLink(9, 1);
  Ask(a, &one);
  Ask(b, &two);
  Ask(c, &other);
  EXPECT_EQ(manager.ThreadExist(one.GetIdentifierA()), 1);
  log.Take();
  manager.DestructThread(one.GetIdentifierA());
  EXPECT_THAT(log.Take(), ElementsAre("b command 1", "a command 1")) << "from the tail";
  EXPECT_EQ(manager.ThreadExist(one.GetIdentifierA()), 0);
  EXPECT_EQ(manager.Record(2)->GetThreadStatus(), eThreadRunning);
  manager.DestructThread(&other);  // nobody's
  EXPECT_THAT(clock.Pauses(), ElementsAre());
}

// A job on the target that is requested while the others get HandleCommand(1).
TEST_F(Manager, DestructThreadWaitsForNewJobsOnTheTarget) {
  clock.Hold();
  WorkNode a, b;
  QFThreadDataLink one = MakeLink(1, 1), again = MakeLink(1, 2);
  Ask(a, &one);
  a.terminated = [&] { Ask(b, &again); };
  manager.DestructThread(one.GetIdentifierA());
  EXPECT_THAT(clock.Pauses(), testing::AllOf(testing::SizeIs(301), Each(1000)));
}

TEST_F(Manager, TerminatesTheLastOnlyIfItIsTheLastRequests) {
  clock.Hold();
  WorkNode a, b;
  QFThreadDataLink one = MakeLink(1, 1), two = MakeLink(2, 2);
  Ask(a, &one);
  Ask(b, &two);
  two.SetIdentifierB(nullptr);
  manager.TerminateLastCreated();
  EXPECT_EQ(manager.Record(1)->GetThreadStatus(), eThreadRunning);
  two.SetIdentifierB(reinterpret_cast<void*>(2));
  manager.TerminateLastCreated();
  EXPECT_EQ(manager.Record(1)->GetThreadStatus(), eThreadTerminated);
  EXPECT_EQ(manager.Record(0)->GetThreadStatus(), eThreadRunning);
}

// The second job is terminated first; then the first job's command sets its status to running again.
TEST_F(Manager, EndOfADocumentWaitsWithTheSectionHeldWhileJobsEnd) {
  WorkNode first(_T("first")), second(_T("second"));
  Blocker one(first), two(second);
  Ask(first);
  QFThreadData* data = Ask(second);
  one.running.acquire();
  two.running.acquire();
  first.terminated = [&] { data->SetThreadStatus(eThreadRunning); };
  clock.onPause = [&] {
    one.go.release();
    two.go.release();
    while (data->GetThreadStatus() != eThreadDone) Sleep(0);
    EXPECT_EQ(manager.Count(), 2) << "a job that ends now waits for the section";
    WorkNode third;
    manager.SetCanRunSeparateProcess(0);
    EXPECT_EQ(third.RunCommand(7, nullptr, kPlain, kEnds), 1) << "a request does not wait";
  };
  manager.TerminateAllThreadsInThisDoc(&document_);
  EXPECT_THAT(clock.Pauses(), ElementsAre(1000));
  clock.AwaitThreads();
  EXPECT_EQ(manager.Count(), 0);
}

// Each job that is terminated requests another one. Each pass terminates the jobs requested since the last.
TEST_F(Manager, EndOfADocumentEndsNewJobsTooGivesUpAndLeavesOtherDocumentsAlone) {
  Start(2);
  WorkNode elsewhere;
  manager.TerminateAllThreadsInThisDoc(&elsewhere);
  EXPECT_EQ(manager.GetNumThreadsNotDone(), 2);
  for (const auto& [requests, pauses] : {std::pair{1, 1}, {1000, 180}}) {
    nodes_[0]->terminated = [&, left = requests]() mutable {
      const unsigned context = 100 + unsigned(manager.Count());
      if (left-- > 0) Ask(*nodes_[0], nullptr, kPlain, eThreadEndWaitForChild, context);
    };
    const std::size_t before = clock.Pauses().size();
    Ask(*nodes_[0], nullptr, kPlain, kEnds, 8);
    manager.TerminateAllThreadsInThisDoc(&document_);
    EXPECT_EQ(clock.Pauses().size() - before, std::size_t(pauses));
    manager.DeleteAllDoneThreads();
  }
}

}  // namespace
