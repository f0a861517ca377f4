// The life of a job, on the requesting thread and on its own.
//
// StartThread stores handle and id under the lock, and the new thread takes the lock before it reads them. So the
// thread finds its own handle even if it is faster than its creator.
#include "share/jobs/job_record.h"

#include <algorithm>
#include <deque>
#include <string_view>
#include <utility>

#include "platform/clock.h"
#include "platform/process.h"
#include "platform/threads.h"
#include "share/core/document_callbacks.h"
#include "share/jobs/internal/kept_handles.h"
#include "share/jobs/job_manager.h"
#include "share/objects/job_lock.h"

IMPLEMENT_DYNAMIC(QFThreadData, QFObject)

namespace {

constexpr DWORD kBeforeBegin_ms = 100;
// The number of handles of ended jobs that stay open, because a module may be about to wait for one.
constexpr std::size_t kFormerHandles = 256;

// The number of KeptHandles. Guarded by the job lock.
constinit int g_kept = 0;

// True on a job's own thread.
constinit thread_local bool t_isJob = false;

// Resumes a suspended thread, and closes its handle later. Call under the lock.
void RetireHandle(HANDLE handle) {
  static auto* former = new std::deque<HANDLE>;
  for (DWORD count = ResumeAtPoint(handle); count > 1 && count != DWORD(-1);) count = ResumeAtPoint(handle);
  former->push_back(handle);
  // Test two handles per call, so that the number falls again after handles of long jobs have piled up.
  for (int tests = 2; g_kept == 0 && tests > 0 && former->size() > kFormerHandles; --tests) {
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

KeptHandles::KeptHandles() {
  const JobLock lock;
  ++g_kept;
}

KeptHandles::~KeptHandles() {
  const JobLock lock;
  --g_kept;
}

// Lets a node keep a record alive while it removes the record from its list.
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

// ---- construction and destruction

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

QFThreadData::~QFThreadData() { LeaveCaller(); }

// Releases the thread and removes the record from the caller's list. On a job's thread it changes the list directly and
// does not call the caller's virtual operation, because another thread may be destroying the caller.
void QFThreadData::LeaveCaller() {
  QFObject* caller = nullptr;
  {
    const JobLock lock;
    ReleaseThread();
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

// Call under the lock.
void QFThreadData::ReleaseThread() {
  m_dwThreadID = 0;
  if (HANDLE handle = m_hThread.exchange(nullptr)) RetireHandle(handle);
}

void QFThreadData::Release() {
  if (m_nHolds.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

int QFThreadData::RemoveFromUserObjectsList(QFObject* object) {
  if (!object || object != m_pCallingObject) return 0;
  if (QFThreadBaseMgr* manager = QFThreadBaseMgr::Instance()) {
    manager->DestroyThreadData(this);
  } else {
    LeaveCaller();  // the record stays with its owner
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
  if (!PrepareRun()) return m_dwThreadID;
  if (QFThreadBaseMgr* manager = QFThreadBaseMgr::Instance()) manager->OnStartRunningThreadData(this);
  return StartThread();
}

// Returns false if the job has a thread, is getting one, or was terminated.
bool QFThreadData::PrepareRun() {
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
  m_bThreadOver = false;
  return true;
}

DWORD QFThreadData::StartThread() {
  DWORD id = 0;
  Hold();  // for the thread
  {
    const JobLock lock;
    m_bCreatingThread = false;
    if (HANDLE handle = CreateThread(nullptr, 0, ThreadEntry, this, 0, &id)) {
      m_hThread = handle;
      m_dwThreadID = id;
      // Terminated before it had a handle: removing the handle now prevents the command.
      if (m_eThreadStatus == eThreadTerminated || m_bGone) ReleaseThread();
    } else {
      m_bThreadOver = true;
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
  QFThreadBaseMgr* manager = QFThreadBaseMgr::Instance();
  const JobLock lock;
  data->m_bThreadOver = true;
  // If another thread has deleted the record, the end of this thread is not counted yet.
  if (data->m_bGone && manager) manager->CountRemoved(*data);
  return 0;
}

int QFThreadData::HandleCommand(int onOwnThread) {
  QFThreadBaseMgr* manager = QFThreadBaseMgr::Instance();
  if (onOwnThread && HasEnded()) return 0;
  if (!m_pCallingObject) {
    const JobLock lock;
    ReleaseThread();
    return 0;
  }
  if (onOwnThread && manager) manager->OnBeginThread(this);
  const StartResult start = BeginCommand(onOwnThread);
  if (start == StartResult::kEnded) return 0;
  bool waits = false;
  if (start == StartResult::kRun) {
    QFeThreadStatus result = eThreadNotHandled;
    bool threw = false;
    try {
      result = CallNode(eCommandRun);
    } catch (const std::exception& failure) {
      threw = true;
      StoreFailure(failure.what());
    } catch (...) {
      threw = true;
      StoreFailure("unknown exception");
    }
    if (onOwnThread) SuspensionPoint();
    if (!StoreResult(result, threw, waits)) return 0;
  }
  if (m_eThreadType == eThreadTypeChild && manager) ReportToParent(*manager, onOwnThread);
  if (HasResult() && IsTestRun()) {
    if (QFObject* caller = m_pCallingObject) caller->SetTimeTakenForGTP(GetTimeTaken());
  }
  if (waits) return 1;
  {
    const JobLock lock;
    m_pCommandParameter = nullptr;
    ReleaseThread();
  }
  if (manager) manager->End(this, onOwnThread);
  return 1;
}

// Whether another thread has deleted the record or ended the job.
bool QFThreadData::HasEnded() const {
  const JobLock lock;
  return m_bGone || m_bEnded;
}

// Decides whether the command runs; after kRun, terminating cannot prevent it any more. A job that has no handle on its
// own thread was terminated and ends here.
QFThreadData::StartResult QFThreadData::BeginCommand(int onOwnThread) {
  const JobLock lock;
  if (m_bGone) return StartResult::kEnded;
  if (!onOwnThread) {
    if (!m_hThread) m_bEnded = false;  // the record may have run before
  } else if (m_bEnded) {
    return StartResult::kEnded;
  } else if (!m_hThread) {
    m_bEnded = true;
    m_eThreadStatus = eThreadTerminated;
    StoreEndTime();
    return StartResult::kTerminated;
  }
  m_FailureText.Empty();
  CurrentClock().systemTime(&m_StartTime);
  return StartResult::kRun;
}

// Calls the node's HandleCommand. If that changes param, the record takes the new parameter, unless another thread has
// changed it meanwhile.
QFeThreadStatus QFThreadData::CallNode(QFeCommandType type) {
  QFObject* caller = m_pCallingObject;
  if (!caller) return eThreadNotHandled;
  void* const before = m_pCommandParameter;
  void* param = before;
  const QFeThreadStatus status = caller->HandleCommand(type, m_nCommandContextID, param);
  if (param != before) {
    const JobLock lock;
    void* expected = before;
    m_pCommandParameter.compare_exchange_strong(expected, param);
  }
  return status;
}

void QFThreadData::StoreFailure(const char* text) noexcept {
  try {
    const CString failure = FromUtf8(text);
    const JobLock lock;
    m_FailureText = failure;
  } catch (const std::bad_alloc&) {
    // The status says that the command failed.
  }
}

// Stores the command's result as the status, unless the job was terminated. Returns false if the job has already ended.
// waits is set if the job stays open for a child; otherwise no child can report to it any more.
bool QFThreadData::StoreResult(QFeThreadStatus result, bool threw, bool& waits) {
  const JobLock lock;
  if (m_bGone || m_bEnded) return false;
  if (threw || result == eThreadNotStarted) result = eThreadNotHandled;
  const bool open = m_eThreadEndType == eThreadEndWaitForChild && !threw;
  if (open && (result == eThreadDone || result == eThreadDoneKeepData)) result = eThreadWaitingForChild;
  QFeThreadStatus status = m_eThreadStatus;
  // An exception sets status 5 even if the job was terminated; kept for existing modules.
  while ((threw || status != eThreadTerminated) && !m_eThreadStatus.compare_exchange_weak(status, result)) {
  }
  waits = open && result == eThreadWaitingForChild && m_eThreadStatus == eThreadWaitingForChild;
  m_bEnded = !waits;
  StoreEndTime();  // under the same lock, because a child may then end the job and set its own end time
  return true;
}

// Call under the lock.
void QFThreadData::StoreEndTime() {
  CurrentClock().systemTime(&m_EndTime);
  m_tEndTime = CurrentClock().time();
}

void QFThreadData::ReSetEndThreadTime(SYSTEMTIME& time, __time64_t& seconds) {
  const JobLock lock;
  m_EndTime = time;
  m_tEndTime = seconds;
}

// ---- parents and children

// Called on a child. On a thread of its own it decrements the running count in addition to OnDoneRunningThreadData of
// child and parent; kept for existing modules, which expect that count.
void QFThreadData::ReportToParent(QFThreadBaseMgr& manager, int onOwnThread) {
  const HeldRecord parent = manager.FindPrevParentOwner(this, /*checkGroup=*/0);
  if (!parent) return;
  SYSTEMTIME end;
  __time64_t seconds = 0;
  {
    const JobLock lock;
    if (std::exchange(parent->m_bEnded, true)) return;  // the parent is ending by itself
    end = m_EndTime;
    seconds = m_tEndTime;
  }
  parent->ReSetEndThreadTime(end, seconds);
  parent->HandleChildDone(m_eThreadStatus);
  // A direct run counts nothing itself, so it ends the parent's count.
  if (onOwnThread || parent->m_bCounted.exchange(false)) manager.DecrementRunningThreadCnt();
  manager.End(parent.get(), onOwnThread);
}

void QFThreadData::HandleChildDone(QFeThreadStatus childStatus) {
  if (m_hThread) {
    try {
      CallNode(eCommandChildDone);
    } catch (const std::exception& failure) {
      childStatus = eThreadNotHandled;
      StoreFailure(failure.what());
    } catch (...) {
      childStatus = eThreadNotHandled;
      StoreFailure("unknown exception");
    }
  }
  const JobLock lock;
  m_eThreadStatus = childStatus;
  m_pCommandParameter = nullptr;
  ReleaseThread();
}

// ---- suspending and terminating

QFeThreadStatus QFThreadData::SuspendThread() {
  const JobLock lock;
  const QFeThreadStatus before = m_eThreadStatus;
  HANDLE handle = ThreadToSuspend();
  if (!handle) return before;
  SuspendAtPoint(handle);
  m_eThreadStatus = eThreadSuspended;
  return before;
}

QFeThreadStatus QFThreadData::ResumeThread() {
  const JobLock lock;
  const QFeThreadStatus before = m_eThreadStatus;
  HANDLE handle = ThreadToSuspend();
  if (!handle) return before;
  m_eThreadStatus = eThreadRunning;
  ResumeAtPoint(handle);
  return before;
}

// Null for a job that has its result, because suspending would overwrite its status. Call under the lock.
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
    ReleaseThread();
  }
  CallNode(eCommandTerminated);
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

// Whether the job's link has that identifier A.
bool QFThreadData::HasIdentifierA(const void* identifier) const {
  const void* param = m_pCommandParameter;
  return param && Link(param)->GetIdentifierA() == identifier;
}

bool QFThreadData::HasStatusIn(std::initializer_list<QFeThreadStatus> statuses) const {
  const QFeThreadStatus status = m_eThreadStatus;
  return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

int QFThreadData::GetIsThreadRunning() const { return HasStatusIn({eThreadRunning, eThreadSuspended}); }

// Whether the job has ended, with any result.
bool QFThreadData::IsDone() const {
  return HasStatusIn({eThreadDone, eThreadTerminated, eThreadNotHandled, eThreadDoneKeepData});
}

bool QFThreadData::HasResult() const { return HasStatusIn({eThreadDone, eThreadDoneKeepData, eThreadWaitingForChild}); }
