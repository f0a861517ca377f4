// Shared by the tests of jobs: a clock under the test's control, a node whose command is a function, and a manager that
// exposes its protected operations and logs its hooks. Tests synchronise threads by semaphores, never by time.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/threads.h"
#include "share/core/document_callbacks.h"
#include "share/jobs/job_manager.h"
#include "share/settings/settings_key.h"
#include "tests/semaphore.h"

namespace kvtest {

inline constexpr auto kPlain = QFeThreadType(0);
inline constexpr auto kEnds = QFeThreadEndType(0);

// A clock whose pauses take no time; the pause before a job can be held. The time of day changes only by SetTime.
class StepClock {
 public:
  StepClock();
  ~StepClock();

  // Jobs that start after Hold begin only after Open.
  void Hold() {
    const std::lock_guard guard(lock_);
    held_ = true;
  }
  void Open() {
    const std::lock_guard guard(lock_);
    held_ = false;
    changed_.notify_all();
  }
  // Expect announces threads that are about to start; AwaitThreads waits until all of them have ended.
  void Expect(int threads = 1) {
    const std::lock_guard guard(lock_);
    threads_ += threads;
  }
  void AwaitThreads() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [&] { return threads_ == 0; });
  }

  // All except those before a job.
  std::vector<DWORD> Pauses() {
    const std::lock_guard guard(lock_);
    return pauses_;
  }
  static void SetTime(SYSTEMTIME time, __time64_t seconds);
  std::function<void()> onPause;
  std::atomic<int> yields = 0;  // before each job begins

 private:
  static void OnEnd(StepClock* clock);  // of a thread
  void Sleep(DWORD milliseconds);

  std::mutex lock_;
  std::condition_variable changed_;
  bool held_ = false;
  int threads_ = 0;
  std::vector<DWORD> pauses_;
};

class Log {
 public:
  void Add(std::string line) {
    const std::lock_guard guard(lock_);
    lines_.push_back(std::move(line));
  }
  std::vector<std::string> Take() {
    const std::lock_guard guard(lock_);
    return std::exchange(lines_, {});
  }

 private:
  std::mutex lock_;
  std::vector<std::string> lines_;
};

// A node whose command is a function. It logs every call if it has a log.
class WorkNode : public QFObject {
 public:
  explicit WorkNode(LPCTSTR name = _T("node"), Log* log = nullptr) : log_(log) { ChangeName(name); }

  QFeThreadStatus HandleCommand(QFeCommandType type, unsigned context, void*& param) override {
    if (log_) log_->Add(ToUtf8(Name()) + " command " + std::to_string(type));
    if (type == eCommandRun) return run ? run(param) : eThreadDone;
    if (type == eCommandTerminated && terminated) terminated();
    if (type == eCommandChildDone && childDone) childDone();
    static_cast<void>(context);
    return eThreadDone;
  }

  std::function<QFeThreadStatus(void*&)> run;
  std::function<void()> terminated, childDone;

 private:
  Log* log_;
};

class TestManager : public QFThreadBaseMgr {
 public:
  using QFThreadBaseMgr::DestroyThreadData;
  using QFThreadBaseMgr::FindThreadDataForCurrentThread;
  using QFThreadBaseMgr::GetNumThreadsRunningOrWaiting;
  using QFThreadBaseMgr::m_CriticalSection;

  Log* log = nullptr;
  StepClock* clock = nullptr;
  std::function<void(QFThreadData*)> onStart;

  QFThreadData* Record(int place) {
    CObList all;
    GetAllThreads(all);
    POSITION at = all.FindIndex(place);
    return at ? static_cast<QFThreadData*>(all.GetAt(at)) : nullptr;
  }
  int Count() {
    CObList all;
    GetAllThreads(all);
    return int(all.GetCount());
  }

 protected:
  int OnStartRunningThreadData(QFThreadData* data) override {
    clock->Expect();
    if (onStart) onStart(data);
    return Note("start", data, QFThreadBaseMgr::OnStartRunningThreadData(data));
  }
  int OnBeginThread(QFThreadData* data) override { return Note("begin", data, QFThreadBaseMgr::OnBeginThread(data)); }
  int OnDoneRunningThreadData(QFThreadData* data) override {
    Note("done", data, 1);
    return QFThreadBaseMgr::OnDoneRunningThreadData(data);
  }
  int OnDestroyThreadData(QFThreadData* data) override {
    return Note("destroy", data, QFThreadBaseMgr::OnDestroyThreadData(data));
  }

 private:
  int Note(const char* hook, QFThreadData* data, int result) {
    if (log) log->Add(ToUtf8(data->GetProcessName()) + " " + hook + " " + std::to_string(data->GetThreadStatus()));
    return result;
  }
};

// The active document of this thread, if it is not the fixture's.
inline thread_local QFObject* t_document = nullptr;

// A manager, settings ("ThreadMulti" 1) and an active document. Afterwards no thread is left.
class JobTest : public testing::Test {
 protected:
  JobTest();
  ~JobTest() override;

  void Set(LPCTSTR name, int value) { settings_.SetValue(name, value); }
  // Requests a command of the node, 7 by default, and returns the last record, which is that of the new job.
  QFThreadData* Ask(WorkNode& node, void* param = nullptr, QFeThreadType type = kPlain,
                    QFeThreadEndType endType = kEnds, unsigned context = 7);

  StepClock clock;
  Log log;
  WorkNode document_;
  TestManager manager;

 private:
  QFSettingsKey settings_;
};

// A command that reports its start and then waits for a release.
struct Blocker {
  explicit Blocker(WorkNode& node, QFeThreadStatus result = eThreadDone) {
    node.run = [this, result](void*&) {
      running.release();
      go.acquire();
      return result;
    };
  }
  kvtest::Semaphore running{0}, go{0};
};

QFThreadDataLink MakeLink(std::intptr_t a, std::intptr_t b, unsigned group = 0);

}  // namespace kvtest
