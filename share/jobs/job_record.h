// QFThreadData, the record of one job: node, command, parameter, thread, status, progress and times. It also implements
// the steps of the job on its thread. share/jobs/job_manager.h describes the life of jobs and records, threads and
// cancelling. The manager creates and deletes records; modules read them and report progress through them.
//
// Any thread may call any operation while the record is valid. No operation throws.
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
  // Stores the active document as the job's, and adds the record to the caller's list of users. With a null caller no
  // command ever runs. param is null or the address of a QFThreadDataLink; its owner keeps it until the job has ended.
  QFThreadData(QFObject* caller, unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType);
  // Removes the record from the caller's list. The thread is not stopped.
  ~QFThreadData() override;

  CString GetClassNameW() override;
  // Prints the fields of the job, without those of every node. Null does nothing.
  void DumpData(FILE* file) override;
  // Called when the caller is deleted. The manager deletes the record; the job's thread is not stopped. Without a
  // manager the record stays and loses its caller. Returns 1, or 0 if object is not the caller.
  int RemoveFromUserObjectsList(QFObject* object) override;

  // ---- running

  // With multi 0 runs the command on this thread and returns 1; the record may be deleted then. Otherwise starts the
  // job's thread and returns its id. Returns 0 if the system creates no thread; the job then has status 2 and no
  // handle. A job that has a thread or was terminated is not started: returns its thread id, or 0.
  long RunCommand(int multi);
  // Runs the command on this thread with all steps before and after it. onOwnThread is 1 on the job's own thread.
  // Returns 0 if the caller is gone or the job has already ended, else 1. The record may be deleted then.
  int HandleCommand(int onOwnThread);
  using QFObject::HandleCommand;
  using QFObject::RunCommand;

  // The three return the status before the call, and do nothing if the job has no handle.
  //
  // A suspended job stops when it next enters the library (job_manager.h). Resume it once per suspension; the status
  // becomes 2 with the first resumption. Both do nothing once the command has returned.
  QFeThreadStatus SuspendThread();
  QFeThreadStatus ResumeThread();
  // Removes thread id and handle from the record, sets status 4 and calls the caller's HandleCommand(1) on this thread.
  // A job that has not begun never runs its command. A running command continues until it returns, also if the job was
  // suspended.
  QFeThreadStatus TerminateThread();
  // Called on a child's thread when the child has ended. Calls the caller's HandleCommand(2) and ends the job with the
  // child's status, or with 5 if that call throws. A later result of the job's own command is ignored.
  void HandleChildDone(QFeThreadStatus childStatus);

  // ---- comparing

  // Whether node, context and parameter are the same. A null param matches any parameter. False for context 0.
  bool GetIsDataMatching(QFObject* object, unsigned context, void* param) const;
  // Whether context and target are the same and the two are not in one group. False for context 0 or a null parameter.
  // The node is ignored; kept for existing modules, which replace a job of another node on the same target.
  bool GetIsSimiliarDuplicate(QFObject* object, unsigned context, void* param) const;

  // ---- state

  // 0 if the job has no thread, or was terminated.
  DWORD GetThreadID() const { return m_dwThreadID; }
  // Null if the job has no thread, or was terminated. Do not close it. It is valid until the thread has ended and some
  // 256 further jobs have ended.
  void* GetThreadHandle() const { return m_hThread; }
  // On the job's own thread, a suspended job stops here.
  QFeThreadStatus GetThreadStatus() const;
  void SetThreadStatus(QFeThreadStatus status) { m_eThreadStatus = status; }
  int GetIsThreadRunning() const;  // 1 for status 2 (running) and 3 (suspended)
  int GetIsThreadWaitingToRun() const { return m_eThreadStatus == eThreadWaitingToRun; }
  int GetIsThreadWaitingForChildToRun() const { return m_eThreadStatus == eThreadWaitingForChild; }
  QFeThreadType GetThreadType() const { return m_eThreadType; }
  void SetThreadType(QFeThreadType type) { m_eThreadType = type; }
  QFeThreadEndType GetThreadEndType() const { return m_eThreadEndType; }
  void SetThreadEndType(QFeThreadEndType type) { m_eThreadEndType = type; }
  // The node of the job, not owned; null after it has left the record.
  QFObject* GetCallingObject() const { return m_pCallingObject; }
  // The active document at the request, not owned. It may have been deleted meanwhile: only compare it.
  QFObject* GetDocument() const { return m_pDocument; }
  unsigned GetCommandContextID() const { return m_nCommandContextID; }
  void SetCommandContextID(unsigned context) { m_nCommandContextID = context; }
  // The request's parameter, a QFThreadDataLink or null; null after the job's end.
  void* GetCommandParameter() const { return m_pCommandParameter; }
  void SetCommandParameter(void* param);

  // ---- progress; on the job's own thread, a suspended job stops in the setters

  // The current step, for the user; empty at first.
  CString GetActionString() const;
  void SetActionString(const CString& text);
  // The text of the exception that ended the command; empty if it did not throw. Not part of the dump.
  CString GetFailureText() const;
  // The progress in percent, as set; 0 at first.
  LONGLONG GetActionProgress() const { return m_nActionProgress; }
  void SetActionProgress(LONGLONG percent);

  // ---- texts

  CString GetActionProgressString() const;  // "45 %"
  CString GetProcessName() const;           // the node's Name(); empty without a node
  CString GetCurrentAction() const;         // the resource string whose id is the context
  // Local time with hours from 1 to 12, without am or pm: "01:05:09". The start is empty for status 0. The end is empty
  // unless the status is 1, 6 or 8.
  CString GetStartTimeStr() const;
  CString GetEndTimeStr() const;
  // The time from start to end, "01:02:05"; hours may exceed 99. Empty unless the status is 1, 6 or 8.
  CString GetTimeTaken() const;

  // The seconds from a to b, truncated to 32 bits.
  static unsigned DeltaTime(SYSTEMTIME a, SYSTEMTIME b);
  // Sets the end time: UTC, and seconds since 1970.
  void ReSetEndThreadTime(SYSTEMTIME& time, __time64_t& seconds);

 private:
  friend class QFThreadBaseMgr;
  friend struct ReleaseRecord;
  friend HeldRecord Held(QFThreadData* record);
  friend class RecordHolder;

  static DWORD ThreadEntry(void* record);
  bool PrepareRun();
  DWORD StartThread();
  enum class StartResult { kRun, kTerminated, kEnded };
  StartResult BeginCommand(int onOwnThread);
  QFeThreadStatus CallNode(QFeCommandType type);
  void StoreFailure(const char* text) noexcept;
  bool StoreResult(QFeThreadStatus result, bool threw, bool& waits);
  bool HasEnded() const;
  void StoreEndTime();
  void ReportToParent(QFThreadBaseMgr& manager, int onOwnThread);
  void ReleaseThread();
  void* ThreadToSuspend() const;
  void LeaveCaller();
  bool HasStatusIn(std::initializer_list<QFeThreadStatus> statuses) const;
  bool IsDone() const;
  bool HasResult() const;
  // Call under the lock, because they read the link.
  bool IsSimilar(unsigned context, const void* param) const;
  bool HasIdentifierA(const void* identifier) const;

  // A count of references: the memory is released with the last one, also after the record is deleted.
  void Hold() { m_nHolds.fetch_add(1, std::memory_order_relaxed); }
  void Release();

  // These fields are constant or independent of all others.
  QFObject* const m_pDocument;
  std::atomic<DWORD> m_dwThreadID = 0;
  std::atomic<void*> m_hThread = nullptr;  // changed under the lock
  std::atomic<QFeThreadStatus> m_eThreadStatus = eThreadNotStarted;
  std::atomic<QFObject*> m_pCallingObject;  // cleared under the lock
  std::atomic<void*> m_pCommandParameter;   // dereferenced and changed under the lock
  std::atomic<unsigned> m_nCommandContextID;
  std::atomic<LONGLONG> m_nActionProgress = 0;
  std::atomic<QFeThreadType> m_eThreadType;
  std::atomic<QFeThreadEndType> m_eThreadEndType;
  std::atomic<int> m_nHolds = 1;         // the first one belongs to the list or another owner
  std::atomic<bool> m_bCounted = false;  // counted in the manager's running threads

  // Guarded by the lock of share/objects/job_lock.h.
  bool m_bCreatingThread = false;
  bool m_bGone = false;         // deleted; only threads with a reference still use the record
  bool m_bEnded = false;        // its own thread or a child's thread is ending the job or has ended it
  bool m_bThreadOver = false;   // no thread of its own will end its count
  SYSTEMTIME m_StartTime = {};  // UTC
  __time64_t m_tStartTime = 0;
  SYSTEMTIME m_EndTime = {};
  __time64_t m_tEndTime = 0;
  CString m_ActionString;
  CString m_FailureText;
};
