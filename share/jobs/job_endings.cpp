// Terminating jobs and waiting for them. Code that calls out of the library works on HeldRecords, and tests each record
// again before it terminates it.
#include <algorithm>

#include "platform/clock.h"
#include "platform/threads.h"
#include "share/jobs/internal/job_walk.h"
#include "share/jobs/internal/kept_handles.h"
#include "share/objects/job_lock.h"

namespace {

constexpr DWORD kBetweenPasses_ms = 1000;
constexpr int kPassesForTarget = 301;
constexpr int kPassesForDocument = 180;

}  // namespace

// ---- terminating

// Terminates all jobs for which wanted returns true, from the tail of the list. wanted is called under the lock.
template <class Wanted>
void QFThreadBaseMgr::TerminateFromTail(Wanted wanted) {
  std::vector<HeldRecord> chosen;
  {
    const JobLock lock;
    FindLast([&](const QFThreadData& data) {
      if (wanted(data)) chosen.push_back(Held(const_cast<QFThreadData*>(&data)));
      return false;
    });
  }
  for (const HeldRecord& data : chosen) Terminate(*data, wanted);
}

template <class Wanted>
void QFThreadBaseMgr::Terminate(QFThreadData& data, Wanted wanted) {
  {
    const JobLock lock;
    if (data.m_bGone || !wanted(data)) return;
  }
  data.TerminateThread();
  data.SetThreadStatus(eThreadTerminated);
}

void QFThreadBaseMgr::TerminateSimiliarDuplicateThreads(QFObject*, unsigned context, void* param) {
  const auto wanted = [&](const QFThreadData& data) {
    return data.IsSimilar(context, param) && data.GetIsThreadRunning();
  };
  std::vector<HeldRecord> chosen;
  {
    const JobLock lock;
    FindFirst([&](const QFThreadData& data) {
      if (wanted(data)) chosen.push_back(Held(const_cast<QFThreadData*>(&data)));
      return false;
    });
  }
  for (const HeldRecord& data : chosen) Terminate(*data, wanted);
}

void QFThreadBaseMgr::TerminateLastCreated() {
  const auto isLastRequests = [&](const QFThreadData& data) {
    const auto* link = static_cast<const QFThreadDataLink*>(data.GetCommandParameter());
    return data.GetIsThreadRunning() && link && data.GetCommandContextID() == m_LastContextID &&
           link->GetIdentifierA() == m_LastIdentifierA && link->GetIdentifierB() == m_LastIdentifierB;
  };
  HeldRecord last;
  {
    const JobLock lock;
    if (auto* data = static_cast<QFThreadData*>(m_ThreadList.GetTail())) last = Held(data);
  }
  if (last) Terminate(*last, isLastRequests);
}

void QFThreadBaseMgr::TerminateIfRunning(void* identifierA) {
  TerminateFromTail([&](const QFThreadData& data) { return !data.IsDone() && data.HasIdentifierA(identifierA); });
}

void QFThreadBaseMgr::DestructThread(void* identifierA) {
  TerminateIfRunning(identifierA);
  for (int pass = 0; pass < kPassesForTarget && ThreadExist(identifierA); ++pass)
    CurrentClock().sleep(kBetweenPasses_ms);
}

void QFThreadBaseMgr::TerminateAllThreadsInThisDoc(QFObject* document) {
  const QFAutoCriticalSection section(m_CriticalSection);
  const auto wanted = [&](const QFThreadData& data) { return data.GetDocument() == document && !data.IsDone(); };
  TerminateFromTail(wanted);
  for (int pass = 0; pass < kPassesForDocument && !GetAreAllThreadsInThisDocDone(document); ++pass) {
    CurrentClock().sleep(kBetweenPasses_ms);
    TerminateFromTail(wanted);  // a parent requested meanwhile cannot end: its child waits for the section
  }
}

// ---- waiting

std::vector<void*> QFThreadBaseMgr::HandlesNotDone() {
  const QFAutoCriticalSection section(m_CriticalSection);
  const JobLock lock;
  std::vector<void*> handles;
  FindFirst([&](const QFThreadData& data) {
    void* handle = data.GetThreadHandle();
    if (handle && data.GetIsThreadRunning()) handles.push_back(handle);
    return false;
  });
  return handles;
}

int QFThreadBaseMgr::GetThreadsNotDone(void** handles, int max) {
  const std::vector<void*> all = HandlesNotDone();
  std::copy_n(all.begin(), std::clamp<std::ptrdiff_t>(max, 0, std::ptrdiff_t(all.size())), handles);
  return int(all.size());
}

// Waits one by one: a single call would be limited in number on other systems.
void QFThreadBaseMgr::WaitForMultipleThreadsToBeDone() {
  const KeptHandles kept;
  for (void* handle : HandlesNotDone()) WaitForMultipleObjects(1, &handle, /*all=*/TRUE, INFINITE);
}

void QFThreadBaseMgr::WaitForAllThreadsToBeDone() {
  while (!AllThreadsDone()) {
    WaitForMultipleThreadsToBeDone();
    ::Sleep(0);  // lets jobs continue that are started but have no handle yet
  }
}
