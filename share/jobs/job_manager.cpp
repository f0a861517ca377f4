// The list of jobs: requests, hooks, deletion, queries. job_endings.cpp terminates jobs and waits for them.
#include "share/jobs/job_manager.h"

#include <utility>

#include "platform/threads.h"
#include "share/core/document_callbacks.h"
#include "share/jobs/internal/job_walk.h"
#include "share/objects/command_runner.h"
#include "share/objects/job_lock.h"
#include "share/settings/settings_key.h"

std::atomic<QFThreadBaseMgr*> QFThreadBaseMgr::m_pInstance = nullptr;
std::atomic<DWORD> QFThreadBaseMgr::m_SWThreadId = 0;

namespace {

const QFThreadDataLink* Link(const void* param) { return static_cast<const QFThreadDataLink*>(param); }

int ReadSetting(LPCTSTR name, int fallback) {
  int value = fallback;
  if (const QFSettingsKey* settings = GetAppSettingsCB()) settings->GetValue(name, value);
  return value;
}

// QFObject::RunCommand calls this.
class Runner final : public CommandRunner {
 public:
  int RunCommand(QFObject* object, unsigned context, void* param, QFeThreadType type,
                 QFeThreadEndType endType) override {
    return QFThreadBaseMgr::RunCommand(object, context, param, type, endType);
  }
};

constinit Runner g_runner;

}  // namespace

QFThreadBaseMgr::QFThreadBaseMgr() {
  SetCommandRunner(&g_runner);
  m_SWThreadId = ::GetCurrentThreadId();
}

QFThreadBaseMgr::QFThreadBaseMgr(const QFThreadBaseMgr&) {}
QFThreadBaseMgr& QFThreadBaseMgr::operator=(const QFThreadBaseMgr&) { return *this; }
QFThreadBaseMgr::~QFThreadBaseMgr() = default;

// ---- the one manager

int QFThreadBaseMgr::RunCommand(QFObject* object, unsigned context, void* param, QFeThreadType type,
                                QFeThreadEndType endType) {
  QFThreadBaseMgr* manager = m_pInstance;
  return manager ? manager->RunCommand_i(object, context, param, type, endType) : 0;
}

int QFThreadBaseMgr::GetIsSeperateThread() { return ::GetCurrentThreadId() != m_SWThreadId; }

int QFThreadBaseMgr::IsAnyThreadsRunningOrWaiting(QFObject* document) {
  QFThreadBaseMgr* manager = m_pInstance;
  return manager && manager->GetNumThreadsRunningOrWaiting(document) > 0;
}

int QFThreadBaseMgr::SetDoNotUpdateProgressDlg() { return 1; }
int QFThreadBaseMgr::SetUpdateProgressDlg() { return 1; }

int QFThreadBaseMgr::DoNotUpdateProgressDlg() {
  SetDoNotUpdateProgressDlg();
  return 1;
}

int QFThreadBaseMgr::UpdateProgressDlg() {
  SetUpdateProgressDlg();
  return 1;
}

// ---- requests

// The setting "ThreadNum" does not limit the number of threads here; kept for existing modules. A derived manager that
// queues may use it.
int QFThreadBaseMgr::RunCommand_i(QFObject* object, unsigned context, void* param, QFeThreadType type,
                                  QFeThreadEndType endType) {
  if (FindThreadData(object, context, param)) return 0;
  const int multi = m_bCanRunSeparateProcess ? ReadSetting(_T("ThreadMulti"), 0) : 0;
  auto* data = new QFThreadData(object, context, param, type, endType);
  const HeldRecord held = Held(data);
  SetLastIdentifiers(context, param);
  TerminateSimiliarDuplicateThreads(object, context, param);
  return AppendThreadData(data) ? int(data->RunCommand(multi)) : 0;
}

