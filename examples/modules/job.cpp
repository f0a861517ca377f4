// A background job with progress, and one that is cancelled.
#include <kvshare/kvshare.h>
#include <kvshare/platform/threads.h>

#include <atomic>
#include <cstdio>

// begin manager
// The process's job manager. The base class does all the work; this one lets a command report.
class Jobs : public QFThreadBaseMgr {
 public:
  // For a command, on its job's thread. False if the job was terminated, or has no thread: the command then returns.
  bool Report(LONGLONG percent, LPCTSTR step) {
    QFThreadData* const record = FindThreadDataForCurrentThread();
    if (!record) return false;
    record->SetActionProgress(percent);
    record->SetActionString(step);
    return true;
  }
};

Jobs& TheJobs() { return *static_cast<Jobs*>(QFThreadBaseMgr::Instance()); }
// end manager

// begin node
enum : unsigned { kCount = 1 };

// A node whose command counts to a thousand.
class Counter : public QFObject {
 public:
  CString GetClassNameW() override { return _T("Counter"); }
  QFeThreadStatus HandleCommand(QFeCommandType type, unsigned context, void*&) override {
    if (type != eCommandRun || context != kCount) return eThreadNotHandled;
    for (int step = 0; step < 1000; ++step) {
      // No message box and no change of the user's document here: this is another thread.
      if (!TheJobs().Report(step / 10, _T("counting"))) return eThreadTerminated;
      ++m_counted;
      while (m_waits) {
        if (!TheJobs().Report(step / 10, _T("waiting"))) return eThreadTerminated;
        Sleep(1);
      }
    }
    return eThreadDone;
  }
  int Counted() const { return m_counted; }
  void WaitInTheCommand() { m_waits = true; }

 private:
  std::atomic<int> m_counted = 0;
  std::atomic<bool> m_waits = false;
};
// end node

// begin settings
// Jobs get threads of their own only if the application's settings say so.
QFSettingsKey* Settings() {
  static QFSettingsKey settings;
  if (settings.GetList().IsEmpty()) settings.AddValue(_T("ThreadMulti"), 1);
  return &settings;
}

void RegisterCallbacks() {
  QFShareRegisterDocCBK(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, /*appSettings=*/Settings,
                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}
// end settings

// begin main
int main() {
  InitShareDll();
  RegisterCallbacks();
  Jobs jobs;
  QFThreadBaseMgr::m_pInstance = &jobs;

  Counter whole;
  QFThreadDataLink link;  // lives until the job's thread has ended
  link.SetIdentifierA(&whole);
  whole.RunCommand(kCount, &link, QFeThreadType(0), QFeThreadEndType(0));
  jobs.WaitForAllThreadsToBeDone();
  std::printf("counted to %d\n", whole.Counted());
  // end main

  // begin cancel
  Counter cut;
  cut.WaitInTheCommand();
  QFThreadDataLink other;
  other.SetIdentifierA(&cut);
  cut.RunCommand(kCount, &other, QFeThreadType(0), QFeThreadEndType(0));
  while (cut.Counted() == 0) Sleep(1);
  HANDLE thread = nullptr;
  const int threads = jobs.GetThreadsNotDone(&thread, 1);  // before the termination, which takes the handle away
  jobs.TerminateIfRunning(&cut);
  if (threads == 1) WaitForMultipleObjects(1, &thread, TRUE, INFINITE);
  std::printf("cancelled after %d\n", cut.Counted());

  QFThreadBaseMgr::m_pInstance = nullptr;
}
// end cancel
