// QFThreadBaseMgr manages the background jobs of the process. A job is a long command of a node; it usually runs on its
// own thread.
//
// A node requests a job by QFObject::RunCommand(context, param, type, endType). The manager refuses an exact repeat,
// terminates running jobs that the new one replaces (share/jobs/job_link.h), creates a record
// (share/jobs/job_record.h), appends it to its list and starts it. The job gets its own thread if the application
// setting "ThreadMulti" is nonzero and SetCanRunSeparateProcess allows it. Otherwise it runs on the requesting thread,
// before the request returns. A job's thread waits 100 ms before it begins. The numbers of statuses and types are those
// of share/objects/job_enums.h.
//
// The class is a base. The main module derives from it, creates the one instance on its main thread and stores it:
//
//   class Jobs : public QFThreadBaseMgr {
//    public:
//     // For a command, on its job's thread.
//     void Report(LONGLONG percent, const CString& step) {
//       QFThreadData* record = FindThreadDataForCurrentThread();
//       if (!record) return;                                      // terminated, deleted, or not on its own thread
//       record->SetActionProgress(percent);
//       record->SetActionString(step);
//     }
//
//    protected:
//     int OnDoneRunningThreadData(QFThreadData* data) override {
//       Show(data->GetProcessName(), data->GetTimeTaken());       // the record is still valid
//       return QFThreadBaseMgr::OnDoneRunningThreadData(data);    // this may delete it
//     }
//   };
//   QFThreadBaseMgr::m_pInstance = new Jobs;
//
//   QFThreadDataLink link;                                        // must live until the job's thread has ended
//   link.SetIdentifierA(&part);
//   node.RunCommand(kGenerate, &link, QFeThreadType(0), QFeThreadEndType(0));   // calls node.HandleCommand(0, ...)
//
// THREADS. Any thread may call any public operation. HandleCommand of the node is called with 0 (run) on the job's
// thread, or on the requesting one; with 1 (terminated) on the terminating thread; with 2 (child done) on the child's
// thread. OnStart... is called on the requesting thread, OnBegin... and OnDone... on the job's, OnDestroy... on the
// thread that deletes the record. An exception that leaves a hook on a job's thread ends the process. An exception that
// leaves a command only fails the job. Jobs read the application settings, so do not change those while jobs run.
//
// PROGRESS. A command finds its record by FindThreadDataForCurrentThread, as above, and stores percent and step there.
// The record stays valid on the job's own thread until the command returns, even if another thread deletes it.
// QFProgressCallback reports to the main module instead, and not to the record.
//
// CANCELLING. Terminating a job sets status 4 and removes thread id and handle from the record; it does not stop the
// thread. A job that has not begun never runs its command. A running command continues until it returns. It learns of
// the termination by HandleCommand(1), by FindThreadDataForCurrentThread, which returns null from then on, and by
// GetThreadStatus of its record if it has kept the pointer. IsUserJobCancelled asks the main module and does not look
// at the record. A later result does not replace status 4, but an exception in the command sets 5; kept for existing
// modules. The thread may run longer than the status says, and longer than the waits below, which test status and
// handle.
//
// SUSPENDING. A suspended job stops when it next enters the library: in QFProgressCallback, IsUserJobCancelled,
// GetThreadStatus, SetActionString or SetActionProgress, before its command begins, or after it has returned. It stops
// without any lock of the library, until it is resumed or terminated. A command that calls none of these runs to its
// end. A thread that holds a QFCriticalSection does not stop.
//
// LIFE OF A RECORD. The record is in the list from the request on. It is deleted when its job ends, unless its status
// is 6 or 8 or the setting "ThreadDel" is 0. Then it stays until DeleteAllDoneThreads or until its node is deleted. A
// pointer to a record is valid in a hook that receives it, on the job's own thread, and for all records of the list
// while the thread holds m_CriticalSection, because every deletion takes that. If a record is deleted while its thread
// runs, no operation finds it any more, and the thread ends without calling further hooks.
//
// LIFE OF A NODE. A node may be deleted before its job begins and after its command has returned; the record is deleted
// with it. The node must be valid during its command, during a hook that calls GetProcessName, while another thread
// terminates the job and, if the environment variable KV_TEST_ENV is "YES", until the job has ended. To be sure, wait
// for the thread first: get the handle before terminating the job and pass it to WaitForMultipleObjects.
//
// END OF THE PROCESS. The process does not wait for jobs, and a running job may use static objects that are already
// destroyed. Terminate all jobs and wait for their threads first.
//
// PARENTS AND CHILDREN. A job with end type 2 (wait for child) whose command ends with 1 or 6 becomes a waiting parent:
// status 8, and it keeps record, handle and parameter. A job of type 4 (child) that ends looks at the record directly
// before its own in the list. If that one has a handle, it ends with the child's status and end time, and its node gets
// HandleCommand(2). This is the nearest record, not necessarily the job that requested the child: a request of another
// thread may come between the two. Request the child directly after its parent, and let no other thread request jobs
// between. A child that is faster than its parent ends the running parent too.
//   Each report of a child that runs on its own thread decrements the count of running jobs once too often, so
// IsAnyThreadsRunningOrWaiting(null) may return 0 while a job runs; kept for existing modules. Pass a document instead.
//
// LOCKS. m_CriticalSection is recursive. Operations that say so hold it, also while they call hooks and
// HandleCommand(1). All other steps use a short internal lock and never call out of the library under it. So requesting
// jobs and looking at the list never wait for a thread that terminates the jobs of a document; the end of a job does.
#pragma once