// Tests for a repeat again, because another thread may have made the same request since the first test.
int QFThreadBaseMgr::AppendThreadData(QFThreadData* data) {
  {
    const JobLock lock;
    const auto repeats = [&](const QFThreadData& other) {
      return other.GetIsDataMatching(data->m_pCallingObject, data->m_nCommandContextID, data->m_pCommandParameter);
    };
    if (!FindFirst(repeats)) {
      m_ThreadList.AddTail(data);
      return 1;
    }
  }
  data->LeaveCaller();
  data->Release();
  return 0;
}

void QFThreadBaseMgr::SetLastIdentifiers(unsigned context, void* param) {
  const JobLock lock;
  m_LastContextID = context;
  m_LastIdentifierA = param ? Link(param)->GetIdentifierA() : nullptr;
  m_LastIdentifierB = param ? Link(param)->GetIdentifierB() : nullptr;
}

// ---- hooks

int QFThreadBaseMgr::OnStartRunningThreadData(QFThreadData* data) {
  ++m_nRunningThreads;
  if (data) data->m_bCounted = true;
  return 1;
}

int QFThreadBaseMgr::OnBeginThread(QFThreadData*) { return 1; }
int QFThreadBaseMgr::OnDestroyThreadData(QFThreadData*) { return 1; }

int QFThreadBaseMgr::OnDoneRunningThreadData(QFThreadData* data) {
  const bool remove = ReadSetting(_T("ThreadDel"), 1) != 0;
  if (remove && data && !data->HasStatusIn({eThreadDoneKeepData, eThreadWaitingForChild})) DestroyThreadData(data);
  --m_nRunningThreads;
  return 1;
}

// ---- the end of a record

// Ends a job that has run, unless another thread has deleted its record.
void QFThreadBaseMgr::End(QFThreadData* data, int onOwnThread) {
  {
    const JobLock lock;
    if (data->m_bGone || !m_ThreadList.Find(data)) return;
    if (onOwnThread) data->m_bCounted = false;  // the hook decrements the count
  }
  if (onOwnThread) {
    OnDoneRunningThreadData(data);
  } else {
    DestroyThreadData(data);
  }
}

// Decrements the count for a record that is removed before its end was counted, for example a parent that waits. If its
// thread still runs, the thread does that. Call under the lock.
void QFThreadBaseMgr::CountRemoved(QFThreadData& data) {
  if (data.m_bThreadOver && data.m_bCounted.exchange(false)) DecrementRunningThreadCnt();
}

int QFThreadBaseMgr::DestroyThreadData(QFThreadData* data) {
  const QFAutoCriticalSection section(m_CriticalSection);
  if (!data) return 0;
  {
    const JobLock lock;
    if (std::exchange(data->m_bGone, true)) return 0;
    if (POSITION at = m_ThreadList.Find(data)) m_ThreadList.RemoveAt(at);
    CountRemoved(*data);
  }
  OnDestroyThreadData(data);
  data->LeaveCaller();
  data->Release();
  return 0;
}

int QFThreadBaseMgr::DeleteAllDoneThreads() {
  const QFAutoCriticalSection section(m_CriticalSection);
  std::vector<QFThreadData*> done;
  {
    const JobLock lock;
    for (POSITION at = m_ThreadList.GetHeadPosition(); at;) {
      const POSITION here = at;
      auto* data = static_cast<QFThreadData*>(m_ThreadList.GetNext(at));
      if (data->GetIsThreadRunning() || data->GetIsThreadWaitingToRun() || data->GetIsThreadWaitingForChildToRun())
        continue;
      done.push_back(data);
      data->m_bGone = true;
      m_ThreadList.RemoveAt(here);
      CountRemoved(*data);
    }
  }
  for (QFThreadData* data : done) {
    data->LeaveCaller();
    data->Release();
  }
  return int(done.size());
}

// ---- looking

QFThreadData* QFThreadBaseMgr::FindThreadData(QFObject* object, unsigned context, void* param) {
  const JobLock lock;
  return FindFirst([&](const QFThreadData& data) { return data.GetIsDataMatching(object, context, param); });
}

QFThreadData* QFThreadBaseMgr::FindThreadDataForCurrentThread() {
  const DWORD id = ::GetCurrentThreadId();
  const JobLock lock;
  return FindFirst([&](const QFThreadData& data) { return data.GetThreadID() == id; });
}

