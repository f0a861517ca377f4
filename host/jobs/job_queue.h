// JobQueue, this host's job manager: at most so many jobs run at a time, the others wait with status 7 in the order in
// which they were asked for. It keeps what became of each, as the records go with their jobs. DeleteAllDoneThreads,
// which tells no hook, is not for it.
#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "host/document/operation_command.h"
#include "share/jobs/job_manager.h"

namespace kestrova {

// One job as the user sees it. Texts are UTF-8 and those of its record (share/jobs/job_record.h); times are empty where
// the record has none.
struct JobView {
  std::string name, action;
  QFeThreadStatus status = eThreadNotStarted;
  std::string step, start, end, taken;
  LONGLONG percent = 0;
  bool started = false;  // on a thread of its own
};

class JobQueue : public QFThreadBaseMgr {
 public:
  // limit of 0 is the application's setting "ThreadNum". The queue is the process's manager while it lives.
  explicit JobQueue(int limit);
  // Waits until all jobs have run, but for those that were terminated.
  ~JobQueue() override;

  // Asks for a job, which begins when its turn comes; on this thread if the application's settings want no others.
  // False for a repeat. The command has to live until AwaitThreads has returned. Main thread only.
  bool Ask(QFObject& node, unsigned context, OperationCommand& command, QFeThreadType type, QFeThreadEndType endType);
  // Whether jobs get threads of their own.
  bool RunsThreads() const;
  // Starts what may start now: jobs as long as the limit allows, a child once the job ahead of it has done its part;
  // none once the user has cancelled. One that gets no thread has failed. Called by itself when a job ends; to be
  // called now and then as well, as a parent that begins to wait tells nobody.
  void StartNext();
  // Whether all jobs are over.
  bool IsIdle();
  // Until the threads of all jobs have ended, those of terminated ones and those that begin meanwhile too. Nothing is
  // to be asked for meanwhile.
  void AwaitThreads();

  // All jobs so far, in the order of their requests.
  std::vector<JobView> Jobs();

  // For the command that runs on this thread: tells step and progress.
  void Tell(int percent, const char* step);

 protected:
  int OnBeginThread(QFThreadData* data) override;
  int OnDoneRunningThreadData(QFThreadData* data) override;
  int OnDestroyThreadData(QFThreadData* data) override;

 private:
  bool MayStart(QFThreadData& data, QFThreadData* ahead);
  static void Look(QFThreadData& data, JobView& view);
  void Keep(QFThreadData* data);

  const int limit_;
  std::mutex lock_;  // taken behind m_CriticalSection, never ahead of it
  std::deque<JobView> jobs_;
  std::map<QFThreadData*, JobView*> live_;  // of those in the list
  std::vector<HANDLE> threads_;
};

// "waiting", "running", "done", ... for people.
const char* TextOf(QFeThreadStatus status);

}  // namespace kestrova