#include <atomic>
#include <vector>

#include "framework/ob_list.h"
#include "share/jobs/critical_section.h"
#include "share/jobs/job_record.h"

class KVSHARE_API QFThreadBaseMgr {
 public:
  // The one manager. The main module stores it, owns it, and resets this to null before it deletes it. While it is
  // null, requests are refused.
  static std::atomic<QFThreadBaseMgr*> m_pInstance;
  // The id of the thread that created the manager. It is taken as the main thread of the host.
  static std::atomic<DWORD> m_SWThreadId;

  // ---- virtual operations; existing modules depend on their order

  // Does not delete the records. No job may exist any more.
  virtual ~QFThreadBaseMgr();
  // For a derived manager with a progress dialog. The base does nothing and returns 1.
  virtual int SetDoNotUpdateProgressDlg();
  virtual int SetUpdateProgressDlg();

 protected:
  // Hooks. A derived manager calls the base's operation too. Each returns 1; the result is ignored.

  // Called before the job's thread is created. Counts the job as running.
  virtual int OnStartRunningThreadData(QFThreadData* data);
  // Called at the end of a job that ran on its own thread, and at the end of a parent on its child's thread. Deletes
  // the record as described above and decrements the count of running jobs, also if data is null. Another thread may
  // have deleted a done record already (DeleteAllDoneThreads); then it is valid here but no longer in the list.
  virtual int OnDoneRunningThreadData(QFThreadData* data);
  // Called before the record is deleted, with m_CriticalSection held. DeleteAllDoneThreads does not call it.
  virtual int OnDestroyThreadData(QFThreadData* data);
  // Called first on the job's thread, also if the job was terminated before.
  virtual int OnBeginThread(QFThreadData* data);

 public:
  // ---- the one manager

  // Null if no manager is stored.
  static QFThreadBaseMgr* Instance() { return m_pInstance; }
  // Requests a job. Returns the id of the new thread, or 1 if the command has already run on this thread. Returns 0
  // without a manager, for a repeat, and if the system creates no thread.
  static int RunCommand(QFObject* object, unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType);
  // 1 if the calling thread is not the main thread.
  static int GetIsSeperateThread();
  static DWORD GetSWMainThreadId() { return m_SWThreadId; }
  // 1 if jobs of the document have status 2 or 7. With null: 1 if the count of running jobs of all documents is above
  // 0; see PARENTS AND CHILDREN for its limits.
  static int IsAnyThreadsRunningOrWaiting(QFObject* document);

  int GetCanRunSeparateProcess() const { return m_bCanRunSeparateProcess; }
  // With 0 every job runs on the requesting thread, whatever "ThreadMulti" is. The default is 1.
  void SetCanRunSeparateProcess(int flag) { m_bCanRunSeparateProcess = flag; }
  // Call SetDoNotUpdateProgressDlg and SetUpdateProgressDlg, and return 1.
  int DoNotUpdateProgressDlg();
  int UpdateProgressDlg();

  // ---- looking