int QFThreadBaseMgr::AnyThreadsRunning() {
  const JobLock lock;
  return FindFirst([](const QFThreadData& data) {
           return !data.IsDone() && !data.GetIsThreadWaitingForChildToRun();
         }) != nullptr;
}

int QFThreadBaseMgr::AllThreadsDone() { return GetNumThreadsNotDone() == 0; }

int QFThreadBaseMgr::GetNumThreadsNotDone() {
  const JobLock lock;
  return Count([](const QFThreadData& data) { return data.GetIsThreadRunning() != 0; });
}

int QFThreadBaseMgr::GetNumThreadsRunningOrWaiting(QFObject* document) {
  if (!document) return m_nRunningThreads;
  const JobLock lock;
  return Count([&](const QFThreadData& data) {
    return data.GetDocument() == document && data.HasStatusIn({eThreadRunning, eThreadWaitingToRun});
  });
}

int QFThreadBaseMgr::GetAreAllThreadsInThisDocDone(QFObject* document) {
  const QFAutoCriticalSection section(m_CriticalSection);
  const JobLock lock;
  return !FindFirst([&](const QFThreadData& data) { return data.GetDocument() == document && !data.IsDone(); });
}

int QFThreadBaseMgr::ThreadInList(QFThreadData* data) {
  const JobLock lock;
  return FindLast([&](const QFThreadData& other) { return &other == data; }) != nullptr;
}

int QFThreadBaseMgr::GetHaveThreadData(QFThreadData* data) {
  const JobLock lock;
  return data && m_ThreadList.Find(data);
}

int QFThreadBaseMgr::ThreadExist(void* identifierA) {
  const JobLock lock;
  return FindFirst([&](const QFThreadData& data) {
           return data.HasIdentifierA(identifierA) && data.GetThreadHandle();
         }) != nullptr;
}

void QFThreadBaseMgr::GetAllThreads(CObList& list) {
  const JobLock lock;
  list.AddTail(&m_ThreadList);
}

int QFThreadBaseMgr::GetThreadDuplicateOwner(QFThreadData* data, QFThreadData*& owner, void*& handle) {
  if (!data) return 0;
  const QFAutoCriticalSection section(m_CriticalSection);
  const JobLock lock;
  const void* param = data->m_pCommandParameter;
  if (!param) return 0;
  QFThreadData* found = FindFirst([&](const QFThreadData& other) {
    const void* its = other.m_pCommandParameter;
    return &other != data && other.GetThreadHandle() && its && Link(its)->HasTargetOf(*Link(param));
  });
  if (!found || !Link(found->m_pCommandParameter)->HasGroupOf(*Link(param))) return 0;
  owner = found;
  handle = found->m_hThread;
  return 1;
}

int QFThreadBaseMgr::GetThreadPrevParentOwner(QFThreadData* data, QFThreadData*& owner, void*& handle, int checkGroup) {
  const QFAutoCriticalSection section(m_CriticalSection);
  const HeldRecord found = FindPrevParentOwner(data, checkGroup);
  if (!found) return 0;
  owner = found.get();
  handle = found->GetThreadHandle();
  return 1;
}

HeldRecord QFThreadBaseMgr::FindPrevParentOwner(QFThreadData* data, int checkGroup) {
  if (!data) return nullptr;
  const QFAutoCriticalSection section(m_CriticalSection);
  const JobLock lock;
  POSITION at = m_ThreadList.Find(data);
  if (!at) return nullptr;
  m_ThreadList.GetPrev(at);
  auto* previous = at ? static_cast<QFThreadData*>(m_ThreadList.GetAt(at)) : nullptr;
  if (!previous || !previous->m_hThread) return nullptr;
  const void* mine = data->m_pCommandParameter;
  const void* its = previous->m_pCommandParameter;
  if (checkGroup && mine && its && !Link(mine)->HasGroupOf(*Link(its))) return nullptr;
  return Held(previous);
}
