#include "share/diagnostics/internal/crash_files.h"

#include <fmt/format.h>

#include <string>

#include "framework/text.h"
#include "share/diagnostics/analytics_log.h"
#include "share/diagnostics/internal/crash_names.h"
#include "share/diagnostics/outcome.h"

namespace {

// The only place that shows a box after a crash.
void ShowBox(const std::string& text) {
  Outcome message(0, SEVERITY_STOP);
  if (!text.empty()) message.Display(FromUtf8(text));
}

}  // namespace

bool WriteCrashFiles(const CrashRequest& request, const SystemTexts* system, char (&module)[1024]) {
  CrashArena arena;
  if (!arena.Resource()) return false;
  const CrashSnapshot snapshot(request.fault, arena.Resource());
  if (!snapshot.IsReadable()) return false;
  SetField(module, FaultingModule(snapshot, request.fault));
  if (request.reportFile[0] != '\0')
    AppendToCrashReport(request.reportFile, CrashReport(request, snapshot, system, arena.Resource()));
  if (request.dumpFile[0] != '\0') snapshot.WriteDump(request.dumpFile, request.dumpType, request.comment);
  return true;
}

void ReportCrash(const CrashRequest& request, std::string_view module) {
  if (request.showMessage == 1) {
    std::string text = request.dumpMessage;
    for (const char* const name : {request.reportName, request.dumpName})
      if (*name) text += std::string("\r\n\t") + name;
    ShowBox(text);
    ShowBox(request.saveAsMessage);
  }
  if (!request.isEventWanted) return;
  const DWORD code = request.fault.record.ExceptionCode;
  const std::string text =
      fmt::format("Module name : {}Error type : {} (0x{:08x}) \n", module, ExceptionName(code), code);
  QFAnalyticsLogMgr::Initialize(0);  // the helper's own; in the process itself it has been called
  QFAnalyticsLogMgr::AddTextEvent(_T("Exception"), _T("ExceptionInformation"), FromUtf8(text));
}
