// JobQueue, this host's job manager: runs a limited number of jobs at a time; the others wait with status 7 in the
// order of their requests. It keeps the result of each job, since a job's record is deleted with the job. Do not call
// DeleteAllDoneThreads, which calls no hook.
#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "host/document/operation_command.h"
#include "share/jobs/job_manager.h"

namespace kestrova {

// One job as the user sees it. Texts are those of its record (share/jobs/job_record.h) in UTF-8; a time that the record
// does not have is empty.
struct JobView {
  std::string name, action;
  QFeThreadStatus status = eThreadNotStarted;
  std::string step, start, end, taken;
  LONGLONG percent = 0;
  bool started = false;     // on its own thread
  DWORD id = 0;             // of the node
  std::string date = {};    // local date of the start, "2026-11-22"; empty if it did not start
  std::string reason = {};  // text of the command's exception
};

class JobQueue : public QFThreadBaseMgr {
 public:
  // A limit of 0 means the application's setting "ThreadNum". The queue is the process's manager while it lives.
  explicit JobQueue(int limit);
  // Waits for the threads of all jobs.
  ~JobQueue() override;

  // Requests a job; it starts when the limit allows, or immediately on this thread if the application's settings forbid
  // other threads. False if the queue has the same job already. The command must live until AwaitThreads returns. Main
  // thread only.
  bool Request(QFObject& node, unsigned context, OperationCommand& command, QFeThreadType type,
               QFeThreadEndType endType);
  // True if jobs run on their own threads.
  bool RunsThreads() const;
  // Starts waiting jobs up to the limit, a child only when the job before it has done its part; none after the user has
  // cancelled. A job that gets no thread has failed. The queue calls this when a job ends; call it from time to time,
  // too, since a parent that begins to wait calls no hook.
  void StartNext();
  // True if no job runs or waits.
  bool IsIdle();
  // Waits for the threads of all jobs, also of terminated jobs and of jobs that start meanwhile. Request no job
  // meanwhile.
  void AwaitThreads();

  // All jobs so far, in the order of their requests.
  std::vector<JobView> Jobs();

  // Sets progress and step of the job whose command runs on this thread.
  void SetProgress(int percent, const char* step);

 protected:
  int OnBeginThread(QFThreadData* data) override;
  int OnDoneRunningThreadData(QFThreadData* data) override;
  int OnDestroyThreadData(QFThreadData* data) override;

 private:
  bool MayStart(QFThreadData& data, QFThreadData* previous);
  static void UpdateView(QFThreadData& data, JobView& view);
  void NoteStart(QFThreadData* data);
  void KeepResult(QFThreadData* data);

  const int limit_;
  std::mutex lock_;  // never held while entering m_CriticalSection
  std::deque<JobView> jobs_;
  std::map<QFThreadData*, JobView*> live_;  // of jobs with a record
  std::vector<HANDLE> threads_;
};

// "waiting", "running", "done", ... for users.
const char* TextOf(QFeThreadStatus status);

}  // namespace kestrova
