#include "host/jobs/job_queue.h"

#include <algorithm>
#include <utility>

#include "platform/threads.h"
#include "share/core/document_callbacks.h"
#include "share/settings/settings_key.h"

namespace kestrova {
namespace {

int Setting(LPCTSTR name, int fallback) {
  int value = fallback;
  if (const QFSettingsKey* settings = GetAppSettingsCB()) settings->GetValue(name, value);
  return value;
}

}  // namespace

const char* TextOf(QFeThreadStatus status) {
  switch (status) {
    case eThreadNotStarted: return "not started";
    case eThreadDone: return "done";
    case eThreadRunning: return "running";
    case eThreadSuspended: return "suspended";
    case eThreadTerminated: return "terminated";
    case eThreadNotHandled: return "failed";
    case eThreadDoneKeepData: return "done, kept";
    case eThreadWaitingToRun: return "waiting";
    case eThreadWaitingForChild: return "waiting for child";
  }
  return "unknown";
}

JobQueue::JobQueue(int limit) : limit_(limit > 0 ? limit : std::max(1, Setting(_T("ThreadNum"), 5))) {
  m_pInstance = this;
}

JobQueue::~JobQueue() {
  AwaitThreads();
  CObList left;
  GetAllThreads(left);
  while (!left.IsEmpty()) DestroyThreadData(static_cast<QFThreadData*>(left.RemoveHead()));
  m_pInstance = nullptr;
}

bool JobQueue::Ask(QFObject& node, unsigned context, OperationCommand& command, QFeThreadType type,
                   QFeThreadEndType endType) {
  QFThreadDataLink* const link = &command;
  QFThreadData* data = nullptr;
  {
    // StartNext is not to lose a thread that is being terminated here.
    const QFAutoCriticalSection section(m_CriticalSection);
    if (FindThreadData(&node, context, link)) return false;
    SetLastIdentifiers(context, link);
    TerminateSimiliarDuplicateThreads(&node, context, link);
    data = new QFThreadData(&node, context, link, type, endType);
    data->SetThreadStatus(eThreadWaitingToRun);
    {
      const std::lock_guard guard(lock_);
      Look(*data, jobs_.emplace_back());
      live_[data] = &jobs_.back();
    }
    AppendThreadData(data);  // no repeat, as nobody else asks
  }
  if (RunsThreads()) {
    StartNext();
  } else {
    const bool cancelled = IsUserJobCancelled() != 0;
    data->SetThreadStatus(cancelled ? eThreadTerminated : eThreadRunning);
    if (!cancelled) data->RunCommand(/*multi=*/0);
  }
  return true;
}

bool JobQueue::RunsThreads() const { return GetCanRunSeparateProcess() && Setting(_T("ThreadMulti"), 1); }

void JobQueue::StartNext() {
  if (IsUserJobCancelled()) return;
  const QFAutoCriticalSection section(m_CriticalSection);
  int running = GetNumThreadsNotDone();
  CObList all;
  GetAllThreads(all);
  QFThreadData* ahead = nullptr;
  for (POSITION at = all.GetHeadPosition(); at && running < limit_;) {
    auto* data = static_cast<QFThreadData*>(all.GetNext(at));
    if (!MayStart(*data, std::exchange(ahead, data))) continue;
    if (data->RunCommand(/*multi=*/1) == 0) {
      data->SetThreadStatus(eThreadNotHandled);
      continue;
    }
    ++running;
    const std::lock_guard guard(lock_);
    threads_.push_back(data->GetThreadHandle());  // still there: OnBeginThread and who terminates take the section
    live_[data]->started = true;
  }
}

// A child that is quicker than its parent would end it.
bool JobQueue::MayStart(QFThreadData& data, QFThreadData* ahead) {
  if (!data.GetIsThreadWaitingToRun()) return false;
  return data.GetThreadType() != eThreadTypeChild || !ahead ||
         !(ahead->GetIsThreadRunning() || ahead->GetIsThreadWaitingToRun());
}

bool JobQueue::IsIdle() {
  const QFAutoCriticalSection section(m_CriticalSection);
  const std::lock_guard guard(lock_);
  return std::all_of(live_.begin(), live_.end(), [](const auto& live) {
    const QFThreadData& data = *live.first;
    return !data.GetIsThreadRunning() && !data.GetIsThreadWaitingToRun() && !data.GetIsThreadWaitingForChildToRun();
  });
}

void JobQueue::AwaitThreads() {
  for (;;) {
    std::unique_lock guard(lock_);
    const std::vector<HANDLE> threads = std::exchange(threads_, {});
    guard.unlock();
    if (threads.empty()) return;
    // One by one: that of a job long ended may be closed, and then there is nothing to wait for.
    for (const HANDLE thread : threads) WaitForMultipleObjects(1, &thread, /*all=*/TRUE, INFINITE);
  }
}

// ---- what became of them

void JobQueue::Look(QFThreadData& data, JobView& view) {
  view.name = ToUtf8(data.GetProcessName());
  view.action = ToUtf8(data.GetCurrentAction());
  view.step = ToUtf8(data.GetActionString());
  view.percent = data.GetActionProgress();
  view.status = data.GetThreadStatus();
  if (view.started) view.start = ToUtf8(data.GetStartTimeStr());
  view.end = ToUtf8(data.GetEndTimeStr());
  view.taken = ToUtf8(data.GetTimeTaken());
}

std::vector<JobView> JobQueue::Jobs() {
  const QFAutoCriticalSection section(m_CriticalSection);
  const std::lock_guard guard(lock_);
  for (auto& [data, view] : live_) Look(*data, *view);
  return {jobs_.begin(), jobs_.end()};
}

void JobQueue::Keep(QFThreadData* data) {
  const std::lock_guard guard(lock_);
  const auto found = live_.find(data);
  if (found == live_.end()) return;
  Look(*data, *found->second);
  live_.erase(found);
}

void JobQueue::Tell(int percent, const char* step) {
  QFThreadData* data = FindThreadDataForCurrentThread();
  if (!data) return;  // terminated, or on the thread of the request
  data->SetActionProgress(percent);
  data->SetActionString(FromUtf8(step));
}

// ---- hooks

// Behind the rest of the StartNext that has started it.
int JobQueue::OnBeginThread(QFThreadData* data) {
  const QFAutoCriticalSection section(m_CriticalSection);
  return QFThreadBaseMgr::OnBeginThread(data);
}

int JobQueue::OnDoneRunningThreadData(QFThreadData* data) {
  const int result = QFThreadBaseMgr::OnDoneRunningThreadData(data);
  StartNext();
  return result;
}

int JobQueue::OnDestroyThreadData(QFThreadData* data) {
  Keep(data);
  return QFThreadBaseMgr::OnDestroyThreadData(data);
}

}  // namespace kestrova
