// QFThreadData, the record of one job: which node runs which command with which parameter, on what thread, in what
// state, since when. It is also what runs on the job's thread. share/jobs/job_manager.h tells how jobs live and what
// each thread may do; records are made and deleted by the manager.
//
// Every operation may be called on any thread as long as the record lives. Nothing fails but by its result.
#pragma once

#include <atomic>
#include <initializer_list>

#include "platform/time.h"
#include "share/jobs/held_record.h"
#include "share/jobs/job_link.h"
#include "share/objects/object.h"

class QFThreadBaseMgr;

class KVSHARE_API QFThreadData : public QFObject {
  DECLARE_DYNAMIC(QFThreadData)

 public:
  // The active document becomes the job's. The record enters the caller's list of those that hold it for the time
  // being; null for no caller, and then nothing ever runs. param is null or a QFThreadDataLink, and stays its owner's.
  QFThreadData(QFObject* caller, unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType);
  // Leaves the caller's list.
  ~QFThreadData() override;

  CString GetClassNameW() override;
  // Prints the job's own fields, not those that every node has. Null does nothing.
  void DumpData(FILE* file) override;
  // The caller is going: the manager deletes the record, and the result is 1. Else 0. The thread of such a job is not
  // stopped. Without a manager the record stays and has no caller any more.
  int RemoveFromUserObjectsList(QFObject* object) override;

  // ---- running

  // With multi 0 runs the command at once on this thread; 1. Otherwise starts the job's thread and gives its id; 0 if
  // the system gave none, which leaves status 2 without a handle. A job that has a thread or was terminated is not
  // started: the result is the id that it has.
  long RunCommand(int multi);
  // Runs the command on this thread, with the steps that belong before and after it. onOwnThread is 1 on the thread
  // that RunCommand has started. 0 if there is no caller any more, else 1. The record may be gone afterwards.
  int HandleCommand(int onOwnThread);
  using QFObject::HandleCommand;
  using QFObject::RunCommand;

  // Each gives the status before the call and does nothing to a job without a thread handle.
  //
  // A suspended job stops when it next enters the library (job_manager.h). As often as it was suspended it has to be
  // resumed, but its status is "running" after the first time. Both do nothing to a job whose command has returned.
  QFeThreadStatus SuspendThread();
  QFeThreadStatus ResumeThread();
  // Takes thread id and handle from the record, sets status 4 and calls the caller's HandleCommand(1) on this thread.
  // The job's thread is not ended: it goes on, also if it was suspended, until its command returns. A job that has not
  // begun will not run its command.
  QFeThreadStatus TerminateThread();
  // A child has ended: tells the caller by HandleCommand(2), on this thread, and ends the job with the child's status,
  // or with 5 if an exception leaves that call. Whatever the job's own thread still brings is not taken.
  void HandleChildDone(QFeThreadStatus childStatus);

  // ---- comparing

  // The same node and command: false for context 0. A null param agrees with any.
  bool GetIsDataMatching(QFObject* object, unsigned context, void* param) const;
  // The same command on the same target, and not of one group. False for context 0 and if either parameter is null. The
  // node doesn't count: that is required.
  bool GetIsSimiliarDuplicate(QFObject* object, unsigned context, void* param) const;

  // ---- state

  DWORD GetThreadID() const { return m_dwThreadID; }
  // Null if the job has no thread, or has been terminated. Not to be closed; it stays good until the thread has ended,
  // and then for some 256 jobs more.
  void* GetThreadHandle() const { return m_hThread; }
  // Called on the job's own thread it holds a suspended job.
  QFeThreadStatus GetThreadStatus() const;
  void SetThreadStatus(QFeThreadStatus status) { m_eThreadStatus = status; }
  int GetIsThreadRunning() const;  // running or suspended
  int GetIsThreadWaitingToRun() const { return m_eThreadStatus == eThreadWaitingToRun; }
  int GetIsThreadWaitingForChildToRun() const { return m_eThreadStatus == eThreadWaitingForChild; }
  QFeThreadType GetThreadType() const { return m_eThreadType; }
  void SetThreadType(QFeThreadType type) { m_eThreadType = type; }
  QFeThreadEndType GetThreadEndType() const { return m_eThreadEndType; }
  void SetThreadEndType(QFeThreadEndType type) { m_eThreadEndType = type; }
  // Null once it is gone, or has let the record go.
  QFObject* GetCallingObject() const { return m_pCallingObject; }
  QFObject* GetDocument() const { return m_pDocument; }
  unsigned GetCommandContextID() const { return m_nCommandContextID; }
  void SetCommandContextID(unsigned context) { m_nCommandContextID = context; }
  // Null after the job's end.
  void* GetCommandParameter() const { return m_pCommandParameter; }
  void SetCommandParameter(void* param);

