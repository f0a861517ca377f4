// Relations between jobs: repeats, similar jobs, parents and children; and the record's texts.
#include <cstdlib>

#include "platform/process.h"
#include "tests/jobs/job_support.h"
#include "tests/objects/dumped.h"
#include "tests/values.h"

namespace {

using namespace kvtest;
using testing::ElementsAre;

class Relations : public JobTest {
 protected:
  // A command that takes 01:02:05 on the test's clock.
  static std::function<QFeThreadStatus(void*&)> AnHourFor(QFeThreadStatus result) {
    return [result](void*&) {
      StepClock::SetTime({2024, 5, 3, 17, 13, 2, 5, 0}, 1715950925);
      return result;
    };
  }
};

TEST_F(Relations, ParentEndsWithItsChild) {
  WorkNode parent(_T("parent"), &log), child(_T("child"), &log);
  QFThreadData* waiting = Ask(parent, nullptr, kPlain, eThreadEndWaitForChild);
  clock.AwaitThreads();
  EXPECT_EQ(waiting->SuspendThread(), eThreadWaitingForChild) << "a returned command has no thread to suspend";
  EXPECT_EQ(waiting->ResumeThread(), eThreadWaitingForChild);
  EXPECT_EQ(waiting->GetThreadStatus(), eThreadWaitingForChild);
  EXPECT_TRUE(!manager.GetAreAllThreadsInThisDocDone(&document_) && !manager.AnyThreadsRunning());
  EXPECT_EQ(manager.DeleteAllDoneThreads(), 0);
  Set(_T("ThreadDel"), 0);
  log.Take();
  child.run = [](void*&) {
    StepClock::SetTime({2024, 5, 3, 17, 12, 0, 9, 0}, 1715947209);
    return eThreadDoneKeepData;
  };
  Ask(child, nullptr, eThreadTypeChild);
  clock.AwaitThreads();
  EXPECT_THAT(log.Take(), ElementsAre("child start 2", "child begin 2", "child command 0", "parent command 2",
                                      "parent done 6", "child done 6"));
  EXPECT_EQ(waiting->GetThreadStatus(), eThreadDoneKeepData);
  EXPECT_EQ(waiting->GetTimeTaken(), _T("00:00:09")) << "to the end of the child";
  EXPECT_TRUE(!waiting->GetThreadHandle() && waiting->GetThreadID() == 0);
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), -1) << "two jobs are counted down three times";
  EXPECT_EQ(manager.DeleteAllDoneThreads(), 2);
}

TEST_F(Relations, ParentTerminatedWhileItWaitsIsCountedUntilItIsRemoved) {
  WorkNode parent;
  QFThreadData* waiting = Ask(parent, nullptr, kPlain, eThreadEndWaitForChild);
  clock.AwaitThreads();
  waiting->TerminateThread();
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 1);
  EXPECT_EQ(manager.DeleteAllDoneThreads(), 1);
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 0);
}

TEST_F(Relations, ChildWithoutParentEndsAlone) {
  WorkNode first(_T("first"), &log), second(_T("second"), &log);
  Ask(first, nullptr, eThreadTypeChild);
  clock.AwaitThreads();
  EXPECT_EQ(log.Take().back(), "first destroy 1");
  Set(_T("ThreadMulti"), 0);
  first.run = [](void*&) { return eThreadDoneKeepData; };
  Ask(first);  // stays, without a handle
  Ask(second, nullptr, eThreadTypeChild);
  EXPECT_EQ(log.Take().back(), "second destroy 1");
}

TEST_F(Relations, DirectChildEndsAParentThatHasAHandle) {
  WorkNode parent(_T("parent"), &log), child(_T("child"), &log);
  Ask(parent, nullptr, kPlain, eThreadEndWaitForChild);
  clock.AwaitThreads();
  log.Take();
  Set(_T("ThreadMulti"), 0);
  parent.childDone = [] { throw 1; };
  Ask(child, nullptr, eThreadTypeChild);
  EXPECT_THAT(log.Take(), ElementsAre("child command 0", "parent command 2", "parent destroy 5", "child destroy 1"));
  EXPECT_EQ(manager.GetNumThreadsRunningOrWaiting(nullptr), 0);
}

