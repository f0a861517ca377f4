// QFThreadBaseMgr, the process's jobs: long commands of nodes that run off the thread which asks for them.
//
// A node asks by QFObject::RunCommand(context, link, type, endType). The manager drops an exact repeat, terminates
// running jobs that the new one makes obsolete (share/jobs/job_link.h), builds a record (share/jobs/job_record.h) and
// starts it: on a thread of its own if the application's setting "ThreadMulti" is nonzero and SetCanRunSeparateProcess
// allows it, else at once on the asking thread. A job's thread waits 100 ms before it begins.
//
// The class is a base. The main module derives its own, builds the one instance on its main thread and stores it:
//
//   class Jobs : public QFThreadBaseMgr {
//    protected:
//     int OnDoneRunningThreadData(QFThreadData* data) override {
//       Show(data->GetProcessName(), data->GetTimeTaken());        // the record still lives
//       return QFThreadBaseMgr::OnDoneRunningThreadData(data);      // and may be deleted by this
//     }
//   };
//   QFThreadBaseMgr::m_pInstance = new Jobs;
//
//   QFThreadDataLink link;                                          // lives until the job's thread has ended
//   link.SetIdentifierA(&part);
//   node.RunCommand(kGenerate, &link, QFeThreadType(0), QFeThreadEndType(0));   // calls node.HandleCommand(0, ...)
//
// THREADS. Any thread may call any public operation. The node's HandleCommand is called with 0 on the job's thread (or
// on the asking one), with 1 on the thread that terminates, with 2 on the thread of a child. OnStart... is called on
// the asking thread, OnBegin... and OnDone... on the job's, OnDestroy... on the thread that deletes the record. An
// exception that leaves a hook on a job's thread ends the process, one out of a command does not. The settings are read
// on these threads too: they are not to be changed while jobs run.
//
// CANCELLING is a word, not a force. A terminated job has status 4 and no handle from then on, which lasts: a result
// that comes later does not replace it, an exception out of the command does (5). A job that has not begun yet never
// runs its command. One that runs goes on until its command returns: it learns of its end by HandleCommand(1), by
// GetThreadStatus, and by IsUserJobCancelled, which asks the main module and not the record; how soon depends on how
// often it looks. Its thread may thus outlive the status, and the waits below, which go by status and handle.
//
// SUSPENDING takes effect when the job next enters the library: by QFProgressCallback, IsUserJobCancelled,
// GetThreadStatus, SetActionString or SetActionProgress, before its command begins, and after it has returned. There
// the thread stands, without a lock of the library or the runtime, until it is resumed or terminated. A command that
// calls none of these runs on to its end, and then stands.
//
// LIFE OF A RECORD. It is in the list from the request on. When its job ends it is deleted, unless its status is 6 or 8
// or the setting "ThreadDel" is 0; then it stays until DeleteAllDoneThreads, or until its node goes. Pointers to
// records are good in a hook for the record that it is given, and for all records in the list while the thread holds
// m_CriticalSection, as every deletion takes it. A record that is deleted while its thread still runs is gone for
// everybody but that thread, which ends without a further word.
//
// LIFE OF A NODE. A node may be deleted while its job has not begun or has returned from its command, if nobody asks it
// for anything just then: the record goes with it. The command itself needs its node; so do a hook that calls
// GetProcessName, another thread that terminates the job and, with the environment variable KV_TEST_ENV, the end of the
// job, which tells its node the time taken. Who can't exclude these waits for the thread first: a handle that was got
// before terminating serves for that (WaitForMultipleObjects).
//
// END OF THE PROCESS. It waits for no job. One that still runs then may find the module's own statics gone: terminate
// and wait first.
//
// PARENTS AND CHILDREN. A job of end type 2 that ends with 1 or 6 keeps its record, handle and parameter, with status
// 8. A job of type 4 ends the job that stands directly ahead of it in the list, if that one has a handle: that gets
// HandleCommand(2), the child's end time and the child's status.
//
// LOCKS. m_CriticalSection is held where an operation says so, across hooks and HandleCommand(1) too. All other steps
// use a lock of their own for a moment, never across a call out of the library. So a job that starts jobs or looks at
// the list does not wait for a thread that terminates a document's jobs; one that ends does.
#pragma once

#include <atomic>
#include <vector>

#include "framework/ob_list.h"
#include "share/jobs/critical_section.h"
#include "share/jobs/job_record.h"

class KVSHARE_API QFThreadBaseMgr {
 public:
  // The one manager, stored and deleted by the main module; null until then, and requests are refused.
  static std::atomic<QFThreadBaseMgr*> m_pInstance;
  // The id of the thread that built it, taken as the host's main thread.
  static std::atomic<DWORD> m_SWThreadId;

  // ---- slots, in this order

  // Deletes no records: when it runs no job may live.
  virtual ~QFThreadBaseMgr();
  virtual int SetDoNotUpdateProgressDlg();
  virtual int SetUpdateProgressDlg();

 protected:
  // Just before a job's thread is created. Counts it as running; 1.
  virtual int OnStartRunningThreadData(QFThreadData* data);
  // At the end of a job that ran on its own thread; for a parent, on its child's. Deletes the record as told above and
  // counts one down, whatever data is; 1. A thread that deletes done records may have been quicker: then the record is
  // not in the list any more.
  virtual int OnDoneRunningThreadData(QFThreadData* data);
  // Just before the record is deleted, with m_CriticalSection held; 1. Not called by DeleteAllDoneThreads.
  virtual int OnDestroyThreadData(QFThreadData* data);
  // First thing on the job's thread; 1.
  virtual int OnBeginThread(QFThreadData* data);

 public:
  // ---- the one manager

