// The life of a job, on the threads of those who ask for it and on its own.
//
// The pseudo handle of the running thread has no place here: the creator keeps the lock until handle and id stand in
// the record, so that a thread never finds itself without because it was too quick.
#include "share/jobs/job_record.h"

#include <algorithm>
#include <deque>
#include <string_view>
#include <utility>

#include "platform/clock.h"
#include "platform/process.h"
#include "platform/threads.h"
#include "share/core/document_callbacks.h"
#include "share/jobs/job_manager.h"
#include "share/objects/job_lock.h"

IMPLEMENT_DYNAMIC(QFThreadData, QFObject)

namespace {

constexpr DWORD kBeforeBegin_ms = 100;
// Handles of jobs stay open to the end of their threads and a while longer: whoever asked for them may be about to
// wait.
constexpr std::size_t kFormerHandles = 256;

// On a job's own thread.
constinit thread_local bool t_isJob = false;

// Lets a suspended thread run, and closes its handle in time. Under the lock.
void LetGo(HANDLE handle) {
  static auto* former = new std::deque<HANDLE>;
  for (DWORD count = ::ResumeThread(handle); count > 1 && count != DWORD(-1);) count = ::ResumeThread(handle);
  former->push_back(handle);
  for (int looks = 2; looks > 0 && former->size() > kFormerHandles; --looks) {  // two, so that their number falls again
    HANDLE oldest = former->front();
    former->pop_front();
    if (WaitForSingleObject(oldest, 0) == WAIT_OBJECT_0) {
      CloseHandle(oldest);
    } else {
      former->push_back(oldest);
    }
  }
}

bool IsTestRun() {
  TCHAR text[4] = {};
  return GetEnvironmentVariableW(_T("KV_TEST_ENV"), text, 4) == 3 && TextView(text) == _T("YES");
}

const QFThreadDataLink* Link(const void* param) { return static_cast<const QFThreadDataLink*>(param); }

}  // namespace

// How a node keeps a record alive while it lets go of it.
class RecordHolder final : public JobRecordHolder {
 public:
  bool IsRecord(const QFObject* user) const override { return user->IsKindOf(RUNTIME_CLASS(QFThreadData)); }
  void Hold(QFObject* record) const override { static_cast<QFThreadData*>(record)->Hold(); }
  void Release(QFObject* record) const override { static_cast<QFThreadData*>(record)->Release(); }
};

namespace {

constinit const RecordHolder g_holder;

}  // namespace

void ReleaseRecord::operator()(QFThreadData* record) const { record->Release(); }

HeldRecord Held(QFThreadData* record) {
  record->Hold();
  return HeldRecord(record);
}

// ---- coming and going

QFThreadData::QFThreadData(QFObject* caller, unsigned context, void* param, QFeThreadType type,
                           QFeThreadEndType endType)
    : m_pDocument(GetActiveDocument()),
      m_pCallingObject(caller),
      m_pCommandParameter(param),
      m_nCommandContextID(context),
      m_eThreadType(type),
      m_eThreadEndType(endType) {
  if (!caller) return;
  SetJobRecordHolder(&g_holder);
  CountJobRecord(1);
  caller->AddToUserObjectsList(this, /*held=*/1);
}

QFThreadData::~QFThreadData() { Leave(); }

// Leaves the caller's list and the thread. On a job's thread the list is changed directly, and not by the caller's own
// operation: it may be just going, and not be what it was any more.
void QFThreadData::Leave() {
  QFObject* caller = nullptr;
  {
    const JobLock lock;
    LetThreadGo();
    caller = m_pCallingObject;
    if (caller && t_isJob) {
      caller->ForgetJobRecord(this);
      m_pCallingObject = nullptr;
    }
  }
  if (!caller) return;
  if (!t_isJob) {
    caller->RemoveFromUserObjectsList(this);
    m_pCallingObject = nullptr;
  }
  CountJobRecord(-1);
}

// Under the lock.
void QFThreadData::LetThreadGo() {
  m_dwThreadID = 0;
  if (HANDLE handle = m_hThread.exchange(nullptr)) LetGo(handle);
}

