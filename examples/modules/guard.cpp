// Messages to the user, and a guard that leaves a report and a dump if the program crashes.
#include <kvshare/kvshare.h>
#include <kvshare/share/diagnostics/exception_handler.h>

#include <cstdio>

namespace {

// begin callbacks
void RegisterCallbacks() {
  QFShareRegisterDocCBK(
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      /*displayAlerts=*/[](short* flag) { *flag = 0; },  // there is no user here
      /*isCrashReportPermitted=*/[] { return 1; }, nullptr, nullptr, nullptr, nullptr, nullptr);
}
// end callbacks

// begin message
// Without a user the answer is Yes, so ask in a way that Yes goes on.
bool MayReplace(const CString& name) {
  Outcome question(0, SEVERITY_WARNING_YES_NO);
  CString text;
  text.Format(_T("Replace %s?"), name);
  return question.Display(text) == IDYES;
}
// end message

}  // namespace

// begin main
int main() {
  InitShareDll();
  RegisterCallbacks();
  std::printf("replace: %d\n", MayReplace(_T("pocket.kvrec")));

  QFExceptionHandler guard(/*writeReport=*/1, /*dumpMiniFile=*/1);
  std::printf("guard: report %d, dump %d\n", guard.GetWriteExceptionReport(), guard.GetDumpMiniFile());
  // From here to the end of the scope a crash writes both files into guard.GetFilePath().
}
// end main