// The child ends before its parent: the later result of the parent is ignored, and the parent does not wait for ever.
TEST_F(Relations, ChildMayBeQuickerThanItsParent) {
  Set(_T("ThreadDel"), 0);
  WorkNode parent(_T("parent"), &log), child(_T("child"), &log);
  Blocker blocker(parent);
  QFThreadData* data = Ask(parent, nullptr, kPlain, eThreadEndWaitForChild);
  blocker.running.acquire();
  const HANDLE childThread = Ask(child, nullptr, eThreadTypeChild)->GetThreadHandle();
  WaitForMultipleObjects(1, &childThread, TRUE, INFINITE);
  EXPECT_EQ(data->GetThreadStatus(), eThreadDone);
  blocker.go.release();
  clock.AwaitThreads();
  EXPECT_EQ(data->GetThreadStatus(), eThreadDone);
}

TEST_F(Relations, OwnerIsTheNeighbourOrTheFirstOnTheTargetAndOfTheGroup) {
  clock.Hold();
  WorkNode a, b, c;
  QFThreadDataLink one = MakeLink(1, 2, 3), same = MakeLink(1, 2, 3), other = MakeLink(1, 2, 4);
  QFThreadData* first = Ask(a, &one);
  QFThreadData* second = Ask(b, &same);
  QFThreadData* third = Ask(c, &other, kPlain, kEnds, 8);
  QFThreadData* owner = nullptr;
  void* handle = nullptr;
  EXPECT_EQ(manager.GetThreadPrevParentOwner(nullptr, owner, handle, 0), 0);
  EXPECT_EQ(manager.GetThreadPrevParentOwner(first, owner, handle, 0), 0);
  EXPECT_EQ(manager.GetThreadPrevParentOwner(third, owner, handle, 1), 0) << "groups 3 and 4";
  EXPECT_EQ(owner, nullptr);
  EXPECT_EQ(manager.GetThreadPrevParentOwner(second, owner, handle, 1), 1);
  EXPECT_EQ(owner, first);
  EXPECT_EQ(handle, first->GetThreadHandle());
  EXPECT_EQ(manager.GetThreadPrevParentOwner(third, owner, handle, 0), 1);
  EXPECT_EQ(owner, second);
  EXPECT_EQ(manager.GetThreadDuplicateOwner(second, owner, handle), 1);
  EXPECT_EQ(owner, first);
  EXPECT_EQ(manager.GetThreadDuplicateOwner(third, owner, handle), 0) << "the first on the target decides";
  first->TerminateThread();
  EXPECT_EQ(manager.GetThreadDuplicateOwner(third, owner, handle), 0);
  EXPECT_EQ(manager.GetThreadPrevParentOwner(second, owner, handle, 0), 0) << "no handle";
}

TEST_F(Relations, JobsAreSimilarByCommandAndTargetUnlessOfOneGroup) {
  WorkNode node, other;
  QFThreadDataLink link = MakeLink(1, 2, 3);
  QFThreadData data(&node, 7, &link, kPlain, kEnds);
  const std::tuple<unsigned, unsigned, unsigned, std::intptr_t, bool> pairs[] = {
      {3, 3, 7, 2, false}, {3, 4, 7, 2, true},  {0, 3, 7, 2, true},  {3, 0, 7, 2, true},
      {0, 0, 7, 2, true},  {3, 4, 8, 2, false}, {3, 4, 7, 5, false}, {3, 4, 0, 2, false}};
  for (const auto& [mine, its, context, b, similar] : pairs) {
    link.SetGroupNum(mine);
    QFThreadDataLink asked = MakeLink(1, b, its);
    EXPECT_EQ(data.GetIsSimiliarDuplicate(&other, context, &asked), similar) << mine << its << context << b;
  }
  EXPECT_FALSE(data.GetIsSimiliarDuplicate(&node, 7, nullptr));
}