void QFThreadData::Release() {
  if (m_nHolds.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

int QFThreadData::RemoveFromUserObjectsList(QFObject* object) {
  if (!object || object != m_pCallingObject) return 0;
  if (QFThreadBaseMgr* manager = QFThreadBaseMgr::Instance()) {
    manager->DestroyThreadData(this);
  } else {
    Leave();  // it stays its owner's, without a caller
  }
  return 1;
}

CString QFThreadData::GetClassNameW() { return _T("QFThreadData"); }

// ---- running

long QFThreadData::RunCommand(int multi) {
  if (!m_pCallingObject) return m_dwThreadID;
  if (!multi) {
    HandleCommand(/*onOwnThread=*/0);
    return 1;
  }
  if (!BeginRun()) return m_dwThreadID;
  if (QFThreadBaseMgr* manager = QFThreadBaseMgr::Instance()) manager->OnStartRunningThreadData(this);
  return StartThread();
}

// False if the job has a thread, or is just getting one, or was terminated.
bool QFThreadData::BeginRun() {
  const JobLock lock;
  if (m_dwThreadID != 0 || m_bCreatingThread) return false;
  QFeThreadStatus status = m_eThreadStatus;
  do {
    if (status == eThreadTerminated) return false;
  } while (!m_eThreadStatus.compare_exchange_weak(status, eThreadRunning));
  CurrentClock().systemTime(&m_StartTime);
  m_tStartTime = CurrentClock().time();
  m_bCreatingThread = true;
  m_bEnded = false;
  return true;
}

DWORD QFThreadData::StartThread() {
  DWORD id = 0;
  Hold();  // the thread's
  {
    const JobLock lock;
    m_bCreatingThread = false;
    if (HANDLE handle = CreateThread(nullptr, 0, ThreadEntry, this, 0, &id)) {
      m_hThread = handle;
      m_dwThreadID = id;
      // Terminated while there was no handle to tell of: as if it came now, ahead of the command.
      if (m_eThreadStatus == eThreadTerminated || m_bGone) LetThreadGo();
    }
  }
  if (id == 0) Release();
  return id;
}

DWORD QFThreadData::ThreadEntry(void* record) {
  t_isJob = true;
  CurrentClock().sleep(kBeforeBegin_ms);
  const HeldRecord data(static_cast<QFThreadData*>(record));
  SuspensionPoint();
  data->HandleCommand(/*onOwnThread=*/1);
  // Of a record that others deleted nobody has told the manager that its thread has ended.
  QFThreadBaseMgr* manager = QFThreadBaseMgr::Instance();
  const bool gone = [&] {
    const JobLock lock;
    return data->m_bGone;
  }();
  if (gone && data->m_bCounted.exchange(false) && manager) manager->DecrementRunningThreadCnt();
  return 0;
}

int QFThreadData::HandleCommand(int onOwnThread) {
  QFThreadBaseMgr* manager = QFThreadBaseMgr::Instance();
  if (onOwnThread && IsOver()) return 0;
  if (!m_pCallingObject) {
    const JobLock lock;
    LetThreadGo();
    return 0;
  }
  if (onOwnThread && manager) manager->OnBeginThread(this);
  const Begin begin = TakeOff(onOwnThread);
  if (begin == Begin::kOver) return 0;
  bool waits = false;
  if (begin == Begin::kRuns) {
    QFeThreadStatus result = eThreadNotHandled;
    bool threw = false;
    try {
      result = AskCaller(eCommandRun);
    } catch (...) {
      threw = true;
    }
    if (onOwnThread) SuspensionPoint();
    if (!TakeResult(result, threw, waits)) return 0;
  }
  if (m_eThreadType == eThreadTypeChild && manager) ReportToParent(*manager, onOwnThread);
  if (HasResult() && IsTestRun()) {
    if (QFObject* caller = m_pCallingObject) caller->SetTimeTakenForGTP(GetTimeTaken());
  }
  if (waits) return 1;
  {
    const JobLock lock;
    m_pCommandParameter = nullptr;
    LetThreadGo();
  }
  if (manager) manager->End(this, onOwnThread);
  return 1;
}

// Whether others have deleted the record, or ended the job.
bool QFThreadData::IsOver() const {
  const JobLock lock;
  return m_bGone || m_bEnded;
}

// Whether the command begins; terminating comes too late to prevent it then. On its own thread and without a handle the
// job was terminated and ends here.
QFThreadData::Begin QFThreadData::TakeOff(int onOwnThread) {
  const JobLock lock;
  if (m_bGone) return Begin::kOver;
  if (!onOwnThread) {
    if (!m_hThread) m_bEnded = false;  // it may have run before
  } else if (m_bEnded) {
    return Begin::kOver;
  } else if (!m_hThread) {
    m_bEnded = true;
    m_eThreadStatus = eThreadTerminated;
    StampEnd();
    return Begin::kTerminated;
  }
  CurrentClock().systemTime(&m_StartTime);
  return Begin::kRuns;
}

// Calls the caller's HandleCommand. A parameter that it puts in the place of the present one is the record's when it
// returns.
QFeThreadStatus QFThreadData::AskCaller(QFeCommandType type) {
  QFObject* caller = m_pCallingObject;
  if (!caller) return eThreadNotHandled;
  void* const given = m_pCommandParameter;
  void* param = given;
  const QFeThreadStatus status = caller->HandleCommand(type, m_nCommandContextID, param);
  if (param != given) {
    const JobLock lock;
    void* expected = given;
    m_pCommandParameter.compare_exchange_strong(expected, param);
  }
  return status;
}

// Makes the command's result the status, unless the job was terminated. False if the job is over already. waits tells
// whether it goes on until its child has ended; otherwise no child can report to it from here on.
bool QFThreadData::TakeResult(QFeThreadStatus result, bool threw, bool& waits) {
  const JobLock lock;
  if (m_bGone || m_bEnded) return false;
  if (threw || result == eThreadNotStarted) result = eThreadNotHandled;
  const bool open = m_eThreadEndType == eThreadEndWaitForChild && !threw;
  if (open && (result == eThreadDone || result == eThreadDoneKeepData)) result = eThreadWaitingForChild;
  QFeThreadStatus status = m_eThreadStatus;
  // An exception counts even if the job was terminated: that is required.
  while ((threw || status != eThreadTerminated) && !m_eThreadStatus.compare_exchange_weak(status, result)) {
  }
  waits = open && result == eThreadWaitingForChild && m_eThreadStatus == eThreadWaitingForChild;
  m_bEnded = !waits;
  StampEnd();  // in the same step: a child may end the job from here on, and its time holds
  return true;
}

// Under the lock.
void QFThreadData::StampEnd() {
  CurrentClock().systemTime(&m_EndTime);
  m_tEndTime = CurrentClock().time();
}

void QFThreadData::ReSetEndThreadTime(SYSTEMTIME& time, __time64_t& seconds) {
  const JobLock lock;
  m_EndTime = time;
  m_tEndTime = seconds;
}

// ---- parents and children

// Runs on a child. It counts down for itself as well as for its parent, beside what OnDoneRunningThreadData does for
// each: that is required.
void QFThreadData::ReportToParent(QFThreadBaseMgr& manager, int onOwnThread) {
  const HeldRecord parent = manager.FindPrevParentOwner(this, /*checkGroup=*/0);
  if (!parent) return;
  SYSTEMTIME end;
  __time64_t seconds = 0;
  {
    const JobLock lock;
    if (std::exchange(parent->m_bEnded, true)) return;  // it is just ending by itself
    end = m_EndTime;
    seconds = m_tEndTime;
  }
  parent->ReSetEndThreadTime(end, seconds);
  parent->HandleChildDone(m_eThreadStatus);
  manager.DecrementRunningThreadCnt();
  manager.End(parent.get(), onOwnThread);
}

void QFThreadData::HandleChildDone(QFeThreadStatus childStatus) {
  if (m_hThread) {
    try {
      AskCaller(eCommandChildDone);
    } catch (...) {
      childStatus = eThreadNotHandled;
    }
  }
  const JobLock lock;
  m_eThreadStatus = childStatus;
  m_pCommandParameter = nullptr;
  LetThreadGo();
}

// ---- suspending and terminating

QFeThreadStatus QFThreadData::SuspendThread() {
  const JobLock lock;
  const QFeThreadStatus before = m_eThreadStatus;
  HANDLE handle = ThreadToSuspend();
  if (!handle) return before;
  ::SuspendThread(handle);
  m_eThreadStatus = eThreadSuspended;
  return before;
}

QFeThreadStatus QFThreadData::ResumeThread() {
  const JobLock lock;
  const QFeThreadStatus before = m_eThreadStatus;
  HANDLE handle = ThreadToSuspend();
  if (!handle) return before;
  m_eThreadStatus = eThreadRunning;
  ::ResumeThread(handle);
  return before;
}

// Null for a job that has its result: it would lose it. Under the lock.
HANDLE QFThreadData::ThreadToSuspend() const {
  return m_bEnded || m_eThreadStatus == eThreadWaitingForChild ? nullptr : m_hThread.load();
}

QFeThreadStatus QFThreadData::TerminateThread() {
  QFeThreadStatus before = eThreadNotStarted;
  {
    const JobLock lock;
    before = m_eThreadStatus;
    if (!m_hThread) return before;
    m_eThreadStatus = eThreadTerminated;
    LetThreadGo();
  }
  AskCaller(eCommandTerminated);
  return before;
}

// ---- comparing

bool QFThreadData::GetIsDataMatching(QFObject* object, unsigned context, void* param) const {
  return object == m_pCallingObject && context != 0 && context == m_nCommandContextID &&
         (!param || param == m_pCommandParameter);
}

bool QFThreadData::GetIsSimiliarDuplicate(QFObject*, unsigned context, void* param) const {
  const JobLock lock;
  return IsSimilar(context, param);
}

bool QFThreadData::IsSimilar(unsigned context, const void* param) const {
  const void* mine = m_pCommandParameter;
  return context != 0 && context == m_nCommandContextID && param && mine && Link(mine)->HasTargetOf(*Link(param)) &&
         !Link(mine)->HasGroupOf(*Link(param));
}

// Whether the job works on a target of that identifier.
bool QFThreadData::HasIdentifierA(const void* identifier) const {
  const void* param = m_pCommandParameter;
  return param && Link(param)->GetIdentifierA() == identifier;
}

bool QFThreadData::HasStatusIn(std::initializer_list<QFeThreadStatus> statuses) const {
  const QFeThreadStatus status = m_eThreadStatus;
  return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

int QFThreadData::GetIsThreadRunning() const { return HasStatusIn({eThreadRunning, eThreadSuspended}); }

// Done, in whatever way.
bool QFThreadData::IsDone() const {
  return HasStatusIn({eThreadDone, eThreadTerminated, eThreadNotHandled, eThreadDoneKeepData});
}

bool QFThreadData::HasResult() const { return HasStatusIn({eThreadDone, eThreadDoneKeepData, eThreadWaitingForChild}); }