  int AnyThreadsRunning();     // 1 if a record has status 0, 2, 3 or 7
  int AllThreadsDone();        // 1 if no record has status 2 or 3
  int GetNumThreadsNotDone();  // the number of records with status 2 or 3
  // Stores up to max handles of jobs with status 2 or 3 and returns the number of such jobs that have a handle; it may
  // be above max. Takes m_CriticalSection. Do not close the handles; QFThreadData::GetThreadHandle says how long they
  // live.
  int GetThreadsNotDone(void** handles, int max);
  // 1 if all records of the document have status 1, 4, 5 or 6. Takes m_CriticalSection.
  int GetAreAllThreadsInThisDocDone(QFObject* document);
  // Both: 1 if the record is in the list. The pointer is only compared, so the record may be deleted.
  int ThreadInList(QFThreadData* data);
  int GetHaveThreadData(QFThreadData* data);
  // 1 if the list has a job with a handle whose link has that identifier A.
  int ThreadExist(void* identifierA);
  // Appends all records to the list. They are valid while the caller holds m_CriticalSection.
  void GetAllThreads(CObList& list);
  // Finds the first other job with a handle and the same target. Stores it and its handle and returns 1 if both jobs
  // are in one group; else returns 0 and stores nothing. Takes m_CriticalSection.
  int GetThreadDuplicateOwner(QFThreadData* data, QFThreadData*& owner, void*& handle);
  // Looks at the record directly before data in the list. Stores it and its handle and returns 1 if it has a handle; if
  // checkGroup is nonzero and both have a parameter, they must also be in one group. Else returns 0 and stores nothing.
  // Takes m_CriticalSection.
  int GetThreadPrevParentOwner(QFThreadData* data, QFThreadData*& owner, void*& handle, int checkGroup);

  // ---- waiting; these block, and a job must not call them

  // Waits for the threads of all jobs that have status 2 or 3 at the call.
  void WaitForMultipleThreadsToBeDone();
  // Waits until AllThreadsDone. Never returns while there is a job whose thread could not be created: it keeps
  // status 2.
  void WaitForAllThreadsToBeDone();

  // ---- ending

  // Deletes all records except those with status 2, 3, 7 or 8, and returns their number. Takes m_CriticalSection.
  int DeleteAllDoneThreads();
  // Terminates the last job of the list, if it has status 2 or 3 and its target and context are those of the last
  // request.
  void TerminateLastCreated();
  // Terminates all jobs with that identifier A that are not done (1, 4, 5, 6), the last one first.
  void TerminateIfRunning(void* identifierA);
  // Calls TerminateIfRunning. Then waits up to 301 s while ThreadExist is 1. Terminated jobs have no handle, so it
  // waits only for jobs requested meanwhile.
  void DestructThread(void* identifierA);
  // Terminates all jobs of the document that are not done, the last one first. Then waits up to 180 s until
  // GetAreAllThreadsInThisDocDone, and terminates again after each second: jobs that are requested meanwhile end too.
  // The wait ends immediately unless a command changes a status or a job is requested. Holds m_CriticalSection
  // throughout, so a job that ends meanwhile waits.
  void TerminateAllThreadsInThisDoc(QFObject* document);

 protected:
  QFThreadBaseMgr();
  // Copy nothing.
  QFThreadBaseMgr(const QFThreadBaseMgr&);
  QFThreadBaseMgr& operator=(const QFThreadBaseMgr&);

  // What the static RunCommand does with the stored manager.
  int RunCommand_i(QFObject* object, unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType);
  // The first record for which GetIsDataMatching is true; null if there is none.
  QFThreadData* FindThreadData(QFObject* object, unsigned context, void* param);
  // The record of the job that runs on the calling thread; null on other threads, and after the job was terminated or
  // its record deleted. Valid on this thread until the command returns.
  QFThreadData* FindThreadDataForCurrentThread();
  // Deletes the record, whether it is in the list or not. Null does nothing. Returns 0. Takes m_CriticalSection.
  int DestroyThreadData(QFThreadData* data);
  // The number of jobs of the document with status 2 or 7; with null the count of running jobs of all documents.
  int GetNumThreadsRunningOrWaiting(QFObject* document);
  void DecrementRunningThreadCnt() { --m_nRunningThreads; }
  // Stores context and target of a request for TerminateLastCreated.
  void SetLastIdentifiers(unsigned context, void* param);
  // For a manager that queues: appends a new record with status 7 to the list, which then owns it; returns 1. Start it
  // later by QFThreadData::RunCommand(1). For a repeat it deletes the record and returns 0.
  int AppendThreadData(QFThreadData* data);
  // Terminates the running jobs for which GetIsSimiliarDuplicate is true.
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
  void CountRemoved(QFThreadData& data);
  HeldRecord FindPrevParentOwner(QFThreadData* data, int checkGroup);
  std::vector<void*> HandlesNotDone();

  CObList m_ThreadList;  // of QFThreadData, owned; guarded by share/objects/job_lock.h
  std::atomic<int> m_nRunningThreads = 0;
  std::atomic<int> m_bCanRunSeparateProcess = 1;
  // Guarded by that lock too.
  void* m_LastIdentifierA = nullptr;
  void* m_LastIdentifierB = nullptr;
  unsigned m_LastContextID = 0;
};
