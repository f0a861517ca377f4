#include "tests/jobs/job_support.h"

#include "platform/thread_pointer.h"
#include "tests/registered.h"

namespace kvtest {
namespace {

constexpr DWORD kBeforeBegin_ms = 100;

StepClock* g_clock = nullptr;
std::mutex g_timeLock;
SYSTEMTIME g_time = {};
__time64_t g_seconds = 0;
QFSettingsKey* g_settings = nullptr;
QFObject* g_document = nullptr;

}  // namespace

// Lives as long as its thread.
void StepClock::OnEnd(StepClock* clock) {
  const std::lock_guard guard(clock->lock_);
  --clock->threads_;
  clock->changed_.notify_all();
}

StepClock::StepClock() {
  g_clock = this;
  static constexpr Clock kSteps = {[](DWORD milliseconds) { g_clock->Sleep(milliseconds); },
                                   [](LPSYSTEMTIME time) {
                                     const std::lock_guard guard(g_timeLock);
                                     *time = g_time;
                                   },
                                   [] {
                                     const std::lock_guard guard(g_timeLock);
                                     return g_seconds;
                                   }};
  SetTime({2024, 5, 3, 17, 12, 0, 0, 0}, 1715947200);
  SetCurrentClock(&kSteps);
}

StepClock::~StepClock() { SetCurrentClock(nullptr); }

void StepClock::SetTime(SYSTEMTIME time, __time64_t seconds) {
  const std::lock_guard guard(g_timeLock);
  g_time = time;
  g_seconds = seconds;
}

void StepClock::Sleep(DWORD milliseconds) {
  if (milliseconds != kBeforeBegin_ms) {
    {
      const std::lock_guard guard(lock_);
      pauses_.push_back(milliseconds);
    }
    if (onPause) onPause();
    return;
  }
  using OfThread = ThreadPointer<StepClock, &StepClock::OnEnd>;
  if (!OfThread::Get()) OfThread::Set(this);
  for (int i = yields; i > 0; --i) ::Sleep(0);
  std::unique_lock guard(lock_);
  changed_.wait(guard, [&] { return !held_; });
}

JobTest::JobTest() : settings_(_T("Settings"), _T("Software\\Zemlor\\Kestrova\\Jobs")) {
  settings_.AddValue(_T("ThreadMulti"), 1);
  settings_.AddValue(_T("ThreadNum"), 5);
  settings_.AddValue(_T("ThreadDel"), 1);
  g_settings = &settings_;
  g_document = &document_;
  Register({.document = [] { return t_document ? t_document : g_document; }, .appSettings = [] { return g_settings; }});
  manager.log = &log;
  manager.clock = &clock;
  QFThreadBaseMgr::m_pInstance = &manager;
}

JobTest::~JobTest() {
  clock.Open();
  clock.AwaitThreads();
  manager.log = nullptr;
  while (QFThreadData* data = manager.Record(0)) manager.DestroyThreadData(data);
  QFThreadBaseMgr::m_pInstance = nullptr;
  g_settings = nullptr;
  g_document = nullptr;
}

QFThreadData* JobTest::Ask(WorkNode& node, void* param, QFeThreadType type, QFeThreadEndType endType,
                           unsigned context) {
  node.RunCommand(context, param, type, endType);
  return manager.Record(manager.Count() - 1);
}

QFThreadDataLink MakeLink(std::intptr_t a, std::intptr_t b, unsigned group) {
  QFThreadDataLink link;
  link.SetIdentifierA(reinterpret_cast<void*>(a));
  link.SetIdentifierB(reinterpret_cast<void*>(b));
  link.SetGroupNum(group);
  return link;
}

}  // namespace kvtest