  // ---- progress; the setters hold a suspended job on its own thread

  CString GetActionString() const;
  void SetActionString(const CString& text);
  LONGLONG GetActionProgress() const { return m_nActionProgress; }  // percent
  void SetActionProgress(LONGLONG percent);

  // ---- texts

  CString GetActionProgressString() const;  // "45 %"
  CString GetProcessName() const;           // the caller's Name()
  CString GetCurrentAction() const;         // the resource string whose id is the context
  // Local time as hours from 1 to 12, minutes and seconds, with no mark for the half of the day: "01:05:09". Empty
  // before the start, and before an end with status 1, 6 or 8.
  CString GetStartTimeStr() const;
  CString GetEndTimeStr() const;
  // Hours, which may pass 99, minutes and seconds from start to end, under the same condition: "01:02:05".
  CString GetTimeTaken() const;

  // Seconds from a to b, cut to 32 bits.
  static unsigned DeltaTime(SYSTEMTIME a, SYSTEMTIME b);
  void ReSetEndThreadTime(SYSTEMTIME& time, __time64_t& seconds);

 private:
  friend class QFThreadBaseMgr;
  friend struct ReleaseRecord;
  friend HeldRecord Held(QFThreadData* record);
  friend class RecordHolder;

  static DWORD ThreadEntry(void* record);
  bool BeginRun();
  DWORD StartThread();
  enum class Begin { kRuns, kTerminated, kOver };
  Begin TakeOff(int onOwnThread);
  QFeThreadStatus AskCaller(QFeCommandType type);
  bool TakeResult(QFeThreadStatus result, bool threw, bool& waits);
  bool IsOver() const;
  void StampEnd();
  void ReportToParent(QFThreadBaseMgr& manager, int onOwnThread);
  void LetThreadGo();
  void* ThreadToSuspend() const;
  void Leave();
  bool HasStatusIn(std::initializer_list<QFeThreadStatus> statuses) const;
  bool IsDone() const;
  bool HasResult() const;
  // Under the lock: they follow the parameter.
  bool IsSimilar(unsigned context, const void* param) const;
  bool HasIdentifierA(const void* identifier) const;

  // While somebody holds the record its memory stays, whoever deletes it.
  void Hold() { m_nHolds.fetch_add(1, std::memory_order_relaxed); }
  void Release();

  // Constant, or independent of all other fields.
  QFObject* const m_pDocument;
  std::atomic<DWORD> m_dwThreadID = 0;
  std::atomic<void*> m_hThread = nullptr;  // changed under the lock
  std::atomic<QFeThreadStatus> m_eThreadStatus = eThreadNotStarted;
  std::atomic<QFObject*> m_pCallingObject;  // cleared under the lock
  std::atomic<void*> m_pCommandParameter;   // followed and changed under the lock
  std::atomic<unsigned> m_nCommandContextID;
  std::atomic<LONGLONG> m_nActionProgress = 0;
  std::atomic<QFeThreadType> m_eThreadType;
  std::atomic<QFeThreadEndType> m_eThreadEndType;
  std::atomic<int> m_nHolds = 1;         // the list's, or whoever else owns the record
  std::atomic<bool> m_bCounted = false;  // among the manager's running threads

  // Under the lock of share/objects/job_lock.h.
  bool m_bCreatingThread = false;
  bool m_bGone = false;         // deleted, as far as others can see
  bool m_bEnded = false;        // somebody, its own thread or a child's, is ending the job or has done so
  SYSTEMTIME m_StartTime = {};  // UTC
  __time64_t m_tStartTime = 0;
  SYSTEMTIME m_EndTime = {};
  __time64_t m_tEndTime = 0;
  CString m_ActionString;
};