  static QFThreadBaseMgr* Instance() { return m_pInstance; }
  // Asks for a job: 0 without a manager or for a repeat; else the new thread's id, 1 if the command has run already,
  // or 0 if there is no thread to be had.
  static int RunCommand(QFObject* object, unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType);
  // 1 if the calling thread is not the main one.
  static int GetIsSeperateThread();
  static DWORD GetSWMainThreadId() { return m_SWThreadId; }
  // 1 if jobs of the document run or are queued; for null, jobs of any that have a thread.
  static int IsAnyThreadsRunningOrWaiting(QFObject* document);

  int GetCanRunSeparateProcess() const { return m_bCanRunSeparateProcess; }
  // 0 makes every job run on the asking thread, whatever the settings say.
  void SetCanRunSeparateProcess(int flag) { m_bCanRunSeparateProcess = flag; }
  // Call the virtual operation of that name; 1.
  int DoNotUpdateProgressDlg();
  int UpdateProgressDlg();

  // ---- looking

  int AnyThreadsRunning();     // 1 if a record has status 0, 2, 3 or 7
  int AllThreadsDone();        // 1 if none has status 2 or 3
  int GetNumThreadsNotDone();  // how many have
  // Stores the handles of those that have and gives their number, which may be above max. Takes m_CriticalSection. The
  // handles are not to be closed and stay good as QFThreadData::GetThreadHandle tells.
  int GetThreadsNotDone(void** handles, int max);
  // 1 if all of the document's records have status 1, 4, 5 or 6. Takes m_CriticalSection.
  int GetAreAllThreadsInThisDocDone(QFObject* document);
  // The record is only compared, not looked at: it may be gone.
  int ThreadInList(QFThreadData* data);
  int GetHaveThreadData(QFThreadData* data);
  // 1 if a job with a handle works on that target.
  int ThreadExist(void* identifierA);
  // Appends all records. They are good while the caller holds m_CriticalSection.
  void GetAllThreads(CObList& list);
  // The first other job with a handle on the same target, if both are of one group; else 0, with nothing stored. Takes
  // m_CriticalSection.
  int GetThreadDuplicateOwner(QFThreadData* data, QFThreadData*& owner, void*& handle);
  // The job directly ahead in the list, if it has a handle and, with checkGroup nonzero and two parameters, is of the
  // same group; else 0, with nothing stored. Takes m_CriticalSection.
  int GetThreadPrevParentOwner(QFThreadData* data, QFThreadData*& owner, void*& handle, int checkGroup);

  // ---- waiting; blocks, and must not be called by a job

  // Until the jobs that now have a thread and status 2 or 3 have ended; any number of them.
  void WaitForMultipleThreadsToBeDone();
  // Until AllThreadsDone. A job whose thread could not be created has status 2 for ever.
  void WaitForAllThreadsToBeDone();

  // ---- ending

  // Deletes the records of all jobs but those with status 2, 3, 7 or 8; gives their number. Takes m_CriticalSection.
  int DeleteAllDoneThreads();
  // The last job in the list, if it runs and is on the last request's target.
  void TerminateLastCreated();
  // All jobs on that target that are not done.
  void TerminateIfRunning(void* identifierA);
  // The same, and then waits up to 301 s until none of them has a handle; the handles go at once, so that this is about
  // jobs that were asked for meanwhile.
  void DestructThread(void* identifierA);
  // All of the document's jobs that are not done, and then waits up to 180 s until they are, which they are at once
  // unless their commands say otherwise. Holds m_CriticalSection all the while: a job that ends meanwhile waits.
  void TerminateAllThreadsInThisDoc(QFObject* document);

 protected:
  QFThreadBaseMgr();
  // Copy no state.
  QFThreadBaseMgr(const QFThreadBaseMgr&);
  QFThreadBaseMgr& operator=(const QFThreadBaseMgr&);

  int RunCommand_i(QFObject* object, unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType);
  // The first record for which GetIsDataMatching holds, and that of the calling thread; null if there is none.
  QFThreadData* FindThreadData(QFObject* object, unsigned context, void* param);
  QFThreadData* FindThreadDataForCurrentThread();
  // Deletes the record, in the list or not. Does nothing for null. Always 0. Takes m_CriticalSection.
  int DestroyThreadData(QFThreadData* data);
  int GetNumThreadsRunningOrWaiting(QFObject* document);
  void DecrementRunningThreadCnt() { --m_nRunningThreads; }
  void SetLastIdentifiers(unsigned context, void* param);
  // For a manager that queues: puts a record that it has built, and given status 7, at the end of the list, which owns
  // it from then on. Its RunCommand starts it. 0, with the record deleted, for a repeat.
  int AppendThreadData(QFThreadData* data);
  void TerminateSimiliarDuplicateThreads(QFObject* object, unsigned context, void* param);

  QFCriticalSection m_CriticalSection;

 private:
  friend class QFThreadData;

  template <class Visit>
  QFThreadData* FindFirst(Visit visit) const;
  template <class Visit>
  QFThreadData* FindLast(Visit visit) const;
  template <class Visit>
  int Count(Visit visit) const;
  template <class Wanted>
  void TerminateFromTail(Wanted wanted);
  template <class Wanted>
  void Terminate(QFThreadData& data, Wanted wanted);
  void End(QFThreadData* data, int onOwnThread);
  HeldRecord FindPrevParentOwner(QFThreadData* data, int checkGroup);
  std::vector<void*> HandlesNotDone();

  CObList m_ThreadList;  // of QFThreadData, owned, under the lock of share/objects/job_lock.h
  std::atomic<int> m_nRunningThreads = 0;
  std::atomic<int> m_bCanRunSeparateProcess = 1;
  // Under that lock as well.
  void* m_LastIdentifierA = nullptr;
  void* m_LastIdentifierB = nullptr;
  unsigned m_LastContextID = 0;
};
