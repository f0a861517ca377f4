#include "host/jobs/job_queue.h"

#include <algorithm>
#include <utility>

#include "framework/time.h"
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

bool JobQueue::Request(QFObject& node, unsigned context, OperationCommand& command, QFeThreadType type,
                       QFeThreadEndType endType) {
  QFThreadDataLink* const link = &command;
  QFThreadData* data = nullptr;
  {
    // Keeps StartNext from using a job that this call terminates.
    const QFAutoCriticalSection section(m_CriticalSection);
    if (FindThreadData(&node, context, link)) return false;
    SetLastIdentifiers(context, link);
    TerminateSimiliarDuplicateThreads(&node, context, link);
    data = new QFThreadData(&node, context, link, type, endType);
    data->SetThreadStatus(eThreadWaitingToRun);
    {
      const std::lock_guard guard(lock_);
      UpdateView(*data, jobs_.emplace_back());
      jobs_.back().id = node.GetObjectId();
      live_[data] = &jobs_.back();
    }
    AppendThreadData(data);  // never a repeat: only this thread appends
  }
  if (RunsThreads()) {
    StartNext();
  } else {
    const bool cancelled = IsUserJobCancelled() != 0;
    data->SetThreadStatus(cancelled ? eThreadTerminated : eThreadRunning);
    if (cancelled) return true;
    NoteStart(data);
    data->RunCommand(/*multi=*/0);
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
  QFThreadData* previous = nullptr;
  for (POSITION at = all.GetHeadPosition(); at && running < limit_;) {
    auto* data = static_cast<QFThreadData*>(all.GetNext(at));
    if (!MayStart(*data, std::exchange(previous, data))) continue;
    NoteStart(data);
    if (data->RunCommand(/*multi=*/1) == 0) {
      data->SetThreadStatus(eThreadNotHandled);
      continue;
    }
    ++running;
    const std::lock_guard guard(lock_);
    threads_.push_back(
        data->GetThreadHandle());  // still valid: a thread that begins or terminates the job needs the section
    live_[data]->started = true;
  }
}

// Before the job's thread can end it.
void JobQueue::NoteStart(QFThreadData* data) {
  const std::lock_guard guard(lock_);
  live_[data]->date = ToUtf8(CTime::GetCurrentTime().Format(_T("%Y-%m-%d")));
}

// A child that ends before its parent would end the parent.
bool JobQueue::MayStart(QFThreadData& data, QFThreadData* previous) {
  if (!data.GetIsThreadWaitingToRun()) return false;
  return data.GetThreadType() != eThreadTypeChild || !previous ||
         !(previous->GetIsThreadRunning() || previous->GetIsThreadWaitingToRun());
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
    // One handle per wait: the handle of a job that ended long ago may be closed, and its wait fails.
    for (const HANDLE thread : threads) WaitForMultipleObjects(1, &thread, /*all=*/TRUE, INFINITE);
  }
}

// ---- results

void JobQueue::UpdateView(QFThreadData& data, JobView& view) {
  view.name = ToUtf8(data.GetProcessName());
  view.action = ToUtf8(data.GetCurrentAction());
  view.step = ToUtf8(data.GetActionString());
  view.percent = data.GetActionProgress();
  view.status = data.GetThreadStatus();
  if (view.started) view.start = ToUtf8(data.GetStartTimeStr());
  view.end = ToUtf8(data.GetEndTimeStr());
  view.taken = ToUtf8(data.GetTimeTaken());
  view.reason = ToUtf8(data.GetFailureText());
}

std::vector<JobView> JobQueue::Jobs() {
  const QFAutoCriticalSection section(m_CriticalSection);
  const std::lock_guard guard(lock_);
  for (auto& [data, view] : live_) UpdateView(*data, *view);
  return {jobs_.begin(), jobs_.end()};
}

void JobQueue::KeepResult(QFThreadData* data) {
  const std::lock_guard guard(lock_);
  const auto found = live_.find(data);
  if (found == live_.end()) return;
  UpdateView(*data, *found->second);
  live_.erase(found);
}

void JobQueue::SetProgress(int percent, const char* step) {
  QFThreadData* data = FindThreadDataForCurrentThread();
  if (!data) return;  // the job is terminated, or runs on the requesting thread
  data->SetActionProgress(percent);
  data->SetActionString(FromUtf8(step));
}

// ---- hooks

// Waits until the StartNext that started the job has left the section.
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
  KeepResult(data);
  return QFThreadBaseMgr::OnDestroyThreadData(data);
}

}  // namespace kestrova