TEST_F(Relations, TextsShowLocalTimesDurationProgressAndCaller) {
  WorkNode node(_T("pocket"));
  QFThreadData* data = nullptr;
  const auto run = [&](__time64_t start, __time64_t seconds) {
    if (data) manager.DestroyThreadData(data);
    StepClock::SetTime({2024, 5, 3, 17, 0, 0, 0, 0}, start);
    node.run = [=](void*&) {
      const auto hours = WORD(seconds / 3600), minutes = WORD(seconds / 60 % 60);
      StepClock::SetTime({2024, 5, 3, 17, hours, minutes, WORD(seconds % 60), 999}, start + seconds);
      return eThreadDoneKeepData;
    };
    data = Ask(node);
    clock.AwaitThreads();
  };
  SetEnvironmentVariableW(_T("TZ"), _T("UTC"));
  tzset();
  run(13 * 3600 + 5 * 60 + 9, 3725);
  EXPECT_EQ(Values(data->GetStartTimeStr(), data->GetEndTimeStr(), data->GetTimeTaken()), "01:05:09|02:07:14|01:02:05");
  run(5 * 60 + 9, 12 * 3600);
  EXPECT_EQ(Values(data->GetStartTimeStr(), data->GetEndTimeStr()), "12:05:09|12:05:09");
  run(0x7FFFFFFFFFFFFFFF, 0);
  EXPECT_EQ(data->GetStartTimeStr(), _T("")) << "no such day";
  data->SetActionProgress(45);
  EXPECT_EQ(Values(data->GetActionProgressString(), data->GetProcessName()), "45 %|pocket");
  EXPECT_EQ(QFThreadData::DeltaTime({2024, 1, 1, 1, 0, 0, 0, 0}, {2024, 1, 2, 5, 1, 0, 0, 900}), 349200u);
  EXPECT_EQ(QFThreadData::DeltaTime({2024, 1, 1, 1, 0, 0, 1, 0}, {2024, 1, 1, 1, 0, 0, 0, 0}), 0xFFFFFFFFu);
}

TEST_F(Relations, TestRunsGiveTheNodeTheTimeTaken) {
  SetEnvironmentVariableW(_T("KV_TEST_ENV"), _T("YES"));
  for (const auto& [result, taken] : {std::pair{eThreadDone, _T("01:02:05")}, {eThreadNotHandled, _T("")}}) {
    WorkNode node;
    node.run = AnHourFor(result);
    StepClock::SetTime({2024, 5, 3, 17, 12, 0, 0, 0}, 1715947200);
    Ask(node);
    clock.AwaitThreads();
    EXPECT_EQ(node.GetTimeTakenForGTP(), taken);
  }
  SetEnvironmentVariableW(_T("KV_TEST_ENV"), nullptr);
}

TEST_F(Relations, DumpsItsFields) {
  WorkNode node;
  QFThreadDataLink link;
  node.run = AnHourFor(eThreadDoneKeepData);
  QFThreadData* data = Ask(node, &link, QFeThreadType(3), QFeThreadEndType(1));
  clock.AwaitThreads();
  data->SetActionString(_T("Bohren %s \u00FC"));
  data->SetActionProgress(45);
  data->DumpData(nullptr);
  const std::string expected = DumpBanner("QFThreadData Start") + "\n Address of m_pDocument: " + Address(&document_) +
                               "\n m_dwThreadID: 0\n m_hThread: 0\n m_eThreadStatus : eThreadDoneKeepData"
                               "\n m_StartTime: 2024-05-17 12:00:00\n m_tStartTime: 1715947200"
                               "\n m_EndTime: 2024-05-17 13:02:05\n m_tEndTime: 1715950925"
                               "\n Address of m_pCallingObject: " +
                               Address(&node) +
                               "\n Address of m_pCommandParameter: 0\n m_nCommandContextID: 7"
                               "\n m_ActionString: Bohren %s \u00FC\n m_nActionProgress: 45\n m_eThreadType: 3"
                               "\n m_eThreadEndType: 1" +
                               DumpBanner("QFThreadData End");
  EXPECT_EQ(Dumped([&](FILE* file) { data->DumpData(file); }), expected);
}

}  // namespace
